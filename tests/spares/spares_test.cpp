// Spares, and the recurring jobs of volumes.
#include <functional>

#include "fixture/allocations.h"
#include "fixture/fixture.h"
#include "fixture/text_of.h"

using test::elements;
using test::text_of;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Spares : test::Database {
    DiskCollection spares{};

    Spares()
    {
        sql("INSERT INTO `$disk_info` VALUES"
            "('7',1,'M','S','F',7200,100,51200,1,2,'sas','tank','spare','3',9,4,1,1),"
            "('sdb',0,NULL,NULL,NULL,NULL,NULL,NULL,0,0,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL),"
            "('sdc',1,'M','S','F',7200,100,51200,1,2,'sas','tank','data','0',9,5,1,1)");
    }
};

TEST_F(Spares, AddListRemove)
{
    ASSERT_EQ(qbobj_addVolumeSpare(qbdb, db, "7", &err), 0u);
    ASSERT_EQ(qbobj_addVolumeSpare(qbdb, db, "unknown", &err), 0u);
    ASSERT_EQ(qbobj_getVolumeSparesCollection(qbdb, db, &spares, &err), 0u);
    ASSERT_EQ(elements(spares.Disk).size(), 1u) << "one that is not in the inventory is not listed";
    const Disk *disk = spares.Disk;
    EXPECT_EQ(text_of(disk),
              "resource_id=7 DiskId=7 Present=1 DevName=7 Controller=1 Channel=4 Model=M Serial=S FirmwareVersion=F "
              "RPM=7200 Sectors=100 Capacity=51200 Pool='' PoolType=spare PoolState=SPARE PoolHostId=9 "
              "HardwareInterface=sas")
        << "a spare belongs to no volume; told by the volume all the same";
    EXPECT_EQ(spares.EnclosureName, nullptr) << "only the list is filled";
    ASSERT_EQ(qbobj_deleteVolumeSpare(qbdb, db, "7", &err), 0u);
    ASSERT_EQ(qbobj_deleteVolumeSpare(qbdb, db, "7", &err), 0u) << "nothing to do";
    EXPECT_THAT(rows("SELECT * FROM `$volume_spares`"), ElementsAre("unknown"));
}

TEST_F(Spares, ADiskOfNoPool)
{
    sql("INSERT INTO `$volume_spares` VALUES('sdb')");
    ASSERT_EQ(qbobj_getVolumeSparesCollection(qbdb, db, &spares, &err), 0u);
    ASSERT_NE(spares.Disk, nullptr);
    EXPECT_STREQ(spares.Disk->PoolState, "NEW");
    EXPECT_STREQ(spares.Disk->Model, "");
    EXPECT_EQ(spares.Disk->Present, 0);
}

TEST_F(Spares, Failures)
{
    sql("INSERT INTO `$volume_spares` VALUES('7')");
    expect_failure(5,
                   "Failed DB Query for 'INSERT INTO $volume_spares'. UNIQUE constraint failed: "
                   "$volume_spares.disk_info_id",
                   [&] { return qbobj_addVolumeSpare(qbdb, db, "7", &err); });
    fail_statement(1);
    expect_failure(5, "Failed DB Query for 'DELETE $volumespares'. injected",
                   [&] { return qbobj_deleteVolumeSpare(qbdb, db, "7", &err); });
    fail_statement(1);
    expect_failure(5, "Failed DB Query for 'SELECT FROM disk_info'. injected",
                   [&] { return qbobj_getVolumeSparesCollection(qbdb, db, &spares, &err); });
    EXPECT_EQ(spares.Disk, nullptr);
    const auto list = [&] {
        spares = {};
        return qbobj_getVolumeSparesCollection(qbdb, db, &spares, &err);
    };
    test::expect_each_allocation_noticed(err, list, 2, "Failed to allocate resource.");
}

struct VolumeJobs : test::Database {
    CronSchedule interval{};
    VolumeSchedule job{};
    VolumeScheduleCollection jobs{};

    VolumeJobs()
    {
        interval.Minute = "0,30";
        interval.Hour = "3";
        interval.DayOfMonth = "*";
        interval.Month = "1-6";
        interval.DayOfWeek = "'0'";
        job.VolumeName = "tank";
        job.JobID = 5;
        job.Enabled = 1;
        job.Action = 2;
        job.Interval = &interval;
    }
    uint32_t add(int32_t id, const char *volume = "tank")
    {
        job.JobID = id;
        job.VolumeName = volume;
        return qbobj_addVolumeSchedule(qbdb, db, &job, &err);
    }
    uint32_t remove(int32_t id, const char *volume = nullptr)
    {
        job.JobID = id;
        job.VolumeName = volume;
        return qbobj_deleteVolumeSchedule(qbdb, db, &job, &err);
    }
    std::vector<std::string> stored() const { return rows("SELECT * FROM volume_schedule ORDER BY job_id,volume_id"); }
};

TEST_F(VolumeJobs, AddAndList)
{
    ASSERT_EQ(add(5), 0u);
    EXPECT_THAT(stored(), ElementsAre("5|tank|1|2|0,30|3|*|1-6|'0'"));
    sql("INSERT INTO volume_schedule (job_id) VALUES(6)");
    ASSERT_EQ(qbobj_getVolumeScheduleCollection(qbdb, db, &jobs, &err), 0u);
    ASSERT_EQ(elements(jobs.VolumeSchedule).size(), 2u);
    const VolumeSchedule *first = jobs.VolumeSchedule;
    EXPECT_EQ(text_of(first),
              "key=5 VolumeName=tank JobID=5 Enabled=1 Action=2 Interval={Minute=0,30 Hour=3 DayOfMonth=* Month=1-6 "
              "DayOfWeek='0'}");
    EXPECT_EQ(text_of(first->Interval), "Minute=0,30 Hour=3 DayOfMonth=* Month=1-6 DayOfWeek='0'");
    EXPECT_STREQ(first->next->VolumeName, "");
    ASSERT_NE(first->next->Interval, nullptr);
    EXPECT_STREQ(first->next->Interval->Minute, "");
}

TEST_F(VolumeJobs, ANumberInUseIsRefused)
{
    ASSERT_EQ(add(5), 0u);
    expect_failure(5, "JobID (5) already exists.", [&] { return add(5, "other"); });
    ASSERT_EQ(add(0), 0u);
    ASSERT_EQ(add(0, "other"), 0u) << "0 counts as never used";
    ASSERT_EQ(add(-1), 0u);
    expect_failure(5, "JobID (-1) already exists.", [&] { return add(-1); });
}

TEST_F(VolumeJobs, WithoutAnIntervalAreRefused)
{
    static constexpr char kMessage[] = "VolumeSchedule and its Interval cannot be NULL.";
    job.Interval = nullptr;
    expect_failure(5, kMessage, [&] { return qbobj_addVolumeSchedule(qbdb, db, &job, &err); });
    expect_failure(5, kMessage, [&] { return qbobj_addVolumeSchedule(qbdb, db, nullptr, &err); });
    expect_failure(5, kMessage, [&] { return qbobj_updateVolumeSchedule(qbdb, db, &job, &err); });
    expect_failure(5, kMessage, [&] { return qbobj_updateVolumeSchedule(qbdb, db, nullptr, &err); });
}

TEST_F(VolumeJobs, UpdatesKeepTheVolume)
{
    ASSERT_EQ(add(5), 0u);
    ASSERT_EQ(add(6), 0u);
    job.VolumeName = "other";
    job.Enabled = 0;
    job.Action = 9;
    interval = {};
    interval.Hour = "4";
    ASSERT_EQ(qbobj_updateVolumeSchedule(qbdb, db, &job, &err), 0u);
    EXPECT_THAT(stored(), ElementsAre("5|tank|1|2|0,30|3|*|1-6|'0'", "6|tank|0|9|NULL|4|NULL|NULL|NULL"));
    job.JobID = 77;
    EXPECT_EQ(qbobj_updateVolumeSchedule(qbdb, db, &job, &err), 0u) << "no such job, nothing to do";
}

TEST_F(VolumeJobs, DeleteOneOrAllOfAVolume)
{
    for (const int32_t id : {1, 2, 3}) ASSERT_EQ(add(id), 0u);
    ASSERT_EQ(add(4, "other"), 0u);
    ASSERT_EQ(remove(2, "other"), 0u) << "the number alone decides";
    EXPECT_EQ(stored().size(), 3u);
    ASSERT_EQ(remove(-1, "tank"), 0u);
    EXPECT_THAT(rows("SELECT job_id FROM volume_schedule"), ElementsAre("4"));
    ASSERT_EQ(remove(-1, "unknown"), 0u);
    expect_failure(5, "JobID (-1) does not exist.", [&] { return remove(-1); });
    expect_failure(5, "JobID (77) does not exist.", [&] { return remove(77); });
    expect_failure(5, "VolumeSchedule cannot be NULL.",
                   [&] { return qbobj_deleteVolumeSchedule(qbdb, db, nullptr, &err); });
    sql("INSERT INTO volume_schedule (job_id) VALUES(0)");
    expect_failure(5, "JobID (0) does not exist.", [&] { return remove(0); });
}

TEST_F(VolumeJobs, AVolumeWithAQuoteInItsNameBreaksTheStatement)
{
    ASSERT_EQ(add(1, "o'hara"), 0u);
    EXPECT_EQ(remove(-1, "o'hara"), 5u);
    EXPECT_EQ(err.code, 5u);
    EXPECT_THAT(err.message, testing::StartsWith("Failed DB Query for 'DELETE FROM volume_schedule'. "));
    EXPECT_EQ(stored().size(), 1u);
}

TEST_F(VolumeJobs, Failures)
{
    ASSERT_EQ(add(1), 0u);
    const struct {
        const char *message;
        std::function<uint32_t()> call;
        int nth;
    } cases[] = {
        {"Failed DB Query for get_volume_schedule_jobid. injected", [&] { return add(2); }, 1},
        {"Failed DB Query for 'INSERT INTO volume_schedule'. injected", [&] { return add(2); }, 2},
        {"Failed DB Query for 'Update volume_schedule'. injected",
         [&] { return qbobj_updateVolumeSchedule(qbdb, db, &job, &err); }, 1},
        {"Failed DB Query for get_volume_schedule_jobid. injected", [&] { return remove(1); }, 1},
        {"Failed DB Query for 'DELETE FROM volume_schedule'. injected", [&] { return remove(1); }, 2},
        {"Failed DB Query for 'DELETE FROM volume_schedule'. injected", [&] { return remove(-1, "tank"); }, 1},
        {"Failed DB Query for 'SELECT FROM volume_schedule'. injected",
         [&] { return qbobj_getVolumeScheduleCollection(qbdb, db, &jobs, &err); }, 1},
    };
    for (const auto &[message, call, nth] : cases) {
        fail_statement(nth);
        expect_failure(5, message, call);
    }
}

TEST_F(VolumeJobs, WithoutMemory)
{
    ASSERT_EQ(add(1), 0u);
    std::vector<std::string> messages;
    for (int nth = 1; nth <= 2; nth++) {
        jobs = {};
        test::fail_allocation(nth);
        EXPECT_EQ(qbobj_getVolumeScheduleCollection(qbdb, db, &jobs, &err), 2u);
        test::fail_allocation(0);
        messages.emplace_back(err.message ? err.message : "");
    }
    EXPECT_THAT(messages, ElementsAre("Failed to allocate resource.", "Failed to allocate Interval."));
}

using VolumeJobsDeathTest = VolumeJobs;

TEST_F(VolumeJobsDeathTest, NeedSomewhereToPutTheAnswer)
{
    EXPECT_DEATH(qbobj_getVolumeScheduleCollection(qbdb, db, nullptr, &err), "Assertion `schedules' failed");
    EXPECT_DEATH(qbobj_getVolumeSparesCollection(qbdb, db, nullptr, &err), "Assertion `spares' failed");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
