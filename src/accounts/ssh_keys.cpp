#include "accounts/ssh_keys.h"

#include "accounts/login_shell.h"
#include "accounts/workers.h"
#include "frame/pool.h"
#include "frame/read_row.h"
#include "frame/report_line.h"

namespace qb {

const char *one_line(CallContext *ctx, const SshPublicKey *key)
{
    char *text = apr_psprintf(
        pool_of(ctx->qbdb), "id=%d user_id=%d serve_for=%s type=%s key=%s comment=%s fingerprint=%s title=%s", key->Id,
        key->UserId, key->ServeFor, key->Type, key->Key, key->Comment, key->Fingerprint, key->Title);
    if (!text) return "";
    for (char *at = text; *at; at++)
        if (*at == '\n' || *at == '\r') *at = ' ';
    return text;
}

uint32_t read_ssh_key(CallContext *ctx, const Rows &rows, int row, SshPublicKey *key)
{
    SshPublicKey read = *key;
    read_row(ctx, rows, row, both(read.resource_id, read.Id), read.UserId, read.ServeFor, read.Type, read.Key,
             read.Comment, read.Fingerprint, read.Title);
    TRY_MEMORY(ctx);
    *key = read;
    return 0;
}

uint32_t key_lookup_failed(CallContext *ctx, sqlite3 *db)
{
    return noted(ctx, failure_on(db)).or_report(ctx, "Failed DB Query for 'SELECT %s'. %s", kSshKeyTable);
}

uint32_t require_key(CallContext *ctx, sqlite3 *db, int32_t id)
{
    const int found = qbdb_find_ssh_public_key_id(ctx->qbdb, db, id);
    if (found < 0) return key_lookup_failed(ctx, db);
    return found ? 0 : REPORT(ctx, 838, "Key id %d does not exist", id);
}

uint32_t make_root_title(CallContext *ctx, const char *worker, const char *title, const char **root_title)
{
    *root_title = apr_psprintf(pool_of(ctx->qbdb), "root_%s", or_empty(title));
    return *root_title ? 0 : REPORT_LINE(ctx, 2, "OOM in %s", worker);
}

uint32_t find_root_key(CallContext *ctx, sqlite3 *db, int32_t key_id, SshPublicKey *root_key)
{
    if (x_qbobj_getSshPublicKeyTiedRootKeyById(ctx, db, key_id, root_key))
        return REPORT(ctx, 5, "Failed to find the tied root ssh public key for key id %d", key_id);
    return 0;
}

uint32_t refresh_owner_shell(CallContext *ctx, sqlite3 *db, int32_t user_id)
{
    return refresh_shell(ctx, db, user_id).or_report_line(ctx, "Failed to update user shell. uid: %d", user_id);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
