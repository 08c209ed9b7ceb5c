// Snapshots of shares and home folders: listing with filter, order and page, and counting.
#include <strings.h>

#include "frame/read_row.h"
#include "frame/set_list.h"
#include "storage/snapshots.h"

namespace qb {
namespace {

constexpr int32_t kUnbounded = 0x7fffffff;
constexpr size_t kPathSize = 4096;
constexpr size_t kClauseSize = 4096;
constexpr char kTooLong[] = "The names to search for are too long.";

/// A condition that is there only when its text is given.
struct NameClause {
    Sql<const char *> clause;
    const char *name;
};

/// The conditions that a listing and its count have in common, besides the range of times.
struct Filter {
    JoinedText<64> type;
    JoinedText<kClauseSize> first;
    JoinedText<kClauseSize> second;

    Filter(int32_t wanted, const NameClause &one, const NameClause &other) : type(""), first(""), second("")
    {
        // Others are stored, but never shown.
        if (wanted >= 1 && wanted <= 3) type.add(" AND S.type=%d", wanted);
        else type.add(" AND S.type>0 AND S.type<4");
        if (one.name) first.add(one.clause, one.name);
        if (other.name) second.add(other.clause, other.name);
    }
    bool too_long() const { return first.dropped || second.dropped; }
};

int32_t or_unbounded(int32_t bound)
{
    return bound ? bound : kUnbounded;
}

constexpr const char *kColumns[] = {"id", "zfs_name", "name", "type", "created_on"};
constexpr const char *kHfColumns[] = {"id", "user_name", "home_dir", "name", "type", "created_on"};

/// The column to sort by, in the words of the table and not the caller's; null when there is none of that name.
template <size_t N>
const char *find_column(const char *const (&columns)[N], const char *name)
{
    if (!name) return "created_on";
    for (const char *column : columns)
        if (strcasecmp(column, name) == 0) return column;
    return nullptr;
}

/// The folder of a snapshot, "" when there is none.
const char *snapshot_path(CallContext *ctx, const char *folder, const char *name)
{
    const char *path = nullptr;
    if (snapshot_get_path(folder, name, &path) != 0 || !path) return "";
    return copy_text(ctx, path);
}

uint32_t read_snapshot(CallContext *ctx, const Rows &rows, int row, Snapshot *snapshot)
{
    read_row(ctx, rows, row, snapshot->resource_id, empty(snapshot->ShareName), empty(snapshot->VolumeName),
             empty(snapshot->SnapshotName), snapshot->Type, snapshot->CreatedOn);
    TRY_MEMORY(ctx);
    char folder[kPathSize];
    const int size = snprintf(folder, sizeof folder, "/%s/%s", snapshot->VolumeName, snapshot->ShareName);
    const bool fits = size >= 0 && static_cast<size_t>(size) < sizeof folder;
    snapshot->Path = fits ? snapshot_path(ctx, folder, snapshot->SnapshotName) : "";
    TRY_MEMORY(ctx);
    return 0;
}

uint32_t read_snapshot(CallContext *ctx, const Rows &rows, int row, HfSnapshot *snapshot)
{
    read_row(ctx, rows, row, snapshot->resource_id, empty(snapshot->UserName), empty(snapshot->HomeDir),
             empty(snapshot->SnapshotName), snapshot->Type, snapshot->CreatedOn);
    TRY_MEMORY(ctx);
    snapshot->Path = snapshot_path(ctx, snapshot->HomeDir, snapshot->SnapshotName);
    TRY_MEMORY(ctx);
    return 0;
}

/// Appends what was read. Callers of a listing that runs out of memory keep the part that they have.
template <class T>
uint32_t append_snapshots(CallContext *ctx, const Rows &rows, T **head)
{
    List<T> list(head);
    for (int i = 0; i < rows.count; i++) {
        T *snapshot = list.append(ctx);
        TRY_MEMORY(ctx);
        TRY(read_snapshot(ctx, rows, i, snapshot));
    }
    return 0;
}

}  // namespace

uint32_t x_qbobj_getSnapshotCollection(CallContext *ctx, sqlite3 *db, SnapshotCollection *snapshots,
                                       const char *shareName, const char *volumeName, int32_t type, int32_t from,
                                       int32_t to, const char *sortColumn, int32_t descending, int32_t limit,
                                       int32_t offset)
{
    QB_ASSERT(snapshots);
    const Filter filter(type, {" AND V.lv_name=%Q", volumeName}, {" AND SH.name=%Q", shareName});
    if (filter.too_long()) return REPORT(ctx, 5, "Failed DB Query for 'SELECT FROM $snapshot'. %s", kTooLong);
    const char *column = find_column(kColumns, sortColumn);
    if (!column) return REPORT(ctx, 5, "Failed DB Query for 'SELECT FROM $snapshot'. no such column: S.%s", sortColumn);
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT S.id,SH.name,V.lv_name,S.name,S.type,S.created_on FROM `$snapshot` S INNER JOIN share SH ON "
               "SH.zfs_name=S.zfs_name INNER JOIN _volume V ON V.id=SH.volume_id WHERE S.created_on>=%d AND "
               "S.created_on<=%d%s%s%s ORDER BY S.%s %s LIMIT %d OFFSET %d",
               from, or_unbounded(to), +filter.type.text, +filter.first.text, +filter.second.text, column,
               descending ? "DESC" : "ASC", or_unbounded(limit), offset)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM $snapshot'. %s"));
    TRY(append_snapshots(ctx, rows, &snapshots->Snapshot));
    TRACE(ctx, "%s() rc=%d nrow=%d\n", __func__, 0, rows.count);
    return 0;
}

uint32_t x_qbobj_getSnapshotCollectionCount(CallContext *ctx, sqlite3 *db, const char *shareName,
                                            const char *volumeName, int32_t type, int32_t from, int32_t to,
                                            int32_t *count)
{
    QB_ASSERT(count);
    const Filter filter(type, {" AND V.lv_name=%Q", volumeName}, {" AND SH.name=%Q", shareName});
    if (filter.too_long()) return REPORT(ctx, 5, "Failed DB Query for 'SELECT FROM $snapshot'. %s", kTooLong);
    int32_t counted = 0;
    TRY(select_int32(ctx, db, counted,
                     "SELECT COUNT(*) FROM `$snapshot` S INNER JOIN share SH ON SH.zfs_name=S.zfs_name INNER JOIN "
                     "_volume V ON V.id=SH.volume_id WHERE S.created_on>=%d AND S.created_on<=%d%s%s%s",
                     from, or_unbounded(to), +filter.type.text, +filter.first.text, +filter.second.text)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM $snapshot'. %s"));
    TRY_MEMORY(ctx);
    *count = counted;
    return 0;
}

uint32_t x_qbobj_getHfSnapshotCollection(CallContext *ctx, sqlite3 *db, HfSnapshotCollection *snapshots,
                                         const char *userName, const char *homeDir, int32_t type, int32_t from,
                                         int32_t to, const char *sortColumn, int32_t descending, int32_t limit,
                                         int32_t offset)
{
    QB_ASSERT(snapshots);
    const Filter filter(type, {" AND U.uname=%Q", userName}, {" AND U.home=%Q", homeDir});
    if (filter.too_long())
        return REPORT(ctx, 5, "Failed DB Query for 'SELECT FROM $home_folder_snapshot'. %s", kTooLong);
    const char *column = find_column(kHfColumns, sortColumn);
    if (!column)
        return REPORT(ctx, 5, "Failed DB Query for 'SELECT FROM $home_folder_snapshot'. no such column: S.%s",
                      sortColumn);
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT S.id,S.user_name,S.home_dir,S.name,S.type,S.created_on FROM `$home_folder_snapshot` S INNER "
               "JOIN `$user` U ON U.uname=S.user_name WHERE S.created_on>=%d AND S.created_on<=%d%s%s%s ORDER BY "
               "S.%s %s LIMIT %d OFFSET %d",
               from, or_unbounded(to), +filter.type.text, +filter.first.text, +filter.second.text, column,
               descending ? "DESC" : "ASC", or_unbounded(limit), offset)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM $home_folder_snapshot'. %s"));
    TRY(append_snapshots(ctx, rows, &snapshots->HfSnapshot));
    TRACE(ctx, "%s() rc=%d nrow=%d\n", __func__, 0, rows.count);
    return 0;
}

uint32_t x_qbobj_getHfSnapshotCollectionCount(CallContext *ctx, sqlite3 *db, const char *userName, const char *homeDir,
                                              int32_t type, int32_t from, int32_t to, int32_t *count)
{
    QB_ASSERT(count);
    const Filter filter(type, {" AND U.uname=%Q", userName}, {" AND U.home=%Q", homeDir});
    if (filter.too_long())
        return REPORT(ctx, 5, "Failed DB Query for 'SELECT FROM $home_folder_snapshot'. %s", kTooLong);
    int32_t counted = 0;
    TRY(select_int32(ctx, db, counted,
                     "SELECT COUNT(*) FROM `$home_folder_snapshot` S INNER JOIN `$user` U ON U.uname=S.user_name WHERE "
                     "S.created_on>=%d AND S.created_on<=%d%s%s%s",
                     from, or_unbounded(to), +filter.type.text, +filter.first.text, +filter.second.text)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM $home_folder_snapshot'. %s"));
    TRY_MEMORY(ctx);
    *count = counted;
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
