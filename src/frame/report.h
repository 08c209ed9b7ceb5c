// The worker's context, error reports, traces and assertions.
#pragma once

#include <cstdarg>
#include <cstdint>

#include "qbdb.h"
#include "qbobj/types.h"

namespace qb {

class Together;

/// First argument of every worker: through it any function deep inside can report an error.
struct CallContext {
    qbdb_t *qbdb;
    ErrorInfo *err;
    /// Set when an allocation failed. From then on nothing the call computed is stored, returned or blamed on an
    /// argument.
    bool short_of_memory = false;
    /// While a list is read: answers what is asked of its records.
    Together *together = nullptr;
};

inline constexpr uint32_t kNoMemory = 2;
inline constexpr uint32_t kStatementFailed = 5;
inline constexpr char kNoMemoryText[] = "Failed to allocate resource.";

constexpr const char *no_memory_text(const char *words = kNoMemoryText)
{
    return words;
}

/// The pool of a call: the request pool when one is open, else the default pool.
inline apr_pool_t *pool_of(const qbdb_t *qbdb)
{
    return qbdb->request_pool ? qbdb->request_pool : qbdb->pool;
}

/// Fills the error record, logs the message at level 2 with flag 1, returns the code.
uint32_t report(CallContext *ctx, uint32_t code, const char *file, uint32_t line, const char *format, ...)
    __attribute__((format(printf, 5, 6)));

/// Fills the error record without logging and returns the code. A claim that a call short of memory makes becomes
/// that lack; a failed statement stays one.
uint32_t set_error(CallContext *ctx, uint32_t code, const char *file, uint32_t line, const char *format,
                   va_list args) __attribute__((format(printf, 5, 0)));

/// Aborts with file, line and function, in release builds too.
[[noreturn]] void assertion_failed(const char *text, const char *file, uint32_t line, const char *function);

}  // namespace qb

/// Reports an error: return REPORT(ctx, 8, "Invalid GroupName (%s)", name);
#define REPORT(ctx, code, ...) ::qb::report((ctx), (code), __FILE_NAME__, __LINE__, __VA_ARGS__)

/// Logs a failure at level 2 that is not (or not in these words) the caller's error.
#define LOG_FAILURE(ctx, ...)                                                                       \
    do {                                                                                            \
        if ((ctx)->qbdb->log_level > 1)                                                             \
            qbdb_log((ctx)->qbdb, __FILE_NAME__, __LINE__, 2, 0, __VA_ARGS__);                      \
    } while (0)

/// Logs worker detail at level 5.
#define TRACE(ctx, ...)                                                                             \
    do {                                                                                            \
        if ((ctx)->qbdb->log_level > 4)                                                             \
            qbdb_log((ctx)->qbdb, __FILE_NAME__, __LINE__, 5, 0, __VA_ARGS__);                      \
    } while (0)

/// Passes a non-zero code on as it is.
#define TRY(expression)                                                                             \
    do {                                                                                            \
        if (const uint32_t try_code = (expression)) return try_code;                                \
    } while (0)

/// Ends a worker for which an allocation failed: stands after an append and before outputs are written. Some
/// operations have words of their own for it: TRY_MEMORY(ctx, "Failed to allocate Host.");
#define TRY_MEMORY(ctx, ...)                                                                        \
    do {                                                                                            \
        if ((ctx)->short_of_memory)                                                                 \
            return REPORT((ctx), ::qb::kNoMemory, "%s", ::qb::no_memory_text(__VA_ARGS__));         \
    } while (0)

/// A programming error of the caller ends the process.
#define QB_ASSERT_AS(condition, text)                                                               \
    do {                                                                                            \
        if (!(condition)) ::qb::assertion_failed(text, __FILE_NAME__, __LINE__, __func__);          \
    } while (0)
#define QB_ASSERT(condition) QB_ASSERT_AS(condition, #condition)
// SPDX-License-Identifier: Apache-2.0
