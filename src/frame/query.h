// Queries: thin typed calls over the support library's statement functions.
//
//     Rows rows;
//     if (auto bad = select(ctx, db, rows, "SELECT U.id FROM `$user` U WHERE U.uname=%Q", name))
//         return REPORT(ctx, 5, "Failed DB Query for user. %s", bad.text);
//
// The compiler checks each format against its arguments, and the statement's source position goes
// along by itself.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "frame/report.h"

namespace qb {

inline constexpr int kConstraint = 19;  // SQLite's code for a violated constraint

/// How a statement ended: false for success.
struct Failure {
    int rc = 0;
    const char *text = nullptr;
    explicit operator bool() const { return rc != 0; }
};

/// A result table; released on every path.
struct Rows {
    char **table = nullptr;
    int count = 0;
    int columns = 0;

    Rows() = default;
    Rows(const Rows &) = delete;
    Rows &operator=(const Rows &) = delete;
    ~Rows() { sqlite3_free_table(table); }

    /// A cell, null for NULL. Valid as long as the table.
    const char *cell(int row, int column) const { return table[(row + 1) * columns + column]; }
    /// A cell as a decimal 32-bit integer as far as it is one; 0 for NULL.
    int32_t int32(int row, int column) const;
    /// A cell as an unsigned 64-bit number, its base detected (0x1F, 017); 0 for NULL.
    uint64_t uint64(int row, int column) const;
    /// A copy of a cell in the call's pool, null for NULL; without memory null, and the call notes that.
    const char *text(const CallContext *ctx, int row, int column) const;
    /// A copy of a cell in the call's pool, "" for NULL; without memory as text().
    const char *word(const CallContext *ctx, int row, int column) const;
};

/// Kind of value that a conversion of SQLite's formatter takes, as a letter; 0 for anything else.
template <class T>
consteval char sql_kind()
{
    using Bare = std::decay_t<T>;
    if constexpr (std::is_same_v<Bare, const char *> || std::is_same_v<Bare, char *>) return 's';
    else if constexpr (std::is_integral_v<Bare> || std::is_enum_v<Bare>) return sizeof(Bare) == 8 ? 'l' : 'i';
    else return 0;
}

/// Reached while a format is checked at compile time: the format and its arguments do not agree.
inline void sql_format_mismatch() {}

/// A statement's format, checked against the types of its arguments while it is compiled.
template <class... Args>
struct SqlFormat {
    const char *text;
    const char *file;
    uint32_t line;

    template <size_t N>
    consteval SqlFormat(const char (&format)[N], const char *f = __builtin_FILE(), uint32_t l = __builtin_LINE())
        : text(format), file(f), line(l)
    {
        for (const char *at = f; *at; at++)
            if (*at == '/') file = at + 1;
        constexpr char kinds[] = {sql_kind<Args>()..., '\0'};
        size_t argument = 0;
        for (size_t i = 0; i < N; i++) {
            if (format[i] != '%') continue;
            i++;
            if (format[i] == '%') continue;
            size_t longs = 0;
            for (; format[i] == 'l' && longs < 2; i++) longs++;
            const char letter = format[i];
            const bool number = letter == 'd' || letter == 'u';
            const bool string = (letter == 's' || letter == 'q' || letter == 'Q') && longs == 0;
            const char kind = argument < sizeof...(Args) ? kinds[argument] : '\0';
            if (!(string && kind == 's') && !(number && kind == (longs ? 'l' : 'i'))) sql_format_mismatch();
            argument++;
        }
        if (argument != sizeof...(Args)) sql_format_mismatch();
    }
};

template <class... Args>
using Sql = SqlFormat<std::type_identity_t<Args>...>;

/// Notes in the call that a statement failed for lack of memory.
inline Failure noted(const CallContext *ctx, const Failure &bad)
{
    if (bad.rc == SQLITE_NOMEM) [[unlikely]]
        ctx->short_of_memory = true;
    return bad;
}

/// Reads a table.
template <class... Args>
Failure select(const CallContext *ctx, sqlite3 *db, Rows &rows, Sql<Args...> sql, Args... args)
{
    Failure bad;
    sqlite3_free_table(rows.table);
    bad.rc = qbdb_sql_get_table_mprintf(ctx->qbdb, db, &bad.text, sql.file, sql.line, &rows.table, &rows.count,
                                        &rows.columns, sql.text, args...);
    return noted(ctx, bad);
}

/// Runs a statement that returns no rows.
template <class... Args>
Failure execute(const CallContext *ctx, sqlite3 *db, Sql<Args...> sql, Args... args)
{
    Failure bad;
    bad.rc = qbdb_sql_exec_mprintf(ctx->qbdb, db, &bad.text, sql.file, sql.line, sql.text, args...);
    return noted(ctx, bad);
}

/// Reads one text; null when there is no row or the value is NULL.
template <class... Args>
Failure select_text(const CallContext *ctx, sqlite3 *db, const char *&value, Sql<Args...> sql, Args... args)
{
    Failure bad;
    bad.rc = qbdb_sql_get_scaler_mprintf(ctx->qbdb, db, &bad.text, sql.file, sql.line, &value, sql.text, args...);
    return noted(ctx, bad);
}

/// Reads one 32-bit integer; left as it was when there is no row.
template <class... Args>
Failure select_int32(const CallContext *ctx, sqlite3 *db, int32_t &value, Sql<Args...> sql, Args... args)
{
    Failure bad;
    bad.rc =
        qbdb_sql_get_int32_mprintf(ctx->qbdb, db, &bad.text, sql.file, sql.line, &value, nullptr, sql.text, args...);
    return noted(ctx, bad);
}

/// Reads one 32-bit integer and tells whether there was a row.
template <class... Args>
Failure find_int32(const CallContext *ctx, sqlite3 *db, int32_t &value, bool &found, Sql<Args...> sql, Args... args)
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
Failure select_uint64(const CallContext *ctx, sqlite3 *db, uint64_t &value, Sql<Args...> sql, Args... args)
{
    Failure bad;
    bad.rc =
        qbdb_sql_get_uint64_mprintf(ctx->qbdb, db, &bad.text, sql.file, sql.line, &value, nullptr, sql.text, args...);
    return noted(ctx, bad);
}

}  // namespace qb
