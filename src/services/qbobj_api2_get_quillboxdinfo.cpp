// Reading when the appliance's daemon started and stopped.
#include "frame/pool.h"
#include "frame/read_row.h"
#include "services/services.h"

namespace qb {

uint32_t x_qbobj_getQuillboxdInfo(CallContext *ctx, sqlite3 *db, int32_t *started, int32_t *stopped,
                                  const char **version)
{
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT started_on,stopped_on,version FROM `$quillboxd` LIMIT 1")
            .or_report(ctx, "Failed DB Query for 'SELECT $lquillboxd'. %s"));
    int32_t started_on = 0;
    int32_t stopped_on = 0;
    const char *recorded = nullptr;
    if (rows.count) read_row(ctx, rows, 0, started_on, stopped_on, recorded);
    else recorded = copy_text(ctx, "1.0.0");
    TRY_MEMORY(ctx);
    if (started) *started = started_on;
    if (stopped) *stopped = stopped_on;
    if (version) *version = recorded;
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
