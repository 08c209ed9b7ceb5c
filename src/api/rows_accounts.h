// Operation rows: users, groups, passwords, directory security, SSH keys, the SMB user-name map.
#pragma once

#include "api/operation.h"

namespace qb {

inline constexpr const char *kIdmapBackends[] = {"tdb", "rid", nullptr};
inline constexpr const char *kMapTypes[] = {"uname", nullptr};
inline constexpr char kNotOfAGroup[] = "OldGroupName IsDomainMember";
inline constexpr char kMembersPassword[] = "SecondaryMember.Password";
inline constexpr char kNotOfANewUser[] =
    "HomeDirectory OldUserName OldHomeDirectory FullName SmbHash IsDomainMember no_invitation";
inline constexpr char kNotOfAChange[] =
    "HomeVolumeId HomeDirectory OldUserName OldHomeDirectory FullName SmbHash IsDomainMember no_invitation "
    "HomeFolderSettings.VisibleSnapFolder";
inline constexpr char kNotOfAList[] =
    "HomeVolumeId HomeDirectory OldUserName OldHomeDirectory FullName SmbHash SysHash IsDomainMember no_invitation "
    "IsLocked "
    "ShellAccess P2PUserName UserQuota TimeMachineQuota HomeFolderSettings";

inline constexpr QbobjOperation kAccountsRows[] = {
    // ---- users, reading
    QB_OPERATION(getUserCollection, "users", kReads, QBOBJ_RETURNS_CODE, "2 5 8",
                 "Lists users: filtered, in order, page by page, with quotas, home folder and Time Machine allowance.",
                 out("users"), in("query").or_null().ignores("include_admin"), in("with_password")),
    QB_OPERATION(getUser, "users", kReads, QBOBJ_RETURNS_CODE, "2 5 8 832",
                 "Reads one user by id, or a directory user by name.", inout("user")),
    QB_OPERATION(getSystemUser, "users", kReads, QBOBJ_RETURNS_CODE, "5 8",
                 "Reads the name and the POSIX uid of any account by its id.", inout("user")),
    QB_OPERATION(getCloudUser, "users", kReads, QBOBJ_RETURNS_CODE, "2 5", "Lists the users of the cloud service.",
                 out("users")),
    QB_OPERATION(getUserInGroupName, "users", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Lists a group's primary members, or its secondary members too.", in("groupName").or_null(),
                 in("primary_only"), out("users")),
    QB_OPERATION(getUID, "users", kReads, QBOBJ_RETURNS_FOUND, "",
                 "Finds the id of a user by name; without one, of the guest.", in("name").or_null(), out("id")),
    QB_OPERATION(getUserName, "users", kReads, QBOBJ_RETURNS_FOUND, "",
                 "Finds the name of a user by id; of an unknown one, its number.", in("id"), out("name")),
    QB_OPERATION(getPosixUID, "users", kReads, QBOBJ_RETURNS_ID, "",
                 "Finds the POSIX uid of a user by name; without one, of the guest.", in("name").or_null()),
    QB_OPERATION(getPosixUIDbyUID, "users", kReads, QBOBJ_RETURNS_ID, "", "Finds the POSIX uid that goes with an id.",
                 in("id")),
    QB_OPERATION(getPosixUIDGID, "users", kReads, QBOBJ_RETURNS_FOUND, "",
                 "Finds the POSIX uid of a user and the POSIX gid of its primary group; without a name, the guest's.",
                 in("name").or_null(), out("uid"), out("gid")),
    QB_OPERATION(getUserHomeFolderTotalConsumedInByte, "users", kChanges, QBOBJ_RETURNS_CODE, "5",
                 "Adds up what all home folders use, measured anew.", out("bytes")),

    // ---- groups
    QB_OPERATION(getGID, "groups", kReads, QBOBJ_RETURNS_FOUND, "",
                 "Finds the id of a group by name; without one, of the guest group.", in("name").or_null(), out("id")),
    QB_OPERATION(getGroupName, "groups", kReads, QBOBJ_RETURNS_FOUND, "",
                 "Finds the name of a group by id; of an unknown one, its number.", in("id"), out("name")),
    QB_OPERATION(getPrimaryGID, "groups", kReads, QBOBJ_RETURNS_FOUND, "",
                 "Finds the id of a user's primary group; without a name, of the guest group.",
                 in("userName").or_null(), out("id")),
    QB_OPERATION(getPosixGID, "groups", kReads, QBOBJ_RETURNS_ID, "",
                 "Finds the POSIX gid of a group by name; without one, of the guest group.", in("name").or_null()),
    QB_OPERATION(getPosixGIDbyGID, "groups", kReads, QBOBJ_RETURNS_ID, "", "Finds the POSIX gid that goes with an id.",
                 in("id")),
    QB_OPERATION(isMemberOfGroup, "groups", kReads, QBOBJ_RETURNS_ANSWER, "",
                 "Tells whether a user is a member of a group: 0 yes, 1 no.", in("userName").or_null(),
                 in("groupName").or_null()),
    QB_OPERATION(getGroupCollection, "groups", kReads, QBOBJ_RETURNS_CODE, "2 5 8",
                 "Lists groups: filtered, in order, page by page, with quotas and secondary members.", out("groups"),
                 in("query").or_null().ignores("opt include_admin name_fix")),
    QB_OPERATION(getGroup, "groups", kReads, QBOBJ_RETURNS_CODE, "5 8",
                 "Always fails: groups are read through the list.", inout("group")),
    QB_OPERATION(getSystemGroup, "groups", kReads, QBOBJ_RETURNS_CODE, "2 5 8",
                 "Reads the name and the POSIX gid of any group by its id.", inout("group")),
    QB_OPERATION(addGroup, "groups", kChanges, QBOBJ_RETURNS_CODE, "5 8 803 804 806",
                 "Creates groups with their quotas and secondary members.",
                 inout("group").or_null().chained().ignores(kNotOfAGroup).keeps(kMembersPassword)),
    QB_OPERATION(deleteGroup, "groups", kChanges, QBOBJ_RETURNS_CODE, "5 6 8 822 844",
                 "Removes groups; their names and ids stay taken.", in("group").or_null().chained()),
    QB_OPERATION(modifyGroup, "groups", kChanges, QBOBJ_RETURNS_CODE, "5 8 803 806",
                 "Renames groups, sets their quotas, replaces their secondary members.",
                 in("group").or_null().chained().ignores(kNotOfAGroup).keeps(kMembersPassword)),

    // ---- passwords, account defaults, security
    QB_OPERATION(getAdminPassword, "passwords", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Reads the administrator's recovery settings and shell access.", out("admin")),
    QB_OPERATION(setAdminPassword, "passwords", kChanges, QBOBJ_RETURNS_CODE, "2 5 8",
                 "Sets the administrator's recovery settings, shell access and password; root gets the same.",
                 in("admin").ignores("ResetFlag")),
    QB_OPERATION(setUserPassword, "passwords", kChanges, QBOBJ_RETURNS_CODE, "2 5 8", "Sets a user's password.",
                 in("pw")),
    QB_OPERATION(setMyPassword, "passwords", kChanges, QBOBJ_RETURNS_CODE, "2 5 8",
                 "Changes a user's password after checking the old one.", in("pw")),
    QB_OPERATION(getAccountDefault, "account defaults", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Reads the defaults for new accounts.", out("def")),
    QB_OPERATION(setAccountDefault, "account defaults", kChanges, QBOBJ_RETURNS_CODE, "5 8",
                 "Writes the defaults for new accounts.", in("def").ignores("GroupId")),
    QB_OPERATION(getSecurity, "security", kReads, QBOBJ_RETURNS_CODE, "2 5", "Reads the directory settings.",
                 out("security")),
    QB_OPERATION(setSecurity, "security", kChanges, QBOBJ_RETURNS_CODE, "2 5 8 819 820 833",
                 "Writes the directory settings.",
                 in("security").ignores("restrictAccountOu passWord domainSid domainGroupAdminGID domainAdminUID")),
    QB_OPERATION(setSecurityIdmapBackend, "security", kChanges, QBOBJ_RETURNS_CODE, "5 8",
                 "Sets how directory ids become POSIX ids: tdb or rid.", in("backend").one_of(kIdmapBackends)),
    QB_OPERATION(getSecurityAdsProgress, "security", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Reads how far the import of directory accounts is.", out("progress")),

    // ---- SSH public keys
    QB_OPERATION(addSshPublicKey, "SSH public keys", kChanges, QBOBJ_RETURNS_CODE, "2 5 802 836 837 842",
                 "Adds a user's SSH public key.", inout("key")),
    QB_OPERATION(deleteSshPublicKey, "SSH public keys", kChanges, QBOBJ_RETURNS_CODE, "5 838",
                 "Removes an SSH public key.", in("key").ignores("Type Key Comment Fingerprint Title ServeFor")),
    QB_OPERATION(setSshPublicKeyById, "SSH public keys", kChanges, QBOBJ_RETURNS_CODE, "2 5 838",
                 "Changes the title and the use of an SSH public key.",
                 in("key").ignores("Type Key Comment Fingerprint")),
    QB_OPERATION(getSshPublicKeyById, "SSH public keys", kReads, QBOBJ_RETURNS_CODE, "2 5 838",
                 "Reads an SSH public key.", in("id"), out("key")),
    QB_OPERATION(getSshPublicKeyTiedRootKeyById, "SSH public keys", kReads, QBOBJ_RETURNS_CODE, "2 5 838",
                 "Reads root's twin of an SSH public key of the administrator.", in("id"), out("key")),
    QB_OPERATION(getSshPublicKeyCollection, "SSH public keys", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Reads the SSH public keys of all users but root.", out("keys")),

    // ---- users, creating
    QB_OPERATION(addUser, "users", kChanges, QBOBJ_RETURNS_CODE, "2 5 8 801 802 806 809 834 843 845",
                 "Creates users with their quotas, home folders, Time Machine allowances and aliases.",
                 inout("user").or_null().chained().ignores(kNotOfANewUser)),
    QB_OPERATION(addUserList, "users", kChanges, QBOBJ_RETURNS_CODE, "5 8",
                 "Creates the users of a list that was checked before.",
                 inout("user").or_null().chained().ignores(kNotOfAList)),
    QB_OPERATION(checkUserList, "users", kReads, QBOBJ_RETURNS_CODE, "1 2 5 8 801 806 809",
                 "Reads and checks the list of users in the file /tmp/user_list.txt.", out("users"), out("groups"),
                 in("existingUsers").or_null(), in("existingGroups").or_null()),

    // ---- users, changing and removing
    QB_OPERATION(modifyUser, "users", kChanges, QBOBJ_RETURNS_CODE, "2 5 8 801 806 809 832 843 845",
                 "Changes users: name, password, e-mail, group, lock, shell, quotas, home folder, Time Machine, alias.",
                 inout("user").or_null().chained().ignores(kNotOfAChange).keeps("Password")),
    QB_OPERATION(setPrimaryGroupByName, "users", kChanges, QBOBJ_RETURNS_CODE, "5", "Sets a user's primary group.",
                 in("userName"), in("groupName")),
    QB_OPERATION(disableEnableLocalUserByName, "users", kChanges, QBOBJ_RETURNS_CODE, "5",
                 "Locks or unlocks the password of one local user or of all.", in("enable"), in("userName").or_null()),
    QB_OPERATION(modifyUserVisibleSnapFolder, "users", kChanges, QBOBJ_RETURNS_CODE, "5",
                 "Sets the folder in which a user sees the snapshots of the home folder.", in("userId"),
                 in("folder").or_null()),
    QB_OPERATION(deleteUser, "users", kChanges, QBOBJ_RETURNS_CODE, "2 5 6 8",
                 "Removes users by id, with everything that hangs on them.",
                 inout("user").or_null().chained().ignores("UserName")),
    QB_OPERATION(deleteUserByName, "users", kChanges, QBOBJ_RETURNS_CODE, "2 5 6 8",
                 "Removes local users by name, with everything that hangs on them.",
                 inout("user").or_null().chained().ignores("resource_id UserId")),

    // ---- SMB user-name map
    QB_OPERATION(getSmbUserNameMapCollection, "SMB user-name map", kReads, QBOBJ_RETURNS_CODE, "2 5 8",
                 "Reads the second names under which SMB clients reach local accounts.", out("maps")),
    QB_OPERATION(getSmbUserNameMapCount, "SMB user-name map", kReads, QBOBJ_RETURNS_COUNT, "",
                 "Counts the rows that a Unix user name has of one type.", in("unixUserName"),
                 in("type").one_of(kMapTypes)),
    QB_OPERATION(addSmbUserNameMap, "SMB user-name map", kChanges, QBOBJ_RETURNS_CODE, "5 8", "Adds a second name.",
                 in("map")),
    QB_OPERATION(deleteSmbUserNameMap, "SMB user-name map", kChanges, QBOBJ_RETURNS_CODE, "5 8",
                 "Removes all second names of a Unix user name.", in("unixUserName")),
    QB_OPERATION(setSmbUserNameMapUnixUserNameForAll, "SMB user-name map", kChanges, QBOBJ_RETURNS_CODE, "5 8",
                 "Moves all second names from one Unix user name to another.", in("oldUnixName"), in("newUnixName")),
    QB_OPERATION(setSmbUserNameMapSmbUserName, "SMB user-name map", kChanges, QBOBJ_RETURNS_CODE, "5 8",
                 "Changes the second name that a Unix user name has of one type.", in("map")),
};

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
