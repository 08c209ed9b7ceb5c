// The SMB user-name map: second names under which SMB clients reach local accounts.
#include "accounts/aliases.h"
#include "accounts/workers.h"
#include "frame/list.h"
#include "frame/read_row.h"
#include "frame/report_line.h"

namespace qb {
namespace {

// A missing argument is an error code here, not an assertion: callers of the map rely on that.
uint32_t missing_argument(CallContext *ctx, const char *worker)
{
    return REPORT_LINE(ctx, 8, "%s: Missing argument!", worker);
}

uint32_t check_map(CallContext *ctx, const char *worker, const SmbUserNameMap *map)
{
    if (!map) return missing_argument(ctx, worker);
    const char *type = map->Type;
    if (!type || !qbdb_valid_smb_username_map_type(type))
        return REPORT_LINE(ctx, 8, "%s: Invalid map type %s!", worker, type ? type : "(null)");
    return 0;
}

uint32_t read_maps(CallContext *ctx, sqlite3 *db, SmbUserNameMap **head, Rows &rows)
{
    TRY(select(ctx, db, rows, "SELECT id, unix_uname, smb_uname, type FROM `%s`", TABLE_SMB_USERNAME_MAP)
            .or_report_line(ctx, "Failed DB Query for 'SELECT FROM %s'. %s", TABLE_SMB_USERNAME_MAP));
    SmbUserNameMap *read = nullptr;
    List<SmbUserNameMap> list(&read);
    for (int i = 0; i < rows.count; i++) {
        SmbUserNameMap *map = list.append(ctx);
        if (!map) break;
        read_row(ctx, rows, i, both(map->resource_id, map->Id), map->UnixUserName, map->SmbUserName, map->Type);
    }
    if (ctx->short_of_memory) return REPORT_LINE(ctx, kNoMemory, "%s", kNoMemoryText);
    List<SmbUserNameMap>(head).link(read);
    return 0;
}

}  // namespace

uint32_t x_qbobj_getSmbUserNameMapCollection(CallContext *ctx, sqlite3 *db, SmbUserNameMapCollection *maps)
{
    if (!maps) return missing_argument(ctx, __func__);
    Rows rows;
    const uint32_t rc = read_maps(ctx, db, &maps->SmbUserNameMap, rows);
    TRACE(ctx, "%s() rc=%d nrow=%d\n", __func__, static_cast<int>(rc), rows.count);
    return rc;
}

int32_t x_qbobj_getSmbUserNameMapCount(CallContext *ctx, sqlite3 *db, const char *unixUserName, const char *type)
{
    constexpr int32_t kNone = -1;
    if (!unixUserName || !qbdb_valid_smb_username_map_type(type)) return kNone;
    int32_t count = 0;
    return count_maps(ctx, db, unixUserName, type, count)
                   .logged(ctx, "Failed DB Query for 'SELECT FROM %s'. %s\n", TABLE_SMB_USERNAME_MAP)
               ? kNone
               : count;
}

uint32_t x_qbobj_addSmbUserNameMap(CallContext *ctx, sqlite3 *db, SmbUserNameMap *map)
{
    TRY(check_map(ctx, __func__, map));
    return execute(ctx, db, "INSERT INTO `%s` (unix_uname, smb_uname, type) VALUES(%Q, %Q, %Q)", TABLE_SMB_USERNAME_MAP,
                   map->UnixUserName, map->SmbUserName, map->Type)
        .or_report_line(ctx, "Failed DB Query for 'INSERT %s'. %s", TABLE_SMB_USERNAME_MAP);
}

uint32_t x_qbobj_deleteSmbUserNameMap(CallContext *ctx, sqlite3 *db, const char *unixUserName)
{
    if (!unixUserName) return missing_argument(ctx, __func__);
    return execute(ctx, db, "DELETE FROM `%s` WHERE unix_uname = %Q", TABLE_SMB_USERNAME_MAP, unixUserName)
        .or_report_line(ctx, "Failed DB Query for 'DELETE %s'. %s", TABLE_SMB_USERNAME_MAP);
}

uint32_t x_qbobj_setSmbUserNameMapUnixUserNameForAll(CallContext *ctx, sqlite3 *db, const char *oldUnixName,
                                                     const char *newUnixName)
{
    if (!oldUnixName || !newUnixName) return missing_argument(ctx, __func__);
    return execute(ctx, db, "UPDATE `%s` SET unix_uname=%Q WHERE unix_uname=%Q", TABLE_SMB_USERNAME_MAP, newUnixName,
                   oldUnixName)
        .or_report_line(ctx, "Failed DB Query for 'UPDATE %s'. %s", TABLE_SMB_USERNAME_MAP);
}

uint32_t x_qbobj_setSmbUserNameMapSmbUserName(CallContext *ctx, sqlite3 *db, SmbUserNameMap *map)
{
    TRY(check_map(ctx, __func__, map));
    return execute(ctx, db, "UPDATE `%s` SET smb_uname=%Q WHERE unix_uname=%Q AND type=%Q", TABLE_SMB_USERNAME_MAP,
                   map->SmbUserName, map->UnixUserName, map->Type)
        .or_report_line(ctx, "Failed DB Query for 'UPDATE %s'. %s", TABLE_SMB_USERNAME_MAP);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
