#include "accounts/quotas.h"

#include <algorithm>
#include <limits>

#include "frame/list.h"
#include "frame/read_row.h"

namespace qb {
namespace {

uint32_t append_quotas(CallContext *ctx, const Rows &rows, RowRange range, int32_t account_id, Quota **head)
{
    List<Quota> list(head);
    for (const int row : range) {
        Quota *quota = list.append(ctx);
        TRY_MEMORY(ctx);
        quota->AccountId = account_id;
        read_row(ctx, rows, row, empty(quota->ShareId), quota->HardMB, quota->UsedMB);
    }
    TRY_MEMORY(ctx);
    return 0;
}

}  // namespace

uint32_t read_user_quotas(CallContext *ctx, sqlite3 *db, int32_t user_id, Quota **head)
{
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT S.zfs_name,Q.mb_hard,QS.mb_used FROM user_quota Q INNER JOIN share S ON "
               "S.id=Q.share_id LEFT JOIN _user_quota_stat QS ON QS.share_id=Q.share_id AND "
               "QS.user_id=Q.user_id WHERE Q.user_id=%d",
               user_id)
            .or_report(ctx, "Failed DB Query for user_quota. %s"));
    return append_quotas(ctx, rows, all_of(rows), user_id, head);
}

bool read_quotas_of_users(CallContext *ctx, sqlite3 *db, const IdRange &users, Related *quotas)
{
    return quotas->read(ctx, db,
                        "SELECT Q.user_id,S.zfs_name,Q.mb_hard,QS.mb_used FROM user_quota Q INNER JOIN share S ON "
                        "S.id=Q.share_id LEFT JOIN _user_quota_stat QS ON QS.share_id=Q.share_id AND "
                        "QS.user_id=Q.user_id WHERE Q.user_id BETWEEN %d AND %d ORDER BY Q.user_id,Q.share_id",
                        users.least, users.most);
}

uint32_t append_user_quotas(CallContext *ctx, Related *quotas, int32_t user_id, Quota **head)
{
    return append_quotas(ctx, quotas->rows, quotas->of(user_id), user_id, head);
}

uint32_t read_group_quotas(CallContext *ctx, sqlite3 *db, int32_t group_id, Quota **head)
{
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT S.zfs_name,Q.mb_hard,QS.mb_used FROM group_quota Q INNER JOIN share S ON "
               "S.id=Q.share_id LEFT JOIN _group_quota_stat QS ON QS.share_id=Q.share_id AND "
               "QS.group_id=Q.group_id WHERE Q.group_id=%d",
               group_id)
            .or_report(ctx, "Failed DB Query for group_quota. %s"));
    return append_quotas(ctx, rows, all_of(rows), group_id, head);
}

int32_t limit_of(const Quota *quota)
{
    constexpr uint64_t kMost = std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(std::min(quota->HardMB, kMost));
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
