// What each operation is called with while everything around it fails, and the database it is called on.
#pragma once

#include "anomaly/setups/accounts.h"
#include "anomaly/setups/backup.h"
#include "anomaly/setups/iscsi.h"
#include "anomaly/setups/legacy.h"
#include "anomaly/setups/services.h"
#include "anomaly/setups/share_changes.h"
#include "anomaly/setups/share_removal.h"
#include "anomaly/setups/shares.h"
#include "anomaly/setups/snapshots.h"
#include "anomaly/setups/system.h"
#include "anomaly/setups/ups.h"
#include "anomaly/setups/volumes.h"
#include "anomaly/trial.h"

namespace test {

/// Common ground of all families: shares, users and groups with what hangs on them.
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
UPDATE _ads_importer SET state=1,total_user=10,curr_user=5,total_group=4,curr_group=1;
)sql";

inline constexpr Family kFamilies[] = {
    {.name = "system", .population = kSystemPopulation, .trials = kSystemTrials},
    {.name = "legacy",
     .population = kLegacyPopulation,
     .trials = kLegacyTrials,
     .left_outputs = kLegacyLeftOutputs,
     .odd_answers = kLegacyOddAnswers},
    {.name = "accounts",
     .population = "",
     .trials = kAccountsTrials,
     .left_outputs = kAccountsLeftOutputs,
     .silent = kAccountsSilent,
     .goes_on = kAccountsGoesOn,
     .odd_answers = kAccountsOddAnswers,
     .memory_exceptions = kAccountsMemoryExceptions},
    {.name = "services",
     .population = kServicesPopulation,
     .trials = kServicesTrials,
     .left_outputs = kServicesLeftOutputs,
     .silent = kServicesSilent,
     .odd_answers = kServicesOddAnswers},
    {.name = "volumes",
     .population = kVolumesPopulation,
     .trials = kVolumesTrials,
     .left_outputs = kVolumesLeftOutputs,
     .silent = kVolumesSilent,
     .goes_on = kVolumesGoesOn,
     .memory_exceptions = kVolumesMemoryExceptions},
    {.name = "snapshots",
     .population = kSnapshotsPopulation,
     .trials = kSnapshotsTrials,
     .left_outputs = kSnapshotsLeftOutputs,
     .odd_answers = kSnapshotsOddAnswers},
    {.name = "shares",
     .population = kSharesPopulation,
     .trials = kSharesTrials,
     .left_outputs = kSharesLeftOutputs,
     .odd_answers = kSharesOddAnswers},
    {.name = "share_changes",
     .population = kShareChangesPopulation,
     .trials = kShareChangesTrials,
     .odd_answers = kShareChangesOddAnswers},
    {.name = "share_removal", .population = kSharesPopulation, .trials = kShareRemovalTrials},
    {.name = "share_migration", .population = kShareMigrationPopulation, .trials = kShareMigrationTrials},
    {.name = "ups", .population = kUpsPopulation, .trials = kUpsTrials},
    {.name = "iscsi", .population = kIscsiPopulation, .trials = kIscsiTrials},
    {.name = "backup",
     .population = kBackupPopulation,
     .trials = kBackupTrials,
     .left_outputs = kBackupLeftOutputs,
     .odd_answers = kBackupOddAnswers,
     .memory_exceptions = kBackupMemoryExceptions},
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
