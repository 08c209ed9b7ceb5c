// What changed in the bays: the last inventory beside a new one, in both directions.
#include "frame/list.h"
#include "frame/read_row.h"
#include "storage/volumes.h"

namespace qb {
namespace {

constexpr uint32_t kNoInventory = 3;  // told by the code alone
constexpr int32_t kAdded = 1;
constexpr int32_t kRemoved = -1;
constexpr char kNoDiffMemory[] = "Failed to allocate object.";

constexpr char kOld[] = "_old_";  // before the name of a table: its copy
constexpr const char *kInventory[] = {"$disk_info", nullptr};

/// The controller stands twice: as the number of the enclosure, and as what the diff says of it.
constexpr char kColumns[] =
    "id,model,serial,fw_version,rpm,sectors,capacity,controller,port,hwif,volume_id,pool_type,pool_state,pool_hostid,"
    "controller,channel,replaced_with_spare,is_signed_by_vxmr,present";

constexpr int kController = 7;  // the enclosure's column
constexpr int kPresent = 18;

/// What a row has beside the fields of the diff.
struct Bay {
    int32_t controller = 0;
    int32_t port = 0;
    const char *volume = nullptr;
    const char *state = nullptr;
};

/// A name that cannot be read is told in the error record; the disk is listed without it.
void read_place(CallContext *ctx, sqlite3 *db, const Bay &bay, DiskDiff *diff)
{
    const char *name = nullptr;
    const char *slot = nullptr;
    (void)select_text(ctx, db, name, "SELECT name FROM _disk_enclosure WHERE controller=%d", bay.controller)
        .or_report(ctx, "Failed DB Query for 'SELECT FROM _disk_enclosure'. %s");
    (void)select_text(ctx, db, slot, "SELECT slot_col||'x'||slot_row FROM disk_port WHERE controller=%d AND port=%d",
                      bay.controller, bay.port)
        .or_report(ctx, "Failed DB Query for 'SELECT FROM disk_port'. %s");
    diff->DiskEnclosureName = name;
    diff->SlotName = slot;
}

/// Reads a row; the names of its place are asked for when the disk is there.
Bay read_diff(CallContext *ctx, const Rows &rows, int row, DiskDiff *diff)
{
    Bay bay;
    read_row(ctx, rows, row, empty(diff->DiskId), empty(diff->Model), empty(diff->Serial), empty(diff->FirmwareVersion),
             diff->RPM, diff->Sectors, diff->Capacity, bay.controller, bay.port, empty(diff->HardwareInterface),
             bay.volume, empty(diff->PoolType), bay.state, diff->PoolHostId, diff->Controller, diff->Channel,
             diff->ReplacedWithSpare, diff->IsSignedByVexmoor, skip);
    diff->PoolState = pool_state_name(bay.state, bay.volume, diff->PoolHostId);
    diff->DiskEnclosureId = enclosure_key(ctx, bay.controller);
    return bay;
}

/// The volume of the disk that sat in a bay before. Without an answer the disk is listed without a volume.
void read_former_volume(CallContext *ctx, sqlite3 *db, DiskDiff *diff)
{
    Rows rows;
    const Failure bad =
        select(ctx, db, rows, "SELECT volume_id FROM %s$disk_info WHERE controller=%d AND channel=%d AND present=0",
               +kOld, diff->Controller, diff->Channel);
    if (!bad && rows.count > 0) read_row(ctx, rows, 0, empty(diff->Pool));
}

/// Appends the present disks of a result.
uint32_t append_disks(CallContext *ctx, sqlite3 *db, const Rows &rows, int32_t direction, List<DiskDiff> *list)
{
    for (int i = 0; i < rows.count; i++) {
        if (rows.int32(i, kPresent) == 0) continue;
        DiskDiff *diff = list->append(ctx);
        TRY_MEMORY(ctx, kNoDiffMemory);
        diff->AddOrRemove = direction;
        const Bay bay = read_diff(ctx, rows, i, diff);
        TRY_MEMORY(ctx, kNoDiffMemory);
        if (direction == kAdded)
            TRACE(ctx, "Disk id=%s at %s is added\n", diff->DiskId, or_empty(rows.cell(i, kController)));
        else TRACE(ctx, "Disk id=%s at %s is removed\n", diff->DiskId, or_empty(rows.cell(i, kController)));
        read_place(ctx, db, bay, diff);
        if (direction == kAdded) read_former_volume(ctx, db, diff);
        TRY_MEMORY(ctx, kNoDiffMemory);
    }
    return 0;
}

uint32_t append_added(CallContext *ctx, sqlite3 *db, List<DiskDiff> *list)
{
    Rows rows;
    if (select(ctx, db, rows,
               "SELECT %s FROM `$disk_info` WHERE id NOT IN (SELECT id FROM %s$disk_info WHERE present=1)", +kColumns,
               +kOld)
            .logged(ctx, "Error in SELECT disk_info EXCEPT old_$disk_info (%s)\n"))
        return kNoInventory;
    TRACE(ctx, "%d disks are added\n", rows.count);
    return append_disks(ctx, db, rows, kAdded, list);
}

uint32_t append_removed(CallContext *ctx, sqlite3 *db, List<DiskDiff> *list)
{
    Rows rows;
    if (select(ctx, db, rows,
               "SELECT %s FROM %s$disk_info WHERE id NOT IN (SELECT id FROM `$disk_info` WHERE present=1)", +kColumns,
               +kOld)
            .logged(ctx, "Error in SELECT old_$disk_info EXCEPT disk_info (%s)\n"))
        return kNoInventory;
    TRACE(ctx, "%d disks are deleted\n", rows.count);
    return append_disks(ctx, db, rows, kRemoved, list);
}

/// The support library's calls for whole tables have no failure text of their own.
Failure table_call(CallContext *ctx, int rc)
{
    return noted(ctx, {rc, rc ? sqlite3_errstr(rc) : nullptr});
}

}  // namespace

uint32_t x_qbobj_getDiskDiff(CallContext *ctx, sqlite3 *db, DiskDiff **diff)
{
    if (!diff) {
        REPORT(ctx, 8, "diff is NULL");
        return 0;
    }
    if (table_call(ctx, qbdb_sql_duplicate_tables(ctx->qbdb, db, 0, kInventory, kOld))
            .logged(ctx, "Error in qbdb_sql_duplicate_tables() %s\n"))
        return kNoInventory;
    // An inventory that cannot be taken leaves the old one, and no disk differs.
    (void)table_call(ctx, qbdb_import_nolock(ctx->qbdb, db, QBDB_IMPORT_DISKS));
    List<DiskDiff> list(diff);
    TRY(append_added(ctx, db, &list));
    TRY(append_removed(ctx, db, &list));
    if (table_call(ctx, qbdb_sql_delete_tables(ctx->qbdb, db, 0, kInventory, kOld))
            .logged(ctx, "Error in qbdb_sql_delete_tables() %s\n"))
        return kNoInventory;
    return 0;
}

uint32_t x_qbobj_getDiskByDiskDiff(CallContext *ctx, sqlite3 *db, DiskDiff *diff, Disk *disk)
{
    if (!disk || !diff) {
        REPORT(ctx, 8, "disk or diff is null.");
        return 0;
    }
    TRACE(ctx, "In x_qbobj_getDiskByDiskDiff. diff-controller[%d], diff-channel[%d]", diff->Controller, diff->Channel);
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT D.id FROM `$disk_info` D WHERE D.controller=%d AND D.channel=%d AND D.present=0",
               diff->Controller, diff->Channel)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM disk_info'. %s"));
    TRACE(ctx, "In x_qbobj_getDiskByDiskDiff. nrow[%d]", rows.count);
    for (int i = 0; i < rows.count; i++) {
        read_row(ctx, rows, i, disk->DevName);
        TRY_MEMORY(ctx);
        TRACE(ctx, "In x_qbobj_getDiskByDiskDiff. DISKID[%s]", disk->DevName);
        // A look-up that fails ends the search; the error record says why.
        if (find_disk(ctx, db, disk) != 0) return 0;
        if (!disk->Pool) continue;
        TRACE(ctx, "In x_qbobj_getDiskByDiskDiff. DISKID[%s] Volume[%s]", disk->DevName, disk->Pool);
        return 0;
    }
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
