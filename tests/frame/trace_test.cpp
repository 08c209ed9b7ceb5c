// The call frame as a caller sees it: what is logged at each level, what the error record holds, and what
// becomes of the transaction.
#include <sys/time.h>
#include <unistd.h>

#include <cstring>

#include "fixture/files.h"
#include "fixture/fixture.h"

using test::LogLine;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Line texts without the line feed, which every line but an error report has.
std::vector<std::string> texts(const std::vector<LogLine> &log)
{
    std::vector<std::string> all;
    for (const LogLine &line : log) {
        const bool report = line.flag == 1;
        EXPECT_EQ(!line.text.empty() && line.text.back() == '\n', !report) << line.text;
        all.push_back(report ? line.text : line.text.substr(0, line.text.size() - 1));
    }
    return all;
}

constexpr int kLate_us = 900000;
constexpr int kLag_us = 20000;

/// Waits until a second has begun lately, so that the clock shows one second for all of a short call. The
/// clock that counts seconds lags by some milliseconds behind the one that counts microseconds.
void early_in_a_second()
{
    timeval now;
    gettimeofday(&now, nullptr);
    if (now.tv_usec > kLate_us || now.tv_usec < kLag_us)
        usleep(static_cast<useconds_t>((now.tv_usec < kLag_us ? 0 : 1000000) + kLag_us - now.tv_usec));
}

struct Trace : test::Database {
    LogQuery query{};
    LogEntry *entries = nullptr;
    int32_t count = -1;
    int32_t total = -1;

    Trace()
    {
        sql("INSERT INTO `$log` VALUES(1,5,'info','misc','LOGMSG_A',NULL),(2,6,'err','disk','LOGMSG_B','<x/>')");
        early_in_a_second();
    }
    uint32_t get(LogQuery *which) { return qbobj_getLog(qbdb, db, which, &entries, &count, &total, &err); }
    uint32_t add(const char *severity = nullptr)
    {
        return qbobj_addLog(qbdb, db, 7, severity, nullptr, nullptr, nullptr, &err);
    }
    void expect_no_error() const
    {
        EXPECT_EQ(err.code, 0u);
        EXPECT_EQ(err.file, nullptr);
        EXPECT_EQ(err.line, 0u);
        EXPECT_EQ(err.message, nullptr);
    }
};

// ---- Levels

TEST_F(Trace, LinesOfASuccessByLevel)
{
    for (const uint32_t level : {0, 1, 2, 3, 4, 5}) {
        SCOPED_TRACE(level);
        qbdb->log_level = level;
        log.clear();
        ASSERT_EQ(add(), 0u);
        if (level < 4) {
            EXPECT_THAT(texts(log), IsEmpty());
        } else {
            EXPECT_THAT(texts(log), ElementsAre(">>>> qbobj_addLog()", "<<<< qbobj_addLog() ==> rc=0 (0ms)"));
        }
    }
}

TEST_F(Trace, LinesOfAFailureByLevel)
{
    for (const uint32_t level : {0, 1, 2, 3, 4, 5}) {
        SCOPED_TRACE(level);
        qbdb->log_level = level;
        log.clear();
        ASSERT_EQ(add("bad"), 8u);
        EXPECT_STREQ(err.message, "Specified Severity (bad) is invalid.");
        const char *report = "Specified Severity (bad) is invalid.";
        if (level < 2) {
            EXPECT_THAT(texts(log), IsEmpty());
        } else if (level < 4) {
            EXPECT_THAT(texts(log), ElementsAre(report));
        } else {
            EXPECT_THAT(texts(log), ElementsAre(">>>> qbobj_addLog()", report, "<<<< qbobj_addLog() ==> rc=8 (0ms)"));
        }
    }
}

TEST_F(Trace, LevelFlagAndPlaceOfEachLine)
{
    qbdb->log_level = 5;
    ASSERT_EQ(add("bad"), 8u);
    ASSERT_EQ(log.size(), 3u);
    EXPECT_EQ(log[0].level, 4u);
    EXPECT_EQ(log[0].flag, 0u);
    EXPECT_EQ(log[0].file, "qbobj_api2.cpp");
    EXPECT_GT(log[0].line, 0u);
    EXPECT_EQ(log[1].level, 2u);
    EXPECT_EQ(log[1].flag, 1u);
    EXPECT_EQ(log[1].file, err.file);
    EXPECT_EQ(log[1].line, err.line);
    EXPECT_STREQ(err.file, "qbobj_api2_log.cpp");
    EXPECT_EQ(log[2].level, 4u);
    EXPECT_EQ(log[2].flag, 0u);
    EXPECT_EQ(log[2].file, "qbobj_api2.cpp");
    EXPECT_EQ(log[2].line, log[0].line);
}

TEST_F(Trace, RecordsAreDumpedInOrderBeforeAndAfterTheWorker)
{
    qbdb->log_level = 5;
    query.severity = "err";
    query.order = 1;
    ASSERT_EQ(get(&query), 0u) << err.message;
    const std::vector<std::string> dumped_query = {
        "LogQuery = {",
        " i limit = 0",
        " i offset = 0",
        " i order = 1",
        " i timestamp_min = 0",
        " i timestamp_max = 0",
        " s severity = err",
        " s severity_in = (null)",
        " s category_in = (null)",
        " s msg_tag = (null)",
        "}",
    };
    std::vector<std::string> expected = {">>>> qbobj_getLog()"};
    expected.insert(expected.end(), dumped_query.begin(), dumped_query.end());  // the list is empty: no line
    expected.push_back("x_qbobj_getLog() rc=0 nrow=1");
    expected.insert(expected.end(), dumped_query.begin(), dumped_query.end());
    for (const char *line :
         {"LogEntry[0] = {", " i LogId = 2", " i TimeStamp = 6", " s Severity = err", " s Category = disk",
          " s MessageTag = LOGMSG_B", " s MessageArgsXml = <x/>", "}", "<<<< qbobj_getLog() ==> rc=0 (0ms)"})
        expected.push_back(line);
    EXPECT_EQ(texts(log), expected);
    for (size_t i = 0; i < log.size(); i++) {
        EXPECT_EQ(log[i].level, i == 0 || i + 1 == log.size() ? 4u : 5u) << log[i].text;
        EXPECT_EQ(log[i].flag, 0u) << log[i].text;
        EXPECT_EQ(log[i].file, log[i].text.rfind("x_qbobj", 0) == 0 ? "qbobj_api2_log.cpp" : "qbobj_api2.cpp");
    }
}

TEST_F(Trace, AListThatIsThereAlreadyIsDumpedBeforeToo)
{
    ASSERT_EQ(get(nullptr), 0u);
    qbdb->log_level = 5;
    log.clear();
    query.limit = 1;
    ASSERT_EQ(get(&query), 0u);
    const auto lines = texts(log);
    std::vector<std::string> heads;
    for (const std::string &line : lines)
        if (line.rfind("Log", 0) == 0 || line.rfind("x_", 0) == 0) heads.push_back(line);
    EXPECT_THAT(heads, ElementsAre("LogQuery = {", "LogEntry[0] = {", "LogEntry[1] = {", "x_qbobj_getLog() rc=0 nrow=1",
                                   "LogQuery = {", "LogEntry[0] = {", "LogEntry[1] = {", "LogEntry[2] = {"));
}

TEST_F(Trace, ANullRecordIsDumpedAsNull)
{
    qbdb->log_level = 5;
    sql("DELETE FROM `$log`");
    ASSERT_EQ(get(nullptr), 0u);
    EXPECT_THAT(texts(log),
                ElementsAre(">>>> qbobj_getLog()", "LogQuery = {", "  obj=NULL", "}", "x_qbobj_getLog() rc=0 nrow=0",
                            "LogQuery = {", "  obj=NULL", "}", "<<<< qbobj_getLog() ==> rc=0 (0ms)"));
}

TEST_F(Trace, AFailedWorkerLeavesOutTheDumpAfter)
{
    qbdb->log_level = 5;
    fail_statement(3, 1, "no luck");
    ASSERT_EQ(get(nullptr), 5u);
    EXPECT_THAT(texts(log),
                ElementsAre(">>>> qbobj_getLog()", "LogQuery = {", "  obj=NULL", "}",
                            "Failed DB Query for 'SELECT $log'. no luck", "x_qbobj_getLog() rc=5 nrow=0",
                            "<<<< qbobj_getLog() ==> rc=5 (0ms)"));
}

TEST_F(Trace, AnIdIsTracedAsASignedNumber)
{
    qbdb->log_level = 4;
    EXPECT_EQ(qbobj_getPosixUID(qbdb, db, "nobody of that name", &err), 0xFFFFFFFFu);
    EXPECT_THAT(texts(log), ElementsAre(">>>> qbobj_getPosixUID()", "<<<< qbobj_getPosixUID() ==> rc=-1 (0ms)"));
    expect_no_error();
}

TEST_F(Trace, ElapsedCountsSecondsThatTheEntryTraceBlocked)
{
    // A sink that blocks past the end of the second.
    struct Sink {
        std::vector<std::string> lines;
        static void write(void *self, const char *, uint32_t, uint32_t, uint32_t, const char *text)
        {
            auto &lines = static_cast<Sink *>(self)->lines;
            lines.push_back(text);
            if (lines.size() > 1) return;
            timeval now;
            gettimeofday(&now, nullptr);
            usleep(static_cast<useconds_t>(1020000 - now.tv_usec));
        }
    } sink;
    qbdb->log_level = 4;
    qbdb_set_log_hook(qbdb, Sink::write, &sink);
    early_in_a_second();
    EXPECT_EQ(add(), 0u);
    EXPECT_THAT(sink.lines, ElementsAre(">>>> qbobj_addLog()\n", "<<<< qbobj_addLog() ==> rc=0 (1ms)\n"));
}

TEST_F(Trace, ElapsedDoesNotMeasureTheWorker)
{
    struct Slow {
        static int wait(void *, const char *sql, const char *, uint32_t, const char **)
        {
            if (strncmp(sql, "INSERT", 6) == 0) usleep(1100000);
            return 0;
        }
    };
    qbdb->log_level = 4;
    qbdb_set_statement_hook(qbdb, Slow::wait, nullptr);
    EXPECT_EQ(add(), 0u);
    EXPECT_THAT(texts(log), ElementsAre(">>>> qbobj_addLog()", "<<<< qbobj_addLog() ==> rc=0 (0ms)"));
}

// ---- The error record

TEST_F(Trace, ErrorRecordIsZeroedWhateverWasInIt)
{
    memset(&err, 0xA5, sizeof err);
    ASSERT_EQ(add(), 0u);
    expect_no_error();
    err = {77, "f", 8, "old"};
    ASSERT_EQ(add("bad"), 8u);
    EXPECT_EQ(err.code, 8u);
    EXPECT_STREQ(err.message, "Specified Severity (bad) is invalid.");
    ASSERT_EQ(add(), 0u);
    expect_no_error();
}

TEST_F(Trace, AFailureNamesCodeFileLineAndMessage)
{
    expect_failure(8, "Specified Severity (bad) is invalid.", [&] { return add("bad"); });
    EXPECT_STREQ(err.file, "qbobj_api2_log.cpp");
    EXPECT_GT(err.line, 100u);
}

TEST_F(Trace, MessagesLiveInTheRequestPoolWhenThereIsOne)
{
    ASSERT_EQ(qbdb_request_begin(qbdb), 0);
    const void *before = apr_palloc(qbdb->request_pool, 8);
    ASSERT_EQ(add("bad"), 8u);
    // A pool hands out ascending addresses: the message lies where this pool is being filled.
    const void *after = apr_palloc(qbdb->request_pool, 8);
    EXPECT_GT(static_cast<const void *>(err.message), before);
    EXPECT_LT(static_cast<const void *>(err.message), after);
    qbdb_request_end(qbdb);
}

// ---- Begin

TEST_F(Trace, BeginFailsBehindAnotherConnectionsLock)
{
    qbdb_t *other = nullptr;
    sqlite3 *other_db = nullptr;
    ASSERT_EQ(qbdb_open(path.c_str(), QBDB_OPEN_EXISTING, nullptr, &other, &other_db, nullptr, 0), 0);
    ASSERT_EQ(qbdb_sql_begin(other, other_db, 0, "here", 1), 0u);
    qbdb_set_timeout(qbdb, 20);
    qbdb->log_level = 5;
    const std::string before = content();
    err = {77, "f", 8, "old"};
    take_statements();
    EXPECT_EQ(add(), 5u);
    expect_no_error();
    EXPECT_THAT(take_statements(), ElementsAre("BEGIN IMMEDIATE"));
    EXPECT_THAT(texts(log), ElementsAre(">>>> qbobj_addLog()", "<<<< qbobj_addLog() ==> rc=5 (0ms)"));
    EXPECT_TRUE(sqlite3_get_autocommit(db));
    EXPECT_EQ(content(), before);
    // Who only reads waits for no writer, and sees nothing of what it has not committed.
    ASSERT_EQ(sqlite3_exec(other_db, "INSERT INTO `$log`(tstamp) VALUES(1)", nullptr, nullptr, nullptr), SQLITE_OK);
    EXPECT_EQ(get(&query), 0u);
    EXPECT_EQ(total, 2);
    EXPECT_EQ(qbdb_sql_commit(other, other_db, 0, "here", 1), 0u);
    qbdb_close(other);
    EXPECT_EQ(get(&query), 0u);
    EXPECT_EQ(total, 3);
    EXPECT_EQ(add(), 0u);
}

TEST_F(Trace, BeginFailsWithoutAConnection)
{
    qbdb->log_level = 4;
    err = {77, "f", 8, "old"};
    take_statements();
    EXPECT_EQ(qbobj_addLog(qbdb, nullptr, 7, nullptr, nullptr, nullptr, nullptr, &err), 8u);
    expect_no_error();
    EXPECT_THAT(take_statements(), IsEmpty());
    EXPECT_THAT(texts(log), ElementsAre(">>>> qbobj_addLog()", "<<<< qbobj_addLog() ==> rc=8 (0ms)"));
}

TEST_F(Trace, BeginFailsInsideATransactionAndLeavesIt)
{
    qbdb->log_level = 4;
    sql("BEGIN; INSERT INTO `$log` VALUES(3,7,'info','misc','LOGMSG_C',NULL)");
    EXPECT_EQ(add(), 1u);
    expect_no_error();
    EXPECT_THAT(texts(log), ElementsAre(">>>> qbobj_addLog()", "<<<< qbobj_addLog() ==> rc=1 (0ms)"));
    EXPECT_FALSE(sqlite3_get_autocommit(db));
    sql("COMMIT");
    EXPECT_EQ(value("SELECT COUNT(*) FROM `$log`"), "3");
}

TEST_F(Trace, BeginFailsInsideTheHandlesOwnTransactionAndLeavesIt)
{
    ASSERT_EQ(qbdb_sql_begin(qbdb, db, 0, "here", 1), 0u);
    sql("INSERT INTO `$log` VALUES(3,7,'info','misc','LOGMSG_C',NULL)");
    EXPECT_EQ(add(), 1u);
    expect_no_error();
    EXPECT_FALSE(sqlite3_get_autocommit(db));
    EXPECT_EQ(qbdb_sql_commit(qbdb, db, 0, "here", 1), 0u);
    EXPECT_EQ(value("SELECT COUNT(*) FROM `$log`"), "3");
}

TEST_F(Trace, BeginsCodeIsReturnedAsItIs)
{
    struct Refuse {
        static int begin(void *, const char *sql, const char *, uint32_t, const char **)
        {
            return strncmp(sql, "BEGIN", 5) == 0 ? 14 : 0;
        }
    };
    qbdb->log_level = 4;
    qbdb_set_statement_hook(qbdb, Refuse::begin, nullptr);
    EXPECT_EQ(add(), 14u);
    expect_no_error();
    EXPECT_THAT(texts(log), ElementsAre(">>>> qbobj_addLog()", "<<<< qbobj_addLog() ==> rc=14 (0ms)"));
    EXPECT_TRUE(sqlite3_get_autocommit(db));
}

// ---- Commit and rollback

struct Ends {
    int commits = 0;
    int rollbacks = 0;
    int refuse = 0;

    explicit Ends(sqlite3 *db)
    {
        sqlite3_commit_hook(
            db,
            [](void *self) {
                static_cast<Ends *>(self)->commits++;
                return static_cast<Ends *>(self)->refuse;
            },
            this);
        sqlite3_rollback_hook(
            db, [](void *self) { static_cast<Ends *>(self)->rollbacks++; }, this);
    }
};

TEST_F(Trace, SuccessCommits)
{
    Ends ends(db);
    take_statements();
    EXPECT_EQ(add(), 0u);
    EXPECT_EQ(ends.commits, 1);
    EXPECT_EQ(ends.rollbacks, 0);
    const auto statements = take_statements();
    ASSERT_EQ(statements.size(), 3u);
    EXPECT_EQ(statements.front(), "BEGIN IMMEDIATE");
    EXPECT_EQ(statements.back(), "COMMIT");
}

TEST_F(Trace, FailureRollsBack)
{
    Ends ends(db);
    take_statements();
    fail_statement(1);
    EXPECT_EQ(add(), 5u);
    EXPECT_EQ(ends.commits, 0);
    EXPECT_EQ(ends.rollbacks, 1);
    EXPECT_EQ(take_statements().back(), "ROLLBACK");
    EXPECT_TRUE(sqlite3_get_autocommit(db));
}

TEST_F(Trace, ValidationFailureRollsBackToo)
{
    Ends ends(db);
    EXPECT_EQ(add("bad"), 8u);
    EXPECT_EQ(ends.commits, 0);
    EXPECT_EQ(ends.rollbacks, 1);
}

TEST_F(Trace, AFailedCommitIsIgnoredAndNothingStaysOpen)
{
    qbdb->log_level = 4;
    const std::string before = content();
    log.clear();
    {
        Ends ends(db);
        ends.refuse = 1;
        EXPECT_EQ(add(), 0u);
        EXPECT_EQ(ends.commits, 1);
        EXPECT_EQ(ends.rollbacks, 1);
    }
    sqlite3_commit_hook(db, nullptr, nullptr);
    sqlite3_rollback_hook(db, nullptr, nullptr);
    expect_no_error();
    EXPECT_THAT(texts(log), ElementsAre(">>>> qbobj_addLog()", "Failed to commit, rolled back. constraint failed",
                                        "<<<< qbobj_addLog() ==> rc=0 (0ms)"));
    EXPECT_EQ(log[1].level, 2u);
    EXPECT_EQ(log[1].flag, 0u);
    EXPECT_TRUE(sqlite3_get_autocommit(db));
    EXPECT_EQ(content(), before);
    EXPECT_EQ(add(), 0u);
    EXPECT_EQ(value("SELECT COUNT(*) FROM `$log`"), "3");
}

TEST_F(Trace, ARefusedCommitStatementIsIgnoredAndNothingStaysOpen)
{
    struct Refuse {
        static int commit(void *, const char *sql, const char *, uint32_t, const char **)
        {
            return strcmp(sql, "COMMIT") == 0 ? 13 : 0;
        }
    };
    const std::string before = content();
    qbdb_set_statement_hook(qbdb, Refuse::commit, nullptr);
    EXPECT_EQ(add(), 0u);
    expect_no_error();
    EXPECT_TRUE(sqlite3_get_autocommit(db));
    EXPECT_EQ(content(), before);
    qbdb_set_statement_hook(qbdb, nullptr, nullptr);
    EXPECT_EQ(add(), 0u);
    EXPECT_EQ(value("SELECT COUNT(*) FROM `$log`"), "3");
}

TEST_F(Trace, CommitDeferredByAReaderStillEnds)
{
    // A statement of the caller's that is in the middle of its rows.
    sqlite3_stmt *reader = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(db, "SELECT id FROM `$log`", -1, &reader, nullptr), SQLITE_OK);
    ASSERT_EQ(sqlite3_step(reader), SQLITE_ROW);
    EXPECT_EQ(add(), 0u);
    EXPECT_TRUE(sqlite3_get_autocommit(db));
    EXPECT_EQ(sqlite3_step(reader), SQLITE_ROW);
    sqlite3_finalize(reader);
    EXPECT_EQ(value("SELECT COUNT(*) FROM `$log`"), "3");
}

// ---- Assertions

using TraceDeathTest = Trace;

TEST_F(TraceDeathTest, EveryOperationAbortsWithoutAnErrorRecord)
{
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) {
        if (strcmp(row->family, "legacy") == 0) continue;  // these have assertions of their own before it
        const QbobjValue nothing[QBOBJ_MAX_ARGUMENTS] = {};
        // The older entry points have a frame of their own, and two of them get by without an error record.
        EXPECT_DEATH(row->call(qbdb, db, nothing, nullptr),
                     std::string("qbobj_api2?.cpp:[0-9]+: ") + row->name + ": Assertion .(err|key). failed");
    }
}

TEST(Assertions, DoNotDependOnTheBuild)
{
    // <cassert> would be silent in a release build: nobody uses it.
    const std::string root = test::source_path();
    const auto found = test::run("grep -rnE 'cassert|assert\\.h|[^_A-Za-z]assert\\(' '" + root + "/src' '" + root +
                                 "/support' --include=*.cpp --include=*.h");
    EXPECT_EQ(found.output, "");
    EXPECT_EQ(found.status, 1);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
