// What each operation is called with while everything around it fails, and the database it is called on.
#pragma once

#include <cstddef>
#include <cstdint>

namespace test {

/// Where the appliance's accounts come from.
enum class Accounts { local, directory, live };

/// One call of an operation: its arguments by name, as JSON.
struct Trial {
    const char *operation;  // without the prefix
    const char *label;      // tells the calls of one operation apart
    const char *arguments;
    Accounts accounts = Accounts::local;
    uint32_t code = 0;      // what it returns when nothing fails
};

/// Something in every table that the operations touch.
inline constexpr char kPopulation[] = R"sql(
INSERT INTO share (id,name,zfs_name,type,comment,path,volume_id) VALUES
    (1,'media','tank/media','file','films','/tank/media','tank'), (2,'photos','tank/photos','file','','/tank/photos','tank');
INSERT INTO cifs_share_option (share_id,available,cifs_hide_share) VALUES(1,1,1);
INSERT INTO dlna_share_option (share_id,available,access,media_type) VALUES(1,1,'rw',3);
INSERT INTO `$group` (id,gname,is_privileged,rid) VALUES
    (110,'staff',0,NULL), (111,'editors',0,NULL), (112,'empty',0,NULL), (-20,'EXAMPLE\domain users',0,513);
INSERT INTO `$user` (id,uname,passwd,email,home,group_id,shell,is_privileged,last_changed,is_locked,shell_access,rid)
VALUES
    (100,'anna','$1$saltsalt$qjXMvbEw8oaL.CzflDtaK/','anna@example.com','/home/anna',110,'/bin/bash',0,15000,0,1,NULL),
    (101,'bob','$1$saltsalt$qjXMvbEw8oaL.CzflDtaK/','','/home/bob',99,'/bin/false',0,15000,1,0,NULL),
    (102,'clara','*','clara@example.com','/home/clara',NULL,'/bin/false',0,15000,0,0,NULL),
    (103,'dave@example.com','*','dave@example.com','/home/dave@example.com',97,'/bin/false',0,15000,0,0,NULL),
    (95,'emil','*','','/home/emil',99,'/bin/false',-1,15000,0,0,NULL),
    (-10,'EXAMPLE\fred',NULL,NULL,'/home/fred',-20,'/bin/false',0,15000,0,0,1105),
    (10011,'EXAMPLE\live',NULL,NULL,'/home/live',-20,'/bin/false',0,15000,0,0,1106);
INSERT INTO `$group_has_user` (user_id,group_id) VALUES(100,111),(101,110),(101,111);
INSERT INTO `$home_folder` (user_id,snapshot_protection_enabled,quota,visible_snapdir,prev_versions)
    VALUES(100,1,5000000,'snapshots',1),(101,0,0,'',0),(103,0,0,'',0);
INSERT INTO `_hf_zfs_stat` (user_id,used) VALUES(100,1000),(101,2000);
INSERT INTO `$home_folder_snapshot` (user_name,home_dir,name,type,created_on)
    VALUES('anna','/home/anna','daily',1,1000),('bob','/home/bob','daily',1,1000);
INSERT INTO `$timemachine_quota` (user_id,enabled,capacity_mb) VALUES(100,1,1000),(101,1,2000);
INSERT INTO user_quota (user_id,share_id,mb_soft,mb_hard) VALUES(100,1,80,100),(100,2,8,10),(101,1,80,100);
INSERT INTO _user_quota_stat (share_id,user_id,mb_used) VALUES(1,100,50),(1,101,5);
INSERT INTO group_quota (group_id,share_id,mb_soft,mb_hard) VALUES(110,1,80,100),(111,2,8,10);
INSERT INTO _group_quota_stat (share_id,group_id,mb_used) VALUES(1,110,50);
INSERT INTO user_acl (share_id,user_id,proto,read,write) VALUES(1,100,'cifs',1,1);
INSERT INTO group_acl (share_id,group_id,proto,read,write) VALUES(1,110,'cifs',1,0);
INSERT INTO ssh_public_key (id,user_id,serve_for,type,key,comment,fingerprint,title) VALUES
    (1,98,'rsync','ssh-rsa','AAAAadmin','admin@desk','aa:bb','desk'),
    (2,0,'rsync','ssh-rsa','AAAAadmin','admin@desk','aa:bb','root_desk'),
    (3,100,'','ssh-rsa','AAAAanna','anna@desk','cc:dd','laptop');
INSERT INTO smb_username_map (unix_uname,smb_uname,type) VALUES('dave@example.com','dave','uname');
INSERT INTO `$log` (tstamp,severity,category,msg_tag,msg_args_xml) VALUES
    (1000,'info','system','LOGMSG_A',NULL),(2000,'warning','disk','LOGMSG_B','<a/>'),(3000,'err','share','LOGMSG_C',NULL);
INSERT INTO network_if (name,mac,protocol,ip,dns1,dns2,gateway,subnet) VALUES
    ('eth0','0:1:2:3:4:5','static','10.0.0.2','10.0.0.1','','10.0.0.1','255.255.255.0'),
    ('eth1','0:1:2:3:4:6','dhcp','','','','','');
INSERT OR REPLACE INTO service_misc (key,val,table_name,column_name) VALUES
    ('plain','1',NULL,NULL),('mirrored','8080','service_https','port');
INSERT INTO `$registry` (key,value) VALUES('colour','blue');
UPDATE _ads_importer SET state=1,total_user=10,curr_user=5,total_group=4,curr_group=1;
)sql";

/// The list that checkUserList finds in its place.
inline constexpr char kUserList[] =
    "import_list\nUser_Name\tGroup_Name\tEmail_Address\tPassword\n"
    "gina\tnewgroup\tgina@example.com\tsecret\nhans\tstaff\t\tsecret\n";

/// The password of the stored hash is "password".
inline constexpr Trial kSetups[] = {
    {"getLog", "all", "{}"},
    {"getLog", "filtered page", R"({"query":{"limit":2,"offset":1,"severity":"warn","category_in":"'disk','share'","order":1}})"},
    {"deleteLog", "some", R"({"query":{"timestamp_max":2500,"category_in":"'disk'"}})"},
    {"deleteLog", "all", "{}"},
    {"truncateLog", "", R"({"keep":1})"},
    {"addLog", "", R"({"time":4000,"severity":"info","category":"share","msgTag":"LOGMSG_D","argsXml":"<a>1</a>"})"},

    {"getNetworkInterfaceCollection", "", "{}"},
    {"getNetworkInterface", "", R"({"nif":{"Name":"eth0"}})"},
    {"addNetworkInterface", "", R"({"nif":{"Name":"eth2","Mac":"0:1:2:3:4:7","Protocol":"static","IP":"10.0.0.9",
        "DNS1":"10.0.0.1","DNS2":"","Gateway":"10.0.0.1","Subnet":"255.0.0.0"}})"},
    {"deleteNetworkInterface", "", R"({"name":"eth0"})"},
    {"modifyNetworkInterface", "", R"({"nif":{"Name":"eth0","Mac":"0:1:2:3:4:8","Protocol":"static","IP":"10.0.0.8",
        "DNS1":"10.0.0.8","DNS2":"10.0.0.8","Gateway":"10.0.0.8"}})"},

    {"getFolderAttribute", "share", R"({"path":"/tank/media"})"},
    {"getFolderAttribute", "below a home folder", R"({"path":"/home/anna/letters/old"})"},
    {"getServiceEntry", "", R"({"key":"plain"})"},
    {"setServiceEntry", "new", R"({"key":"fresh","val":"1"})"},
    {"setServiceEntry", "mirrored", R"({"key":"mirrored","val":"9090"})"},
    {"setServiceEntry", "removed", R"({"key":"plain"})"},
    {"getRegistryEntry", "", R"({"key":"colour"})"},
    {"setRegistryEntry", "new", R"({"key":"size","val":"big"})"},
    {"setRegistryEntry", "present", R"({"key":"colour","val":"red"})"},

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
