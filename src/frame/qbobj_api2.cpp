// The exported operations: each runs its worker in the frame, and nothing else stands here.
#include "accounts/passwords.h"
#include "accounts/ssh_keys.h"
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

// ---- Passwords, account defaults, directory security

uint32_t qbobj_getAdminPassword(qbdb_t *qbdb, sqlite3 *db, AdminPassword *admin, ErrorInfo *err)
{
    return framed<x_qbobj_getAdminPassword>("qbobj_getAdminPassword", qbdb, db, err, admin);
}

uint32_t qbobj_setAdminPassword(qbdb_t *qbdb, sqlite3 *db, AdminPassword *admin, ErrorInfo *err)
{
    return framed<x_qbobj_setAdminPassword>("qbobj_setAdminPassword", qbdb, db, err, admin);
}

uint32_t qbobj_setUserPassword(qbdb_t *qbdb, sqlite3 *db, UserPassword *pw, ErrorInfo *err)
{
    return framed<x_qbobj_setUserPassword>("qbobj_setUserPassword", qbdb, db, err, pw);
}

uint32_t qbobj_setMyPassword(qbdb_t *qbdb, sqlite3 *db, MyPassword *pw, ErrorInfo *err)
{
    return framed<x_qbobj_setMyPassword>("qbobj_setMyPassword", qbdb, db, err, pw);
}

uint32_t qbobj_getAccountDefault(qbdb_t *qbdb, sqlite3 *db, AccountDefault *def, ErrorInfo *err)
{
    return framed<x_qbobj_getAccountDefault>("qbobj_getAccountDefault", qbdb, db, err, def);
}

uint32_t qbobj_setAccountDefault(qbdb_t *qbdb, sqlite3 *db, AccountDefault *def, ErrorInfo *err)
{
    return framed<x_qbobj_setAccountDefault>("qbobj_setAccountDefault", qbdb, db, err, def);
}

uint32_t qbobj_getSecurity(qbdb_t *qbdb, sqlite3 *db, Security *security, ErrorInfo *err)
{
    return framed<x_qbobj_getSecurity>("qbobj_getSecurity", qbdb, db, err, security);
}

uint32_t qbobj_setSecurity(qbdb_t *qbdb, sqlite3 *db, Security *security, ErrorInfo *err)
{
    return framed<x_qbobj_setSecurity>("qbobj_setSecurity", qbdb, db, err, security);
}

uint32_t qbobj_setSecurityIdmapBackend(qbdb_t *qbdb, sqlite3 *db, const char *backend, ErrorInfo *err)
{
    return framed<x_qbobj_setSecurityIdmapBackend>("qbobj_setSecurityIdmapBackend", qbdb, db, err, backend);
}

uint32_t qbobj_getSecurityAdsProgress(qbdb_t *qbdb, sqlite3 *db, SecurityAdsProgress *progress, ErrorInfo *err)
{
    return framed<x_qbobj_getSecurityAdsProgress>("qbobj_getSecurityAdsProgress", qbdb, db, err, progress);
}

// ---- SSH public keys

uint32_t qbobj_addSshPublicKey(qbdb_t *qbdb, sqlite3 *db, SshPublicKey *key, ErrorInfo *err)
{
    return framed<x_qbobj_addSshPublicKey>("qbobj_addSshPublicKey", qbdb, db, err, key);
}

uint32_t qbobj_deleteSshPublicKey(qbdb_t *qbdb, sqlite3 *db, SshPublicKey *key, ErrorInfo *err)
{
    return framed<x_qbobj_deleteSshPublicKey>("qbobj_deleteSshPublicKey", qbdb, db, err, key);
}

uint32_t qbobj_setSshPublicKeyById(qbdb_t *qbdb, sqlite3 *db, SshPublicKey *key, ErrorInfo *err)
{
    return framed<x_qbobj_setSshPublicKeyById>("qbobj_setSshPublicKeyById", qbdb, db, err, key);
}

uint32_t qbobj_getSshPublicKeyById(qbdb_t *qbdb, sqlite3 *db, int32_t id, SshPublicKey *key, ErrorInfo *err)
{
    return framed<x_qbobj_getSshPublicKeyById>("qbobj_getSshPublicKeyById", qbdb, db, err, id, key);
}

uint32_t qbobj_getSshPublicKeyTiedRootKeyById(qbdb_t *qbdb, sqlite3 *db, int32_t id, SshPublicKey *key,
                                              ErrorInfo *err)
{
    return framed<x_qbobj_getSshPublicKeyTiedRootKeyById>("qbobj_getSshPublicKeyTiedRootKeyById", qbdb, db, err, id,
                                                           key);
}

uint32_t qbobj_getSshPublicKeyCollection(qbdb_t *qbdb, sqlite3 *db, SshPublicKeyCollection *keys, ErrorInfo *err)
{
    return framed<x_qbobj_getSshPublicKeyCollection>("qbobj_getSshPublicKeyCollection", qbdb, db, err, keys);
}
