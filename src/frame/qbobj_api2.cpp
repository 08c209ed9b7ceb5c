// The exported operations: each runs its worker in the frame, and nothing else stands here.
#include "frame/frame.h"
#include "qbobj.h"
#include "system/log.h"
#include "system/network.h"

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

// ---- Network interfaces

uint32_t qbobj_getNetworkInterfaceCollection(qbdb_t *qbdb, sqlite3 *db, NetworkInterfaceCollection *interfaces,
                                             ErrorInfo *err)
{
    return framed<x_qbobj_getNetworkInterfaceCollection>("qbobj_getNetworkInterfaceCollection", qbdb, db, err,
                                                         interfaces);
}

uint32_t qbobj_getNetworkInterface(qbdb_t *qbdb, sqlite3 *db, NetworkInterface *nif, ErrorInfo *err)
{
    return framed<x_qbobj_getNetworkInterface>("qbobj_getNetworkInterface", qbdb, db, err, nif);
}

uint32_t qbobj_addNetworkInterface(qbdb_t *qbdb, sqlite3 *db, NetworkInterface *nif, ErrorInfo *err)
{
    return framed<x_qbobj_addNetworkInterface>("qbobj_addNetworkInterface", qbdb, db, err, nif);
}

uint32_t qbobj_deleteNetworkInterface(qbdb_t *qbdb, sqlite3 *db, const char *name, ErrorInfo *err)
{
    return framed<x_qbobj_deleteNetworkInterface>("qbobj_deleteNetworkInterface", qbdb, db, err, name);
}

uint32_t qbobj_modifyNetworkInterface(qbdb_t *qbdb, sqlite3 *db, NetworkInterface *nif, ErrorInfo *err)
{
    return framed<x_qbobj_modifyNetworkInterface>("qbobj_modifyNetworkInterface", qbdb, db, err, nif);
}
