// What adding, changing and removing groups have in common.
#include <algorithm>
#include <limits>

#include "accounts/groups.h"
#include "frame/query.h"
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
    const int32_t rc = check_id(ctx, db, IdCheck::group, id);
    // A database that does not answer has not said that there is no such group.
    if (rc == kCheckFailed) return REPORT(ctx, 5, "Failed DB Query for 'SELECT group'. %s", "Look-up by id failed.");
    if (rc != kFound) return REPORT(ctx, 8, "Invalid resource_id (%d). Not exist.", id);
    return 0;
}

int32_t limit_of(const Quota *quota)
{
    constexpr uint64_t kMost = std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(std::min(quota->HardMB, kMost));
}

uint32_t add_member(CallContext *ctx, sqlite3 *db, int32_t group_id, const User *member)
{
    const int32_t id = member->resource_id < 1 ? member->UserId : member->resource_id;
    if (id < 1) return REPORT(ctx, 8, "Invalid resource_id (%d) in SecondaryMember.", id);
    if (auto bad = execute(ctx, db, "INSERT INTO `$group_has_user` (user_id,group_id) VALUES(%d,%d)", id, group_id))
        return REPORT(ctx, 5, "Failed DB Query for 'INSERT group_has_user. %s", bad.text);
    return 0;
}

}  // namespace qb
