// Every allocation of every operation on groups fails once: nobody may miss it.
#include "fixture/allocations.h"
#include "groups.h"

using test::expect_each_allocation_noticed;

namespace {

struct GroupAllocations : test::GroupDatabase {
    GroupAllocations()
    {
        sql("INSERT INTO `$group_has_user`(user_id,group_id) VALUES(101,100),(102,100);"
            "INSERT INTO group_quota(group_id,share_id,mb_soft,mb_hard) VALUES(100,1,800,10);"
            "INSERT INTO user_quota(user_id,share_id,mb_soft,mb_hard) VALUES(101,2,0,30)");
    }
};

TEST_F(GroupAllocations, List)
{
    GroupCollection groups{};
    expect_each_allocation_noticed(
        err,
        [&] {
            groups = {};
            return qbobj_getGroupCollection(qbdb, db, &groups, nullptr, &err);
        },
        2, "Failed to allocate resource.");
    EXPECT_EQ(test::elements(groups.Group).size(), 2u);
}

TEST_F(GroupAllocations, SystemGroup)
{
    SystemGroup group{};
    group.GroupId = 98;
    expect_each_allocation_noticed(
        err, [&] { return qbobj_getSystemGroup(qbdb, db, &group, &err); }, 2, "Failed to allocate resource.");
}

TEST_F(GroupAllocations, Name)
{
    const char *name = nullptr;
    for (const int32_t id : {98, 31000})
        expect_each_allocation_noticed(
            err, [&] { return qbobj_getGroupName(qbdb, db, id, &name, &err); }, test::kNothing, "NULL");
}

TEST_F(GroupAllocations, Renaming)
{
    Group group = test::group_of(100, "crew");
    const std::string before = content();
    expect_each_allocation_noticed(
        err,
        [&] {
            EXPECT_EQ(content(), before);
            return qbobj_modifyGroup(qbdb, db, &group, &err);
        },
        5, nullptr);
    Group users = test::group_of(99, "crew");
    test::fail_allocation(1);
    EXPECT_EQ(qbobj_modifyGroup(qbdb, db, &users, &err), 803u) << "looking up the name's holder takes no memory";
    test::fail_allocation(0);
}

TEST_F(GroupAllocations, Removing)
{
    Group group = test::group_of(100);
    const std::string before = content();
    expect_each_allocation_noticed(
        err,
        [&] {
            EXPECT_EQ(content(), before);
            return qbobj_deleteGroup(qbdb, db, &group, &err);
        },
        5, nullptr);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
