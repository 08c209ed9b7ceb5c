// Reading the settings of the Coffer cloud backup.
#include "frame/read_row.h"
#include "services/services.h"

namespace qb {
namespace {

uint32_t read_setting(CallContext *ctx, sqlite3 *db, const char *key, const char *&value)
{
    return select_text(ctx, db, value, "SELECT val FROM service_misc WHERE key=%Q", key)
        .or_report(ctx, "Failed 'SELECT service_misc'. (%s)");
}

}  // namespace

uint32_t x_qbobj_getCofferSettings(CallContext *ctx, sqlite3 *db, Coffer *coffer)
{
    QB_ASSERT(coffer);
    Coffer read = *coffer;
    read.UserName = read.DefaultJob = nullptr;
    TRY(read_setting(ctx, db, "QUILLBOXCOFFER", read.Enabled));
    TRY(read_setting(ctx, db, "QUILLBOXCOFFER_TEP_FOLDER", read.Volume));
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT V.name,V.password,V.defaultjob FROM service_coffer V")
            .or_report(ctx, "Failed 'SELECT service_coffer'. (%s)"));
    if (rows.count) read_row(ctx, rows, 0, read.UserName, skip, read.DefaultJob);
    TRY_MEMORY(ctx);
    *coffer = read;
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
