// A share that was read can be written back: nothing changes. Through the library and through the program, for shares
// of every kind as the operations leave them.
#include "cli/run.h"
#include "share_changes/changes.h"

using namespace test;

namespace {

struct WriteBackShare : ShareChanges {
    WriteBackShare()
    {
        expect_done("addShare", kWholeShare);
        for (const char *record :
             {R"({"share":{"ShareName":"bare","VolumeId":"tank"}})",
              R"({"share":{"ShareName":"disk","ShareType":"zvol","VolumeId":"tank","Zvol":{"SizeKB":4096}}})",
              R"({"share":{"ShareName":"copies","ShareType":"replicate","VolumeId":"tank","Sync":"always"}})",
              R"({"share":{"ShareName":"stick","VolumeId":"tank","Path":"/media/usb/stick","RefQuotaMB":5}})",
              // off, but there
              R"({"share":{"ShareName":"off","VolumeId":"tank","Afp":{"NotAvailable":1,"DefaultAccess":"Disabled"},
                  "Nfs":{"NotAvailable":1,"DefaultAccess":"Disabled"},
                  "Rsync":{"NotAvailable":1,"DefaultAccess":"ReadWrite","PasswordProtection":"Disabled"},
                  "Http":{"NotAvailable":1,"DefaultAccess":"Disabled"},
                  "Dlna":{"NotAvailable":1,"DefaultAccess":"ReadOnly","MediaType":"All"},"Daap":{"NotAvailable":1}}})"})
            expect_done("addShare", record);
        // What a change makes that creating does not.
        change(R"("Afp":{},"Ftp":{"FileCreateGroupRights":"Disabled"},"Nfs":{},"Http":{},"Daap":{},
            "UserQuota":[{"AccountId":100,"HardMB":1001}],"GroupQuota":[{"AccountId":110,"HardMB":70}])",
               2);
        sql("INSERT INTO `$application_on_share` VALUES('tank/media','surveillance','camera 1'),"
            "('tank/media','tm',NULL);"
            "INSERT INTO `$snapshot` (zfs_name,name,type,created_on) VALUES('tank/media','a',1,1);"
            "INSERT INTO `$snapshot_clones` (cloned_zfs_name,parent_snapshot_name,parent_zfs_name) VALUES"
            "('copy','a','media'),('media','a','origin');"
            "INSERT INTO process_on_share (share_id,pid,blocking) VALUES(1,4711,1);"
            "INSERT INTO _zfs_stat (share_id,used) VALUES(1,10485760);"
            "INSERT INTO _user_quota_stat (share_id,user_id,mb_used) VALUES(2,100,5);"
            "UPDATE service_http SET share_name='media'");
        // An owner who is gone.
        sql("UPDATE share SET user_id=4242,group_id=4243 WHERE id=2");
    }

    test::Result run(std::vector<std::string> words, const std::string &given = "") const
    {
        words.insert(words.begin(), {program(), "-d", path});
        return run_command(words, given);
    }
};

constexpr const char *kNames[] = {"media", "bare", "disk", "copies", "stick", "off"};

TEST_F(WriteBackShare, LeavesEveryTableAsItWas)
{
    const auto before = tables();
    for (const char *name : kNames) {
        SCOPED_TRACE(name);
        Share read{};
        read.ShareName = name;
        ASSERT_EQ(qbobj_getShare(qbdb, db, &read, &err), 0u) << err.message;
        ASSERT_EQ(qbobj_modifyShare(qbdb, db, &read, &err), 0u) << err.message;
        EXPECT_EQ(tables(), before);
        const auto raised = [](const auto *block) { return block && block->Changed; };
        EXPECT_FALSE(raised(read.Cifs) || raised(read.Afp) || raised(read.Nfs) || raised(read.Ftp) ||
                     raised(read.Dlna) || raised(read.Daap) || raised(read.Rsync) || raised(read.Http));
    }
}

TEST_F(WriteBackShare, OfAllSharesAtOnce)
{
    const auto before = tables();
    ASSERT_EQ(qbobj_getSubvolumeShareCollection(qbdb, db, &shares, &err), 0u) << err.message;
    ASSERT_EQ(share_names().size(), std::size(kNames));
    ASSERT_EQ(qbobj_modifyShare(qbdb, db, shares.Share, &err), 0u) << err.message;
    EXPECT_EQ(tables(), before);
}

TEST_F(WriteBackShare, WithAFolderOnDisk)
{
    const std::string folder = directory.path + "/folder";
    ASSERT_EQ(mkdir(folder.c_str(), 0750), 0);
    sql("UPDATE share SET path='" + folder + "',user_id=" + std::to_string(geteuid()) +
        ",group_id=" + std::to_string(getegid()) + ",user_access=7,group_access=5,everyone_access=0 WHERE id=1");
    gids["root"] = 0;  // the group has no row of its own
    const auto before = tables();
    get(1);
    ASSERT_EQ(qbobj_modifyShare(qbdb, db, &share, &err), 0u) << err.message;
    EXPECT_EQ(tables(), before);
}

TEST_F(WriteBackShare, InDirectoryMode)
{
    directory_mode();
    sql("UPDATE user_acl SET user_id=-10 WHERE user_id=100; DELETE FROM user_acl WHERE user_id>0;"
        "UPDATE group_acl SET group_id=-20 WHERE group_id=110; DELETE FROM group_acl WHERE group_id>0");
    uids["EXAMPLE\\fred"] = 10010;
    const auto before = tables();
    get(1);
    ASSERT_EQ(qbobj_modifyShare(qbdb, db, &share, &err), 0u) << err.message;
    EXPECT_EQ(tables(), before);
}

/// What the reading leaves out the writing cannot keep.
TEST_F(WriteBackShare, AccountsThatAreNotReadGo)
{
    directory_mode();
    get(1);
    ASSERT_EQ(qbobj_modifyShare(qbdb, db, &share, &err), 0u) << err.message;
    EXPECT_EQ(value("SELECT COUNT(*) FROM user_acl WHERE share_id=1"), "0");
    EXPECT_EQ(share.Cifs->Changed, 1);
}

/// rsync reads as writeable whatever is stored but 'readonly'.
TEST_F(WriteBackShare, RsyncThatIsClosedOpens)
{
    sql("UPDATE rsync_share_option SET rsync_access='disabled' WHERE share_id=1");
    get(1);
    ASSERT_EQ(qbobj_modifyShare(qbdb, db, &share, &err), 0u) << err.message;
    EXPECT_EQ(value("SELECT rsync_access FROM rsync_share_option WHERE share_id=1"), "writeable");
    EXPECT_EQ(share.Rsync->Changed, 1);
}

TEST_F(WriteBackShare, ThroughTheProgramToo)
{
    const auto before = tables();
    for (const char *name : kNames) {
        SCOPED_TRACE(name);
        const test::Result read = run({"getShare", std::string("ShareName=") + name, "--json"});
        ASSERT_EQ(read.status, 0) << read.err;
        EXPECT_THAT(read.out, testing::Not(HasSubstr("secret")));
        const test::Result written = run({"modifyShare", "-", "--json"}, read.out);
        EXPECT_EQ(written.status, 0) << written.err;
        EXPECT_THAT(written.out, testing::Not(HasSubstr("\"Changed\": 1")));
        EXPECT_EQ(tables(), before);
    }
    const test::Result all = run({"getSubvolumeShareCollection", "--json"});
    ASSERT_EQ(all.status, 0) << all.err;
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
