// Setting passwords: the administrator's (and root's), another user's, the caller's own.
#include "accounts/accounts.h"
#include "accounts/login_shell.h"
#include "accounts/workers.h"
#include "frame/pool.h"
#include "validate/password.h"
#include "validate/validate_db.h"

namespace qb {
namespace {

uint32_t set_recovery(CallContext *ctx, sqlite3 *db, const AdminPassword *admin)
{
    if (admin->Method) {
        TRY(execute(ctx, db, "UPDATE passwordrecovery SET method=%Q", admin->Method)
                .or_report(ctx, "Failed DB Query for passwordrecovery update. %s"));
    }
    // The question, its answer and the address are useless alone, so the three change together.
    if (admin->Question && admin->Answer && admin->Email) {
        TRY(execute(ctx, db, "UPDATE passwordrecovery SET email=%Q, question=%Q, answer=%Q", admin->Email,
                    admin->Question, admin->Answer)
                .or_report(ctx, "Failed DB Query for passwordrecovery update. %s"));
    }
    return 0;
}

/// root always has the administrator's password: the same hash, salt included.
uint32_t set_admin_hash(CallContext *ctx, sqlite3 *db, const char *password)
{
    const char *hash = nullptr;
    if (check_password(ctx, password, &hash)) return REPORT(ctx, 8, "Invalid Password.");
    TRY(execute(ctx, db, "UPDATE `$user` SET passwd=%Q WHERE uname='admin'", hash)
            .or_report(ctx, "Failed DB Query for user update. %s"));
    return execute(ctx, db, "UPDATE `$user` SET passwd=%Q WHERE uname='root'", hash)
        .or_report(ctx, "Failed DB Query for user update. %s");
}

}  // namespace

uint32_t x_qbobj_setAdminPassword(CallContext *ctx, sqlite3 *db, AdminPassword *admin)
{
    QB_ASSERT(admin);
    TRY(execute(ctx, db, "UPDATE passwordrecovery SET enabled=%d", admin->Enabled)
            .or_report(ctx, "Failed DB Query for set password enabled. %s"));
    TRY(execute(ctx, db, "UPDATE `$user` SET shell_access=%d WHERE id=98", admin->ShellAccess)
            .or_report(ctx, "Failed DB Query for set admin's shell access. %s"));
    TRY(refresh_shell(ctx, db, kAdminId).or_report(ctx, "Failed DB Query for set admin's shell. %s"));
    TRY(set_recovery(ctx, db, admin));
    return is_set(admin->Password) ? set_admin_hash(ctx, db, admin->Password) : 0;
}

uint32_t x_qbobj_setUserPassword(CallContext *ctx, sqlite3 *db, UserPassword *pw)
{
    QB_ASSERT(pw);
    const char *hash = nullptr;
    if (check_password(ctx, pw->Password, &hash))
        return REPORT(ctx, 8, "Invalid Password. %s.", pw->Password ? "It cannot be hashed" : "There is none");
    return execute(ctx, db, "UPDATE `$user` SET passwd=%Q WHERE id=%d", hash, pw->UserId)
        .or_report(ctx, "Failed DB Query for user table update. %s");
}

uint32_t x_qbobj_setMyPassword(CallContext *ctx, sqlite3 *db, MyPassword *pw)
{
    QB_ASSERT(pw);
    if (!is_set(pw->UserName) || !is_set(pw->OldPassword) || !is_set(pw->NewPassword))
        return REPORT(ctx, 8, "My password cannot be empty.");
    const char *hash = nullptr;
    if (check_password(ctx, pw->NewPassword, &hash)) return REPORT(ctx, 8, "Invalid NewPassword.");
    bool known = false;
    int32_t id = 0;
    TRY(find_name(ctx, db, NameCheck::local_user, pw->UserName, known, id).or_report(ctx, "SQL Query fail. %s"));
    if (!known) return REPORT(ctx, 8, "Invalid UserName.");
    const char *stored = nullptr;
    TRY(select_text(ctx, db, stored, "SELECT U.passwd FROM `$user` U WHERE id=%d", id)
            .or_report(ctx, "SQL Query fail. %s"));
    if (!verify_password(ctx, pw->OldPassword, stored)) return REPORT(ctx, 8, "Bad Credential.");
    return execute(ctx, db, "UPDATE `$user` SET passwd=%Q WHERE id=%d", hash, id)
        .or_report(ctx, "Failed DB Query for user update. %s");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
