// The administrator's recovery settings and shell access. The password itself never leaves the database.
#include "accounts/workers.h"
#include "frame/read_row.h"

namespace qb {

uint32_t x_qbobj_getAdminPassword(CallContext *ctx, sqlite3 *db, AdminPassword *admin)
{
    QB_ASSERT(admin);
    Rows recovery;
    TRY(select(ctx, db, recovery,
               "SELECT PR.question,PR.answer,PR.email,PR.enabled,PR.method FROM passwordrecovery PR LIMIT 1")
            .or_report(ctx, "Failed DB Query for passwordrecovery. %s"));
    int32_t access = 0;
    TRY(select_int32(ctx, db, access, "SELECT U.shell_access FROM `$user` U WHERE id=98")
            .or_report(ctx, "Failed DB Query for $user. %s"));

    AdminPassword read{};
    read.ShellAccess = access;
    if (recovery.count) read_row(ctx, recovery, 0, read.Question, read.Answer, read.Email, read.Enabled, read.Method);
    TRY_MEMORY(ctx);
    *admin = read;
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
