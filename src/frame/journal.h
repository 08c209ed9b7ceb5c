// What a call is, for the journal of a support library that keeps one: the operation's name and what it was given,
// secrets left out.
#pragma once

#include <type_traits>

#include "frame/optional_calls.h"
#include "qbobj.h"

namespace qb {

/// Writes down the call of an operation. `values` are its arguments, as in a call through its row.
void note_call(qbdb_t *qbdb, sqlite3 *db, const char *operation, const QbobjValue *values);

template <class A>
QbobjValue value_of_argument(A argument)
{
    QbobjValue value{};
    if constexpr (std::is_same_v<A, int32_t>) value.i = argument;
    else if constexpr (std::is_same_v<A, uint64_t>) value.n = argument;
    else if constexpr (std::is_same_v<A, const char *>) value.s = argument;
    else value.p = const_cast<void *>(static_cast<const void *>(argument));
    return value;
}

/// Tells the journal of the call that has just begun. Nothing happens where none is kept.
template <class... Args>
void tell_journal(qbdb_t *qbdb, sqlite3 *db, const char *operation, Args... args)
{
    if (!qbdb_journal_wants || !qbdb_journal_wants(qbdb, db)) [[likely]]
        return;
    const QbobjValue values[] = {value_of_argument(args)..., QbobjValue{}};
    note_call(qbdb, db, operation, values);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
