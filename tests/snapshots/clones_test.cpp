// Clones of snapshots.
#include "fixture/allocations.h"
#include "fixture/fixture.h"
#include "fixture/plans.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Names = std::vector<std::string>;

struct Clones : test::Database {
    Clones()
    {
        sql("INSERT INTO `$snapshot_clones` (id,cloned_zfs_name,parent_snapshot_name,parent_zfs_name) VALUES"
            "(1,'copy1','daily','media'),(2,'copy2','daily','photos'),(3,'copy3','weekly','media'),"
            "(4,NULL,NULL,NULL)");
    }
    uint32_t list(SnapshotCloneCollection &clones, const char *snapshot, const char *parent)
    {
        return qbobj_getSnapshotClones(qbdb, db, snapshot, parent, &clones, &err);
    }
    uint32_t remove(const char *clone, const char *snapshot, const char *parent)
    {
        return qbobj_deleteSnapshotClone(qbdb, db, clone, snapshot, parent, &err);
    }
    Names left() const { return rows("SELECT cloned_zfs_name FROM `$snapshot_clones` ORDER BY id"); }
};

TEST_F(Clones, AreListedByTheirParent)
{
    struct {
        const char *snapshot;
        const char *parent;
        Names expected;
    } const table[] = {
        {nullptr, nullptr, {"copy1", "copy2", "copy3", ""}},
        {"daily", nullptr, {"copy1", "copy2"}},
        {nullptr, "media", {"copy1", "copy3"}},
        {"daily", "media", {"copy1"}},
        {"weekly", "photos", {}},
        {"' OR ''='", nullptr, {}},
    };
    for (const auto &row : table) {
        SnapshotCloneCollection clones{};
        ASSERT_EQ(list(clones, row.snapshot, row.parent), 0u) << err.message;
        Names names;
        for (const SnapshotClone *clone : test::elements(clones.SnapshotClone))
            names.emplace_back(clone->ClonedShareName);
        EXPECT_THAT(names, testing::UnorderedElementsAreArray(row.expected));
    }
}

TEST_F(Clones, HaveAllTheirFieldsAndAreAppended)
{
    SnapshotCloneCollection clones{};
    ASSERT_EQ(list(clones, "weekly", nullptr), 0u);
    ASSERT_EQ(list(clones, "daily", "photos"), 0u);
    const auto all = test::elements(clones.SnapshotClone);
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0]->resource_id, 3);
    EXPECT_EQ(all[0]->ID, 3);
    EXPECT_STREQ(all[0]->ClonedShareName, "copy3");
    EXPECT_STREQ(all[0]->ParentSnapshotName, "weekly");
    EXPECT_STREQ(all[0]->ParentShareName, "media");
    EXPECT_EQ(all[1]->ID, 2);
}

TEST_F(Clones, AreAddedAsTheyAreGiven)
{
    ASSERT_EQ(qbobj_addSnapshotClone(qbdb, db, "it's", "tank/a@b", nullptr, &err), 0u) << err.message;
    EXPECT_THAT(rows("SELECT * FROM `$snapshot_clones` WHERE id>4"), ElementsAre("5|it's|tank/a@b|NULL"));
}

TEST_F(Clones, AreForgotten)
{
    struct {
        const char *name;
        const char *clone;
        const char *snapshot;
        const char *parent;
        Names left;
    } const table[] = {
        {"of a snapshot", nullptr, "daily", "media", {"copy2", "copy3", "NULL"}},
        {"both parents go before the clone", "copy2", "daily", "media", {"copy2", "copy3", "NULL"}},
        {"the clone goes before one parent", "copy2", nullptr, "media", {"copy1", "copy3", "NULL"}},
        {"the snapshot alone does not count", "copy2", "weekly", nullptr, {"copy1", "copy3", "NULL"}},
        {"all of a parent", nullptr, nullptr, "media", {"copy2", "NULL"}},
        {"what is not there", "nothing", nullptr, nullptr, {"copy1", "copy2", "copy3", "NULL"}},
    };
    sql("CREATE TABLE kept AS SELECT * FROM `$snapshot_clones`");
    for (const auto &row : table) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(remove(row.clone, row.snapshot, row.parent), 0u) << err.message;
        EXPECT_EQ(left(), row.left);
        sql("DELETE FROM `$snapshot_clones`; INSERT INTO `$snapshot_clones` SELECT * FROM kept");
    }
}

TEST_F(Clones, WithoutANameNothingIsForgotten)
{
    for (const char *snapshot : {static_cast<const char *>(nullptr), "daily"})
        expect_failure(5, "Failed DB Query for 'DELETE $snapshot_clones'. incomplete input",
                       [&] { return remove(nullptr, snapshot, nullptr); });
}

TEST_F(Clones, NamesThatDoNotFitAreRefusedAndNothingRuns)
{
    const std::string name(4100, 'n');
    const char *n = name.c_str();
    SnapshotCloneCollection clones{};
    take_statements();
    for (const auto &[snapshot, parent] : {std::pair{n, "media"}, std::pair{n, static_cast<const char *>(nullptr)},
                                           std::pair{static_cast<const char *>(nullptr), n}}) {
        expect_failure(5, "Failed DB Query for 'SELECT FROM snapshot_clones'. The names to search for are too long.",
                       [&, s = snapshot, p = parent] { return list(clones, s, p); });
        expect_failure(5, "Failed DB Query for 'DELETE $snapshot_clones'. The names to search for are too long.",
                       [&, s = snapshot, p = parent] { return remove(n, s, p); });
    }
    EXPECT_THAT(take_statements(), testing::Each(testing::AnyOf(testing::StartsWith("BEGIN"), "ROLLBACK")));
}

TEST_F(Clones, FailedStatementsAreTold)
{
    SnapshotCloneCollection clones{};
    fail_statement(1);
    expect_failure(5, "Failed DB Query for 'SELECT FROM snapshot_clones'. injected",
                   [&] { return list(clones, nullptr, nullptr); });
    fail_statement(1);
    expect_failure(5, "Failed DB Query for 'INSERT INTO $snapshot_clones'. injected",
                   [&] { return qbobj_addSnapshotClone(qbdb, db, "a", "b", "c", &err); });
    fail_statement(1);
    expect_failure(5, "Failed DB Query for 'DELETE $snapshot_clones'. injected",
                   [&] { return remove("copy1", nullptr, nullptr); });
}

TEST_F(Clones, WithoutMemoryTheEntriesReadSoFarStay)
{
    const auto read = [&] {
        SnapshotCloneCollection clones{};
        return list(clones, nullptr, nullptr);
    };
    test::expect_each_allocation_noticed(err, read, 2, "Failed to allocate resource.");
}

TEST_F(Clones, StatementsUseIndexes)
{
    SnapshotCloneCollection clones{};
    take_statements();
    list(clones, "daily", nullptr);
    list(clones, nullptr, "media");
    list(clones, "daily", "media");
    remove("copy1", nullptr, nullptr);
    remove(nullptr, nullptr, "media");
    remove(nullptr, "daily", "photos");
    test::expect_indexed(db, take_statements());
    list(clones, nullptr, nullptr);
    test::expect_indexed(db, take_statements(), {{"$snapshot_clones", "", "a listing of all of them"}});
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
