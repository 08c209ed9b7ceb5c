#include "accounts/directory_mode.h"
#include "fixture/fixture.h"
#include "fixture/text_of.h"

using test::text_of;
using testing::AllOf;
using testing::ElementsAre;
using testing::Field;

namespace {

using test::LogLine;

const std::string k255(255, 'h');
const std::string k256(256, 'h');

struct Directory : test::Database {
    ::Security security{};
    SecurityAdsProgress progress{};

    Directory()
    {
        security.Security = "ads";
        security.Realm = "corp.example.com";
        security.workGroup = "CORP";
        security.idmapBackend = "rid";
    }
    uint32_t get() { return qbobj_getSecurity(qbdb, db, &security, &err); }
    uint32_t set() { return qbobj_setSecurity(qbdb, db, &security, &err); }
    uint32_t set_backend(const char *word) { return qbobj_setSecurityIdmapBackend(qbdb, db, word, &err); }
    uint32_t get_progress() { return qbobj_getSecurityAdsProgress(qbdb, db, &progress, &err); }
    std::string stored(const std::string &column) { return value("SELECT " + column + " FROM service_cifs"); }
};

// ---- Settings

TEST_F(Directory, IsRead)
{
    sql("UPDATE service_cifs SET security='ads',workgroup='CORP',realm='corp.example.com',orgunit='ou=nas',"
        "restrict_ou='ou=staff',no_sync_ads=1,domain_admin_user='boss',password_server='dc1',allow_trusted_domains=2,"
        "domain_sid='S-1-5',domain_admin_gid=512,domain_admin_uid=500,join_ads_failed=3,idmap_backend='rid'");
    security = {};
    security.passWord = "before";
    security.restrictAccountOu = "before";
    take_statements();
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_THAT(take_statements(),
                ElementsAre("BEGIN",
                            "SELECT S.security,S.workgroup,S.realm,S.orgunit,S.restrict_ou,S.no_sync_ads,"
                            "S.domain_admin_user,S.password_server,S.allow_trusted_domains,S.domain_sid,"
                            "IFNULL(S.domain_admin_gid,98),IFNULL(S.domain_admin_uid,98),"
                            "IFNULL(S.join_ads_failed,0),S.idmap_backend FROM service_cifs S LIMIT 1",
                            "COMMIT"));
    EXPECT_STREQ(security.Security, "ads");
    EXPECT_STREQ(security.Realm, "corp.example.com");
    EXPECT_STREQ(security.workGroup, "CORP");
    EXPECT_STREQ(security.orgUnit, "ou=nas");
    EXPECT_STREQ(security.restrictOU, "ou=staff");
    EXPECT_EQ(security.noSyncADS, 1);
    EXPECT_EQ(security.restrictAccountOu, nullptr);
    EXPECT_STREQ(security.domainAdministrator, "boss");
    EXPECT_EQ(security.passWord, nullptr);
    EXPECT_STREQ(security.passWordServer, "dc1");
    EXPECT_EQ(security.displayTrustedUsers, 2);
    EXPECT_STREQ(security.domainSid, "S-1-5");
    EXPECT_EQ(security.domainGroupAdminGID, 512);
    EXPECT_EQ(security.domainAdminUID, 500);
    EXPECT_EQ(security.joinDomainFailed, 3);
    EXPECT_STREQ(security.idmapBackend, "rid");
}

TEST_F(Directory, ReadsDefaultsOfTheDomainAdministrator)
{
    sql("UPDATE service_cifs SET domain_admin_gid=NULL,domain_admin_uid=NULL,join_ads_failed=NULL,realm=NULL");
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_EQ(security.domainGroupAdminGID, 98);
    EXPECT_EQ(security.domainAdminUID, 98);
    EXPECT_EQ(security.joinDomainFailed, 0);
    EXPECT_EQ(security.Realm, nullptr);
}

TEST_F(Directory, WithoutSettingsReadsAsCleared)
{
    sql("DELETE FROM service_cifs");
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_EQ(security.Security, nullptr);
    EXPECT_EQ(security.domainAdminUID, 0);
}

TEST_F(Directory, IsWrittenByOneStatement)
{
    sql("UPDATE service_cifs SET domain_sid='S-1-5',domain_admin_gid=512,domain_admin_uid=500");
    security = {"ads",      "corp.example.com",
                "CORP",     "ou=o'brien",
                "ou=staff", 1,
                "ou=x",     "boss",
                "sesame",   "dc1",
                2,          "S-9",
                1,          2,
                3,          "rid"};
    take_statements();
    ASSERT_EQ(set(), 0u) << err.message;
    EXPECT_THAT(take_statements(),
                ElementsAre("BEGIN IMMEDIATE",
                            "UPDATE service_cifs SET security='ads',workgroup='CORP',realm='corp.example.com',"
                            "orgunit='ou=o''brien',restrict_ou='ou=staff',no_sync_ads=1,domain_admin_user='boss',"
                            "password_server='dc1',allow_trusted_domains=2,join_ads_failed=3,idmap_backend='rid'",
                            "COMMIT"));
    EXPECT_EQ(stored("orgunit"), "ou=o'brien");
    EXPECT_THAT(rows("SELECT domain_sid,domain_admin_gid,domain_admin_uid FROM service_cifs"),
                ElementsAre("S-1-5|512|500"));
    EXPECT_EQ(content().find("sesame"), std::string::npos);
}

TEST_F(Directory, WritesNullTextsAsSuch)
{
    sql("UPDATE service_cifs SET orgunit='x',idmap_backend='tdb'");
    security.idmapBackend = nullptr;
    ASSERT_EQ(set(), 0u) << err.message;
    EXPECT_EQ(stored("orgunit"), "NULL");
    EXPECT_EQ(stored("idmap_backend"), "NULL");
}

TEST_F(Directory, NeedsNoRealmAmongLocalAccounts)
{
    security.Security = "user";
    for (const char *realm : {static_cast<const char *>(nullptr), "", "-bad"}) {
        security.Realm = realm;
        security.passWordServer = "-bad";
        EXPECT_EQ(set(), 0u) << err.message;
        EXPECT_EQ(stored("security"), "user");
        EXPECT_EQ(stored("realm"), realm ? realm : "NULL");
    }
}

TEST_F(Directory, RefusesOtherModes)
{
    security.workGroup = nullptr;
    for (const char *word : {static_cast<const char *>(nullptr), "", "domain", "ADS", "User", "ads ", "use"}) {
        security.Security = word;
        expect_failure(8, "Security is not valid", [&] { return set(); });
    }
}

TEST_F(Directory, RefusesBadWorkgroups)
{
    security.Realm = nullptr;
    for (const char *name :
         {static_cast<const char *>(nullptr), "", "ABCDEFGHIJKLMNOPQ", "_WG", "-WG", "W\xc3\xa4G", "W/G"}) {
        security.workGroup = name;
        expect_failure(819, "Bad workgroup", [&] { return set(); });
    }
    security.Realm = "corp";
    for (const char *name : {"W", "ABCDEFGHIJKLMNOP", "WORKGROUP", "a b_c-d.e"}) {
        security.workGroup = name;
        EXPECT_EQ(set(), 0u) << err.message;
        EXPECT_EQ(stored("workgroup"), name);
    }
}

TEST_F(Directory, RefusesBadRealms)
{
    security.passWordServer = "-bad";
    struct {
        const char *realm;
        std::string message;
    } const cases[] = {{nullptr, "Bad realm ((null))"},
                       {"", "Bad realm ()"},
                       {"_corp", "Bad realm (_corp)"},
                       {"corp example", "Bad realm (corp example)"},
                       {k256.c_str(), "Bad realm (" + k256 + ")"}};
    for (const auto &each : cases) {
        security.Realm = each.realm;
        expect_failure(820, each.message, [&] { return set(); });
    }
    security.passWordServer = nullptr;
    security.Realm = k255.c_str();
    EXPECT_EQ(set(), 0u) << err.message;
    EXPECT_EQ(stored("realm"), k255);
}

TEST_F(Directory, RefusesBadLoginServers)
{
    for (const char *server : {"-dc", "dc 1", "dc:88"}) {
        security.passWordServer = server;
        expect_failure(833, std::string("Bad login server (") + server + ")", [&] { return set(); });
    }
    for (const char *server : {static_cast<const char *>(nullptr), "", "dc1.corp.example.com"}) {
        security.passWordServer = server;
        EXPECT_EQ(set(), 0u) << err.message;
        EXPECT_EQ(stored("password_server"), server ? server : "NULL");
    }
}

TEST_F(Directory, RefusesSettingsThatDoNotFit)
{
    // The statement's assignments are 511 bytes at most.
    ASSERT_EQ(set(), 0u) << err.message;
    const std::string assignments =
        "security='ads',workgroup='CORP',realm='corp.example.com',orgunit='',restrict_ou=NULL,no_sync_ads=0,"
        "domain_admin_user=NULL,password_server=NULL,allow_trusted_domains=0,join_ads_failed=0,idmap_backend='rid'";
    const std::string fits(511 - assignments.size(), 'o');
    security.orgUnit = fits.c_str();
    EXPECT_EQ(set(), 0u) << err.message;
    EXPECT_EQ(stored("orgunit"), fits);
    EXPECT_EQ(stored("idmap_backend"), "rid");
    const std::string longer = fits + "o";
    security.orgUnit = longer.c_str();
    expect_failure(5, "Failed DB Query 'UPDATE service_cifs'. (the settings are too long)", [&] { return set(); });
    const std::string huge(100000, 'o');
    security.orgUnit = huge.c_str();
    expect_failure(5, "Failed DB Query 'UPDATE service_cifs'. (the settings are too long)", [&] { return set(); });
}

// ---- Id mapping

TEST_F(Directory, IdMappingIsTdbOrRid)
{
    for (const char *word : {"rid", "tdb"}) {
        take_statements();
        ASSERT_EQ(set_backend(word), 0u) << err.message;
        EXPECT_EQ(stored("idmap_backend"), word);
        EXPECT_THAT(take_statements(),
                    ElementsAre("BEGIN IMMEDIATE", std::string("UPDATE service_cifs SET idmap_backend='") + word + "'",
                                "COMMIT"));
    }
}

TEST_F(Directory, IdMappingRefusesAnythingElse)
{
    struct {
        const char *word;
        std::string message;
    } const cases[] = {{"rid2", "Invalid idmap_backend rid2"},
                       {"", "Invalid idmap_backend "},
                       {"TDB", "Invalid idmap_backend TDB"},
                       {nullptr, "Invalid idmap_backend (null)"}};
    for (const auto &each : cases) {
        SCOPED_TRACE(each.message);
        const std::string before = content();
        log.clear();
        EXPECT_EQ(set_backend(each.word), 8u);
        EXPECT_EQ(err.code, 8u);
        EXPECT_STREQ(err.message, each.message.c_str());
        EXPECT_THAT(log, ElementsAre(AllOf(Field(&LogLine::level, 2u), Field(&LogLine::flag, 0u),
                                           Field(&LogLine::text, each.message + "\n"))));
        EXPECT_EQ(content(), before);
    }
    qbdb->log_level = 1;
    log.clear();
    EXPECT_EQ(set_backend("rid2"), 8u);
    EXPECT_STREQ(err.message, "Invalid idmap_backend rid2");
    EXPECT_TRUE(log.empty());
}

// ---- Mode

TEST_F(Directory, ModeIsTheExactWord)
{
    qb::CallContext ctx{qbdb, &err};
    struct {
        const char *stored;
        int32_t ads;
    } const cases[] = {{"'ads'", 1}, {"'user'", 0}, {"'ADS'", 0}, {"NULL", 0}};
    for (const auto &each : cases) {
        sql(std::string("UPDATE service_cifs SET security=") + each.stored);
        int32_t ads = -1;
        take_statements();
        EXPECT_EQ(qb::read_ads_mode(&ctx, db, &ads), 0u);
        EXPECT_THAT(take_statements(),
                    ElementsAre("SELECT CASE WHEN S.security='ads' THEN 1 ELSE 0 END FROM service_cifs S LIMIT 1"));
        EXPECT_EQ(ads, each.ads) << each.stored;
    }
    fail_statement(1, 1, "injected", "service_cifs");
    int32_t ads = -1;
    expect_failure(5, "Failed DB Query 'SELECT service_cifs'. (injected)",
                   [&] { return qb::read_ads_mode(&ctx, db, &ads); });
    EXPECT_EQ(ads, 0);
}

// ---- Progress of the import

TEST_F(Directory, ProgressIsRead)
{
    sql("UPDATE _ads_importer SET "
        "state=1,total_user=20,curr_user=10,total_group=0,curr_group=0,start_at=1000,done_at=7");
    take_statements();
    ASSERT_EQ(get_progress(), 0u) << err.message;
    EXPECT_THAT(
        take_statements(),
        ElementsAre("BEGIN",
                    "SELECT CASE WHEN I.state=0 THEN 'idle' WHEN I.state=1 THEN 'running' WHEN I.state=2 THEN "
                    "'complete' ELSE 'error' END,I.total_user,I.curr_user,I.total_group,I.curr_group,I.start_at,"
                    "I.done_at,CASE WHEN I.total_user>0 THEN 50*I.curr_user/I.total_user ELSE 0 END + CASE WHEN "
                    "I.total_group>0 THEN 50*I.curr_group/I.total_group ELSE 0 END FROM _ads_importer I LIMIT 1",
                    "COMMIT"));
    EXPECT_EQ(text_of(progress), "State=running Percent=25 TotalUser=20 CurrUser=10 StartAt=1000 DoneAt=7");
    sql("UPDATE _ads_importer SET total_user=9,curr_user=8,total_group=6,curr_group=5");
    ASSERT_EQ(get_progress(), 0u) << err.message;
    EXPECT_EQ(text_of(progress),
              "State=running Percent=85 TotalUser=9 CurrUser=8 TotalGroup=6 CurrGroup=5 StartAt=1000 DoneAt=7");
}

TEST_F(Directory, ProgressStates)
{
    struct {
        const char *stored, *state;
    } const cases[] = {{"0", "idle"},  {"1", "running"}, {"2", "complete"},
                       {"3", "error"}, {"-1", "error"},  {"NULL", "error"}};
    for (const auto &each : cases) {
        sql(std::string("UPDATE _ads_importer SET state=") + each.stored);
        ASSERT_EQ(get_progress(), 0u) << err.message;
        EXPECT_STREQ(progress.State, each.state);
    }
}

TEST_F(Directory, ProgressCountsUsersAndGroupsHalfEach)
{
    struct {
        int users, done_users, groups, done_groups, percent;
    } const cases[] = {{20, 10, 0, 0, 25}, {0, 0, 0, 0, 0},      {3, 1, 3, 1, 32}, {3, 3, 7, 7, 100},
                       {0, 5, 4, 4, 50},   {100, 100, 0, 0, 50}, {7, 6, 9, 0, 42}};
    for (const auto &each : cases) {
        char text[200];
        snprintf(text, sizeof text, "UPDATE _ads_importer SET total_user=%d,curr_user=%d,total_group=%d,curr_group=%d",
                 each.users, each.done_users, each.groups, each.done_groups);
        sql(text);
        ASSERT_EQ(get_progress(), 0u) << err.message;
        EXPECT_EQ(progress.Percent, each.percent) << text;
    }
}

TEST_F(Directory, ProgressWithoutARowReadsAsCleared)
{
    sql("DELETE FROM _ads_importer");
    progress.Percent = 55;
    progress.State = "before";
    ASSERT_EQ(get_progress(), 0u) << err.message;
    EXPECT_EQ(progress.State, nullptr);
    EXPECT_EQ(progress.Percent, 0);
}

TEST_F(Directory, MissingRecordsAbort)
{
    EXPECT_DEATH(qbobj_getSecurity(qbdb, db, nullptr, &err), "Assertion `security' failed");
    EXPECT_DEATH(qbobj_setSecurity(qbdb, db, nullptr, &err), "Assertion `security' failed");
    EXPECT_DEATH(qbobj_getSecurityAdsProgress(qbdb, db, nullptr, &err), "Assertion `progress' failed");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
