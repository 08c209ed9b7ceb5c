// Health of disks: storing the latest readings and listing them.
#include "fixture/allocations.h"
#include "fixture/fixture.h"
#include "fixture/plans.h"

using testing::ElementsAre;

namespace {

struct DiskHealthTest : test::Database {
    DiskHealthTest()
    {
        sql("INSERT INTO `$disk_info` (id,controller,channel) VALUES('sda',0,3),('sdb',1,4),('sdc',0,5)");
    }
    uint32_t get(DiskHealthCollection &all) { return qbobj_getDiskHealthCollection(qbdb, db, &all, &err); }
    uint32_t set(DiskHealth &disk) { return qbobj_setDiskHealth(qbdb, db, &disk, &err); }
};

DiskHealth reading(const char *disk)
{
    return {nullptr, nullptr, disk, 90, 91, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, "ONLINE", 14, 15, 16};
}

TEST_F(DiskHealthTest, AReadingIsStoredAndReadBack)
{
    DiskHealth disk = reading("sdb");
    ASSERT_EQ(set(disk), 0u) << err.message;
    EXPECT_THAT(rows("SELECT * FROM _disk_health"), ElementsAre("sdb|1|2|3|4|5|6|7|8|9|10|11|12|13|ONLINE|14|15|16"));
    DiskHealthCollection all{};
    ASSERT_EQ(get(all), 0u) << err.message;
    const DiskHealth *read = all.Health;
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->next, nullptr);
    EXPECT_STREQ(read->key, "controller-1");
    EXPECT_STREQ(read->DiskId, "sdb");
    EXPECT_EQ(read->Controller, 1) << "of the disk, not of the reading";
    EXPECT_EQ(read->Channel, 4);
    const int32_t numbers[] = {
        read->ATAErrors,    read->ReallocSect,       read->ReallocEvent,       read->SpinRetryCnt,
        read->IOEdc,        read->CmdTimeouts,       read->PendingSect,        read->UncorrectableErr,
        read->Temp,         read->StartStopCnt,      read->PowerOnHrs,         read->PowerCycleCnt,
        read->LoadCycleCnt, read->ZpoolReadErrorCnt, read->ZpoolWriteErrorCnt, read->ZpoolCksumErrorCnt};
    for (int i = 0; i < 16; i++) EXPECT_EQ(numbers[i], i + 1);
    EXPECT_STREQ(read->ZpoolState, "ONLINE");
}

TEST_F(DiskHealthTest, AChainReplacesEarlierReadings)
{
    DiskHealth third = reading("sda");
    DiskHealth second = reading("sdb");
    DiskHealth first = reading("sda");
    first.next = &second;
    second.next = &third;
    third.Temp = 55;
    third.ZpoolState = nullptr;
    ASSERT_EQ(set(first), 0u) << err.message;
    EXPECT_THAT(rows("SELECT disk_id,temp,zpool_state FROM _disk_health ORDER BY 1"),
                ElementsAre("sda|55|NULL", "sdb|9|ONLINE"));
    DiskHealthCollection all{};
    ASSERT_EQ(get(all), 0u);
    ASSERT_EQ(test::elements(all.Health).size(), 2u);
    for (const DiskHealth *disk : test::elements(all.Health))
        EXPECT_STREQ(disk->ZpoolState, disk->Controller ? "ONLINE" : "UNKNOWN");
    EXPECT_EQ(qbobj_setDiskHealth(qbdb, db, nullptr, &err), 0u);
}

TEST_F(DiskHealthTest, EntriesAreAppended)
{
    DiskHealth disk = reading("sda");
    ASSERT_EQ(set(disk), 0u);
    DiskHealth before{};
    DiskHealthCollection all{nullptr, &before};
    ASSERT_EQ(get(all), 0u);
    EXPECT_EQ(all.Health, &before);
    ASSERT_NE(before.next, nullptr);
    EXPECT_STREQ(before.next->DiskId, "sda");
}

TEST_F(DiskHealthTest, WithoutReadingsOfKnownDisksThereIsNoData)
{
    DiskHealthCollection all{};
    expect_failure(6, "No data in _disk_healt table", [&] { return get(all); });
    DiskHealth disk = reading("pulled long ago");
    ASSERT_EQ(set(disk), 0u);
    expect_failure(6, "No data in _disk_healt table", [&] { return get(all); });
    EXPECT_EQ(all.Health, nullptr);
}

TEST_F(DiskHealthTest, AChainIsStoredWholeOrNotAtAll)
{
    DiskHealth second = reading(nullptr);
    DiskHealth first = reading("sda");
    first.next = &second;
    expect_failure(8, "Fail 'INSERT INTO _disk_health'. NOT NULL constraint failed: _disk_health.disk_id",
                   [&] { return set(first); });
    second.DiskId = "sdb";
    fail_statement(2);
    expect_failure(8, "Fail 'INSERT INTO _disk_health'. injected", [&] { return set(first); });
}

TEST_F(DiskHealthTest, AFailedReadIsTold)
{
    DiskHealthCollection all{};
    fail_statement(1);
    expect_failure(5, "Failed DB Query for 'SELECT FROM _disk_health'. injected", [&] { return get(all); });
}

TEST_F(DiskHealthTest, WithoutMemoryNothingIsHandedOut)
{
    DiskHealth second = reading("sdb");
    DiskHealth first = reading("sda");
    first.next = &second;
    ASSERT_EQ(set(first), 0u);
    const auto read = [&] {
        DiskHealthCollection all{};
        const uint32_t rc = get(all);
        EXPECT_EQ(all.Health == nullptr, rc != 0);
        return rc;
    };
    test::expect_each_allocation_noticed(err, read, 2, "Failed to allocate resource.");
}

TEST_F(DiskHealthTest, StatementsUseIndexes)
{
    DiskHealth disk = reading("sda");
    DiskHealthCollection all{};
    take_statements();
    set(disk);
    get(all);
    test::expect_indexed(db, take_statements(), {{"_disk_health", "", "a listing of all of them"}});
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
