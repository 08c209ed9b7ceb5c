// Disks and enclosures: lists, one disk, the spare flag, deletion.
#include "fixture/allocations.h"
#include "fixture/fixture.h"
#include "fixture/text_of.h"

using test::elements;
using test::text_of;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Disks : test::Database {
    DiskCollection disks{};
    Disk disk{};

    Disks()
    {
        sql("INSERT INTO _disk_enclosure (controller,name,nr_row,nr_column,disk_horizontal,ses_device,dead_slots) "
            "VALUES"
            "(1,'Shelf',3,4,1,'/dev/sg3','1x1'),(0,'Front',2,4,0,NULL,NULL);"
            "INSERT INTO jbod_port VALUES(0,'internal'),(1,'A');"
            "INSERT INTO disk_port VALUES(0,0,1,1),(0,1,2,1),(0,2,1,2),(1,0,1,1);"
            "INSERT INTO `$disk_info` VALUES"
            "('10',1,'WD40','S10','fw1',5400,7814037168,4000787030016,0,1,'sata','tank','data','0',18446744,10,1,1),"
            "('9',0,NULL,NULL,NULL,NULL,NULL,NULL,0,0,NULL,NULL,NULL,NULL,NULL,2,NULL,NULL),"
            "('sdc',1,'M','S','F',1,2,3,1,0,'sas','v','t','3',7,0,0,0),"
            "('unknown',1,'M','S','F',1,2,3,0,2,'sas','v','t','3',7,1,1,1);"
            "INSERT INTO _disk_health (disk_id,temp,ata_errors,zpool_state) "
            "VALUES('10',33,4,'DEGRADED'),('9',1,2,NULL),"
            "('sdc',3,4,'ONLINE')");
    }
    std::vector<std::string> ids() const
    {
        std::vector<std::string> found;
        for (const Disk *each : elements(disks.Disk)) found.emplace_back(each->DiskId);
        return found;
    }
    uint32_t find(const char *name)
    {
        disk.DevName = name;
        return qbobj_getDiskByDevname(qbdb, db, &disk, &err);
    }
};

TEST_F(Disks, AreListedByChannelWithTheirEnclosure)
{
    ASSERT_EQ(qbobj_getDiskCollection(qbdb, db, &disks, &err), 0u);
    EXPECT_THAT(ids(), ElementsAre("9", "10")) << "2 before 10, and none without a health report";
    EXPECT_EQ(text_of(disks),
              "key=controller-0 DiskEnclosurePort=internal SESDevice='' EnclosureName=Front EnclosureRows=2 "
              "EnclosureCols=4 Disk=[{resource_id=9 DiskId=9 DevName=9 Channel=2 Model='' Serial='' "
              "FirmwareVersion='' Temperature=1 ATAError=2 Pool='' PoolType='' PoolState=NEW PoolHostId=0 "
              "SlotName=1x1 HardwareInterface='' DiskState=ONLINE} {resource_id=10 DiskId=10 Present=1 DevName=10 "
              "Channel=10 Model=WD40 Serial=S10 FirmwareVersion=fw1 RPM=5400 Sectors=7814037168 "
              "Capacity=4000787030016 Temperature=33 ATAError=4 Pool=tank PoolType=data PoolState=ACTIVE "
              "PoolHostId=18446744 SlotName=2x1 HardwareInterface=sata DiskState=DEGRADED}]")
        << "DeadSlots stays null; whether a disk is a spare or signed is not told by the list";
}

TEST_F(Disks, OfAnotherEnclosure)
{
    ASSERT_EQ(qbobj_getDiskCollectionForController(qbdb, db, &disks, 1, &err), 0u);
    EXPECT_THAT(ids(), ElementsAre("sdc"));
    EXPECT_EQ(disks.Disk->resource_id, 0) << "no number";
    EXPECT_STREQ(disks.Disk->PoolState, "SPARE");
    EXPECT_EQ(text_of(disks),
              "key=controller-1 DiskEnclosureId=1 DiskEnclosurePort=A SESDevice=/dev/sg3 EnclosureName=Shelf "
              "EnclosureRows=3 EnclosureCols=4 IsSlotHorizontal=1 DeadSlots=1x1 Disk=[{DiskId=sdc Present=1 "
              "DevName=sdc Controller=1 Model=M Serial=S FirmwareVersion=F RPM=1 Sectors=2 Capacity=3 Temperature=3 "
              "ATAError=4 Pool=v PoolType=t PoolState=SPARE PoolHostId=7 SlotName=1x1 HardwareInterface=sas "
              "DiskEnclosureId=1 DiskState=ONLINE}]");
}

TEST_F(Disks, AnEnclosureWithoutAPortKeepsItsFields)
{
    sql("DELETE FROM jbod_port WHERE controller=1");
    ASSERT_EQ(qbobj_getDiskCollectionForController(qbdb, db, &disks, 1, &err), 0u);
    EXPECT_THAT(ids(), ElementsAre("sdc"));
    EXPECT_EQ(text_of(disks),
              "key=controller-1 Disk=[{DiskId=sdc Present=1 DevName=sdc Controller=1 Model=M Serial=S "
              "FirmwareVersion=F RPM=1 Sectors=2 Capacity=3 Temperature=3 ATAError=4 Pool=v PoolType=t "
              "PoolState=SPARE PoolHostId=7 SlotName=1x1 HardwareInterface=sas DiskEnclosureId=1 DiskState=ONLINE}]");
    sql("INSERT INTO jbod_port VALUES(1,'B'),(1,'C')");
    ASSERT_EQ(qbobj_getDiskCollectionForController(qbdb, db, &disks, 1, &err), 0u);
    EXPECT_STREQ(disks.DiskEnclosurePort, "B") << "the first of several";
    EXPECT_EQ(ids().size(), 2u) << "appended";
}

TEST_F(Disks, EnclosuresWithTheirDisks)
{
    DiskEnclosureCollection all{};
    ASSERT_EQ(qbobj_getDiskEnclosureCollection(qbdb, db, &all, &err), 0u);
    std::vector<std::string> found;
    for (const DiskCollection *each : elements(all.DiskCollection))
        found.push_back(std::string(each->key) + " " + each->EnclosureName + " " +
                        std::to_string(elements(each->Disk).size()));
    EXPECT_THAT(found, testing::UnorderedElementsAre("controller-0 Front 2", "controller-1 Shelf 1"));
    fail_statement(2, 1, "injected", "FROM `$disk_info`");
    all = {};
    expect_failure(5, "Failed DB Query for 'SELECT FROM disk_info'. injected",
                   [&] { return qbobj_getDiskEnclosureCollection(qbdb, db, &all, &err); });
    fail_statement(1, 1, "injected", "jbod_port");
    expect_failure(5, "Failed DB Query for 'SELECT FROM _disk_enclosure'. injected",
                   [&] { return qbobj_getDiskEnclosureCollection(qbdb, db, &all, &err); });
}

/// A pool state's number, volume and host, and the word for them.
struct PoolState {
    const char *state;
    const char *volume;
    const char *host;
    const char *word;
};

TEST_F(Disks, PoolStates)
{
    static constexpr PoolState kStates[] = {
        {"'0'", "'v'", "7", "ACTIVE"},    {"'1'", "'v'", "7", "EXPORTED"},
        {"'2'", "'v'", "7", "DESTROYED"}, {"'3'", "'v'", "7", "SPARE"},
        {"'4'", "'v'", "7", "L2CACHE"},   {"'5'", "'v'", "7", "UNINITIALIZED"},
        {"'6'", "'v'", "7", "UNAVAIL"},   {"'7'", "'v'", "7", "POTENTIALLY_ACTIVE"},
        {"'8'", "'v'", "7", "UNKNOWN"},   {"'9'", "'v'", "7", "UNKNOWN"},
        {"'-1'", "'v'", "7", "UNKNOWN"},  {"NULL", "'v'", "7", "ACTIVE"},
        {"'0'", "'v'", "0", "NEW"},       {"'9'", "'v'", "0", "NEW"},
        {"'0'", "'v'", "NULL", "NEW"},    {"'0'", "''", "7", "NEW"},
        {"'0'", "NULL", "7", "NEW"},      {"'99999999999999999999'", "'v'", "7", "UNKNOWN"},
    };
    for (const auto &[state, volume, host, word] : kStates) {
        sql(std::string("UPDATE `$disk_info` SET pool_state=") + state + ",volume_id=" + volume +
            ",pool_hostid=" + host);
        disks = {};
        ASSERT_EQ(qbobj_getDiskCollection(qbdb, db, &disks, &err), 0u);
        EXPECT_STREQ(disks.Disk->PoolState, word) << state << volume << host;
    }
}

TEST_F(Disks, LabelOfAPort)
{
    const char *label = "unset";
    ASSERT_EQ(qbobj_getDiskEnclosurePort(qbdb, db, 1, &label, &err), 0u);
    EXPECT_STREQ(label, "A");
    ASSERT_EQ(qbobj_getDiskEnclosurePort(qbdb, db, 7, &label, &err), 0u);
    EXPECT_EQ(label, nullptr);
    label = "unset";
    fail_statement(1);
    expect_failure(5, "Query faile for 'SELECT jbod_port'. injected",
                   [&] { return qbobj_getDiskEnclosurePort(qbdb, db, 1, &label, &err); });
    EXPECT_STREQ(label, "unset");
}

TEST_F(Disks, OneByItsName)
{
    ASSERT_EQ(find("10"), 0u);
    EXPECT_EQ(text_of(disk),
              "DiskId=10 Present=1 DevName=10 Channel=10 Model=WD40 Serial=S10 FirmwareVersion=fw1 RPM=5400 "
              "Sectors=7814037168 Capacity=4000787030016 Temperature=33 ATAError=4 Pool=tank PoolHostId=0 "
              "SlotName=2x1 HardwareInterface=sata ReplacedWithSpare=1 IsSignedByVexmoor=1")
        << "neither its number nor type and state of its pool, nor its own state";
}

TEST_F(Disks, OneWithoutAHealthReportIsFound)
{
    ASSERT_EQ(find("unknown"), 0u);
    EXPECT_STREQ(disk.DiskId, "unknown");
    EXPECT_EQ(disk.Temperature, 0);
    EXPECT_EQ(disk.ATAError, 0);
}

TEST_F(Disks, OneThatIsNotThereOrInTwoSlotsLeavesTheRecord)
{
    sql("INSERT INTO disk_port VALUES(1,0,4,4)");
    for (const char *name : {"nothing", "sdc", "x' OR '1'='1"}) {
        disk = {};
        disk.Model = "as it was";
        ASSERT_EQ(find(name), 0u);
        EXPECT_EQ(err.code, 0u);
        EXPECT_STREQ(disk.DevName, name);
        EXPECT_STREQ(disk.Model, "as it was");
        EXPECT_EQ(disk.DiskId, nullptr);
    }
    fail_statement(1);
    disk.DevName = "10";
    expect_failure(5, "Failed DB Query for 'SELECT FROM disk_info'. injected", [&] { return find("10"); });
}

TEST_F(Disks, SpareFlag)
{
    ASSERT_EQ(qbobj_setDiskSpare(qbdb, db, "sdc", 1, &err), 0u);
    EXPECT_THAT(rows("SELECT id,replaced_with_spare FROM `$disk_info` ORDER BY id"),
                ElementsAre("10|1", "9|NULL", "sdc|1", "unknown|1"));
    EXPECT_EQ(qbobj_setDiskSpare(qbdb, db, "nothing", 1, &err), 0u);
    fail_statement(1);
    expect_failure(5, "Failed DB Query for 'UPDATE FROM disk_info'. injected",
                   [&] { return qbobj_setDiskSpare(qbdb, db, "sdc", 0, &err); });
}

TEST_F(Disks, Deletion)
{
    disk.DevName = "9";
    ASSERT_EQ(qbobj_deleteDiskByDevname(qbdb, db, &disk, &err), 0u);
    EXPECT_THAT(rows("SELECT id FROM `$disk_info` ORDER BY id"), ElementsAre("10", "sdc", "unknown"));
    disk.DevName = "nothing";
    EXPECT_EQ(qbobj_deleteDiskByDevname(qbdb, db, &disk, &err), 0u);
    disk.DevName = "10";
    fail_statement(1);
    expect_failure(5, "Failed DB Query for DELETE disk_info. injected",
                   [&] { return qbobj_deleteDiskByDevname(qbdb, db, &disk, &err); });
}

TEST_F(Disks, WhoNamesNoneIsToldAndTheCallSucceeds)
{
    static constexpr char kNoDisk[] = "disk or disk->DevName is null. caller should specify devname.";
    Disk nameless{};
    const std::string before = content();
    const auto expect_told = [&](const char *message, uint32_t rc) {
        EXPECT_EQ(rc, 0u);
        EXPECT_EQ(err.code, 8u);
        EXPECT_STREQ(err.message, message);
        EXPECT_THAT(log, testing::Contains(testing::AllOf(testing::Field(&test::LogLine::level, 2u),
                                                          testing::Field(&test::LogLine::flag, 1u),
                                                          testing::Field(&test::LogLine::text, message))));
        EXPECT_THAT(take_statements(), ElementsAre(testing::StartsWith("BEGIN"), "COMMIT"));
        log.clear();
    };
    take_statements();
    expect_told(kNoDisk, qbobj_getDiskByDevname(qbdb, db, nullptr, &err));
    expect_told(kNoDisk, qbobj_getDiskByDevname(qbdb, db, &nameless, &err));
    expect_told(kNoDisk, qbobj_deleteDiskByDevname(qbdb, db, nullptr, &err));
    expect_told(kNoDisk, qbobj_deleteDiskByDevname(qbdb, db, &nameless, &err));
    expect_told("devname is null. caller should specify devname.", qbobj_setDiskSpare(qbdb, db, nullptr, 1, &err));
    expect_told("diff is NULL", qbobj_getDiskDiff(qbdb, db, nullptr, &err));
    expect_told("disk or diff is null.", qbobj_getDiskByDiskDiff(qbdb, db, nullptr, &nameless, &err));
    DiskDiff diff{};
    expect_told("disk or diff is null.", qbobj_getDiskByDiskDiff(qbdb, db, &diff, nullptr, &err));
    EXPECT_EQ(content(), before);
}

TEST_F(Disks, WithoutMemory)
{
    DiskEnclosureCollection all{};
    const auto list = [&] {
        all = {};
        return qbobj_getDiskEnclosureCollection(qbdb, db, &all, &err);
    };
    test::expect_each_allocation_noticed(err, list, 2, "Failed to allocate resource.");
    const auto read = [&] {
        disk = {};
        const uint32_t rc = find("10");
        EXPECT_EQ(disk.DiskId == nullptr, rc != 0) << "untouched on failure";
        return rc;
    };
    test::expect_each_allocation_noticed(err, read, 2, "Failed to allocate resource.");
}

using DisksDeathTest = Disks;

TEST_F(DisksDeathTest, NeedSomewhereToPutTheAnswer)
{
    EXPECT_DEATH(qbobj_getDiskCollection(qbdb, db, nullptr, &err), "Assertion `disks' failed");
    EXPECT_DEATH(qbobj_getDiskEnclosureCollection(qbdb, db, nullptr, &err), "Assertion `enclosures' failed");
    EXPECT_DEATH(qbobj_getDiskEnclosurePort(qbdb, db, 0, nullptr, &err), "Assertion `label' failed");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
