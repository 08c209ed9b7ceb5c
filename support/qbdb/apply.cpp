// Changesets applied: tables with a declared key by SQLite itself, the others row number by row number.
#include "apply.h"

#include <cstdio>
#include <cstring>
#include <initializer_list>

namespace qdb {
namespace {

const char *word_for(int operation)
{
    return operation == SQLITE_INSERT ? "insert" : operation == SQLITE_DELETE ? "delete" : "update";
}

/// What goes through the application of one changeset.
struct Application {
    qbdb_t *qbdb;
    sqlite3 *db;
    Obstacles *obstacles;
    int operation;  // of the present pass over tables without a key
    int rc = SQLITE_OK;
};

/// Fills a change from an iterator that stands on a row in conflict, keys alone: enough for its name.
void note_conflict(Application *application, sqlite3_changeset_iter *iterator)
{
    constexpr int kMostColumns = 64;
    const char *columns[kMostColumns] = {};
    sqlite3_value *values[kMostColumns] = {};
    qbdb_change change{};
    unsigned char *key = nullptr;
    sqlite3changeset_op(iterator, &change.table, &change.count, &change.operation, nullptr);
    sqlite3changeset_pk(iterator, &key, nullptr);
    if (change.count > kMostColumns) change.count = kMostColumns;
    char *sql = sqlite3_mprintf("SELECT * FROM main.\"%w\"", change.table);
    sqlite3_stmt *names = nullptr;
    if (sql) sqlite3_prepare_v2(application->db, sql, -1, &names, nullptr);
    sqlite3_free(sql);
    for (int i = 0; i < change.count; i++) {
        columns[i] = i < sqlite3_column_count(names) ? sqlite3_column_name(names, i) : nullptr;
        if (change.operation == SQLITE_INSERT) sqlite3changeset_new(iterator, i, &values[i]);
        else sqlite3changeset_old(iterator, i, &values[i]);
    }
    change.columns = columns;
    change.key = key;
    change.before = change.after = values;
    application->obstacles->note(change, 0);
    sqlite3_finalize(names);
}

int meet_conflict(void *context, int kind, sqlite3_changeset_iter *iterator)
{
    auto *application = static_cast<Application *>(context);
    if (kind == SQLITE_CHANGESET_FOREIGN_KEY) return SQLITE_CHANGESET_ABORT;
    note_conflict(application, iterator);
    return SQLITE_CHANGESET_OMIT;  // the others are looked at as well; all is rolled back in the end
}

/// Whether SQLite applies a table's changes.
int has_key(void *context, const char *table)
{
    auto *application = static_cast<Application *>(context);
    bool keyed = true;
    if (const int rc = look_for_key(application->db, table, &keyed)) application->rc = rc;
    return keyed;
}

void append_condition(sqlite3_str *text, const qbdb_change &change)
{
    sqlite3_str_appendall(text, " WHERE _rowid_=?1");
    for (int i = 1; i < change.count; i++)
        if (change.before[i]) sqlite3_str_appendf(text, " AND \"%w\" IS ?%d", change.columns[i], i + 1);
}

/// The statement for one row of a table without a key; values before have their column's number, those after follow.
char *statement_for(const qbdb_change &change)
{
    sqlite3_str *text = sqlite3_str_new(nullptr);
    const int count = change.count;
    if (change.operation == SQLITE_INSERT) {
        sqlite3_str_appendf(text, "INSERT INTO main.\"%w\"(_rowid_", change.table);
        for (int i = 1; i < count; i++) sqlite3_str_appendf(text, ",\"%w\"", change.columns[i]);
        sqlite3_str_appendall(text, ") VALUES(");
        for (int i = 0; i < count; i++) sqlite3_str_appendf(text, "%s?%d", i ? "," : "", count + i + 1);
        sqlite3_str_appendall(text, ")");
    } else if (change.operation == SQLITE_DELETE) {
        sqlite3_str_appendf(text, "DELETE FROM main.\"%w\"", change.table);
        append_condition(text, change);
    } else {
        sqlite3_str_appendf(text, "UPDATE main.\"%w\" SET ", change.table);
        const char *comma = "";
        for (int i = 1; i < count; i++) {
            if (!change.after[i]) continue;
            sqlite3_str_appendf(text, "%s\"%w\"=?%d", comma, change.columns[i], count + i + 1);
            comma = ",";
        }
        append_condition(text, change);
    }
    return sqlite3_str_finish(text);
}

/// Applies one row of a table without a key.
int apply_row(Application *application, const qbdb_change &change)
{
    for (int i = 0; i < change.count; i++)
        if (!change.columns[i]) return SQLITE_SCHEMA;
    char *sql = statement_for(change);
    if (!sql) return SQLITE_NOMEM;
    sqlite3_stmt *stmt = nullptr;
    int rc = sqlite3_prepare_v2(application->db, sql, -1, &stmt, nullptr);
    sqlite3_free(sql);
    const int holes = sqlite3_bind_parameter_count(stmt);
    for (int i = 0; rc == SQLITE_OK && i < change.count; i++) {
        if (change.before[i] && i < holes) rc = sqlite3_bind_value(stmt, i + 1, change.before[i]);
        if (rc == SQLITE_OK && change.after[i] && change.count + i < holes)
            rc = sqlite3_bind_value(stmt, change.count + i + 1, change.after[i]);
    }
    if (rc == SQLITE_OK) rc = sqlite3_step(stmt);
    const bool done = rc == SQLITE_DONE && sqlite3_changes(application->db) == 1;
    const int ended = sqlite3_finalize(stmt) & 0xFF;
    if (done) return SQLITE_OK;
    if (ended != SQLITE_OK && ended != SQLITE_CONSTRAINT) return ended;
    if (rc != SQLITE_DONE && ended == SQLITE_OK) return rc & 0xFF;
    application->obstacles->note(change, 0);
    return SQLITE_OK;
}

int apply_unkeyed(void *context, const qbdb_change *change)
{
    auto *application = static_cast<Application *>(context);
    if (change->operation != application->operation) return SQLITE_OK;
    bool keyed = true;
    const int rc = look_for_key(application->db, change->table, &keyed);
    return rc != SQLITE_OK || keyed ? rc : apply_row(application, *change);
}

/// Whether the tables are those that the changes were made in: SQLite passes over others without a word.
int check_table(void *context, const qbdb_change *change)
{
    auto *application = static_cast<Application *>(context);
    bool same = change->columns[change->count - 1] != nullptr;
    for (int i = 0; same && i < change->count; i++) {
        int part = 0;
        if (!strcmp(change->columns[i], "_rowid_")) continue;
        const int rc = sqlite3_table_column_metadata(application->db, "main", change->table, change->columns[i],
                                                     nullptr, nullptr, nullptr, &part, nullptr);
        same = rc == SQLITE_OK && !part == !change->key[i];
    }
    return same ? SQLITE_OK : SQLITE_SCHEMA;
}

}  // namespace

void append_row(sqlite3_str *text, const qbdb_change &change)
{
    sqlite3_str_appendall(text, change.table);
    const char *comma = " ";
    for (int i = 0; i < change.count; i++) {
        if (!change.key[i]) continue;
        sqlite3_value *value = change.operation == SQLITE_INSERT ? change.after[i] : change.before[i];
        const char *name = change.columns[i] ? change.columns[i] : "?";
        const int type = value ? sqlite3_value_type(value) : SQLITE_NULL;
        sqlite3_str_appendf(text, "%s%s=", comma, name);
        if (type == SQLITE_INTEGER) sqlite3_str_appendf(text, "%lld", sqlite3_value_int64(value));
        else if (type == SQLITE_TEXT) sqlite3_str_appendf(text, "%Q", sqlite3_value_text(value));
        else if (type != SQLITE_NULL) {
            const auto *bytes = static_cast<const unsigned char *>(sqlite3_value_blob(value));
            for (int at = 0; at < sqlite3_value_bytes(value); at++) sqlite3_str_appendf(text, "%02x", bytes[at]);
        }
        comma = ",";
    }
}

void Obstacles::note(const qbdb_change &change, int64_t call)
{
    if (++count > kNamed) return;
    if (count > 1) sqlite3_str_appendall(text, ", ");
    append_row(text, change);
    if (call) sqlite3_str_appendf(text, " (call %lld)", call);
    else sqlite3_str_appendf(text, " (cannot %s it)", word_for(change.operation));
}

void Obstacles::tell(const char *beginning, char *words, size_t size) const
{
    if (!words || !size) return;
    const char *rows = sqlite3_str_value(text);
    char more[32] = "";
    if (count > kNamed) snprintf(more, sizeof more, " and %d more", count - kNamed);
    snprintf(words, size, "%s: %s%s", beginning, rows ? rows : "", more);
}

int apply_changes(qbdb_t *qbdb, sqlite3 *db, const Changeset &changes, Obstacles *obstacles)
{
    Application application{qbdb, db, obstacles, 0};
    int rc = qbdb_changes_read(qbdb, db, changes.bytes, changes.size, check_table, &application);
    if (rc != SQLITE_OK) return rc;
    rc = sqlite3changeset_apply(db, changes.size, changes.bytes, has_key, meet_conflict, &application) & 0xFF;
    if (rc == SQLITE_OK) rc = application.rc;
    // What goes makes room for what changes, and that for what comes.
    for (const int operation : {SQLITE_DELETE, SQLITE_UPDATE, SQLITE_INSERT}) {
        application.operation = operation;
        if (rc == SQLITE_OK) rc = qbdb_changes_read(qbdb, db, changes.bytes, changes.size, apply_unkeyed, &application);
    }
    return rc;
}

}  // namespace qdb
// SPDX-License-Identifier: Apache-2.0
