#include "accounts/login_shell.h"
#include "fixture/fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Shell : test::Database {
    qb::CallContext ctx{qbdb, &err};
    Shell() { sql("INSERT INTO `$user`(id,uname,shell_access,shell) VALUES(100,'anna',0,'old'),(99,'low',1,'old')"); }
    void key(int32_t user, const std::string &serve_for)
    {
        sql("INSERT INTO ssh_public_key(user_id,serve_for,key) VALUES(" + std::to_string(user) + ",'" + serve_for +
            "','k')");
    }
    std::string shell(int32_t user) { return value("SELECT shell FROM `$user` WHERE id=" + std::to_string(user)); }
};

TEST_F(Shell, FollowsOneRule)
{
    struct {
        int32_t access;
        const char *key;
        const char *shell;
    } const cases[] = {
        {0, nullptr, "/bin/false"}, {0, "login", "/bin/false"}, {0, "rsync", "/glassdeck/bin/validate-rsync"},
        {0, "RSYNC", "/bin/false"}, {1, nullptr, "/bin/bash"},  {1, "rsync", "/bin/bash"},
        {2, nullptr, "/bin/false"}, {2, "rsync", "/bin/false"}, {-1, "rsync", "/bin/false"},
    };
    for (const auto &each : cases) {
        SCOPED_TRACE(std::to_string(each.access) + (each.key ? each.key : ""));
        sql("DELETE FROM ssh_public_key; UPDATE `$user` SET shell_access=" + std::to_string(each.access) +
            " WHERE id=100");
        if (each.key) key(100, each.key);
        const char *shell_text = nullptr;
        EXPECT_FALSE(qb::find_login_shell(&ctx, db, 100, each.access, shell_text));
        EXPECT_STREQ(shell_text, each.shell);
        EXPECT_FALSE(qb::refresh_shell(&ctx, db, 100));
        EXPECT_EQ(shell(100), each.shell);
    }
}

TEST_F(Shell, AsksForTheUsersOwnKeys)
{
    key(101, "rsync");
    key(0, "rsync");
    EXPECT_FALSE(qb::refresh_shell(&ctx, db, 100));
    EXPECT_EQ(shell(100), "/bin/false");
}

TEST_F(Shell, IsRefreshedByTheseStatements)
{
    key(100, "rsync");
    take_statements();
    EXPECT_FALSE(qb::refresh_shell(&ctx, db, 100));
    EXPECT_THAT(take_statements(),
                ElementsAre("SELECT shell_access FROM '$user' WHERE id=100",
                            "SELECT COUNT(*) FROM ssh_public_key WHERE user_id=100 AND serve_for='rsync'",
                            "UPDATE '$user' SET shell='/glassdeck/bin/validate-rsync' WHERE id=100"));
    EXPECT_EQ(shell(99), "old");
}

TEST_F(Shell, IsNotRefreshedForSystemAccountsButTheAdministrator)
{
    const std::string before = content();
    take_statements();
    for (const int32_t id : {99, 97, 96, 1, 0, -1, -2147483647}) EXPECT_TRUE(qb::refresh_shell(&ctx, db, id)) << id;
    EXPECT_THAT(take_statements(), IsEmpty());
    EXPECT_EQ(content(), before);
    sql("UPDATE `$user` SET shell_access=1 WHERE id=98");
    EXPECT_FALSE(qb::refresh_shell(&ctx, db, 98));
    EXPECT_EQ(shell(98), "/bin/bash");
}

TEST_F(Shell, OfNobodyIsNoFailure)
{
    const std::string before = content();
    EXPECT_FALSE(qb::refresh_shell(&ctx, db, 4711));
    EXPECT_EQ(content(), before);
}

TEST_F(Shell, FailsWithEachOfItsStatements)
{
    const std::string before = content();
    for (int nth = 1; nth <= 3; nth++) {
        fail_statement(nth);
        EXPECT_TRUE(qb::refresh_shell(&ctx, db, 100)) << nth;
        EXPECT_EQ(content(), before) << nth;
    }
    fail_statement(4);
    EXPECT_FALSE(qb::refresh_shell(&ctx, db, 100));
    fail_statement(1);
    const char *shell_text = nullptr;
    EXPECT_STREQ(qb::find_login_shell(&ctx, db, 100, 1, shell_text).text, "injected");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
