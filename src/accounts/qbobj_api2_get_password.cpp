// The administrator's recovery settings and shell access. The password itself never leaves the database.
#include "accounts/passwords.h"
#include "frame/query.h"

namespace qb {

uint32_t x_qbobj_getAdminPassword(CallContext *ctx, sqlite3 *db, AdminPassword *admin)
{
    QB_ASSERT(admin);
    Rows recovery;
    if (auto bad =
            select(ctx, db, recovery,
                   "SELECT PR.question,PR.answer,PR.email,PR.enabled,PR.method FROM passwordrecovery PR LIMIT 1"))
        return REPORT(ctx, 5, "Failed DB Query for passwordrecovery. %s", bad.text);
    int32_t access = 0;
    if (auto bad = select_int32(ctx, db, access, "SELECT U.shell_access FROM `$user` U WHERE id=98"))
        return REPORT(ctx, 5, "Failed DB Query for $user. %s", bad.text);

    AdminPassword read{};
    read.ShellAccess = access;
    if (recovery.count) {
        read.Question = recovery.text(ctx, 0, 0);
        read.Answer = recovery.text(ctx, 0, 1);
        read.Email = recovery.text(ctx, 0, 2);
        read.Enabled = recovery.int32(0, 3);
        read.Method = recovery.text(ctx, 0, 4);
    }
    TRY_MEMORY(ctx);
    *admin = read;
    return 0;
}

}  // namespace qb
