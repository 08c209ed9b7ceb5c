// qbobj edit: what is named changes, everything else stays.
#include "json_text.h"
#include "run.h"

using qbcli::Json;
using test::Result;
using testing::HasSubstr;

namespace {

struct Edit : test::Program {
    Edit()
    {
        EXPECT_EQ(call({"addUser", "UserName=anna", "GroupName=users", "Email=anna@example.org", "ShellAccess=1",
                        "Password=-"},
                       "secret word\n")
                      .status,
                  0);
    }

    /// Every column of the user but those of the named ones.
    std::string user(const std::string &columns) const
    {
        return value("SELECT " + columns + " FROM `$user` WHERE uname='anna'");
    }
};

TEST_F(Edit, ChangesWhatIsNamed)
{
    const std::string hash = user("passwd");
    const std::string shell = user("shell");
    ASSERT_NE(hash, "");
    const Result result = call({"edit", "modifyUser", "UserId=100", "Email=anna@example.com"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(user("email"), "anna@example.com");
    EXPECT_EQ(user("passwd"), hash);
    EXPECT_EQ(user("shell"), shell);

    // Without it a switch that nobody named is reset.
    EXPECT_EQ(call({"modifyUser", "UserId=100", "Email=anna@example.net"}).status, 0);
    EXPECT_NE(user("shell"), shell);
}

TEST_F(Edit, WritesNothingElse)
{
    const std::string before = value("SELECT group_concat(name) FROM sqlite_master");
    const Result watched = call({"--changes", "--compact", "edit", "modifyUser", "UserId=100", "Email=a@example.com"});
    EXPECT_EQ(watched.status, 0) << watched.err;
    const Json changes = Json::parse(watched.out)["changes"];
    ASSERT_EQ(changes.size(), 1u) << watched.out;
    EXPECT_EQ(changes[0]["column"], "email");
    EXPECT_EQ(changes[0]["after"], "a@example.com");
    const Result tried = call({"--dry-run", "--compact", "edit", "modifyUser", "UserId=100", "Email=b@example.com"});
    EXPECT_EQ(tried.status, 0) << tried.err;
    EXPECT_EQ(user("email"), "a@example.com");
    EXPECT_EQ(value("SELECT group_concat(name) FROM sqlite_master"), before);
}

TEST_F(Edit, ARecordThatNothingAddresses)
{
    const auto defaults = [this] { return Json::parse(call({"getAccountDefault", "--json"}).out); };
    Json expected = defaults();
    ASSERT_NE(expected["DiskQuotaWarn"], 70);
    expected["DiskQuotaWarn"] = 70;
    const Result result = call({"edit", "setAccountDefault", "DiskQuotaWarn=70"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(defaults(), expected);
}

TEST_F(Edit, AsksForASecret)
{
    const std::string hash = user("passwd");
    EXPECT_EQ(call({"edit", "modifyUser", "UserId=100", "Password=-"}, "another one\n").status, 0);
    EXPECT_NE(user("passwd"), hash);
    EXPECT_EQ(user("email"), "anna@example.org");
}

TEST_F(Edit, Refusals)
{
    struct Case {
        std::vector<std::string> words;
        const char *message;
        int status;
    };
    const Case cases[] = {
        {{"edit"}, "OPERATION is missing", 2},
        {{"edit", "modifyUsr", "UserId=100"}, "there is no operation modifyUsr (did you mean modifyUser?)", 2},
        {{"edit", "modifyUser"}, "modifyUser: nothing is given that could be changed", 2},
        {{"edit", "addUser", "UserName=x"}, "no operation reads what it stores; those that can be edited with are", 2},
        {{"edit", "getUser", "UserId=100"}, "no operation reads what it stores", 2},
        {{"edit", "modifyUser", "UserId=4711", "Email=x@example.org"}, "getUser: 5 ", 4},
        {{"edit", "modifyUser", "UserId=100", "Email=no address"}, "modifyUser: 8 Invalid Email", 1},
        {{"edit", "modifyUser", "UserId=100", "Mail=x"}, "there is no field Mail", 2},
        {{"edit", "modifyUser", "[{\"UserId\":100},{\"UserId\":101}]"}, "one record is edited, and its fields are named", 2},
        {{"--read-only", "edit", "modifyUser", "UserId=100", "Email=x@example.org"}, "--read-only forbids", 2},
    };
    const std::string before = user("email||passwd||shell");
    for (const Case &one : cases) {
        const Result result = call(one.words);
        EXPECT_THAT(result.err, HasSubstr(one.message));
        EXPECT_EQ(result.status, one.status) << result.err;
        EXPECT_EQ(user("email||passwd||shell"), before);
    }
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
