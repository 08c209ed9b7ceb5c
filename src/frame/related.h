// What hangs on the records of a list, read by one statement over all of them and handed out record by record. The
// statement names the record in its first column, which readers of the rows do not see, and sorts by it:
//
//     Related quotas;
//     if (quotas.read(ctx, db, "SELECT Q.user_id,… WHERE Q.user_id BETWEEN %d AND %d ORDER BY Q.user_id,…", …))
//         for (const int row : quotas.of(user->UserId)) read_row(ctx, quotas.rows, row, …);
//
// A statement that fails here is nobody's error: the caller then reads record by record, so that a list breaks off
// where it always did, with the same words. It does so, too, when somebody watches the statements.
#pragma once

#include <algorithm>

#include "frame/query.h"

namespace qb {

/// Whether somebody may look at each statement that runs.
bool statements_are_watched(const CallContext *ctx);

/// Numbers of rows that follow each other.
struct RowRange {
    struct Iterator {
        int row;
        int operator*() const { return row; }
        Iterator &operator++() { return row++, *this; }
        bool operator!=(const Iterator &other) const { return row != other.row; }
    };
    int first = 0;
    int last = 0;  // one behind

    Iterator begin() const { return {first}; }
    Iterator end() const { return {last}; }
    bool empty() const { return first == last; }
};

inline RowRange all_of(const Rows &rows)
{
    return {0, rows.count};
}

/// The ids of a list.
struct IdRange {
    static constexpr int kFewest = 8;  // that are worth it

    int32_t least = 0;
    int32_t most = 0;
    int count = 0;

    /// The ids in the first column of a list's rows.
    explicit IdRange(const Rows &rows);
    /// Whether reading all that lies between them is less than asking for each: at most so many for one of the list.
    bool is_dense(int for_one = 4) const { return count >= kFewest && (int64_t{most} - least) / for_one < count; }
    /// Whether of a table's records between them at least every other one is of the list, however far apart the ids
    /// are.
    bool is_most_of(CallContext *ctx, sqlite3 *db, const char *table) const;
};

/// Reads rows that the call can do without. False when that failed, which nobody has to know.
template <class... Args>
bool try_select(CallContext *ctx, sqlite3 *db, Rows &rows, Sql<Args...> sql, Args... args)
{
    const bool was_short = ctx->short_of_memory;
    const bool failed = static_cast<bool>(select<Args...>(ctx, db, rows, sql, args...));
    ctx->short_of_memory = was_short;
    return !failed;
}

struct Related {
    Rows rows;

    /// Reads the rows. False when that failed.
    template <class... Args>
    bool read(CallContext *ctx, sqlite3 *db, Sql<Args...> sql, Args... args)
    {
        const bool read = try_select<Args...>(ctx, db, rows, sql, args...);
        rows.keys = 1;
        return read;
    }

    /// The rows of a record. Asking in the order of the rows costs nothing.
    RowRange of(int32_t id);

private:
    int next_ = 0;  // behind the rows that were handed out last

    int32_t id(int row) const { return rows.int32(row, -1); }
    bool begins(int row, int32_t wanted) const
    {
        return (row == rows.count || id(row) >= wanted) && (row == 0 || id(row - 1) < wanted);
    }
};

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
