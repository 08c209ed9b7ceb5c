// Tables without a declared key: recorded in a private database by the numbers of their rows.
#include "twins.h"

namespace qdb {
namespace {

/// A statement made with SQLite's formatter, finalised with it.
struct Made {
    sqlite3_stmt *stmt = nullptr;
    int rc = SQLITE_NOMEM;

    Made(sqlite3 *db, char *sql)
    {
        if (sql) rc = sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr) & 0xFF;
        sqlite3_free(sql);
    }
    Made(const Made &) = delete;
    Made &operator=(const Made &) = delete;
    ~Made() { sqlite3_finalize(stmt); }
};

int execute(sqlite3 *db, char *sql)
{
    const Made made(db, sql);
    if (made.rc != SQLITE_OK) return made.rc;
    sqlite3_step(made.stmt);
    return sqlite3_reset(made.stmt) & 0xFF;
}

/// `CREATE TABLE "t" (_rowid_ INTEGER PRIMARY KEY,"a","b")`: no types, so that each value stays what it is.
char *definition(const char *table, sqlite3_stmt *rows)
{
    sqlite3_str *text = sqlite3_str_new(nullptr);
    sqlite3_str_appendf(text, "CREATE TABLE main.\"%w\" (_rowid_ INTEGER PRIMARY KEY", table);
    for (int i = 1; i < sqlite3_column_count(rows); i++)
        sqlite3_str_appendf(text, ",\"%w\"", sqlite3_column_name(rows, i));
    sqlite3_str_appendall(text, ")");
    return sqlite3_str_finish(text);
}

/// Puts a row in, or in the place of the one that has its number.
char *insertion(const char *table, sqlite3_stmt *rows)
{
    sqlite3_str *text = sqlite3_str_new(nullptr);
    sqlite3_str_appendf(text, "INSERT INTO main.\"%w\" VALUES(?", table);
    for (int i = 1; i < sqlite3_column_count(rows); i++) sqlite3_str_appendall(text, ",?");
    sqlite3_str_appendall(text, ") ON CONFLICT(_rowid_) DO UPDATE SET ");
    for (int i = 1; i < sqlite3_column_count(rows); i++) {
        const char *name = sqlite3_column_name(rows, i);
        sqlite3_str_appendf(text, "%s\"%w\"=excluded.\"%w\"", i > 1 ? "," : "", name, name);
    }
    return sqlite3_str_finish(text);
}

int put(sqlite3_stmt *into, sqlite3_stmt *rows)
{
    int rc = SQLITE_OK;
    for (int i = 0; rc == SQLITE_OK && i < sqlite3_column_count(rows); i++)
        rc = sqlite3_bind_value(into, i + 1, sqlite3_column_value(rows, i));
    if (rc == SQLITE_OK) sqlite3_step(into);
    const int done = sqlite3_reset(into);
    return (rc == SQLITE_OK ? done : rc) & 0xFF;
}

}  // namespace

int Twins::open()
{
    if (db) return SQLITE_OK;
    int rc = open_in_memory(&db);
    if (rc == SQLITE_OK)
        rc = sqlite3_exec(db, "CREATE TEMP TABLE present (id INTEGER PRIMARY KEY)", nullptr, nullptr, nullptr);
    if (rc == SQLITE_OK) rc = sqlite3session_create(db, "main", &session);
    return rc & 0xFF;
}

bool Twins::has(const char *table) const
{
    return db && sqlite3_table_column_metadata(db, "main", table, nullptr, nullptr, nullptr, nullptr, nullptr,
                                               nullptr) == SQLITE_OK;
}

/// Copies the rows of a table into its twin, which is made first. `later` also notes which rows there are.
int Twins::copy_rows(const char *table, bool later)
{
    const Made rows(source, sqlite3_mprintf("SELECT _rowid_,* FROM main.\"%w\"", table));
    if (rows.rc != SQLITE_OK) return rows.rc;
    int rc = later ? SQLITE_OK : execute(db, definition(table, rows.stmt));
    if (rc != SQLITE_OK) return rc;
    const Made into(db, insertion(table, rows.stmt));
    const Made present(db, sqlite3_mprintf("INSERT INTO temp.present VALUES(?)"));
    if (into.rc != SQLITE_OK || present.rc != SQLITE_OK) return into.rc ? into.rc : present.rc;
    while ((rc = sqlite3_step(rows.stmt)) == SQLITE_ROW) {
        rc = put(into.stmt, rows.stmt);
        if (rc == SQLITE_OK && later) {
            sqlite3_bind_int64(present.stmt, 1, sqlite3_column_int64(rows.stmt, 0));
            sqlite3_step(present.stmt);
            rc = sqlite3_reset(present.stmt);
        }
        if (rc != SQLITE_OK) return rc & 0xFF;
    }
    return rc == SQLITE_DONE ? SQLITE_OK : rc & 0xFF;
}

int Twins::add(const char *table)
{
    int rc = open();
    if (rc == SQLITE_OK) rc = copy_rows(table, false);
    if (rc == SQLITE_OK) rc = sqlite3session_attach(session, table);
    return rc & 0xFF;
}

int Twins::finish(Changeset *changes)
{
    if (!db) return SQLITE_OK;
    const Made tables(db, sqlite3_mprintf("SELECT name FROM main.sqlite_schema WHERE type='table' ORDER BY rowid"));
    int rc = tables.rc;
    while (rc == SQLITE_OK && sqlite3_step(tables.stmt) == SQLITE_ROW) {
        const auto *table = reinterpret_cast<const char *>(sqlite3_column_text(tables.stmt, 0));
        if (!table) return SQLITE_NOMEM;
        rc = execute(db, sqlite3_mprintf("DELETE FROM temp.present"));
        if (rc == SQLITE_OK) rc = copy_rows(table, true);
        if (rc == SQLITE_OK)
            rc = execute(db, sqlite3_mprintf("DELETE FROM main.\"%w\" WHERE _rowid_ NOT IN temp.present", table));
    }
    if (rc == SQLITE_OK) rc = sqlite3session_changeset(session, &changes->size, &changes->bytes) & 0xFF;
    return rc;
}

void Twins::clear()
{
    if (session) sqlite3session_delete(session);
    session = nullptr;
    sqlite3_close(db);
    db = nullptr;
}

}  // namespace qdb
// SPDX-License-Identifier: Apache-2.0
