// The user list: filters, options, order, page and counts.
#include <sys/stat.h>

#include <cstring>

#include "accounts/account_list.h"
#include "accounts/directory_mode.h"
#include "accounts/users.h"
#include "accounts/workers.h"
#include "frame/list.h"

namespace qb {
namespace {

/// The clauses that a query adds to the list's statements.
struct Clauses {
    const char *kind = "";     // "NOT ": domain users instead of local ones
    const char *skyloft = "";  // leaves out the users of the cloud service
    const char *admin = "";    // adds the administrator, whatever the other clauses say
    const char *order = "ORDER BY U.uname";
    char name[2048] = "";  // room for the longest pattern three times, each byte doubled
    char option[512] = "";
    PageClause page = "";
    int32_t offset = 0;
    int32_t limit = -1;  // all
    bool existing_homes = false;
};

bool contains(const char *text, const char *part)
{
    return strstr(text, part) != nullptr;
}

uint32_t build_name(CallContext *ctx, const char *pattern, Clauses *clauses)
{
    if (!is_set(pattern)) return 0;
    if (strlen(pattern) >= kPatternLimit) return REPORT(ctx, 8, "Query string is too long.");
    sqlite3_snprintf(sizeof clauses->name, clauses->name,
                     " AND (U.uname LIKE %Q OR U.fullname LIKE %Q OR U.email LIKE %Q)", pattern, pattern, pattern);
    return 0;
}

/// Users by their home folders' snapshot settings. Either token may open the clause; the other then counts
/// wherever it stands. "==0" asks for the users without, anything else for those with.
void build_snapshot_option(const char *opt, Clauses *clauses)
{
    const char *protection = "";
    const char *access = "";
    if (contains(opt, "HF_SNAPSHOT_PROTECTION"))
        protection = contains(opt, "HF_SNAPSHOT_PROTECTION==0")
                         ? " U.id IN (SELECT H.user_id FROM '$home_folder' H WHERE H.snapshot_protection_enabled=0)"
                         : " U.id IN (SELECT H.user_id FROM '$home_folder' H WHERE H.snapshot_protection_enabled=1)";
    if (contains(opt, "HF_SNAPSHOT_ACCESS"))
        access = contains(opt, "HF_SNAPSHOT_ACCESS==0")
                     ? " U.id IN (SELECT H.user_id FROM '$home_folder' H WHERE H.visible_snapdir='')"
                     : " U.id IN (SELECT H.user_id FROM '$home_folder' H WHERE H.visible_snapdir<>'')";
    sqlite3_snprintf(sizeof clauses->option, clauses->option, " AND (%s%s%s)", protection,
                     is_set(protection) && is_set(access) ? " OR" : "", access);
}

/// The first three tokens stand alone; the others may be combined in one text.
void build_option(const AccountQuery *query, Clauses *clauses)
{
    const char *opt = or_empty(query->opt);
    const auto set_clause = [clauses](const char *format, const char *value = nullptr) {
        sqlite3_snprintf(sizeof clauses->option, clauses->option, format, value);
    };
    if (strcmp(opt, "SINGLE_USER") == 0) {
        set_clause(" AND U.uname=%Q", query->name_fix);
    } else if (strcmp(opt, "TM_ON") == 0) {
        set_clause(" AND id IN (SELECT T.user_id from '$timemachine_quota' T WHERE T.enabled=1)");
    } else if (strcmp(opt, "HF_EXISTS") == 0) {
        set_clause(" AND id >= 0");
        clauses->existing_homes = true;
    }
    if (contains(opt, "||HF_SNAPSHOT_PROTECTION") || contains(opt, "||HF_SNAPSHOT_ACCESS"))
        build_snapshot_option(opt, clauses);
    if (contains(opt, "&&USER_WITH_ADMIN") || contains(opt, "&&USER_WITHOUT_SKYLOFT")) {
        if (contains(opt, "USER_WITH_ADMIN==1")) clauses->admin = "OR (U.uname='admin')";
        if (contains(opt, "USER_WITHOUT_SKYLOFT==1")) clauses->skyloft = " AND U.group_id<>97";
    }
}

const char *order_clause(int32_t order)
{
    switch (order) {
        case 2: return "ORDER BY U.id";
        case -1: return "ORDER BY U.uname DESC";
        case -2: return "ORDER BY U.id DESC";
        default: return "ORDER BY U.uname";
    }
}

/// Without a query the list shows domain users in directory mode, else local ones.
uint32_t build_clauses(CallContext *ctx, sqlite3 *db, const AccountQuery *query, Clauses *clauses)
{
    int32_t domain = 0;
    if (query) domain = query->ads;
    else TRY(read_ads_mode(ctx, db, &domain));
    if (domain) clauses->kind = "NOT ";
    if (!query) return 0;
    TRY(build_name(ctx, query->name_like, clauses));
    build_option(query, clauses);
    clauses->order = order_clause(query->order);
    build_page(query, clauses->page);
    if (query->limit) {
        clauses->offset = query->offset;
        clauses->limit = query->limit;
    }
    return 0;
}

/// The guests' group, whose users are not listed. The list's statements look for it by name once for each user that
/// they count or skip; the statements below take its id, where it could be found beforehand.
struct GuestGroup {
    bool known = false;
    int64_t id = 0;
};

/// Looks for the group for a list that no clause changes. A failure is nobody's error: it is left to the list's
/// statements, as everything is when somebody watches these.
GuestGroup find_guest_group(CallContext *ctx, sqlite3 *db, const Clauses &clauses)
{
    for (const char *clause : {clauses.skyloft, clauses.kind, clauses.admin, +clauses.name, +clauses.option})
        if (is_set(clause)) return {};
    Rows rows;
    if (statements_are_watched(ctx) ||
        !try_select(ctx, db, rows,
                    "SELECT IFNULL((SELECT id FROM `$group` G WHERE G.gname='guest'),(SELECT id FROM `$group` G "
                    "WHERE G.gname='nogroup'))") ||
        rows.count != 1 || !rows.cell(0, 0))
        return {};
    return {.known = true, .id = rows.int64(0, 0)};
}

/// Counts all that the index of listed users holds, where no condition is left to be looked at, less those few of the
/// guests' group.
bool count_without(CallContext *ctx, sqlite3 *db, const GuestGroup &guests, int32_t *count)
{
    Rows rows;
    if (!guests.known ||
        !try_select(ctx, db, rows,
                    "SELECT COUNT(*)-(SELECT COUNT(*) FROM `$user` U WHERE U.is_privileged=0 AND U.group_id<>98 "
                    "AND U.rid IS NULL AND U.uname<>'nobody' AND U.uname<>'guest' AND U.group_id=%lld) FROM "
                    "`$user` U WHERE U.is_privileged=0 AND U.group_id<>98 AND U.rid IS NULL AND "
                    "U.uname<>'nobody' AND U.uname<>'guest'",
                    guests.id) ||
        rows.count != 1)
        return false;
    *count = rows.int32(0, 0);
    return true;
}

bool select_without(CallContext *ctx, sqlite3 *db, const GuestGroup &guests, const Clauses &clauses, Rows *rows)
{
    return guests.known &&
           try_select(ctx, db, *rows,
                      "SELECT U.id,U.uname,(SELECT G.gname FROM `$group` G WHERE "
                      "G.id=U.group_id),U.home,U.email,U.passwd,CASE WHEN U.rid IS NULL THEN 0 ELSE 1 "
                      "END,U.fullname,U.is_locked,U.group_id,U.shell_access FROM `$user` U WHERE "
                      "U.is_privileged=0 AND U.group_id<>98 AND U.rid IS NULL AND U.uname<>'nobody' AND "
                      "U.uname<>'guest' AND U.group_id<>%lld %s LIMIT %d,%d",
                      guests.id, clauses.order, clauses.offset, clauses.limit);
}

uint32_t count_users(CallContext *ctx, sqlite3 *db, const Clauses &clauses, const GuestGroup &guests, int32_t *total,
                     int32_t *matching)
{
    if (count_without(ctx, db, guests, total)) {
        *matching = *total;
        return 0;
    }
    const char *name = clauses.name;
    const char *option = clauses.option;
    TRY(select_int32(
            ctx, db, *total,
            "SELECT COUNT(*)  FROM `$user` U WHERE (U.is_privileged=0 AND U.group_id<>98%s AND U.rid IS %sNULL AND "
            "U.uname<>'nobody' AND U.uname<>'guest' AND U.group_id<>IFNULL((SELECT id FROM `$group` G WHERE "
            "G.gname='guest'),(SELECT id FROM `$group` G WHERE G.gname='nogroup'))) %s",
            clauses.skyloft, clauses.kind, clauses.admin)
            .or_report(ctx, "Failed DB Query for user. %s"));
    if (!is_set(name) && !is_set(option) && !statements_are_watched(ctx)) {
        *matching = *total;  // it would be the same statement once more
        return 0;
    }
    return select_int32(
               ctx, db, *matching,
               "SELECT COUNT(*) FROM `$user` U WHERE (U.is_privileged=0 AND U.group_id<>98%s AND U.rid IS %sNULL AND "
               "U.uname<>'nobody' AND U.uname<>'guest' AND U.group_id<>IFNULL((SELECT id FROM `$group` G WHERE "
               "G.gname='guest'),(SELECT id FROM `$group` G WHERE G.gname='nogroup')) %s %s) %s",
               clauses.skyloft, clauses.kind, name, option, clauses.admin)
        .or_report(ctx, "Failed DB Query for user. %s");
}

uint32_t select_users(CallContext *ctx, sqlite3 *db, const Clauses &clauses, const GuestGroup &guests, Rows *rows)
{
    if (select_without(ctx, db, guests, clauses, rows)) return 0;
    const char *name = clauses.name;
    const char *option = clauses.option;
    const char *page = clauses.page;
    return select(
               ctx, db, *rows,
               "SELECT U.id,U.uname,(SELECT G.gname FROM `$group` G WHERE "
               "G.id=U.group_id),U.home,U.email,U.passwd,CASE "
               "WHEN U.rid IS NULL THEN 0 ELSE 1 END,U.fullname,U.is_locked,U.group_id,U.shell_access FROM `$user` U "
               "WHERE (U.is_privileged=0 AND U.group_id<>98%s AND U.rid IS %sNULL AND U.uname<>'nobody' AND "
               "U.uname<>'guest' AND U.group_id<>IFNULL((SELECT id FROM `$group` G WHERE G.gname='guest'),(SELECT id "
               "FROM "
               "`$group` G WHERE G.gname='nogroup')) %s %s) %s %s %s",
               clauses.skyloft, clauses.kind, name, option, clauses.admin, clauses.order, page)
        .or_report(ctx, "Failed DB Query for user. %s");
}

bool is_directory(const char *path)
{
    struct stat status;
    return path && stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

/// Reads a user with all that hangs on it.
uint32_t read_listed_user(CallContext *ctx, sqlite3 *db, const Rows &rows, int row, Passwords passwords,
                          UserRelations *related, User *user)
{
    UserCells cells;
    int32_t group_id = 0;
    read_user(ctx, rows, row, user, &cells, empty(user->FullName), user->IsLocked, group_id, user->ShellAccess);
    user->GroupName = group_name(ctx, db, cells, group_id);
    user->Password = passwords == Passwords::masked ? masked(cells.hash) : or_empty(copy_text(ctx, cells.hash));
    TRY_MEMORY(ctx);
    if (related) return take_user_details(ctx, db, related, user->UserId, user);
    return read_user_details(ctx, db, user->UserId, user);
}

constexpr int kHome = 3;  // column of the home path

/// Appends the users as they are read: on a failure the caller keeps what was read so far.
uint32_t append_users(CallContext *ctx, sqlite3 *db, const Rows &rows, const Clauses &clauses, Passwords passwords,
                      User **head)
{
    List<User> list(head);
    UserRelations at_once;
    UserRelations *related = at_once.read(ctx, db, IdRange(rows)) ? &at_once : nullptr;
    for (int i = 0; i < rows.count; i++) {
        if (clauses.existing_homes && !is_directory(rows.cell(i, kHome))) continue;
        User *user = list.append(ctx);
        TRY_MEMORY(ctx);
        TRY(read_listed_user(ctx, db, rows, i, passwords, related, user));
    }
    return 0;
}

}  // namespace

uint32_t x_qbobj_getUserCollection(CallContext *ctx, sqlite3 *db, UserCollection *users, AccountQuery *query,
                                   int32_t with_password)
{
    QB_ASSERT(users);
    Clauses clauses;
    TRY(build_clauses(ctx, db, query, &clauses));
    int32_t total = 0;
    int32_t matching = 0;
    const GuestGroup guests = find_guest_group(ctx, db, clauses);
    TRY(count_users(ctx, db, clauses, guests, &total, &matching));
    Rows rows;
    TRY(select_users(ctx, db, clauses, guests, &rows));
    users->TotalEntries = total;
    users->Entries = matching;
    const uint32_t rc =
        append_users(ctx, db, rows, clauses, with_password ? Passwords::stored : Passwords::masked, &users->User);
    TRACE(ctx, "%s() rc=%d nrow=%d\n", __func__, static_cast<int>(rc), rows.count);
    return rc;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
