#include "frame/report.h"

#include <apr_pools.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace qb {

uint32_t set_error(CallContext *ctx, uint32_t code, const char *file, uint32_t line, const char *format,
                   va_list args)
{
    if (ctx->short_of_memory && code != kNoMemory && code != kStatementFailed) {
        *ctx->err = {kNoMemory, file, line, kNoMemoryText};
        return kNoMemory;
    }
    // Not the pool's own formatter: it knows fewer conversions than the compiler lets through (%llu, %zu).
    va_list again;
    va_copy(again, args);
    const int length = vsnprintf(nullptr, 0, format, args);
    char *message = length < 0 ? nullptr : static_cast<char *>(apr_palloc(pool_of(ctx->qbdb), length + size_t{1}));
    if (message) vsnprintf(message, length + size_t{1}, format, again);
    va_end(again);
    // Without memory for the particulars the bare format still says what went wrong.
    *ctx->err = {code, file, line, message ? message : format};
    return code;
}

uint32_t report(CallContext *ctx, uint32_t code, const char *file, uint32_t line, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    code = set_error(ctx, code, file, line, format, args);
    va_end(args);
    if (ctx->qbdb->log_level > 1) qbdb_log(ctx->qbdb, file, line, 2, 1, "%s", ctx->err->message);
    return code;
}

void assertion_failed(const char *text, const char *file, uint32_t line, const char *function)
{
    fprintf(stderr, "%s:%u: %s: Assertion `%s' failed.\n", file, line, function, text);
    abort();
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
