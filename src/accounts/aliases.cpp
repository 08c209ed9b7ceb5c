#include "accounts/aliases.h"

#include <cstring>

#include "accounts/workers.h"
#include "frame/pool.h"
#include "validate/validate.h"
#include "validate/validate_db.h"

namespace qb {
namespace {

constexpr size_t kAliasSize = 32;

SmbUserNameMap alias_map(const char *user_name, const char *alias)
{
    SmbUserNameMap map{};
    map.UnixUserName = user_name;
    map.SmbUserName = alias;
    map.Type = TABLE_SMB_USERNAME_MAP_TYPE_UNAME;
    return map;
}

}  // namespace

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
    bool found = false;
    const char *owner = nullptr;
    TRY(find_name(ctx, db, NameCheck::alias, user_name, found, owner)
            .or_report(ctx, "Failed DB Query for smb_username_map. %s"));
    if (found && strcmp(or_empty(owner), user_name) != 0)
        return REPORT(ctx, 845,
                      "Cannot create or rename user. Username %s is already in use as an alias for Skyloft user %s.",
                      user_name, or_empty(owner));
    return 0;
}

uint32_t add_alias(CallContext *ctx, sqlite3 *db, const char *user_name, const char *alias)
{
    SmbUserNameMap map = alias_map(user_name, alias);
    return x_qbobj_addSmbUserNameMap(ctx, db, &map);
}

uint32_t set_alias(CallContext *ctx, sqlite3 *db, const char *user_name, const char *alias)
{
    SmbUserNameMap map = alias_map(user_name, alias);
    int32_t count = 0;
    TRY(count_maps(ctx, db, user_name, map.Type, count)
            .or_report_line(ctx, "Failed DB Query for 'SELECT FROM %s'. %s", TABLE_SMB_USERNAME_MAP));
    return count > 0 ? x_qbobj_setSmbUserNameMapSmbUserName(ctx, db, &map) : x_qbobj_addSmbUserNameMap(ctx, db, &map);
}

Failure count_maps(CallContext *ctx, sqlite3 *db, const char *unix_name, const char *type, int32_t &count)
{
    return select_int32(ctx, db, count, "SELECT COUNT(*) FROM `%s` WHERE unix_uname=%Q AND type=%Q",
                        TABLE_SMB_USERNAME_MAP, unix_name, type);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
