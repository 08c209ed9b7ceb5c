// The call frame: the one sequence that every exported operation runs around its worker.
#pragma once

#include <time.h>

#include <type_traits>

#include "frame/format.h"
#include "frame/journal.h"
#include "frame/optional_calls.h"
#include "frame/records.h"
#include "frame/report.h"

namespace qb {

/// Whether an operation may write. One that only reads takes no lock for writing and waits for no writer.
enum class Access { reads, changes };

/// Name and source position of an exported operation.
struct Site {
    const char *operation;
    const char *file;
    uint32_t line;
    Access access = Access::changes;

    template <size_t N>
    consteval Site(const char (&name)[N], const char *f = __builtin_FILE(), uint32_t l = __builtin_LINE())
        : operation(name), file(file_name(f)), line(l)
    {
    }
};

/// Begins an operation's transaction. Where the support library knows none that only reads, every one may write.
inline uint32_t begin(const Site &site, qbdb_t *qbdb, sqlite3 *db)
{
    if (site.access == Access::reads && qbdb_sql_begin_read)
        return qbdb_sql_begin_read(qbdb, db, 0, site.file, site.line);
    return qbdb_sql_begin(qbdb, db, 0, site.file, site.line);
}

/// Dumps an argument when its type says that it is a record, or the address of a list of records.
template <class A>
void dump_argument(const Site &site, qbdb_t *qbdb, A argument)
{
    if constexpr (std::is_pointer_v<A>) {
        using Pointee = std::remove_pointer_t<A>;
        if constexpr (Record<Pointee>) {
            qbobj_api2_utils_dump_object(qbdb, fields_of<std::remove_cv_t<Pointee>>, argument, 0, site.file, site.line);
        } else if constexpr (std::is_pointer_v<Pointee>) {
            using Element = std::remove_cv_t<std::remove_pointer_t<Pointee>>;
            if constexpr (Record<Element>)
                qbobj_api2_utils_dump_object(qbdb, fields_of<Element>, argument ? *argument : nullptr, 0, site.file,
                                             site.line);
        }
    }
}

/// Runs a worker and returns its code. Whatever it says of itself, a call that lacked memory is not to be committed. A
/// worker with a signed result answers with a value, which is -1 for every failure, and the error record stays empty.
template <auto Worker, class... Args>
uint32_t run_worker(const Site &site, CallContext *ctx, Args... args)
{
    const auto result = Worker(ctx, args...);
    if constexpr (std::is_same_v<decltype(result), const int32_t>)
        return static_cast<uint32_t>(ctx->short_of_memory ? -1 : result);
    else if (result == 0 && ctx->short_of_memory)
        return report(ctx, kNoMemory, site.file, site.line, "%s", kNoMemoryText);
    else return result;
}

/// Runs a worker: trace, one transaction, record dumps before and (on success) after, trace.
template <auto Worker, class... Args>
uint32_t run_framed(Site site, qbdb_t *qbdb, sqlite3 *db, ErrorInfo *err, Args... args)
{
    const time_t called = time(nullptr);
    if (!err) assertion_failed("err", site.file, site.line, site.operation);
    *err = {};
    CallContext ctx{qbdb, err};
    if (qbdb->log_level > 3) qbdb_log(qbdb, site.file, site.line, 4, 0, ">>>> %s()\n", site.operation);
    const time_t begun = time(nullptr);

    uint32_t rc = begin(site, qbdb, db);
    if (rc == 0) {
        if (site.access == Access::changes) tell_journal(qbdb, db, site.operation, args...);
        if (qbdb->log_level > 4) (dump_argument(site, qbdb, args), ...);
        rc = run_worker<Worker>(site, &ctx, db, args...);
        if (rc == 0 && qbdb->log_level > 4) (dump_argument(site, qbdb, args), ...);
    }
    // The result is not looked at: the operation's own code is what the caller acts on.
    if (rc) qbdb_sql_rollback(qbdb, db, 0, site.file, site.line);
    else qbdb_sql_commit(qbdb, db, 0, site.file, site.line);

    // Both clocks were read before the transaction began. The trace shows how long the entry trace
    // blocked; it is not a measurement of the worker.
    if (qbdb->log_level > 3)
        qbdb_log(qbdb, site.file, site.line, 4, 0, "<<<< %s() ==> rc=%d (%llums)\n", site.operation,
                 static_cast<int>(rc), static_cast<unsigned long long>(begun - called));
    return rc;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
