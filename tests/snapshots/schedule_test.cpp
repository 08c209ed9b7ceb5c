// When snapshots of the home folders are taken.
#include "fixture/allocations.h"
#include "fixture/fixture.h"
#include "fixture/text_of.h"

using test::text_of;
using testing::ElementsAre;

namespace {

struct HfSchedule : test::Database {
    Schedule schedule{1, "5", "6", "7", "8", "9", 10, 11, 12, 13, 14};

    std::vector<std::string> stored() const { return rows("SELECT * FROM `$home_folder_snapshot_schedule`"); }
};

const char kDefaults[] = "0|1|0|*|*|*|*|0|1|0|0";

TEST_F(HfSchedule, AFreshApplianceHasTheDefaults)
{
    EXPECT_THAT(stored(), ElementsAre(kDefaults));
}

TEST_F(HfSchedule, IsAddedAndReadBack)
{
    ASSERT_EQ(qbobj_addHfSnapshotSchedule(qbdb, db, &schedule, &err), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre("0|1|5|6|7|8|9|10|11|13|14"));
    Schedule read{9, "x", "x", "x", "x", "x", 9, 9, 9, 9, 9};
    ASSERT_EQ(qbobj_getHfSnapshotSchedule(qbdb, db, &read, &err), 0u) << err.message;
    EXPECT_EQ(text_of(read),
              "Enabled=1 Minute=5 Hour=6 DayOfMonth=7 DayOfWeek=8 Month=9 LastTaken=10 PurgeManualSnapshot=11 "
              "LastDailyTaken=13 LastWeeklyTaken=14")
        << "never stored";
}

TEST_F(HfSchedule, WhatIsMissingIsStoredAsNullAndReadAsEmpty)
{
    Schedule empty{};
    ASSERT_EQ(qbobj_addHfSnapshotSchedule(qbdb, db, &empty, &err), 0u);
    EXPECT_THAT(stored(), ElementsAre("0|0|NULL|NULL|NULL|NULL|NULL|0|0|0|0"));
    ASSERT_EQ(qbobj_getHfSnapshotSchedule(qbdb, db, &schedule, &err), 0u);
    EXPECT_STREQ(schedule.Minute, "");
    EXPECT_STREQ(schedule.Month, "");
    EXPECT_EQ(schedule.LastTaken, 0);
}

TEST_F(HfSchedule, WithoutARowTheRecordStaysAsItIs)
{
    sql("DELETE FROM `$home_folder_snapshot_schedule`");
    ASSERT_EQ(qbobj_getHfSnapshotSchedule(qbdb, db, &schedule, &err), 0u);
    EXPECT_STREQ(schedule.Minute, "5");
    EXPECT_EQ(schedule.TemporaryDisable, 12);
}

TEST_F(HfSchedule, OnlyWhatIsGivenIsChanged)
{
    Schedule change{};
    ASSERT_EQ(qbobj_modifyHfSnapshotSchedule(qbdb, db, &change, &err), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre("0|0|0|*|*|*|*|0|1|0|0")) << "enabled is always written";
    ASSERT_EQ(qbobj_modifyHfSnapshotSchedule(qbdb, db, &schedule, &err), 0u);
    EXPECT_THAT(stored(), ElementsAre("0|1|5|6|7|8|9|10|11|13|14"));
    change.Enabled = 2;
    change.Hour = "it's";
    change.LastDailyTaken = -1;
    ASSERT_EQ(qbobj_modifyHfSnapshotSchedule(qbdb, db, &change, &err), 0u);
    EXPECT_THAT(stored(), ElementsAre("0|2|5|it's|7|8|9|10|11|-1|14")) << "a number of 0 is none";
    change = {};
    change.Month = "";
    ASSERT_EQ(qbobj_modifyHfSnapshotSchedule(qbdb, db, &change, &err), 0u);
    EXPECT_THAT(stored(), ElementsAre("0|0|5|it's|7|8||10|11|-1|14")) << "an empty text is one";
}

TEST_F(HfSchedule, AMissingRowIsMadeWithTheDefaultsFirst)
{
    sql("DELETE FROM `$home_folder_snapshot_schedule`");
    Schedule change{};
    change.Minute = "30";
    ASSERT_EQ(qbobj_modifyHfSnapshotSchedule(qbdb, db, &change, &err), 0u);
    EXPECT_THAT(stored(), ElementsAre("0|0|30|*|*|*|*|0|1|0|0"));
}

TEST_F(HfSchedule, APartThatDoesNotFitIsLeftOutAloneAndTheNextOnesFollow)
{
    // "enabled=1" is 9 bytes; ",minute='…'" has to fit in what is left of 511.
    const std::string longest(511 - 9 - strlen(",minute=''"), 'm');
    Schedule change{};
    change.Enabled = 1;
    change.Minute = longest.c_str();
    change.Hour = "4";
    ASSERT_EQ(qbobj_modifyHfSnapshotSchedule(qbdb, db, &change, &err), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre("0|1|" + longest + "|*|*|*|*|0|1|0|0")) << "no room for the hour";
    const std::string longer = longest + "m";
    change.Minute = longer.c_str();
    ASSERT_EQ(qbobj_modifyHfSnapshotSchedule(qbdb, db, &change, &err), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre("0|1|" + longest + "|4|*|*|*|0|1|0|0"));
}

TEST_F(HfSchedule, FailedStatementsAreTold)
{
    fail_statement(1);
    expect_failure(5, "Failed DB Query for 'SELECT FROM $home_folder_snapshot_schedule'. injected",
                   [&] { return qbobj_getHfSnapshotSchedule(qbdb, db, &schedule, &err); });
    fail_statement(1);
    expect_failure(5, "Failed INSERT $home_folder_snapshot_schedule. (injected)",
                   [&] { return qbobj_addHfSnapshotSchedule(qbdb, db, &schedule, &err); });
    fail_statement(1);
    expect_failure(5, "Failed DB Query for 'INSERT $home_folder_snapshot_schedule'. injected",
                   [&] { return qbobj_modifyHfSnapshotSchedule(qbdb, db, &schedule, &err); });
    fail_statement(2);
    expect_failure(5, "Failed DB Query for 'UPDATE $home_folder_snapshot_schedule'. injected",
                   [&] { return qbobj_modifyHfSnapshotSchedule(qbdb, db, &schedule, &err); });
}

TEST_F(HfSchedule, WithoutMemoryTheRecordStaysAsItIs)
{
    ASSERT_EQ(qbobj_addHfSnapshotSchedule(qbdb, db, &schedule, &err), 0u);
    const auto read = [&] {
        Schedule out{};
        out.Enabled = 77;
        const uint32_t rc = qbobj_getHfSnapshotSchedule(qbdb, db, &out, &err);
        EXPECT_EQ(out.Enabled, rc ? 77 : 1);
        return rc;
    };
    test::expect_each_allocation_noticed(err, read, 2, "Failed to allocate resource.");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
