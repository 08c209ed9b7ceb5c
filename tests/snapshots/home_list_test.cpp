// Listing and counting snapshots of home folders.
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

struct HfSnapshotList : snapshots::Catalogue {
    HfSnapshotList()
    {
        sql("INSERT INTO `$home_folder_snapshot` (id,user_name,home_dir,name,type,created_on) VALUES"
            "(11,'anna','/home/anna','a',1,100),(12,'bob','/home/bob','b',2,200),(13,'anna','/old/anna','c',3,300),"
            "(14,'anna','/home/anna','zero',0,150),(15,'anna','/home/anna','four',4,250),"
            "(16,'nobody knows','/home/x','of no user',1,350)");
    }
};

struct Row {
    const char *name;
    Question question;
    Names expected;
};

TEST_F(HfSnapshotList, EntriesHaveAllTheirFields)
{
    HfSnapshotCollection all{};
    ASSERT_EQ(list(all, {.from = 300}), 0u);
    ASSERT_NE(all.HfSnapshot, nullptr);
    EXPECT_EQ(all.HfSnapshot->next, nullptr);
    EXPECT_EQ(text_of(all.HfSnapshot),
              "resource_id=13 UserName=anna HomeDir=/old/anna SnapshotName=c Type=3 CreatedOn=300 Path=''")
        << "as it was when the snapshot was taken";
}

TEST_F(HfSnapshotList, FiltersOrdersAndCounts)
{
    const Row table[] = {
        {"nothing asked", {}, {"a", "b", "c"}},
        {"a user", {.owner = "anna"}, {"a", "c"}},
        {"a user's folder of today", {.place = "/home/anna"}, {"a", "c"}},
        {"a user's folder of old", {.place = "/old/anna"}, {}},
        {"user and folder", {.owner = "bob", .place = "/home/bob"}, {"b"}},
        {"another's folder", {.owner = "bob", .place = "/home/anna"}, {}},
        {"text that looks like SQL", {.owner = "' OR ''='"}, {}},
        {"type 2", {.type = 2}, {"b"}},
        {"type 0", {.type = 0}, {"a", "b", "c"}},
        {"type 5", {.type = 5}, {"a", "b", "c"}},
        {"range", {.from = 100, .to = 200}, {"a", "b"}},
    };
    for (const Row &row : table) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(hf_read(row.question), row.expected);
        int32_t number = -1;
        EXPECT_EQ(hf_count(number, row.question), 0u);
        EXPECT_EQ(number, static_cast<int32_t>(row.expected.size()));
    }
    const Row pages[] = {
        {"newest first", {.descending = 1}, {"c", "b", "a"}},
        {"by user", {.column = "user_name", .descending = 1, .limit = 1}, {"b"}},
        {"by folder", {.column = "home_dir"}, {"a", "b", "c"}},
        {"by name", {.column = "Name", .descending = 1}, {"c", "b", "a"}},
        {"by type and id", {.column = "id", .limit = 1, .offset = 1}, {"b"}},
        {"a page of type", {.column = "type", .offset = 2}, {"c"}},
    };
    for (const Row &row : pages) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(hf_read(row.question), row.expected);
    }
}

TEST_F(HfSnapshotList, SnapshotsOfRemovedUsersAreListed)
{
    sql("UPDATE `$user` SET is_privileged=-1,rid=1105 WHERE uname='bob'");
    EXPECT_EQ(hf_read({}), (Names{"a", "b", "c"}));
    int32_t number = -1;
    EXPECT_EQ(hf_count(number, {}), 0u);
    EXPECT_EQ(number, 3);
    sql("DELETE FROM `$user` WHERE uname='bob'");
    EXPECT_EQ(hf_read({}), (Names{"a", "c"}));
    EXPECT_EQ(left("$home_folder_snapshot").size(), 6u);
}

TEST_F(HfSnapshotList, ThePathIsTheFolderOfTheSnapshotWhenThereIsOne)
{
    sql("UPDATE `$home_folder_snapshot` SET home_dir='" + directory.path + "' WHERE name='a'");
    std::filesystem::create_directories(directory.path + "/.zfs/snapshot/a");
    HfSnapshotCollection all{};
    ASSERT_EQ(list(all, {.owner = "anna"}), 0u);
    EXPECT_EQ(all.HfSnapshot->Path, directory.path + "/.zfs/snapshot/a");
    EXPECT_STREQ(all.HfSnapshot->next->Path, "");
}

TEST_F(HfSnapshotList, WhatCannotBeAskedIsRefusedAndNothingRuns)
{
    const std::string name(5000, 'n');
    const std::string begin = "Failed DB Query for 'SELECT FROM $home_folder_snapshot'. ";
    HfSnapshotCollection all{};
    int32_t number = -1;
    take_statements();
    for (const char *column : {"", "zfs_name", "name DESC"})
        expect_failure(5, begin + "no such column: S." + column, [&] { return list(all, {.column = column}); });
    for (const Question &question : {Question{.owner = name.c_str()}, Question{.place = name.c_str()}}) {
        expect_failure(5, begin + "The names to search for are too long.", [&] { return list(all, question); });
        expect_failure(5, begin + "The names to search for are too long.", [&] { return hf_count(number, question); });
    }
    EXPECT_THAT(take_statements(), testing::Each(testing::AnyOf("BEGIN", "BEGIN IMMEDIATE", "ROLLBACK")));
    EXPECT_EQ(all.HfSnapshot, nullptr);
    EXPECT_EQ(number, -1);
}

TEST_F(HfSnapshotList, WithoutMemoryTheEntriesReadSoFarStay)
{
    size_t most = 0;
    const auto read_all = [&] {
        HfSnapshotCollection all{};
        const uint32_t rc = list(all, {});
        most = test::elements(all.HfSnapshot).size();
        return rc;
    };
    test::expect_each_allocation_noticed(err, read_all, 2, "Failed to allocate resource.");
    EXPECT_EQ(most, 3u);
}

TEST_F(HfSnapshotList, StatementsUseIndexes)
{
    take_statements();
    for (const Question &question : {Question{}, Question{.owner = "anna"}, Question{.place = "/home/anna"},
                                     Question{.owner = "anna", .place = "/home/anna", .type = 1}}) {
        hf_read(question);
        int32_t number = 0;
        hf_count(number, question);
    }
    test::expect_indexed(db, take_statements());
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
