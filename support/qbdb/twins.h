// Tables without a declared key, recorded by the numbers of their rows.
#pragma once

#include "changes.h"

namespace qdb {

/// Tables without a declared key, which sessions pass over. A private database in memory holds a twin of each one that
/// the transaction writes to, with the row number for a key; a session there records what the table became.
struct Twins {
    sqlite3 *source = nullptr;  // the connection that is recorded
    sqlite3 *db = nullptr;
    sqlite3_session *session = nullptr;

    Twins() = default;
    Twins(const Twins &) = delete;
    Twins &operator=(const Twins &) = delete;
    ~Twins() { clear(); }

    bool has(const char *table) const;
    /// Copies a table as it is before its first change.
    int add(const char *table);
    /// Brings the twins up to date and says what changed.
    int finish(Changeset *changes);
    void clear();

private:
    int open();
    int copy_rows(const char *table, bool later);
};

}  // namespace qdb
// SPDX-License-Identifier: Apache-2.0
