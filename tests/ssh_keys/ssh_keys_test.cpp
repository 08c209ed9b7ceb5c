#include "fixture/allocations.h"
#include "fixture/text_of.h"

using test::elements;
using test::text_of;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace {

using test::LogLine;

struct SshKeys : test::Database {
    SshPublicKey key{};

    SshKeys()
    {
        sql("INSERT INTO `$user`(id,uname,shell_access,shell) "
            "VALUES(100,'anna',0,'/bin/false'),(101,'bob',1,'/bin/bash')");
        key = {nullptr, 0, 0, 100, "login", "ssh-ed25519", "AAAA", "anna@laptop", "SHA256:x", "laptop"};
    }
    ~SshKeys() override { test::fail_allocation(0); }

    uint32_t add() { return qbobj_addSshPublicKey(qbdb, db, &key, &err); }
    uint32_t change() { return qbobj_setSshPublicKeyById(qbdb, db, &key, &err); }
    uint32_t remove() { return qbobj_deleteSshPublicKey(qbdb, db, &key, &err); }
    uint32_t get(int32_t id) { return qbobj_getSshPublicKeyById(qbdb, db, id, &key, &err); }
    uint32_t get_root(int32_t id) { return qbobj_getSshPublicKeyTiedRootKeyById(qbdb, db, id, &key, &err); }
    std::vector<SshPublicKey *> list()
    {
        SshPublicKeyCollection keys{};
        EXPECT_EQ(qbobj_getSshPublicKeyCollection(qbdb, db, &keys, &err), 0u) << err.message;
        return elements(keys.SshPublicKey);
    }
    std::vector<std::string> stored() { return rows("SELECT * FROM ssh_public_key ORDER BY id"); }
    std::string shell(int32_t user) { return value("SELECT shell FROM `$user` WHERE id=" + std::to_string(user)); }
    void admin_key(const char *text = "ADMIN")
    {
        key = {nullptr, 0, 0, 98, "login", "ssh-rsa", text, "admin@desk", "SHA256:a", "desk"};
        ASSERT_EQ(add(), 0u) << err.message;
    }
    void fill(int count)
    {
        sql("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<" + std::to_string(count) +
            ") INSERT INTO ssh_public_key(user_id,serve_for,key) SELECT 101,'login','filler'||i FROM n");
    }

    /// As expect_failure, for a message whose log line is a plain one that ends with a line feed.
    template <class Call>
    void expect_plain_failure(uint32_t code, const std::string &message, Call call)
    {
        SCOPED_TRACE(message);
        const std::string before = content();
        log.clear();
        EXPECT_EQ(call(), code);
        EXPECT_EQ(err.code, code);
        EXPECT_EQ(std::string(err.message ? err.message : "(no message)"), message);
        EXPECT_TRUE(err.file && *err.file);
        EXPECT_THAT(log, Contains(AllOf(Field(&LogLine::level, 2u), Field(&LogLine::flag, 0u),
                                        Field(&LogLine::text, message + "\n"))));
        EXPECT_THAT(logged(2), Not(Contains(message)));
        EXPECT_EQ(content(), before);
    }
};

// ---- Adding

TEST_F(SshKeys, AddStoresTheKeyAndTellsItsId)
{
    sql("INSERT INTO ssh_public_key(id,user_id,key) VALUES(41,101,'k')");
    key.Title = "anna's";
    take_statements();
    ASSERT_EQ(add(), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre("41|101|NULL|NULL|k|NULL|NULL|NULL",
                                      "42|100|login|ssh-ed25519|AAAA|anna@laptop|SHA256:x|anna's"));
    EXPECT_EQ(key.Id, 42);
    EXPECT_EQ(key.resource_id, 42);
    EXPECT_THAT(take_statements(),
                Contains("INSERT INTO `ssh_public_key` (user_id, serve_for, type, key, comment, fingerprint, title) "
                         "VALUES(100, 'login', 'ssh-ed25519', 'AAAA', 'anna@laptop', 'SHA256:x', 'anna''s')"));
}

TEST_F(SshKeys, AddForTheAdministratorGivesRootATwin)
{
    admin_key();
    EXPECT_THAT(stored(), ElementsAre("1|98|login|ssh-rsa|ADMIN|admin@desk|SHA256:a|desk",
                                      "2|0|login|ssh-rsa|ADMIN|admin@desk|SHA256:a|root_desk"));
    EXPECT_EQ(key.Id, 1);
    EXPECT_THAT(list(), SizeIs(1));
}

TEST_F(SshKeys, AddForTheAdministratorWithoutATitle)
{
    key.UserId = 98;
    key.Title = nullptr;
    ASSERT_EQ(add(), 0u) << err.message;
    EXPECT_THAT(rows("SELECT user_id,title FROM ssh_public_key"), ElementsAre("98|NULL", "0|root_"));
}

TEST_F(SshKeys, ARemovedAccountGetsNoKeyAndNoShell)
{
    User user{};
    user.resource_id = 100;
    ASSERT_EQ(qbobj_deleteUser(qbdb, db, &user, &err), 0u) << err.message;
    key.ServeFor = "rsync";
    expect_failure(836, "User id 100 does not exist", [&] { return add(); });
}

TEST_F(SshKeys, TheAdministratorsKeyTakesRootsAlongUnderWhateverOwnerItIsRemoved)
{
    for (const int32_t owner : {98, 100, 4711}) {
        admin_key();
        ASSERT_THAT(stored(), SizeIs(2));
        key.UserId = owner;
        ASSERT_EQ(remove(), 0u) << err.message;
        EXPECT_THAT(stored(), IsEmpty()) << owner;
    }
    // A record that says 98 of another's key asks for a twin that there is not.
    key = {nullptr, 0, 0, 100, "login", "ssh-ed25519", "AAAA", "", "", ""};
    ASSERT_EQ(add(), 0u) << err.message;
    key.UserId = 98;
    expect_failure(5, "Failed to find the tied root ssh public key for key id " + std::to_string(key.Id),
                   [&] { return remove(); });
}

TEST_F(SshKeys, AddRefusesSystemAccounts)
{
    for (const int32_t id : {50, 99, 97, 96, 0, -1}) {
        key.UserId = id;
        expect_failure(802, "Cannot add ssh public key for system reserved user id " + std::to_string(id),
                       [&] { return add(); });
    }
}

TEST_F(SshKeys, AddRefusesUnknownUsers)
{
    for (const int32_t id : {102, 2147483647}) {
        key.UserId = id;
        expect_failure(836, "User id " + std::to_string(id) + " does not exist", [&] { return add(); });
    }
}

TEST_F(SshKeys, AddRefusesAKeyThatTheUserHas)
{
    ASSERT_EQ(add(), 0u) << err.message;
    expect_failure(837, "The SSH public key already exists", [&] { return add(); });
    key.UserId = 101;
    EXPECT_EQ(add(), 0u) << err.message;
    admin_key();
    expect_failure(837, "The SSH public key already exists", [&] { return add(); });
}

TEST_F(SshKeys, AddKeepsToTheLimit)
{
    fill(255);
    ASSERT_EQ(add(), 0u) << err.message;
    key.Key = "BBBB";
    expect_failure(842, "The number of SSH public key overflows. Maximum is 256.", [&] { return add(); });
}

TEST_F(SshKeys, AddCountsTwinsButLetsTheLastKeyBringItsOwn)
{
    admin_key();
    fill(253);
    admin_key("SECOND");
    EXPECT_EQ(value("SELECT COUNT(*) FROM ssh_public_key"), "257");
    key.Key = "THIRD";
    expect_failure(842, "The number of SSH public key overflows. Maximum is 256.", [&] { return add(); });
}

TEST_F(SshKeys, AddFailures)
{
    fail_statement(1, 1, "injected", "INSERT INTO `ssh_public_key`");
    expect_failure(5, "Failed DB Query for 'INSERT ssh_public_key'. injected", [&] { return add(); });
    for (const char *part : {"SELECT shell_access", "serve_for='rsync'", "UPDATE '$user'"}) {
        fail_statement(1, 1, "injected", part);
        expect_plain_failure(5, "Failed to update user shell. uid: 100", [&] { return add(); });
    }
    EXPECT_EQ(key.Id, 0);
    key.UserId = 98;
    fail_statement(2, 1, "injected", "INSERT INTO `ssh_public_key`");
    expect_failure(5, "Failed DB Query for 'INSERT ssh_public_key'. injected", [&] { return add(); });
    test::fail_allocation(1);
    expect_plain_failure(2, "OOM in x_qbobj_addSshPublicKey", [&] { return add(); });
    EXPECT_EQ(key.Id, 0);
    EXPECT_EQ(add(), 0u) << err.message;
}

TEST_F(SshKeys, AddLooksAtUserKeyAndLimitInOrder)
{
    ASSERT_EQ(add(), 0u) << err.message;
    fill(255);
    key.UserId = 50;  // whom nobody knows either
    expect_failure(802, "Cannot add ssh public key for system reserved user id 50", [&] { return add(); });
    key.UserId = 102;
    expect_failure(836, "User id 102 does not exist", [&] { return add(); });
    key.UserId = 100;
    expect_failure(837, "The SSH public key already exists", [&] { return add(); });
    key.Key = "BBBB";
    expect_failure(842, "The number of SSH public key overflows. Maximum is 256.", [&] { return add(); });
}

// ---- The owner's shell

TEST_F(SshKeys, RsyncKeyLetsRsyncInAndRemovalShutsItOut)
{
    key.ServeFor = "rsync";
    ASSERT_EQ(add(), 0u) << err.message;
    EXPECT_EQ(shell(100), "/glassdeck/bin/validate-rsync");
    key.ServeFor = "login";
    ASSERT_EQ(change(), 0u) << err.message;
    EXPECT_EQ(shell(100), "/bin/false");
    key.ServeFor = "rsync";
    ASSERT_EQ(change(), 0u) << err.message;
    EXPECT_EQ(shell(100), "/glassdeck/bin/validate-rsync");
    ASSERT_EQ(remove(), 0u) << err.message;
    EXPECT_EQ(shell(100), "/bin/false");
}

TEST_F(SshKeys, UsersWithAShellKeepIt)
{
    key.UserId = 101;
    key.ServeFor = "rsync";
    ASSERT_EQ(add(), 0u) << err.message;
    EXPECT_EQ(shell(101), "/bin/bash");
    ASSERT_EQ(remove(), 0u) << err.message;
    EXPECT_EQ(shell(101), "/bin/bash");
}

TEST_F(SshKeys, AdministratorGetsTheRsyncShellAndRootKeepsItsOwn)
{
    key.UserId = 98;
    key.ServeFor = "rsync";
    ASSERT_EQ(add(), 0u) << err.message;
    EXPECT_EQ(shell(98), "/glassdeck/bin/validate-rsync");
    EXPECT_EQ(shell(0), "/bin/bash");
    ASSERT_EQ(remove(), 0u) << err.message;
    EXPECT_EQ(shell(98), "/bin/false");
}

// ---- Changing

TEST_F(SshKeys, ChangeWritesTitleAndUseOnly)
{
    ASSERT_EQ(add(), 0u) << err.message;
    key = {nullptr, 7, key.Id, 100, "rsync", "other", "other", "other", "other", "it's"};
    take_statements();
    ASSERT_EQ(change(), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre("1|100|rsync|ssh-ed25519|AAAA|anna@laptop|SHA256:x|it's"));
    EXPECT_THAT(take_statements(),
                Contains("UPDATE `ssh_public_key` SET title = 'it''s', serve_for = 'rsync' WHERE id = 1"));
}

TEST_F(SshKeys, ChangeOfTheAdministratorsKeyChangesTheTwin)
{
    admin_key("OTHER");
    admin_key();
    key.Title = "tablet";
    key.ServeFor = "rsync";
    ASSERT_EQ(change(), 0u) << err.message;
    EXPECT_THAT(rows("SELECT id,user_id,serve_for,key,title FROM ssh_public_key"),
                ElementsAre("1|98|login|OTHER|desk", "2|0|login|OTHER|root_desk", "3|98|rsync|ADMIN|tablet",
                            "4|0|rsync|ADMIN|root_tablet"));
}

TEST_F(SshKeys, ChangeGoesByTheOwnerInTheRecord)
{
    admin_key();
    key.UserId = 101;
    key.Title = "tablet";
    ASSERT_EQ(change(), 0u) << err.message;
    EXPECT_THAT(rows("SELECT user_id,title FROM ssh_public_key"), ElementsAre("98|tablet", "0|root_desk"));
}

TEST_F(SshKeys, ChangeFailures)
{
    key.Id = 1;
    expect_failure(838, "Key id 1 does not exist", [&] { return change(); });
    ASSERT_EQ(add(), 0u) << err.message;
    key.Title = "tablet";
    fail_statement(1, 1, "injected", "UPDATE `ssh_public_key`");
    expect_plain_failure(5, "Failed DB Query for 'UPDATE ssh_public_key'. injected", [&] { return change(); });
    for (const char *part : {"SELECT shell_access", "serve_for='rsync'", "UPDATE '$user'"}) {
        fail_statement(1, 1, "injected", part);
        expect_plain_failure(5, "Failed to update user shell. uid: 100", [&] { return change(); });
    }
    for (const int32_t owner : {0, 99}) {
        key.UserId = owner;
        expect_plain_failure(5, "Failed to update user shell. uid: " + std::to_string(owner), [&] { return change(); });
    }
    key.UserId = 98;  // but the key is anna's
    expect_failure(5, "Failed to find the tied root ssh public key for key id 1", [&] { return change(); });
    EXPECT_THAT(logged(2), ElementsAre("No tied root key for key id=1.",
                                       "Failed to find the tied root ssh public key for key id 1"));
}

TEST_F(SshKeys, ChangeFailuresOfTheTwin)
{
    admin_key();
    key.Title = "tablet";
    fail_statement(2, 1, "injected", "UPDATE `ssh_public_key`");
    expect_plain_failure(5, "Failed DB Query for 'UPDATE ssh_public_key'. injected", [&] { return change(); });
    fail_statement(1, 1, "injected", "AND user_id = 0");
    expect_failure(5, "Failed to find the tied root ssh public key for key id 1", [&] { return change(); });
    test::fail_allocation(7);  // the twin has six texts
    expect_plain_failure(2, "OOM in x_qbobj_setSshPublicKeyById", [&] { return change(); });
    test::fail_allocation(6);
    expect_failure(5, "Failed to find the tied root ssh public key for key id 1", [&] { return change(); });
    sql("DELETE FROM ssh_public_key WHERE user_id=0");
    expect_failure(5, "Failed to find the tied root ssh public key for key id 1", [&] { return change(); });
}

// ---- Removing

TEST_F(SshKeys, RemoveDeletesOneKey)
{
    ASSERT_EQ(add(), 0u) << err.message;
    key.Key = "BBBB";
    ASSERT_EQ(add(), 0u) << err.message;
    key = {};
    key.Id = 1;
    key.UserId = 100;
    take_statements();
    ASSERT_EQ(remove(), 0u) << err.message;
    EXPECT_THAT(rows("SELECT id,key FROM ssh_public_key"), ElementsAre("2|BBBB"));
    EXPECT_THAT(take_statements(), Contains("DELETE FROM `ssh_public_key` WHERE id = 1"));
}

TEST_F(SshKeys, RemoveOfTheAdministratorsKeyRemovesTheTwinFirst)
{
    admin_key("OTHER");
    admin_key();
    take_statements();
    ASSERT_EQ(remove(), 0u) << err.message;
    EXPECT_THAT(rows("SELECT id,user_id FROM ssh_public_key ORDER BY id"), ElementsAre("1|98", "2|0"));
    std::vector<std::string> deletions;
    for (const std::string &statement : take_statements())
        if (statement.rfind("DELETE", 0) == 0) deletions.push_back(statement);
    EXPECT_THAT(deletions,
                ElementsAre("DELETE FROM `ssh_public_key` WHERE id = 4", "DELETE FROM `ssh_public_key` WHERE id = 3"));
}

TEST_F(SshKeys, RemoveLeavesTheSameTextOfOtherUsers)
{
    admin_key();
    key.UserId = 100;
    ASSERT_EQ(add(), 0u) << err.message;
    ASSERT_EQ(remove(), 0u) << err.message;
    EXPECT_THAT(rows("SELECT user_id FROM ssh_public_key ORDER BY id"), ElementsAre("98", "0"));
}

TEST_F(SshKeys, RemoveFailures)
{
    key.Id = 1;
    expect_failure(838, "Key id 1 does not exist", [&] { return remove(); });
    ASSERT_EQ(add(), 0u) << err.message;
    fail_statement(1, 1, "injected", "DELETE FROM `ssh_public_key`");
    expect_failure(5, "Failed DB Query for 'DELETE ssh_public_key'. injected", [&] { return remove(); });
    for (const char *part : {"SELECT shell_access", "serve_for='rsync'", "UPDATE '$user'"}) {
        fail_statement(1, 1, "injected", part);
        expect_plain_failure(5, "Failed to update user shell. uid: 100", [&] { return remove(); });
    }
    key.UserId = 0;
    expect_plain_failure(5, "Failed to update user shell. uid: 0", [&] { return remove(); });
}

TEST_F(SshKeys, RemoveFailuresOfTheTwin)
{
    admin_key();
    sql("DELETE FROM ssh_public_key WHERE user_id=0");
    expect_failure(5, "Failed to find the tied root ssh public key for key id 1", [&] { return remove(); });
    EXPECT_THAT(stored(), SizeIs(1));
}

// ---- Reading

TEST_F(SshKeys, OneIsRead)
{
    ASSERT_EQ(add(), 0u) << err.message;
    SshPublicKey following{};
    key = {};
    key.next = &following;
    take_statements();
    ASSERT_EQ(get(1), 0u) << err.message;
    EXPECT_EQ(key.next, &following);
    EXPECT_EQ(text_of(key),
              "resource_id=1 Id=1 UserId=100 ServeFor=login Type=ssh-ed25519 Key=AAAA Comment=anna@laptop "
              "Fingerprint=SHA256:x Title=laptop");
    EXPECT_THAT(take_statements(),
                ElementsAre("BEGIN",
                            "SELECT id, user_id, serve_for, type, key, comment,fingerprint, title FROM "
                            "`ssh_public_key` WHERE id = 1",
                            "COMMIT"));
}

TEST_F(SshKeys, OneOfRootIsReadById)
{
    admin_key();
    ASSERT_EQ(get(2), 0u) << err.message;
    EXPECT_EQ(key.UserId, 0);
    EXPECT_STREQ(key.Title, "root_desk");
}

TEST_F(SshKeys, OneReadFailures)
{
    expect_failure(838, "None of row selected for resource_id=1.", [&] { return get(1); });
    EXPECT_STREQ(key.Key, "AAAA");
}

TEST_F(SshKeys, TwinIsReadByTheAdministratorsKey)
{
    key.Id = 7;
    ASSERT_EQ(add(), 0u) << err.message;
    admin_key();
    key = {};
    take_statements();
    ASSERT_EQ(get_root(2), 0u) << err.message;
    EXPECT_EQ(text_of(key),
              "resource_id=3 Id=3 ServeFor=login Type=ssh-rsa Key=ADMIN Comment=admin@desk Fingerprint=SHA256:a "
              "Title=root_desk");
    EXPECT_THAT(take_statements(),
                ElementsAre("BEGIN",
                            "SELECT id, user_id, serve_for, type, key, comment,fingerprint, title FROM "
                            "`ssh_public_key` WHERE key = (SELECT key FROM `ssh_public_key` WHERE id = 2 AND user_id = "
                            "98) AND user_id = 0",
                            "COMMIT"));
}

TEST_F(SshKeys, TwinReadFailures)
{
    ASSERT_EQ(add(), 0u) << err.message;
    admin_key();
    key = {};
    for (const int32_t id : {1, 3, 99})  // anna's, root's own, nobody's
        expect_failure(838, "No tied root key for key id=" + std::to_string(id) + ".", [&] { return get_root(id); });
    sql("DELETE FROM ssh_public_key WHERE user_id=0");
    expect_failure(838, "No tied root key for key id=2.", [&] { return get_root(2); });
    EXPECT_EQ(key.Id, 0);
}

TEST_F(SshKeys, AllAreListedInOrderWithoutTwins)
{
    EXPECT_THAT(list(), IsEmpty());
    key.UserId = 101;
    ASSERT_EQ(add(), 0u) << err.message;
    admin_key();
    sql("INSERT INTO ssh_public_key(id,user_id) VALUES(9,100)");
    take_statements();
    const auto keys = list();
    ASSERT_THAT(keys, SizeIs(3));
    EXPECT_EQ(keys[0]->Id, 1);
    EXPECT_EQ(keys[0]->UserId, 101);
    EXPECT_STREQ(keys[0]->Title, "laptop");
    EXPECT_EQ(keys[1]->Id, 2);
    EXPECT_EQ(keys[1]->UserId, 98);
    EXPECT_EQ(keys[2]->Id, 9);
    EXPECT_EQ(keys[2]->resource_id, 9);
    EXPECT_EQ(keys[2]->Key, nullptr);
    EXPECT_THAT(take_statements(), Contains("SELECT id, user_id, serve_for, type, key, comment,fingerprint, title FROM "
                                            "`ssh_public_key` WHERE user_id<>0"));
}

TEST_F(SshKeys, AllAreAppendedToAListThatIsNotEmpty)
{
    ASSERT_EQ(add(), 0u) << err.message;
    SshPublicKey first{};
    SshPublicKeyCollection keys{&first};
    ASSERT_EQ(qbobj_getSshPublicKeyCollection(qbdb, db, &keys, &err), 0u) << err.message;
    EXPECT_EQ(keys.SshPublicKey, &first);
    ASSERT_THAT(elements(keys.SshPublicKey), SizeIs(2));
    EXPECT_EQ(first.next->Id, 1);
}

TEST_F(SshKeys, AllReadFailuresLeaveTheList)
{
    ASSERT_EQ(add(), 0u) << err.message;
    SshPublicKeyCollection keys{};
    const auto call = [&] { return qbobj_getSshPublicKeyCollection(qbdb, db, &keys, &err); };
    fail_statement(1, 1, "injected", "FROM `ssh_public_key`");
    expect_failure(5, "Failed DB Query for 'SELECT FROM ssh_public_key'. injected", call);
    EXPECT_EQ(keys.SshPublicKey, nullptr);
    test::fail_allocation(1);
    expect_failure(2, "Failed to allocate object.", call);
    EXPECT_EQ(keys.SshPublicKey, nullptr);
    test::fail_allocation(2);
    expect_failure(2, "Failed to allocate resource.", call);
    EXPECT_EQ(keys.SshPublicKey, nullptr);
    test::expect_each_allocation_noticed(err, call, 2, nullptr);
}

TEST_F(SshKeys, ReadWithoutMemoryLeavesTheRecord)
{
    ASSERT_EQ(add(), 0u) << err.message;
    SshPublicKey read{};
    const auto call = [&] {
        read = {};
        const uint32_t rc = qbobj_getSshPublicKeyById(qbdb, db, 1, &read, &err);
        EXPECT_EQ(read.Id, rc ? 0 : 1);
        EXPECT_EQ(read.ServeFor == nullptr, rc != 0);
        return rc;
    };
    test::expect_each_allocation_noticed(err, call, 2, "Failed to allocate resource.");
}

// ---- Log and assertions

TEST_F(SshKeys, VerboseLogShowsKeysOnOneLine)
{
    const std::string before =
        "id=0 user_id=98 serve_for=login type=ssh-rsa key=AA BB comment=(null) fingerprint=f title=t";
    const std::string after =
        "id=1 user_id=98 serve_for=login type=ssh-rsa key=AA BB comment=(null) fingerprint=f title=t";
    const std::string root =
        "id=2 user_id=0 serve_for=login type=ssh-rsa key=AA BB comment=(null) fingerprint=f title=root_t";
    key = {nullptr, 0, 0, 98, "login", "ssh-rsa", "AA\nBB", nullptr, "f", "t"};
    qbdb->log_level = 5;
    SshPublicKeyCollection keys{};
    struct {
        std::function<uint32_t()> call;
        std::vector<std::string> lines;
    } const cases[] = {
        {[&] { return add(); }, {"x_qbobj_addSshPublicKey: Adding a key. " + before + "\n"}},
        {[&] { return get(1); },
         {"x_qbobj_getSshPublicKeyById: Getting a key, id = 1.\n",
          "x_qbobj_getSshPublicKeyById: Got a key. " + after + "\n"}},
        {[&] { return qbobj_getSshPublicKeyCollection(qbdb, db, &keys, &err); },
         {"x_qbobj_getSshPublicKeyCollection: Getting key collection.\n",
          "x_qbobj_getSshPublicKeyCollection: Got a key. " + after + "\n"}},
        {[&] { return change(); },
         {"x_qbobj_setSshPublicKeyById: Updating a key. " + after + "\n",
          "x_qbobj_getSshPublicKeyTiedRootKeyById: Getting a key, id = 1.\n",
          "x_qbobj_getSshPublicKeyTiedRootKeyById: Got a key. " + root + "\n"}},
        {[&] { return remove(); },
         {"x_qbobj_deleteSshPublicKey: Deleting a key. " + after + "\n",
          "x_qbobj_getSshPublicKeyTiedRootKeyById: Getting a key, id = 1.\n",
          "x_qbobj_getSshPublicKeyTiedRootKeyById: Got a key. " + root + "\n"}},
    };
    for (const auto &each : cases) {
        SCOPED_TRACE(each.lines[0]);
        log.clear();
        ASSERT_EQ(each.call(), 0u) << err.message;
        std::vector<std::string> lines;
        for (const std::string &line : logged(5))
            if (line.rfind("x_qbobj_", 0) == 0) lines.push_back(line);
        EXPECT_EQ(lines, each.lines);
    }
}

TEST_F(SshKeys, LogBelowTheVerboseLevelShowsNoKeys)
{
    qbdb->log_level = 4;
    ASSERT_EQ(add(), 0u) << err.message;
    ASSERT_EQ(change(), 0u) << err.message;
    ASSERT_EQ(remove(), 0u) << err.message;
    EXPECT_THAT(logged(5), IsEmpty());
    EXPECT_THAT(logged(4), SizeIs(6));
}

TEST_F(SshKeys, FailuresAreNotLoggedAtLevelOne)
{
    qbdb->log_level = 1;
    ASSERT_EQ(add(), 0u) << err.message;
    key.UserId = 0;
    EXPECT_EQ(change(), 5u);
    EXPECT_STREQ(err.message, "Failed to update user shell. uid: 0");
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(SshKeys, MissingRecordsAbort)
{
    EXPECT_DEATH(qbobj_addSshPublicKey(qbdb, db, nullptr, &err), "Assertion `key' failed");
    EXPECT_DEATH(qbobj_setSshPublicKeyById(qbdb, db, nullptr, &err), "Assertion `key' failed");
    EXPECT_DEATH(qbobj_deleteSshPublicKey(qbdb, db, nullptr, &err), "Assertion `key' failed");
    EXPECT_DEATH(qbobj_getSshPublicKeyById(qbdb, db, 1, nullptr, &err), "Assertion `key' failed");
    EXPECT_DEATH(qbobj_getSshPublicKeyTiedRootKeyById(qbdb, db, 1, nullptr, &err), "Assertion `key' failed");
    EXPECT_DEATH(qbobj_getSshPublicKeyCollection(qbdb, db, nullptr, &err), "Assertion `keys' failed");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
