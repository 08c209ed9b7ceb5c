// A statement about one record, turned into one about many.
//
//     SELECT UP.user FROM rsync_user UP WHERE UP.share_id=%d ORDER BY UP.user
//     SELECT related_key,UP.user FROM (SELECT id AS related_key,+id AS related_value FROM `share` WHERE id BETWEEN %d
//         AND %d) CROSS JOIN rsync_user UP WHERE UP.share_id=related_value ORDER BY related_key,UP.user
//
// The records come first, and for each of them the statement runs as it did alone: the record's number stands where its
// argument stood, and has no affinity, as an argument has none. So the same indexes serve, and the rows of a record
// have the order that they have alone. One order the statement no longer makes, because to sort a few rows for each of
// many records costs it more than to find them: that by a text without regard to case, `ORDER BY U.uname COLLATE NOCASE`,
// where U.uname is a column of the result.
#pragma once

namespace qb {

/// A statement for all records of a table whose ids lie between two numbers, which come before its other arguments. The
/// id is a column before those of the statement.
struct SetWise {
    static constexpr int kInOrder = -1;

    const char *format = nullptr;
    int sort_by = kInOrder;  // the column, counted without the id, by whose text a record's rows are still to be sorted
};

/// The statement made of one about a record. It has no format without memory, and when it is not certain that each
/// record gets its own rows: it has to be one plain SELECT, its one %d a value behind FROM, with nothing in it that
/// counts rows, joins them into one, cuts them off or may give another answer the next time. Both texts have to be
/// literals: what has been made of them is kept.
SetWise set_wise(const char *format, const char *table);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
