// Calls of the shares.
#pragma once

#include "anomaly/trial.h"

namespace test {

/// A share that has everything that a share can have, and one that is small. Two runs of a call leave the same
/// database.
inline constexpr char kSharesPopulation[] = R"sql(
DELETE FROM share;
CREATE TRIGGER timeless AFTER INSERT ON share BEGIN UPDATE share SET update_ts=0 WHERE id=NEW.id; END;
CREATE TRIGGER timeless_process AFTER INSERT ON process_on_share BEGIN
    UPDATE process_on_share SET ts=0 WHERE share_id=NEW.share_id AND pid=NEW.pid; END;
INSERT INTO share (id,name,zfs_name,type,comment,path,volume_id,visible_snapdir,user_id,group_id,user_access,
    group_access,everyone_access,non_owner_delete) VALUES
    (3,'films','tank/films','share','all of them','/no/such/folder','tank','.snapshots',100,110,7,5,0,1),
    (4,'block','tank/block','zvol','','/no/such/block','tank',NULL,NULL,NULL,7,7,7,0);
INSERT INTO zfs_attr VALUES(3,1000,200,300,400,1,0,1,'latency','always','tank/old');
INSERT INTO _zfs_stat VALUES(3,10485760,20971520,3145728,4194304,5242880,6291456,7340032,'1.25x');
INSERT INTO `$snapshot` (zfs_name,name,type,created_on) VALUES('tank/films','a',1,1000),('tank/films','b',2,4000);
INSERT INTO `$snapshot_clones` (id,cloned_zfs_name,parent_snapshot_name,parent_zfs_name)
    VALUES(1,'copy','a','films');
INSERT INTO process_on_share (share_id,pid,blocking) VALUES(3,4711,1);
INSERT INTO snapshot_schedule VALUES(3,1,'5','4','3','2','1',11,12,13,14);
INSERT INTO snapshot_management VALUES(3,1,1,2592000,30,'0101',1,0);
INSERT INTO cifs_share_option (share_id,cifs_access,cifs_guest_access,available) VALUES(3,'disabled',1,1);
INSERT INTO cifs_dfs_option VALUES(3,'tank','films','link','10.0.0.9','films');
INSERT INTO afp_share_option VALUES(3,1,'writeable',1,52,5);
INSERT INTO nfs_share_option VALUES(3,1,'readonly',1);
INSERT INTO ftp_share_option VALUES(3,1,'writeable',1,2,23);
INSERT INTO http_share_option VALUES(3,1,'disabled',1);
INSERT INTO rsync_share_option VALUES(3,1,'readonly','enabled');
INSERT INTO rsync_user_password_acl VALUES(3,'backup','secret');
INSERT INTO dlna_share_option VALUES(3,1,'readonly',2);
INSERT INTO daap_share_option VALUES(3,1);
INSERT INTO zvol_share_option VALUES(3,2048,1);
INSERT INTO host (id,name) VALUES(1,'10.0.0.0/8');
INSERT INTO host_acl VALUES(3,1,'cifs',1,1,0),(3,1,'nfs',1,0,1);
INSERT INTO user_acl VALUES(3,100,'cifs',1,0),(3,100,'http',1,0);
INSERT INTO group_acl VALUES(3,111,'cifs',1,1),(3,111,'http',1,1);
INSERT INTO user_quota VALUES(100,3,80,100);
INSERT INTO group_quota VALUES(110,3,800,1000);
INSERT INTO `$application_on_share` VALUES('tank/films','surveillance','camera 1');
)sql";

inline constexpr Exempt kSharesLeftOutputs[] = {
    {"getShareCollection", "the shares read so far stay in the list"},
    {"getSimpleShareCollection", "the shares read so far stay in the list"},
    {"getShareAndZvolCollection", "the shares read so far stay in the list"},
    {"getSubvolumeShareCollection", "the shares read so far stay in the list"},
    {"getAccessibleShareCollection", "the shares read so far stay in the list"},
    {"queryShare", "the shares read so far stay in the list"},
    {"getShare", "the records before the failing one are filled"},
    {"addShare", "the records before the failing one keep what they were given"},
};

inline constexpr Exempt kSharesOddAnswers[] = {
    {"addShare (directory mode): fails with 8 \"Cannot get ", "whatever keeps the guest from being found is told so"},
    {"addShare (everything): fails with 8 \"Cannot get ", "whatever keeps the guest from being found is told so"},
    {"addShare (two, one with a path): fails with 8 \"Cannot get ",
     "whatever keeps the guest from being found is told so"},
    {"getAccessibleShareCollection (cifs, user): fails with ", "whatever keeps the user from being found is told so"},
    {"getAccessibleShareCollection (http, user): fails with ", "whatever keeps the user from being found is told so"},
    {"getAccessibleShareCollection (http, nobody): fails with 2 ", "a check that fails is told as one"},
    {"getPathAccess: succeeds with other results 0", "what the database does not say is not allowed"},
    {"getShareAccess: succeeds with other results 0", "what the database does not say is not allowed"},
};

inline constexpr Trial kSharesTrials[] = {
    {"getShareCollection", "", "{}"},
    {"getSimpleShareCollection", "", "{}"},
    {"getShareAndZvolCollection", "", "{}"},
    {"getSubvolumeShareCollection", "", "{}"},
    {"getAccessibleShareCollection", "cifs, user", R"({"userName":"clara","protocolName":"cifs"})"},
    {"getAccessibleShareCollection", "http, nobody", R"({"protocolName":"http"})"},
    {"getAccessibleShareCollection", "http, user", R"({"userName":"clara","protocolName":"http"})"},
    {"getAccessibleShareCollection", "nfs", R"({"protocolName":"nfs"})", Accounts::local, 2},
    {"getShare", "two, the second unknown", R"({"share":[{"ShareName":"block"},{"ShareId":"99"}]})", Accounts::local,
     6},
    {"getShareId", "", R"({"shareName":"films"})", Accounts::local, 3},
    {"getShareAccess", "", R"({"shareName":"films","userName":"bob"})"},
    {"getPathAccess", "", R"({"path":"/no/such/folder/a","userName":"anna"})"},
    {"getUsedByOn", "data set", R"({"name":"tank/films"})"},
    {"getUsedByOn", "volume", R"({"name":"tank"})"},
    {"queryShare", "", R"({"volumeId":"tank","namePattern":"b%","zfsName":"tank/block"})", Accounts::directory},
    {"getShareSnapshotSchedule", "", R"({"shareName":"films"})"},
    {"getShareProcess", "", R"({"zfsName":"tank/films"})"},

    {"addShare", "everything", R"({"share":{"ShareName":"music","VolumeId":"tank","Comment":"songs","QuotaMB":10,
        "Stat":{"User":{"resource_id":100},"Group":{"resource_id":110},"UserAccess":"ReadWrite",
            "GroupAccess":"ReadOnly","EveryoneAccess":"Disabled"},
        "Cifs":{"DefaultAccess":"ReadOnly","FileCreateGroupRights":"ReadWrite","FileCreateEveryoneRights":"ReadOnly",
            "FolderCreateGroupRights":"ReadWrite","FolderCreateEveryoneRights":"ReadOnly",
            "HostAcl":[{"Host":{"HostId":1},"Access":"ReadOnly"},{"Host":{"HostName":"desk"},"Access":"ReadOnly"}],
            "UserAcl":[{"User":{"resource_id":100},"Access":"ReadWrite"},{"User":{"resource_id":101},"Access":"ReadOnly"}],
            "GroupAcl":[{"Group":{"resource_id":110},"Access":"Disabled"}],
            "DfolderAcl":[{"Name":"link","Address":"10.0.0.9","RemoteShare":"films"}]},
        "Afp":{"DefaultAccess":"ReadWrite","NewFileFolderPermAutoset":1,"FileCreateGroupRights":"ReadWrite",
            "FileCreateEveryoneRights":"ReadOnly","FolderCreateGroupRights":"ReadWrite",
            "FolderCreateEveryoneRights":"ReadOnly","HostAcl":[{"Host":{"HostName":"desk"},"Access":"ReadOnly"}]},
        "Nfs":{"DefaultAccess":"ReadOnly","HostAcl":[{"Host":{"HostName":"10.1"},"Access":"Disabled","Root":1}]},
        "Ftp":{"DefaultAccess":"ReadWrite","FileCreateGroupRights":"ReadWrite","FileCreateEveryoneRights":"ReadOnly",
            "FolderCreateGroupRights":"ReadWrite","FolderCreateEveryoneRights":"ReadOnly",
            "UserAcl":[{"User":{"resource_id":100},"Access":"ReadOnly"}]},
        "Rsync":{"DefaultAccess":"ReadOnly","PasswordProtection":"Enabled",
            "UserPasswordAcl":[{"UserName":"backup","Password":"secret"}]},
        "Dlna":{"DefaultAccess":"ReadOnly","MediaType":"Music"},"Daap":{},
        "Http":{"DefaultAccess":"ReadOnly","GroupAcl":[{"Group":{"resource_id":111},"Access":"ReadWrite"}]},
        "Zvol":{"SizeKB":4096},"UsedBy":[{"AppName":"tm","AppData":"x"}]}})"},
    {"addShare", "two, one with a path", R"({"share":[{"ShareName":"one","VolumeId":"tank","Path":"/media/usb/one"},
        {"ShareName":"two","VolumeId":"tank","SnapshotSchedule":{"Enabled":0,"Minute":"1"},
         "SnapshotRetentionRules":[{"Type":2,"Number":3,"Lifetime":4},{"Type":3,"Number":5,"Lifetime":6}]}]})"},
    {"addShare", "directory mode", R"({"share":{"ShareName":"domain","VolumeId":"tank",
        "Http":{"DefaultAccess":"Disabled","UserAcl":[{"User":{"UserName":"EXAMPLE\\fred"},"Access":"ReadOnly"}],
            "GroupAcl":[{"Group":{"GroupName":"EXAMPLE\\domain users"},"Access":"ReadOnly"}]}}})",
     Accounts::directory},
    {"addShareProcess", "", R"({"zfsName":"tank/films","pid":1,"blocking":1})"},
    {"addShareUsedBy", "", R"({"zfsName":"tank/films","usedby":{"AppName":"tm","AppData":"x"}})"},
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
