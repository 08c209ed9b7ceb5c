// Creating shares: the steps before and around the protocols, and chains.
#include "shares_add/new_share.h"

using namespace test;

namespace {

using AddShare = NewShares;

TEST_F(AddShare, TheLeastGiven)
{
    expect_added();
    EXPECT_THAT(rows("SELECT id,name,zfs_name,type,comment,path,volume_id,visible_snapdir,user_id,group_id,user_access,"
                     "group_access,everyone_access,non_owner_delete,migrate_to_volume_id FROM share"),
                ElementsAre("1|music|tank/music|share|NULL|/tank/music|tank|NULL|65533|65533|7|7|7|1|NULL"));
    EXPECT_THAT(rows("SELECT * FROM zfs_attr"), ElementsAre("1|0|0|0|0|0|0|0|NULL|NULL|NULL"));
    EXPECT_THAT(rows("SELECT * FROM snapshot_schedule"), ElementsAre("1|1|0|*|*|*|*|0|0|0|0"));
    EXPECT_THAT(rows("SELECT * FROM snapshot_management WHERE share_id=1"),
                ElementsAre("1|0|1|2592000|30|" + std::string(255, '0') + "|0|0"));
    EXPECT_STREQ(share.ShareId, "1");
    EXPECT_STREQ(share.key, "1");
    EXPECT_THAT(regenerated, IsEmpty());
}

TEST_F(AddShare, EverythingGiven)
{
    SystemUser anna{};
    anna.resource_id = 100;
    SystemGroup staff{};
    staff.resource_id = 110;
    FileStat stat{};
    stat.User = &anna;
    stat.Group = &staff;
    stat.UserAccess = "ReadWrite";
    stat.GroupAccess = "ReadOnly";
    stat.EveryoneAccess = "Disabled";
    stat.NonOwnerDelete = 1;
    share.Stat = &stat;
    share.ShareType = "ZVOL";
    share.Comment = "it's ours";
    share.VisibleSnapshot = 1;
    share.VisibleSnapFolder = ".snap";
    share.QuotaMB_void = share.ReserveMB_void = share.RefQuotaMB_void = share.RefReserveMB_void = 0;
    share.QuotaMB = 9223372036854775807;
    share.ReserveMB = 2;
    share.RefQuotaMB = 3;
    share.RefReserveMB = 4;
    share.Compression_void = share.BitRotProtection_void = share.Dedup_void = 0;
    share.Compression = share.Dedup = 1;
    share.LogBias = "latency";
    share.Sync = "always";
    share.CustomSnapshotManagement = 1;
    share.CustomSnapshotSchedule = "0110";
    share.NonEmptySnapshots = 1;
    share.PrevVersions = 1;
    Schedule schedule{2, "5", "4", "3", "2", "1", 11, 12, 99, 13, 14};
    share.SnapshotSchedule = &schedule;
    SnapshotRetentionRules second{nullptr, 0, 4, 5, 6};
    SnapshotRetentionRules first{&second, 0, 1, 2, 3};
    share.SnapshotRetentionRules = &first;
    ZvolShareOption zvol{nullptr, 18446744073709551615u, 0, 1};
    share.Zvol = &zvol;
    UsedBy other{nullptr, "sync", nullptr};
    UsedBy tm{&other, "tm", "it's"};
    share.UsedBy = &tm;
    sql("UPDATE _volume SET blk_free=3*1024");
    expect_added();
    EXPECT_THAT(rows("SELECT name,zfs_name,type,comment,path,visible_snapdir,user_id,group_id,user_access,group_access,"
                     "everyone_access,non_owner_delete FROM share"),
                ElementsAre("music|tank/music|zvol|it's ours|/tank/music|.snap|100|110|7|5|0|1"));
    EXPECT_THAT(rows("SELECT * FROM zfs_attr"), ElementsAre("1|9223372036854775807|2|3|4|1|0|1|latency|always|NULL"));
    EXPECT_THAT(rows("SELECT * FROM snapshot_schedule"), ElementsAre("1|2|5|4|3|2|1|11|12|13|14"));
    EXPECT_THAT(rows("SELECT * FROM snapshot_management WHERE share_id=1"),
                ElementsAre("1|1|1|3|2|0110|1|1", "1|1|4|6|5|0110|1|1"));
    EXPECT_THAT(rows("SELECT share_id,is_sparse FROM zvol_share_option"), ElementsAre("1|1"));
    EXPECT_THAT(rows("SELECT * FROM `$application_on_share`"),
                ElementsAre("tank/music|tm|it's", "tank/music|sync|NULL"));
    EXPECT_EQ(value("SELECT COUNT(*) FROM user_quota"), "0") << "quotas are set by changing the share";
}

TEST_F(AddShare, WhatIsReadBackIsWhatWasGiven)
{
    CifsShareOption cifs = new_cifs("ReadOnly");
    NfsShareOption nfs = new_nfs("Disabled");
    share.Cifs = &cifs;
    share.Nfs = &nfs;
    share.Comment = "songs";
    expect_added();
    get(1);
    EXPECT_STREQ(share.Comment, "songs");
    EXPECT_STREQ(share.Cifs->DefaultAccess, "ReadOnly");
    EXPECT_STREQ(share.Cifs->FileCreateGroupRights, "ReadWrite");
    EXPECT_STREQ(share.Cifs->FolderCreateEveryoneRights, "Disabled");
    EXPECT_STREQ(share.Nfs->DefaultAccess, "Disabled");
    EXPECT_EQ(share.Nfs->Sync, 1);
    EXPECT_EQ(share.Afp, nullptr);
    EXPECT_STREQ(share.Stat->User->UserName, "guest");
    EXPECT_STREQ(share.Sync, "standard");
    EXPECT_EQ(share.SnapshotRetentionRules->Lifetime, 30 * 86400);
}

TEST_F(AddShare, PathDecidesTheDataSet)
{
    struct Case {
        const char *path;
        const char *row;
    };
    for (const Case &each :
         {Case{"/media/usb 1/music", "media/usb 1/music|/media/usb 1/music"},
          Case{"relative/music", "relative/music|relative/music"}, Case{"", "tank/music|/tank/music"}}) {
        clear();
        share.Path = each.path;
        expect_added();
        EXPECT_THAT(rows("SELECT zfs_name,path FROM share"), ElementsAre(each.row));
    }
}

TEST_F(AddShare, VolumeNamesTheDataSet)
{
    sql("INSERT INTO _volume (id,lv_name) VALUES('v2','pool two')");
    share.VolumeId = "v2";
    expect_added();
    EXPECT_THAT(rows("SELECT zfs_name,path,volume_id FROM share"), ElementsAre("pool two/music|/pool two/music|v2"));
}

TEST_F(AddShare, SnapshotFolderNeedsTheFlag)
{
    share.VisibleSnapFolder = ".snap";
    expect_added();
    EXPECT_EQ(value("SELECT visible_snapdir FROM share"), "NULL");
}

TEST_F(AddShare, ScheduleTextOfThePolicy)
{
    struct Case {
        std::string given;
        std::string stored;
    };
    for (const Case &each : {Case{"01", "01"}, Case{"", ""}, Case{std::string(255, '1'), std::string(255, '1')},
                             Case{std::string(300, '1'), std::string(255, '1')}}) {
        clear();
        share.CustomSnapshotSchedule = each.given.c_str();
        expect_added();
        EXPECT_EQ(value("SELECT schedule FROM snapshot_management WHERE share_id>0"), each.stored);
    }
}

// ---- what is refused

TEST_F(AddShare, TypeAndNames)
{
    struct Case {
        const char *type;
        const char *name;
        uint32_t code;
        const char *message;
    };
    const Case cases[] = {
        {"folder", "home", 8, "Invalid ShareType (folder)"},
        {"share", "a23456789012345678901234567890123", 806,
         "ShareName is too long (a23456789012345678901234567890123)"},
        {"share", "home", 808, "ShareName (home) is reserved"},
        {"share", "Usb_1", 808, "ShareName (Usb_1) is reserved"},
        {"share", "a/b", 8, "Invalid ShareName (a/b), rc=2"},
        {"share", "-a", 8, "Invalid ShareName (-a), rc=1"},
        {"share", "", 8, "Invalid ShareName (), rc=-1"},
        {"share", nullptr, 8, "Invalid ShareName ((null)), rc=-1"},
        {"share", "TAKEN", 800, "Sharename specified is already exist."},
    };
    add_share(1, "taken");
    share.Sync = "sometimes";  // looked at later
    for (const Case &each : cases) {
        share.ShareType = each.type;
        share.ShareName = each.name;
        expect_refused(each.code, each.message);
    }
}

TEST_F(AddShare, SyncAndVolume)
{
    for (const char *sync : {"sometimes", "Always"}) {
        share.Sync = sync;
        expect_refused(8, "Invalid Sync (" + std::string(sync) + "). One of 'standard', 'always', 'disabled'.");
    }
    for (const char *sync : {"standard", "always", "disabled"}) {
        clear();
        share.Sync = sync;
        expect_added();
        EXPECT_EQ(value("SELECT sync FROM zfs_attr"), sync);
    }
    clear();
    share.Sync = "";
    expect_added();
    EXPECT_STREQ(get(1)->Sync, "standard");
    share = new_share("other");
    share.VolumeId = "gone";
    expect_refused(8, "Specified VolumeId (gone) is not valid.");
    share.VolumeId = nullptr;
    expect_refused(8, "Specified VolumeId ((null)) is not valid.");
}

TEST_F(AddShare, AVolumeByItsNameOnlyIsFoundTooLate)
{
    sql("INSERT INTO _volume (id,lv_name) VALUES('v2','pool2')");
    share.VolumeId = "pool2";
    expect_refused(800, "Sharename specified is already exist. Or specified volume is not exist.");
}

TEST_F(AddShare, ADataSetThatIsTaken)
{
    add_share(1, "other", "zfs_name='media/music'");
    share.Path = "/media/music";
    expect_refused(800, "Sharename specified is already exist. Or specified volume is not exist.");
    sql("INSERT INTO zfs_attr (share_id) VALUES(2)");
    share.Path = nullptr;
    expect_refused(800, "Sharename specified is already exist. Or specified volume is not exist.");
}

TEST_F(AddShare, GuestIsNeededAlways)
{
    FileStat stat{};
    SystemUser anna{};
    anna.resource_id = 100;
    stat.User = &anna;
    share.Stat = &stat;
    sql("DELETE FROM `$group` WHERE gname IN ('guest','nogroup')");
    expect_refused(8, "Cannot get GID for guest");
    sql("DELETE FROM `$user` WHERE uname='guest'");
    expect_refused(8, "Cannot get UID for guest");
}

TEST_F(AddShare, OwnerByFirstOrSecondId)
{
    FileStat stat{};
    stat.UserAccess = stat.GroupAccess = stat.EveryoneAccess = "ReadOnly";
    stat.NonOwnerDelete_void = 1;
    SystemUser user{};
    SystemGroup group{};
    stat.User = &user;
    stat.Group = &group;
    share.Stat = &stat;
    struct Case {
        int32_t first;
        int32_t second;
        const char *stored;
    };
    for (const Case &each : {Case{100, 101, "100|100|0"}, Case{-1, 101, "101|101|0"}, Case{0, 101, "0|0|0"}}) {
        clear();
        user.resource_id = group.resource_id = each.first;
        user.UserId = group.GroupId = each.second;
        expect_added();
        EXPECT_THAT(rows("SELECT user_id,group_id,non_owner_delete FROM share"), ElementsAre(each.stored));
    }
    clear();
    stat.User = nullptr;
    stat.Group = nullptr;
    expect_added();
    EXPECT_THAT(rows("SELECT user_id,group_id FROM share"), ElementsAre("65533|65533"));
    clear();
    stat.User = &user;
    stat.Group = &group;
    group.resource_id = group.GroupId = -7;
    expect_refused(8, "Invalid Stat->Group (resource_id=-7).");
    user.resource_id = user.UserId = -5;
    expect_refused(8, "Invalid Stat->User (resource_id=-5).");
}

TEST_F(AddShare, PermissionWords)
{
    FileStat stat{};
    share.Stat = &stat;
    for (const char *FileStat::*word : {&FileStat::EveryoneAccess, &FileStat::GroupAccess, &FileStat::UserAccess}) {
        stat.UserAccess = stat.GroupAccess = stat.EveryoneAccess = "ReadWrite";
        stat.*word = "readonly";
        const char *field = word == &FileStat::UserAccess    ? "UserAccess"
                            : word == &FileStat::GroupAccess ? "GroupAccess"
                                                             : "EveryoneAccess";
        expect_refused(8, "Invalid Stat->" + std::string(field) + " (readonly).");
        stat.*word = nullptr;
        expect_refused(8, "Invalid Stat->" + std::string(field) + " ((null)).");
    }
}

TEST_F(AddShare, QuotaHasToFitTheVolume)
{
    share.RefQuotaMB_void = 0;
    struct Case {
        const char *free_kb;
        uint64_t quota_mb;
        bool fits;
    };
    for (const Case &each :
         {Case{"1048576", 1024, true}, Case{"1048576", 1025, false}, Case{"1048575", 1024, false},
          Case{"NULL", 0, true}, Case{"NULL", 1, false}, Case{"1048576", 18446744073709551615u, false}}) {
        clear();
        sql(std::string("UPDATE _volume SET blk_free=") + each.free_kb);
        share.RefQuotaMB = each.quota_mb;
        if (each.fits) expect_added();
        else expect_refused(835, "Invalid quota value. Need to be less than Free Space.");
    }
    share.RefQuotaMB_void = 1;
    share.QuotaMB_void = 0;
    share.QuotaMB = 1000000000;
    expect_added();
}

// ---- chains

TEST_F(AddShare, AChainIsStoredInOrder)
{
    Share second = new_share("second");
    Share third = new_share("third");
    share.next = &second;
    second.next = &third;
    expect_added();
    EXPECT_THAT(rows("SELECT name FROM share ORDER BY id"), ElementsAre("music", "second", "third"));
    EXPECT_STREQ(third.ShareId, "3");
}

TEST_F(AddShare, AChainIsStoredWholeOrNotAtAll)
{
    Share chain[3] = {new_share("first"), new_share("second"), new_share("third")};
    chain[0].next = &chain[1];
    chain[1].next = &chain[2];
    for (Share &bad : chain) {
        const char *name = bad.ShareName;
        bad.ShareName = "home";
        expect_failure(808, "ShareName (home) is reserved", [&] { return qbobj_addShare(qbdb, db, chain, &err); });
        bad.ShareName = name;
    }
    chain[2].ShareName = "FIRST";
    expect_failure(800, "Sharename specified is already exist.", [&] { return qbobj_addShare(qbdb, db, chain, &err); });
    chain[2].ShareName = "third";
    EXPECT_EQ(qbobj_addShare(qbdb, db, chain, &err), 0u) << text(err.message);
}

TEST_F(AddShare, NoShareIsNothingToDo)
{
    take_statements();
    EXPECT_EQ(qbobj_addShare(qbdb, db, nullptr, &err), 0u);
    EXPECT_EQ(take_statements().size(), 2u) << "begin and commit";
}

// ---- who uses a share

TEST_F(AddShare, Processes)
{
    add_share(1, "media");
    ASSERT_EQ(qbobj_addShareProcess(qbdb, db, "tank/media", 4711, 0, &err), 0u);
    ASSERT_EQ(qbobj_addShareProcess(qbdb, db, "tank/media", 4711, 2, &err), 0u) << "anew";
    ASSERT_EQ(qbobj_addShareProcess(qbdb, db, "tank/media", 4712, 1, &err), 0u);
    EXPECT_THAT(rows("SELECT share_id,pid,blocking FROM process_on_share ORDER BY pid"),
                ElementsAre("1|4711|2", "1|4712|1"));
    EXPECT_EQ(get(1)->Busy, 3);
    for (const char *unknown : {"tank/gone", static_cast<const char *>(nullptr)})
        expect_failure(5,
                       "Failed DB Query for 'INSERT process_on_share'. NOT NULL constraint failed: "
                       "process_on_share.share_id",
                       [&] { return qbobj_addShareProcess(qbdb, db, unknown, 1, 1, &err); });
}

TEST_F(AddShare, Applications)
{
    UsedBy tm{nullptr, "tm", "x"};
    ASSERT_EQ(qbobj_addShareUsedBy(qbdb, db, "tank/media", &tm, &err), 0u);
    tm.AppData = nullptr;
    ASSERT_EQ(qbobj_addShareUsedBy(qbdb, db, "tank/media", &tm, &err), 0u) << "anew";
    EXPECT_THAT(rows("SELECT * FROM `$application_on_share`"), ElementsAre("tank/media|tm|NULL"));
    expect_failure(8, "usedby and usedby->AppName cannot be NULL",
                   [&] { return qbobj_addShareUsedBy(qbdb, db, "tank/media", nullptr, &err); });
    tm.AppName = nullptr;
    expect_failure(8, "usedby and usedby->AppName cannot be NULL",
                   [&] { return qbobj_addShareUsedBy(qbdb, db, "tank/media", &tm, &err); });
    tm.AppName = "tm";
    expect_failure(5,
                   "Failed DB Query for 'INSERT process_on_share'. NOT NULL constraint failed: "
                   "$application_on_share.zfs_name",
                   [&] { return qbobj_addShareUsedBy(qbdb, db, nullptr, &tm, &err); });
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
