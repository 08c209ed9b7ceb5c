// Removing groups.
#include <cstring>

#include "accounts/groups.h"
#include "accounts/workers.h"
#include "frame/addressed.h"

namespace qb {
namespace {

uint32_t check_no_primary_members(CallContext *ctx, sqlite3 *db, int32_t id)
{
    int32_t has_users = 0;
    TRY(select_int32(ctx, db, has_users, "SELECT EXISTS(SELECT * FROM `$user` U WHERE U.group_id=%d)", id)
            .or_report(ctx, "Failed DB Query for 'SELECT user'. %s"));
    if (has_users) return REPORT(ctx, 822, "Cannot remove group, has users.");
    return 0;
}

/// The default group is known by its name; under another name it is a group like any other.
uint32_t check_not_default(CallContext *ctx, sqlite3 *db, int32_t id)
{
    const char *name = nullptr;
    TRY(select_text(ctx, db, name, "SELECT gname FROM `$group` WHERE id=%d", id)
            .or_report(ctx, "Failed DB Query for 'SELECT group'. %s"));
    const char *default_name = nullptr;
    TRY(select_text(ctx, db, default_name, "SELECT group_membership FROM `account_default`")
            .or_report(ctx, "Failed DB Query for 'SELECT account_default'. %s\n"));
    if (name && default_name && strcmp(name, default_name) == 0)
        return REPORT(ctx, 844, "Cannot remove default group.");
    return 0;
}

uint32_t delete_details(CallContext *ctx, sqlite3 *db, int32_t id)
{
    TRY(execute(ctx, db, "DELETE FROM group_quota WHERE group_id=%d", id)
            .or_report(ctx, "Failed 'DELETE group_quota'. %s"));
    TRY(execute(ctx, db, "DELETE FROM _group_quota_stat WHERE group_id=%d", id)
            .or_report(ctx, "Failed 'DELETE _group_quota_stat'. %s"));
    return execute(ctx, db, "DELETE FROM `$group_has_user` WHERE group_id=%d", id)
        .or_report(ctx, "Failed 'DELETE group_has_user'. %s");
}

/// The row stays, so that neither the id nor the name is given to another group.
uint32_t mark_removed(CallContext *ctx, sqlite3 *db, int32_t id)
{
    TRY(execute(ctx, db, "UPDATE `$group` SET is_privileged=-1 WHERE id=%d", id)
            .or_report(ctx, "Failed DB Query for 'UPDATE FROM group'. %s"));
    if (sqlite3_changes(db) == 0) return REPORT(ctx, 6, "None of row is deleted. May be bad resource_id=%d'", id);
    return 0;
}

uint32_t delete_group(CallContext *ctx, sqlite3 *db, const Group *group)
{
    const int32_t id = addressed(group, &Group::GroupId);
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
// SPDX-License-Identifier: Apache-2.0
