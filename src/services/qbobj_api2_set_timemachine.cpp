// Writing the shared Time Machine target and switching it.
#include "frame/pool.h"
#include "frame/query.h"
#include "validate/password.h"
#include "services/services.h"
#include "validate/validate.h"

namespace qb {
namespace {

constexpr int32_t kMostOtherUsers = 15;

/// The account of the target is switched off by a "!" before its password hash.
uint32_t unlock_account(CallContext *ctx, sqlite3 *db)
{
    return execute(ctx, db, "UPDATE `$user` SET passwd=replace(passwd,'!','') WHERE uname='Quillbox'")
        .or_report(ctx, "Failed DB Query for 'UPDATE user'. %s");
}

uint32_t lock_account(CallContext *ctx, sqlite3 *db)
{
    return execute(ctx, db, "UPDATE `$user` SET passwd='!'||replace(passwd,'!','') WHERE uname='Quillbox'")
        .or_report(ctx, "Failed DB Query for 'UPDATE user'. %s");
}

uint32_t remove_allowance(CallContext *ctx, sqlite3 *db)
{
    return execute(ctx, db, "DELETE FROM '$timemachine_quota' WHERE user_id=96")
        .or_report(ctx, "Failed DB Query for 'UPDATE $timemachine_quota'. %s");
}

/// The target itself is counted, so that a full house cannot change its size either.
uint32_t check_limit(CallContext *ctx, sqlite3 *db)
{
    int32_t users = 0;
    TRY(select_int32(ctx, db, users, "SELECT COUNT(*) FROM '$timemachine_quota'")
            .or_report(ctx, "Failed DB Query for $timemachine_quota. %s"));
    if (users > kMostOtherUsers) return REPORT(ctx, 843, "Cannot exceed more than 16 time machine users (Quillbox).");
    return 0;
}

/// A new password opens the account, and so does the word that the old one stays.
uint32_t write_password(CallContext *ctx, sqlite3 *db, const char *password)
{
    if (!is_set(password) || is_password_mask(password)) return unlock_account(ctx, db);
    const char *hash = nullptr;
    if (const int32_t rc = check_password(ctx, password, &hash))
        return REPORT(ctx, 8, "Invalid Password (%s) rc=%d", masked_password, rc);
    return execute(ctx, db, "UPDATE `$user` SET passwd=%Q WHERE uname='Quillbox'", hash)
        .or_report(ctx, "Failed DB Query for 'UPDATE user'. %s");
}

uint32_t switch_on(CallContext *ctx, sqlite3 *db, const Timemachine *tm)
{
    TRY(check_limit(ctx, db));
    TRY(write_password(ctx, db, tm->Password));
    TRY(execute(ctx, db, "UPDATE service_afp SET enabled=1")
            .or_report(ctx, "Failed DB Query for 'UPDATE service_afp'. %s"));
    TRY(execute(ctx, db, "UPDATE service_avahi SET afp=1,timemachine=1")
            .or_report(ctx, "Failed DB Query for 'UPDATE service_avahi'. %s"));
    return execute(ctx, db,
                   "INSERT OR REPLACE INTO `$timemachine_quota` (user_id,enabled,capacity_mb) VALUES (96,1,%d)",
                   tm->CapacityMB)
        .or_report(ctx, "Failed DB Query for 'UPDATE $timemachine_quota'. %s");
}

uint32_t switch_off(CallContext *ctx, sqlite3 *db)
{
    TRY(lock_account(ctx, db));
    TRY(execute(ctx, db, "UPDATE service_avahi SET afp=0,timemachine=0")
            .or_report(ctx, "Failed DB Query for 'UPDATE user'. %s"));
    return remove_allowance(ctx, db);
}

}  // namespace

uint32_t x_qbobj_setTimemachine(CallContext *ctx, sqlite3 *db, Timemachine *tm)
{
    QB_ASSERT(tm);
    return tm->Enabled ? switch_on(ctx, db, tm) : switch_off(ctx, db);
}

uint32_t x_qbobj_setTimemachineEnable(CallContext *ctx, sqlite3 *db, int32_t enable)
{
    if (!enable) {
        TRY(lock_account(ctx, db));
        TRY(remove_allowance(ctx, db));
        return execute(ctx, db, "UPDATE service_avahi SET timemachine=0")
            .or_report(ctx, "Failed DB Query for 'UPDATE service_avahi'. %s");
    }
    TRY(unlock_account(ctx, db));
    // AFP can be switched on by hand as well: that it was not is no reason to keep the target off.
    static_cast<void>(execute(ctx, db, "UPDATE service_afp SET enabled=1"));
    return execute(ctx, db, "UPDATE service_avahi SET timemachine=1")
        .or_report(ctx, "Failed DB Query for 'UPDATE service_avahi'. %s");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
