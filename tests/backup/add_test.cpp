// Adding backup jobs.
#include "jobs.h"
#include "fixture/plans.h"

using test::kMissing;
using test::kNightly;
using test::kSides;
using test::WholeJob;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using AddBackup = test::Backup;

TEST_F(AddBackup, StoresAJob)
{
    WholeJob job;
    job.job.resource_id = 77;
    job.job.JobId = 78;
    ASSERT_EQ(add(job), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre(kNightly));
    EXPECT_EQ(std::to_string(job.job.resource_id), value("SELECT id FROM backup"));
    EXPECT_EQ(job.job.JobId, job.job.resource_id);
    EXPECT_EQ(job.schedule.Enabled, 1);
}

TEST_F(AddBackup, StoresNullAsEmpty)
{
    WholeJob job(nullptr);
    job.source.Path = job.destination.Path = job.destination.Login = job.destination.Password = nullptr;
    job.schedule = {};
    job.option = {};
    ASSERT_EQ(add(job), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre("|0|share|media||||0|0|remote|rsync||||873|0|0|0|0|0||0|0|0||0|0|"));
}

TEST_F(AddBackup, StoresEjecting)
{
    WholeJob job;
    job.from("usb", "usb_port_1").to("share", "media");
    job.source.Eject = 1;
    job.source.Ejectable = 1;
    job.destination.Eject = 2;
    ASSERT_EQ(add(job), 0u) << err.message;
    EXPECT_THAT(rows("SELECT src_eject,dst_eject FROM backup"), ElementsAre("1|2"));
}

TEST_F(AddBackup, AJobWithoutDaysIsSwitchedOff)
{
    qbdb->log_level = 5;
    const struct {
        const char *days;
        int32_t enabled;
        const char *stored;  // enabled and days
        const char *line;
    } jobs[] = {
        {"", 1, "0|0", "Backup Job is Enabled, but no schedule (DayOfWeek=). Force it to Disabled\n"},
        {nullptr, 2, "0|0", "Backup Job is Enabled, but no schedule (DayOfWeek=(null)). Force it to Disabled\n"},
        {"Someday", 1, "0|0", "Backup Job is Enabled, but no schedule (DayOfWeek=Someday). Force it to Disabled\n"},
        {"", 0, "0|0", nullptr},
        {"Sun", 0, "0|1", nullptr},
        {"Sun", 2, "2|1", nullptr},
    };
    for (const auto &each : jobs) {
        sql("DELETE FROM backup");
        log.clear();
        WholeJob job;
        job.schedule.DayOfWeek = each.days;
        job.schedule.Enabled = each.enabled;
        ASSERT_EQ(add(job), 0u) << err.message;
        EXPECT_THAT(rows("SELECT enabled,sch_dow FROM backup"), ElementsAre(each.stored));
        EXPECT_EQ(std::to_string(job.schedule.Enabled), std::string(each.stored).substr(0, 1));
        if (each.line) EXPECT_THAT(logged(5), Contains(each.line));
        else EXPECT_THAT(logged(5), testing::Not(Contains(testing::HasSubstr("Force it"))));
    }
}

TEST_F(AddBackup, WhatIsMissing)
{
    for (const test::Missing &missing : kMissing) {
        WholeJob job;
        missing.take(job);
        expect_failure(8, missing.message, [&] { return add(job); });
    }
}

TEST_F(AddBackup, SidesThatGoTogether)
{
    for (const test::Sides &sides : kSides) {
        SCOPED_TRACE(std::string(sides.from[0]) + " " + sides.from[1] + " to " + sides.to[0] + " " + sides.to[1]);
        sql("DELETE FROM backup");
        WholeJob job;
        job.from(sides.from[0], sides.from[1]).to(sides.to[0], sides.to[1]);
        if (sides.message) expect_failure(8, sides.message, [&] { return add(job); });
        else EXPECT_EQ(add(job), 0u) << err.message;
    }
}

TEST_F(AddBackup, AllHomesIntoAllHomesBreakTwoRules)
{
    WholeJob job;
    job.from("home", "*").to("home", "*");
    log.clear();
    EXPECT_EQ(add(job), 8u);
    EXPECT_THAT(logged(2), ElementsAre("Source/Destination cannot be the same user's home",
                                       "Cannot backup all homes to one's home"));
}

TEST_F(AddBackup, ANameIsTakenOnce)
{
    given("nightly");
    WholeJob other;
    other.from("usb", "usb_port_1").to("volume", "tank");
    expect_failure(807, "JobName specified is already exist.", [&] { return add(other); });
    other.job.JobName = "Nightly";
    EXPECT_EQ(add(other), 0u) << "case counts";
    WholeJob empty("");
    ASSERT_EQ(add(empty), 0u) << err.message;
    expect_failure(807, "JobName specified is already exist.", [&] { return add(empty); });
}

TEST_F(AddBackup, ANameThatCannotBeLookedUpIsFree)
{
    fail_statement(1, SQLITE_ERROR, "injected", "SELECT id FROM backup");
    WholeJob job;
    EXPECT_EQ(add(job), 0u) << err.message;
    EXPECT_THAT(names(), ElementsAre("nightly"));
}

TEST_F(AddBackup, TheTimeMachineStoreIsConfigured)
{
    WholeJob job;
    job.from("timemachine", "~timemachine~");
    sql("UPDATE account_default SET home_volume_id=NULL");
    expect_failure(841, "Timemachine is not configured.", [&] { return add(job); });
    sql("UPDATE account_default SET home_volume_id='tank'");
    EXPECT_EQ(add(job), 0u) << err.message;
    WholeJob into("into");
    into.to("timemachine", "~timemachine~");
    sql("UPDATE account_default SET home_volume_id=NULL");
    EXPECT_EQ(add(into), 0u) << "only a source is looked at";
}

TEST_F(AddBackup, LooksAtPartsSidesNameAndTimeMachineInThisOrder)
{
    given("nightly");
    sql("UPDATE account_default SET home_volume_id=NULL");
    WholeJob job;
    job.from(nullptr, "~timemachine~").to("remote", nullptr);
    expect_failure(8, "Source, Destination, Schedule or Option is NULL", [&] { return add(job); });
    job.to("remote", "rsync");
    expect_failure(8, "Source->Type or  Destination->Type is NULL", [&] { return add(job); });
    job.source.Type = "remote";
    expect_failure(8, "Source/Destination cannot be remote", [&] { return add(job); });
    job.source.Type = "timemachine";
    expect_failure(807, "JobName specified is already exist.", [&] { return add(job); });
    job.job.JobName = "other";
    expect_failure(841, "Timemachine is not configured.", [&] { return add(job); });
}

TEST_F(AddBackup, PathsOfSmbAreStoredWithSingleSlashes)
{
    const struct {
        const char *type;
        const char *name;
        const char *given;
        const char *stored;
    } paths[] = {
        {"remote", "cifs", "\\\\host\\share//x\\", "/host/share/x/"},
        {"remote", "cifs-ab", "a\\\\b", "a/b"},
        {"share", "cifs", "a\\b", "a/b"},  // a share of that name
        {"remote", "CIFS", "a\\b", "a\\b"},
        {"remote", "rsync", "a\\\\b//c", "a\\\\b//c"},
        {"remote", "cifs", nullptr, ""},
    };
    for (const auto &each : paths) {
        sql("DELETE FROM backup");
        WholeJob out;
        out.to(each.type, each.name, each.given);
        ASSERT_EQ(add(out), 0u) << err.message;
        EXPECT_EQ(value("SELECT dst_path FROM backup"), each.stored);
        EXPECT_EQ(out.destination.Path, each.given) << "the record keeps what the caller wrote";
        WholeJob in("in");
        in.from(each.type, each.name, each.given).to("volume", "tank");
        ASSERT_EQ(add(in), 0u) << err.message;
        EXPECT_EQ(value("SELECT src_path FROM backup WHERE name='in'"), each.stored);
    }
}

TEST_F(AddBackup, AListIsStoredWholeOrNotAtAll)
{
    WholeJob one("one");
    WholeJob two("two");
    WholeJob three("three");
    one.job.next = &two.job;
    two.job.next = &three.job;
    three.from("share", "photos").to("share", "photos");
    expect_failure(8, "Source/Destination cannot be the same share", [&] { return add(one); });
    three.from("share", "media");
    three.job.JobName = "two";
    expect_failure(807, "JobName specified is already exist.", [&] { return add(one); });
    three.job.JobName = "three";
    ASSERT_EQ(add(one), 0u) << err.message;
    EXPECT_THAT(rows("SELECT id,name FROM backup ORDER BY id"),
                ElementsAre(std::to_string(one.job.JobId) + "|one", std::to_string(two.job.JobId) + "|two",
                            std::to_string(three.job.JobId) + "|three"));
    EXPECT_EQ(add(static_cast<BackupJob *>(nullptr)), 0u);
    EXPECT_THAT(stored(), SizeIs(3));
}

TEST_F(AddBackup, TextOfACallerIsNoStatement)
{
    const char *text = "'); DROP TABLE backup; -- %s%n\xc3\xa4";
    WholeJob job(text);
    job.from(text, text, text).to(text, text, text);
    job.source.Login = job.source.Password = job.destination.Login = job.destination.Password = text;
    job.schedule.DayOfWeek = job.option.FullBackupFrequency = job.option.RsyncExclude = job.option.WolAddress = text;
    ASSERT_EQ(add(job), 0u) << err.message;
    BackupJob read{};
    read.JobId = job.job.JobId;
    ASSERT_EQ(get(&read), 0u) << err.message;
    EXPECT_STREQ(read.JobName, text);
    EXPECT_STREQ(read.Source->Password, text);
    EXPECT_STREQ(read.Option->WolAddress, text);
    ASSERT_EQ(modify(job), 0u) << err.message;
    EXPECT_EQ(job.job.Changed, 0);
}

TEST_F(AddBackup, LookUpsUseIndexes)
{
    take_statements();
    WholeJob job;
    job.from("volume", "tank").to("share", "media");
    ASSERT_EQ(add(job), 0u) << err.message;
    WholeJob time_machine("tm");
    time_machine.from("timemachine", "~timemachine~");
    ASSERT_EQ(add(time_machine), 0u) << err.message;
    test::expect_indexed(db, take_statements());
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
