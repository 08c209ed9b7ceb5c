// Queries: thin typed calls over the support library's statement functions.
//
//     Rows rows;
//     TRY(select(ctx, db, rows, "SELECT U.id FROM `$user` U WHERE U.uname=%Q", name)
//             .or_report(ctx, "Failed DB Query for user. %s"));
//
// The compiler checks each format against its arguments; the source positions of the statement and of the
// report go along by themselves.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "frame/format.h"
#include "frame/report_line.h"

namespace qb {

inline constexpr int kConstraint = 19;  // SQLite's code for a violated constraint

/// How a statement ended: false for success.
struct [[nodiscard]] Failure {
    int rc = 0;
    const char *text = nullptr;  // the database's own words; null for success

    explicit operator bool() const { return rc != 0; }

    /// Reports a failure as the caller's error and returns its code; 0 for success. The words may end with one %s
    /// more than there are arguments: it takes the database's own words.
    template <class... Args>
    [[nodiscard]] uint32_t or_report(CallContext *ctx, uint32_t code, FailureText<Args...> words, Args... args) const
    {
        if (rc == 0) [[likely]]
            return 0;
        return report(ctx, code, words.file, words.line, words.text, args..., text);
    }
    template <class... Args>
    [[nodiscard]] uint32_t or_report(CallContext *ctx, FailureText<Args...> words, Args... args) const
    {
        return or_report<Args...>(ctx, kStatementFailed, words, args...);
    }

    /// As or_report, for the operations that log the words as a line of their own.
    template <class... Args>
    [[nodiscard]] uint32_t or_report_line(CallContext *ctx, FailureText<Args...> words, Args... args) const
    {
        if (rc == 0) [[likely]]
            return 0;
        return report_line(ctx, kStatementFailed, words.file, words.line, words.text, args..., text);
    }

    /// Logs a failure that is not the caller's error, and tells whether there was one. The words as in or_report.
    template <class... Args>
    [[nodiscard]] bool logged(CallContext *ctx, FailureText<Args...> words, Args... args) const
    {
        if (rc != 0 && ctx->qbdb->log_level > 1)
            qbdb_log(ctx->qbdb, words.file, words.line, 2, 0, words.text, args..., text);
        return rc != 0;
    }
};

/// A result table; released on every path.
struct Rows {
    char **table = nullptr;
    int count = 0;
    int columns = 0;
    int keys = 0;           // leading columns that no reader of a row sees
    bool borrowed = false;  // the table is another's

    Rows() = default;
    Rows(const Rows &) = delete;
    Rows &operator=(const Rows &) = delete;
    ~Rows() { release(); }

    /// Takes some of another's rows, as long as those are there.
    void borrow(const Rows &lender, int first, int number)
    {
        table = lender.table + static_cast<ptrdiff_t>(first) * lender.columns;
        count = number;
        columns = lender.columns;
        keys = lender.keys;
        borrowed = true;
    }
    void release()
    {
        if (!borrowed) sqlite3_free_table(table);
        table = nullptr;
        count = columns = keys = 0;
        borrowed = false;
    }

    /// A cell, null for NULL. Valid as long as the table.
    const char *cell(int row, int column) const { return table[(row + 1) * columns + keys + column]; }
    /// A cell read as strtol does, base 10; 0 for NULL.
    int32_t int32(int row, int column) const;
    /// A cell read as strtoll does, base 10; 0 for NULL.
    int64_t int64(int row, int column) const;
    /// A cell read as strtoull does, its base detected (0x1F, 017); 0 for NULL.
    uint64_t uint64(int row, int column) const;
    /// A copy of a cell in the call's pool; null for NULL.
    const char *text(CallContext *ctx, int row, int column) const;
    /// A copy of a cell in the call's pool; "" for NULL.
    const char *word(CallContext *ctx, int row, int column) const;
};

/// What a call of the support library failed for that hands no words back.
inline Failure failure_on(sqlite3 *db)
{
    const int rc = sqlite3_errcode(db);
    const bool told = rc != SQLITE_OK && rc != SQLITE_ROW && rc != SQLITE_DONE;
    return told ? Failure{rc & 0xFF, sqlite3_errmsg(db)} : Failure{SQLITE_ERROR, "The look-up failed."};
}

/// Notes in the call that a statement failed for lack of memory.
inline Failure noted(CallContext *ctx, Failure bad)
{
    if (bad.rc == SQLITE_NOMEM) [[unlikely]]
        ctx->short_of_memory = true;
    return bad;
}

/// A statement that asks for one record by its id, with a text or without.
struct Question {
    const char *format;
    const char *file;
    uint32_t line;
    int32_t id;
    bool takes_word = false;
    const char *word = nullptr;

    Question(SqlFormat<int32_t> sql, int32_t record) : format(sql.text), file(sql.file), line(sql.line), id(record) {}
    Question(SqlFormat<int32_t, const char *> sql, int32_t record, const char *text)
        : format(sql.text), file(sql.file), line(sql.line), id(record), takes_word(true), word(text)
    {
    }
};
template <class... Args>
inline constexpr bool kAsksForRecord =
    std::is_same_v<void(Args...), void(int32_t)> || std::is_same_v<void(Args...), void(int32_t, const char *)>;

/// What the records of a list have been asked before; see together.h.
bool answer(Together *together, sqlite3 *db, Rows &rows, const Question &question);
bool recall(Together *together, sqlite3 *db, const char *&value, const Question &question);
void remember(Together *together, sqlite3 *db, const char *value, const Question &question);

/// Reads a table.
template <class... Args>
Failure select(CallContext *ctx, sqlite3 *db, Rows &rows, Sql<Args...> sql, Args... args)
{
    Failure bad;
    rows.release();
    if constexpr (kAsksForRecord<Args...>)
        if (ctx->together && answer(ctx->together, db, rows, Question(sql, args...))) return bad;
    bad.rc = qbdb_sql_get_table_mprintf(ctx->qbdb, db, &bad.text, sql.file, sql.line, &rows.table, &rows.count,
                                        &rows.columns, sql.text, args...);
    return noted(ctx, bad);
}

/// Runs a statement that returns no rows.
template <class... Args>
Failure execute(CallContext *ctx, sqlite3 *db, Sql<Args...> sql, Args... args)
{
    Failure bad;
    bad.rc = qbdb_sql_exec_mprintf(ctx->qbdb, db, &bad.text, sql.file, sql.line, sql.text, args...);
    return noted(ctx, bad);
}

/// Reads one text; null when there is no row or the value is NULL.
template <class... Args>
Failure select_text(CallContext *ctx, sqlite3 *db, const char *&value, Sql<Args...> sql, Args... args)
{
    Failure bad;
    if constexpr (kAsksForRecord<Args...>)
        if (ctx->together && recall(ctx->together, db, value, Question(sql, args...))) return bad;
    bad.rc = qbdb_sql_get_scaler_mprintf(ctx->qbdb, db, &bad.text, sql.file, sql.line, &value, sql.text, args...);
    if constexpr (kAsksForRecord<Args...>)
        if (ctx->together && bad.rc == 0) remember(ctx->together, db, value, Question(sql, args...));
    return noted(ctx, bad);
}

/// Reads one 32-bit integer; left as it was when there is no row.
template <class... Args>
Failure select_int32(CallContext *ctx, sqlite3 *db, int32_t &value, Sql<Args...> sql, Args... args)
{
    Failure bad;
    bad.rc =
        qbdb_sql_get_int32_mprintf(ctx->qbdb, db, &bad.text, sql.file, sql.line, &value, nullptr, sql.text, args...);
    return noted(ctx, bad);
}

/// Reads one 32-bit integer and tells whether there was a row.
template <class... Args>
Failure find_int32(CallContext *ctx, sqlite3 *db, int32_t &value, bool &found, Sql<Args...> sql, Args... args)
{
    Failure bad;
    int notfound = 0;
    bad.rc =
        qbdb_sql_get_int32_mprintf(ctx->qbdb, db, &bad.text, sql.file, sql.line, &value, &notfound, sql.text, args...);
    found = bad.rc == 0 && !notfound;
    return noted(ctx, bad);
}

/// Reads one unsigned 64-bit number; left as it was when there is no row.
template <class... Args>
Failure select_uint64(CallContext *ctx, sqlite3 *db, uint64_t &value, Sql<Args...> sql, Args... args)
{
    Failure bad;
    bad.rc =
        qbdb_sql_get_uint64_mprintf(ctx->qbdb, db, &bad.text, sql.file, sql.line, &value, nullptr, sql.text, args...);
    return noted(ctx, bad);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
