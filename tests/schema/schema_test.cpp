// A fresh database: its tables and columns, the rows it starts with, and an index for each look-up.
#include <gtest/gtest-spi.h>

#include <set>

#include "fixture/files.h"
#include "fixture/fixture.h"
#include "fixture/plans.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Schema : test::Database {
    std::vector<std::string> tables() const
    {
        return rows(
            "SELECT name FROM sqlite_schema WHERE type='table' AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\' "
            "ORDER BY name");
    }
};

TEST_F(Schema, TablesAndColumnsAreListed)
{
    std::string text;
    for (const std::string &table : tables()) {
        text += table + "\n";
        for (const std::string &column :
             rows("SELECT name||' '||type||CASE WHEN pk THEN ' key '||pk ELSE '' END||CASE WHEN \"notnull\" THEN ' not "
                  "null' ELSE '' END||IFNULL(' default '||dflt_value,'') FROM pragma_table_info('" +
                  table + "') ORDER BY cid"))
            text += "    " + column + "\n";
        for (const std::string &index :
             rows("SELECT CASE \"unique\" WHEN 1 THEN 'unique' ELSE 'index' END||' ('||(SELECT GROUP_CONCAT(name,', ') "
                  "FROM (SELECT name FROM pragma_index_info(L.name) ORDER BY seqno))||')'||CASE partial WHEN 1 THEN ' "
                  "partial' ELSE '' END FROM pragma_index_list('" +
                  table + "') L WHERE origin<>'pk' ORDER BY 1"))
            text += "    " + index + "\n";
    }
    test::expect_golden("tests/schema/tables.txt", text);
}

TEST_F(Schema, IsWhole)
{
    EXPECT_THAT(rows("PRAGMA integrity_check"), ElementsAre("ok"));
    EXPECT_THAT(rows("PRAGMA foreign_key_check"), IsEmpty());
    EXPECT_EQ(value("PRAGMA user_version"), std::to_string(QBDB_SCHEMA_VERSION));
    EXPECT_EQ(value("PRAGMA journal_mode"), "wal");
    EXPECT_EQ(value("PRAGMA synchronous"), "2");
}

TEST_F(Schema, HasNoForeignKeysTriggersOrViews)
{
    for (const std::string &table : tables())
        EXPECT_THAT(rows("SELECT * FROM pragma_foreign_key_list('" + table + "')"), IsEmpty()) << table;
    EXPECT_THAT(rows("SELECT name FROM sqlite_schema WHERE type NOT IN ('table','index')"), IsEmpty());
}

TEST_F(Schema, ColumnsAreIntegersOrTexts)
{
    // Numbers must not be stored in a column of texts: they would compare as texts.
    for (const std::string &table : tables())
        EXPECT_THAT(
            rows("SELECT name,type FROM pragma_table_info('" + table + "') WHERE type NOT IN ('INTEGER','TEXT')"),
            IsEmpty())
            << table;
    EXPECT_EQ(value("SELECT type FROM pragma_table_info('$log') WHERE name='tstamp'"), "INTEGER");
}

TEST_F(Schema, SettingsTablesHaveOneRow)
{
    for (const std::string &table : test::single_row_tables())
        EXPECT_EQ(value("SELECT COUNT(*) FROM \"" + table + "\""), "1") << table;
}

TEST_F(Schema, OnlyTheFactoryTablesHaveRows)
{
    std::set<std::string> filled(test::single_row_tables().begin(), test::single_row_tables().end());
    for (const char *table : {"$group", "$home_folder_snapshot_schedule", "$user", "_dictionary", "_lang_supported",
                              "_volume", "backup_protocol", "service_misc", "snapshot_management"})
        filled.insert(table);
    for (const std::string &table : tables())
        EXPECT_EQ(value("SELECT EXISTS(SELECT 1 FROM \"" + table + "\")"), filled.count(table) ? "1" : "0") << table;
}

TEST_F(Schema, FixedUsers)
{
    EXPECT_THAT(rows("SELECT id,uname,group_id,is_privileged,rid FROM `$user` ORDER BY id"),
                ElementsAre("0|root|98|1|NULL", "96|Quillbox|99|1|NULL", "98|admin|98|1|NULL",
                            "65533|guest|65533|1|NULL", "65534|nobody|65534|1|NULL"));
    // No password matches any of them, and no home folder is the empty path.
    EXPECT_THAT(rows("SELECT DISTINCT passwd FROM `$user`"), ElementsAre("*"));
    EXPECT_THAT(rows("SELECT uname FROM `$user` WHERE home=''"), IsEmpty());
    // Their primary groups exist.
    EXPECT_THAT(rows("SELECT uname FROM `$user` WHERE group_id NOT IN (SELECT id FROM `$group`)"), IsEmpty());
}

TEST_F(Schema, FixedGroups)
{
    EXPECT_THAT(
        rows("SELECT id,gname,rid FROM `$group` ORDER BY id"),
        ElementsAre("97|sky-loft|NULL", "98|admin|NULL", "99|users|NULL", "65533|guest|NULL", "65534|nogroup|NULL"));
    EXPECT_EQ(value("SELECT group_membership FROM account_default"),
              value("SELECT gname FROM `$group` WHERE id=(SELECT group_id FROM account_default)"));
}

TEST_F(Schema, RowsThatAreOnlyEverUpdatedAreThere)
{
    EXPECT_EQ(value("SELECT COUNT(*) FROM snapshot_management WHERE share_id=0"), "1");
    EXPECT_EQ(value("SELECT COUNT(*) FROM `$home_folder_snapshot_schedule`"), "1");
    EXPECT_EQ(value("SELECT security FROM service_cifs"), "user");
    EXPECT_EQ(value("SELECT val FROM service_misc WHERE key='GLASSDECKLOCALE'"), "auto");
    EXPECT_EQ(value("SELECT val FROM service_misc WHERE key='WIDGETRY'"), "0");
    // A mirrored setting names a column that exists, and agrees with it.
    for (const std::string &row :
         rows("SELECT key,table_name,column_name FROM service_misc WHERE table_name IS NOT NULL")) {
        const size_t first = row.find('|');
        const size_t second = row.rfind('|');
        const std::string key = row.substr(0, first);
        EXPECT_EQ(value("SELECT " + row.substr(second + 1) + " FROM " + row.substr(first + 1, second - first - 1)),
                  value("SELECT val FROM service_misc WHERE key='" + key + "'"))
            << row;
    }
}

TEST_F(Schema, TheNamedVolumeIsThereAndTakesTheHomes)
{
    EXPECT_THAT(rows("SELECT id,lv_name FROM _volume"), ElementsAre("tank|tank"));
    EXPECT_EQ(value("SELECT home_volume_id FROM account_default"), "tank");
}

TEST_F(Schema, LogNumbersAreNotGivenTwice)
{
    sql("INSERT INTO `$log` (tstamp) VALUES(1),(2); DELETE FROM `$log`; INSERT INTO `$log` (tstamp) VALUES(3)");
    EXPECT_EQ(value("SELECT id FROM `$log`"), "3");
}

// ---- Indexes

struct LookUp {
    const char *index;
    const char *statement;
};

// For each index a look-up that it is there for. Statements of operations where these exist already.
const LookUp kLookUps[] = {
    {"idx_log_tstamp",
     "DELETE FROM `$log` WHERE tstamp < (SELECT tstamp FROM `$log` ORDER BY tstamp DESC LIMIT 1 OFFSET 100)"},
    {"idx_log_msg_tag", "SELECT COUNT(*) FROM `$log` L WHERE msg_tag='LOGMSG_A'"},
    {"idx_user_group_id", "SELECT EXISTS(SELECT * FROM `$user` U WHERE U.group_id=100)"},
    {"idx_user_home", "SELECT 1 FROM `$user` U WHERE U.home='/home/anna'"},
    {"idx_user_listed",
     "SELECT COUNT(*) FROM `$user` U WHERE (U.is_privileged=0 AND U.group_id<>98 AND U.rid IS NULL AND "
     "U.uname<>'nobody' AND U.uname<>'guest' AND U.group_id<>97)"},
    {"idx_group_has_user_group_id", "DELETE FROM `$group_has_user` WHERE group_id=100"},
    {"idx_user_quota_share_id", "DELETE FROM user_quota WHERE share_id=1"},
    {"idx_group_quota_share_id", "DELETE FROM group_quota WHERE share_id=1"},
    {"idx_user_quota_stat_user_id", "DELETE FROM _user_quota_stat WHERE user_id=100"},
    {"idx_group_quota_stat_group_id", "DELETE FROM _group_quota_stat WHERE group_id=100"},
    {"idx_ssh_public_key_user_id_key", "SELECT id FROM ssh_public_key WHERE user_id=98 AND key='AAAA'"},
    {"idx_smb_username_map_unix_uname", "SELECT COUNT(*) FROM smb_username_map WHERE unix_uname='anna' AND type='x'"},
    {"idx_smb_username_map_smb_uname", "SELECT unix_uname FROM 'smb_username_map' WHERE smb_uname='Anna' limit 1"},
    {"idx_share_path", "SELECT id FROM share WHERE path='/tank/media'"},
    {"idx_share_volume_id", "SELECT name FROM share WHERE volume_id='tank'"},
    {"idx_share_migrate_to_volume_id", "SELECT COUNT(*) FROM share WHERE migrate_to_volume_id IS NOT NULL"},
    {"idx_cifs_dfs_option_share_id", "DELETE FROM cifs_dfs_option WHERE share_id=1"},
    {"idx_user_acl_user_id", "DELETE FROM user_acl WHERE user_id=100"},
    {"idx_application_on_share_app_name", "SELECT zfs_name FROM `$application_on_share` WHERE app_name='iscsi'"},
    {"idx_disk_info_controller_channel", "SELECT id FROM `$disk_info` WHERE controller=1 ORDER BY channel"},
    {"idx_disk_port_controller_port", "SELECT * FROM disk_port WHERE controller=1 AND port=2"},
    {"idx_disk_enclosure_controller", "SELECT * FROM _disk_enclosure WHERE controller=1"},
    {"idx_jbod_port_controller_label", "SELECT * FROM jbod_port WHERE controller=1 ORDER BY label"},
    {"idx_snapshot_zfs_name_type", "SELECT COUNT(*) FROM `$snapshot` WHERE zfs_name='tank/media' AND type=1"},
    {"idx_snapshot_zfs_name_created_on", "SELECT * FROM `$snapshot` WHERE zfs_name='tank/media' ORDER BY created_on"},
    {"idx_snapshot_created_on", "SELECT * FROM `$snapshot` WHERE created_on>5 AND created_on<9"},
    {"idx_home_folder_snapshot_user_name", "DELETE FROM `$home_folder_snapshot` WHERE user_name='anna'"},
    {"idx_home_folder_snapshot_home_dir_created_on",
     "SELECT * FROM `$home_folder_snapshot` WHERE home_dir='/home/anna' AND created_on>5"},
    {"idx_home_folder_snapshot_created_on", "SELECT * FROM `$home_folder_snapshot` WHERE created_on>5"},
    {"idx_snapshot_clones_cloned_zfs_name", "SELECT * FROM `$snapshot_clones` WHERE cloned_zfs_name='copy'"},
    {"idx_snapshot_clones_parent_zfs_name", "SELECT * FROM `$snapshot_clones` WHERE parent_zfs_name='media'"},
    {"idx_snapshot_clones_parent_snapshot_name", "SELECT * FROM `$snapshot_clones` WHERE parent_snapshot_name='s1'"},
    {"idx_iscsi_lun_group_access_lun_group", "DELETE FROM `$iscsi_lun_group_access` WHERE lun_group='g'"},
    {"idx_iscsi_lun_group_access_initiator", "DELETE FROM `$iscsi_lun_group_access` WHERE initiator='i'"},
    {"idx_volume_schedule_job_id", "DELETE FROM volume_schedule WHERE job_id=1"},
    {"idx_volume_schedule_volume_id", "DELETE FROM volume_schedule WHERE volume_id='tank'"},
    {"idx_backup_name", "SELECT id FROM backup WHERE name='nightly'"},
    {"idx_backup_src_share_proto", "DELETE FROM backup WHERE src_share_proto='media'"},
    {"idx_backup_dst_share_proto", "DELETE FROM backup WHERE dst_share_proto='media'"},
    {"idx_backup_button_jobs_order", "SELECT backup_id FROM backup_button_jobs ORDER BY `order`"},
    {"idx_backup_button_jobs_backup_id", "DELETE FROM backup_button_jobs WHERE backup_id=1"},
};

TEST_F(Schema, EachIndexServesALookUp)
{
    for (const LookUp &each : kLookUps) {
        const auto steps = test::plan(db, each.statement);
        EXPECT_THAT(steps, testing::Contains(testing::HasSubstr(each.index))) << each.statement;
    }
}

TEST_F(Schema, NoIndexIsWithoutALookUp)
{
    std::vector<std::string> served;
    for (const LookUp &each : kLookUps) served.push_back(each.index);
    EXPECT_THAT(rows("SELECT name FROM sqlite_schema WHERE type='index' AND sql IS NOT NULL"),
                testing::UnorderedElementsAreArray(served));
}

TEST_F(Schema, KeysServeLookUps)
{
    // Nothing but the keys that the tables have anyway.
    test::expect_indexed(
        db,
        {
            "SELECT id FROM `$user` WHERE uname='anna' AND rid IS NULL",
            "SELECT id FROM `$group` WHERE gname='users' AND rid IS NULL",
            "SELECT id FROM share WHERE name='media'",
            "SELECT id FROM share WHERE zfs_name='tank/media'",
            "SELECT id FROM _volume WHERE id='tank'",
            "SELECT rowid FROM `$iscsi_lun` WHERE name='a'",
            "SELECT rowid FROM `$iscsi_lun_group` WHERE name='a'",
            "SELECT rowid FROM `$iscsi_initiator` WHERE name='a'",
            "SELECT val FROM service_misc WHERE key='LANGUAGE'",
            "SELECT value FROM `$registry` WHERE key='a'",
            "SELECT str FROM _dictionary WHERE lang_id=1 AND id='ok'",
            "SELECT ip FROM network_if WHERE name='eth0'",
            "SELECT * FROM `$home_folder` H,`_hf_zfs_stat` S WHERE H.user_id=5 AND S.user_id=H.user_id",
            "SELECT S.zfs_name,Q.mb_hard,QS.mb_used FROM user_quota Q INNER JOIN share S ON S.id=Q.share_id LEFT JOIN "
            "_user_quota_stat QS ON QS.share_id=Q.share_id AND QS.user_id=Q.user_id WHERE Q.user_id=100",
        });
}

// ---- The check of plans itself

TEST_F(Schema, APlanCheckSeesAScan)
{
    const auto scanned = [this](const std::string &statement) {
        std::vector<std::string> names;
        for (const test::Scan &scan : test::scans(db, {statement})) names.push_back(scan.table);
        return names;
    };
    EXPECT_THAT(scanned("SELECT * FROM `$user` U WHERE U.email='x'"), ElementsAre("$user"));
    EXPECT_THAT(scanned("SELECT * FROM '$user' AS People WHERE fullname='x'"), ElementsAre("$user"));
    EXPECT_THAT(scanned("UPDATE share SET comment='' WHERE comment='x'"), ElementsAre("share"));
    EXPECT_THAT(scanned("DELETE FROM `$log` WHERE severity='info'"), ElementsAre("$log"));
    EXPECT_THAT(scanned("SELECT * FROM share S,`$user` U WHERE S.name='x' AND U.fullname=S.comment"),
                ElementsAre("$user"));
    EXPECT_THAT(scanned("SELECT * FROM `$user` WHERE id=5"), IsEmpty());
    EXPECT_THAT(scanned("UPDATE service_ssh SET port=22"), IsEmpty());  // one row
    EXPECT_THAT(scanned("BEGIN IMMEDIATE"), IsEmpty());
    EXPECT_THAT(scanned("INSERT INTO `$registry` VALUES('a','b')"), IsEmpty());
}

TEST_F(Schema, APlanCheckFailsUnlessTheScanIsAllowed)
{
    static sqlite3 *connection;
    static std::vector<std::string> statements;
    connection = db;
    statements = {"SELECT * FROM `$user` U WHERE U.email='x'"};
    EXPECT_NONFATAL_FAILURE(test::expect_indexed(connection, statements), "reads all of $user");
    EXPECT_NONFATAL_FAILURE(test::expect_indexed(connection, statements, {{"share", "", "another table"}}),
                            "reads all of");
    EXPECT_NONFATAL_FAILURE(
        test::expect_indexed(connection, statements, {{"$user", "U.fullname", "another statement"}}), "reads all of");
    test::expect_indexed(connection, statements, {{"$user", "U.email", "asked for once a year"}});
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
