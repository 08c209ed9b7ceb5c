// The exported operations: each runs its worker in the frame, and nothing else stands here.
#include "frame/frame.h"
#include "qbobj.h"
#include "system/log.h"

using namespace qb;

// ---- System log

uint32_t qbobj_getLog(qbdb_t *qbdb, sqlite3 *db, LogQuery *query, LogEntry **entries, int32_t *count, int32_t *total,
                      ErrorInfo *err)
{
    return framed<x_qbobj_getLog>("qbobj_getLog", qbdb, db, err, query, entries, count, total);
}

uint32_t qbobj_deleteLog(qbdb_t *qbdb, sqlite3 *db, LogQuery *query, ErrorInfo *err)
{
    return framed<x_qbobj_deleteLog>("qbobj_deleteLog", qbdb, db, err, query);
}

uint32_t qbobj_truncateLog(qbdb_t *qbdb, sqlite3 *db, int32_t keep, ErrorInfo *err)
{
    return framed<x_qbobj_truncateLog>("qbobj_truncateLog", qbdb, db, err, keep);
}

uint32_t qbobj_addLog(qbdb_t *qbdb, sqlite3 *db, int32_t time, const char *severity, const char *category,
                      const char *msgTag, const char *argsXml, ErrorInfo *err)
{
    return framed<x_qbobj_addLog>("qbobj_addLog", qbdb, db, err, time, severity, category, msgTag, argsXml);
}
