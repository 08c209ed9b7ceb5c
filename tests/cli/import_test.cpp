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
    EXPECT_EQ(result.err, "qbobj: checkUserList: 801 User (carla) already exists.\n");
    EXPECT_EQ(users(), users_before);
    EXPECT_EQ(groups(), groups_before);
    EXPECT_FALSE(placed());
}

TEST_F(ImportUsers, RefusesAMalformedList)
{
    save("carla\tfamily\n");
    const Result result = import();
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "qbobj: checkUserList: 1 User file wrong format\n");
    EXPECT_FALSE(placed());
}

TEST_F(ImportUsers, LeavesAFileOfSomebodyElseAlone)
{
    turn.write("theirs");
    const Result result = import();
    EXPECT_EQ(result.status, 1);
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
    EXPECT_EQ(result.status, 1);
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
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr("none.txt"));
}

TEST_F(ImportUsers, IsForbiddenOnAReadOnlyDatabaseButForADryRun)
{
    EXPECT_EQ(import({"--read-only"}).status, 1);
    EXPECT_EQ(import({"--read-only", "--dry-run"}).status, 0);
}

}  // namespace
