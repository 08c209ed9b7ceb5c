// The program from outside: what it prints, where, and its exit status.
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "arguments.h"
#include "cli/run.h"

using nlohmann::json;
using test::Program;
using test::Result;
using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

namespace {

TEST_F(Program, InitCreatesADatabaseOnceOnly)
{
    EXPECT_EQ(value("SELECT id FROM _volume"), "tank");
    const Result again = run({"init", path});
    EXPECT_EQ(again.status, 4);
    EXPECT_EQ(again.err, "qbobj: " + path + ": is an appliance database already\n");
    const std::string bare = directory.path + "/bare.db";
    EXPECT_EQ(run({"init", bare}).status, 0);
    EXPECT_EQ(call({"-d", bare, "getLog"}).err, "qbobj: --database: is given twice\n");
}

TEST_F(Program, CallsWithFieldsAndPrintsJsonIntoAPipe)
{
    const Result added = call({"addLog", "time=7", "severity=warning", "msgTag=LOGMSG_X"});
    EXPECT_EQ(added.status, 0) << added.err;
    EXPECT_EQ(added.out, "") << "an operation without outputs prints nothing";
    const Result got = call({"getLog", "limit=10"});
    ASSERT_EQ(got.status, 0) << got.err;
    EXPECT_EQ(got.err, "");
    EXPECT_EQ(json::parse(got.out), json::parse(R"({"entries":[{"LogId":1,"TimeStamp":7,"Severity":"warning",
        "Category":"misc","MessageTag":"LOGMSG_X","MessageArgsXml":null}],"count":1,"total":1})"));
    EXPECT_THAT(got.out, StartsWith("{\n  \"entries\": [\n"));
}

TEST_F(Program, TakesTheNameWithItsPrefixAndOptionsAnywhere)
{
    EXPECT_EQ(run({"qbobj_getLog", "--compact", "-d", path}).out, "{\"entries\":[],\"count\":0,\"total\":0}\n");
    EXPECT_EQ(run({"--compact", "--database", path, "getLog"}).out, "{\"entries\":[],\"count\":0,\"total\":0}\n");
}

TEST_F(Program, TakesTheDatabaseFromTheEnvironment)
{
    setenv("QBOBJ_DB", path.c_str(), 1);
    EXPECT_EQ(run({"getLog", "--compact"}).status, 0);
    EXPECT_EQ(run({"-d", path + ".none", "getLog"}).status, 4) << "-d goes first";
    unsetenv("QBOBJ_DB");
    const Result none = run({"getLog"});
    EXPECT_EQ(none.status, 2);
    EXPECT_THAT(none.err, HasSubstr("Give -d FILE, or set QBOBJ_DB"));
}

TEST_F(Program, BareValuesFillArgumentsInOrder)
{
    ASSERT_EQ(call({"addLog", "7", "warning", "system", "LOGMSG_X"}).status, 0);
    EXPECT_EQ(value("SELECT tstamp||severity||category||msg_tag FROM `$log`"), "7warningsystemLOGMSG_X");
    ASSERT_EQ(call({"addLog", "severity=err", "8"}).status, 0) << "named ones are passed over";
    EXPECT_EQ(value("SELECT tstamp||severity FROM `$log` WHERE id=2"), "8err");
    ASSERT_EQ(call({"truncateLog", "0"}).status, 0);
    EXPECT_EQ(value("SELECT group_concat(tstamp) FROM `$log`"), "8") << "the newest second stays";
}

TEST_F(Program, WordsThatAreCommandsAreValuesAfterAnOperation)
{
    ASSERT_EQ(call({"addLog", "1", "info", "misc", "LOGMSG_X", "list"}).status, 0);
    EXPECT_EQ(value("SELECT msg_args_xml FROM `$log`"), "list");
    ASSERT_EQ(call({"addLog", "1", "info", "misc", "LOGMSG_X", "getLog"}).status, 0);
    EXPECT_EQ(value("SELECT msg_args_xml FROM `$log` WHERE id=2"), "getLog");
}

TEST_F(Program, DashesAfterTwoDashesAreValues)
{
    ASSERT_EQ(call({"addLog", "1", "info", "misc", "LOGMSG_X", "--", "--json"}).status, 0);
    EXPECT_EQ(value("SELECT msg_args_xml FROM `$log`"), "--json");
    ASSERT_EQ(call({"addLog", "-5"}).status, 0) << "a negative number is no option";
    EXPECT_EQ(count(), "2");
}

TEST_F(Program, TakesJsonAsTextFromAFileAndFromStandardInput)
{
    for (int32_t i = 1; i <= 3; i++) ASSERT_EQ(call({"addLog", std::to_string(i)}).status, 0);
    const std::string query = R"({"limit": 1, "order": 1})";
    const std::string path_of_query = file("query.json", query);
    const std::vector<std::pair<std::vector<std::string>, std::string>> forms = {
        {{query}, ""},
        {{"@" + path_of_query}, ""},
        {{"-"}, query},
        {{"@-"}, query},
        {{"query=@" + path_of_query}, ""},
        {{"query=-"}, query},
        {{"query=" + query}, ""},
        {{R"({"query": {"limit": 1, "order": 1}})"}, ""},
        {{R"({"limit": 1})", "order=1"}, ""},
        {{"query.limit=1", "query.order=1"}, ""},
    };
    for (const auto &[words, input] : forms) {
        SCOPED_TRACE(words[0]);
        std::vector<std::string> all = {"getLog", "--compact"};
        all.insert(all.end(), words.begin(), words.end());
        const Result result = call(all, input);
        ASSERT_EQ(result.status, 0) << result.err;
        const json got = json::parse(result.out);
        ASSERT_EQ(got["entries"].size(), 1u);
        EXPECT_EQ(got["entries"][0]["LogId"], 3);
        EXPECT_EQ(got["total"], 3);
    }
}

/// Words that are refused, and a part of the message.
struct Refused {
    std::vector<std::string> words;
    std::string message;
    std::string input = {};
};

TEST_F(Program, RefusesWhatItDoesNotUnderstandAndCallsNothing)
{
    ASSERT_EQ(call({"addLog", "1"}).status, 0);
    std::string deep(40, '[');
    deep.append(40, ']');
    const std::vector<Refused> cases = {
        {{"adLog", "1"}, "there is no operation adLog (did you mean addLog?)"},
        {{"lits"}, "there is no operation lits (did you mean list?)"},
        {{"quite-something-else"}, "there is no operation quite-something-else; \"qbobj list\" shows all"},
        {{"addLog", "1", "--jsno"}, "addLog: there is no option --jsno (did you mean --json?)"},
        {{"--jsno"}, "there is no option --jsno (did you mean --json?)"},
        {{"addLog", "time=1", "severty=info"}, "addLog: there is no field severty (did you mean severity?)"},
        {{"addLog", "time=1", "severity=info", "severity=info"}, "addLog: severity: is given twice"},
        {{"addLog", R"({"time":1,"time":2})"}, "addLog: the JSON argument: time is given twice"},
        {{"addLog", "severity=info"}, "addLog: the argument time (a number) is missing"},
        {{"addLog", R"({"time":null})"}, "addLog: the argument time (a number) is missing"},
        {{"truncateLog"}, "truncateLog: the argument keep (a number) is missing"},
        {{"addLog", "time=1.5"}, "time: a whole number from -2147483648 to 2147483647 is needed, not \"1.5\""},
        {{"addLog", "time="}, "time: a whole number from -2147483648 to 2147483647 is needed, not \"\""},
        {{"addLog", "time=2147483648"}, "time: a whole number from -2147483648 to 2147483647 is needed"},
        {{"addLog", "time=-2147483649"}, "time: a whole number"},
        {{"addLog", "time=1x"}, "not \"1x\""},
        {{"addLog", "time= 1"}, "not \" 1\""},
        {{"addLog", "time=+1"}, "not \"+1\""},
        {{"addLog", R"({"time":1.0})"}, "time: a whole number from -2147483648 to 2147483647 is needed, not 1.0"},
        {{"addLog", R"({"time":"1"})"}, "time: a whole number"},
        {{"addLog", R"({"time":true})"}, "not true"},
        {{"addLog", R"({"time":99999999999999999999})"}, "time: a whole number"},
        {{"addLog", R"({"time":1e999})"}, "malformed JSON: a number is too large for any field"},
        {{"addLog", R"({"time":1,"severity":5})"}, "severity: a text is needed, not 5"},
        {{"addLog", R"({"time":1,"severity":"\u0000"})"}, "severity: the text holds a NUL character"},
        {{"addLog", "time=1", "severity=\xC3"}, "severity: the text is not valid UTF-8"},
        {{"addLog", "time=1", "severity=\xED\xA0\x80"}, "severity: the text is not valid UTF-8"},
        {{"addLog", "{\"severity\":\"\xC3\"}"}, "malformed JSON at line 1, column 15"},
        {{"addLog", "{\"time\":1,\n \"severity\" 2}"}, "malformed JSON at line 2, column 13"},
        {{"addLog", "{\"time\":1"}, "malformed JSON at line 1, column 10"},
        {{"addLog", "-"}, "standard input: malformed JSON at line 1, column 1", ""},
        {{"addLog", "-"}, "a JSON object or a JSON array is needed", "5"},
        {{"addLog", "-"}, "standard input: nested deeper than 32 levels", deep},
        {{"getLog", "-", "query=-"}, "standard input: it is read once", "{}"},
        {{"addLog", "[1]"}, "a JSON object is needed: addLog takes no list"},
        {{"addLog", "1", "a", "b", "c", "d", "e"}, "nothing is left that could take the bare value \"e\""},
        {{"getLog", "query=5"}, "query: a record is written as JSON, query='{…}'"},
        {{"getLog", "query=[]"}, "query: a JSON object (LogQuery) is needed"},
        {{"getLog", "query.limt=5"}, "query.limt: LogQuery has no field limt (did you mean limit?)"},
        {{"getLog", "query={\"limt\":5}"}, "query: there is no field limt (did you mean limit?)"},
        {{"getLog", "limit.x=5"}, "limit.x: there is nothing inside to be named x"},
        {{"getLog", "query={}", "limit=1", "limit=2"}, "limit: is given twice"},
        {{"getLog", "limit=1", "query={}"}, "query: is given twice"},
        {{"getLog", "entries=[]"}, "there is no field entries"},
        {{"getLog", "@" + directory.path}, "Is a directory"},
        {{"getLog", "@" + directory.path + "/none"}, "No such file or directory"},
        {{"--read-only", "addLog", "1"}, "it changes the database, which --read-only forbids"},
        {{"--table", "--compact", "getLog"}, "a table or JSON? --table excludes the other"},
        {{"getLog", "--timeout", "soon"}, "--timeout: a whole number from 0 to 4294967295 is needed, not \"soon\""},
        {{"getLog", "--log-level", "-1"}, "--log-level: a whole number from 0 to 4294967295 is needed, not \"-1\""},
        {{"getLog", "--timeout"}, "--timeout: a value is missing"},
        {{"getLog", "--json=5"}, "--json: takes no value"},
        {{"completion", "fish"}, "completion: for bash and for zsh, not for fish"},
        {{"completion"}, "completion: the SHELL is missing; \"qbobj help completion\" says how it is called"},
        {{"describe"}, "describe: the NAME is missing"},
        {{"importUsers"}, "importUsers: the FILE is missing"},
        {{"init"}, "init: the FILE is missing"},
        {{"help", "Usr"}, "there is no operation or type Usr (did you mean User?)"},
        {{"list", "--nonsense"}, "list: there is no option --nonsense\n"},
        {{"list", "--typs"}, "list: there is no option --typs (did you mean --types?)"},
        {{"list", "log", "user"}, "list: \"user\" is one word too many; \"qbobj help list\" says how it is called"},
        {{"describe", "addUser", "extra"}, "describe: \"extra\" is one word too many"},
        {{"init", directory.path + "/new.db", "--volum", "tank"},
         "init: there is no option --volum (did you mean --volume?)"},
        {{"init", directory.path + "/new.db", "tank"}, "init: \"tank\" is one word too many"},
        {{"importUsers", "list.txt", "--dryrun"}, "importUsers: there is no option --dryrun (did you mean --dry-run?)"},
        {{"completion", "bash", "-x"}, "completion: there is no option -x"},
        {{"version", "now"}, "version: \"now\" is one word too many"},
        {{"help", "getLog", "addLog"}, "help: \"addLog\" is one word too many"},
        {{"createUser"}, "there is no operation createUser (did you mean addUser?)"},
        {{"userlist"}, "there is no operation userlist (did you mean getUserCollection?)"},
        {{"describe", "remove-user"}, "there is no operation or type remove-user (did you mean deleteUser?)"},
        {{"describe", "Usr"}, "there is no operation or type Usr (did you mean User?)"},
        {{"list", "zzz"}, "no operation matches zzz"},
        {{}, "which operation?"},
    };
    for (const Refused &refused : cases) {
        SCOPED_TRACE(refused.message);
        const Result result = call(refused.words, refused.input);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.err, StartsWith("qbobj: "));
        EXPECT_THAT(result.err, HasSubstr(refused.message));
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    }
    EXPECT_EQ(count(), "1") << "nothing was called";
    EXPECT_NE(access((directory.path + "/new.db").c_str(), F_OK), 0) << "no database was made";
}

TEST_F(Program, AChangeWithNothingGivenMustBeMeant)
{
    ASSERT_EQ(call({"addLog", "1"}).status, 0);
    const Result refused = call({"deleteLog"});
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.err,
              "qbobj: deleteLog: it changes the database, and nothing is given: \"qbobj describe deleteLog\" shows the "
              "arguments; null says that nothing is meant\n");
    for (const char *operation : {"addUser", "deleteUser", "modifyGroup", "setAccountDefault"}) {
        EXPECT_THAT(call({operation}).err, HasSubstr("it changes the database, and nothing is given")) << operation;
        EXPECT_EQ(call({operation}).status, 2);
    }
    EXPECT_EQ(count(), "1");
    EXPECT_EQ(call({"getUserHomeFolderTotalConsumedInByte"}).err.find("nothing is given"), std::string::npos)
        << "it takes no arguments";

    EXPECT_THAT(call({"setAccountDefault", "null"}).err, HasSubstr("def: must not be null"));
    EXPECT_THAT(call({"setAccountDefault", "def=null"}).err, HasSubstr("def: must not be null"));
    for (const std::vector<std::string> &words : std::vector<std::vector<std::string>>{
             {"deleteLog", "null"}, {"deleteLog", "query=null"}, {"deleteLog", R"({"query":null})"}}) {
        ASSERT_EQ(call({"addLog", "1"}).status, 0);
        const Result emptied = call(words);
        EXPECT_EQ(emptied.status, 0) << emptied.err;
        EXPECT_EQ(count(), "0") << words[1];
    }
    const Result none = call({"addUser", "null"});
    EXPECT_EQ(none.status, 0);
    EXPECT_EQ(none.out, "") << "nothing was added, nothing is shown";
}

TEST_F(Program, ALoneNullIsATextWhereATextIsNeeded)
{
    const Result result = call({"deleteNetworkInterface", "null"});
    EXPECT_THAT(result.err, HasSubstr("(null)")) << "an interface of that name";
    EXPECT_THAT(result.err, Not(HasSubstr("missing")));
}

TEST_F(Program, TheExitStatusTellsTheClassOfAFailure)
{
    ASSERT_EQ(call({"addUser", "UserName=anna", "GroupName=users", "Password=-"}, "Secret-123\n").status, 0);
    const struct {
        std::vector<std::string> words;
        int status;
    } cases[] = {
        {{"getLog"}, 0},
        {{"addLog", "1", "loud"}, 1},               // 8
        {{"getSshPublicKeyById", "99"}, 1},         // 838
        {{"addLog", "loud"}, 2},                    // no number
        {{"getNetworkInterface", "Name=none"}, 3},  // 6
        {{"getUID", "anna"}, 0},
        {{"getUID", "nobody-else"}, 3},
        {{"getPosixGID", "no-group"}, 3},
        {{"isMemberOfGroup", "anna", "users"}, 0},
        {{"isMemberOfGroup", "anna", "admin"}, 3},
        {{"getSmbUserNameMapCount", "anna", "uname"}, 0},
        {{"getSmbUserNameMapCount", "anna", "no-type"}, 1},
        {{"-d", directory.path, "getLog"}, 2},  // named twice
        {{"list"}, 0},
        {{"list", "zzz"}, 2},
    };
    for (const auto &each : cases)
        EXPECT_EQ(call(each.words).status, each.status) << each.words[0] << each.words.back();
    EXPECT_EQ(json::parse(call({"isMemberOfGroup", "anna", "admin"}).out), json::parse(R"({"result":1})"));
    EXPECT_EQ(json::parse(call({"getUID", "nobody-else", "--json"}).err)["status"], 3);
}

TEST_F(Program, ALookUpThatFailsIsNotOneThatFindsNothing)
{
    sqlite3 *db = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db, "ALTER TABLE `$user` RENAME TO other", nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(db);
    const Result id = call({"getUID", "anna"});
    EXPECT_EQ(id.status, 4);
    EXPECT_THAT(id.err, HasSubstr("no such table: $user"));
    const Result answer = call({"isMemberOfGroup", "anna", "users"});
    EXPECT_EQ(answer.status, 4);
    EXPECT_THAT(answer.err, HasSubstr("no such table: $user"));
    EXPECT_EQ(call({"getUserCollection"}).status, 4) << "5";
}

TEST_F(Program, MessagesDoNotShowANullPointer)
{
    const Result refused = call({"addNetworkInterface", "Name=eth0"});
    EXPECT_NE(refused.status, 0);
    EXPECT_THAT(refused.err, Not(HasSubstr("(null)")));
    EXPECT_EQ(refused.err, "qbobj: addNetworkInterface: 8 Invalid NetworkInterface Mac (not given)\n");
}

TEST_F(Program, DashesOfACommandArePassedOn)
{
    const std::string odd = directory.path + "/odd";
    ASSERT_EQ(mkdir(odd.c_str(), 0700), 0);
    const Result made =
        test::run_command({test::program(), "init", "--", "-odd.db"}, "", [&] { (void)!chdir(odd.c_str()); });
    EXPECT_EQ(made.status, 0) << made.err;
    EXPECT_EQ(access((odd + "/-odd.db").c_str(), F_OK), 0);
}

TEST_F(Program, ShowsTheOperationsOwnFailure)
{
    const Result result = call({"addLog", "time=1", "severity=loud"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "qbobj: addLog: 8 Specified Severity (loud) is invalid.\n");
    const Result as_json = call({"addLog", "time=1", "severity=loud", "-j"});
    EXPECT_EQ(as_json.status, 1);
    const json object = json::parse(as_json.err);
    EXPECT_EQ(object["operation"], "addLog");
    EXPECT_EQ(object["code"], 8);
    EXPECT_EQ(object["message"], "Specified Severity (loud) is invalid.");
    EXPECT_THAT(object["file"].get<std::string>(), MatchesRegex(".+\\.cpp"));
    EXPECT_GT(object["line"], 0);
    const json usage = json::parse(call({"addLog", "--json", "time=x"}).err);
    EXPECT_EQ(usage["operation"], "addLog");
    EXPECT_TRUE(usage["code"].is_null());
}

TEST_F(Program, ControlCharactersReachNoTerminal)
{
    const Result refused = call({"addLog", "time=1", "severity=\x1b[31m"});
    EXPECT_EQ(refused.err, "qbobj: addLog: 8 Specified Severity (\\x1b[31m) is invalid.\n");
    ASSERT_EQ(call({"addLog", "time=1", "argsXml=a\x1b]0;b\nc"}).status, 0);
    const Result shown = call({"getLog", "--table"});
    EXPECT_THAT(shown.out, HasSubstr("a\\x1b]0;b\\nc"));
    EXPECT_EQ(shown.out.find('\x1b'), std::string::npos);
}

TEST_F(Program, SaysWhyADatabaseCannotBeOpened)
{
    const std::string other = file("other.txt", "some other text, long enough to be looked at");
    const Result no_file = run({"-d", path + ".none", "getLog"});
    EXPECT_EQ(no_file.status, 4);
    EXPECT_EQ(no_file.err, "qbobj: getLog: " + path + ".none: no such database\n");
    const Result not_ours = run({"-d", other, "getLog"});
    EXPECT_EQ(not_ours.status, 4);
    EXPECT_EQ(not_ours.err, "qbobj: getLog: " + other + ": is not an appliance database\n");
}

TEST_F(Program, ReadsWhatMayOnlyBeRead)
{
    ASSERT_EQ(call({"addLog", "1"}).status, 0);
    EXPECT_THAT(call({"--read-only", "getLog", "--compact"}).out, HasSubstr("\"total\":1"));
}

TEST_F(Program, SaysThatTheDatabaseIsLocked)
{
    sqlite3 *other = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    const Result locked = call({"addLog", "1", "--timeout", "30"});
    EXPECT_EQ(locked.status, 4);
    EXPECT_EQ(locked.err, "qbobj: addLog: 5 database is locked by another process (waited 30 ms; see --timeout)\n");
    const json object = json::parse(call({"addLog", "1", "--timeout", "0", "--json"}).err);
    EXPECT_EQ(object["code"], 5);
    EXPECT_TRUE(object["file"].is_null());
    sqlite3_close(other);
    EXPECT_EQ(call({"addLog", "1", "--timeout", "30"}).status, 0);
}

TEST_F(Program, ReadersWaitForNobody)
{
    sqlite3 *other = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    EXPECT_EQ(call({"getLog", "--timeout", "0"}).status, 0);
    EXPECT_EQ(call({"addLog", "1", "--timeout", "0"}).status, 4);
    sqlite3_close(other);
}

TEST_F(Program, WorksWithASupportLibraryThatHasNoCallForReaders)
{
    const auto with_the_contract_only = [this](std::vector<std::string> words) {
        words.insert(words.begin(), {test::program(), "-d", path});
        return test::run_command(words, "",
                                 [] { setenv("LD_LIBRARY_PATH", test::build_path("tests/contract").c_str(), 1); });
    };
    EXPECT_EQ(with_the_contract_only({"addLog", "1"}).status, 0);
    EXPECT_THAT(with_the_contract_only({"getLog", "--compact"}).out, HasSubstr("\"total\":1"));
    // It reads under the lock for writing, which also shows that it is the other library.
    sqlite3 *other = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    const Result locked = with_the_contract_only({"getLog", "--timeout", "0"});
    EXPECT_EQ(locked.status, 4);
    EXPECT_THAT(locked.err, HasSubstr("5 database is locked"));
    sqlite3_close(other);
}

TEST_F(Program, AFailedCommitIsNoSuccess)
{
    sqlite3 *other = nullptr;  // holds the log open, so that it grows and stays
    ASSERT_EQ(sqlite3_open(path.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other,
                           "PRAGMA wal_autocheckpoint=0; CREATE TABLE filler(x);"
                           "INSERT INTO filler VALUES(zeroblob(100000))",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    const Result result = test::run_command({test::program(), "-d", path, "addLog", "1"}, "", [] {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {90000, 90000};  // less than the log's size: nothing can be appended
        setrlimit(RLIMIT_FSIZE, &limit);
    });
    EXPECT_EQ(result.status, 4);
    EXPECT_EQ(result.err, "qbobj: addLog: the change could not be stored; the database is as it was\n");
    sqlite3_close(other);
    EXPECT_EQ(count(), "0");
}

TEST_F(Program, AFullDiskBehindStandardOutputIsAFailure)
{
    const Result result =
        test::run_command({test::program(), "-d", path, "getLog"}, "", [] { dup2(open("/dev/full", O_WRONLY), 1); });
    EXPECT_EQ(result.status, 4);
    EXPECT_EQ(result.err, "qbobj: getLog: the result cannot be written: No space left on device\n");
}

TEST_F(Program, TracesOnStandardErrorOnlyWhenAsked)
{
    EXPECT_EQ(call({"getLog", "limit=3"}).err, "");
    const Result traced = call({"getLog", "limit=3", "--trace", "--compact"});
    EXPECT_THAT(traced.err, MatchesRegex("(.|\n)*[a-z0-9_]+\\.cpp:[0-9]+: \\[4\\] >>>> qbobj_getLog\\(\\)\n(.|\n)*"));
    EXPECT_THAT(traced.err, HasSubstr("[5]  i limit = 3\n"));
    EXPECT_EQ(traced.out, "{\"entries\":[],\"count\":0,\"total\":0}\n");
    const Result calls = call({"getLog", "--log-level", "4"});
    EXPECT_THAT(calls.err, HasSubstr("<<<< qbobj_getLog() ==> rc=0"));
    EXPECT_THAT(calls.err, Not(HasSubstr("LogQuery")));
    EXPECT_THAT(call({"addLog", "1", "loud", "--log-level=2"}).err,
                HasSubstr("[2] Specified Severity (loud) is invalid.\nqbobj: addLog: 8"));
}

TEST_F(Program, KeepsPasswordsToItself)
{
    const std::vector<std::string> add = {"addUser", "UserName=anna", "GroupName=users", "Password=-", "--trace"};
    const Result added = call(add, "Secret-123\n");
    ASSERT_EQ(added.status, 0) << added.err;
    EXPECT_EQ(json::parse(added.out)["Password"], "●●●●●●●●");
    EXPECT_THAT(added.err, HasSubstr("s Password = ●●●●●●●●\n"));
    EXPECT_THAT(added.out + added.err, Not(HasSubstr("Secret-123")));
    const Result again = call(add, "Secret-123\n");
    EXPECT_EQ(again.status, 1);
    EXPECT_THAT(again.err, testing::EndsWith("qbobj: addUser: 801 User (anna) already exists.\n"));
    EXPECT_EQ(call({"addUser", "UserName=bert", "GroupName=users", "Password=Secret-123"}).status, 2);
    EXPECT_EQ(value("SELECT COUNT(*) FROM `$user` WHERE uname='bert'"), "0");
}

TEST_F(Program, WhatAReadPrintsCanBeChangedAndWrittenBack)
{
    ASSERT_EQ(call({"addUser", "UserName=anna", "GroupName=users", "Password=-"}, "Secret-123\n").status, 0);
    const std::string hash = value("SELECT passwd FROM `$user` WHERE uname='anna'");
    const std::string id = std::to_string(json::parse(call({"getUID", "anna"}).out)["id"].get<int>());
    const std::string user = call({"getUser", "UserId=" + id}).out;
    const Result changed = call({"modifyUser", "-", "Email=anna@example.org"}, user);
    ASSERT_EQ(changed.status, 0) << changed.err;
    EXPECT_EQ(value("SELECT email FROM `$user` WHERE uname='anna'"), "anna@example.org");
    EXPECT_EQ(value("SELECT passwd FROM `$user` WHERE uname='anna'"), hash) << "the mask leaves the password as it is";
}

TEST_F(Program, SaysWhatIsNotStored)
{
    const Result added =
        call({"addUser", "UserName=anna", "GroupName=users", "FullName=Anna", "Password=-"}, "Secret-123\n");
    EXPECT_EQ(added.status, 0);
    EXPECT_EQ(added.err, "qbobj: addUser: warning: FullName is not stored by addUser\n");
    ASSERT_EQ(call({"addLog", "1"}).status, 0);
    const Result deleted = call({"deleteLog", "msg_tag=LOGMSG_X"});
    EXPECT_EQ(deleted.status, 2);
    EXPECT_EQ(deleted.err, "qbobj: deleteLog: msg_tag is not used by deleteLog\n");
    EXPECT_EQ(count(), "1") << "the whole log would have gone";
}

TEST_F(Program, RefusesAWordThatAFieldDoesNotKnow)
{
    const Result refused = call({"getLog", "severity=loud"});
    EXPECT_EQ(refused.status, 2);
    EXPECT_THAT(refused.err, HasSubstr("getLog: severity: \"loud\" is none of its words (info, notice, warning, "));
    EXPECT_EQ(call({"getLog", "severity=WARN"}).status, 0);
}

TEST_F(Program, EverySettingsRecordCanBeReadAndWrittenBack)
{
    ASSERT_EQ(call({"addUser", "UserName=anna", "GroupName=users", "Password=-"}, "Secret-123\n").status, 0);
    ASSERT_EQ(call({"addNetworkInterface", "Name=eth0", "Mac=00:11:22:33:44:55", "Protocol=dhcp"}).status, 0);
    ASSERT_EQ(
        call({"addSshPublicKey", "UserId=100", "ServeFor=rsync", "Type=ssh-ed25519", "Key=AAAA", "Title=t"}).status, 0);
    ASSERT_EQ(call({"addGroup", "GroupName=family", R"(SecondaryMember=[{"UserId":100}])"}).status, 0);
    const struct {
        std::vector<std::string> read;
        std::vector<std::string> write;
    } cases[] = {
        {{"getAccountDefault"}, {"setAccountDefault", "-"}},
        {{"getAdminPassword"}, {"setAdminPassword", "-"}},
        {{"getSecurity"}, {"setSecurity", "-"}},
        {{"getNetworkInterface", "Name=eth0"}, {"modifyNetworkInterface", "-"}},
        {{"getNetworkInterface", "Name=eth0"}, {"modifyNetworkInterface", "nif=@-"}},
        {{"getSshPublicKeyById", "1"}, {"setSshPublicKeyById", "-"}},
        {{"getUser", "UserId=100"}, {"modifyUser", "-"}},
    };
    for (const auto &each : cases) {
        SCOPED_TRACE(each.write[0]);
        const Result before = call(each.read);
        ASSERT_EQ(before.status, 0) << before.err;
        const Result written = call(each.write, before.out);
        EXPECT_EQ(written.status, 0) << written.err;
        EXPECT_EQ(written.err, "") << "nothing to warn of";
        EXPECT_EQ(call(each.read).out, before.out);
    }
    // A collection is written back with its counts or as the list that it holds.
    const std::string groups = call({"getGroupCollection"}).out;
    for (const std::string &form : {groups, json::parse(groups)["Group"].dump()}) {
        const Result written = call({"modifyGroup", "-"}, form);
        EXPECT_EQ(written.status, 0) << written.err;
        EXPECT_EQ(call({"getGroupCollection"}).out, groups);
    }
}

TEST_F(Program, SecretsGoIntoAPipeOnlyWhenAskedFor)
{
    ASSERT_EQ(call({"addUser", "UserName=anna", "GroupName=users", "Password=-"}, "Secret-123\n").status, 0);
    const std::string hash = value("SELECT passwd FROM `$user` WHERE uname='anna'");
    const auto password = [&](const std::vector<std::string> &words) {
        return json::parse(call(words).out)["User"][0]["Password"].get<std::string>();
    };
    EXPECT_EQ(password({"getUserCollection", "with_password=1"}), "●●●●●●●●");
    EXPECT_EQ(password({"getUserCollection", "with_password=1", "--with-secrets"}), hash);
    const Result table = call({"getUserCollection", "with_password=1", "--with-secrets", "--table"});
    EXPECT_EQ(table.status, 2);
    EXPECT_THAT(table.err, HasSubstr("--with-secrets: not on a terminal"));
}

TEST_F(Program, AnswersAreResultsAndMinusOneIsNotFound)
{
    EXPECT_EQ(call({"getUID", "admin", "--compact"}).out, "{\"id\":98}\n");
    EXPECT_EQ(call({"isMemberOfGroup", "admin", "admin", "--compact"}).out, "{\"result\":0}\n");
    const Result nobody = call({"getUID", "somebody-else"});
    EXPECT_EQ(nobody.status, 3);
    EXPECT_EQ(nobody.out, "");
    EXPECT_EQ(nobody.err, "qbobj: getUID: not found\n");
    EXPECT_EQ(json::parse(call({"getUID", "somebody-else", "-j"}).err)["code"], -1);
}

TEST_F(Program, ListsOperations)
{
    const Result all = run({"list"});
    ASSERT_EQ(all.status, 0);
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) {
        EXPECT_THAT(all.out, HasSubstr("  " + qbcli::short_name(*row) + " "));
        EXPECT_THAT(all.out, HasSubstr(row->summary));
    }
    EXPECT_THAT(run({"list", "*elet*"}).out, AllOf(HasSubstr("deleteLog"), Not(HasSubstr("getLog"))));
    EXPECT_THAT(run({"list", "system LOG"}).out, HasSubstr("addLog")) << "a word of the family";
    EXPECT_THAT(run({"list", "--types", "LogE*"}).out, "LogEntry\n");
    const json rows = json::parse(run({"list", "truncateLog", "--json"}).out);
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0]["name"], "truncateLog");
    EXPECT_EQ(rows[0]["arguments"][0]["name"], "keep");
}

TEST_F(Program, DescribesEveryOperationAndType)
{
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) {
        SCOPED_TRACE(row->name);
        const Result described = run({"describe", row->name});
        EXPECT_EQ(described.status, 0) << described.err;
        for (uint32_t i = 0; i < row->count; i++) {
            EXPECT_THAT(described.out, HasSubstr(row->arguments[i].name));
            // What the description points at is there.
            if (!row->arguments[i].type) continue;
            const char *type = row->arguments[i].type->name;
            EXPECT_THAT(described.out, HasSubstr(std::string("(qbobj describe ") + type + ")"));
            EXPECT_THAT(run({"describe", type}).out, StartsWith(std::string(type) + ": a record")) << type;
        }
        EXPECT_THAT(described.out, Not(HasSubstr("the message says why"))) << "a code without its meaning";
    }
    const Result operation = run({"describe", "addLog"});
    EXPECT_THAT(operation.out,
                StartsWith("addLog: Adds an entry.\n\n  qbobj -d DATABASE addLog time=NUMBER [severity=TEXT]"));
    EXPECT_THAT(operation.out, HasSubstr("severity  in          text, default \"info\", may be left out\n"));
    EXPECT_THAT(operation.out, HasSubstr("  8  an argument is missing, malformed, or refers to nothing\n"));
    EXPECT_THAT(run({"describe", "addUser"}).out,
                HasSubstr("Codes\n"
                          "  2    out of memory, or an internal step failed\n"
                          "  5    a database statement failed\n"
                          "  8    an argument is missing, malformed, or refers to nothing\n"
                          "  801  the user name is taken\n"
                          "  802  the user id is taken, or the system's own\n"));
    EXPECT_THAT(operation.out, HasSubstr("one of debug, info, notice, warning, err, crit, alert, emerge\n"));
    EXPECT_THAT(run({"describe", "modifyUser"}).out,
                AllOf(HasSubstr("ignores HomeVolumeId, HomeDirectory, "), HasSubstr("the dots keep Password\n")));
    EXPECT_THAT(run({"describe", "Security"}).out, HasSubstr("Security             text: user, ads\n"));
    EXPECT_EQ(run({"addLog", "--help"}).out, operation.out);
    EXPECT_THAT(operation.out, HasSubstr("\nExit status\n"
                                         "  0  done\n"
                                         "  1  refused: 8\n"
                                         "  2  wrong usage, nothing was called\n"
                                         "  4  the database is locked or failed: 5\n"
                                         "  5  out of memory\n"));
    EXPECT_THAT(run({"describe", "isMemberOfGroup"}).out, AllOf(HasSubstr("  0  yes\n"), HasSubstr("  3  no\n")));
    EXPECT_THAT(run({"describe", "getUID"}).out, AllOf(HasSubstr("  0  found\n"), HasSubstr("  3  not found\n")));
    EXPECT_EQ(json::parse(run({"describe", "deleteGroup", "--json"}).out)["exit"],
              json::parse(R"({"0":"done","1":"refused: 8, 822, 844","2":"wrong usage, nothing was called",
                "3":"nothing found, or nothing changed: 6","4":"the database is locked or failed: 5",
                "5":"out of memory"})"));
    EXPECT_THAT(run({"describe", "getUID"}).out, HasSubstr("Name of the user; null for the local guest.\n"));
    const json uid = json::parse(run({"describe", "getUID", "--json"}).out);
    EXPECT_EQ(uid["arguments"][0]["meaning"], "Name of the user; null for the local guest.");
    EXPECT_EQ(uid["result"], "0 found, 0xFFFFFFFF (-1) not found or database failure.");
    const Result user = run({"describe", "User"});
    EXPECT_THAT(user.out, HasSubstr("Password            text, secret\n"));
    EXPECT_THAT(user.out, HasSubstr("UserQuota           list of Quota\n"));
    const Result share = run({"describe", "Share"});
    EXPECT_THAT(share.out, HasSubstr("key                       text, the key word"));
    EXPECT_THAT(share.out, HasSubstr("unsigned 64-bit number, MB, may be absent\n"));
    const json fields = json::parse(run({"describe", "User", "--json"}).out)["fields"];
    size_t count = 0;
    while (qbobj_find_type("User")[count + 1].kind != '.') count++;
    EXPECT_EQ(fields.size(), count);
}

TEST_F(Program, DescribesUnitsRangesAndAddresses)
{
    EXPECT_THAT(run({"describe", "AccountDefault"}).out,
                AllOf(HasSubstr("32-bit number, per cent, 1 to 99\n"), HasSubstr("32-bit number, output only\n")));
    EXPECT_THAT(run({"describe", "HttpsOptions"}).out, HasSubstr("Port        32-bit number, 1024 to 65535 or 0\n"));
    EXPECT_THAT(run({"describe", "AccountQuery"}).out, HasSubstr("name_like      text, SQL pattern\n"));
    EXPECT_THAT(run({"describe", "User"}).out, HasSubstr("SysHash             text, input only, secret\n"));
    EXPECT_THAT(run({"describe", "getUser"}).out, HasSubstr(" addressed by resource_id, UserId, UserName\n"));
    EXPECT_THAT(run({"describe", "addUser"}).out, HasSubstr(" UserId: 100 to 32767 or below 1\n"));
    const auto described = [&](const char *name) { return json::parse(run({"describe", name, "--json"}).out); };
    const json warning = described("AccountDefault")["fields"][1];
    EXPECT_EQ(warning["name"], "DiskQuotaWarn");
    EXPECT_EQ(warning["unit"], "per cent");
    EXPECT_EQ(warning["minimum"], 1);
    EXPECT_EQ(warning["maximum"], 99);
    EXPECT_EQ(warning["besides"], nullptr);
    EXPECT_EQ(warning["default"], nullptr);
    EXPECT_EQ(warning["pattern"], false);
    EXPECT_EQ(warning["direction"], "in and out");
    EXPECT_EQ(warning["list"], false);
    EXPECT_EQ(described("HttpsOptions")["fields"][0]["besides"], json::parse("[0,0]"));
    EXPECT_EQ(described("addLog")["arguments"][1]["default"], "info");
    const json share = described("addShare")["arguments"][0];
    EXPECT_EQ(share["fields"]["Cifs.RecycleSizeLimit"]["default"], "25000");
    EXPECT_EQ(share["addresses"], json::array());
    EXPECT_EQ(described("deleteShare")["arguments"][0]["addresses"], json::parse(R"(["key","ShareId"])"));
}

TEST_F(Program, FindsTheTypeThatOnlyAnArgumentHas)
{
    ASSERT_EQ(qbobj_find_type("FolderAttribute"), nullptr) << "it is not in the type-name table";
    EXPECT_EQ(run({"describe", "FolderAttribute"}).out,
              "FolderAttribute: a record\n\n"
              "What getFolderAttribute() tells of a folder. It is none of the types of qbobj_types(); its field\n"
              "table is found in the row of the operation.\n\n"
              "  ShareFlags   unsigned 32-bit number\n"
              "               QBOBJ_FOLDER_SHARED and QBOBJ_FOLDER_HIDDEN, or 0.\n"
              "  MediaType    unsigned 32-bit number\n"
              "               DLNA media type of the share: 0 all or none, 1 music, 2 photo, 3 video.\n"
              "  Comment      text\n"
              "               The share's comment; \"\" when there is none or the folder is not a share's own; null\n"
              "               when the folder is neither of a share nor of a home folder.\n"
              "  IsHome       unsigned 32-bit number\n"
              "               1 for a user's home folder and for what lies in it.\n"
              "  IsSubfolder  unsigned 32-bit number\n"
              "               1 for a folder below that of a share, or below a home folder.\n\n"
              "Used by getFolderAttribute\n");
    EXPECT_EQ(json::parse(run({"describe", "FolderAttribute", "--json"}).out)["fields"].size(), 5u);
    EXPECT_EQ(run({"list", "--types", "Folder*"}).out, "FolderAttribute\n");
    EXPECT_THAT(run({"describe", "FolderAttributes"}).err, HasSubstr("did you mean FolderAttribute?"));
}

TEST_F(Program, ExplainsItself)
{
    const Result help = run({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char *part :
         {"Usage:", "OPERATION [ARGUMENT]", "init", "describe", "completion", "QBOBJ_DB", "First steps"})
        EXPECT_THAT(help.out, HasSubstr(part));
    EXPECT_THAT(run({"--version"}).out, MatchesRegex("qbobj [0-9]+\\.[0-9]+\\.[0-9]+ \\(SQLite 3\\.[0-9.]+\\)\n"));
    EXPECT_THAT(run({"init", "--help"}).out, HasSubstr("--volume"));
    EXPECT_EQ(run({"help"}).out, help.out);
    EXPECT_EQ(run({"version"}).out, run({"--version"}).out);
    EXPECT_EQ(run({"help", "init"}).out, run({"init", "--help"}).out);
    EXPECT_EQ(run({"help", "addLog"}).out, run({"describe", "addLog"}).out);
    EXPECT_EQ(run({"help", "LogQuery"}).out, run({"describe", "LogQuery"}).out);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
