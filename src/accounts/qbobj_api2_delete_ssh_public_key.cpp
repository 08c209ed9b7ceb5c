// Removing an SSH public key.
#include "accounts/accounts.h"
#include "accounts/ssh_keys.h"
#include "accounts/workers.h"

namespace qb {
namespace {

uint32_t delete_key(CallContext *ctx, sqlite3 *db, int32_t id)
{
    return execute(ctx, db, "DELETE FROM `%s` WHERE id = %d", kSshKeyTable, id)
        .or_report(ctx, "Failed DB Query for 'DELETE %s'. %s", kSshKeyTable);
}

/// Called before the key itself goes, because the twin is found by the key's text.
uint32_t delete_root_key(CallContext *ctx, sqlite3 *db, int32_t key_id)
{
    SshPublicKey root_key{};
    TRY(find_root_key(ctx, db, key_id, &root_key));
    return delete_key(ctx, db, root_key.Id);
}

/// Tells whether a key is the administrator's, by the record or, when that names another owner, by the stored key.
uint32_t find_owner(CallContext *ctx, sqlite3 *db, const SshPublicKey *key, bool *is_admins)
{
    int32_t owner = key->UserId;
    if (owner != kAdminId)
        TRY(select_int32(ctx, db, owner, "SELECT user_id FROM `%s` WHERE id = %d", kSshKeyTable, key->Id)
                .or_report(ctx, "Failed DB Query for 'SELECT %s'. %s", kSshKeyTable));
    *is_admins = owner == kAdminId;
    return 0;
}

}  // namespace

uint32_t x_qbobj_deleteSshPublicKey(CallContext *ctx, sqlite3 *db, SshPublicKey *key)
{
    QB_ASSERT(key);
    TRACE(ctx, "%s: Deleting a key. %s\n", __func__, one_line(ctx, key));
    TRY(require_key(ctx, db, key->Id));
    bool is_admins = false;
    TRY(find_owner(ctx, db, key, &is_admins));
    if (is_admins) TRY(delete_root_key(ctx, db, key->Id));
    TRY(delete_key(ctx, db, key->Id));
    return refresh_owner_shell(ctx, db, key->UserId);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
