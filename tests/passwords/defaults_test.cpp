#include "fixture/fixture.h"
#include "fixture/text_of.h"

using test::text_of;
using testing::ElementsAre;

namespace {

struct Defaults : test::Database {
    AccountDefault def{};
    Defaults()
    {
        sql("INSERT INTO _volume(id,lv_name) VALUES('v2','pool two');"
            "INSERT INTO `$group`(id,gname,is_privileged) VALUES(120,'staff',0),(121,'gone',-1);"
            "INSERT INTO `$group`(id,gname,is_privileged,rid) VALUES(-5,'domain users',0,513)");
        def = {"tank", 80, 7, 1, 5000000000u, "staff", 1, 250, 1};
    }
    uint32_t get() { return qbobj_getAccountDefault(qbdb, db, &def, &err); }
    uint32_t set() { return qbobj_setAccountDefault(qbdb, db, &def, &err); }
    std::vector<std::string> stored() { return rows("SELECT * FROM account_default"); }
};

TEST_F(Defaults, AreReadInto)
{
    sql("UPDATE account_default SET home_volume_id='tank',diskquota_warn=70,group_id=120,disallow_password_change=1,"
        "home_folder_capacity_limit=5000000000,group_membership='staff',private_time_machine=1,"
        "private_time_machine_space=250,snapshot_protection=2");
    def = {};
    take_statements();
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_THAT(take_statements(),
                ElementsAre("BEGIN",
                            "SELECT A.home_volume_id,A.diskquota_warn,A.group_id,A.disallow_password_change,"
                            "A.home_folder_capacity_limit,A.group_membership,A.private_time_machine,"
                            "A.private_time_machine_space,A.snapshot_protection FROM account_default A LIMIT 1",
                            "COMMIT"));
    EXPECT_EQ(text_of(def),
              "HomeVolumeId=tank DiskQuotaWarn=70 GroupId=120 DisallowPasswordChange=1 "
              "HomeFolderCapacityLimit=5000000000 GroupMembership=staff PrivateTimeMachine=1 "
              "PrivateTimeMachineSpace=250 SnapshotProtection=2");
}

TEST_F(Defaults, ThatAreNullReadAsNullAndZero)
{
    sql("UPDATE account_default SET home_volume_id=NULL,diskquota_warn=NULL,home_folder_capacity_limit=NULL,"
        "group_membership=NULL");
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_EQ(text_of(def), "GroupId=99 PrivateTimeMachineSpace=100");
}

TEST_F(Defaults, ReadFailuresLeaveTheRecord)
{
    sql("DELETE FROM account_default");
    expect_failure(5, "DB may be corrupted? 'account_default' table is not populated.", [&] { return get(); });
    EXPECT_EQ(def.PrivateTimeMachineSpace, 250);
}

TEST_F(Defaults, AreWrittenByOneStatementButForTheNextId)
{
    sql("UPDATE account_default SET next_uid=345");
    take_statements();
    ASSERT_EQ(set(), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre("tank|80|120|1|5000000000|staff|1|250|1|345"));
    EXPECT_THAT(take_statements(),
                ElementsAre("BEGIN IMMEDIATE", "SELECT id FROM _volume WHERE id='tank'",
                            "SELECT id FROM `$group` WHERE gname='staff' AND rid IS NULL",
                            "UPDATE account_default SET home_volume_id='tank',diskquota_warn=80,group_id=120,"
                            "disallow_password_change=1,home_folder_capacity_limit=5000000000,group_membership='staff',"
                            "private_time_machine=1,private_time_machine_space=250,snapshot_protection=1",
                            "COMMIT"));
}

TEST_F(Defaults, ThatWereReadCanBeWrittenBack)
{
    ASSERT_EQ(set(), 0u) << err.message;
    const std::string before = content();
    ASSERT_EQ(get(), 0u) << err.message;
    ASSERT_EQ(set(), 0u) << err.message;
    EXPECT_EQ(content(), before);
}

TEST_F(Defaults, VolumeMayBeGivenByItsName)
{
    def.HomeVolumeId = "pool two";
    ASSERT_EQ(set(), 0u) << err.message;
    EXPECT_EQ(value("SELECT home_volume_id FROM account_default"), "pool two");
}

TEST_F(Defaults, GroupIsResolvedByName)
{
    struct {
        const char *name;
        std::string id;
    } const cases[] = {{"staff", "120"}, {"users", "99"}, {"admin", "98"}, {"domain users", "-5"}, {"gone", "121"}};
    for (const auto &each : cases) {
        def.GroupMembership = each.name;
        ASSERT_EQ(set(), 0u) << err.message;
        EXPECT_EQ(value("SELECT group_id FROM account_default"), each.id) << each.name;
    }
}

TEST_F(Defaults, RefusesUnknownVolumesFirst)
{
    def.DiskQuotaWarn = 0;
    for (const char *volume : {static_cast<const char *>(nullptr), "", "Tank", "tank'"}) {
        def.HomeVolumeId = volume;
        expect_failure(8, "Invalid HomeVolumeId.", [&] { return set(); });
    }
}

TEST_F(Defaults, WarningLevelIsOneToNinetyNine)
{
    def.GroupMembership = "unknown";
    for (const int32_t percent : {0, 100, -1, 2147483647}) {
        def.DiskQuotaWarn = percent;
        expect_failure(8, "Invalid DiskQuotaWarn. 1-99.", [&] { return set(); });
    }
    def.GroupMembership = "staff";
    for (const int32_t percent : {1, 99}) {
        def.DiskQuotaWarn = percent;
        EXPECT_EQ(set(), 0u) << err.message;
        EXPECT_EQ(value("SELECT diskquota_warn FROM account_default"), std::to_string(percent));
    }
}

TEST_F(Defaults, RefusesUnknownGroups)
{
    struct {
        const char *name;
        std::string message;
    } const cases[] = {{"unknown", "Invalid group name (unknown). Not exist."},
                       {"", "Invalid group name (). Not exist."},
                       {"Staff", "Invalid group name (Staff). Not exist."},
                       {nullptr, "Invalid group name ((null)). Not exist."}};
    for (const auto &each : cases) {
        def.GroupMembership = each.name;
        expect_failure(8, each.message, [&] { return set(); });
    }
}

TEST_F(Defaults, MissingRecordsAbort)
{
    EXPECT_DEATH(qbobj_getAccountDefault(qbdb, db, nullptr, &err), "Assertion `def' failed");
    EXPECT_DEATH(qbobj_setAccountDefault(qbdb, db, nullptr, &err), "Assertion `def' failed");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
