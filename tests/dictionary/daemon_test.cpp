#include "fixture/fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Daemon : test::Database {
    int32_t started = -7;
    int32_t stopped = -7;
    const char *version = "unset";

    uint32_t get() { return qbobj_getQuillboxdInfo(qbdb, db, &started, &stopped, &version, &err); }
    uint32_t set(int32_t start, int32_t stop, const char *text)
    {
        return qbobj_setQuillboxdInfo(qbdb, db, start, stop, text, &err);
    }
    std::vector<std::string> stored() const { return rows("SELECT started_on,stopped_on,version FROM `$quillboxd`"); }
};

TEST_F(Daemon, WithoutARecordItNeverRan)
{
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_EQ(started, 0);
    EXPECT_EQ(stopped, 0);
    EXPECT_STREQ(version, "1.0.0");
}

TEST_F(Daemon, TheFirstWriteMakesTheRow)
{
    ASSERT_EQ(set(100, 200, "it's 2.1"), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre("100|200|it's 2.1"));
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_EQ(started, 100);
    EXPECT_EQ(stopped, 200);
    EXPECT_STREQ(version, "it's 2.1");
}

TEST_F(Daemon, WritesWhatIsGiven)
{
    ASSERT_EQ(set(-1, 5, nullptr), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre("NULL|5|NULL"));
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_EQ(started, 0);
    EXPECT_EQ(version, nullptr);
    ASSERT_EQ(set(0, -1, nullptr), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre("0|5|NULL"));
    ASSERT_EQ(set(-1, -1, ""), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre("0|5|"));
}

TEST_F(Daemon, NothingGivenIsNothingDone)
{
    ASSERT_EQ(set(-1, INT32_MIN, nullptr), 0u) << err.message;
    EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(Daemon, EachOutputMayBeMissing)
{
    ASSERT_EQ(set(1, 2, "3"), 0u) << err.message;
    ASSERT_EQ(qbobj_getQuillboxdInfo(qbdb, db, nullptr, nullptr, nullptr, &err), 0u) << err.message;
    ASSERT_EQ(qbobj_getQuillboxdInfo(qbdb, db, nullptr, &stopped, nullptr, &err), 0u) << err.message;
    EXPECT_EQ(stopped, 2);
    EXPECT_EQ(started, -7);
}

TEST_F(Daemon, AVersionThatDoesNotFitIsRefused)
{
    // "version=''" is 10 bytes of the 511.
    const std::string fits(501, 'v');
    ASSERT_EQ(set(-1, -1, fits.c_str()), 0u) << err.message;
    EXPECT_EQ(value("SELECT version FROM `$quillboxd`"), fits);
    const std::string large(502, 'w');
    expect_failure(8, "Fail 'UPDATE $quillboxd", [&] { return set(5, -1, large.c_str()); });
}

TEST_F(Daemon, Failures)
{
    fail_statement(1, 1, "injected", "SELECT");
    expect_failure(5, "Failed DB Query for 'SELECT $lquillboxd'. injected", [&] { return get(); });
    EXPECT_EQ(started, -7);
    EXPECT_STREQ(version, "unset");
    fail_statement(1, 1, "injected", "UPDATE");
    expect_failure(8, "Fail 'UPDATE $quillboxd", [&] { return set(1, 1, "1"); });
    fail_statement(2, 1, "injected", "UPDATE");
    expect_failure(8, "Fail 'UPDATE $quillboxd", [&] { return set(1, 1, "1"); });
    fail_statement(1, 1, "disk on fire", "INSERT");
    expect_failure(8, "disk on fire", [&] { return set(1, 1, "1"); });
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
