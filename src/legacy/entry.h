// The frame of the older entry points. Unlike the operations, they trace only their end, with the true duration, and
// return the code of a failed commit.
#pragma once

#include <time.h>

#include <type_traits>

#include "frame/frame.h"

namespace qb {

/// Traces the end of a call. The duration is in whole seconds, whatever its unit in the log says.
template <class Value>
void trace_entry(const Site &site, qbdb_t *qbdb, const char *key, Value value, uint32_t rc, time_t called)
{
    if (qbdb->log_level < 4) return;
    const int code = static_cast<int>(rc);
    const auto seconds = static_cast<unsigned long long>(time(nullptr) - called);
    if constexpr (std::is_same_v<Value, const char *>)
        qbdb_log(qbdb, site.file, site.line, 4, 0, "<<<< %s(%s,%s) .. rc=%d (%llums)\n", site.operation, key, value,
                 code, seconds);
    else
        qbdb_log(qbdb, site.file, site.line, 4, 0, "<<<< %s(%s) .. rc=%d (%llums)\n", site.operation, key, code,
                 seconds);
}

/// Runs a worker in one transaction. `value` is what a setter writes, or where a getter's answer goes.
template <auto Worker, Access Needed, class Value>
uint32_t entry(Site site, qbdb_t *qbdb, sqlite3 *db, ErrorInfo *err, const char *key, Value value)
{
    const time_t called = time(nullptr);
    *err = {};
    CallContext ctx{qbdb, err};
    site.access = Needed;
    uint32_t rc = begin(site, qbdb, db);
    if (rc == 0 && Needed == Access::changes) tell_journal(qbdb, db, site.operation, key, value);
    if (rc == 0) rc = run_worker<Worker>(site, &ctx, db, key, value);
    if (rc) qbdb_sql_rollback(qbdb, db, 0, site.file, site.line);
    else rc = qbdb_sql_commit(qbdb, db, 0, site.file, site.line);
    trace_entry(site, qbdb, key, value, rc, called);
    return rc;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
