// qbobj importUsers: a list is checked and inserted whole, and the file at the library's one place is ours.
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "json_text.h"
#include "run.h"
#include "user_changes/list_file.h"

using test::ListFile;
using test::Result;
using testing::HasSubstr;

namespace {

constexpr char kList[] =
    "User_Name\tGroup_Name\tEmail_Address\tPassword\ncarla\tfamily\tcarla@example.com\tpw\ndora\tusers\t\tpw\n";

struct ImportUsers : test::Program {
    ListFile turn;
    std::string list = directory.path + "/users.txt";

    ImportUsers() { save(kList); }

    void save(const std::string &text) { std::ofstream(list) << text; }
    Result import(const std::vector<std::string> &more = {})
    {
        std::vector<std::string> words = {"-d", path, "importUsers", list, "--compact"};
        words.insert(words.end(), more.begin(), more.end());
        return run(words);
    }
    std::string users() { return run({"-d", path, "getUserCollection", "--compact"}).out; }
    std::string groups() { return run({"-d", path, "getGroupCollection", "--compact"}).out; }
    static bool placed() { return access(ListFile::kPath, F_OK) == 0; }
};

TEST_F(ImportUsers, AddsGroupsAndUsers)
{
    const Result result = import();
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "{\"Users\":2,\"NewGroups\":[\"family\"],\"Imported\":true}\n");
    EXPECT_THAT(users(), HasSubstr("\"UserName\":\"carla\""));
    EXPECT_THAT(users(), HasSubstr("\"Entries\":2"));
    EXPECT_THAT(groups(), HasSubstr("\"GroupName\":\"family\""));
    EXPECT_FALSE(placed());
}

TEST_F(ImportUsers, ADryRunChangesNothing)
{
    const std::string users_before = users();
    const std::string groups_before = groups();
    const Result result = import({"--dry-run"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "{\"Users\":2,\"NewGroups\":[\"family\"],\"Imported\":false}\n");
    EXPECT_EQ(users(), users_before);
    EXPECT_EQ(groups(), groups_before);
    EXPECT_FALSE(placed());
}

TEST_F(ImportUsers, RefusesAListWithAKnownUserWhole)
{
    ASSERT_EQ(import().status, 0);
    save("emil\tclub\t\tpw\ncarla\tfamily\t\tpw\n");
    const std::string users_before = users();
    const std::string groups_before = groups();
    const Result result = import();
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "qbobj: checkUserList: 801 User (carla) already exists. (" + list + ", line 2)\n");
    EXPECT_EQ(users(), users_before);
    EXPECT_EQ(groups(), groups_before);
    EXPECT_FALSE(placed());
}

TEST_F(ImportUsers, RefusesAMalformedList)
{
    save("carla\tfamily\n");
    const Result result = import();
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "qbobj: checkUserList: 1 User file wrong format (" + list + ", line 1)\n");
    EXPECT_FALSE(placed());
}

TEST_F(ImportUsers, SaysWhichLineIsWrong)
{
    std::string good;
    for (int i = 0; i < 100; i++) {
        const std::string wrong = good + "1\tfamily\t\tpw\ncarla\tfamily\n";
        if (i % 7 == 0) {  // each line is a place to look
            save(wrong);
            const Result result = import({"--dry-run"});
            EXPECT_EQ(result.status, 1);
            EXPECT_EQ(result.err, "qbobj: checkUserList: 8 Invalid UserName (1), rc=6 (" + list + ", line " +
                                      std::to_string(i + 1) + ")\n");
        }
        good += i == 5 ? "\n" : "user" + std::to_string(i) + "\tfamily\t\tpw\n";
    }
    save("\n\ncarla\tfamily\t\tpw\nno end");
    EXPECT_THAT(import().err, HasSubstr("line 4)"));
    EXPECT_FALSE(placed());
}

TEST_F(ImportUsers, SaysWhichLineOfStandardInputIsWrong)
{
    const Result result = run({"-d", path, "importUsers", "-"}, "carla\tfamily\t\tpw\nemil\n");
    EXPECT_EQ(result.err, "qbobj: checkUserList: 1 User file wrong format (standard input, line 2)\n");
}

TEST_F(ImportUsers, LeavesAFileOfSomebodyElseAlone)
{
    turn.write("theirs");
    const Result result = import();
    EXPECT_EQ(result.status, 4);
    EXPECT_THAT(result.err, HasSubstr("/tmp/user_list.txt: is there already"));
    std::ifstream file(ListFile::kPath);
    std::string content;
    std::getline(file, content);
    EXPECT_EQ(content, "theirs");
}

TEST_F(ImportUsers, FollowsNoLink)
{
    const std::string target = directory.path + "/target";
    ASSERT_EQ(symlink(target.c_str(), ListFile::kPath), 0);
    const Result result = import();
    EXPECT_EQ(unlink(ListFile::kPath), 0) << "the link must still be there";
    EXPECT_EQ(result.status, 4);
    EXPECT_THAT(result.err, HasSubstr("is there already"));
    EXPECT_NE(access(target.c_str(), F_OK), 0);
}

TEST_F(ImportUsers, ReadsStandardInput)
{
    const Result result = run({"-d", path, "importUsers", "-", "--compact"}, kList);
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(users(), HasSubstr("\"Entries\":2"));
}

TEST_F(ImportUsers, NeedsAFileThatIsThere)
{
    list = directory.path + "/none.txt";
    const Result result = import();
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("none.txt"));
}

TEST_F(ImportUsers, IsForbiddenOnAReadOnlyDatabaseButForADryRun)
{
    EXPECT_EQ(import({"--read-only"}).status, 2);
    EXPECT_EQ(import({"--read-only", "--dry-run"}).status, 0);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
