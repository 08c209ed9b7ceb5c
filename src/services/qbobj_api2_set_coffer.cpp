// Logging in to the Coffer cloud backup and out.
#include "frame/pool.h"
#include "frame/query.h"
#include "services/services.h"
#include "validate/validate.h"

namespace qb {
namespace {

uint32_t remove_account(CallContext *ctx, sqlite3 *db)
{
    return execute(ctx, db, "DELETE FROM service_coffer")
        .or_report(ctx, "Failed DB Delete for service_coffer update. %s");
}

uint32_t check_account(CallContext *ctx, const Coffer *coffer)
{
    if (const int32_t rc = check_email(coffer->UserName, nullptr))
        return REPORT(ctx, 8, "Invalid Email (%s) rc=%d", coffer->UserName ? coffer->UserName : "(null)", rc);
    if (!is_set(coffer->UserPassword)) return REPORT(ctx, 8, "Invalid Password.");
    if (!is_set(coffer->DefaultJob)) return REPORT(ctx, 8, "Invalid Default Job.");
    return 0;
}

}  // namespace

uint32_t x_qbobj_setCofferSettings(CallContext *ctx, sqlite3 *db, Coffer *coffer)
{
    QB_ASSERT(coffer);
    TRY(remove_account(ctx, db));
    if (check_one_of(coffer->Action, Case::exact, {"logout"}) == 0) return 0;
    if (check_one_of(coffer->Action, Case::exact, {"login", "registration"}))
        return REPORT(ctx, 8, "Invalid Action (%s). One of 'login', 'registration', 'logout'.",
                      coffer->Action ? coffer->Action : "(null)");
    TRY(check_account(ctx, coffer));
    return execute(ctx, db, "INSERT INTO service_coffer (enabled,name,password,defaultjob) VALUES(1,%Q,%Q,%Q)",
                   coffer->UserName, coffer->UserPassword, coffer->DefaultJob)
        .or_report(ctx, "Failed DB Query for service_coffer update. %s");
}

uint32_t x_qbobj_cleanCofferSettings(CallContext *ctx, sqlite3 *db)
{
    return remove_account(ctx, db);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
