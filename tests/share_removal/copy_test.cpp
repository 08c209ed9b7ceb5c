// Copying a share's configuration under a new name.
#include "share_removal/removal.h"

using namespace test;

namespace {

/// What a copy gets of the original by number.
const std::vector<std::string> kCopied = {
    "user_quota",        "group_quota",       "user_acl",          "group_acl",         "host_acl",
    "cifs_share_option", "afp_share_option",  "nfs_share_option",  "http_share_option", "ftp_share_option",
    "dlna_share_option", "daap_share_option", "zvol_share_option", "snapshot_schedule", "snapshot_management",
    "zfs_attr",
};

bool is_copied(const std::string &table)
{
    return std::find(kCopied.begin(), kCopied.end(), table) != kCopied.end();
}

struct CopyShare : Removal {
    int32_t id = -1;

    CopyShare()
    {
        add_share(1, "media");
        add_share(2, "photos");
        sql("UPDATE share SET path='/tank/'||name");
    }
    uint32_t copy(const char *volume, const char *name, const char *copied)
    {
        return qbobj_copyShare(qbdb, db, volume, name, copied, &id, &err);
    }
    void expect_copied(const char *name, const char *copied)
    {
        EXPECT_EQ(copy("tank", name, copied), 0u) << text(err.message);
    }
    void expect_refused(uint32_t code, const std::string &message, const char *volume, const char *name,
                        const char *copied)
    {
        id = -1;
        expect_failure(code, message, [&] { return copy(volume, name, copied); });
        EXPECT_EQ(id, -1);
        EXPECT_THAT(rows("SELECT name FROM sqlite_temp_master"), IsEmpty());
    }
};

TEST_F(CopyShare, HasItsRowsTableByTable)
{
    add_everything(1);
    add_everything(2);
    std::vector<std::vector<std::string>> before;
    for (const std::string &table : tables_by_number()) {
        ASSERT_FALSE(rows_of(1, table).empty()) << table;
        before.push_back(rows_of(1, table));
    }
    expect_copied("media", "films");
    EXPECT_EQ(id, 3);
    size_t i = 0;
    for (const std::string &table : tables_by_number()) {
        EXPECT_EQ(rows_of(1, table), before[i]) << table;
        if (is_copied(table)) EXPECT_EQ(rows_of(id, table), before[i]) << table;
        else EXPECT_THAT(rows_of(id, table), IsEmpty()) << table;
        i++;
    }
    EXPECT_THAT(rows("SELECT name FROM sqlite_temp_master"), IsEmpty());
    EXPECT_EQ(value("SELECT COUNT(*) FROM `$application_on_share` WHERE zfs_name='tank/films'"), "0");
    EXPECT_EQ(value("SELECT COUNT(*) FROM `$snapshot` WHERE zfs_name='tank/films'"), "0");
    EXPECT_THAT(regenerated, IsEmpty());
}

TEST_F(CopyShare, HasItsOwnRow)
{
    add_everything(1);
    sql("UPDATE share SET usb_storage_id=5,comment='it''s' WHERE id=1");
    expect_copied("media", "films");
    EXPECT_THAT(
        rows("SELECT zfs_name,type,volume_id,usb_storage_id,name,path,comment,user_access,group_access,"
             "everyone_access,non_owner_delete,user_id,group_id,visible_snapdir,migrate_to_volume_id FROM share "
             "WHERE id=3"),
        ElementsAre("tank/films|share|tank|5|films|/tank/films|it's|7|5|0|1|100|110|NULL|NULL"));
    EXPECT_EQ(value("SELECT update_ts='2024-01-02 03:04:05' FROM share WHERE id=3"), "0");
}

TEST_F(CopyShare, ReadsAsTheOriginal)
{
    add_everything(1);
    expect_copied("media", "films");
    get(id);
    EXPECT_STREQ(share.ShareName, "films");
    EXPECT_STREQ(share.Cifs->DefaultAccess, "ReadOnly");
    EXPECT_THAT(grants(share.Cifs->UserAcl), ElementsAre("anna=ReadWrite", "Bob=ReadOnly", "carl=Disabled"));
    EXPECT_EQ(share.Cifs->DfolderAcl, nullptr);
    EXPECT_EQ(share.Rsync, nullptr);
    for (const void *block :
         {static_cast<void *>(share.Afp), static_cast<void *>(share.Nfs), static_cast<void *>(share.Ftp),
          static_cast<void *>(share.Http), static_cast<void *>(share.Dlna), static_cast<void *>(share.Daap),
          static_cast<void *>(share.Zvol)})
        EXPECT_NE(block, nullptr);
    EXPECT_EQ(elements(share.SnapshotRetentionRules).size(), 2u);
    EXPECT_EQ(elements(share.UserQuota).size(), 2u);
    EXPECT_EQ(share.UsedBy, nullptr);
    EXPECT_STREQ(share.Origin, "tank/old");
}

TEST_F(CopyShare, ValuesKeepTheirKinds)
{
    sql("INSERT INTO cifs_share_option (share_id,cifs_access,cifs_hide_share) "
        "VALUES(1,x'00ff0027',9223372036854775807);"
        "INSERT INTO zfs_attr (share_id,mb_quota,logbias,sync,origin) VALUES(1,-9223372036854775808,'007','',x'');"
        "INSERT INTO snapshot_schedule (share_id,enabled,minute,hour) VALUES(1,1.5,'0','it''s `%s` ä');"
        "INSERT INTO dlna_share_option (share_id,access,media_type) VALUES(1,NULL,'All')");
    std::vector<std::vector<std::string>> before;
    for (const std::string &table : kCopied) before.push_back(rows_of(1, table));
    expect_copied("media", "films");
    size_t i = 0;
    for (const std::string &table : kCopied) EXPECT_EQ(rows_of(id, table), before[i++]) << table;
    EXPECT_EQ(value("SELECT typeof(cifs_access)||typeof(cifs_hide_share) FROM cifs_share_option WHERE share_id=3"),
              "blobinteger");
}

TEST_F(CopyShare, RunsInItsOrder)
{
    take_statements();
    expect_copied("media", "films");
    std::vector<std::string> ran = take_statements();
    std::vector<std::string> expected = {
        "SELECT id FROM _volume WHERE lv_name='tank'", "SELECT id FROM share WHERE zfs_name='tank/media'",
        "SELECT id FROM share WHERE name='films'",
        "INSERT INTO share(zfs_name,type,volume_id,usb_storage_id,name,path,comment,user_access,group_access,"
        "everyone_access,non_owner_delete,user_id,group_id)SELECT 'tank'||'/'||'films',type,volume_id,usb_storage_id,"
        "'films','/'||'tank'||'/'||'films',comment,user_access,group_access,everyone_access,non_owner_delete,user_id,"
        "group_id FROM share WHERE id=1"};
    for (const std::string &table : kCopied)
        expected.insert(
            expected.end(),
            {"CREATE TEMPORARY TABLE `_" + table + "` AS SELECT * FROM `" + table + "` WHERE share_id=1",
             "UPDATE `_" + table + "` SET share_id=3", "INSERT INTO `" + table + "` SELECT * FROM `_" + table + "`",
             "DROP TABLE IF EXISTS `_" + table + "`"});
    expected.insert(expected.begin(), "BEGIN IMMEDIATE");
    expected.emplace_back("COMMIT");
    EXPECT_EQ(ran, expected);
}

TEST_F(CopyShare, AgainAndAgain)
{
    add_everything(1);
    expect_copied("media", "one");
    expect_copied("one", "two");
    EXPECT_EQ(id, 4);
    EXPECT_EQ(qbobj_copyShare(qbdb, db, "tank", "two", "three", nullptr, &err), 0u) << text(err.message);
    for (const std::string &table : kCopied) EXPECT_EQ(rows_of(5, table), rows_of(1, table)) << table;
    Share last{};
    last.ShareId = "5";
    EXPECT_EQ(qbobj_deleteShare(qbdb, db, &last, &err), 0u) << text(err.message);
    expect_copied("media", "again");
    EXPECT_EQ(id, 5) << "a number is given again, and nothing of its last share stands in the way";
}

TEST_F(CopyShare, OfABareShare)
{
    expect_copied("photos", "pictures");
    for (const std::string &table : kCopied) EXPECT_THAT(rows_of(id, table), IsEmpty()) << table;
}

TEST_F(CopyShare, OnAVolumeWithAnyName)
{
    sql("INSERT INTO _volume (id,lv_name) VALUES('v2','it''s 2');"
        "UPDATE share SET volume_id='v2',zfs_name='it''s 2/media' WHERE id=1");
    EXPECT_EQ(copy("it's 2", "media", "films"), 0u) << text(err.message);
    EXPECT_THAT(rows("SELECT zfs_name,volume_id,path FROM share WHERE id=3"),
                ElementsAre("it's 2/films|v2|/it's 2/films"));
}

TEST_F(CopyShare, TheOriginalIsOnThatVolume)
{
    sql("INSERT INTO _volume (id,lv_name) VALUES('pool2','pool2')");
    struct Case {
        const char *volume;
        const char *name;
    };
    for (const Case &each :
         {Case{"tank", "none"}, Case{"none", "media"}, Case{"pool2", "media"}, Case{"tank", ""}, Case{"", "tank/media"},
          Case{nullptr, "media"}, Case{"tank", nullptr}, Case{nullptr, nullptr}})
        expect_refused(8,
                       "VolumeName/ShareName " + std::string(each.volume ? each.volume : "(null)") + "/" +
                           (each.name ? each.name : "(null)") + " is not exists.",
                       each.volume, each.name, "films");
}

TEST_F(CopyShare, TheNewNameIsOne)
{
    for (const std::string &name : {std::string(), std::string("a/b"), std::string("-a"), std::string(33, 'a'),
                                    std::string("homes"), std::string("c_data"), std::string("it's")})
        expect_refused(8, "NewShareName " + name + " is not valid.", "tank", "media", name.c_str());
    expect_refused(8, "NewShareName (null) is not valid.", "tank", "media", nullptr);
}

TEST_F(CopyShare, TheNewNameIsFree)
{
    for (const char *name : {"media", "photos", "Photos"})
        expect_refused(800, "Sharename specified is already exist.", "tank", "media", name);
}

TEST_F(CopyShare, ADataSetOfThatNameStandsInTheWay)
{
    sql("UPDATE share SET zfs_name='tank/films' WHERE id=2");
    expect_refused(5, "Error in 'INSERT share'. (UNIQUE constraint failed: share.zfs_name)", "tank", "media", "films");
}

TEST_F(CopyShare, RowsOfItsNumberStandInTheWay)
{
    sql("INSERT INTO daap_share_option VALUES(1,1),(3,0)");
    expect_refused(5, "Error in 'INSERT daap_share_option'. (UNIQUE constraint failed: daap_share_option.share_id)",
                   "tank", "media", "films");
}

TEST_F(CopyShare, EachStatementThatFailsEndsIt)
{
    add_everything(1);
    int failures = 0;
    const std::string before = content();
    for (;; failures++) {
        id = -1;
        fail_statement(failures + 1);
        const uint32_t rc = copy("tank", "media", "films");
        fail_statement(0);
        if (rc == 0) break;
        EXPECT_EQ(rc, 5u);
        EXPECT_THAT(err.message, HasSubstr("injected")) << failures;
        EXPECT_EQ(id, -1);
        EXPECT_EQ(content(), before);
        EXPECT_THAT(rows("SELECT name FROM sqlite_temp_master"), IsEmpty()) << failures;
    }
    EXPECT_EQ(failures, 4 + 16 * 4);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
