// Random sequences of calls: shares, users, groups, snapshots and jobs come, change and go in any order, and after each
// call the database has to agree with itself.
//
//     QBOBJ_SEQUENCE_SEED=7 QBOBJ_SEQUENCE_CALLS=100000 build/release/tests/test_sequences
#include <algorithm>
#include <iterator>
#include <set>

#include "sequences/player.h"
#include "stress/stress.h"

using namespace test;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

struct Sequences : Player {
    Sequences()
    {
        sql("INSERT INTO _volume (id,lv_name,blk_free) VALUES('pool2','pool2',1000000),('v3','pool three',1000000);"
            "UPDATE _volume SET blk_free=1000000");
    }

    // ---- shares

    void add_share()
    {
        if (atoi(value("SELECT COUNT(*) FROM share").c_str()) > 14) return delete_share();
        const std::string name = new_share_name();
        Json share = {{"ShareName", name}, {"VolumeId", one_in(30) ? "none" : volume()}};
        if (one_in(5)) share["ShareType"] = "zvol";
        if (one_in(8)) share["Path"] = "/media/usb" + std::to_string(below(3)) + "/" + name;
        if (one_in(12)) share["Path"] = "/" + any(rows("SELECT SUBSTR(path,2) FROM share")) + "/" + name;
        if (one_in(2))
            share["Stat"] = {{"User", {{"resource_id", user_id()}}},
                             {"Group", {{"resource_id", group_id()}}},
                             {"UserAccess", access()},
                             {"GroupAccess", access()},
                             {"EveryoneAccess", access()}};
        add_blocks(share);
        call("addShare", {{"share", share}});
    }
    void delete_share()
    {
        Json share = {{"ShareId", share_id()}};
        if (one_in(2)) share["Cifs"] = Json::object();
        call("deleteShare", {{"share", share}});
    }
    void delete_data_set() { call("deleteZvol", {{"zfsName", some("SELECT zfs_name FROM share WHERE type='zvol'")}}); }
    void delete_on_volume()
    {
        if (one_in(8)) call("deleteShareOnVolume", {{"volumeId", volume()}});
    }
    void modify_share()
    {
        const std::string id = share_id();
        Json share = {{"ShareId", id}};
        const std::string name = value("SELECT name FROM share WHERE id=" + std::to_string(atoi(id.c_str())));
        if (one_in(3))
            share["ShareName"] = one_in(6) ? "S" + name.substr(std::min<size_t>(1, name.size())) : new_share_name();
        if (one_in(3)) share["Comment"] = "c" + std::to_string(below(5));
        if (one_in(4)) share["UserQuota"] = account_quotas("SELECT id FROM `$user` WHERE is_privileged=0");
        if (one_in(4)) share["GroupQuota"] = account_quotas("SELECT id FROM `$group` WHERE is_privileged=0");
        if (one_in(4)) share["SnapshotSchedule"] = {{"Enabled", below(2)}, {"Minute", "5"}};
        if (one_in(4)) share["Stat"] = {{"User", {{"resource_id", user_id()}}}, {"UserAccess", access()}};
        if (one_in(2)) add_blocks(share);
        if (call("modifyShare", {{"share", share}}) == 0 && share.contains("ShareName"))
            sql("INSERT OR IGNORE INTO temp.former VALUES('" + name + "')");
    }
    /// Reads a share and writes it back as it is: nothing changes.
    void write_back()
    {
        const std::string id = any(rows("SELECT id FROM share"));
        Share share{};
        share.ShareId = id.c_str();
        EXPECT_EQ(qbdb_request_begin(qbdb), 0);
        if (qbobj_getShare(qbdb, db, &share, &err) != 0) return;
        const std::multiset<std::string> before = stored();
        QbobjValue values[1] = {};
        values[0].p = &share;
        EXPECT_EQ(qbobj_find_operation("modifyShare")->call(qbdb, db, values, &err), 0u) << or_none(err.message);
        last.push_back("write back share " + id);
        EXPECT_EQ(difference(before, stored()), "");
        EXPECT_FALSE(changed(share.Afp) || changed(share.Nfs) || changed(share.Ftp) || changed(share.Http) ||
                     changed(share.Dlna) || changed(share.Daap));
        EXPECT_TRUE(!changed(share.Cifs) || share.Cifs->DfolderAcl);
    }
    template <class Block>
    static bool changed(const Block *block)
    {
        return block && block->Changed;
    }
    static const char *or_none(const char *text) { return text ? text : "(none)"; }
    /// What a share that is read and written back says anew of itself, as table.column.
    static constexpr Kept kSaidAnew[] = {
        {"cifs_dfs_option.share", "DFS links take the name that the share has by now"},
        {"cifs_dfs_option.volume", "DFS links take the volume that the share is on by now"},
        {"rsync_share_option.rsync_access", "readers are told ReadWrite of a closed module"},
        {"service_http.share_name", "the HTTP service does not go on showing a share that is closed to it"},
        {"user_quota.mb_soft", "creating a user does not take the percentage of the hard limit, changing a share does"},
        {"group_quota.mb_soft",
         "changing a group does not take the percentage of the hard limit, changing a share does"},
    };
    /// All other values, row by row without the rows' numbers: a list that is written anew is the same list.
    std::multiset<std::string> stored() const
    {
        std::string kept;
        for (const Kept &each : kSaidAnew) kept += (kept.empty() ? "'" : ",'") + std::string(each.column) + "'";
        std::multiset<std::string> all;
        for (const std::string &table : rows("SELECT name FROM sqlite_schema WHERE type='table'")) {
            const std::string columns = value("SELECT group_concat('`'||name||'`') FROM pragma_table_info('" + table +
                                              "') WHERE '" + table + ".'||name NOT IN (" + kept + ")");
            for (const std::string &row : rows("SELECT " + columns + " FROM `" + table + "`"))
                all.insert(table + " " + row);
        }
        return all;
    }
    /// Rows of one set that are not in the other, and the other way round.
    static std::string difference(const std::multiset<std::string> &before, const std::multiset<std::string> &after)
    {
        std::vector<std::string> gone;
        std::vector<std::string> come;
        std::set_difference(before.begin(), before.end(), after.begin(), after.end(), std::back_inserter(gone));
        std::set_difference(after.begin(), after.end(), before.begin(), before.end(), std::back_inserter(come));
        std::string text;
        for (const std::string &row : gone) text += "\n- " + row;
        for (const std::string &row : come) text += "\n+ " + row;
        return text;
    }
    void modify_block_volume()
    {
        const std::string name = any(rows("SELECT name FROM share WHERE type='zvol' AND path='/'||zfs_name"));
        const std::string data_set = value("SELECT zfs_name FROM share WHERE name='" + name + "'");
        call("modifyZvol",
             {{"zfsName", data_set}, {"shareName", name}, {"comment", "c"}, {"sizeKB", 9}, {"isSparse", 1}});
    }
    void modify_shown_folder() { call("modifyShareVisibleSnapFolder", {{"zfsName", data_set()}, {"folder", ".snap"}}); }
    void modify_schedule()
    {
        call("modifyShareSnapshotSchedule",
             {{"shareName", share_name()}, {"schedule", {{"Enabled", 1}, {"Hour", "3"}}}});
    }
    Json application() { return {{"AppName", "a" + std::to_string(below(3))}}; }
    std::string data_set_that_is() { return any(rows("SELECT zfs_name FROM share")); }
    void use()
    {
        if (one_in(3)) call("modifyShareUsedByExclusive", {{"zfsName", data_set_that_is()}, {"usedby", application()}});
        else if (one_in(2)) call("modifyShareUsedBy", {{"shareId", share_id()}, {"usedby", application()}});
        else if (value("SELECT COUNT(*) FROM share") != "0")
            call("addShareUsedBy", {{"zfsName", data_set_that_is()}, {"usedby", application()}});
    }
    void leave()
    {
        const std::string used = any(rows("SELECT zfs_name||'|'||app_name FROM `$application_on_share`"));
        const size_t bar = used.find('|');
        call("deleteShareUsedBy", {{"zfsName", used.substr(0, bar)},
                                   {"usedby", {{"AppName", bar == std::string::npos ? "a" : used.substr(bar + 1)}}}});
    }
    void hold() { call("addShareProcess", {{"zfsName", data_set()}, {"pid", below(5) + 1}, {"blocking", below(2)}}); }
    void release() { call("deleteShareProcess", {{"zfsName", data_set()}, {"pid", below(5)}}); }
    void begin_migration() { call("preMigrateShare", {{"zfsName", data_set()}, {"destVolumeId", volume()}}); }
    void end_migration()
    {
        const std::string marked = "SELECT zfs_name FROM share WHERE migrate_to_volume_id IS NOT NULL";
        call("postMigrateShare", {{"zfsName", one_in(10) ? data_set() : some(marked)}, {"success", below(2)}});
    }
    void copy_share()
    {
        const std::string name = share_name();
        const std::string on =
            value("SELECT V.lv_name FROM share S INNER JOIN _volume V ON V.id=S.volume_id WHERE S.name='" + name + "'");
        call("copyShare",
             {{"volumeName", one_in(20) ? "tank" : on}, {"shareName", name}, {"newShareName", new_share_name()}});
    }
    /// What the storage side measures of shares and quotas.
    void measure()
    {
        sql("INSERT OR REPLACE INTO _zfs_stat (share_id,used) SELECT id,1048576 FROM share;"
            "INSERT OR REPLACE INTO _user_quota_stat (share_id,user_id,mb_used) SELECT share_id,user_id,1 FROM "
            "user_quota;"
            "INSERT OR REPLACE INTO _group_quota_stat (share_id,group_id,mb_used) SELECT share_id,group_id,1 FROM "
            "group_quota");
    }

    // ---- snapshots

    std::string place_of(const std::string &name)
    {
        return value("SELECT V.lv_name FROM share S INNER JOIN _volume V ON V.id=S.volume_id WHERE S.name='" + name +
                     "'");
    }
    void add_snapshot()
    {
        const std::string name = share_name();
        call("addSnapshot", {{"snapshot",
                              {{"ShareName", name},
                               {"VolumeName", place_of(name)},
                               {"Type", below(3) + 1},
                               {"SnapshotName", "t" + std::to_string(below(9))},
                               {"CreatedOn", below(999)}}}});
    }
    void delete_snapshot()
    {
        const std::string name = some("SELECT name FROM share WHERE zfs_name IN (SELECT zfs_name FROM `$snapshot`)");
        Json given = {{"volumeName", place_of(name)}, {"shareName", name}, {"deleteNewer", 0}, {"time", 0}};
        if (one_in(2)) given["snapshotName"] = "t" + std::to_string(below(9));
        call("deleteSnapshot", given);
    }
    void add_clone()
    {
        if (value("SELECT COUNT(*) FROM share") == "0") return;
        call("addSnapshotClone", {{"clonedzfsName", any(rows("SELECT name FROM share"))},
                                  {"parentSnapshotName", "t1"},
                                  {"parentzfsName", any(rows("SELECT name FROM share"))}});
    }
    void delete_clone() { call("deleteSnapshotClone", {{"clonedzfsName", share_name()}}); }

    // ---- accounts

    void add_user()
    {
        if (atoi(value("SELECT COUNT(*) FROM `$user` WHERE is_privileged=0").c_str()) > 10) return delete_user();
        // A group can never go once it was somebody's first.
        Json user = {{"UserName", new_name("u", user_name())}, {"GroupName", one_in(5) ? group_name() : "users"}};
        if (one_in(2)) user["UserQuota"] = quotas();
        if (one_in(4)) user["TimeMachineQuota"] = {{"Enabled", 1}, {"CapacityMB", 5}};
        call("addUser", {{"user", user}});
    }
    void modify_user()
    {
        Json user = {{"resource_id", user_id()}};
        if (one_in(3)) user["UserName"] = new_name("u", user_name());
        if (one_in(9)) user["GroupName"] = group_name();
        if (one_in(2)) user["UserQuota"] = quotas();
        call("modifyUser", {{"user", user}});
    }
    void delete_user()
    {
        if (one_in(3)) call("deleteUserByName", {{"user", {{"UserName", user_name()}}}});
        else call("deleteUser", {{"user", {{"resource_id", user_id()}}}});
    }
    void set_primary_group()
    {
        call("setPrimaryGroupByName", {{"userName", user_name()}, {"groupName", one_in(5) ? group_name() : "users"}});
    }
    Json members()
    {
        Json all = Json::array();
        for (const std::string &id : several("SELECT id FROM `$user` WHERE is_privileged=0", 3))
            all.push_back(
                {{"UserId", atoi(id.c_str())}, {"UserName", value("SELECT uname FROM `$user` WHERE id=" + id)}});
        return all;
    }
    void add_group()
    {
        if (atoi(value("SELECT COUNT(*) FROM `$group` WHERE is_privileged=0").c_str()) > 20) return delete_group();
        Json group = {{"GroupName", new_name("g", group_name())}, {"SecondaryMember", members()}};
        if (one_in(2)) group["GroupQuota"] = quotas();
        call("addGroup", {{"group", group}});
    }
    void modify_group()
    {
        Json group = {{"resource_id", group_id()}, {"SecondaryMember", members()}};
        if (one_in(3)) group["GroupName"] = new_name("g", group_name());
        if (one_in(2)) group["GroupQuota"] = quotas();
        call("modifyGroup", {{"group", group}});
    }
    void delete_group() { call("deleteGroup", {{"group", {{"resource_id", group_id()}}}}); }

    // ---- jobs and services that name shares

    Json side()
    {
        return {{"Type", "share"}, {"ShareNameOrProtocol", any(rows("SELECT name FROM share"))}, {"Path", "/"}};
    }
    void add_job()
    {
        if (value("SELECT COUNT(*) FROM share") == "0") return;
        Json usb = {{"Type", "usb"}, {"ShareNameOrProtocol", "1"}, {"Path", "/"}};
        Json job = {{"JobName", "j" + std::to_string(below(12))},
                    {"Source", side()},
                    {"Destination", usb},
                    {"Schedule", {{"Enabled", 1}}},
                    {"Option", Json::object()}};
        if (one_in(2)) std::swap(job["Source"], job["Destination"]);
        if (one_in(3)) job["Source"] = side();
        call("addBackupJob", {{"job", job}});
    }
    void delete_job()
    {
        call("deleteBackupJob", {{"job", {{"JobId", atoi(any(rows("SELECT id FROM backup")).c_str())}}}});
    }
    void show_share()
    {
        if (value("SELECT COUNT(*) FROM share") == "0") return;
        const Json options = {{"ShareName", any(rows("SELECT name FROM share"))}};
        call("setProtocolCollection", {{"collection", {{"Protocol", {{{"key", "http"}, {"HttpOptions", options}}}}}}});
    }

    struct Move {
        int weight;
        void (Sequences::*make)();
        const char *needs;  // an operation
    };
    static constexpr Move kMoves[] = {
        {12, &Sequences::add_share, nullptr},
        {10, &Sequences::modify_share, "modifyShare"},
        {4, &Sequences::write_back, "modifyShare"},
        {2, &Sequences::modify_block_volume, "modifyZvol"},
        {2, &Sequences::modify_shown_folder, "modifyShareVisibleSnapFolder"},
        {2, &Sequences::modify_schedule, "modifyShareSnapshotSchedule"},
        {5, &Sequences::delete_share, nullptr},
        {1, &Sequences::delete_data_set, nullptr},
        {1, &Sequences::delete_on_volume, nullptr},
        {3, &Sequences::use, "modifyShareUsedBy"},
        {8, &Sequences::leave, nullptr},
        {3, &Sequences::hold, nullptr},
        {2, &Sequences::release, nullptr},
        {5, &Sequences::begin_migration, nullptr},
        {5, &Sequences::end_migration, nullptr},
        {4, &Sequences::copy_share, nullptr},
        {2, &Sequences::measure, nullptr},
        {6, &Sequences::add_snapshot, nullptr},
        {3, &Sequences::delete_snapshot, nullptr},
        {3, &Sequences::add_clone, nullptr},
        {1, &Sequences::delete_clone, nullptr},
        {5, &Sequences::add_user, nullptr},
        {5, &Sequences::modify_user, nullptr},
        {3, &Sequences::delete_user, nullptr},
        {2, &Sequences::set_primary_group, nullptr},
        {4, &Sequences::add_group, nullptr},
        {4, &Sequences::modify_group, nullptr},
        {3, &Sequences::delete_group, nullptr},
        {4, &Sequences::add_job, nullptr},
        {1, &Sequences::delete_job, nullptr},
        {1, &Sequences::show_share, nullptr},
    };

    void play_one()
    {
        unsigned total = 0;
        for (const Move &move : kMoves) total += static_cast<unsigned>(move.weight);
        unsigned at = below(total);
        for (const Move &move : kMoves) {
            if (at >= static_cast<unsigned>(move.weight)) at -= static_cast<unsigned>(move.weight);
            else return !move.needs || qbobj_find_operation(move.needs) ? (this->*move.make)() : add_share();
        }
    }
    std::string history() const
    {
        std::string text;
        for (const std::string &each : last) text += "\n  " + each;
        return text;
    }
};

TEST_F(Sequences, TheDatabaseAgreesWithItselfAfterEachCall)
{
    const long calls = stress::amount("QBOBJ_SEQUENCE_CALLS", 10000, 3000);
    const auto seed = static_cast<uint32_t>(stress::amount("QBOBJ_SEQUENCE_SEED", 20241121, 20241121));
    printf("QBOBJ_SEQUENCE_SEED=%u QBOBJ_SEQUENCE_CALLS=%ld\n", seed, calls);
    random.seed(seed);
    const Invariants invariants(*this);
    for (long i = 1; i <= calls && !HasFailure(); i++) {
        play_one();
        EXPECT_THAT(invariants.broken(), IsEmpty());
        if (i % 500 == 0 || i == calls) {
            EXPECT_EQ(value("PRAGMA integrity_check"), "ok");
            EXPECT_THAT(rows("PRAGMA foreign_key_check"), IsEmpty());
        }
        if (HasFailure()) ADD_FAILURE() << "after call " << i << " of seed " << seed << ":" << history();
    }
    for (const auto &[name, count] : succeeded) printf("%6d %s\n", count, name.c_str());
    for (const auto &[name, count] : refused) printf("%6d %s\n", count, name.c_str());
}

// ---- what the invariants see

TEST_F(Sequences, ANumberThatIsGoneIsSeenInEachTable)
{
    const Invariants invariants(*this);
    EXPECT_THAT(invariants.broken(), IsEmpty()) << "a fresh database agrees";
    EXPECT_GT(invariants.columns.size(), 30u);
    for (const std::string &column : invariants.columns) {
        const size_t dot = column.find('.');
        const std::string table = column.substr(0, dot);
        const std::string name = column.substr(dot + 1);
        std::string names = "`" + name + "`";
        std::string values = "4711";
        for (const std::string &other : rows("SELECT name FROM pragma_table_info('" + table +
                                             "') WHERE (\"notnull\"=1 OR pk>0) AND name<>'" + name + "'"))
            names += ",`" + other + "`", values += ",4712";
        sql("SAVEPOINT planted; INSERT INTO `" + table + "` (" + names + ") VALUES(" + values + ")");
        EXPECT_THAT(invariants.broken(), Contains(table + " names " + name + " 4711"));
        sql("ROLLBACK TO planted; RELEASE planted");
    }
}

TEST_F(Sequences, EveryRuleSeesWhatItIsFor)
{
    const Invariants invariants(*this);
    ASSERT_EQ(call("addShare", {{"share", {{"ShareName", "media"}, {"VolumeId", "tank"}}}}), 0u);
    ASSERT_EQ(call("addShare", {{"share", {{"ShareName", "films"}, {"VolumeId", "v3"}}}}), 0u);
    ASSERT_EQ(call("preMigrateShare", {{"zfsName", "tank/media"}, {"destVolumeId", "v3"}}), 0u);
    ASSERT_EQ(call("postMigrateShare", {{"zfsName", "tank/media"}, {"success", 1}}), 0u);
    EXPECT_THAT(invariants.broken(), IsEmpty());
    struct Case {
        const char *planted;
        const char *seen;
    };
    const Case cases[] = {
        {"INSERT INTO `$snapshot` (zfs_name,name) VALUES('tank/media','s')", "$snapshot names data set tank/media"},
        {"INSERT INTO `$application_on_share` VALUES('tank/media','a',NULL)", "$application_on_share names data set"},
        {"INSERT INTO `$snapshot_clones` (cloned_zfs_name,parent_zfs_name) VALUES('gone','media')", "names clone gone"},
        {"INSERT INTO `$snapshot_clones` (cloned_zfs_name,parent_zfs_name) VALUES('media','gone')",
         "names parent gone"},
        {"INSERT INTO backup (name,src_type,src_share_proto) VALUES('j','share','gone')", "backup reads share gone"},
        {"INSERT INTO backup (name,dst_type,dst_share_proto) VALUES('j','share','gone')", "backup writes share gone"},
        {"UPDATE service_http SET share_name='gone'", "service_http shows share gone"},
        {"UPDATE share SET volume_id='gone' WHERE name='films'", "share films lies on volume gone"},
        {"UPDATE share SET volume_id=NULL WHERE name='films'", "share films lies on volume NULL"},
        {"UPDATE share SET path=NULL WHERE name='films'", "share films at NULL has data set"},
        {"UPDATE share SET path='/v3/media' WHERE name='films'", "share films at /v3/media has data set"},
        {"UPDATE share SET zfs_name='v3/other' WHERE name='media'", "share media at /pool three/media has data set"},
        {"UPDATE share SET name='other' WHERE name='films'", "share other does not end its path"},
        {"DELETE FROM zfs_attr WHERE share_id=1", "share media has no attributes"},
        {"DELETE FROM snapshot_schedule WHERE share_id=1", "share media has no schedule"},
        {"DELETE FROM snapshot_management WHERE share_id=1", "share media has no policy"},
        {"UPDATE share SET migrate_to_volume_id='tank'", "2 shares migrate"},
        {"CREATE TEMP TABLE left (a)", "there is a table left"},
        {"CREATE TABLE _modify_cifs_host (a)", "there is a table _modify_cifs_host"},
    };
    for (const Case &each : cases) {
        sql(std::string("SAVEPOINT planted; ") + each.planted);
        EXPECT_THAT(invariants.broken(), Contains(HasSubstr(each.seen))) << each.planted;
        sql("ROLLBACK TO planted; RELEASE planted");
        EXPECT_THAT(invariants.broken(), IsEmpty()) << each.planted;
    }
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
