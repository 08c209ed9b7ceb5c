#include "fixture/files.h"
#include "user_changes/changes.h"
#include "user_changes/list_file.h"

using test::elements;
using test::verifies;
using testing::ElementsAre;

namespace {

const std::string kHeader = "User_Name\tGroup_Name\tEmail_Address\tPassword\n";

struct CheckUserList : test::Changes {
    test::ListFile file;
    UserCollection users{};
    GroupCollection groups{};
    UserCollection existing_users{};
    GroupCollection existing_groups{};

    uint32_t check() { return qbobj_checkUserList(qbdb, db, &users, &groups, &existing_users, &existing_groups, &err); }
    uint32_t check(const std::string &text)
    {
        users = {};
        groups = {};
        file.write(text);
        return check();
    }
    /// The users that were read, as name|group|e-mail|password.
    std::vector<std::string> read() const
    {
        std::vector<std::string> all;
        for (const User *user : elements(users.User))
            all.push_back(std::string(user->UserName) + "|" + user->GroupName + "|" + user->Email + "|" +
                          user->Password);
        return all;
    }
    std::vector<std::string> new_groups() const
    {
        std::vector<std::string> all;
        for (const Group *group : elements(groups.Group)) all.emplace_back(group->GroupName);
        return all;
    }
    void expect_refused(uint32_t code, const std::string &message, const std::string &text)
    {
        SCOPED_TRACE(text);
        users = {};
        groups = {};
        file.write(text);
        const auto files = test::open_files();
        expect_failure(code, message, [&] { return check(); });
        EXPECT_EQ(test::open_files(), files);
        EXPECT_EQ(users.User, nullptr);
        EXPECT_EQ(groups.Group, nullptr);
    }
};

TEST_F(CheckUserList, WithoutAFileThereIsNothingToCheck)
{
    expect_failure(1, "User file not exist", [&] { return check(); });
}

TEST_F(CheckUserList, WhatCannotBeReadIsNoList)
{
    file.make_directory();
    const auto files = test::open_files();
    expect_failure(1, "User file wrong format", [&] { return check(); });
    EXPECT_EQ(test::open_files(), files);
}

TEST_F(CheckUserList, NeitherAPipeNorADeviceHoldsItUp)
{
    file.make_pipe();
    expect_failure(1, "User file wrong format", [&] { return check(); });
    file.make_link("/dev/zero");
    expect_failure(1, "User file wrong format", [&] { return check(); });
    file.make_link("/nowhere/at/all");
    expect_failure(1, "User file not exist", [&] { return check(); });
}

TEST_F(CheckUserList, AnEndlessFileIsGivenUp)
{
    file.write("import_list\n");
    file.resize(off_t{1} << 40);  // a hole: it reads as empty lines without an end
    expect_failure(1, "User file larger than 67108864 bytes", [&] { return check(); });
}

TEST_F(CheckUserList, FilesWithoutUsers)
{
    for (const std::string &text :
         {std::string(), kHeader, kHeader + kHeader, std::string("\n\r\n\n"), std::string("import_list\nexport_list"),
          "export_list\r\n" + kHeader, kHeader.substr(0, kHeader.size() - 1)}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(check(text), 0u) << err.message;
        EXPECT_EQ(users.User, nullptr);
        EXPECT_EQ(groups.Group, nullptr);
    }
}

TEST_F(CheckUserList, UsersAndGroupsInTheOrderOfTheFile)
{
    const std::string before = content();
    const auto files = test::open_files();
    ASSERT_EQ(check("export_list\n" + kHeader +
                    "anna\tstaff\tanna@x.com\t$1$a$hash\r\n"
                    "\n"
                    "bob\tnew\t\t\n"
                    "carl\tnewer\t\tx\n"
                    "dora\tnew\t\t"),
              0u)
        << err.message;
    EXPECT_THAT(read(), ElementsAre("anna|staff|anna@x.com|$1$a$hash", "bob|new||", "carl|newer||x", "dora|new||"));
    EXPECT_THAT(new_groups(), ElementsAre("staff", "new", "newer"));
    EXPECT_EQ(users.User->resource_id, 0);
    EXPECT_EQ(users.Entries, 0);
    EXPECT_EQ(test::open_files(), files);
    EXPECT_EQ(content(), before);
}

TEST_F(CheckUserList, PasswordsAreClearTextUntilTheFileSaysOtherwise)
{
    ASSERT_EQ(check("anna\tstaff\t\tsecret\n"
                    "bob\tstaff\t\t\n"
                    "export_list\n"
                    "carl\tstaff\t\t$1$ready\n"
                    "import_list\n"
                    "dora\tstaff\t\t$1$clear\n"),
              0u)
        << err.message;
    const auto all = elements(users.User);
    ASSERT_EQ(all.size(), 4u);
    EXPECT_TRUE(verifies("secret", all[0]->Password));
    EXPECT_STREQ(all[1]->Password, "");
    EXPECT_STREQ(all[2]->Password, "$1$ready");
    EXPECT_TRUE(verifies("$1$clear", all[3]->Password));
}

TEST_F(CheckUserList, KnownGroupsAreNotCreatedAgain)
{
    Group known[2] = {};
    known[0].GroupName = "staff";
    known[0].next = &known[1];
    existing_groups.Group = &known[0];
    ASSERT_EQ(check("anna\tstaff\t\t\nbob\tStaff\t\t\ncarl\tstaff\t\t\ndora\tStaff\t\t\n"), 0u) << err.message;
    EXPECT_THAT(new_groups(), ElementsAre("Staff")) << "names differ by case";
}

TEST_F(CheckUserList, AppendsToWhatIsThere)
{
    User first{};
    first.UserName = "first";
    Group staff{};
    staff.GroupName = "staff";
    users.User = &first;
    groups.Group = &staff;
    file.write("anna\tstaff\t\t\n");
    ASSERT_EQ(check(), 0u) << err.message;
    EXPECT_EQ(elements(users.User).size(), 2u);
    EXPECT_EQ(users.User, &first);
    EXPECT_STREQ(first.next->UserName, "anna");
    EXPECT_EQ(groups.Group, &staff);
    EXPECT_EQ(staff.next, nullptr);
    first.next = nullptr;
    file.write("first\tstaff\t\t\n");
    expect_failure(801, "User (first) already exists.", [&] { return check(); });
    EXPECT_EQ(first.next, nullptr);
}

TEST_F(CheckUserList, NamesThatAreTaken)
{
    User known[3] = {};
    known[0].UserName = "anna";
    known[0].next = &known[1];  // a record without a name takes none
    known[1].next = &known[2];
    known[2].UserName = "bob";
    existing_users.User = known;
    expect_refused(801, "User (anna) already exists.", "anna\tstaff\t\t\n");
    expect_refused(801, "User (bob) already exists.", "carl\tstaff\t\t\nbob\tstaff\t\t\n");
    expect_refused(801, "User (carl) already exists.", "carl\tstaff\t\t\ndora\tstaff\t\t\ncarl\tother\t\t\n");
    EXPECT_EQ(check("Anna\tstaff\t\t\n"), 0u) << "names differ by case";
    EXPECT_EQ(check("admin\tstaff\t\t\n"), 0u) << "only what the caller says exists";
}

TEST_F(CheckUserList, ExistingCollectionsMayBeMissing)
{
    file.write("anna\tstaff\t\t\n");
    ASSERT_EQ(qbobj_checkUserList(qbdb, db, &users, &groups, nullptr, nullptr, &err), 0u) << err.message;
    EXPECT_THAT(read(), ElementsAre("anna|staff||"));
}

TEST_F(CheckUserList, RefusesLinesOfAnotherForm)
{
    for (const char *line :
         {"anna", "import", "import_list ", "Import_list", " ", "anna\tstaff", "anna\tstaff\t", "anna\tstaff\ta@x.com",
          "\t\t", "\t\t\t\t", "anna\tstaff\t\t\t", "a\tb\tc\td\te\tf", "\r\r", "import_list\r\r"}) {
        expect_refused(1, "User file wrong format", std::string(line) + "\n");
        expect_refused(1, "User file wrong format", "bob\tstaff\t\t\n" + std::string(line));
    }
}

TEST_F(CheckUserList, RefusesTheFirstBadLine)
{
    const std::string long_name(33, 'a');
    const std::string long_password(600, 'x');
    struct {
        uint32_t code;
        std::string message;
        std::string line;
    } const cases[] = {
        {8, "UserName is required for 'add'", "\tstaff\t\t"},
        {8, "UserName is required for 'add'", "\t\t\t"},
        {806, "UserName (" + long_name + ") is too long", long_name + "\tstaff\t\t"},
        {809, "UserName (homes) is reserved", "homes\tstaff\t\t"},
        {809, "UserName (m_x) is reserved", "m_x\tstaff\t\t"},
        {8, "Invalid UserName (a b), rc=2", "a b\tstaff\t\t"},
        {8, "Invalid UserName (1234), rc=6", "1234\tstaff\t\t"},
        {8, "GroupName is required for 'add'", "anna\t\t\t"},
        {806, "GroupName is too long (" + long_name + ")", "anna\t" + long_name + "\t\t"},
        {8, "Invalid GroupName (st*ff)", "anna\tst*ff\t\t"},
        {8, "Invalid Email (a..b@x.com) rc=7", "anna\tstaff\ta..b@x.com\t"},
        {8, "Invalid Password (●●●●●●●●) rc=1", "anna\tstaff\t\t" + long_password},
        // One line, several faults: the name goes before the group, the group before the address.
        {8, "Invalid UserName (-), rc=1", "-\t*\t*\t"},
        {8, "Invalid GroupName (*)", "anna\t*\t*\t"},
        // A user by the name of the heading's first field alone is a user.
        {8, "Invalid Email (Email) rc=8", "User_Name\tGroup_Name\tEmail\tPassword"},
    };
    for (const auto &row : cases) {
        expect_refused(row.code, row.message, row.line + "\n");
        expect_refused(row.code, row.message, kHeader + "bob\tstaff\t\t\n" + row.line + "\r\nbad\n");
    }
}

TEST_F(CheckUserList, LongLinesAreReadInPieces)
{
    const std::string start = "export_list\nanna\tstaff\t\t";
    const size_t room = 1023 - strlen("anna\tstaff\t\t");
    EXPECT_EQ(check(start + std::string(room, 'x') + "\n"), 0u) << err.message;
    EXPECT_EQ(check(start + std::string(room - 1, 'x') + "\r\n"), 0u) << err.message;
    EXPECT_EQ(strlen(users.User->Password), room - 1);
    EXPECT_EQ(check(start + std::string(room, 'x')), 0u) << err.message;
    EXPECT_EQ(strlen(users.User->Password), room);
    expect_refused(1, "User file wrong format", start + std::string(room + 1, 'x') + "\n");
    ASSERT_EQ(check(start + std::string(room, 'x') + "bob\tstaff\t\ty\n"), 0u) << err.message;
    ASSERT_EQ(elements(users.User).size(), 2u);
    EXPECT_STREQ(users.User->next->UserName, "bob");
    expect_refused(1, "User file wrong format", std::string(100000, 'x'));
}

TEST_F(CheckUserList, ANulEndsItsLine)
{
    ASSERT_EQ(check(std::string("export_list\nanna\tstaff\t\tx\0y\nbob\tstaff\t\t\n\0garbage\n", 50)), 0u)
        << err.message;
    EXPECT_THAT(read(), ElementsAre("anna|staff||x", "bob|staff||"));
}

TEST_F(CheckUserList, DirectoryModeAllowsItsNames)
{
    expect_refused(8, "Invalid UserName (anna berg), rc=2", "anna berg\tstaff\t\t\n");
    directory_mode();
    EXPECT_EQ(check("anna berg\tstaff\t\t\n4711\tstaff\t\t\n"), 0u) << err.message;
}

TEST_F(CheckUserList, AFailedStatementIsReported)
{
    file.write("anna\tstaff\t\t\n");
    fail_statement(1);
    expect_failure(5, "Failed DB Query 'SELECT service_cifs'. (injected)", [&] { return check(); });
    EXPECT_EQ(users.User, nullptr);
}

TEST_F(CheckUserList, WhatWasCheckedCanBeImported)
{
    ASSERT_EQ(check(kHeader + "anna\tstaff\ta@x.com\tsecret\nbob\tcrew\t\t\ncarl\tcrew\t\t\n"), 0u) << err.message;
    Group staff{};
    staff.GroupName = "staff";
    existing_groups.Group = &staff;
    ASSERT_EQ(check(kHeader + "anna\tstaff\ta@x.com\tsecret\nbob\tcrew\t\t\ncarl\tcrew\t\t\n"), 0u) << err.message;
    EXPECT_THAT(new_groups(), ElementsAre("crew"));
    ASSERT_EQ(qbobj_addGroup(qbdb, db, groups.Group, &err), 0u) << err.message;
    ASSERT_EQ(qbobj_addUserList(qbdb, db, users.User, &err), 0u) << err.message;
    EXPECT_THAT(rows("SELECT U.id,U.uname,G.gname FROM `$user` U JOIN `$group` G ON G.id=U.group_id "
                     "WHERE U.id BETWEEN 100 AND 32767 ORDER BY U.id"),
                ElementsAre("100|anna|staff", "101|bob|crew", "102|carl|crew"));
    EXPECT_TRUE(verifies("secret", user("anna", "passwd")));
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
