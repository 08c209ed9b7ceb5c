// Calls of backup.
#pragma once

#include "anomaly/trial.h"

namespace test {

inline constexpr char kBackupPopulation[] = R"sql(
UPDATE share SET type='share';
INSERT INTO usb_port (id,descr,port,alt_port) VALUES (1,'FRONT','1_1','2_1'),(2,'BACK','1_2',NULL);
INSERT INTO usb_storage (usbpath,mount_point) VALUES ('1:1.4','/media/front');
INSERT INTO backup (id,name,enabled,src_type,src_share_proto,src_path,src_login,src_password,src_port,src_eject,dst_type,
                    dst_share_proto,dst_path,dst_login,dst_password,dst_port,dst_eject,sch_every,sch_start,sch_end,sch_dow,
                    opt_full_backup_freq,opt_remove_previous_backup,opt_chown_to_share_owner,opt_rsync_options,
                    opt_rsync_exclude,opt_email_this_to_alert_email,opt_misc_option,wol_addr) VALUES
    (1,'nightly',1,'share','media','/','','',0,0,'remote','rsync','backup','anna','secret',873,0,1,2,3,34,'weekly',1,0,3,
     '*.tmp',1,0,'00:11:22:33:44:55'),
    (2,'stick',0,'usb','usb_port_1_1','/','','',0,1,'share','photos','/','','',0,0,0,0,0,0,'',0,0,0,'',0,0,'');
INSERT INTO backup_button_jobs (`order`,backup_id) VALUES (1,2),(2,1);
)sql";

inline constexpr Trial kBackupTrials[] = {
    {"getBackupJobCollection", "", "{}"},
    {"getBackupJob", "", R"({"job":{"resource_id":1}})"},
    {"addBackupJob", "two", R"({"job":[
        {"JobName":"homes","Source":{"Type":"home","ShareNameOrProtocol":"*","Path":"/"},
         "Destination":{"Type":"remote","ShareNameOrProtocol":"cifs","Path":"\\\\host\\share","Login":"l","Password":"p"},
         "Schedule":{"Enabled":1,"DayOfWeek":"Mon"},"Option":{"RsyncExclude":"*.o"}},
        {"JobName":"time","Source":{"Type":"timemachine","ShareNameOrProtocol":"~timemachine~","Path":"/"},
         "Destination":{"Type":"share","ShareNameOrProtocol":"photos","Path":"/"},
         "Schedule":{"Enabled":1},"Option":{}}]})"},
    {"modifyBackupJob", "two", R"({"job":[
        {"resource_id":1,"JobName":"weekly","Source":{"Type":"volume","ShareNameOrProtocol":"tank","Path":"/"},
         "Destination":{"Type":"share","ShareNameOrProtocol":"photos","Path":"/"},
         "Schedule":{"Enabled":1,"Start":1,"End":2,"DayOfWeek":"Mon"},"Option":{"RsyncExclude":"*.o"}},
        {"JobId":2,"JobName":"stick","Source":{"Type":"usb","ShareNameOrProtocol":"usb_port_1_1","Path":"/"},
         "Destination":{"Type":"remote","ShareNameOrProtocol":"cifs-ab","Path":"//a//b","Password":"●●●●●●●●"},
         "Schedule":{"Enabled":1},"Option":{}}]})"},
    {"deleteBackupJob", "two", R"({"job":[{"resource_id":1},{"JobId":2,"JobName":"known"}]})"},
    {"hasBackupJob", "yes", R"({"jobId":2})", Accounts::local, 1},
    {"hasBackupJob", "no", R"({"jobId":3})"},
    {"getBackupTargetCollection", "local", "{}"},
    {"getBackupTargetCollection", "directory", "{}", Accounts::directory},
    {"getBackupUSBSubType", "", R"({"usbPortName":"usb_port_2_1"})"},
    {"getBackupButtonJobCollection", "", "{}"},
    {"setBackupButtonJobCollection", "", R"({"jobs":{"Jobs":[{"JobId":1},{"JobId":2},{"JobId":1}]}})"},
};

inline constexpr Exempt kBackupLeftOutputs[] = {
    {"addBackupJob", "the records before the failing one keep what they were given"},
    {"modifyBackupJob", "the records before the failing one keep what they were given"},
    {"deleteBackupJob", "the records before the failing one keep what they were given"},
};

inline constexpr Exempt kBackupOddAnswers[] = {
    {"addBackupJob (two): fails with 841 \"Timemachine is not configured.\"", "a store that cannot be found is not there"},
    {"modifyBackupJob (two): succeeds with other results 0 \"\"", "without the copy nothing is said of changes"},
    {"hasBackupJob (yes): fails with 0 \"\"", "a job that cannot be read is not there"},
};

inline constexpr MemoryException kBackupMemoryExceptions[] = {
    {"addBackupJob", 841, "Timemachine is not configured.", "a store that cannot be found is not there"},
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
