// The statement calls of the interface: run, read a table, read one value.
#include <apr_strings.h>

#include <charconv>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "growing.h"
#include "handle.h"

namespace qdb {
namespace {

/// A result while it is read: cell texts one after the other, and where each begins.
struct Cells {
    static constexpr uint64_t kNull = UINT64_MAX;
    Growing<char, 1024> bytes;
    Growing<uint64_t, 64> starts;

    bool add_start(uint64_t start)
    {
        uint64_t *slot = starts.extend(1);
        if (slot) *slot = start;
        return slot != nullptr;
    }

    bool add(const char *text, size_t size)
    {
        const uint64_t start = bytes.count;
        char *room = bytes.extend(size + 1);
        if (!room) return false;
        if (size) memcpy(room, text, size);
        room[size] = '\0';
        return add_start(start);
    }

    /// The get-table form in one block. sqlite3_free_table reads the number of pointers it has to free
    /// one by one from the word before the first: 1 tells it that there is nothing but the block.
    char **finish() const
    {
        const uint64_t head = (starts.count + 1) * sizeof(char *);
        auto *table = static_cast<char **>(sqlite3_malloc64(head + bytes.count));
        if (!table) return nullptr;
        const intptr_t nothing_to_free = 1;
        memcpy(&table[0], &nothing_to_free, sizeof nothing_to_free);
        char *text = reinterpret_cast<char *>(table) + head;
        if (bytes.count) memcpy(text, bytes.items, bytes.count);
        for (uint64_t i = 0; i < starts.count; i++)
            table[i + 1] = starts.items[i] == kNull ? nullptr : text + starts.items[i];
        return table + 1;
    }
};

/// Adds a cell as text. The connection belongs to this thread, so that the value may be asked where it is:
/// each question by column looks the column up again.
bool add_value(Cells *cells, sqlite3_value *value)
{
    switch (sqlite3_value_type(value)) {
        case SQLITE_NULL: return cells->add_start(Cells::kNull);
        case SQLITE_INTEGER: {
            char digits[24];
            const auto end = std::to_chars(digits, digits + sizeof digits, sqlite3_value_int64(value)).ptr;
            return cells->add(digits, static_cast<size_t>(end - digits));
        }
        default: {
            const auto *text = reinterpret_cast<const char *>(sqlite3_value_text(value));
            // A stored NUL ends the text for every reader of the table.
            return text && cells->add(text, strlen(text));
        }
    }
}

bool add_names(Cells *cells, sqlite3_stmt *stmt, int columns)
{
    for (int i = 0; i < columns; i++) {
        const char *name = sqlite3_column_name(stmt, i);
        if (!name || !cells->add(name, strlen(name))) return false;
    }
    return true;
}

int read_table(const Call &call, sqlite3_stmt *stmt, char ***result, int *nrow, int *ncolumn)
{
    Cells cells;
    int columns = 0;
    int rows = 0;
    int rc;
    while ((rc = sqlite3_step(stmt)) == SQLITE_ROW) {
        if (rows == INT_MAX) return fail(call, SQLITE_TOOBIG, "too many rows");
        if (rows == 0) {
            // Only now: a kept statement takes note of a changed table when it begins to run.
            columns = sqlite3_column_count(stmt);
            if (!add_names(&cells, stmt, columns)) return fail(call, SQLITE_NOMEM, "out of memory");
        }
        for (int i = 0; i < columns; i++)
            if (!add_value(&cells, sqlite3_column_value(stmt, i))) return fail(call, SQLITE_NOMEM, "out of memory");
        rows++;
    }
    if (rc != SQLITE_DONE) return fail(call, rc, sqlite3_errmsg(call.db));
    *result = cells.finish();
    if (!*result) return fail(call, SQLITE_NOMEM, "out of memory");
    *nrow = rows;
    *ncolumn = columns;
    return SQLITE_OK;
}

/// Steps to the first row. `*row` tells whether there is one.
int first_row(const Call &call, sqlite3_stmt *stmt, bool *row)
{
    const int rc = sqlite3_step(stmt);
    *row = rc == SQLITE_ROW;
    return *row || rc == SQLITE_DONE ? SQLITE_OK : fail(call, rc, sqlite3_errmsg(call.db));
}

int run_through(const Call &call, sqlite3_stmt *stmt)
{
    int rc;
    while ((rc = sqlite3_step(stmt)) == SQLITE_ROW) continue;
    return rc == SQLITE_DONE ? SQLITE_OK : fail(call, rc, sqlite3_errmsg(call.db));
}

/// After the first row: a reader is done, a statement that writes has to run to its end to be whole.
int finish(const Call &call, sqlite3_stmt *stmt)
{
    return sqlite3_stmt_readonly(stmt) ? SQLITE_OK : run_through(call, stmt);
}

/// A 32-bit number from a cell: text is decimal, as far as it is a number.
int32_t column_int32(sqlite3_stmt *stmt)
{
    return sqlite3_column_int(stmt, 0);
}

/// A 64-bit number from a cell: text with base detection as far as it is a number.
uint64_t column_uint64(sqlite3_stmt *stmt)
{
    constexpr double kTwoTo63 = 9223372036854775808.0;
    const int type = sqlite3_column_type(stmt, 0);
    if (type == SQLITE_TEXT) {
        const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(stmt, 0));
        return text ? strtoull(text, nullptr, 0) : 0;
    }
    // What does not fit SQLite's integers it keeps as a floating-point number.
    const double real = type == SQLITE_FLOAT ? sqlite3_column_double(stmt, 0) : 0;
    if (real >= 2 * kTwoTo63) return UINT64_MAX;
    if (real >= kTwoTo63) return static_cast<uint64_t>(real);
    return static_cast<uint64_t>(sqlite3_column_int64(stmt, 0));
}

}  // namespace
}  // namespace qdb

using qdb::Call;
using qdb::Statement;

int qbdb_sql_exec_mprintf(qbdb_t *qbdb, sqlite3 *db, const char **text, const char *file, uint32_t line,
                          const char *format, ...)
{
    const Call call{qbdb, db, text, file, line};
    Statement statement;
    va_list args;
    va_start(args, format);
    int rc = qdb::prepare(call, &statement, format, args);
    if (rc == SQLITE_OK && statement.stmt) rc = qdb::run_through(call, statement.stmt);
    va_end(args);
    return rc;
}

int qbdb_sql_get_table_mprintf(qbdb_t *qbdb, sqlite3 *db, const char **text, const char *file, uint32_t line,
                               char ***result, int *nrow, int *ncolumn, const char *format, ...)
{
    const Call call{qbdb, db, text, file, line};
    *result = nullptr;
    *nrow = 0;
    *ncolumn = 0;
    Statement statement;
    va_list args;
    va_start(args, format);
    int rc = qdb::prepare(call, &statement, format, args);
    if (rc == SQLITE_OK && statement.stmt) rc = qdb::read_table(call, statement.stmt, result, nrow, ncolumn);
    va_end(args);
    return rc;
}

int qbdb_sql_get_scaler_mprintf(qbdb_t *qbdb, sqlite3 *db, const char **text, const char *file, uint32_t line,
                                const char **value, const char *format, ...)
{
    const Call call{qbdb, db, text, file, line};
    *value = nullptr;
    Statement statement;
    va_list args;
    va_start(args, format);
    int rc = qdb::prepare(call, &statement, format, args);
    va_end(args);
    if (rc || !statement.stmt) return rc;
    bool row = false;
    rc = qdb::first_row(call, statement.stmt, &row);
    if (rc || !row) return rc;
    const auto *cell = reinterpret_cast<const char *>(sqlite3_column_text(statement.stmt, 0));
    const char *copy = qdb::copy_text(qdb::pool_of(qbdb), cell);
    if (!copy && (cell || sqlite3_errcode(db) == SQLITE_NOMEM)) return qdb::fail(call, SQLITE_NOMEM, "out of memory");
    rc = qdb::finish(call, statement.stmt);
    if (rc == SQLITE_OK) *value = copy;
    return rc;
}

namespace {

/// Reads one number with `read`; the value stays as it was without a row and on failure.
template <class Number>
int get_number(const Call &call, Number *value, int *notfound, Number (*read)(sqlite3_stmt *), const char *format,
               va_list args)
{
    if (notfound) *notfound = 0;
    Statement statement;
    int rc = qdb::prepare(call, &statement, format, args);
    if (rc) return rc;
    bool row = false;
    if (statement.stmt) rc = qdb::first_row(call, statement.stmt, &row);
    if (rc) return rc;
    if (!row) {
        if (notfound) *notfound = 1;
        return SQLITE_OK;
    }
    const Number number = read(statement.stmt);
    rc = qdb::finish(call, statement.stmt);
    if (rc == SQLITE_OK) *value = number;
    return rc;
}

}  // namespace

int qbdb_sql_get_int32_mprintf(qbdb_t *qbdb, sqlite3 *db, const char **text, const char *file, uint32_t line,
                               int32_t *value, int *notfound, const char *format, ...)
{
    const Call call{qbdb, db, text, file, line};
    va_list args;
    va_start(args, format);
    const int rc = get_number(call, value, notfound, qdb::column_int32, format, args);
    va_end(args);
    return rc;
}

int qbdb_sql_get_uint64_mprintf(qbdb_t *qbdb, sqlite3 *db, const char **text, const char *file, uint32_t line,
                                uint64_t *value, int *notfound, const char *format, ...)
{
    const Call call{qbdb, db, text, file, line};
    va_list args;
    va_start(args, format);
    const int rc = get_number(call, value, notfound, qdb::column_uint64, format, args);
    va_end(args);
    return rc;
}
// SPDX-License-Identifier: Apache-2.0
