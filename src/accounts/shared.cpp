// Pages, directory mode, quotas and the login shell: what several account workers need.
#include "accounts/accounts.h"
#include "frame/list.h"
#include "frame/query.h"
#include "validate/validate_db.h"

namespace qb {
namespace {

uint32_t append_quotas(CallContext *ctx, const Rows &rows, int32_t account_id, Quota **head)
{
    List<Quota> list(head);
    for (int i = 0; i < rows.count; i++) {
        Quota *quota = list.append(ctx);
        const char *share = rows.word(ctx, i, 0);
        if (!quota || !share) return REPORT(ctx, 2, "Failed to allocate resource.");
        quota->AccountId = account_id;
        quota->ShareId = share;
        quota->HardMB = rows.uint64(i, 1);
        quota->UsedMB = rows.uint64(i, 2);
    }
    return 0;
}

}  // namespace

void build_page(const AccountQuery *query, PageClause &clause)
{
    if (!query->limit) return;
    if (query->offset) sqlite3_snprintf(sizeof clause, clause, "LIMIT %d,%d", query->offset, query->limit);
    else sqlite3_snprintf(sizeof clause, clause, "LIMIT %d", query->limit);
}

uint32_t read_ads_mode(CallContext *ctx, sqlite3 *db, int32_t *ads)
{
    *ads = 0;
    if (auto bad = select_int32(ctx, db, *ads,
                                "SELECT CASE WHEN S.security='ads' THEN 1 ELSE 0 END FROM service_cifs S LIMIT 1"))
        return REPORT(ctx, 5, "Failed DB Query 'SELECT service_cifs'. (%s)", bad.text);
    return 0;
}

uint32_t read_no_sync_ads(CallContext *ctx, sqlite3 *db, int32_t *no_sync)
{
    *no_sync = qbdb_get_no_sync_ads(ctx->qbdb, db);
    return *no_sync < 0 ? REPORT(ctx, 5, "Failed DB Query 'SELECT service_cifs'. (%s)", kLookUpFailed) : 0;
}

uint32_t read_user_quotas(CallContext *ctx, sqlite3 *db, int32_t user_id, Quota **head)
{
    Rows rows;
    if (auto bad = select(ctx, db, rows,
                          "SELECT S.zfs_name,Q.mb_hard,QS.mb_used FROM user_quota Q INNER JOIN share S ON "
                          "S.id=Q.share_id LEFT JOIN _user_quota_stat QS ON QS.share_id=Q.share_id AND "
                          "QS.user_id=Q.user_id WHERE Q.user_id=%d",
                          user_id))
        return REPORT(ctx, 5, "Failed DB Query for user_quota. %s", bad.text);
    return append_quotas(ctx, rows, user_id, head);
}

uint32_t read_group_quotas(CallContext *ctx, sqlite3 *db, int32_t group_id, Quota **head)
{
    Rows rows;
    if (auto bad = select(ctx, db, rows,
                          "SELECT S.zfs_name,Q.mb_hard,QS.mb_used FROM group_quota Q INNER JOIN share S ON "
                          "S.id=Q.share_id LEFT JOIN _group_quota_stat QS ON QS.share_id=Q.share_id AND "
                          "QS.group_id=Q.group_id WHERE Q.group_id=%d",
                          group_id))
        return REPORT(ctx, 5, "Failed DB Query for group_quota. %s", bad.text);
    return append_quotas(ctx, rows, group_id, head);
}

int login_shell(CallContext *ctx, sqlite3 *db, int32_t user_id, int32_t shell_access, const char **shell)
{
    int32_t keys = 0;
    *shell = "/bin/false";
    if (count_rsync_keys(ctx, db, user_id, &keys) != kFound) return 1;
    if (shell_access == 1) *shell = "/bin/bash";
    // A user without a shell may still let rsync in by key.
    else if (shell_access == 0 && keys > 0) *shell = "/glassdeck/bin/validate-rsync";
    return 0;
}

uint32_t refresh_shell(CallContext *ctx, sqlite3 *db, int32_t user_id)
{
    if (user_id < kLowestId && user_id != kAdminId) return 1;
    int32_t access = 0;
    const char *shell = nullptr;
    if (select_int32(ctx, db, access, "SELECT shell_access FROM '$user' WHERE id=%d", user_id)) return 1;
    if (login_shell(ctx, db, user_id, access, &shell)) return 1;
    return execute(ctx, db, "UPDATE '$user' SET shell='%q' WHERE id=%d", shell, user_id) ? 1 : 0;
}

}  // namespace qb
