// Copies that follow a database: over files and over a pipe, whoever is killed, and what is refused.
#include <set>

#include "cli/run.h"
#include "command_line.h"
#include "qbdb_standby.h"
#include "stress/stress.h"

using testing::HasSubstr;
using testing::StartsWith;

namespace {

/// Everything in a database, the journal included. Rows are known by what they hold.
std::set<std::string> content_of(const std::string &path)
{
    std::multiset<std::string> all;
    const stress::Handle handle(path, QBDB_OPEN_READONLY);
    EXPECT_EQ(handle.rc, 0) << handle.why;
    sqlite3_stmt *tables = nullptr;
    sqlite3_prepare_v2(handle.db, "SELECT name FROM sqlite_schema WHERE type='table' AND name<>'sqlite_sequence'", -1,
                       &tables, nullptr);
    while (sqlite3_step(tables) == SQLITE_ROW) {
        const std::string name = reinterpret_cast<const char *>(sqlite3_column_text(tables, 0));
        sqlite3_stmt *rows = nullptr;
        sqlite3_prepare_v2(handle.db, ("SELECT * FROM \"" + name + "\"").c_str(), -1, &rows, nullptr);
        while (sqlite3_step(rows) == SQLITE_ROW) {
            std::string row = name + ":";
            for (int i = 0; i < sqlite3_column_count(rows); i++) {
                const auto *bytes = static_cast<const char *>(sqlite3_column_blob(rows, i));
                row += std::to_string(sqlite3_column_type(rows, i)) +
                       std::string(bytes ? bytes : "", static_cast<size_t>(sqlite3_column_bytes(rows, i))) + "|";
            }
            all.insert(row);
        }
        sqlite3_finalize(rows);
    }
    sqlite3_finalize(tables);
    // Equal rows are numbered, so that a set tells them apart.
    std::set<std::string> numbered;
    std::string last;
    int count = 0;
    for (const std::string &row : all) {
        count = row == last ? count + 1 : 0;
        last = row;
        numbered.insert(row + "#" + std::to_string(count));
    }
    return numbered;
}

struct Standby : test::Program {
    std::string copy = directory.path + "/copy.db";

    Standby() { EXPECT_EQ(call({"journal", "on"}).status, 0); }
    test::Result follow() const { return run({"follow", "--from", path, "--to", copy, "--once", "--compact"}); }
    void make_calls() const
    {
        EXPECT_EQ(call({"addGroup", "GroupName=staff"}).status, 0);
        EXPECT_EQ(call({"addUser", "UserName=anna", "Password=-"}, "geheim\n").status, 0);
        EXPECT_EQ(call({"setServiceEntry", "KEY", "value"}).status, 0);
        EXPECT_EQ(call({"undo"}).status, 0);
    }
    void change(const std::string &file, const char *sql) const
    {
        sqlite3 *db = nullptr;
        EXPECT_EQ(sqlite3_open(file.c_str(), &db), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(db);
        sqlite3_close(db);
    }
};

TEST_F(Standby, StartsFromABackupAndFollows)
{
    make_calls();
    test::Result result = follow();
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "{\"applied\":0,\"last\":4}\n");
    struct stat status {};
    EXPECT_EQ(stat(copy.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    EXPECT_EQ(call({"deleteUser", "UserId=100"}).status, 0);
    EXPECT_EQ(call({"addGroup", "GroupName=crew"}).status, 0);
    EXPECT_NE(content_of(copy), content_of(path));
    EXPECT_EQ(follow().out, "{\"applied\":2,\"last\":6}\n");
    EXPECT_EQ(content_of(copy), content_of(path));
    EXPECT_EQ(follow().out, "{\"applied\":0,\"last\":6}\n");
}

TEST_F(Standby, FollowsOverAPipe)
{
    EXPECT_EQ(follow().status, 0);
    make_calls();
    const test::Result stream = call({"journal", "stream"});
    EXPECT_EQ(stream.status, 0) << stream.err;
    test::Result applied = run({"-d", copy, "--compact", "journal", "apply"}, stream.out);
    EXPECT_EQ(applied.status, 0) << applied.err;
    EXPECT_EQ(applied.out, "{\"applied\":4,\"last\":4}\n");
    EXPECT_EQ(content_of(copy), content_of(path));
    // Once more: each call is there already.
    EXPECT_EQ(run({"-d", copy, "--compact", "journal", "apply"}, stream.out).out, "{\"applied\":0,\"last\":4}\n");
    EXPECT_EQ(content_of(copy), content_of(path));
    EXPECT_EQ(call({"journal", "stream", "3"}).out.find("\"call\":3"), std::string::npos);
}

TEST_F(Standby, ADamagedStreamAppliesNothingOfTheCall)
{
    EXPECT_EQ(follow().status, 0);
    make_calls();
    const std::string stream = call({"journal", "stream"}).out;
    const auto before = content_of(copy);
    const auto apply = [&](const std::string &text) {
        const test::Result result = run({"-d", copy, "journal", "apply"}, text);
        EXPECT_NE(result.status, 0);
        EXPECT_EQ(content_of(copy), before);
        return result.err;
    };
    EXPECT_EQ(apply("nonsense\n"), "qbobj: line 1 of the stream is no call; nothing of it was applied\n");
    EXPECT_EQ(apply(stream.substr(0, 200)), "qbobj: the stream ends within line 1; nothing of it was applied\n");
    std::string damaged = stream;
    const size_t digit = damaged.find("\"changes\":\"") + 40;
    damaged[digit] = damaged[digit] == '0' ? '1' : '0';
    EXPECT_EQ(apply(damaged), "qbobj: call 1 is damaged; nothing of it was applied\n");
    EXPECT_EQ(apply(stream.substr(stream.find('\n') + 1)),
              "qbobj: call 2 cannot follow call 0: those between are missing\n");
    EXPECT_EQ(run({"-d", copy, "journal", "apply"}, stream).status, 0) << "the whole one is taken afterwards";
    EXPECT_EQ(content_of(copy), content_of(path));
}

TEST_F(Standby, RefusesACopyThatWasChangedBySomebodyElse)
{
    make_calls();
    EXPECT_EQ(follow().status, 0);
    // By the library: the copy has a call of its own.
    EXPECT_EQ(run({"-d", copy, "addGroup", "GroupName=own"}).status, 0);
    test::Result refused = follow();
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err,
              "qbobj: the copy was changed by somebody else, or is one of another database; make it anew\n");
    EXPECT_EQ(call({"addGroup", "GroupName=theirs"}).status, 0);
    EXPECT_EQ(follow().err, refused.err);
    EXPECT_EQ(call({"addGroup", "GroupName=more"}).status, 0);
    EXPECT_THAT(follow().err, StartsWith("qbobj: call 6 does not continue the copy: "));
    EXPECT_EQ(run({"-d", copy, "journal", "apply"}, call({"journal", "stream"}).out).err,
              "qbobj: the copy was changed by somebody else: it has a call 5 of its own\n");
}

TEST_F(Standby, RefusesACopyWhoseRowsWereChangedBehindTheJournal)
{
    make_calls();
    EXPECT_EQ(follow().status, 0);
    change(copy, "UPDATE `$group` SET gname='other' WHERE id=100; UPDATE account_default SET next_uid=500");
    EXPECT_EQ(call({"modifyGroup", "resource_id=100", "GroupName=crew"}).status, 0);
    const auto before = content_of(copy);
    const test::Result refused = follow();
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.err, StartsWith("qbobj: the copy was changed by somebody else: $group id=100 (cannot "));
    EXPECT_EQ(content_of(copy), before);
}

TEST_F(Standby, RefusesAGapInTheJournal)
{
    make_calls();
    EXPECT_EQ(follow().status, 0);
    EXPECT_EQ(call({"journal", "off"}).status, 0);
    EXPECT_EQ(follow().err, "qbobj: the original keeps no journal: \"qbobj journal on\"\n");
    EXPECT_EQ(call({"addGroup", "GroupName=unseen"}).status, 0);
    EXPECT_EQ(call({"journal", "on"}).status, 0);
    EXPECT_THAT(follow().err, HasSubstr("make it anew"));
    EXPECT_EQ(call({"addGroup", "GroupName=seen"}).status, 0);
    EXPECT_THAT(follow().err, StartsWith("qbobj: call 5 does not continue the copy: "));
    change(path, "DELETE FROM _journal WHERE id<6");
    EXPECT_EQ(follow().err, "qbobj: the journal does not hold call 5 any more; make the copy anew\n");
}

TEST_F(Standby, IsNoOtherDatabaseAndNothingThatIsThereIsOverwritten)
{
    EXPECT_EQ(run({"init", copy}).status, 0);
    EXPECT_EQ(run({"-d", copy, "journal", "on"}).status, 0);
    make_calls();
    EXPECT_THAT(follow().err, StartsWith("qbobj: call 1 does not continue the copy: "));
    stress::Handle handle(path, QBDB_OPEN_EXISTING);
    char why[512] = "";
    EXPECT_EQ(qbdb_copy_database(handle.qbdb, handle.db, copy.c_str(), why, sizeof why), SQLITE_CANTOPEN);
    EXPECT_EQ(std::string(why), copy + ": is there already");
    EXPECT_EQ(qbdb_copy_database(handle.qbdb, handle.db, "/no/such/folder/x.db", why, sizeof why), SQLITE_CANTOPEN);
    EXPECT_THAT(why, HasSubstr("No such file or directory"));
}

// ---- Kills

uint32_t make(stress::Handle &handle, stress::Random &random)
{
    qbdb_request_begin(handle.qbdb);
    const std::string number = std::to_string(random.below(1u << 30));
    if (random.below(3) == 0) {
        User user{};
        const std::string name = "user" + number;
        user.UserName = name.c_str();
        return qbobj_addUser(handle.qbdb, handle.db, &user, &handle.err);
    }
    if (random.below(2) == 0)
        return setServiceEntry(handle.qbdb, handle.db, ("KEY" + std::to_string(random.below(20))).c_str(),
                               number.c_str(), &handle.err);
    return qbobj_addLog(handle.qbdb, handle.db, 7, "info", "disk", "LOGMSG_A", number.c_str(), &handle.err);
}

TEST(StandbyCrash, WhoeverIsKilledNoCallIsLostOrAppliedTwice)
{
    const long kills = stress::amount("QBOBJ_KILLS", 500, 40);
    stress::Random random(3);
    long calls = 0;
    long writers = 0;
    std::unique_ptr<stress::Directory> directory;
    std::string from;
    std::string to;
    const auto follow = [&](bool once) {
        std::vector<std::string> words = {"follow", "--compact", "--from", from, "--to", to};
        if (once) words.push_back("--once");
        return qbcli::run(words);
    };
    const auto in_a_child = [&](const std::function<void()> &body) {
        fflush(stdout);
        const pid_t child = fork();
        if (child == 0) {
            const int nowhere = open("/dev/null", O_WRONLY);
            dup2(nowhere, STDOUT_FILENO);
            body();
            _exit(0);
        }
        return child;
    };
    for (long i = 0; i < kills && !testing::Test::HasFailure(); i++) {
        SCOPED_TRACE("kill " + std::to_string(i));
        if (i % 20 == 0) {
            directory = std::make_unique<stress::Directory>();
            from = directory->file("a.db");
            to = directory->file("b.db");
            stress::Handle handle(from, QBDB_OPEN_CREATE, "tank");
            ASSERT_EQ(qbdb_journal_on(handle.qbdb, handle.db, 0, 0), 0);
        }
        const uint64_t seed = random.next();
        const pid_t writer = in_a_child([&] {
            stress::Handle handle(from, QBDB_OPEN_EXISTING);
            for (stress::Random numbers(seed);;) make(handle, numbers);
        });
        const pid_t follower = in_a_child([&] {
            while (follow(true) == 0) continue;
            _exit(7);
        });
        usleep(static_cast<useconds_t>(1000 + random.below(40000)));
        const bool first_the_writer = random.below(2);
        kill(first_the_writer ? writer : follower, SIGKILL);
        usleep(static_cast<useconds_t>(random.below(10000)));
        kill(first_the_writer ? follower : writer, SIGKILL);
        writers += first_the_writer;
        int status = 0;
        EXPECT_EQ(waitpid(writer, &status, 0), writer);
        EXPECT_EQ(waitpid(follower, &status, 0), follower);
        EXPECT_FALSE(WIFEXITED(status)) << "the follower gave up";
        if (i % 5 != 4 && i + 1 != kills) continue;
        const pid_t last = in_a_child([&] { _exit(follow(true)); });
        EXPECT_EQ(waitpid(last, &status, 0), last);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
        EXPECT_TRUE(content_of(to) == content_of(from));
        const stress::Handle handle(to, QBDB_OPEN_READONLY);
        EXPECT_EQ(handle.value("PRAGMA integrity_check"), "ok");
        EXPECT_EQ(handle.value("SELECT COUNT(*)=MAX(id) FROM _journal"), "1");
        if (i % 20 == 19 || i + 1 == kills) calls += handle.number("SELECT MAX(id) FROM _journal");
    }
    printf("%ld kills, %ld of them of the writer first: %ld calls followed, none lost, none twice\n", kills, writers,
           calls);
    EXPECT_GT(calls, kills);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
