#include "accounts/report_line.h"

#include <apr_strings.h>

#include <cstdarg>

namespace qb {

uint32_t report_line(const CallContext *ctx, uint32_t code, const char *file, uint32_t line, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    const char *message = apr_pvsprintf(pool_of(ctx->qbdb), format, args);
    va_end(args);
    // Without memory for the particulars the bare format still says what went wrong.
    *ctx->err = {code, file, line, message ? message : format};
    if (ctx->qbdb->log_level > 1) qbdb_log(ctx->qbdb, file, line, 2, 0, "%s\n", ctx->err->message);
    return code;
}

}  // namespace qb
