// Changesets applied, and the rows that stand in the way.
#pragma once

#include "changes.h"

namespace qdb {

/// Appends the name of a row: "$user id=100".
void append_row(sqlite3_str *text, const qbdb_change &change);

/// Rows that stand in the way of a change, for people.
struct Obstacles {
    static constexpr int kNamed = 10;  // of more the number is told
    sqlite3_str *text = sqlite3_str_new(nullptr);
    int count = 0;

    Obstacles() = default;
    Obstacles(const Obstacles &) = delete;
    Obstacles &operator=(const Obstacles &) = delete;
    ~Obstacles() { sqlite3_free(sqlite3_str_finish(text)); }

    /// Notes a row; `call` changed it later, 0 for somebody who is not in the journal.
    void note(const qbdb_change &change, int64_t call);
    /// Writes what was noted behind a beginning.
    void tell(const char *beginning, char *words, size_t size) const;
};

/// Applies a changeset inside the open transaction. What does not fit is noted, and then the transaction has to be
/// rolled back. 0 or a result code.
int apply_changes(qbdb_t *qbdb, sqlite3 *db, const Changeset &changes, Obstacles *obstacles);

}  // namespace qdb
// SPDX-License-Identifier: Apache-2.0
