// What the workers of SSH public keys share.
#include "accounts/ssh_keys.h"

#include "accounts/accounts.h"
#include "accounts/report_line.h"
#include "frame/pool.h"

namespace qb {

const char *one_line(const CallContext *ctx, const SshPublicKey *key)
{
    char *text = apr_psprintf(
        pool_of(ctx->qbdb), "id=%d user_id=%d serve_for=%s type=%s key=%s comment=%s fingerprint=%s title=%s", key->Id,
        key->UserId, key->ServeFor, key->Type, key->Key, key->Comment, key->Fingerprint, key->Title);
    if (!text) return "";
    for (char *at = text; *at; at++)
        if (*at == '\n' || *at == '\r') *at = ' ';
    return text;
}

void read_ssh_key(const CallContext *ctx, const Rows &rows, int row, SshPublicKey *key)
{
    key->Id = rows.int32(row, 0);
    key->resource_id = key->Id;
    key->UserId = rows.int32(row, 1);
    key->ServeFor = rows.text(ctx, row, 2);
    key->Type = rows.text(ctx, row, 3);
    key->Key = rows.text(ctx, row, 4);
    key->Comment = rows.text(ctx, row, 5);
    key->Fingerprint = rows.text(ctx, row, 6);
    key->Title = rows.text(ctx, row, 7);
}

uint32_t make_root_title(const CallContext *ctx, const char *worker, const char *title, const char **root_title)
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
    if (refresh_shell(ctx, db, user_id)) return REPORT_LINE(ctx, 5, "Failed to update user shell. uid: %d", user_id);
    return 0;
}

}  // namespace qb
