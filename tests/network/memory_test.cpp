// Reading network interfaces without memory: the n-th allocation in a pool fails, for every n.
#include <apr_pools.h>
#include <apr_strings.h>
#include <dlfcn.h>

#include "fixture/fixture.h"

namespace {

int left_to_fail = 0;  // the allocation that fails, counted from 1; 0 for none

bool fails_now()
{
    return left_to_fail && --left_to_fail == 0;
}

template <class Function>
Function real(const char *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// These stand before those of the pool library.
extern "C" void *apr_palloc(apr_pool_t *pool, apr_size_t size)
{
    static const auto allocate = real<decltype(&apr_palloc)>("apr_palloc");
    return fails_now() ? nullptr : allocate(pool, size);
}
extern "C" char *apr_pstrdup(apr_pool_t *pool, const char *text)
{
    static const auto duplicate = real<decltype(&apr_pstrdup)>("apr_pstrdup");
    return fails_now() ? nullptr : duplicate(pool, text);
}

namespace {

struct NetworkMemory : test::Database {
    void SetUp() override
    {
        sql("INSERT INTO network_if VALUES ('eth0','0:1:2:3:4:5','dhcp','1.2.3.4','1.2.3.5','1.2.3.6','1.2.3.7','/8'),"
            "('eth1','0:1:2:3:4:6',NULL,NULL,NULL,NULL,NULL,NULL)");
    }

    /// Lets the 1st, 2nd, … allocation fail until the call gets by without it. How many failed.
    template <class Call, class Untouched>
    int fail_each(Call call, Untouched untouched)
    {
        for (int nth = 1; nth < 100; nth++) {
            left_to_fail = nth;
            const uint32_t rc = call();
            const bool reached = left_to_fail == 0;
            left_to_fail = 0;
            if (!reached) {
                EXPECT_EQ(rc, 0u);
                return nth - 1;
            }
            EXPECT_EQ(rc, 2u) << "allocation " << nth;
            EXPECT_EQ(err.code, 2u);
            EXPECT_STREQ(err.message, "Failed to allocate resource.");
            untouched();
        }
        return 100;
    }
};

TEST_F(NetworkMemory, IsMissedWhileOneIsRead)
{
    NetworkInterface nif{};
    const int failed = fail_each(
        [&] {
            nif = {};
            nif.Name = "eth0";
            return qbobj_getNetworkInterface(qbdb, db, &nif, &err);
        },
        [&] {
            EXPECT_EQ(nif.key, nullptr);
            EXPECT_EQ(nif.Mac, nullptr);
        });
    EXPECT_EQ(failed, 8) << "one for each field";
    EXPECT_STREQ(nif.Subnet, "/8");
}

TEST_F(NetworkMemory, IsMissedWhileTheListIsRead)
{
    NetworkInterfaceCollection all{};
    const int failed = fail_each(
        [&] {
            all = {};
            return qbobj_getNetworkInterfaceCollection(qbdb, db, &all, &err);
        },
        [&] { EXPECT_EQ(all.NetworkInterface, nullptr); });
    EXPECT_EQ(failed, 1 + 8 + 1 + 2) << "one for each element and each field with a value";
    EXPECT_EQ(test::elements(all.NetworkInterface).size(), 2u);
}

}  // namespace
