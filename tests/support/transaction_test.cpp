// Begin, commit, rollback; locks of other processes.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "fixture/fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Clock = std::chrono::steady_clock;

int64_t milliseconds_since(Clock::time_point start)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

struct Transactions : test::Database {
    Transactions() { sql("CREATE TABLE t (a)"); }
    uint32_t begin(sqlite3 *on) { return qbdb_sql_begin(qbdb, on, 0, "f.cpp", 1); }
    uint32_t begin_read(sqlite3 *on) { return qbdb_sql_begin_read(qbdb, on, 0, "f.cpp", 1); }
    uint32_t commit(sqlite3 *on) { return qbdb_sql_commit(qbdb, on, 0, "f.cpp", 2); }
    uint32_t rollback(sqlite3 *on) { return qbdb_sql_rollback(qbdb, on, 0, "f.cpp", 3); }
    int insert(int a) { return qbdb_sql_exec_mprintf(qbdb, db, nullptr, "f", 1, "INSERT INTO t VALUES(%d)", a); }
    bool is_open() const { return !sqlite3_get_autocommit(db); }
};

/// Another process that holds the lock for writing until it is told to let go or for a while.
struct Holder {
    pid_t child;
    explicit Holder(const std::string &path, int milliseconds)
    {
        int ready[2];
        EXPECT_EQ(pipe(ready), 0);
        child = fork();
        if (child == 0) {
            sqlite3 *db = nullptr;
            const bool held = sqlite3_open(path.c_str(), &db) == SQLITE_OK &&
                              sqlite3_exec(db, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr) == SQLITE_OK;
            const char answer = held ? 'y' : 'n';
            if (::write(ready[1], &answer, 1) != 1) _exit(1);
            usleep(static_cast<useconds_t>(milliseconds) * 1000);
            _exit(0);
        }
        char answer = '?';
        EXPECT_EQ(::read(ready[0], &answer, 1), 1);
        EXPECT_EQ(answer, 'y');
        ::close(ready[0]);
        ::close(ready[1]);
    }
    ~Holder()
    {
        kill(child, SIGKILL);
        int status;
        waitpid(child, &status, 0);
    }
};

TEST_F(Transactions, CommitKeepsAndRollbackTakesBack)
{
    ASSERT_EQ(begin(db), 0u);
    EXPECT_TRUE(is_open());
    ASSERT_EQ(insert(1), 0);
    ASSERT_EQ(commit(db), 0u);
    EXPECT_FALSE(is_open());
    ASSERT_EQ(begin(db), 0u);
    ASSERT_EQ(insert(2), 0);
    ASSERT_EQ(rollback(db), 0u);
    EXPECT_FALSE(is_open());
    EXPECT_THAT(rows("SELECT a FROM t"), ElementsAre("1"));
    EXPECT_THAT(take_statements(), ElementsAre("BEGIN IMMEDIATE", "INSERT INTO t VALUES(1)", "COMMIT",
                                               "BEGIN IMMEDIATE", "INSERT INTO t VALUES(2)", "ROLLBACK"));
}

TEST_F(Transactions, AReaderSeesOneStateWaitsForNobodyAndKeepsNobodyWaiting)
{
    sql("INSERT INTO t VALUES(1)");
    take_statements();
    qbdb_set_timeout(qbdb, 0);
    qbdb_t *writer = nullptr;
    sqlite3 *writing = nullptr;
    ASSERT_EQ(qbdb_open(path.c_str(), QBDB_OPEN_EXISTING, nullptr, &writer, &writing, nullptr, 0), 0);
    qbdb_set_timeout(writer, 0);
    ASSERT_EQ(qbdb_sql_begin(writer, writing, 0, "f", 1), 0u);
    ASSERT_EQ(qbdb_sql_exec_mprintf(writer, writing, nullptr, "f", 1, "INSERT INTO t VALUES(2)"), 0);
    ASSERT_EQ(begin_read(db), 0u);
    EXPECT_EQ(value("SELECT COUNT(*) FROM t"), "1");
    EXPECT_EQ(qbdb_sql_commit(writer, writing, 0, "f", 1), 0u);
    EXPECT_EQ(value("SELECT COUNT(*) FROM t"), "1") << "the state that it began with";
    ASSERT_EQ(commit(db), 0u);
    EXPECT_EQ(value("SELECT COUNT(*) FROM t"), "2");
    ASSERT_EQ(begin_read(db), 0u);
    EXPECT_EQ(begin_read(db), 1u);
    EXPECT_EQ(rollback(db), 0u);
    EXPECT_TRUE(is_open()) << "of a refused begin";
    EXPECT_EQ(rollback(db), 0u);
    EXPECT_FALSE(is_open());
    EXPECT_THAT(take_statements(), ElementsAre("BEGIN", "COMMIT", "BEGIN", "ROLLBACK"));
    EXPECT_EQ(begin_read(nullptr), 8u);
    qbdb_close(writer);
}

TEST_F(Transactions, WithoutAConnection)
{
    EXPECT_EQ(begin(nullptr), 8u);
    EXPECT_EQ(commit(nullptr), 1u);
    EXPECT_EQ(rollback(nullptr), 0u);
}

TEST_F(Transactions, WithoutABegin)
{
    EXPECT_EQ(commit(db), 1u);
    EXPECT_EQ(rollback(db), 0u);
    EXPECT_THAT(take_statements(), IsEmpty());
    ASSERT_EQ(begin(db), 0u);
    ASSERT_EQ(commit(db), 0u);
    EXPECT_EQ(rollback(db), 0u) << "after a commit there is nothing to take back";
}

TEST_F(Transactions, SomebodyElsesIsLeftAlone)
{
    sql("BEGIN; INSERT INTO t VALUES(1)");
    EXPECT_EQ(begin(db), 1u);
    EXPECT_EQ(rollback(db), 0u);
    EXPECT_EQ(commit(db), 1u);
    EXPECT_TRUE(is_open());
    sql("COMMIT");
    EXPECT_EQ(value("SELECT a FROM t"), "1");
}

TEST_F(Transactions, ABeginInsideIsRefusedAndItsRollbackHarmless)
{
    ASSERT_EQ(begin(db), 0u);
    ASSERT_EQ(insert(1), 0);
    for (int i = 0; i < 2; i++) {
        EXPECT_EQ(begin(db), 1u);
        EXPECT_EQ(rollback(db), 0u);
        EXPECT_TRUE(is_open());
    }
    ASSERT_EQ(commit(db), 0u);
    EXPECT_EQ(value("SELECT a FROM t"), "1");
    // The outer rollback is not taken for the inner one's.
    ASSERT_EQ(begin(db), 0u);
    EXPECT_EQ(begin(db), 1u);
    EXPECT_EQ(rollback(db), 0u);
    EXPECT_EQ(rollback(db), 0u);
    EXPECT_FALSE(is_open());
    ASSERT_EQ(begin(db), 0u);
    EXPECT_EQ(begin(db), 1u);
    ASSERT_EQ(insert(2), 0);
    EXPECT_EQ(rollback(db), 0u) << "a statement came in between: this one is the outer one's";
    EXPECT_FALSE(is_open());
    EXPECT_EQ(value("SELECT COUNT(*) FROM t"), "1");
}

TEST_F(Transactions, AnOperationInsideATransactionFailsAndLeavesItOpen)
{
    ASSERT_EQ(begin(db), 0u);
    ASSERT_EQ(insert(1), 0);
    EXPECT_EQ(qbobj_addLog(qbdb, db, 5, nullptr, nullptr, nullptr, nullptr, &err), 1u);
    EXPECT_TRUE(is_open());
    ASSERT_EQ(commit(db), 0u);
    EXPECT_EQ(value("SELECT a FROM t"), "1");
}

TEST_F(Transactions, AFailedCommitIsLogged)
{
    struct Refuse {
        static int commit(void *, const char *sql, const char *, uint32_t, const char **text)
        {
            *text = "no room";
            return strcmp(sql, "COMMIT") == 0 ? SQLITE_FULL : 0;
        }
    };
    for (const uint32_t level : {1u, 2u}) {
        qbdb->log_level = level;
        log.clear();
        sqlite3_commit_hook(
            db, [](void *) { return 1; }, nullptr);
        ASSERT_EQ(begin(db), 0u);
        ASSERT_EQ(insert(1), 0);
        EXPECT_EQ(commit(db), 19u);
        sqlite3_commit_hook(db, nullptr, nullptr);
        qbdb_set_statement_hook(qbdb, Refuse::commit, nullptr);
        ASSERT_EQ(begin(db), 0u);
        EXPECT_EQ(commit(db), 13u);
        qbdb_set_statement_hook(qbdb, nullptr, nullptr);
        ASSERT_EQ(begin(db), 0u);
        EXPECT_EQ(commit(db), 0u);
        ASSERT_EQ(log.size(), level == 1 ? 0u : 2u);
        if (level == 1) continue;
        EXPECT_EQ(log[0].text, "Failed to commit, rolled back. constraint failed\n");
        EXPECT_EQ(log[1].text, "Failed to commit, rolled back. no room\n");
        EXPECT_EQ(log[0].file, "f.cpp");
        EXPECT_EQ(log[0].line, 2u);
        EXPECT_EQ(log[0].level, 2u);
        EXPECT_EQ(log[0].flag, 0u);
    }
}

TEST_F(Transactions, AFailedCommitLeavesNothingOpen)
{
    sql("PRAGMA foreign_keys=ON; CREATE TABLE p (id INTEGER PRIMARY KEY);"
        "CREATE TABLE c (p REFERENCES p(id) DEFERRABLE INITIALLY DEFERRED)");
    ASSERT_EQ(begin(db), 0u);
    sql("INSERT INTO c VALUES(1)");
    EXPECT_EQ(commit(db), 19u);
    EXPECT_FALSE(is_open());
    EXPECT_THAT(rows("SELECT * FROM c"), IsEmpty());
    EXPECT_EQ(rollback(db), 0u);
    // SQLite takes the transaction back by itself when its own hook refuses.
    sqlite3_commit_hook(
        db, [](void *) { return 1; }, nullptr);
    ASSERT_EQ(begin(db), 0u);
    ASSERT_EQ(insert(1), 0);
    EXPECT_EQ(commit(db), 19u);
    EXPECT_FALSE(is_open());
    EXPECT_EQ(rollback(db), 0u);
    sqlite3_commit_hook(db, nullptr, nullptr);
    ASSERT_EQ(begin(db), 0u);
    ASSERT_EQ(insert(2), 0);
    ASSERT_EQ(commit(db), 0u);
    EXPECT_THAT(rows("SELECT a FROM t"), ElementsAre("2"));
}

TEST_F(Transactions, ATransactionThatSqliteEndedIsForgotten)
{
    ASSERT_EQ(begin(db), 0u);
    EXPECT_EQ(qbdb_sql_exec_mprintf(qbdb, db, nullptr, "f", 1, "ROLLBACK"), 0);
    ASSERT_EQ(begin(db), 0u) << "and another can begin";
    ASSERT_EQ(insert(1), 0);
    sql("ROLLBACK");
    EXPECT_EQ(rollback(db), 0u);
    sql("BEGIN");
    EXPECT_EQ(rollback(db), 0u);
    EXPECT_TRUE(is_open());
    sql("COMMIT");
}

TEST_F(Transactions, OnAConnectionOfTheCallers)
{
    sqlite3 *other = nullptr;
    ASSERT_EQ(sqlite3_open(":memory:", &other), SQLITE_OK);
    ASSERT_EQ(begin(db), 0u);
    ASSERT_EQ(begin(other), 0u);
    EXPECT_EQ(begin(other), 1u);
    ASSERT_EQ(insert(1), 0);
    ASSERT_EQ(rollback(db), 0u) << "the refusal was the other connection's";
    EXPECT_FALSE(is_open());
    EXPECT_FALSE(sqlite3_get_autocommit(other));
    ASSERT_EQ(commit(other), 0u);
    EXPECT_TRUE(sqlite3_get_autocommit(other));
    ASSERT_EQ(begin(other), 0u);
    ASSERT_EQ(rollback(other), 0u);
    EXPECT_TRUE(sqlite3_get_autocommit(other));
    EXPECT_EQ(sqlite3_close(other), SQLITE_OK);
    ASSERT_EQ(sqlite3_open_v2(path.c_str(), &other, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
    take_statements();
    ASSERT_EQ(begin(other), 0u);
    ASSERT_EQ(rollback(other), 0u);
    EXPECT_THAT(take_statements(), ElementsAre("BEGIN", "ROLLBACK"));
    EXPECT_EQ(sqlite3_close(other), SQLITE_OK);
}

TEST_F(Transactions, WaitForALockNoLongerThanTheTimeout)
{
    const Holder holder(path, 20000);
    qbdb_set_timeout(qbdb, 200);
    for (int i = 0; i < 2; i++) {
        const auto start = Clock::now();
        EXPECT_EQ(begin(db), 5u);
        EXPECT_GE(milliseconds_since(start), 195);
        EXPECT_LT(milliseconds_since(start), 1500);
        EXPECT_FALSE(is_open());
        EXPECT_EQ(rollback(db), 0u);
    }
    qbdb_set_timeout(qbdb, 0);
    const auto start = Clock::now();
    EXPECT_EQ(begin(db), 5u);
    EXPECT_LT(milliseconds_since(start), 150);
    EXPECT_EQ(value("SELECT COUNT(*) FROM t"), "0") << "reading needs no such lock";
    const auto statement = Clock::now();
    qbdb_set_timeout(qbdb, 100);
    EXPECT_EQ(insert(1), 5);
    EXPECT_GE(milliseconds_since(statement), 95);
    EXPECT_LT(milliseconds_since(statement), 1000) << "waited once, not twice";
}

TEST_F(Transactions, AShortLockIsWaitedOut)
{
    const Holder holder(path, 150);
    const auto start = Clock::now();
    EXPECT_EQ(begin(db), 0u);
    EXPECT_LT(milliseconds_since(start), QBDB_DEFAULT_TIMEOUT_MS);
    ASSERT_EQ(insert(1), 0);
    EXPECT_EQ(commit(db), 0u);
}

TEST_F(Transactions, ALockIsWaitedForWhilePreparingToo)
{
    qbdb_set_timeout(qbdb, 200);
    sql("PRAGMA journal_mode=DELETE");
    // Taking back a new table makes the connection forget the schema: the next statement reads it again.
    sql("BEGIN; CREATE TABLE u(a); ROLLBACK");
    sqlite3 *other = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
    const auto start = Clock::now();
    const char *text = nullptr;
    EXPECT_EQ(qbdb_sql_exec_mprintf(qbdb, db, &text, "f", 1, "SELECT a FROM t WHERE a=%d", 1), 5);
    EXPECT_STREQ(text, "database is locked");
    EXPECT_GE(milliseconds_since(start), 195);
    EXPECT_LT(milliseconds_since(start), 390) << "waited once, not twice";
    sqlite3_close(other);
}

TEST_F(Transactions, ManyProcessesTakeTurns)
{
    constexpr int kProcesses = 4;
    constexpr int kRounds = 25;
    pid_t children[kProcesses];
    for (pid_t &child : children) {
        child = fork();
        if (child == 0) {
            qbdb_t *own = nullptr;
            sqlite3 *own_db = nullptr;
            if (qbdb_open(path.c_str(), QBDB_OPEN_EXISTING, nullptr, &own, &own_db, nullptr, 0)) _exit(1);
            qbdb_set_timeout(own, 60000);
            for (int round = 0; round < kRounds; round++) {
                int32_t count = 0;
                if (qbdb_sql_begin(own, own_db, 0, "f", 1)) _exit(2);
                if (qbdb_sql_get_int32_mprintf(own, own_db, nullptr, "f", 1, &count, nullptr, "SELECT COUNT(*) FROM t"))
                    _exit(3);
                if (qbdb_sql_exec_mprintf(own, own_db, nullptr, "f", 1, "INSERT INTO t VALUES(%d)", count)) _exit(4);
                if (qbdb_sql_commit(own, own_db, 0, "f", 1)) _exit(5);
            }
            qbdb_close(own);
            _exit(0);
        }
    }
    for (const pid_t child : children) {
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(value("SELECT COUNT(DISTINCT a) FROM t"), std::to_string(kProcesses * kRounds));
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
