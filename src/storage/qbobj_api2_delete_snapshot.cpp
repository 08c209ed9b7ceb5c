// Snapshots of shares and home folders: removing them from the catalogue.
#include "frame/query.h"
#include "frame/set_list.h"
#include "storage/snapshots.h"

namespace qb {
namespace {

/// Which snapshots a deletion takes out of its scope. Any other number: those of a name, or all without one.
enum DeleteNewer : int32_t { kNewerThanTime = 1, kNewerThanNamed = 2, kTakenAt = 3 };

/// A condition on the rows of a catalogue. One that does not fit makes no statement: cut short it might mean other
/// rows.
using Scope = JoinedText<256>;

/// A statement that deletes, and the words for its failure.
template <class... Args>
struct Deletion {
    SqlFormat<Args...> sql;
    FailureFormat<> words;

    uint32_t run(CallContext *ctx, sqlite3 *db, const Scope &scope, Args... args) const
    {
        TRY_MEMORY(ctx);
        const Failure bad =
            scope.dropped ? Failure{SQLITE_TOOBIG, "The names are too long."} : execute(ctx, db, sql, args...);
        TRY(bad.or_report(ctx, words));
        if (sqlite3_changes(db) == 0) return REPORT(ctx, 6, "None of row is deleted.");
        return 0;
    }
};

/// The statements of one of the two catalogues.
struct Catalogue {
    Deletion<const char *, int32_t> newer_than_time;
    Deletion<const char *, const char *, const char *> newer_than_named;
    Deletion<const char *, int32_t> taken_at;
    Deletion<const char *, const char *> named;
    Deletion<const char *> all;
};

constexpr Catalogue kShares = {
    {"DELETE FROM `$snapshot` WHERE %s AND created_on>%d", "Failed to DELETE snapshot. %s"},
    {"DELETE FROM `$snapshot` WHERE %s AND created_on > (SELECT S2.created_on FROM `$snapshot` S2 WHERE %s AND "
     "S2.name = %Q)",
     "Failed to DELETE for $snapshot. %s"},
    {"DELETE FROM `$snapshot` WHERE %s AND created_on=%d", "Failed to DELETE snapshot. %s"},
    {"DELETE FROM `$snapshot` WHERE %s AND name=%Q", "Failed to DELETE for $snapshot. %s"},
    {"DELETE FROM `$snapshot` WHERE %s", "Failed to DELETE for $snapshot. %s"},
};

constexpr Catalogue kHomeFolders = {
    {"DELETE FROM `$home_folder_snapshot` WHERE %s AND created_on>%d",
     "Failed to DELETE snapshot from $home_folder_snapshot. %s"},
    {"DELETE FROM `$home_folder_snapshot` WHERE %s AND created_on > (SELECT S2.created_on FROM "
     "`$home_folder_snapshot` S2 WHERE %s AND S2.name = %Q)",
     "Failed to DELETE snapshot from $home_folder_snapshot. %s"},
    {"DELETE FROM `$home_folder_snapshot` WHERE %s AND created_on=%d",
     "Failed to DELETE snapshot from $home_folder_snapshot. %s"},
    {"DELETE FROM `$home_folder_snapshot` WHERE %s AND name=%Q",
     "Failed to DELETE for snapshot from $home_folder_snapshot. %s"},
    {"DELETE FROM `$home_folder_snapshot` WHERE %s", "Failed to DELETE for snapshot from $home_folder_snapshot. %s"},
};

uint32_t delete_snapshots(CallContext *ctx, sqlite3 *db, const Catalogue &from, const Scope &scope, int32_t mode,
                          const char *name, int32_t time)
{
    const char *rows = scope.text;
    switch (mode) {
        case kNewerThanTime: return from.newer_than_time.run(ctx, db, scope, rows, time);
        case kNewerThanNamed:
            if (!name) return REPORT(ctx, 5, "SnapshotName cannot be NULL when DeleteNewer==2.");
            return from.newer_than_named.run(ctx, db, scope, rows, rows, name);
        case kTakenAt: return from.taken_at.run(ctx, db, scope, rows, time);
        default:
            if (name) return from.named.run(ctx, db, scope, rows, name);
            return from.all.run(ctx, db, scope, rows);
    }
}

uint32_t choose_share(CallContext *ctx, sqlite3 *db, const char *name, const char *volume_name, SharePlace &place,
                      Scope &scope)
{
    TRY(require_share(ctx, db, name, place));
    TRY(require_share_on_volume(ctx, db, place, name, volume_name));
    const char *dataset = nullptr;
    TRY(select_text(ctx, db, dataset, "SELECT S.zfs_name FROM share S WHERE S.id=%d", place.share_id)
            .or_report(ctx, "Error in DB query for zfs_name."));
    scope.add("zfs_name=%Q", dataset);
    return 0;
}

}  // namespace

uint32_t x_qbobj_deleteSnapshot(CallContext *ctx, sqlite3 *db, const char *volumeName, const char *shareName,
                                int32_t deleteNewer, const char *snapshotName, int32_t time)
{
    SharePlace place;
    Scope scope("");
    TRY(require_volume(ctx, db, volumeName, place));
    if (shareName) TRY(choose_share(ctx, db, shareName, volumeName, place, scope));
    else scope.add("zfs_name LIKE %Q||'/%%'", place.volume_id);
    return delete_snapshots(ctx, db, kShares, scope, deleteNewer, snapshotName, time);
}

uint32_t x_qbobj_deleteHfSnapshot(CallContext *ctx, sqlite3 *db, const char * /*userName*/, const char *homeDir,
                                  int32_t deleteNewer, const char *snapshotName, int32_t time)
{
    Scope scope("");
    scope.add("home_dir=%Q", homeDir);
    return delete_snapshots(ctx, db, kHomeFolders, scope, deleteNewer, snapshotName, time);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
