// Changing the title and the use of an SSH public key.
#include "accounts/accounts.h"
#include "accounts/ssh_keys.h"
#include "accounts/workers.h"

namespace qb {
namespace {

uint32_t update_key(CallContext *ctx, sqlite3 *db, int32_t id, const char *title, const char *serve_for)
{
    return execute(ctx, db, "UPDATE `%s` SET title = %Q, serve_for = %Q WHERE id = %d", kSshKeyTable, title, serve_for,
                   id)
        .or_report_line(ctx, "Failed DB Query for 'UPDATE %s'. %s", kSshKeyTable);
}

uint32_t update_root_key(CallContext *ctx, sqlite3 *db, const char *worker, const SshPublicKey *key)
{
    SshPublicKey root_key{};
    TRY(find_root_key(ctx, db, key->Id, &root_key));
    const char *title = nullptr;
    TRY(make_root_title(ctx, worker, key->Title, &title));
    return update_key(ctx, db, root_key.Id, title, key->ServeFor);
}

}  // namespace

uint32_t x_qbobj_setSshPublicKeyById(CallContext *ctx, sqlite3 *db, SshPublicKey *key)
{
    QB_ASSERT(key);
    TRACE(ctx, "%s: Updating a key. %s\n", __func__, one_line(ctx, key));
    TRY(require_key(ctx, db, key->Id));
    TRY(update_key(ctx, db, key->Id, key->Title, key->ServeFor));
    if (key->UserId == kAdminId) TRY(update_root_key(ctx, db, __func__, key));
    return refresh_owner_shell(ctx, db, key->UserId);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
