// Completion: the candidates, and the bash function in a real bash.
#include <sstream>

#include "arguments.h"
#include "cli/run.h"

using test::Program;
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

TEST_F(Completion, ZshAcceptsItsScript)
{
    const test::Result result = run({"completion", "zsh"});
    ASSERT_EQ(result.status, 0);
    EXPECT_THAT(result.out, testing::StartsWith("#compdef qbobj\n"));
    const char *zsh = access("/bin/zsh", X_OK) == 0 ? "/bin/zsh" : "/usr/bin/zsh";
    if (access(zsh, X_OK) != 0) GTEST_SKIP() << "zsh is not installed: its script is not run";
    EXPECT_EQ(test::run_command({zsh, "-n", file("_qbobj", result.out)}).status, 0);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
