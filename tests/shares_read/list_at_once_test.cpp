// The lists of shares in both of their ways.
#include <regex>
#include <set>

#include "fixture/allocations.h"
#include "fixture/both_ways.h"
#include "shares_read/shares.h"

using namespace test;

namespace {

constexpr int kShares = 24;

struct SharesAtOnce : BothWays<Shares> {
    using List = uint32_t (SharesAtOnce::*)();

    SharesAtOnce()
    {
        sql("BEGIN");
        add_accounts();
        // Names that are equal for the order of a list.
        add_user(104, "ANNA");
        add_user(103, "aNNa");
        sql("INSERT INTO `$group` (id,gname,is_privileged,rid) VALUES(113,'STAFF',0,NULL),(112,'Staff',0,NULL)");
        for (int id = 1; id <= kShares; id++) {
            if (id == 7 || id == 8) continue;
            // Names in another order than ids; the folders of some are there.
            add_share(id, "share" + std::to_string(id * 7 % 100),
                      id % 5 == 0   ? "type='zvol'"
                      : id % 6 == 0 ? "type='subvolume'"
                      : id % 4 == 0 ? "path='" + directory.path + "'"
                                    : "user_id=" + std::to_string(id % 2 ? 100 : 777));
            if (id % 8 != 3) add_everything(id);
            if (id % 3 == 1) take_away(id);
        }
        shuffle();
        sql("COMMIT");
    }

    /// Some of the protocols and lists.
    void take_away(int id)
    {
        const char *const kTables[] = {"cifs_share_option", "afp_share_option",   "nfs_share_option",
                                       "ftp_share_option",  "rsync_share_option", "http_share_option",
                                       "user_acl",          "zvol_share_option"};
        for (size_t i = 0; i < std::size(kTables); i++)
            if ((static_cast<size_t>(id) >> 1 & 7) != i && (static_cast<size_t>(id) + i) % 3 == 0)
                sql(std::string("DELETE FROM ") + kTables[i] + " WHERE share_id=" + std::to_string(id));
    }

    /// More rows for each list, and all rows in an order that is nobody's.
    void shuffle()
    {
        sql("INSERT INTO user_acl SELECT S.id,U.id,P.proto,U.id%2,S.id%2 FROM share S,`$user` U,(SELECT 'cifs' AS "
            "proto "
            "UNION ALL SELECT 'http' UNION ALL SELECT 'ftp') P WHERE U.id IN (103,104) AND S.id%3<>0;"
            "INSERT INTO group_acl SELECT S.id,G.id,'cifs',1,S.id%2 FROM share S,`$group` G WHERE G.id IN (112,113);"
            "INSERT INTO cifs_dfs_option SELECT S.id,'tank','media','f'||N.value,'a'||(N.value*7%5),'r' FROM share S,"
            "json_each('[5,3,4,1,2]') N;"
            "INSERT INTO rsync_user_password_acl SELECT S.id,'u'||N.value,'p' FROM share S,json_each('[5,3,4]') N;"
            "INSERT INTO snapshot_management (share_id,retention_rule,lifetime,schedule) SELECT "
            "S.id,N.value,N.value,'0' "
            "FROM share S,json_each('[9,7,null,8,null]') N;"
            "INSERT INTO host (id,name) VALUES(4,'a'),(3,'b');"
            "INSERT INTO host_acl SELECT S.id,H.id,'nfs',1,0,0 FROM share S,host H WHERE H.id IN (3,4);"
            "INSERT INTO user_quota (user_id,share_id,mb_hard) SELECT U.id,S.id,U.id FROM share S,`$user` U WHERE U.id "
            "IN (101,103,104);"
            "INSERT INTO `$snapshot_clones` (id,cloned_zfs_name,parent_snapshot_name,parent_zfs_name) SELECT "
            "5000+N.value*100+S.id,'c'||N.value,'b',S.name FROM share S,json_each('[2,3,1]') N;"
            "INSERT INTO `$application_on_share` SELECT S.zfs_name,'app'||N.value,'d' FROM share "
            "S,json_each('[2,3,1]') N");
        for (const char *table :
             {"user_acl", "group_acl", "cifs_dfs_option", "rsync_user_password_acl", "snapshot_management", "host_acl",
              "user_quota", "group_quota", "`$application_on_share`", "_user_quota_stat"})
            sql(std::string("CREATE TEMP TABLE shuffled AS SELECT * FROM ") + table +
                " ORDER BY rowid*7919%1009; DELETE FROM " + table + "; INSERT INTO " + table +
                " SELECT * FROM shuffled; DROP TABLE shuffled");
    }

    uint32_t shares_only() { return qbobj_getShareCollection(qbdb, db, &shares, &err); }
    uint32_t with_zvols() { return qbobj_getShareAndZvolCollection(qbdb, db, &shares, &err); }
    uint32_t with_subvolumes() { return qbobj_getSubvolumeShareCollection(qbdb, db, &shares, &err); }
    uint32_t of_a_volume() { return qbobj_queryShare(qbdb, db, "tank", nullptr, nullptr, &shares, &err); }
    uint32_t accessible() { return qbobj_getAccessibleShareCollection(qbdb, db, "anna", "cifs", &shares, &err); }

    auto call(List list)
    {
        return [this, list] {
            shares = {};
            return (this->*list)();
        };
    }
    auto dump()
    {
        return [this] { qbobj_api2_utils_dump_object(qbdb, qbobj_find_type("ShareCollection"), &shares, 0, "f", 1); };
    }
    Outcome expect_list_alike(List list = &SharesAtOnce::with_subvolumes) { return expect_alike(call(list), dump()); }
    std::vector<std::string> statements(Way way)
    {
        return run(way, call(&SharesAtOnce::with_subvolumes), dump()).statements;
    }
};

constexpr SharesAtOnce::List kLists[] = {&SharesAtOnce::shares_only, &SharesAtOnce::with_zvols,
                                         &SharesAtOnce::with_subvolumes, &SharesAtOnce::of_a_volume,
                                         &SharesAtOnce::accessible};

TEST_F(SharesAtOnce, AreTheSame)
{
    for (const char *change :
         {"UPDATE service_ftp SET auth_mode='user'", "UPDATE service_ftp SET auth_mode='anonymous'", "ANALYZE"}) {
        SCOPED_TRACE(change);
        sql(change);
        size_t number = 0;
        for (const List list : kLists) {
            SCOPED_TRACE(number++);
            EXPECT_EQ(expect_list_alike(list).rc, 0u);
            EXPECT_GE(elements(shares.Share).size(), 8u);
        }
    }
    directory_mode();
    EXPECT_EQ(expect_list_alike().rc, 0u);
}

TEST_F(SharesAtOnce, TakeAFewStatements)
{
    const size_t one_by_one = statements(Way::one_by_one).size();
    const size_t at_once = statements(Way::at_once).size();
    EXPECT_GT(one_by_one, 22u * 20);
    EXPECT_LT(at_once, 2u * 34 + 22) << "each statement for the first share and for all, and some names of accounts";
}

/// What each statement reads of a share it reads by the same indexes as for the share alone.
TEST_F(SharesAtOnce, AreReadAsEachIsRead)
{
    EXPECT_EQ(expect_plans_as_alone(statements(Way::at_once), "share"), 31u);
}

TEST_F(SharesAtOnce, BreakOffWhereTheyAlwaysDid)
{
    const struct {
        const char *table, *key, *column, *message;
    } kBroken[] = {
        {"snapshot_schedule", "share_id", "minute", "Failed DB Query for 'SELECT FROM snapshot_schedule'. @"},
        {"snapshot_management", "share_id", "lifetime", "Failed DB Query for 'SELECT FROM snapshot_management'. @"},
        {"cifs_share_option", "share_id", "oplocks", "Failed DB Query for 'SELECT FROM cifs_share_option'. @"},
        {"afp_share_option", "share_id", "available", "Failed DB Query for 'SELECT FROM afp_share_option'. @"},
        {"nfs_share_option", "share_id", "available", "Failed DB Query for 'SELECT FROM nfs_share_option'. @"},
        {"ftp_share_option", "share_id", "ftp_mask", "Failed DB Query for 'SELECT FROM ftp_share_option'. @"},
        {"dlna_share_option", "share_id", "media_type", "Failed DB Query for 'SELECT FROM dlna_share_option'. @"},
        {"daap_share_option", "share_id", "available", "Failed DB Query for 'SELECT FROM daap_share_option'. @"},
        {"rsync_share_option", "share_id", "available", "Failed DB Query for 'SELECT FROM rsync_share_option'. @"},
        {"rsync_user_password_acl", "share_id", "password",
         "Failed DB Query for 'SELECT FROM rsync_user_password_acl'. @"},
        {"http_share_option", "share_id", "http_webdav", "Failed DB Query for 'SELECT FROM http_share_option'. @"},
        {"zvol_share_option", "share_id", "kb_size", "Failed DB Query for 'SELECT FROM zvol_share_option'. @"},
        {"host_acl", "proto='nfs' AND share_id", "root", "Failed DB Query for 'SELECT FROM host,host_acl'. @"},
        {"user_acl", "proto='cifs' AND share_id", "write", "Failed DB Query for 'SELECT user_acl(cifs)'. (@)"},
        {"user_acl", "proto='http' AND share_id", "write", "Failed DB Query for 'SELECT user_acl(http)'. (@)"},
        {"group_acl", "proto='cifs' AND share_id", "write", "Failed DB Query for 'SELECT group_acl(cifs)'. (@)"},
        {"cifs_dfs_option", "share_id", "address", "Failed DB Query for 'SELECT FROM cifs_dfs_option'. @"},
        {"$snapshot_clones", "id%100", "parent_snapshot_name", "Failed DB Query for 'SELECT FROM $snapshot_clones'. @"},
        {"$application_on_share", "app_name='app2' AND (SELECT S.id FROM share S WHERE S.zfs_name=broken.zfs_name)",
         "app_data", "Failed DB Query for 'SELECT FROM $application_on_share'. @"},
        {"user_quota", "share_id", "mb_hard", "Failed DB Query for 'SELECT FROM user_quota'. @"},
        {"group_quota", "share_id", "mb_hard", "Failed DB Query for 'SELECT FROM group_quota'. @"},
    };
    for (const auto &[table, key, column, message] : kBroken) {
        std::set<size_t> lengths;
        for (const int share : {2, 17}) {
            SCOPED_TRACE(std::string(table) + " of " + std::to_string(share));
            const Outcome broken = expect_alike_broken(table, std::string(key) + "=" + std::to_string(share), column,
                                                       call(&SharesAtOnce::with_subvolumes), dump());
            EXPECT_EQ(broken.rc, 5u);
            EXPECT_EQ(broken.message, std::regex_replace(message, std::regex("@"), "integer overflow"));
            lengths.insert(elements(shares.Share).size());
        }
        EXPECT_EQ(lengths.size(), 2u) << "each list breaks off at its own share";
    }
    EXPECT_EQ(expect_list_alike().rc, 0u);
}

TEST_F(SharesAtOnce, FailAsTheyAlwaysDidWithoutATable)
{
    for (const char *table : {"snapshot_schedule",
                              "cifs_share_option",
                              "afp_share_option",
                              "nfs_share_option",
                              "ftp_share_option",
                              "dlna_share_option",
                              "daap_share_option",
                              "rsync_share_option",
                              "rsync_user_password_acl",
                              "http_share_option",
                              "zvol_share_option",
                              "host_acl",
                              "user_acl",
                              "group_acl",
                              "cifs_dfs_option",
                              "$snapshot_clones",
                              "$application_on_share",
                              "user_quota",
                              "_user_quota_stat",
                              "group_quota",
                              "host",
                              "$user",
                              "$group",
                              "_volume"}) {
        SCOPED_TRACE(table);
        const Outcome missing = expect_alike_without(table, call(&SharesAtOnce::with_subvolumes), dump());
        EXPECT_EQ(missing.rc, 5u);
        EXPECT_THAT(missing.message, testing::HasSubstr(table));
    }
}

TEST_F(SharesAtOnce, ALackOfMemoryIsNoticed)
{
    sql("DELETE FROM share WHERE id>8; INSERT INTO share (id,name,zfs_name,type) VALUES(7,'x','tank/x','share'),"
        "(8,'y','tank/y','share')");
    for (const char *proto : {"cifs", "afp", "ftp", "http", "rsync", "zvol", "dlna"})
        sql(std::string("DELETE FROM ") + proto + "_share_option");
    sql("DELETE FROM `$snapshot_clones`; DELETE FROM `$application_on_share`; DELETE FROM user_quota;"
        "DELETE FROM group_quota; DELETE FROM snapshot_management; DELETE FROM snapshot_schedule WHERE share_id<>6;"
        "DELETE FROM nfs_share_option WHERE share_id<6; UPDATE share SET path='/no/such',user_id=NULL,group_id=NULL");
    qbdb->log_level = 0;
    qbdb_set_statement_hook(qbdb, nullptr, nullptr);
    expect_each_allocation_noticed(
        err,
        [this] {
            qbdb_request_begin(qbdb);
            return call(&SharesAtOnce::with_subvolumes)();
        },
        2, nullptr);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
