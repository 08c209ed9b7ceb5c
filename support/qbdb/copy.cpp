// Table copies: made before a modification, compared with the tables after it, dropped again.
#include <apr_strings.h>

#include "handle.h"

namespace qdb {
namespace {

/// A text made with SQLite's formatter; null when there was no memory.
struct Text {
    char *text;
    explicit Text(char *formatted) : text(formatted) {}
    Text(const Text &) = delete;
    Text &operator=(const Text &) = delete;
    ~Text() { sqlite3_free(text); }
};

Call call_for(qbdb_t *qbdb, sqlite3 *db)
{
    return {qbdb, db, nullptr, __FILE__, __LINE__};
}

/// A copy that has the name of its table would take the table's place when the stale copy is dropped.
bool is_copy_name(const char *table, const char *copy)
{
    return sqlite3_stricmp(table, copy) != 0;
}

/// Runs a statement made with SQLite's formatter, which may have failed.
int run_text(const Call &call, char *formatted)
{
    const Text sql(formatted);
    return sql.text ? run(call, sql.text) : SQLITE_NOMEM;
}

int drop(const Call &call, const char *copy)
{
    return run_text(call, sqlite3_mprintf("DROP TABLE \"%w\"", copy));
}

int duplicate(const Call &call, const char *table, const char *copy)
{
    if (!is_copy_name(table, copy)) return SQLITE_MISUSE;
    const int rc = run_text(call, sqlite3_mprintf("DROP TABLE IF EXISTS \"%w\"", copy));
    if (rc) return rc;
    return run_text(call, sqlite3_mprintf("CREATE TABLE \"%w\" AS SELECT * FROM \"%w\"", copy, table));
}

/// Calls `action(table, copy)` for each table of a set until one fails; `*done` counts those that did not.
template <class Action>
int for_each_table(const char *const *tables, const char *prefix, int *done, Action action)
{
    int rc = SQLITE_OK;
    for (*done = 0; rc == SQLITE_OK && tables[*done]; *done += rc == SQLITE_OK) {
        const Text copy(sqlite3_mprintf("%s%s", prefix, tables[*done]));
        rc = copy.text ? action(tables[*done], copy.text) : SQLITE_NOMEM;
    }
    return rc;
}

/// Prepares a statement made with SQLite's formatter, which may have failed.
int prepare_formatted(const Call &call, char *formatted, Statement *statement)
{
    const Text sql(formatted);
    if (!sql.text) return SQLITE_NOMEM;
    return sqlite3_prepare_v2(call.db, sql.text, -1, &statement->stmt, nullptr) & 0xFF;
}

/// The comparison: every row of the table counts one up, every row of the copy one down, and equal rows are
/// counted together; what is not zero differs. `columns` prepares to a statement with the table's columns.
char *comparison(sqlite3_stmt *columns, const char *table, const char *copy, const char *where)
{
    sqlite3_str *text = sqlite3_str_new(nullptr);
    const int count = sqlite3_column_count(columns);
    const struct {
        const char *table;
        int weight;
    } sides[] = {{table, 1}, {copy, -1}};
    sqlite3_str_appendall(text, "SELECT 1 FROM (");
    for (const auto &side : sides) {
        sqlite3_str_appendall(text, side.weight > 0 ? "SELECT " : " UNION ALL SELECT ");
        // With the table before it a missing column is an error; SQLite takes a bare "name" for a text.
        for (int i = 0; i < count; i++)
            sqlite3_str_appendf(text, "T.\"%w\" AS c%d,", sqlite3_column_name(columns, i), i);
        sqlite3_str_appendf(text, "%d AS weight FROM \"%w\" T WHERE (%s\n)", side.weight, side.table, where);
    }
    sqlite3_str_appendall(text, ") GROUP BY ");
    // A table's own collation would take "Anna" and "anna" for the same.
    for (int i = 0; i < count; i++) sqlite3_str_appendf(text, "%sc%d COLLATE BINARY", i ? "," : "", i);
    sqlite3_str_appendall(text, " HAVING SUM(weight)<>0 LIMIT 1");
    return sqlite3_str_finish(text);
}

/// 0 and the answer, or a primary code.
int compare(const Call &call, const char *table, const char *copy, const char *where, bool *differs)
{
    if (!call.db) return SQLITE_MISUSE;
    Statement columns;
    if (const int rc = prepare_formatted(call, sqlite3_mprintf("SELECT * FROM \"%w\"", table), &columns)) return rc;
    const Text sql(comparison(columns.stmt, table, copy, where));
    if (!sql.text) return SQLITE_NOMEM;
    if (const int rc = ask_hook(call, sql.text)) return rc;
    Statement statement;
    int rc = sqlite3_prepare_v2(call.db, sql.text, -1, &statement.stmt, nullptr);
    if (rc == SQLITE_OK) rc = sqlite3_step(statement.stmt);
    if (rc != SQLITE_ROW && rc != SQLITE_DONE) return rc & 0xFF;
    *differs = rc == SQLITE_ROW;
    return SQLITE_OK;
}

constexpr const char *kAllRows = "1";

constexpr int kMostTables = 100;  // more than a database has

/// A hash for the names of a set, in a pool of its own. The hash does not look whether its memory is there, and
/// the 8 KiB that a pool begins with are more than one of so many names ever takes. 0 or a result code.
int make_hash(apr_pool_t *parent, const char *const *tables, apr_hash_t **hash)
{
    int count = 0;
    while (tables[count]) count++;
    if (count > kMostTables) return SQLITE_TOOBIG;
    apr_pool_t *pool = nullptr;
    if (apr_pool_create(&pool, parent) != APR_SUCCESS) return SQLITE_NOMEM;
    *hash = apr_hash_make(pool);
    return SQLITE_OK;
}

}  // namespace
}  // namespace qdb

int qbdb_sql_duplicate_table(qbdb_t *qbdb, sqlite3 *db, int flags, const char *table, const char *copy)
{
    (void)flags;
    return qdb::duplicate(qdb::call_for(qbdb, db), table, copy);
}

int qbdb_sql_duplicate_tables(qbdb_t *qbdb, sqlite3 *db, int flags, const char *const *tables, const char *prefix)
{
    (void)flags;
    const qdb::Call call = qdb::call_for(qbdb, db);
    int done = 0;
    const int rc = qdb::for_each_table(tables, prefix, &done, [&call](const char *table, const char *copy) {
        return qdb::duplicate(call, table, copy);
    });
    for (int i = 0; rc && i < done; i++)
        qdb::run_text(call, sqlite3_mprintf("DROP TABLE IF EXISTS \"%w%w\"", prefix, tables[i]));
    return rc;
}

int qbdb_sql_compare_tables(qbdb_t *qbdb, sqlite3 *db, int flags, const char *const *tables, const char *prefix,
                            apr_hash_t **differing)
{
    (void)flags;
    *differing = nullptr;
    const qdb::Call call = qdb::call_for(qbdb, db);
    apr_pool_t *pool = qdb::pool_of(qbdb);
    apr_hash_t *hash = nullptr;
    int rc = qdb::make_hash(pool, tables, &hash);
    if (rc) return rc;
    int done = 0;
    rc = qdb::for_each_table(tables, prefix, &done, [&](const char *table, const char *copy) -> int {
        bool differs = false;
        if (const int bad = qdb::compare(call, table, copy, qdb::kAllRows, &differs)) return bad;
        if (!differs) return SQLITE_OK;
        const char *name = qdb::copy_text(pool, table);
        if (!name) return SQLITE_NOMEM;
        apr_hash_set(hash, name, APR_HASH_KEY_STRING, name);
        return SQLITE_OK;
    });
    if (rc == SQLITE_OK) *differing = hash;
    return rc;
}

int qbdb_sql_compare_tables2(qbdb_t *qbdb, sqlite3 *db, int flags, const char *const *tables, const char *prefix,
                             int32_t *changed)
{
    (void)flags;
    const qdb::Call call = qdb::call_for(qbdb, db);
    bool any = false;
    int done = 0;
    const int rc = qdb::for_each_table(tables, prefix, &done, [&](const char *table, const char *copy) -> int {
        bool differs = false;
        const int bad = any ? SQLITE_OK : qdb::compare(call, table, copy, qdb::kAllRows, &differs);
        any = any || differs;
        return bad;
    });
    if (rc == SQLITE_OK) *changed = any;
    return rc;
}

int qbdb_sql_compare_table_row(qbdb_t *qbdb, sqlite3 *db, int flags, const char *table, const char *copy,
                               const char *where, int32_t *changed)
{
    (void)flags;
    bool differs = false;
    const int rc = qdb::compare(qdb::call_for(qbdb, db), table, copy, where, &differs);
    if (rc == SQLITE_OK) *changed = differs;
    return rc;
}

int qbdb_sql_delete_tables(qbdb_t *qbdb, sqlite3 *db, int flags, const char *const *tables, const char *prefix)
{
    (void)flags;
    const qdb::Call call = qdb::call_for(qbdb, db);
    int done = 0;
    return qdb::for_each_table(tables, prefix, &done, [&call](const char *table, const char *copy) -> int {
        return qdb::is_copy_name(table, copy) ? qdb::drop(call, copy) : SQLITE_MISUSE;
    });
}
// SPDX-License-Identifier: Apache-2.0
