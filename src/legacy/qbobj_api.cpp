// The older entry points: service settings, the registry, folder attributes.
#include <cstring>

#include "frame/read_row.h"
#include "legacy/entry.h"
#include "qbobj/legacy.h"

namespace qb {
namespace {

// ---- Folder attributes

// Both texts print the result code twice; callers match on that.
uint32_t report_shares(CallContext *ctx, const Failure &bad)
{
    return bad.or_report(ctx, "Failed DB Query for cifs share. sq3rc=%d:%d (%s)", bad.rc, bad.rc);
}

uint32_t report_users(CallContext *ctx, const Failure &bad)
{
    return bad.or_report(ctx, "Failed DB Query for user. sq3rc=%d:%d (%s)", bad.rc, bad.rc);
}

uint32_t x_getFolderAttribute(CallContext *ctx, sqlite3 *db, const char *path, FolderAttribute *attr)
{
    static constexpr char kShares[] =
        "SELECT CASE WHEN CIFS.share_id NOT NULL THEN 1 ELSE 0 END|CASE WHEN CIFS.cifs_hide_share THEN 2 ELSE 0 END,"
        "IFNULL(DLNA.media_type,0),S.comment FROM share S LEFT JOIN cifs_share_option CIFS ON CIFS.share_id=S.id "
        "LEFT JOIN dlna_share_option DLNA ON DLNA.share_id=S.id ";
    const char *shares = kShares;
    Rows rows;
    TRY(report_shares(ctx, select(ctx, db, rows, "%sWHERE S.path=%Q", shares, path)));
    if (rows.count) {
        FolderAttribute read{};
        read_row(ctx, rows, 0, read.ShareFlags, read.MediaType, empty(read.Comment));
        TRY_MEMORY(ctx);
        *attr = read;
        return 0;
    }
    TRY(report_shares(ctx, select(ctx, db, rows, "%sWHERE %Q LIKE S.path||'/%%'", shares, path)));
    if (rows.count) {
        *attr = {0, 0, "", 0, 1};
        return 0;
    }
    TRY(report_users(ctx, select(ctx, db, rows, "SELECT 1 FROM `$user` U WHERE U.home=%Q", path)));
    if (rows.count) {
        *attr = {QBOBJ_FOLDER_SHARED, 0, "", 1, 0};
        return 0;
    }
    TRY(report_users(ctx, select(ctx, db, rows, "SELECT 1 FROM `$user` U WHERE %Q LIKE U.home||'/%%'", path)));
    if (rows.count) *attr = {0, 0, "", 1, 1};
    return 0;
}

// ---- Service settings

uint32_t x_getServiceEntry(CallContext *ctx, sqlite3 *db, const char *key, const char **val)
{
    const char *read = nullptr;
    TRY(select_text(ctx, db, read, "SELECT val FROM service_misc WHERE key=%Q", key)
            .or_report(ctx, "Failed 'SELECT service_misc'. %s"));
    *val = read;
    return read ? 0 : REPORT(ctx, 6, "ServiceEntry='%s' not exist.", key);
}

// The language goes into the statement unescaped, as it always has.
uint32_t check_language(CallContext *ctx, sqlite3 *db, const char *language)
{
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT 1 FROM service_misc WHERE key='LANGUAGES_SUPPORTED' AND (val='%s/utf-8' OR "
               "val LIKE '%s/utf-8,%%' OR val LIKE '%%,%s/utf-8' OR val LIKE '%%,%s/utf-8,%%')",
               language, language, language, language)
            .or_report(ctx, "Failed 'SELECT service_misc'. %s"));
    if (rows.count == 0) return REPORT(ctx, 8, "Specified LANGUAGE=%s is not supported by system.", language);
    return 0;
}

uint32_t add_entry(CallContext *ctx, sqlite3 *db, const char *key, const char *val)
{
    return execute(ctx, db,
                   "INSERT OR IGNORE INTO service_misc (key,val,table_name,column_name) "
                   "VALUES(%Q,%Q,NULL,NULL)",
                   key, val)
        .or_report(ctx, "Failed 'INSERT service_misc'. %s");
}

uint32_t delete_entry(CallContext *ctx, sqlite3 *db, const char *key)
{
    return execute(ctx, db, "DELETE FROM service_misc WHERE key=%Q", key)
        .or_report(ctx, "Failed 'DELETE service_misc'. %s");
}

/// The column of a settings table that a setting is mirrored into.
struct Mirror {
    const char *table;
    const char *column;
    explicit operator bool() const { return table && column; }
};

uint32_t change_entry(CallContext *ctx, sqlite3 *db, const char *key, const char *val, const Mirror &mirror)
{
    TRY(execute(ctx, db, "UPDATE service_misc SET val=%Q WHERE key=%Q", val, key)
            .or_report(ctx, "Failed 'INSERT service_misc'. %s"));  // callers know this text
    if (!mirror) return 0;
    return execute(ctx, db, "UPDATE %s SET %s=%Q", mirror.table, mirror.column, val)
        .or_report(ctx, "Failed 'UPDATE %s'. %s", mirror.table);
}

uint32_t empty_entry(CallContext *ctx, sqlite3 *db, const char *key, const Mirror &mirror)
{
    // Result ignored by design: services read the mirror. A call short of memory is still rolled back.
    (void)execute(ctx, db, "UPDATE service_misc SET val=NULL,table_name=NULL,column_name=NULL WHERE key=%Q", key);
    if (!mirror) return 0;
    return execute(ctx, db, "UPDATE %s SET %s=NULL", mirror.table, mirror.column)
        .or_report(ctx, "Failed 'UPDATE %s'. %s", mirror.table);
}

uint32_t x_setServiceEntry(CallContext *ctx, sqlite3 *db, const char *key, const char *val)
{
    if (strcmp(key, "LANGUAGE") == 0) TRY(check_language(ctx, db, val));
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT table_name,column_name FROM service_misc WHERE key=%Q", key)
            .or_report(ctx, "Failed 'SELECT service_misc'. %s"));
    if (rows.count == 0) return val ? add_entry(ctx, db, key, val) : delete_entry(ctx, db, key);
    const Mirror mirror{rows.cell(0, 0), rows.cell(0, 1)};
    return val ? change_entry(ctx, db, key, val, mirror) : empty_entry(ctx, db, key, mirror);
}

// ---- Registry

uint32_t x_getRegistryEntry(CallContext *ctx, sqlite3 *db, const char *key, const char **val)
{
    const char *read = nullptr;
    TRY(select_text(ctx, db, read, "SELECT value FROM `$registry` WHERE key=%Q", key)
            .or_report(ctx, "Failed 'SELECT $registry'. %s"));
    *val = read;
    return read ? 0 : REPORT(ctx, 6, "RegistryEntry='%s' not exist.", key);
}

uint32_t x_setRegistryEntry(CallContext *ctx, sqlite3 *db, const char *key, const char *val)
{
    if (!val) {
        // Not valid SQL, so the database refuses it: an entry cannot be removed, and callers rely on that answer.
        auto bad = execute(ctx, db, "DELETE FROM `$registry` SET value=%Q WHERE key=%Q", val, key);
        return REPORT(ctx, 5, "Failed 'UPDATE $registry'. %s", bad.text);
    }
    TRY(execute(ctx, db, "INSERT OR IGNORE INTO `$registry` (value,key) VALUES(%Q,%Q)", val, key)
            .or_report(ctx, "Failed 'INSERT $registry'. %s"));
    return execute(ctx, db, "UPDATE `$registry` SET value=%Q WHERE key=%Q", val, key)
        .or_report(ctx, "Failed 'UPDATE $registry'. %s");
}

}  // namespace
}  // namespace qb

using namespace qb;

uint32_t getFolderAttribute(qbdb_t *qbdb, sqlite3 *db, const char *path, FolderAttribute *attr, ErrorInfo *err)
{
    QB_ASSERT(qbdb);
    QB_ASSERT(err);
    QB_ASSERT(attr);
    *attr = {};
    return entry<x_getFolderAttribute, Access::reads>("getFolderAttribute", qbdb, db, err, path, attr);
}

uint32_t getServiceEntry(qbdb_t *qbdb, sqlite3 *db, const char *key, const char **val, ErrorInfo *err)
{
    QB_ASSERT(qbdb);
    QB_ASSERT(err);
    QB_ASSERT(key);
    QB_ASSERT(val);
    return entry<x_getServiceEntry, Access::reads>("getServiceEntry", qbdb, db, err, key, val);
}

uint32_t setServiceEntry(qbdb_t *qbdb, sqlite3 *db, const char *key, const char *val, ErrorInfo *err)
{
    QB_ASSERT(qbdb);
    QB_ASSERT(err);
    QB_ASSERT(key);
    return entry<x_setServiceEntry, Access::changes>("setServiceEntry", qbdb, db, err, key, val);
}

uint32_t getRegistryEntry(qbdb_t *qbdb, sqlite3 *db, const char *key, const char **val, ErrorInfo *err)
{
    QB_ASSERT(qbdb);
    QB_ASSERT(key);
    QB_ASSERT(val);
    ErrorInfo unread;
    return entry<x_getRegistryEntry, Access::reads>("getRegistryEntry", qbdb, db, err ? err : &unread, key, val);
}

uint32_t setRegistryEntry(qbdb_t *qbdb, sqlite3 *db, const char *key, const char *val, ErrorInfo *err)
{
    QB_ASSERT(qbdb);
    QB_ASSERT(key);
    ErrorInfo unread;
    return entry<x_setRegistryEntry, Access::changes>("setRegistryEntry", qbdb, db, err ? err : &unread, key, val);
}
// SPDX-License-Identifier: Apache-2.0
