/**
 * @file qbobj/operations.h
 * The operations as a list for the preprocessor: what qbobj_operations() tells of them that their types do not, at
 * compile time. It equals that table.
 */
#ifndef QBOBJ_OPERATIONS_H
#define QBOBJ_OPERATIONS_H

/**
 * Applies the macro X to each operation, in the order of qbobj_operations(): X(qbobj_getLog, CODE, READS, "in? out").
 * - its function;
 * - what the returned value means: the end of a QBOBJ_RETURNS_ name;
 * - READS, or CHANGES for one that changes the database;
 * - which way each argument between the connection and the error record goes, separated by blanks: in, out, inout; with
 *   a question mark it may be null.
 */
#define QBOBJ_FOR_EACH_OPERATION(X)                                                    \
    X(qbobj_getLog, CODE, READS, "in? out out out")                                    \
    X(qbobj_deleteLog, CODE, CHANGES, "in?")                                           \
    X(qbobj_truncateLog, CODE, CHANGES, "in")                                          \
    X(qbobj_addLog, CODE, CHANGES, "in in? in? in? in?")                               \
    X(qbobj_getNetworkInterfaceCollection, CODE, READS, "out")                         \
    X(qbobj_getNetworkInterface, CODE, READS, "inout")                                 \
    X(qbobj_addNetworkInterface, CODE, CHANGES, "in")                                  \
    X(qbobj_deleteNetworkInterface, CODE, CHANGES, "in")                               \
    X(qbobj_modifyNetworkInterface, CODE, CHANGES, "in")                               \
    X(getFolderAttribute, CODE, READS, "in? out")                                      \
    X(getServiceEntry, CODE, READS, "in out")                                          \
    X(setServiceEntry, CODE, CHANGES, "in in?")                                        \
    X(getRegistryEntry, CODE, READS, "in out")                                         \
    X(setRegistryEntry, CODE, CHANGES, "in in?")                                       \
    X(qbobj_getUserCollection, CODE, READS, "out in? in")                              \
    X(qbobj_getUser, CODE, READS, "inout")                                             \
    X(qbobj_getSystemUser, CODE, READS, "inout")                                       \
    X(qbobj_getCloudUser, CODE, READS, "out")                                          \
    X(qbobj_getUserInGroupName, CODE, READS, "in? in out")                             \
    X(qbobj_getUID, FOUND, READS, "in? out")                                           \
    X(qbobj_getUserName, FOUND, READS, "in out")                                       \
    X(qbobj_getPosixUID, ID, READS, "in?")                                             \
    X(qbobj_getPosixUIDbyUID, ID, READS, "in")                                         \
    X(qbobj_getPosixUIDGID, FOUND, READS, "in? out out")                               \
    X(qbobj_getUserHomeFolderTotalConsumedInByte, CODE, CHANGES, "out")                \
    X(qbobj_getGID, FOUND, READS, "in? out")                                           \
    X(qbobj_getGroupName, FOUND, READS, "in out")                                      \
    X(qbobj_getPrimaryGID, FOUND, READS, "in? out")                                    \
    X(qbobj_getPosixGID, ID, READS, "in?")                                             \
    X(qbobj_getPosixGIDbyGID, ID, READS, "in")                                         \
    X(qbobj_isMemberOfGroup, ANSWER, READS, "in? in?")                                 \
    X(qbobj_getGroupCollection, CODE, READS, "out in?")                                \
    X(qbobj_getGroup, CODE, READS, "inout")                                            \
    X(qbobj_getSystemGroup, CODE, READS, "inout")                                      \
    X(qbobj_addGroup, CODE, CHANGES, "inout?")                                         \
    X(qbobj_deleteGroup, CODE, CHANGES, "in?")                                         \
    X(qbobj_modifyGroup, CODE, CHANGES, "in?")                                         \
    X(qbobj_getAdminPassword, CODE, READS, "out")                                      \
    X(qbobj_setAdminPassword, CODE, CHANGES, "in")                                     \
    X(qbobj_setUserPassword, CODE, CHANGES, "in")                                      \
    X(qbobj_setMyPassword, CODE, CHANGES, "in")                                        \
    X(qbobj_getAccountDefault, CODE, READS, "out")                                     \
    X(qbobj_setAccountDefault, CODE, CHANGES, "in")                                    \
    X(qbobj_getSecurity, CODE, READS, "out")                                           \
    X(qbobj_setSecurity, CODE, CHANGES, "in")                                          \
    X(qbobj_setSecurityIdmapBackend, CODE, CHANGES, "in")                              \
    X(qbobj_getSecurityAdsProgress, CODE, READS, "out")                                \
    X(qbobj_addSshPublicKey, CODE, CHANGES, "inout")                                   \
    X(qbobj_deleteSshPublicKey, CODE, CHANGES, "in")                                   \
    X(qbobj_setSshPublicKeyById, CODE, CHANGES, "in")                                  \
    X(qbobj_getSshPublicKeyById, CODE, READS, "in out")                                \
    X(qbobj_getSshPublicKeyTiedRootKeyById, CODE, READS, "in out")                     \
    X(qbobj_getSshPublicKeyCollection, CODE, READS, "out")                             \
    X(qbobj_addUser, CODE, CHANGES, "inout?")                                          \
    X(qbobj_addUserList, CODE, CHANGES, "inout?")                                      \
    X(qbobj_checkUserList, CODE, READS, "out out in? in?")                             \
    X(qbobj_modifyUser, CODE, CHANGES, "inout?")                                       \
    X(qbobj_setPrimaryGroupByName, CODE, CHANGES, "in in")                             \
    X(qbobj_disableEnableLocalUserByName, CODE, CHANGES, "in in?")                     \
    X(qbobj_modifyUserVisibleSnapFolder, CODE, CHANGES, "in in?")                      \
    X(qbobj_deleteUser, CODE, CHANGES, "inout?")                                       \
    X(qbobj_deleteUserByName, CODE, CHANGES, "inout?")                                 \
    X(qbobj_getSmbUserNameMapCollection, CODE, READS, "out")                           \
    X(qbobj_getSmbUserNameMapCount, COUNT, READS, "in in")                             \
    X(qbobj_addSmbUserNameMap, CODE, CHANGES, "in")                                    \
    X(qbobj_deleteSmbUserNameMap, CODE, CHANGES, "in")                                 \
    X(qbobj_setSmbUserNameMapUnixUserNameForAll, CODE, CHANGES, "in in")               \
    X(qbobj_setSmbUserNameMapSmbUserName, CODE, CHANGES, "in")                         \
    X(qbobj_getProtocolCollection, CODE, READS, "out")                                 \
    X(qbobj_getProtocol, CODE, READS, "in out")                                        \
    X(qbobj_getSnmpOptions, CODE, READS, "out")                                        \
    X(qbobj_getHomeFolderOptions, CODE, READS, "out")                                  \
    X(qbobj_setProtocolCollection, CODE, CHANGES, "inout")                             \
    X(qbobj_setProtocolEnable, CODE, CHANGES, "in in")                                 \
    X(qbobj_setHomeFolderOptions, CODE, CHANGES, "in")                                 \
    X(qbobj_getTimemachine, CODE, READS, "out")                                        \
    X(qbobj_setTimemachine, CODE, CHANGES, "in")                                       \
    X(qbobj_setTimemachineEnable, CODE, CHANGES, "in")                                 \
    X(qbobj_getTIVOSettings, CODE, READS, "inout")                                     \
    X(qbobj_setTIVOSettings, CODE, CHANGES, "in")                                      \
    X(qbobj_setTIVOMak, CODE, CHANGES, "in")                                           \
    X(qbobj_getCofferSettings, CODE, READS, "out")                                     \
    X(qbobj_setCofferSettings, CODE, CHANGES, "in")                                    \
    X(qbobj_cleanCofferSettings, CODE, CHANGES, "")                                    \
    X(qbobj_getDictionary, CODE, READS, "in? out")                                     \
    X(qbobj_getTranslatedString, CODE, READS, "in? in? in? out")                       \
    X(qbobj_getQuillboxdInfo, CODE, READS, "out? out? out?")                           \
    X(qbobj_setQuillboxdInfo, CODE, CHANGES, "in in in?")                              \
    X(qbobj_getShareCollection, CODE, READS, "out")                                    \
    X(qbobj_getSimpleShareCollection, CODE, READS, "out")                              \
    X(qbobj_getShareAndZvolCollection, CODE, READS, "out")                             \
    X(qbobj_getSubvolumeShareCollection, CODE, READS, "out")                           \
    X(qbobj_getAccessibleShareCollection, CODE, READS, "in? in out")                   \
    X(qbobj_getShare, CODE, READS, "inout")                                            \
    X(qbobj_getShareId, ID, READS, "in?")                                              \
    X(qbobj_getShareAccess, CODE, READS, "in? in? out")                                \
    X(qbobj_getPathAccess, CODE, READS, "in? in? out")                                 \
    X(qbobj_getUsedByOn, CODE, READS, "in? out")                                       \
    X(qbobj_queryShare, CODE, READS, "in? in? in? out")                                \
    X(qbobj_getShareSnapshotSchedule, CODE, READS, "in? out")                          \
    X(qbobj_getShareProcess, CODE, READS, "in? out?")                                  \
    X(qbobj_addShare, CODE, CHANGES, "inout?")                                         \
    X(qbobj_addShareProcess, CODE, CHANGES, "in? in in")                               \
    X(qbobj_addShareUsedBy, CODE, CHANGES, "in? in?")                                  \
    X(qbobj_modifyShare, CODE, CHANGES, "inout?")                                      \
    X(qbobj_modifyShareVisibleSnapFolder, CODE, CHANGES, "in? in?")                    \
    X(qbobj_modifyShareUsedBy, CODE, CHANGES, "in? in?")                               \
    X(qbobj_modifyShareUsedByExclusive, CODE, CHANGES, "in? in?")                      \
    X(qbobj_modifyZvol, CODE, CHANGES, "in? in? in? in in")                            \
    X(qbobj_modifyShareSnapshotSchedule, CODE, CHANGES, "in? in")                      \
    X(qbobj_deleteShare, CODE, CHANGES, "in?")                                         \
    X(qbobj_deleteZvol, CODE, CHANGES, "in?")                                          \
    X(qbobj_deleteShareOnVolume, CODE, CHANGES, "in?")                                 \
    X(qbobj_deleteShareProcess, CODE, CHANGES, "in? in")                               \
    X(qbobj_deleteShareUsedBy, CODE, CHANGES, "in? in?")                               \
    X(qbobj_preMigrateShare, CODE, CHANGES, "in? in?")                                 \
    X(qbobj_postMigrateShare, CODE, CHANGES, "in? in out?")                            \
    X(qbobj_copyShare, CODE, CHANGES, "in? in? in? out?")                              \
    X(qbobj_getVolumeCollection, CODE, READS, "out")                                   \
    X(qbobj_deleteVolume, CODE, CHANGES, "in")                                         \
    X(qbobj_updateVolume, CODE, CHANGES, "in?")                                        \
    X(qbobj_getDiskCollection, CODE, READS, "out")                                     \
    X(qbobj_getDiskCollectionForController, CODE, READS, "out in")                     \
    X(qbobj_getDiskEnclosureCollection, CODE, READS, "out")                            \
    X(qbobj_getDiskEnclosurePort, CODE, READS, "in out")                               \
    X(qbobj_getDiskByDevname, CODE, READS, "inout?")                                   \
    X(qbobj_setDiskSpare, CODE, CHANGES, "in? in")                                     \
    X(qbobj_getDiskDiff, CODE, CHANGES, "out?")                                        \
    X(qbobj_getDiskByDiskDiff, CODE, READS, "in? inout?")                              \
    X(qbobj_deleteDiskByDevname, CODE, CHANGES, "in?")                                 \
    X(qbobj_getVolumeSparesCollection, CODE, READS, "out")                             \
    X(qbobj_addVolumeSpare, CODE, CHANGES, "in")                                       \
    X(qbobj_deleteVolumeSpare, CODE, CHANGES, "in")                                    \
    X(qbobj_addVolumeSchedule, CODE, CHANGES, "in?")                                   \
    X(qbobj_deleteVolumeSchedule, CODE, CHANGES, "in?")                                \
    X(qbobj_getVolumeScheduleCollection, CODE, READS, "out")                           \
    X(qbobj_updateVolumeSchedule, CODE, CHANGES, "in?")                                \
    X(qbobj_getSnapshotCollection, CODE, READS, "out in? in? in in in in? in in in")   \
    X(qbobj_getSnapshotCollectionCount, CODE, READS, "in? in? in in in out")           \
    X(qbobj_addSnapshot, CODE, CHANGES, "inout?")                                      \
    X(qbobj_deleteSnapshot, CODE, CHANGES, "in in? in in? in")                         \
    X(qbobj_getHfSnapshotCollection, CODE, READS, "out in? in? in in in in? in in in") \
    X(qbobj_getHfSnapshotCollectionCount, CODE, READS, "in? in? in in in out")         \
    X(qbobj_addHfSnapshot, CODE, CHANGES, "inout?")                                    \
    X(qbobj_deleteHfSnapshot, CODE, CHANGES, "in? in in in? in")                       \
    X(qbobj_getHfSnapshotSchedule, CODE, READS, "out")                                 \
    X(qbobj_addHfSnapshotSchedule, CODE, CHANGES, "in")                                \
    X(qbobj_modifyHfSnapshotSchedule, CODE, CHANGES, "in")                             \
    X(qbobj_getSnapshotClones, CODE, READS, "in? in? out")                             \
    X(qbobj_addSnapshotClone, CODE, CHANGES, "in in in")                               \
    X(qbobj_deleteSnapshotClone, CODE, CHANGES, "in? in? in?")                         \
    X(qbobj_getSubvolumeFullCollection, CODE, READS, "in out")                         \
    X(qbobj_getSubvolumeSnapshotCollection, CODE, READS, "in out")                     \
    X(qbobj_getSubvolumeDataCollection, CODE, READS, "in out")                         \
    X(qbobj_getDiskHealthCollection, CODE, READS, "out")                               \
    X(qbobj_setDiskHealth, CODE, CHANGES, "in?")                                       \
    X(qbobj_getEnclosureHealth, CODE, READS, "inout")                                  \
    X(qbobj_getEnclosureHealthCollection, CODE, READS, "out")                          \
    X(qbobj_setEnclosureHealth, CODE, CHANGES, "in")                                   \
    X(qbobj_setEnclosureHealthForTest, CODE, CHANGES, "in?")                           \
    X(qbobj_getUpsHealthCollection, CODE, READS, "out")                                \
    X(qbobj_setUpsHealth, CODE, CHANGES, "in?")                                        \
    X(qbobj_getLunGroupCollection, CODE, READS, "out")                                 \
    X(qbobj_getLunGroup, CODE, READS, "inout")                                         \
    X(qbobj_getLunGroupId, ID, READS, "in")                                            \
    X(qbobj_addLunGroup, CODE, CHANGES, "in?")                                         \
    X(qbobj_modifyLunGroup, CODE, CHANGES, "in?")                                      \
    X(qbobj_deleteLunGroup, CODE, CHANGES, "in?")                                      \
    X(qbobj_getInitiatorCollection, CODE, READS, "out")                                \
    X(qbobj_getInitiator, CODE, READS, "inout")                                        \
    X(qbobj_getInitiatorId, ID, READS, "in")                                           \
    X(qbobj_addInitiator, CODE, CHANGES, "in?")                                        \
    X(qbobj_modifyInitiator, CODE, CHANGES, "in?")                                     \
    X(qbobj_deleteInitiator, CODE, CHANGES, "in?")                                     \
    X(qbobj_getLun, CODE, READS, "inout")                                              \
    X(qbobj_getLunId, ID, READS, "in")                                                 \
    X(qbobj_addLun, CODE, CHANGES, "in?")                                              \
    X(qbobj_deleteLun, CODE, CHANGES, "in?")                                           \
    X(qbobj_getLunGroupAccessList, CODE, READS, "in? out")                             \
    X(qbobj_addLunGroupAccessList, CODE, CHANGES, "in? in?")                           \
    X(qbobj_deleteLunGroupAccessList, CODE, CHANGES, "in?")                            \
    X(qbobj_deleteIniFromLunGroupAccessList, CODE, CHANGES, "in?")                     \
    X(qbobj_getBackupJobCollection, CODE, READS, "out")                                \
    X(qbobj_getBackupJob, CODE, READS, "inout")                                        \
    X(qbobj_addBackupJob, CODE, CHANGES, "inout?")                                     \
    X(qbobj_modifyBackupJob, CODE, CHANGES, "inout?")                                  \
    X(qbobj_deleteBackupJob, CODE, CHANGES, "inout?")                                  \
    X(qbobj_hasBackupJob, TRUTH, READS, "in")                                          \
    X(qbobj_getBackupTargetCollection, CODE, READS, "out")                             \
    X(qbobj_getBackupUSBSubType, CODE, READS, "in out")                                \
    X(qbobj_getBackupButtonJobCollection, CODE, READS, "out")                          \
    X(qbobj_setBackupButtonJobCollection, CODE, CHANGES, "in")                         \
    X(qbobj_getUpsConfigCollection, CODE, READS, "out")                                \
    X(qbobj_getUpsConfigByNameAtHost, CODE, READS, "in out")                           \
    X(qbobj_addUpsConfig, CODE, CHANGES, "inout")                                      \
    X(qbobj_deleteUpsConfig, CODE, CHANGES, "in?")                                     \
    X(qbobj_setUpsConfig, CODE, CHANGES, "in")                                         \
    X(qbobj_setUpsInfo, CODE, CHANGES, "in")

#endif
/* SPDX-License-Identifier: Apache-2.0 */
