#include "user_changes/changes.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct DeleteUser : test::Changes {
    DeleteUser()
    {
        for (const char *name : {"anna", "bob"}) {
            const std::string id = *name == 'a' ? "200" : "201";
            put(std::stoi(id), name);
            sql("INSERT INTO user_quota VALUES(" + id +
                ",1,1,1);"
                "INSERT INTO user_acl VALUES(1," +
                id +
                ",'cifs',1,1);"
                "INSERT INTO _user_quota_stat VALUES(1," +
                id +
                ",1);"
                "INSERT INTO `$home_folder` VALUES(" +
                id +
                ",1,1,'',1);"
                "INSERT INTO `$timemachine_quota` VALUES(" +
                id +
                ",1,1);"
                "INSERT INTO `$group_has_user`(user_id,group_id) VALUES(" +
                id +
                ",500);"
                "INSERT INTO `$home_folder_snapshot`(user_name,home_dir,name) VALUES('" +
                name +
                "','/h','s');"
                "INSERT INTO ssh_public_key(user_id,serve_for,key) VALUES(" +
                id +
                ",'rsync','k');"
                "INSERT INTO smb_username_map(unix_uname,smb_uname,type) VALUES('" +
                name + "','" + name + "1','uname'),('" + name + "','" + name + "2','other')");
        }
        sql("INSERT INTO group_acl(share_id,group_id,proto,read,write) VALUES(1,500,'cifs',1,1)");
    }
    static User with_id(int32_t id)
    {
        User user{};
        user.resource_id = id;
        return user;
    }
    static User named(const char *name)
    {
        User user{};
        user.UserName = name;
        return user;
    }
    uint32_t remove(User *user) { return qbobj_deleteUser(qbdb, db, user, &err); }
    uint32_t remove_by_name(User *user) { return qbobj_deleteUserByName(qbdb, db, user, &err); }

    void expect_anna_is_gone()
    {
        for (const char *table : {"user_quota", "user_acl", "_user_quota_stat", "`$home_folder`",
                                  "`$timemachine_quota`", "`$group_has_user`", "ssh_public_key"})
            EXPECT_THAT(rows(std::string("SELECT user_id FROM ") + table), ElementsAre("201")) << table;
        EXPECT_THAT(rows("SELECT user_name FROM `$home_folder_snapshot`"), ElementsAre("bob"));
        EXPECT_THAT(rows("SELECT smb_uname FROM smb_username_map"), ElementsAre("bob1", "bob2"));
        EXPECT_EQ(value("SELECT COUNT(*) FROM group_acl"), "1");
        EXPECT_EQ(user("anna", "id,passwd,home,is_privileged"), "200|$1$salt$hash|/tank/home/anna|-1");
        EXPECT_EQ(user("bob", "is_privileged"), "0");
    }
};

TEST_F(DeleteUser, ById)
{
    User given = with_id(200);
    ASSERT_EQ(remove(&given), 0u) << err.message;
    expect_anna_is_gone();
    EXPECT_STREQ(given.UserName, "anna");
    EXPECT_STREQ(given.HomeDirectory, "/tank/home/anna");
}

TEST_F(DeleteUser, ByTheUserIdWhenThereIsNoResourceId)
{
    User given = with_id(-1);
    given.UserId = 200;
    ASSERT_EQ(remove(&given), 0u) << err.message;
    expect_anna_is_gone();
}

TEST_F(DeleteUser, ByName)
{
    User given = named("anna");
    given.resource_id = 201;  // not looked at
    ASSERT_EQ(remove_by_name(&given), 0u) << err.message;
    expect_anna_is_gone();
    EXPECT_STREQ(given.UserName, "anna");
    EXPECT_STREQ(given.HomeDirectory, "/tank/home/anna");
}

TEST_F(DeleteUser, ARemovedUserKeepsNameAndId)
{
    User given = with_id(200);
    ASSERT_EQ(remove(&given), 0u) << err.message;
    User again = named("anna");
    expect_failure(801, "User (anna) already exists.", [&] { return qbobj_addUser(qbdb, db, &again, &err); });
    again.UserName = "anna2";
    again.UserId = 200;
    expect_failure(802, "UserId (200) already exists.", [&] { return qbobj_addUser(qbdb, db, &again, &err); });
    EXPECT_EQ(remove(&given), 0u) << "removing once more changes nothing";
    EXPECT_EQ(remove_by_name(&given), 0u);
    expect_anna_is_gone();
}

TEST_F(DeleteUser, ADomainUserById)
{
    put_domain_user(300, "dora");
    User given = with_id(300);
    ASSERT_EQ(remove(&given), 0u) << err.message;
    EXPECT_EQ(user("dora", "is_privileged"), "-1");
}

TEST_F(DeleteUser, ANullChainRemovesNobody)
{
    const std::string before = content();
    EXPECT_EQ(remove(nullptr), 0u);
    EXPECT_EQ(remove_by_name(nullptr), 0u);
    EXPECT_EQ(content(), before);
}

TEST_F(DeleteUser, RefusesUnknownAndProtectedUsers)
{
    put_domain_user(300, "dora");
    struct {
        const char *message;
        User given;
    } cases[] = {
        {"Invalid resource_id (0)", with_id(0)},
        {"Invalid resource_id (-3)", with_id(0)},
        {"Invalid resource_id (12345). Not exist.", with_id(12345)},
    };
    cases[1].given.UserId = -3;
    for (auto &row : cases) {
        expect_failure(8, row.message, [&] { return remove(&row.given); });
        EXPECT_EQ(row.given.UserName, nullptr);
    }
    for (const char *name : {"nosuch", "", "dora", "ANNA", static_cast<const char *>(nullptr)}) {
        User given = named(name);
        expect_failure(8, "Invalid resource_id (0). Not exist.", [&] { return remove_by_name(&given); });
        EXPECT_EQ(given.HomeDirectory, nullptr);
    }
    for (const char *name : {"admin", "root", "guest"}) {
        User given = named(name);
        expect_failure(8, std::string("Cannot delete user (user_name=") + name + ")",
                       [&] { return remove_by_name(&given); });
    }
}

TEST_F(DeleteUser, AProtectedIdIsLoggedWithALineFeed)
{
    const std::string before = content();
    User given = with_id(98);
    log.clear();
    EXPECT_EQ(remove(&given), 8u);
    EXPECT_EQ(err.code, 8u);
    EXPECT_STREQ(err.message, "Cannot delete user (user_id=98)");
    EXPECT_STREQ(err.file, "qbobj_api2_delete_user.cpp");
    EXPECT_THAT(logged(2), ElementsAre("Cannot delete user (user_id=98)\n"));
    EXPECT_EQ(content(), before);
}

TEST_F(DeleteUser, ARowThatVanishesIsReported)
{
    // Only another writer inside the same transaction could do this; a trigger stands in for it.
    sql("CREATE TRIGGER vanish AFTER DELETE ON `$home_folder_snapshot` BEGIN DELETE FROM `$user` WHERE id=200; END");
    User given = with_id(200);
    expect_failure(6, "None of row is deleted. May be bad resource_id=200'", [&] { return remove(&given); });
}

TEST_F(DeleteUser, AChainIsRemovedWholeOrNotAtAll)
{
    expect_whole_or_nothing<User>(
        8, "Invalid resource_id (12345). Not exist.", [](int i) { return with_id(200 + i % 2); },
        [] { return with_id(12345); }, [this](User *chain) { return remove(chain); });
    expect_whole_or_nothing<User>(
        8, "Cannot delete user (user_name=admin)", [](int i) { return named(i % 2 ? "anna" : "bob"); },
        [] { return named("admin"); }, [this](User *chain) { return remove_by_name(chain); });
    User chain[2] = {with_id(200), with_id(201)};
    chain[0].next = &chain[1];
    ASSERT_EQ(remove(chain), 0u) << err.message;
    EXPECT_THAT(rows("SELECT * FROM user_quota"), IsEmpty());
    EXPECT_STREQ(chain[1].UserName, "bob");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
