// The user list: what is in it, in which order, how much of it, and the statements it takes.
#include "users/users.h"

using namespace test;

namespace {

struct UserList : Users {
    UserList()
    {
        mkdir((directory.path + "/anna").c_str(), 0755);
        write_file(directory.path + "/file", "not a folder");
        symlink_home();
        add_user(100, "anna", "99", "fullname='Anna Smith',email='as@example.com',home='" + directory.path + "/anna'");
        add_user(101, "bob", "99", "home='" + directory.path + "/nowhere'");
        add_user(102, "cloud", "98");
        add_user(103, "sky", "97", "home='" + directory.path + "/link'");
        add_user(104, "visitor", "65533");
        add_user(105, "removed", "99", "is_privileged=-1");
        add_user(106, "groupless", "NULL");
        add_user(107, "system", "99", "is_privileged=1");
        add_user(108, "homeless", "65534");
        add_user(99, "zoe", "99", "home='" + directory.path + "/file'");
        add_user(-5, "dora", "-7", "rid=500");
        sql("UPDATE `$user` SET is_privileged=0,group_id=99 WHERE uname IN ('nobody','guest');"
            "INSERT INTO `$home_folder` VALUES(100,1,0,'snap',0),(101,0,0,'',0),(99,1,0,'',0);"
            "INSERT INTO `$timemachine_quota` VALUES(100,1,500),(101,0,500)");
    }

    void symlink_home() const
    {
        ASSERT_EQ(symlink((directory.path + "/anna").c_str(), (directory.path + "/link").c_str()), 0);
    }
};

/// A query with what is set, the rest zero.
AccountQuery with_option(const char *opt, const char *name_like = nullptr, const char *name_fix = nullptr)
{
    AccountQuery query{};
    query.opt = opt;
    query.name_like = name_like;
    query.name_fix = name_fix;
    return query;
}

TEST_F(UserList, HoldsOrdinaryUsersOfTheKindOnly)
{
    AccountQuery query{};
    EXPECT_THAT(list(&query), ElementsAre("anna", "bob", "homeless", "sky", "zoe"));
    EXPECT_EQ(users.Entries, 5);
    EXPECT_EQ(users.TotalEntries, 5);
    query.ads = 1;
    EXPECT_THAT(list(&query), ElementsAre("dora"));
    EXPECT_EQ(users.Entries, 1);
    EXPECT_EQ(users.TotalEntries, 1);
}

TEST_F(UserList, WithoutAQueryFollowsDirectoryMode)
{
    EXPECT_THAT(list(nullptr), ElementsAre("anna", "bob", "homeless", "sky", "zoe"));
    directory_mode();
    EXPECT_THAT(list(nullptr), ElementsAre("dora"));
    AccountQuery empty{};
    EXPECT_THAT(list(&empty), ElementsAre("anna", "bob", "homeless", "sky", "zoe"))
        << "an empty query means local users";
    sql("DELETE FROM service_cifs");
    EXPECT_THAT(list(nullptr), ElementsAre("anna", "bob", "homeless", "sky", "zoe"));
}

TEST_F(UserList, LeavesOutMembersOfNogroupWhenThereIsNoGuestGroup)
{
    sql("DELETE FROM `$group` WHERE gname='guest'");
    AccountQuery query{};
    EXPECT_THAT(list(&query), ElementsAre("anna", "bob", "sky", "visitor", "zoe"));
    sql("DELETE FROM `$group` WHERE gname='nogroup'");
    EXPECT_THAT(list(&query), IsEmpty()) << "without either group nobody can be told from a guest";
    EXPECT_EQ(users.TotalEntries, 0);
}

TEST_F(UserList, Filters)
{
    const std::vector<std::string> all = {"anna", "bob", "homeless", "sky", "zoe"};
    const std::vector<std::string> all_and_admin = {"admin", "anna", "bob", "homeless", "sky", "zoe"};
    struct Case {
        AccountQuery query;
        std::vector<std::string> names;
        int32_t entries;
        int32_t total;
    };
    const Case cases[] = {
        // name
        {with_option(nullptr, "an%"), {"anna"}, 1, 5},
        {with_option(nullptr, "%SMITH"), {"anna"}, 1, 5},
        {with_option(nullptr, "as@%"), {"anna"}, 1, 5},
        {with_option(nullptr, "%o%"), {"anna", "bob", "homeless", "zoe"}, 4, 5},  // anna by her address
        {with_option(nullptr, "b_b"), {"bob"}, 1, 5},
        {with_option(nullptr, "an"), {}, 0, 5},
        {with_option(nullptr, "it's%"), {}, 0, 5},
        {with_option(nullptr, "' OR 1=1 --"), {}, 0, 5},
        {with_option(nullptr, ""), all, 5, 5},
        // tokens that are the whole text
        {with_option("SINGLE_USER", nullptr, "bob"), {"bob"}, 1, 5},
        {with_option("SINGLE_USER", nullptr, "BOB"), {}, 0, 5},
        {with_option("SINGLE_USER", nullptr, "b%"), {}, 0, 5},
        {with_option("SINGLE_USER", nullptr, "x' OR 1=1 OR 'x"), {}, 0, 5},
        {with_option("SINGLE_USER", nullptr, nullptr), {}, 0, 5},
        {with_option("SINGLE_USER", "an%", "bob"), {}, 0, 5},
        {with_option(" SINGLE_USER", nullptr, "bob"), all, 5, 5},
        {with_option("single_user", nullptr, "bob"), all, 5, 5},
        {with_option(nullptr, nullptr, "bob"), all, 5, 5},
        {with_option("TM_ON"), {"anna"}, 1, 5},
        {with_option("TM_ON", "b%"), {}, 0, 5},
        {with_option("||TM_ON"), all, 5, 5},
        {with_option("HF_EXISTS"), {"anna", "sky"}, 5, 5},
        {with_option("HF_EXISTS", "%a%"), {"anna"}, 1, 5},
        {with_option(""), all, 5, 5},
        {with_option("SOMETHING"), all, 5, 5},
        // snapshot settings
        {with_option("||HF_SNAPSHOT_PROTECTION==1"), {"anna", "zoe"}, 2, 5},
        {with_option("||HF_SNAPSHOT_PROTECTION==0"), {"bob"}, 1, 5},
        {with_option("||HF_SNAPSHOT_PROTECTION"), {"anna", "zoe"}, 2, 5},
        {with_option("||HF_SNAPSHOT_PROTECTION==2"), {"anna", "zoe"}, 2, 5},
        {with_option("||HF_SNAPSHOT_PROTECTION==01"), {"bob"}, 1, 5},
        {with_option("HF_SNAPSHOT_PROTECTION==0"), all, 5, 5},
        {with_option("&&HF_SNAPSHOT_PROTECTION==0"), all, 5, 5},
        {with_option("||HF_SNAPSHOT_ACCESS==1"), {"anna"}, 1, 5},
        {with_option("||HF_SNAPSHOT_ACCESS==0"), {"bob", "zoe"}, 2, 5},
        {with_option("||HF_SNAPSHOT_ACCESS"), {"anna"}, 1, 5},
        {with_option("HF_SNAPSHOT_ACCESS==0"), all, 5, 5},
        {with_option("||HF_SNAPSHOT_PROTECTION==0||HF_SNAPSHOT_ACCESS==1"), {"anna", "bob"}, 2, 5},
        {with_option("||HF_SNAPSHOT_ACCESS==1||HF_SNAPSHOT_PROTECTION==0"), {"anna", "bob"}, 2, 5},
        {with_option("||HF_SNAPSHOT_PROTECTION==0 HF_SNAPSHOT_ACCESS==1"), {"anna", "bob"}, 2, 5},
        {with_option("HF_SNAPSHOT_PROTECTION==0 ||HF_SNAPSHOT_ACCESS==1"), {"anna", "bob"}, 2, 5},
        {with_option("||HF_SNAPSHOT_PROTECTION==0", "z%"), {}, 0, 5},
        // administrator and cloud service: these move the total as well
        {with_option("&&USER_WITH_ADMIN==1"), all_and_admin, 6, 6},
        {with_option("&&USER_WITH_ADMIN==10"), all_and_admin, 6, 6},
        {with_option("&&USER_WITH_ADMIN==0"), all, 5, 5},
        {with_option("&&USER_WITH_ADMIN"), all, 5, 5},
        {with_option("USER_WITH_ADMIN==1"), all, 5, 5},
        {with_option("||USER_WITH_ADMIN==1"), all, 5, 5},
        {with_option("&&USER_WITHOUT_SKYLOFT==1"), {"anna", "bob", "homeless", "zoe"}, 4, 4},
        {with_option("&&USER_WITHOUT_SKYLOFT==0"), all, 5, 5},
        {with_option("USER_WITHOUT_SKYLOFT==1"), all, 5, 5},
        {with_option("&&USER_WITHOUT_SKYLOFT==0 USER_WITH_ADMIN==1"), all_and_admin, 6, 6},
        {with_option("&&USER_WITH_ADMIN==0 USER_WITHOUT_SKYLOFT==1"), {"anna", "bob", "homeless", "zoe"}, 4, 4},
        {with_option("&&USER_WITH_ADMIN==1&&USER_WITHOUT_SKYLOFT==1"),
         {"admin", "anna", "bob", "homeless", "zoe"},
         5,
         5},
        {with_option("TM_ON&&USER_WITH_ADMIN==1"), all_and_admin, 6, 6},
        {with_option("&&USER_WITH_ADMIN==1||HF_SNAPSHOT_PROTECTION==0"), {"admin", "bob"}, 2, 6},
        {with_option("&&USER_WITH_ADMIN==1", "nobody like this"), {"admin"}, 1, 6},
    };
    for (const Case &each : cases) {
        AccountQuery query = each.query;
        SCOPED_TRACE(text(query.opt) + ", " + text(query.name_like) + ", " + text(query.name_fix));
        EXPECT_EQ(list(&query), each.names);
        EXPECT_EQ(users.Entries, each.entries);
        EXPECT_EQ(users.TotalEntries, each.total);
    }
}

TEST_F(UserList, AdministratorComesAlongWithDomainUsers)
{
    AccountQuery query = with_option("&&USER_WITH_ADMIN==1");
    query.ads = 7;
    EXPECT_THAT(list(&query), ElementsAre("admin", "dora"));
    AccountQuery by_field{};
    by_field.include_admin = 1;
    EXPECT_THAT(list(&by_field), testing::Not(testing::Contains("admin"))) << "the field is not read";
}

TEST_F(UserList, ExistingHomesLeaveNegativeIdsOut)
{
    sql("UPDATE `$user` SET home='" + directory.path + "/anna' WHERE id=-5");
    AccountQuery query = with_option("HF_EXISTS");
    query.ads = 1;
    EXPECT_THAT(list(&query), IsEmpty());
    EXPECT_EQ(users.Entries, 0);
    EXPECT_EQ(users.TotalEntries, 1);
}

TEST_F(UserList, Orders)
{
    struct Case {
        int32_t order;
        std::vector<std::string> names;
    };
    sql("UPDATE `$user` SET uname='Bob' WHERE uname='bob'");  // capitals come first
    const std::vector<std::string> by_name = {"Bob", "anna", "homeless", "sky", "zoe"};
    const Case cases[] = {
        {0, by_name},
        {1, by_name},
        {2, {"zoe", "anna", "Bob", "sky", "homeless"}},
        {-1, {"zoe", "sky", "homeless", "anna", "Bob"}},
        {-2, {"homeless", "sky", "Bob", "anna", "zoe"}},
        {3, by_name},
        {-3, by_name},
        {INT32_MAX, by_name},
    };
    for (const Case &each : cases) {
        AccountQuery query{};
        query.order = each.order;
        EXPECT_EQ(list(&query), each.names) << "order " << each.order;
    }
}

TEST_F(UserList, PagesAndCountsPastThePage)
{
    struct Case {
        int32_t limit;
        int32_t offset;
        std::vector<std::string> names;
    };
    const Case cases[] = {
        {2, 0, {"anna", "bob"}},
        {2, 1, {"bob", "homeless"}},
        {2, 4, {"zoe"}},
        {2, 5, {}},
        {100, 0, {"anna", "bob", "homeless", "sky", "zoe"}},
        {0, 3, {"anna", "bob", "homeless", "sky", "zoe"}},
        {-1, 3, {"sky", "zoe"}},
        {INT32_MIN, INT32_MIN, {"anna", "bob", "homeless", "sky", "zoe"}},
        {INT32_MAX, INT32_MAX, {}},
    };
    for (const Case &each : cases) {
        SCOPED_TRACE(std::to_string(each.limit) + "," + std::to_string(each.offset));
        AccountQuery query{};
        query.limit = each.limit;
        query.offset = each.offset;
        EXPECT_EQ(list(&query), each.names);
        EXPECT_EQ(users.Entries, 5);
        EXPECT_EQ(users.TotalEntries, 5);
    }
}

TEST_F(UserList, PagesBeforeItLooksAtHomes)
{
    AccountQuery query = with_option("HF_EXISTS");
    query.limit = 2;
    query.offset = 1;
    EXPECT_THAT(list(&query), IsEmpty()) << "bob and homeless have no folder";
    EXPECT_EQ(users.Entries, 5);
}

TEST_F(UserList, NamePatternHasALimit)
{
    for (const char letter : {'a', '\'', '%'}) {
        const std::string longest(256, letter);
        AccountQuery query = with_option(nullptr, longest.c_str());
        EXPECT_EQ(list(&query).size(), letter == '%' ? 5u : 0u);
        const std::string longer(257, letter);
        query.name_like = longer.c_str();
        users = {};
        expect_failure(8, "Query string is too long.",
                       [&] { return qbobj_getUserCollection(qbdb, db, &users, &query, 0, &err); });
        EXPECT_EQ(users.User, nullptr);
    }
}

TEST_F(UserList, NameTooLongForItsClauseIsRefused)
{
    const std::string fits(400, 'x');
    AccountQuery query = with_option("SINGLE_USER", nullptr, fits.c_str());
    EXPECT_THAT(list(&query), IsEmpty());
    const std::string cut(600, 'x');
    query.name_fix = cut.c_str();
    users = {};
    EXPECT_EQ(qbobj_getUserCollection(qbdb, db, &users, &query, 0, &err), 5u);
    EXPECT_THAT(err.message, testing::StartsWith("Failed DB Query for user. "));
}

TEST_F(UserList, RunsItsStatementsAsTheyStand)
{
    AccountQuery query = with_option(
        "||HF_SNAPSHOT_PROTECTION==1||HF_SNAPSHOT_ACCESS==0&&USER_WITH_ADMIN==1&&"
        "USER_WITHOUT_SKYLOFT==1",
        "it's%");
    query.ads = 1;
    query.order = -2;
    query.limit = 50;
    query.offset = 100;
    users = {};
    take_statements();
    ASSERT_EQ(qbobj_getUserCollection(qbdb, db, &users, &query, 0, &err), 0u) << err.message;
    const auto ran = take_statements();
    ASSERT_EQ(ran.size(), 5u);
    EXPECT_EQ(
        ran[1],
        "SELECT COUNT(*)  FROM `$user` U WHERE (U.is_privileged=0 AND U.group_id<>98 AND U.group_id<>97 AND U.rid "
        "IS NOT NULL AND U.uname<>'nobody' AND U.uname<>'guest' AND U.group_id<>IFNULL((SELECT id FROM `$group` G "
        "WHERE G.gname='guest'),(SELECT id FROM `$group` G WHERE G.gname='nogroup'))) OR (U.uname='admin')");
    const std::string filter =
        "  AND (U.uname LIKE 'it''s%' OR U.fullname LIKE 'it''s%' OR U.email LIKE 'it''s%')  AND ( U.id IN (SELECT "
        "H.user_id FROM '$home_folder' H WHERE H.snapshot_protection_enabled=1) OR U.id IN (SELECT H.user_id FROM "
        "'$home_folder' H WHERE H.visible_snapdir='')))";
    EXPECT_EQ(
        ran[2],
        "SELECT COUNT(*) FROM `$user` U WHERE (U.is_privileged=0 AND U.group_id<>98 AND U.group_id<>97 AND U.rid IS "
        "NOT NULL AND U.uname<>'nobody' AND U.uname<>'guest' AND U.group_id<>IFNULL((SELECT id FROM `$group` G "
        "WHERE G.gname='guest'),(SELECT id FROM `$group` G WHERE G.gname='nogroup'))" +
            filter + " OR (U.uname='admin')");
    EXPECT_EQ(
        ran[3],
        "SELECT U.id,U.uname,(SELECT G.gname FROM `$group` G WHERE G.id=U.group_id),U.home,U.email,U.passwd,CASE "
        "WHEN U.rid IS NULL THEN 0 ELSE 1 END,U.fullname,U.is_locked,U.group_id,U.shell_access FROM `$user` U WHERE "
        "(U.is_privileged=0 AND U.group_id<>98 AND U.group_id<>97 AND U.rid IS NOT NULL AND U.uname<>'nobody' AND "
        "U.uname<>'guest' AND U.group_id<>IFNULL((SELECT id FROM `$group` G WHERE G.gname='guest'),(SELECT id FROM "
        "`$group` G WHERE G.gname='nogroup'))" +
            filter + " OR (U.uname='admin') ORDER BY U.id DESC LIMIT 100,50");
}

TEST_F(UserList, RunsItsStatementsAsTheyStandForOneName)
{
    struct Case {
        AccountQuery query;
        const char *clause;
    };
    for (const Case &each :
         {Case{with_option("SINGLE_USER", nullptr, "bob"), " AND U.uname='bob'"},
          Case{with_option("SINGLE_USER"), " AND U.uname=NULL"},
          Case{with_option("TM_ON"), " AND id IN (SELECT T.user_id from '$timemachine_quota' T WHERE T.enabled=1)"},
          Case{with_option("HF_EXISTS"), " AND id >= 0"}}) {
        AccountQuery query = each.query;
        take_statements();
        list(&query);
        const auto ran = take_statements();
        EXPECT_THAT(ran[1], testing::Not(HasSubstr(each.clause)));
        EXPECT_THAT(ran[2], testing::EndsWith("WHERE G.gname='nogroup'))  " + std::string(each.clause) + ") "));
        EXPECT_THAT(ran[3], testing::EndsWith("WHERE G.gname='nogroup'))  " + std::string(each.clause) +
                                              ")  ORDER BY U.uname "));
    }
}

TEST_F(UserList, TakesThreeStatementsAndFourForEachUser)
{
    constexpr size_t kTransaction = 2;
    const auto statements = [this](AccountQuery *query) {
        take_statements();
        list(query);
        return take_statements().size() - kTransaction;
    };
    AccountQuery everything{};
    AccountQuery page{};
    page.limit = 3;
    for (int32_t id = 1000; id < 1100; id++) add_user(id, "more" + std::to_string(id));
    EXPECT_EQ(statements(&everything), 3 + 4 * 105u);
    EXPECT_EQ(statements(nullptr), 1 + 3 + 4 * 105u) << "one more for directory mode";
    EXPECT_EQ(statements(&page), 3 + 4 * 3u) << "a page costs what is on it";
    AccountQuery homes = with_option("HF_EXISTS");
    EXPECT_EQ(statements(&homes), 3 + 4 * 2u) << "who is left out costs nothing";
}

TEST_F(UserList, AppendsToAListThatIsNotEmpty)
{
    User first{};
    first.UserName = "first";
    users.User = &first;
    AccountQuery query = with_option("TM_ON");
    ASSERT_EQ(qbobj_getUserCollection(qbdb, db, &users, &query, 0, &err), 0u);
    EXPECT_THAT(names(), ElementsAre("first", "anna"));
}

TEST_F(UserList, AFailureInTheMiddleKeepsTheUsersReadSoFar)
{
    struct Case {
        const char *part;
        const char *message;
    };
    for (const Case &each :
         {Case{"FROM user_quota Q", "Failed DB Query for user_quota. injected"},
          Case{"FROM `$home_folder` H WHERE H.user_id", "Failed DB Query for $home_folder. injected"},
          Case{"SELECT A.home_volume_id", "Failed DB Query for 'SELECT account_default and $user'."},
          Case{"FROM '$timemachine_quota' T WHERE T.user_id", "Failed DB Query for $timemachine_quota. injected"}}) {
        users = {};
        fail_statement(2, 1, "injected", each.part);
        expect_failure(5, each.message, [&] { return qbobj_getUserCollection(qbdb, db, &users, nullptr, 0, &err); });
        EXPECT_THAT(names(), ElementsAre("anna", "bob"));
        EXPECT_EQ(users.Entries, 5);
        EXPECT_EQ(list(nullptr).size(), 5u) << "the next call works";
    }
}

TEST_F(UserList, TracesTheNumberOfRows)
{
    qbdb->log_level = 5;
    AccountQuery query = with_option("TM_ON");
    list(&query);
    EXPECT_THAT(logged(5), testing::Contains("x_qbobj_getUserCollection() rc=0 nrow=1\n"));
}

using UserListDeathTest = UserList;

TEST_F(UserListDeathTest, NeedsACollection)
{
    EXPECT_DEATH(qbobj_getUserCollection(qbdb, db, nullptr, nullptr, 0, &err), "Assertion `users' failed");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
