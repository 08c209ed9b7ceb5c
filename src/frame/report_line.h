// Error reports whose log line is the operation's own, not the copy that marks an error told to the caller.
#pragma once

#include "frame/report.h"

namespace qb {

/// Fills the error record, logs the message with a line feed at level 2 with flag 0, returns the code.
uint32_t report_line(CallContext *ctx, uint32_t code, const char *file, uint32_t line, const char *format, ...)
    __attribute__((format(printf, 5, 6)));

}  // namespace qb

/// return REPORT_LINE(ctx, 5, "Failed to update user shell. uid: %d", id);
#define REPORT_LINE(ctx, code, ...) ::qb::report_line((ctx), (code), __FILE_NAME__, __LINE__, __VA_ARGS__)
// SPDX-License-Identifier: Apache-2.0
