#include <tuple>

#include "fixture/fixture.h"
#include "validate/password.h"

using testing::ElementsAre;

namespace {

struct TimeMachine : test::Database {
    Timemachine tm{};

    uint32_t get()
    {
        tm = {};
        return qbobj_getTimemachine(qbdb, db, &tm, &err);
    }
    uint32_t set() { return qbobj_setTimemachine(qbdb, db, &tm, &err); }
    uint32_t enable(int32_t on) { return qbobj_setTimemachineEnable(qbdb, db, on, &err); }
    uint32_t switch_on(int32_t capacity, const char *password)
    {
        tm = {};
        tm.Enabled = 1;
        tm.CapacityMB = capacity;
        tm.Password = password;
        return set();
    }
    std::string password() const { return value("SELECT passwd FROM `$user` WHERE id=96"); }
    std::string others() const { return value("SELECT GROUP_CONCAT(passwd) FROM `$user` WHERE id<>96"); }
    std::string announced() const { return rows("SELECT afp,timemachine FROM service_avahi").at(0); }
    std::vector<std::string> allowances() const { return rows("SELECT * FROM `$timemachine_quota` ORDER BY user_id"); }
    void set_password(const std::string &hash) { sql("UPDATE `$user` SET passwd='" + hash + "' WHERE id=96"); }
    void allow(int users)
    {
        for (int i = 0; i < users; i++)
            sql("INSERT INTO `$timemachine_quota` VALUES(" + std::to_string(200 + i) + ",1,1)");
    }
};

TEST_F(TimeMachine, AFreshTargetIsOff)
{
    tm.HomeEnabled = 7;
    ASSERT_EQ(qbobj_getTimemachine(qbdb, db, &tm, &err), 0u) << err.message;
    EXPECT_EQ(tm.Enabled, 0);
    EXPECT_STREQ(tm.UserName, "Quillbox");
    EXPECT_STREQ(tm.Password, "");
    EXPECT_EQ(tm.CapacityMB, 0);
    EXPECT_EQ(tm.HomeEnabled, 7);
}

TEST_F(TimeMachine, TellsThePasswordByTheMask)
{
    const std::pair<const char *, const char *> kStates[] = {
        {"!", ""}, {"*", ""}, {"", masked_password}, {"!$1$a$b", masked_password}, {"$1$a$b", masked_password}};
    for (const auto &[stored, shown] : kStates) {
        set_password(stored);
        ASSERT_EQ(get(), 0u) << err.message;
        EXPECT_STREQ(tm.Password, shown) << stored;
    }
    sql("UPDATE `$user` SET passwd=NULL WHERE id=96");
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_STREQ(tm.Password, masked_password);
    sql("DELETE FROM `$user` WHERE id=96");
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_STREQ(tm.Password, masked_password);
}

TEST_F(TimeMachine, CapacityIsTheFreeSpaceOfTheHomeVolume)
{
    const std::tuple<const char *, const char *, int32_t> kVolumes[] = {
        {"2500000", "4096", 10240},  // in megabytes of a million bytes
        {"0", "4096", 0},
        {"NULL", "4096", 0},
        {"1000000000000", "4096", INT32_MAX},  // more than the field holds
    };
    sql("UPDATE account_default SET home_volume_id='tank'");
    for (const auto &[blocks, size, megabytes] : kVolumes) {
        sql(std::string("UPDATE _volume SET blk_free=") + blocks + ",blk_size=" + size + " WHERE id='tank'");
        ASSERT_EQ(get(), 0u) << err.message;
        EXPECT_EQ(tm.MaxCapacityMB, megabytes) << blocks;
    }
    sql("UPDATE account_default SET home_volume_id=NULL");
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_EQ(tm.MaxCapacityMB, 0);
}

TEST_F(TimeMachine, SwitchesOnWithPasswordAndSize)
{
    const std::string before = others();
    sql("UPDATE service_avahi SET afp=0,timemachine=0");
    ASSERT_EQ(switch_on(5000, "secret"), 0u) << err.message;
    qb::CallContext ctx{qbdb, &err};
    EXPECT_TRUE(qb::verify_password(&ctx, "secret", password().c_str())) << password();
    EXPECT_EQ(others(), before);
    EXPECT_EQ(value("SELECT enabled FROM service_afp"), "1");
    EXPECT_EQ(announced(), "1|1");
    EXPECT_THAT(allowances(), ElementsAre("96|1|5000"));
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_EQ(tm.Enabled, 1);
    EXPECT_EQ(tm.CapacityMB, 5000);
    EXPECT_STREQ(tm.Password, masked_password);
}

TEST_F(TimeMachine, KeepsThePasswordAndOpensTheAccount)
{
    for (const char *kept : {masked_password, static_cast<const char *>(nullptr), ""}) {
        set_password("!$1$abcdefgh$hash");
        ASSERT_EQ(switch_on(1, kept), 0u) << err.message;
        EXPECT_EQ(password(), "$1$abcdefgh$hash");
    }
}

TEST_F(TimeMachine, SwitchedOffTwiceHasOneExclamationMark)
{
    set_password("$1$abcdefgh$hash");
    sql("UPDATE service_afp SET enabled=1;UPDATE service_avahi SET afp=1,timemachine=1;"
        "INSERT INTO `$timemachine_quota` VALUES(96,1,10),(100,1,20)");
    tm = {};
    for (int i = 0; i < 2; i++) {
        ASSERT_EQ(set(), 0u) << err.message;
        EXPECT_EQ(password(), "!$1$abcdefgh$hash");
    }
    EXPECT_EQ(value("SELECT enabled FROM service_afp"), "1");
    EXPECT_EQ(announced(), "0|0");
    EXPECT_THAT(allowances(), ElementsAre("100|1|20"));
}

TEST_F(TimeMachine, IsWrittenBackAsItWasRead)
{
    ASSERT_EQ(switch_on(5000, "secret"), 0u) << err.message;
    const std::string before = content();
    ASSERT_EQ(get(), 0u) << err.message;
    ASSERT_EQ(set(), 0u) << err.message;
    EXPECT_EQ(content(), before);
    tm = {};
    ASSERT_EQ(set(), 0u) << err.message;
    const std::string off = content();
    ASSERT_EQ(get(), 0u) << err.message;
    ASSERT_EQ(set(), 0u) << err.message;
    EXPECT_EQ(content(), off);
}

TEST_F(TimeMachine, SixteenUsersAreTheLimitTheTargetCounted)
{
    allow(15);
    ASSERT_EQ(switch_on(1, nullptr), 0u) << err.message;
    const std::string full = "Cannot exceed more than 16 time machine users (Quillbox).";
    expect_failure(843, full, [&] { return switch_on(2, nullptr); });
    sql("DELETE FROM `$timemachine_quota` WHERE user_id=96");
    allow(0);
    sql("INSERT INTO `$timemachine_quota` VALUES(300,1,1)");
    expect_failure(843, full, [&] { return switch_on(1, "secret"); });
    tm = {};
    EXPECT_EQ(set(), 0u) << err.message;  // off is never refused
}

TEST_F(TimeMachine, ASwitchLeavesTheRestAlone)
{
    set_password("$1$abcdefgh$hash");
    sql("UPDATE service_avahi SET afp=0,timemachine=0");
    allow(20);
    for (const int32_t on : {1, -3}) {
        sql("UPDATE service_afp SET enabled=0");
        ASSERT_EQ(enable(on), 0u) << err.message;
        EXPECT_EQ(password(), "$1$abcdefgh$hash");
        EXPECT_EQ(value("SELECT enabled FROM service_afp"), "1");
        EXPECT_EQ(announced(), "0|1");
        EXPECT_EQ(allowances().size(), 20u);
    }
    sql("INSERT INTO `$timemachine_quota` VALUES(96,1,10);UPDATE service_avahi SET afp=1");
    for (int i = 0; i < 2; i++) {
        ASSERT_EQ(enable(0), 0u) << err.message;
        EXPECT_EQ(password(), "!$1$abcdefgh$hash");
        EXPECT_EQ(announced(), "1|0");
        EXPECT_EQ(value("SELECT enabled FROM service_afp"), "1");
        EXPECT_EQ(allowances().size(), 20u);
    }
    ASSERT_EQ(enable(1), 0u) << err.message;
    EXPECT_EQ(password(), "$1$abcdefgh$hash");
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_EQ(tm.Enabled, 0);  // no allowance was made
}

TEST_F(TimeMachine, ASwitchDoesNotNeedAfp)
{
    fail_statement(1, 1, "injected", "UPDATE service_afp");
    ASSERT_EQ(enable(1), 0u) << err.message;
    EXPECT_EQ(value("SELECT timemachine FROM service_avahi"), "1");
}

TEST_F(TimeMachine, AFailedReadLeavesTheRecord)
{
    for (const auto &[part, message] :
         {std::pair{"$timemachine_quota", "Failed DB Query 'SELECT service_afp'. (injected)"},
          std::pair{"_volume", "Failed DB Query 'SELECT _volume'. (injected)"},
          std::pair{"Quillbox", "Failed DB Query 'SELECT user'. (injected)"}}) {
        tm = {};
        tm.CapacityMB = 3;
        fail_statement(1, 1, "injected", part);
        expect_failure(5, message, [&] { return qbobj_getTimemachine(qbdb, db, &tm, &err); });
        EXPECT_EQ(tm.CapacityMB, 3);
        EXPECT_EQ(tm.UserName, nullptr);
    }
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
