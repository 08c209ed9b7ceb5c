#include "frame/report_line.h"

#include <cstdarg>

namespace qb {

uint32_t report_line(CallContext *ctx, uint32_t code, const char *file, uint32_t line, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    code = set_error(ctx, code, file, line, format, args);
    va_end(args);
    if (ctx->qbdb->log_level > 1) qbdb_log(ctx->qbdb, file, line, 2, 0, "%s\n", ctx->err->message);
    return code;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
