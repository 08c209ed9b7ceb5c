// Undoing: rows are brought back as they were, or what stands in the way is named.
#include <algorithm>

#include "anomaly/anomaly.h"
#include "cli/run.h"
#include "qbdb_journal.h"
#include "stress/stress.h"

using testing::HasSubstr;

namespace {

/// All rows of a database but those of the journal. A row is known by its declared key; where there is none, by its
/// number. The counter from which SQLite numbers the log is left out: a number is never given twice.
std::vector<std::string> rows_of(const test::Database &fixture)
{
    std::vector<std::string> all;
    for (const std::string &table :
         fixture.rows("SELECT name FROM sqlite_schema WHERE type='table' AND name NOT LIKE "
                      "'\\_journal%' ESCAPE '\\' AND name<>'sqlite_sequence' ORDER BY name")) {
        const bool keyed = fixture.value("SELECT COUNT(*) FROM pragma_table_info('" + table + "') WHERE pk") != "0";
        auto rows = fixture.rows(std::string("SELECT ") + (keyed ? "" : "rowid,") + "* FROM \"" + table + "\"");
        std::sort(rows.begin(), rows.end());
        for (const std::string &row : rows) all.push_back(table + ": " + row);
    }
    return all;
}

/// Lines that one of two lists has and the other has not.
std::vector<std::string> difference(std::vector<std::string> one, std::vector<std::string> other)
{
    std::vector<std::string> lines;
    std::sort(one.begin(), one.end());
    std::sort(other.begin(), other.end());
    std::set_symmetric_difference(one.begin(), one.end(), other.begin(), other.end(), std::back_inserter(lines));
    return lines;
}

struct Undo : test::Database {
    char why[1024] = "";

    Undo() { EXPECT_EQ(qbdb_journal_on(qbdb, db, 0, 0), 0); }
    int64_t undo(int64_t id = 0)
    {
        int64_t undone = 0;
        why[0] = '\0';
        const int rc = qbdb_journal_undo(qbdb, db, id, &undone, why, sizeof why);
        EXPECT_TRUE(sqlite3_get_autocommit(db));
        return rc ? -rc : undone;
    }
    uint32_t set(const char *key, const char *text) { return setServiceEntry(qbdb, db, key, text, &err); }
    std::string get(const std::string &key) { return value("SELECT val FROM service_misc WHERE key='" + key + "'"); }
    void run(const char *statement)
    {
        ASSERT_EQ(qbdb_sql_begin(qbdb, db, 0, "undo_test.cpp", 1), 0u);
        const char *text = nullptr;
        EXPECT_EQ(qbdb_sql_exec_mprintf(qbdb, db, &text, "undo_test.cpp", 1, "%s", statement), 0) << (text ? text : "");
        EXPECT_EQ(qbdb_sql_commit(qbdb, db, 0, "undo_test.cpp", 1), 0u);
    }
};

TEST_F(Undo, GoesBackCallByCall)
{
    const auto before = rows_of(*this);
    for (const char *text : {"a", "b", "c"}) EXPECT_EQ(set("KEY", text), 0u);
    EXPECT_EQ(undo(), 3);
    EXPECT_EQ(get("KEY"), "b");
    EXPECT_EQ(undo(), 2);
    EXPECT_EQ(undo(), 1);
    EXPECT_THAT(difference(rows_of(*this), before), testing::IsEmpty());
    EXPECT_EQ(undo(), -SQLITE_NOTFOUND);
    EXPECT_STREQ(why, "there is no call to be undone");
    EXPECT_EQ(value("SELECT COUNT(*) FROM _journal WHERE operation='undo'"), "3");
    EXPECT_EQ(value("SELECT arguments FROM _journal WHERE undoes=2"), "{\"call\":2}");
}

TEST_F(Undo, CanBeUndone)
{
    EXPECT_EQ(set("KEY", "a"), 0u);
    EXPECT_EQ(set("KEY", "b"), 0u);
    EXPECT_EQ(undo(2), 2);  // call 3
    EXPECT_EQ(undo(2), -SQLITE_CONSTRAINT);
    EXPECT_STREQ(why, "call 2 was undone by call 3");
    EXPECT_EQ(undo(3), 3);  // call 4: b again
    EXPECT_EQ(get("KEY"), "b");
    EXPECT_EQ(undo(1), -SQLITE_CONSTRAINT);
    EXPECT_STREQ(why, "call 1 cannot be undone: later calls changed: service_misc key='KEY' (call 2)");
    EXPECT_EQ(undo(), 2);
    EXPECT_EQ(undo(), 1);
    EXPECT_EQ(get("KEY"), "");
}

TEST_F(Undo, NamesTheRowsThatStandInTheWay)
{
    EXPECT_EQ(set("KEY", "a"), 0u);
    EXPECT_EQ(set("OTHER", "a"), 0u);
    EXPECT_EQ(set("KEY", "b"), 0u);
    EXPECT_EQ(set("KEY", "a"), 0u);  // the same value again, but touched
    const std::string before = content();
    EXPECT_EQ(undo(1), -SQLITE_CONSTRAINT);
    EXPECT_STREQ(why,
                 "call 1 cannot be undone: later calls changed: service_misc key='KEY' (call 3), service_misc "
                 "key='KEY' (call 4)");
    EXPECT_EQ(content(), before);
    EXPECT_EQ(undo(2), 2) << "nothing touched that row";
    for (int i = 0; i < 12; i++) run("UPDATE host SET name=name||'x'");
    run("INSERT INTO host VALUES(1,'a')");
    for (int i = 0; i < 12; i++) run("UPDATE host SET name=name||'x'");
    EXPECT_EQ(undo(6), -SQLITE_CONSTRAINT);
    EXPECT_THAT(why, testing::EndsWith("host id=1 (call 16) and 2 more"));
}

TEST_F(Undo, NoticesWhatIsNotInTheJournal)
{
    EXPECT_EQ(set("KEY", "a"), 0u);
    run("INSERT INTO tivo_mak VALUES('a','k')");
    run("UPDATE service_ssh SET port=2222");
    sql("UPDATE service_misc SET val='b' WHERE key='KEY'; DELETE FROM tivo_mak; UPDATE service_ssh SET port=3");
    const std::string before = content();
    EXPECT_EQ(undo(1), -SQLITE_CONSTRAINT);
    EXPECT_STREQ(why,
                 "call 1 cannot be undone: somebody who is not in the journal changed: service_misc key='KEY' "
                 "(cannot delete it)");
    EXPECT_EQ(undo(2), -SQLITE_CONSTRAINT);
    EXPECT_STREQ(why,
                 "call 2 cannot be undone: somebody who is not in the journal changed: tivo_mak _rowid_=1 (cannot "
                 "delete it)");
    EXPECT_EQ(undo(3), -SQLITE_CONSTRAINT);
    EXPECT_THAT(why, HasSubstr("service_ssh _rowid_=1 (cannot update it)"));
    EXPECT_EQ(content(), before);
    sql("DROP TABLE tivo_mak");
    EXPECT_EQ(undo(2), -SQLITE_SCHEMA);
    EXPECT_STREQ(why, "a table that call 2 changed is another one now");
}

TEST_F(Undo, BringsBackRowsOfTablesWithoutAKey)
{
    run("INSERT INTO tivo_mak VALUES('a','1'),('a','1'),('b',NULL)");
    const auto before = rows_of(*this);
    run("DELETE FROM tivo_mak WHERE rowid=2");
    run("UPDATE tivo_mak SET key='2' WHERE name='b'");
    run("UPDATE service_ftp SET port=2121,masquerade=NULL");
    EXPECT_EQ(undo(), 4);
    EXPECT_EQ(undo(), 3);
    EXPECT_EQ(undo(), 2);
    EXPECT_THAT(difference(rows_of(*this), before), testing::IsEmpty());
}

TEST_F(Undo, KnowsWhichCallsThereAre)
{
    EXPECT_EQ(undo(7), -SQLITE_NOTFOUND);
    EXPECT_STREQ(why, "the journal holds no call 7");
    EXPECT_EQ(set("KEY", "a"), 0u);
    EXPECT_EQ(qbdb_journal_off(qbdb, db), 0);
    EXPECT_EQ(undo(1), -SQLITE_NOTFOUND);
    EXPECT_STREQ(why, "the journal is switched off");
    EXPECT_EQ(qbdb_journal_on(qbdb, db, 0, 0), 0);
    EXPECT_EQ(undo(1), -SQLITE_CONSTRAINT);
    EXPECT_STREQ(why, "the journal was switched off after call 1: what happened since is not known");
    stress::Handle reader(path, QBDB_OPEN_READONLY);
    EXPECT_EQ(qbdb_journal_undo(reader.qbdb, reader.db, 1, nullptr, nullptr, 0), SQLITE_READONLY);
    EXPECT_EQ(qbdb_journal_undo(qbdb, reader.db, 1, nullptr, nullptr, 0), SQLITE_MISUSE);
}

// ---- Every operation, and many calls

struct EveryChange : test::Anomaly, testing::WithParamInterface<const test::Family *> {
    EveryChange() : Anomaly(*GetParam()) { qbdb_set_statement_hook(qbdb, nullptr, nullptr); }
};

TEST_P(EveryChange, CanBeUndone)
{
    EXPECT_EQ(qbdb_journal_on(qbdb, db, 0, 0), 0);
    int undone = 0;
    for (const test::Trial &setup : family.trials) {
        SCOPED_TRACE(test::name_of(setup));
        test::set_accounts(db, setup.accounts);
        const auto before = rows_of(*this);
        qbdb_journal_state state;
        EXPECT_EQ(qbdb_journal_get_state(qbdb, db, &state), 0);
        const int64_t last = state.last;
        EXPECT_EQ(run(setup).rc, setup.code);
        EXPECT_EQ(qbdb_journal_get_state(qbdb, db, &state), 0);
        EXPECT_EQ(state.last > last, rows_of(*this) != before) << "what changed is in the journal, and nothing else";
        if (state.last == last) continue;
        EXPECT_EQ(value("SELECT operation FROM _journal ORDER BY id DESC"), test::operation_of(setup).name);
        EXPECT_EQ(value("SELECT json_valid(arguments) FROM _journal ORDER BY id DESC"), "1");
        char why[512] = "";
        EXPECT_EQ(qbdb_journal_undo(qbdb, db, 0, nullptr, why, sizeof why), 0) << why;
        EXPECT_THAT(difference(rows_of(*this), before), testing::IsEmpty());
        undone++;
    }
    EXPECT_GT(undone, 0);
}

INSTANTIATE_TEST_SUITE_P(, EveryChange, testing::ValuesIn(test::families()), test::name_of_family);

/// Random calls of all families: their set-ups again and again, mixed with calls that build on each other.
TEST_F(Undo, AThousandCallsInReverseLeaveTheFirstDatabase)
{
    const long wanted = stress::amount("QBOBJ_UNDONE", 1000, 1000);
    sql(test::kPopulation);
    stress::Random random(11);
    const auto before = rows_of(*this);
    const auto since = stress::Clock::now();
    long made = 0;
    for (int attempt = 0; made < wanted && attempt < 20 * wanted; attempt++) {
        qbdb_request_begin(qbdb);
        const std::string number = std::to_string(random.below(60));
        const std::string name = "name" + number;
        uint32_t rc = 0;
        switch (random.below(10)) {
            case 0: rc = qbobj_addLog(qbdb, db, 5, "info", "disk", name.c_str(), "", &err); break;
            case 1: rc = qbobj_truncateLog(qbdb, db, 10, &err); break;
            case 2: rc = set(name.c_str(), std::to_string(random.below(5)).c_str()); break;
            case 3: rc = set(name.c_str(), nullptr); break;
            case 4: {
                User user{};
                user.UserName = name.c_str();
                user.Email = "a@example.com";
                rc = qbobj_addUser(qbdb, db, &user, &err);
                break;
            }
            case 5: {
                User user{};
                user.UserId = static_cast<int32_t>(100 + random.below(60));
                rc = qbobj_deleteUser(qbdb, db, &user, &err);
                break;
            }
            case 6: {
                Group group{};
                group.GroupName = name.c_str();
                rc = qbobj_addGroup(qbdb, db, &group, &err);
                break;
            }
            case 7: {
                Group group{};
                group.resource_id = static_cast<int32_t>(100 + random.below(40));
                rc = qbobj_deleteGroup(qbdb, db, &group, &err);
                break;
            }
            case 8: {
                Share share{};
                share.ShareName = name.c_str();
                share.VolumeId = "tank";
                rc = qbobj_addShare(qbdb, db, &share, &err);
                break;
            }
            default: {
                NetworkInterface nif{};
                nif.Name = name.c_str();
                nif.Mac = "00:11:22:33:44:55";
                nif.Protocol = "dhcp";
                nif.IP = nif.DNS1 = nif.DNS2 = nif.Gateway = nif.Subnet = "";
                rc = qbobj_addNetworkInterface(qbdb, db, &nif, &err);
                if (rc) rc = qbobj_deleteNetworkInterface(qbdb, db, name.c_str(), &err);
            }
        }
        (void)rc;  // a refused call is none in the journal
        qbdb_journal_state state;
        ASSERT_EQ(qbdb_journal_get_state(qbdb, db, &state), 0);
        made = state.last;
    }
    ASSERT_EQ(made, wanted);
    const double making = stress::seconds_since(since);
    const auto undoing = stress::Clock::now();
    for (int64_t id = made; id >= 1; id--) ASSERT_EQ(undo(id), id) << why;
    printf("%ld calls made in %.1f s and undone in %.1f s\n", made, making, stress::seconds_since(undoing));
    EXPECT_THAT(difference(rows_of(*this), before), testing::IsEmpty());
    EXPECT_EQ(value("PRAGMA integrity_check"), "ok");
    EXPECT_EQ(undo(), -SQLITE_NOTFOUND);
}

// ---- The command line

struct UndoOfTheProgram : test::Program {};

TEST_F(UndoOfTheProgram, UndoesShowsAndRefuses)
{
    EXPECT_EQ(call({"undo"}).err, "qbobj: undo: the journal is switched off\n");
    EXPECT_EQ(call({"journal", "on"}).status, 0);
    EXPECT_EQ(call({"addGroup", "GroupName=staff"}).status, 0);
    EXPECT_EQ(call({"modifyGroup", "resource_id=100", "GroupName=crew"}).status, 0);
    const test::Result refused = call({"undo", "1"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, "qbobj: undo: call 1 cannot be undone: later calls changed: $group id=100 (call 2)\n");
    EXPECT_EQ(call({"--dry-run", "--compact", "undo"}).out,
              R"({"result":{"undone":2},"changes":[{"table":"$group","change":"changed","key":{"id":100},)"
              R"("column":"gname","before":"crew","after":"staff"}]})"
              "\n");
    EXPECT_EQ(value("SELECT gname FROM `$group` WHERE id=100"), "crew");
    EXPECT_EQ(call({"undo", "--compact"}).out, "{\"undone\":2}\n");
    EXPECT_EQ(value("SELECT gname FROM `$group` WHERE id=100"), "staff");
    EXPECT_EQ(call({"undo", "0"}).status, 2);
    EXPECT_EQ(call({"undo", "9"}).status, 3);
    EXPECT_THAT(call({"journal", "list", "--compact"}).out,
                HasSubstr(R"("operation":"undo","rows":1,"undoes":2,"arguments":{"call":2}})"));
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
