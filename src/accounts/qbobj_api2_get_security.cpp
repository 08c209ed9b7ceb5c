// Reading the directory settings and the progress of the directory import.
#include "accounts/passwords.h"
#include "frame/query.h"

namespace qb {

uint32_t x_qbobj_getSecurity(CallContext *ctx, sqlite3 *db, Security *security)
{
    QB_ASSERT(security);
    Rows rows;
    if (auto bad = select(ctx, db, rows,
                          "SELECT S.security,S.workgroup,S.realm,S.orgunit,S.restrict_ou,S.no_sync_ads,"
                          "S.domain_admin_user,S.password_server,S.allow_trusted_domains,S.domain_sid,"
                          "IFNULL(S.domain_admin_gid,98),IFNULL(S.domain_admin_uid,98),IFNULL(S.join_ads_failed,0),"
                          "S.idmap_backend FROM service_cifs S LIMIT 1"))
        return REPORT(ctx, 5, "Failed DB Query 'SELECT service_cifs'. (%s)", bad.text);

    Security read{};
    if (rows.count) {
        read.Security = rows.text(ctx, 0, 0);
        read.workGroup = rows.text(ctx, 0, 1);
        read.Realm = rows.text(ctx, 0, 2);
        read.orgUnit = rows.text(ctx, 0, 3);
        read.restrictOU = rows.text(ctx, 0, 4);
        read.noSyncADS = rows.int32(0, 5);
        read.domainAdministrator = rows.text(ctx, 0, 6);
        read.passWordServer = rows.text(ctx, 0, 7);
        read.displayTrustedUsers = rows.int32(0, 8);
        read.domainSid = rows.text(ctx, 0, 9);
        read.domainGroupAdminGID = rows.int32(0, 10);
        read.domainAdminUID = rows.int32(0, 11);
        read.joinDomainFailed = rows.int32(0, 12);
        read.idmapBackend = rows.text(ctx, 0, 13);
    }
    TRY_MEMORY(ctx);
    *security = read;
    return 0;
}

uint32_t x_qbobj_getSecurityAdsProgress(CallContext *ctx, sqlite3 *db, SecurityAdsProgress *progress)
{
    QB_ASSERT(progress);
    Rows rows;
    // Users and groups are half of the work each; without any groups the import stops at 50 per cent.
    if (auto bad = select(ctx, db, rows,
                          "SELECT CASE WHEN I.state=0 THEN 'idle' WHEN I.state=1 THEN 'running' WHEN I.state=2 THEN "
                          "'complete' ELSE 'error' END,I.total_user,I.curr_user,I.total_group,I.curr_group,I.start_at,"
                          "I.done_at,CASE WHEN I.total_user>0 THEN 50*I.curr_user/I.total_user ELSE 0 END + CASE WHEN "
                          "I.total_group>0 THEN 50*I.curr_group/I.total_group ELSE 0 END FROM _ads_importer I LIMIT 1"))
        return REPORT(ctx, 5, "Failed DB Query 'SELECT _ads_importer'. (%s)", bad.text);

    SecurityAdsProgress read{};
    if (rows.count) {
        read.State = rows.text(ctx, 0, 0);
        read.TotalUser = rows.int32(0, 1);
        read.CurrUser = rows.int32(0, 2);
        read.TotalGroup = rows.int32(0, 3);
        read.CurrGroup = rows.int32(0, 4);
        read.StartAt = rows.int32(0, 5);
        read.DoneAt = rows.int32(0, 6);
        read.Percent = rows.int32(0, 7);
    }
    TRY_MEMORY(ctx);
    *progress = read;
    return 0;
}

}  // namespace qb
