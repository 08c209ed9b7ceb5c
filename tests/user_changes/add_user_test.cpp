#include "user_changes/changes.h"

using test::FailingStatement;
using test::verifies;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

constexpr char kName32[] = "a2345678901234567890123456789012";

struct AddUser : test::Changes {
    static User named(const char *name)
    {
        User user{};
        user.UserName = name;
        return user;
    }
    uint32_t add(User *user) { return qbobj_addUser(qbdb, db, user, &err); }
    uint32_t add(User user) { return add(&user); }
    uint32_t add(const char *name) { return add(named(name)); }
    std::string aliases() const
    {
        std::string all;
        for (const auto &row : rows("SELECT unix_uname,smb_uname,type FROM smb_username_map ORDER BY id"))
            all += row + ";";
        return all;
    }
    std::vector<std::string> allowances() const { return rows("SELECT * FROM `$timemachine_quota` ORDER BY user_id"); }
};

TEST_F(AddUser, ANameIsEnough)
{
    User anna = named("anna");
    ASSERT_EQ(add(&anna), 0u) << err.message;
    EXPECT_EQ(anna.resource_id, 100);
    EXPECT_EQ(anna.UserId, 100);
    EXPECT_STREQ(anna.HomeDirectory, "/home/anna");
    EXPECT_EQ(user("anna", "id,passwd,email,home,group_id,shell,is_privileged,is_locked,shell_access,rid"),
              "100||NULL|/home/anna|99|/bin/false|0|0|0|NULL");
    EXPECT_EQ(user("anna", "last_changed=STRFTIME('%s','now')/60/60/24 AND last_changed>19000"), "1");
    EXPECT_THAT(rows("SELECT * FROM `$home_folder`"), ElementsAre("100|0|0||0"));
    EXPECT_THAT(rows("SELECT * FROM user_quota"), IsEmpty());
    EXPECT_THAT(allowances(), IsEmpty());
    EXPECT_EQ(value("SELECT next_uid FROM account_default"), "101");
    EXPECT_EQ(value("SELECT enabled FROM service_afp"), "0");
}

TEST_F(AddUser, ANullChainAddsNobody)
{
    const std::string before = content();
    EXPECT_EQ(add(static_cast<User *>(nullptr)), 0u);
    EXPECT_EQ(content(), before);
}

TEST_F(AddUser, EveryFieldIsStored)
{
    Quota quotas[2] = {};
    quotas[0].ShareId = "tank/media";
    quotas[0].HardMB = 10;
    quotas[0].next = &quotas[1];
    quotas[1].ShareId = "tank/docs";
    quotas[1].HardMB = 3000000000u;
    UserHomeFolderSettings settings{};
    settings.SizeLimit = 5000000000u;
    settings.SnapshotProtectionEnabled = 1;
    settings.VisibleSnapshot = 1;
    settings.VisibleSnapFolder = "o'clock";
    settings.PrevVersions = 1;
    UserTimeMachineQuota allowance{};
    allowance.Enabled = 1;
    allowance.CapacityMB = 700;
    User anna = named("anna");
    anna.UserId = 4000;
    anna.GroupName = "staff";
    anna.HomeVolumeId = "tank";
    anna.Email = "o'brien@x.com";
    anna.Password = "secret";
    anna.IsLocked = 1;
    anna.ShellAccess = 1;
    anna.FullName = "Anna O'Brien";
    anna.UserQuota = quotas;
    anna.HomeFolderSettings = &settings;
    anna.TimeMachineQuota = &allowance;
    ASSERT_EQ(add(&anna), 0u) << err.message;
    EXPECT_EQ(anna.resource_id, 4000);
    EXPECT_STREQ(anna.HomeDirectory, "/tank/home/anna");
    EXPECT_EQ(user("anna", "id,email,home,group_id,shell,is_locked,shell_access,fullname"),
              "4000|o'brien@x.com|/tank/home/anna|500|/bin/bash|1|1|NULL");
    EXPECT_TRUE(verifies("secret", user("anna", "passwd")));
    EXPECT_THAT(user("anna", "passwd"), StartsWith("$1$"));
    // The soft limit is not divided by 100 here; a limit beyond the column's range is the highest that fits.
    EXPECT_THAT(rows("SELECT * FROM user_quota ORDER BY share_id"),
                ElementsAre("4000|1|800|10", "4000|2|171798691760|2147483647"));
    EXPECT_THAT(rows("SELECT * FROM `$home_folder`"), ElementsAre("4000|1|5000000000|o'clock|1"));
    EXPECT_THAT(allowances(), ElementsAre("4000|1|700"));
    EXPECT_EQ(value("SELECT enabled FROM service_afp"), "1");
    EXPECT_EQ(value("SELECT next_uid FROM account_default"), "100") << "a given id does not move the cursor";
}

TEST_F(AddUser, RefusesWhatIsMissingOrMalformed)
{
    struct {
        uint32_t code;
        const char *message;
        User (*make)();
    } const cases[] = {
        {8, "UserName is required for 'add'", [] { return named(nullptr); }},
        {8, "UserName is required for 'add'", [] { return named(""); }},
        {806, "UserName (a23456789012345678901234567890123) is too long",
         [] { return named("a23456789012345678901234567890123"); }},
        {809, "UserName (Homes) is reserved", [] { return named("Homes"); }},
        {809, "UserName (c_data) is reserved", [] { return named("c_data"); }},
        {8, "Invalid UserName (-x), rc=1", [] { return named("-x"); }},
        {8, "Invalid UserName (a b), rc=2", [] { return named("a b"); }},
        {8, "Invalid UserName (o'b), rc=2", [] { return named("o'b"); }},
        {8, "Invalid UserName (1234), rc=6", [] { return named("1234"); }},
        {8, "Invalid Password (●●●●●●●●) rc=1",
         [] {
             static const std::string kLong(600, 'x');
             User user = named("anna");
             user.Password = kLong.c_str();
             return user;
         }},
        {8, "Invalid Email (a.@x.com) rc=9",
         [] {
             User user = named("anna");
             user.Email = "a.@x.com";
             return user;
         }},
        {8, "Invalid GroupName (nosuch)",
         [] {
             User user = named("anna");
             user.GroupName = "nosuch";
             return user;
         }},
        {8, "Invalid HomeVolume or default home volume not exists",
         [] {
             User user = named("anna");
             user.HomeVolumeId = "nosuch";
             return user;
         }},
        {5, "Failed DB Query for 'INSERT user_quota'. NOT NULL constraint failed: user_quota.share_id",
         [] {
             static Quota quota{};
             quota.ShareId = "tank/nosuch";
             quota.HardMB = 1;
             User user = named("anna");
             user.UserQuota = &quota;
             return user;
         }},
    };
    for (const auto &row : cases) {
        User user = row.make();
        expect_failure(row.code, row.message, [&] { return add(&user); });
        EXPECT_EQ(user.resource_id, 0);
        EXPECT_EQ(user.UserId, 0);
        EXPECT_EQ(user.HomeDirectory, nullptr);
    }
}

TEST_F(AddUser, AVolumeWithoutANameIsNone)
{
    sql("UPDATE _volume SET lv_name=NULL");
    User anna = named("anna");
    anna.HomeVolumeId = "tank";
    expect_failure(8, "Invalid HomeVolume or default home volume not exists", [&] { return add(&anna); });
}

TEST_F(AddUser, TheReadyMadeHashGoesFirst)
{
    User anna = named("anna");
    anna.SysHash = "$6$it's$ready";
    anna.Password = "ignored";
    ASSERT_EQ(add(&anna), 0u) << err.message;
    EXPECT_EQ(user("anna", "passwd"), "$6$it's$ready");
}

TEST_F(AddUser, EmptyTextsAreNone)
{
    User anna = named("anna");
    anna.SysHash = anna.Password = anna.Email = anna.GroupName = anna.HomeVolumeId = anna.P2PUserName = "";
    ASSERT_EQ(add(&anna), 0u) << err.message;
    EXPECT_EQ(user("anna", "passwd,email,home,group_id"), "||/home/anna|99");
}

TEST_F(AddUser, TheMaskIsAPasswordLikeAnyOther)
{
    User anna = named("anna");
    anna.Password = masked_password;
    ASSERT_EQ(add(&anna), 0u) << err.message;
    EXPECT_TRUE(verifies(masked_password, user("anna", "passwd")));
}

TEST_F(AddUser, OnlyShellAccessOneGivesAShell)
{
    struct {
        const char *name;
        int32_t access;
        const char *shell;
    } const cases[] = {{"anna", 0, "/bin/false|0"}, {"bob", 1, "/bin/bash|1"}, {"carl", 2, "/bin/false|2"}};
    for (const auto &row : cases) {
        User given = named(row.name);
        given.ShellAccess = row.access;
        ASSERT_EQ(add(given), 0u) << err.message;
        EXPECT_EQ(user(row.name, "shell,shell_access"), row.shell);
    }
}

TEST_F(AddUser, ATakenName)
{
    put(300, "anna");
    put(301, "gone");
    sql("UPDATE `$user` SET is_privileged=-1 WHERE uname='gone'");
    put(302, "cloud", 98);
    put(303, "remote", 97);
    put_domain_user(-7, "domain");
    struct {
        uint32_t code;
        const char *name;
        const char *message;
    } const cases[] = {
        {801, "anna", "User (anna) already exists."},
        {801, "gone", "User (gone) already exists."},
        {801, "cloud", "User (cloud) already exists."},
        {801, "domain", "User (domain) already exists."},
        {801, "admin", "User (admin) already exists."},
        {834, "remote", "Username (remote) is the same as existing remote username."},
    };
    for (const auto &row : cases) expect_failure(row.code, row.message, [&] { return add(row.name); });
    EXPECT_EQ(add("Anna"), 0u) << "names differ by case";
}

TEST_F(AddUser, TheNextFreeIdIsTheFirstAtOrAboveTheCursor)
{
    struct {
        const char *name;
        const char *taken;
        int cursor;
        int32_t id;
    } const cases[] = {
        {"a1",
         "DELETE FROM `$user` WHERE id BETWEEN 100 AND 32767;"
         "INSERT INTO `$user`(id,uname) VALUES(100,'u100'),(101,'u101'),(103,'u103')",
         100, 102},
        {"a2", "INSERT INTO `$user`(id,uname) VALUES(150,'u150')", 150, 151},
        {"a3", "SELECT 1", 32767, 32767},
        {"a4",
         "INSERT INTO `$user`(id,uname,is_privileged) VALUES(400,'gone',-1);"
         "INSERT INTO `$user`(id,uname,rid) VALUES(401,'domain',5)",
         400, 402},
    };
    for (const auto &row : cases) {
        sql(row.taken);
        sql("UPDATE account_default SET next_uid=" + std::to_string(row.cursor));
        User given = named(row.name);
        ASSERT_EQ(add(&given), 0u) << err.message;
        EXPECT_EQ(given.UserId, row.id);
        EXPECT_EQ(value("SELECT next_uid FROM account_default"), std::to_string(row.id + 1));
    }
}

TEST_F(AddUser, WithoutAFreeIdNobodyIsCreated)
{
    sql("WITH RECURSIVE i(n) AS (SELECT 32700 UNION ALL SELECT n+1 FROM i WHERE n<32767) "
        "INSERT INTO `$user`(id,uname) SELECT n,'u'||n FROM i");
    for (const char *cursor : {"32700", "32767", "32768", "70000", "5", "-1"}) {
        sql(std::string("UPDATE account_default SET next_uid=") + cursor);
        expect_failure(5, "Could not get next available uid. Every id is taken.", [&] { return add("anna"); });
    }
}

TEST_F(AddUser, AGivenIdMustBeInRangeAndFree)
{
    put(100, "first");
    struct {
        int32_t id;
        uint32_t code;
        const char *message;
    } const refused[] = {
        {99, 8, "UserId=99 is out of valid range (100-32767)."},
        {32768, 8, "UserId=32768 is out of valid range (100-32767)."},
        {1, 8, "UserId=1 is out of valid range (100-32767)."},
        {100, 802, "UserId (100) already exists."},
    };
    User given = named("anna");
    for (const auto &row : refused) {
        given.UserId = row.id;
        expect_failure(row.code, row.message, [&] { return add(&given); });
    }
    given.UserId = 32767;
    EXPECT_EQ(add(&given), 0u) << err.message;
    sql("DELETE FROM `$user` WHERE id=100");
    User other = named("bob");
    other.UserId = 100;
    EXPECT_EQ(add(&other), 0u) << err.message;
    User negative = named("carl");
    negative.UserId = -5;
    EXPECT_EQ(add(&negative), 0u) << err.message;
    EXPECT_EQ(negative.UserId, 101) << "an id below 1 is none";
}

TEST_F(AddUser, HomeFolderDefaultsComeFromTheAccountDefaults)
{
    sql("UPDATE account_default SET snapshot_protection=1,home_folder_capacity_limit=123456789012");
    ASSERT_EQ(add("anna"), 0u) << err.message;
    EXPECT_THAT(rows("SELECT * FROM `$home_folder`"), ElementsAre("100|1|123456789012||0"));
}

TEST_F(AddUser, AHiddenSnapshotFolderHasNoName)
{
    UserHomeFolderSettings settings{};
    settings.VisibleSnapFolder = "snapshots";
    User anna = named("anna");
    anna.HomeFolderSettings = &settings;
    ASSERT_EQ(add(&anna), 0u) << err.message;
    EXPECT_THAT(rows("SELECT * FROM `$home_folder`"), ElementsAre("100|0|0||0"));
    settings.VisibleSnapshot = 1;
    settings.VisibleSnapFolder = nullptr;
    User bob = named("bob");
    bob.HomeFolderSettings = &settings;
    ASSERT_EQ(add(&bob), 0u) << err.message;
    EXPECT_THAT(rows("SELECT * FROM `$home_folder` WHERE user_id=101"), ElementsAre("101|0|0|NULL|0"))
        << "one that was not given";
}

TEST_F(AddUser, CloudUsersGetAnAlias)
{
    struct {
        const char *name;
        const char *group;
        const char *alias;
        bool stored;
    } const cases[] = {
        {"a@x.com", "sky-loft", "alias", true},
        {"b@x.com", "admin", "alias", true},
        {"c@x.com", "users", "alias", false},
        {"d@x.com", nullptr, "alias", false},
        {"e@x.com", "sky-loft", nullptr, false},
        {"f@x.com", "sky-loft", "", false},
        {"g@x.com", "sky-loft", "12345678901234567890123456789012", true},
        {"h@x.com", "sky-loft", "123456789012345678901234567890123", false},
        {kName32, "sky-loft", "o'b", true},
        {"a234567890123456789012345678901", "sky-loft", "alias", false},
        {"plain", "sky-loft", "alias", false},
    };
    for (const auto &row : cases) {
        SCOPED_TRACE(row.name);
        sql("DELETE FROM smb_username_map");
        User given = named(row.name);
        given.GroupName = row.group;
        given.P2PUserName = row.alias;
        ASSERT_EQ(add(given), 0u) << err.message;
        EXPECT_EQ(aliases(), row.stored ? std::string(row.name) + "|" + row.alias + "|uname;" : "");
    }
}

TEST_F(AddUser, ANameThatIsAnAliasIsRefused)
{
    sql("INSERT INTO smb_username_map(unix_uname,smb_uname,type) VALUES('boss@x.com','anna','uname'),"
        "('bob','bob','uname')");
    expect_failure(845,
                   "Cannot create or rename user. Username anna is already in use as an alias for Skyloft user "
                   "boss@x.com.",
                   [&] { return add("anna"); });
    EXPECT_EQ(add("bob"), 0u) << "the alias is the user's own";
}

TEST_F(AddUser, AllowancesComeFromTheRecordOrTheDefaults)
{
    struct {
        const char *name;
        int32_t default_given;
        int32_t own_enabled;  // -1: no record
        const char *row;
    } const cases[] = {
        {"a", 0, -1, ""},      {"b", 0, 0, ""},      {"c", 0, 1, "1|700"}, {"d", 1, -1, "1|9000"},
        {"e", 1, 0, "1|9000"}, {"f", 1, 1, "1|700"}, {"g", 2, -1, ""},     {"h", 0, 2, "2|700"},
    };
    for (const auto &row : cases) {
        SCOPED_TRACE(row.name);
        sql("UPDATE service_afp SET enabled=0;UPDATE account_default SET private_time_machine_space=9,"
            "private_time_machine=" +
            std::to_string(row.default_given));
        UserTimeMachineQuota allowance{};
        allowance.Enabled = row.own_enabled;
        allowance.CapacityMB = 700;
        User given = named(row.name);
        if (row.own_enabled >= 0) given.TimeMachineQuota = &allowance;
        ASSERT_EQ(add(&given), 0u) << err.message;
        EXPECT_EQ(given.resource_id, given.UserId);
        EXPECT_GT(given.resource_id, 0);
        const auto stored =
            rows("SELECT enabled,capacity_mb FROM `$timemachine_quota` WHERE user_id=" + std::to_string(given.UserId));
        if (*row.row) EXPECT_THAT(stored, ElementsAre(row.row));
        else EXPECT_THAT(stored, IsEmpty());
        EXPECT_EQ(value("SELECT enabled FROM service_afp"), *row.row ? "1" : "0");
    }
}

TEST_F(AddUser, TheSeventeenthAllowanceIsRefused)
{
    UserTimeMachineQuota allowance{};
    allowance.Enabled = 1;
    User anna = named("anna");
    anna.TimeMachineQuota = &allowance;
    User bob = named("bob");
    bob.TimeMachineQuota = &allowance;
    put_allowances(15, 0);
    EXPECT_EQ(add(&anna), 0u) << err.message;
    EXPECT_EQ(allowances().size(), 16u);
    expect_failure(843, "Cannot exceed more than 16 time machine users (bob).", [&] { return add(&bob); });
    sql("UPDATE account_default SET private_time_machine=1");
    expect_failure(843, "Cannot exceed more than 16 time machine users (carl).", [&] { return add("carl"); });
    sql("UPDATE account_default SET private_time_machine=0");
    EXPECT_EQ(add("carl"), 0u) << "who gets no allowance is not counted";
}

TEST_F(AddUser, AnAllowanceThatCannotBeStoredLeavesTheUserAndEndsTheChain)
{
    struct {
        bool own;
        const char *message;
    } const cases[] = {
        {true, "Failed DB Query for 'INSERT $timemachine_quota'. UNIQUE constraint failed: $timemachine_quota.user_id"},
        {false,
         "Failed DB Query for 'INSERT $timemachine_quota' using account_default. UNIQUE constraint failed: "
         "$timemachine_quota.user_id"},
    };
    int next = 100;
    for (const auto &row : cases) {
        SCOPED_TRACE(row.message);
        sql("INSERT INTO `$timemachine_quota` VALUES(" + std::to_string(next + 1) + ",0,5)");
        if (!row.own) sql("UPDATE account_default SET private_time_machine=1");
        sql("UPDATE service_afp SET enabled=0");
        UserTimeMachineQuota allowance{};
        allowance.Enabled = 1;
        const std::string names[] = {"a" + std::to_string(next), "b" + std::to_string(next),
                                     "c" + std::to_string(next)};
        User chain[3] = {named(names[0].c_str()), named(names[1].c_str()), named(names[2].c_str())};
        chain[0].next = &chain[1];
        chain[1].next = &chain[2];
        if (row.own) chain[1].TimeMachineQuota = &allowance;
        const std::string afp = row.own ? "0" : "1";  // the first user of the chain has an allowance, too
        EXPECT_EQ(add(chain), 0u);
        EXPECT_EQ(err.code, 5u);
        EXPECT_STREQ(err.message, row.message);
        EXPECT_EQ(chain[0].resource_id, next);
        EXPECT_EQ(chain[1].UserId, next + 1);
        EXPECT_EQ(chain[1].HomeDirectory, "/home/" + names[1]);
        EXPECT_EQ(chain[1].resource_id, 0);
        EXPECT_EQ(chain[2].UserId, 0);
        EXPECT_EQ(user(names[1], "id"), std::to_string(next + 1)) << "committed";
        EXPECT_EQ(value("SELECT COUNT(*) FROM `$home_folder` WHERE user_id=" + std::to_string(next + 1)), "1");
        EXPECT_EQ(user(names[2], "id"), "");
        EXPECT_EQ(value("SELECT enabled FROM service_afp"), afp);
        next += 2;
    }
}

TEST_F(AddUser, DirectoryModeTakesItsOwnNamesAndGroups)
{
    directory_mode();
    ASSERT_EQ(add("anna berg"), 0u) << err.message;
    ASSERT_EQ(add("4711"), 0u) << err.message;
    User bob = named("bob");
    bob.GroupName = "admin";
    ASSERT_EQ(add(&bob), 0u) << err.message;
    EXPECT_EQ(user("bob", "group_id"), "98");
    bob = named("bobby");
    bob.GroupName = "staff";  // local and not privileged
    expect_failure(8, "Invalid GroupName (staff)", [&] { return add(&bob); });
    expect_failure(809, "UserName (homes) is reserved", [&] { return add("homes"); });
}

TEST_F(AddUser, AChainIsCreatedInOrder)
{
    User chain[3] = {named("anna"), named("bob"), named("carl")};
    chain[0].next = &chain[1];
    chain[1].next = &chain[2];
    ASSERT_EQ(add(chain), 0u) << err.message;
    EXPECT_THAT(rows("SELECT id,uname FROM `$user` WHERE id BETWEEN 100 AND 32767 ORDER BY id"),
                ElementsAre("100|anna", "101|bob", "102|carl"));
    EXPECT_EQ(chain[2].resource_id, 102);
}

TEST_F(AddUser, AChainIsCreatedWholeOrNotAtAll)
{
    expect_whole_or_nothing<User>(
        8, "Invalid GroupName (nosuch)", [](int i) { return named(i == 0   ? "anna"
                                                                  : i == 1 ? "bob"
                                                                           : "carl"); },
        [] {
            User bad = named("dora");
            bad.GroupName = "nosuch";
            return bad;
        },
        [this](User *chain) { return add(chain); });
    User twice[2] = {named("anna"), named("anna")};
    twice[0].next = &twice[1];
    expect_failure(801, "User (anna) already exists.", [&] { return add(twice); });
    EXPECT_EQ(twice[0].resource_id, 100) << "the records keep what was filled in";
}

/// A record for which every statement runs.
struct FullRecord : AddUser {
    Quota quota{};
    UserHomeFolderSettings settings{};
    UserTimeMachineQuota allowance{};

    User make(const char *volume = nullptr)
    {
        quota.ShareId = "tank/media";
        quota.HardMB = 1;
        allowance.Enabled = 1;
        User full = named("a@x.com");
        full.GroupName = "sky-loft";
        full.P2PUserName = "alias";
        full.HomeVolumeId = volume;
        full.UserQuota = &quota;
        full.HomeFolderSettings = &settings;
        full.TimeMachineQuota = &allowance;
        return full;
    }
};

TEST_F(FullRecord, EachFailedStatementOfTheOtherWaysIsReported)
{
    put(300, "taken");
    struct {
        FailingStatement failing;
        std::function<User()> given;
    } const cases[] = {
        {{"FROM _volume V", "Failed 'SELECT _volume'. injected"}, [this] { return make("tank"); }},
        {{"AND group_id=(SELECT id FROM `$group` WHERE gname='sky-loft')", "Failed DB Query for user. injected"},
         [] { return named("taken"); }},
        {{"SELECT COUNT(*) FROM `$user` WHERE id=4000", "Failed DB Query for user. injected"},
         [] {
             User user = named("bob");
             user.UserId = 4000;
             return user;
         }},
        {{"INSERT INTO `$home_folder`", "Failed DB Query for 'INSERT $home_folder' using account_default. injected"},
         [] { return named("bob"); }},
        {{"SELECT private_time_machine FROM account_default", "Failed DB Query for account_default. injected"},
         [] { return named("bob"); }},
    };
    for (const auto &row : cases) {
        fail_statement(1, 1, "injected", row.failing.part);
        expect_failure(5, row.failing.message, [&] { return add(row.given()); });
    }
}

TEST_F(FullRecord, AFailedAliasIsReported)
{
    User full = make();
    const std::string before = content();
    fail_statement(1, 1, "injected", "INSERT INTO `smb_username_map`");
    EXPECT_EQ(add(&full), 5u);
    EXPECT_STREQ(err.message, "Failed DB Query for 'INSERT smb_username_map'. injected");
    EXPECT_EQ(content(), before);
}

struct AddUserList : AddUser {
    uint32_t add_list(User *user) { return qbobj_addUserList(qbdb, db, user, &err); }
    static User listed(const char *name, const char *group = nullptr)
    {
        User user = named(name);
        user.GroupName = group;
        user.Email = "";
        user.Password = "$1$salt$hash";
        return user;
    }
};

TEST_F(AddUserList, StoresTheListAsItIs)
{
    User chain[2] = {listed("anna", "staff"), listed("bob")};
    chain[0].Email = "o'brien@x.com";
    chain[0].next = &chain[1];
    chain[1].Password = "";
    chain[1].GroupName = "";
    ASSERT_EQ(add_list(chain), 0u) << err.message;
    EXPECT_EQ(user("anna", "id,passwd,email,home,group_id,shell,is_privileged,is_locked,shell_access"),
              "100|$1$salt$hash|o'brien@x.com|/home|500|/bin/false|0|0|0");
    EXPECT_EQ(user("bob", "id,passwd,email,home,group_id"), "101|||/home|99");
    EXPECT_EQ(user("bob", "last_changed BETWEEN STRFTIME('%s','now')/60/24/24-1 AND STRFTIME('%s','now')/60/24/24"),
              "1");
    EXPECT_EQ(chain[0].resource_id, 100);
    EXPECT_EQ(chain[0].UserId, 100);
    EXPECT_STREQ(chain[0].HomeDirectory, "/home");
    EXPECT_EQ(chain[1].resource_id, 101);
    EXPECT_EQ(value("SELECT next_uid FROM account_default"), "100");
    EXPECT_THAT(rows("SELECT * FROM `$home_folder`"), IsEmpty());
}

TEST_F(AddUserList, NamesAndPasswordsAreNotChecked)
{
    User chain[2] = {listed("a b"), listed("homes")};
    chain[0].Password = "clear text";
    chain[0].next = &chain[1];
    ASSERT_EQ(add_list(chain), 0u) << err.message;
    EXPECT_EQ(user("a b", "passwd"), "clear text");
    EXPECT_EQ(user("homes", "id"), "101");
}

TEST_F(AddUserList, ANullChainAddsNobody)
{
    EXPECT_EQ(add_list(nullptr), 0u);
}

TEST_F(AddUserList, TheIdIsOneAboveTheHighestOrdinaryLocalOne)
{
    put(200, "local");
    sql("INSERT INTO `$user`(id,uname,is_privileged,rid) VALUES(300,'gone',-1,NULL),(400,'system',1,NULL),"
        "(500,'domain',0,7)");
    User anna = listed("anna");
    anna.UserId = 1000;  // not looked at
    ASSERT_EQ(add_list(&anna), 0u) << err.message;
    EXPECT_EQ(anna.UserId, 201);
    sql("INSERT INTO `$user`(id,uname,is_privileged) VALUES(32766,'last but one',0)");
    User bob = listed("bob");
    ASSERT_EQ(add_list(&bob), 0u) << err.message;
    EXPECT_EQ(bob.UserId, 32767);
    User carl = listed("carl");
    expect_failure(5, "Failed DB Query for 'INSERT user'. UNIQUE constraint failed: $user.id",
                   [&] { return add_list(&carl); });
}

TEST_F(AddUserList, ARemovedUserWithTheNextIdIsInTheWay)
{
    put(100, "local");
    sql("INSERT INTO `$user`(id,uname,is_privileged) VALUES(101,'gone',-1)");
    User anna = listed("anna");
    expect_failure(5, "Failed DB Query for 'INSERT user'. UNIQUE constraint failed: $user.id",
                   [&] { return add_list(&anna); });
    User bob = named("bob");
    ASSERT_EQ(add(&bob), 0u) << err.message;
    EXPECT_EQ(bob.UserId, 102) << "single creation looks for a free one";
    ASSERT_EQ(add_list(&anna), 0u) << err.message;
    EXPECT_EQ(anna.UserId, 103);
}

TEST_F(AddUserList, AChainIsStoredWholeOrNotAtAll)
{
    expect_whole_or_nothing<User>(
        8, "Invalid GroupName (nosuch)", [](int i) { return listed(i == 0   ? "anna"
                                                                   : i == 1 ? "bob"
                                                                            : "carl"); },
        [] { return listed("dora", "nosuch"); }, [this](User *chain) { return add_list(chain); });
    put(300, "taken");
    expect_whole_or_nothing<User>(
        5, "Failed DB Query for 'INSERT user'. UNIQUE constraint failed: $user.uname",
        [](int i) {
            return listed(i == 0 ? "anna" : i == 1 ? "bob" : "carl");
        },
        [] { return listed("taken"); }, [this](User *chain) { return add_list(chain); });
}

TEST_F(AddUserList, DirectoryModeResolvesItsOwnGroups)
{
    directory_mode();
    User anna = listed("anna", "staff");
    expect_failure(8, "Invalid GroupName (staff)", [&] { return add_list(&anna); });
    anna.GroupName = "admin";
    EXPECT_EQ(add_list(&anna), 0u) << err.message;
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
