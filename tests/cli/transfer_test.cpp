// qbobj export, import: a configuration goes out and comes back row for row, or not at all.
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "anomaly/setups.h"
#include "json_text.h"
#include "qbdb_journal.h"
#include "run.h"

using qbcli::Json;
using test::Result;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

/// Values of every kind in columns of every kind, and rows whose numbers are not in order.
constexpr char kOddities[] = R"sql(
INSERT INTO `$registry` (rowid,key,value) VALUES(7,'a',X'00FF10'),(3,'b',CAST(X'C3280041' AS TEXT)),(5,'c','a'||CHAR(0)||'b'),
    (9223372036854775807,'d','"\ é 漢 😀'),(11,'e',NULL),(12,'f',''),(13,'g',X''),(14,'h',CAST(X'EDA080' AS TEXT));
INSERT INTO `$log` (id,tstamp,severity) VALUES(-5,-9223372036854775808,'x'),(8,9223372036854775807,'y');
DELETE FROM `$log` WHERE id=8;
UPDATE service_ssh SET port='no number',enabled=9e999,ui_enabled=-9e999,password_authentication=1.5;
UPDATE service_afp SET enabled=1e300,user_home_directory=X'41';
UPDATE service_nfs SET enabled=0.1,threads=5e-324,nfsv4=-0.5,domain='';
INSERT INTO cifs_dfs_option (rowid,share_id,share) VALUES(9,1,'x'),(2,1,'x');
)sql";

struct Transfer : test::Program {
    std::string document = directory.path + "/configuration.json";
    std::string copy = directory.path + "/copy.db";

    static void execute(const std::string &file, const std::string &sql)
    {
        sqlite3 *db = nullptr;
        char *why = nullptr;
        EXPECT_EQ(sqlite3_open_v2(file.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &why), SQLITE_OK) << why;
        sqlite3_close(db);
    }

    static std::vector<std::string> rows(sqlite3 *db, const std::string &sql)
    {
        sqlite3_stmt *stmt = nullptr;
        std::vector<std::string> list;
        EXPECT_EQ(sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr), SQLITE_OK) << sqlite3_errmsg(db) << sql;
        while (sqlite3_step(stmt) == SQLITE_ROW) {
            const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(stmt, 0));
            list.emplace_back(text ? text : "");
        }
        sqlite3_finalize(stmt);
        return list;
    }

    /// All rows with their numbers, each value with its kind and its bytes.
    static std::map<std::string, std::vector<std::string>> image(const std::string &file)
    {
        sqlite3 *db = nullptr;
        EXPECT_EQ(sqlite3_open_v2(file.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
        std::map<std::string, std::vector<std::string>> all;
        const std::string tables =
            "SELECT name FROM sqlite_schema WHERE type='table' AND name NOT LIKE '\\_journal%' ESCAPE '\\'";
        for (const std::string &table : rows(db, tables)) {
            std::string values = table == "sqlite_sequence" ? "''" : "rowid";
            for (const std::string &column : rows(db, "SELECT name FROM pragma_table_info('" + table + "')")) {
                const std::string name = "\"" + column + "\"";
                values += "||' '||typeof(" + name + ")||CASE typeof(" + name + ") WHEN 'real' THEN quote(" + name +
                          ") ELSE hex(" + name + ") END";
            }
            all[table] = rows(db, "SELECT " + values + " FROM `" + table + "` ORDER BY 1");
        }
        sqlite3_close(db);
        return all;
    }

    Result init(const std::string &file) const { return run({"init", file}); }
    Result import(const std::vector<std::string> &options = {}) const
    {
        std::vector<std::string> words = {"-d", copy, "import", document, "--compact"};
        words.insert(words.end(), options.begin(), options.end());
        return run(words);
    }
    static std::string content(const std::string &file)
    {
        std::ifstream stream(file);
        std::stringstream text;
        text << stream.rdbuf();
        return text.str();
    }

    /// What the source is when its secrets are gone.
    void remove_secrets() const
    {
        sqlite3 *db = nullptr;
        EXPECT_EQ(sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
        std::string sql;
        for (const std::string &table : rows(db, "SELECT name FROM sqlite_schema WHERE type='table'"))
            for (const std::string &column : rows(db, "SELECT name FROM pragma_table_info('" + table + "')")) {
                if (!qbdb_is_secret_column(table.c_str(), column.c_str())) continue;
                const std::string name = "\"" + column + "\"";
                const std::string nothing = table == "$user" ? "'*'" : "NULL";
                sql += "UPDATE `" + table + "` SET " + name + "=" + nothing + " WHERE " + name + "<>'';";
            }
        sqlite3_close(db);
        execute(path, sql);
    }

    /// The values of all columns that hold secrets.
    std::vector<std::string> secrets() const
    {
        sqlite3 *db = nullptr;
        EXPECT_EQ(sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
        std::vector<std::string> all;
        for (const std::string &table : rows(db, "SELECT name FROM sqlite_schema WHERE type='table'"))
            for (const std::string &column : rows(db, "SELECT name FROM pragma_table_info('" + table + "')")) {
                if (!qbdb_is_secret_column(table.c_str(), column.c_str())) continue;
                for (const std::string &value : rows(db, "SELECT \"" + column + "\" FROM `" + table + "`"))
                    if (value.size() > 1) all.push_back("\"" + value + "\"");
            }
        sqlite3_close(db);
        return all;
    }
};

// ---- There and back

TEST_F(Transfer, EveryPopulationComesBackRowForRow)
{
    for (const test::Family &family : test::kFamilies) {
        SCOPED_TRACE(family.name);
        for (const std::string &file : {path, copy})
            for (const char *end : {"", "-wal", "-shm"}) std::filesystem::remove(file + end);
        ASSERT_EQ(run({"init", path, "--volume", "tank"}).status, 0);
        execute(path, test::kPopulation);
        execute(path, family.population);
        ASSERT_EQ(call({"export", "--secrets", document}).status, 0);
        ASSERT_EQ(init(copy).status, 0);
        const Result result = import();
        ASSERT_EQ(result.status, 0) << result.err;
        EXPECT_THAT(result.err, IsEmpty());
        EXPECT_EQ(image(copy), image(path));
    }
}

TEST_F(Transfer, ValuesOfEveryKindComeBackExactly)
{
    execute(path, kOddities);
    ASSERT_EQ(call({"export", "--secrets", document}).status, 0);
    EXPECT_THAT(content(document), HasSubstr(R"("value": {"blob": "00ff10"})"));
    EXPECT_THAT(content(document), HasSubstr(R"("value": {"bytes": "c3280041"})"));
    EXPECT_THAT(content(document), HasSubstr(R"("enabled": {"real": "Infinity"})"));
    EXPECT_THAT(content(document), HasSubstr(R"("port": {"text": "no number"})"));
    ASSERT_EQ(init(copy).status, 0);
    ASSERT_EQ(import().status, 0);
    EXPECT_EQ(image(copy), image(path));
    const std::string before = content(document);
    EXPECT_EQ(run({"-d", copy, "export", "--secrets"}).out, before) << "the same configuration is the same document";
}

TEST_F(Transfer, SecretsStayAtHomeUnlessAskedFor)
{
    execute(path, test::kPopulation);
    for (const test::Family &family : test::kFamilies)
        if (std::string_view(family.name) == "iscsi" || std::string_view(family.name) == "ups")
            execute(path, family.population);
    ASSERT_GT(secrets().size(), 5u);
    const std::string shown = call({"export"}).out;
    const std::string all = call({"export", "--secrets"}).out;
    EXPECT_EQ(call({"--with-secrets", "export"}).out, all);
    for (const std::string &secret : secrets()) {
        EXPECT_THAT(shown, Not(HasSubstr(secret)));
        EXPECT_THAT(all, HasSubstr(secret));
    }
    file("configuration.json", shown);
    ASSERT_EQ(init(copy).status, 0);
    const Result result = import();
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(result.err, HasSubstr("the document is without secrets; to be set anew: "));
    EXPECT_THAT(result.err, HasSubstr("$user.passwd ("));
    remove_secrets();
    EXPECT_EQ(image(copy), image(path));
}

TEST_F(Transfer, AReaderOfADocumentFindsWhatItIs)
{
    const Json json = Json::parse(call({"export"}).out);
    EXPECT_EQ(json["format"], "qbobj configuration");
    EXPECT_EQ(json["schema_version"], QBDB_SCHEMA_VERSION);
    EXPECT_EQ(json["library_version"], qbobj_version());
    EXPECT_EQ(json["secrets"], false);
    EXPECT_EQ(json["tables"]["service_ssh"][0]["port"], 22);
    EXPECT_FALSE(json["tables"].contains("_journal"));
}

/// Where the secrets of records are stored: a field that comes later has to find its column here.
TEST_F(Transfer, EverySecretOfARecordIsASecretOfATable)
{
    const char *const kNowhere = "";
    const std::map<std::string, std::vector<const char *>> stored = {
        {"AdminPassword.Password", {"$user.passwd"}},
        {"AdminPassword.Answer", {"passwordrecovery.answer"}},
        {"BackupJob_SourceOrDestination.Password", {"backup.src_password", "backup.dst_password"}},
        {"Coffer.UserPassword", {"service_coffer.password"}},
        {"DaapOptions.password", {"service_daap.password"}},
        {"Initiator.ChapSecret", {"$iscsi_initiator.chap_secret"}},
        {"LunGroup.ChapSecret", {"$iscsi_lun_group.chap_secret"}},
        {"MyPassword.OldPassword", {kNowhere}},
        {"MyPassword.NewPassword", {"$user.passwd"}},
        {"ReplicateOptions.Password", {kNowhere}},
        {"Security.passWord", {kNowhere}},
        {"Timemachine.Password", {"$user.passwd"}},
        {"TivoMak.key", {"tivo_mak.key"}},
        {"UpsConfig.RemotePassword", {"_ups_config.remote_password"}},
        {"User.Password", {"$user.passwd"}},
        {"User.SmbHash", {kNowhere}},
        {"User.SysHash", {"$user.passwd"}},
        {"UserPassword.Password", {"$user.passwd"}},
        {"UserPasswordAcl.Password", {"rsync_user_password_acl.password"}},
    };
    for (const QbobjType *type = qbobj_types(); type->name; type++)
        for (const QbobjField *field = type->fields + 1; field->kind != '.'; field++) {
            if (!qbobj_is_secret(type->fields, field)) continue;
            const std::string name = std::string(type->name) + "." + field->name;
            ASSERT_TRUE(stored.contains(name)) << name;
            for (const std::string column : stored.at(name)) {
                const size_t dot = column.find('.');
                if (!column.empty()) {
                    EXPECT_TRUE(qbdb_is_secret_column(column.substr(0, dot).c_str(), column.substr(dot + 1).c_str()))
                        << name << " is stored in " << column;
                }
            }
        }
}

// ---- The file

TEST_F(Transfer, TheFileIsItsOwnersAlone)
{
    struct stat status;
    ASSERT_EQ(call({"export", document, "--secrets"}).status, 0);
    ASSERT_EQ(stat(document.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777u, 0600u);
    ASSERT_EQ(chmod(document.c_str(), 0666), 0);
    ASSERT_EQ(call({"export", document}).status, 0) << "a file that is there is replaced";
    ASSERT_EQ(stat(document.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777u, 0600u);
}

TEST_F(Transfer, PlacesThatAreNotWrittenTo)
{
    const std::string target = file("target", "as it was");
    const std::string link = directory.path + "/link";
    ASSERT_EQ(symlink(target.c_str(), link.c_str()), 0);
    const std::string pipe = directory.path + "/pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string before = content(path);
    const struct {
        std::string place;
        const char *message;
    } cases[] = {
        {link, "is a link; nothing is written through links"},
        {pipe, "is there and is not a file"},
        {path, "is a database, which is not replaced"},
        {directory.path, "is there and is not a file"},
        {directory.path + "/", "is not the name of a file"},
        {directory.path + "/none/file", "No such file or directory"},
    };
    for (const auto &each : cases) {
        SCOPED_TRACE(each.place);
        const Result result = call({"export", each.place});
        EXPECT_NE(result.status, 0);
        EXPECT_THAT(result.err, HasSubstr(each.message));
    }
    EXPECT_EQ(content(target), "as it was");
    EXPECT_EQ(content(path), before);
}

TEST_F(Transfer, AFullDiskLeavesWhatWasThere)
{
    file("configuration.json", "as it was");
    const auto no_room = [] {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{1 << 16, 1 << 16};  // enough for what lies beside the database
        setrlimit(RLIMIT_FSIZE, &limit);
    };
    execute(path,
            "WITH n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<2000) INSERT INTO `$log` (id) SELECT i FROM n");
    const Result result = test::run_command({test::program(), "-d", path, "export", document}, "", no_room);
    EXPECT_EQ(result.status, 4);
    EXPECT_THAT(result.err, HasSubstr("File too large"));
    EXPECT_EQ(content(document), "as it was");
    for (const auto &entry : std::filesystem::directory_iterator(directory.path))
        EXPECT_THAT(entry.path().filename().string(), Not(testing::EndsWith(".new")));
}

// ---- Import: what is refused

TEST_F(Transfer, ADatabaseThatIsNotFreshIsRefused)
{
    ASSERT_EQ(call({"export", document}).status, 0);
    const char *changes[] = {
        "INSERT INTO host (name) VALUES('a')",    "UPDATE service_ssh SET port=23",
        "DELETE FROM _lang_supported WHERE id=9", "INSERT INTO _volume (id,lv_name) VALUES('a','a')",
        "UPDATE service_ssh SET rowid=2",         "UPDATE `$user` SET email='a' WHERE id=0",
    };
    for (const char *change : changes) {
        SCOPED_TRACE(change);
        for (const char *end : {"", "-wal", "-shm"}) std::filesystem::remove(copy + end);
        ASSERT_EQ(init(copy).status, 0);
        execute(copy, change);
        const auto before = image(copy);
        const Result result = import();
        EXPECT_EQ(result.status, 1);
        EXPECT_THAT(result.err, HasSubstr("the database is not fresh: "));
        EXPECT_EQ(image(copy), before);
    }
}

TEST_F(Transfer, AFreshDatabaseMayHaveAVolumeAndADayOfItsOwn)
{
    ASSERT_EQ(call({"export", "--secrets", document}).status, 0);
    ASSERT_EQ(run({"init", copy, "--volume", "other"}).status, 0);
    execute(copy, "UPDATE `$user` SET last_changed=last_changed-5");
    ASSERT_EQ(import().status, 0);
    EXPECT_EQ(image(copy), image(path));
}

struct Wrong {
    const char *what;
    const char *replace;  // in the document
    const char *with;
    const char *message;
    int status = 2;
};

constexpr Wrong kWrong[] = {
    {"no JSON", "{\n  \"format\"", "[", "configuration.json: malformed JSON at line"},
    {"another document", "qbobj configuration", "something", "is no configuration that \"qbobj export\" wrote"},
    {"another schema", "\"schema_version\": 1", "\"schema_version\": 2",
     "schema_version: is 2; the database has version 1"},
    {"no schema", "\"schema_version\": 1,", "", "schema_version is missing"},
    {"a schema of another kind", "\"schema_version\": 1", "\"schema_version\": \"1\"",
     "schema_version: a number is needed"},
    {"no version", "\"library_version\": \"", "\"library_versions\": \"", "library_versions: there is no such member"},
    {"secrets of another kind", "\"secrets\": false", "\"secrets\": 0", "secrets: true or false is needed"},
    {"an unknown table", "\"host_acl\": []", "\"host_acls\": []", "tables.host_acls: there is no such table"},
    {"a statement for a table", "\"host_acl\": []", "\"host\\\"; DROP TABLE host; --\": []", "there is no such table"},
    {"a table of the database's own", "\"host_acl\": []", "\"sqlite_schema\": []",
     "tables.sqlite_schema: there is no such"},
    {"a table is missing", "\"host_acl\": [],", "", "tables: the table host_acl is missing"},
    {"no list", "\"host_acl\": []", "\"host_acl\": {}", "tables.host_acl: a list of rows is needed"},
    {"no row", "\"host_acl\": []", "\"host_acl\": [1]", "tables.host_acl[0]: a row is an object"},
    {"a table twice", "\"host_acl\": []", "\"host_acl\": [], \"host_acl\": []", "host_acl is given twice"},
    {"an unknown column", "\"gname\": \"users\"", "\"gnames\": \"users\"",
     "tables.$group[2].gnames: the table has no such"},
    {"a column is missing", "\"gname\": \"users\", ", "", "tables.$group[2]: the column gname is missing"},
    {"a column twice", "\"gname\": \"users\"", "\"gname\": \"users\", \"gname\": \"x\"", "gname is given twice"},
    {"a number for a text", "\"gname\": \"users\"", "\"gname\": 5", "tables.$group[2].gname: a text is needed"},
    {"a text for a number", "\"port\": 22", "\"port\": \"22\"",
     "tables.service_ssh[0].port: a whole number of 64 bits"},
    {"a fraction", "\"port\": 22", "\"port\": 22.5", "tables.service_ssh[0].port: a whole number of 64 bits is needed"},
    {"a huge number", "\"port\": 22", "\"port\": 9223372036854775808", "port: a whole number of 64 bits is needed"},
    {"a number beyond all", "\"port\": 22", "\"port\": 99999999999999999999999",
     "port: a whole number of 64 bits is needed"},
    {"a number beyond reals", "\"port\": 22", "\"port\": 1e999", "a number is too large"},
    {"no number", "\"port\": 22", "\"port\": NaN", "malformed JSON at line"},
    {"no number as a text", "\"port\": 22", "\"port\": {\"real\": \"NaN\"}", "port.real: a number, \"Infinity\" or"},
    {"truth", "\"port\": 22", "\"port\": true", "tables.service_ssh[0].port: a whole number of 64 bits is needed"},
    {"a list", "\"port\": 22", "\"port\": [22]", "tables.service_ssh[0].port: a whole number of 64 bits is needed"},
    {"an unknown kind", "\"port\": 22", "\"port\": {\"hex\": \"00\"}", "port: an object has one member"},
    {"two kinds", "\"port\": 22", "\"port\": {\"real\": 1, \"text\": \"\"}", "port: an object has one member"},
    {"odd digits", "\"port\": 22", "\"port\": {\"blob\": \"012\"}", "port.blob: hexadecimal digits are needed"},
    {"no digits", "\"port\": 22", "\"port\": {\"bytes\": \"0G\"}", "port.bytes: hexadecimal digits are needed"},
    {"no id", "\"id\": 99,", "\"id\": null,", "tables.$group[2].id: the number of a row is a whole number"},
    {"an id of another kind", "\"id\": 99,", "\"id\": {\"integer\": 99},",
     "$group[2].id: the number of a row is a whole"},
    {"a counter of no table", "\"counters\": {", "\"counters\": {\"host\": 5",
     "counters.host: there is no such counter"},
    {"a counter that is none", "\"counters\": {", "\"counters\": {\"$log\": \"5\"", "counters.$log: a whole number"},
    {"the same name twice", "\"gname\": \"users\"", "\"gname\": \"admin\"",
     "$group[2]: UNIQUE constraint failed: $group.gname", 1},
    {"the same id twice", "\"id\": 99,", "\"id\": 98,", "tables.$group[2]: UNIQUE constraint failed: $group.id", 1},
    {"a name that must be there", "\"gname\": \"users\"", "\"gname\": null", "$group[2]: NOT NULL constraint failed",
     1},
};

TEST_F(Transfer, WrongDocumentsAreRefusedByPlaceAndNothingIsWritten)
{
    const std::string good = call({"export"}).out;
    ASSERT_EQ(init(copy).status, 0);
    const auto before = image(copy);
    for (const Wrong &wrong : kWrong) {
        SCOPED_TRACE(wrong.what);
        std::string text = good;
        const size_t at = text.find(wrong.replace);
        ASSERT_NE(at, std::string::npos);
        file("configuration.json", text.replace(at, strlen(wrong.replace), wrong.with));
        const Result result = import();
        EXPECT_EQ(result.status, wrong.status);
        EXPECT_THAT(result.err, HasSubstr(wrong.message));
        EXPECT_THAT(result.out, IsEmpty());
        EXPECT_EQ(image(copy), before);
    }
    file("configuration.json", good);
    EXPECT_EQ(import().status, 0) << "none of them left anything behind";
}

TEST_F(Transfer, ADocumentThatSaysItHasSecretsHasThem)
{
    std::string text = call({"export", "--secrets"}).out;
    const std::string secret = "\"passwd\": \"*\", ";
    ASSERT_NE(text.find(secret), std::string::npos);
    file("configuration.json", text.erase(text.find(secret), secret.size()));
    ASSERT_EQ(init(copy).status, 0);
    EXPECT_THAT(import().err, HasSubstr("tables.$user[0]: the column passwd is missing"));
}

TEST_F(Transfer, MessagesDoNotQuoteSecrets)
{
    std::string text = call({"export", "--secrets"}).out;
    const std::string secret = "\"passwd\": \"*\"";
    file("configuration.json", text.replace(text.find(secret), secret.size(), "\"passwd\": {\"blob\": \"geheim\"}"));
    ASSERT_EQ(init(copy).status, 0);
    const Result result = import();
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("tables.$user[0].passwd.blob: hexadecimal digits are needed"));
    EXPECT_THAT(result.err, Not(HasSubstr("geheim")));
}

TEST_F(Transfer, WhatIsNoFileIsNotWaitedFor)
{
    document = directory.path + "/pipe";
    ASSERT_EQ(mkfifo(document.c_str(), 0600), 0);
    ASSERT_EQ(init(copy).status, 0);
    const Result result = import();
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("is not a file"));
    document = directory.path + "/none";
    EXPECT_THAT(import().err, HasSubstr("No such file or directory"));
}

TEST_F(Transfer, ALockedDatabaseIsNotImportedInto)
{
    ASSERT_EQ(call({"export", document}).status, 0);
    ASSERT_EQ(init(copy).status, 0);
    sqlite3 *db = nullptr;
    ASSERT_EQ(sqlite3_open_v2(copy.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    const Result result = import({"--timeout", "20"});
    sqlite3_close(db);
    EXPECT_EQ(result.status, 4);
    EXPECT_THAT(result.err, HasSubstr("database is locked by another process (waited 20 ms; see --timeout)"));
}

// ---- The common options, the journal

TEST_F(Transfer, AnImportCanBeTriedAndForbidden)
{
    execute(path, test::kPopulation);
    ASSERT_EQ(call({"export", document, "--secrets"}).status, 0);
    ASSERT_EQ(init(copy).status, 0);
    const auto before = image(copy);
    EXPECT_THAT(import({"--read-only"}).err, HasSubstr("it changes the database, which --read-only forbids"));
    const Result tried = import({"--dry-run"});
    ASSERT_EQ(tried.status, 0) << tried.err;
    const Json json = Json::parse(tried.out);
    EXPECT_EQ(json["result"]["Imported"], false);
    EXPECT_THAT(tried.out, HasSubstr(R"("table":"$user","change":"added","key":{"id":100})"));
    EXPECT_THAT(tried.out, Not(HasSubstr("$1$")));
    EXPECT_EQ(image(copy), before);
    const Result done = import({"--changes"});
    EXPECT_EQ(Json::parse(done.out)["changes"], json["changes"]);
    EXPECT_EQ(image(copy), image(path));
    EXPECT_THAT(call({"--dry-run", "export"}).err, HasSubstr("--dry-run is for operations"));
    EXPECT_EQ(call({"--read-only", "export", document}).status, 0);
}

TEST_F(Transfer, TheJournalStaysAtHomeAndKeepsAnImportAsOneCall)
{
    ASSERT_EQ(call({"journal", "on"}).status, 0);
    ASSERT_EQ(call({"addLog", "time=5", "severity=info", "msgTag=LOGMSG_A"}).status, 0);
    ASSERT_EQ(call({"export", document, "--secrets"}).status, 0);
    ASSERT_EQ(init(copy).status, 0);
    const auto before = image(copy);
    ASSERT_EQ(run({"-d", copy, "journal", "on"}).status, 0);
    const Result result = import();
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(image(copy), image(path));
    const Json calls = Json::parse(run({"-d", copy, "journal", "list"}).out);
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0]["operation"], "import");
    EXPECT_EQ(calls[0]["rows"], 3) << "the volume, its name among the defaults, the entry; not what stayed the same";
    ASSERT_EQ(run({"-d", copy, "undo"}).status, 0);
    EXPECT_EQ(image(copy)["$log"], before.at("$log"));
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
