// The jobs that the button on the front starts.
#include "jobs.h"
#include "fixture/plans.h"

using test::elements;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct BackupButton : test::Backup {
    int32_t one = given("one");
    int32_t two = given("two");
    int32_t three = given("three");

    uint32_t set(std::initializer_list<int32_t> ids)
    {
        std::vector<BackupButtonJob> jobs(ids.size());
        BackupButtonJobCollection collection{};
        BackupButtonJob **tail = &collection.Jobs;
        auto job = jobs.begin();
        for (const int32_t id : ids) {
            job->JobId = id;
            job->JobName = "not looked at";
            *tail = &*job;
            tail = &(job++)->next;
        }
        return qbobj_setBackupButtonJobCollection(qbdb, db, &collection, &err);
    }
    std::vector<std::string> read()
    {
        BackupButtonJobCollection jobs{};
        EXPECT_EQ(qbobj_getBackupButtonJobCollection(qbdb, db, &jobs, &err), 0u) << err.message;
        std::vector<std::string> shown;
        for (const BackupButtonJob *each : elements(jobs.Jobs))
            shown.push_back(std::to_string(each->JobId) + "|" + each->JobName);
        return shown;
    }
    static std::string pair(int32_t first, int32_t second)
    {
        return std::to_string(first) + "|" + std::to_string(second);
    }
};

TEST_F(BackupButton, TheListIsWrittenWholeInItsOrder)
{
    EXPECT_THAT(read(), IsEmpty());
    ASSERT_EQ(set({three, one, two}), 0u) << err.message;
    EXPECT_THAT(button(), ElementsAre(pair(1, three), pair(2, one), pair(3, two)));
    EXPECT_THAT(read(), ElementsAre(std::to_string(three) + "|three", std::to_string(one) + "|one",
                                    std::to_string(two) + "|two"));
    ASSERT_EQ(set({two}), 0u) << err.message;
    EXPECT_THAT(button(), ElementsAre(pair(1, two)));
    ASSERT_EQ(set({}), 0u) << err.message;
    EXPECT_THAT(button(), IsEmpty());
}

TEST_F(BackupButton, AJobMayStandThereTwiceAndOneThatIsNotThereDoesNotShow)
{
    ASSERT_EQ(set({one, 999, one}), 0u) << err.message;
    EXPECT_THAT(button(), ElementsAre(pair(1, one), pair(2, 999), pair(3, one)));
    EXPECT_THAT(read(), ElementsAre(std::to_string(one) + "|one", std::to_string(one) + "|one"));
}

TEST_F(BackupButton, AListThatIsNotEmptyIsAppendedTo)
{
    ASSERT_EQ(set({one}), 0u) << err.message;
    sql("UPDATE backup SET name=NULL");
    BackupButtonJob first{};
    BackupButtonJobCollection jobs{};
    jobs.Jobs = &first;
    ASSERT_EQ(qbobj_getBackupButtonJobCollection(qbdb, db, &jobs, &err), 0u) << err.message;
    EXPECT_EQ(jobs.Jobs, &first);
    EXPECT_STREQ(first.next->JobName, "");
}

TEST_F(BackupButton, AListThatCannotBeWrittenLeavesTheOldOne)
{
    ASSERT_EQ(set({one, two}), 0u) << err.message;
    fail_statement(3);
    expect_failure(5, "Failed DB Query for (INSERT backup_button_jobs). injected", [&] { return set({three, two}); });
    EXPECT_THAT(button(), ElementsAre(pair(1, one), pair(2, two)));
}

TEST_F(BackupButton, LookUpsUseIndexes)
{
    take_statements();
    ASSERT_EQ(set({one, two}), 0u) << err.message;
    read();
    test::expect_indexed(db, take_statements(),
                         {{"backup_button_jobs", "DELETE FROM backup_button_jobs", "empties the list"},
                          {"backup_button_jobs", "ORDER BY J.`order`", "lists it"}});
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
