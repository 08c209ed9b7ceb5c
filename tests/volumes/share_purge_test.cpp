// What goes with a share, and in which order.
#include "shares/share_purge.h"

#include "fixture/fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Every table that holds rows of a share by its number.
constexpr const char *kByNumber[] = {
    "user_acl",          "group_acl",
    "host_acl",          "cifs_share_option",
    "afp_share_option",  "nfs_share_option",
    "ftp_share_option",  "rsync_share_option",
    "dlna_share_option", "daap_share_option",
    "http_share_option", "zvol_share_option",
    "cifs_dfs_option",   "rsync_user_password_acl",
    "snapshot_schedule", "snapshot_management",
    "user_quota",        "group_quota",
    "_user_quota_stat",  "_group_quota_stat",
    "zfs_attr",          "_zfs_stat",
    "process_on_share",
};

struct SharePurge : test::Database {
    SharePurge()
    {
        sql("DELETE FROM snapshot_management; UPDATE service_http SET share_name='media';"
            "INSERT INTO share (id,name,zfs_name,path,volume_id) VALUES(1,'media','tank/media','/tank/media','tank'),"
            "(2,'photos','tank/photos','/tank/photos','tank');"
            "INSERT INTO `$snapshot` (zfs_name,name) VALUES('tank/media','s'),('tank/photos','s');"
            "INSERT INTO `$snapshot_clones` (cloned_zfs_name,parent_snapshot_name,parent_zfs_name) VALUES"
            "('media','s','other'),('other','s','media'),('photos','s','other');"
            "INSERT INTO `$application_on_share` VALUES('tank/media','app',NULL),('tank/photos','app',NULL);"
            "INSERT INTO backup (id,name,src_type,src_share_proto,dst_type,dst_share_proto) VALUES"
            "(1,'from','share','media','usb','x'),(2,'to','usb','x','share','media'),(3,'neither','usb','media','usb','"
            "media'),"
            "(4,'other','share','photos','share','photos')");
        for (const std::string share : {"1", "2"}) {
            for (const char *table : kByNumber) fill(table, share);
            for (const char *protocol : {"cifs", "afp", "nfs", "ftp", "http", "zvol"})
                for (const std::string list : {"user", "group", "host"})
                    sql("INSERT INTO " + list + "_acl (share_id," + list + "_id,proto) VALUES(" + share + ",9,'" +
                        protocol + "')");
            sql("INSERT INTO host_acl (share_id,host_id,proto) VALUES(" + share + ",9,'rsync')");
        }
    }
    void fill(const std::string &table, const std::string &share)
    {
        if (table.ends_with("_acl") && table != "rsync_user_password_acl") return;
        std::string columns = "share_id";
        std::string values = share;
        for (const std::string &name :
             rows("SELECT name FROM pragma_table_info('" + table + "') WHERE \"notnull\"=1 AND name<>'share_id'")) {
            columns += "," + name;
            values += ",5";
        }
        const bool user = table == "user_quota" || table == "_user_quota_stat";
        const bool group = table == "group_quota" || table == "_group_quota_stat";
        if (user && columns.find("user_id") == std::string::npos) columns += ",user_id", values += ",5";
        if (group && columns.find("group_id") == std::string::npos) columns += ",group_id", values += ",5";
        sql("INSERT INTO " + table + " (" + columns + ") VALUES(" + values + ")");
    }
    uint32_t purge(int32_t id)
    {
        qb::CallContext ctx{qbdb, &err};
        err = {};
        sql("BEGIN");
        const uint32_t rc = qb::share_purge(&ctx, db, id);
        sql(rc ? "ROLLBACK" : "COMMIT");
        return rc;
    }
};

TEST_F(SharePurge, TakesEverythingOfTheShareAndNothingOfAnother)
{
    for (const std::string table : kByNumber)
        ASSERT_NE(value("SELECT COUNT(*) FROM " + table + " WHERE share_id=1"), "0") << table;
    ASSERT_EQ(purge(1), 0u);
    for (const std::string table : kByNumber) {
        EXPECT_EQ(value("SELECT COUNT(*) FROM " + table + " WHERE share_id=1"), "0") << table;
        EXPECT_NE(value("SELECT COUNT(*) FROM " + table + " WHERE share_id=2"), "0") << table;
    }
    EXPECT_THAT(rows("SELECT id FROM share"), ElementsAre("2"));
    EXPECT_THAT(rows("SELECT zfs_name FROM `$snapshot`"), ElementsAre("tank/photos"));
    EXPECT_THAT(rows("SELECT cloned_zfs_name FROM `$snapshot_clones`"), ElementsAre("photos"));
    EXPECT_THAT(rows("SELECT zfs_name FROM `$application_on_share`"), ElementsAre("tank/photos"));
    EXPECT_THAT(rows("SELECT name FROM backup"), ElementsAre("neither", "other"));
    EXPECT_EQ(value("SELECT share_name FROM service_http"), "");
    ASSERT_EQ(purge(2), 0u);
    EXPECT_THAT(rows("SELECT name FROM backup"), ElementsAre("neither"));
}

TEST_F(SharePurge, LeavesTheHttpServiceWithAnotherShare)
{
    ASSERT_EQ(purge(2), 0u);
    EXPECT_EQ(value("SELECT share_name FROM service_http"), "media");
}

TEST_F(SharePurge, RunsInItsOrder)
{
    take_statements();
    ASSERT_EQ(purge(1), 0u);
    std::vector<std::string> tables;
    for (const std::string &sql : take_statements()) {
        const size_t from = sql.find("DELETE FROM ");
        if (from == 0) tables.push_back(sql.substr(12, sql.find(' ', 12) - 12));
    }
    std::vector<std::string> expected;
    const auto protocol = [&](const std::string &name) {
        for (const std::string &table : {std::string("user_acl"), std::string("group_acl"), std::string("host_acl"),
                                         "`" + name + "_share_option`", std::string("cifs_dfs_option")})
            expected.push_back(table);
    };
    for (const char *name : {"cifs", "afp", "nfs", "nfs", "ftp"}) protocol(name);
    for (const char *table :
         {"rsync_user_password_acl", "host_acl", "rsync_share_option", "dlna_share_option", "daap_share_option"})
        expected.emplace_back(table);
    for (const char *name : {"http", "zvol"}) protocol(name);
    for (const char *table : {"snapshot_schedule", "snapshot_management", "`$snapshot`", "`$snapshot_clones`",
                              "`$application_on_share`", "user_quota", "group_quota", "_user_quota_stat",
                              "_group_quota_stat", "zfs_attr", "_zfs_stat", "backup", "process_on_share", "share"})
        expected.emplace_back(table);
    EXPECT_EQ(tables, expected);
}

TEST_F(SharePurge, AShareThatIsNotThere)
{
    EXPECT_EQ(purge(4711), 6u);
    EXPECT_STREQ(err.message, "None of row is deleted. May be bad resource_id=4711'");
}

TEST_F(SharePurge, TheFirstFailureEndsIt)
{
    const std::string before = content();
    int failures = 0;
    for (;; failures++) {
        fail_statement(failures + 1);
        const uint32_t rc = purge(1);
        fail_statement(0);
        if (rc == 0) break;
        EXPECT_EQ(rc, 5u);
        EXPECT_THAT(err.message, testing::MatchesRegex("Failed DB Query for .*\\. injected")) << failures;
        EXPECT_EQ(content(), before);
    }
    EXPECT_EQ(failures, 3 + 7 * 5 + 5 + 1 + 3 + 1 + 7 + 1 + 1 + 1);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
