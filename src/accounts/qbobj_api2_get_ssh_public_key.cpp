// Reading SSH public keys. The twins that give root the administrator's keys are never listed.
#include "accounts/ssh_keys.h"
#include "accounts/workers.h"
#include "frame/list.h"

namespace qb {

uint32_t x_qbobj_getSshPublicKeyById(CallContext *ctx, sqlite3 *db, int32_t id, SshPublicKey *key)
{
    QB_ASSERT(key);
    TRACE(ctx, "%s: Getting a key, id = %d.\n", __func__, id);
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT id, user_id, serve_for, type, key, comment,fingerprint, title FROM `%s` WHERE id = %d",
               kSshKeyTable, id)
            .or_report(ctx, "Failed DB Query for 'SELECT %s'. %s", kSshKeyTable));
    if (rows.count == 0) return REPORT(ctx, 838, "None of row selected for resource_id=%d.", id);
    TRY(read_ssh_key(ctx, rows, 0, key));
    TRACE(ctx, "%s: Got a key. %s\n", __func__, one_line(ctx, key));
    return 0;
}

uint32_t x_qbobj_getSshPublicKeyTiedRootKeyById(CallContext *ctx, sqlite3 *db, int32_t id, SshPublicKey *key)
{
    QB_ASSERT(key);
    TRACE(ctx, "%s: Getting a key, id = %d.\n", __func__, id);
    Rows rows;
    // Nothing links the two: a twin is the key of root with the same text.
    TRY(select(ctx, db, rows,
               "SELECT id, user_id, serve_for, type, key, comment,fingerprint, title FROM `%s` WHERE key = "
               "(SELECT key FROM `%s` WHERE id = %d AND user_id = 98) AND user_id = 0",
               kSshKeyTable, kSshKeyTable, id)
            .or_report(ctx, "Failed DB Query for 'SELECT %s'. %s", kSshKeyTable));
    if (rows.count == 0) return REPORT(ctx, 838, "No tied root key for key id=%d.", id);
    TRY(read_ssh_key(ctx, rows, 0, key));
    TRACE(ctx, "%s: Got a key. %s\n", __func__, one_line(ctx, key));
    return 0;
}

uint32_t x_qbobj_getSshPublicKeyCollection(CallContext *ctx, sqlite3 *db, SshPublicKeyCollection *keys)
{
    QB_ASSERT(keys);
    TRACE(ctx, "%s: Getting key collection.\n", __func__);
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT id, user_id, serve_for, type, key, comment,fingerprint, title FROM `%s` WHERE "
               "user_id<>0",
               kSshKeyTable)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM %s'. %s", kSshKeyTable));

    SshPublicKey *head = nullptr;
    List<SshPublicKey> list(&head);
    for (int i = 0; i < rows.count; i++) {
        SshPublicKey *key = list.append(ctx);
        TRY_MEMORY(ctx, "Failed to allocate object.");
        TRY(read_ssh_key(ctx, rows, i, key));
        TRACE(ctx, "%s: Got a key. %s\n", __func__, one_line(ctx, key));
    }
    List<SshPublicKey>(&keys->SshPublicKey).link(head);
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
