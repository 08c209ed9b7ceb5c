// Disks and their enclosures: lists, one disk by its device name, the spare flag, deletion.
#include "frame/list.h"
#include "frame/read_row.h"
#include "storage/volumes.h"

namespace qb {
namespace {

/// A disk in its bay with its health; disks that lack one of the two are not listed.
uint32_t select_disks(CallContext *ctx, sqlite3 *db, int32_t controller, Rows *rows)
{
    return select(ctx, db, *rows,
                  "SELECT D.id,D.present,D.model,D.serial,D.fw_version,D.rpm,D.sectors,D.capacity,H.temp,H.ata_errors,"
                  "D.volume_id,P.slot_col||'x'||P.slot_row,D.hwif,D.pool_type,D.pool_state,D.pool_hostid,"
                  "P.controller,IFNULL(H.zpool_state,'ONLINE'),D.controller,D.channel FROM `$disk_info` D INNER JOIN "
                  "disk_port P ON P.controller=D.controller AND P.port=D.port INNER JOIN _disk_health H ON "
                  "H.disk_id=D.id WHERE D.controller=%d ORDER BY 20 COLLATE NOCASE",
                  controller)
        .or_report(ctx, "Failed DB Query for 'SELECT FROM disk_info'. %s");
}

uint32_t append_disks(CallContext *ctx, const Rows &rows, Disk **head)
{
    List<Disk> list(head);
    for (int i = 0; i < rows.count; i++) {
        Disk *disk = list.append(ctx);
        TRY_MEMORY(ctx);
        const char *state = nullptr;
        read_row(ctx, rows, i, both(disk->DevName, disk->DiskId), disk->Present, empty(disk->Model),
                 empty(disk->Serial), empty(disk->FirmwareVersion), disk->RPM, disk->Sectors, disk->Capacity,
                 disk->Temperature, disk->ATAError, empty(disk->Pool), empty(disk->SlotName),
                 empty(disk->HardwareInterface), empty(disk->PoolType), state, disk->PoolHostId, disk->DiskEnclosureId,
                 empty(disk->DiskState), disk->Controller, disk->Channel);
        disk->resource_id = disk_number(disk->DiskId);
        disk->PoolState = pool_state_name(state, disk->Pool, disk->PoolHostId);
    }
    TRY_MEMORY(ctx);
    return 0;
}

/// An enclosure that no port leads to keeps its fields as they are.
void read_enclosure(CallContext *ctx, const Rows &rows, DiskCollection *enclosure)
{
    if (rows.count == 0) return;
    read_row(ctx, rows, 0, enclosure->DiskEnclosureId, enclosure->EnclosureCols, enclosure->EnclosureRows,
             enclosure->IsSlotHorizontal, empty(enclosure->EnclosureName), empty(enclosure->DiskEnclosurePort),
             empty(enclosure->SESDevice), enclosure->DeadSlots);
}

}  // namespace

uint32_t x_qbobj_getDiskCollection(CallContext *ctx, sqlite3 *db, DiskCollection *disks)
{
    return x_qbobj_getDiskCollectionForController(ctx, db, disks, 0);
}

uint32_t x_qbobj_getDiskCollectionForController(CallContext *ctx, sqlite3 *db, DiskCollection *disks,
                                                int32_t controller)
{
    QB_ASSERT(disks);
    Rows rows;
    Rows enclosure;
    TRY(select_disks(ctx, db, controller, &rows));
    TRY(select(ctx, db, enclosure,
               "SELECT E.controller,E.nr_column,E.nr_row,E.disk_horizontal,E.name,J.label,E.ses_device,E.dead_slots "
               "FROM _disk_enclosure E INNER JOIN jbod_port J ON J.controller=E.controller WHERE E.controller=%d",
               controller)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM _disk_enclosure'. %s"));
    disks->key = enclosure_key(ctx, controller);
    TRY(append_disks(ctx, rows, &disks->Disk));
    read_enclosure(ctx, enclosure, disks);
    TRY_MEMORY(ctx);
    return 0;
}

uint32_t x_qbobj_getDiskEnclosureCollection(CallContext *ctx, sqlite3 *db, DiskEnclosureCollection *enclosures)
{
    QB_ASSERT(enclosures);
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT E.controller,E.name,E.nr_row,E.nr_column,E.disk_horizontal FROM _disk_enclosure E")
            .or_report(ctx, "Failed DB Query for 'SELECT FROM _disk_enclosure'. %s"));
    List<DiskCollection> list(&enclosures->DiskCollection);
    for (int i = 0; i < rows.count; i++) {
        DiskCollection *enclosure = list.append(ctx);
        TRY_MEMORY(ctx);
        int32_t controller = 0;
        read_row(ctx, rows, i, controller, skip, skip, skip, skip);
        TRY(x_qbobj_getDiskCollectionForController(ctx, db, enclosure, controller));
    }
    return 0;
}

uint32_t x_qbobj_getDiskEnclosurePort(CallContext *ctx, sqlite3 *db, int32_t controller, const char **label)
{
    QB_ASSERT(label);
    const char *found = nullptr;
    TRY(select_text(ctx, db, found, "SELECT label FROM jbod_port WHERE controller=%d", controller)
            .or_report(ctx, "Query faile for 'SELECT jbod_port'. %s"));
    *label = found;
    return 0;
}

uint32_t find_disk(CallContext *ctx, sqlite3 *db, Disk *disk)
{
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT D.id,D.present,D.model,D.serial,D.fw_version,D.rpm,D.sectors,D.capacity,H.temp,H.ata_errors,"
               "D.volume_id,P.slot_col||'x'||P.slot_row,D.hwif,P.controller,D.controller,D.channel,"
               "D.replaced_with_spare,D.is_signed_by_vxmr FROM `$disk_info` D INNER JOIN disk_port P ON "
               "P.controller=D.controller AND P.port=D.port LEFT JOIN _disk_health H ON H.disk_id=D.id WHERE D.id=%Q",
               disk->DevName)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM disk_info'. %s"));
    if (rows.count != 1) return 0;
    Disk found = *disk;
    read_row(ctx, rows, 0, both(found.DevName, found.DiskId), found.Present, empty(found.Model), empty(found.Serial),
             empty(found.FirmwareVersion), found.RPM, found.Sectors, found.Capacity, found.Temperature, found.ATAError,
             empty(found.Pool), empty(found.SlotName), empty(found.HardwareInterface), found.DiskEnclosureId,
             found.Controller, found.Channel, found.ReplacedWithSpare, found.IsSignedByVexmoor);
    TRY_MEMORY(ctx);
    *disk = found;
    return 0;
}

// A caller who names no disk is told so in the error record alone, here and below.
uint32_t x_qbobj_getDiskByDevname(CallContext *ctx, sqlite3 *db, Disk *disk)
{
    if (!disk || !disk->DevName) {
        REPORT(ctx, 8, "disk or disk->DevName is null. caller should specify devname.");
        return 0;
    }
    return find_disk(ctx, db, disk);
}

uint32_t x_qbobj_setDiskSpare(CallContext *ctx, sqlite3 *db, const char *devname, int32_t flag)
{
    if (!devname) {
        REPORT(ctx, 8, "devname is null. caller should specify devname.");
        return 0;
    }
    return execute(ctx, db, "UPDATE `$disk_info` SET replaced_with_spare=%d WHERE id=%Q", flag, devname)
        .or_report(ctx, "Failed DB Query for 'UPDATE FROM disk_info'. %s");
}

uint32_t x_qbobj_deleteDiskByDevname(CallContext *ctx, sqlite3 *db, Disk *disk)
{
    if (!disk || !disk->DevName) {
        REPORT(ctx, 8, "disk or disk->DevName is null. caller should specify devname.");
        return 0;
    }
    return execute(ctx, db, "DELETE FROM `$disk_info` WHERE id=%Q", disk->DevName)
        .or_report(ctx, "Failed DB Query for DELETE disk_info. %s");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
