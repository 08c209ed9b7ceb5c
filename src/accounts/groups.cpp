#include "accounts/groups.h"

#include "frame/addressed.h"
#include "validate/validate.h"
#include "validate/validate_db.h"

namespace qb {

uint32_t check_given_group_name(CallContext *ctx, const char *name)
{
    constexpr int32_t kTooLong = 3;
    const int32_t rc = check_group_name(name, nullptr);
    if (rc == kTooLong) return REPORT(ctx, 806, "GroupName is too long (%s)", name);
    if (rc != 0) return REPORT(ctx, 8, "Invalid GroupName (%s)", name);
    return 0;
}

uint32_t require_group(CallContext *ctx, sqlite3 *db, int32_t id)
{
    bool found = false;
    TRY(find_id(ctx, db, IdCheck::group, id, found).or_report(ctx, "Failed DB Query for 'SELECT group'. %s"));
    return found ? 0 : REPORT(ctx, 8, "Invalid resource_id (%d). Not exist.", id);
}

uint32_t add_member(CallContext *ctx, sqlite3 *db, int32_t group_id, const User *member)
{
    const int32_t id = addressed(member, &User::UserId);
    if (id < 1) return REPORT(ctx, 8, "Invalid resource_id (%d) in SecondaryMember.", id);
    return execute(ctx, db, "INSERT INTO `$group_has_user` (user_id,group_id) VALUES(%d,%d)", id, group_id)
        .or_report(ctx, "Failed DB Query for 'INSERT group_has_user. %s");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
