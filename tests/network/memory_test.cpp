// Reading network interfaces without memory: the n-th allocation in a pool fails, for every n.
#include "fixture/allocations.h"

namespace {

struct NetworkMemory : test::Database {
    int calls = 0;

    void SetUp() override
    {
        sql("INSERT INTO network_if VALUES ('eth0','0:1:2:3:4:5','dhcp','1.2.3.4','1.2.3.5','1.2.3.6','1.2.3.7','/8'),"
            "('eth1','0:1:2:3:4:6',NULL,NULL,NULL,NULL,NULL,NULL)");
    }
};

constexpr char kMessage[] = "Failed to allocate resource.";

TEST_F(NetworkMemory, IsMissedWhileOneIsRead)
{
    NetworkInterface nif{};
    const auto read = [&] {
        calls++;
        nif = {};
        nif.Name = "eth0";
        const uint32_t rc = qbobj_getNetworkInterface(qbdb, db, &nif, &err);
        EXPECT_EQ(nif.key == nullptr, rc != 0);
        EXPECT_EQ(nif.Mac == nullptr, rc != 0);
        return rc;
    };
    test::expect_each_allocation_noticed(err, read, 2, kMessage);
    EXPECT_EQ(calls, 8 + 1) << "one for each field, then one that succeeds";
    EXPECT_STREQ(nif.Subnet, "/8");
}

TEST_F(NetworkMemory, IsMissedWhileTheListIsRead)
{
    NetworkInterfaceCollection all{};
    const auto read = [&] {
        calls++;
        all = {};
        const uint32_t rc = qbobj_getNetworkInterfaceCollection(qbdb, db, &all, &err);
        EXPECT_EQ(test::elements(all.NetworkInterface).size(), rc ? 0u : 2u);
        return rc;
    };
    test::expect_each_allocation_noticed(err, read, 2, kMessage);
    EXPECT_EQ(calls, 1 + 8 + 1 + 2 + 1) << "one for each element and each field with a value, then one that succeeds";
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
