#include <crypt.h>

#include "fixture/fixture.h"
#include "fixture/text_of.h"

using test::text_of;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

const std::string kTooLong(512, 'x');  // the first length that cannot be hashed

bool opens(const std::string &password, const std::string &hash)
{
    crypt_data area{};
    const char *again = crypt_r(password.c_str(), hash.c_str(), &area);
    return again && again == hash;
}

struct Passwords : test::Database {
    AdminPassword admin{};
    UserPassword user{};
    MyPassword mine{};

    Passwords() { sql("INSERT INTO `$user`(id,uname,passwd,group_id) VALUES(101,'anna','$1$old',99)"); }
    uint32_t get_admin() { return qbobj_getAdminPassword(qbdb, db, &admin, &err); }
    uint32_t set_admin() { return qbobj_setAdminPassword(qbdb, db, &admin, &err); }
    uint32_t set_user() { return qbobj_setUserPassword(qbdb, db, &user, &err); }
    uint32_t set_mine() { return qbobj_setMyPassword(qbdb, db, &mine, &err); }
    std::string hash_of(const std::string &name)
    {
        return value("SELECT passwd FROM `$user` WHERE uname='" + name + "'");
    }
    void give(const char *name, const std::string &setting, const std::string &password)
    {
        crypt_data area{};
        sql(std::string("UPDATE `$user` SET passwd='") + crypt_r(password.c_str(), setting.c_str(), &area) +
            "' WHERE uname='" + name + "'");
    }
};

// ---- The administrator

TEST_F(Passwords, AdminIsReadWithoutThePassword)
{
    give("admin", "$1$saltsalt$", "secret");
    sql("UPDATE passwordrecovery SET question='Pet?',answer='Rex',email='a@x.com',enabled=1,method='email';"
        "UPDATE `$user` SET shell_access=1 WHERE id=98");
    admin.Password = "before";
    admin.ResetFlag = 7;
    take_statements();
    ASSERT_EQ(get_admin(), 0u) << err.message;
    EXPECT_THAT(take_statements(),
                ElementsAre("BEGIN",
                            "SELECT PR.question,PR.answer,PR.email,PR.enabled,PR.method FROM passwordrecovery PR "
                            "LIMIT 1",
                            "SELECT U.shell_access FROM `$user` U WHERE id=98", "COMMIT"));
    EXPECT_EQ(text_of(admin), "Question=Pet? Answer=Rex Email=a@x.com Enabled=1 Method=email ShellAccess=1");
}

TEST_F(Passwords, AdminIsReadWithoutRecoverySettings)
{
    sql("DELETE FROM passwordrecovery; UPDATE `$user` SET shell_access=1 WHERE id=98");
    admin.Question = "before";
    ASSERT_EQ(get_admin(), 0u) << err.message;
    EXPECT_EQ(admin.Question, nullptr);
    EXPECT_EQ(admin.Enabled, 0);
    EXPECT_EQ(admin.ShellAccess, 1);
}

TEST_F(Passwords, AdminIsWrittenStepByStep)
{
    admin = {nullptr, "Pet's?", "Rex", "a@x.com", 1, "email", 0, 1};
    take_statements();
    ASSERT_EQ(set_admin(), 0u) << err.message;
    EXPECT_THAT(
        take_statements(),
        ElementsAre("BEGIN IMMEDIATE", "UPDATE passwordrecovery SET enabled=1",
                    "UPDATE `$user` SET shell_access=1 WHERE id=98", "SELECT shell_access FROM '$user' WHERE id=98",
                    "SELECT COUNT(*) FROM ssh_public_key WHERE user_id=98 AND serve_for='rsync'",
                    "UPDATE '$user' SET shell='/bin/bash' WHERE id=98", "UPDATE passwordrecovery SET method='email'",
                    "UPDATE passwordrecovery SET email='a@x.com', question='Pet''s?', answer='Rex'", "COMMIT"));
    EXPECT_THAT(rows("SELECT * FROM passwordrecovery"), ElementsAre("Pet's?|Rex|a@x.com|1|email"));
    EXPECT_THAT(rows("SELECT shell_access,shell,passwd FROM `$user` WHERE id=98"), ElementsAre("1|/bin/bash|*"));
    EXPECT_EQ(hash_of("root"), "*");
}

TEST_F(Passwords, AdminAndRootGetOneHash)
{
    admin.Password = "secret";
    take_statements();
    ASSERT_EQ(set_admin(), 0u) << err.message;
    const auto statements = take_statements();
    ASSERT_GE(statements.size(), 3u);
    EXPECT_EQ(statements.end()[-3], "UPDATE `$user` SET passwd='" + hash_of("admin") + "' WHERE uname='admin'");
    EXPECT_EQ(statements.end()[-2], "UPDATE `$user` SET passwd='" + hash_of("admin") + "' WHERE uname='root'");
    EXPECT_TRUE(opens("secret", hash_of("admin"))) << hash_of("admin");
    EXPECT_EQ(hash_of("root"), hash_of("admin"));
    EXPECT_EQ(hash_of("anna"), "$1$old");
    const std::string first = hash_of("admin");
    ASSERT_EQ(set_admin(), 0u) << err.message;
    EXPECT_NE(hash_of("admin"), first);
    EXPECT_EQ(hash_of("root"), hash_of("admin"));
}

TEST_F(Passwords, AdminKeepsThePasswordThatIsNotGiven)
{
    give("admin", "$1$saltsalt$", "secret");
    const std::string before = hash_of("admin");
    for (const char *password : {static_cast<const char *>(nullptr), ""}) {
        admin.Password = password;
        ASSERT_EQ(set_admin(), 0u) << err.message;
        EXPECT_EQ(hash_of("admin"), before);
        EXPECT_EQ(hash_of("root"), "*");
    }
}

TEST_F(Passwords, AdminMaskIsAPasswordLikeAnyOther)
{
    admin.Password = masked_password;
    ASSERT_EQ(set_admin(), 0u) << err.message;
    EXPECT_TRUE(opens(masked_password, hash_of("admin")));
}

TEST_F(Passwords, AdminRecoveryTextsChangeTogetherOrNotAtAll)
{
    struct {
        const char *question, *answer, *email, *method;
        std::string stored;
    } const cases[] = {
        {nullptr, "b", "c", nullptr, "q|a|e|0|m"}, {"a", nullptr, "c", nullptr, "q|a|e|0|m"},
        {"a", "b", nullptr, nullptr, "q|a|e|0|m"}, {nullptr, nullptr, nullptr, "n", "q|a|e|0|n"},
        {"a", "b", "c", nullptr, "a|b|c|0|m"},     {"", "", "", "", "|||0|"},
    };
    for (const auto &each : cases) {
        SCOPED_TRACE(each.stored);
        sql("UPDATE passwordrecovery SET question='q',answer='a',email='e',enabled=1,method='m'");
        admin = {nullptr, each.question, each.answer, each.email, 0, each.method, 0, 0};
        ASSERT_EQ(set_admin(), 0u) << err.message;
        EXPECT_THAT(rows("SELECT * FROM passwordrecovery"), ElementsAre(each.stored));
    }
}

TEST_F(Passwords, AdminShellFollowsAccessAndKeys)
{
    struct {
        int32_t access;
        bool rsync;
        std::string shell;
    } const cases[] = {{1, false, "/bin/bash"},
                       {0, false, "/bin/false"},
                       {0, true, "/glassdeck/bin/validate-rsync"},
                       {1, true, "/bin/bash"},
                       {2, true, "/bin/false"}};
    for (const auto &each : cases) {
        sql("DELETE FROM ssh_public_key");
        if (each.rsync) sql("INSERT INTO ssh_public_key(user_id,serve_for,key) VALUES(98,'rsync','k')");
        admin.ShellAccess = each.access;
        ASSERT_EQ(set_admin(), 0u) << err.message;
        EXPECT_EQ(value("SELECT shell FROM `$user` WHERE id=98"), each.shell);
        EXPECT_EQ(value("SELECT shell_access FROM `$user` WHERE id=98"), std::to_string(each.access));
    }
}

TEST_F(Passwords, AdminPasswordThatCannotBeHashedChangesNothing)
{
    admin = {kTooLong.c_str(), "Pet?", "Rex", "a@x.com", 1, "email", 0, 1};
    expect_failure(8, "Invalid Password.", [&] { return set_admin(); });
}

TEST_F(Passwords, NoClearTextIsInStatementsOrLogs)
{
    give("anna", "$1$saltsalt$", "sesame-old");
    admin.Password = "sesame-admin";
    user = {nullptr, 101, "sesame-old"};
    mine = {nullptr, "anna", "sesame-old", "sesame-new"};
    qbdb->log_level = 4;
    take_statements();
    ASSERT_EQ(set_admin(), 0u);
    ASSERT_EQ(set_user(), 0u);
    ASSERT_EQ(set_mine(), 0u);
    mine.OldPassword = "sesame-wrong";
    ASSERT_EQ(set_mine(), 8u);
    user.Password = kTooLong.c_str();
    ASSERT_EQ(set_user(), 8u);
    EXPECT_THAT(take_statements(), Each(Not(HasSubstr("sesame"))));
    for (const test::LogLine &line : log) {
        EXPECT_THAT(line.text, Not(HasSubstr("sesame")));
        EXPECT_THAT(line.text, Not(HasSubstr(kTooLong)));
    }
}

// ---- Another user

TEST_F(Passwords, UserGetsAHash)
{
    user = {nullptr, 101, "it's"};
    ASSERT_EQ(set_user(), 0u) << err.message;
    EXPECT_TRUE(opens("it's", hash_of("anna"))) << hash_of("anna");
    EXPECT_EQ(hash_of("admin"), "*");
}

TEST_F(Passwords, UserWithEmptyPasswordHasNone)
{
    user = {nullptr, 101, ""};
    ASSERT_EQ(set_user(), 0u) << err.message;
    EXPECT_EQ(hash_of("anna"), "");
}

TEST_F(Passwords, UserThatIsUnknownChangesNothing)
{
    const std::string before = content();
    user = {nullptr, 999, "secret"};
    EXPECT_EQ(set_user(), 0u) << err.message;
    EXPECT_EQ(content(), before);
}

TEST_F(Passwords, UserChainIsNotFollowed)
{
    UserPassword second{nullptr, 101, "second"};
    user = {&second, 98, "first"};
    ASSERT_EQ(set_user(), 0u) << err.message;
    EXPECT_TRUE(opens("first", hash_of("admin")));
    EXPECT_EQ(hash_of("root"), "*");
    EXPECT_EQ(hash_of("anna"), "$1$old");
}

TEST_F(Passwords, UserFailures)
{
    user = {nullptr, 101, nullptr};
    expect_failure(8, "Invalid Password. There is none.", [&] { return set_user(); });
    user.Password = kTooLong.c_str();
    expect_failure(8, "Invalid Password. It cannot be hashed.", [&] { return set_user(); });
}

// ---- One's own

TEST_F(Passwords, MineChangesAfterTheOldOneWasRight)
{
    give("anna", "$1$saltsalt$", "old");
    mine = {nullptr, "anna", "old", "new"};
    take_statements();
    ASSERT_EQ(set_mine(), 0u) << err.message;
    EXPECT_TRUE(opens("new", hash_of("anna"))) << hash_of("anna");
    EXPECT_THAT(take_statements(),
                ElementsAre("BEGIN IMMEDIATE", "SELECT id FROM `$user` WHERE uname='anna' AND rid IS NULL",
                            "SELECT U.passwd FROM `$user` U WHERE id=101",
                            "UPDATE `$user` SET passwd='" + hash_of("anna") + "' WHERE id=101", "COMMIT"));
    expect_failure(8, "Bad Credential.", [&] { return set_mine(); });
}

TEST_F(Passwords, MineKeepsTheHashWhenTheOldOneWasWrong)
{
    give("anna", "$1$saltsalt$", "old");
    mine = {nullptr, "anna", "Old", "new"};
    expect_failure(8, "Bad Credential.", [&] { return set_mine(); });
    EXPECT_TRUE(opens("old", hash_of("anna")));
}

TEST_F(Passwords, MineCannotChangeFromNoneOrALockedOne)
{
    for (const char *stored : {"NULL", "''", "'*'", "'!'", "'!$1$saltsalt$.GThbMJhJRcgNgF0ZJuJz1'", "'secret'"}) {
        SCOPED_TRACE(stored);
        sql(std::string("UPDATE `$user` SET passwd=") + stored + " WHERE id=101");
        mine = {nullptr, "anna", "secret", "new"};
        expect_failure(8, "Bad Credential.", [&] { return set_mine(); });
    }
}

TEST_F(Passwords, MineNeedsAllThreeTexts)
{
    struct {
        const char *name, *old_password, *new_password;
    } const cases[] = {{nullptr, "old", "new"}, {"", "old", "new"},       {"anna", nullptr, "new"},
                       {"anna", "", "new"},     {"anna", "old", nullptr}, {"anna", "old", ""}};
    give("anna", "$1$saltsalt$", "old");
    for (const auto &each : cases) {
        mine = {nullptr, each.name, each.old_password, each.new_password};
        expect_failure(8, "My password cannot be empty.", [&] { return set_mine(); });
    }
}

TEST_F(Passwords, MineChecksTheNewOneBeforeTheName)
{
    mine = {nullptr, "nobody-at-all", "old", kTooLong.c_str()};
    expect_failure(8, "Invalid NewPassword.", [&] { return set_mine(); });
    mine.NewPassword = "new";
    expect_failure(8, "Invalid UserName.", [&] { return set_mine(); });
}

TEST_F(Passwords, MineIsForLocalUsers)
{
    give("anna", "$1$saltsalt$", "old");
    sql("UPDATE `$user` SET rid=500 WHERE id=101");
    mine = {nullptr, "anna", "old", "new"};
    expect_failure(8, "Invalid UserName.", [&] { return set_mine(); });
}

TEST_F(Passwords, MissingRecordsAbort)
{
    EXPECT_DEATH(qbobj_getAdminPassword(qbdb, db, nullptr, &err), "Assertion `admin' failed");
    EXPECT_DEATH(qbobj_setAdminPassword(qbdb, db, nullptr, &err), "Assertion `admin' failed");
    EXPECT_DEATH(qbobj_setUserPassword(qbdb, db, nullptr, &err), "Assertion `pw' failed");
    EXPECT_DEATH(qbobj_setMyPassword(qbdb, db, nullptr, &err), "Assertion `pw' failed");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
