// Whether a share's rows of a protocol are others than before.
//
// Other shares' rows cannot change with it, so that only its own are read, before and after, by its id. What that costs
// does not grow with the appliance, and needs of the support library nothing but statements.
#pragma once

#include "frame/query.h"

namespace qb {

/// Which rows make up the settings of a protocol, beside those of its options.
struct ProtocolTables {
    const char *proto;
    bool hosts = false;
    bool accounts = false;
    bool links = false;  // to DFS folders
};

/// A share's rows of a protocol at one time.
struct ProtocolRows {
    static constexpr int kTables = 5;

    Rows of[kTables];  // of a table that the protocol does not have: none

    uint32_t read(CallContext *ctx, sqlite3 *db, int32_t share_id, const ProtocolTables &tables);

    /// Compared by content: where a row stands does not matter.
    bool operator==(const ProtocolRows &other) const;
};

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
