// Volumes: the list, the refreshed figures, deletion with what lies on them.
#include "fixture/allocations.h"
#include "fixture/fixture.h"
#include "fixture/text_of.h"

using test::elements;
using test::text_of;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Volumes : test::Database {
    VolumeCollection all{};

    uint32_t list() { return qbobj_getVolumeCollection(qbdb, db, &all, &err); }
    std::vector<std::string> names() const
    {
        std::vector<std::string> found;
        for (const Volume *volume : elements(all.Volume)) found.emplace_back(volume->VolumeName);
        return found;
    }
};

TEST_F(Volumes, AreListedByNameWithoutRemovableStorage)
{
    sql("INSERT INTO system_config (raid_mode) SELECT 'CLASSIC' WHERE NOT EXISTS (SELECT 1 FROM system_config);"
        "UPDATE system_config SET raid_mode='CLASSIC';"
        "INSERT INTO _volume (id,lv_name) VALUES('b','Beta'),('a','alpha'),('u','USB'),('m','media'),('n',NULL)");
    ASSERT_EQ(list(), 0u);
    EXPECT_THAT(names(), ElementsAre("alpha", "Beta", "media", "tank"));
    EXPECT_STREQ(all.SystemRaidMode, "CLASSIC");
    ASSERT_EQ(list(), 0u);
    EXPECT_EQ(names().size(), 8u) << "appended";
}

TEST_F(Volumes, HaveAllTheirFields)
{
    sql("UPDATE _volume SET raid_type='RAID5',blk_total=9000000000000000000,blk_free=5,blk_size=4096,"
        "volume_health='ONLINE',sent_resilver_event=1,sent_scan_end=2,keyfile='/"
        "k',balance_status=3,disk_test_status=4");
    ASSERT_EQ(list(), 0u);
    const Volume *volume = all.Volume;
    ASSERT_NE(volume, nullptr);
    EXPECT_EQ(text_of(volume),
              "key=tank VolumeId=tank VolumeName=tank RaidType=RAID5 BlockTotal=9000000000000000000 BlockFree=5 "
              "BlockSize=4096 VolumeHealth=ONLINE SentResilverEvent=1 SentScanEnd=2 BalanceStatus=3 DisktestStatus=4 "
              "KeyFile=/k");
}

TEST_F(Volumes, WithoutAKindAreSwell)
{
    sql("UPDATE system_config SET raid_mode=NULL");
    ASSERT_EQ(list(), 0u);
    EXPECT_STREQ(all.SystemRaidMode, "SWELL");
    ASSERT_NE(all.Volume, nullptr);
    EXPECT_EQ(text_of(all.Volume), "key=tank VolumeId=tank VolumeName=tank RaidType=SWELL VolumeHealth='' KeyFile=''");
    sql("DELETE FROM system_config; UPDATE _volume SET blk_total='0x1F',blk_free='010',blk_size='0x1F'");
    all = {};
    ASSERT_EQ(list(), 0u);
    EXPECT_STREQ(all.SystemRaidMode, "SWELL");
    EXPECT_EQ(all.Volume->BlockTotal, 31) << "the base of a size is told by its beginning";
    EXPECT_EQ(all.Volume->BlockSize, 0) << "that of a number is ten";
}

TEST_F(Volumes, WithoutMemoryWhatWasReadStays)
{
    sql("INSERT INTO _volume (id,lv_name) VALUES('zoo','zoo')");
    std::vector<size_t> lengths;
    for (int nth = 1;; nth++) {
        all = {};
        test::fail_allocation(nth);
        const uint32_t rc = list();
        const bool failed = test::allocation_failed();
        test::fail_allocation(0);
        lengths.push_back(elements(all.Volume).size());
        if (!failed) break;
        EXPECT_EQ(rc, nth == 1 ? 5u : 2u) << "the first is the RAID mode's, in the database";
        EXPECT_EQ(err.code, rc);
        EXPECT_STREQ(err.message, nth == 1 ? "Failed DB Query for 'SELECT system_config'. out of memory"
                                           : "Failed to allocate resource.");
    }
    EXPECT_EQ(lengths.front(), 0u);
    EXPECT_THAT(lengths, testing::Contains(1u));
    EXPECT_EQ(names().size(), 2u);
}

TEST_F(Volumes, AreRefreshed)
{
    Volume volume{};
    volume.VolumeId = "tank";
    volume.VolumeName = "renamed";
    volume.RaidType = "RAID0";
    volume.BlockTotal = 8000000000000000000;
    volume.BlockFree = -1;
    volume.BlockSize = 512;
    volume.VolumeHealth = "DEGR'ADED";
    volume.SentResilverEvent = 1;
    volume.SentScanEnd = 2;
    volume.KeyFile = "/k";
    volume.BalanceStatus = 3;
    volume.DisktestStatus = 4;
    sql("INSERT INTO _volume (id,lv_name) VALUES('other','other')");
    ASSERT_EQ(qbobj_updateVolume(qbdb, db, &volume, &err), 0u);
    EXPECT_THAT(rows("SELECT * FROM _volume ORDER BY id DESC"),
                ElementsAre("tank|tank|NULL|8000000000000000000|-1|512|DEGR'ADED|1|2|/k|3|4",
                            "other|other|NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL"));
    const std::string before = content();
    volume.VolumeId = "unknown";
    EXPECT_EQ(qbobj_updateVolume(qbdb, db, &volume, &err), 0u);
    EXPECT_EQ(content(), before);
}

TEST_F(Volumes, WhoRefreshesNoneIsToldAndTheCallSucceeds)
{
    qbdb->log_level = 5;
    EXPECT_EQ(qbobj_updateVolume(qbdb, db, nullptr, &err), 0u);
    EXPECT_EQ(err.code, 8u);
    EXPECT_STREQ(err.message, "volume is null. caller should specify volume.");
    EXPECT_THAT(logged(2), ElementsAre("volume is null. caller should specify volume."));
    EXPECT_THAT(take_statements(), testing::Contains("COMMIT"));
}

TEST_F(Volumes, GoWithTheirSharesOnly)
{
    sql("INSERT INTO _volume (id,lv_name) VALUES('v2','Archive');"
        "INSERT INTO share (id,name,zfs_name,path,volume_id) VALUES(1,'a','tank/a','/tank/a','tank'),"
        "(2,'b','tank/b','/tank/a/b','tank'),(3,'c','v2/c','/Archive/c','v2');"
        "INSERT INTO `$application_on_share` VALUES('tank/a','app',NULL);"
        "INSERT INTO zfs_attr (share_id) VALUES(1),(3);"
        "INSERT INTO `$timemachine_quota` (user_id) VALUES(96),(100);"
        "UPDATE account_default SET home_volume_id='v2'");
    ASSERT_EQ(qbobj_deleteVolume(qbdb, db, "tank", &err), 0u);
    EXPECT_THAT(rows("SELECT id FROM share"), ElementsAre("3")) << "also one that is used, and one that holds another";
    EXPECT_THAT(rows("SELECT share_id FROM zfs_attr"), ElementsAre("3"));
    EXPECT_THAT(rows("SELECT * FROM `$application_on_share`"), IsEmpty());
    EXPECT_THAT(rows("SELECT id FROM _volume"), ElementsAre("v2"));
    EXPECT_EQ(value("SELECT COUNT(*) FROM `$timemachine_quota`"), "0") << "whichever volume they were for";
    EXPECT_EQ(value("SELECT home_volume_id FROM account_default"), "v2");
}

TEST_F(Volumes, OneThatIsUnknownTakesTheAllowancesToo)
{
    sql("INSERT INTO `$timemachine_quota` (user_id) VALUES(96)");
    ASSERT_EQ(qbobj_deleteVolume(qbdb, db, "unknown", &err), 0u);
    EXPECT_EQ(value("SELECT COUNT(*) FROM `$timemachine_quota`"), "0");
    EXPECT_EQ(value("SELECT COUNT(*) FROM _volume"), "1");
}

TEST_F(Volumes, HomeFoldersGoToTheNameOfAnother)
{
    sql("INSERT INTO _volume (id,lv_name) VALUES('m','media'),('v2','Archive')");
    qbdb->log_level = 5;
    ASSERT_EQ(qbobj_deleteVolume(qbdb, db, "tank", &err), 0u);
    EXPECT_EQ(value("SELECT home_volume_id FROM account_default"), "Archive") << "the name, not the id";
    EXPECT_THAT(logged(5),
                testing::IsSupersetOf({"Default share is deleted!!!\n", "Default share is reassign to Archive.\n"}));
    sql("UPDATE account_default SET home_volume_id='v2'");
    ASSERT_EQ(qbobj_deleteVolume(qbdb, db, "v2", &err), 0u);
    EXPECT_EQ(value("SELECT home_volume_id FROM account_default"), "run") << "media never holds home folders";
    EXPECT_THAT(logged(5), testing::Contains("Default share is reassign to run.\n"));
}

TEST_F(Volumes, AHomeThatCannotBeReassignedIsToldByTheCode)
{
    const struct {
        const char *statement;
        const char *line;
    } cases[] = {{"SELECT V.lv_name", "Failed to SELECT _volume.\n"},
                 {"UPDATE account_default", "Failed to UPDATE account_default.\n"}};
    const std::string before = content();
    for (const auto &[statement, line] : cases) {
        log.clear();
        fail_statement(1, 1, "injected", statement);
        EXPECT_EQ(qbobj_deleteVolume(qbdb, db, "tank", &err), 3u);
        EXPECT_EQ(err.code, 0u);
        EXPECT_EQ(err.message, nullptr);
        EXPECT_THAT(logged(2), ElementsAre(line));
        EXPECT_EQ(content(), before);
    }
}

TEST_F(Volumes, AShareThatCannotGoKeepsTheVolume)
{
    sql("INSERT INTO share (id,name,zfs_name,path,volume_id) VALUES(7,'a','tank/a','/tank/a','tank');"
        "CREATE TRIGGER keep BEFORE DELETE ON share BEGIN SELECT RAISE(IGNORE); END");
    expect_failure(6, "None of row is deleted. May be bad resource_id=7'",
                   [&] { return qbobj_deleteVolume(qbdb, db, "tank", &err); });
    fail_statement(1, 1, "injected", "SELECT S.id FROM share");
    expect_failure(5, "Error in 'SELECT FROM share'.", [&] { return qbobj_deleteVolume(qbdb, db, "tank", &err); });
}

using VolumesDeathTest = Volumes;

TEST_F(VolumesDeathTest, NeedARecord)
{
    EXPECT_DEATH(qbobj_getVolumeCollection(qbdb, db, nullptr, &err), "Assertion `volumes' failed");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
