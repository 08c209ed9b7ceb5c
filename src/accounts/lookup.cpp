#include "accounts/lookup.h"

#include "frame/pool.h"

namespace qb {
namespace {

/// Takes the id in the first cell of a result. NULL is no id.
bool take_id(CallContext *ctx, const Failure &bad, const Rows &rows, int32_t *id)
{
    *id = kNoId;
    if (bad.logged(ctx, "Failed to look up an id. %s\n") || rows.count == 0 || !rows.cell(0, 0)) return false;
    *id = rows.int32(0, 0);
    return true;
}

bool find_guest_group_id(CallContext *ctx, sqlite3 *db, int32_t *id)
{
    Rows rows;
    Failure bad = select(ctx, db, rows, "SELECT G.id FROM `$group` G WHERE G.gname='guest' AND G.rid IS NULL");
    if (!bad && rows.count == 0)
        bad = select(ctx, db, rows, "SELECT G.id FROM `$group` G WHERE G.gname='nogroup' AND G.rid IS NULL");
    return take_id(ctx, bad, rows, id);
}

int32_t or_none(int32_t posix_id)
{
    return posix_id < 0 ? kNoId : posix_id;
}

}  // namespace

bool find_ads_mode(CallContext *ctx, sqlite3 *db, int32_t *ads)
{
    return !find_ads_mode(ctx, db, *ads).logged(ctx, "Failed DB Query 'SELECT service_cifs'. (%s)\n");
}

bool find_user_id(CallContext *ctx, sqlite3 *db, int32_t ads, const char *name, int32_t *id)
{
    Rows rows;
    const Failure bad =
        name ? select(ctx, db, rows,
                      "SELECT U.id FROM `$user` U WHERE U.uname=%Q AND (U.rid IS %sNULL OR U.is_privileged=1)", name,
                      ads ? "NOT " : "")
             : select(ctx, db, rows, "SELECT U.id FROM `$user` U WHERE U.uname='guest' AND U.rid IS NULL");
    return take_id(ctx, bad, rows, id);
}

bool find_group_id(CallContext *ctx, sqlite3 *db, const char *name, int32_t *id)
{
    if (!name) return find_guest_group_id(ctx, db, id);
    Rows rows;
    const Failure bad = select(
        ctx, db, rows, "SELECT G.id FROM `$group` G WHERE G.gname=%Q AND (G.rid IS NULL OR G.is_privileged=1)", name);
    return take_id(ctx, bad, rows, id);
}

bool find_primary_gid(CallContext *ctx, sqlite3 *db, const char *name, int32_t *id)
{
    if (!name) return find_guest_group_id(ctx, db, id);
    Rows rows;
    const Failure bad = select(ctx, db, rows, "SELECT U.group_id FROM `$user` U WHERE U.uname=%Q", name);
    return take_id(ctx, bad, rows, id);
}

int32_t posix_uid_of(CallContext *ctx, sqlite3 *db, int32_t id)
{
    return id >= 0 ? id : or_none(qbdb_util_get_posix_uid(ctx->qbdb, db, id));
}

int32_t posix_gid_of(CallContext *ctx, sqlite3 *db, int32_t id)
{
    return id >= 0 ? id : or_none(qbdb_util_get_posix_gid(ctx->qbdb, db, id));
}

const char *name_of_unknown_id(CallContext *ctx, int32_t id)
{
    return id < 0 ? "" : noted(ctx, apr_psprintf(pool_of(ctx->qbdb), "%d", id));
}

const char *no_row_text(CallContext *ctx, int32_t id)
{
    return or_empty(apr_psprintf(pool_of(ctx->qbdb), "None of row selected for resource_id=%d.", id));
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
