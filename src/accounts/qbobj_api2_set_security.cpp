// Writing the directory settings.
#include <cstring>

#include "accounts/workers.h"
#include "frame/pool.h"
#include "frame/report_line.h"
#include "frame/set_list.h"
#include "validate/validate.h"

namespace qb {
namespace {

uint32_t check_security(CallContext *ctx, const Security *security)
{
    // Only this spelling is mapped. "ADS" is stored as given and does not count as directory mode.
    if (check_one_of(security->Security, Case::exact, {"user", "ads"})) return REPORT(ctx, 8, "Security is not valid");
    if (check_short_name(security->workGroup)) return REPORT(ctx, 819, "Bad workgroup");
    if (strcmp(security->Security, "ads") != 0) return 0;
    if (check_host_name(security->Realm)) return REPORT(ctx, 820, "Bad realm (%s)", security->Realm);
    if (is_set(security->passWordServer) && check_host_name(security->passWordServer))
        return REPORT(ctx, 833, "Bad login server (%s)", security->passWordServer);
    return 0;
}

}  // namespace

uint32_t x_qbobj_setSecurity(CallContext *ctx, sqlite3 *db, Security *security)
{
    QB_ASSERT(security);
    TRY(check_security(ctx, security));
    SetList<512> set;
    set.add("security=%Q", security->Security);
    set.add("workgroup=%Q", security->workGroup);
    set.add("realm=%Q", security->Realm);
    set.add("orgunit=%Q", security->orgUnit);
    set.add("restrict_ou=%Q", security->restrictOU);
    set.add("no_sync_ads=%d", security->noSyncADS);
    set.add("domain_admin_user=%Q", security->domainAdministrator);
    set.add("password_server=%Q", security->passWordServer);
    set.add("allow_trusted_domains=%d", security->displayTrustedUsers);
    set.add("join_ads_failed=%d", security->joinDomainFailed);
    set.add("idmap_backend=%Q", security->idmapBackend);
    // Settings that do not fit are refused: half of them would be worse than the old ones.
    if (set.dropped) return REPORT(ctx, 5, "Failed DB Query 'UPDATE service_cifs'. (%s)", "the settings are too long");
    return execute(ctx, db, "UPDATE service_cifs SET %s", +set.text)
        .or_report(ctx, "Failed DB Query 'UPDATE service_cifs'. (%s)");
}

uint32_t x_qbobj_setSecurityIdmapBackend(CallContext *ctx, sqlite3 *db, const char *backend)
{
    if (check_one_of(backend, Case::exact, {"tdb", "rid"}))
        return REPORT_LINE(ctx, 8, "Invalid idmap_backend %s", backend);
    return execute(ctx, db, "UPDATE service_cifs SET idmap_backend=%Q", backend)
        .or_report(ctx, "Failed DB Query 'UPDATE service_cifs'. (%s)");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
