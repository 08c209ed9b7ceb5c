// Checks against the database: what is found, by which rules, and what a failed statement answers.
#include "fixture/fixture.h"
#include "validate/validate_db.h"

using namespace qb;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

struct ValidateDb : test::Database {
    CallContext ctx{qbdb, &err};

    void SetUp() override
    {
        sql(R"(
            INSERT INTO `$user` (id,uname,is_privileged,rid) VALUES
                (100,'anna',0,NULL), (101,'gone',-1,NULL), (102,'o''hara',0,NULL),
                (-7,'DOM\bob',0,1107), (-8,'DOM\gone',-1,1108);
            INSERT INTO `$group` (id,gname,is_privileged,rid) VALUES
                (100,'staff',0,NULL), (101,'left',-1,NULL), (-5,'DOM\sales',0,1205);
            INSERT INTO share (id,name,zfs_name,path,volume_id) VALUES
                (1,'media','tank/media','/tank/media','tank'), (2,'a_b','tank/a_b','/tank/a_b','tank'),
                (3,'all','tank/all','/tank/100%','tank'), (4,'bare','tank/bare',NULL,'tank');
            INSERT INTO `$application_on_share` (zfs_name,app_name) VALUES ('tank/media','player');
            INSERT INTO _volume (id,lv_name) VALUES ('v1','data'), ('data','other'), ('v3','v3name'), ('v4',NULL);
            INSERT INTO backup (id,name) VALUES (7,'nightly');
            INSERT INTO `$iscsi_lun` (id,name) VALUES (11,'disk0');
            INSERT INTO `$iscsi_lun_group` (id,name) VALUES (12,'cluster');
            INSERT INTO `$iscsi_initiator` (id,name) VALUES (13,'iqn.2001-01.example:host');
            INSERT INTO smb_username_map (unix_uname,smb_uname,type) VALUES ('anna','Anna Smith','alias');
        )");
        take_statements();
    }
};

constexpr char kFailed[] = "disk I/O error";

/// A look-up's answer in one word: "found", "missing", or what the database said.
std::string answer(const Failure &bad, bool found)
{
    EXPECT_FALSE(bad && found);
    return bad ? bad.text : found ? "found" : "missing";
}

/// What a look-up answers for a name: the text that it hands back, or null when it finds nothing.
struct Look {
    NameCheck check;
    const char *name;
    const char *found;
};

constexpr Look kLooks[] = {
    {NameCheck::domain_user, "DOM\\bob", "-7"},
    {NameCheck::domain_user, "DOM\\gone", "-8"},  // removed, but still a name of the domain's
    {NameCheck::domain_user, "root", "0"},
    {NameCheck::domain_user, "anna", nullptr},
    {NameCheck::domain_user, "gone", nullptr},
    {NameCheck::domain_user, "dom\\BOB", nullptr},
    {NameCheck::domain_user, "nobody here", nullptr},
    {NameCheck::domain_user, "", nullptr},
    {NameCheck::local_user, "anna", "100"},
    {NameCheck::local_user, "gone", "101"},  // a removed user keeps its name
    {NameCheck::local_user, "root", "0"},
    {NameCheck::local_user, "o'hara", "102"},
    {NameCheck::local_user, "DOM\\bob", nullptr},
    {NameCheck::local_user, "Anna", nullptr},
    {NameCheck::local_user, "ann", nullptr},
    {NameCheck::local_user, "%", nullptr},
    {NameCheck::local_user, "' OR ''='", nullptr},
    {NameCheck::share_name, "media", "1"},
    {NameCheck::share_name, "MEDIA", "1"},  // SMB clients cannot tell them apart
    {NameCheck::share_name, "a_b", "2"},
    {NameCheck::share_name, "axb", nullptr},
    {NameCheck::share_name, "medi", nullptr},
    {NameCheck::share_name, "", nullptr},
    {NameCheck::share_of_path, "/tank/media", "1"},
    {NameCheck::share_of_path, "/tank/media/", "1"},
    {NameCheck::share_of_path, "/tank/media/films/2001", "1"},
    {NameCheck::share_of_path, "/TANK/Media", nullptr},    // the folder itself: with case
    {NameCheck::share_of_path, "/TANK/Media/films", "1"},  // below it: without
    {NameCheck::share_of_path, "/tank/media2", nullptr},
    {NameCheck::share_of_path, "/tank/medi", nullptr},
    {NameCheck::share_of_path, "/tank", nullptr},
    {NameCheck::share_of_path, "/tank/axb", nullptr},
    {NameCheck::share_of_path, "/tank/axb/sub", "2"},  // "_" of a stored path stands for any character
    {NameCheck::share_of_path, "/tank/100%", "3"},
    {NameCheck::share_of_path, "/tank/100 and more/sub", "3"},  // and "%" for any text
    {NameCheck::share_of_path, "/tank/%", nullptr},             // but not those of the path asked for
    {NameCheck::share_of_path, "", nullptr},
    {NameCheck::share_dataset, "tank/media", "1"},
    {NameCheck::share_dataset, "tank/Media", nullptr},
    {NameCheck::share_dataset, "media", nullptr},
    {NameCheck::share_application, "tank/media", "player"},
    {NameCheck::share_application, "tank/MEDIA", nullptr},
    {NameCheck::share_application, "tank/a_b", nullptr},
    {NameCheck::volume_id, "v1", "v1"},
    {NameCheck::volume_id, "V1", nullptr},
    {NameCheck::volume_id, "other", nullptr},
    {NameCheck::volume_name, "data", "v1"},
    {NameCheck::volume_name, "other", "data"},
    {NameCheck::volume_name, "v1", nullptr},
    {NameCheck::volume_name, "v4", nullptr},
    {NameCheck::domain_group, "DOM\\sales", "-5"},
    {NameCheck::domain_group, "admin", "98"},
    {NameCheck::domain_group, "staff", nullptr},
    {NameCheck::domain_group, "left", nullptr},
    {NameCheck::domain_group, "ADMIN", nullptr},
    {NameCheck::local_group, "staff", "100"},
    {NameCheck::local_group, "left", "101"},
    {NameCheck::local_group, "admin", "98"},
    {NameCheck::local_group, "DOM\\sales", nullptr},
    {NameCheck::local_group, "Staff", nullptr},
    {NameCheck::backup_job, "nightly", "7"},
    {NameCheck::backup_job, "Nightly", nullptr},
    {NameCheck::backup_job, "weekly", nullptr},
    {NameCheck::lun, "disk0", "11"},
    {NameCheck::lun, "cluster", nullptr},
    {NameCheck::lun_group, "cluster", "12"},
    {NameCheck::lun_group, "disk0", nullptr},
    {NameCheck::initiator, "iqn.2001-01.example:host", "13"},
    {NameCheck::initiator, "disk0", nullptr},
    {NameCheck::alias, "Anna Smith", "anna"},
    {NameCheck::alias, "anna smith", nullptr},
    {NameCheck::alias, "anna", nullptr},
};

constexpr int kChecks = static_cast<int>(NameCheck::alias) + 1;

TEST_F(ValidateDb, LooksNamesUp)
{
    std::set<NameCheck> found_by, missed_by;
    for (const Look &look : kLooks) {
        SCOPED_TRACE(std::to_string(static_cast<int>(look.check)) + " " + look.name);
        const char *text = "untouched";
        bool found = !look.found;
        const Failure bad = find_name(&ctx, db, look.check, look.name, found, text);
        EXPECT_EQ(answer(bad, found), look.found ? "found" : "missing");
        EXPECT_STREQ(text, look.found);
        found = !look.found;
        EXPECT_FALSE(find_name(&ctx, db, look.check, look.name, found));
        EXPECT_EQ(found, look.found != nullptr);
        EXPECT_EQ(take_statements().size(), 2u) << "one statement a look-up";
        (look.found ? found_by : missed_by).insert(look.check);
    }
    EXPECT_EQ(found_by.size(), static_cast<size_t>(kChecks)) << "the table shows no success of some check";
    EXPECT_EQ(missed_by.size(), static_cast<size_t>(kChecks)) << "the table shows no miss of some check";
    EXPECT_EQ(err.code, 0u) << "what is not found is the caller's to report";
}

TEST_F(ValidateDb, AsksTheseQuestions)
{
    const struct {
        NameCheck check;
        const char *statement;
    } rows[] = {
        {NameCheck::domain_user,
         "SELECT id FROM `$user` WHERE uname='x''y' COLLATE BINARY AND (rid IS NOT NULL OR is_privileged=1) ORDER BY "
         "is_privileged DESC"},
        {NameCheck::local_user, "SELECT id FROM `$user` WHERE uname='x''y' AND rid IS NULL"},
        {NameCheck::share_name, "SELECT id FROM share WHERE name='x''y'"},
        {NameCheck::share_of_path, "SELECT id FROM share WHERE 'x''y'=path OR 'x''y' LIKE path||'/%'"},
        {NameCheck::share_dataset, "SELECT id FROM share WHERE zfs_name='x''y'"},
        {NameCheck::share_application, "SELECT app_name FROM '$application_on_share' WHERE zfs_name='x''y' limit 1"},
        {NameCheck::volume_id, "SELECT id FROM _volume WHERE id='x''y'"},
        {NameCheck::volume_name, "SELECT id FROM _volume WHERE lv_name='x''y'"},
        {NameCheck::domain_group,
         "SELECT id FROM `$group` WHERE gname='x''y' COLLATE BINARY AND (rid IS NOT NULL OR is_privileged=1) ORDER BY "
         "is_privileged DESC"},
        {NameCheck::local_group, "SELECT id FROM `$group` WHERE gname='x''y' AND rid IS NULL"},
        {NameCheck::backup_job, "SELECT id FROM backup WHERE name='x''y'"},
        {NameCheck::lun, "SELECT rowid FROM `$iscsi_lun` WHERE name='x''y'"},
        {NameCheck::lun_group, "SELECT rowid FROM `$iscsi_lun_group` WHERE name='x''y'"},
        {NameCheck::initiator, "SELECT rowid FROM `$iscsi_initiator` WHERE name='x''y'"},
        {NameCheck::alias, "SELECT unix_uname FROM 'smb_username_map' WHERE smb_uname='x''y' limit 1"},
    };
    ASSERT_EQ(std::size(rows), static_cast<size_t>(kChecks));
    bool found = false;
    for (const auto &row : rows) {
        EXPECT_FALSE(find_name(&ctx, db, row.check, "x'y", found));
        EXPECT_THAT(take_statements(), ElementsAre(row.statement));
    }
    int32_t count = 0;
    EXPECT_FALSE(find_id(&ctx, db, IdCheck::user, -7, found));
    EXPECT_FALSE(find_id(&ctx, db, IdCheck::group, 98, found));
    EXPECT_FALSE(count_rsync_keys(&ctx, db, 100, count));
    EXPECT_FALSE(count_timemachine_quotas(&ctx, db, count));
    EXPECT_THAT(take_statements(),
                ElementsAre("SELECT id FROM `$user` WHERE id=-7", "SELECT id FROM `$group` WHERE id=98",
                            "SELECT COUNT(*) FROM ssh_public_key WHERE user_id=100 AND serve_for='rsync'",
                            "SELECT COUNT(*) FROM '$timemachine_quota'"));
}

TEST_F(ValidateDb, FindsNoNullName)
{
    for (int check = 0; check < kChecks; check++) {
        const char *text = "untouched";
        bool found = true;
        EXPECT_FALSE(find_name(&ctx, db, static_cast<NameCheck>(check), nullptr, found, text)) << check;
        EXPECT_FALSE(found) << check;
        EXPECT_EQ(text, nullptr) << check;
    }
    EXPECT_THAT(take_statements(), ElementsAre());
}

TEST_F(ValidateDb, TellsAFailedStatementFromAMiss)
{
    for (const Look &look : kLooks) {
        SCOPED_TRACE(std::to_string(static_cast<int>(look.check)) + " " + look.name);
        fail_statement(1, 10, kFailed);
        const char *text = "untouched";
        bool found = true;
        const Failure bad = find_name(&ctx, db, look.check, look.name, found, text);
        EXPECT_EQ(answer(bad, found), kFailed);
        EXPECT_EQ(text, nullptr);
    }
    EXPECT_EQ(err.code, 0u);
}

TEST_F(ValidateDb, HandsIdsBackAsNumbers)
{
    const struct {
        NameCheck check;
        const char *name;
        const char *answer;
        int32_t id;
    } rows[] = {
        {NameCheck::domain_user, "DOM\\bob", "found", -7},
        {NameCheck::local_user, "root", "found", 0},
        {NameCheck::lun, "none", "missing", 0},
        {NameCheck::lun, nullptr, "missing", 0},
        {NameCheck::lun, "disk0", "found", 11},
        {NameCheck::lun, "disk0", kFailed, 0},
    };
    for (const auto &row : rows) {
        int32_t id = 55;
        bool found = false;
        if (row.answer == kFailed) fail_statement(1, 10, kFailed);
        const Failure bad = find_name(&ctx, db, row.check, row.name, found, id);
        EXPECT_EQ(answer(bad, found), row.answer);
        EXPECT_EQ(id, row.id);
    }
}

TEST_F(ValidateDb, LooksIdsUp)
{
    const struct {
        IdCheck check;
        int32_t id;
        bool found;
    } rows[] = {
        {IdCheck::user, 0, true},   {IdCheck::user, 100, true},         {IdCheck::user, 101, true},
        {IdCheck::user, -7, true},  {IdCheck::user, 99, false},         {IdCheck::user, INT32_MIN, false},
        {IdCheck::group, 98, true}, {IdCheck::group, 101, true},        {IdCheck::group, -5, true},
        {IdCheck::group, 0, false}, {IdCheck::group, INT32_MAX, false},
    };
    for (const auto &row : rows) {
        bool found = !row.found;
        EXPECT_FALSE(find_id(&ctx, db, row.check, row.id, found));
        EXPECT_EQ(found, row.found) << row.id;
    }
    for (const IdCheck check : {IdCheck::user, IdCheck::group}) {
        fail_statement(1, 10, kFailed);
        bool found = true;
        const Failure bad = find_id(&ctx, db, check, 98, found);
        EXPECT_EQ(answer(bad, found), kFailed);
    }
}

TEST_F(ValidateDb, LooksAVolumeUpByIdBeforeName)
{
    const struct {
        const char *volume;
        const char *id;
        size_t statements;
    } rows[] = {
        {"v1", "v1", 1},      {"data", "data", 1},  // the id of one volume and the name of another
        {"other", "data", 2}, {"v3name", "v3", 2}, {"tank", "tank", 1},
        {"TANK", nullptr, 2}, {"", nullptr, 2},    {nullptr, nullptr, 0},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.volume ? row.volume : "null");
        const char *id = "untouched";
        bool found = !row.id;
        EXPECT_FALSE(find_volume(&ctx, db, row.volume, found, id));
        EXPECT_EQ(found, row.id != nullptr);
        EXPECT_STREQ(id, row.id);
        EXPECT_EQ(take_statements().size(), row.statements);
        found = !row.id;
        EXPECT_FALSE(find_volume(&ctx, db, row.volume, found));
        EXPECT_EQ(found, row.id != nullptr);
        take_statements();
    }
    bool found = true;
    EXPECT_FALSE(find_volume(&ctx, db, "none", found));
    EXPECT_THAT(take_statements(), ElementsAre(HasSubstr("WHERE id="), HasSubstr("WHERE lv_name=")));
}

TEST_F(ValidateDb, DoesNotGoOnAfterAFailedVolumeLookUp)
{
    for (const int nth : {1, 2}) {
        const char *id = "untouched";
        bool found = true;
        take_statements();
        fail_statement(nth, 10, kFailed);
        const Failure bad = find_volume(&ctx, db, "other", found, id);
        EXPECT_EQ(answer(bad, found), kFailed);
        EXPECT_EQ(id, nullptr);
        EXPECT_EQ(take_statements().size(), static_cast<size_t>(nth));
        fail_statement(nth, 10, kFailed);
        const Failure without_id = find_volume(&ctx, db, "other", found);
        EXPECT_EQ(answer(without_id, found), kFailed);
    }
}

TEST_F(ValidateDb, CountsKeysAndAllowances)
{
    sql("INSERT INTO ssh_public_key (user_id,serve_for,key) VALUES (100,'rsync','a'),(100,'rsync','b'),(100,'ssh','c'),"
        "(100,'RSYNC','d'),(100,NULL,'e'),(0,'rsync','a')");
    int32_t count = -1;
    EXPECT_FALSE(count_rsync_keys(&ctx, db, 100, count));
    EXPECT_EQ(count, 2);
    EXPECT_FALSE(count_rsync_keys(&ctx, db, 98, count));
    EXPECT_EQ(count, 0);
    EXPECT_FALSE(count_timemachine_quotas(&ctx, db, count));
    EXPECT_EQ(count, 0);
    sql("INSERT INTO `$timemachine_quota` (user_id,enabled) VALUES (96,1),(100,0)");
    EXPECT_FALSE(count_timemachine_quotas(&ctx, db, count));
    EXPECT_EQ(count, 2);
    fail_statement(1, 10, kFailed);
    EXPECT_STREQ(count_timemachine_quotas(&ctx, db, count).text, kFailed);
    EXPECT_EQ(count, 0);
    count = 5;
    fail_statement(1, 10, kFailed);
    EXPECT_STREQ(count_rsync_keys(&ctx, db, 100, count).text, kFailed);
    EXPECT_EQ(count, 0);
}

TEST_F(ValidateDb, TellsCallersWhetherAShareExists)
{
    int32_t id = 55;
    EXPECT_EQ(qbobj_validate_db_sharename(qbdb, db, "a_b", &id), 0);
    EXPECT_EQ(id, 2);
    EXPECT_EQ(qbobj_validate_db_sharename(qbdb, db, "Media", nullptr), 0);
    id = 55;
    EXPECT_NE(qbobj_validate_db_sharename(qbdb, db, "axb", &id), 0);
    EXPECT_NE(qbobj_validate_db_sharename(qbdb, db, "", &id), 0);
    EXPECT_NE(qbobj_validate_db_sharename(qbdb, db, nullptr, &id), 0);
    EXPECT_NE(qbobj_validate_db_sharename(qbdb, db, nullptr, nullptr), 0);
    fail_statement(1);
    EXPECT_NE(qbobj_validate_db_sharename(qbdb, db, "media", &id), 0);
    EXPECT_EQ(id, 55) << "written only when the share exists";
}

TEST_F(ValidateDb, LooksSharesUpInsideATransactionOfTheCaller)
{
    sql("BEGIN; INSERT INTO share (id,name,zfs_name) VALUES (9,'new','tank/new')");
    int32_t id = 0;
    EXPECT_EQ(qbobj_validate_db_sharename(qbdb, db, "new", &id), 0);
    EXPECT_EQ(id, 9);
    EXPECT_FALSE(sqlite3_get_autocommit(db)) << "the caller's transaction is still open";
    sql("ROLLBACK");
    EXPECT_NE(qbobj_validate_db_sharename(qbdb, db, "new", &id), 0);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
