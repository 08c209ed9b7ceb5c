// Reading backup jobs.
#include "fixture/plans.h"
#include "fixture/text_of.h"
#include "jobs.h"

using test::elements;
using test::text_of;
using test::WholeJob;
using testing::ElementsAre;

namespace {

using ReadBackup = test::Backup;

TEST_F(ReadBackup, OneJob)
{
    given("other");
    const int32_t id = given("nightly");
    BackupJob after{};
    for (const bool by_job_id : {false, true}) {
        BackupJob job{};
        (by_job_id ? job.JobId : job.resource_id) = id;
        job.next = &after;
        job.Changed = 1;
        ASSERT_EQ(get(&job), 0u) << err.message;
        EXPECT_EQ(job.next, &after) << "the link is the caller's";
        EXPECT_EQ(job.resource_id, id);
        EXPECT_EQ(job.JobId, id);
        EXPECT_STREQ(job.JobName, "nightly");
        EXPECT_EQ(text_of(job.Source), "Type=share ShareNameOrProtocol=media Path=/films Login='' Password=''");
        EXPECT_EQ(text_of(job.Destination),
                  "Type=remote ShareNameOrProtocol=rsync Path=backup/films Login=anna Password='it's secret' "
                  "Port=873");
        EXPECT_EQ(text_of(job.Schedule), "Enabled=1 Frequency=2 Start=1 End=5 DayOfWeek=Mon,Fri");
        EXPECT_EQ(text_of(job.Option),
                  "FullBackupFrequency=weekly RemovePreviousBackup=1 ChownToShareOwner=1 RsyncOption=3 "
                  "RsyncExclude=*.tmp EmailThisToAlertEmail=4 MiscOption=5 WolAddress=00:11:22:33:44:55");
        EXPECT_EQ(job.Changed, 0);
    }
}

TEST_F(ReadBackup, NothingIsReadAsEmpty)
{
    sql("INSERT INTO backup (id) VALUES(7)");
    BackupJob job{};
    job.JobId = 7;
    ASSERT_EQ(get(&job), 0u) << err.message;
    EXPECT_EQ(job.resource_id, 7);
    for (const char *text : {job.JobName, job.Source->Type, job.Source->Password, job.Destination->ShareNameOrProtocol,
                             job.Destination->Login, job.Schedule->DayOfWeek, job.Option->FullBackupFrequency,
                             job.Option->RsyncExclude, job.Option->WolAddress})
        EXPECT_STREQ(text, "");
    EXPECT_EQ(job.Schedule->Enabled, 0);
    EXPECT_EQ(job.Destination->Port, 0);
    EXPECT_EQ(job.Option->MiscOption, 0);
}

TEST_F(ReadBackup, OneJobDoesNotTellOfEjecting)
{
    WholeJob stick("stick");
    stick.from("usb", "usb_port_1");
    stick.source.Eject = 1;
    ASSERT_EQ(add(stick), 0u) << err.message;
    BackupJob job{};
    job.JobId = stick.job.JobId;
    ASSERT_EQ(get(&job), 0u) << err.message;
    EXPECT_EQ(job.Source->Eject, 0);
    EXPECT_EQ(job.Source->Ejectable, 0);
}

TEST_F(ReadBackup, RefusesIdsOfNoJob)
{
    given("nightly");
    const struct {
        int32_t resource_id;
        int32_t job_id;
        uint32_t code;
        const char *message;
    } ids[] = {
        {0, 0, 5, "Invalid resouce_id=0."},
        {0, -3, 5, "Invalid resouce_id=-3."},
        {-3, 0, 5, "Invalid resouce_id=0."},
        {0, 99, 6, "None of row selected for resource_id=99."},
        {99, 1, 6, "None of row selected for resource_id=99."},
    };
    for (const auto &each : ids) {
        BackupJob job{};
        job.resource_id = each.resource_id;
        job.JobId = each.job_id;
        expect_failure(each.code, each.message, [&] { return get(&job); });
        EXPECT_EQ(job.Source, nullptr);
    }
}

TEST_F(ReadBackup, ListsAllJobs)
{
    const struct {
        const char *from[2];
        const char *to[2];
        int32_t ejectable[2];
    } jobs[] = {
        {{"share", "media"}, {"share", "photos"}, {0, 0}},   {{"share", "stick"}, {"share", "photos"}, {1, 0}},
        {{"usb", "usb_port_1"}, {"share", "stick"}, {1, 1}}, {{"home", "stick"}, {"usb", "usb_port_1"}, {0, 1}},
        {{"share", "unknown"}, {"volume", "media"}, {0, 0}},
    };
    std::vector<std::string> want;
    for (const auto &each : jobs) {
        const std::string name = "job" + std::to_string(want.size());
        WholeJob job(name.c_str());
        job.from(each.from[0], each.from[1]).to(each.to[0], each.to[1]);
        job.source.Eject = 1;
        job.destination.Eject = 2;
        ASSERT_EQ(add(job), 0u) << err.message;
        want.push_back(name);
    }
    BackupJob first{};
    BackupJobCollection all{&first};
    ASSERT_EQ(qbobj_getBackupJobCollection(qbdb, db, &all, &err), 0u) << err.message;
    EXPECT_EQ(all.BackupJob, &first) << "a list that is not empty is appended to";
    std::vector<std::string> names;
    for (const BackupJob *each : elements(first.next)) {
        const auto &expected = jobs[names.size()];
        names.emplace_back(each->JobName);
        EXPECT_EQ(each->JobId, each->resource_id);
        EXPECT_STREQ(each->Source->ShareNameOrProtocol, expected.from[1]);
        EXPECT_STREQ(each->Destination->Type, expected.to[0]);
        EXPECT_STREQ(each->Destination->Password, "it's secret");
        EXPECT_STREQ(each->Schedule->DayOfWeek, "Mon,Fri");
        EXPECT_STREQ(each->Option->WolAddress, "00:11:22:33:44:55");
        EXPECT_EQ(each->Source->Eject, 1);
        EXPECT_EQ(each->Destination->Eject, 2);
        EXPECT_EQ(each->Source->Ejectable, expected.ejectable[0]) << each->JobName;
        EXPECT_EQ(each->Destination->Ejectable, expected.ejectable[1]) << each->JobName;
    }
    EXPECT_EQ(names, want);
}

TEST_F(ReadBackup, ListsNothingOfAnEmptyTable)
{
    BackupJobCollection all{};
    ASSERT_EQ(qbobj_getBackupJobCollection(qbdb, db, &all, &err), 0u) << err.message;
    EXPECT_EQ(all.BackupJob, nullptr);
}

TEST_F(ReadBackup, TellsWhetherThereIsAJob)
{
    const int32_t id = given("nightly");
    EXPECT_EQ(qbobj_hasBackupJob(qbdb, db, id, &err), 1u);
    take_statements();
    for (const int32_t none : {0, -1, INT32_MIN}) EXPECT_EQ(qbobj_hasBackupJob(qbdb, db, none, &err), 0u);
    for (const std::string &each : take_statements()) EXPECT_EQ(each.find("SELECT"), std::string::npos) << each;
    EXPECT_EQ(qbobj_hasBackupJob(qbdb, db, id + 1, &err), 0u);
    for (const int rc : {SQLITE_ERROR, SQLITE_NOMEM}) {
        fail_statement(1, rc);
        log.clear();
        EXPECT_EQ(qbobj_hasBackupJob(qbdb, db, id, &err), 0u) << "for want of memory, too";
        EXPECT_THAT(logged(2), ElementsAre("Failed to SELECT FROM backup\n"));
        EXPECT_EQ(err.code, 0u);
        EXPECT_EQ(err.message, nullptr);
    }
}

TEST_F(ReadBackup, OnlyTheListReadsAllJobs)
{
    const int32_t id = given("nightly");
    take_statements();
    BackupJob job{};
    job.JobId = id;
    ASSERT_EQ(get(&job), 0u);
    ASSERT_EQ(qbobj_hasBackupJob(qbdb, db, id, &err), 1u);
    BackupJobCollection all{};
    ASSERT_EQ(qbobj_getBackupJobCollection(qbdb, db, &all, &err), 0u);
    test::expect_indexed(db, take_statements(), {{"backup", "FROM backup B", "lists all jobs"}});
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
