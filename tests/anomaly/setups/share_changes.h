// Calls that change shares.
#pragma once

#include "anomaly/trial.h"

namespace test {

/// A share that has everything but an application, so that it can be renamed; a bare one; a block volume.
inline constexpr char kShareChangesPopulation[] = R"sql(
DELETE FROM share;
INSERT INTO share (id,name,zfs_name,type,comment,path,volume_id,visible_snapdir,user_id,group_id,user_access,
    group_access,everyone_access,non_owner_delete,update_ts) VALUES
    (3,'films','tank/films','share','all of them','/tank/films','tank','.snapshots',100,110,7,5,0,1,0),
    (4,'bare','tank/bare','share',NULL,'/no/such/bare','tank',NULL,NULL,NULL,7,7,7,0,0),
    (5,'block','tank/block','zvol','','/no/such/block','tank',NULL,NULL,NULL,7,7,7,0,0);
UPDATE _volume SET blk_free=10485760;
INSERT INTO zfs_attr VALUES(3,1000,200,300,400,1,0,1,'latency','always','tank/old');
INSERT INTO _zfs_stat VALUES(3,10485760,20971520,3145728,4194304,5242880,6291456,7340032,'1.25x');
INSERT INTO `$snapshot` (zfs_name,name,type,created_on) VALUES('tank/films','a',1,1000),('tank/films','b',2,4000);
INSERT INTO `$snapshot_clones` (id,cloned_zfs_name,parent_snapshot_name,parent_zfs_name)
    VALUES(1,'copy','a','films'),(2,'films','a','origin');
INSERT INTO backup (id,name,src_type,src_share_proto,dst_type,dst_share_proto) VALUES(1,'nightly','share','films','usb','1'),
    (2,'weekly','usb','1','share','films');
INSERT INTO snapshot_schedule VALUES(3,1,'5','4','3','2','1',11,12,13,14);
INSERT INTO snapshot_management VALUES(3,1,1,2592000,30,'0101',1,0),(3,1,2,86400,7,'0101',1,0),
    (4,0,1,2592000,30,'0000',0,0);
INSERT INTO cifs_share_option (share_id,cifs_access,cifs_guest_access,available) VALUES(3,'disabled',1,1);
INSERT INTO cifs_dfs_option VALUES(3,'tank','films','link','10.0.0.9','films');
INSERT INTO afp_share_option VALUES(3,1,'writeable',1,52,5);
INSERT INTO nfs_share_option VALUES(3,1,'readonly',1);
INSERT INTO ftp_share_option VALUES(3,1,'writeable',1,2,23);
INSERT INTO http_share_option VALUES(3,1,'disabled',1);
INSERT INTO rsync_share_option VALUES(3,1,'readonly','enabled');
INSERT INTO rsync_user_password_acl VALUES(3,'backup','secret'),(3,'mirror','hidden');
INSERT INTO dlna_share_option VALUES(3,1,'readonly',2);
INSERT INTO daap_share_option VALUES(3,1);
INSERT INTO zvol_share_option VALUES(3,2048,1),(5,4096,0);
INSERT INTO host (id,name) VALUES(1,'10.0.0.0/8');
INSERT INTO host_acl VALUES(3,1,'cifs',1,1,0),(3,1,'nfs',1,0,1),(3,1,'rsync',1,1,0);
INSERT INTO user_acl VALUES(3,100,'cifs',1,0),(3,100,'http',1,0);
INSERT INTO group_acl VALUES(3,111,'cifs',1,1),(3,111,'http',1,1);
INSERT INTO user_quota VALUES(100,3,80,100);
INSERT INTO `$application_on_share` VALUES('tank/bare','surveillance','camera 1');
UPDATE service_http SET share_name='films';
)sql";

inline constexpr Exempt kShareChangesOddAnswers[] = {
    {"modifyShare (owner by name): fails with 8 \"Unknown ", "whatever keeps the account from being found is told so"},
};

inline constexpr Trial kShareChangesTrials[] = {
    {"modifyShare", "renamed and everything changed", R"({"share":{"ShareId":"3","ShareName":"movies","Comment":"some",
        "VisibleSnapFolder":".old","QuotaMB":10,"RefQuotaMB":100,"Compression":0,"LogBias":"throughput",
        "Sync":"disabled","Stat":{"User":{"resource_id":101},"Group":{"resource_id":111},"UserAccess":"ReadWrite",
            "GroupAccess":"ReadOnly","EveryoneAccess":"ReadOnly","NonOwnerDelete":0},
        "Cifs":{"DefaultAccess":"ReadOnly","AllowGuestAccess":0,"FileCreateGroupRights":"ReadWrite","EnableDFS":1,
            "HostAcl":[{"Host":{"HostName":"desk"},"Access":"ReadOnly"}],
            "UserAcl":[{"User":{"resource_id":100},"Access":"ReadWrite"}],
            "GroupAcl":[{"Group":{"resource_id":110},"Access":"Disabled"}],
            "DfolderAcl":[{"Name":"link","Address":"10.0.0.8","RemoteShare":"films"}]},
        "Afp":{"DefaultAccess":"ReadOnly","NewFileFolderPermAutoset":0},
        "Nfs":{"DefaultAccess":"ReadWrite","HostAcl":[{"Host":{"HostId":1},"Access":"Disabled","Root":1}]},
        "Ftp":{"NotAvailable":1,"FileCreateGroupRights":"ReadOnly"},
        "Dlna":{"MediaType":"Music"},"Daap":{"NotAvailable":1},
        "Rsync":{"DefaultAccess":"ReadWrite","PasswordProtection":"Disabled",
            "UserPasswordAcl":[{"UserName":"backup","Password":"new"}]},
        "Http":{"DefaultAccess":"Disabled","GroupAcl":[{"Group":{"resource_id":110},"Access":"ReadWrite"}]},
        "Zvol":{"SizeKB":8192},"UsedBy":[{"AppName":"tm","AppData":"x"}],
        "SnapshotSchedule":{"Enabled":0,"Minute":"1"},
        "CustomSnapshotSchedule":"1","SnapshotRetentionRules":[{"Type":2,"Number":3,"Lifetime":4}],
        "UserQuota":[{"AccountId":100,"HardMB":50},{"AccountId":101,"HardMB":60}],
        "GroupQuota":[{"AccountId":110,"HardMB":70}]}})"},
    {"modifyShare", "what it has not yet", R"({"share":{"ShareId":"4","Cifs":{},"Afp":{},"Nfs":{},"Ftp":{},
        "Dlna":{"DefaultAccess":"ReadOnly","MediaType":"All"},"Daap":{},
        "Rsync":{"DefaultAccess":"ReadOnly","PasswordProtection":"Enabled","UserPasswordAcl":[{"UserName":"backup",
            "Password":"secret"}]},"Http":{},"SnapshotSchedule":{"Enabled":1},
        "SnapshotRetentionRules":[{"Type":3,"Number":1,"Lifetime":2}]}})"},
    {"modifyShare", "some protocols no more", R"({"share":{"ShareId":"3","Dlna":{"DefaultAccess":"Disabled"},
        "Rsync":{"DefaultAccess":"Disabled"},"Http":{"NotAvailable":1}}})"},
    {"modifyShare", "owner by name", R"({"share":{"ShareId":"4","Stat":{"User":{"UserName":"EXAMPLE\\fred"},
        "Group":{"GroupName":"staff"}}}})",
     Accounts::directory},
    {"modifyShare", "two, the second unknown", R"({"share":[{"ShareId":"3","Comment":"x","Daap":{"NotAvailable":1}},
        {"ShareId":"99"}]})",
     Accounts::local, 6},
    {"modifyShare", "in use", R"({"share":{"ShareId":"4","ShareName":"other"}})", Accounts::local, 903},
    {"modifyShareVisibleSnapFolder", "", R"({"zfsName":"tank/films","folder":"old"})"},
    {"modifyShareUsedBy", "", R"({"shareId":"3","usedby":{"AppName":"tm","AppData":"x"}})"},
    {"modifyShareUsedByExclusive", "",
     R"({"zfsName":"tank/films","usedby":{"AppName":"surveillance","AppData":"camera 2"}})"},
    {"modifyZvol", "", R"({"zfsName":"tank/block","shareName":"blocks","comment":"disk","sizeKB":8192,"isSparse":1})"},
    {"modifyShareSnapshotSchedule", "",
     R"({"shareName":"films","schedule":{"Enabled":0,"Minute":"1","PurgeManualSnapshot":1}})"},
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
