// The two peers' ways to run a statement. Both offer the same calls, so that the peers' operations are
// written once (peers.h) and differ in nothing but this.
//
//   Formatted  peer A: sqlite3_mprintf and sqlite3_get_table for each statement, as it is often done
//   Prepared   peer B: statements prepared once, values bound, columns read where they are
#pragma once

#include <apr_strings.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

#include "data.h"

namespace bench {

[[noreturn]] inline void give_up(sqlite3 *db, const char *sql)
{
    fprintf(stderr, "%s: %s\n", sql, sqlite3_errmsg(db));
    exit(1);
}

struct Formatted {
    sqlite3 *db;
    apr_pool_t *pool = nullptr;

    explicit Formatted(const Data &data) : db(data.db) {}

    struct Row {
        char **cells;
        apr_pool_t *pool;
        int32_t int32(int i) const { return cells[i] ? static_cast<int32_t>(strtol(cells[i], nullptr, 10)) : 0; }
        uint64_t uint64(int i) const { return cells[i] ? strtoull(cells[i], nullptr, 0) : 0; }
        const char *text(int i) const { return cells[i] ? apr_pstrdup(pool, cells[i]) : nullptr; }
        const char *word(int i) const { return cells[i] ? apr_pstrdup(pool, cells[i]) : ""; }
        bool has(int i) const { return cells[i] && cells[i][0]; }
    };

    void begin() { run("BEGIN IMMEDIATE"); }
    void begin_reading() { run("BEGIN"); }
    void commit() { run("COMMIT"); }

    template <class Each, class... Args>
    void each(const char *format, Each call, Args... args)
    {
        char *sql = sqlite3_mprintf(format, args...);
        char **table = nullptr;
        int rows = 0;
        int columns = 0;
        if (sqlite3_get_table(db, sql, &table, &rows, &columns, nullptr) != SQLITE_OK) give_up(db, sql);
        for (int i = 1; i <= rows; i++) call(Row{table + static_cast<ptrdiff_t>(i) * columns, pool});
        sqlite3_free_table(table);
        sqlite3_free(sql);
    }

    template <class... Args>
    void run(const char *format, Args... args)
    {
        char *sql = sqlite3_mprintf(format, args...);
        if (sqlite3_exec(db, sql, nullptr, nullptr, nullptr) != SQLITE_OK) give_up(db, sql);
        sqlite3_free(sql);
    }
};

struct Prepared {
    sqlite3 *db;
    apr_pool_t *pool = nullptr;
    std::map<const char *, sqlite3_stmt *> statements;  // by the literal's address: one look-up of a small map

    explicit Prepared(const Data &data) : db(data.db) {}
    ~Prepared()
    {
        for (auto &[format, stmt] : statements) sqlite3_finalize(stmt);
    }
    Prepared(const Prepared &) = delete;
    Prepared &operator=(const Prepared &) = delete;

    struct Row {
        sqlite3_stmt *stmt;
        apr_pool_t *pool;
        const char *raw(int i) const { return reinterpret_cast<const char *>(sqlite3_column_text(stmt, i)); }
        int32_t int32(int i) const { return sqlite3_column_int(stmt, i); }
        uint64_t uint64(int i) const { return static_cast<uint64_t>(sqlite3_column_int64(stmt, i)); }
        const char *text(int i) const { return raw(i) ? apr_pstrdup(pool, raw(i)) : nullptr; }
        const char *word(int i) const { return raw(i) ? apr_pstrdup(pool, raw(i)) : ""; }
        bool has(int i) const { return raw(i) && raw(i)[0]; }
    };

    void begin() { run("BEGIN IMMEDIATE"); }
    void begin_reading() { run("BEGIN"); }
    void commit() { run("COMMIT"); }

    template <class Each, class... Args>
    void each(const char *format, Each call, Args... args)
    {
        sqlite3_stmt *stmt = prepared(format);
        int number = 0;
        (bind(stmt, ++number, args), ...);
        int rc;
        while ((rc = sqlite3_step(stmt)) == SQLITE_ROW) call(Row{stmt, pool});
        if (rc != SQLITE_DONE) give_up(db, format);
        sqlite3_reset(stmt);
    }

    template <class... Args>
    void run(const char *format, Args... args)
    {
        each(
            format, [](const Row &) {}, args...);
    }

private:
    sqlite3_stmt *prepared(const char *format)
    {
        sqlite3_stmt *&stmt = statements[format];
        if (stmt) return stmt;
        std::string sql;
        for (const char *at = format; *at; at++) {
            if (*at != '%') {
                sql += *at;
            } else if (at[1] == '%') {
                sql += *at++;
            } else {
                sql += '?';
                while (!strchr("dusQ", *++at)) continue;
            }
        }
        if (sqlite3_prepare_v3(db, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &stmt, nullptr) != SQLITE_OK)
            give_up(db, sql.c_str());
        return stmt;
    }

    static void bind(sqlite3_stmt *stmt, int number, const char *text)
    {
        sqlite3_bind_text(stmt, number, text, -1, SQLITE_STATIC);
    }
    static void bind(sqlite3_stmt *stmt, int number, int value) { sqlite3_bind_int(stmt, number, value); }
    static void bind(sqlite3_stmt *stmt, int number, uint64_t value)
    {
        sqlite3_bind_int64(stmt, number, static_cast<sqlite3_int64>(value));
    }
};

}  // namespace bench
// SPDX-License-Identifier: Apache-2.0
