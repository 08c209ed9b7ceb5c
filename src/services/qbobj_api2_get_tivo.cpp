// Reading the TiVo archiver's plan, its folder and its devices.
#include <cstring>

#include "frame/list.h"
#include "frame/read_row.h"
#include "services/services.h"
#include "services/tivo_devices.h"

namespace qb {
namespace {

/// The plan; without one (or with several) the fields stay as they are.
uint32_t read_plan(CallContext *ctx, sqlite3 *db, TivoOptions *read, bool *found)
{
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT T.hour,T.minute,T.path,T.days FROM service_tivo T")
            .or_report(ctx, "Failed 'SELECT service_tivo'. (%s)"));
    *found = rows.count == 1;
    if (*found) read_row(ctx, rows, 0, read->hour, read->minute, read->TIVOfolder, read->days);
    return 0;
}

/// The first column of all rows, joined by commas; null without memory.
const char *joined_column(CallContext *ctx, const Rows &rows)
{
    size_t size = 1;
    for (int i = 0; i < rows.count; i++) size += strlen(or_empty(rows.cell(i, 0))) + 1;
    char *text = noted(ctx, static_cast<char *>(apr_palloc(pool_of(ctx->qbdb), size)));
    if (!text) return nullptr;
    char *end = text;
    for (int i = 0; i < rows.count; i++) {
        if (i > 0) *end++ = ',';
        end = stpcpy(end, or_empty(rows.cell(i, 0)));
    }
    *end = '\0';
    return text;
}

uint32_t read_folders(CallContext *ctx, sqlite3 *db, TivoOptions *read)
{
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT S.path FROM share S INNER JOIN dlna_share_option D ON D.share_id=S.id")
            .or_report(ctx, "Failed 'SELECT path of dlna shares'. (%s)"));
    read->DLNAfolderlist = joined_column(ctx, rows);
    return 0;
}

}  // namespace

uint32_t x_qbobj_getTIVOSettings(CallContext *ctx, sqlite3 *db, TivoOptions *tivo)
{
    QB_ASSERT(tivo);
    TivoOptions read = *tivo;
    bool planned = false;
    TRY(read_plan(ctx, db, &read, &planned));
    TRY(read_folders(ctx, db, &read));
    TRY_MEMORY(ctx);
    // The archive can only be where the devices can see it.
    if (planned && (!read.TIVOfolder || !strstr(read.DLNAfolderlist, read.TIVOfolder)))
        read.TIVOfolder = copy_text(ctx, "");
    TIVOhostsAcl *devices = nullptr;
    TRY(read_tivo_devices(ctx, &devices));
    TRY_MEMORY(ctx);
    *tivo = read;
    List<TIVOhostsAcl>(&tivo->TIVOhostsAcl).link(devices);
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
