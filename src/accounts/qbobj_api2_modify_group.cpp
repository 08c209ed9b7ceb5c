// Changing groups: name, quotas, secondary members.
#include "accounts/groups.h"
#include "accounts/quotas.h"
#include "accounts/workers.h"
#include "frame/addressed.h"
#include "frame/pool.h"
#include "frame/set_list.h"
#include "validate/validate_db.h"

namespace qb {
namespace {

/// Looks at local groups only: a domain group's name is refused by the table itself.
uint32_t check_name_of_others(CallContext *ctx, sqlite3 *db, int32_t id, const char *name)
{
    bool found = false;
    int32_t holder = 0;
    TRY(find_name(ctx, db, NameCheck::local_group, name, found, holder)
            .or_report(ctx, "Failed DB Query for 'SELECT group'. %s"));
    if (found && holder != id) return REPORT(ctx, 803, "Cannot rename to group which already exists (%s).", name);
    return 0;
}

/// A record written back as it was read must not touch the row, so the names are compared first.
uint32_t rename_group(CallContext *ctx, sqlite3 *db, int32_t id, const char *name)
{
    TRY(check_given_group_name(ctx, name));
    SetList<256> set;
    set.add("gname='%q'", name);
    TRY(check_name_of_others(ctx, db, id, name));
    const char *current = nullptr;
    TRY(select_text(ctx, db, current, "SELECT G.gname FROM `$group` G WHERE G.id=%d AND G.gname<>%Q", id, name)
            .or_report(ctx, "Failed DB Query for 'SELECT group'. %s"));
    if (!current) return 0;
    const Failure bad = execute(ctx, db, "UPDATE `$group` SET %s WHERE id=%d", +set.text, id);
    if (bad.rc == kConstraint) return REPORT(ctx, 803, "Specified group name already exists");
    return bad.or_report(ctx, "Failed DB Query for 'UPDATE group'. %s");
}

/// Sets or, without a limit, removes the quota of one share. The soft limit is undivided, as in creation.
/// The messages name the users' table; whoever searches the log for them expects these words.
uint32_t set_quota(CallContext *ctx, sqlite3 *db, int32_t group_id, const Quota *quota)
{
    const int32_t limit = limit_of(quota);
    if (limit == 0)
        return execute(ctx, db,
                       "DELETE FROM group_quota WHERE group_id=%d AND share_id=(SELECT S.id FROM share S WHERE "
                       "S.zfs_name=%Q)",
                       group_id, quota->ShareId)
            .or_report(ctx, "Failed DB Query for 'DELETE user_quota. %s");
    return execute(ctx, db,
                   "INSERT OR REPLACE INTO group_quota (group_id,share_id,mb_soft,mb_hard) VALUES(%d,(SELECT "
                   "S.id FROM share S WHERE zfs_name=%Q),(%d*(SELECT diskquota_warn FROM account_default LIMIT "
                   "1)),%d)",
                   group_id, quota->ShareId, limit, limit)
        .or_report(ctx, "Failed DB Query for 'UPDATE user_quota. %s");
}

/// The list replaces the members as a whole, and a record without one has none. It ends at the first
/// member without a name.
uint32_t replace_members(CallContext *ctx, sqlite3 *db, int32_t group_id, const User *member)
{
    TRY(execute(ctx, db, "DELETE FROM `$group_has_user` WHERE group_id=%d", group_id)
            .or_report(ctx, "Failed DB Query for 'DELETE group_has_user. %s"));
    for (; member && is_set(member->UserName); member = member->next) TRY(add_member(ctx, db, group_id, member));
    return 0;
}

uint32_t modify_group(CallContext *ctx, sqlite3 *db, const Group *group)
{
    const int32_t id = addressed(group, &Group::GroupId);
    if (id < 1) return REPORT(ctx, 8, "Invalid resource_id (%d).", id);
    TRY(require_group(ctx, db, id));
    if (is_set(group->GroupName)) TRY(rename_group(ctx, db, id, group->GroupName));
    for (const Quota *quota = group->GroupQuota; quota; quota = quota->next) TRY(set_quota(ctx, db, id, quota));
    return replace_members(ctx, db, id, group->SecondaryMember);
}

}  // namespace

uint32_t x_qbobj_modifyGroup(CallContext *ctx, sqlite3 *db, Group *group)
{
    for (; group; group = group->next) TRY(modify_group(ctx, db, group));
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
