// Reading the directory settings and the progress of the directory import.
#include "accounts/workers.h"
#include "frame/read_row.h"

namespace qb {

uint32_t x_qbobj_getSecurity(CallContext *ctx, sqlite3 *db, Security *security)
{
    QB_ASSERT(security);
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT S.security,S.workgroup,S.realm,S.orgunit,S.restrict_ou,S.no_sync_ads,"
               "S.domain_admin_user,S.password_server,S.allow_trusted_domains,S.domain_sid,"
               "IFNULL(S.domain_admin_gid,98),IFNULL(S.domain_admin_uid,98),IFNULL(S.join_ads_failed,0),"
               "S.idmap_backend FROM service_cifs S LIMIT 1")
            .or_report(ctx, "Failed DB Query 'SELECT service_cifs'. (%s)"));

    Security read{};
    if (rows.count)
        read_row(ctx, rows, 0, read.Security, read.workGroup, read.Realm, read.orgUnit, read.restrictOU, read.noSyncADS,
                 read.domainAdministrator, read.passWordServer, read.displayTrustedUsers, read.domainSid,
                 read.domainGroupAdminGID, read.domainAdminUID, read.joinDomainFailed, read.idmapBackend);
    TRY_MEMORY(ctx);
    *security = read;
    return 0;
}

uint32_t x_qbobj_getSecurityAdsProgress(CallContext *ctx, sqlite3 *db, SecurityAdsProgress *progress)
{
    QB_ASSERT(progress);
    Rows rows;
    // Users and groups are half of the work each; without any groups the import stops at 50 per cent.
    TRY(select(ctx, db, rows,
               "SELECT CASE WHEN I.state=0 THEN 'idle' WHEN I.state=1 THEN 'running' WHEN I.state=2 THEN "
               "'complete' ELSE 'error' END,I.total_user,I.curr_user,I.total_group,I.curr_group,I.start_at,"
               "I.done_at,CASE WHEN I.total_user>0 THEN 50*I.curr_user/I.total_user ELSE 0 END + CASE WHEN "
               "I.total_group>0 THEN 50*I.curr_group/I.total_group ELSE 0 END FROM _ads_importer I LIMIT 1")
            .or_report(ctx, "Failed DB Query 'SELECT _ads_importer'. (%s)"));

    SecurityAdsProgress read{};
    if (rows.count)
        read_row(ctx, rows, 0, read.State, read.TotalUser, read.CurrUser, read.TotalGroup, read.CurrGroup, read.StartAt,
                 read.DoneAt, read.Percent);
    TRY_MEMORY(ctx);
    *progress = read;
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
