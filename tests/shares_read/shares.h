// Common ground of the share tests: shares with everything that hangs on them, and their records as text.
#pragma once

#include <cstdlib>

#include "users/users.h"

namespace test {

struct Shares : Users {
    ShareCollection shares{};
    Share share{};

    void add_share(int32_t id, const std::string &name, const std::string &more = "type='share'")
    {
        const std::string number = std::to_string(id);
        sql("INSERT INTO share (id,name,zfs_name,type,volume_id,path,user_access,group_access,everyone_access) "
            "VALUES(" +
            number + ",'" + name + "','tank/" + name + "','share','tank','/no/such/tank/" + name +
            "',7,7,7); UPDATE share SET " + more + " WHERE id=" + number);
    }

    /// Accounts and hosts that the lists name: local and domain ones.
    void add_accounts()
    {
        add_user(100, "anna", "110");
        add_user(101, "Bob");
        add_user(102, "carl");
        add_user(-10, "EXAMPLE\\fred", "-20", "rid=1105");
        sql("INSERT INTO `$group` (id,gname,is_privileged,rid) VALUES(110,'staff',0,NULL),(111,'Editors',0,NULL),"
            "(-20,'EXAMPLE\\domain users',0,513);"
            "INSERT INTO `$group_has_user` (user_id,group_id) VALUES(101,111);"
            "INSERT INTO host (id,name) VALUES(1,'10.0.0.0/8'),(2,'desk.example.com')");
    }

    /// Gives a share every block, list and row that a share can have.
    void add_everything(int32_t id)
    {
        const std::string number = std::to_string(id);
        std::string statements = R"sql(
UPDATE share SET comment='films',visible_snapdir='.snapshots',user_id=100,group_id=110,user_access=7,group_access=5,
    everyone_access=0,non_owner_delete=1,migrate_to_volume_id='pool2',update_ts='2024-01-02 03:04:05' WHERE id=@;
INSERT INTO zfs_attr VALUES(@,1000,200,300,400,1,0,1,'latency','always','tank/old');
INSERT INTO _zfs_stat VALUES(@,10485760,20971520,3145728,4194304,5242880,6291456,7340032,'1.25x');
INSERT INTO `$snapshot` (zfs_name,name,type,created_on) SELECT zfs_name,'a',1,1000 FROM share WHERE id=@;
INSERT INTO `$snapshot` (zfs_name,name,type,created_on) SELECT zfs_name,'b',1,4000 FROM share WHERE id=@;
INSERT INTO `$snapshot` (zfs_name,name,type,created_on) SELECT zfs_name,'c',2,500 FROM share WHERE id=@;
INSERT INTO `$snapshot` (zfs_name,name,type,created_on) SELECT zfs_name,'d',3,9000 FROM share WHERE id=@;
INSERT INTO `$snapshot_clones` (id,cloned_zfs_name,parent_snapshot_name,parent_zfs_name)
    SELECT 10*@,name,'monday','origin' FROM share WHERE id=@;
INSERT INTO `$snapshot_clones` (id,cloned_zfs_name,parent_snapshot_name,parent_zfs_name)
    SELECT 10*@+1,'copy','b',name FROM share WHERE id=@;
INSERT INTO process_on_share (share_id,pid,blocking) VALUES(@,4711,0),(@,4712,2);
INSERT INTO snapshot_schedule VALUES(@,1,'5','4','3','2','1',11,12,13,14);
INSERT INTO snapshot_management VALUES(@,1,1,2592000,30,'0101',1,0),(@,1,2,86400,7,'0101',1,0);
INSERT INTO cifs_share_option (share_id,cifs_access,cifs_guest_access,cifs_hide_share,cifs_group_create_mask,
    cifs_everyone_create_mask,cifs_enable_masks,cifs_group_directory_mask,cifs_everyone_directory_mask,
    cifs_enable_forced_minimum,cifs_recycle,cifs_recycle_mb_limit,cifs_recycle_age_limit,oplocks,available,
    cifs_enabledfs) VALUES(@,'readonly',1,2,6,4,3,7,0,1023,4,25000,9,5,1,1);
INSERT INTO cifs_dfs_option VALUES(@,'tank','media','link','10.0.0.9','films'),(@,'tank','media','next','10.0.0.8','x');
INSERT INTO afp_share_option VALUES(@,0,'writeable',1,52,5);
INSERT INTO nfs_share_option VALUES(@,1,'disabled',1);
INSERT INTO ftp_share_option VALUES(@,1,'writeable',1,2,23);
INSERT INTO http_share_option VALUES(@,1,'readonly',1);
INSERT INTO rsync_share_option VALUES(@,1,'readonly','enabled');
INSERT INTO rsync_user_password_acl VALUES(@,'backup','secret'),(@,'mirror','hidden');
INSERT INTO dlna_share_option VALUES(@,1,'readonly',2);
INSERT INTO daap_share_option VALUES(@,0);
INSERT INTO zvol_share_option VALUES(@,2048,1);
INSERT INTO host_acl VALUES(@,1,'cifs',1,1,0),(@,1,'afp',1,0,0),(@,1,'nfs',1,0,1),(@,2,'nfs',0,0,0),(@,2,'ftp',0,0,0),
    (@,1,'http',1,1,0),(@,2,'rsync',1,0,0);
INSERT INTO user_acl VALUES(@,100,'cifs',1,1),(@,101,'cifs',1,0),(@,102,'cifs',0,0),(@,-10,'cifs',1,1),
    (@,100,'afp',1,0),(@,101,'ftp',1,1),(@,102,'http',1,0);
INSERT INTO group_acl VALUES(@,110,'cifs',1,0),(@,111,'cifs',1,1),(@,-20,'cifs',1,0),(@,110,'afp',0,0),
    (@,111,'ftp',1,0),(@,110,'http',1,1);
INSERT INTO user_quota VALUES(100,@,80,100),(999,@,8,10);
INSERT INTO _user_quota_stat VALUES(@,100,50);
INSERT INTO group_quota VALUES(110,@,800,1000);
INSERT INTO _group_quota_stat VALUES(@,110,500);
INSERT INTO `$application_on_share` SELECT zfs_name,'surveillance','camera 1' FROM share WHERE id=@;
INSERT INTO `$application_on_share` SELECT zfs_name,'tm',NULL FROM share WHERE id=@;
)sql";
        for (size_t at = statements.find('@'); at != std::string::npos; at = statements.find('@', at))
            statements.replace(at, 1, number);
        sql(statements);
    }

    /// Reads one share by its id, which has to succeed.
    Share *get(int32_t id)
    {
        const std::string number = std::to_string(id);
        share = {};
        share.ShareId = number.c_str();
        EXPECT_EQ(qbobj_getShare(qbdb, db, &share, &err), 0u) << text(err.message);
        return &share;
    }

    /// Runs a collection operation, which has to succeed, and returns the names.
    template <class Operation>
    std::vector<std::string> collect(Operation operation)
    {
        shares = {};
        EXPECT_EQ(operation(), 0u) << text(err.message);
        return share_names();
    }
    std::vector<std::string> share_names() const
    {
        std::vector<std::string> all;
        for (const Share *each : elements(shares.Share)) all.push_back(text(each->ShareName));
        return all;
    }

    /// A record as the log shows it, absent numbers included.
    std::string dump(const Share *record)
    {
        const std::vector<LogLine> kept = std::exchange(log, {});
        qbobj_api2_utils_dump_object(qbdb, qbobj_find_type("Share"), record, 0, "test", 1);
        std::string lines;
        for (const LogLine &line : log) lines += line.text;
        log = kept;
        return lines;
    }
};

/// Elements of an access list, each as name=access.
template <class Acl, class Name>
std::vector<std::string> grants(const Acl *head, Name name)
{
    std::vector<std::string> all;
    for (; head; head = head->next) all.push_back(text(name(head)) + "=" + text(head->Access));
    return all;
}
inline std::vector<std::string> grants(const HostAcl *head)
{
    return grants(head, [](const HostAcl *acl) { return acl->Host->HostName; });
}
inline std::vector<std::string> grants(const UserAcl *head)
{
    return grants(head, [](const UserAcl *acl) { return acl->User->UserName; });
}
inline std::vector<std::string> grants(const GroupAcl *head)
{
    return grants(head, [](const GroupAcl *acl) { return acl->Group->GroupName; });
}

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
