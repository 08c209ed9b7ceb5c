// What of a share is not a protocol: its own row, the data set's attributes, snapshots, quotas, and what is answered.
#include "fixture/plans.h"
#include "share_changes/changes.h"

using namespace test;

namespace {

struct ChangeShare : ShareChanges {
    ChangeShare() { add_both(); }
    std::string attributes() { return rows("SELECT * FROM zfs_attr WHERE share_id=1")[0]; }
    std::string owner()
    {
        return rows(
            "SELECT user_id,group_id,user_access,group_access,everyone_access,non_owner_delete FROM share WHERE "
            "id=1")[0];
    }
};

TEST_F(ChangeShare, NothingGivenChangesNothing)
{
    const auto before = tables();
    for (const int id : {1, 2}) change("", id);
    EXPECT_EQ(tables(), before);
    EXPECT_THAT(regenerated, IsEmpty());
    EXPECT_EQ(qbobj_modifyShare(qbdb, db, nullptr, &err), 0u);
}

TEST_F(ChangeShare, WhatNamesNoShare)
{
    for (const char *id : {"", "0", "-1", "x", "1x", "2147483648"})
        expect_failure(901, std::string("Invalid resource_id (") + id + ").",
                       [&] { return call("modifyShare", std::string(R"({"share":{"ShareId":")") + id + "\"}}"); });
    Share nobody{};
    expect_failure(901, "Invalid resource_id ((null)).", [&] { return qbobj_modifyShare(qbdb, db, &nobody, &err); });
    refuse(6, "None of row selected for resource_id=99.", "", 99);
}

TEST_F(ChangeShare, AllOfAChainOrNone)
{
    Share second{};
    second.ShareId = "99";
    DaapShareOption daap{};
    FileStat stat{};
    Share first = new_share("media");
    first.next = &second;
    first.ShareId = "1";
    first.Comment = "new";
    first.Daap = &daap;
    first.Stat = &stat;
    expect_failure(6, "None of row selected for resource_id=99.",
                   [&] { return qbobj_modifyShare(qbdb, db, &first, &err); });
    EXPECT_EQ(daap.Changed, 0);
    EXPECT_EQ(first.Path, nullptr);
    EXPECT_EQ(first.OldVisibleSnapshot, 0);
    second = new_share("bare");
    second.ShareId = "2";
    second.Comment = "other";
    ASSERT_EQ(qbobj_modifyShare(qbdb, db, &first, &err), 0u) << err.message;
    EXPECT_THAT(rows("SELECT comment FROM share"), ElementsAre("new", "other"));
    EXPECT_EQ(daap.Changed, 1);
    EXPECT_EQ(first.OldVisibleSnapshot, 1);
    EXPECT_STREQ(first.Path, "/tank/media");
    EXPECT_STREQ(second.Path, "/tank/bare");
}

TEST_F(ChangeShare, ZerosOfARecordAreGiven)
{
    Share zero{};
    zero.ShareId = "1";
    ASSERT_EQ(qbobj_modifyShare(qbdb, db, &zero, &err), 0u) << err.message;
    EXPECT_EQ(attributes(), "1|0|0|0|0|0|0|0|latency|NULL|NULL");
    EXPECT_EQ(value("SELECT comment FROM share WHERE id=1"), "films");
}

TEST_F(ChangeShare, CommentAndSnapshotFolder)
{
    change(R"("Comment":"","VisibleSnapFolder":"old")");
    EXPECT_THAT(rows("SELECT comment,visible_snapdir FROM share WHERE id=1"), ElementsAre("|old"));
    EXPECT_EQ(answer("OldVisibleSnapshot"), 1);
    change(R"("VisibleSnapFolder":"")");
    EXPECT_EQ(value("SELECT visible_snapdir FROM share WHERE id=1"), "");
    change(R"("VisibleSnapFolder":"x")");
    EXPECT_EQ(answer("OldVisibleSnapshot"), 1) << "an empty text is one";
    change(R"("VisibleSnapFolder":"")", 2);
    EXPECT_EQ(value("SELECT visible_snapdir FROM share WHERE id=2"), "NULL") << "as it read";
    change(R"("VisibleSnapFolder":"it's")", 2);
    EXPECT_EQ(value("SELECT visible_snapdir FROM share WHERE id=2"), "it's");
    EXPECT_EQ(answer("OldVisibleSnapshot"), 0);
}

TEST_F(ChangeShare, WhatDoesNotFitIsLeftOutAndLogged)
{
    change(R"("Comment":")" + std::string(600, 'c') + R"(","VisibleSnapFolder":"old")");
    EXPECT_THAT(rows("SELECT comment,visible_snapdir FROM share WHERE id=1"), ElementsAre("films|old"));
    EXPECT_THAT(logged(2), testing::Contains("Share 1 is too long, not all of it is stored\n"));
}

TEST_F(ChangeShare, Owner)
{
    change(R"("Stat":{"User":{"resource_id":101}})");
    EXPECT_EQ(owner(), "101|110|7|5|0|1");
    change(R"("Stat":{"Group":{"resource_id":111},"UserAccess":"ReadOnly","NonOwnerDelete":0})");
    EXPECT_EQ(owner(), "101|111|5|5|0|0");
    EXPECT_EQ(answer("Stat")["_PosixMode"], 0550);
    change(R"("Stat":{"GroupAccess":"ReadWrite","EveryoneAccess":"ReadOnly","NonOwnerDelete":1})");
    EXPECT_EQ(answer("Stat")["_PosixMode"], 01575);
    change(R"("Stat":{"User":{"UserName":"anna"},"Group":{"GroupName":"staff"}})");
    EXPECT_EQ(owner(), "100|110|5|7|5|1");
    change(R"("Stat":{"User":{"resource_id":999},"Group":{"resource_id":998}})");
    EXPECT_EQ(owner(), "999|998|5|7|5|1") << "an id that nobody has is one that the system may have";
    uids["carol"] = 1234;
    gids["crew"] = 1235;
    change(R"("Stat":{"User":{"UserName":"carol"},"Group":{"GroupName":"crew"}})");
    EXPECT_EQ(owner(), "1234|1235|5|7|5|1") << "whom the system knows";
    change(R"("Stat":{"User":{"UserName":"root"}})");
    EXPECT_EQ(owner(), "0|1235|5|7|5|1");
}

TEST_F(ChangeShare, OwnerOfTheDirectory)
{
    refuse(8, "Invalid stat->User (resource_id=-10, UserName=x).",
           R"("Stat":{"User":{"resource_id":-10,"UserName":"x"}})");
    refuse(8, "Invalid stat->Group (resource_id=-20, GroupName=(null)).", R"("Stat":{"Group":{"resource_id":-20}})");
    uids["EXAMPLE\\fred"] = 10010;
    gids["EXAMPLE\\domain users"] = 10020;
    change(R"("Stat":{"User":{"resource_id":-10},"Group":{"resource_id":-20}})");
    EXPECT_EQ(owner(), "-10|-20|7|5|0|1");
    directory_mode();
    change(R"("Stat":{"User":{"resource_id":100}})");
    change(R"("Stat":{"User":{"UserName":"EXAMPLE\\fred"}})");
    EXPECT_EQ(owner(), "-10|-20|7|5|0|1");
}

TEST_F(ChangeShare, OwnerThatIsNone)
{
    refuse(8, "Unknown User (nobody's).", R"("Stat":{"User":{"UserName":"nobody's"}})");
    refuse(8, "Unknown User ((null)).", R"("Stat":{"User":{"UserId":100}})");
    refuse(8, "Unknown Group (none).", R"("Stat":{"Group":{"GroupName":"none"}})");
    FileStat stat{};
    Share given = new_share("media");
    given.ShareId = "1";
    given.Stat = &stat;
    const std::pair<const char * FileStat::*, const char *> words[] = {{&FileStat::UserAccess, "UserAccess"},
                                                                       {&FileStat::GroupAccess, "GroupAccess"},
                                                                       {&FileStat::EveryoneAccess, "EveryoneAccess"}};
    for (const auto &[field, name] : words) {
        stat = {};
        stat.*field = "readonly";
        expect_failure(8, std::string("Invalid Stat->") + name + " (readonly).",
                       [&] { return qbobj_modifyShare(qbdb, db, &given, &err); });
    }
}

// ---- the data set

TEST_F(ChangeShare, AttributesOneByOne)
{
    struct Case {
        const char *fields;
        const char *row;
    };
    for (const Case &each :
         {Case{R"("QuotaMB":7)", "1|7|20|300|40|1|0|1|latency|NULL|NULL"},
          Case{R"("ReserveMB":9223372036854775807)", "1|7|9223372036854775807|300|40|1|0|1|latency|NULL|NULL"},
          Case{R"("ReserveMB":0,"RefReserveMB":8)", "1|7|0|300|8|1|0|1|latency|NULL|NULL"},
          Case{R"("RefQuotaMB":0)", "1|7|0|0|8|1|0|1|latency|NULL|NULL"},
          Case{R"("Compression":0,"BitRotProtection":1,"Dedup":0)", "1|7|0|0|8|0|1|0|latency|NULL|NULL"},
          Case{R"("LogBias":"")", "1|7|0|0|8|0|1|0||NULL|NULL"},
          Case{R"("Sync":"standard")", "1|7|0|0|8|0|1|0||NULL|NULL"},
          Case{R"("Sync":"always")", "1|7|0|0|8|0|1|0||always|NULL"},
          Case{R"("Sync":"standard")", "1|7|0|0|8|0|1|0||standard|NULL"}}) {
        change(each.fields);
        EXPECT_EQ(attributes(), each.row);
    }
    sql("DELETE FROM zfs_attr WHERE share_id=1");
    change(R"("QuotaMB":7)");
    EXPECT_THAT(rows("SELECT * FROM zfs_attr WHERE share_id=1"), IsEmpty()) << "a share without attributes gets none";
}

TEST_F(ChangeShare, SyncKnowsThreeWords)
{
    Share given = new_share("media");
    given.ShareId = "1";
    for (const char *word : {"Always", "", "never"}) {
        given.Sync = word;
        expect_failure(8, std::string("Invalid Sync (") + word + "). One of 'standard', 'always', 'disabled'.",
                       [&] { return qbobj_modifyShare(qbdb, db, &given, &err); });
    }
}

TEST_F(ChangeShare, ReferenceQuotaBetweenUsedAndFree)
{
    const std::string refusal =
        "Invalid quota value. Need to be larger than Consumed Space and less than the total of Free Space and Consumed "
        "Space.";
    // 100 MB and a bit used, 1024 MB free
    sql("INSERT INTO _zfs_stat (share_id,used) VALUES(1,100*1048576+1048575)");
    for (const char *quota : {"1", "100", "1125", "18446744073709551615"})
        refuse(835, refusal, std::string(R"("RefQuotaMB":)") + quota);
    for (const char *quota : {"101", "1124", "0"}) {
        change(std::string(R"("RefQuotaMB":)") + quota);
        EXPECT_EQ(value("SELECT mb_refquota FROM zfs_attr WHERE share_id=1"), quota);
    }
    sql("UPDATE share SET path='/media/usb/media' WHERE id=1");
    change(R"("RefQuotaMB":50)");
    sql("UPDATE share SET path='/mediatank/media',volume_id='gone' WHERE id=1");
    refuse(835, refusal, R"("RefQuotaMB":101)");
}

// ---- block volumes, applications

TEST_F(ChangeShare, BlockVolume)
{
    change(R"("Zvol":{"SizeKB":9223372036854775807,"IsSparse":0})");
    change(R"("Zvol":{"SizeKB":1,"IsSparse":1,"UsedKB":5,"ZfsName":"x"})", 2);
    EXPECT_THAT(rows("SELECT * FROM zvol_share_option"), ElementsAre("1|9223372036854775807|0", "2|1|1"));
}

TEST_F(ChangeShare, Applications)
{
    sql("INSERT INTO `$application_on_share` VALUES('tank/media','old','x'),('tank/bare','old','y')");
    change(R"("UsedBy":[{"AppName":"tm","AppData":"it's"},{"AppName":"sync"}])");
    EXPECT_THAT(rows("SELECT * FROM `$application_on_share` ORDER BY 1,2"),
                ElementsAre("tank/bare|old|y", "tank/media|sync|NULL", "tank/media|tm|it's"));
    change(R"("Comment":"x")");
    EXPECT_EQ(value("SELECT COUNT(*) FROM `$application_on_share`"), "3");
}

// ---- snapshots

TEST_F(ChangeShare, ScheduleFieldByField)
{
    struct Case {
        const char *schedule;
        const char *row;
    };
    for (const Case &each :
         {Case{R"("Enabled":1)", "1|1|5|4|3|2|1|11|1|13|14"}, Case{"", "1|0|5|4|3|2|1|11|1|13|14"},
          Case{R"("Minute":"a","Hour":"b")", "1|0|a|b|3|2|1|11|1|13|14"},
          Case{R"("DayOfMonth":"","DayOfWeek":"c","Month":"12")", "1|0|a|b||c|1|11|1|13|14"},
          Case{R"("LastTaken":0,"PurgeManualSnapshot":0,"LastDailyTaken":7)", "1|0|a|b||c|1|11|1|7|14"},
          Case{R"("LastTaken":8,"PurgeManualSnapshot":9,"LastWeeklyTaken":10)", "1|0|a|b||c|1|8|9|7|10"}}) {
        change(std::string(R"("SnapshotSchedule":{)") + each.schedule + "}");
        EXPECT_EQ(rows("SELECT * FROM snapshot_schedule WHERE share_id=1")[0], each.row);
    }
    sql("DELETE FROM snapshot_schedule");
    change(R"("SnapshotSchedule":{"Enabled":1,"Hour":"7"})");
    EXPECT_THAT(rows("SELECT * FROM snapshot_schedule"), ElementsAre("1|1|0|7|*|*|*|0|1|0|0"));
}

TEST_F(ChangeShare, SnapshotPolicy)
{
    const auto policy = [&](int id) {
        return rows(
            "SELECT enabled,retention_rule,lifetime,number,SUBSTR(schedule,1,4),nonempty_snapshots,"
            "prev_versions FROM snapshot_management WHERE share_id=" +
            std::to_string(id));
    };
    change(R"("CustomSnapshotManagement":1,"NonEmptySnapshots":1,"PrevVersions":1)", 2);
    EXPECT_THAT(policy(2), ElementsAre("0|1|2592000|30|0000|0|0")) << "neither rule nor schedule";
    change(R"("CustomSnapshotManagement":1,"PrevVersions":1,"CustomSnapshotSchedule":"11")", 2);
    EXPECT_THAT(policy(2), ElementsAre("1|1|2592000|30|11|0|1"));
    change(R"("NonEmptySnapshots":1,"SnapshotRetentionRules":[{"Type":4,"Number":5,"Lifetime":6},{"Type":7}])", 2);
    EXPECT_THAT(policy(2), ElementsAre("0|4|6|5|11|1|0")) << "the first rule";
    change(R"("CustomSnapshotSchedule":"0","SnapshotRetentionRules":[{"Type":2,"Number":8,"Lifetime":9},{"Type":7}])");
    EXPECT_THAT(policy(1), ElementsAre("0|1|3|2|0|0|0", "0|2|9|8|0|0|0")) << "of several the one of its kind";
    sql("DELETE FROM snapshot_management WHERE share_id=2");
    change(R"("SnapshotRetentionRules":[{"Type":4}])", 2);
    EXPECT_THAT(policy(2), IsEmpty());
}

// ---- quotas

TEST_F(ChangeShare, QuotasAreWrittenAndOthersStay)
{
    sql("INSERT INTO user_quota VALUES(100,1,1,2),(101,1,3,4),(100,2,5,6)");
    change(R"("UserQuota":[{"AccountId":100,"HardMB":1001},{"AccountId":102,"HardMB":0}],
        "GroupQuota":[{"AccountId":110,"HardMB":99999999999}])");
    EXPECT_THAT(rows("SELECT user_id,share_id,mb_soft,mb_hard FROM user_quota ORDER BY 2,1"),
                ElementsAre("100|1|800|1001", "101|1|3|4", "102|1|0|0", "100|2|5|6"));
    EXPECT_THAT(rows("SELECT group_id,share_id,mb_soft,mb_hard FROM group_quota"),
                ElementsAre("110|1|1717986917|2147483647"));
}

// ---- the answer

TEST_F(ChangeShare, AnswerTellsPathAndMode)
{
    change(R"("Stat":{})", 2);
    EXPECT_EQ(answer("Stat")["_PosixMode"], 01777);
    EXPECT_EQ(answer("Path"), "/tank/bare");
    change(R"("Path":"/given")", 2);
    EXPECT_EQ(answer("Path"), "/given");
    EXPECT_EQ(value("SELECT path FROM share WHERE id=2"), "/tank/bare");
    sql("UPDATE share SET non_owner_delete=NULL WHERE id=2");
    change(R"("Stat":{"EveryoneAccess":"ReadOnly"})", 2);
    EXPECT_EQ(answer("Stat")["_PosixMode"], 0) << "of permissions that are not all known";
}

// ---- single aspects

struct ChangeAspect : ChangeShare {};

TEST_F(ChangeAspect, SnapshotFolder)
{
    expect_done("modifyShareVisibleSnapFolder", R"({"zfsName":"tank/bare","folder":"it's"})");
    EXPECT_THAT(rows("SELECT visible_snapdir FROM share"), ElementsAre(".snap", "it's"));
    expect_done("modifyShareVisibleSnapFolder", R"({"zfsName":"tank/bare"})");
    EXPECT_THAT(rows("SELECT visible_snapdir FROM share"), ElementsAre(".snap", "NULL"));
    const auto before = tables();
    expect_done("modifyShareVisibleSnapFolder", R"({"zfsName":"tank/none","folder":"x"})");
    expect_done("modifyShareVisibleSnapFolder", "{}");
    EXPECT_EQ(tables(), before);
}

TEST_F(ChangeAspect, BlockVolumeByDataSet)
{
    expect_done(
        "modifyZvol",
        R"({"zfsName":"tank/media","shareName":"disk","comment":"c","sizeKB":9223372036854775807,"isSparse":0})");
    EXPECT_THAT(rows("SELECT * FROM zvol_share_option"), ElementsAre("1|9223372036854775807|0"));
    EXPECT_THAT(rows("SELECT name,comment,path,zfs_name FROM share WHERE id=1"),
                ElementsAre("disk|c|/tank/media|tank/media"));
    const std::string refusal = "Failed DB Query for 'UPDATE share'. ";
    expect_failure(5, refusal + "UNIQUE constraint failed: share.name", [&] {
        return call("modifyZvol", R"({"zfsName":"tank/media","shareName":"bare","sizeKB":1,"isSparse":1})");
    });
    expect_failure(5, refusal + "NOT NULL constraint failed: share.name",
                   [&] { return call("modifyZvol", R"({"zfsName":"tank/media","sizeKB":1,"isSparse":1})"); });
    const auto before = tables();
    expect_done("modifyZvol", R"({"zfsName":"tank/none","shareName":"x","sizeKB":1,"isSparse":1})");
    EXPECT_EQ(tables(), before);
}

TEST_F(ChangeAspect, Schedule)
{
    expect_done("modifyShareSnapshotSchedule", R"({"shareName":"MEDIA","schedule":{"Minute":"9","Month":"9"}})");
    EXPECT_EQ(rows("SELECT * FROM snapshot_schedule")[0], "1|0|9|4|3|2|1|11|1|13|14");
    sql("DELETE FROM snapshot_schedule");
    expect_done("modifyShareSnapshotSchedule", R"({"shareName":"bare","schedule":{"Enabled":1}})");
    EXPECT_THAT(rows("SELECT * FROM snapshot_schedule"), ElementsAre("2|1|0|*|*|*|*|0|1|0|0"));
    expect_failure(6, "Share name (none) may be invalid.",
                   [&] { return call("modifyShareSnapshotSchedule", R"({"shareName":"none","schedule":{}})"); });
    expect_failure(6, "Share name ((null)) may be invalid.",
                   [&] { return call("modifyShareSnapshotSchedule", R"({"schedule":{}})"); });
}

TEST_F(ChangeAspect, ApplicationOfAShare)
{
    expect_done("modifyShareUsedBy", R"({"shareId":"1","usedby":{"AppName":"tm","AppData":"it's"}})");
    expect_done("modifyShareUsedBy", R"({"shareId":"1","usedby":{"AppName":"tm","AppData":"other"}})");
    expect_done("modifyShareUsedBy", R"({"shareId":"99","usedby":{"AppName":"tm"}})");
    EXPECT_THAT(rows("SELECT * FROM `$application_on_share`"), ElementsAre("tank/media|tm|it's"));
    for (const char *id : {"0", "media"})
        expect_failure(8, std::string("ShareId=") + id + " is not a valid ShareId", [&] {
            return call("modifyShareUsedBy", std::string(R"({"shareId":")") + id + R"(","usedby":{"AppName":"tm"}})");
        });
    for (const char *usedby : {"", R"(,"usedby":{"AppData":"x"})"})
        expect_failure(8, "usedby and usedby->AppName cannot be NULL",
                       [&] { return call("modifyShareUsedBy", std::string(R"({"shareId":"1")") + usedby + "}"); });
}

TEST_F(ChangeAspect, ApplicationOfOneShareOnly)
{
    sql("INSERT INTO `$application_on_share` "
        "VALUES('tank/bare','tm','1'),('tank/gone','tm','2'),('tank/bare','a','3')");
    expect_done("modifyShareUsedByExclusive", R"({"zfsName":"tank/media","usedby":{"AppName":"tm","AppData":"4"}})");
    EXPECT_THAT(rows("SELECT * FROM `$application_on_share` ORDER BY 2"),
                ElementsAre("tank/bare|a|3", "tank/media|tm|4"));
    expect_done("modifyShareUsedByExclusive", R"({"zfsName":"tank/media","usedby":{"AppName":"tm"}})");
    EXPECT_EQ(value("SELECT app_data FROM `$application_on_share` WHERE app_name='tm'"), "NULL");
    expect_failure(
        5,
        "Failed DB Query for 'INSERT $application_on_share'. NOT NULL constraint failed: "
        "$application_on_share.zfs_name",
        [&] { return call("modifyShareUsedByExclusive", R"({"zfsName":"tank/none","usedby":{"AppName":"tm"}})"); });
    for (const char *usedby : {"", R"(,"usedby":{"AppData":"x"})"})
        expect_failure(8, "usedby and usedby->AppName cannot be NULL", [&] {
            return call("modifyShareUsedByExclusive", std::string(R"({"zfsName":"tank/media")") + usedby + "}");
        });
}

TEST_F(ChangeAspect, AllStatementsGoByAnIndex)
{
    take_statements();
    expect_done("modifyShareVisibleSnapFolder", R"({"zfsName":"tank/bare","folder":"x"})");
    expect_done("modifyZvol", R"({"zfsName":"tank/media","shareName":"disk","sizeKB":1,"isSparse":0})");
    expect_done("modifyShareSnapshotSchedule", R"({"shareName":"bare","schedule":{}})");
    expect_done("modifyShareUsedBy", R"({"shareId":"1","usedby":{"AppName":"tm"}})");
    expect_done("modifyShareUsedByExclusive", R"({"zfsName":"tank/media","usedby":{"AppName":"tm"}})");
    expect_indexed(db, take_statements());
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
