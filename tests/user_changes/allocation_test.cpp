// Every allocation of every operation fails once: nobody may miss it, and nothing changes.
#include "fixture/allocations.h"
#include "user_changes/changes.h"
#include "user_changes/list_file.h"

namespace {

struct Allocations : test::Changes {
    /// Lets the n-th allocation fail, for each n, until a call needs no more than n.
    void expect_each_noticed(int least, const std::function<uint32_t()> &call)
    {
        for (int n = 1; n < 300; n++) {
            SCOPED_TRACE("allocation " + std::to_string(n));
            const std::string before = content();
            test::fail_allocation(n);
            const uint32_t rc = call();
            const bool failed = test::allocation_failed();
            test::fail_allocation(0);
            if (!failed) {
                EXPECT_EQ(rc, 0u) << err.message;
                EXPECT_GT(n, least);
                return;
            }
            EXPECT_THAT(rc, testing::AnyOf(2u, 5u, 8u));
            EXPECT_EQ(err.code, rc);
            EXPECT_TRUE(err.message && *err.message);
            ASSERT_EQ(content(), before);
        }
        ADD_FAILURE() << "does not come to an end";
    }
};

TEST_F(Allocations, Creating)
{
    User anna{};
    expect_each_noticed(3, [&] {
        anna = {};
        anna.UserName = "a@x.com";
        anna.GroupName = "sky-loft";
        anna.P2PUserName = "alias";
        anna.Password = "secret";
        anna.HomeVolumeId = "tank";
        return qbobj_addUser(qbdb, db, &anna, &err);
    });
}

TEST_F(Allocations, Importing)
{
    User anna{};
    expect_each_noticed(1, [&] {
        anna = {};
        anna.UserName = "anna";
        anna.GroupName = "staff";
        anna.Password = "";
        return qbobj_addUserList(qbdb, db, &anna, &err);
    });
}

TEST_F(Allocations, CheckingAList)
{
    test::ListFile file;
    std::string text = "anna\tstaff\t\tsecret\n\nbob\tcrew\t\t\n";
    for (int i = 0; i < 80; i++) text += "user" + std::to_string(i) + "\tstaff\t\t\n";  // the set of names grows
    file.write(text);
    UserCollection users{};
    GroupCollection groups{};
    User known{};
    known.UserName = "known";
    UserCollection existing{};
    existing.User = &known;
    expect_each_noticed(160, [&] {
        users = {};
        groups = {};
        const uint32_t rc = qbobj_checkUserList(qbdb, db, &users, &groups, &existing, nullptr, &err);
        if (rc) {
            EXPECT_EQ(users.User, nullptr);
            EXPECT_EQ(groups.Group, nullptr);
        }
        return rc;
    });
    EXPECT_EQ(test::elements(users.User).size(), 82u);
}

TEST_F(Allocations, Changing)
{
    put(200, "a@x.com", 97);
    expect_each_noticed(5, [&] {
        User given{};
        given.resource_id = 200;
        given.UserName = "b@x.com";
        given.GroupName = "admin";
        given.Password = "secret";
        given.P2PUserName = "alias";
        return qbobj_modifyUser(qbdb, db, &given, &err);
    });
}

TEST_F(Allocations, Removing)
{
    put(200, "anna");
    put(201, "bob");
    expect_each_noticed(1, [&] {
        User given{};
        given.resource_id = 200;
        return qbobj_deleteUser(qbdb, db, &given, &err);
    });
    expect_each_noticed(2, [&] {
        User given{};
        given.UserName = "bob";
        return qbobj_deleteUserByName(qbdb, db, &given, &err);
    });
}

TEST_F(Allocations, TheNameMap)
{
    sql("INSERT INTO smb_username_map(unix_uname,smb_uname,type) VALUES('anna','a','uname'),(NULL,NULL,NULL)");
    SmbUserNameMapCollection maps{};
    expect_each_noticed(4, [&] {
        maps = {};
        const uint32_t rc = qbobj_getSmbUserNameMapCollection(qbdb, db, &maps, &err);
        EXPECT_EQ(maps.SmbUserNameMap == nullptr, rc != 0);
        return rc;
    });
    EXPECT_EQ(test::elements(maps.SmbUserNameMap).size(), 2u);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
