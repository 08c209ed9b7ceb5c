// Removing users. The row stays, marked as removed, so that nobody else gets the name or the id; everything else of the
// user goes.
#include "accounts/time_machine_allowance.h"
#include "accounts/user_changes.h"
#include "accounts/workers.h"
#include "frame/addressed.h"
#include "frame/report_line.h"
#include "validate/validate_db.h"

namespace qb {
namespace {

/// A statement that removes something of a user, and what is reported when it fails.
struct Removal {
    Sql<int32_t> statement;
    FailureText<> words;
};

constexpr Removal kSettings[] = {
    {"DELETE FROM user_quota WHERE user_id=%d", "Failed DELETE user_quota. %s"},
    {"DELETE FROM user_acl WHERE user_id=%d", "Failed DELETE user_acl. %s"},
    {"DELETE FROM _user_quota_stat WHERE user_id=%d", "Failed DELETE _user_quota_stat. %s"},
    {"DELETE FROM `$home_folder` WHERE user_id=%d", "Failed DELETE $home_folder. %s"},
    {"DELETE FROM `$timemachine_quota` WHERE user_id=%d", "Failed DELETE $timemachine_quota. %s"},
};

constexpr Removal kAccount[] = {
    {"DELETE FROM `$group_has_user` WHERE user_id=%d", "Failed DELETE group_has_user. %s"},
    {"DELETE FROM `$home_folder_snapshot` WHERE user_name=(SELECT U.uname FROM `$user` U WHERE U.id=%d)",
     "Failed DELETE $home_folder_snapshot. %s"},
    {"UPDATE `$user` SET is_privileged=-1 WHERE id=%d", "Failed DB Query for 'UPDATE user'. %s"},
};

template <size_t N>
uint32_t run(CallContext *ctx, sqlite3 *db, const Removal (&removals)[N], int32_t id)
{
    for (const Removal &removal : removals) TRY(execute(ctx, db, removal.statement, id).or_report(ctx, removal.words));
    return 0;
}

uint32_t remove_rows(CallContext *ctx, sqlite3 *db, int32_t id)
{
    TRY(run(ctx, db, kSettings, id));
    int32_t allowances = 0;  // nothing depends on how many are left: AFP stays on
    TRY(count_allowances(ctx, db, &allowances));
    TRY(run(ctx, db, kAccount, id));
    if (sqlite3_changes(db) == 0) return REPORT(ctx, 6, "None of row is deleted. May be bad resource_id=%d'", id);
    return 0;
}

uint32_t remove_user(CallContext *ctx, sqlite3 *db, int32_t id, const StoredUser &stored, User *user)
{
    TRY(remove_rows(ctx, db, id));
    if (qbdb_delete_ssh_public_key_by_uid(ctx->qbdb, db, id))
        return REPORT(ctx, 8, "Cannot delete user ssh public key (user_name=%s)", stored.name);
    TRY(x_qbobj_deleteSmbUserNameMap(ctx, db, stored.name));
    user->UserName = stored.name;
    user->HomeDirectory = stored.home;
    return 0;
}

uint32_t delete_by_id(CallContext *ctx, sqlite3 *db, User *user)
{
    const int32_t id = addressed(user, &User::UserId);
    TRY(require_user(ctx, db, id, "Invalid resource_id (%d)"));
    StoredUser stored;
    TRY(read_stored_user(ctx, db, id, &stored));
    if (stored.protected_account) return REPORT_LINE(ctx, 8, "Cannot delete user (user_id=%d)", id);
    return remove_user(ctx, db, id, stored, user);
}

uint32_t delete_by_name(CallContext *ctx, sqlite3 *db, User *user)
{
    bool found = false;
    int32_t id = 0;
    TRY(find_name(ctx, db, NameCheck::local_user, user->UserName, found, id)
            .or_report(ctx, "Failed DB Query for user. %s"));
    if (!found) return REPORT(ctx, 8, "Invalid resource_id (%d). Not exist.", id);
    StoredUser stored;
    TRY(read_stored_user(ctx, db, id, &stored));
    if (stored.protected_account) return REPORT(ctx, 8, "Cannot delete user (user_name=%s)", user->UserName);
    return remove_user(ctx, db, id, stored, user);
}

}  // namespace

uint32_t x_qbobj_deleteUser(CallContext *ctx, sqlite3 *db, User *user)
{
    for (; user; user = user->next) TRY(delete_by_id(ctx, db, user));
    return 0;
}

uint32_t x_qbobj_deleteUserByName(CallContext *ctx, sqlite3 *db, User *user)
{
    for (; user; user = user->next) TRY(delete_by_name(ctx, db, user));
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
