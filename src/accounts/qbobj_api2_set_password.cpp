// Setting passwords: the administrator's (and root's), another user's, the caller's own.
#include "accounts/accounts.h"
#include "accounts/passwords.h"
#include "frame/pool.h"
#include "frame/query.h"
#include "legacy/password.h"
#include "validate/validate_db.h"

namespace qb {
namespace {

uint32_t set_recovery(CallContext *ctx, sqlite3 *db, const AdminPassword *admin)
{
    if (admin->Method) {
        if (auto bad = execute(ctx, db, "UPDATE passwordrecovery SET method=%Q", admin->Method))
            return REPORT(ctx, 5, "Failed DB Query for passwordrecovery update. %s", bad.text);
    }
    // A question is of no use without its answer and an address, so the three change together.
    if (admin->Question && admin->Answer && admin->Email) {
        if (auto bad = execute(ctx, db, "UPDATE passwordrecovery SET email=%Q, question=%Q, answer=%Q", admin->Email,
                               admin->Question, admin->Answer))
            return REPORT(ctx, 5, "Failed DB Query for passwordrecovery update. %s", bad.text);
    }
    return 0;
}

/// root always has the administrator's password: the same hash, salt included.
uint32_t set_admin_hash(CallContext *ctx, sqlite3 *db, const char *password)
{
    const char *hash = nullptr;
    if (check_password(ctx, password, &hash)) return REPORT(ctx, 8, "Invalid Password.");
    if (auto bad = execute(ctx, db, "UPDATE `$user` SET passwd=%Q WHERE uname='admin'", hash))
        return REPORT(ctx, 5, "Failed DB Query for user update. %s", bad.text);
    if (auto bad = execute(ctx, db, "UPDATE `$user` SET passwd=%Q WHERE uname='root'", hash))
        return REPORT(ctx, 5, "Failed DB Query for user update. %s", bad.text);
    return 0;
}

}  // namespace

uint32_t x_qbobj_setAdminPassword(CallContext *ctx, sqlite3 *db, AdminPassword *admin)
{
    QB_ASSERT(admin);
    if (auto bad = execute(ctx, db, "UPDATE passwordrecovery SET enabled=%d", admin->Enabled))
        return REPORT(ctx, 5, "Failed DB Query for set password enabled. %s", bad.text);
    if (auto bad = execute(ctx, db, "UPDATE `$user` SET shell_access=%d WHERE id=98", admin->ShellAccess))
        return REPORT(ctx, 5, "Failed DB Query for set admin's shell access. %s", bad.text);
    if (refresh_shell(ctx, db, kAdminId))
        return REPORT(ctx, 5, "Failed DB Query for set admin's shell. %s", "The login shell was not refreshed.");
    TRY(set_recovery(ctx, db, admin));
    return is_set(admin->Password) ? set_admin_hash(ctx, db, admin->Password) : 0;
}

uint32_t x_qbobj_setUserPassword(CallContext *ctx, sqlite3 *db, UserPassword *pw)
{
    QB_ASSERT(pw);
    const char *hash = nullptr;
    if (check_password(ctx, pw->Password, &hash))
        return REPORT(ctx, 8, "Invalid Password. %s.", pw->Password ? "It cannot be hashed" : "There is none");
    if (auto bad = execute(ctx, db, "UPDATE `$user` SET passwd=%Q WHERE id=%d", hash, pw->UserId))
        return REPORT(ctx, 5, "Failed DB Query for user table update. %s", bad.text);
    return 0;
}

uint32_t x_qbobj_setMyPassword(CallContext *ctx, sqlite3 *db, MyPassword *pw)
{
    QB_ASSERT(pw);
    if (!is_set(pw->UserName) || !is_set(pw->OldPassword) || !is_set(pw->NewPassword))
        return REPORT(ctx, 8, "My password cannot be empty.");
    const char *hash = nullptr;
    if (check_password(ctx, pw->NewPassword, &hash)) return REPORT(ctx, 8, "Invalid NewPassword.");
    int32_t id = 0;
    const int32_t known = check_name_id(ctx, db, NameCheck::local_user, pw->UserName, &id);
    if (known == kCheckFailed) return REPORT(ctx, 5, "SQL Query fail. %s", "Look-up failed.");
    if (known != kFound) return REPORT(ctx, 8, "Invalid UserName.");
    const char *stored = nullptr;
    if (auto bad = select_text(ctx, db, stored, "SELECT U.passwd FROM `$user` U WHERE id=%d", id))
        return REPORT(ctx, 5, "SQL Query fail. %s", bad.text);
    if (!verify_password(ctx, pw->OldPassword, stored)) return REPORT(ctx, 8, "Bad Credential.");
    if (auto bad = execute(ctx, db, "UPDATE `$user` SET passwd=%Q WHERE id=%d", hash, id))
        return REPORT(ctx, 5, "Failed DB Query for user update. %s", bad.text);
    return 0;
}

}  // namespace qb
