// Adding an SSH public key.
#include "accounts/accounts.h"
#include "accounts/ssh_keys.h"
#include "accounts/workers.h"

namespace qb {
namespace {

uint32_t check_new_key(CallContext *ctx, sqlite3 *db, const SshPublicKey *key)
{
    if (key->UserId < kLowestId && key->UserId != kAdminId)
        return REPORT(ctx, 802, "Cannot add ssh public key for system reserved user id %d", key->UserId);
    const int user = qbdb_find_user_id(ctx->qbdb, db, key->UserId);
    if (user < 0) return noted(ctx, failure_on(db)).or_report(ctx, "Failed DB Query for user. %s");
    if (!user) return REPORT(ctx, 836, "User id %d does not exist", key->UserId);
    const int stored = qbdb_find_ssh_public_key_user_id_key(ctx->qbdb, db, key->UserId, key->Key);
    if (stored < 0) return key_lookup_failed(ctx, db);
    if (stored) return REPORT(ctx, 837, "The SSH public key already exists");
    const int32_t count = qbdb_get_number_of_ssh_public_key(ctx->qbdb, db);
    if (count < 0) return key_lookup_failed(ctx, db);
    if (count >= kMostSshKeys)
        return REPORT(ctx, 842, "The number of SSH public key overflows. Maximum is %d.", kMostSshKeys);
    return 0;
}

uint32_t insert_key(CallContext *ctx, sqlite3 *db, const SshPublicKey *key, int32_t user_id, const char *title)
{
    return execute(ctx, db,
                   "INSERT INTO `%s` (user_id, serve_for, type, key, comment, fingerprint, title) "
                   "VALUES(%d, %Q, %Q, %Q, %Q, %Q, %Q)",
                   kSshKeyTable, user_id, key->ServeFor, key->Type, key->Key, key->Comment, key->Fingerprint, title)
        .or_report(ctx, "Failed DB Query for 'INSERT %s'. %s", kSshKeyTable);
}

/// The administrator's key opens the root account, too.
uint32_t insert_root_key(CallContext *ctx, sqlite3 *db, const char *worker, const SshPublicKey *key)
{
    const char *title = nullptr;
    TRY(make_root_title(ctx, worker, key->Title, &title));
    return insert_key(ctx, db, key, kRootId, title);
}

}  // namespace

uint32_t x_qbobj_addSshPublicKey(CallContext *ctx, sqlite3 *db, SshPublicKey *key)
{
    QB_ASSERT(key);
    TRACE(ctx, "%s: Adding a key. %s\n", __func__, one_line(ctx, key));
    TRY(check_new_key(ctx, db, key));
    TRY(insert_key(ctx, db, key, key->UserId, key->Title));
    const auto id = static_cast<int32_t>(sqlite3_last_insert_rowid(db));
    if (key->UserId == kAdminId) TRY(insert_root_key(ctx, db, __func__, key));
    TRY(refresh_owner_shell(ctx, db, key->UserId));
    key->Id = id;
    key->resource_id = id;
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
