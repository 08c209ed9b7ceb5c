// The program on a terminal: tables, their width, passwords without echo.
#include <termios.h>

#include "arguments.h"
#include "cli/run.h"
#include "failure.h"
#include "utf8.h"

using namespace qbcli;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

struct Terminal : test::Program {
    test::Result show(std::vector<std::string> words, unsigned short columns = 80,
                      const test::Dialogue &dialogue = {}) const
    {
        words.insert(words.begin(), {test::program(), "-d", path});
        const auto run = [&]() -> int { test::execute(words); };
        return test::run_on_terminal(run, dialogue, columns);
    }
};

TEST_F(Terminal, ShowsTables)
{
    EXPECT_EQ(show({"getLog"}).out, "entries  (none)\ncount    0\ntotal    0\n");
    ASSERT_EQ(call({"addLog", "100", "warning", "system", "LOGMSG_A"}).status, 0);
    ASSERT_EQ(call({"addLog", "20", "info", "disk", "LOGMSG_LONGER"}).status, 0);
    EXPECT_EQ(show({"getLog"}).out,
              "entries\n"
              "  LogId  TimeStamp  Severity  Category  MessageTag\n"
              "      1        100  warning   system    LOGMSG_A\n"
              "      2         20  info      disk      LOGMSG_LONGER\n"
              "count  2\n"
              "total  2\n");
    EXPECT_THAT(show({"getLog", "--compact"}).out, StartsWith("{\"entries\":[{\"LogId\":1,"));
    EXPECT_THAT(show({"getLog", "--json"}).out, StartsWith("{\n  \"entries\": [\n"));
}

TEST_F(Terminal, CutsLongCellsAndDropsWhatDoesNotFit)
{
    const std::string tag = "LOGMSG_" + std::string(100, 'X');
    for (int i = 0; i < 2; i++)
        ASSERT_EQ(call({"addLog", "1700000000", "warning", "system", tag, "Grüße 日本"}).status, 0);
    for (const unsigned short columns : {20, 40, 80, 120}) {
        const std::string text = show({"getLog"}, columns).out;
        size_t start = 0;
        for (size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
            const std::string line = text.substr(start, end - start);
            if (line.find("more column") != std::string::npos) continue;
            EXPECT_LE(display_width(line), columns) << line;
        }
    }
    const std::string wide = show({"getLog"}, 80).out;
    EXPECT_THAT(wide, HasSubstr("LOGMSG_XXX"));
    EXPECT_THAT(wide, HasSubstr("…"));
    EXPECT_THAT(wide, HasSubstr("Grüße 日本"));
    EXPECT_THAT(show({"getLog"}, 20).out, HasSubstr("more columns: --json shows all)"));
    EXPECT_THAT(show({"getLog"}, 250).out, HasSubstr(tag));
}

TEST_F(Terminal, AsksForThePasswordOfANewUser)
{
    const test::Result added = show({"addUser", "UserName=anna", "GroupName=users", "Password=-"}, 80,
                                    {{"Password: ", "Secret-123\n"}, {"Password again: ", "Secret-123\n"}});
    EXPECT_EQ(added.status, 0);
    EXPECT_THAT(added.out, StartsWith("Password: \nPassword again: \n"));
    EXPECT_THAT(added.out, HasSubstr("\nUserName        anna\n"));
    EXPECT_THAT(added.out, HasSubstr("\nPassword        ●●●●●●●●\n"));
    EXPECT_THAT(added.out, Not(HasSubstr("Secret-123")));
    EXPECT_THAT(value("SELECT passwd FROM `$user` WHERE uname='anna'"), StartsWith("$"));
    const test::Result refused = show({"addUser", "UserName=bert", "GroupNam=users", "Password=-"});
    EXPECT_EQ(refused.out, "qbobj: addUser: there is no field GroupNam (did you mean GroupName?)\n")
        << "before it asks";
}

TEST_F(Terminal, FailsAsElsewhere)
{
    const test::Result result = show({"addLog", "1", "loud"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "qbobj: addLog: 8 Specified Severity (loud) is invalid.\n");
}

/// An operation with passwords, which is never called here.
QbobjOperation password_operation(int changes)
{
    QbobjOperation row{};
    row.name = "qbobj_setMyPassword";
    row.changes = changes;
    row.count = 1;
    row.arguments[0] = {"pw",    QBOBJ_KIND_RECORD, QBOBJ_IN, qbobj_find_type("MyPassword"), 0, 0,
                        nullptr, nullptr,           nullptr};
    return row;
}

/// Collects an operation's arguments on a terminal and tells, reversed, what was typed.
int collect(int changes, const std::vector<std::string> &words)
{
    try {
        const QbobjOperation operation = password_operation(changes);
        StandardInput input;
        Arguments arguments(operation, input);
        arguments.take(words);
        arguments.ask_for_secrets();
        for (const auto &[name, value] : arguments.given(0)->items()) {
            const std::string text = value;
            printf("%s=%s\n", name.c_str(), std::string(text.rbegin(), text.rend()).c_str());
        }
        termios now{};
        tcgetattr(0, &now);
        printf("echo %s\n", now.c_lflag & ECHO ? "on" : "off");
    } catch (const Failure &failure) {
        printf("refused: %s\n", failure.what());
        fflush(stdout);
        return 1;
    }
    fflush(stdout);
    return 0;
}

TEST(Prompt, AsksTwiceForANewPasswordAndDoesNotEcho)
{
    const test::Result result = test::run_on_terminal(
        [] {
            return collect(1, {"NewPassword=-", "UserName=anna"});
        },
        {{"NewPassword: ", "hünter2\n"}, {"NewPassword again: ", "hünter2\n"}});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, Not(HasSubstr("hünter2")));
    EXPECT_THAT(result.out, StartsWith("NewPassword: \nNewPassword again: \n"));
    EXPECT_THAT(result.out, HasSubstr("NewPassword=2retn"));
    EXPECT_THAT(result.out, HasSubstr("echo on\n"));
}

TEST(Prompt, AsksOnceForAnOldPasswordAndForReading)
{
    EXPECT_THAT(test::run_on_terminal([] { return collect(1, {"OldPassword=-"}); }, {{"OldPassword: ", "abcd\n"}}).out,
                HasSubstr("OldPassword=dcba"));
    EXPECT_THAT(test::run_on_terminal([] { return collect(0, {"NewPassword=-"}); }, {{"NewPassword: ", "abcd\n"}}).out,
                HasSubstr("NewPassword=dcba"));
}

TEST(Prompt, RefusesDifferentAndEmptyEntries)
{
    const test::Result differ = test::run_on_terminal([] { return collect(1, {"NewPassword=-"}); },
                                                      {{"NewPassword: ", "one\n"}, {"NewPassword again: ", "two\n"}});
    EXPECT_EQ(differ.status, 1);
    EXPECT_THAT(differ.out, HasSubstr("refused: NewPassword: the two entries differ\n"));
    EXPECT_THAT(test::run_on_terminal([] { return collect(1, {"NewPassword=-"}); }, {{"NewPassword: ", "\n"}}).out,
                HasSubstr("refused: NewPassword: nothing was entered\n"));
    EXPECT_THAT(test::run_on_terminal([] { return collect(1, {"NewPassword=-"}); }, {{"NewPassword: ", "\x04"}}).out,
                HasSubstr("refused: NewPassword: nothing was entered\n"));
}

TEST(Prompt, AnInterruptGivesTheEchoBackAndEndsTheProgram)
{
    const test::Result result = test::run_on_terminal(
        [] {
            signal(SIGINT, SIG_DFL);  // a shell ignores it in what runs in the background
            const pid_t child = fork();
            if (child == 0) _exit(collect(1, {"NewPassword=-"}));
            signal(SIGINT, SIG_IGN);  // the terminal sends it to both
            int status = 0;
            waitpid(child, &status, 0);
            termios now{};
            tcgetattr(0, &now);
            printf("signal %d, echo %s\n", WIFSIGNALED(status) ? WTERMSIG(status) : 0,
                   now.c_lflag & ECHO ? "on" : "off");
            fflush(stdout);
            return 0;
        },
        {{"NewPassword: ", "abc\x03"}});
    EXPECT_THAT(result.out, HasSubstr("signal 2, echo on\n"));
    EXPECT_THAT(result.out, Not(HasSubstr("refused")));
}

/// Runs `collect` with standard input from a pipe.
test::Result collect_from_pipe(const std::string &input, const std::vector<std::string> &words)
{
    int pipe_ends[2];
    if (pipe(pipe_ends) != 0) abort();
    (void)!write(pipe_ends[1], input.data(), input.size());
    close(pipe_ends[1]);
    const test::Result result = test::run_on_terminal([&] {
        dup2(pipe_ends[0], 0);
        return collect(1, words);
    });
    close(pipe_ends[0]);
    return result;
}

TEST(Prompt, ASecretMayGoOverADocument)
{
    EXPECT_THAT(collect_from_pipe("abcd\n", {R"({"UserName":"anna","NewPassword":null})", "NewPassword=-"}).out,
                HasSubstr("NewPassword=dcba"));
}

TEST(Prompt, ReadsALineEachWhereThereIsNoTerminal)
{
    const test::Result both = collect_from_pipe("olda\nnewb\nrest", {"OldPassword=-", "NewPassword=-"});
    EXPECT_THAT(both.out, StartsWith("OldPassword=adlo\nNewPassword=bwen\n"));
    EXPECT_THAT(collect_from_pipe("last", {"NewPassword=-"}).out, StartsWith("NewPassword=tsal\n"))
        << "no line end needed";
    EXPECT_THAT(collect_from_pipe("", {"NewPassword=-"}).out, HasSubstr("refused: NewPassword: a line was expected"));
    EXPECT_THAT(collect_from_pipe("\n", {"NewPassword=-"}).out, HasSubstr("refused: NewPassword: a line was expected"));
    EXPECT_THAT(collect_from_pipe(std::string("a\0b\n", 4), {"NewPassword=-"}).out, HasSubstr("holds a NUL"));
    EXPECT_THAT(collect_from_pipe("\xFF\n", {"NewPassword=-"}).out, HasSubstr("not valid UTF-8"));
    EXPECT_THAT(collect_from_pipe("{}", {"-", "NewPassword=-"}).out, HasSubstr("standard input is read already"));
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
