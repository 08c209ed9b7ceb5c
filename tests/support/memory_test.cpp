// Without memory: each allocation of SQLite's and of the statement engine fails once, in turn; every call
// gives a code and a text, loses nothing, and the next call works.
#include <functional>

#include "fixture/fixture.h"

namespace {

/// Puts an allocator in SQLite's place that fails at the n-th call. No connection may be open around it.
struct FailingMemory {
    static inline sqlite3_mem_methods real;
    static inline int left = 0;          // allocations until one fails; 0 for never
    static inline bool forever = false;  // and all after it

    static bool fails()
    {
        if (left == 0) return false;
        if (left > 1) {
            left--;
            return false;
        }
        if (!forever) left = 0;
        return true;
    }
    FailingMemory()
    {
        left = 0;
        forever = false;
        sqlite3_shutdown();
        sqlite3_config(SQLITE_CONFIG_GETMALLOC, &real);
        sqlite3_mem_methods methods = real;
        methods.xMalloc = [](int size) { return fails() ? nullptr : real.xMalloc(size); };
        methods.xRealloc = [](void *block, int size) { return fails() ? nullptr : real.xRealloc(block, size); };
        EXPECT_EQ(sqlite3_config(SQLITE_CONFIG_MALLOC, &methods), SQLITE_OK);
    }
    ~FailingMemory()
    {
        left = 0;
        sqlite3_shutdown();
        sqlite3_config(SQLITE_CONFIG_MALLOC, &real);
    }
};

/// An allocator in place, then a database.
struct Memory : FailingMemory, test::Database {
    const char *text = nullptr;

    Memory()
    {
        sql("CREATE TABLE t (id INTEGER PRIMARY KEY, name TEXT); INSERT INTO t VALUES(1,'anna'),(2,'bert');"
            "CREATE TABLE `$u` (a); INSERT INTO `$u` VALUES(1)");
        qbdb_set_statement_hook(qbdb, nullptr, nullptr);
    }

    /// Lets the n-th allocation of a call fail, for every n until none is left to fail. `call` prepares anew
    /// each time. On failure `undone` has to hold.
    void exhaust(const std::function<int()> &call, bool has_text = true)
    {
        for (const bool all : {false, true}) {
            int failures = 0;
            for (int n = 1;; n++) {
                ASSERT_LT(n, 20000);
                SCOPED_TRACE("allocation " + std::to_string(n) + (all ? " and all after it" : ""));
                qbdb_set_statement_cache(qbdb, 0);
                qbdb_set_statement_cache(qbdb, 16);
                text = nullptr;
                forever = all;
                left = n;
                const int rc = call();
                const bool reached = left == 0 || (all && left == 1);
                left = 0;
                if (!reached) {
                    EXPECT_EQ(rc, 0);
                    break;
                }
                // SQLite does without some of them.
                if (rc) {
                    failures++;
                    EXPECT_TRUE(rc == 7 || rc == 10) << rc;
                    if (has_text) {
                        EXPECT_TRUE(text && *text);
                    }
                }
                ASSERT_EQ(value("SELECT COUNT(*) FROM t"), "2");
            }
            EXPECT_GT(failures, 2);
        }
    }
};

TEST_F(Memory, ForAStatement)
{
    exhaust([this] {
        const int rc = qbdb_sql_exec_mprintf(qbdb, db, &text, "f", 1, "UPDATE t SET name=%Q WHERE id=%d", "carl", 1);
        left = left > 1 ? left : 0;
        return rc;
    });
}

TEST_F(Memory, ForATable)
{
    exhaust([this] {
        char **table = nullptr;
        int rows = -1;
        int columns = -1;
        const int rc =
            qbdb_sql_get_table_mprintf(qbdb, db, &text, "f", 1, &table, &rows, &columns,
                                       "SELECT id, name, hex(zeroblob(%d)) FROM %s WHERE name<>%Q", 300, "t", "x");
        EXPECT_EQ(rows, rc ? 0 : 2);
        EXPECT_EQ(table == nullptr, rc != 0);
        sqlite3_free_table(table);
        return rc;
    });
}

TEST_F(Memory, ForAScalar)
{
    exhaust([this] {
        const char *name = nullptr;
        const int rc = qbdb_sql_get_scaler_mprintf(qbdb, db, &text, "f", 1, &name,
                                                   "SELECT name || '%q' FROM t WHERE id=%d", "x", 1);
        EXPECT_EQ(std::string(name ? name : ""), rc ? "" : "annax");
        return rc;
    });
}

TEST_F(Memory, ForNumbers)
{
    exhaust([this] {
        int32_t number = 7;
        const int rc = qbdb_sql_get_int32_mprintf(qbdb, db, &text, "f", 1, &number, nullptr,
                                                  "SELECT id FROM t WHERE name=%Q", "bert");
        EXPECT_EQ(number, rc ? 7 : 2);
        return rc;
    });
    exhaust([this] {
        uint64_t number = 7;
        const int rc = qbdb_sql_get_uint64_mprintf(qbdb, db, &text, "f", 1, &number, nullptr,
                                                   "SELECT CAST(id AS TEXT) FROM t WHERE id=%llu", 2ULL);
        EXPECT_EQ(number, rc ? 7u : 2u);
        return rc;
    });
}

TEST_F(Memory, ForThePlainForm)
{
    exhaust([this] { return qbdb_sql_exec_mprintf(qbdb, db, &text, "f", 1, "SELECT id FROM %Q WHERE id=%d", "t", 1); });
    exhaust([this] { return qbdb_sql_exec_mprintf(qbdb, db, &text, "f", 1, "SELECT %.3f", 1.0); });
}

TEST_F(Memory, ForTheHook)
{
    qbdb_set_statement_hook(
        qbdb, [](void *, const char *, const char *, uint32_t, const char **) { return 0; }, nullptr);
    exhaust([this] { return qbdb_sql_exec_mprintf(qbdb, db, &text, "f", 1, "SELECT id FROM t WHERE id=%d", 1); });
}

TEST_F(Memory, ForCopies)
{
    static constexpr const char *kSet[] = {"t", "$u", nullptr};
    exhaust(
        [this] {
            if (qbdb_sql_begin(qbdb, db, 0, "f", 1)) return 7;
            int32_t changed = -1;
            apr_hash_t *differing = nullptr;
            int rc = qbdb_sql_duplicate_tables(qbdb, db, 0, kSet, "_old_");
            if (rc == 0) rc = qbdb_sql_compare_tables2(qbdb, db, 0, kSet, "_old_", &changed);
            if (rc == 0) {
                EXPECT_EQ(changed, 0);
            }
            if (rc == 0) rc = qbdb_sql_compare_tables(qbdb, db, 0, kSet, "_old_", &differing);
            if (rc == 0) rc = qbdb_sql_delete_tables(qbdb, db, 0, kSet, "_old_");
            const bool reached = left == 0 || (forever && left == 1);
            qbdb_sql_rollback(qbdb, db, 0, "f", 1);
            if (!reached && left) left = 2;
            EXPECT_TRUE(sqlite3_get_autocommit(db)) << "a rollback needs no memory";
            return rc;
        },
        false);
    EXPECT_EQ(value("SELECT COUNT(*) FROM sqlite_schema WHERE name LIKE '|_old|_%' ESCAPE '|'"), "0");
}

struct OpenMemory : FailingMemory, testing::Test {
    test::TemporaryDirectory directory;
};

TEST_F(OpenMemory, ForOpening)
{
    const std::string path = directory.path + "/appliance.db";
    qbdb_t *qbdb = nullptr;
    sqlite3 *db = nullptr;
    char why[200] = "";
    ASSERT_EQ(qbdb_open(path.c_str(), QBDB_OPEN_CREATE, "tank", &qbdb, &db, why, sizeof why), 0) << why;
    qbdb_close(qbdb);
    for (const unsigned mode : {QBDB_OPEN_EXISTING, QBDB_OPEN_CREATE}) {
        bool reached = true;
        int n = 1;
        for (; reached; n += 1 + n / (mode == QBDB_OPEN_CREATE ? 8 : 30)) {
            SCOPED_TRACE("mode " + std::to_string(mode) + " allocation " + std::to_string(n));
            const std::string file = mode == QBDB_OPEN_CREATE ? directory.path + "/" + std::to_string(n) + ".db" : path;
            *why = '\0';
            left = n;
            const int rc = qbdb_open(file.c_str(), mode, "tank", &qbdb, &db, why, sizeof why);
            reached = left == 0;
            left = 0;
            if (rc) {
                EXPECT_TRUE(rc == 7 || rc == 10 || rc == 14) << rc << " " << why;
                EXPECT_NE(*why, '\0');
                EXPECT_EQ(qbdb, nullptr);
                const unsigned again = qbdb_open(file.c_str(), QBDB_OPEN_EXISTING, nullptr, &qbdb, &db, nullptr, 0) == 0
                                           ? QBDB_OPEN_EXISTING
                                           : QBDB_OPEN_CREATE;
                qbdb_close(qbdb);
                ASSERT_EQ(qbdb_open(file.c_str(), again, "tank", &qbdb, &db, why, sizeof why), 0) << why;
            }
            const char *volume = nullptr;
            ASSERT_EQ(qbdb_sql_get_scaler_mprintf(qbdb, db, nullptr, "f", 1, &volume, "SELECT id FROM _volume"), 0);
            EXPECT_STREQ(volume, "tank");
            qbdb_close(qbdb);
        }
        EXPECT_GT(n, 100);
    }
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
