// The system log: reading with filters and pages, adding, deleting, truncating.
#include <time.h>

#include <cstring>

#include "fixture/fixture.h"
#include "fixture/plans.h"
#include "fixture/text_of.h"

using test::elements;
using test::text_of;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Ids = std::vector<int32_t>;

struct Log : test::Database {
    LogQuery query{};
    LogEntry *entries = nullptr;
    int32_t count = -1;
    int32_t total = -1;

    uint32_t add(int32_t time, const char *severity = nullptr, const char *category = nullptr,
                 const char *tag = nullptr, const char *xml = nullptr)
    {
        return qbobj_addLog(qbdb, db, time, severity, category, tag, xml, &err);
    }
    uint32_t get(LogQuery *which) { return qbobj_getLog(qbdb, db, which, &entries, &count, &total, &err); }
    uint32_t remove(LogQuery *which) { return qbobj_deleteLog(qbdb, db, which, &err); }
    uint32_t truncate(int32_t keep) { return qbobj_truncateLog(qbdb, db, keep, &err); }

    /// Numbers of the entries that a query reads, in its order.
    Ids read(LogQuery which)
    {
        entries = nullptr;
        EXPECT_EQ(get(&which), 0u) << (err.message ? err.message : "");
        Ids ids;
        for (const LogEntry *entry : elements(entries)) ids.push_back(entry->LogId);
        return ids;
    }
    /// Numbers of all entries that there are.
    Ids left() const
    {
        Ids ids;
        for (const std::string &row : rows("SELECT id FROM `$log` ORDER BY id")) ids.push_back(std::stoi(row));
        return ids;
    }
};

/// Nine entries of rising severity, ten seconds apart in the order of their numbers.
struct FilledLog : Log {
    FilledLog()
    {
        sql("INSERT INTO `$log` VALUES"
            "(1,10,'debug','misc','LOGMSG_A',NULL),(2,20,'info','disk','LOGMSG_B',''),"
            "(3,30,'notice','disk','LOGMSG_C','<x/>'),(4,40,'warning','share','LOGMSG_A',NULL),"
            "(5,50,'err','volume','LOGMSG_it''s',NULL),(6,60,'crit','apps','LOGMSG_B',NULL),"
            "(7,70,'alert','disk','LOGMSG_B',NULL),(8,80,'emerge','system','LOGMSG_B',NULL),"
            "(9,90,'emerg','system','LOGMSG_D',NULL)");
    }
};

// ---- Reading

TEST_F(Log, AnEmptyLogReadsAsNothing)
{
    ASSERT_EQ(get(nullptr), 0u) << err.message;
    EXPECT_EQ(entries, nullptr);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(total, 0);
}

TEST_F(FilledLog, EntriesHaveAllTheirFields)
{
    query.timestamp_min = 25;
    query.timestamp_max = 45;
    ASSERT_EQ(get(&query), 0u);
    const auto all = elements(entries);
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(text_of(all[0]),
              "LogId=3 TimeStamp=30 Severity=notice Category=disk MessageTag=LOGMSG_C MessageArgsXml=<x/>");
    EXPECT_EQ(all[1]->MessageArgsXml, nullptr);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(total, 9);
}

struct Filter {
    const char *name;
    LogQuery query;
    Ids ids;
};

LogQuery times(int32_t min, int32_t max)
{
    LogQuery query{};
    query.timestamp_min = min;
    query.timestamp_max = max;
    return query;
}

LogQuery least(const char *severity)
{
    LogQuery query{};
    query.severity = severity;
    return query;
}

LogQuery lists(const char *severities, const char *categories, const char *tag)
{
    LogQuery query{};
    query.severity_in = severities;
    query.category_in = categories;
    query.msg_tag = tag;
    return query;
}

LogQuery page(int32_t limit, int32_t offset, int32_t order = 0)
{
    LogQuery query{};
    query.limit = limit;
    query.offset = offset;
    query.order = order;
    return query;
}

const Ids kAll = {1, 2, 3, 4, 5, 6, 7, 8, 9};
const Ids kFromInfo = {2, 3, 4, 5, 6, 7, 9};
const Ids kFromNotice = {3, 4, 5, 6, 7, 9};
const Ids kFromWarning = {4, 5, 6, 7, 9};
const Ids kFromErr = {5, 6, 7, 9};
const Ids kFromCrit = {6, 7, 9};

TEST_F(FilledLog, Filters)
{
    const Filter filters[] = {
        {"nothing asked", {}, kAll},
        // Both bounds are strict.
        {"after", times(30, 0), {4, 5, 6, 7, 8, 9}},
        {"before", times(0, 30), {1, 2}},
        {"between", times(30, 50), {4}},
        {"between neighbours", times(30, 31), {}},
        {"turned round", times(50, 30), {}},
        {"from before the epoch", times(-5, 20), {1}},
        {"up to before the epoch", times(0, -5), {}},
        // info, notice, alert and emerg match whole; warn, err and crit by their beginning; case is ignored.
        {"info", least("info"), kFromInfo},
        {"INFO", least("INFO"), kFromInfo},
        {"information", least("information"), kAll},
        {"inf", least("inf"), kAll},
        {"notice", least("notice"), kFromNotice},
        {"Notice", least("Notice"), kFromNotice},
        {"notices", least("notices"), kAll},
        {"warn", least("warn"), kFromWarning},
        {"Warning", least("Warning"), kFromWarning},
        {"WARNED", least("WARNED"), kFromWarning},
        {"war", least("war"), kAll},
        {"err", least("err"), kFromErr},
        {"Error", least("Error"), kFromErr},
        {"er", least("er"), kAll},
        {"crit", least("crit"), kFromCrit},
        {"critical", least("critical"), kFromCrit},
        {"cri", least("cri"), kAll},
        {"alert", least("alert"), {7, 9}},
        {"ALERT", least("ALERT"), {7, 9}},
        {"alerts", least("alerts"), kAll},
        // What adding stores, "emerge", is selected by no least severity.
        {"emerg", least("emerg"), {9}},
        {"Emerg", least("Emerg"), {9}},
        {"emerge", least("emerge"), kAll},
        {"emergency", least("emergency"), kAll},
        {"debug", least("debug"), kAll},
        {"no word", least(""), kAll},
        {"blank before", least(" info"), kAll},
        // Ready lists go in as they are.
        {"severities", lists("'err','emerge'", nullptr, nullptr), {5, 8}},
        {"severities with case", lists("'ERR'", nullptr, nullptr), {}},
        {"empty list of severities", lists("", nullptr, nullptr), kAll},
        {"categories", lists(nullptr, "'disk','apps'", nullptr), {2, 3, 6, 7}},
        {"empty list of categories", lists(nullptr, "", nullptr), kAll},
        {"tag", lists(nullptr, nullptr, "LOGMSG_B"), {2, 6, 7, 8}},
        {"tag with an apostrophe", lists(nullptr, nullptr, "LOGMSG_it's"), {5}},
        {"unknown tag", lists(nullptr, nullptr, "' OR ''='"), {}},
        {"empty tag", lists(nullptr, nullptr, ""), kAll},
        // All together are joined by AND.
        {"severities, categories, tag", lists("'crit','alert'", "'disk'", "LOGMSG_B"), {7}},
        {"all", {0, 0, 0, 15, 75, "notice", "'notice','alert'", "'disk'", "LOGMSG_B"}, {7}},
    };
    for (const Filter &filter : filters) {
        SCOPED_TRACE(filter.name);
        EXPECT_EQ(read(filter.query), filter.ids);
        EXPECT_EQ(count, static_cast<int32_t>(filter.ids.size()));
        EXPECT_EQ(total, 9);
    }
}

TEST_F(FilledLog, Pages)
{
    const Filter pages[] = {
        {"no limit", page(0, 0), kAll},
        {"the first three", page(3, 0), {1, 2, 3}},
        {"three from the fifth on", page(3, 4), {5, 6, 7}},
        {"over the end", page(5, 7), {8, 9}},
        {"behind the end", page(5, 9), {}},
        {"more than there are", page(100, 0), kAll},
        {"an offset without a limit", page(0, 4), kAll},
        {"a limit below 0 is none", page(-5, 0), kAll},
        {"a limit below 0, an offset", page(-5, 7), {8, 9}},
        {"an offset below 0 is none", page(2, -3), {1, 2}},
        {"newest first", page(0, 0, 1), {9, 8, 7, 6, 5, 4, 3, 2, 1}},
        {"any order but 0", page(2, 0, -1), {9, 8}},
        {"newest first, a page", page(2, 3, 1), {6, 5}},
    };
    for (const Filter &each : pages) {
        SCOPED_TRACE(each.name);
        EXPECT_EQ(read(each.query), each.ids);
        EXPECT_EQ(count, 9) << "the page does not count";
        EXPECT_EQ(total, 9);
    }
}

TEST_F(FilledLog, APageOfAFilteredLog)
{
    LogQuery which = least("notice");
    which.limit = 2;
    which.offset = 1;
    which.order = 1;
    EXPECT_EQ(read(which), (Ids{7, 6}));
    EXPECT_EQ(count, 6);
    EXPECT_EQ(total, 9);
}

TEST_F(Log, TheOrderIsByNumberNotByTime)
{
    sql("INSERT INTO `$log` VALUES(1,300,'info','misc','LOGMSG_A',NULL),(2,100,'info','misc','LOGMSG_A',NULL),"
        "(3,200,'info','misc','LOGMSG_A',NULL)");
    EXPECT_EQ(read({}), (Ids{1, 2, 3}));
    EXPECT_EQ(read(page(0, 0, 1)), (Ids{3, 2, 1}));
    EXPECT_EQ(read(times(150, 0)), (Ids{1, 3}));
}

TEST_F(FilledLog, EntriesAreAppendedToAListThatIsNotEmpty)
{
    ASSERT_EQ(get(nullptr), 0u);
    LogEntry *first = entries;
    query.limit = 2;
    ASSERT_EQ(get(&query), 0u);
    EXPECT_EQ(entries, first);
    Ids ids;
    for (const LogEntry *entry : elements(entries)) ids.push_back(entry->LogId);
    EXPECT_EQ(ids, (Ids{1, 2, 3, 4, 5, 6, 7, 8, 9, 1, 2}));
    LogQuery none = times(50, 30);
    ASSERT_EQ(get(&none), 0u);
    EXPECT_EQ(elements(entries).size(), 11u);
    EXPECT_EQ(count, 0);
}

TEST_F(Log, LimitTenOffsetTwentyReadsTheTwentyFirstToTheThirtieth)
{
    for (int i = 1; i <= 40; i++) ASSERT_EQ(add(i), 0u);
    EXPECT_EQ(read(page(10, 20)), (Ids{21, 22, 23, 24, 25, 26, 27, 28, 29, 30}));
    EXPECT_EQ(read(page(10, 20, 1)), (Ids{20, 19, 18, 17, 16, 15, 14, 13, 12, 11}));
    EXPECT_EQ(read(page(0, 20)).size(), 40u);
}

TEST_F(Log, ALargeLogIsReadRight)
{
    sql("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<10000) INSERT INTO `$log` "
        "SELECT i,1000+i,CASE i%2 WHEN 0 THEN 'err' ELSE 'info' END,'disk','LOGMSG_A','<n>'||i||'</n>' FROM n");
    LogQuery which = least("err");
    which.limit = 100;
    which.offset = 4900;
    which.order = 1;
    const Ids ids = read(which);
    ASSERT_EQ(ids.size(), 100u);
    EXPECT_EQ(count, 5000);
    EXPECT_EQ(total, 10000);
    for (int i = 0; i < 100; i++) {
        const LogEntry *entry = elements(entries)[static_cast<size_t>(i)];
        const int32_t id = 200 - 2 * i;
        ASSERT_EQ(entry->LogId, id);
        ASSERT_EQ(entry->TimeStamp, 1000 + id);
        ASSERT_EQ(entry->MessageArgsXml, "<n>" + std::to_string(id) + "</n>");
    }
    const Ids all = read({});
    ASSERT_EQ(all.size(), 10000u);
    for (size_t i = 0; i < all.size(); i++) ASSERT_EQ(all[i], static_cast<int32_t>(i) + 1);
}

TEST_F(FilledLog, NullsInTheTableReadAsNullTexts)
{
    sql("DELETE FROM `$log`; INSERT INTO `$log` (id) VALUES(5)");
    ASSERT_EQ(get(nullptr), 0u);
    ASSERT_NE(entries, nullptr);
    EXPECT_EQ(text_of(entries), "LogId=5");
}

/// A list of severities that is `size` bytes long and selects what "'err'" does.
std::string list_of_size(size_t size)
{
    std::string list = "'err'";
    list += std::string(size - list.size(), ' ');
    return list;
}

TEST_F(FilledLog, PartsHold255Bytes)
{
    // "severity IN (" and ")" are part of it, so are "category IN (" and "msg_tag='" with "'".
    const std::string fits = list_of_size(255 - strlen("severity IN ()"));
    EXPECT_EQ(read(lists(fits.c_str(), nullptr, nullptr)), (Ids{5}));
    const std::string category = "'volume'" + std::string(255 - strlen("category IN ()") - strlen("'volume'"), ' ');
    EXPECT_EQ(read(lists(nullptr, category.c_str(), nullptr)), (Ids{5}));
    const std::string tag = "LOGMSG_" + std::string(255 - strlen("msg_tag=''") - 7, 'x');
    ASSERT_EQ(add(100, nullptr, nullptr, tag.c_str()), 0u);
    EXPECT_EQ(read(lists(nullptr, nullptr, tag.c_str())), (Ids{10}));
    // All of them at once still fit.
    LogQuery all = lists(fits.c_str(), category.c_str(), tag.c_str());
    all.timestamp_min = -2000000000;
    all.timestamp_max = 2000000000;
    all.severity = "info";
    EXPECT_EQ(read(all), Ids{});
}

TEST_F(FilledLog, AnOverLongPartIsRefusedNotMisread)
{
    const std::string severity = list_of_size(256 - strlen("severity IN ()"));
    const std::string category = "'volume'" + std::string(256 - strlen("category IN ()") - strlen("'volume'"), ' ');
    const std::string tag = "LOGMSG_" + std::string(256 - strlen("msg_tag=''") - 7, 'x');
    std::string words = "'info'";
    while (words.size() < 300) words += ",'info'";
    const LogQuery queries[] = {
        lists(severity.c_str(), nullptr, nullptr),
        lists(nullptr, category.c_str(), nullptr),
        lists(nullptr, nullptr, tag.c_str()),
        lists(words.c_str(), nullptr, nullptr),
        lists(words.c_str(), words.c_str(), nullptr),
        lists(words.c_str(), words.c_str(), tag.c_str()),
        lists(severity.c_str(), category.c_str(), "LOGMSG_A"),
    };
    for (LogQuery which : queries) {
        const std::string before = content();
        EXPECT_EQ(get(&which), 5u);
        EXPECT_EQ(err.code, 5u);
        EXPECT_STREQ(err.message, "Failed DB Query for 'SELECT $log'. A condition is longer than 255 bytes.");
        EXPECT_EQ(entries, nullptr);
        EXPECT_EQ(count, -1);
        EXPECT_EQ(total, -1);
        EXPECT_EQ(content(), before);
    }
    for (const std::string &list : {category, words}) {
        LogQuery which = lists(nullptr, list.c_str(), nullptr);
        const std::string before = content();
        EXPECT_EQ(remove(&which), 5u);
        EXPECT_STREQ(err.message, "Failed DB Query for 'DELETE $log'. A condition is longer than 255 bytes.");
        EXPECT_EQ(content(), before);
    }
}

TEST_F(FilledLog, ACutConditionNeverSelectsAnotherEntry)
{
    // Cut at 255 bytes, the tag would end inside its doubled apostrophe and be another entry's.
    const std::string stem = "LOGMSG_" + std::string(238, 'x');
    ASSERT_EQ(add(100, nullptr, nullptr, (stem + "'").c_str()), 0u);
    for (const std::string &tag : {stem + "'more", stem + "''more"}) {
        LogQuery which = lists(nullptr, nullptr, tag.c_str());
        take_statements();
        EXPECT_EQ(get(&which), 5u) << tag;
        EXPECT_THAT(take_statements(), ElementsAre("BEGIN", "ROLLBACK")) << "nothing ran";
    }
    const std::string open = "'" + std::string(241, 'x') + "'";
    LogQuery which = lists(open.c_str(), nullptr, ") OR 1=1 --");
    EXPECT_EQ(get(&which), 5u);
    EXPECT_EQ(entries, nullptr);
}

constexpr const char *kNoLists[] = {
    "'info",
    "info",
    "'x') OR (1=1",
    "'x'),(",
    "SELECT severity FROM `$log`",
    "'a' 'b'",
    "'a',",
    ",'a'",
    "'a'; --",
    "'a'--",
    "\"a\"",
    "X'00'",
    "1",
    "NULL",
    "'a'||1",
    "'a',,'b'",
    "('a')",
    "' ''",
    "'a'/**/",
    " ",
    "'a'\"b\"",
};

TEST_F(FilledLog, WhatIsNoListOfQuotedWordsIsRefused)
{
    for (const char *list : kNoLists) {
        const std::string severity = "Invalid severity_in (" + std::string(list) + "). Not a list of quoted words.";
        const std::string category = "Invalid category_in (" + std::string(list) + "). Not a list of quoted words.";
        LogQuery which = lists(list, nullptr, nullptr);
        expect_failure(8, severity, [&] { return get(&which); });
        EXPECT_EQ(entries, nullptr);
        which = lists(nullptr, list, nullptr);
        expect_failure(8, category, [&] { return get(&which); });
        expect_failure(8, category, [&] { return remove(&which); });
    }
    EXPECT_EQ(left(), kAll);
}

TEST_F(FilledLog, ListsOfQuotedWordsMayHoldAnything)
{
    EXPECT_EQ(read(lists(" 'err' ,\t'it''s',''\n", nullptr, nullptr)), (Ids{5}));
    EXPECT_EQ(read(lists("') OR (1=1','crit'", nullptr, nullptr)), (Ids{6})) << "a word with brackets in it";
    EXPECT_EQ(read(lists("'''','crit'", nullptr, nullptr)), (Ids{6}));
}

TEST_F(FilledLog, ReadingTracesItsRows)
{
    qbdb->log_level = 5;
    query.limit = 4;
    ASSERT_EQ(get(&query), 0u);
    EXPECT_THAT(logged(5), testing::Contains("x_qbobj_getLog() rc=0 nrow=4\n"));
    query.severity_in = "x";
    ASSERT_EQ(get(&query), 8u);
    EXPECT_THAT(logged(5), testing::Contains("x_qbobj_getLog() rc=8 nrow=0\n"));
}

TEST_F(FilledLog, TheStatementsOfReading)
{
    query = {3, 4, 1, 5, 500, "info", "'err'", "'disk'", "LOGMSG_B"};
    take_statements();
    ASSERT_EQ(get(&query), 0u);
    const std::string where =
        "WHERE 5<tstamp AND tstamp<500 AND severity IN ('info','notice','warning','err','crit','alert','emerg') AND "
        "severity IN ('err') AND category IN ('disk') AND msg_tag='LOGMSG_B'";
    EXPECT_THAT(take_statements(),
                ElementsAre("BEGIN", "SELECT COUNT(*) FROM `$log` L " + where, "SELECT COUNT(*) FROM `$log` L",
                            "SELECT L.id,L.tstamp,L.severity,L.category,L.msg_tag,L.msg_args_xml FROM `$log` L " +
                                where + " ORDER BY L.id DESC LIMIT 4,3",
                            "COMMIT"));
    ASSERT_EQ(get(nullptr), 0u);
    EXPECT_THAT(
        take_statements(),
        ElementsAre("BEGIN", "SELECT COUNT(*) FROM `$log` L ", "SELECT COUNT(*) FROM `$log` L",
                    "SELECT L.id,L.tstamp,L.severity,L.category,L.msg_tag,L.msg_args_xml FROM `$log` L  ORDER BY "
                    "L.id ASC ",
                    "COMMIT"));
}

TEST_F(FilledLog, LookUpsUseIndexes)
{
    take_statements();
    read(lists(nullptr, nullptr, "LOGMSG_B"));
    ASSERT_EQ(truncate(5), 0u);
    LogQuery which = times(40, 60);
    ASSERT_EQ(remove(&which), 0u);
    ASSERT_EQ(add(5), 0u);
    test::expect_indexed(db, take_statements(),
                         {{"$log", "SELECT COUNT(*) FROM `$log` L", "counts all entries"},
                          {"$log", "ORDER BY L.id", "pages by number"},
                          {"$log", "ORDER BY tstamp DESC LIMIT 1 OFFSET", "walks the index up to the offset"}});
}

// ---- Adding

struct Added {
    const char *given;
    const char *stored;  // null: refused
};

TEST_F(Log, Severities)
{
    const Added words[] = {
        {nullptr, "info"},       {"debug", "debug"},      {"DEBUGGING", "debug"}, {"debu", nullptr},
        {"info", "info"},        {"information", "info"}, {"Info", "info"},       {"inf", nullptr},
        {"notice", "notice"},    {"NOTICE", "notice"},    {"notices", nullptr},   {"notic", nullptr},
        {"warning", "warning"},  {"warn", "warning"},     {"warned", "warning"},  {"war", nullptr},
        {"err", "err"},          {"error", "err"},        {"ERROR", "err"},       {"er", nullptr},
        {"crit", "crit"},        {"critical", "crit"},    {"cri", nullptr},       {"alert", "alert"},
        {"Alerts", "alert"},     {"aler", nullptr},       {"emerge", "emerge"},   {"emerg", "emerge"},
        {"emergency", "emerge"}, {"EMERG", "emerge"},     {"emer", nullptr},      {"", nullptr},
        {" info", nullptr},      {"it's", nullptr},
    };
    for (const Added &word : words) {
        SCOPED_TRACE(word.given ? word.given : "(null)");
        sql("DELETE FROM `$log`");
        if (word.stored) {
            ASSERT_EQ(add(5, word.given), 0u) << err.message;
            EXPECT_THAT(rows("SELECT severity FROM `$log`"), ElementsAre(word.stored));
        } else {
            expect_failure(8, std::string("Specified Severity (") + word.given + ") is invalid.",
                           [&] { return add(5, word.given); });
        }
    }
}

TEST_F(Log, ExportedSeverities)
{
    for (const char *word :
         {QBLOG_SEVERITY_EMERG, QBLOG_SEVERITY_ALERT, QBLOG_SEVERITY_CRIT, QBLOG_SEVERITY_ERR, QBLOG_SEVERITY_WARNING,
          QBLOG_SEVERITY_NOTICE, QBLOG_SEVERITY_INFO, QBLOG_SEVERITY_DEBUG}) {
        ASSERT_EQ(add(5, word), 0u) << word;
        EXPECT_EQ(value("SELECT severity FROM `$log` ORDER BY id DESC"), word);
    }
}

TEST_F(Log, Categories)
{
    const Added words[] = {
        {nullptr, "misc"},        {"misc", "misc"},   {"system", "system"},     {"disk", "disk"},
        {"volume", "volume"},     {"share", "share"}, {"account", "account"},   {"backup", "backup"},
        {"mbackup", "mbackup"},   {"apps", "apps"},   {"snapshot", "snapshot"}, {"DISK", "disk"},
        {"SnapShot", "snapshot"}, {"disks", nullptr}, {"dis", nullptr},         {"", nullptr},
        {" disk", nullptr},       {"it's", nullptr},
    };
    for (const Added &word : words) {
        SCOPED_TRACE(word.given ? word.given : "(null)");
        sql("DELETE FROM `$log`");
        if (word.stored) {
            ASSERT_EQ(add(5, nullptr, word.given), 0u) << err.message;
            EXPECT_THAT(rows("SELECT category FROM `$log`"), ElementsAre(word.stored));
        } else {
            expect_failure(8, std::string("Specified Category (") + word.given + ") is invalid.",
                           [&] { return add(5, nullptr, word.given); });
        }
    }
    for (const char *word :
         {QBLOG_CATEGORY_SNAPSHOT, QBLOG_CATEGORY_MBACKUP, QBLOG_CATEGORY_BACKUP, QBLOG_CATEGORY_ACCOUNT,
          QBLOG_CATEGORY_SHARE, QBLOG_CATEGORY_VOLUME, QBLOG_CATEGORY_DISK, QBLOG_CATEGORY_SYSTEM, QBLOG_CATEGORY_MISC})
        EXPECT_EQ(add(5, nullptr, word), 0u) << word;
}

TEST_F(Log, Tags)
{
    const Added tags[] = {
        {nullptr, "LOGMSG_UNKNOWN"},
        {"LOGMSG_DISK", "LOGMSG_DISK"},
        {"LOGMSG_", "LOGMSG_"},
        {"LOGMSG_it's", "LOGMSG_it's"},
        {"logmsg_disk", nullptr},
        {"LOGMSG", nullptr},
        {" LOGMSG_A", nullptr},
        {"DISK", nullptr},
        {"", nullptr},
    };
    for (const Added &tag : tags) {
        SCOPED_TRACE(tag.given ? tag.given : "(null)");
        sql("DELETE FROM `$log`");
        if (tag.stored) {
            ASSERT_EQ(add(5, nullptr, nullptr, tag.given), 0u) << err.message;
            EXPECT_THAT(rows("SELECT msg_tag FROM `$log`"), ElementsAre(tag.stored));
        } else {
            expect_failure(8, std::string("MessageTag (") + tag.given + ") should beging with 'LOGMSG_'",
                           [&] { return add(5, nullptr, nullptr, tag.given); });
        }
    }
}

TEST_F(Log, TheFirstFaultIsReported)
{
    expect_failure(8, "Specified Severity (x) is invalid.", [&] { return add(5, "x", "y", "z"); });
    expect_failure(8, "Specified Category (y) is invalid.", [&] { return add(5, "err", "y", "z"); });
    expect_failure(8, "MessageTag (z) should beging with 'LOGMSG_'", [&] { return add(5, "err", "disk", "z"); });
}

TEST_F(Log, ATimeBelowOneIsNow)
{
    for (const int32_t given : {0, -1, INT32_MIN}) {
        sql("DELETE FROM `$log`");
        const time_t before = time(nullptr);
        ASSERT_EQ(add(given), 0u);
        const time_t after = time(nullptr);
        const time_t stored = std::stol(value("SELECT tstamp FROM `$log`"));
        EXPECT_GE(stored, before) << given;
        EXPECT_LE(stored, after) << given;
    }
    for (const int32_t given : {1, INT32_MAX}) {
        sql("DELETE FROM `$log`");
        ASSERT_EQ(add(given), 0u);
        EXPECT_EQ(value("SELECT tstamp FROM `$log`"), std::to_string(given));
        EXPECT_EQ(value("SELECT typeof(tstamp) FROM `$log`"), "integer");
    }
}

TEST_F(Log, ArgumentsAreStoredAsTheyAre)
{
    for (const char *xml : {"<a n='1'>it''s</a>", "", "100%d%s", "ü\n\t\\"}) {
        ASSERT_EQ(add(5, nullptr, nullptr, nullptr, xml), 0u);
        entries = nullptr;
        ASSERT_EQ(get(nullptr), 0u);
        EXPECT_STREQ(elements(entries).back()->MessageArgsXml, xml);
    }
    ASSERT_EQ(add(5), 0u);
    EXPECT_EQ(value("SELECT msg_args_xml FROM `$log` ORDER BY id DESC"), "NULL");
}

TEST_F(Log, WhatIsAddedIsRead)
{
    ASSERT_EQ(add(5), 0u) << err.message;
    EXPECT_THAT(rows("SELECT tstamp,severity,category,msg_tag,msg_args_xml FROM `$log`"),
                ElementsAre("5|info|misc|LOGMSG_UNKNOWN|NULL"));
    EXPECT_EQ(read(least("info")), (Ids{1}));
    ASSERT_EQ(add(6, "emergency"), 0u);
    EXPECT_EQ(read(least("info")), (Ids{1})) << "the stored word is in no list of severities";
    EXPECT_EQ(read(lists("'emerge'", nullptr, nullptr)), (Ids{2}));
}

// ---- Deleting

TEST_F(FilledLog, Deletes)
{
    struct Case {
        const char *name;
        LogQuery query;
        Ids left;
    };
    const Case cases[] = {
        {"times", times(30, 60), {1, 2, 3, 6, 7, 8, 9}},
        {"a bound is strict", times(80, 0), {1, 2, 3, 4, 5, 6, 7, 8}},
        {"least severity", least("Critical"), {1, 2, 3, 4, 5, 8}},
        {"a word that is none deletes all", least("emergency"), {}},
        {"categories", lists(nullptr, "'disk'", nullptr), {1, 4, 5, 6, 8, 9}},
        {"times, severity and categories",
         {0, 0, 0, 15, 75, "notice", nullptr, "'disk'", nullptr},
         {1, 2, 4, 5, 6, 8, 9}},
        {"nothing asked deletes all", {}, {}},
        // The list of severities, the tag and the page do not count.
        {"severities alone delete all", lists("'err'", nullptr, nullptr), {}},
        {"a tag alone deletes all", lists(nullptr, nullptr, "LOGMSG_C"), {}},
        {"a page alone deletes all", page(1, 1, 1), {}},
        {"they do not narrow others", {1, 1, 1, 0, 0, nullptr, "'err'", "'disk'", "LOGMSG_C"}, {1, 4, 5, 6, 8, 9}},
        {"nothing matches", times(1000, 0), kAll},
    };
    sql("CREATE TABLE kept AS SELECT * FROM `$log`");
    for (const Case &each : cases) {
        SCOPED_TRACE(each.name);
        LogQuery which = each.query;
        ASSERT_EQ(remove(&which), 0u) << err.message;
        EXPECT_EQ(left(), each.left);
        sql("DELETE FROM `$log`; INSERT INTO `$log` SELECT * FROM kept");
    }
}

TEST_F(FilledLog, DeletingWithoutAQueryEmptiesTheLog)
{
    ASSERT_EQ(remove(nullptr), 0u);
    EXPECT_THAT(left(), IsEmpty());
}

TEST_F(FilledLog, TheStatementsOfDeleting)
{
    take_statements();
    LogQuery which = times(5, 0);
    which.category_in = "'none'";
    ASSERT_EQ(remove(&which), 0u);
    ASSERT_EQ(remove(nullptr), 0u);
    EXPECT_THAT(take_statements(),
                ElementsAre("BEGIN IMMEDIATE", "DELETE FROM `$log` WHERE 5<tstamp AND category IN ('none')", "COMMIT",
                            "BEGIN IMMEDIATE", "DELETE FROM `$log` ", "COMMIT"));
}

// ---- Truncating

struct Truncation {
    const char *name;
    const char *times;  // of the entries 1, 2, …
    int32_t keep;
    Ids left;
};

TEST_F(Log, Truncations)
{
    const Truncation cases[] = {
        // The n newest stay, and with them the one after the n-th and all of its second.
        {"distinct times", "(1),(2),(3),(4),(5)", 2, {3, 4, 5}},
        {"n-th and next share a second", "(1),(2),(3),(3),(4)", 2, {3, 4, 5}},
        {"a group across the n-th", "(1),(3),(3),(3),(4)", 2, {2, 3, 4, 5}},
        {"a group older than all that", "(1),(1),(1),(4),(5)", 1, {4, 5}},
        {"all in one second", "(7),(7),(7)", 1, {1, 2, 3}},
        {"as many as there are", "(1),(2),(3)", 3, {1, 2, 3}},
        {"one fewer than there are", "(1),(2),(3)", 2, {1, 2, 3}},
        {"more than there are", "(1),(2),(3)", 10, {1, 2, 3}},
        {"none: the newest second stays", "(1),(2),(3),(3)", 0, {3, 4}},
        {"below none is as none", "(1),(2),(3),(3)", -4, {3, 4}},
        {"by time, not by number", "(9),(1),(8),(2)", 1, {1, 3}},
        {"entries without a time stay", "(1),(NULL),(3),(4)", 1, {2, 3, 4}},
    };
    for (const Truncation &each : cases) {
        SCOPED_TRACE(each.name);
        sql("DELETE FROM `$log`; DELETE FROM sqlite_sequence; INSERT INTO `$log` (tstamp) VALUES" +
            std::string(each.times));
        ASSERT_EQ(truncate(each.keep), 0u) << err.message;
        EXPECT_EQ(left(), each.left);
    }
}

TEST_F(Log, TruncatingAnEmptyLog)
{
    EXPECT_EQ(truncate(0), 0u);
    EXPECT_EQ(truncate(5), 0u);
}

TEST_F(Log, AThousandToAHundredKeepsTheHundredthsSecond)
{
    // Seven entries a second: the hundredth newest and the next share one, which began with number 896.
    sql("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<1000) INSERT INTO `$log` (tstamp) SELECT "
        "1000+i/7 FROM n");
    const std::string hundredth = value("SELECT tstamp FROM `$log` ORDER BY tstamp DESC LIMIT 1 OFFSET 99");
    ASSERT_EQ(truncate(100), 0u);
    EXPECT_EQ(value("SELECT MIN(tstamp) FROM `$log`"), hundredth);
    const Ids ids = left();
    ASSERT_EQ(ids.size(), 105u);
    EXPECT_EQ(ids.front(), 896);
    EXPECT_EQ(ids.back(), 1000);
}

TEST_F(Log, AThousandToAHundredKeepsTheNextEntryToo)
{
    // The hundredth newest is the oldest of its second: the next one's second stays as well.
    sql("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<1000) INSERT INTO `$log` (tstamp) SELECT "
        "1000+(i-1)/3 FROM n");
    ASSERT_EQ(truncate(100), 0u);
    const Ids ids = left();
    ASSERT_EQ(ids.size(), 103u);
    EXPECT_EQ(ids.front(), 898);
    EXPECT_EQ(ids.back(), 1000);
}

// ---- Programming errors

using LogDeathTest = Log;

TEST_F(LogDeathTest, OutputsOfReadingAreRequired)
{
    EXPECT_DEATH(qbobj_getLog(qbdb, db, nullptr, nullptr, &count, &total, &err),
                 "qbobj_api2_log.cpp:[0-9]+: x_qbobj_getLog: Assertion .entries. failed");
    EXPECT_DEATH(qbobj_getLog(qbdb, db, nullptr, &entries, nullptr, &total, &err), "Assertion .count. failed");
    EXPECT_DEATH(qbobj_getLog(qbdb, db, nullptr, &entries, &count, nullptr, &err), "Assertion .total. failed");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
