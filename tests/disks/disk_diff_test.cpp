// Disks that were plugged in or pulled: by an importer of the test's own, and by the machine's.
#include "fixture/allocations.h"
#include "fixture/fixture.h"
#include "fixture/machine.h"
#include "fixture/text_of.h"

using test::elements;
using test::text_of;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct DiskDiffs : test::Database {
    DiskDiff *diff = nullptr;
    Disk disk{};
    std::string change;  // what the importer does
    int imports = 0;
    int rc = 0;

    DiskDiffs()
    {
        sql("INSERT INTO _disk_enclosure (controller,name) VALUES(0,'Front'),(1,'Shelf');"
            "INSERT INTO disk_port VALUES(0,0,1,1),(0,1,2,1),(0,3,3,1);"
            "INSERT INTO `$disk_info` VALUES"
            "('sda',1,'M1','S1','F1',7200,100,51200,0,0,'sata','tank','data','0',7,10,1,1),"
            "('sdb',1,'M2','S2','F2',5400,200,102400,0,1,'sata','tank','data','1',7,11,0,0),"
            "('gone',0,'M3','S3','F3',1,2,3,0,3,'sas','archive','log','2',9,13,0,0)");
        qbdb_set_import_hook(
            qbdb,
            [](void *self, qbdb_t *, sqlite3 *connection, int selector) {
                auto *test = static_cast<DiskDiffs *>(self);
                EXPECT_EQ(selector, QBDB_IMPORT_DISKS);
                EXPECT_EQ(sqlite3_get_autocommit(connection), 0) << "inside the transaction";
                test->imports++;
                test->sql(test->change);
                return test->rc;
            },
            this);
    }
    std::vector<std::string> changes() const
    {
        std::vector<std::string> found;
        for (const DiskDiff *each : elements(diff))
            found.push_back(std::to_string(each->AddOrRemove) + " " + each->DiskId);
        return found;
    }
    uint32_t look()
    {
        diff = nullptr;
        return qbobj_getDiskDiff(qbdb, db, &diff, &err);
    }
    void expect_nothing_left()
    {
        EXPECT_THAT(rows("SELECT name FROM sqlite_schema WHERE name LIKE '_old%'"), IsEmpty());
    }
};

TEST_F(DiskDiffs, NothingChanged)
{
    ASSERT_EQ(look(), 0u);
    EXPECT_EQ(imports, 1);
    EXPECT_EQ(diff, nullptr);
    expect_nothing_left();
}

TEST_F(DiskDiffs, BothDirections)
{
    change =
        "UPDATE `$disk_info` SET present=0 WHERE id='sdb';"
        "INSERT INTO `$disk_info` VALUES('sdc',1,'M4','S4','F4',0,300,153600,0,3,'sas','other','spare','3',5,13,1,1),"
        "('sdd',1,NULL,NULL,NULL,NULL,NULL,NULL,1,9,NULL,NULL,NULL,NULL,NULL,99,NULL,NULL),"
        "('sde',0,NULL,NULL,NULL,NULL,NULL,NULL,0,9,NULL,NULL,NULL,NULL,NULL,99,NULL,NULL)";
    qbdb->log_level = 5;
    ASSERT_EQ(look(), 0u);
    EXPECT_THAT(changes(), ElementsAre("1 sdc", "1 sdd", "-1 sdb")) << "an absent disk is never reported as added";
    const DiskDiff *added = diff;
    EXPECT_EQ(text_of(added),
              "AddOrRemove=1 DiskId=sdc Channel=13 Model=M4 Serial=S4 FirmwareVersion=F4 Sectors=300 Capacity=153600 "
              "DiskEnclosureId=controller-0 DiskEnclosureName=Front SlotName=3x1 HardwareInterface=sas Pool=archive "
              "PoolType=spare PoolState=SPARE PoolHostId=5 ReplacedWithSpare=1 IsSignedByVexmoor=1")
        << "of the disk that sat in the bay before";
    const DiskDiff *bare = added->next;
    EXPECT_EQ(text_of(bare),
              "AddOrRemove=1 DiskId=sdd Controller=1 Channel=99 Model='' Serial='' FirmwareVersion='' "
              "DiskEnclosureId=controller-1 DiskEnclosureName=Shelf HardwareInterface='' PoolType='' PoolState=NEW "
              "PoolHostId=0");
    const DiskDiff *removed = bare->next;
    EXPECT_EQ(removed->Pool, nullptr) << "though the disk had one";
    EXPECT_STREQ(removed->PoolState, "EXPORTED");
    EXPECT_STREQ(removed->SlotName, "2x1");
    // Counted are all rows that differ, also those of disks that are absent on both sides.
    EXPECT_THAT(logged(5), testing::IsSupersetOf({"4 disks are added\n", "Disk id=sdc at 0 is added\n",
                                                  "Disk id=sdd at 1 is added\n", "2 disks are deleted\n",
                                                  "Disk id=sdb at 0 is removed\n"}));
    expect_nothing_left();
    change = "";
    ASSERT_EQ(look(), 0u);
    EXPECT_THAT(changes(), IsEmpty()) << "told once";
}

TEST_F(DiskDiffs, OnlyPresenceOneIsKnownAsPresent)
{
    sql("UPDATE `$disk_info` SET present=2 WHERE id='sda'");
    ASSERT_EQ(look(), 0u);
    EXPECT_THAT(changes(), ElementsAre("1 sda", "-1 sda"));
}

TEST_F(DiskDiffs, ADiskThatComesBack)
{
    change = "UPDATE `$disk_info` SET present=1 WHERE id='gone'";
    ASSERT_EQ(look(), 0u);
    EXPECT_THAT(changes(), ElementsAre("1 gone"));
    EXPECT_STREQ(diff->Pool, "archive") << "it sat there itself";
}

TEST_F(DiskDiffs, AreAppended)
{
    DiskDiff head{};
    diff = &head;
    change = "UPDATE `$disk_info` SET present=0";
    ASSERT_EQ(qbobj_getDiskDiff(qbdb, db, &diff, &err), 0u);
    EXPECT_EQ(diff, &head);
    EXPECT_EQ(elements(diff).size(), 3u);
}

TEST_F(DiskDiffs, AnImporterThatFailsIsNotAskedWhy)
{
    rc = 1;
    EXPECT_EQ(look(), 0u);
    EXPECT_EQ(diff, nullptr);
}

TEST_F(DiskDiffs, AStaleCopyDoesNoHarm)
{
    sql("CREATE TABLE `_old_$disk_info` (id)");
    ASSERT_EQ(look(), 0u);
    expect_nothing_left();
}

TEST_F(DiskDiffs, InventoriesThatCannotBeComparedAreToldByTheCode)
{
    const struct {
        const char *statement;
        const char *line;
    } cases[] = {
        {"CREATE TABLE", "Error in qbdb_sql_duplicate_tables() "},
        {"FROM `$disk_info` WHERE id NOT IN", "Error in SELECT disk_info EXCEPT old_$disk_info (injected)\n"},
        {"FROM _old_$disk_info WHERE id NOT IN", "Error in SELECT old_$disk_info EXCEPT disk_info (injected)\n"},
        {"DROP TABLE \"", "Error in qbdb_sql_delete_tables() "},
    };
    change = "INSERT INTO `$disk_info` (id,present) VALUES('sdx',1)";
    const std::string before = content();
    for (const auto &[statement, line] : cases) {
        SCOPED_TRACE(statement);
        log.clear();
        fail_statement(1, 1, "injected", statement);
        EXPECT_EQ(look(), 3u);
        EXPECT_EQ(err.code, 0u);
        EXPECT_THAT(logged(2), ElementsAre(testing::StartsWith(line)));
        EXPECT_EQ(content(), before) << "and no copy is left";
    }
}

TEST_F(DiskDiffs, ADiskWhosePlaceCannotBeNamedIsListed)
{
    const struct {
        const char *statement;
        const char *message;
    } cases[] = {{"SELECT name FROM _disk_enclosure", "Failed DB Query for 'SELECT FROM _disk_enclosure'. injected"},
                 {"FROM disk_port", "Failed DB Query for 'SELECT FROM disk_port'. injected"}};
    for (const auto &[statement, message] : cases) {
        change = std::string("INSERT INTO `$disk_info` (id,present,controller,port) VALUES('") + (statement + 12) +
                 "',1,0,0)";
        fail_statement(1, 1, "injected", statement);
        EXPECT_EQ(look(), 0u);
        EXPECT_EQ(err.code, 5u);
        EXPECT_STREQ(err.message, message);
        ASSERT_EQ(elements(diff).size(), 1u);
        EXPECT_EQ(diff->DiskEnclosureName == nullptr, diff->SlotName != nullptr) << "the other name is there";
    }
}

TEST_F(DiskDiffs, AFormerVolumeThatCannotBeReadIsLeftOut)
{
    change = "INSERT INTO `$disk_info` (id,present,controller,channel) VALUES('sdx',1,0,13)";
    fail_statement(1, 1, "injected", "SELECT volume_id FROM _old_");
    EXPECT_EQ(look(), 0u);
    EXPECT_EQ(err.code, 0u);
    ASSERT_NE(diff, nullptr);
    EXPECT_EQ(diff->Pool, nullptr);
}

TEST_F(DiskDiffs, WithoutMemory)
{
    change = "UPDATE `$disk_info` SET present=1-present";
    const auto call = [&] {
        const uint32_t code = look();
        EXPECT_TRUE(code != 0 || elements(diff).size() == 3);
        return code;
    };
    test::expect_each_allocation_noticed(err, call, 2, "Failed to allocate object.");
}

TEST_F(DiskDiffs, TheDiskBehindOne)
{
    sql("UPDATE `$disk_info` SET present=0;"
        "INSERT INTO `$disk_info` (id,present,controller,port,channel,volume_id) VALUES('no bay',0,0,77,10,'x'),"
        "('here',1,0,0,10,'x')");
    DiskDiff wanted{};
    wanted.Channel = 10;
    qbdb->log_level = 5;
    disk.Model = "as it was";
    ASSERT_EQ(qbobj_getDiskByDiskDiff(qbdb, db, &wanted, &disk, &err), 0u);
    EXPECT_STREQ(disk.DiskId, "sda");
    EXPECT_STREQ(disk.Pool, "tank");
    EXPECT_THAT(logged(5), testing::IsSupersetOf({"In x_qbobj_getDiskByDiskDiff. diff-controller[0], diff-channel[10]",
                                                  "In x_qbobj_getDiskByDiskDiff. nrow[2]",
                                                  "In x_qbobj_getDiskByDiskDiff. DISKID[sda]",
                                                  "In x_qbobj_getDiskByDiskDiff. DISKID[sda] Volume[tank]"}));
}

TEST_F(DiskDiffs, NoDiskBehindOne)
{
    DiskDiff wanted{};
    wanted.Channel = 4711;
    disk.DevName = "as it was";
    ASSERT_EQ(qbobj_getDiskByDiskDiff(qbdb, db, &wanted, &disk, &err), 0u);
    EXPECT_STREQ(disk.DevName, "as it was");
    sql("UPDATE `$disk_info` SET present=0,port=77,channel=5");
    wanted.Channel = 5;
    ASSERT_EQ(qbobj_getDiskByDiskDiff(qbdb, db, &wanted, &disk, &err), 0u);
    EXPECT_EQ(disk.DiskId, nullptr) << "none of them is in a slot";
    EXPECT_STREQ(disk.DevName, "gone") << "the last one tried";
    disk.Pool = "stale";
    ASSERT_EQ(qbobj_getDiskByDiskDiff(qbdb, db, &wanted, &disk, &err), 0u);
    EXPECT_STREQ(disk.DevName, "sda") << "a volume that the record had already ends the search at once";
}

TEST_F(DiskDiffs, ASearchThatFails)
{
    sql("UPDATE `$disk_info` SET present=0");
    DiskDiff wanted{};
    wanted.Channel = 10;
    fail_statement(1, 1, "injected", "SELECT D.id FROM");
    expect_failure(5, "Failed DB Query for 'SELECT FROM disk_info'. injected",
                   [&] { return qbobj_getDiskByDiskDiff(qbdb, db, &wanted, &disk, &err); });
    fail_statement(1, 1, "injected", "SELECT D.id,D.present");
    EXPECT_EQ(qbobj_getDiskByDiskDiff(qbdb, db, &wanted, &disk, &err), 0u);
    EXPECT_EQ(err.code, 5u) << "a look-up that fails is told in the record alone";
    EXPECT_STREQ(err.message, "Failed DB Query for 'SELECT FROM disk_info'. injected");
}

TEST_F(DiskDiffs, OfAMachine)
{
    const std::string &root = directory.path;
    sql("DELETE FROM `$disk_info`; DELETE FROM _disk_enclosure; DELETE FROM disk_port");
    qbdb_set_import_hook(qbdb, nullptr, nullptr);
    test::plug_in(root, "vda", "A", 1);
    test::plug_in(root, "vdb", "B", 2);
    ASSERT_EQ(look(), 0u);
    EXPECT_THAT(changes(), testing::UnorderedElementsAre("1 vda", "1 vdb"));
    DiskCollection disks{};
    ASSERT_EQ(qbobj_getDiskCollection(qbdb, db, &disks, &err), 0u);
    EXPECT_EQ(elements(disks.Disk).size(), 2u) << "in the list as well";
    EXPECT_EQ(disks.Disk->Capacity, 1u << 30);
    sql("UPDATE `$disk_info` SET volume_id='tank' WHERE id='vdb'");

    test::pull_out(root, "vdb");
    ASSERT_EQ(look(), 0u);
    EXPECT_THAT(changes(), ElementsAre("-1 vdb"));
    Disk pulled{};
    ASSERT_EQ(qbobj_getDiskByDiskDiff(qbdb, db, diff, &pulled, &err), 0u);
    EXPECT_STREQ(pulled.Serial, "B");
    EXPECT_EQ(pulled.Present, 0);

    test::plug_in(root, "vdc", "C", 2);
    ASSERT_EQ(look(), 0u);
    EXPECT_THAT(changes(), ElementsAre("1 vdc"));
    EXPECT_STREQ(diff->Pool, "tank") << "the volume that misses a disk in this bay";
    ASSERT_EQ(look(), 0u);
    EXPECT_THAT(changes(), IsEmpty());
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
