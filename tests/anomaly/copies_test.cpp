// Comparing tables without memory: the hash of the answer is the C library's, which asks nobody.
#include <apr_allocator.h>
#include <apr_hash.h>
#include <sys/resource.h>
#include <unistd.h>

#include "fixture/fixture.h"
#include "memory.h"

using namespace test;

namespace {

struct Comparison : Database {
    std::vector<std::string> names;
    std::vector<const char *> set;

    Comparison()
    {
        names.reserve(101);  // the set points into it
        for (int i = 0; i < 100; i++) names.push_back("t" + std::to_string(i));
        for (const std::string &name : names) {
            sql("CREATE TABLE " + name + "(a); CREATE TABLE old_" + name + "(a); INSERT INTO " + name + " VALUES(1)");
            set.push_back(name.c_str());
        }
        set.push_back(nullptr);
        apr_allocator_max_free_set(apr_pool_allocator_get(qbdb->pool), 1);  // nothing is kept for later
    }
};

TEST_F(Comparison, KnowsThatPoolsCannotGrow)
{
    if (!kHeapIsOurs) GTEST_SKIP() << "the sanitizer needs address space of its own";
    const auto compare = [this] {
        apr_palloc(qbdb->request_pool, 7900);  // its first block is full
        const rlimit none{0, RLIM_INFINITY};   // pools are mapped, the heap cannot grow either
        setrlimit(RLIMIT_AS, &none);
        apr_hash_t *differing = nullptr;
        const int rc = qbdb_sql_compare_tables(qbdb, db, 0, set.data(), "old_", &differing);
        _exit(rc == SQLITE_NOMEM && !differing ? 0 : 1);
    };
    qbdb_request_begin(qbdb);
    EXPECT_EXIT(compare(), testing::ExitedWithCode(0), "");
}

TEST_F(Comparison, NamesTheTablesThatDiffer)
{
    apr_hash_t *differing = nullptr;
    ASSERT_EQ(qbdb_sql_compare_tables(qbdb, db, 0, set.data(), "old_", &differing), 0);
    EXPECT_EQ(apr_hash_count(differing), 100u);
}

TEST_F(Comparison, TakesAHundredTables)
{
    names.emplace_back("one more");
    set.back() = names.back().c_str();
    set.push_back(nullptr);
    apr_hash_t *differing = nullptr;
    EXPECT_EQ(qbdb_sql_compare_tables(qbdb, db, 0, set.data(), "old_", &differing), SQLITE_TOOBIG);
    EXPECT_EQ(differing, nullptr);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
