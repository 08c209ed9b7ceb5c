// Removing groups.
#include <cstring>

#include "accounts/groups.h"
#include "frame/query.h"

namespace qb {
namespace {

uint32_t check_no_primary_members(CallContext *ctx, sqlite3 *db, int32_t id)
{
    int32_t has_users = 0;
    if (auto bad = select_int32(ctx, db, has_users, "SELECT EXISTS(SELECT * FROM `$user` U WHERE U.group_id=%d)", id))
        return REPORT(ctx, 5, "Failed DB Query for 'SELECT user'. %s", bad.text);
    if (has_users) return REPORT(ctx, 822, "Cannot remove group, has users.");
    return 0;
}

/// The default group is known by its name; under another name it is a group like any other.
uint32_t check_not_default(CallContext *ctx, sqlite3 *db, int32_t id)
{
    const char *name = nullptr;
    if (auto bad = select_text(ctx, db, name, "SELECT gname FROM `$group` WHERE id=%d", id))
        return REPORT(ctx, 5, "Failed DB Query for 'SELECT group'. %s", bad.text);
    const char *default_name = nullptr;
    if (auto bad = select_text(ctx, db, default_name, "SELECT group_membership FROM `account_default`"))
        return REPORT(ctx, 5, "Failed DB Query for 'SELECT account_default'. %s\n", bad.text);
    if (name && default_name && strcmp(name, default_name) == 0)
        return REPORT(ctx, 844, "Cannot remove default group.");
    return 0;
}

uint32_t delete_details(CallContext *ctx, sqlite3 *db, int32_t id)
{
    if (auto bad = execute(ctx, db, "DELETE FROM group_quota WHERE group_id=%d", id))
        return REPORT(ctx, 5, "Failed 'DELETE group_quota'. %s", bad.text);
    if (auto bad = execute(ctx, db, "DELETE FROM _group_quota_stat WHERE group_id=%d", id))
        return REPORT(ctx, 5, "Failed 'DELETE _group_quota_stat'. %s", bad.text);
    if (auto bad = execute(ctx, db, "DELETE FROM `$group_has_user` WHERE group_id=%d", id))
        return REPORT(ctx, 5, "Failed 'DELETE group_has_user'. %s", bad.text);
    return 0;
}

/// The row stays, so that neither the id nor the name is given to another group.
uint32_t mark_removed(CallContext *ctx, sqlite3 *db, int32_t id)
{
    if (auto bad = execute(ctx, db, "UPDATE `$group` SET is_privileged=-1 WHERE id=%d", id))
        return REPORT(ctx, 5, "Failed DB Query for 'UPDATE FROM group'. %s", bad.text);
    if (sqlite3_changes(db) == 0) return REPORT(ctx, 6, "None of row is deleted. May be bad resource_id=%d'", id);
    return 0;
}

uint32_t delete_group(CallContext *ctx, sqlite3 *db, const Group *group)
{
    const int32_t id = addressed_group(group);
    if (id < 1) return REPORT(ctx, 8, "Invalid resource_id (%d)", id);
    TRY(require_group(ctx, db, id));
    TRY(check_no_primary_members(ctx, db, id));
    TRY(check_not_default(ctx, db, id));
    TRY(delete_details(ctx, db, id));
    return mark_removed(ctx, db, id);
}

}  // namespace

uint32_t x_qbobj_deleteGroup(CallContext *ctx, sqlite3 *db, Group *group)
{
    for (; group; group = group->next) TRY(delete_group(ctx, db, group));
    return 0;
}

}  // namespace qb
