// Reading a row: its fields in column order, each read as its type says.
//
//     read_row(ctx, rows, i, both(share->key, share->ShareId), share->ShareName, empty(share->Comment), skip,
//              optional(share->QuotaMB, share->QuotaMB_void));
//
// A text is copied into the call's pool and null for NULL, a number is 0 for NULL. The fields may belong to several
// records, or be variables of the worker.
#pragma once

#include "frame/query.h"

namespace qb {

/// A text that is "" for NULL.
struct Empty {
    const char *&field;
};
constexpr Empty empty(const char *&field)
{
    return {field};
}

/// A text as it stands in the result, for what is looked at and not kept: it goes with the result.
struct Uncopied {
    const char *&text;
};
constexpr Uncopied uncopied(const char *&text)
{
    return {text};
}

/// A column that the record does not take.
struct Skip {};
inline constexpr Skip skip;

/// A number that may be absent: its null indicator is set for NULL.
template <class T>
struct Optional {
    T &field;
    int32_t &is_void;
};
template <class T>
constexpr Optional<T> optional(T &field, int32_t &is_void)
{
    return {field, is_void};
}

/// One column for two fields of one type, such as a record's key and its id.
template <class T>
struct Both {
    T &first;
    T &second;
};
template <class T>
constexpr Both<T> both(T &first, T &second)
{
    return {first, second};
}

/// Where a row is read: counts the columns as the fields take them.
struct RowCursor {
    CallContext *ctx;
    const Rows &rows;
    int row;
    int column = 0;

    void take(const char *&field) { field = rows.text(ctx, row, column++); }
    void take(int32_t &field) { field = rows.int32(row, column++); }
    void take(uint32_t &field) { field = static_cast<uint32_t>(rows.int64(row, column++)); }
    void take(int64_t &field) { field = rows.int64(row, column++); }
    void take(uint64_t &field) { field = rows.uint64(row, column++); }
    void take(Empty text) { text.field = rows.word(ctx, row, column++); }
    void take(Uncopied cell) { cell.text = rows.cell(row, column++); }
    void take(Skip) { column++; }
    template <class T>
    void take(Optional<T> number)
    {
        number.is_void = !rows.cell(row, column);
        take(number.field);
    }
    template <class T>
    void take(Both<T> fields)
    {
        take(fields.first);
        fields.second = fields.first;
    }
};

/// Reads a row into as many fields as the statement has columns.
template <class... Fields>
void read_row(CallContext *ctx, const Rows &rows, int row, Fields &&...fields)
{
    QB_ASSERT(rows.columns - rows.keys == static_cast<int>(sizeof...(fields)));
    RowCursor cursor{ctx, rows, row};
    (cursor.take(fields), ...);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
