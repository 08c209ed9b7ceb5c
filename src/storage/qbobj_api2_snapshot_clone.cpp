// Clones of snapshots: which share was made from which snapshot. Names are kept as callers give them.
#include "frame/read_row.h"
#include "frame/set_list.h"
#include "storage/snapshots.h"

namespace qb {
namespace {

using Condition = JoinedText<4096>;

constexpr char kTooLong[] = "The names to search for are too long.";

}  // namespace

uint32_t x_qbobj_getSnapshotClones(CallContext *ctx, sqlite3 *db, const char *parentSnapshotName,
                                   const char *parentzfsName, SnapshotCloneCollection *clones)
{
    QB_ASSERT(clones);
    Condition where("");
    if (parentSnapshotName && parentzfsName)
        where.add(" WHERE parent_snapshot_name=%Q AND parent_zfs_name=%Q", parentSnapshotName, parentzfsName);
    else if (parentSnapshotName) where.add(" WHERE parent_snapshot_name=%Q", parentSnapshotName);
    else if (parentzfsName) where.add(" WHERE parent_zfs_name=%Q", parentzfsName);
    if (where.dropped) return REPORT(ctx, 5, "Failed DB Query for 'SELECT FROM snapshot_clones'. %s", kTooLong);
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT id,cloned_zfs_name,parent_snapshot_name,parent_zfs_name FROM `$snapshot_clones`%s", +where.text)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM snapshot_clones'. %s"));
    List<SnapshotClone> list(&clones->SnapshotClone);
    for (int i = 0; i < rows.count; i++) {
        SnapshotClone *clone = list.append(ctx);
        TRY_MEMORY(ctx);
        read_row(ctx, rows, i, both(clone->resource_id, clone->ID), empty(clone->ClonedShareName),
                 empty(clone->ParentSnapshotName), empty(clone->ParentShareName));
        TRY_MEMORY(ctx);
    }
    TRACE(ctx, "%s() rc=%d nrow=%d\n", __func__, 0, rows.count);
    return 0;
}

uint32_t x_qbobj_addSnapshotClone(CallContext *ctx, sqlite3 *db, const char *clonedzfsName,
                                  const char *parentSnapshotName, const char *parentzfsName)
{
    return execute(ctx, db,
                   "INSERT INTO `$snapshot_clones`(cloned_zfs_name,parent_snapshot_name,parent_zfs_name) VALUES "
                   "(%Q,%Q,%Q)",
                   clonedzfsName, parentSnapshotName, parentzfsName)
        .or_report(ctx, "Failed DB Query for 'INSERT INTO $snapshot_clones'. %s");
}

uint32_t x_qbobj_deleteSnapshotClone(CallContext *ctx, sqlite3 *db, const char *clonedzfsName,
                                     const char *parentSnapshotName, const char *parentzfsName)
{
    Condition condition("");
    if (parentSnapshotName && parentzfsName)
        condition.add("parent_snapshot_name=%Q AND parent_zfs_name=%Q", parentSnapshotName, parentzfsName);
    else if (clonedzfsName) condition.add("cloned_zfs_name=%Q", clonedzfsName);
    else if (parentzfsName) condition.add("parent_zfs_name=%Q", parentzfsName);
    if (condition.dropped) return REPORT(ctx, 5, "Failed DB Query for 'DELETE $snapshot_clones'. %s", kTooLong);
    TRY_MEMORY(ctx);
    // Without any name there is no condition, and the database refuses the statement.
    return execute(ctx, db, "DELETE FROM `$snapshot_clones` WHERE %s", +condition.text)
        .or_report(ctx, "Failed DB Query for 'DELETE $snapshot_clones'. %s");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
