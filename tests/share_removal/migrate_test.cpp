// A share's way to another volume.
#include "share_removal/removal.h"

using namespace test;

namespace {

struct MigrateShare : Removal {
    MigrateShare()
    {
        sql("INSERT INTO _volume (id,lv_name) VALUES('pool2','pool2'),('v3','pool three')");
        add_share(1, "media");
        add_share(2, "photos");
    }
    uint32_t mark(const char *data_set, const char *volume)
    {
        return qbobj_preMigrateShare(qbdb, db, data_set, volume, &err);
    }
    uint32_t end(const char *data_set, int32_t success, const char **path = nullptr)
    {
        return qbobj_postMigrateShare(qbdb, db, data_set, success, path, &err);
    }
    void expect_marked(const char *data_set, const char *volume)
    {
        EXPECT_EQ(mark(data_set, volume), 0u) << text(err.message);
    }
    void expect_ended(const char *data_set, int32_t success)
    {
        EXPECT_EQ(end(data_set, success), 0u) << text(err.message);
    }
    std::vector<std::string> places() const
    {
        return rows("SELECT id,volume_id,path,zfs_name,migrate_to_volume_id FROM share ORDER BY id");
    }
};

TEST_F(MigrateShare, IsMarkedAndMoved)
{
    expect_marked("tank/media", "pool2");
    EXPECT_THAT(places(), ElementsAre("1|tank|/no/such/tank/media|tank/media|pool2",
                                      "2|tank|/no/such/tank/photos|tank/photos|NULL"));
    get(1);
    EXPECT_STREQ(share.MigrateToVolumeId, "pool2");
    const char *path = "unset";
    EXPECT_EQ(end("tank/media", 1, &path), 0u) << text(err.message);
    EXPECT_STREQ(path, "/pool2/media");
    EXPECT_THAT(places(),
                ElementsAre("1|pool2|/pool2/media|pool2/media|NULL", "2|tank|/no/such/tank/photos|tank/photos|NULL"));
}

TEST_F(MigrateShare, WhatKnowsTheDataSetMovesAlong)
{
    add_everything(1);
    add_everything(2);
    sql("UPDATE share SET migrate_to_volume_id=NULL");
    std::vector<std::vector<std::string>> before;
    for (const std::string &table : tables_by_number()) before.push_back(rows_of(1, table));
    const auto names = [&] {
        return rows("SELECT cloned_zfs_name,parent_zfs_name FROM `$snapshot_clones` ORDER BY id");
    };
    const auto clones = names();
    sql("INSERT INTO backup (name,src_type,src_share_proto) VALUES('from','share','media')");
    expect_marked("tank/media", "pool2");
    expect_ended("tank/media", 1);
    EXPECT_THAT(rows("SELECT zfs_name,COUNT(*) FROM `$snapshot` GROUP BY 1"),
                ElementsAre("pool2/media|4", "tank/photos|4"));
    EXPECT_THAT(
        rows("SELECT zfs_name,app_name FROM `$application_on_share` ORDER BY 1,2"),
        ElementsAre("pool2/media|surveillance", "pool2/media|tm", "tank/photos|surveillance", "tank/photos|tm"));
    size_t i = 0;
    for (const std::string &table : tables_by_number()) EXPECT_EQ(rows_of(1, table), before[i++]) << table;
    EXPECT_EQ(names(), clones);
    EXPECT_THAT(rows("SELECT src_share_proto FROM backup"), ElementsAre("media"));
    get(1);
    EXPECT_EQ(share.NrContinuousSnapshots, 2);
    EXPECT_EQ(elements(share.UsedBy).size(), 2u);
}

TEST_F(MigrateShare, WithoutSuccessItStaysWhereItWas)
{
    add_everything(1);
    sql("UPDATE share SET migrate_to_volume_id=NULL");
    const std::string before = content();
    expect_marked("tank/media", "pool2");
    const char *path = nullptr;
    EXPECT_EQ(end("tank/media", 0, &path), 0u) << text(err.message);
    EXPECT_STREQ(path, "/pool2/media") << "where it did not get";
    EXPECT_EQ(content(), before);
    expect_marked("tank/media", "pool2");
}

TEST_F(MigrateShare, OneAtATime)
{
    expect_marked("tank/media", "pool2");
    for (const char *data_set : {"tank/media", "tank/photos", "tank/none"})
        for (const char *volume : {"pool2", "v3", "tank"})
            expect_failure(815, "Only one migration at a time", [&] { return mark(data_set, volume); });
    expect_ended("tank/photos", 0);
    expect_failure(815, "Only one migration at a time", [&] { return mark("tank/photos", "pool2"); });
    expect_ended("tank/media", 0);
    expect_marked("tank/photos", "pool2");
}

TEST_F(MigrateShare, NotToWhereItIs)
{
    expect_failure(8, "Destination VolumeId is the same as source", [&] { return mark("tank/media", "tank"); });
    sql("INSERT INTO _volume (id,lv_name) VALUES('tan','tan')");
    expect_marked("tank/media", "tan");
    expect_ended("tank/media", 1);
    EXPECT_EQ(value("SELECT zfs_name FROM share WHERE id=1"), "tan/media");
    expect_marked("tank/photos", "TANK");
}

TEST_F(MigrateShare, UnknownSharesAndVolumesAreNotLookedFor)
{
    const std::string before = content();
    for (const char *data_set : {"tank/none", "", static_cast<const char *>(nullptr)}) {
        expect_marked(data_set, "pool2");
        const char *path = "unset";
        EXPECT_EQ(end(data_set, 1, &path), 0u) << text(err.message);
        EXPECT_EQ(path, nullptr);
    }
    expect_marked("tank/media", nullptr);
    EXPECT_EQ(content(), before);
    expect_marked("tank/media", "nowhere");
    expect_ended("tank/media", 1);
    EXPECT_EQ(places()[0], "1|nowhere|NULL|nowhere/media|NULL");
}

TEST_F(MigrateShare, AVolumeWithANameOfItsOwn)
{
    expect_marked("tank/media", "v3");
    const char *path = nullptr;
    EXPECT_EQ(end("tank/media", 1, &path), 0u) << text(err.message);
    EXPECT_EQ(places()[0], "1|v3|/pool three/media|v3/media|NULL") << "the data set has the id, the path the name";
    EXPECT_STREQ(path, "/v3/media");
    expect_failure(8, "Destination VolumeId is the same as source", [&] { return mark("v3/media", "v3"); });
}

TEST_F(MigrateShare, ASuccessNeedsAMark)
{
    expect_failure(5, "Error in 'UPDATE share'.", [&] { return end("tank/media", 1); });
    sql("INSERT INTO `$application_on_share` VALUES('tank/media','tm',NULL)");
    expect_failure(5, "Error in 'UPDATE `$application_on_share`'.", [&] { return end("tank/media", 1); });
    sql("INSERT INTO `$snapshot` (zfs_name,name) VALUES('tank/media','s')");
    const char *path = "unset";
    expect_failure(5, "Error in 'UPDATE `$snapshot`'.", [&] { return end("tank/media", 1, &path); });
    EXPECT_STREQ(path, "unset");
    const std::string before = content();
    EXPECT_EQ(end("tank/media", 0, &path), 0u);
    EXPECT_EQ(path, nullptr);
    EXPECT_EQ(content(), before);
}

TEST_F(MigrateShare, ADataSetThatIsTakenThere)
{
    sql("UPDATE share SET zfs_name='pool2/media' WHERE id=2");
    expect_marked("tank/media", "pool2");
    expect_failure(5, "Error in 'UPDATE share'.", [&] { return end("tank/media", 1); });
    expect_ended("tank/media", 0);
}

TEST_F(MigrateShare, ThePathIsReadOnlyWhenItIsAskedFor)
{
    expect_marked("tank/media", "pool2");
    take_statements();
    expect_ended("tank/media", 0);
    for (const std::string &each : take_statements()) EXPECT_FALSE(each.starts_with("SELECT")) << each;
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
