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

    *security = {};
    if (rows.count == 0) return 0;
    security->Security = rows.text(ctx, 0, 0);
    security->workGroup = rows.text(ctx, 0, 1);
    security->Realm = rows.text(ctx, 0, 2);
    security->orgUnit = rows.text(ctx, 0, 3);
    security->restrictOU = rows.text(ctx, 0, 4);
    security->noSyncADS = rows.int32(0, 5);
    security->domainAdministrator = rows.text(ctx, 0, 6);
    security->passWordServer = rows.text(ctx, 0, 7);
    security->displayTrustedUsers = rows.int32(0, 8);
    security->domainSid = rows.text(ctx, 0, 9);
    security->domainGroupAdminGID = rows.int32(0, 10);
    security->domainAdminUID = rows.int32(0, 11);
    security->joinDomainFailed = rows.int32(0, 12);
    security->idmapBackend = rows.text(ctx, 0, 13);
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

    *progress = {};
    if (rows.count == 0) return 0;
    progress->State = rows.text(ctx, 0, 0);
    progress->TotalUser = rows.int32(0, 1);
    progress->CurrUser = rows.int32(0, 2);
    progress->TotalGroup = rows.int32(0, 3);
    progress->CurrGroup = rows.int32(0, 4);
    progress->StartAt = rows.int32(0, 5);
    progress->DoneAt = rows.int32(0, 6);
    progress->Percent = rows.int32(0, 7);
    return 0;
}

}  // namespace qb
