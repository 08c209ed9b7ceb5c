// Changesets read for people: rows with the names of their columns, and which columns nobody should see.
#include "changes.h"

#include <cstring>
#include <utility>

namespace qdb {

int Changeset::append(const Changeset &more)
{
    if (!more.size) return SQLITE_OK;
    Changeset both;
    const int rc = sqlite3changeset_concat(size, bytes, more.size, more.bytes, &both.size, &both.bytes);
    if (rc == SQLITE_OK) swap(both);
    return rc & 0xFF;
}

void Changeset::swap(Changeset &other)
{
    std::swap(bytes, other.bytes);
    std::swap(size, other.size);
}

void Changeset::clear()
{
    sqlite3_free(bytes);
    bytes = nullptr;
    size = 0;
}

int look_for_key(sqlite3 *db, const char *table, bool *found)
{
    sqlite3_stmt *stmt = nullptr;
    int rc = sqlite3_prepare_v2(db, "SELECT 1 FROM pragma_table_info(?,'main') WHERE pk LIMIT 1", -1, &stmt, nullptr);
    if (rc == SQLITE_OK) rc = sqlite3_bind_text(stmt, 1, table, -1, SQLITE_STATIC);
    if (rc == SQLITE_OK) *found = sqlite3_step(stmt) == SQLITE_ROW;
    const int done = sqlite3_finalize(stmt);
    return (rc == SQLITE_OK ? done : rc) & 0xFF;
}

int open_in_memory(sqlite3 **db)
{
    constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    return sqlite3_open_v2(":memory:", db, kFlags, nullptr) & 0xFF;
}

}  // namespace qdb

namespace {

/// Columns that hold a password, a hash of one, or a key.
constexpr struct {
    const char *table;
    const char *column;
} kSecretColumns[] = {
    {"$user", "passwd"},           {"passwordrecovery", "answer"},      {"rsync_user_password_acl", "password"},
    {"service_daap", "password"},  {"service_coffer", "password"},      {"service_replicate", "priv_data"},
    {"service_snmp", "community"}, {"_ups_config", "snmp_community"},   {"_ups_config", "remote_password"},
    {"tivo_mak", "key"},           {"$iscsi_lun_group", "chap_secret"}, {"$iscsi_initiator", "chap_secret"},
    {"backup", "src_password"},    {"backup", "dst_password"},
};

/// One iteration over a changeset and the room for its present row.
struct Reading {
    sqlite3 *db;
    sqlite3_changeset_iter *iterator = nullptr;
    char *table = nullptr;  // a copy: the iterator has one place for the names of all tables
    int count = 0;
    sqlite3_stmt *names = nullptr;  // holds the names of the columns
    void *room = nullptr;
    const char **columns = nullptr;
    sqlite3_value **before = nullptr;
    sqlite3_value **after = nullptr;

    explicit Reading(sqlite3 *connection) : db(connection) {}
    Reading(const Reading &) = delete;
    Reading &operator=(const Reading &) = delete;
    ~Reading()
    {
        sqlite3_finalize(names);
        sqlite3_free(table);
        sqlite3_free(room);
        if (iterator) sqlite3changeset_finalize(iterator);
    }

    bool is_at(const char *name) const { return table && strcmp(table, name) == 0; }
    int enter_table(const char *name, int columns_in_it, bool by_row_number);
    int read_row(int operation);
};

/// The names come from a statement on the table, which keeps them. A table recorded by row number has one column more.
int Reading::enter_table(const char *name, int columns_in_it, bool by_row_number)
{
    sqlite3_free(table);
    table = sqlite3_mprintf("%s", name);
    count = columns_in_it;
    sqlite3_finalize(names);
    names = nullptr;
    sqlite3_free(room);
    const auto size = static_cast<size_t>(count);
    room = sqlite3_malloc64(size * (sizeof *columns + 2 * sizeof(void *)));
    char *sql = sqlite3_mprintf("SELECT %s* FROM main.\"%w\"", by_row_number ? "_rowid_," : "", name);
    if (!table || !room || !sql) {
        sqlite3_free(sql);
        return SQLITE_NOMEM;
    }
    before = static_cast<sqlite3_value **>(room);
    after = before + size;
    columns = const_cast<const char **>(reinterpret_cast<char **>(after + size));
    const bool known = sqlite3_table_column_metadata(db, "main", name, nullptr, nullptr, nullptr, nullptr, nullptr,
                                                     nullptr) == SQLITE_OK;
    const int rc = known ? sqlite3_prepare_v2(db, sql, -1, &names, nullptr) : SQLITE_OK;
    sqlite3_free(sql);
    const int there = names ? sqlite3_column_count(names) : 0;
    for (int i = 0; i < count; i++) columns[i] = i < there ? sqlite3_column_name(names, i) : nullptr;
    if (by_row_number && there) columns[0] = "_rowid_";
    return rc & 0xFF;
}

int Reading::read_row(int operation)
{
    int rc = SQLITE_OK;
    for (int i = 0; i < count; i++) {
        before[i] = after[i] = nullptr;
        if (rc == SQLITE_OK && operation != SQLITE_INSERT) rc = sqlite3changeset_old(iterator, i, &before[i]);
        if (rc == SQLITE_OK && operation != SQLITE_DELETE) rc = sqlite3changeset_new(iterator, i, &after[i]);
    }
    return rc & 0xFF;
}

}  // namespace

int qbdb_changes_read(qbdb_t *, sqlite3 *db, const void *changes, int size, qbdb_change_reader reader, void *context)
{
    if (!size) return SQLITE_OK;
    Reading reading(db);
    int rc = sqlite3changeset_start(&reading.iterator, size, const_cast<void *>(changes));
    while (rc == SQLITE_OK && (rc = sqlite3changeset_next(reading.iterator)) == SQLITE_ROW) {
        const char *table = nullptr;
        unsigned char *key = nullptr;
        int count = 0;
        int operation = 0;
        rc = sqlite3changeset_op(reading.iterator, &table, &count, &operation, nullptr);
        if (rc == SQLITE_OK) rc = sqlite3changeset_pk(reading.iterator, &key, nullptr);
        bool keyed = true;
        if (rc == SQLITE_OK && !reading.is_at(table)) {
            rc = qdb::look_for_key(db, table, &keyed);
            if (rc == SQLITE_OK) rc = reading.enter_table(table, count, !keyed);
        }
        if (rc == SQLITE_OK) rc = reading.read_row(operation);
        if (rc != SQLITE_OK) return rc & 0xFF;
        const qbdb_change change = {table, operation, count, reading.columns, key, reading.before, reading.after};
        if (const int ended = reader(context, &change)) return ended;
    }
    return rc == SQLITE_DONE ? SQLITE_OK : rc & 0xFF;
}

int qbdb_is_secret_column(const char *table, const char *column)
{
    for (const auto &secret : kSecretColumns)
        if (!strcmp(secret.table, table) && !strcmp(secret.column, column)) return 1;
    return 0;
}
// SPDX-License-Identifier: Apache-2.0
