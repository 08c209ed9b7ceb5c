// The assignments of an UPDATE as a caller has joined them: "uname='anna',is_locked=0". Which columns a record sets
// varies little, what it sets them to varies always: with the values bound, a set of columns is prepared once.
#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>

namespace qdb {

inline constexpr uint32_t kMostAssignments = 32;

/// One assignment; the parts point into the list.
struct Assignment {
    const char *column;  // with the "=" behind it
    uint32_t column_size;
    const char *text;  // without the quotes around it, those within it doubled; null for a number
    uint32_t text_size;
    bool quotes_within;
    int64_t number;
};

struct Assignments {
    uint32_t count = 0;
    Assignment items[kMostAssignments];

    Assignments() {}  // the items are not worth clearing

    /// Takes a list apart. False when it holds anything but columns, texts and whole numbers, or is null: it then stays
    /// part of the statement's text, and nothing is noted.
    bool take(const char *list);
};

/// Binds a value; a result code.
int bind(sqlite3_stmt *stmt, int number, const Assignment &assignment);

}  // namespace qdb
// SPDX-License-Identifier: Apache-2.0
