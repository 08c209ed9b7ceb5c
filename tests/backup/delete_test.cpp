// Deleting backup jobs, and what shares take along with them.
#include "jobs.h"
#include "backup/backup.h"
#include "fixture/plans.h"

using test::WholeJob;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct DeleteBackup : test::Backup {
    qb::CallContext ctx{qbdb, &err};

    void press(std::initializer_list<int32_t> ids)
    {
        for (const int32_t id : ids)
            sql("INSERT INTO backup_button_jobs (`order`,backup_id) VALUES(" + std::to_string(id) + "," +
                std::to_string(id) + ")");
    }
};

TEST_F(DeleteBackup, TakesTheJobOffTheButton)
{
    const int32_t one = given("one");
    const int32_t two = given("two");
    press({one, two, one});
    BackupJob job{};
    job.JobId = one;
    ASSERT_EQ(remove(&job), 0u) << err.message;
    EXPECT_STREQ(job.JobName, "one") << "the caller learns what went";
    EXPECT_THAT(names(), ElementsAre("two"));
    EXPECT_THAT(button(), ElementsAre(std::to_string(two) + "|" + std::to_string(two)));
}

TEST_F(DeleteBackup, AGivenNameStays)
{
    BackupJob job{};
    job.resource_id = given("one");
    job.JobName = "mine";
    take_statements();
    ASSERT_EQ(remove(&job), 0u) << err.message;
    EXPECT_STREQ(job.JobName, "mine");
    for (const std::string &each : take_statements()) EXPECT_EQ(each.find("SELECT"), std::string::npos) << each;
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(DeleteBackup, AJobWithoutANameHadTheEmptyOne)
{
    sql("INSERT INTO backup (id) VALUES(7)");
    BackupJob job{};
    job.JobId = 7;
    ASSERT_EQ(remove(&job), 0u) << err.message;
    EXPECT_STREQ(job.JobName, "");
}

TEST_F(DeleteBackup, RefusesIdsOfNoJob)
{
    const int32_t one = given("one");
    press({one + 1});
    BackupJob job{};
    expect_failure(8, "Invalid resource_id (0)", [&] { return remove(&job); });
    job.resource_id = -4;
    job.JobId = -9;
    expect_failure(8, "Invalid resource_id (-9)", [&] { return remove(&job); });
    job.JobId = one + 1;
    expect_failure(6, "None of row is deleted. May be bad resource_id=" + std::to_string(one + 1) + "'",
                   [&] { return remove(&job); });
    EXPECT_EQ(job.JobName, nullptr);
    EXPECT_EQ(remove(nullptr), 0u);
}

TEST_F(DeleteBackup, AListGoesWholeOrNotAtAll)
{
    BackupJob one{};
    BackupJob two{};
    one.JobId = given("one");
    two.JobId = one.JobId;
    one.next = &two;
    expect_failure(6, "None of row is deleted. May be bad resource_id=" + std::to_string(one.JobId) + "'",
                   [&] { return remove(&one); });
    two.JobId = given("two");
    ASSERT_EQ(remove(&one), 0u) << err.message;
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(DeleteBackup, AnIdIsNotGivenTwice)
{
    BackupJob job{};
    job.JobId = given("one");
    const int32_t before = job.JobId;
    ASSERT_EQ(remove(&job), 0u) << err.message;
    EXPECT_GT(given("two"), before);
}

TEST_F(DeleteBackup, LookUpsUseIndexes)
{
    BackupJob job{};
    job.JobId = given("one");
    take_statements();
    ASSERT_EQ(remove(&job), 0u) << err.message;
    ASSERT_EQ(qb::rename_share_in_backup_jobs(&ctx, db, "media", "films"), 0u);
    ASSERT_EQ(qb::delete_backup_jobs_of_share(&ctx, db, 1), 0u);
    test::expect_indexed(db, take_statements());
}

// ---- Shares

TEST_F(DeleteBackup, JobsFollowTheNewNameOfAShare)
{
    given("reads");
    WholeJob writes("writes");
    writes.from("share", "photos").to("share", "media");
    ASSERT_EQ(add(writes), 0u) << err.message;
    WholeJob another("home of that name");
    another.from("home", "media").to("volume", "media");
    ASSERT_EQ(add(another), 0u) << err.message;
    ASSERT_EQ(qb::rename_share_in_backup_jobs(&ctx, db, "media", "fil'ms"), 0u) << err.message;
    EXPECT_THAT(rows("SELECT name,src_share_proto,dst_share_proto FROM backup ORDER BY id"),
                ElementsAre("reads|fil'ms|rsync", "writes|photos|fil'ms", "home of that name|media|media"));
    for (const int nth : {1, 2}) {
        fail_statement(nth);
        EXPECT_EQ(qb::rename_share_in_backup_jobs(&ctx, db, "fil'ms", "media"), 5u);
        EXPECT_STREQ(err.message, "Failed DB Query for 'UPDATE backup'. injected");
    }
}

TEST_F(DeleteBackup, JobsGoWithTheirShare)
{
    given("reads");
    WholeJob writes("writes");
    writes.from("share", "photos").to("share", "media");
    ASSERT_EQ(add(writes), 0u) << err.message;
    WholeJob another("home of that name");
    another.from("home", "media").to("volume", "media");
    ASSERT_EQ(add(another), 0u) << err.message;
    press({writes.job.JobId});
    ASSERT_EQ(qb::delete_backup_jobs_of_share(&ctx, db, 9), 0u) << err.message;
    ASSERT_EQ(qb::delete_backup_jobs_of_share(&ctx, db, 1), 0u) << err.message;
    EXPECT_THAT(names(), ElementsAre("home of that name"));
    BackupButtonJobCollection jobs{};
    ASSERT_EQ(qbobj_getBackupButtonJobCollection(qbdb, db, &jobs, &err), 0u) << err.message;
    EXPECT_EQ(jobs.Jobs, nullptr) << "what is left on the button does not show";
    fail_statement(1);
    EXPECT_EQ(qb::delete_backup_jobs_of_share(&ctx, db, 1), 5u);
    EXPECT_STREQ(err.message, "Failed DB Query for 'DELETE backup'. injected");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
