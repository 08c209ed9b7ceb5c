#include "accounts/login_shell.h"

#include "accounts/accounts.h"
#include "validate/validate_db.h"

namespace qb {

Failure find_login_shell(CallContext *ctx, sqlite3 *db, int32_t user_id, int32_t shell_access, const char *&shell)
{
    int32_t keys = 0;
    const Failure bad = count_rsync_keys(ctx, db, user_id, keys);
    shell = "/bin/false";
    if (shell_access == 1) shell = "/bin/bash";
    // A user without a shell may still let rsync in by key.
    else if (shell_access == 0 && keys > 0) shell = "/glassdeck/bin/validate-rsync";
    return bad;
}

Failure refresh_shell(CallContext *ctx, sqlite3 *db, int32_t user_id)
{
    if (user_id < kLowestId && user_id != kAdminId) return {SQLITE_ERROR, "The shell of a system account stays."};
    int32_t access = 0;
    const char *shell = nullptr;
    Failure bad = select_int32(ctx, db, access, "SELECT shell_access FROM '$user' WHERE id=%d", user_id);
    if (!bad) bad = find_login_shell(ctx, db, user_id, access, shell);
    if (!bad) bad = execute(ctx, db, "UPDATE '$user' SET shell='%q' WHERE id=%d", shell, user_id);
    return bad;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
