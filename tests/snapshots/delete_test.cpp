// Removing snapshots of shares and home folders from the catalogue.
#include "fixture/plans.h"
#include "snapshots/snapshots.h"

using snapshots::Names;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct DeleteSnapshot : snapshots::Catalogue {
    DeleteSnapshot()
    {
        sql("INSERT INTO `$snapshot` (zfs_name,name,type,created_on) VALUES"
            "('tank/media','m1',1,100),('tank/media','m2',2,200),('tank/media','m3',0,300),"
            "('tank/photos','p1',1,200),('tank/photos','m2',1,400),('attic/tools','t1',1,200),('tankard/"
            "x','x1',1,200)");
    }
    uint32_t remove(const char *volume, const char *share, int32_t mode, const char *name = nullptr, int32_t time = 0)
    {
        return qbobj_deleteSnapshot(qbdb, db, volume, share, mode, name, time, &err);
    }
};

struct Removal {
    const char *name;
    const char *volume;
    const char *share;
    int32_t mode;
    const char *snapshot;
    int32_t time;
    Names left;
};

TEST_F(DeleteSnapshot, Modes)
{
    const Removal table[] = {
        {"newer than a time", "tank", "media", 1, nullptr, 200, {"m1", "m2", "p1", "m2", "t1", "x1"}},
        {"newer than a time, volume", "tank", nullptr, 1, nullptr, 200, {"m1", "m2", "p1", "t1", "x1"}},
        {"newer than a time, its name is not looked at",
         "tank",
         "media",
         1,
         "m1",
         299,
         {"m1", "m2", "p1", "m2", "t1", "x1"}},
        {"newer than a snapshot, which stays", "tank", "media", 2, "m1", 0, {"m1", "p1", "m2", "t1", "x1"}},
        {"newer than a snapshot, volume", "tank", nullptr, 2, "p1", 0, {"m1", "m2", "p1", "t1", "x1"}},
        {"of a second", "tank", "media", 3, nullptr, 200, {"m1", "m3", "p1", "m2", "t1", "x1"}},
        {"of a second, volume", "tank", nullptr, 3, nullptr, 200, {"m1", "m3", "m2", "t1", "x1"}},
        {"of a name", "tank", "media", 0, "m2", 0, {"m1", "m3", "p1", "m2", "t1", "x1"}},
        {"of a name, volume", "tank", nullptr, 0, "m2", 0, {"m1", "m3", "p1", "t1", "x1"}},
        {"of a name, another mode", "tank", "media", 4, "m1", 0, {"m2", "m3", "p1", "m2", "t1", "x1"}},
        {"all of a share", "tank", "media", 0, nullptr, 0, {"p1", "m2", "t1", "x1"}},
        {"all of a share, another mode", "tank", "media", -1, nullptr, 0, {"p1", "m2", "t1", "x1"}},
        {"all of a volume, not of those that begin alike", "tank", nullptr, 0, nullptr, 0, {"t1", "x1"}},
        {"all of a volume whose id is not its name",
         "loft",
         nullptr,
         0,
         nullptr,
         0,
         {"m1", "m2", "m3", "p1", "m2", "x1"}},
    };
    sql("CREATE TABLE kept AS SELECT * FROM `$snapshot`");
    for (const Removal &row : table) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(remove(row.volume, row.share, row.mode, row.snapshot, row.time), 0u) << err.message;
        EXPECT_EQ(left(), row.left);
        sql("DELETE FROM `$snapshot`; INSERT INTO `$snapshot` SELECT * FROM kept");
    }
}

TEST_F(DeleteSnapshot, SnapshotsOfDeletedSharesOnTheVolumeGo)
{
    sql("DELETE FROM share");
    EXPECT_EQ(remove("tank", nullptr, 0), 0u);
    EXPECT_EQ(left(), (Names{"t1", "x1"}));
}

TEST_F(DeleteSnapshot, TheVolumesIdIsAPatternWithoutCase)
{
    sql("INSERT INTO _volume (id,lv_name) VALUES('c_1','c_1');"
        "INSERT INTO `$snapshot` (zfs_name,name) VALUES('c_1/a','1'),('cx1/a','2'),('C_1/a','3'),('c_1','4')");
    EXPECT_EQ(remove("c_1", nullptr, 0), 0u);
    EXPECT_EQ(left(), (Names{"m1", "m2", "m3", "p1", "m2", "t1", "x1", "4"}));
}

TEST_F(DeleteSnapshot, Refusals)
{
    struct {
        const char *name;
        const char *volume;
        const char *share;
        int32_t mode;
        const char *snapshot;
        int32_t time;
        uint32_t code;
        const char *message;
    } const table[] = {
        {"no volume", "nowhere", nullptr, 0, nullptr, 0, 8, "Specified VolumeName(nowhere) is not exist."},
        {"volume not given", nullptr, nullptr, 0, nullptr, 0, 8, "Specified VolumeName((null)) is not exist."},
        {"volume before share", "nowhere", "music", 0, nullptr, 0, 8, "Specified VolumeName(nowhere) is not exist."},
        {"no share", "tank", "music", 0, nullptr, 0, 8, "Specified ShareName(music) is not exist."},
        {"another volume", "loft", "media", 0, nullptr, 0, 8, "Specified ShareName(media) is not on VolumeName(loft)."},
        {"share before name", "tank", "music", 2, nullptr, 0, 8, "Specified ShareName(music) is not exist."},
        {"no name", "tank", "media", 2, nullptr, 0, 5, "SnapshotName cannot be NULL when DeleteNewer==2."},
        {"no name, volume", "tank", nullptr, 2, nullptr, 0, 5, "SnapshotName cannot be NULL when DeleteNewer==2."},
        {"nothing newer", "tank", "media", 1, nullptr, 300, 6, "None of row is deleted."},
        {"nothing newer than a snapshot", "tank", "media", 2, "m3", 0, 6, "None of row is deleted."},
        {"newer than an unknown one", "tank", "media", 2, "p1", 0, 6, "None of row is deleted."},
        {"nothing of that second", "tank", "media", 3, nullptr, 101, 6, "None of row is deleted."},
        {"nothing of that name", "tank", "media", 0, "' OR ''='", 0, 6, "None of row is deleted."},
    };
    for (const auto &row : table) {
        SCOPED_TRACE(row.name);
        expect_failure(row.code, row.message,
                       [&] { return remove(row.volume, row.share, row.mode, row.snapshot, row.time); });
    }
}

TEST_F(DeleteSnapshot, WithoutANameNothingIsDeleted)
{
    take_statements();
    EXPECT_EQ(remove("tank", "media", 2), 5u);
    EXPECT_THAT(take_statements(), testing::Each(testing::Not(testing::StartsWith("DELETE"))));
}

TEST_F(DeleteSnapshot, FailedStatementsAreTold)
{
    struct {
        int32_t mode;
        const char *name;
        const char *message;
    } const table[] = {
        {1, nullptr, "Failed to DELETE snapshot. injected"},      {2, "m1", "Failed to DELETE for $snapshot. injected"},
        {3, nullptr, "Failed to DELETE snapshot. injected"},      {0, "m1", "Failed to DELETE for $snapshot. injected"},
        {0, nullptr, "Failed to DELETE for $snapshot. injected"},
    };
    for (const auto &row : table) {
        fail_statement(1, 1, "injected", "DELETE");
        expect_failure(5, row.message, [&] { return remove("tank", "media", row.mode, row.name, 200); });
    }
    fail_statement(1, 1, "injected", "SELECT 1 FROM share");
    expect_failure(5, "Error in DB query.", [&] { return remove("tank", "media", 0); });
    fail_statement(1, 1, "injected", "SELECT S.zfs_name");
    expect_failure(5, "Error in DB query for zfs_name.", [&] { return remove("tank", "media", 0); });
}

/// A volume whose id has so many characters, with one share and one snapshot of it.
void add_long_volume(test::Database &on, const std::string &id)
{
    on.sql("INSERT INTO _volume (id,lv_name) VALUES('" + id + "','long');" +
           "INSERT INTO share (id,name,zfs_name,path,volume_id) VALUES(9,'far','" + id + "/far','/long/far','" + id +
           "'); INSERT INTO `$snapshot` (zfs_name,name,created_on) VALUES('" + id + "/far','f1',900),('" + id +
           "','itself',900)");
}

TEST_F(DeleteSnapshot, AScopeThatDoesNotFitDeletesNothing)
{
    const size_t longest = 255 - strlen("zfs_name LIKE ''||'/%'");
    for (const size_t size : {longest, longest + 1, longest + 3, longest + 6, longest + 7, size_t{500}}) {
        SCOPED_TRACE(size);
        const std::string id(size, 'v');
        add_long_volume(*this, id);
        if (size == longest) {
            EXPECT_EQ(remove("long", nullptr, 0), 0u) << err.message;
            EXPECT_EQ(left().back(), "itself");
        } else {
            for (const int32_t mode : {0, 1, 3}) {
                take_statements();
                const std::string message = mode ? "Failed to DELETE snapshot. The names are too long."
                                                 : "Failed to DELETE for $snapshot. The names are too long.";
                expect_failure(5, message, [&] { return remove("long", nullptr, mode, nullptr, 1); });
                EXPECT_THAT(take_statements(), testing::Each(testing::Not(testing::StartsWith("DELETE"))));
            }
        }
        sql("DELETE FROM _volume WHERE lv_name='long'; DELETE FROM share WHERE id=9;"
            "DELETE FROM `$snapshot` WHERE created_on=900");
    }
}

TEST_F(DeleteSnapshot, ADatasetThatDoesNotFitDeletesNothing)
{
    const size_t longest = 255 - strlen("zfs_name=''") - strlen("/far");
    for (const size_t size : {longest, longest + 1}) {
        add_long_volume(*this, std::string(size, 'v'));
        if (size == longest) EXPECT_EQ(remove("long", "far", 0), 0u) << err.message;
        else
            expect_failure(5, "Failed to DELETE for $snapshot. The names are too long.",
                           [&] { return remove("long", "far", 0); });
        sql("DELETE FROM _volume WHERE lv_name='long'; DELETE FROM share WHERE id=9;"
            "DELETE FROM `$snapshot` WHERE created_on=900");
    }
}

TEST_F(DeleteSnapshot, StatementsUseIndexesButForAWholeVolume)
{
    take_statements();
    remove("tank", "media", 1, nullptr, 1000);
    remove("tank", "media", 2, "m3");
    remove("tank", "media", 3, nullptr, 1000);
    remove("tank", "media", 0, "none");
    remove("tank", nullptr, 0);
    test::expect_indexed(db, take_statements(),
                         {{"_volume", "lv_name", "a handful of volumes"},
                          {"$snapshot", "zfs_name LIKE", "the id is a pattern without case"}});
}

// ---- Home folders

struct DeleteHfSnapshot : snapshots::Catalogue {
    static constexpr char kTable[] = "$home_folder_snapshot";

    DeleteHfSnapshot()
    {
        sql("INSERT INTO `$home_folder_snapshot` (user_name,home_dir,name,type,created_on) VALUES"
            "('anna','/home/anna','a1',1,100),('anna','/home/anna','a2',1,200),('other','/home/anna','a3',0,300),"
            "('anna','/old/anna','o1',1,200),('bob','/home/bob','b1',1,200)");
    }
    uint32_t remove(const char *home, int32_t mode, const char *name = nullptr, int32_t time = 0)
    {
        return qbobj_deleteHfSnapshot(qbdb, db, "nobody asks", home, mode, name, time, &err);
    }
};

TEST_F(DeleteHfSnapshot, Modes)
{
    struct {
        const char *name;
        int32_t mode;
        const char *snapshot;
        int32_t time;
        Names left;
    } const table[] = {
        {"newer than a time", 1, nullptr, 100, {"a1", "o1", "b1"}},
        {"newer than a snapshot", 2, "a2", 0, {"a1", "a2", "o1", "b1"}},
        {"of a second", 3, nullptr, 200, {"a1", "a3", "o1", "b1"}},
        {"of a name", 0, "a1", 0, {"a2", "a3", "o1", "b1"}},
        {"all", 7, nullptr, 0, {"o1", "b1"}},
    };
    sql("CREATE TABLE kept AS SELECT * FROM `$home_folder_snapshot`");
    for (const auto &row : table) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(remove("/home/anna", row.mode, row.snapshot, row.time), 0u) << err.message;
        EXPECT_EQ(left(kTable), row.left);
        sql("DELETE FROM `$home_folder_snapshot`; INSERT INTO `$home_folder_snapshot` SELECT * FROM kept");
    }
    EXPECT_EQ(qbobj_deleteHfSnapshot(qbdb, db, nullptr, "/home/bob", 0, nullptr, 0, &err), 0u);
}

TEST_F(DeleteHfSnapshot, Refusals)
{
    const std::string longest(255 - strlen("home_dir=''"), 'h');
    const std::string longer = longest + "h";
    const std::string too_long = "Failed to DELETE for snapshot from $home_folder_snapshot. The names are too long.";
    struct {
        const char *home;
        int32_t mode;
        const char *snapshot;
        uint32_t code;
        std::string message;
    } const table[] = {
        {"/home/anna", 2, nullptr, 5, "SnapshotName cannot be NULL when DeleteNewer==2."},
        {"/home/anna", 1, nullptr, 6, "None of row is deleted."},
        {"/home/anna", 2, "a3", 6, "None of row is deleted."},
        {"/home/anna", 0, "zzz", 6, "None of row is deleted."},
        {"/home/nobody", 0, nullptr, 6, "None of row is deleted."},
        {nullptr, 0, nullptr, 6, "None of row is deleted."},
        {"' OR ''='", 0, nullptr, 6, "None of row is deleted."},
        {longest.c_str(), 0, nullptr, 6, "None of row is deleted."},
        {longer.c_str(), 0, nullptr, 5, too_long},
    };
    for (const auto &row : table)
        expect_failure(row.code, row.message, [&] { return remove(row.home, row.mode, row.snapshot, 1000); });
}

TEST_F(DeleteHfSnapshot, FailedStatementsAreTold)
{
    struct {
        int32_t mode;
        const char *name;
        const char *message;
    } const table[] = {
        {1, nullptr, "Failed to DELETE snapshot from $home_folder_snapshot. injected"},
        {2, "a1", "Failed to DELETE snapshot from $home_folder_snapshot. injected"},
        {3, nullptr, "Failed to DELETE snapshot from $home_folder_snapshot. injected"},
        {0, "a1", "Failed to DELETE for snapshot from $home_folder_snapshot. injected"},
        {0, nullptr, "Failed to DELETE for snapshot from $home_folder_snapshot. injected"},
    };
    for (const auto &row : table) {
        fail_statement(1, 1, "injected", "DELETE");
        expect_failure(5, row.message, [&] { return remove("/home/anna", row.mode, row.name, 200); });
    }
}

TEST_F(DeleteHfSnapshot, StatementsUseIndexes)
{
    take_statements();
    for (const int32_t mode : {0, 1, 2, 3}) remove("/home/anna", mode, "none", 1000);
    remove("/home/anna", 0);
    test::expect_indexed(db, take_statements());
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
