#include "user_changes/changes.h"

using test::verifies;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr char kName32[] = "a2345678901234567890123456789012";

struct ModifyUser : test::Changes {
    ModifyUser()
    {
        put(200, "anna", 500);
        put(201, "bob");
    }
    static User with_id(int32_t id)
    {
        User user{};
        user.resource_id = id;
        return user;
    }
    uint32_t modify(User *user) { return qbobj_modifyUser(qbdb, db, user, &err); }
    uint32_t modify(User user) { return modify(&user); }
    std::string aliases() const
    {
        std::string all;
        for (const auto &row : rows("SELECT unix_uname,smb_uname,type FROM smb_username_map ORDER BY id"))
            all += row + ";";
        return all;
    }
    std::vector<std::string> allowances() const { return rows("SELECT * FROM `$timemachine_quota` ORDER BY user_id"); }
};

TEST_F(ModifyUser, ANullChainChangesNobody)
{
    const std::string before = content();
    EXPECT_EQ(modify(static_cast<User *>(nullptr)), 0u);
    EXPECT_EQ(content(), before);
}

TEST_F(ModifyUser, WhatIsNotGivenStays)
{
    sql("UPDATE `$user` SET fullname='Anna',is_locked=1,shell_access=1,shell='/bin/bash' WHERE id=200");
    const std::string kept = "id,uname,passwd,email,home,group_id,is_privileged,fullname";
    const std::string before = user("anna", kept);
    User given = with_id(200);
    given.OldUserName = given.OldHomeDirectory = "garbage";
    ASSERT_EQ(modify(&given), 0u) << err.message;
    EXPECT_EQ(user("anna", kept), before);
    EXPECT_EQ(user("anna", "is_locked,shell,shell_access"), "0|/bin/false|0") << "always written";
    EXPECT_STREQ(given.OldUserName, "");
    EXPECT_STREQ(given.OldHomeDirectory, "");
}

TEST_F(ModifyUser, AnEmptyNameIsNone)
{
    const std::string before = user("anna", "uname,home");
    User given = with_id(200);
    given.UserName = "";
    given.Email = "new@x.com";
    ASSERT_EQ(modify(&given), 0u) << err.message;
    EXPECT_EQ(user("anna", "uname,home"), before);
    EXPECT_EQ(user("anna", "email"), "new@x.com");
    EXPECT_STREQ(given.OldUserName, "");
}

TEST_F(ModifyUser, TheIdIsTheResourceIdOrTheUserId)
{
    User given{};
    given.UserId = 201;
    given.Email = "new@x.com";
    for (const int32_t resource_id : {0, -5}) {
        given.resource_id = resource_id;
        given.Email = resource_id ? "newer@x.com" : "new@x.com";
        ASSERT_EQ(modify(&given), 0u) << err.message;
        EXPECT_EQ(user("bob", "email"), given.Email);
    }
    given.resource_id = 200;
    ASSERT_EQ(modify(&given), 0u) << err.message;
    EXPECT_EQ(user("anna", "email"), "newer@x.com");
}

TEST_F(ModifyUser, RefusesWhatIsMissingOrMalformed)
{
    put_domain_user(-7, "domain");
    put_domain_user(300, "shared");
    sql("UPDATE `$user` SET is_privileged=-1 WHERE id=201");
    struct {
        uint32_t code;
        const char *message;
        User given;
    } cases[] = {
        {8, "Invalid resource_id (0).", with_id(0)},
        {8, "Invalid resource_id (-7).", with_id(0)},
        {8, "Invalid resource_id (12345). Not exist.", with_id(12345)},
        {8, "Cannot modify user (user_id=98)", with_id(98)},
        {806, "UserName is too long (a23456789012345678901234567890123)", with_id(200)},
        {809, "UserName (Homes) is reserved", with_id(200)},
        {809, "UserName (b_x) is reserved", with_id(200)},
        {8, "Invalid UserName (a b), rc=2", with_id(200)},
        {8, "Invalid UserName (12), rc=6", with_id(200)},
        {801, "Cannot rename to user which already exists (bob).", with_id(200)},
        {801, "Cannot rename to user which already exists (admin).", with_id(200)},
        {801, "Specified uname already exists'. UNIQUE constraint failed: $user.uname", with_id(200)},
        {8, "Invalid Password (●●●●●●●●) rc=1", with_id(200)},
        {8, "Invalid Email (nobody) rc=8", with_id(200)},
        {8, "Invalid GroupName (nosuch)", with_id(200)},
    };
    const std::string long_password(600, 'x');
    cases[1].given.UserId = -7;
    const char *names[] = {"a23456789012345678901234567890123", "Homes", "b_x", "a b", "12", "bob", "admin", "shared"};
    for (size_t i = 0; i < std::size(names); i++) cases[4 + i].given.UserName = names[i];
    cases[12].given.Password = long_password.c_str();
    cases[13].given.Email = "nobody";
    cases[14].given.GroupName = "nosuch";
    for (auto &row : cases) {
        row.given.OldUserName = "untouched";
        expect_failure(row.code, row.message, [&] { return modify(&row.given); });
        EXPECT_STREQ(row.given.OldUserName, "untouched");
    }
}

TEST_F(ModifyUser, ARenameTakesHomeAndSnapshotsAlong)
{
    sql("INSERT INTO `$home_folder_snapshot`(user_name,home_dir,name) VALUES('anna','/tank/home/anna','s1'),"
        "('anna','/tank/home/anna','s2'),('bob','/tank/home/bob','s3')");
    User given = with_id(200);
    given.UserName = "carla";
    given.OldUserName = "ignored";
    ASSERT_EQ(modify(&given), 0u) << err.message;
    EXPECT_STREQ(given.OldUserName, "anna");
    EXPECT_STREQ(given.OldHomeDirectory, "/tank/home/anna");
    EXPECT_EQ(user("carla", "id,home"), "200|/home/carla");
    EXPECT_THAT(rows("SELECT user_name,home_dir,name FROM `$home_folder_snapshot` ORDER BY id"),
                ElementsAre("carla|/home/carla|s1", "carla|/home/carla|s2", "bob|/tank/home/bob|s3"));
}

TEST_F(ModifyUser, WithoutAHomeTheSnapshotsStay)
{
    sql("UPDATE `$user` SET home=NULL WHERE id=200;"
        "INSERT INTO `$home_folder_snapshot`(user_name,home_dir,name) VALUES('anna','/x','s1')");
    User given = with_id(200);
    given.UserName = "carla";
    ASSERT_EQ(modify(&given), 0u) << err.message;
    EXPECT_STREQ(given.OldUserName, "anna");
    EXPECT_STREQ(given.OldHomeDirectory, "");
    EXPECT_EQ(value("SELECT user_name FROM `$home_folder_snapshot`"), "anna");
}

TEST_F(ModifyUser, ARecordThatWasReadCanBeWrittenBack)
{
    sql("UPDATE `$user` SET home='/home/'||uname;"
        "INSERT INTO `$home_folder` VALUES(200,1,1000,'snapshots',1);"
        "INSERT INTO `$timemachine_quota` VALUES(200,1,700);"
        "INSERT INTO user_quota VALUES(200,1,8,10)");
    const std::string accounts = "SELECT id,uname,passwd,email,home,group_id,is_privileged FROM `$user` ORDER BY id";
    const auto before = rows(accounts);
    UserCollection list{};
    ASSERT_EQ(qbobj_getUserCollection(qbdb, db, &list, nullptr, 0, &err), 0u) << err.message;
    ASSERT_STREQ(list.User->UserName, "anna");
    ASSERT_STREQ(list.User->Password, masked_password);
    ASSERT_EQ(modify(list.User), 0u) << err.message;
    EXPECT_EQ(rows(accounts), before);
    EXPECT_STREQ(list.User->OldUserName, "");
    EXPECT_THAT(rows("SELECT * FROM `$home_folder`"), ElementsAre("200|1|1000|snapshots|1"));
    EXPECT_THAT(allowances(), ElementsAre("200|1|700"));
    EXPECT_THAT(rows("SELECT * FROM user_quota"), ElementsAre("200|1|8|10"));
}

TEST_F(ModifyUser, NamingAUserSetsItsHome)
{
    User given = with_id(200);
    given.UserName = "anna";
    ASSERT_EQ(modify(&given), 0u) << err.message;
    EXPECT_EQ(user("anna", "home"), "/home/anna");
    EXPECT_STREQ(given.OldHomeDirectory, "");
}

TEST_F(ModifyUser, Passwords)
{
    struct {
        const char *sys_hash;
        const char *password;
        const char *stored;  // null: the password's hash
    } const cases[] = {
        {nullptr, nullptr, "$1$salt$hash"},
        {nullptr, masked_password, "$1$salt$hash"},
        {"", masked_password, "$1$salt$hash"},
        {"$6$it's$ready", "ignored", "$6$it's$ready"},
        {nullptr, "secret", nullptr},
        {"", "secret", nullptr},
        {nullptr, "", ""},
    };
    for (const auto &row : cases) {
        sql("UPDATE `$user` SET passwd='$1$salt$hash' WHERE id=200");
        User given = with_id(200);
        given.SysHash = row.sys_hash;
        given.Password = row.password;
        ASSERT_EQ(modify(&given), 0u) << err.message;
        if (row.stored) EXPECT_EQ(user("anna", "passwd"), row.stored);
        else EXPECT_TRUE(verifies(row.password, user("anna", "passwd")));
    }
}

TEST_F(ModifyUser, AnAddressIsStoredAsItIs)
{
    const std::string others = "SELECT * FROM `$user` WHERE id<>200";
    const std::string columns = "uname,passwd,home,group_id,shell,is_privileged,is_locked,shell_access";
    const auto before = rows(others);
    const std::string account = user("anna", columns);
    for (const char *address : {"o'brien@x.com", "\"',is_privileged=1,uname='root\"@x.com", "", "plain@x.com"}) {
        User given = with_id(200);
        given.Email = address;
        ASSERT_EQ(modify(&given), 0u) << err.message;
        EXPECT_EQ(user("anna", "email"), address);
        EXPECT_EQ(user("anna", columns), account);
        EXPECT_EQ(rows(others), before);
    }
}

TEST_F(ModifyUser, AHashCannotChangeTheStatement)
{
    User given = with_id(200);
    given.SysHash = "x',is_privileged=1,email='";
    ASSERT_EQ(modify(&given), 0u) << err.message;
    EXPECT_EQ(user("anna", "passwd,is_privileged"), std::string(given.SysHash) + "|0");
}

TEST_F(ModifyUser, TextsThatDoNotFitTogetherAreRefused)
{
    const std::string hash(395, 'h');
    User given = with_id(200);
    given.Email = "anna@example.com";
    given.IsLocked = 1;
    given.SysHash = hash.c_str();
    EXPECT_EQ(modify(&given), 0u) << err.message;
    const std::string longer(500, 'h');
    given.SysHash = longer.c_str();
    given.IsLocked = 0;
    expect_failure(5, "Failed DB Query for 'UPDATE user'. Too long.", [&] { return modify(&given); });
    // The longest address fits with all that is always written.
    const std::string address = std::string(63, 'a') + "@" + std::string(251, 'b') + ".com";
    given.Email = address.c_str();
    given.SysHash = nullptr;
    ASSERT_EQ(modify(&given), 0u) << err.message;
    EXPECT_EQ(user("anna", "email"), address);
}

TEST_F(ModifyUser, TheGroup)
{
    User given = with_id(200);
    given.GroupName = "users";
    ASSERT_EQ(modify(&given), 0u) << err.message;
    EXPECT_EQ(user("anna", "group_id"), "99");
    given.GroupName = "";
    ASSERT_EQ(modify(&given), 0u) << err.message;
    EXPECT_EQ(user("anna", "group_id"), "99");
}

TEST_F(ModifyUser, TheShellFollowsAccessAndKeys)
{
    struct {
        const char *keys;
        int32_t access;
        const char *shell;
    } const cases[] = {
        {"", 0, "/bin/false"},     {"", 1, "/bin/bash"},
        {"", 2, "/bin/false"},     {"rsync", 0, "/glassdeck/bin/validate-rsync"},
        {"rsync", 1, "/bin/bash"}, {"rsync", 2, "/bin/false"},
        {"ssh", 0, "/bin/false"},  {"ssh", 1, "/bin/bash"},
    };
    for (const auto &row : cases) {
        sql("DELETE FROM ssh_public_key;INSERT INTO ssh_public_key(user_id,serve_for,key) VALUES(201,'rsync','other')");
        if (*row.keys)
            sql(std::string("INSERT INTO ssh_public_key(user_id,serve_for,key) VALUES(200,'") + row.keys + "','k')");
        User given = with_id(200);
        given.ShellAccess = row.access;
        ASSERT_EQ(modify(&given), 0u) << err.message;
        EXPECT_EQ(user("anna", "shell,shell_access"), std::string(row.shell) + "|" + std::to_string(row.access));
    }
}

TEST_F(ModifyUser, QuotasAreSetAndRemoved)
{
    sql("INSERT INTO user_quota VALUES(200,1,1,1),(200,2,2,2),(201,1,3,3)");
    Quota quotas[2] = {};
    quotas[0].ShareId = "tank/media";
    quotas[0].HardMB = 333;
    quotas[0].next = &quotas[1];
    quotas[1].ShareId = "tank/docs";
    User given = with_id(200);
    given.UserQuota = quotas;
    ASSERT_EQ(modify(&given), 0u) << err.message;
    // The soft limit is 80 per cent, unlike at creation.
    EXPECT_THAT(rows("SELECT * FROM user_quota ORDER BY user_id,share_id"), ElementsAre("200|1|266|333", "201|1|3|3"));
    quotas[0].next = nullptr;
    quotas[0].ShareId = "tank/docs";
    quotas[0].HardMB = 1ull << 40;
    ASSERT_EQ(modify(&given), 0u) << err.message;
    EXPECT_EQ(value("SELECT mb_hard FROM user_quota WHERE user_id=200 AND share_id=2"), "2147483647");
    quotas[0].ShareId = "tank/nosuch";
    expect_failure(5, "Failed DB Query for 'UPDATE user_quota. NOT NULL constraint failed: user_quota.share_id",
                   [&] { return modify(&given); });
    quotas[0].HardMB = 0;
    EXPECT_EQ(modify(&given), 0u) << "nothing to remove";
}

TEST_F(ModifyUser, TheSnapshotFolderIsShownAndHiddenOnly)
{
    UserHomeFolderSettings settings{};
    settings.SizeLimit = 5000000000u;
    settings.SnapshotProtectionEnabled = 1;
    settings.VisibleSnapshot = 1;
    settings.VisibleSnapFolder = "given";
    settings.PrevVersions = 1;
    User given = with_id(200);
    given.HomeFolderSettings = &settings;
    ASSERT_EQ(modify(&given), 0u) << err.message;
    EXPECT_THAT(rows("SELECT * FROM `$home_folder`"), ElementsAre("200|1|5000000000||1"));
    sql("UPDATE `$home_folder` SET visible_snapdir='o''clock'");
    ASSERT_EQ(modify(&given), 0u) << err.message;
    EXPECT_THAT(rows("SELECT * FROM `$home_folder`"), ElementsAre("200|1|5000000000|o'clock|1"));
    settings = {};
    ASSERT_EQ(modify(&given), 0u) << err.message;
    EXPECT_THAT(rows("SELECT * FROM `$home_folder`"), ElementsAre("200|0|0||0"));
}

TEST_F(ModifyUser, AllowancesAreSetAndRemoved)
{
    UserTimeMachineQuota allowance{};
    User given = with_id(200);
    given.TimeMachineQuota = &allowance;
    ASSERT_EQ(modify(&given), 0u) << err.message;
    EXPECT_THAT(allowances(), IsEmpty());
    EXPECT_EQ(value("SELECT enabled FROM service_afp"), "0");
    sql("INSERT INTO `$timemachine_quota` VALUES(96,1,1),(300,0,1),(301,0,1)");
    allowance.Enabled = 1;
    allowance.CapacityMB = 700;
    ASSERT_EQ(modify(&given), 0u) << err.message;
    EXPECT_THAT(allowances(), ElementsAre("96|1|1", "200|1|700")) << "disabled ones of all users go";
    EXPECT_EQ(value("SELECT enabled FROM service_afp"), "1");
    allowance.Enabled = 0;
    ASSERT_EQ(modify(&given), 0u) << err.message;
    EXPECT_THAT(allowances(), ElementsAre("96|1|1"));
    EXPECT_EQ(value("SELECT enabled FROM service_afp"), "1");
}

TEST_F(ModifyUser, TheOnlyAllowanceSwitchesAfpOn)
{
    UserTimeMachineQuota allowance{};
    allowance.Enabled = 1;
    User given = with_id(200);
    given.TimeMachineQuota = &allowance;
    ASSERT_EQ(modify(&given), 0u) << err.message;
    EXPECT_THAT(allowances(), ElementsAre("200|1|0"));
    EXPECT_EQ(value("SELECT enabled FROM service_afp"), "1");
}

TEST_F(ModifyUser, TheSeventeenthAllowanceIsRefused)
{
    UserTimeMachineQuota allowance{};
    allowance.Enabled = 1;
    allowance.CapacityMB = 700;
    User given = with_id(200);
    given.TimeMachineQuota = &allowance;
    put_allowances(15);
    ASSERT_EQ(modify(&given), 0u) << err.message;
    EXPECT_EQ(modify(&given), 0u) << "the own one is replaced";
    sql("DELETE FROM `$timemachine_quota` WHERE user_id=200;INSERT INTO `$timemachine_quota` "
        "VALUES(200,0,5),(201,1,5)");
    expect_failure(843, "Cannot exceed more than 16 time machine users (anna).", [&] { return modify(&given); });
    EXPECT_THAT(allowances(), Contains("200|0|5")) << "rolled back with the rest";
    given.UserName = "carla";
    expect_failure(843, "Cannot exceed more than 16 time machine users (carla).", [&] { return modify(&given); });
    sql("UPDATE `$timemachine_quota` SET enabled=0 WHERE user_id=201");
    EXPECT_EQ(modify(&given), 0u) << "disabled ones do not count";
}

TEST_F(ModifyUser, Aliases)
{
    struct {
        const char *what;
        const char *stored_name;
        int stored_group;
        const char *name;
        const char *group;
        const char *alias;
        const char *maps;  // afterwards
    } const cases[] = {
        {"nothing given", "a@x.com", 97, nullptr, nullptr, nullptr, "a@x.com|old|uname;a@x.com|o2|other;"},
        {"a new alias", "a@x.com", 97, nullptr, nullptr, "new", "a@x.com|new|uname;a@x.com|o2|other;"},
        {"no alias any more", "a@x.com", 97, nullptr, nullptr, "", ""},
        {"an alias that is too long", "a@x.com", 97, nullptr, nullptr, "123456789012345678901234567890123", ""},
        {"the longest alias", "a@x.com", 98, nullptr, nullptr, "12345678901234567890123456789012",
         "a@x.com|12345678901234567890123456789012|uname;a@x.com|o2|other;"},
        {"another group", "a@x.com", 97, nullptr, "users", "new", ""},
        {"another cloud group", "a@x.com", 97, nullptr, "admin", nullptr, "a@x.com|old|uname;a@x.com|o2|other;"},
        {"a new name", "a@x.com", 97, "b@x.com", nullptr, nullptr, "b@x.com|old|uname;b@x.com|o2|other;"},
        {"a new name and alias", "a@x.com", 97, "b@x.com", "sky-loft", "new", "b@x.com|new|uname;b@x.com|o2|other;"},
        {"a name of 32 bytes", "a@x.com", 97, kName32, nullptr, nullptr,
         "a2345678901234567890123456789012|old|uname;a2345678901234567890123456789012|o2|other;"},
        {"a plain name", "a@x.com", 97, "plain", nullptr, "new", ""},
        {"not a cloud user before", "a@x.com", 99, "b@x.com", nullptr, "new", "a@x.com|old|uname;a@x.com|o2|other;"},
        {"becomes a cloud user", "a@x.com", 99, nullptr, "sky-loft", "new", "a@x.com|new|uname;a@x.com|o2|other;"},
        {"becomes one by name", "plain", 97, "b@x.com", nullptr, "new",
         "plain|old|uname;plain|o2|other;b@x.com|new|uname;"},
    };
    for (const auto &row : cases) {
        SCOPED_TRACE(row.what);
        sql("DELETE FROM `$user` WHERE id=300;DELETE FROM smb_username_map");
        put(300, row.stored_name, row.stored_group);
        sql(std::string("INSERT INTO smb_username_map(unix_uname,smb_uname,type) VALUES('") + row.stored_name +
            "','old','uname'),('" + row.stored_name + "','o2','other')");
        User given = with_id(300);
        given.UserName = row.name;
        given.GroupName = row.group;
        given.P2PUserName = row.alias;
        ASSERT_EQ(modify(&given), 0u) << err.message;
        EXPECT_EQ(aliases(), row.maps);
    }
}

TEST_F(ModifyUser, ANameThatIsAnAliasIsRefused)
{
    sql("INSERT INTO smb_username_map(unix_uname,smb_uname,type) VALUES('boss@x.com','carla','uname'),"
        "('bob','bob','uname')");
    User given = with_id(200);
    given.UserName = "carla";
    expect_failure(845,
                   "Cannot create or rename user. Username carla is already in use as an alias for Skyloft user "
                   "boss@x.com.",
                   [&] { return modify(&given); });
    EXPECT_EQ(modify(with_id(201)), 0u) << "the alias is the user's own";
    sql("UPDATE smb_username_map SET unix_uname='boss@x.com' WHERE unix_uname='bob'");
    expect_failure(845,
                   "Cannot create or rename user. Username bob is already in use as an alias for Skyloft user "
                   "boss@x.com.",
                   [&] { return modify(with_id(201)); });
}

TEST_F(ModifyUser, DirectoryModeKeepsTheHome)
{
    directory_mode();
    put_domain_user(300, "dora");
    put_domain_user(301, "emil");
    User given = with_id(300);
    given.UserName = "dora berg";
    given.GroupName = "admin";
    ASSERT_EQ(modify(&given), 0u) << err.message;
    EXPECT_EQ(user("dora berg", "home,group_id"), "/home/AD/dora|98");
    EXPECT_STREQ(given.OldUserName, "dora");
    EXPECT_STREQ(given.OldHomeDirectory, "/home/AD/dora");
    given.UserName = "emil";
    expect_failure(801, "Cannot rename to user which already exists (emil).", [&] { return modify(&given); });
    given.UserName = "anna";  // local: only the key tells
    expect_failure(801, "Specified uname already exists'. UNIQUE constraint failed: $user.uname",
                   [&] { return modify(&given); });
    given.UserName = nullptr;
    given.GroupName = "staff";
    expect_failure(8, "Invalid GroupName (staff)", [&] { return modify(&given); });
}

struct LiveDirectory : ModifyUser {
    LiveDirectory()
    {
        qbdb_directory_hooks hooks{};
        hooks.uid_by_name = [](void *, const char *name) -> int32_t { return strcmp(name, "live") == 0 ? 7000 : -1; };
        qbdb_set_directory_hooks(qbdb, &hooks);
    }
};

TEST_F(LiveDirectory, WithoutSynchronisationTheNameLeadsToTheUser)
{
    UserHomeFolderSettings settings{};
    settings.SizeLimit = 9;
    User given{};
    given.UserName = "live";
    given.HomeFolderSettings = &settings;
    directory_mode(false);
    expect_failure(8, "Invalid resource_id (0).", [&] { return modify(&given); });
    sql("UPDATE service_cifs SET security='user',no_sync_ads=1");
    expect_failure(8, "Invalid resource_id (0).", [&] { return modify(&given); });
    directory_mode(true);
    const std::string accounts = "SELECT * FROM `$user` ORDER BY id";
    const auto before = rows(accounts);
    ASSERT_EQ(modify(&given), 0u) << err.message;
    EXPECT_THAT(rows("SELECT * FROM `$home_folder`"), ElementsAre("7000|0|9||0"));
    EXPECT_EQ(rows(accounts), before) << "nothing was imported";
    EXPECT_STREQ(given.OldUserName, "");
    given.UserName = "unknown";
    expect_failure(832, "Invalid User (resource_id=0, UserName=unknown).", [&] { return modify(&given); });
    given.UserName = "";
    expect_failure(8, "Invalid resource_id (0).", [&] { return modify(&given); });
    given.UserName = "live";
    given.UserId = -3;
    expect_failure(8, "Invalid resource_id (-3).", [&] { return modify(&given); });
}

TEST_F(ModifyUser, AChainIsChangedWholeOrNotAtAll)
{
    expect_whole_or_nothing<User>(
        8, "Invalid resource_id (12345). Not exist.",
        [](int i) {
            User good = with_id(200 + i % 2);
            good.Email = "changed@x.com";
            return good;
        },
        [] { return with_id(12345); }, [this](User *chain) { return modify(chain); });
    User chain[2] = {with_id(200), with_id(201)};
    chain[0].next = &chain[1];
    chain[0].Email = "one@x.com";
    chain[1].Email = "two@x.com";
    ASSERT_EQ(modify(chain), 0u) << err.message;
    EXPECT_EQ(user("anna", "email"), "one@x.com");
    EXPECT_EQ(user("bob", "email"), "two@x.com");
}

/// A change for which every statement runs.
struct FullChange : ModifyUser {
    Quota quotas[2] = {};
    UserHomeFolderSettings settings{};
    UserTimeMachineQuota allowance{};

    FullChange()
    {
        put(300, "a@x.com", 97);
        sql("INSERT INTO smb_username_map(unix_uname,smb_uname,type) VALUES('a@x.com','old','uname')");
        quotas[0].ShareId = "tank/media";
        quotas[0].HardMB = 1;
        quotas[0].next = &quotas[1];
        quotas[1].ShareId = "tank/docs";
        allowance.Enabled = 1;
    }
    User make()
    {
        User full = with_id(300);
        full.UserName = "b@x.com";
        full.GroupName = "sky-loft";
        full.Email = "b@x.com";
        full.Password = "secret";
        full.P2PUserName = "alias";
        full.UserQuota = quotas;
        full.HomeFolderSettings = &settings;
        full.TimeMachineQuota = &allowance;
        return full;
    }
};

TEST_F(FullChange, EachFailedStatementOfTheOtherWaysIsReported)
{
    put_allowances(16);
    User full = make();
    fail_statement(1, 1, "injected", "DELETE FROM '$timemachine_quota' WHERE user_id=300");
    expect_failure(5, "Failed DB Query for 'DELETE user from $timemachine_quota. injected",
                   [&] { return modify(&full); });
    directory_mode();
    User named = with_id(300);
    named.UserName = "c@x.com";
    fail_statement(1, 1, "injected", "SELECT U.home FROM `$user` U WHERE U.id=300");
    // The first such statement reads the previous home, the second the one that stays.
    expect_failure(5, "Failed DB Query for 'SELECT user'. injected", [&] { return modify(&named); });
    fail_statement(2, 1, "injected", "SELECT U.home FROM `$user` U WHERE U.id=300");
    expect_failure(5, "Failed DB Query for 'SELECT home FROM `$users`'. injected", [&] { return modify(&named); });
}

TEST_F(FullChange, EachFailedStatementOfTheMapIsReported)
{
    struct {
        const char *part;
        const char *alias;
        const char *message;
        bool mapped = true;
    } const cases[] = {
        {"UPDATE `smb_username_map` SET unix_uname", "alias",
         "Failed DB Query for 'UPDATE smb_username_map'. injected"},
        {"SELECT COUNT(*) FROM `smb_username_map`", "alias",
         "Failed DB Query for 'SELECT FROM smb_username_map'. injected"},
        {"UPDATE `smb_username_map` SET smb_uname", "alias", "Failed DB Query for 'UPDATE smb_username_map'. injected"},
        {"DELETE FROM `smb_username_map`", "", "Failed DB Query for 'DELETE smb_username_map'. injected"},
        {"INSERT INTO `smb_username_map`", "alias", "Failed DB Query for 'INSERT smb_username_map'. injected", false},
    };
    for (const auto &row : cases) {
        if (!row.mapped) sql("DELETE FROM smb_username_map");
        User full = make();
        full.P2PUserName = row.alias;
        const std::string before = content();
        fail_statement(1, 1, "injected", row.part);
        EXPECT_EQ(modify(&full), 5u);
        EXPECT_STREQ(err.message, row.message);
        EXPECT_EQ(content(), before);
    }
}

// ---- Narrow changes

struct NarrowChanges : test::Changes {
    NarrowChanges()
    {
        put(200, "anna");
        put(201, "bob");
    }
    uint32_t set_group(const char *name, const char *group)
    {
        return qbobj_setPrimaryGroupByName(qbdb, db, name, group, &err);
    }
    uint32_t enable(int32_t on, const char *name)
    {
        return qbobj_disableEnableLocalUserByName(qbdb, db, on, name, &err);
    }
    uint32_t set_folder(int32_t id, const char *folder)
    {
        return qbobj_modifyUserVisibleSnapFolder(qbdb, db, id, folder, &err);
    }
};

TEST_F(NarrowChanges, ThePrimaryGroup)
{
    sql("INSERT INTO `$group`(id,gname,rid) VALUES(-9,'domain users',1)");
    put_domain_user(-7, "dora");
    ASSERT_EQ(set_group("anna", "staff"), 0u) << err.message;
    EXPECT_EQ(user("anna", "group_id"), "500");
    EXPECT_EQ(user("bob", "group_id"), "99");
    ASSERT_EQ(set_group("anna", "nosuch"), 0u) << err.message;
    EXPECT_EQ(user("anna", "group_id"), "NULL");
    ASSERT_EQ(set_group("bob", "domain users"), 0u) << err.message;
    EXPECT_EQ(user("bob", "group_id"), "NULL") << "not a local group";
    const std::string before = content();
    EXPECT_EQ(set_group("dora", "staff"), 0u);
    EXPECT_EQ(set_group("nobody there", "staff"), 0u);
    EXPECT_EQ(content(), before) << "no such local user";
    directory_mode();
    ASSERT_EQ(set_group("dora", "domain users"), 0u) << err.message;
    EXPECT_EQ(user("dora", "group_id"), "-9");
    ASSERT_EQ(set_group("dora", "staff"), 0u) << err.message;
    EXPECT_EQ(user("dora", "group_id"), "NULL") << "not a group of the directory";
    ASSERT_EQ(set_group("anna", "domain users"), 0u) << err.message;
    EXPECT_EQ(user("anna", "group_id"), "NULL");
}

TEST_F(NarrowChanges, LockingAndUnlocking)
{
    const char *const unlocked[] = {"$1$salt$hash", "$6$salt$hash", "$y$j9T$s$h"};
    for (const char *hash : unlocked) {
        sql(std::string("UPDATE `$user` SET passwd='") + hash + "' WHERE id IN (200,201)");
        ASSERT_EQ(enable(0, "anna"), 0u) << err.message;
        EXPECT_EQ(user("anna", "passwd"), std::string("!") + hash);
        EXPECT_EQ(user("bob", "passwd"), hash);
        ASSERT_EQ(enable(0, "anna"), 0u) << err.message;
        EXPECT_EQ(user("anna", "passwd"), std::string("!") + hash) << "locked once";
        ASSERT_EQ(enable(1, "bob"), 0u) << err.message;
        EXPECT_EQ(user("bob", "passwd"), hash);
        ASSERT_EQ(enable(1, "anna"), 0u) << err.message;
        EXPECT_EQ(user("anna", "passwd"), hash);
    }
}

TEST_F(NarrowChanges, LockingAllUsers)
{
    put(202, "cloud", 98);
    put(203, "none", 99, "");
    put(204, "other", 99, "!");
    put(205, "bcrypt", 99, "$2b$rest");  // third character no "$"
    put_domain_user(206, "dora");
    sql("UPDATE `$user` SET passwd='$1$d$h' WHERE id=206");
    put(207, "gone");
    sql("UPDATE `$user` SET is_privileged=-1 WHERE id=207");
    sql("UPDATE `$user` SET passwd='$1$a$h' WHERE uname='admin'");
    const std::string all = "SELECT uname,passwd FROM `$user` WHERE id BETWEEN 98 AND 300 ORDER BY id";
    const auto before = rows(all);
    ASSERT_EQ(enable(0, nullptr), 0u) << err.message;
    ASSERT_EQ(enable(0, nullptr), 0u) << err.message;
    EXPECT_THAT(rows(all), ElementsAre("admin|$1$a$h", "anna|!$1$salt$hash", "bob|!$1$salt$hash", "cloud|$1$salt$hash",
                                       "none|", "other|!", "bcrypt|$2b$rest", "dora|$1$d$h", "gone|$1$salt$hash"));
    ASSERT_EQ(enable(1, nullptr), 0u) << err.message;
    EXPECT_EQ(rows(all), before);
    ASSERT_EQ(enable(0, "o'brien"), 0u) << err.message;
    EXPECT_EQ(rows(all), before);
}

TEST_F(NarrowChanges, TheSnapshotFolder)
{
    sql("INSERT INTO `$home_folder` VALUES(200,1,5,'old',1),(201,1,5,'old',1)");
    ASSERT_EQ(set_folder(200, "o'clock"), 0u) << err.message;
    EXPECT_THAT(rows("SELECT * FROM `$home_folder`"), ElementsAre("200|1|5|o'clock|1", "201|1|5|old|1"));
    const std::string folder = "SELECT visible_snapdir FROM `$home_folder` WHERE user_id=201";
    ASSERT_EQ(set_folder(201, ""), 0u) << err.message;
    EXPECT_EQ(value(folder), "");
    ASSERT_EQ(set_folder(201, nullptr), 0u) << err.message;
    EXPECT_EQ(value(folder), "NULL");
    const std::string before = content();
    EXPECT_EQ(set_folder(12345, "x"), 0u);
    EXPECT_EQ(content(), before);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
