// How the user list grows. Prints figures and is not part of the ordinary run:
//     test_users --gtest_also_run_disabled_tests --gtest_filter='*Growth*'
#include <chrono>
#include <cstdio>

#include "fixture/allocations.h"
#include "users/users.h"

using namespace test;

namespace {

struct Growth : Users {
    static double milliseconds(const std::chrono::steady_clock::time_point &since)
    {
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - since).count();
    }
};

TEST_F(Growth, DISABLED_List)
{
    qbdb_set_statement_hook(qbdb, nullptr, nullptr);
    int32_t made = 0;
    for (const int32_t count : {1000, 10000, 32000}) {
        const std::string fresh = " FROM n WHERE i>=" + std::to_string(made);
        const std::string numbers =
            "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i+1 FROM n WHERE i<" + std::to_string(count - 1) + ") ";
        sql("BEGIN;" + numbers +
            "INSERT INTO `$user` (id,uname,passwd,email,home,group_id,shell,is_privileged,is_locked,shell_access,"
            "fullname) SELECT 100+i,printf('user%05d',i),'$1$abcdefgh$0123456789012345678901','u'||i||'@example.com',"
            "'/home/user'||i,99,'/bin/false',0,0,0,'User Number '||i" +
            fresh + ";" + numbers + "INSERT INTO `$home_folder` SELECT 100+i,1,0,'',0" + fresh + ";COMMIT");
        made = count;

        for (const int32_t limit : {0, 50}) {
            AccountQuery query{};
            query.limit = limit;
            query.offset = limit ? count / 2 : 0;
            list(&query);  // statements are prepared, pages are cached
            double best = 1e9;
            size_t bytes = 0;
            for (int run = 0; run < 3; run++) {
                qbdb_request_begin(qbdb);
                const auto since = std::chrono::steady_clock::now();
                users = {};
                const size_t before = pool_bytes;
                ASSERT_EQ(qbobj_getUserCollection(qbdb, db, &users, &query, 0, &err), 0u);
                best = std::min(best, milliseconds(since));
                bytes = pool_bytes - before;
            }
            const size_t rows = elements(users.User).size();
            ASSERT_EQ(rows, limit ? 50u : static_cast<size_t>(count));
            printf("%6d users, %6zu listed: %8.2f ms, %6.2f us a user, %4zu bytes of the pool a user\n", count, rows,
                   best, best * 1000 / static_cast<double>(rows), bytes / rows);
            qbdb_request_end(qbdb);
        }
    }
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
