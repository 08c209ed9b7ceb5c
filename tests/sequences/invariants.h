// What holds in the database after any sequence of calls: one query finds whatever contradicts it.
//
// The tables that name a share, a user or a group by number are read off the schema, so that one that comes later is
// looked at by itself.
#pragma once

#include <string>
#include <vector>

#include "fixture/fixture.h"

namespace test {

/// A column that may name what is gone, and why.
struct Kept {
    const char *column;  // table.column
    const char *reason;
};

inline constexpr Kept kMayNameWhatIsGone[] = {
    {"share.user_id", "a folder keeps its owner's number, and readers tell it"},
    {"share.group_id", "a folder keeps its group's number, and readers tell none"},
    {"$user.group_id", "a user is put into a group by its name, which a removed group keeps"},
    {"group_acl.group_id", "removing a group leaves the access lists alone"},
    {"snapshot_management.share_id=0", "number 0 stands for the home folders"},
    {"$home_folder_snapshot_schedule.share_id=0", "number 0 stands for the home folders"},
    {"ssh_public_key.user_id=0", "root has the twins of the administrator's keys"},
    {"cifs_dfs_option.share", "DFS links keep the name that the share had when they were written"},
    {"cifs_dfs_option.volume", "DFS links keep the volume that the share was on when they were written"},
    {"service_http.share_name", "a new name does not reach the HTTP service"},
    {"backup_button_jobs.backup_id", "a job that goes with its share keeps its place on the button and does not show"},
};

/// The condition under which a column may name what is gone: "" never, "1" always.
inline std::string excuse_of(const std::string &column)
{
    for (const Kept &kept : kMayNameWhatIsGone) {
        const std::string known = kept.column;
        if (known == column) return "1";
        if (known.starts_with(column + "=")) return known.substr(known.find('.') + 1);
    }
    return "";
}

/// A number by which tables name something, and the numbers that there are.
struct Reference {
    const char *column;
    const char *there;
};

inline constexpr Reference kReferences[] = {
    {"share_id", "SELECT id FROM share"},
    {"user_id", "SELECT id FROM `$user` WHERE is_privileged<>-1"},
    {"group_id", "SELECT id FROM `$group` WHERE is_privileged<>-1"},
    {"host_id", "SELECT id FROM host"},
};

/// What names shares by text, and how names, data sets, paths and rows belong together.
inline constexpr const char *kRules[] = {
    "SELECT '$snapshot names data set '||zfs_name FROM `$snapshot` WHERE zfs_name NOT IN (SELECT zfs_name FROM share)",
    "SELECT '$application_on_share names data set '||zfs_name FROM `$application_on_share` WHERE zfs_name NOT IN "
    "(SELECT "
    "zfs_name FROM share)",
    "SELECT '$snapshot_clones names clone '||cloned_zfs_name FROM `$snapshot_clones` WHERE cloned_zfs_name NOT IN "
    "(SELECT name FROM share)",
    "SELECT '$snapshot_clones names parent '||parent_zfs_name FROM `$snapshot_clones` WHERE parent_zfs_name NOT IN "
    "(SELECT name FROM share)",
    "SELECT 'backup reads share '||src_share_proto FROM backup WHERE src_type='share' AND src_share_proto NOT IN "
    "(SELECT "
    "name FROM share)",
    "SELECT 'backup writes share '||dst_share_proto FROM backup WHERE dst_type='share' AND dst_share_proto NOT IN "
    "(SELECT "
    "name FROM share)",
    "SELECT 'service_http shows share '||share_name FROM service_http WHERE share_name<>'' AND share_name NOT IN "
    "(SELECT "
    "name FROM share) AND share_name NOT IN (SELECT name FROM temp.former)",
    "SELECT 'share '||S.name||' lies on volume '||IFNULL(S.volume_id,'NULL') FROM share S WHERE S.volume_id NOT IN "
    "(SELECT id FROM _volume) OR S.volume_id IS NULL",
    // The data set follows the path. A share that came from another volume has the volume's id in it instead.
    "SELECT 'share '||S.name||' at '||IFNULL(S.path,'NULL')||' has data set '||S.zfs_name FROM share S LEFT JOIN "
    "_volume "
    "V ON V.id=S.volume_id WHERE S.path IS NULL OR (S.path<>'/'||S.zfs_name AND NOT(S.path='/'||V.lv_name||'/'||S.name "
    "AND S.zfs_name=V.id||'/'||S.name))",
    "SELECT 'share '||S.name||' does not end its path '||S.path FROM share S WHERE S.path NOT LIKE '%/'||S.name",
    "SELECT 'share '||S.name||' has no attributes' FROM share S WHERE S.id NOT IN (SELECT share_id FROM zfs_attr)",
    "SELECT 'share '||S.name||' has no schedule' FROM share S WHERE S.id NOT IN (SELECT share_id FROM "
    "snapshot_schedule)",
    "SELECT 'share '||S.name||' has no policy' FROM share S WHERE S.id NOT IN (SELECT share_id FROM "
    "snapshot_management)",
    "SELECT COUNT(*)||' shares migrate' FROM share WHERE migrate_to_volume_id IS NOT NULL HAVING COUNT(*)>1",
    "SELECT 'there is a table '||name FROM sqlite_temp_master WHERE type='table' AND name<>'former'",
    "SELECT 'there is a table '||name FROM sqlite_master WHERE type='table' AND name LIKE '%modify%'",
};

struct Invariants {
    Database &of;
    std::string query;
    sqlite3_stmt *statement = nullptr;

    explicit Invariants(Database &database) : of(database)
    {
        of.sql("CREATE TEMP TABLE former (name TEXT PRIMARY KEY)");
        for (const Reference &reference : kReferences) add(reference);
        for (const char *rule : kRules) add(rule);
        EXPECT_EQ(sqlite3_prepare_v2(of.db, query.c_str(), -1, &statement, nullptr), SQLITE_OK)
            << sqlite3_errmsg(of.db);
    }
    ~Invariants() { sqlite3_finalize(statement); }
    Invariants(const Invariants &) = delete;
    Invariants &operator=(const Invariants &) = delete;

    /// What contradicts, one text each; empty when all is well.
    std::vector<std::string> broken() const
    {
        std::vector<std::string> all;
        while (sqlite3_step(statement) == SQLITE_ROW)
            all.emplace_back(reinterpret_cast<const char *>(sqlite3_column_text(statement, 0)));
        EXPECT_EQ(sqlite3_reset(statement), SQLITE_OK) << sqlite3_errmsg(of.db);
        return all;
    }

    /// The columns that are looked at, as table.column.
    std::vector<std::string> columns;

private:
    void add(const std::string &rule)
    {
        query += (query.empty() ? "" : " UNION ALL ") + ("SELECT * FROM (" + rule + ")");
    }
    void add(const Reference &reference)
    {
        const std::string name = reference.column;
        for (const std::string &table :
             of.rows("SELECT M.name FROM sqlite_master M WHERE M.type='table' AND EXISTS(SELECT 1 FROM "
                     "pragma_table_info(M.name) C WHERE C.name='" +
                     name + "') ORDER BY 1")) {
            const std::string excuse = excuse_of(table + "." + name);
            if (excuse == "1") continue;
            columns.push_back(table + "." + name);
            add("SELECT '" + table + " names " + name + " '||" + name + " FROM `" + table + "` WHERE " + name +
                " NOT IN (" + reference.there + ")" + (excuse.empty() ? "" : " AND NOT(" + excuse + ")"));
        }
    }
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
