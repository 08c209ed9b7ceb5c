// The workers of the account operations.
#pragma once

#include "frame/worker.h"
#include "qbobj/accounts.h"

namespace qb {

// ---- Users

Worker<qbobj_getUserCollection> x_qbobj_getUserCollection;
Worker<qbobj_getUser> x_qbobj_getUser;
Worker<qbobj_getSystemUser> x_qbobj_getSystemUser;
Worker<qbobj_getCloudUser> x_qbobj_getCloudUser;
Worker<qbobj_getUserInGroupName> x_qbobj_getUserInGroupName;
Worker<qbobj_getUID, int32_t> x_qbobj_getUID;
Worker<qbobj_getUserName, int32_t> x_qbobj_getUserName;
Worker<qbobj_getPosixUID, int32_t> x_qbobj_getPosixUID;
Worker<qbobj_getPosixUIDbyUID, int32_t> x_qbobj_getPosixUIDbyUID;
Worker<qbobj_getPosixUIDGID, int32_t> x_qbobj_getPosixUIDGID;
Worker<qbobj_getUserHomeFolderTotalConsumedInByte> x_qbobj_getUserHomeFolderTotalConsumedInByte;
Worker<qbobj_addUser> x_qbobj_addUser;
Worker<qbobj_addUserList> x_qbobj_addUserList;
Worker<qbobj_checkUserList> x_qbobj_checkUserList;
Worker<qbobj_modifyUser> x_qbobj_modifyUser;
Worker<qbobj_setPrimaryGroupByName> x_qbobj_setPrimaryGroupByName;
Worker<qbobj_disableEnableLocalUserByName> x_qbobj_disableEnableLocalUserByName;
Worker<qbobj_modifyUserVisibleSnapFolder> x_qbobj_modifyUserVisibleSnapFolder;
Worker<qbobj_deleteUser> x_qbobj_deleteUser;
Worker<qbobj_deleteUserByName> x_qbobj_deleteUserByName;

// ---- Groups

Worker<qbobj_getGID, int32_t> x_qbobj_getGID;
Worker<qbobj_getGroupName, int32_t> x_qbobj_getGroupName;
Worker<qbobj_getPrimaryGID, int32_t> x_qbobj_getPrimaryGID;
Worker<qbobj_getPosixGID, int32_t> x_qbobj_getPosixGID;
Worker<qbobj_getPosixGIDbyGID, int32_t> x_qbobj_getPosixGIDbyGID;
Worker<qbobj_isMemberOfGroup, int32_t> x_qbobj_isMemberOfGroup;
Worker<qbobj_getGroupCollection> x_qbobj_getGroupCollection;
Worker<qbobj_getGroup> x_qbobj_getGroup;
Worker<qbobj_getSystemGroup> x_qbobj_getSystemGroup;
Worker<qbobj_addGroup> x_qbobj_addGroup;
Worker<qbobj_deleteGroup> x_qbobj_deleteGroup;
Worker<qbobj_modifyGroup> x_qbobj_modifyGroup;

// ---- Passwords, account defaults, directory security

Worker<qbobj_getAdminPassword> x_qbobj_getAdminPassword;
Worker<qbobj_setAdminPassword> x_qbobj_setAdminPassword;
Worker<qbobj_setUserPassword> x_qbobj_setUserPassword;
Worker<qbobj_setMyPassword> x_qbobj_setMyPassword;
Worker<qbobj_getAccountDefault> x_qbobj_getAccountDefault;
Worker<qbobj_setAccountDefault> x_qbobj_setAccountDefault;
Worker<qbobj_getSecurity> x_qbobj_getSecurity;
Worker<qbobj_setSecurity> x_qbobj_setSecurity;
Worker<qbobj_setSecurityIdmapBackend> x_qbobj_setSecurityIdmapBackend;
Worker<qbobj_getSecurityAdsProgress> x_qbobj_getSecurityAdsProgress;

// ---- SSH public keys

Worker<qbobj_addSshPublicKey> x_qbobj_addSshPublicKey;
Worker<qbobj_deleteSshPublicKey> x_qbobj_deleteSshPublicKey;
Worker<qbobj_setSshPublicKeyById> x_qbobj_setSshPublicKeyById;
Worker<qbobj_getSshPublicKeyById> x_qbobj_getSshPublicKeyById;
Worker<qbobj_getSshPublicKeyTiedRootKeyById> x_qbobj_getSshPublicKeyTiedRootKeyById;
Worker<qbobj_getSshPublicKeyCollection> x_qbobj_getSshPublicKeyCollection;

// ---- The SMB user-name map

Worker<qbobj_getSmbUserNameMapCollection> x_qbobj_getSmbUserNameMapCollection;
Worker<qbobj_getSmbUserNameMapCount, int32_t> x_qbobj_getSmbUserNameMapCount;
Worker<qbobj_addSmbUserNameMap> x_qbobj_addSmbUserNameMap;
Worker<qbobj_deleteSmbUserNameMap> x_qbobj_deleteSmbUserNameMap;
Worker<qbobj_setSmbUserNameMapUnixUserNameForAll> x_qbobj_setSmbUserNameMapUnixUserNameForAll;
Worker<qbobj_setSmbUserNameMapSmbUserName> x_qbobj_setSmbUserNameMapSmbUserName;

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
