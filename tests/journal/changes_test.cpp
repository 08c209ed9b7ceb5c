// What a transaction changed, row by row, and trials that take everything back.
#include <regex>
#include <set>

#include "anomaly/anomaly.h"
#include "cli/run.h"
#include "qbdb_journal.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;

namespace {

std::string text_of(sqlite3_value *value)
{
    if (!value) return "-";
    static constexpr const char *kTypes[] = {"", "i", "f", "t", "b", "n"};
    const std::string type = kTypes[sqlite3_value_type(value)];
    const auto *text = reinterpret_cast<const char *>(sqlite3_value_text(value));
    return type + (text ? text : "");
}

/// One line for each row: "share + id*:-/i1 name:-/tmedia".
int note(void *context, const qbdb_change *change)
{
    std::string line = change->table;
    line += change->operation == SQLITE_INSERT ? " +" : change->operation == SQLITE_DELETE ? " -" : " ~";
    for (int i = 0; i < change->count; i++) {
        if (!change->before[i] && !change->after[i]) continue;
        line += " " + std::string(change->columns[i] ? change->columns[i] : "?") + (change->key[i] ? "*" : "") + ":" +
                text_of(change->before[i]) + "/" + text_of(change->after[i]);
    }
    static_cast<std::vector<std::string> *>(context)->push_back(line);
    return 0;
}

struct Changes : test::Database {
    std::vector<std::string> take()
    {
        void *changes = nullptr;
        int size = 0;
        EXPECT_EQ(qbdb_changes_end(qbdb, &changes, &size), 0);
        std::vector<std::string> lines;
        EXPECT_EQ(qbdb_changes_read(qbdb, db, changes, size, note, &lines), 0);
        sqlite3_free(changes);
        return lines;
    }
    void execute(const std::string &statement)
    {
        const char *text = nullptr;
        EXPECT_EQ(qbdb_sql_exec_mprintf(qbdb, db, &text, "changes_test.cpp", 1, "%s", statement.c_str()), 0)
            << statement << ": " << (text ? text : "");
    }
    uint32_t transaction(const std::vector<std::string> &statements)
    {
        EXPECT_EQ(qbdb_sql_begin(qbdb, db, 0, "changes_test.cpp", 1), 0u);
        for (const std::string &statement : statements) execute(statement);
        return qbdb_sql_commit(qbdb, db, 0, "changes_test.cpp", 1);
    }
    std::vector<std::string> changed_by(const std::vector<std::string> &statements)
    {
        EXPECT_EQ(qbdb_changes_begin(qbdb, 0), 0);
        EXPECT_EQ(transaction(statements), 0u);
        return take();
    }
};

TEST_F(Changes, ShowEachKindOfValueBeforeAndAfter)
{
    sql("CREATE TABLE kinds (id TEXT PRIMARY KEY, i, f, t, b)");
    EXPECT_THAT(changed_by({"INSERT INTO kinds VALUES('a',-9223372036854775808,1.5,'x',x'414200')"}),
                ElementsAre(HasSubstr("kinds + id*:-/ta i:-/i-9223372036854775808 f:-/f1.5 t:-/tx b:-/bAB")));
    EXPECT_THAT(changed_by({"UPDATE kinds SET i=NULL,f=2.5,t=''"}),
                ElementsAre("kinds ~ id*:ta/- i:i-9223372036854775808/n f:f1.5/f2.5 t:tx/t"));
    EXPECT_THAT(changed_by({"DELETE FROM kinds"}), ElementsAre("kinds - id*:ta/- i:n/- f:f2.5/- t:t/- b:bAB/-"));
}

TEST_F(Changes, AreTheNetOfATransaction)
{
    EXPECT_THAT(changed_by({"INSERT INTO host (id,name) VALUES(1,'a')", "UPDATE host SET name='b'"}),
                ElementsAre("host + id*:-/i1 name:-/tb"));
    EXPECT_THAT(changed_by({"UPDATE host SET name='c'", "UPDATE host SET name='b'"}), IsEmpty());
    EXPECT_THAT(changed_by({"INSERT INTO host (id,name) VALUES(2,'x')", "DELETE FROM host WHERE id=2"}), IsEmpty());
    EXPECT_THAT(changed_by({"UPDATE host SET id=7"}),
                UnorderedElementsAre("host - id*:i1/- name:tb/-", "host + id*:-/i7 name:-/tb"));
}

TEST_F(Changes, HaveTheNamesOfTheirOwnTable)
{
    sql("CREATE TABLE few (id INTEGER PRIMARY KEY, a); CREATE TABLE two (id INTEGER PRIMARY KEY, b);"
        "CREATE TABLE more (id INTEGER PRIMARY KEY, c, d, e, f, g, h)");
    EXPECT_THAT(changed_by({"INSERT INTO few VALUES(1,'a')", "INSERT INTO two VALUES(1,'b')",
                            "INSERT INTO more VALUES(1,'c',2,3,4,5,6)"}),
                UnorderedElementsAre("few + id*:-/i1 a:-/ta", "two + id*:-/i1 b:-/tb",
                                     "more + id*:-/i1 c:-/tc d:-/i2 e:-/i3 f:-/i4 g:-/i5 h:-/i6"));
}

TEST_F(Changes, OfTablesWithoutAKeyAreToldByRowNumber)
{
    EXPECT_THAT(changed_by({"UPDATE service_ssh SET port=2222"}),
                ElementsAre("service_ssh ~ _rowid_*:i1/- port:i22/i2222"));
    // Equal rows are two rows.
    EXPECT_THAT(
        changed_by({"INSERT INTO tivo_mak VALUES('a','k')", "INSERT INTO tivo_mak VALUES('a','k')"}),
        ElementsAre("tivo_mak + _rowid_*:-/i1 name:-/ta key:-/tk", "tivo_mak + _rowid_*:-/i2 name:-/ta key:-/tk"));
    EXPECT_THAT(changed_by({"DELETE FROM tivo_mak WHERE rowid=1", "UPDATE service_ssh SET port=22"}),
                UnorderedElementsAre("tivo_mak - _rowid_*:i1/- name:ta/- key:tk/-",
                                     "service_ssh ~ _rowid_*:i1/- port:i2222/i22"));
    EXPECT_THAT(changed_by({"UPDATE tivo_mak SET name='b'", "UPDATE tivo_mak SET name='a'"}), IsEmpty());
}

TEST_F(Changes, AreSeenWhenAStatementThatWasPreparedBeforeEmptiesATable)
{
    // SQLite clears the table at once then, row by row only for who watches.
    for (const char *table : {"host", "tivo_mak"}) {
        const std::string fill = std::string("INSERT INTO ") + table +
                                 (*table == 'h' ? " VALUES(1,'a'),(2,'b')" : " VALUES('a','k'),('b','k')");
        transaction({fill, std::string("DELETE FROM ") + table, fill});
    }
    EXPECT_EQ(changed_by({"DELETE FROM host", "DELETE FROM tivo_mak"}).size(), 4u);
}

TEST_F(Changes, AreThoseOfTheCommittedTransactionsOnly)
{
    EXPECT_EQ(qbdb_changes_begin(qbdb, 0), 0);
    transaction({"INSERT INTO host (id,name) VALUES(1,'a')"});
    EXPECT_EQ(qbdb_sql_begin(qbdb, db, 0, "changes_test.cpp", 1), 0u);
    execute("INSERT INTO host (id,name) VALUES(2,'b')");
    EXPECT_EQ(qbdb_sql_rollback(qbdb, db, 0, "changes_test.cpp", 1), 0u);
    transaction({"INSERT INTO tivo_mak VALUES('a','k')"});
    EXPECT_THAT(take(),
                UnorderedElementsAre("host + id*:-/i1 name:-/ta", "tivo_mak + _rowid_*:-/i1 name:-/ta key:-/tk"));
    transaction({"DELETE FROM host"});
    EXPECT_THAT(changed_by({}), IsEmpty());
}

TEST_F(Changes, OfManyTablesAreToldApart)
{
    EXPECT_THAT(
        changed_by({"INSERT INTO afp_share_option (share_id,available) VALUES(1,2)",
                    "INSERT INTO nfs_share_option (share_id,available) VALUES(1,2)",
                    "INSERT INTO ftp_share_option (share_id,available) VALUES(1,2)", "INSERT INTO host VALUES(1,'a')",
                    "INSERT INTO tivo_mak VALUES('a','k')", "INSERT INTO jbod_port VALUES(1,'x')"}),
        UnorderedElementsAre(HasSubstr("afp_share_option + share_id*:-/i1 available:-/i2 afp_access:-/n"),
                             HasSubstr("nfs_share_option + share_id*:-/i1 available:-/i2 nfs_access:-/n"),
                             HasSubstr("ftp_share_option + share_id*:-/i1 available:-/i2 ftp_access:-/n"),
                             "host + id*:-/i1 name:-/ta", "tivo_mak + _rowid_*:-/i1 name:-/ta key:-/tk",
                             "jbod_port + _rowid_*:-/i1 controller:-/i1 label:-/tx"));
}

TEST_F(Changes, OfATransactionWhoseCommitFailsAreNone)
{
    EXPECT_EQ(qbdb_changes_begin(qbdb, 0), 0);
    const auto refuse = [](void *, const char *statement, const char *, uint32_t, const char **text) {
        *text = "injected";
        return std::string(statement) == "COMMIT" ? SQLITE_FULL : 0;
    };
    qbdb_set_statement_hook(qbdb, refuse, nullptr);
    EXPECT_EQ(transaction({"INSERT INTO host (id,name) VALUES(1,'a')"}), static_cast<uint32_t>(SQLITE_FULL));
    qbdb_set_statement_hook(qbdb, nullptr, nullptr);
    EXPECT_THAT(take(), IsEmpty());
}

TEST_F(Changes, CopiesOfTablesLeaveNoTrace)
{
    EXPECT_EQ(qbdb_changes_begin(qbdb, 0), 0);
    EXPECT_EQ(qbdb_sql_begin(qbdb, db, 0, "changes_test.cpp", 1), 0u);
    EXPECT_EQ(qbdb_sql_duplicate_table(qbdb, db, 0, "$group", "_tmp_group"), 0);
    execute("INSERT INTO host (id,name) VALUES(1,'a')");
    execute("DROP TABLE _tmp_group");
    EXPECT_EQ(qbdb_sql_commit(qbdb, db, 0, "changes_test.cpp", 1), 0u);
    EXPECT_THAT(take(), ElementsAre("host + id*:-/i1 name:-/ta"));
}

TEST_F(Changes, BeginOnceAndOutsideOfTransactions)
{
    void *changes = this;
    int size = 1;
    EXPECT_EQ(qbdb_changes_end(qbdb, &changes, &size), SQLITE_MISUSE);
    EXPECT_EQ(changes, nullptr);
    EXPECT_EQ(size, 0);
    EXPECT_EQ(qbdb_changes_begin(qbdb, 2), SQLITE_MISUSE);
    EXPECT_EQ(qbdb_sql_begin(qbdb, db, 0, "changes_test.cpp", 1), 0u);
    EXPECT_EQ(qbdb_changes_begin(qbdb, 0), SQLITE_MISUSE);
    EXPECT_EQ(qbdb_sql_commit(qbdb, db, 0, "changes_test.cpp", 1), 0u);
    EXPECT_EQ(qbdb_changes_begin(qbdb, 0), 0);
    EXPECT_EQ(qbdb_changes_begin(qbdb, QBDB_CHANGES_DISCARD), SQLITE_MISUSE);
    EXPECT_THAT(take(), IsEmpty());
}

TEST_F(Changes, ThatAreDamagedAreRefused)
{
    std::vector<std::string> lines;
    std::string bytes(64, 'x');
    EXPECT_EQ(qbdb_changes_read(qbdb, db, bytes.data(), static_cast<int>(bytes.size()), note, &lines), SQLITE_CORRUPT);
    EXPECT_EQ(qbdb_changes_read(qbdb, db, nullptr, 0, note, &lines), 0);
    EXPECT_THAT(lines, IsEmpty());
}

TEST_F(Changes, ATrialIsTakenBackAndServicesDoNotHearOfIt)
{
    static int told;
    told = 0;
    const auto hook = [](void *, qbdb_t *, sqlite3 *, const char *) { return ++told, 0; };
    qbdb_set_service_hook(qbdb, hook, nullptr);
    const std::string before = content();
    EXPECT_EQ(qbdb_changes_begin(qbdb, QBDB_CHANGES_DISCARD), 0);
    transaction({"INSERT INTO host (id,name) VALUES(1,'a')", "UPDATE service_ssh SET port=2222"});
    EXPECT_EQ(qbdb_service_update_setting_by_share(qbdb, db, "cifs"), 0);
    EXPECT_EQ(told, 0);
    EXPECT_TRUE(sqlite3_get_autocommit(db));
    EXPECT_EQ(take().size(), 2u);
    EXPECT_EQ(content(), before);
    EXPECT_EQ(qbdb_service_update_setting_by_share(qbdb, db, "cifs"), 0);
    EXPECT_EQ(told, 1);
    transaction({"INSERT INTO host (id,name) VALUES(1,'a')"});
    EXPECT_NE(content(), before) << "the trial is over";
}

TEST_F(Changes, WantOfMemoryIsTold)
{
    // Whatever lacks, the commit says so and nothing is stored; what is told is whole.
    const std::string before = content();
    int failures = 0;
    for (int64_t limit = 0; limit <= 512 << 10; limit += 8 << 10) {
        EXPECT_EQ(qbdb_changes_begin(qbdb, 0), 0);
        uint32_t rc = qbdb_sql_begin(qbdb, db, 0, "changes_test.cpp", 1);
        if (rc == 0) {
            execute("INSERT INTO host (id,name) VALUES(1,'a')");
            sqlite3_hard_heap_limit64(sqlite3_memory_used() + limit);
            const char *text = nullptr;
            rc = static_cast<uint32_t>(
                qbdb_sql_exec_mprintf(qbdb, db, &text, "changes_test.cpp", 1, "UPDATE service_ssh SET port=2222"));
            if (rc) qbdb_sql_rollback(qbdb, db, 0, "changes_test.cpp", 1);
            else rc = qbdb_sql_commit(qbdb, db, 0, "changes_test.cpp", 1);
            sqlite3_hard_heap_limit64(0);
        }
        void *changes = nullptr;
        int size = 0;
        const int told = qbdb_changes_end(qbdb, &changes, &size);
        sqlite3_free(changes);
        if (rc) {
            failures++;
            EXPECT_EQ(content(), before);
        } else if (told == 0) {
            EXPECT_GT(size, 0);
        }
        sql("DELETE FROM host; UPDATE service_ssh SET port=22");
    }
    EXPECT_GT(failures, 0);
}

TEST_F(Changes, EveryColumnThatSoundsLikeASecretIsOneOrIsKnownNotToBe)
{
    const std::set<std::string> harmless = {"service_misc.key",
                                            "$registry.key",
                                            "ssh_public_key.key",
                                            "account_default.disallow_password_change",
                                            "rsync_share_option.passwordprotection",
                                            "service_cifs.password_server",
                                            "service_ftp.passive_range_min",
                                            "service_ftp.passive_range_max",
                                            "service_ssh.password_authentication",
                                            "service_http.use_password",
                                            "service_https.ssl_key_host",
                                            "_volume.keyfile"};
    const std::regex suspicious("pass|pwd|hash|secret|key|answer|salt|token|community|priv_");
    int secrets = 0;
    for (const std::string &table : rows("SELECT name FROM sqlite_schema WHERE type='table'"))
        for (const std::string &column : rows("SELECT name FROM pragma_table_info('" + table + "')")) {
            const std::string whole = table + "." + column;
            const bool secret = qbdb_is_secret_column(table.c_str(), column.c_str());
            secrets += secret;
            if (std::regex_search(column, suspicious)) {
                EXPECT_NE(secret, harmless.count(whole) == 1) << whole;
            }
        }
    EXPECT_EQ(secrets, 14);
}

// ---- Every operation

struct EveryOperation : test::Anomaly, testing::WithParamInterface<const test::Family *> {
    EveryOperation() : Anomaly(*GetParam()) { qbdb_set_statement_hook(qbdb, nullptr, nullptr); }
};

TEST_P(EveryOperation, CanBeTried)
{
    int changing = 0;
    for (const test::Trial &setup : family.trials) {
        SCOPED_TRACE(test::name_of(setup));
        test::set_accounts(db, setup.accounts);
        const std::string before = test::image_of(db);
        ASSERT_EQ(qbdb_changes_begin(qbdb, QBDB_CHANGES_DISCARD), 0);
        EXPECT_EQ(run(setup).rc, setup.code);
        void *changes = nullptr;
        int size = 0;
        EXPECT_EQ(qbdb_changes_end(qbdb, &changes, &size), 0);
        std::vector<std::string> lines;
        EXPECT_EQ(qbdb_changes_read(qbdb, db, changes, size, note, &lines), 0);
        sqlite3_free(changes);
        if (!test::operation_of(setup).changes) {
            EXPECT_THAT(lines, IsEmpty());
        }
        changing += !lines.empty();
        EXPECT_TRUE(test::image_of(db) == before);
    }
    EXPECT_GT(changing, 0);
}

INSTANTIATE_TEST_SUITE_P(, EveryOperation, testing::ValuesIn(test::families()), test::name_of_family);

// ---- The command line

struct ChangesOfTheProgram : test::Program {};

TEST_F(ChangesOfTheProgram, ADryRunPrintsTheResultAndTheChangesAndKeepsNothing)
{
    const std::string before = value("SELECT next_uid FROM account_default");
    const test::Result tried = call({"--dry-run", "--compact", "addUser", "UserName=anna", "Password=-"}, "geheim\n");
    EXPECT_EQ(tried.status, 0) << tried.err;
    EXPECT_THAT(tried.out, HasSubstr(R"({"result":{"resource_id":100,)"));
    EXPECT_THAT(tried.out, HasSubstr(R"({"table":"$user","change":"added","key":{"id":100},"column":"uname","before":)"
                                     R"(null,"after":"anna"})"));
    EXPECT_THAT(tried.out, HasSubstr(R"("column":"passwd","before":null,"after":"●●●●●●●●"})"));
    EXPECT_THAT(tried.out, HasSubstr(R"({"table":"account_default","change":"changed","key":{"_rowid_":1},"column":)"
                                     R"("next_uid","before":100,"after":101})"));
    EXPECT_THAT(tried.out, Not(HasSubstr("$1$"))) << "a hash";
    EXPECT_EQ(tried.err, "");
    EXPECT_EQ(value("SELECT COUNT(*) FROM `$user` WHERE uname='anna'"), "0");
    EXPECT_EQ(value("SELECT next_uid FROM account_default"), before);
}

TEST_F(ChangesOfTheProgram, ChangesArePrintedOfACallThatIsKept)
{
    const test::Result done = call({"--changes", "--table", "addGroup", "GroupName=staff"});
    EXPECT_EQ(done.status, 0) << done.err;
    EXPECT_THAT(done.out, HasSubstr("\nChanged:\n"));
    EXPECT_THAT(done.out, HasSubstr("gname"));
    EXPECT_EQ(value("SELECT COUNT(*) FROM `$group` WHERE gname='staff'"), "1");
    EXPECT_THAT(call({"--dry-run", "--table", "addGroup", "GroupName=crew"}).out, HasSubstr("\nWould change:\n"));
    EXPECT_THAT(call({"--changes", "--table", "getGroupCollection"}).out, HasSubstr("\nChanged: nothing\n"));
    EXPECT_EQ(call({"--changes", "--compact", "truncateLog", "0"}).out, "{\"result\":null,\"changes\":[]}\n");
}

TEST_F(ChangesOfTheProgram, AFailingCallPrintsItsFailureOnly)
{
    const test::Result refused = call({"--dry-run", "addGroup", "GroupName=users"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(refused.err, call({"addGroup", "GroupName=users"}).err);
}

TEST_F(ChangesOfTheProgram, SecretsAreShownToWhoAsksForThem)
{
    EXPECT_THAT(
        call({"--dry-run", "--compact", "--with-secrets", "addUser", "UserName=anna", "Password=-"}, "geheim\n").out,
        HasSubstr(R"("column":"passwd","before":null,"after":"$)"));
}

TEST_F(ChangesOfTheProgram, AreForOperations)
{
    EXPECT_EQ(call({"--dry-run", "list"}).err, "qbobj: list: --dry-run is for operations\n");
    EXPECT_EQ(call({"--changes", "importUsers", path}).err, "qbobj: importUsers: --changes is for operations\n");
    const test::Result refused = call({"--dry-run", "importUsers", path});
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.err, "qbobj: importUsers: write --dry-run behind the command\n");
    EXPECT_EQ(call({"--read-only", "--dry-run", "truncateLog", "0"}).status, 2);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
