// Common ground of the snapshot tests: shares on two volumes, users with home folders, and short forms of the calls.
#pragma once

#include "fixture/fixture.h"

namespace snapshots {

using Names = std::vector<std::string>;

/// What a listing is asked for; by itself everything.
struct Question {
    const char *owner = nullptr;  // the share, the user
    const char *place = nullptr;  // the volume, the home folder
    int32_t type = 0;
    int32_t from = 0;
    int32_t to = 0;
    const char *column = nullptr;
    int32_t descending = 0;
    int32_t limit = 0;
    int32_t offset = 0;
};

struct Catalogue : test::Database {
    Catalogue()
    {
        sql("INSERT INTO _volume (id,lv_name) VALUES('attic','loft');"
            "INSERT INTO share (id,name,zfs_name,path,volume_id) VALUES"
            "(1,'media','tank/media','/tank/media','tank'),(2,'photos','tank/photos','/tank/photos','tank'),"
            "(3,'tools','attic/tools','/loft/tools','attic');"
            "INSERT INTO `$user` (id,uname,home,is_privileged) VALUES"
            "(100,'anna','/home/anna',0),(101,'bob','/home/bob',0)");
    }

    uint32_t list(SnapshotCollection &all, const Question &q)
    {
        return qbobj_getSnapshotCollection(qbdb, db, &all, q.owner, q.place, q.type, q.from, q.to, q.column,
                                           q.descending, q.limit, q.offset, &err);
    }
    uint32_t count(int32_t &number, const Question &q)
    {
        return qbobj_getSnapshotCollectionCount(qbdb, db, q.owner, q.place, q.type, q.from, q.to, &number, &err);
    }
    uint32_t list(HfSnapshotCollection &all, const Question &q)
    {
        return qbobj_getHfSnapshotCollection(qbdb, db, &all, q.owner, q.place, q.type, q.from, q.to, q.column,
                                             q.descending, q.limit, q.offset, &err);
    }
    uint32_t hf_count(int32_t &number, const Question &q)
    {
        return qbobj_getHfSnapshotCollectionCount(qbdb, db, q.owner, q.place, q.type, q.from, q.to, &number, &err);
    }
    /// Names of the snapshots that a listing shows, in its order.
    Names read(const Question &q)
    {
        SnapshotCollection all{};
        EXPECT_EQ(list(all, q), 0u) << (err.message ? err.message : "");
        Names names;
        for (const Snapshot *each : test::elements(all.Snapshot)) names.emplace_back(each->SnapshotName);
        return names;
    }
    Names hf_read(const Question &q)
    {
        HfSnapshotCollection all{};
        EXPECT_EQ(list(all, q), 0u) << (err.message ? err.message : "");
        Names names;
        for (const HfSnapshot *each : test::elements(all.HfSnapshot)) names.emplace_back(each->SnapshotName);
        return names;
    }
    /// Names of all snapshots in a table by row.
    Names left(const char *table = "$snapshot") const
    {
        return rows("SELECT name FROM `" + std::string(table) + "` ORDER BY id");
    }
};

}  // namespace snapshots
// SPDX-License-Identifier: Apache-2.0
