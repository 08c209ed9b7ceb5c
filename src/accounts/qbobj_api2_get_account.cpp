// Reading the defaults for new accounts.
#include "accounts/passwords.h"
#include "frame/query.h"

namespace qb {

uint32_t x_qbobj_getAccountDefault(CallContext *ctx, sqlite3 *db, AccountDefault *def)
{
    QB_ASSERT(def);
    Rows rows;
    if (auto bad = select(ctx, db, rows,
                          "SELECT A.home_volume_id,A.diskquota_warn,A.group_id,A.disallow_password_change,"
                          "A.home_folder_capacity_limit,A.group_membership,A.private_time_machine,"
                          "A.private_time_machine_space,A.snapshot_protection FROM account_default A LIMIT 1"))
        return REPORT(ctx, 5, "Failed DB Query for account_default. %s", bad.text);
    if (rows.count == 0) return REPORT(ctx, 5, "DB may be corrupted? 'account_default' table is not populated.");

    AccountDefault read{};
    read.HomeVolumeId = rows.text(ctx, 0, 0);
    read.DiskQuotaWarn = rows.int32(0, 1);
    read.GroupId = rows.int32(0, 2);
    read.DisallowPasswordChange = rows.int32(0, 3);
    read.HomeFolderCapacityLimit = rows.uint64(0, 4);
    read.GroupMembership = rows.text(ctx, 0, 5);
    read.PrivateTimeMachine = rows.int32(0, 6);
    read.PrivateTimeMachineSpace = rows.int32(0, 7);
    read.SnapshotProtection = rows.int32(0, 8);
    TRY_MEMORY(ctx);
    *def = read;
    return 0;
}

}  // namespace qb
