// Changesets, and what tables they are of.
#pragma once

#include "handle.h"
#include "qbdb_journal.h"

namespace qdb {

/// A changeset; released with it.
struct Changeset {
    void *bytes = nullptr;
    int size = 0;

    Changeset() = default;
    Changeset(const Changeset &) = delete;
    Changeset &operator=(const Changeset &) = delete;
    ~Changeset() { sqlite3_free(bytes); }

    /// Adds another one behind it. 0 or a result code: then it is as it was.
    int append(const Changeset &more);
    void swap(Changeset &other);
    void clear();
};

/// Whether a table has a declared key. 0 or a result code.
int look_for_key(sqlite3 *db, const char *table, bool *found);

/// Opens a private database in memory. 0 or a result code; what was opened is to be closed in both cases.
int open_in_memory(sqlite3 **db);

}  // namespace qdb
// SPDX-License-Identifier: Apache-2.0
