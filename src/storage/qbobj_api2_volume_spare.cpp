// The disks set aside as spares for the volumes.
#include "frame/list.h"
#include "frame/read_row.h"
#include "storage/volumes.h"

namespace qb {

// A spare belongs to no volume, whatever its disk once belonged to: Pool stays empty. The state in its pool is told.
uint32_t x_qbobj_getVolumeSparesCollection(CallContext *ctx, sqlite3 *db, DiskCollection *spares)
{
    QB_ASSERT(spares);
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT D.id,D.present,D.model,D.serial,D.fw_version,D.rpm,D.sectors,D.capacity,D.volume_id,D.hwif,"
               "D.pool_type,D.pool_state,D.pool_hostid,D.controller,D.channel FROM `$disk_info` D INNER JOIN "
               "'$volume_spares' VS ON VS.disk_info_id=D.id")
            .or_report(ctx, "Failed DB Query for 'SELECT FROM disk_info'. %s"));
    List<Disk> list(&spares->Disk);
    for (int i = 0; i < rows.count; i++) {
        Disk *disk = list.append(ctx);
        TRY_MEMORY(ctx);
        const char *volume = nullptr;
        const char *state = nullptr;
        read_row(ctx, rows, i, both(disk->DevName, disk->DiskId), disk->Present, empty(disk->Model),
                 empty(disk->Serial), empty(disk->FirmwareVersion), disk->RPM, disk->Sectors, disk->Capacity, volume,
                 empty(disk->HardwareInterface), empty(disk->PoolType), state, disk->PoolHostId, disk->Controller,
                 disk->Channel);
        disk->resource_id = disk_number(disk->DiskId);
        disk->Pool = "";
        disk->PoolState = pool_state_name(state, volume, disk->PoolHostId);
    }
    TRY_MEMORY(ctx);
    return 0;
}

uint32_t x_qbobj_addVolumeSpare(CallContext *ctx, sqlite3 *db, const char *diskId)
{
    return execute(ctx, db, "INSERT INTO `$volume_spares`(disk_info_id)VALUES(%Q)", diskId)
        .or_report(ctx, "Failed DB Query for 'INSERT INTO $volume_spares'. %s");
}

uint32_t x_qbobj_deleteVolumeSpare(CallContext *ctx, sqlite3 *db, const char *diskId)
{
    return execute(ctx, db, "DELETE FROM `$volume_spares` WHERE disk_info_id=%Q", diskId)
        .or_report(ctx, "Failed DB Query for 'DELETE $volumespares'. %s");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
