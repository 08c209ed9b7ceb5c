// Calls of users, groups, passwords, keys and the user-name map.
#pragma once

#include "anomaly/trial.h"

namespace test {

/// The list that checkUserList finds in its place.
inline constexpr char kUserList[] =
    "import_list\nUser_Name\tGroup_Name\tEmail_Address\tPassword\n"
    "gina\tnewgroup\tgina@example.com\tsecret\nhans\tstaff\t\tsecret\n";

inline constexpr Exempt kAccountsLeftOutputs[] = {
    {"getUserCollection", "the users read so far stay in the list"},
    {"getGroupCollection", "the groups read so far stay in the list"},
    {"addUser", "the records before the failing one keep what they were given"},
    {"addUserList", "the records before the failing one keep what they were given"},
    {"addGroup", "the records before the failing one keep what they were given"},
    {"modifyUser", "the records before the failing one keep what they were given"},
    {"deleteUser", "the records before the failing one keep what they were given"},
    {"getUID", "no id is -1"},
    {"getGID", "no id is -1"},
    {"getPrimaryGID", "no id is -1"},
    {"getUserName", "no name is empty"},
    {"getGroupName", "no name is empty"},
};

inline constexpr Exempt kAccountsSilent[] = {
    {"getUserHomeFolderTotalConsumedInByte", "tells its failures to the log only"},
};

inline constexpr Exempt kAccountsGoesOn[] = {
    {"addUser", "the allowance could not be written, the user is created without it"},
};

inline constexpr Exempt kAccountsOddAnswers[] = {
    {"deleteUser (two): fails with 8 \"Cannot delete user ssh public key (user_name=anna)\"",
     "any failure to remove the keys is told so"},
    {"deleteUserByName: fails with 8 \"Cannot delete user ssh public key (user_name=bob)\"",
     "any failure to remove the keys is told so"},
};

inline constexpr MemoryException kAccountsMemoryExceptions[] = {
    {"addUser", 0, "Failed DB Query for 'INSERT $timemachine_quota'",
     "the user is created without the allowance, and the caller reads that in the error record"},
    {"deleteUser", 8, "Cannot delete user ssh public key (user_name=", "any failure to remove the keys is told so"},
    {"deleteUserByName", 8,
     "Cannot delete user ssh public key (user_name=", "any failure to remove the keys is told so"},
    {"getUserHomeFolderTotalConsumedInByte", 5, "", "tells its failures to the log only"},
};

/// The password of the stored hash is "password".
inline constexpr Trial kAccountsTrials[] = {
    {"getUserCollection", "all", R"({"with_password":1})"},
    {"getUserCollection", "page", R"({"query":{"limit":2,"offset":1,"name_like":"%a%","order":-1},"with_password":0})"},
    {"getUserCollection", "directory", R"({"query":{"ads":1},"with_password":0})", Accounts::directory},
    {"getUser", "all details", R"({"user":{"resource_id":100}})"},
    {"getUser", "live directory user", R"({"user":{"UserName":"EXAMPLE\\live"}})", Accounts::live},
    {"getSystemUser", "", R"({"user":{"UserId":98}})"},
    {"getCloudUser", "", "{}"},
    {"getUserInGroupName", "primary", R"({"groupName":"staff","primary_only":1})"},
    {"getUserInGroupName", "all", R"({"groupName":"staff","primary_only":0})"},
    {"getUID", "local", R"({"name":"anna"})"},
    {"getUID", "directory", R"({"name":"EXAMPLE\\fred"})", Accounts::directory},
    {"getUserName", "", R"({"id":100})"},
    {"getPosixUID", "local", R"({"name":"anna"})", Accounts::local, 100},
    {"getPosixUID", "directory", R"({"name":"EXAMPLE\\fred"})", Accounts::directory, 10010},
    {"getPosixUIDbyUID", "local", R"({"id":100})", Accounts::local, 100},
    {"getPosixUIDbyUID", "directory", R"({"id":-10})", Accounts::directory, 10010},
    {"getPosixUIDGID", "", R"({"name":"anna"})"},
    {"getUserHomeFolderTotalConsumedInByte", "", "{}"},

    {"getGID", "local", R"({"name":"staff"})"},
    {"getGID", "directory", R"({"name":"EXAMPLE\\domain users"})", Accounts::directory, 0xFFFFFFFF},
    {"getGroupName", "", R"({"id":110})"},
    {"getPrimaryGID", "", R"({"userName":"anna"})"},
    {"getPosixGID", "", R"({"name":"staff"})", Accounts::local, 110},
    {"getPosixGIDbyGID", "local", R"({"id":110})", Accounts::local, 110},
    {"getPosixGIDbyGID", "directory", R"({"id":-20})", Accounts::directory, 10020},
    {"isMemberOfGroup", "secondary", R"({"userName":"anna","groupName":"editors"})"},
    {"isMemberOfGroup", "no", R"({"userName":"anna","groupName":"empty"})", Accounts::local, 1},
    {"getGroupCollection", "all", "{}"},
    {"getGroupCollection", "page", R"({"query":{"limit":1,"offset":1,"name_like":"%t%","order":-2}})"},
    {"getGroup", "", R"({"group":{"resource_id":110}})", Accounts::local, 5},
    {"getSystemGroup", "", R"({"group":{"GroupId":110}})"},
    {"addGroup", "two", R"({"group":[{"GroupName":"crew","SecondaryMember":[{"UserId":100},{"UserId":101}],
        "GroupQuota":[{"ShareId":"tank/media","HardMB":100}]},{"GroupId":200,"GroupName":"guests"}]})"},
    {"deleteGroup", "", R"({"group":[{"resource_id":111},{"resource_id":112}]})"},
    {"modifyGroup", "", R"({"group":{"resource_id":110,"GroupName":"team","SecondaryMember":[{"UserId":102}],
        "GroupQuota":[{"ShareId":"tank/media","HardMB":0},{"ShareId":"tank/photos","HardMB":30}]}})"},

    {"getAdminPassword", "", "{}"},
    {"setAdminPassword", "", R"({"admin":{"Password":"new","Question":"Who?","Answer":"Me","Email":"me@example.com",
        "Enabled":1,"Method":"mail","ShellAccess":1}})"},
    {"setUserPassword", "", R"({"pw":{"UserId":100,"Password":"new"}})"},
    {"setMyPassword", "", R"({"pw":{"UserName":"anna","OldPassword":"password","NewPassword":"new"}})"},
    {"getAccountDefault", "", "{}"},
    {"setAccountDefault", "", R"({"def":{"HomeVolumeId":"tank","DiskQuotaWarn":70,"DisallowPasswordChange":1,
        "HomeFolderCapacityLimit":5,"GroupMembership":"staff","PrivateTimeMachine":1,"PrivateTimeMachineSpace":5,
        "SnapshotProtection":1}})"},
    {"getSecurity", "", "{}"},
    {"setSecurity", "", R"({"security":{"Security":"ads","Realm":"example.com","workGroup":"EXAMPLE","orgUnit":"unit",
        "noSyncADS":1,"domainAdministrator":"chief","passWordServer":"dc.example.com","idmapBackend":"rid"}})"},
    {"setSecurityIdmapBackend", "", R"({"backend":"rid"})"},
    {"getSecurityAdsProgress", "", "{}"},

    {"addSshPublicKey", "user", R"({"key":{"UserId":101,"ServeFor":"","Type":"ssh-rsa","Key":"AAAAbob","Comment":"bob",
        "Fingerprint":"11:22","Title":"bob"}})"},
    {"addSshPublicKey", "administrator", R"({"key":{"UserId":98,"ServeFor":"rsync","Type":"ssh-rsa","Key":"AAAAnew",
        "Comment":"c","Fingerprint":"11:22","Title":"t"}})"},
    {"deleteSshPublicKey", "user", R"({"key":{"Id":3,"UserId":100}})"},
    {"deleteSshPublicKey", "administrator", R"({"key":{"Id":1,"UserId":98}})"},
    {"setSshPublicKeyById", "administrator", R"({"key":{"Id":1,"UserId":98,"Title":"new","ServeFor":""}})"},
    {"getSshPublicKeyById", "", R"({"id":3})"},
    {"getSshPublicKeyTiedRootKeyById", "", R"({"id":1})"},
    {"getSshPublicKeyCollection", "", "{}"},

    {"addUser", "all details", R"({"user":{"UserName":"gina","GroupName":"staff","HomeVolumeId":"tank","Email":"g@example.com",
        "Password":"secret","IsLocked":0,"ShellAccess":1,"UserQuota":[{"ShareId":"tank/media","HardMB":100},
        {"ShareId":"tank/photos","HardMB":10}],"TimeMachineQuota":{"Enabled":1,"CapacityMB":500},
        "HomeFolderSettings":{"SizeLimit":5000,"SnapshotProtectionEnabled":1,"VisibleSnapshot":1,"PrevVersions":1}}})"},
    {"addUser", "two, one with an id", R"({"user":[{"UserName":"gina","GroupName":"users","Password":"secret"},
        {"UserName":"hans","UserId":300,"GroupName":"staff","SysHash":"$1$abc$def"}]})"},
    {"addUser", "of the cloud", R"({"user":{"UserName":"ida@example.com","GroupName":"sky-loft","Password":"secret",
        "P2PUserName":"ida"}})"},
    {"addUserList", "", R"({"user":[{"UserId":300,"UserName":"gina","GroupName":"staff","Email":"g@example.com","Password":"hash"},
        {"UserId":301,"UserName":"hans","GroupName":"staff","Password":"hash"}]})"},
    {"checkUserList", "", R"({"existingUsers":{"User":[{"UserName":"anna"}]},"existingGroups":{"Group":[{"GroupName":"staff"}]}})"},

    {"modifyUser", "quotas", R"({"user":{"resource_id":100,"UserQuota":[{"ShareId":"tank/media","HardMB":0},
        {"ShareId":"tank/photos","HardMB":30}],"TimeMachineQuota":{"Enabled":1,"CapacityMB":7},
        "HomeFolderSettings":{"SizeLimit":9,"SnapshotProtectionEnabled":0,"VisibleSnapshot":1,"PrevVersions":0}}})"},
    {"modifyUser", "new name", R"({"user":{"resource_id":100,"UserName":"hannah","GroupName":"editors","Email":"h@example.com",
        "Password":"secret","IsLocked":1,"ShellAccess":1}})"},
    {"modifyUser", "two, one of the cloud", R"({"user":[{"resource_id":103,"UserName":"eve@example.com","P2PUserName":"eve"},
        {"resource_id":101,"SysHash":"$1$abc$def"}]})"},
    {"modifyUser", "directory user", R"({"user":{"resource_id":-10,"UserQuota":[{"ShareId":"tank/media","HardMB":7}]}})",
        Accounts::directory, 8},
    {"setPrimaryGroupByName", "", R"({"userName":"anna","groupName":"editors"})"},
    {"disableEnableLocalUserByName", "one", R"({"enable":0,"userName":"anna"})"},
    {"disableEnableLocalUserByName", "all", R"({"enable":1})"},
    {"modifyUserVisibleSnapFolder", "", R"({"userId":100,"folder":"old"})"},
    {"deleteUser", "two", R"({"user":[{"resource_id":100},{"resource_id":103}]})"},
    {"deleteUserByName", "", R"({"user":{"UserName":"bob"}})"},

    {"getSmbUserNameMapCollection", "", "{}"},
    {"getSmbUserNameMapCount", "", R"({"unixUserName":"dave@example.com","type":"uname"})", Accounts::local, 1},
    {"addSmbUserNameMap", "", R"({"map":{"UnixUserName":"anna","SmbUserName":"ann","Type":"uname"}})"},
    {"deleteSmbUserNameMap", "", R"({"unixUserName":"dave@example.com"})"},
    {"setSmbUserNameMapUnixUserNameForAll", "", R"({"oldUnixName":"dave@example.com","newUnixName":"anna"})"},
    {"setSmbUserNameMapSmbUserName", "", R"({"map":{"UnixUserName":"dave@example.com","SmbUserName":"david","Type":"uname"}})"},
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
