// The frame of an exported operation, which knows from the operation's row whether it only reads.
#pragma once

#include <string_view>

#include "api/operations.h"
#include "frame/frame.h"

namespace qb::api {

/// Reached while an exported operation is compiled that has no row in the operation table.
inline void operation_without_row() {}

/// Name and source position of an exported operation, and what its row says of it.
struct Exported {
    Site site;

    template <size_t N>
    consteval Exported(const char (&name)[N], const char *f = __builtin_FILE(), uint32_t l = __builtin_LINE())
        : site(name, f, l)
    {
        for (const QbobjOperation &row : kOperations) {
            if (!row.name) operation_without_row();
            if (!row.name || std::string_view(row.name) != name) continue;
            site.access = row.changes ? Access::changes : Access::reads;
            return;
        }
    }
};

/// Runs a worker in the frame.
template <auto Worker, class... Args>
uint32_t framed(Exported operation, qbdb_t *qbdb, sqlite3 *db, ErrorInfo *err, Args... args)
{
    return run_framed<Worker>(operation.site, qbdb, db, err, args...);
}

}  // namespace qb::api
// SPDX-License-Identifier: Apache-2.0
