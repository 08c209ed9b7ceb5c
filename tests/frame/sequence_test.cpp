// The frame's sequence call by call. The frame is compiled here once more, in a namespace of its own, over
// a support library and a clock that only write down what they are asked.
#include <time.h>

#include <cstdarg>
#include <string>
#include <vector>

#include "fixture/fixture.h"

namespace {

std::vector<std::string> calls;
std::vector<time_t> clock_readings;
uint32_t begin_answer;
uint32_t commit_answer;
uint32_t worker_answer;
bool worker_lacks_memory;
std::vector<std::string> places;

void called(const std::string &what, const char *file, uint32_t line)
{
    calls.push_back(what);
    places.push_back(std::string(file) + ":" + std::to_string(line));
}

namespace fake {

time_t time(time_t *)
{
    calls.push_back("time");
    if (clock_readings.empty()) return 0;
    const time_t now = clock_readings.front();
    clock_readings.erase(clock_readings.begin());
    return now;
}

uint32_t begin(qbdb_t *, sqlite3 *, int flags, const char *file, uint32_t line)
{
    called("begin " + std::to_string(flags), file, line);
    return begin_answer;
}

uint32_t reading(qbdb_t *, sqlite3 *, int flags, const char *file, uint32_t line)
{
    called("begin reading " + std::to_string(flags), file, line);
    return begin_answer;
}

/// Null when the support library has no such call.
decltype(&reading) begin_read;

int wants(const qbdb_t *, const sqlite3 *)
{
    calls.push_back("journal?");
    return 1;
}

/// Null when the support library keeps no journal.
decltype(&wants) journal_wants;

uint32_t commit(qbdb_t *, sqlite3 *, int flags, const char *file, uint32_t line)
{
    called("commit " + std::to_string(flags), file, line);
    return commit_answer;
}

uint32_t rollback(qbdb_t *, sqlite3 *, int flags, const char *file, uint32_t line)
{
    called("rollback " + std::to_string(flags), file, line);
    return 99;
}

__attribute__((format(printf, 6, 7))) void log(qbdb_t *, const char *file, uint32_t line, uint32_t level, uint32_t flag,
                                               const char *format, ...)
{
    char text[256];
    va_list args;
    va_start(args, format);
    vsnprintf(text, sizeof text, format, args);
    va_end(args);
    called("log " + std::to_string(level) + " " + std::to_string(flag) + " " + text, file, line);
}

void dump(qbdb_t *, const QbobjField *type, const void *record, int depth, const char *file, uint32_t line)
{
    called(std::string("dump ") + type->name + (record ? "" : " null") + " " + std::to_string(depth), file, line);
}

}  // namespace fake
}  // namespace

#include "frame/optional_calls.h"
#define time(pointer) fake::time(pointer)
#define qbdb_sql_begin fake::begin
#define qbdb_sql_begin_read fake::begin_read
#define qbdb_journal_wants fake::journal_wants
#define qbdb_sql_commit fake::commit
#define qbdb_sql_rollback fake::rollback
#define qbdb_log fake::log
#define qbobj_api2_utils_dump_object fake::dump
#define qb qb_over_fakes
#include "frame/field_table.h"
#include "frame/frame.h"

namespace qb {

QB_RECORD(LogQuery, 0, F(limit), F(offset), F(order), F(timestamp_min), F(timestamp_max), F(severity), F(severity_in),
          F(category_in), F(msg_tag))
QB_RECORD(LogEntry, 0, F(LogId), F(TimeStamp), F(Severity), F(Category), F(MessageTag), F(MessageArgsXml))
QB_RECORD(ResourceId, 0, F(resource_id))

uint32_t report(CallContext *ctx, uint32_t code, const char *file, uint32_t line, const char *, ...)
{
    called("report " + std::to_string(code), file, line);
    *ctx->err = {code, file, line, "reported"};
    return code;
}

void note_call(qbdb_t *, sqlite3 *, const char *operation, const QbobjValue *values)
{
    calls.push_back(std::string("journal: ") + operation + " " + std::to_string(values[1].i) + " " + values[2].s);
}

struct AssertionFailed {
    std::string text;
};

void assertion_failed(const char *text, const char *file, uint32_t line, const char *function)
{
    throw AssertionFailed{std::string(file) + ":" + (line ? "line" : "") + " " + function + " " + text};
}

}  // namespace qb

namespace {

using testing::ElementsAre;

ErrorInfo *worker_err;

uint32_t worker(qb::CallContext *ctx, sqlite3 *, LogQuery *, int32_t number, const char *text, LogEntry **entries,
                const ResourceId *id, const char **out)
{
    calls.push_back("worker " + std::to_string(number) + " " + text);
    EXPECT_EQ(ctx->err->code, 0u);
    EXPECT_EQ(ctx->err->file, nullptr);
    EXPECT_EQ(ctx->err->line, 0u);
    EXPECT_EQ(ctx->err->message, nullptr);
    EXPECT_NE(ctx->qbdb, nullptr);
    EXPECT_NE(id, nullptr);
    EXPECT_NE(out, nullptr);
    worker_err = ctx->err;
    if (entries) {
        static LogEntry entry;
        *entries = &entry;
    }
    ctx->short_of_memory = worker_lacks_memory;
    return worker_answer;
}

int32_t value_worker(qb::CallContext *ctx, sqlite3 *)
{
    ctx->short_of_memory = worker_lacks_memory;
    return static_cast<int32_t>(worker_answer);
}

struct Sequence : testing::Test {
    qbdb_t handle{};
    ErrorInfo err{77, "f", 8, "old"};
    LogEntry *entries = nullptr;
    const char *out = nullptr;
    ResourceId id{};
    LogEntry **head = &entries;
    uint32_t line = 0;

    Sequence()
    {
        calls.clear();
        places.clear();
        clock_readings.clear();
        begin_answer = commit_answer = worker_answer = 0;
        worker_lacks_memory = false;
        worker_err = nullptr;
        fake::begin_read = fake::reading;
        fake::journal_wants = nullptr;
    }
    uint32_t call(uint32_t level, ErrorInfo *record)
    {
        handle.log_level = level;
        line = __LINE__ + 1;
        return qb::run_framed<worker>("qbobj_getThing", &handle, nullptr, record, static_cast<LogQuery *>(nullptr), 5,
                                  "word", head, static_cast<const ResourceId *>(&id), &out);
    }
};

TEST_F(Sequence, EverythingAtLevelFive)
{
    EXPECT_EQ(call(5, &err), 0u);
    EXPECT_THAT(calls, ElementsAre("time", "log 4 0 >>>> qbobj_getThing()\n", "time", "begin 0", "dump LogQuery null 0",
                                   "dump LogEntry null 0", "dump ResourceId 0", "worker 5 word", "dump LogQuery null 0",
                                   "dump LogEntry 0", "dump ResourceId 0", "commit 0",
                                   "log 4 0 <<<< qbobj_getThing() ==> rc=0 (0ms)\n"));
    EXPECT_EQ(worker_err, &err);
    for (const std::string &place : places) EXPECT_EQ(place, "sequence_test.cpp:" + std::to_string(line));
}

TEST_F(Sequence, NothingIsFormattedOrDumpedBelowItsLevel)
{
    for (const uint32_t level : {0, 1, 2, 3}) {
        calls.clear();
        EXPECT_EQ(call(level, &err), 0u);
        EXPECT_THAT(calls, ElementsAre("time", "time", "begin 0", "worker 5 word", "commit 0")) << level;
    }
    calls.clear();
    EXPECT_EQ(call(4, &err), 0u);
    EXPECT_THAT(calls, ElementsAre("time", "log 4 0 >>>> qbobj_getThing()\n", "time", "begin 0", "worker 5 word",
                                   "commit 0", "log 4 0 <<<< qbobj_getThing() ==> rc=0 (0ms)\n"));
}

TEST_F(Sequence, AboveLevelFiveAsAtFive)
{
    EXPECT_EQ(call(5, &err), 0u);
    entries = nullptr;
    const auto at_five = std::exchange(calls, {});
    EXPECT_EQ(call(UINT32_MAX, &err), 0u);
    EXPECT_EQ(calls, at_five);
}

TEST_F(Sequence, AFailedWorkerIsRolledBackAndNotDumpedAgain)
{
    worker_answer = 800;
    EXPECT_EQ(call(5, &err), 800u);
    EXPECT_THAT(calls, ElementsAre("time", "log 4 0 >>>> qbobj_getThing()\n", "time", "begin 0", "dump LogQuery null 0",
                                   "dump LogEntry null 0", "dump ResourceId 0", "worker 5 word", "rollback 0",
                                   "log 4 0 <<<< qbobj_getThing() ==> rc=800 (0ms)\n"));
}

TEST_F(Sequence, AWorkerThatLackedMemoryHasNotSucceeded)
{
    worker_lacks_memory = true;
    EXPECT_EQ(call(5, &err), 2u);
    EXPECT_THAT(calls, ElementsAre("time", "log 4 0 >>>> qbobj_getThing()\n", "time", "begin 0", "dump LogQuery null 0",
                                   "dump LogEntry null 0", "dump ResourceId 0", "worker 5 word", "report 2",
                                   "rollback 0", "log 4 0 <<<< qbobj_getThing() ==> rc=2 (0ms)\n"));
    EXPECT_EQ(err.code, 2u);
    EXPECT_EQ(err.line, line);
    calls.clear();
    worker_answer = 5;
    EXPECT_EQ(call(0, &err), 5u) << "it has reported what failed";
    EXPECT_THAT(calls, ElementsAre("time", "time", "begin 0", "worker 5 word", "rollback 0"));
}

TEST_F(Sequence, AValueThatLackedMemoryIsNone)
{
    for (const uint32_t value : {0u, 1u, 100u, UINT32_MAX}) {
        worker_answer = value;
        worker_lacks_memory = false;
        EXPECT_EQ(qb::run_framed<value_worker>("qbobj_getThing", &handle, nullptr, &err), value);
        worker_lacks_memory = true;
        calls.clear();
        EXPECT_EQ(qb::run_framed<value_worker>("qbobj_getThing", &handle, nullptr, &err), UINT32_MAX);
        EXPECT_THAT(calls, ElementsAre("time", "time", "begin 0", "rollback 0"));
        EXPECT_EQ(err.code, 0u);
    }
}

TEST_F(Sequence, AFailedBeginSkipsTheWorkerButRollsBack)
{
    begin_answer = 5;
    EXPECT_EQ(call(5, &err), 5u);
    EXPECT_THAT(calls, ElementsAre("time", "log 4 0 >>>> qbobj_getThing()\n", "time", "begin 0", "rollback 0",
                                   "log 4 0 <<<< qbobj_getThing() ==> rc=5 (0ms)\n"));
    EXPECT_EQ(err.code, 0u);
    EXPECT_EQ(err.file, nullptr);
    EXPECT_EQ(err.line, 0u);
    EXPECT_EQ(err.message, nullptr);
}

TEST_F(Sequence, TheJournalIsToldOfAChangeBeforeTheWorkerRuns)
{
    fake::journal_wants = fake::wants;
    EXPECT_EQ(call(0, &err), 0u);
    EXPECT_THAT(calls, ElementsAre("time", "time", "begin 0", "journal?", "journal: qbobj_getThing 5 word",
                                   "worker 5 word", "commit 0"));
    qb::Site site = "qbobj_getThing";
    site.access = qb::Access::reads;
    calls.clear();
    EXPECT_EQ(qb::run_framed<value_worker>(site, &handle, nullptr, &err), 0u);
    EXPECT_THAT(calls, ElementsAre("time", "time", "begin reading 0", "commit 0"));
}

TEST_F(Sequence, OnlyAReaderBeginsAsOneWhereTheSupportLibraryKnowsHow)
{
    qb::Site site = "qbobj_getThing";
    for (const auto &[access, known, first] :
         {std::tuple{qb::Access::reads, &fake::reading, "begin reading 0"},
          {qb::Access::reads, decltype(&fake::reading)(nullptr), "begin 0"},
          {qb::Access::changes, &fake::reading, "begin 0"}}) {
        site.access = access;
        fake::begin_read = known;
        calls.clear();
        EXPECT_EQ(qb::run_framed<value_worker>(site, &handle, nullptr, &err), 0u);
        EXPECT_THAT(calls, ElementsAre("time", "time", first, "commit 0"));
    }
    begin_answer = 5;
    site.access = qb::Access::reads;
    fake::begin_read = fake::reading;
    calls.clear();
    EXPECT_EQ(qb::run_framed<value_worker>(site, &handle, nullptr, &err), 5u);
    EXPECT_THAT(calls, ElementsAre("time", "time", "begin reading 0", "rollback 0"));
}

TEST_F(Sequence, TheCommitsResultIsIgnored)
{
    commit_answer = 13;
    EXPECT_EQ(call(4, &err), 0u);
    EXPECT_EQ(calls.back(), "log 4 0 <<<< qbobj_getThing() ==> rc=0 (0ms)\n");
    EXPECT_EQ(err.code, 0u);
}

TEST_F(Sequence, ElapsedIsTheDifferenceOfTheFirstTwoReadings)
{
    for (const auto &[first, second, text] : {std::tuple<time_t, time_t, const char *>{1000, 1000, "(0ms)"},
                                              {1000, 1001, "(1ms)"},
                                              {1000, 5000000000, "(4999999000ms)"}}) {
        calls.clear();
        clock_readings = {first, second, 9999999999};
        EXPECT_EQ(call(4, &err), 0u);
        EXPECT_EQ(calls.back(), std::string("log 4 0 <<<< qbobj_getThing() ==> rc=0 ") + text + "\n");
        EXPECT_EQ(clock_readings.size(), 1u) << "the clock is read twice";
    }
}

TEST_F(Sequence, NoErrorRecordFailsBeforeAnythingHappens)
{
    try {
        call(5, nullptr);
        ADD_FAILURE() << "goes on without an error record";
    } catch (const qb::AssertionFailed &failed) {
        EXPECT_EQ(failed.text, "sequence_test.cpp:line qbobj_getThing err");
    }
    EXPECT_THAT(calls, ElementsAre("time"));
}

TEST_F(Sequence, NoListHeadIsDumpedAsAnEmptyList)
{
    head = nullptr;
    EXPECT_EQ(call(5, &err), 0u);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "dump LogEntry null 0"), 2);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
