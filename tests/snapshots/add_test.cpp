// Adding snapshots of shares and home folders to the catalogue.
#include "fixture/plans.h"
#include "snapshots/snapshots.h"

using testing::ElementsAre;

namespace {

using AddSnapshot = snapshots::Catalogue;
using AddHfSnapshot = snapshots::Catalogue;

Snapshot of_share(const char *share, const char *volume, const char *name, int32_t type = 1, int32_t time = 100)
{
    return {nullptr, 0, share, volume, name, type, time, nullptr};
}

HfSnapshot of_home(const char *user, const char *home, const char *name, int32_t type = 1, int32_t time = 100)
{
    return {nullptr, 0, user, home, name, type, time, nullptr};
}

TEST_F(AddSnapshot, AChainIsStoredInItsOrder)
{
    Snapshot second = of_share("tools", "loft", "it's", 0, -5);
    Snapshot first = of_share("media", "tank", "daily", 2, 200);
    first.next = &second;
    ASSERT_EQ(qbobj_addSnapshot(qbdb, db, &first, &err), 0u) << err.message;
    EXPECT_THAT(rows("SELECT * FROM `$snapshot` ORDER BY id"),
                ElementsAre("1|tank/media|daily|2|200", "2|attic/tools|it's|0|-5"));
    EXPECT_EQ(first.resource_id, 1);
    EXPECT_EQ(second.resource_id, 2);
    EXPECT_EQ(first.Path, nullptr);
}

TEST_F(AddSnapshot, NothingIsAddedOfAnEmptyList)
{
    const std::string before = content();
    EXPECT_EQ(qbobj_addSnapshot(qbdb, db, nullptr, &err), 0u);
    EXPECT_EQ(qbobj_addHfSnapshot(qbdb, db, nullptr, &err), 0u);
    EXPECT_EQ(content(), before);
}

TEST_F(AddSnapshot, TheSameSnapshotMayBeAddedTwice)
{
    Snapshot snapshot = of_share("media", "tank", "daily");
    EXPECT_EQ(qbobj_addSnapshot(qbdb, db, &snapshot, &err), 0u);
    EXPECT_EQ(qbobj_addSnapshot(qbdb, db, &snapshot, &err), 0u);
    EXPECT_EQ(left().size(), 2u);
}

struct Refusal {
    const char *name;
    Snapshot snapshot;
    uint32_t code;
    const char *message;
};

const Refusal kRefusals[] = {
    {"no share", of_share("music", "tank", "s"), 8, "Specified ShareName(music) is not exist."},
    {"no share and no volume", of_share("music", "nowhere", "s"), 8, "Specified ShareName(music) is not exist."},
    {"share not given", of_share(nullptr, "tank", "s"), 8, "Specified ShareName((null)) is not exist."},
    {"no volume", of_share("media", "nowhere", "s"), 8, "Specified VolumeName(nowhere) is not exist."},
    {"a volume's id", of_share("tools", "attic", "s"), 8, "Specified VolumeName(attic) is not exist."},
    {"another volume", of_share("media", "loft", "s"), 8, "Specified ShareName(media) is not on VolumeName(loft)."},
    {"no name", of_share("media", "tank", nullptr), 8, "Probably share_id=1 is invalid or name is NULL"},
};

TEST_F(AddSnapshot, Refusals)
{
    for (const Refusal &row : kRefusals) {
        SCOPED_TRACE(row.name);
        Snapshot snapshot = row.snapshot;
        expect_failure(row.code, row.message, [&] { return qbobj_addSnapshot(qbdb, db, &snapshot, &err); });
        EXPECT_EQ(snapshot.resource_id, 0);
    }
}

TEST_F(AddSnapshot, AChainIsStoredWholeOrNotAtAll)
{
    for (const Refusal &row : kRefusals) {
        Snapshot third = of_share("media", "tank", "third");
        Snapshot second = row.snapshot;
        Snapshot first = of_share("media", "tank", "first");
        first.next = &second;
        second.next = &third;
        expect_failure(row.code, row.message, [&] { return qbobj_addSnapshot(qbdb, db, &first, &err); });
        EXPECT_EQ(third.resource_id, 0) << "the first failure ends it";
    }
}

TEST_F(AddSnapshot, FailedStatementsAreTold)
{
    Snapshot snapshot = of_share("media", "tank", "s");
    const auto add = [&] { return qbobj_addSnapshot(qbdb, db, &snapshot, &err); };
    fail_statement(1, 1, "injected", "SELECT 1 FROM share");
    expect_failure(5, "Error in DB query.", add);
    fail_statement(1, 1, "injected", "INSERT");
    expect_failure(5, "Failed DB Query for 'INSERT INTO $snapshot'. injected", add);
    fail_statement(1, 1, "injected", "FROM _volume");
    expect_failure(8, "Specified VolumeName(tank) is not exist.", add);
    fail_statement(1, 1, "injected", "SELECT id FROM share");
    expect_failure(8, "Specified ShareName(media) is not exist.", add);
}

TEST_F(AddSnapshot, StatementsUseIndexes)
{
    Snapshot snapshot = of_share("media", "tank", "s");
    take_statements();
    ASSERT_EQ(qbobj_addSnapshot(qbdb, db, &snapshot, &err), 0u);
    test::expect_indexed(db, take_statements(), {{"_volume", "lv_name", "a handful of volumes"}});
}

TEST_F(AddHfSnapshot, AChainIsStoredAndNothingIsLookedUp)
{
    HfSnapshot second = of_home("who", "/nowhere", "it's", 4, -5);
    HfSnapshot first = of_home("anna", "/home/anna", "daily", 2, 200);
    first.next = &second;
    ASSERT_EQ(qbobj_addHfSnapshot(qbdb, db, &first, &err), 0u) << err.message;
    EXPECT_THAT(rows("SELECT * FROM `$home_folder_snapshot` ORDER BY id"),
                ElementsAre("1|anna|/home/anna|daily|2|200", "2|who|/nowhere|it's|4|-5"));
    EXPECT_EQ(first.resource_id, 1);
    EXPECT_EQ(second.resource_id, 2);
}

TEST_F(AddHfSnapshot, Refusals)
{
    const HfSnapshot incomplete[] = {of_home(nullptr, "/home/anna", "s"), of_home("anna", nullptr, "s"),
                                     of_home("anna", "/home/anna", nullptr)};
    for (HfSnapshot second : incomplete) {
        HfSnapshot first = of_home("anna", "/home/anna", "first");
        first.next = &second;
        expect_failure(8, "Probably some parameter is NULL",
                       [&] { return qbobj_addHfSnapshot(qbdb, db, &first, &err); });
    }
    HfSnapshot snapshot = of_home("anna", "/home/anna", "s");
    fail_statement(1);
    expect_failure(5, "Failed DB Query for 'INSERT INTO $home_folder_snapshot'. injected",
                   [&] { return qbobj_addHfSnapshot(qbdb, db, &snapshot, &err); });
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
