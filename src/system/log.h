// The system log: workers.
#pragma once

#include "frame/report.h"
#include "qbobj/system.h"

namespace qb {

uint32_t x_qbobj_getLog(CallContext *ctx, sqlite3 *db, LogQuery *query, LogEntry **entries, int32_t *count,
                        int32_t *total);
uint32_t x_qbobj_deleteLog(CallContext *ctx, sqlite3 *db, LogQuery *query);
uint32_t x_qbobj_truncateLog(CallContext *ctx, sqlite3 *db, int32_t keep);
uint32_t x_qbobj_addLog(CallContext *ctx, sqlite3 *db, int32_t time, const char *severity, const char *category,
                        const char *msgTag, const char *argsXml);

}  // namespace qb
