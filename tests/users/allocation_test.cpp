// Every allocation of every operation fails once: nobody may miss it.
#include "fixture/allocations.h"
#include "users/users.h"

using namespace test;

namespace {

struct Allocations : Users {
    int32_t allocated = 0;

    Allocations()
    {
        sql("INSERT INTO share (id,name,zfs_name) VALUES(1,'media','tank/media')");
        for (const char *name : {"anna", "bob"}) {
            const int32_t id = name[0] == 'a' ? 100 : 101;
            const std::string number = std::to_string(id);
            add_user(id, name, "99",
                     "fullname='Full',email='a@example.com',home='/home',passwd='$1$hash',is_locked=1,shell_access=1");
            sql("INSERT INTO `$home_folder` VALUES(" + number + ",1,5,'snap',1);" +
                "INSERT INTO `$timemachine_quota` VALUES(" + number + ",1,7);" +
                "INSERT INTO user_quota (user_id,share_id,mb_hard) VALUES(" + number + ",1,9)");
        }
        add_user(200, "cloud", "98");
    }

    template <class Call>
    void expect_each_noticed(Call call, uint32_t code, const char *message)
    {
        expect_each_allocation_noticed(err, call, code, message);
    }
};

constexpr char kMessage[] = "Failed to allocate resource.";

TEST_F(Allocations, List)
{
    for (const int32_t with_password : {0, 1})
        expect_each_noticed(
            [&] {
                users = {};
                return qbobj_getUserCollection(qbdb, db, &users, nullptr, with_password, &err);
            },
            2, kMessage);
    EXPECT_THAT(names(), ElementsAre("anna", "bob"));
}

TEST_F(Allocations, OneUser)
{
    expect_each_noticed(
        [&] {
            user = {};
            user.resource_id = 100;
            return qbobj_getUser(qbdb, db, &user, &err);
        },
        2, kMessage);
}

TEST_F(Allocations, Names)
{
    expect_each_noticed([&] { return qbobj_getCloudUser(qbdb, db, &users, &err); }, 2, kMessage);
    expect_each_noticed([&] { return qbobj_getUserInGroupName(qbdb, db, "users", 0, &users, &err); }, 2, kMessage);
    const char *name = nullptr;
    for (const int32_t id : {98, 555})
        expect_each_noticed([&] { return qbobj_getUserName(qbdb, db, id, &name, &err); }, 0xFFFFFFFF, "NULL");
    SystemUser account{};
    account.UserId = 98;
    expect_each_noticed([&] { return qbobj_getSystemUser(qbdb, db, &account, &err); }, 5,
                        "Failed DB Query for 'SELECT FROM user'. out of memory");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
