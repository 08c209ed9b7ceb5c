// The SMB user-name map: second names under which SMB clients reach local accounts.
#include "accounts/smb_username_map.h"
#include "frame/list.h"
#include "frame/query.h"
#include "frame/report_line.h"

namespace qb {
namespace {

// Callers of the map take a missing argument for an invalid one, not for a programming error.
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

Failure count_maps(CallContext *ctx, sqlite3 *db, const char *unix_name, const char *type, int32_t &count)
{
    return select_int32(ctx, db, count, "SELECT COUNT(*) FROM `%s` WHERE unix_uname=%Q AND type=%Q",
                        TABLE_SMB_USERNAME_MAP, unix_name, type);
}

/// Copies a cell, which may be NULL. False without memory.
bool copy_cell(CallContext *ctx, const Rows &rows, int row, int column, const char **text)
{
    *text = rows.text(ctx, row, column);
    return *text || !rows.cell(row, column);
}

uint32_t fill_maps(CallContext *ctx, const Rows &rows, SmbUserNameMap **head)
{
    List<SmbUserNameMap> list(head);
    for (int i = 0; i < rows.count; i++) {
        SmbUserNameMap *map = list.append(ctx);
        if (!map || !copy_cell(ctx, rows, i, 1, &map->UnixUserName) || !copy_cell(ctx, rows, i, 2, &map->SmbUserName) ||
            !copy_cell(ctx, rows, i, 3, &map->Type))
            return REPORT_LINE(ctx, 2, "Failed to allocate resource.");
        map->resource_id = map->Id = rows.int32(i, 0);
    }
    return 0;
}

}  // namespace

uint32_t x_qbobj_getSmbUserNameMapCollection(CallContext *ctx, sqlite3 *db, SmbUserNameMapCollection *maps)
{
    if (!maps) return missing_argument(ctx, __func__);
    Rows rows;
    if (auto bad = select(ctx, db, rows, "SELECT id, unix_uname, smb_uname, type FROM `%s`", TABLE_SMB_USERNAME_MAP))
        return REPORT_LINE(ctx, 5, "Failed DB Query for 'SELECT FROM %s'. %s", TABLE_SMB_USERNAME_MAP, bad.text);
    SmbUserNameMap *read = nullptr;
    TRY(fill_maps(ctx, rows, &read));
    if (read) List<SmbUserNameMap>(&maps->SmbUserNameMap).link(read);
    return 0;
}

int32_t x_qbobj_getSmbUserNameMapCount(CallContext *ctx, sqlite3 *db, const char *unixUserName, const char *type)
{
    constexpr int32_t kNone = -1;
    if (!unixUserName || !qbdb_valid_smb_username_map_type(type)) return kNone;
    int32_t count = 0;
    if (auto bad = count_maps(ctx, db, unixUserName, type, count)) {
        LOG_FAILURE(ctx, "Failed DB Query for 'SELECT FROM %s'. %s\n", TABLE_SMB_USERNAME_MAP, bad.text);
        return kNone;
    }
    return count;
}

uint32_t x_qbobj_addSmbUserNameMap(CallContext *ctx, sqlite3 *db, SmbUserNameMap *map)
{
    TRY(check_map(ctx, __func__, map));
    if (auto bad = execute(ctx, db, "INSERT INTO `%s` (unix_uname, smb_uname, type) VALUES(%Q, %Q, %Q)",
                           TABLE_SMB_USERNAME_MAP, map->UnixUserName, map->SmbUserName, map->Type))
        return REPORT_LINE(ctx, 5, "Failed DB Query for 'INSERT %s'. %s", TABLE_SMB_USERNAME_MAP, bad.text);
    return 0;
}

uint32_t x_qbobj_deleteSmbUserNameMap(CallContext *ctx, sqlite3 *db, const char *unixUserName)
{
    if (!unixUserName) return missing_argument(ctx, __func__);
    if (auto bad = execute(ctx, db, "DELETE FROM `%s` WHERE unix_uname = %Q", TABLE_SMB_USERNAME_MAP, unixUserName))
        return REPORT_LINE(ctx, 5, "Failed DB Query for 'DELETE %s'. %s", TABLE_SMB_USERNAME_MAP, bad.text);
    return 0;
}

uint32_t x_qbobj_setSmbUserNameMapUnixUserNameForAll(CallContext *ctx, sqlite3 *db, const char *oldUnixName,
                                                     const char *newUnixName)
{
    if (!oldUnixName || !newUnixName) return missing_argument(ctx, __func__);
    if (auto bad = execute(ctx, db, "UPDATE `%s` SET unix_uname=%Q WHERE unix_uname=%Q", TABLE_SMB_USERNAME_MAP,
                           newUnixName, oldUnixName))
        return REPORT_LINE(ctx, 5, "Failed DB Query for 'UPDATE %s'. %s", TABLE_SMB_USERNAME_MAP, bad.text);
    return 0;
}

uint32_t x_qbobj_setSmbUserNameMapSmbUserName(CallContext *ctx, sqlite3 *db, SmbUserNameMap *map)
{
    TRY(check_map(ctx, __func__, map));
    if (auto bad = execute(ctx, db, "UPDATE `%s` SET smb_uname=%Q WHERE unix_uname=%Q AND type=%Q",
                           TABLE_SMB_USERNAME_MAP, map->SmbUserName, map->UnixUserName, map->Type))
        return REPORT_LINE(ctx, 5, "Failed DB Query for 'UPDATE %s'. %s", TABLE_SMB_USERNAME_MAP, bad.text);
    return 0;
}

namespace {

SmbUserNameMap alias_map(const char *user_name, const char *alias)
{
    SmbUserNameMap map{};
    map.UnixUserName = user_name;
    map.SmbUserName = alias;
    map.Type = TABLE_SMB_USERNAME_MAP_TYPE_UNAME;
    return map;
}

}  // namespace

uint32_t add_alias(CallContext *ctx, sqlite3 *db, const char *user_name, const char *alias)
{
    SmbUserNameMap map = alias_map(user_name, alias);
    return x_qbobj_addSmbUserNameMap(ctx, db, &map);
}

uint32_t set_alias(CallContext *ctx, sqlite3 *db, const char *user_name, const char *alias)
{
    SmbUserNameMap map = alias_map(user_name, alias);
    int32_t count = 0;
    if (auto bad = count_maps(ctx, db, user_name, map.Type, count))
        return REPORT_LINE(ctx, 5, "Failed DB Query for 'SELECT FROM %s'. %s", TABLE_SMB_USERNAME_MAP, bad.text);
    return count > 0 ? x_qbobj_setSmbUserNameMapSmbUserName(ctx, db, &map) : x_qbobj_addSmbUserNameMap(ctx, db, &map);
}

}  // namespace qb
