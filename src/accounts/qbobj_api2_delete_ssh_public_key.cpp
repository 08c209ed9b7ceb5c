// Removing an SSH public key.
#include "accounts/accounts.h"
#include "accounts/ssh_keys.h"

namespace qb {
namespace {

uint32_t delete_key(CallContext *ctx, sqlite3 *db, int32_t id)
{
    if (auto bad = execute(ctx, db, "DELETE FROM `%s` WHERE id = %d", kSshKeyTable, id))
        return REPORT(ctx, 5, "Failed DB Query for 'DELETE %s'. %s", kSshKeyTable, bad.text);
    return 0;
}

/// Before the key itself, whose text is what leads to the twin.
uint32_t delete_root_key(CallContext *ctx, sqlite3 *db, int32_t key_id)
{
    SshPublicKey root_key{};
    TRY(find_root_key(ctx, db, key_id, &root_key));
    return delete_key(ctx, db, root_key.Id);
}

}  // namespace

uint32_t x_qbobj_deleteSshPublicKey(CallContext *ctx, sqlite3 *db, SshPublicKey *key)
{
    QB_ASSERT(key);
    TRACE(ctx, "%s: Deleting a key. %s\n", __func__, one_line(ctx, key));
    TRY(check_key_id(ctx, db, key->Id));
    if (key->UserId == kAdminId) TRY(delete_root_key(ctx, db, key->Id));
    TRY(delete_key(ctx, db, key->Id));
    return refresh_owner_shell(ctx, db, key->UserId);
}

}  // namespace qb
