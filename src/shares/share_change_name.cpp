// Renaming a share. Its folder and its data set are called as it is.
#include "backup/backup.h"
#include "frame/pool.h"
#include "shares/share_change.h"
#include "validate/charset.h"
#include "validate/validate_db.h"

namespace qb {
namespace {

uint32_t check_not_in_use(const ShareChange &change)
{
    const auto &[ctx, db, settings, given, answer, id, stored] = change;
    const char *application = nullptr;
    bool used = false;
    TRY(find_name(ctx, db, NameCheck::share_application, stored.ZfsName, used, application)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM $application_on_share'. %s"));
    return used ? REPORT(ctx, 903, "(%s).", application) : 0;
}

/// Tells whether the record gives another name than the stored one, which must be good and free.
uint32_t judge_name(const ShareChange &change, bool *renamed)
{
    const auto &[ctx, db, settings, given, answer, id, stored] = change;
    const char *name = given->ShareName;
    if (!equal_nocase(name, or_empty(stored.ShareName))) TRY(check_new_share_name(ctx, name));
    bool taken = false;
    int32_t holder = 0;
    TRY(find_share(ctx, db, name, &taken, &holder));
    if (taken && holder != id) return REPORT(ctx, 800, "Cannot rename to the name which already exist.");
    *renamed = strcmp(name, or_empty(stored.ShareName)) != 0;
    return *renamed ? check_not_in_use(change) : 0;
}

/// A share whose volume is gone keeps its path and data set. Without room for all three nothing is renamed.
uint32_t assign_name(const ShareChange &change, ShareSet *set)
{
    const auto &[ctx, db, settings, given, answer, id, stored] = change;
    const char *path = nullptr;
    TRY(select_text(ctx, db, path,
                    "SELECT '/'||V.lv_name||'/'||%Q FROM share S LEFT JOIN _volume V ON V.id=S.volume_id WHERE S.id=%d",
                    given->ShareName, id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM share'. %s"));
    set->add("name=%Q", given->ShareName);
    if (path) set->add("path=%Q", path);
    if (path) set->add("zfs_name=%Q", path + 1);
    return set->dropped ? REPORT(ctx, 5, "Failed DB Query for 'UPDATE share'. %s", "The path is too long.") : 0;
}

}  // namespace

uint32_t choose_share_name(const ShareChange &change, ShareSet *set)
{
    const auto &[ctx, db, settings, given, answer, id, stored] = change;
    if (!given->ShareName) return 0;
    bool renamed = false;
    TRY(judge_name(change, &renamed));
    if (!renamed) return 0;
    TRY(assign_name(change, set));
    if (check_sync_name(given->ShareName) == 0 || check_sync_name(stored.ShareName) == 0)
        return REPORT(ctx, 831, "Cannot rename to/from reserved share name");
    answer->old_name = stored.ShareName;
    answer->old_path = stored.Path;
    return 0;
}

/// Snapshots and applications know the data set, clones and backup jobs the share.
uint32_t carry_share_name(const ShareChange &change)
{
    const auto &[ctx, db, settings, given, answer, id, stored] = change;
    if (!answer->old_name) return 0;
    const char *name = given->ShareName;
    const char *dataset = nullptr;
    TRY(select_text(ctx, db, dataset, "SELECT S.zfs_name FROM share S WHERE S.id=%d", id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM share'. %s"));
    TRY(execute(ctx, db, "UPDATE `$snapshot` SET zfs_name=%Q WHERE zfs_name=%Q", dataset, stored.ZfsName)
            .or_report(ctx, "Failed DB Query for 'UPDATE snapshot'. %s"));
    TRY(execute(ctx, db, "UPDATE `$snapshot_clones` SET parent_zfs_name=%Q WHERE parent_zfs_name=%Q", name,
                stored.ShareName)
            .or_report(ctx, "Failed DB Query for 'UPDATE snapshot_clones'. %s"));
    TRY(execute(ctx, db, "UPDATE `$snapshot_clones` SET cloned_zfs_name=%Q WHERE cloned_zfs_name=%Q", name,
                stored.ShareName)
            .or_report(ctx, "Failed DB Query for 'UPDATE snapshot_clones'. %s"));
    TRY(rename_share_in_backup_jobs(ctx, db, stored.ShareName, name));
    return execute(ctx, db,
                   "UPDATE `$application_on_share` SET zfs_name=(SELECT S.zfs_name FROM share S WHERE S.id=%d) WHERE "
                   "zfs_name=%Q",
                   id, stored.ZfsName)
        .or_report(ctx, "Failed DB Query for 'UPDATE $application_on_share'. %s");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
