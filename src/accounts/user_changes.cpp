// Checks and steps that creating, changing and removing users have in common.
#include "accounts/user_changes.h"

#include <cstring>

#include "frame/pool.h"
#include "frame/query.h"
#include "legacy/password.h"
#include "validate/validate.h"
#include "validate/validate_db.h"

namespace qb {
namespace {

constexpr size_t kAliasSize = 32;

}  // namespace

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

uint32_t resolve_group(CallContext *ctx, sqlite3 *db, int32_t ads, const char *name, int32_t *id)
{
    const int32_t rc = check_name_id(ctx, db, ads ? NameCheck::domain_group : NameCheck::local_group, name, id);
    if (rc == kCheckFailed) return REPORT(ctx, 5, "Failed DB Query for group. %s", kLookUpFailed);
    if (rc != kFound) return REPORT(ctx, 8, "Invalid GroupName (%s)", name);
    return 0;
}

uint32_t require_user(CallContext *ctx, sqlite3 *db, int32_t id, const char *too_low)
{
    if (id < 1) return REPORT(ctx, 8, too_low, id);
    const int32_t rc = check_id(ctx, db, IdCheck::user, id);
    if (rc == kCheckFailed) return REPORT(ctx, 5, "Failed DB Query for user. %s", kLookUpFailed);
    if (rc != kFound) return REPORT(ctx, 8, "Invalid resource_id (%d). Not exist.", id);
    return 0;
}

uint32_t read_stored_user(CallContext *ctx, sqlite3 *db, int32_t id, StoredUser *stored)
{
    constexpr int32_t kPrivileged = 1;
    Rows rows;
    if (auto bad = select(ctx, db, rows, "SELECT U.home,U.uname,U.is_privileged FROM `$user` U WHERE U.id=%d", id))
        return REPORT(ctx, 5, "Failed DB Query for user. %s", bad.text);
    if (rows.count == 0) return 0;
    stored->home = rows.word(ctx, 0, 0);
    stored->name = rows.word(ctx, 0, 1);
    stored->protected_account = rows.int32(0, 2) == kPrivileged;
    if (!stored->home || !stored->name) return REPORT(ctx, 2, "Failed to allocate resource.");
    return 0;
}

bool may_have_alias(const char *user_name, const char *group_name)
{
    const bool cloud_name = check_email(user_name, nullptr) == 0 || strlen(user_name) == kAliasSize;
    return cloud_name && check_one_of(group_name, Case::exact, {"admin", "sky-loft"}) == 0;
}

bool is_alias(const char *alias)
{
    return is_set(alias) && strlen(alias) <= kAliasSize;
}

uint32_t check_alias_clash(CallContext *ctx, sqlite3 *db, const char *user_name)
{
    const char *owner = nullptr;
    const int32_t rc = check_name(ctx, db, NameCheck::alias, user_name, &owner);
    if (rc == kCheckFailed) return REPORT(ctx, 5, "Failed DB Query for smb_username_map. %s", kLookUpFailed);
    if (rc == kFound && strcmp(or_empty(owner), user_name) != 0)
        return REPORT(ctx, 845,
                      "Cannot create or rename user. Username %s is already in use as an alias for Skyloft user %s.",
                      user_name, or_empty(owner));
    return 0;
}

uint32_t count_allowances(CallContext *ctx, sqlite3 *db, int32_t *count)
{
    *count = 0;
    if (auto bad = select_int32(ctx, db, *count, "SELECT COUNT(*) FROM '$timemachine_quota'"))
        return REPORT(ctx, 5, "Failed DB Query for $timemachine_quota. %s", bad.text);
    return 0;
}

uint32_t too_many_allowances(CallContext *ctx, const char *user_name)
{
    static_assert(kMostTimeMachineUsers == 16);
    return REPORT(ctx, 843, "Cannot exceed more than 16 time machine users (%s).", user_name);
}

uint32_t switch_afp_on(CallContext *ctx, sqlite3 *db)
{
    if (auto bad = execute(ctx, db, "UPDATE service_afp SET enabled=1"))
        return REPORT(ctx, 5, "Failed DB Query for 'UPDATE service_afp'. %s", bad.text);
    return 0;
}

}  // namespace qb
