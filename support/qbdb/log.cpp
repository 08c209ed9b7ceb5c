// The log: formats a line and hands it to the sink.
#include <cstdio>
#include <cstdlib>

#include "handle.h"

void qbdb_log(qbdb_t *qbdb, const char *file, uint32_t line, uint32_t level, uint32_t flag, const char *format, ...)
{
    char buffer[1024];
    char *text = buffer;
    va_list args;
    va_list again;
    va_start(args, format);
    va_copy(again, args);
    const int size = vsnprintf(buffer, sizeof buffer, format, args);
    if (size < 0) buffer[0] = '\0';
    if (size >= static_cast<int>(sizeof buffer)) {
        // A line is cut rather than lost when there is no memory for the whole of it.
        if (auto *whole = static_cast<char *>(malloc(static_cast<size_t>(size) + 1))) {
            vsnprintf(whole, static_cast<size_t>(size) + 1, format, again);
            text = whole;
        }
    }
    va_end(again);
    va_end(args);
    const qbdb_private *internal = qbdb->internal;
    if (internal->log_hook) {
        internal->log_hook(internal->log_context, file, line, level, flag, text);
    } else {
        const bool ended = *text && text[__builtin_strlen(text) - 1] == '\n';
        fprintf(stderr, "%s:%u <%u> %s%s", file, line, level, text, ended ? "" : "\n");
    }
    if (text != buffer) free(text);
}
// SPDX-License-Identifier: Apache-2.0
