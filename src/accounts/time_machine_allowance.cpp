#include "accounts/time_machine_allowance.h"

#include "frame/pool.h"
#include "frame/read_row.h"
#include "qbobj/legacy.h"
#include "validate/validate_db.h"

namespace qb {

uint32_t read_time_machine_allowance(CallContext *ctx, sqlite3 *db, int32_t user_id, UserTimeMachineQuota **allowance)
{
    *allowance = nullptr;
    Rows folder;
    TRY(select(ctx, db, folder,
               "SELECT A.home_volume_id || '/.timemachine/' || U.uname FROM account_default A, '$user' U WHERE U.id=%d",
               user_id)
            .or_report(ctx, "Failed DB Query for 'SELECT account_default and $user'."));
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT T.enabled,T.capacity_mb FROM '$timemachine_quota' T WHERE T.user_id=%d", user_id)
            .or_report(ctx, "Failed DB Query for $timemachine_quota. %s"));
    if (rows.count == 0) return 0;
    auto *read = allocate<UserTimeMachineQuota>(ctx);
    TRY_MEMORY(ctx);
    read->UserId = user_id;
    read_row(ctx, rows, 0, read->Enabled, read->CapacityMB);
    // Without a home volume there is no folder, and nothing is used.
    read->UsedMB = get_tm_used_mb(folder.count ? folder.cell(0, 0) : nullptr);
    *allowance = read;
    return 0;
}

bool read_allowances_of_users(CallContext *ctx, sqlite3 *db, const IdRange &users, Related *allowances)
{
    // The folder of one user is asked for, although nobody needs it: reading each user for itself would find out, too,
    // when it cannot be had.
    Related folder;
    return folder.read(ctx, db,
                       "SELECT A.home_volume_id || '/.timemachine/' || U.uname FROM account_default A, '$user' U WHERE "
                       "U.id=%d",
                       users.least) &&
           allowances->read(ctx, db,
                            "SELECT T.user_id,T.enabled,T.capacity_mb FROM '$timemachine_quota' T WHERE T.user_id "
                            "BETWEEN %d AND %d ORDER BY T.user_id",
                            users.least, users.most);
}

uint32_t count_allowances(CallContext *ctx, sqlite3 *db, int32_t *count)
{
    return count_timemachine_quotas(ctx, db, *count).or_report(ctx, "Failed DB Query for $timemachine_quota. %s");
}

uint32_t too_many_allowances(CallContext *ctx, const char *user_name)
{
    static_assert(kMostTimeMachineUsers == 16);
    return REPORT(ctx, 843, "Cannot exceed more than 16 time machine users (%s).", user_name);
}

uint32_t switch_afp_on(CallContext *ctx, sqlite3 *db)
{
    return execute(ctx, db, "UPDATE service_afp SET enabled=1")
        .or_report(ctx, "Failed DB Query for 'UPDATE service_afp'. %s");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
