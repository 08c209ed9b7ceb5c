// Reading the defaults for new accounts.
#include "accounts/workers.h"
#include "frame/read_row.h"

namespace qb {

uint32_t x_qbobj_getAccountDefault(CallContext *ctx, sqlite3 *db, AccountDefault *def)
{
    QB_ASSERT(def);
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT A.home_volume_id,A.diskquota_warn,A.group_id,A.disallow_password_change,"
               "A.home_folder_capacity_limit,A.group_membership,A.private_time_machine,"
               "A.private_time_machine_space,A.snapshot_protection FROM account_default A LIMIT 1")
            .or_report(ctx, "Failed DB Query for account_default. %s"));
    if (rows.count == 0) return REPORT(ctx, 5, "DB may be corrupted? 'account_default' table is not populated.");

    AccountDefault read{};
    read_row(ctx, rows, 0, read.HomeVolumeId, read.DiskQuotaWarn, read.GroupId, read.DisallowPasswordChange,
             read.HomeFolderCapacityLimit, read.GroupMembership, read.PrivateTimeMachine, read.PrivateTimeMachineSpace,
             read.SnapshotProtection);
    TRY_MEMORY(ctx);
    *def = read;
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
