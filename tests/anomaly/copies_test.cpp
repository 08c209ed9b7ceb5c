// Comparing tables without memory: the hash of the answer is the C library's, which asks nobody.
#include <apr_hash.h>

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
        // What the fixture notes of a call would ask for memory, too.
        qbdb_set_statement_hook(qbdb, nullptr, nullptr);
        qbdb->log_level = 0;
    }
};

TEST_F(Comparison, NeverMissesMemory)
{
    if (!kHeapIsOurs) GTEST_SKIP() << "the sanitizer owns the heap";
    long failures = 0;
    for (long n = 1;; n++) {
        apr_hash_t *differing = nullptr;
        qbdb_request_begin(qbdb);
        memory = {.source = Source::heap, .watching = true, .forever = true, .nth = n, .blocks = memory.blocks};
        const int rc = qbdb_sql_compare_tables(qbdb, db, 0, set.data(), "old_", &differing);
        memory.watching = false;
        if (!memory.refused) {
            EXPECT_EQ(rc, 0);
            EXPECT_EQ(apr_hash_count(differing), 100u);
            break;
        }
        // A refusal that SQLite could do without is none.
        if (rc) failures++;
        EXPECT_EQ(differing == nullptr, rc != 0);
        if (n > 50) n += 97;  // each of the tables asks for much the same
    }
    EXPECT_GT(failures, 50);
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
