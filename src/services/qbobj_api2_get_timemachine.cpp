// Reading the shared Time Machine target.
#include <algorithm>
#include <cstdint>

#include "frame/pool.h"
#include "frame/read_row.h"
#include "services/services.h"

namespace qb {
namespace {

/// Free space of the volume on which new home folders are made; 0 without one.
uint32_t read_free_space(CallContext *ctx, sqlite3 *db, int32_t *megabytes)
{
    uint64_t free = 0;
    TRY(select_uint64(ctx, db, free,
                      "SELECT IFNULL(V.blk_free*V.blk_size,0)/1000/1000 FROM _volume V "
                      "WHERE V.id=(SELECT AD.home_volume_id FROM account_default AD LIMIT 1)")
            .or_report(ctx, "Failed DB Query 'SELECT _volume'. (%s)"));
    *megabytes = static_cast<int32_t>(std::min<uint64_t>(free, INT32_MAX));
    return 0;
}

}  // namespace

uint32_t x_qbobj_getTimemachine(CallContext *ctx, sqlite3 *db, Timemachine *tm)
{
    QB_ASSERT(tm);
    Rows rows;
    Timemachine read = *tm;
    read.Enabled = read.CapacityMB = 0;
    // The allowance used to belong to AFP; the failure text still says so.
    TRY(select(ctx, db, rows, "SELECT T.enabled,T.capacity_mb FROM '$timemachine_quota' T WHERE T.user_id=96")
            .or_report(ctx, "Failed DB Query 'SELECT service_afp'. (%s)"));
    if (rows.count) read_row(ctx, rows, 0, read.Enabled, read.CapacityMB);
    TRY(read_free_space(ctx, db, &read.MaxCapacityMB));
    int32_t has_none = 0;
    TRY(select_int32(ctx, db, has_none,
                     "SELECT CASE WHEN U.passwd='!' OR U.passwd='*' THEN 1 ELSE 0 END FROM `$user` U "
                     "WHERE U.uname='Quillbox'")
            .or_report(ctx, "Failed DB Query 'SELECT user'. (%s)"));
    read.UserName = copy_text(ctx, "Quillbox");
    read.Password = copy_text(ctx, has_none ? "" : masked_password);
    TRY_MEMORY(ctx);
    *tm = read;
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
