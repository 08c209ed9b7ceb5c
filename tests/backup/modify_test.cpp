// Changing backup jobs.
#include "jobs.h"
#include "fixture/plans.h"

using test::kMissing;
using test::kNightly;
using test::kSides;
using test::WholeJob;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

struct ModifyBackup : test::Backup {
    int32_t id = given("nightly");
};

TEST_F(ModifyBackup, WritesTheWholeJob)
{
    given("other");
    WholeJob job("weekly");
    job.job.JobId = id;
    job.from("usb", "usb_port_1", "/x").to("share", "photos", "/y");
    job.source.Login = "l";
    job.source.Password = "p";
    job.source.Port = 1;
    job.source.Eject = 1;
    job.destination.Login = job.destination.Password = nullptr;
    job.destination.Port = 2;
    job.destination.Eject = 2;
    job.schedule = {2, 3, 4, 4, "sun"};
    job.option = {"daily", 0, 2, 9, nullptr, 8, 7, nullptr};
    take_statements();
    ASSERT_EQ(modify(job), 0u) << err.message;
    EXPECT_EQ(job.job.Changed, 1);
    EXPECT_THAT(stored(), ElementsAre("weekly|2|usb|usb_port_1|/x|l|p|1|1|share|photos|/y|||2|2|3|4|4|1|daily|0|1|9||"
                                      "8|7|",
                                      testing::StartsWith("other|")));
    EXPECT_THAT(take_statements(),
                Contains("UPDATE backup SET name='weekly',src_type='usb',src_share_proto='usb_port_1',src_path='/x',"
                         "src_login='l',src_password='p',src_port=1,src_eject=1,dst_type='share',"
                         "dst_share_proto='photos',dst_path='/y',dst_login='',dst_password='',dst_port=2,dst_eject=2,"
                         "enabled=2,sch_every=3,sch_start=4,sch_end=4,sch_dow=1,opt_full_backup_freq='daily',"
                         "opt_remove_previous_backup=0,opt_chown_to_share_owner=1,opt_rsync_options=9,"
                         "opt_rsync_exclude='',opt_email_this_to_alert_email=8,opt_misc_option=7,wol_addr='' "
                         "WHERE id=" +
                         std::to_string(id)));
}

TEST_F(ModifyBackup, TellsWhatReallyChanged)
{
    const int32_t other = given("other");
    for (int round = 0; round < 2; round++) {  // the copy of one call is not in the way of the next
        WholeJob first("nightly", id);
        WholeJob second("other", other);
        first.job.next = &second.job;
        first.job.Changed = second.job.Changed = 7;
        second.option.MiscOption = round + 10;
        ASSERT_EQ(modify(first), 0u) << err.message;
        EXPECT_EQ(first.job.Changed, 0);
        EXPECT_EQ(second.job.Changed, 1);
        EXPECT_THAT(rows("SELECT name FROM sqlite_schema WHERE name LIKE '%modify%'"), IsEmpty())
            << "passwords are not left lying about";
    }
}

TEST_F(ModifyBackup, AChangeThatIsTakenBackInTheSameCallIsNone)
{
    WholeJob there("nightly", id);
    WholeJob back("nightly", id);
    there.option.MiscOption = 99;
    there.job.next = &back.job;
    ASSERT_EQ(modify(there), 0u) << err.message;
    EXPECT_EQ(there.job.Changed, 1);
    EXPECT_EQ(back.job.Changed, 0);
}

TEST_F(ModifyBackup, WithoutACopyNothingIsSaidOfChanges)
{
    WholeJob job("weekly", id);
    job.job.Changed = 7;
    fail_statement(1, SQLITE_ERROR, "injected", "CREATE TABLE");
    ASSERT_EQ(modify(job), 0u) << err.message;
    EXPECT_EQ(job.job.Changed, 7);
    EXPECT_THAT(names(), ElementsAre("weekly"));
}

TEST_F(ModifyBackup, NoMemoryForTheCopyEndsTheCall)
{
    WholeJob job("weekly", id);
    fail_statement(1, SQLITE_NOMEM, "injected", "CREATE TABLE");
    EXPECT_EQ(modify(job), 2u);
    EXPECT_STREQ(err.message, "Failed to allocate resource.");
    EXPECT_THAT(names(), ElementsAre("nightly"));
}

TEST_F(ModifyBackup, ACopyThatStaysEndsTheCall)
{
    WholeJob job("weekly", id);
    fail_statement(1, SQLITE_ERROR, "injected", "DROP TABLE \"");
    expect_failure(5, "Failed DB Query for backup. The copy cannot be dropped.", [&] { return modify(job); });
}

TEST_F(ModifyBackup, AnUnknownJobIsNoError)
{
    WholeJob job("weekly", id + 1);
    const std::string before = content();
    job.job.Changed = 7;
    ASSERT_EQ(modify(job), 0u) << err.message;
    EXPECT_EQ(job.job.Changed, 0);
    EXPECT_EQ(content(), before);
    EXPECT_EQ(modify(static_cast<BackupJob *>(nullptr)), 0u);
}

TEST_F(ModifyBackup, RefusesIdsOfNoJob)
{
    WholeJob job("weekly");
    expect_failure(5, "Invalid resouce_id=0.", [&] { return modify(job); });
    job.job.JobId = -2;
    expect_failure(5, "Invalid resouce_id=-2.", [&] { return modify(job); });
    job.job.resource_id = -5;
    job.job.JobId = id;
    EXPECT_EQ(modify(job), 0u) << err.message;
}

TEST_F(ModifyBackup, WhatIsMissing)
{
    for (const test::Missing &missing : kMissing) {
        WholeJob job("weekly", id);
        missing.take(job);
        expect_failure(8, missing.message, [&] { return modify(job); });
    }
}

TEST_F(ModifyBackup, SidesThatGoTogether)
{
    for (const test::Sides &sides : kSides) {
        SCOPED_TRACE(std::string(sides.from[0]) + " " + sides.from[1] + " to " + sides.to[0] + " " + sides.to[1]);
        WholeJob job("nightly", id);
        job.from(sides.from[0], sides.from[1]).to(sides.to[0], sides.to[1]);
        if (sides.message) expect_failure(8, sides.message, [&] { return modify(job); });
        else EXPECT_EQ(modify(job), 0u) << err.message;
    }
}

TEST_F(ModifyBackup, AJobWithoutDaysIsSwitchedOff)
{
    qbdb->log_level = 5;
    WholeJob job("nightly", id);
    job.schedule.DayOfWeek = "";
    ASSERT_EQ(modify(job), 0u) << err.message;
    EXPECT_EQ(job.schedule.Enabled, 0);
    EXPECT_THAT(rows("SELECT enabled,sch_dow FROM backup"), ElementsAre("0|0"));
    EXPECT_THAT(logged(5), Contains("Backup Job is Enabled, but no schedule. Force it to Disabled"));
    log.clear();
    ASSERT_EQ(modify(job), 0u) << err.message;
    EXPECT_THAT(logged(5), Not(Contains(HasSubstr("Force it"))));
}

TEST_F(ModifyBackup, TheStartIsNotAfterTheEnd)
{
    WholeJob job("nightly", id);
    job.schedule.Start = 6;
    expect_failure(5, "Invalid schedule time of Backup job nightly.", [&] { return modify(job); });
    job.schedule.Enabled = 0;
    expect_failure(5, "Invalid schedule time of Backup job nightly.", [&] { return modify(job); });
    job.from("remote", "cifs");  // would be refused, too, but later
    expect_failure(5, "Invalid schedule time of Backup job nightly.", [&] { return modify(job); });
    job.schedule.End = 6;
    job.from("share", "media", "/films");
    EXPECT_EQ(modify(job), 0u) << err.message;
    WholeJob added("odd");
    added.schedule.Start = 6;
    EXPECT_EQ(add(added), 0u) << "adding does not look at it";
}

TEST_F(ModifyBackup, AJobKeepsItsNameButTakesNoOther)
{
    given("other");
    WholeJob job("nightly", id);
    EXPECT_EQ(modify(job), 0u) << err.message;
    job.job.JobName = "other";
    expect_failure(807, "JobName specified is already exist.", [&] { return modify(job); });
    job.job.JobName = nullptr;
    EXPECT_EQ(modify(job), 0u) << err.message;
    EXPECT_THAT(names(), ElementsAre("", "other"));
}

TEST_F(ModifyBackup, TheTimeMachineStoreIsConfigured)
{
    sql("UPDATE account_default SET home_volume_id=NULL");
    WholeJob job("nightly", id);
    job.from("timemachine", "~timemachine~");
    expect_failure(841, "Timemachine is not configured.", [&] { return modify(job); });
}

TEST_F(ModifyBackup, PathsOfSmbAreStoredWithSingleSlashes)
{
    WholeJob job("nightly", id);
    job.to("remote", "cifs-ab", "\\\\host\\\\share");
    ASSERT_EQ(modify(job), 0u) << err.message;
    EXPECT_EQ(value("SELECT dst_path FROM backup"), "/host/share");
}

TEST_F(ModifyBackup, TheMaskKeepsAPassword)
{
    WholeJob job("nightly", id);
    job.source.Password = "new";
    job.destination.Password = masked_password;
    ASSERT_EQ(modify(job), 0u) << err.message;
    EXPECT_THAT(rows("SELECT src_password,dst_password FROM backup"), ElementsAre("new|it's secret"));
    job.source.Password = masked_password;
    job.destination.Password = "";
    ASSERT_EQ(modify(job), 0u) << err.message;
    EXPECT_THAT(rows("SELECT src_password,dst_password FROM backup"), ElementsAre("new|"));
}

TEST_F(ModifyBackup, WhatDoesNotFitTheListIsLeftOutWhole)
{
    // Of the 2,047 bytes the other assignments leave this many for the excluded files.
    WholeJob job("nightly", id);
    take_statements();
    ASSERT_EQ(modify(job), 0u) << err.message;
    size_t used = 0;
    for (const std::string &each : take_statements())
        if (each.starts_with("UPDATE backup SET "))
            used = each.size() - strlen("UPDATE backup SET ") - each.size() + each.find(" WHERE ");
    const size_t room = 2047 - used + strlen("*.tmp");
    const std::string fits(room, 'x');
    const std::string too_long(room + 1, 'y');
    job.option.RsyncExclude = fits.c_str();
    job.option.MiscOption = 6;
    ASSERT_EQ(modify(job), 0u) << err.message;
    EXPECT_EQ(value("SELECT opt_rsync_exclude FROM backup"), fits);
    EXPECT_EQ(value("SELECT opt_misc_option FROM backup"), "6");
    log.clear();
    job.option.RsyncExclude = too_long.c_str();
    job.option.WolAddress = "00:00:00:00:00:01";
    ASSERT_EQ(modify(job), 0u) << err.message;
    EXPECT_EQ(value("SELECT opt_rsync_exclude FROM backup"), too_long) << "the last field had to go";
    EXPECT_EQ(value("SELECT wol_addr FROM backup"), "00:11:22:33:44:55");
    EXPECT_THAT(logged(2), ElementsAre("Backup job " + std::to_string(id) + " is too long, not all of it is stored\n"));
    const std::string huge(5000, 'z');
    job.source.Path = huge.c_str();
    job.option.RsyncExclude = "";
    ASSERT_EQ(modify(job), 0u) << err.message;
    EXPECT_THAT(rows("SELECT src_path,opt_rsync_exclude,wol_addr FROM backup"),
                ElementsAre("/films||00:00:00:00:00:01"))
        << "what comes after it still fits";
}

TEST_F(ModifyBackup, AListIsWrittenWholeOrNotAtAll)
{
    const int32_t other = given("other");
    WholeJob first("weekly", id);
    WholeJob second("nightly", other);
    first.job.next = &second.job;
    second.from("remote", "cifs");
    expect_failure(8, "Source/Destination cannot be remote", [&] { return modify(first); });
    second.from("share", "media", "/films");
    EXPECT_EQ(modify(first), 0u) << "a name is free once its job has another";
    EXPECT_THAT(names(), ElementsAre("weekly", "nightly"));
}

TEST_F(ModifyBackup, WhatTheListShowsCanBeWrittenBack)
{
    WholeJob stick("stick");
    stick.from("usb", "usb_port_1").to("share", "stick");
    stick.source.Eject = 1;
    ASSERT_EQ(add(stick), 0u) << err.message;
    BackupJobCollection all{};
    ASSERT_EQ(qbobj_getBackupJobCollection(qbdb, db, &all, &err), 0u) << err.message;
    const std::string before = content();
    ASSERT_EQ(modify(all.BackupJob), 0u) << err.message;
    EXPECT_EQ(content(), before);
    for (const BackupJob *each : test::elements(all.BackupJob)) EXPECT_EQ(each->Changed, 0) << each->JobName;
}

TEST_F(ModifyBackup, OnlyTheCopyIsReadWhole)
{
    take_statements();
    WholeJob job("nightly", id);
    job.from("volume", "tank").to("share", "media");
    ASSERT_EQ(modify(job), 0u) << err.message;
    std::vector<std::string> statements = take_statements();
    std::erase_if(statements, [](const std::string &each) { return each.find("x_modify_") != std::string::npos; });
    test::expect_indexed(db, statements);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
