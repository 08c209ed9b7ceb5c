// The exported operations: each runs its worker in the frame, and nothing else stands here.
#include "accounts/workers.h"
#include "api/framed.h"
#include "backup/backup.h"
#include "qbobj.h"
#include "services/services.h"
#include "shares/shares.h"
#include "storage/health.h"
#include "storage/iscsi.h"
#include "storage/snapshots.h"
#include "storage/volumes.h"
#include "system/workers.h"

using namespace qb;
using api::framed;

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

// ---- Users, reading

uint32_t qbobj_getUserCollection(qbdb_t *qbdb, sqlite3 *db, UserCollection *users, AccountQuery *query,
                                 int32_t with_password, ErrorInfo *err)
{
    return framed<x_qbobj_getUserCollection>("qbobj_getUserCollection", qbdb, db, err, users, query, with_password);
}

uint32_t qbobj_getUser(qbdb_t *qbdb, sqlite3 *db, User *user, ErrorInfo *err)
{
    return framed<x_qbobj_getUser>("qbobj_getUser", qbdb, db, err, user);
}

uint32_t qbobj_getSystemUser(qbdb_t *qbdb, sqlite3 *db, SystemUser *user, ErrorInfo *err)
{
    return framed<x_qbobj_getSystemUser>("qbobj_getSystemUser", qbdb, db, err, user);
}

uint32_t qbobj_getCloudUser(qbdb_t *qbdb, sqlite3 *db, UserCollection *users, ErrorInfo *err)
{
    return framed<x_qbobj_getCloudUser>("qbobj_getCloudUser", qbdb, db, err, users);
}

uint32_t qbobj_getUserInGroupName(qbdb_t *qbdb, sqlite3 *db, const char *groupName, int32_t primary_only,
                                  UserCollection *users, ErrorInfo *err)
{
    return framed<x_qbobj_getUserInGroupName>("qbobj_getUserInGroupName", qbdb, db, err, groupName, primary_only,
                                              users);
}

uint32_t qbobj_getUID(qbdb_t *qbdb, sqlite3 *db, const char *name, int32_t *id, ErrorInfo *err)
{
    return framed<x_qbobj_getUID>("qbobj_getUID", qbdb, db, err, name, id);
}

uint32_t qbobj_getUserName(qbdb_t *qbdb, sqlite3 *db, int32_t id, const char **name, ErrorInfo *err)
{
    return framed<x_qbobj_getUserName>("qbobj_getUserName", qbdb, db, err, id, name);
}

uint32_t qbobj_getPosixUID(qbdb_t *qbdb, sqlite3 *db, const char *name, ErrorInfo *err)
{
    return framed<x_qbobj_getPosixUID>("qbobj_getPosixUID", qbdb, db, err, name);
}

uint32_t qbobj_getPosixUIDbyUID(qbdb_t *qbdb, sqlite3 *db, int32_t id, ErrorInfo *err)
{
    return framed<x_qbobj_getPosixUIDbyUID>("qbobj_getPosixUIDbyUID", qbdb, db, err, id);
}

uint32_t qbobj_getPosixUIDGID(qbdb_t *qbdb, sqlite3 *db, const char *name, int32_t *uid, int32_t *gid, ErrorInfo *err)
{
    return framed<x_qbobj_getPosixUIDGID>("qbobj_getPosixUIDGID", qbdb, db, err, name, uid, gid);
}

uint32_t qbobj_getUserHomeFolderTotalConsumedInByte(qbdb_t *qbdb, sqlite3 *db, uint64_t *bytes, ErrorInfo *err)
{
    return framed<x_qbobj_getUserHomeFolderTotalConsumedInByte>("qbobj_getUserHomeFolderTotalConsumedInByte", qbdb, db,
                                                                err, bytes);
}

// ---- Groups

uint32_t qbobj_getGID(qbdb_t *qbdb, sqlite3 *db, const char *name, int32_t *id, ErrorInfo *err)
{
    return framed<x_qbobj_getGID>("qbobj_getGID", qbdb, db, err, name, id);
}

uint32_t qbobj_getGroupName(qbdb_t *qbdb, sqlite3 *db, int32_t id, const char **name, ErrorInfo *err)
{
    return framed<x_qbobj_getGroupName>("qbobj_getGroupName", qbdb, db, err, id, name);
}

uint32_t qbobj_getPrimaryGID(qbdb_t *qbdb, sqlite3 *db, const char *userName, int32_t *id, ErrorInfo *err)
{
    return framed<x_qbobj_getPrimaryGID>("qbobj_getPrimaryGID", qbdb, db, err, userName, id);
}

uint32_t qbobj_getPosixGID(qbdb_t *qbdb, sqlite3 *db, const char *name, ErrorInfo *err)
{
    return framed<x_qbobj_getPosixGID>("qbobj_getPosixGID", qbdb, db, err, name);
}

uint32_t qbobj_getPosixGIDbyGID(qbdb_t *qbdb, sqlite3 *db, int32_t id, ErrorInfo *err)
{
    return framed<x_qbobj_getPosixGIDbyGID>("qbobj_getPosixGIDbyGID", qbdb, db, err, id);
}

uint32_t qbobj_isMemberOfGroup(qbdb_t *qbdb, sqlite3 *db, const char *userName, const char *groupName, ErrorInfo *err)
{
    return framed<x_qbobj_isMemberOfGroup>("qbobj_isMemberOfGroup", qbdb, db, err, userName, groupName);
}

uint32_t qbobj_getGroupCollection(qbdb_t *qbdb, sqlite3 *db, GroupCollection *groups, AccountQuery *query,
                                  ErrorInfo *err)
{
    return framed<x_qbobj_getGroupCollection>("qbobj_getGroupCollection", qbdb, db, err, groups, query);
}

uint32_t qbobj_getGroup(qbdb_t *qbdb, sqlite3 *db, Group *group, ErrorInfo *err)
{
    return framed<x_qbobj_getGroup>("qbobj_getGroup", qbdb, db, err, group);
}

uint32_t qbobj_getSystemGroup(qbdb_t *qbdb, sqlite3 *db, SystemGroup *group, ErrorInfo *err)
{
    return framed<x_qbobj_getSystemGroup>("qbobj_getSystemGroup", qbdb, db, err, group);
}

uint32_t qbobj_addGroup(qbdb_t *qbdb, sqlite3 *db, Group *group, ErrorInfo *err)
{
    return framed<x_qbobj_addGroup>("qbobj_addGroup", qbdb, db, err, group);
}

uint32_t qbobj_deleteGroup(qbdb_t *qbdb, sqlite3 *db, Group *group, ErrorInfo *err)
{
    return framed<x_qbobj_deleteGroup>("qbobj_deleteGroup", qbdb, db, err, group);
}

uint32_t qbobj_modifyGroup(qbdb_t *qbdb, sqlite3 *db, Group *group, ErrorInfo *err)
{
    return framed<x_qbobj_modifyGroup>("qbobj_modifyGroup", qbdb, db, err, group);
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

uint32_t qbobj_getSshPublicKeyTiedRootKeyById(qbdb_t *qbdb, sqlite3 *db, int32_t id, SshPublicKey *key, ErrorInfo *err)
{
    return framed<x_qbobj_getSshPublicKeyTiedRootKeyById>("qbobj_getSshPublicKeyTiedRootKeyById", qbdb, db, err, id,
                                                          key);
}

uint32_t qbobj_getSshPublicKeyCollection(qbdb_t *qbdb, sqlite3 *db, SshPublicKeyCollection *keys, ErrorInfo *err)
{
    return framed<x_qbobj_getSshPublicKeyCollection>("qbobj_getSshPublicKeyCollection", qbdb, db, err, keys);
}

// ---- Users, creating

uint32_t qbobj_addUser(qbdb_t *qbdb, sqlite3 *db, User *user, ErrorInfo *err)
{
    return framed<x_qbobj_addUser>("qbobj_addUser", qbdb, db, err, user);
}

uint32_t qbobj_addUserList(qbdb_t *qbdb, sqlite3 *db, User *user, ErrorInfo *err)
{
    return framed<x_qbobj_addUserList>("qbobj_addUserList", qbdb, db, err, user);
}

uint32_t qbobj_checkUserList(qbdb_t *qbdb, sqlite3 *db, UserCollection *users, GroupCollection *groups,
                             UserCollection *existingUsers, GroupCollection *existingGroups, ErrorInfo *err)
{
    return framed<x_qbobj_checkUserList>("qbobj_checkUserList", qbdb, db, err, users, groups, existingUsers,
                                         existingGroups);
}

// ---- Users, changing and removing

uint32_t qbobj_modifyUser(qbdb_t *qbdb, sqlite3 *db, User *user, ErrorInfo *err)
{
    return framed<x_qbobj_modifyUser>("qbobj_modifyUser", qbdb, db, err, user);
}

uint32_t qbobj_setPrimaryGroupByName(qbdb_t *qbdb, sqlite3 *db, const char *userName, const char *groupName,
                                     ErrorInfo *err)
{
    return framed<x_qbobj_setPrimaryGroupByName>("qbobj_setPrimaryGroupByName", qbdb, db, err, userName, groupName);
}

uint32_t qbobj_disableEnableLocalUserByName(qbdb_t *qbdb, sqlite3 *db, int32_t enable, const char *userName,
                                            ErrorInfo *err)
{
    return framed<x_qbobj_disableEnableLocalUserByName>("qbobj_disableEnableLocalUserByName", qbdb, db, err, enable,
                                                        userName);
}

uint32_t qbobj_modifyUserVisibleSnapFolder(qbdb_t *qbdb, sqlite3 *db, int32_t userId, const char *folder,
                                           ErrorInfo *err)
{
    return framed<x_qbobj_modifyUserVisibleSnapFolder>("qbobj_modifyUserVisibleSnapFolder", qbdb, db, err, userId,
                                                       folder);
}

uint32_t qbobj_deleteUser(qbdb_t *qbdb, sqlite3 *db, User *user, ErrorInfo *err)
{
    return framed<x_qbobj_deleteUser>("qbobj_deleteUser", qbdb, db, err, user);
}

uint32_t qbobj_deleteUserByName(qbdb_t *qbdb, sqlite3 *db, User *user, ErrorInfo *err)
{
    return framed<x_qbobj_deleteUserByName>("qbobj_deleteUserByName", qbdb, db, err, user);
}

// ---- SMB user-name map

uint32_t qbobj_getSmbUserNameMapCollection(qbdb_t *qbdb, sqlite3 *db, SmbUserNameMapCollection *maps, ErrorInfo *err)
{
    return framed<x_qbobj_getSmbUserNameMapCollection>("qbobj_getSmbUserNameMapCollection", qbdb, db, err, maps);
}

uint32_t qbobj_getSmbUserNameMapCount(qbdb_t *qbdb, sqlite3 *db, const char *unixUserName, const char *type,
                                      ErrorInfo *err)
{
    return framed<x_qbobj_getSmbUserNameMapCount>("qbobj_getSmbUserNameMapCount", qbdb, db, err, unixUserName, type);
}

uint32_t qbobj_addSmbUserNameMap(qbdb_t *qbdb, sqlite3 *db, SmbUserNameMap *map, ErrorInfo *err)
{
    return framed<x_qbobj_addSmbUserNameMap>("qbobj_addSmbUserNameMap", qbdb, db, err, map);
}

uint32_t qbobj_deleteSmbUserNameMap(qbdb_t *qbdb, sqlite3 *db, const char *unixUserName, ErrorInfo *err)
{
    return framed<x_qbobj_deleteSmbUserNameMap>("qbobj_deleteSmbUserNameMap", qbdb, db, err, unixUserName);
}

uint32_t qbobj_setSmbUserNameMapUnixUserNameForAll(qbdb_t *qbdb, sqlite3 *db, const char *oldUnixName,
                                                   const char *newUnixName, ErrorInfo *err)
{
    return framed<x_qbobj_setSmbUserNameMapUnixUserNameForAll>("qbobj_setSmbUserNameMapUnixUserNameForAll", qbdb, db,
                                                               err, oldUnixName, newUnixName);
}

uint32_t qbobj_setSmbUserNameMapSmbUserName(qbdb_t *qbdb, sqlite3 *db, SmbUserNameMap *map, ErrorInfo *err)
{
    return framed<x_qbobj_setSmbUserNameMapSmbUserName>("qbobj_setSmbUserNameMapSmbUserName", qbdb, db, err, map);
}

// ---- Shares, reading

uint32_t qbobj_getShareCollection(qbdb_t *qbdb, sqlite3 *db, ShareCollection *shares, ErrorInfo *err)
{
    return framed<x_qbobj_getShareCollection>("qbobj_getShareCollection", qbdb, db, err, shares);
}

uint32_t qbobj_getShareAndZvolCollection(qbdb_t *qbdb, sqlite3 *db, ShareCollection *shares, ErrorInfo *err)
{
    return framed<x_qbobj_getShareAndZvolCollection>("qbobj_getShareAndZvolCollection", qbdb, db, err, shares);
}

uint32_t qbobj_getSubvolumeShareCollection(qbdb_t *qbdb, sqlite3 *db, ShareCollection *shares, ErrorInfo *err)
{
    return framed<x_qbobj_getSubvolumeShareCollection>("qbobj_getSubvolumeShareCollection", qbdb, db, err, shares);
}

uint32_t qbobj_getSimpleShareCollection(qbdb_t *qbdb, sqlite3 *db, SimpleShareCollection *shares, ErrorInfo *err)
{
    return framed<x_qbobj_getSimpleShareCollection>("qbobj_getSimpleShareCollection", qbdb, db, err, shares);
}

uint32_t qbobj_getAccessibleShareCollection(qbdb_t *qbdb, sqlite3 *db, const char *userName, const char *protocolName,
                                            ShareCollection *shares, ErrorInfo *err)
{
    return framed<x_qbobj_getAccessibleShareCollection>("qbobj_getAccessibleShareCollection", qbdb, db, err, userName,
                                                        protocolName, shares);
}

uint32_t qbobj_getShare(qbdb_t *qbdb, sqlite3 *db, Share *share, ErrorInfo *err)
{
    return framed<x_qbobj_getShare>("qbobj_getShare", qbdb, db, err, share);
}

uint32_t qbobj_queryShare(qbdb_t *qbdb, sqlite3 *db, const char *volumeId, const char *namePattern, const char *zfsName,
                          ShareCollection *shares, ErrorInfo *err)
{
    return framed<x_qbobj_queryShare>("qbobj_queryShare", qbdb, db, err, volumeId, namePattern, zfsName, shares);
}

uint32_t qbobj_getShareId(qbdb_t *qbdb, sqlite3 *db, const char *shareName, ErrorInfo *err)
{
    return framed<x_qbobj_getShareId>("qbobj_getShareId", qbdb, db, err, shareName);
}

uint32_t qbobj_getShareAccess(qbdb_t *qbdb, sqlite3 *db, const char *shareName, const char *userName,
                              const char **access, ErrorInfo *err)
{
    return framed<x_qbobj_getShareAccess>("qbobj_getShareAccess", qbdb, db, err, shareName, userName, access);
}

uint32_t qbobj_getPathAccess(qbdb_t *qbdb, sqlite3 *db, const char *path, const char *userName, const char **access,
                             ErrorInfo *err)
{
    return framed<x_qbobj_getPathAccess>("qbobj_getPathAccess", qbdb, db, err, path, userName, access);
}

uint32_t qbobj_getUsedByOn(qbdb_t *qbdb, sqlite3 *db, const char *name, UsedBy **usedby, ErrorInfo *err)
{
    return framed<x_qbobj_getUsedByOn>("qbobj_getUsedByOn", qbdb, db, err, name, usedby);
}

uint32_t qbobj_getShareSnapshotSchedule(qbdb_t *qbdb, sqlite3 *db, const char *shareName, Schedule *schedule,
                                        ErrorInfo *err)
{
    return framed<x_qbobj_getShareSnapshotSchedule>("qbobj_getShareSnapshotSchedule", qbdb, db, err, shareName,
                                                    schedule);
}

uint32_t qbobj_getShareProcess(qbdb_t *qbdb, sqlite3 *db, const char *zfsName, Process **procs, ErrorInfo *err)
{
    return framed<x_qbobj_getShareProcess>("qbobj_getShareProcess", qbdb, db, err, zfsName, procs);
}

// ---- Shares, creating

uint32_t qbobj_addShare(qbdb_t *qbdb, sqlite3 *db, Share *share, ErrorInfo *err)
{
    return framed<x_qbobj_addShare>("qbobj_addShare", qbdb, db, err, share);
}

uint32_t qbobj_addShareProcess(qbdb_t *qbdb, sqlite3 *db, const char *zfsName, int32_t pid, int32_t blocking,
                               ErrorInfo *err)
{
    return framed<x_qbobj_addShareProcess>("qbobj_addShareProcess", qbdb, db, err, zfsName, pid, blocking);
}

uint32_t qbobj_addShareUsedBy(qbdb_t *qbdb, sqlite3 *db, const char *zfsName, UsedBy *usedby, ErrorInfo *err)
{
    return framed<x_qbobj_addShareUsedBy>("qbobj_addShareUsedBy", qbdb, db, err, zfsName, usedby);
}

// ---- Shares, changing

uint32_t qbobj_modifyShare(qbdb_t *qbdb, sqlite3 *db, Share *share, ErrorInfo *err)
{
    return framed<x_qbobj_modifyShare>("qbobj_modifyShare", qbdb, db, err, share);
}

uint32_t qbobj_modifyShareVisibleSnapFolder(qbdb_t *qbdb, sqlite3 *db, const char *zfsName, const char *folder,
                                            ErrorInfo *err)
{
    return framed<x_qbobj_modifyShareVisibleSnapFolder>("qbobj_modifyShareVisibleSnapFolder", qbdb, db, err, zfsName,
                                                        folder);
}

uint32_t qbobj_modifyShareUsedBy(qbdb_t *qbdb, sqlite3 *db, const char *shareId, UsedBy *usedby, ErrorInfo *err)
{
    return framed<x_qbobj_modifyShareUsedBy>("qbobj_modifyShareUsedBy", qbdb, db, err, shareId, usedby);
}

uint32_t qbobj_modifyShareUsedByExclusive(qbdb_t *qbdb, sqlite3 *db, const char *zfsName, UsedBy *usedby,
                                          ErrorInfo *err)
{
    return framed<x_qbobj_modifyShareUsedByExclusive>("qbobj_modifyShareUsedByExclusive", qbdb, db, err, zfsName,
                                                      usedby);
}

uint32_t qbobj_modifyZvol(qbdb_t *qbdb, sqlite3 *db, const char *zfsName, const char *shareName, const char *comment,
                          uint64_t sizeKB, int32_t isSparse, ErrorInfo *err)
{
    return framed<x_qbobj_modifyZvol>("qbobj_modifyZvol", qbdb, db, err, zfsName, shareName, comment, sizeKB, isSparse);
}

uint32_t qbobj_modifyShareSnapshotSchedule(qbdb_t *qbdb, sqlite3 *db, const char *shareName, Schedule *schedule,
                                           ErrorInfo *err)
{
    return framed<x_qbobj_modifyShareSnapshotSchedule>("qbobj_modifyShareSnapshotSchedule", qbdb, db, err, shareName,
                                                       schedule);
}

// ---- Shares, deleting

uint32_t qbobj_deleteShare(qbdb_t *qbdb, sqlite3 *db, Share *share, ErrorInfo *err)
{
    return framed<x_qbobj_deleteShare>("qbobj_deleteShare", qbdb, db, err, share);
}

uint32_t qbobj_deleteZvol(qbdb_t *qbdb, sqlite3 *db, const char *zfsName, ErrorInfo *err)
{
    return framed<x_qbobj_deleteZvol>("qbobj_deleteZvol", qbdb, db, err, zfsName);
}

uint32_t qbobj_deleteShareOnVolume(qbdb_t *qbdb, sqlite3 *db, const char *volumeId, ErrorInfo *err)
{
    return framed<x_qbobj_deleteShareOnVolume>("qbobj_deleteShareOnVolume", qbdb, db, err, volumeId);
}

uint32_t qbobj_deleteShareProcess(qbdb_t *qbdb, sqlite3 *db, const char *zfsName, int32_t pid, ErrorInfo *err)
{
    return framed<x_qbobj_deleteShareProcess>("qbobj_deleteShareProcess", qbdb, db, err, zfsName, pid);
}

uint32_t qbobj_deleteShareUsedBy(qbdb_t *qbdb, sqlite3 *db, const char *zfsName, UsedBy *usedby, ErrorInfo *err)
{
    return framed<x_qbobj_deleteShareUsedBy>("qbobj_deleteShareUsedBy", qbdb, db, err, zfsName, usedby);
}

// ---- Shares, migrating and copying

uint32_t qbobj_preMigrateShare(qbdb_t *qbdb, sqlite3 *db, const char *zfsName, const char *destVolumeId, ErrorInfo *err)
{
    return framed<x_qbobj_preMigrateShare>("qbobj_preMigrateShare", qbdb, db, err, zfsName, destVolumeId);
}

uint32_t qbobj_postMigrateShare(qbdb_t *qbdb, sqlite3 *db, const char *zfsName, int32_t success, const char **newPath,
                                ErrorInfo *err)
{
    return framed<x_qbobj_postMigrateShare>("qbobj_postMigrateShare", qbdb, db, err, zfsName, success, newPath);
}

uint32_t qbobj_copyShare(qbdb_t *qbdb, sqlite3 *db, const char *volumeName, const char *shareName,
                         const char *newShareName, int32_t *newShareId, ErrorInfo *err)
{
    return framed<x_qbobj_copyShare>("qbobj_copyShare", qbdb, db, err, volumeName, shareName, newShareName, newShareId);
}

// ---- Protocol settings

uint32_t qbobj_getProtocolCollection(qbdb_t *qbdb, sqlite3 *db, ProtocolCollection *collection, ErrorInfo *err)
{
    return framed<x_qbobj_getProtocolCollection>("qbobj_getProtocolCollection", qbdb, db, err, collection);
}

uint32_t qbobj_getProtocol(qbdb_t *qbdb, sqlite3 *db, const char *name, ProtocolCollection *collection, ErrorInfo *err)
{
    return framed<x_qbobj_getProtocol>("qbobj_getProtocol", qbdb, db, err, name, collection);
}

uint32_t qbobj_getSnmpOptions(qbdb_t *qbdb, sqlite3 *db, SnmpOptions *options, ErrorInfo *err)
{
    return framed<x_qbobj_getSnmpOptions>("qbobj_getSnmpOptions", qbdb, db, err, options);
}

uint32_t qbobj_getHomeFolderOptions(qbdb_t *qbdb, sqlite3 *db, HomeFolderOptions *options, ErrorInfo *err)
{
    return framed<x_qbobj_getHomeFolderOptions>("qbobj_getHomeFolderOptions", qbdb, db, err, options);
}

uint32_t qbobj_setProtocolCollection(qbdb_t *qbdb, sqlite3 *db, ProtocolCollection *collection, ErrorInfo *err)
{
    return framed<x_qbobj_setProtocolCollection>("qbobj_setProtocolCollection", qbdb, db, err, collection);
}

uint32_t qbobj_setProtocolEnable(qbdb_t *qbdb, sqlite3 *db, const char *name, int32_t enabled, ErrorInfo *err)
{
    return framed<x_qbobj_setProtocolEnable>("qbobj_setProtocolEnable", qbdb, db, err, name, enabled);
}

uint32_t qbobj_setHomeFolderOptions(qbdb_t *qbdb, sqlite3 *db, HomeFolderOptions *options, ErrorInfo *err)
{
    return framed<x_qbobj_setHomeFolderOptions>("qbobj_setHomeFolderOptions", qbdb, db, err, options);
}

// ---- Time Machine, TiVo, Coffer

uint32_t qbobj_getTimemachine(qbdb_t *qbdb, sqlite3 *db, Timemachine *tm, ErrorInfo *err)
{
    return framed<x_qbobj_getTimemachine>("qbobj_getTimemachine", qbdb, db, err, tm);
}

uint32_t qbobj_setTimemachine(qbdb_t *qbdb, sqlite3 *db, Timemachine *tm, ErrorInfo *err)
{
    return framed<x_qbobj_setTimemachine>("qbobj_setTimemachine", qbdb, db, err, tm);
}

uint32_t qbobj_setTimemachineEnable(qbdb_t *qbdb, sqlite3 *db, int32_t enable, ErrorInfo *err)
{
    return framed<x_qbobj_setTimemachineEnable>("qbobj_setTimemachineEnable", qbdb, db, err, enable);
}

uint32_t qbobj_getTIVOSettings(qbdb_t *qbdb, sqlite3 *db, TivoOptions *tivo, ErrorInfo *err)
{
    return framed<x_qbobj_getTIVOSettings>("qbobj_getTIVOSettings", qbdb, db, err, tivo);
}

uint32_t qbobj_setTIVOSettings(qbdb_t *qbdb, sqlite3 *db, TivoOptions *tivo, ErrorInfo *err)
{
    return framed<x_qbobj_setTIVOSettings>("qbobj_setTIVOSettings", qbdb, db, err, tivo);
}

uint32_t qbobj_setTIVOMak(qbdb_t *qbdb, sqlite3 *db, TivoMak *mak, ErrorInfo *err)
{
    return framed<x_qbobj_setTIVOMak>("qbobj_setTIVOMak", qbdb, db, err, mak);
}

uint32_t qbobj_getCofferSettings(qbdb_t *qbdb, sqlite3 *db, Coffer *coffer, ErrorInfo *err)
{
    return framed<x_qbobj_getCofferSettings>("qbobj_getCofferSettings", qbdb, db, err, coffer);
}

uint32_t qbobj_setCofferSettings(qbdb_t *qbdb, sqlite3 *db, Coffer *coffer, ErrorInfo *err)
{
    return framed<x_qbobj_setCofferSettings>("qbobj_setCofferSettings", qbdb, db, err, coffer);
}

uint32_t qbobj_cleanCofferSettings(qbdb_t *qbdb, sqlite3 *db, ErrorInfo *err)
{
    return framed<x_qbobj_cleanCofferSettings>("qbobj_cleanCofferSettings", qbdb, db, err);
}

// ---- Dictionary and daemon record

uint32_t qbobj_getDictionary(qbdb_t *qbdb, sqlite3 *db, const char *languageWish, struct _xmlNode **dictionary,
                             ErrorInfo *err)
{
    return framed<x_qbobj_getDictionary>("qbobj_getDictionary", qbdb, db, err, languageWish, dictionary);
}

uint32_t qbobj_getTranslatedString(qbdb_t *qbdb, sqlite3 *db, const char *languageWish, const char *key,
                                   const char *defaultText, const char **text, ErrorInfo *err)
{
    return framed<x_qbobj_getTranslatedString>("qbobj_getTranslatedString", qbdb, db, err, languageWish, key,
                                               defaultText, text);
}

uint32_t qbobj_getQuillboxdInfo(qbdb_t *qbdb, sqlite3 *db, int32_t *started, int32_t *stopped, const char **version,
                                ErrorInfo *err)
{
    return framed<x_qbobj_getQuillboxdInfo>("qbobj_getQuillboxdInfo", qbdb, db, err, started, stopped, version);
}

uint32_t qbobj_setQuillboxdInfo(qbdb_t *qbdb, sqlite3 *db, int32_t started, int32_t stopped, const char *version,
                                ErrorInfo *err)
{
    return framed<x_qbobj_setQuillboxdInfo>("qbobj_setQuillboxdInfo", qbdb, db, err, started, stopped, version);
}

// ---- Volumes, disks, spares, jobs of volumes

uint32_t qbobj_getVolumeCollection(qbdb_t *qbdb, sqlite3 *db, VolumeCollection *volumes, ErrorInfo *err)
{
    return framed<x_qbobj_getVolumeCollection>("qbobj_getVolumeCollection", qbdb, db, err, volumes);
}

uint32_t qbobj_updateVolume(qbdb_t *qbdb, sqlite3 *db, Volume *volume, ErrorInfo *err)
{
    return framed<x_qbobj_updateVolume>("qbobj_updateVolume", qbdb, db, err, volume);
}

uint32_t qbobj_deleteVolume(qbdb_t *qbdb, sqlite3 *db, const char *volumeId, ErrorInfo *err)
{
    return framed<x_qbobj_deleteVolume>("qbobj_deleteVolume", qbdb, db, err, volumeId);
}

uint32_t qbobj_getDiskCollection(qbdb_t *qbdb, sqlite3 *db, DiskCollection *disks, ErrorInfo *err)
{
    return framed<x_qbobj_getDiskCollection>("qbobj_getDiskCollection", qbdb, db, err, disks);
}

uint32_t qbobj_getDiskCollectionForController(qbdb_t *qbdb, sqlite3 *db, DiskCollection *disks, int32_t controller,
                                              ErrorInfo *err)
{
    return framed<x_qbobj_getDiskCollectionForController>("qbobj_getDiskCollectionForController", qbdb, db, err, disks,
                                                          controller);
}

uint32_t qbobj_getDiskEnclosureCollection(qbdb_t *qbdb, sqlite3 *db, DiskEnclosureCollection *enclosures,
                                          ErrorInfo *err)
{
    return framed<x_qbobj_getDiskEnclosureCollection>("qbobj_getDiskEnclosureCollection", qbdb, db, err, enclosures);
}

uint32_t qbobj_getDiskEnclosurePort(qbdb_t *qbdb, sqlite3 *db, int32_t controller, const char **label, ErrorInfo *err)
{
    return framed<x_qbobj_getDiskEnclosurePort>("qbobj_getDiskEnclosurePort", qbdb, db, err, controller, label);
}

uint32_t qbobj_getDiskByDevname(qbdb_t *qbdb, sqlite3 *db, Disk *disk, ErrorInfo *err)
{
    return framed<x_qbobj_getDiskByDevname>("qbobj_getDiskByDevname", qbdb, db, err, disk);
}

uint32_t qbobj_setDiskSpare(qbdb_t *qbdb, sqlite3 *db, const char *devname, int32_t flag, ErrorInfo *err)
{
    return framed<x_qbobj_setDiskSpare>("qbobj_setDiskSpare", qbdb, db, err, devname, flag);
}

uint32_t qbobj_getDiskDiff(qbdb_t *qbdb, sqlite3 *db, DiskDiff **diff, ErrorInfo *err)
{
    return framed<x_qbobj_getDiskDiff>("qbobj_getDiskDiff", qbdb, db, err, diff);
}

uint32_t qbobj_getDiskByDiskDiff(qbdb_t *qbdb, sqlite3 *db, DiskDiff *diff, Disk *disk, ErrorInfo *err)
{
    return framed<x_qbobj_getDiskByDiskDiff>("qbobj_getDiskByDiskDiff", qbdb, db, err, diff, disk);
}

uint32_t qbobj_deleteDiskByDevname(qbdb_t *qbdb, sqlite3 *db, Disk *disk, ErrorInfo *err)
{
    return framed<x_qbobj_deleteDiskByDevname>("qbobj_deleteDiskByDevname", qbdb, db, err, disk);
}

uint32_t qbobj_getVolumeSparesCollection(qbdb_t *qbdb, sqlite3 *db, DiskCollection *spares, ErrorInfo *err)
{
    return framed<x_qbobj_getVolumeSparesCollection>("qbobj_getVolumeSparesCollection", qbdb, db, err, spares);
}

uint32_t qbobj_addVolumeSpare(qbdb_t *qbdb, sqlite3 *db, const char *diskId, ErrorInfo *err)
{
    return framed<x_qbobj_addVolumeSpare>("qbobj_addVolumeSpare", qbdb, db, err, diskId);
}

uint32_t qbobj_deleteVolumeSpare(qbdb_t *qbdb, sqlite3 *db, const char *diskId, ErrorInfo *err)
{
    return framed<x_qbobj_deleteVolumeSpare>("qbobj_deleteVolumeSpare", qbdb, db, err, diskId);
}

uint32_t qbobj_getVolumeScheduleCollection(qbdb_t *qbdb, sqlite3 *db, VolumeScheduleCollection *schedules,
                                           ErrorInfo *err)
{
    return framed<x_qbobj_getVolumeScheduleCollection>("qbobj_getVolumeScheduleCollection", qbdb, db, err, schedules);
}

uint32_t qbobj_addVolumeSchedule(qbdb_t *qbdb, sqlite3 *db, VolumeSchedule *schedule, ErrorInfo *err)
{
    return framed<x_qbobj_addVolumeSchedule>("qbobj_addVolumeSchedule", qbdb, db, err, schedule);
}

uint32_t qbobj_updateVolumeSchedule(qbdb_t *qbdb, sqlite3 *db, VolumeSchedule *schedule, ErrorInfo *err)
{
    return framed<x_qbobj_updateVolumeSchedule>("qbobj_updateVolumeSchedule", qbdb, db, err, schedule);
}

uint32_t qbobj_deleteVolumeSchedule(qbdb_t *qbdb, sqlite3 *db, VolumeSchedule *schedule, ErrorInfo *err)
{
    return framed<x_qbobj_deleteVolumeSchedule>("qbobj_deleteVolumeSchedule", qbdb, db, err, schedule);
}

// ---- Snapshots, clones, subvolumes

uint32_t qbobj_getSnapshotCollection(qbdb_t *qbdb, sqlite3 *db, SnapshotCollection *snapshots, const char *shareName,
                                     const char *volumeName, int32_t type, int32_t from, int32_t to,
                                     const char *sortColumn, int32_t descending, int32_t limit, int32_t offset,
                                     ErrorInfo *err)
{
    return framed<x_qbobj_getSnapshotCollection>("qbobj_getSnapshotCollection", qbdb, db, err, snapshots, shareName,
                                                 volumeName, type, from, to, sortColumn, descending, limit, offset);
}

uint32_t qbobj_getSnapshotCollectionCount(qbdb_t *qbdb, sqlite3 *db, const char *shareName, const char *volumeName,
                                          int32_t type, int32_t from, int32_t to, int32_t *count, ErrorInfo *err)
{
    return framed<x_qbobj_getSnapshotCollectionCount>("qbobj_getSnapshotCollectionCount", qbdb, db, err, shareName,
                                                      volumeName, type, from, to, count);
}

uint32_t qbobj_addSnapshot(qbdb_t *qbdb, sqlite3 *db, Snapshot *snapshot, ErrorInfo *err)
{
    return framed<x_qbobj_addSnapshot>("qbobj_addSnapshot", qbdb, db, err, snapshot);
}

uint32_t qbobj_deleteSnapshot(qbdb_t *qbdb, sqlite3 *db, const char *volumeName, const char *shareName,
                              int32_t deleteNewer, const char *snapshotName, int32_t time, ErrorInfo *err)
{
    return framed<x_qbobj_deleteSnapshot>("qbobj_deleteSnapshot", qbdb, db, err, volumeName, shareName, deleteNewer,
                                          snapshotName, time);
}

uint32_t qbobj_getHfSnapshotCollection(qbdb_t *qbdb, sqlite3 *db, HfSnapshotCollection *snapshots, const char *userName,
                                       const char *homeDir, int32_t type, int32_t from, int32_t to,
                                       const char *sortColumn, int32_t descending, int32_t limit, int32_t offset,
                                       ErrorInfo *err)
{
    return framed<x_qbobj_getHfSnapshotCollection>("qbobj_getHfSnapshotCollection", qbdb, db, err, snapshots, userName,
                                                   homeDir, type, from, to, sortColumn, descending, limit, offset);
}

uint32_t qbobj_getHfSnapshotCollectionCount(qbdb_t *qbdb, sqlite3 *db, const char *userName, const char *homeDir,
                                            int32_t type, int32_t from, int32_t to, int32_t *count, ErrorInfo *err)
{
    return framed<x_qbobj_getHfSnapshotCollectionCount>("qbobj_getHfSnapshotCollectionCount", qbdb, db, err, userName,
                                                        homeDir, type, from, to, count);
}

uint32_t qbobj_addHfSnapshot(qbdb_t *qbdb, sqlite3 *db, HfSnapshot *snapshot, ErrorInfo *err)
{
    return framed<x_qbobj_addHfSnapshot>("qbobj_addHfSnapshot", qbdb, db, err, snapshot);
}

uint32_t qbobj_deleteHfSnapshot(qbdb_t *qbdb, sqlite3 *db, const char *userName, const char *homeDir,
                                int32_t deleteNewer, const char *snapshotName, int32_t time, ErrorInfo *err)
{
    return framed<x_qbobj_deleteHfSnapshot>("qbobj_deleteHfSnapshot", qbdb, db, err, userName, homeDir, deleteNewer,
                                            snapshotName, time);
}

uint32_t qbobj_getHfSnapshotSchedule(qbdb_t *qbdb, sqlite3 *db, Schedule *schedule, ErrorInfo *err)
{
    return framed<x_qbobj_getHfSnapshotSchedule>("qbobj_getHfSnapshotSchedule", qbdb, db, err, schedule);
}

uint32_t qbobj_addHfSnapshotSchedule(qbdb_t *qbdb, sqlite3 *db, Schedule *schedule, ErrorInfo *err)
{
    return framed<x_qbobj_addHfSnapshotSchedule>("qbobj_addHfSnapshotSchedule", qbdb, db, err, schedule);
}

uint32_t qbobj_modifyHfSnapshotSchedule(qbdb_t *qbdb, sqlite3 *db, Schedule *schedule, ErrorInfo *err)
{
    return framed<x_qbobj_modifyHfSnapshotSchedule>("qbobj_modifyHfSnapshotSchedule", qbdb, db, err, schedule);
}

uint32_t qbobj_getSnapshotClones(qbdb_t *qbdb, sqlite3 *db, const char *parentSnapshotName, const char *parentzfsName,
                                 SnapshotCloneCollection *clones, ErrorInfo *err)
{
    return framed<x_qbobj_getSnapshotClones>("qbobj_getSnapshotClones", qbdb, db, err, parentSnapshotName,
                                             parentzfsName, clones);
}

uint32_t qbobj_addSnapshotClone(qbdb_t *qbdb, sqlite3 *db, const char *clonedzfsName, const char *parentSnapshotName,
                                const char *parentzfsName, ErrorInfo *err)
{
    return framed<x_qbobj_addSnapshotClone>("qbobj_addSnapshotClone", qbdb, db, err, clonedzfsName, parentSnapshotName,
                                            parentzfsName);
}

uint32_t qbobj_deleteSnapshotClone(qbdb_t *qbdb, sqlite3 *db, const char *clonedzfsName, const char *parentSnapshotName,
                                   const char *parentzfsName, ErrorInfo *err)
{
    return framed<x_qbobj_deleteSnapshotClone>("qbobj_deleteSnapshotClone", qbdb, db, err, clonedzfsName,
                                               parentSnapshotName, parentzfsName);
}

uint32_t qbobj_getSubvolumeFullCollection(qbdb_t *qbdb, sqlite3 *db, const char *volumeName,
                                          SubvolumeCollection *subvolumes, ErrorInfo *err)
{
    return framed<x_qbobj_getSubvolumeFullCollection>("qbobj_getSubvolumeFullCollection", qbdb, db, err, volumeName,
                                                      subvolumes);
}

uint32_t qbobj_getSubvolumeSnapshotCollection(qbdb_t *qbdb, sqlite3 *db, const char *volumeName,
                                              SubvolumeCollection *subvolumes, ErrorInfo *err)
{
    return framed<x_qbobj_getSubvolumeSnapshotCollection>("qbobj_getSubvolumeSnapshotCollection", qbdb, db, err,
                                                          volumeName, subvolumes);
}

uint32_t qbobj_getSubvolumeDataCollection(qbdb_t *qbdb, sqlite3 *db, const char *volumeName,
                                          SubvolumeCollection *subvolumes, ErrorInfo *err)
{
    return framed<x_qbobj_getSubvolumeDataCollection>("qbobj_getSubvolumeDataCollection", qbdb, db, err, volumeName,
                                                      subvolumes);
}

// ---- Health

uint32_t qbobj_getDiskHealthCollection(qbdb_t *qbdb, sqlite3 *db, DiskHealthCollection *health, ErrorInfo *err)
{
    return framed<x_qbobj_getDiskHealthCollection>("qbobj_getDiskHealthCollection", qbdb, db, err, health);
}

uint32_t qbobj_setDiskHealth(qbdb_t *qbdb, sqlite3 *db, DiskHealth *health, ErrorInfo *err)
{
    return framed<x_qbobj_setDiskHealth>("qbobj_setDiskHealth", qbdb, db, err, health);
}

uint32_t qbobj_getEnclosureHealthCollection(qbdb_t *qbdb, sqlite3 *db, EnclosureHealthCollection *health,
                                            ErrorInfo *err)
{
    return framed<x_qbobj_getEnclosureHealthCollection>("qbobj_getEnclosureHealthCollection", qbdb, db, err, health);
}

uint32_t qbobj_getEnclosureHealth(qbdb_t *qbdb, sqlite3 *db, EnclosureHealth *health, ErrorInfo *err)
{
    return framed<x_qbobj_getEnclosureHealth>("qbobj_getEnclosureHealth", qbdb, db, err, health);
}

uint32_t qbobj_setEnclosureHealth(qbdb_t *qbdb, sqlite3 *db, EnclosureHealth *health, ErrorInfo *err)
{
    return framed<x_qbobj_setEnclosureHealth>("qbobj_setEnclosureHealth", qbdb, db, err, health);
}

uint32_t qbobj_setEnclosureHealthForTest(qbdb_t *qbdb, sqlite3 *db, const char *path, ErrorInfo *err)
{
    return framed<x_qbobj_setEnclosureHealthForTest>("qbobj_setEnclosureHealthForTest", qbdb, db, err, path);
}

uint32_t qbobj_getUpsHealthCollection(qbdb_t *qbdb, sqlite3 *db, UpsHealthCollection *health, ErrorInfo *err)
{
    return framed<x_qbobj_getUpsHealthCollection>("qbobj_getUpsHealthCollection", qbdb, db, err, health);
}

uint32_t qbobj_setUpsHealth(qbdb_t *qbdb, sqlite3 *db, UpsHealth *health, ErrorInfo *err)
{
    return framed<x_qbobj_setUpsHealth>("qbobj_setUpsHealth", qbdb, db, err, health);
}

// ---- iSCSI

uint32_t qbobj_getLunGroupCollection(qbdb_t *qbdb, sqlite3 *db, LunGroupCollection *groups, ErrorInfo *err)
{
    return framed<x_qbobj_getLunGroupCollection>("qbobj_getLunGroupCollection", qbdb, db, err, groups);
}

uint32_t qbobj_getLunGroup(qbdb_t *qbdb, sqlite3 *db, LunGroup *group, ErrorInfo *err)
{
    return framed<x_qbobj_getLunGroup>("qbobj_getLunGroup", qbdb, db, err, group);
}

uint32_t qbobj_getLunGroupId(qbdb_t *qbdb, sqlite3 *db, const char *name, ErrorInfo *err)
{
    return framed<x_qbobj_getLunGroupId>("qbobj_getLunGroupId", qbdb, db, err, name);
}

uint32_t qbobj_addLunGroup(qbdb_t *qbdb, sqlite3 *db, LunGroup *group, ErrorInfo *err)
{
    return framed<x_qbobj_addLunGroup>("qbobj_addLunGroup", qbdb, db, err, group);
}

uint32_t qbobj_modifyLunGroup(qbdb_t *qbdb, sqlite3 *db, LunGroup *group, ErrorInfo *err)
{
    return framed<x_qbobj_modifyLunGroup>("qbobj_modifyLunGroup", qbdb, db, err, group);
}

uint32_t qbobj_deleteLunGroup(qbdb_t *qbdb, sqlite3 *db, const char *name, ErrorInfo *err)
{
    return framed<x_qbobj_deleteLunGroup>("qbobj_deleteLunGroup", qbdb, db, err, name);
}

uint32_t qbobj_getInitiatorCollection(qbdb_t *qbdb, sqlite3 *db, InitiatorCollection *initiators, ErrorInfo *err)
{
    return framed<x_qbobj_getInitiatorCollection>("qbobj_getInitiatorCollection", qbdb, db, err, initiators);
}

uint32_t qbobj_getInitiator(qbdb_t *qbdb, sqlite3 *db, Initiator *initiator, ErrorInfo *err)
{
    return framed<x_qbobj_getInitiator>("qbobj_getInitiator", qbdb, db, err, initiator);
}

uint32_t qbobj_getInitiatorId(qbdb_t *qbdb, sqlite3 *db, const char *name, ErrorInfo *err)
{
    return framed<x_qbobj_getInitiatorId>("qbobj_getInitiatorId", qbdb, db, err, name);
}

uint32_t qbobj_addInitiator(qbdb_t *qbdb, sqlite3 *db, Initiator *initiator, ErrorInfo *err)
{
    return framed<x_qbobj_addInitiator>("qbobj_addInitiator", qbdb, db, err, initiator);
}

uint32_t qbobj_modifyInitiator(qbdb_t *qbdb, sqlite3 *db, Initiator *initiator, ErrorInfo *err)
{
    return framed<x_qbobj_modifyInitiator>("qbobj_modifyInitiator", qbdb, db, err, initiator);
}

uint32_t qbobj_deleteInitiator(qbdb_t *qbdb, sqlite3 *db, const char *name, ErrorInfo *err)
{
    return framed<x_qbobj_deleteInitiator>("qbobj_deleteInitiator", qbdb, db, err, name);
}

uint32_t qbobj_getLun(qbdb_t *qbdb, sqlite3 *db, Lun *lun, ErrorInfo *err)
{
    return framed<x_qbobj_getLun>("qbobj_getLun", qbdb, db, err, lun);
}

uint32_t qbobj_getLunId(qbdb_t *qbdb, sqlite3 *db, const char *name, ErrorInfo *err)
{
    return framed<x_qbobj_getLunId>("qbobj_getLunId", qbdb, db, err, name);
}

uint32_t qbobj_addLun(qbdb_t *qbdb, sqlite3 *db, Lun *lun, ErrorInfo *err)
{
    return framed<x_qbobj_addLun>("qbobj_addLun", qbdb, db, err, lun);
}

uint32_t qbobj_deleteLun(qbdb_t *qbdb, sqlite3 *db, const char *name, ErrorInfo *err)
{
    return framed<x_qbobj_deleteLun>("qbobj_deleteLun", qbdb, db, err, name);
}

uint32_t qbobj_getLunGroupAccessList(qbdb_t *qbdb, sqlite3 *db, const char *lunGroup, InitiatorCollection *initiators,
                                     ErrorInfo *err)
{
    return framed<x_qbobj_getLunGroupAccessList>("qbobj_getLunGroupAccessList", qbdb, db, err, lunGroup, initiators);
}

uint32_t qbobj_addLunGroupAccessList(qbdb_t *qbdb, sqlite3 *db, const char *lunGroup, const char *initiator,
                                     ErrorInfo *err)
{
    return framed<x_qbobj_addLunGroupAccessList>("qbobj_addLunGroupAccessList", qbdb, db, err, lunGroup, initiator);
}

uint32_t qbobj_deleteLunGroupAccessList(qbdb_t *qbdb, sqlite3 *db, const char *lunGroup, ErrorInfo *err)
{
    return framed<x_qbobj_deleteLunGroupAccessList>("qbobj_deleteLunGroupAccessList", qbdb, db, err, lunGroup);
}

uint32_t qbobj_deleteIniFromLunGroupAccessList(qbdb_t *qbdb, sqlite3 *db, const char *initiator, ErrorInfo *err)
{
    return framed<x_qbobj_deleteIniFromLunGroupAccessList>("qbobj_deleteIniFromLunGroupAccessList", qbdb, db, err,
                                                           initiator);
}

// ---- Backup jobs

uint32_t qbobj_getBackupJobCollection(qbdb_t *qbdb, sqlite3 *db, BackupJobCollection *jobs, ErrorInfo *err)
{
    return framed<x_qbobj_getBackupJobCollection>("qbobj_getBackupJobCollection", qbdb, db, err, jobs);
}

uint32_t qbobj_getBackupJob(qbdb_t *qbdb, sqlite3 *db, BackupJob *job, ErrorInfo *err)
{
    return framed<x_qbobj_getBackupJob>("qbobj_getBackupJob", qbdb, db, err, job);
}

uint32_t qbobj_addBackupJob(qbdb_t *qbdb, sqlite3 *db, BackupJob *job, ErrorInfo *err)
{
    return framed<x_qbobj_addBackupJob>("qbobj_addBackupJob", qbdb, db, err, job);
}

uint32_t qbobj_modifyBackupJob(qbdb_t *qbdb, sqlite3 *db, BackupJob *job, ErrorInfo *err)
{
    return framed<x_qbobj_modifyBackupJob>("qbobj_modifyBackupJob", qbdb, db, err, job);
}

uint32_t qbobj_deleteBackupJob(qbdb_t *qbdb, sqlite3 *db, BackupJob *job, ErrorInfo *err)
{
    return framed<x_qbobj_deleteBackupJob>("qbobj_deleteBackupJob", qbdb, db, err, job);
}

uint32_t qbobj_hasBackupJob(qbdb_t *qbdb, sqlite3 *db, int32_t jobId, ErrorInfo *err)
{
    return framed<x_qbobj_hasBackupJob>("qbobj_hasBackupJob", qbdb, db, err, jobId);
}

uint32_t qbobj_getBackupTargetCollection(qbdb_t *qbdb, sqlite3 *db, BackupTargetCollection *targets, ErrorInfo *err)
{
    return framed<x_qbobj_getBackupTargetCollection>("qbobj_getBackupTargetCollection", qbdb, db, err, targets);
}

uint32_t qbobj_getBackupUSBSubType(qbdb_t *qbdb, sqlite3 *db, const char *usbPortName, const char **subType,
                                   ErrorInfo *err)
{
    return framed<x_qbobj_getBackupUSBSubType>("qbobj_getBackupUSBSubType", qbdb, db, err, usbPortName, subType);
}

uint32_t qbobj_getBackupButtonJobCollection(qbdb_t *qbdb, sqlite3 *db, BackupButtonJobCollection *jobs, ErrorInfo *err)
{
    return framed<x_qbobj_getBackupButtonJobCollection>("qbobj_getBackupButtonJobCollection", qbdb, db, err, jobs);
}

uint32_t qbobj_setBackupButtonJobCollection(qbdb_t *qbdb, sqlite3 *db, BackupButtonJobCollection *jobs, ErrorInfo *err)
{
    return framed<x_qbobj_setBackupButtonJobCollection>("qbobj_setBackupButtonJobCollection", qbdb, db, err, jobs);
}

// ---- UPS configuration

uint32_t qbobj_getUpsConfigCollection(qbdb_t *qbdb, sqlite3 *db, UpsConfigCollection *ups, ErrorInfo *err)
{
    return framed<x_qbobj_getUpsConfigCollection>("qbobj_getUpsConfigCollection", qbdb, db, err, ups);
}

uint32_t qbobj_getUpsConfigByNameAtHost(qbdb_t *qbdb, sqlite3 *db, const char *resourceId, UpsConfig *ups,
                                        ErrorInfo *err)
{
    return framed<x_qbobj_getUpsConfigByNameAtHost>("qbobj_getUpsConfigByNameAtHost", qbdb, db, err, resourceId, ups);
}

uint32_t qbobj_addUpsConfig(qbdb_t *qbdb, sqlite3 *db, UpsConfig *ups, ErrorInfo *err)
{
    return framed<x_qbobj_addUpsConfig>("qbobj_addUpsConfig", qbdb, db, err, ups);
}

uint32_t qbobj_deleteUpsConfig(qbdb_t *qbdb, sqlite3 *db, const char *resourceId, ErrorInfo *err)
{
    return framed<x_qbobj_deleteUpsConfig>("qbobj_deleteUpsConfig", qbdb, db, err, resourceId);
}

uint32_t qbobj_setUpsConfig(qbdb_t *qbdb, sqlite3 *db, UpsConfig *ups, ErrorInfo *err)
{
    return framed<x_qbobj_setUpsConfig>("qbobj_setUpsConfig", qbdb, db, err, ups);
}

uint32_t qbobj_setUpsInfo(qbdb_t *qbdb, sqlite3 *db, UpsConfig *ups, ErrorInfo *err)
{
    return framed<x_qbobj_setUpsInfo>("qbobj_setUpsInfo", qbdb, db, err, ups);
}
// SPDX-License-Identifier: Apache-2.0
