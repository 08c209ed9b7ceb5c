#include "accounts/directory_mode.h"

namespace qb {

Failure find_ads_mode(CallContext *ctx, sqlite3 *db, int32_t &ads)
{
    ads = 0;
    return select_int32(ctx, db, ads,
                        "SELECT CASE WHEN S.security='ads' THEN 1 ELSE 0 END FROM service_cifs S LIMIT 1");
}

uint32_t read_ads_mode(CallContext *ctx, sqlite3 *db, int32_t *ads)
{
    return find_ads_mode(ctx, db, *ads).or_report(ctx, "Failed DB Query 'SELECT service_cifs'. (%s)");
}

uint32_t read_no_sync_ads(CallContext *ctx, sqlite3 *db, int32_t *no_sync)
{
    *no_sync = qbdb_get_no_sync_ads(ctx->qbdb, db);
    if (*no_sync >= 0) return 0;
    return noted(ctx, failure_on(db)).or_report(ctx, "Failed DB Query 'SELECT service_cifs'. (%s)");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
