// Service settings, the registry, and the frame of the older entry points.
#include <unistd.h>

#include <functional>

#include "fixture/fixture.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

struct Entries : test::Database {
    const char *val = "untouched";
    FolderAttribute attr{};

    uint32_t get(const char *key) { return getServiceEntry(qbdb, db, key, &val, &err); }
    uint32_t set(const char *key, const char *value) { return setServiceEntry(qbdb, db, key, value, &err); }
    uint32_t get_free(const char *key) { return getRegistryEntry(qbdb, db, key, &val, &err); }
    uint32_t set_free(const char *key, const char *value) { return setRegistryEntry(qbdb, db, key, value, &err); }
    std::string row(const std::string &key) const
    {
        const auto all = rows("SELECT key,val,table_name,column_name FROM service_misc WHERE key='" + key + "'");
        return all.empty() ? "" : all[0];
    }
};

// ---- Service settings

TEST_F(Entries, ReadsASetting)
{
    ASSERT_EQ(get("GLASSDECKLOCALE"), 0u) << err.message;
    EXPECT_STREQ(val, "auto");
    ASSERT_EQ(get("QUILLBOXCOFFER_TEP_FOLDER"), 0u) << err.message;
    EXPECT_STREQ(val, "") << "an empty value is a value";
}

TEST_F(Entries, ReportsASettingThatIsNotThere)
{
    sql("INSERT INTO service_misc (key,val) VALUES ('EMPTY',NULL)");
    for (const char *key : {"NONE", "EMPTY", "glassdecklocale", "", "o'hara"}) {
        val = "untouched";
        expect_failure(6, "ServiceEntry='" + std::string(key) + "' not exist.", [&] { return get(key); });
        EXPECT_EQ(val, nullptr) << key;
    }
}

TEST_F(Entries, AddsAndChangesASetting)
{
    ASSERT_EQ(set("NEW", "it's"), 0u) << err.message;
    EXPECT_EQ(row("NEW"), "NEW|it's|NULL|NULL");
    ASSERT_EQ(set("NEW", ""), 0u) << err.message;
    EXPECT_EQ(row("NEW"), "NEW||NULL|NULL");
    ASSERT_EQ(get("NEW"), 0u);
    EXPECT_STREQ(val, "");
    const std::string other = row("ANTIVIRUS");
    ASSERT_EQ(set("GLASSDECKLOCALE", "de-de"), 0u);
    EXPECT_EQ(row("GLASSDECKLOCALE"), "GLASSDECKLOCALE|de-de|NULL|NULL");
    EXPECT_EQ(row("ANTIVIRUS"), other);
}

TEST_F(Entries, RemovesASetting)
{
    ASSERT_EQ(set("ANTIVIRUS", nullptr), 0u) << err.message;
    EXPECT_EQ(row("ANTIVIRUS"), "ANTIVIRUS|NULL|NULL|NULL") << "the row stays, emptied";
    EXPECT_EQ(get("ANTIVIRUS"), 6u);
    take_statements();
    const std::string before = content();
    ASSERT_EQ(set("NONE", nullptr), 0u) << err.message;
    EXPECT_EQ(content(), before);
    EXPECT_THAT(take_statements(), ElementsAre("BEGIN IMMEDIATE", HasSubstr("SELECT table_name,column_name"),
                                               HasSubstr("DELETE FROM service_misc"), "COMMIT"));
}

TEST_F(Entries, MirrorsASettingIntoItsTable)
{
    sql("CREATE TABLE mirrored (id, flag); INSERT INTO mirrored VALUES (1,'a'),(2,'b');"
        "INSERT INTO service_misc VALUES ('SWITCH','a','mirrored','flag')");
    ASSERT_EQ(set("SWITCH", "o'n"), 0u) << err.message;
    EXPECT_EQ(row("SWITCH"), "SWITCH|o'n|mirrored|flag");
    EXPECT_THAT(rows("SELECT * FROM mirrored"), ElementsAre("1|o'n", "2|o'n"));

    ASSERT_EQ(set("SWITCH", nullptr), 0u) << err.message;
    EXPECT_EQ(row("SWITCH"), "SWITCH|NULL|NULL|NULL") << "the link to the mirror is cut";
    EXPECT_THAT(rows("SELECT * FROM mirrored"), ElementsAre("1|NULL", "2|NULL"));

    ASSERT_EQ(set("SWITCH", "back"), 0u) << err.message;
    EXPECT_THAT(rows("SELECT * FROM mirrored"), ElementsAre("1|NULL", "2|NULL")) << "for good";
}

TEST_F(Entries, MirrorsTheFactorySwitch)
{
    ASSERT_EQ(set("WIDGETRY", "1"), 0u) << err.message;
    EXPECT_EQ(value("SELECT enabled FROM service_smartnetwork"), "1");
}

TEST_F(Entries, NeedsBothATableAndAColumnToMirror)
{
    sql("CREATE TABLE mirrored (flag); INSERT INTO mirrored VALUES ('a');"
        "INSERT INTO service_misc VALUES ('ONE','a','mirrored',NULL),('TWO','a',NULL,'flag')");
    for (const char *key : {"ONE", "TWO"}) {
        ASSERT_EQ(set(key, "b"), 0u) << err.message;
        ASSERT_EQ(set(key, nullptr), 0u) << err.message;
        EXPECT_EQ(row(key), std::string(key) + "|NULL|NULL|NULL");
    }
    EXPECT_EQ(value("SELECT flag FROM mirrored"), "a");
}

TEST_F(Entries, TakesBackASettingWhoseMirrorFails)
{
    sql("INSERT INTO service_misc VALUES ('LOST','a','no_such_table','flag')");
    const std::string message = "Failed 'UPDATE no_such_table'. no such table: no_such_table";
    expect_failure(5, message, [&] { return set("LOST", "b"); });
    expect_failure(5, message, [&] { return set("LOST", nullptr); });
}

TEST_F(Entries, ReportsWhichStatementFailed)
{
    sql("CREATE TABLE mirrored (flag); INSERT INTO service_misc VALUES ('SWITCH','a','mirrored','flag')");
    const struct {
        const char *key;
        const char *value;
        const char *statement;
        const char *message;
    } failures[] = {
        {"NEW", nullptr, "DELETE", "Failed 'DELETE service_misc'. injected"},
        {"SWITCH", "b", "UPDATE mirrored", "Failed 'UPDATE mirrored'. injected"},
        {"SWITCH", nullptr, "UPDATE mirrored", "Failed 'UPDATE mirrored'. injected"},
    };
    for (const auto &failure : failures) {
        fail_statement(1, 13, "injected", failure.statement);
        expect_failure(5, failure.message, [&] { return set(failure.key, failure.value); });
        fail_statement(0);
        EXPECT_EQ(err.code, 5u);
    }
}

TEST_F(Entries, DoesNotAskWhetherTheRowWasEmptied)
{
    sql("CREATE TABLE mirrored (flag); INSERT INTO mirrored VALUES ('a');"
        "INSERT INTO service_misc VALUES ('SWITCH','a','mirrored','flag')");
    fail_statement(1, 13, "injected", "UPDATE service_misc");
    EXPECT_EQ(set("SWITCH", nullptr), 0u) << err.message;
    EXPECT_EQ(err.code, 0u);
    EXPECT_EQ(row("SWITCH"), "SWITCH|a|mirrored|flag");
    EXPECT_EQ(value("SELECT flag FROM mirrored"), "NULL");
}

// ---- The language

TEST_F(Entries, TakesOnlySupportedLanguages)
{
    const struct {
        const char *supported;
        const char *language;
        bool accepted;
    } cases[] = {
        {"en-us/utf-8,de-de/utf-8,fr-fr/utf-8", "en-us", true},
        {"en-us/utf-8,de-de/utf-8,fr-fr/utf-8", "de-de", true},
        {"en-us/utf-8,de-de/utf-8,fr-fr/utf-8", "fr-fr", true},
        {"en-us/utf-8", "en-us", true},
        {"en-us/utf-8,de-de/utf-8,fr-fr/utf-8", "de", false},
        {"en-us/utf-8,de-de/utf-8,fr-fr/utf-8", "e-de", false},
        {"en-us/utf-8,de-de/utf-8,fr-fr/utf-8", "it-it", false},
        {"en-us/utf-8,de-de/utf-8,fr-fr/utf-8", "de-de/utf-8", false},
        {"en-us/utf-8,de-de/utf-8,fr-fr/utf-8", "", false},
        {"en-us/utf-8,de-de/utf-8,fr-fr/utf-8", nullptr, false},
        {"en-us/utf-8, de-de/utf-8", "de-de", false},  // commas alone part the languages
        {"en-us/utf-8,de-de/utf-8", "DE-DE", true},    // patterns know no case,
        {"en-us/utf-8", "EN-US", false},               // the equality does
        {"en-us/utf-8,de-de/utf-8", "d_-d%", true},    // and the language is part of the pattern
    };
    for (const auto &each : cases) {
        SCOPED_TRACE(std::string(each.supported) + " " + (each.language ? each.language : "null"));
        sql("UPDATE service_misc SET val='" + std::string(each.supported) +
            "' WHERE key='LANGUAGES_SUPPORTED';"
            "UPDATE service_misc SET val='before' WHERE key='LANGUAGE'");
        if (each.accepted) {
            EXPECT_EQ(set("LANGUAGE", each.language), 0u) << err.message;
            EXPECT_EQ(row("LANGUAGE"), "LANGUAGE|" + std::string(each.language) + "|NULL|NULL");
        } else {
            const std::string shown = each.language ? each.language : "(null)";
            expect_failure(8, "Specified LANGUAGE=" + shown + " is not supported by system.",
                           [&] { return set("LANGUAGE", each.language); });
        }
    }
}

TEST_F(Entries, ChecksTheLanguageUnderItsExactKeyOnly)
{
    EXPECT_EQ(set("Language", "Klingon"), 0u) << err.message;
    EXPECT_EQ(set("LANGUAGES", "Klingon"), 0u) << err.message;
    sql("DELETE FROM service_misc WHERE key='LANGUAGES_SUPPORTED'");
    expect_failure(8, "Specified LANGUAGE=en-us is not supported by system.", [&] { return set("LANGUAGE", "en-us"); });
}

TEST_F(Entries, PutsTheLanguageIntoTheStatementAsItIs)
{
    const std::string before = content();
    EXPECT_EQ(set("LANGUAGE", "en'us"), 5u);
    EXPECT_EQ(err.code, 5u);
    EXPECT_THAT(std::string(err.message), StartsWith("Failed 'SELECT service_misc'. "));
    EXPECT_EQ(content(), before);
    const char *spliced = "xx' OR key='LANGUAGES_SUPPORTED' AND ''='";
    EXPECT_EQ(set("LANGUAGE", spliced), 8u) << err.message;
    const char *matching = "xx/utf-8' OR val LIKE 'en-us";
    EXPECT_EQ(set("LANGUAGE", matching), 0u) << err.message;
    ASSERT_EQ(get("LANGUAGE"), 0u);
    EXPECT_STREQ(val, matching);
}

// ---- Registry

TEST_F(Entries, WritesAndReadsTheRegistry)
{
    ASSERT_EQ(set_free("app.color", "blue"), 0u) << err.message;
    ASSERT_EQ(set_free("app.color", "it's red"), 0u) << err.message;
    ASSERT_EQ(set_free("APP.COLOR", ""), 0u) << err.message;
    EXPECT_THAT(rows("SELECT key,value FROM `$registry` ORDER BY key"),
                ElementsAre("APP.COLOR|", "app.color|it's red"));
    ASSERT_EQ(get_free("app.color"), 0u) << err.message;
    EXPECT_STREQ(val, "it's red");
    ASSERT_EQ(get_free("APP.COLOR"), 0u) << err.message;
    EXPECT_STREQ(val, "");
}

TEST_F(Entries, CannotRemoveARegistryEntry)
{
    ASSERT_EQ(set_free("key", "value"), 0u);
    for (const char *key : {"key", "none"}) {
        expect_failure(5, "Failed 'UPDATE $registry'. near \"SET\": syntax error",
                       [&] { return set_free(key, nullptr); });
    }
    ASSERT_EQ(get_free("key"), 0u);
    EXPECT_STREQ(val, "value");
}

TEST_F(Entries, ReportsFailuresOfTheRegistry)
{
    sql("INSERT INTO `$registry` (key,value) VALUES ('empty',NULL)");
    for (const char *key : {"none", "empty", "Empty"}) {
        val = "untouched";
        expect_failure(6, "RegistryEntry='" + std::string(key) + "' not exist.", [&] { return get_free(key); });
        EXPECT_EQ(val, nullptr);
    }
}

TEST_F(Entries, NeedsNoErrorRecordForTheRegistry)
{
    EXPECT_EQ(setRegistryEntry(qbdb, db, "key", "value", nullptr), 0u);
    EXPECT_EQ(getRegistryEntry(qbdb, db, "key", &val, nullptr), 0u);
    EXPECT_STREQ(val, "value");
    log.clear();
    EXPECT_EQ(getRegistryEntry(qbdb, db, "none", &val, nullptr), 6u);
    EXPECT_EQ(setRegistryEntry(qbdb, db, "key", nullptr, nullptr), 5u);
    EXPECT_THAT(logged(2), ElementsAre("RegistryEntry='none' not exist.", StartsWith("Failed 'UPDATE $registry'. ")))
        << "the failures are logged all the same";
}

// ---- The frame

TEST_F(Entries, EndsTheProcessForNullPointers)
{
    const struct {
        const char *text;
        std::function<uint32_t()> call;
    } calls[] = {
        {"getFolderAttribute: Assertion `qbdb' failed",
         [&] { return getFolderAttribute(nullptr, db, "/", &attr, &err); }},
        {"getFolderAttribute: Assertion `err' failed",
         [&] { return getFolderAttribute(qbdb, db, "/", &attr, nullptr); }},
        {"getFolderAttribute: Assertion `attr' failed",
         [&] { return getFolderAttribute(qbdb, db, "/", nullptr, &err); }},
        {"getServiceEntry: Assertion `qbdb' failed", [&] { return getServiceEntry(nullptr, db, "k", &val, &err); }},
        {"getServiceEntry: Assertion `err' failed", [&] { return getServiceEntry(qbdb, db, "k", &val, nullptr); }},
        {"getServiceEntry: Assertion `key' failed", [&] { return get(nullptr); }},
        {"getServiceEntry: Assertion `val' failed", [&] { return getServiceEntry(qbdb, db, "k", nullptr, &err); }},
        {"setServiceEntry: Assertion `qbdb' failed", [&] { return setServiceEntry(nullptr, db, "k", "v", &err); }},
        {"setServiceEntry: Assertion `err' failed", [&] { return setServiceEntry(qbdb, db, "k", "v", nullptr); }},
        {"setServiceEntry: Assertion `key' failed", [&] { return set(nullptr, "v"); }},
        {"getRegistryEntry: Assertion `qbdb' failed", [&] { return getRegistryEntry(nullptr, db, "k", &val, &err); }},
        {"getRegistryEntry: Assertion `key' failed", [&] { return get_free(nullptr); }},
        {"getRegistryEntry: Assertion `val' failed", [&] { return getRegistryEntry(qbdb, db, "k", nullptr, &err); }},
        {"setRegistryEntry: Assertion `qbdb' failed", [&] { return setRegistryEntry(nullptr, db, "k", "v", &err); }},
        {"setRegistryEntry: Assertion `key' failed", [&] { return set_free(nullptr, "v"); }},
    };
    for (const auto &each : calls) EXPECT_DEATH(each.call(), each.text);
}

/// The five calls as rows: what each traces when it succeeds.
struct Call {
    const char *trace;
    std::function<uint32_t()> run;
};

struct EntryFrame : Entries {
    std::vector<Call> calls()
    {
        return {
            {"<<<< getFolderAttribute(/x) .. rc=%d (0ms)\n",
             [&] { return getFolderAttribute(qbdb, db, "/x", &attr, &err); }},
            {"<<<< getServiceEntry(LANGUAGE) .. rc=%d (0ms)\n", [&] { return get("LANGUAGE"); }},
            {"<<<< setServiceEntry(LANGUAGE,de-de) .. rc=%d (0ms)\n", [&] { return set("LANGUAGE", "de-de"); }},
            {"<<<< getRegistryEntry(k) .. rc=%d (0ms)\n", [&] { return get_free("k"); }},
            {"<<<< setRegistryEntry(k,w) .. rc=%d (0ms)\n", [&] { return set_free("k", "w"); }},
        };
    }
    static std::string with_code(const std::string &trace, uint32_t rc)
    {
        return std::string(trace).replace(trace.find("%d"), 2, std::to_string(rc));
    }
    /// Refuses the end of each transaction.
    static int fail_commit(void *, const char *statement, const char *, uint32_t, const char **text)
    {
        *text = "disk full";
        return std::string(statement) == "COMMIT" ? 13 : 0;
    }
    static int slow_select(void *, const char *statement, const char *, uint32_t, const char **)
    {
        if (std::string(statement).starts_with("SELECT")) usleep(1200 * 1000);
        return 0;
    }
    void SetUp() override { sql("INSERT INTO `$registry` (key,value) VALUES ('k','v')"); }
};

TEST_F(EntryFrame, TracesItsEndAlone)
{
    for (const Call &call : calls()) {
        for (const uint32_t level : {3u, 4u, 5u}) {
            qbdb->log_level = level;
            log.clear();
            const time_t begun = time(nullptr);
            ASSERT_EQ(call.run(), 0u) << err.message;
            if (time(nullptr) != begun) continue;  // the second changed: the duration need not be 0
            if (level == 3) EXPECT_THAT(log, testing::IsEmpty()) << call.trace;
            else EXPECT_THAT(logged(4), ElementsAre(with_code(call.trace, 0)));
            EXPECT_THAT(logged(5), testing::IsEmpty()) << "no records are dumped";
        }
    }
}

TEST_F(EntryFrame, TracesWithFlagZeroAndSourcePosition)
{
    qbdb->log_level = 4;
    ASSERT_EQ(get("LANGUAGE"), 0u);
    ASSERT_EQ(log.size(), 1u);
    EXPECT_EQ(log[0].flag, 0u);
    EXPECT_EQ(log[0].file, "qbobj_api.cpp");
    EXPECT_GT(log[0].line, 0u);
}

TEST_F(EntryFrame, TracesTheTrueDurationInSeconds)
{
    qbdb->log_level = 4;
    qbdb_set_statement_hook(qbdb, slow_select, nullptr);
    ASSERT_EQ(get("LANGUAGE"), 0u);
    EXPECT_THAT(logged(4), ElementsAre(testing::AnyOf("<<<< getServiceEntry(LANGUAGE) .. rc=0 (1ms)\n",
                                                      "<<<< getServiceEntry(LANGUAGE) .. rc=0 (2ms)\n")));
}

TEST_F(EntryFrame, TracesFailuresAndNullValues)
{
    qbdb->log_level = 4;
    EXPECT_EQ(set("NONE", nullptr), 0u);
    EXPECT_EQ(get("NONE"), 6u);
    EXPECT_EQ(set_free("k", nullptr), 5u);
    EXPECT_EQ(getFolderAttribute(qbdb, db, nullptr, &attr, &err), 0u);
    EXPECT_THAT(logged(4), ElementsAre(StartsWith("<<<< setServiceEntry(NONE,(null)) .. rc=0 ("),
                                       StartsWith("<<<< getServiceEntry(NONE) .. rc=6 ("),
                                       StartsWith("<<<< setRegistryEntry(k,(null)) .. rc=5 ("),
                                       StartsWith("<<<< getFolderAttribute((null)) .. rc=0 (")));
}

TEST_F(EntryFrame, LogsAReportBeforeTheTrace)
{
    qbdb->log_level = 4;
    EXPECT_EQ(get("NONE"), 6u);
    ASSERT_EQ(log.size(), 2u);
    EXPECT_EQ(log[0].level, 2u);
    EXPECT_EQ(log[0].flag, 1u);
    EXPECT_EQ(log[0].text, "ServiceEntry='NONE' not exist.");
    EXPECT_EQ(log[1].level, 4u);
    qbdb->log_level = 1;
    log.clear();
    EXPECT_EQ(get("NONE"), 6u);
    EXPECT_EQ(err.code, 6u);
    EXPECT_THAT(log, testing::IsEmpty());
}

TEST_F(EntryFrame, ClearsTheErrorRecord)
{
    for (const Call &call : calls()) {
        err = {77, "file", 77, "message"};
        ASSERT_EQ(call.run(), 0u) << call.trace;
        EXPECT_EQ(err.code, 0u);
        EXPECT_EQ(err.file, nullptr);
        EXPECT_EQ(err.line, 0u);
        EXPECT_EQ(err.message, nullptr);
    }
}

TEST_F(EntryFrame, ReturnsWhyItCannotBegin)
{
    qbdb->log_level = 4;
    sqlite3 *const open = db;
    for (const Call &call : calls()) {
        log.clear();
        db = nullptr;
        EXPECT_EQ(call.run(), 8u);
        db = open;
        EXPECT_EQ(err.code, 0u) << call.trace;
        EXPECT_EQ(err.message, nullptr);
        EXPECT_THAT(logged(4), ElementsAre(StartsWith(with_code(call.trace, 8).substr(0, strlen(call.trace) - 8))));
    }
}

TEST_F(EntryFrame, LeavesATransactionOfTheCallerAlone)
{
    sql("BEGIN; INSERT INTO `$registry` (key,value) VALUES ('mine','1')");
    for (const Call &call : calls()) {
        EXPECT_NE(call.run(), 0u) << call.trace;
        EXPECT_EQ(err.code, 0u);
        EXPECT_FALSE(sqlite3_get_autocommit(db)) << call.trace;
    }
    sql("COMMIT");
    EXPECT_EQ(value("SELECT value FROM `$registry` WHERE key='mine'"), "1");
}

TEST_F(EntryFrame, ReturnsAFailedCommit)
{
    const std::string before = content();
    qbdb->log_level = 4;
    qbdb_set_statement_hook(qbdb, fail_commit, nullptr);
    for (const Call &call : calls()) {
        log.clear();
        EXPECT_EQ(call.run(), 13u) << call.trace;
        EXPECT_EQ(err.code, 0u) << call.trace;
        EXPECT_TRUE(sqlite3_get_autocommit(db)) << call.trace;
        EXPECT_THAT(logged(4), ElementsAre(HasSubstr(" .. rc=13 (")));
    }
    EXPECT_EQ(content(), before);
}

TEST_F(Entries, RunTheseStatements)
{
    sql("CREATE TABLE mirrored (flag);"
        "INSERT INTO service_misc VALUES ('SWITCH','a','mirrored','flag'),('LANGUAGES_SUPPORTED','x/utf-8',NULL,NULL) "
        "ON CONFLICT(key) DO UPDATE SET val=excluded.val");
    const std::string target = "SELECT table_name,column_name FROM service_misc WHERE key=";
    const struct {
        std::function<uint32_t()> call;
        uint32_t code;
        std::vector<std::string> statements;
    } cases[] = {
        {[&] { return get("SWITCH"); }, 0, {"SELECT val FROM service_misc WHERE key='SWITCH'"}},
        {[&] { return set("N'W", "v"); },
         0,
         {target + "'N''W'",
          "INSERT OR IGNORE INTO service_misc (key,val,table_name,column_name) VALUES('N''W','v',NULL,NULL)"}},
        {[&] { return set("N'W", nullptr); },
         0,
         {target + "'N''W'", "UPDATE service_misc SET val=NULL,table_name=NULL,column_name=NULL WHERE key='N''W'"}},
        {[&] { return set("NONE", nullptr); }, 0, {target + "'NONE'", "DELETE FROM service_misc WHERE key='NONE'"}},
        {[&] { return set("SWITCH", "b"); },
         0,
         {target + "'SWITCH'", "UPDATE service_misc SET val='b' WHERE key='SWITCH'", "UPDATE mirrored SET flag='b'"}},
        {[&] { return set("SWITCH", nullptr); },
         0,
         {target + "'SWITCH'", "UPDATE service_misc SET val=NULL,table_name=NULL,column_name=NULL WHERE key='SWITCH'",
          "UPDATE mirrored SET flag=NULL"}},
        {[&] { return set("LANGUAGE", "y"); },
         8,
         {"SELECT 1 FROM service_misc WHERE key='LANGUAGES_SUPPORTED' AND (val='y/utf-8' OR val LIKE 'y/utf-8,%' OR "
          "val LIKE '%,y/utf-8' OR val LIKE '%,y/utf-8,%')"}},
        {[&] { return set_free("k", "v"); },
         0,
         {"INSERT OR IGNORE INTO `$registry` (value,key) VALUES('v','k')",
          "UPDATE `$registry` SET value='v' WHERE key='k'"}},
        {[&] { return get_free("k"); }, 0, {"SELECT value FROM `$registry` WHERE key='k'"}},
        {[&] { return set_free("k", nullptr); }, 5, {"DELETE FROM `$registry` SET value=NULL WHERE key='k'"}},
    };
    for (const auto &each : cases) {
        take_statements();
        EXPECT_EQ(each.call(), each.code) << err.message;
        std::vector<std::string> expected = each.statements;
        expected.push_back(each.code ? "ROLLBACK" : "COMMIT");
        std::vector<std::string> statements = take_statements();
        EXPECT_THAT(statements.front(), testing::StartsWith("BEGIN"));
        statements.erase(statements.begin());
        EXPECT_EQ(statements, expected);
    }
}

TEST_F(EntryFrame, IsOneTransaction)
{
    take_statements();
    ASSERT_EQ(set("LANGUAGE", "de-de"), 0u);
    EXPECT_THAT(take_statements(),
                ElementsAre("BEGIN IMMEDIATE", HasSubstr("LANGUAGES_SUPPORTED"), HasSubstr("SELECT table_name"),
                            HasSubstr("UPDATE service_misc"), "COMMIT"));
    ASSERT_EQ(get("NONE"), 6u);
    EXPECT_THAT(take_statements(), ElementsAre("BEGIN", HasSubstr("SELECT val"), "ROLLBACK"));
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
