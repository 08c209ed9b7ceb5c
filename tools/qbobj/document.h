// The document of export and import: a whole configuration.
//
// {
//   "format": "qbobj configuration",
//   "schema_version": 1,
//   "library_version": "1.0.0",
//   "secrets": false,
//   "tables": {"$user": [{"id": 0, "uname": "root", …}, …], …},
//   "counters": {"$log": 17}
// }
//
// A row has a member for each column, see value_to_json, and where rows have a number that stands in no column that one
// first, as "_rowid_". Left out are only secrets. The counters are those that give rows their next numbers.
#pragma once

#include "memory.h"
#include "tables.h"

namespace qbcli {

inline constexpr const char *kFormat = "qbobj configuration";

/// What a value shows when secrets are left out: it is there and not told.
bool is_withheld(const Column &column, const Value &value);

/// The document of a database, read in one transaction. Each row is a line.
PrivateText document_of(const Database &database, bool secrets);

/// What an import did.
struct Imported {
    uint64_t tables = 0;
    uint64_t rows = 0;
    std::string withheld;  ///< Columns whose secrets the document does not hold, with how many rows; empty for none.
};

/// Brings a document into a fresh database, whole or not at all.
/// @param origin What the document is called in messages.
Imported import_document(const Database &database, const Json &document, const std::string &origin,
                         uint32_t timeout_ms);

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
