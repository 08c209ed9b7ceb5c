#include "fixture/fixture.h"
#include "fixture/text_of.h"

using test::text_of;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct CofferTest : test::Database {
    Coffer coffer{};

    uint32_t get() { return qbobj_getCofferSettings(qbdb, db, &coffer, &err); }
    uint32_t set() { return qbobj_setCofferSettings(qbdb, db, &coffer, &err); }
    void give(const char *action, const char *user = "anna@example.com", const char *password = "it's",
              const char *job = "nightly")
    {
        coffer = {};
        coffer.Action = action;
        coffer.UserName = user;
        coffer.UserPassword = password;
        coffer.DefaultJob = job;
    }
    std::vector<std::string> account() const { return rows("SELECT * FROM service_coffer"); }
};

TEST_F(CofferTest, ReadsTheAccountWithoutItsPassword)
{
    sql("UPDATE service_misc SET val='1' WHERE key='QUILLBOXCOFFER';"
        "UPDATE service_misc SET val='/tank/coffer' WHERE key='QUILLBOXCOFFER_TEP_FOLDER';"
        "INSERT INTO service_coffer VALUES(1,'anna@example.com','secret','nightly')");
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_EQ(text_of(coffer), "Enabled=1 Volume=/tank/coffer UserName=anna@example.com DefaultJob=nightly");
}

TEST_F(CofferTest, WhatIsNotStoredIsNull)
{
    sql("DELETE FROM service_misc");
    coffer.Enabled = coffer.Volume = coffer.UserName = coffer.DefaultJob = "before";
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_EQ(text_of(coffer), "");
}

TEST_F(CofferTest, AFailedReadLeavesTheRecord)
{
    for (const auto &[part, message] : {std::pair{"service_misc", "Failed 'SELECT service_misc'. (injected)"},
                                        std::pair{"service_coffer", "Failed 'SELECT service_coffer'. (injected)"}}) {
        coffer = {};
        coffer.Enabled = "before";
        fail_statement(1, 1, "injected", part);
        expect_failure(5, message, [&] { return get(); });
        EXPECT_STREQ(coffer.Enabled, "before");
    }
}

TEST_F(CofferTest, LogsInAndReplacesTheAccount)
{
    sql("INSERT INTO service_coffer VALUES(1,'old@example.com','x','y'),(0,'older@example.com','x','y')");
    for (const char *action : {"login", "registration"}) {
        give(action);
        ASSERT_EQ(set(), 0u) << err.message;
        EXPECT_THAT(account(), ElementsAre("1|anna@example.com|it's|nightly"));
    }
    // The switch is a setting of its own.
    EXPECT_EQ(value("SELECT val FROM service_misc WHERE key='QUILLBOXCOFFER'"), "0");
}

TEST_F(CofferTest, LogsOutWithNothingElseGiven)
{
    sql("INSERT INTO service_coffer VALUES(1,'old@example.com','x','y')");
    give("logout", nullptr, nullptr, nullptr);
    ASSERT_EQ(set(), 0u) << err.message;
    EXPECT_THAT(account(), IsEmpty());
}

TEST_F(CofferTest, ARefusedLoginKeepsTheAccount)
{
    sql("INSERT INTO service_coffer VALUES(1,'old@example.com','x','y')");
    const auto refused = [this](const std::string &message) { expect_failure(8, message, [&] { return set(); }); };
    for (const char *action : {"login", "registration"}) {
        give(action, nullptr);
        refused("Invalid Email ((null)) rc=1");
        give(action, "anna");
        refused("Invalid Email (anna) rc=8");
        for (const char *missing : {static_cast<const char *>(nullptr), ""}) {
            give(action, "anna@example.com", missing, missing);
            refused("Invalid Password.");
            give(action, "anna@example.com", "secret", missing);
            refused("Invalid Default Job.");
        }
    }
    for (const char *action : {"Login", "change", "", static_cast<const char *>(nullptr)}) {
        give(action);
        refused(std::string("Invalid Action (") + (action ? action : "(null)") +
                "). One of 'login', 'registration', 'logout'.");
    }
}

TEST_F(CofferTest, IsForgotten)
{
    sql("INSERT INTO service_coffer VALUES(1,'old@example.com','x','y')");
    const std::string before = value("SELECT GROUP_CONCAT(key||val) FROM service_misc");
    for (int i = 0; i < 2; i++) {
        ASSERT_EQ(qbobj_cleanCofferSettings(qbdb, db, &err), 0u) << err.message;
        EXPECT_THAT(account(), IsEmpty());
    }
    EXPECT_EQ(value("SELECT GROUP_CONCAT(key||val) FROM service_misc"), before);
    fail_statement(1);
    expect_failure(5, "Failed DB Delete for service_coffer update. injected",
                   [&] { return qbobj_cleanCofferSettings(qbdb, db, &err); });
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
