// The journal: which calls it keeps, what it says of them, its bounds, and that a killed writer leaves exactly the
// calls in it that are in the database.
#include "cli/run.h"
#include "qbdb_journal.h"
#include "stress/kill.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

struct Kept {
    int64_t id;
    int64_t time;
    std::string operation;
    std::string who;
    std::string arguments;
    int64_t previous;
    int64_t mark;
    int size;
};

std::vector<Kept> calls_of(qbdb_t *qbdb, sqlite3 *db, int64_t after = 0, uint32_t count = 0)
{
    std::vector<Kept> calls;
    const auto read = [](void *context, const qbdb_journal_entry *entry) {
        static_cast<std::vector<Kept> *>(context)->push_back({entry->id, entry->time, entry->operation, entry->who,
                                                              entry->arguments, entry->previous, entry->mark,
                                                              entry->size});
        return 0;
    };
    EXPECT_EQ(qbdb_journal_read(qbdb, db, after, count, read, &calls), 0);
    return calls;
}

struct Journal : test::Database {
    Journal() { EXPECT_EQ(qbdb_journal_on(qbdb, db, 0, 0), 0); }

    std::vector<Kept> calls(int64_t after = 0, uint32_t count = 0) { return calls_of(qbdb, db, after, count); }
    qbdb_journal_state state()
    {
        qbdb_journal_state now;
        EXPECT_EQ(qbdb_journal_get_state(qbdb, db, &now), 0);
        return now;
    }
    uint32_t add_log(const char *tag) { return qbobj_addLog(qbdb, db, 100, "info", "disk", tag, "", &err); }
};

TEST_F(Journal, KeepsEachCallThatChangedSomething)
{
    EXPECT_EQ(qbdb_set_caller(qbdb, "anna"), 0);
    const auto before = static_cast<int64_t>(time(nullptr));
    EXPECT_EQ(add_log("LOGMSG_A"), 0u);
    LogQuery query{};
    LogEntry *entries = nullptr;
    int32_t count = 0;
    int32_t total = 0;
    EXPECT_EQ(qbobj_getLog(qbdb, db, &query, &entries, &count, &total, &err), 0u);     // reads
    EXPECT_EQ(qbobj_truncateLog(qbdb, db, 10, &err), 0u);                              // finds nothing to do
    EXPECT_NE(qbobj_addLog(qbdb, db, 100, "loud", "disk", "LOGMSG_B", "", &err), 0u);  // is refused
    EXPECT_EQ(qbdb_set_caller(qbdb, nullptr), 0);
    EXPECT_EQ(setServiceEntry(qbdb, db, "LANGUAGE", "de-de", &err), 0u);
    const auto kept = calls();
    ASSERT_EQ(kept.size(), 2u);
    EXPECT_EQ(kept[0].id, 1);
    EXPECT_EQ(kept[0].operation, "qbobj_addLog");
    EXPECT_EQ(kept[0].who, "anna");
    EXPECT_EQ(kept[0].arguments,
              R"({"time":100,"severity":"info","category":"disk","msgTag":"LOGMSG_A","argsXml":""})");
    EXPECT_GE(kept[0].time, before);
    EXPECT_LE(kept[0].time, time(nullptr));
    EXPECT_EQ(kept[1].id, 2);
    EXPECT_EQ(kept[1].operation, "setServiceEntry");
    EXPECT_EQ(kept[1].who, "");
    EXPECT_EQ(kept[1].previous, kept[0].mark);
    EXPECT_EQ(state().mark, kept[1].mark);
    EXPECT_THAT(calls(1), testing::SizeIs(1));
    EXPECT_THAT(calls(0, 1), testing::SizeIs(1));
    EXPECT_THAT(calls(2), IsEmpty());
}

TEST_F(Journal, LeavesSecretsOutOfTheArguments)
{
    User user{};
    user.UserName = "anna \"the\\first\"\n";
    user.Password = "geheim";
    user.SysHash = "$1$saltsalt$hash";
    EXPECT_NE(qbobj_addUser(qbdb, db, &user, &err), 0u);
    user = {};
    user.UserName = "anna";
    user.FullName = "Anna \"A\\\"\n";
    user.Password = "geheim";
    user.SysHash = "$1$saltsalt$hash";
    EXPECT_EQ(qbobj_addUser(qbdb, db, &user, &err), 0u);
    const auto kept = calls();
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_THAT(kept[0].arguments, HasSubstr(R"("FullName":"Anna \"A\\\"\u000a")"));
    EXPECT_THAT(kept[0].arguments, HasSubstr(R"("Password":"●●●●●●●●")"));
    EXPECT_THAT(kept[0].arguments, AllOf(Not(HasSubstr("geheim")), Not(HasSubstr("saltsalt"))));
}

TEST_F(Journal, OfALongCallKeepsTheChangesButNotTheArguments)
{
    const std::string text(100 << 10, 'x');
    EXPECT_EQ(qbobj_addLog(qbdb, db, 100, "info", "disk", "LOGMSG_A", text.c_str(), &err), 0u);
    ASSERT_EQ(calls().size(), 1u);
    EXPECT_EQ(calls()[0].arguments, R"({"left out":"the arguments are too long"})");
    EXPECT_GT(calls()[0].size, 100 << 10);
}

TEST_F(Journal, KeepsATransactionOfAnyCaller)
{
    EXPECT_EQ(qbdb_journal_wants(qbdb, db), 0);
    EXPECT_EQ(qbdb_sql_begin(qbdb, db, 0, "journal_test.cpp", 1), 0u);
    EXPECT_EQ(qbdb_journal_wants(qbdb, db), 1);
    const char *text = nullptr;
    EXPECT_EQ(qbdb_sql_exec_mprintf(qbdb, db, &text, "journal_test.cpp", 1, "INSERT INTO host VALUES(1,'a')"), 0);
    qbdb_journal_call(qbdb, db, "mine", "{\"a\":1}");
    EXPECT_EQ(qbdb_sql_commit(qbdb, db, 0, "journal_test.cpp", 1), 0u);
    EXPECT_EQ(qbdb_sql_begin(qbdb, db, 0, "journal_test.cpp", 1), 0u);
    EXPECT_EQ(qbdb_sql_exec_mprintf(qbdb, db, &text, "journal_test.cpp", 1, "DELETE FROM host"), 0);
    EXPECT_EQ(qbdb_sql_commit(qbdb, db, 0, "journal_test.cpp", 1), 0u);
    const auto kept = calls();
    ASSERT_EQ(kept.size(), 2u);
    EXPECT_EQ(kept[0].operation + kept[0].arguments, "mine{\"a\":1}");
    EXPECT_EQ(kept[1].operation + kept[1].arguments, "{}");
}

TEST_F(Journal, WithoutMemoryForItsWordsNothingIsCommitted)
{
    EXPECT_EQ(qbdb_sql_begin(qbdb, db, 0, "journal_test.cpp", 1), 0u);
    const char *text = nullptr;
    EXPECT_EQ(qbdb_sql_exec_mprintf(qbdb, db, &text, "journal_test.cpp", 1, "INSERT INTO host VALUES(1,'a')"), 0);
    qbdb_journal_call(qbdb, db, "mine", nullptr);
    EXPECT_EQ(qbdb_sql_commit(qbdb, db, 0, "journal_test.cpp", 1), static_cast<uint32_t>(SQLITE_NOMEM));
    EXPECT_EQ(value("SELECT COUNT(*) FROM host"), "0");
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(Journal, KeepsNothingOfATrialOrOfAFailedCommit)
{
    EXPECT_EQ(qbdb_changes_begin(qbdb, QBDB_CHANGES_DISCARD), 0);
    EXPECT_EQ(add_log("LOGMSG_A"), 0u);
    void *changes = nullptr;
    int size = 0;
    EXPECT_EQ(qbdb_changes_end(qbdb, &changes, &size), 0);
    EXPECT_GT(size, 0);
    sqlite3_free(changes);
    fail_statement(0);
    const auto refuse = [](void *, const char *sql, const char *, uint32_t, const char **why) {
        *why = "injected";
        return std::string(sql) == "COMMIT" ? SQLITE_FULL : 0;
    };
    qbdb_set_statement_hook(qbdb, refuse, nullptr);
    add_log("LOGMSG_B");
    qbdb_set_statement_hook(qbdb, nullptr, nullptr);
    EXPECT_EQ(add_log("LOGMSG_C"), 0u);
    const auto kept = calls();
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_THAT(kept[0].arguments, HasSubstr("LOGMSG_C"));
    EXPECT_EQ(kept[0].id, 1);
}

TEST_F(Journal, IsNoticedByHandlesThatWereOpenBefore)
{
    stress::Handle other(path, QBDB_OPEN_EXISTING);
    ASSERT_EQ(other.rc, 0) << other.why;
    EXPECT_EQ(qbobj_addLog(other.qbdb, other.db, 1, "info", "disk", "LOGMSG_A", "", &other.err), 0u);
    EXPECT_EQ(qbdb_journal_off(qbdb, db), 0);
    EXPECT_EQ(qbobj_addLog(other.qbdb, other.db, 1, "info", "disk", "LOGMSG_B", "", &other.err), 0u);
    EXPECT_EQ(qbdb_journal_on(qbdb, db, 0, 0), 0);
    EXPECT_EQ(qbobj_addLog(other.qbdb, other.db, 1, "info", "disk", "LOGMSG_C", "", &other.err), 0u);
    const auto kept = calls();
    ASSERT_EQ(kept.size(), 2u);
    EXPECT_THAT(kept[1].arguments, HasSubstr("LOGMSG_C"));
    EXPECT_NE(kept[1].previous, kept[0].mark) << "there is a gap between the two";
    EXPECT_EQ(state().since, 1);
}

TEST_F(Journal, StaysWithinItsBounds)
{
    constexpr uint64_t kBytes = 4000;
    EXPECT_EQ(qbdb_journal_on(qbdb, db, kBytes, 0), 0);
    for (int i = 0; i < 50; i++) {
        EXPECT_EQ(add_log(("LOGMSG_" + std::to_string(i)).c_str()), 0u);
        EXPECT_LE(state().bytes, kBytes);
    }
    const auto kept = calls();
    EXPECT_GT(kept.size(), 3u);
    EXPECT_LT(kept.size(), 50u);
    EXPECT_EQ(kept.back().id, 50);
    EXPECT_EQ(state().first, kept.front().id);
    EXPECT_EQ(state().bytes,
              std::stoull(value("SELECT SUM(LENGTH(operation)+LENGTH(who)+LENGTH(arguments)+LENGTH(changes)"
                                "+100) FROM _journal")));
    // The newest one stays, whatever its size.
    const std::string text(3000, 'x');  // in the arguments and in the row
    EXPECT_EQ(qbobj_addLog(qbdb, db, 100, "info", "disk", "LOGMSG_A", text.c_str(), &err), 0u);
    EXPECT_EQ(calls().size(), 1u);
    EXPECT_EQ(add_log("LOGMSG_A"), 0u);
    EXPECT_EQ(calls().size(), 1u);
}

TEST_F(Journal, ForgetsWhatIsOld)
{
    EXPECT_EQ(qbdb_journal_on(qbdb, db, 0, 1000), 0);
    for (const char *tag : {"LOGMSG_A", "LOGMSG_B", "LOGMSG_C"}) EXPECT_EQ(add_log(tag), 0u);
    sql("UPDATE _journal SET time=time-2000 WHERE id<3");
    EXPECT_EQ(add_log("LOGMSG_D"), 0u);
    EXPECT_EQ(calls().size(), 2u);
    EXPECT_EQ(calls()[0].id, 3);
}

TEST_F(Journal, IsSwitchedByTheOwnConnectionAndOutsideOfTransactions)
{
    stress::Handle reader(path, QBDB_OPEN_READONLY);
    EXPECT_EQ(qbdb_journal_on(reader.qbdb, reader.db, 0, 0), SQLITE_READONLY);
    EXPECT_EQ(qbdb_journal_on(qbdb, reader.db, 0, 0), SQLITE_MISUSE);
    EXPECT_EQ(calls_of(reader.qbdb, reader.db).size(), 0u);
    EXPECT_EQ(qbdb_sql_begin(qbdb, db, 0, "journal_test.cpp", 1), 0u);
    EXPECT_EQ(qbdb_journal_off(qbdb, db), SQLITE_ERROR);
    EXPECT_EQ(qbdb_sql_rollback(qbdb, db, 0, "journal_test.cpp", 1), 0u);
    EXPECT_EQ(state().on, 1);
}

TEST(NoJournal, IsNoFailure)
{
    struct Plain : test::Database {
        void TestBody() override {}
    } plain;
    const std::string before = plain.content();
    qbdb_journal_state state;
    EXPECT_EQ(qbdb_journal_get_state(plain.qbdb, plain.db, &state), 0);
    EXPECT_EQ(state.on, 0);
    EXPECT_THAT(calls_of(plain.qbdb, plain.db), IsEmpty());
    EXPECT_EQ(qbdb_journal_off(plain.qbdb, plain.db), 0);
    EXPECT_EQ(plain.content(), before) << "a database without a journal has nothing of it";
}

// ---- Crashes

uint32_t make(stress::Handle &handle, uint32_t number)
{
    const std::string text = std::to_string(number);
    qbdb_request_begin(handle.qbdb);
    if (number % 3 == 0) {
        User user{};
        const std::string name = "user" + text;
        user.UserName = name.c_str();
        return qbobj_addUser(handle.qbdb, handle.db, &user, &handle.err);
    }
    if (number % 3 == 1) return setServiceEntry(handle.qbdb, handle.db, ("KEY" + text).c_str(), "value", &handle.err);
    return qbobj_addLog(handle.qbdb, handle.db, static_cast<int32_t>(number), "info", "disk", "LOGMSG_A", "",
                        &handle.err);
}

/// What the database holds of a call.
bool is_stored(const stress::Handle &handle, uint32_t number)
{
    const std::string text = std::to_string(number);
    const std::string sql = number % 3 == 0   ? "SELECT COUNT(*) FROM `$user` WHERE uname='user" + text + "'"
                            : number % 3 == 1 ? "SELECT COUNT(*) FROM service_misc WHERE key='KEY" + text + "'"
                                              : "SELECT COUNT(*) FROM `$log` WHERE tstamp=" + text;
    return handle.number(sql.c_str()) == 1;
}

/// A call that is begun, and then done.
struct Report {
    uint32_t number;
    bool done;
};

TEST(JournalCrash, AKilledWriterLeavesExactlyTheCallsThatAreInTheDatabase)
{
    const long kills = stress::amount("QBOBJ_KILLS", 500, 40);
    stress::Random random(7);
    long acknowledged = 0;
    long whole = 0;
    std::unique_ptr<stress::Directory> directory;
    std::string path;
    std::vector<uint32_t> expected;  // the journal's calls, in order
    uint32_t next = 1;
    for (long i = 0; i < kills && !testing::Test::HasFailure(); i++) {
        SCOPED_TRACE("kill " + std::to_string(i));
        if (i % 20 == 0) {
            directory = std::make_unique<stress::Directory>();
            path = directory->file("a.db");
            expected.clear();
            stress::Handle handle(path, QBDB_OPEN_CREATE, "tank");
            ASSERT_EQ(qbdb_journal_on(handle.qbdb, handle.db, 0, 0), 0);
        }
        const auto reports = stress::kill_after<Report>(static_cast<int>(2000 + random.below(25000)), [&](int pipe) {
            stress::Handle handle(path, QBDB_OPEN_EXISTING);
            for (uint32_t number = next; stress::send(pipe, Report{number, false}) && make(handle, number) == 0;
                 number++)
                stress::send(pipe, Report{number, true});
        });
        for (const Report &report : reports)
            if (report.done) expected.push_back(report.number), acknowledged++;
        const bool under_way = !reports.empty() && !reports.back().done;
        stress::Handle handle(path, QBDB_OPEN_EXISTING);
        ASSERT_EQ(handle.rc, 0) << handle.why;
        if (!reports.empty()) next = reports.back().number + 1;
        if (under_way && is_stored(handle, reports.back().number)) expected.push_back(reports.back().number), whole++;
        const auto kept = calls_of(handle.qbdb, handle.db);
        ASSERT_EQ(kept.size(), expected.size());
        for (size_t at = 0; at < kept.size(); at++) {
            EXPECT_EQ(kept[at].id, static_cast<int64_t>(at + 1));
            EXPECT_THAT(kept[at].arguments, testing::ContainsRegex("[^0-9]" + std::to_string(expected[at]) + "[^0-9]"));
            EXPECT_TRUE(is_stored(handle, expected[at]));
            if (at) {
                EXPECT_EQ(kept[at].previous, kept[at - 1].mark);
            }
        }
        EXPECT_EQ(handle.value("PRAGMA integrity_check"), "ok");
    }
    printf(
        "%ld kills: %ld calls acknowledged, all in the journal and in the database; %ld that were not yet acknowledged "
        "are in both\n",
        kills, acknowledged, whole);
    EXPECT_GT(acknowledged, kills);
}

// ---- The command line

struct JournalOfTheProgram : test::Program {};

TEST_F(JournalOfTheProgram, IsSwitchedListedAndShown)
{
    EXPECT_EQ(call({"journal", "list", "--compact"}).out, "[]\n");
    EXPECT_EQ(call({"journal", "on", "--max-size", "1", "--max-age", "2"}).status, 0);
    EXPECT_EQ(call({"journal", "status", "--compact"}).out,
              "{\"on\":true,\"first\":0,\"last\":0,\"bytes\":0,\"max_bytes\":1048576,\"max_days\":2}\n");
    EXPECT_EQ(call({"--who", "anna", "addUser", "UserName=carla", "Password=-"}, "geheim\n").status, 0);
    EXPECT_EQ(call({"setServiceEntry", "LANGUAGE", "de-de"}).status, 0);
    const std::string list = call({"journal", "list", "--compact"}).out;
    EXPECT_THAT(list, HasSubstr(R"("who":"anna","operation":"addUser","rows":3,"undoes":null,"arguments":{"user":[{)"));
    EXPECT_THAT(list, HasSubstr(R"("operation":"setServiceEntry")"));
    EXPECT_THAT(list, Not(HasSubstr("geheim")));
    EXPECT_THAT(call({"journal", "list", "1", "--compact"}).out, Not(HasSubstr("addUser")));
    const std::string shown = call({"journal", "show", "1", "--compact"}).out;
    EXPECT_THAT(shown, HasSubstr(R"("column":"passwd","before":null,"after":"●●●●●●●●")"));
    EXPECT_THAT(shown, Not(HasSubstr("$1$")));
    EXPECT_THAT(call({"journal", "show", "--table"}).out, HasSubstr("operation  setServiceEntry\n"));
    EXPECT_EQ(call({"journal", "off"}).status, 0);
    EXPECT_EQ(call({"addGroup", "GroupName=a"}).status, 0);
    EXPECT_THAT(call({"journal", "status", "--compact"}).out, HasSubstr(R"({"on":false,"first":1,"last":2,)"));
}

TEST_F(JournalOfTheProgram, RefusesWhatItDoesNotKnow)
{
    EXPECT_EQ(call({"journal", "on"}).status, 0);
    const test::Result missing = call({"journal", "show", "9"});
    EXPECT_EQ(missing.status, 3);
    EXPECT_EQ(missing.err, "qbobj: journal: it holds no call 9\n");
    EXPECT_EQ(call({"journal", "on", "9"}).err, "qbobj: journal on: takes no number\n");
    EXPECT_EQ(call({"journal", "burn"}).status, 2);
    EXPECT_EQ(call({"journal", "show", "x"}).status, 2);
    EXPECT_EQ(call({"journal"}).err,
              "qbobj: journal: the ACTION is missing; \"qbobj help journal\" says how it is called\n");
    EXPECT_EQ(call({"--read-only", "journal", "off"}).status, 4);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
