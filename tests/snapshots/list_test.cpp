// Listing and counting snapshots of shares: filter, type, range of times, order, page.
#include <sys/stat.h>

#include <filesystem>

#include "fixture/allocations.h"
#include "fixture/plans.h"
#include "fixture/text_of.h"
#include "snapshots/snapshots.h"

using snapshots::Names;
using snapshots::Question;
using test::text_of;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Of three shares, a hundred seconds apart in the order of their letters; types 0 and 4 are stored, too.
struct SnapshotList : snapshots::Catalogue {
    SnapshotList()
    {
        sql("INSERT INTO `$snapshot` (id,zfs_name,name,type,created_on) VALUES"
            "(11,'tank/media','a',1,100),(12,'tank/photos','b',2,200),(13,'tank/media','c',3,300),"
            "(14,'attic/tools','d',1,400),(15,'tank/media','e',1,500),"
            "(16,'tank/media','zero',0,150),(17,'tank/media','four',4,250),"
            "(18,'tank/gone','of no share',1,350)");
    }
};

struct Row {
    const char *name;
    Question question;
    Names expected;
};

const Names kAll = {"a", "b", "c", "d", "e"};

TEST_F(SnapshotList, EntriesHaveAllTheirFields)
{
    SnapshotCollection all{};
    ASSERT_EQ(list(all, {.owner = "tools"}), 0u);
    ASSERT_NE(all.Snapshot, nullptr);
    EXPECT_EQ(all.Snapshot->next, nullptr);
    EXPECT_EQ(text_of(all.Snapshot),
              "resource_id=14 ShareName=tools VolumeName=loft SnapshotName=d Type=1 CreatedOn=400 Path=''");
}

TEST_F(SnapshotList, FiltersAndCounts)
{
    const Row table[] = {
        {"nothing asked", {}, kAll},
        {"a share", {.owner = "media"}, {"a", "c", "e"}},
        {"a volume by its name", {.place = "loft"}, {"d"}},
        {"a volume by its id", {.place = "attic"}, {}},
        {"share and volume", {.owner = "media", .place = "tank"}, {"a", "c", "e"}},
        {"a share on another volume", {.owner = "media", .place = "loft"}, {}},
        {"no share of that name", {.owner = "x' OR '1'='1"}, {}},
        {"an empty name is a name", {.owner = ""}, {}},
        {"type 1", {.type = 1}, {"a", "d", "e"}},
        {"type 2", {.type = 2}, {"b"}},
        {"type 3", {.type = 3}, {"c"}},
        {"type 4 stands for all three", {.type = 4}, kAll},
        {"type -1 stands for all three", {.type = -1}, kAll},
        {"both bounds belong to the range", {.from = 200, .to = 400}, {"b", "c", "d"}},
        {"no upper bound", {.from = 400}, {"d", "e"}},
        {"an upper bound alone", {.to = 200}, {"a", "b"}},
        {"a range turned round", {.from = 300, .to = 200}, {}},
        {"before the epoch", {.from = -5, .to = -1}, {}},
        {"all together", {.owner = "media", .place = "tank", .type = 1, .from = 101, .to = 500}, {"e"}},
    };
    for (const Row &row : table) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(read(row.question), row.expected);
        int32_t number = -1;
        EXPECT_EQ(count(number, row.question), 0u);
        EXPECT_EQ(number, static_cast<int32_t>(row.expected.size()));
    }
}

TEST_F(SnapshotList, OrdersAndPages)
{
    sql("UPDATE `$snapshot` SET created_on=1000-created_on WHERE name='c'");  // now the last
    const Row table[] = {
        {"by time", {}, {"a", "b", "d", "e", "c"}},
        {"newest first", {.descending = 1}, {"c", "e", "d", "b", "a"}},
        {"any other number descends, too", {.descending = -1}, {"c", "e", "d", "b", "a"}},
        {"by name", {.column = "name"}, {"a", "b", "c", "d", "e"}},
        {"by name, its case ignored", {.column = "NAME", .descending = 1}, {"e", "d", "c", "b", "a"}},
        {"by id", {.column = "id"}, {"a", "b", "c", "d", "e"}},
        {"by dataset", {.owner = nullptr, .column = "zfs_name", .limit = 1}, {"d"}},
        {"by type", {.column = "type", .descending = 1, .limit = 2}, {"c", "b"}},
        {"a page", {.limit = 2, .offset = 1}, {"b", "d"}},
        {"a limit of 0 is none", {.limit = 0, .offset = 3}, {"e", "c"}},
        {"a limit below 0 is none", {.limit = -1, .offset = 4}, {"c"}},
        {"an offset below 0 is none", {.limit = 1, .offset = -3}, {"a"}},
        {"behind the end", {.limit = 5, .offset = 5}, {}},
    };
    for (const Row &row : table) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(read(row.question), row.expected);
    }
    int32_t number = -1;
    EXPECT_EQ(count(number, {}), 0u);
    EXPECT_EQ(number, 5);
}

TEST_F(SnapshotList, AColumnThatIsNoneIsRefusedAndNothingRuns)
{
    for (const char *column : {"", "path", "user_name", "name;DROP TABLE share", "id,S.name", "rowid"}) {
        SnapshotCollection all{};
        take_statements();
        expect_failure(5, "Failed DB Query for 'SELECT FROM $snapshot'. no such column: S." + std::string(column),
                       [&] { return list(all, {.column = column}); });
        EXPECT_EQ(all.Snapshot, nullptr);
        EXPECT_THAT(take_statements(), ElementsAre(testing::StartsWith("BEGIN"), "ROLLBACK"));
    }
}

TEST_F(SnapshotList, NamesOfAnyLengthThatFitsAreLookedFor)
{
    // " AND SH.name='" and "'" are part of the 4095 bytes.
    const std::string longest(4095 - strlen(" AND SH.name=''"), 'n');
    EXPECT_THAT(read({.owner = longest.c_str()}), IsEmpty());
    const std::string longer = longest + "n";
    const std::string quotes(2100, '\'');  // each is written twice
    const Question too_long[] = {{.owner = longer.c_str()}, {.place = longer.c_str()}, {.owner = quotes.c_str()}};
    for (const Question &question : too_long) {
        SnapshotCollection all{};
        int32_t number = -1;
        take_statements();
        const std::string message =
            "Failed DB Query for 'SELECT FROM $snapshot'. The names to search for are too long.";
        expect_failure(5, message, [&] { return list(all, question); });
        expect_failure(5, message, [&] { return count(number, question); });
        EXPECT_EQ(number, -1);
        EXPECT_THAT(take_statements(), testing::Each(testing::AnyOf(testing::StartsWith("BEGIN"), "ROLLBACK")));
    }
}

TEST_F(SnapshotList, SnapshotsOfADeletedShareDisappearButStay)
{
    sql("DELETE FROM share WHERE name='photos'; DELETE FROM _volume WHERE id='attic'");
    EXPECT_EQ(read({}), (Names{"a", "c", "e"}));
    int32_t number = -1;
    EXPECT_EQ(count(number, {}), 0u);
    EXPECT_EQ(number, 3);
    EXPECT_EQ(left().size(), 8u);
}

TEST_F(SnapshotList, EntriesAreAppended)
{
    SnapshotCollection all{};
    ASSERT_EQ(list(all, {.limit = 2}), 0u);
    const Snapshot *first = all.Snapshot;
    ASSERT_EQ(list(all, {.limit = 2, .offset = 2}), 0u);
    EXPECT_EQ(all.Snapshot, first);
    EXPECT_EQ(test::elements(all.Snapshot).size(), 4u);
}

TEST_F(SnapshotList, NullsReadAsEmptyTextsAndZero)
{
    sql("UPDATE share SET name='' WHERE id=1; UPDATE _volume SET lv_name=NULL WHERE id='tank';"
        "UPDATE `$snapshot` SET type=1,created_on=100 WHERE id=11");
    SnapshotCollection all{};
    ASSERT_EQ(list(all, {.to = 100}), 0u);
    ASSERT_NE(all.Snapshot, nullptr);
    EXPECT_STREQ(all.Snapshot->ShareName, "");
    EXPECT_STREQ(all.Snapshot->VolumeName, "");
    EXPECT_STREQ(all.Snapshot->Path, "");
}

TEST_F(SnapshotList, ThePathIsTheFolderOfTheSnapshotWhenThereIsOne)
{
    // The volume's folder stands below the root, so that its name is the way from there.
    const std::string volume = directory.path.substr(1);
    sql("UPDATE _volume SET lv_name='" + volume + "' WHERE id='tank'");
    std::filesystem::create_directories(directory.path + "/media/.snapshot/a");
    SnapshotCollection all{};
    ASSERT_EQ(list(all, {.owner = "media"}), 0u);
    const auto found = test::elements(all.Snapshot);
    ASSERT_EQ(found.size(), 3u);
    EXPECT_EQ(found[0]->Path, directory.path + "/media/.snapshot/a");
    EXPECT_STREQ(found[1]->Path, "");
}

TEST_F(SnapshotList, AFolderThatIsTooLongHasNoPath)
{
    sql("UPDATE _volume SET lv_name='" + std::string(5000, 'v') + "' WHERE id='tank'");
    SnapshotCollection all{};
    ASSERT_EQ(list(all, {.owner = "media", .limit = 1}), 0u);
    EXPECT_STREQ(all.Snapshot->Path, "");
}

TEST_F(SnapshotList, AFailedStatementIsTold)
{
    SnapshotCollection all{};
    int32_t number = -1;
    fail_statement(1);
    expect_failure(5, "Failed DB Query for 'SELECT FROM $snapshot'. injected", [&] { return list(all, {}); });
    fail_statement(1);
    expect_failure(5, "Failed DB Query for 'SELECT FROM $snapshot'. injected", [&] { return count(number, {}); });
    EXPECT_EQ(all.Snapshot, nullptr);
    EXPECT_EQ(number, -1);
}

TEST_F(SnapshotList, WithoutMemoryTheEntriesReadSoFarStay)
{
    size_t most = 0;
    const auto read_all = [&] {
        SnapshotCollection all{};
        const uint32_t rc = list(all, {});
        const size_t size = test::elements(all.Snapshot).size();
        EXPECT_GE(size, most);
        most = size;
        return rc;
    };
    test::expect_each_allocation_noticed(err, read_all, 2, "Failed to allocate resource.");
    EXPECT_EQ(most, 5u);
}

TEST_F(SnapshotList, StatementsUseIndexes)
{
    sql("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<2000) INSERT INTO `$snapshot` "
        "(zfs_name,name,type,created_on) SELECT 'tank/media','s'||i,1,1000+i FROM n");
    take_statements();
    for (const Question &question : {Question{}, Question{.owner = "media"}, Question{.place = "tank"},
                                     Question{.owner = "media", .place = "tank", .type = 2},
                                     Question{.from = 10, .to = 20, .column = "name", .limit = 3}}) {
        read(question);
        int32_t number = 0;
        count(number, question);
    }
    test::expect_indexed(db, take_statements(), {{"_volume", "lv_name", "a handful of volumes"}});
}

TEST_F(SnapshotList, TheListIsSortedByItsIndex)
{
    take_statements();
    read({.limit = 10});
    for (const std::string &statement : take_statements()) {
        if (statement.rfind("SELECT", 0) != 0) continue;
        for (const std::string &step : test::plan(db, statement))
            EXPECT_THAT(step, testing::Not(testing::HasSubstr("TEMP B-TREE"))) << statement;
    }
}

TEST_F(SnapshotList, ATraceTellsTheNumberOfRows)
{
    qbdb->log_level = 5;
    read({.limit = 3});
    EXPECT_THAT(logged(5), testing::Contains("x_qbobj_getSnapshotCollection() rc=0 nrow=3\n"));
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
