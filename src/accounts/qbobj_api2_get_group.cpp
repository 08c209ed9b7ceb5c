// The group list, single groups, and the look-ups of ids, names and memberships.
#include <cstring>

#include "accounts/account_list.h"
#include "accounts/lookup.h"
#include "accounts/quotas.h"
#include "accounts/users.h"
#include "accounts/workers.h"
#include "frame/addressed.h"
#include "frame/list.h"
#include "frame/together.h"

namespace qb {
namespace {

constexpr int32_t kMember = 0;
constexpr int32_t kNotMember = 1;

/// The clauses that a query adds to the list's statements.
struct Clauses {
    const char *kind = "";  // "NOT ": domain groups instead of local ones
    const char *order = "ORDER BY G.gname";
    char name[1024] = "";  // holds the longest pattern, each of its bytes doubled
    PageClause page = "";
};

struct Order {
    int32_t number;
    const char *clause;
};

constexpr Order kOrders[] = {
    {1, "ORDER BY G.gname"},
    {2, "ORDER BY G.id"},
    {-1, "ORDER BY G.gname DESC"},
    {-2, "ORDER BY G.id DESC"},
};

/// Clauses of a query; an order that is not known leaves the default.
uint32_t build_query(CallContext *ctx, const AccountQuery *query, Clauses *clauses)
{
    const char *pattern = or_empty(query->name_like);
    if (strlen(pattern) >= kPatternLimit) return REPORT(ctx, 8, "Query string is too long.");
    if (*pattern) sqlite3_snprintf(sizeof clauses->name, clauses->name, "AND G.gname LIKE %Q", pattern);
    for (const Order &order : kOrders)
        if (order.number == query->order) clauses->order = order.clause;
    build_page(query, clauses->page);
    return 0;
}

/// Without a query the list shows the groups that the appliance works with: domain groups in directory mode.
uint32_t build_clauses(CallContext *ctx, sqlite3 *db, const AccountQuery *query, Clauses *clauses)
{
    int32_t domain = 0;
    if (query) domain = query->ads;
    else TRY(read_ads_mode(ctx, db, &domain));
    if (domain) clauses->kind = "NOT ";
    return query ? build_query(ctx, query, clauses) : 0;
}

/// The messages speak of users, as they always did.
uint32_t count_groups(CallContext *ctx, sqlite3 *db, const Clauses &clauses, int32_t *total, int32_t *matching)
{
    const char *name = clauses.name;
    TRY(select_int32(ctx, db, *total,
                     "SELECT COUNT(*)  FROM `$group` G WHERE G.is_privileged=0 AND G.rid IS %sNULL AND "
                     "G.gname<>'nogroup' AND G.gname<>'guest'",
                     clauses.kind)
            .or_report(ctx, "Failed DB Query for user. %s"));
    return select_int32(ctx, db, *matching,
                        "SELECT COUNT(*)  FROM `$group` G WHERE G.is_privileged=0 AND G.rid IS %sNULL AND "
                        "G.gname<>'nogroup' AND G.gname<>'guest' %s",
                        clauses.kind, name)
        .or_report(ctx, "Failed DB Query for user. %s");
}

uint32_t select_groups(CallContext *ctx, sqlite3 *db, const Clauses &clauses, Rows *rows)
{
    const char *name = clauses.name;
    const char *page = clauses.page;
    return select(ctx, db, *rows,
                  "SELECT G.id,G.gname,CASE WHEN G.rid IS NULL THEN 0 ELSE 1 END FROM `$group` G WHERE "
                  "G.is_privileged=0 AND G.rid IS %sNULL AND G.gname<>'nogroup' AND G.gname<>'guest' %s %s %s",
                  clauses.kind, name, clauses.order, page)
        .or_report(ctx, "Failed DB Query for 'group'. %s");
}

uint32_t read_members(CallContext *ctx, sqlite3 *db, int32_t group_id, User **head)
{
    Rows rows;
    TRY(select(
            ctx, db, rows,
            "SELECT U.id,U.uname,(SELECT G.gname FROM `$group` G WHERE G.id=U.group_id),U.home,U.email,U.passwd,CASE "
            "WHEN U.rid IS NULL THEN 0 ELSE 1 END FROM `$group_has_user` GU INNER JOIN `$user` U ON U.id=GU.user_id "
            "WHERE GU.group_id=%d ORDER BY U.uname COLLATE NOCASE",
            group_id)
            .or_report(ctx, "Failed DB Query for 'user' and 'group'. %s"));
    List<User> list(head);
    for (int i = 0; i < rows.count; i++) {
        User *member = list.append(ctx);
        TRY_MEMORY(ctx);
        UserCells cells;
        read_user(ctx, rows, i, member, &cells);
        member->GroupName = cells.group ? copy_text(ctx, cells.group) : "";
        member->Password = masked(cells.hash);
        TRY_MEMORY(ctx);
        TRY(read_user_quotas(ctx, db, member->UserId, &member->UserQuota));
    }
    return 0;
}

/// Reads a group with its quotas and its secondary members.
uint32_t read_group(CallContext *ctx, sqlite3 *db, const Rows &rows, int row, Group *group)
{
    read_row(ctx, rows, row, both(group->resource_id, group->GroupId), empty(group->GroupName), group->IsDomainMember);
    TRY_MEMORY(ctx);
    TRY(read_group_quotas(ctx, db, group->GroupId, &group->GroupQuota));
    return read_members(ctx, db, group->GroupId, &group->SecondaryMember);
}

/// Finds who is in any group, for their quotas to be read at once. Nobody when that fails, or is not worth it because
/// few of the groups are listed.
void find_members(CallContext *ctx, sqlite3 *db, int listed, int32_t total, Rows *members)
{
    if (listed < total / 2 || statements_are_watched(ctx)) return;
    if (!try_select(ctx, db, *members,
                    "SELECT U.id FROM (SELECT DISTINCT GU.user_id FROM `$group_has_user` GU) M CROSS JOIN `$user` U ON "
                    "U.id=M.user_id"))
        members->release();
}

/// Appends the groups as they are read: on a failure the caller keeps what was read so far.
uint32_t append_groups(CallContext *ctx, sqlite3 *db, const Rows &rows, int32_t total, Group **head)
{
    List<Group> list(head);
    Rows members;
    find_members(ctx, db, rows.count, total, &members);
    Together of_members(ctx, db, "$user", members);
    Together of_groups(ctx, db, "$group", rows);
    for (int i = 0; i < rows.count; i++) {
        Group *group = list.append(ctx);
        TRY_MEMORY(ctx);
        TRY(read_group(ctx, db, rows, i, group));
    }
    return 0;
}

/// Whether a record may address this id. Only the directory has groups with negative ids.
uint32_t check_system_group_id(CallContext *ctx, int32_t id, int32_t ads)
{
    if (id == 0) return REPORT(ctx, 8, "Invalid resouce_id=%d.", id);
    if (id < 0 && !ads) return REPORT(ctx, 5, "Invalid resouce_id=%d.", id);
    return 0;
}

}  // namespace

uint32_t x_qbobj_getGroupCollection(CallContext *ctx, sqlite3 *db, GroupCollection *groups, AccountQuery *query)
{
    QB_ASSERT(groups);
    Clauses clauses;
    TRY(build_clauses(ctx, db, query, &clauses));
    int32_t total = 0;
    int32_t matching = 0;
    TRY(count_groups(ctx, db, clauses, &total, &matching));
    Rows rows;
    TRY(select_groups(ctx, db, clauses, &rows));
    groups->TotalEntries = total;
    groups->Entries = matching;
    const uint32_t rc = append_groups(ctx, db, rows, total, &groups->Group);
    TRACE(ctx, "%s() rc=%d nrow=%d\n", __func__, static_cast<int>(rc), rows.count);
    return rc;
}

uint32_t x_qbobj_getGroup(CallContext *ctx, sqlite3 *db, Group *group)
{
    QB_ASSERT(group);
    const int32_t id = addressed(group, &Group::GroupId);
    if (id < 1) return REPORT(ctx, 8, "Invalid resouce_id=%d.", id);
    // The statement names a column of `$user` without reading that table, so the database refuses it and
    // the call always fails. Callers know that and read groups through the list.
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT G.id,G.gname,CASE WHEN U.rid IS NULL THEN 0 ELSE 1 END FROM `$group` G WHERE "
               "G.is_privileged=0 AND G.gname<>'nogroup' AND G.gname<>'guest' AND G.id=%d ORDER BY G.gname "
               "COLLATE NOCASE",
               id)
            .or_report(ctx, "Failed DB Query for 'group'. %s"));
    if (rows.count == 0) return REPORT(ctx, 5, "Failed DB Query for 'group'. %s", no_row_text(ctx, id));
    Group read{};
    TRY(read_group(ctx, db, rows, 0, &read));
    read.next = group->next;
    *group = read;
    return 0;
}

uint32_t x_qbobj_getSystemGroup(CallContext *ctx, sqlite3 *db, SystemGroup *group)
{
    QB_ASSERT(group);
    int32_t ads = 0;
    TRY(read_ads_mode(ctx, db, &ads));
    const int32_t id = addressed(group, &SystemGroup::GroupId);
    TRY(check_system_group_id(ctx, id, ads));
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT G.id,G.gname FROM `$group` G WHERE G.id=%d OR (%d AND G.id=%d AND G.rid IS NOT NULL)", id, ads,
               id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM group'. %s"));
    const char *name = nullptr;
    if (rows.count) read_row(ctx, rows, 0, skip, empty(name));
    TRY_MEMORY(ctx);
    if (!name && (qbdb_util_get_domain_gname_by_gid(ctx->qbdb, db, id, &name) != 0 || !name)) {
        LOG_FAILURE(ctx, "None of row selected for resource_id=%d.\n", id);
        return REPORT(ctx, 5, "Failed DB Query for 'SELECT FROM group'. %s", no_row_text(ctx, id));
    }
    group->resource_id = id;
    group->GroupId = id;
    group->GroupName = name;
    group->_PosixId = posix_gid_of(ctx, db, id);
    return 0;
}

int32_t x_qbobj_getGID(CallContext *ctx, sqlite3 *db, const char *name, int32_t *id)
{
    QB_ASSERT(id);
    return find_group_id(ctx, db, name, id) ? 0 : kNoId;
}

int32_t x_qbobj_getPrimaryGID(CallContext *ctx, sqlite3 *db, const char *userName, int32_t *id)
{
    QB_ASSERT(id);
    return find_primary_gid(ctx, db, userName, id) ? 0 : kNoId;
}

int32_t x_qbobj_getPosixGID(CallContext *ctx, sqlite3 *db, const char *name)
{
    int32_t id = kNoId;
    if (find_group_id(ctx, db, name, &id)) return posix_gid_of(ctx, db, id);
    int32_t ads = 0;
    if (!find_ads_mode(ctx, db, &ads) || !ads) return kNoId;
    const int32_t gid = qbdb_util_get_posix_gid_by_name(ctx->qbdb, db, name, nullptr);
    return gid < 0 ? kNoId : gid;
}

int32_t x_qbobj_getPosixGIDbyGID(CallContext *ctx, sqlite3 *db, int32_t id)
{
    return posix_gid_of(ctx, db, id);
}

int32_t x_qbobj_getGroupName(CallContext *ctx, sqlite3 *db, int32_t id, const char **name)
{
    QB_ASSERT(name);
    const char *found = nullptr;
    *name = "";
    if (select_text(ctx, db, found, "SELECT G.gname FROM `$group` G WHERE G.id=%d", id)
            .logged(ctx, "Failed DB Query for 'group'. %s\n"))
        return kNoId;
    if (!found) found = name_of_unknown_id(ctx, id);
    *name = or_empty(found);
    return found ? 0 : kNoId;
}

int32_t x_qbobj_isMemberOfGroup(CallContext *ctx, sqlite3 *db, const char *userName, const char *groupName)
{
    int32_t member = 0;
    Failure bad = select_int32(ctx, db, member,
                               "SELECT 1 FROM `$user` U INNER JOIN `$group` G ON G.id=U.group_id WHERE U.uname=%Q AND "
                               "G.gname=%Q",
                               userName, groupName);
    if (!bad && !member)
        bad = select_int32(ctx, db, member,
                           "SELECT 1 FROM `$user` U INNER JOIN `$group_has_user` GU ON GU.user_id=U.id INNER JOIN "
                           "`$group` G ON G.id=GU.group_id WHERE U.uname=%Q AND G.gname=%Q",
                           userName, groupName);
    if (bad.logged(ctx, "Failed DB Query for 'user' and 'group'. %s\n")) return kNoId;
    return member ? kMember : kNotMember;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
