// Lists of shares, single shares, and the small questions about one.
#include "fixture/plans.h"
#include "shares_read/shares.h"

using namespace test;

namespace {

struct ShareLists : Shares {
    ShareLists()
    {
        add_share(1, "media");
        add_share(2, "Backup");
        add_share(3, "block", "type='zvol'");
        add_share(4, "target", "type='replicate'");
        add_share(5, "archive", "volume_id='pool2',zfs_name='pool2/archive'");
    }

    uint32_t all() { return qbobj_getShareCollection(qbdb, db, &shares, &err); }
    std::vector<std::string> query(const char *volume, const char *pattern, const char *zfs_name)
    {
        return collect([&] { return qbobj_queryShare(qbdb, db, volume, pattern, zfs_name, &shares, &err); });
    }
};

TEST_F(ShareLists, TypesAndOrder)
{
    EXPECT_THAT(collect([&] { return all(); }), ElementsAre("archive", "Backup", "media"));
    EXPECT_THAT(collect([&] { return qbobj_getShareAndZvolCollection(qbdb, db, &shares, &err); }),
                ElementsAre("archive", "Backup", "block", "media"));
    EXPECT_THAT(collect([&] { return qbobj_getSubvolumeShareCollection(qbdb, db, &shares, &err); }),
                ElementsAre("archive", "Backup", "block", "media", "target"));
}

TEST_F(ShareLists, AreAppendedTo)
{
    Share kept{};
    kept.ShareName = "kept";
    shares.Share = &kept;
    ASSERT_EQ(all(), 0u);
    EXPECT_THAT(share_names(), ElementsAre("kept", "archive", "Backup", "media"));
}

TEST_F(ShareLists, MayBeEmpty)
{
    sql("DELETE FROM share");
    EXPECT_THAT(collect([&] { return all(); }), IsEmpty());
}

TEST_F(ShareLists, RunTheQueryWithEachTail)
{
    const std::vector<std::pair<std::string, std::function<uint32_t()>>> cases = {
        {" WHERE S.type='share' ORDER BY S.name COLLATE NOCASE", [&] { return all(); }},
        {" WHERE S.type='share' OR S.type='zvol' ORDER BY S.name COLLATE NOCASE",
         [&] { return qbobj_getShareAndZvolCollection(qbdb, db, &shares, &err); }},
        {"SC.cloned_zfs_name=S.name ORDER BY S.name COLLATE NOCASE",
         [&] { return qbobj_getSubvolumeShareCollection(qbdb, db, &shares, &err); }},
        {" WHERE S.volume_id='tank' AND S.name LIKE 'm%' AND S.zfs_name='tank/media'",
         [&] { return qbobj_queryShare(qbdb, db, "tank", "m%", "tank/media", &shares, &err); }},
    };
    for (const auto &[tail, call] : cases) {
        take_statements();
        shares = {};
        ASSERT_EQ(call(), 0u);
        EXPECT_THAT(take_statements(), testing::Contains(testing::EndsWith(tail)));
    }
}

TEST_F(ShareLists, QueryFilters)
{
    EXPECT_THAT(query("tank", nullptr, nullptr), testing::UnorderedElementsAre("media", "Backup", "block", "target"));
    EXPECT_THAT(query(nullptr, "B%", nullptr), testing::UnorderedElementsAre("Backup", "block")) << "without case";
    EXPECT_THAT(query(nullptr, nullptr, "pool2/archive"), ElementsAre("archive"));
    EXPECT_THAT(query("tank", "%a%", "tank/media"), ElementsAre("media"));
    EXPECT_THAT(query("pool2", "%", "tank/media"), IsEmpty());
    EXPECT_THAT(query(nullptr, "a'b", nullptr), IsEmpty()) << "quoted";
    EXPECT_THAT(query("", nullptr, nullptr), IsEmpty()) << "given, and no share has it";
}

TEST_F(ShareLists, QueryWithoutFiltersAsksNothing)
{
    take_statements();
    EXPECT_THAT(query(nullptr, nullptr, nullptr), IsEmpty());
    EXPECT_EQ(take_statements().size(), 2u) << "begin and commit";
}

TEST_F(ShareLists, QueryOfTooManyBytesRunsNothing)
{
    // S.name LIKE '…' takes 14 bytes beside the pattern, and one ends the text.
    const std::string fits(512 - 15, 'x');
    EXPECT_THAT(query(nullptr, fits.c_str(), nullptr), IsEmpty());
    const std::string longer = fits + "x";
    expect_failure(5, "Failed DB Query for 'SELECT FROM share'. The filters are too long.",
                   [&] { return qbobj_queryShare(qbdb, db, nullptr, longer.c_str(), nullptr, &shares, &err); });
    expect_failure(5, "Failed DB Query for 'SELECT FROM share'. The filters are too long.",
                   [&] { return qbobj_queryShare(qbdb, db, longer.c_str(), "x", nullptr, &shares, &err); });
}

TEST_F(ShareLists, AFailureLeavesWhatWasRead)
{
    fail_statement(2, 1, "injected", "FROM snapshot_schedule");
    expect_failure(5, "Failed DB Query for 'SELECT FROM snapshot_schedule'. injected", [&] { return all(); });
    ASSERT_EQ(elements(shares.Share).size(), 2u);
    EXPECT_STREQ(shares.Share->ShareName, "archive");
    EXPECT_STREQ(shares.Share->Sync, "standard");
}

TEST_F(ShareLists, EveryStatementUsesAnIndex)
{
    add_accounts();
    add_everything(1);
    take_statements();
    ASSERT_EQ(all(), 0u);
    ASSERT_EQ(qbobj_getShareAndZvolCollection(qbdb, db, &shares, &err), 0u);
    query("tank", nullptr, nullptr);
    query(nullptr, nullptr, "tank/media");
    get(1);
    SimpleShareCollection brief{};
    ASSERT_EQ(qbobj_getSimpleShareCollection(qbdb, db, &brief, &err), 0u);
    Process *processes = nullptr;
    ASSERT_EQ(qbobj_getShareProcess(qbdb, db, "tank/media", &processes, &err), 0u);
    UsedBy *users = nullptr;
    ASSERT_EQ(qbobj_getUsedByOn(qbdb, db, "tank/media", &users, &err), 0u);
    Schedule schedule{};
    ASSERT_EQ(qbobj_getShareSnapshotSchedule(qbdb, db, "media", &schedule, &err), 0u);
    expect_indexed(db, take_statements(), {{"share", "ORDER BY S.name COLLATE NOCASE", "lists all of them in order"}});
}

// ---- one share

struct OneShare : ShareLists {
    uint32_t read(const char *key, const char *id, const char *name)
    {
        share = {};
        share.key = key;
        share.ShareId = id;
        share.ShareName = name;
        return qbobj_getShare(qbdb, db, &share, &err);
    }
};

TEST_F(OneShare, IsNamedByKeyIdOrName)
{
    struct Case {
        const char *key;
        const char *id;
        const char *name;
        const char *found;
    };
    for (const Case &each : {Case{"1", nullptr, nullptr, "media"}, Case{"1", "2", "archive", "media"},
                             Case{nullptr, "2", "media", "Backup"}, Case{"x", "2", nullptr, "Backup"},
                             Case{"x", "0", "archive", "archive"}, Case{nullptr, nullptr, "ARCHIVE", "archive"},
                             Case{nullptr, "3", nullptr, "block"}}) {
        ASSERT_EQ(read(each.key, each.id, each.name), 0u) << text(err.message);
        EXPECT_STREQ(share.ShareName, each.found);
    }
}

TEST_F(OneShare, WhatNamesNone)
{
    struct Case {
        const char *id;
        const char *name;
        uint32_t code;
        const char *message;
    };
    for (const Case &each :
         {Case{nullptr, nullptr, 5, "Invalid ShareId=(null)."}, Case{"abc", nullptr, 5, "Invalid ShareId=abc."},
          Case{"-1", "gone", 5, "Invalid ShareId=-1."}, Case{"0", nullptr, 5, "Invalid ShareId=0."},
          Case{"99", "media", 6, "None of row selected for resource_id=99."}}) {
        expect_failure(each.code, each.message, [&] { return read(nullptr, each.id, each.name); });
        EXPECT_EQ(share.Stat, nullptr) << "not written";
        EXPECT_EQ(share.ShareId, each.id);
    }
    fail_statement(1, 1, "injected", "SELECT id FROM share WHERE name=");
    expect_failure(5, "Failed DB Query for 'SELECT share'. injected", [&] { return read(nullptr, nullptr, "media"); });
}

TEST_F(OneShare, AChainIsReadInTurn)
{
    Share third{};
    third.ShareId = "77";
    Share second{};
    second.ShareName = "archive";
    second.next = &third;
    share = {};
    share.ShareId = "1";
    share.next = &second;
    EXPECT_EQ(qbobj_getShare(qbdb, db, &share, &err), 6u);
    EXPECT_STREQ(share.ShareName, "media");
    EXPECT_EQ(share.next, &second);
    EXPECT_STREQ(second.ZfsName, "pool2/archive");
    EXPECT_EQ(second.next, &third);
    EXPECT_EQ(third.ShareName, nullptr);
}

TEST_F(OneShare, WhatTheRecordHeldDoesNotStay)
{
    share = {};
    share.ShareId = "1";
    share.OldShareName = "before";
    CifsShareOption cifs{};
    share.Cifs = &cifs;
    ASSERT_EQ(qbobj_getShare(qbdb, db, &share, &err), 0u);
    EXPECT_EQ(share.OldShareName, nullptr);
    EXPECT_EQ(share.Cifs, nullptr);
}

TEST_F(OneShare, IdByName)
{
    EXPECT_EQ(qbobj_getShareId(qbdb, db, "backup", &err), 2u);
    EXPECT_EQ(qbobj_getShareId(qbdb, db, "gone", &err), 0xFFFFFFFFu);
    EXPECT_EQ(qbobj_getShareId(qbdb, db, nullptr, &err), 0xFFFFFFFFu);
    fail_statement(1);
    EXPECT_EQ(qbobj_getShareId(qbdb, db, "backup", &err), 0xFFFFFFFFu);
    EXPECT_EQ(err.code, 0u);
}

TEST_F(OneShare, SnapshotSchedule)
{
    sql("INSERT INTO snapshot_schedule VALUES(1,1,'5','4','3','2','1',11,12,13,14)");
    Schedule schedule{};
    schedule.Month = "before";
    ASSERT_EQ(qbobj_getShareSnapshotSchedule(qbdb, db, "Media", &schedule, &err), 0u);
    EXPECT_STREQ(schedule.Minute, "5");
    EXPECT_STREQ(schedule.DayOfWeek, "2");
    EXPECT_STREQ(schedule.Month, "1");
    EXPECT_EQ(schedule.LastWeeklyTaken, 14);
    ASSERT_EQ(qbobj_getShareSnapshotSchedule(qbdb, db, "block", &schedule, &err), 0u);
    EXPECT_EQ(schedule.Minute, nullptr) << "a share without a schedule";
    schedule.Hour = "kept";
    expect_failure(6, "Share name (gone) may be invalid.",
                   [&] { return qbobj_getShareSnapshotSchedule(qbdb, db, "gone", &schedule, &err); });
    expect_failure(6, "Share name ((null)) may be invalid.",
                   [&] { return qbobj_getShareSnapshotSchedule(qbdb, db, nullptr, &schedule, &err); });
    fail_statement(1);
    expect_failure(5, "Failed DB Query for 'SELECT share'. injected",
                   [&] { return qbobj_getShareSnapshotSchedule(qbdb, db, "media", &schedule, &err); });
    EXPECT_STREQ(schedule.Hour, "kept");
}

TEST_F(OneShare, Processes)
{
    sql("INSERT INTO process_on_share (share_id,pid,blocking,ts) VALUES(1,30,2,'2024-01-02 03:04:05'),(1,20,0,NULL),"
        "(2,10,1,NULL)");
    Process *processes = nullptr;
    take_statements();
    ASSERT_EQ(qbobj_getShareProcess(qbdb, db, "tank/media", &processes, &err), 0u);
    EXPECT_EQ(
        take_statements()[1],
        "SELECT PS.pid,PS.blocking,STRFTIME('%s',PS.ts) FROM `process_on_share` PS WHERE PS.share_id=(SELECT S.id "
        "FROM `share` S WHERE S.zfs_name='tank/media')");
    std::map<int32_t, std::pair<int32_t, int32_t>> read;
    for (const Process *each : elements(processes)) read[each->ProcessId] = {each->Blocking, each->Timestamp};
    EXPECT_EQ(read, (decltype(read){{30, {2, 1704164645}}, {20, {0, 0}}}));
    processes = nullptr;
    ASSERT_EQ(qbobj_getShareProcess(qbdb, db, nullptr, &processes, &err), 0u);
    EXPECT_EQ(processes, nullptr);
    expect_failure(8, "procs cannot be NULL.",
                   [&] { return qbobj_getShareProcess(qbdb, db, "tank/media", nullptr, &err); });
}

TEST_F(OneShare, UsedBy)
{
    sql("INSERT INTO `$application_on_share` VALUES('tank/media','tm','x'),('tank/Backup','camera',NULL),"
        "('tank2/other','sync','y'),('pool2/archive','tm','z')");
    const auto applications = [&](const char *name) {
        UsedBy *head = nullptr;
        EXPECT_EQ(qbobj_getUsedByOn(qbdb, db, name, &head, &err), 0u) << text(err.message);
        std::vector<std::string> all;
        for (const UsedBy *each : elements(head)) all.push_back(text(each->AppName) + "=" + text(each->AppData));
        return all;
    };
    EXPECT_THAT(applications("tank/media"), ElementsAre("tm=x"));
    EXPECT_THAT(applications("tank/"), IsEmpty()) << "with a slash it is a data set";
    EXPECT_THAT(applications("tank"), testing::UnorderedElementsAre("tm=x", "camera=(null)", "sync=y"))
        << "also those of a volume whose name begins so";
    EXPECT_THAT(applications("pool2"), ElementsAre("tm=z"));
    EXPECT_THAT(applications(nullptr), IsEmpty());
    fail_statement(1);
    UsedBy *head = nullptr;
    expect_failure(5, "Failed DB Query for 'SELECT FROM $application_on_share'. injected",
                   [&] { return qbobj_getUsedByOn(qbdb, db, "tank", &head, &err); });
}

// ---- shares in brief

struct SimpleShares : ShareLists {
    SimpleShareCollection brief{};

    std::vector<std::string> list()
    {
        brief = {};
        EXPECT_EQ(qbobj_getSimpleShareCollection(qbdb, db, &brief, &err), 0u) << text(err.message);
        std::vector<std::string> all;
        for (const SimpleShare *each : elements(brief.SimpleShare))
            all.push_back(text(each->ShareName) + ":" + text(each->CommonProtocolsCSV));
        return all;
    }
};

TEST_F(SimpleShares, ProtocolsThatServe)
{
    sql("INSERT INTO cifs_share_option (share_id,cifs_access,available) VALUES(1,'writeable',1),(2,'disabled',1);"
        "INSERT INTO afp_share_option (share_id,afp_access,available) VALUES(1,'readonly',1),(2,'writeable',1);"
        "INSERT INTO ftp_share_option (share_id,ftp_access,available) VALUES(1,'writeable',1),(2,'writeable',0);"
        "INSERT INTO nfs_share_option (share_id,nfs_access,available) VALUES(1,'writeable',1),(2,'writeable',NULL),"
        "(5,NULL,1);"
        "INSERT INTO http_share_option (share_id,http_access,available) VALUES(5,'writeable',1);"
        "INSERT INTO `$application_on_share` VALUES('tank/media','tm','x')");
    EXPECT_THAT(list(), ElementsAre("archive:", "Backup:afp", "media:cifs,afp,ftp,nfs"));
    const SimpleShare *media = elements(brief.SimpleShare)[2];
    EXPECT_STREQ(media->ShareId, "1");
    EXPECT_STREQ(media->key, "1");
    ASSERT_NE(media->UsedBy, nullptr);
    EXPECT_STREQ(media->UsedBy->AppName, "tm");
    EXPECT_EQ(brief.SimpleShare->UsedBy, nullptr);
}

TEST_F(SimpleShares, AFailureLeavesWhatWasRead)
{
    fail_statement(2, 1, "injected", "application_on_share");
    expect_failure(5, "Failed DB Query for 'SELECT FROM $application_on_share'. injected",
                   [&] { return qbobj_getSimpleShareCollection(qbdb, db, &brief, &err); });
    EXPECT_EQ(elements(brief.SimpleShare).size(), 2u);
}

// ---- traces and contracts

TEST_F(ShareLists, WorkersTraceTheirResult)
{
    qbdb->log_level = 5;
    log.clear();
    ASSERT_EQ(all(), 0u);
    EXPECT_THAT(logged(5), testing::Contains("x_qbobj_getShareCollection() rc=0 nrow=3\n"));
    share = {};
    share.ShareId = "99";
    EXPECT_EQ(qbobj_getShare(qbdb, db, &share, &err), 6u);
    EXPECT_THAT(logged(5), testing::Contains("x_qbobj_getShare() rc=6\n"));
}

using ShareListsDeathTest = ShareLists;

TEST_F(ShareListsDeathTest, NeedTheirRecords)
{
    EXPECT_DEATH(qbobj_queryShare(qbdb, db, "tank", nullptr, nullptr, nullptr, &err), "Assertion `shares' failed");
    EXPECT_DEATH(qbobj_getShareCollection(qbdb, db, nullptr, &err), "Assertion `shares' failed");
    EXPECT_DEATH(qbobj_getSimpleShareCollection(qbdb, db, nullptr, &err), "Assertion `shares' failed");
    EXPECT_DEATH(qbobj_getShare(qbdb, db, nullptr, &err), "Assertion `share' failed");
    EXPECT_DEATH(qbobj_getUsedByOn(qbdb, db, "tank", nullptr, &err), "Assertion `usedby' failed");
    EXPECT_DEATH(qbobj_getShareSnapshotSchedule(qbdb, db, "media", nullptr, &err), "Assertion `schedule' failed");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
