// The operating system's accounts: the real database, and programs that answer in its place.
#include "validate/system_account.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "fixture/files.h"
#include "fixture/fixture.h"

using qb::check_system_account;

namespace {

constexpr int32_t kUntouched = -4711;

TEST(SystemAccount, FindsRoot)
{
    int32_t uid = kUntouched;
    ASSERT_EQ(check_system_account("root", &uid), 0);
    EXPECT_EQ(uid, 0);
    EXPECT_EQ(check_system_account("root", nullptr), 0);
}

TEST(SystemAccount, FindsEveryAccountThatTheSystemLists)
{
    int accounts = 0;
    setpwent();
    while (const passwd *entry = getpwent()) {
        int32_t uid = kUntouched;
        EXPECT_EQ(check_system_account(entry->pw_name, &uid), 0) << entry->pw_name;
        EXPECT_EQ(uid, static_cast<int32_t>(entry->pw_uid)) << entry->pw_name;
        accounts++;
    }
    endpwent();
    EXPECT_GT(accounts, 1);
}

TEST(SystemAccount, FindsNoAbsentAndNoNastyNames)
{
    const std::string names[] = {
        "no-such-account",
        "",
        "-",
        "--help",
        "-s",
        "root:",
        "root:x",
        "root\nroot",
        "\nroot",
        "root\n",
        " root",
        "root ",
        "ROOT",
        "*",
        "r*",
        "root;id",
        "$(id)",
        "`id`",
        "root' 'daemon",
        "\"root\"",
        "root\\",
        "root|cat",
        "root root",
        "../root",
        "\xff\xfe",
        "%s%n%d",
        std::string(100000, 'a'),
        "0",
        "00",
        " 0",
        "+0",
        "\t0",  // the uid of root, but no name
    };
    for (const std::string &name : names) {
        int32_t uid = kUntouched;
        EXPECT_EQ(check_system_account(name.c_str(), &uid), 1) << name.substr(0, 40);
        EXPECT_EQ(uid, kUntouched) << name.substr(0, 40);
    }
    EXPECT_EQ(check_system_account(nullptr, nullptr), 1);
}

/// Puts a program of that text in getent's place for the time of a test.
struct SystemAccountProgram : testing::Test {
    test::TemporaryDirectory directory;
    std::string path = getenv("PATH");

    ~SystemAccountProgram() override { setenv("PATH", path.c_str(), 1); }

    void install(const std::string &script)
    {
        const std::string file = directory.path + "/getent";
        std::ofstream(file) << "#!/bin/sh\n" << script << "\n";
        std::filesystem::permissions(file, std::filesystem::perms::owner_all);
        setenv("PATH", (directory.path + ":" + path).c_str(), 1);
    }
    std::string file(const std::string &name) const { return directory.path + "/" + name; }
};

TEST_F(SystemAccountProgram, PassesTheNameAsOneArgument)
{
    install("printf '%s\\n' \"$#\" \"$@\" > '" + file("arguments") + "'; exit 2");
    EXPECT_EQ(check_system_account("a b; $(touch x) \"'", nullptr), 1);
    std::ifstream read(file("arguments"));
    const std::string text{std::istreambuf_iterator<char>(read), {}};
    EXPECT_EQ(text, "3\npasswd\n--\na b; $(touch x) \"'\n");
}

TEST_F(SystemAccountProgram, GetsNoEndOfThePipeButItsOutput)
{
    // The uid is the number of files of the program that are the pipe.
    install(
        "out=$(readlink /proc/$$/fd/1); same=0\n"
        "for f in /proc/$$/fd/*; do [ \"$(readlink \"$f\")\" = \"$out\" ] && same=$((same+1)); done\n"
        "echo \"x:x:$same:\"");
    int32_t uid = kUntouched;
    ASSERT_EQ(check_system_account("x", &uid), 0);
    EXPECT_EQ(uid, 1);
}

TEST_F(SystemAccountProgram, IsNotRunForNamesThatLookLikeOptions)
{
    install("touch '" + file("ran") + "'; echo 'x:x:5:'");
    for (const char *name : {"", "-", "-i", "--service=x"}) EXPECT_EQ(check_system_account(name, nullptr), 1) << name;
    EXPECT_FALSE(std::filesystem::exists(file("ran")));
    EXPECT_EQ(check_system_account("x", nullptr), 0);
    EXPECT_TRUE(std::filesystem::exists(file("ran")));
}

TEST_F(SystemAccountProgram, ReadsTheUid)
{
    const struct {
        const char *script;
        int32_t answer;
        int32_t uid;
    } rows[] = {
        {"echo 'anna:x:1234:100:Anna:/home/anna:/bin/sh'", 0, 1234},
        {"echo 'DOM\\anna:*:70000:100::/:'", 0, 70000},  // a directory may answer with another form of the name
        {"echo 'anna:x:-2:'", 0, -2},
        {"printf 'anna:x:77:1:'", 0, 77},  // no end of line
        {"echo 'anna:x::100'", 1, kUntouched},
        {"echo 'anna:x'", 1, kUntouched},
        {"echo 'anna:x:abc:1'", 1, kUntouched},
        {"echo garbage", 1, kUntouched},
        {"true", 1, kUntouched},
        {"echo 'anna:x:1234:100:'; exit 2", 1, kUntouched},
        {"echo 'anna:x:1234:100:'; exit 1", -1, kUntouched},
        {"echo 'anna:x:1234:100:'; kill -9 $$", -1, kUntouched},
        {"echo complaint >&2; exit 3", -1, kUntouched},
        {"cat; echo 'anna:x:9:'", 0, 9},  // has nothing to read
        {"echo 'anna:x:12:'; head -c 3000000 /dev/zero", 0, 12},
        {"head -c 3000000 /dev/zero | tr '\\0' a", 1, kUntouched},
    };
    for (const auto &row : rows) {
        install(row.script);
        int32_t uid = kUntouched;
        EXPECT_EQ(check_system_account("anna", &uid), row.answer) << row.script;
        EXPECT_EQ(uid, row.uid) << row.script;
    }
}

TEST_F(SystemAccountProgram, TakesANumberForANameOnly)
{
    install("echo \"$3:x:55:\"");
    int32_t uid = kUntouched;
    EXPECT_EQ(check_system_account("1000", &uid), 0);
    EXPECT_EQ(uid, 55);
    install("echo 'anna:x:1000:'");
    for (const char *name : {"1000", " 1000", "+1000"}) EXPECT_EQ(check_system_account(name, nullptr), 1) << name;
    for (const char *name : {"1000a", "+", " ", "1 0"}) EXPECT_EQ(check_system_account(name, nullptr), 0) << name;
}

TEST_F(SystemAccountProgram, SaysThatThereIsNone)
{
    setenv("PATH", directory.path.c_str(), 1);
    int32_t uid = kUntouched;
    EXPECT_EQ(check_system_account("root", &uid), -1);
    EXPECT_EQ(uid, kUntouched);
}

TEST_F(SystemAccountProgram, WorksWhereNobodyWaitsForChildren)
{
    const auto before = signal(SIGCHLD, SIG_IGN);
    int32_t uid = kUntouched;
    EXPECT_EQ(check_system_account("root", &uid), 0);
    EXPECT_EQ(uid, 0);
    EXPECT_EQ(check_system_account("no-such-account", nullptr), 1);
    signal(SIGCHLD, before);
}

TEST(SystemAccountDeathTest, WorksWithoutStandardFiles)
{
    const auto answers = [] {
        close(0);
        close(1);
        close(2);
        int32_t uid = kUntouched;
        _exit(check_system_account("root", &uid) == 0 && uid == 0 && check_system_account("none", nullptr) == 1 ? 17
                                                                                                                : 1);
    };
    EXPECT_EXIT(answers(), testing::ExitedWithCode(17), "");
}

TEST(SystemAccount, LeaksNoFiles)
{
    const auto before = test::open_files();
    for (int i = 0; i < 5; i++) check_system_account(i % 2 ? "root" : "none", nullptr);
    EXPECT_EQ(test::open_files(), before);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
