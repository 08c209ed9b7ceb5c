// Deleting shares one by one, in chains, by data set and by volume; taking processes and applications off them.
#include "fixture/plans.h"
#include "share_removal/removal.h"

using namespace test;

namespace {

struct DeleteShare : Removal {
    DeleteShare()
    {
        add_share(1, "media");
        add_share(2, "photos");
    }

    void use(const std::string &name, const std::string &application)
    {
        UsedBy used{nullptr, application.c_str(), nullptr};
        EXPECT_EQ(qbobj_addShareUsedBy(qbdb, db, ("tank/" + name).c_str(), &used, &err), 0u) << text(err.message);
    }
    uint32_t remove(const char *id)
    {
        share = {};
        share.ShareId = id;
        return qbobj_deleteShare(qbdb, db, &share, &err);
    }
    void expect_removed(const char *id) { EXPECT_EQ(remove(id), 0u) << text(err.message); }
};

TEST_F(DeleteShare, TakesEverythingAlongAndNothingOfAnother)
{
    add_everything(1);
    add_everything(2);
    sql("DELETE FROM `$application_on_share`; UPDATE service_http SET share_name='media';"
        "INSERT INTO `$application_on_share` VALUES('tank/photos','tm',NULL);"
        "INSERT INTO _group_quota_stat VALUES(1,111,5);"
        "INSERT INTO backup (name,src_type,src_share_proto,dst_type,dst_share_proto) VALUES"
        "('from','share','media','usb','x'),('to','usb','x','share','media'),('home','home','media','volume','media'),"
        "('other','share','photos','share','photos')");
    std::vector<std::vector<std::string>> others;
    for (const std::string &table : tables_by_number()) {
        EXPECT_FALSE(rows_of(1, table).empty()) << table;
        others.push_back(rows_of(2, table));
    }
    expect_removed("1");
    size_t i = 0;
    for (const std::string &table : tables_by_number()) {
        EXPECT_THAT(rows_of(1, table), IsEmpty()) << table;
        EXPECT_EQ(rows_of(2, table), others[i++]) << table;
    }
    EXPECT_THAT(ids(), ElementsAre("2"));
    EXPECT_EQ(value("SELECT COUNT(*) FROM `$snapshot` WHERE zfs_name='tank/media'"), "0");
    EXPECT_EQ(value("SELECT COUNT(*) FROM `$snapshot` WHERE zfs_name='tank/photos'"), "4");
    EXPECT_THAT(rows("SELECT DISTINCT cloned_zfs_name,parent_zfs_name FROM `$snapshot_clones` ORDER BY id"),
                ElementsAre("photos|origin", "copy|photos"));
    EXPECT_THAT(rows("SELECT zfs_name FROM `$application_on_share`"), ElementsAre("tank/photos"));
    EXPECT_THAT(rows("SELECT name FROM backup"), ElementsAre("home", "other"));
    EXPECT_EQ(value("SELECT share_name FROM service_http"), "");
}

TEST_F(DeleteShare, IsNamedByKeyThenById)
{
    add_share(3, "music");
    share = {};
    share.key = "1";
    share.ShareId = "2";
    EXPECT_EQ(qbobj_deleteShare(qbdb, db, &share, &err), 0u) << text(err.message);
    EXPECT_THAT(ids(), ElementsAre("2", "3"));
    share.key = "music";
    EXPECT_EQ(qbobj_deleteShare(qbdb, db, &share, &err), 0u) << text(err.message);
    EXPECT_THAT(ids(), ElementsAre("3"));
}

TEST_F(DeleteShare, RefusesWhatIsNoId)
{
    for (const char *id : {"", "0", "-1", "one", " 1", "1 ", "0x1", "1.0", "2147483648", "18446744073709551617"})
        expect_failure(8, "Invalid resource_id (" + std::string(id) + ").", [&] { return remove(id); });
    expect_failure(8, "Invalid resource_id ((null)).", [&] { return remove(nullptr); });
    share = {};
    share.key = "media";
    expect_failure(8, "Invalid resource_id (media).", [&] { return qbobj_deleteShare(qbdb, db, &share, &err); });
    share = {};
    share.ShareName = "media";
    expect_failure(8, "Invalid resource_id ((null)).", [&] { return qbobj_deleteShare(qbdb, db, &share, &err); });
}

TEST_F(DeleteShare, RefusesANumberWithoutAShare)
{
    expect_failure(8, "Share (share_id=99) not exist.", [&] { return remove("99"); });
    expect_failure(8, "Share (share_id=2147483647) not exist.", [&] { return remove("2147483647"); });
}

TEST_F(DeleteShare, RefusesAShareThatAnApplicationUses)
{
    use("media", "it's %s");
    expect_failure(902, "(it's %s).", [&] { return remove("1"); });
    UsedBy used{nullptr, "it's %s", nullptr};
    EXPECT_EQ(qbobj_deleteShareUsedBy(qbdb, db, "tank/media", &used, &err), 0u) << text(err.message);
    use("photos", "tm");
    expect_removed("1");
}

TEST_F(DeleteShare, RefusesAShareThatHoldsAnother)
{
    add_share(3, "inner", "path='/no/such/tank/media/inner'");
    expect_failure(8, "Cannot delete share (share_id=1).", [&] { return remove("1"); });
    use("media", "tm");
    expect_failure(902, "(tm).", [&] { return remove("1"); });
    sql("DELETE FROM `$application_on_share`");
    expect_removed("3");
    expect_removed("1");
}

TEST_F(DeleteShare, LettersInCommonDoNotHoldItBack)
{
    add_share(3, "mediathek");
    add_share(4, "sub", "path='/other/no/such/tank/media/sub'");
    expect_removed("1");
    EXPECT_THAT(ids(), ElementsAre("2", "3", "4"));
}

TEST_F(DeleteShare, PathsCompareAsPatterns)
{
    add_share(3, "a_b", "path='/tank/a_b'");
    add_share(4, "within", "path='/TANK/aXb/within'");
    expect_failure(8, "Cannot delete share (share_id=3).", [&] { return remove("3"); });
}

TEST_F(DeleteShare, AShareWithoutAPathGoes)
{
    sql("UPDATE share SET path=NULL WHERE id=1");
    expect_removed("1");
}

TEST_F(DeleteShare, ProcessesAndAMigrationDoNotHoldItBack)
{
    EXPECT_EQ(qbobj_addShareProcess(qbdb, db, "tank/media", 4711, 2, &err), 0u);
    EXPECT_EQ(qbobj_preMigrateShare(qbdb, db, "tank/media", "pool2", &err), 0u);
    expect_removed("1");
    EXPECT_EQ(value("SELECT COUNT(*) FROM process_on_share"), "0");
    EXPECT_EQ(qbobj_preMigrateShare(qbdb, db, "tank/photos", "pool2", &err), 0u) << "the mark went with the share";
}

TEST_F(DeleteShare, AsksInItsOrder)
{
    take_statements();
    expect_removed("1");
    const std::vector<std::string> ran = take_statements();
    const std::vector<std::string> expected = {
        "SELECT S.zfs_name FROM share S WHERE S.id=1",
        "SELECT app_name FROM '$application_on_share' WHERE zfs_name='tank/media' limit 1",
        "SELECT 1 FROM share S WHERE S.path LIKE (SELECT path FROM share WHERE id=1)||'/%'",
        "SELECT path FROM share S WHERE id=1",
        "SELECT S.name FROM share S WHERE S.id=1",
    };
    ASSERT_GT(ran.size(), expected.size());
    EXPECT_EQ(std::vector<std::string>(ran.begin() + 1, ran.begin() + 1 + static_cast<long>(expected.size())),
              expected);
}

TEST_F(DeleteShare, WithAnSmbBlockTheServiceLearnsOfIt)
{
    share = {};
    share.ShareId = "1";
    NfsShareOption nfs{};
    HttpShareOption http{};
    share.Nfs = &nfs;
    share.Http = &http;
    EXPECT_EQ(qbobj_deleteShare(qbdb, db, &share, &err), 0u);
    EXPECT_THAT(regenerated, IsEmpty());
    CifsShareOption cifs{};
    share = {};
    share.ShareId = "2";
    share.Cifs = &cifs;
    EXPECT_EQ(qbobj_deleteShare(qbdb, db, &share, &err), 0u);
    EXPECT_THAT(regenerated, ElementsAre("cifs"));
    expect_failure(8, "Share (share_id=2) not exist.", [&] { return qbobj_deleteShare(qbdb, db, &share, &err); });
    EXPECT_EQ(regenerated.size(), 1u) << "what did not go is not told";
}

TEST_F(DeleteShare, AChainGoesWholeOrNotAtAll)
{
    add_share(3, "inner", "path='/no/such/tank/media/inner'");
    Share outer{};
    outer.ShareId = "1";
    Share inner{};
    inner.ShareId = "3";
    outer.next = &inner;
    expect_failure(8, "Cannot delete share (share_id=1).", [&] { return qbobj_deleteShare(qbdb, db, &outer, &err); });
    outer.next = nullptr;
    inner.next = &outer;
    Share again{};
    again.ShareId = "3";
    outer.next = &again;
    expect_failure(8, "Share (share_id=3) not exist.", [&] { return qbobj_deleteShare(qbdb, db, &inner, &err); });
    outer.next = nullptr;
    EXPECT_EQ(qbobj_deleteShare(qbdb, db, &inner, &err), 0u) << text(err.message);
    EXPECT_THAT(ids(), ElementsAre("2"));
    EXPECT_EQ(qbobj_deleteShare(qbdb, db, nullptr, &err), 0u);
}

TEST_F(DeleteShare, ARowThatDoesNotGoIsTold)
{
    sql("CREATE TRIGGER stays BEFORE DELETE ON share BEGIN SELECT RAISE(IGNORE); END");
    expect_failure(6, "None of row is deleted. May be bad resource_id=1'", [&] { return remove("1"); });
}

TEST_F(DeleteShare, LooksEverythingUpByIndexes)
{
    take_statements();
    expect_removed("1");
    EXPECT_EQ(qbobj_deleteZvol(qbdb, db, "tank/photos", &err), 0u);
    EXPECT_EQ(qbobj_deleteShareOnVolume(qbdb, db, "tank", &err), 0u);
    EXPECT_EQ(qbobj_deleteShareProcess(qbdb, db, "tank/photos", 0, &err), 0u);
    UsedBy used{nullptr, "tm", nullptr};
    EXPECT_EQ(qbobj_deleteShareUsedBy(qbdb, db, "tank/photos", &used, &err), 0u);
    EXPECT_EQ(qbobj_preMigrateShare(qbdb, db, "tank/media", "pool2", &err), 0u);
    EXPECT_EQ(qbobj_postMigrateShare(qbdb, db, "tank/media", 1, nullptr, &err), 0u);
    expect_indexed(db, take_statements(), {{"share", " LIKE ", "a path that begins with another without regard to case"}});
}

// ---- by data set and by volume

TEST_F(DeleteShare, ADataSetGoesWhoeverUsesIt)
{
    add_everything(1);
    add_share(3, "inner", "path='/no/such/tank/media/inner'");
    EXPECT_EQ(qbobj_deleteZvol(qbdb, db, "tank/media", &err), 0u) << text(err.message);
    EXPECT_THAT(ids(), ElementsAre("2", "3"));
    for (const std::string &table : tables_by_number()) EXPECT_THAT(rows_of(1, table), IsEmpty()) << table;
    EXPECT_EQ(value("SELECT COUNT(*) FROM `$application_on_share`"), "0");
}

TEST_F(DeleteShare, ADataSetThatIsNotThere)
{
    sql("INSERT INTO snapshot_management (share_id,retention_rule) VALUES(0,7)");
    for (const char *name : {"tank/none", "media", "", static_cast<const char *>(nullptr)})
        expect_failure(6, "None of row is deleted. May be bad resource_id=0'",
                       [&] { return qbobj_deleteZvol(qbdb, db, name, &err); });
}

TEST_F(DeleteShare, AVolumeLosesItsSharesInRowOrder)
{
    add_share(3, "block", "type='zvol'");
    add_share(4, "elsewhere", "volume_id='pool2',zfs_name='pool2/elsewhere'");
    add_share(5, "inner", "path='/no/such/tank/media/inner'");
    use("media", "tm");
    take_statements();
    EXPECT_EQ(qbobj_deleteShareOnVolume(qbdb, db, "tank", &err), 0u) << text(err.message);
    std::vector<std::string> order;
    for (const std::string &each : take_statements())
        if (each.starts_with("DELETE FROM share WHERE id=")) order.push_back(each.substr(27));
    EXPECT_THAT(order, ElementsAre("1", "2", "3", "5"));
    EXPECT_THAT(ids(), ElementsAre("4"));
    EXPECT_EQ(value("SELECT COUNT(*) FROM `$application_on_share`"), "0");
    for (const char *volume : {"tank", "none", "it's", static_cast<const char *>(nullptr)})
        EXPECT_EQ(qbobj_deleteShareOnVolume(qbdb, db, volume, &err), 0u) << text(volume);
    EXPECT_THAT(ids(), ElementsAre("4"));
}

TEST_F(DeleteShare, AVolumeKeepsItsSharesWhenOneCannotGo)
{
    sql("CREATE TRIGGER stays BEFORE DELETE ON share WHEN OLD.id=2 BEGIN SELECT RAISE(IGNORE); END");
    expect_failure(6, "None of row is deleted. May be bad resource_id=2'",
                   [&] { return qbobj_deleteShareOnVolume(qbdb, db, "tank", &err); });
}

// ---- processes and applications

TEST_F(DeleteShare, ProcessesGoOneByOneOrAllAtOnce)
{
    sql("INSERT INTO process_on_share (share_id,pid,blocking) VALUES(1,10,0),(1,11,1),(1,-12,1),(2,10,1)");
    const auto off = [&](const char *name, int32_t pid) {
        EXPECT_EQ(qbobj_deleteShareProcess(qbdb, db, name, pid, &err), 0u) << text(err.message);
        return rows("SELECT share_id,pid FROM process_on_share ORDER BY share_id,pid");
    };
    EXPECT_THAT(off("tank/media", 10), ElementsAre("1|-12", "1|11", "2|10"));
    EXPECT_THAT(off("tank/media", 10), ElementsAre("1|-12", "1|11", "2|10")) << "none to take off";
    EXPECT_THAT(off("tank/media", -12), ElementsAre("1|11", "2|10"));
    EXPECT_THAT(off("media", 11), ElementsAre("1|11", "2|10")) << "the data set, not the name";
    EXPECT_THAT(off(nullptr, 0), ElementsAre("1|11", "2|10"));
    sql("INSERT INTO process_on_share (share_id,pid) VALUES(1,10)");
    EXPECT_THAT(off("tank/media", 0), ElementsAre("2|10"));
    get(1);
    EXPECT_EQ(share.Busy, 0);
}

TEST_F(DeleteShare, AnApplicationLeavesOneShare)
{
    use("media", "tm");
    use("media", "it's");
    use("photos", "tm");
    const auto off = [&](const char *name, UsedBy used) {
        EXPECT_EQ(qbobj_deleteShareUsedBy(qbdb, db, name, &used, &err), 0u) << text(err.message);
        return rows("SELECT zfs_name,app_name FROM `$application_on_share` ORDER BY 1,2");
    };
    EXPECT_THAT(off("tank/none", {nullptr, "tm", nullptr}),
                ElementsAre("tank/media|it's", "tank/media|tm", "tank/photos|tm"));
    EXPECT_THAT(off("tank/media", {nullptr, "tm", "of no matter"}), ElementsAre("tank/media|it's", "tank/photos|tm"));
    EXPECT_THAT(off("tank/media", {nullptr, "it's", nullptr}), ElementsAre("tank/photos|tm"));
    EXPECT_THAT(off(nullptr, {nullptr, "tm", nullptr}), ElementsAre("tank/photos|tm"));
}

TEST_F(DeleteShare, AnApplicationHasAName)
{
    use("media", "tm");
    UsedBy nameless{nullptr, nullptr, "tm"};
    for (UsedBy *used : {&nameless, static_cast<UsedBy *>(nullptr)})
        expect_failure(8, "usedby and usedby->AppName cannot be NULL",
                       [&] { return qbobj_deleteShareUsedBy(qbdb, db, "tank/media", used, &err); });
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
