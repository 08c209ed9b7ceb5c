// What a user costs must not depend on how many there are.
#include <cstdio>
#include <ctime>

#include "user_changes/changes.h"
#include "user_changes/list_file.h"

using test::elements;
using testing::Each;
using testing::Not;
using testing::StartsWith;

namespace {

/// Processor time of this program: what others do on the machine does not count.
double milliseconds_since(clock_t start)
{
    return 1000.0 * static_cast<double>(clock() - start) / CLOCKS_PER_SEC;
}

struct Growth : test::Changes {
    test::ListFile file;
    UserCollection users{};
    GroupCollection groups{};
    int64_t steps = 0;  // of SQLite's virtual machine, in tens

    Growth()
    {
        log.reserve(1000);
        qbdb->log_level = 1;
        qbdb_set_statement_hook(qbdb, nullptr, nullptr);
    }

    void count_steps(bool on)
    {
        steps = 0;
        sqlite3_progress_handler(
            db, on ? 10 : 0,
            [](void *self) {
                static_cast<Growth *>(self)->steps++;
                return 0;
            },
            this);
    }
    static std::string list_of(int count)
    {
        std::string text = "export_list\n";
        for (int i = 0; i < count; i++) {
            const std::string n = std::to_string(i);
            text += "user" + n + "\tgroup" + std::to_string(i % 100) + "\tuser" + n + "@example.com\t$1$salt$hash\n";
        }
        return text;
    }
    double check(const std::string &text, UserCollection *known = nullptr)
    {
        users = {};
        groups = {};
        file.write(text);
        const auto start = clock();
        EXPECT_EQ(qbobj_checkUserList(qbdb, db, &users, &groups, known, nullptr, &err), 0u) << err.message;
        return milliseconds_since(start);
    }
};

TEST_F(Growth, CheckingAndImportingAList)
{
    int64_t first_steps = 0;
    double first_time = 0;
    for (const int count : {1000, 5000, 10000}) {
        sql("DELETE FROM `$user` WHERE id BETWEEN 100 AND 32767;DELETE FROM `$group` WHERE id BETWEEN 100 AND 32767");
        qbdb_request_begin(qbdb);
        const std::string text = list_of(count);
        double checked = check(text);
        for (int again = 0; again < 2; again++) checked = std::min(checked, check(text));
        ASSERT_EQ(elements(users.User).size(), static_cast<size_t>(count));
        ASSERT_EQ(elements(groups.Group).size(), 100u);
        ASSERT_EQ(qbobj_addGroup(qbdb, db, groups.Group, &err), 0u) << err.message;
        count_steps(true);
        const auto start = clock();
        ASSERT_EQ(qbobj_addUserList(qbdb, db, users.User, &err), 0u) << err.message;
        const double added = milliseconds_since(start);
        printf("%6d users: checked in %.1f ms, %.2f us each; imported in %.1f ms, %.2f us and %.0f steps each\n", count,
               checked, 1000 * checked / count, added, 1000 * added / count, 10.0 * static_cast<double>(steps) / count);
        if (!first_steps) first_steps = steps;
        if (first_time == 0) first_time = checked;
        // Exactly linear but for a rare step more; the clock gets room for a busy machine, squares do not fit.
        EXPECT_LE(steps * 1000 / count, first_steps + first_steps / 20);
        EXPECT_LT(checked, 4 * first_time * count / 1000);
        count_steps(false);
        EXPECT_EQ(value("SELECT COUNT(*) FROM `$user` WHERE id BETWEEN 100 AND 32767"), std::to_string(count));
        qbdb_request_end(qbdb);
    }
}

TEST_F(Growth, ExistingUsersCostOneStepEach)
{
    std::vector<User> known(10000);
    std::vector<std::string> names;
    for (int i = 0; i < 10000; i++) names.push_back("known" + std::to_string(i));
    for (size_t i = 0; i < known.size(); i++) {
        known[i].UserName = names[i].c_str();
        known[i].next = i + 1 < known.size() ? &known[i + 1] : nullptr;
    }
    UserCollection existing{};
    existing.User = known.data();
    const std::string text = list_of(5000);
    const double alone = std::min(check(text), check(text));
    const double beside = check(text, &existing);
    printf("5000 lines: %.1f ms, beside 10000 existing users %.1f ms\n", alone, beside);
    // Walking the existing users for each line would cost some hundred times as much.
    EXPECT_LT(beside, 20 * alone);
}

TEST_F(Growth, TheIdOfAListedUserIsNotSearchedAmongAll)
{
    std::vector<std::string> plan;
    for (const std::string &row :
         rows("EXPLAIN QUERY PLAN SELECT IFNULL(MAX(U.id)+1,100) FROM `$user` U WHERE U.is_privileged=0 AND U.rid IS "
              "NULL AND U.id<32767"))
        plan.push_back(row.substr(row.rfind('|') + 1));
    ASSERT_FALSE(plan.empty());
    EXPECT_THAT(plan, Each(Not(StartsWith("SCAN"))));
}

TEST_F(Growth, CreatingOneByOne)
{
    int64_t first_steps = 0;
    std::vector<std::string> names;
    for (int i = 0; i < 4000; i++) names.push_back("user" + std::to_string(i));
    for (const int count : {500, 4000}) {
        sql("DELETE FROM `$user` WHERE id BETWEEN 100 AND 32767;DELETE FROM `$home_folder`;"
            "UPDATE account_default SET next_uid=100");
        std::vector<User> chain(count);
        for (int i = 0; i < count; i++) {
            chain[i] = {};
            chain[i].UserName = names[i].c_str();
            chain[i].next = i + 1 < count ? &chain[i + 1] : nullptr;
        }
        count_steps(true);
        const auto start = clock();
        ASSERT_EQ(qbobj_addUser(qbdb, db, chain.data(), &err), 0u) << err.message;
        const double added = milliseconds_since(start);
        printf("%6d users: created in %.1f ms, %.2f us and %.0f steps each\n", count, added, 1000 * added / count,
               10.0 * static_cast<double>(steps) / count);
        if (!first_steps) first_steps = steps;
        EXPECT_LE(steps * 500 / count, first_steps + first_steps / 20);
        count_steps(false);
    }
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
