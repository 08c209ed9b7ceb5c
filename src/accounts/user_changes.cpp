#include "accounts/user_changes.h"

#include "frame/pool.h"
#include "frame/read_row.h"
#include "validate/password.h"
#include "validate/validate.h"
#include "validate/validate_db.h"

namespace qb {

uint32_t check_given_user_name(CallContext *ctx, int32_t ads, const char *name, const char *too_long)
{
    constexpr int32_t kTooLong = 3;
    constexpr int32_t kReservedPrefix = 4;
    constexpr int32_t kReservedName = 5;
    const int32_t rc = ads ? check_user_name_with_blanks(name, nullptr) : check_user_name(name, nullptr);
    switch (rc) {
        case 0: return 0;
        case kTooLong: return REPORT(ctx, 806, too_long, name);
        case kReservedPrefix:
        case kReservedName: return REPORT(ctx, 809, "UserName (%s) is reserved", name);
        default: return REPORT(ctx, 8, "Invalid UserName (%s), rc=%d", name, rc);
    }
}

uint32_t check_given_email(CallContext *ctx, const char *email)
{
    if (!is_set(email)) return 0;
    if (const int32_t rc = check_email(email, nullptr)) return REPORT(ctx, 8, "Invalid Email (%s) rc=%d", email, rc);
    return 0;
}

uint32_t hash_given_password(CallContext *ctx, const char *password, const char **hash)
{
    // The message goes to the log, where a password in clear text has no place.
    if (const int32_t rc = check_password(ctx, password, hash))
        return REPORT(ctx, 8, "Invalid Password (%s) rc=%d", masked_password, rc);
    return 0;
}

uint32_t require_primary_group(CallContext *ctx, sqlite3 *db, int32_t ads, const char *name, int32_t *id)
{
    bool found = false;
    TRY(find_name(ctx, db, ads ? NameCheck::domain_group : NameCheck::local_group, name, found, *id)
            .or_report(ctx, "Failed DB Query for group. %s"));
    return found ? 0 : REPORT(ctx, 8, "Invalid GroupName (%s)", name);
}

uint32_t require_user(CallContext *ctx, sqlite3 *db, int32_t id, const char *too_low)
{
    if (id < 1) return REPORT(ctx, 8, too_low, id);
    bool found = false;
    TRY(find_id(ctx, db, IdCheck::user, id, found).or_report(ctx, "Failed DB Query for user. %s"));
    return found ? 0 : REPORT(ctx, 8, "Invalid resource_id (%d). Not exist.", id);
}

uint32_t read_stored_user(CallContext *ctx, sqlite3 *db, int32_t id, StoredUser *stored)
{
    constexpr int32_t kPrivileged = 1;
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT U.home,U.uname,U.is_privileged FROM `$user` U WHERE U.id=%d", id)
            .or_report(ctx, "Failed DB Query for user. %s"));
    if (rows.count == 0) return 0;
    int32_t privileged = 0;
    read_row(ctx, rows, 0, empty(stored->home), empty(stored->name), privileged);
    TRY_MEMORY(ctx);
    stored->protected_account = privileged == kPrivileged;
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
