// Completion: the candidates, and the shells' functions in a real bash and a real zsh.
#include <sys/stat.h>

#include <set>
#include <sstream>

#include "arguments.h"
#include "cli/run.h"
#include "describe.h"
#include "selection.h"
#include "stored_names.h"

using test::Program;
using test::Result;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;

namespace {

std::vector<std::string> lines(const std::string &text)
{
    std::istringstream stream(text);
    std::vector<std::string> all;
    for (std::string line; std::getline(stream, line);) all.push_back(line);
    return all;
}

struct Completion : Program {
    std::string script = file("completion.bash", run({"completion", "bash"}).out);

    std::vector<std::string> candidates(std::vector<std::string> words) const
    {
        words.insert(words.begin(), {"complete", "--"});
        return lines(run(words).out);
    }

    /// What bash offers at the end of a command line.
    std::vector<std::string> complete(const std::string &line,
                                      const std::string &setting = "COMP_WORDBREAKS=' ='") const
    {
        const std::string text = setting + "; source '" + script + "'; cd '" + directory.path + "'; COMP_LINE='" +
                                 test::program() + line +
                                 "'; COMP_POINT=${#COMP_LINE}; _qbobj; printf '%s\\n' \"${COMPREPLY[@]}\"";
        const test::Result result = test::run_command({"/bin/bash", "--norc", "-c", text});
        EXPECT_EQ(result.err, "");
        std::vector<std::string> found = lines(result.out);
        std::erase(found, "");
        return found;
    }
};

TEST_F(Completion, OffersCommandsAndOperations)
{
    const auto first = candidates({""});
    for (const char *command : {"init", "list", "describe", "completion"}) EXPECT_THAT(first, Contains(command));
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++)
        EXPECT_THAT(first, Contains(qbcli::short_name(*row)));
    EXPECT_THAT(first, Not(Contains("complete"))) << "that one is the scripts' own";
    EXPECT_EQ(candidates({"-d", path, "--json", "--timeout", "5", ""}), first);
}

TEST_F(Completion, OffersArgumentsAndFieldsThatAreNotGivenYet)
{
    EXPECT_THAT(candidates({"addLog", ""}), ElementsAre("time=", "severity=", "category=", "msgTag=", "argsXml="));
    EXPECT_THAT(candidates({"addLog", "time=5", ""}), ElementsAre("severity=", "category=", "msgTag=", "argsXml="));
    EXPECT_THAT(candidates({"getLog", ""}),
                AllOf(Contains("limit="), Contains("severity_in="), Not(Contains("entries="))));
    EXPECT_THAT(candidates({"getLog", "query."}), Contains("query.limit="));
    EXPECT_THAT(candidates({"getLog", "query.limit.x."}), IsEmpty());
    EXPECT_THAT(candidates({"describe", ""}),
                AllOf(Contains("getLog"), Contains("LogQuery"), Contains("FolderAttribute")));
    EXPECT_THAT(candidates({"completion", ""}), ElementsAre("bash", "zsh"));
    EXPECT_THAT(candidates({"getLog", "--"}), AllOf(Contains("--json"), Contains("--database")));
    EXPECT_THAT(candidates({"help", ""}), AllOf(Contains("init"), Contains("getLog"), Contains("LogQuery")));
}

TEST_F(Completion, OffersTheOptionsOfACommand)
{
    EXPECT_THAT(candidates({"init", "--"}), AllOf(Contains("--volume"), Contains("--json")));
    EXPECT_THAT(candidates({"importUsers", "--"}), Contains("--dry-run"));
    EXPECT_THAT(candidates({"list", "--"}), AllOf(Contains("--types"), Not(Contains("--volume"))));
    EXPECT_THAT(candidates({"getLog", "--"}), Not(Contains("--types")));
}

TEST_F(Completion, OffersWordsOfArgumentsAndFields)
{
    EXPECT_THAT(candidates({"setSecurityIdmapBackend", "backend="}), ElementsAre("backend=tdb", "backend=rid"));
    EXPECT_THAT(candidates({"addLog", "severity=w"}), Contains("severity=warning"));
    EXPECT_THAT(candidates({"setSecurity", "Security="}), ElementsAre("Security=user", "Security=ads"));
    EXPECT_THAT(candidates({"setSecurity", "security.Security="}),
                ElementsAre("security.Security=user", "security.Security=ads"));
    EXPECT_THAT(candidates({"getLog", "query.severity="}), Contains("query.severity=notice"));
    EXPECT_THAT(candidates({"addUser", "Email="}), IsEmpty()) << "any text";
    EXPECT_THAT(candidates({"addUser", "Nothing.Such="}), IsEmpty());
    EXPECT_THAT(candidates({"getUID", "id="}), IsEmpty()) << "an output";
}

TEST_F(Completion, BashCompletes)
{
    ASSERT_EQ(test::run_command({"/bin/bash", "-n", script}).status, 0);
    EXPECT_THAT(complete(" trunc"), ElementsAre("truncateLog"));
    EXPECT_THAT(complete(" -d x getLo"), ElementsAre("getLog"));
    EXPECT_THAT(complete(" addLog time=5 se"), ElementsAre("severity="));
    EXPECT_THAT(complete(" addLog time=5 "), UnorderedElementsAre("severity=", "category=", "msgTag=", "argsXml="));
    EXPECT_THAT(complete(" addLog time=5"), IsEmpty()) << "values are the caller's";
    EXPECT_THAT(complete(" getLog query.li"), ElementsAre("query.limit="));
    EXPECT_THAT(complete(" describe LogQ"), ElementsAre("LogQuery"));
    EXPECT_THAT(complete(" -d appl"), Contains("appliance.db"));
    EXPECT_THAT(complete(" getLog @compl"), ElementsAre("@completion.bash"));
    EXPECT_THAT(complete(" getLog --js"), ElementsAre("--json"));
    EXPECT_THAT(complete(" importUsers --dr"), ElementsAre("--dry-run"));
    EXPECT_THAT(complete(" importUsers appl"), Contains("appliance.db"));
    // Behind "=" bash replaces only what follows, where that takes words apart.
    EXPECT_THAT(complete(" addLog severity=w"), ElementsAre("warning"));
    EXPECT_THAT(complete(" addLog severity="), Contains("emerge"));
    EXPECT_THAT(complete(" getLog query=@compl"), ElementsAre("@completion.bash"));
    EXPECT_THAT(complete(" addLog severity=w", "COMP_WORDBREAKS=' '"), ElementsAre("severity=warning"));
}

/// With names in the database.
struct StoredNames : Completion {
    StoredNames()
    {
        for (const char *sql :
             {"INSERT INTO `$user` (id,uname,is_privileged,rid) VALUES (100,'anna',0,NULL), (101,'anne smith',0,NULL), "
              "(102,'an'||char(10)||'ox',0,NULL), (103,'angus'||char(27)||'[2J',0,NULL), (104,'andy',-1,NULL), "
              "(105,'bert',0,NULL), (-10,'EXAMPLE\\fred',0,1105), (106,CAST(x'616EFF' AS TEXT),0,NULL)",
              "INSERT INTO `$group` (id,gname,is_privileged) VALUES (110,'staff',0), (111,'gone',-1)",
              "INSERT INTO share (id,name,zfs_name) VALUES (1,'media','tank/media'), (2,'music','tank/music')",
              "INSERT INTO network_if (name) VALUES ('eth0')", "INSERT INTO `$iscsi_lun_group` (name) VALUES ('luns')"})
            value(sql);
    }

    std::vector<std::string> names(const std::string &operation, const std::string &word) const
    {
        return candidates({"-d", path, operation, word});
    }
};

TEST_F(StoredNames, AreOfferedWhereTheyAreMeant)
{
    EXPECT_THAT(names("modifyUser", "UserName=an"), ElementsAre("UserName=anna", "UserName=anne smith"))
        << "not those who are removed, and none that a shell or a terminal could stumble over";
    EXPECT_THAT(names("modifyUser", "user.UserName=be"), ElementsAre("user.UserName=bert"));
    EXPECT_THAT(names("getUID", "name=be"), ElementsAre("name=bert"));
    EXPECT_THAT(names("getGID", "name=st"), ElementsAre("name=staff"));
    EXPECT_THAT(names("isMemberOfGroup", "groupName=go"), IsEmpty());
    EXPECT_THAT(names("modifyUser", "UserName=EX"), ElementsAre("UserName=EXAMPLE\\fred"));
    EXPECT_THAT(names("getShareAccess", "shareName=m"), ElementsAre("shareName=media", "shareName=music"));
    EXPECT_THAT(names("getShareProcess", "zfsName=tank/mu"), ElementsAre("zfsName=tank/music"));
    EXPECT_THAT(names("addUser", "HomeVolumeId="), ElementsAre("HomeVolumeId=tank"));
    EXPECT_THAT(names("deleteNetworkInterface", "name="), ElementsAre("name=eth0"));
    EXPECT_THAT(names("deleteNetworkInterface", "Name="), IsEmpty()) << "names are what they are";
    EXPECT_THAT(names("addLunGroupAccessList", "lunGroup=l"), ElementsAre("lunGroup=luns"));
    EXPECT_THAT(names("addUser", "FullName="), IsEmpty());
    EXPECT_THAT(candidates({"modifyUser", "-d" + path, "UserName=be"}), ElementsAre("UserName=bert"));
    EXPECT_THAT(candidates({"--database=" + path, "modifyUser", "UserName=be"}), ElementsAre("UserName=bert"));
    setenv("QBOBJ_DB", path.c_str(), 1);
    EXPECT_THAT(candidates({"modifyUser", "UserName=be"}), ElementsAre("UserName=bert"));
    unsetenv("QBOBJ_DB");
}

TEST_F(StoredNames, NeitherWaitForAnythingNorSayAnything)
{
    const std::string fifo = directory.path + "/fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const std::string text = file("text", std::string(5000, 'x'));
    const std::string empty = file("empty", "");
    const std::string strange = directory.path + "/strange";
    for (const std::string &database : {std::string("/nowhere/at/all"), directory.path, fifo, text, empty, strange}) {
        const Result result = run({"complete", "--", "-d", database, "modifyUser", "UserName="});
        EXPECT_EQ(result.status, 0) << database;
        EXPECT_EQ(result.out + result.err, "") << database;
    }
    EXPECT_NE(access(strange.c_str(), F_OK), 0) << "nothing is created";
    sqlite3 *writer = nullptr;
    ASSERT_EQ(sqlite3_open_v2(path.c_str(), &writer, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(writer, "BEGIN EXCLUSIVE; DELETE FROM `$user`", nullptr, nullptr, nullptr), SQLITE_OK);
    EXPECT_THAT(names("modifyUser", "UserName=be"), ElementsAre("UserName=bert"));
    sqlite3_close(writer);
    value("DROP TABLE `$user`");
    EXPECT_THAT(names("modifyUser", "UserName=be"), IsEmpty());
}

TEST_F(StoredNames, AreReadByStatementsThatTheDatabaseKnows)
{
    std::set<const char *> statements;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++)
        for (uint32_t i = 0; i < row->count; i++)
            if (qbcli::is_scalar(row->arguments[i]))
                statements.insert(qbcli::names_statement(row->family, row->arguments[i].name));
    for (const QbobjField *type : qbcli::all_types())
        for (const QbobjField *field = type + 1; field->kind != '.'; field++)
            if (field->kind == 's') statements.insert(qbcli::names_statement(type->name, field->name));
    statements.erase(nullptr);
    EXPECT_EQ(statements.size(), 12u);
    sqlite3 *db = nullptr;
    ASSERT_EQ(sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
    for (const char *statement : statements)
        EXPECT_EQ(sqlite3_exec(db, statement, nullptr, nullptr, nullptr), SQLITE_OK) << statement;
    sqlite3_close(db);
}

TEST_F(StoredNames, AreQuotedForBash)
{
    const std::string before = " -d appliance.db modifyUser ";
    EXPECT_THAT(complete(before + "UserName=an"), UnorderedElementsAre("anna", "anne\\ smith"));
    EXPECT_THAT(complete(before + "UserName=EX"), ElementsAre("EXAMPLE\\\\fred"));
    EXPECT_THAT(complete(before + "UserName=EXAMPLE\\\\f"), ElementsAre("EXAMPLE\\\\fred"));
    EXPECT_THAT(complete(before + "UserName=be", "COMP_WORDBREAKS=' '"), ElementsAre("UserName=bert"));
    EXPECT_THAT(complete(" getLog --fields LogId,Sev"), ElementsAre("LogId,Severity"));
}

TEST_F(Completion, OffersTheFieldsThatAnOperationReturns)
{
    EXPECT_THAT(candidates({"getLog", "--fields", ""}), AllOf(Contains("LogId"), Contains("total")));
    EXPECT_THAT(candidates({"getLog", "--fields", "LogId,"}), Contains("LogId,Severity"));
    EXPECT_THAT(candidates({"getLog", "--fields=Log"}), Contains("--fields=LogId"));
    EXPECT_THAT(candidates({"getUserCollection", "--fields", ""}),
                AllOf(Contains("UserName"), Contains("HomeFolderSettings"), Contains("TotalEntries"),
                      Not(Contains("HomeFolderSettings.SizeLimit"))));
    EXPECT_THAT(candidates({"getUserCollection", "--fields", "UserName,HomeFolderSettings."}),
                Contains("UserName,HomeFolderSettings.SizeLimit"));
    EXPECT_THAT(candidates({"truncateLog", "--fields", ""}), IsEmpty());
    EXPECT_THAT(candidates({"schema", "--"}), AllOf(Contains("--json-schema"), Contains("--openapi")));
}

TEST_F(Completion, OffersTheLanguagesOfAProgram)
{
    EXPECT_THAT(candidates({"--emit", ""}), ElementsAre("c", "c++", "python", "shell"));
    EXPECT_THAT(candidates({"getLog", "limit=1", "--emit", "py"}), Contains("python"));
    EXPECT_THAT(candidates({"--emit=c"}), ElementsAre("--emit=c", "--emit=c++", "--emit=python", "--emit=shell"));
    EXPECT_THAT(candidates({"--emit", "c", "getLog", "lim"}), Contains("limit="));
    EXPECT_THAT(complete(" --emit c"), ElementsAre("c", "c++"));
    EXPECT_THAT(complete(" --emit=py"), ElementsAre("python"));
    EXPECT_THAT(complete(" --emit=py", "COMP_WORDBREAKS=' '"), ElementsAre("--emit=python"));
}

TEST_F(Completion, ZshAcceptsItsScript)
{
    const test::Result result = run({"completion", "zsh"});
    ASSERT_EQ(result.status, 0);
    EXPECT_THAT(result.out, testing::StartsWith("#compdef qbobj\n"));
    const char *zsh = access("/bin/zsh", X_OK) == 0 ? "/bin/zsh" : "/usr/bin/zsh";
    if (access(zsh, X_OK) != 0) GTEST_SKIP() << "zsh is not installed: its script is not run";
    const std::string function = file("_qbobj", result.out);
    EXPECT_EQ(test::run_command({zsh, "-n", function}).status, 0);
    value("INSERT INTO `$user` (id,uname,is_privileged) VALUES (100,'anna',0), (101,'anne smith',0)");
    // Its function is called as zsh does; what it would hand to zsh is printed.
    const auto offered = [&](const std::string &words) {
        const test::Result run_in_zsh = test::run_command(
            {zsh, "-f", "-c",
             "compdef() {}; compset() {}; compadd() { print -rl -- \"${(@P)${@[-1]}}\" }; source '" + function +
                 "'; words=('" + test::program() + "' -d '" + path + "' " + words + "); CURRENT=$#words; _qbobj"});
        EXPECT_EQ(run_in_zsh.err, "");
        std::vector<std::string> found = lines(run_in_zsh.out);
        std::erase(found, "");
        return found;
    };
    EXPECT_THAT(offered("trunc"), Contains("truncateLog"));
    EXPECT_THAT(offered("addLog time=5 ''"), ElementsAre("severity=", "category=", "msgTag=", "argsXml="));
    EXPECT_THAT(offered("addLog severity="), Contains("emerge"));
    EXPECT_THAT(offered("modifyUser UserName=an"), ElementsAre("anna", "anne smith"));
    EXPECT_THAT(offered("modifyUser 'UserName=anne\\ s'"), ElementsAre("anne smith"));
    EXPECT_THAT(offered("getLog --fields Lo"), Contains("LogId"));
    EXPECT_THAT(offered("--emit ''"), ElementsAre("c", "c++", "python", "shell"));
    EXPECT_THAT(offered("--emit="), ElementsAre("c", "c++", "python", "shell"));
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
