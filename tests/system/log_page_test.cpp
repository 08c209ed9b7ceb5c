// A page of the log in both of its ways: by the numbers of its entries, and by walking over those before it.
#include <climits>

#include "fixture/both_ways.h"

using namespace test;

namespace {

struct LogPage : BothWays<Database> {
    LogQuery query{};
    LogEntry *entries = nullptr;
    int32_t count = -1;
    int32_t total = -1;

    /// Entries with these numbers, as a list of SQL.
    void fill(const std::string &ids)
    {
        sql("DELETE FROM `$log`");
        if (!ids.empty())
            sql("WITH n(i) AS (VALUES" + ids +
                ") INSERT INTO `$log` SELECT i,i%100,'info','disk','LOGMSG_A','<n>'||i||'</n>' FROM n");
    }
    void fill(int from, int to)
    {
        std::string ids;
        for (int id = from; id <= to; id++) ids += (ids.empty() ? "(" : ",(") + std::to_string(id) + ")";
        fill(ids);
    }
    void ask(int32_t limit, int32_t offset, int32_t order)
    {
        query = {};
        query.limit = limit;
        query.offset = offset;
        query.order = order;
    }
    auto call()
    {
        return [this] {
            entries = nullptr;
            count = total = -1;
            return qbobj_getLog(qbdb, db, &query, &entries, &count, &total, &err);
        };
    }
    auto dump()
    {
        return [this] {
            qbdb_log(qbdb, "f", 1, 4, 0, "%d of %d", count, total);
            for (LogEntry *entry = entries; entry; entry = entry->next)
                qbobj_api2_utils_dump_object(qbdb, qbobj_find_type("LogEntry"), entry, 0, "f", 1);
        };
    }
    Outcome expect_page_alike() { return expect_alike(call(), dump()); }
    /// The fast way has it: some statement asks for the numbers of the page.
    static bool is_by_number(const Outcome &outcome)
    {
        for (const std::string &statement : outcome.statements)
            if (statement.find("L.id BETWEEN") != std::string::npos) return true;
        return false;
    }
};

constexpr int32_t kOffsets[] = {0, 1, 4, 9, 10, 11, 500, INT32_MAX, -1, INT32_MIN};
constexpr int32_t kLimits[] = {0, 1, 3, 100, INT32_MAX, -1, INT32_MIN};

TEST_F(LogPage, IsTheSameOverAnyNumbers)
{
    const struct {
        const char *name, *ids;
        bool follow;
    } kLogs[] = {
        {"no entries", "", false},
        {"one", "(7)", true},
        {"no gap", "(11),(12),(13),(14),(15),(16),(17),(18),(19),(20)", true},
        {"a gap behind the first", "(1),(3),(4),(5),(6),(7),(8),(9),(10),(11)", false},
        {"a gap in the middle", "(1),(2),(3),(4),(5),(8),(9),(10),(11),(12)", false},
        {"a gap before the last", "(1),(2),(3),(4),(5),(6),(7),(8),(9),(11)", false},
        {"through 0", "(-4),(-3),(-2),(-1),(0),(1),(2),(3),(4),(5)", true},
        {"through the greatest of 32 bits", "(2147483644),(2147483645),(2147483646),(2147483647),(2147483648)", true},
        {"beyond 32 bits", "(5000000001),(5000000002),(5000000003),(5000000004),(5000000005)", true},
        {"both ends of 64 bits", "(-9223372036854775807-1),(9223372036854775807)", false},
    };
    for (const auto &[name, ids, follow] : kLogs) {
        fill(ids);
        for (const int32_t offset : kOffsets)
            for (const int32_t limit : kLimits)
                for (const int32_t order : {0, 1}) {
                    SCOPED_TRACE(std::string(name) + ": " + std::to_string(offset) + "," + std::to_string(limit) +
                                 (order ? " from the end" : ""));
                    ask(limit, offset, order);
                    EXPECT_EQ(is_by_number(expect_page_alike()), follow && offset > 0 && limit > 0);
                }
    }
}

TEST_F(LogPage, IsWalkedToWhereNumbersWouldBeTooGreat)
{
    const struct {
        const char *name, *ids;
        int32_t limit, offset, order;
        bool by_number;
    } kPages[] = {
        {"ends with the greatest", "(9223372036854775805),(9223372036854775806),(9223372036854775807)", 2, 1, 0, true},
        {"ends behind it", "(9223372036854775805),(9223372036854775806),(9223372036854775807)", 3, 1, 0, false},
        {"begins behind it", "(9223372036854775805),(9223372036854775806),(9223372036854775807)", 1, 3, 0, false},
        {"from the end", "(9223372036854775805),(9223372036854775806),(9223372036854775807)", 3, 1, 1, true},
        {"ends with the least", "(-9223372036854775807-1),(-9223372036854775807)", 1, 1, 1, true},
        {"ends before it", "(-9223372036854775807-1),(-9223372036854775807)", 2, 1, 1, false},
        {"begins before it", "(-9223372036854775807-1),(-9223372036854775807)", 1, 2, 1, false},
    };
    for (const auto &[name, ids, limit, offset, order, by_number] : kPages) {
        SCOPED_TRACE(name);
        fill(ids);
        ask(limit, offset, order);
        EXPECT_EQ(is_by_number(expect_page_alike()), by_number);
    }
}

TEST_F(LogPage, OfAFilteredLogIsWalkedTo)
{
    fill(1, 20);
    ask(3, 5, 1);
    query.severity = "info";
    EXPECT_FALSE(is_by_number(expect_page_alike()));
    EXPECT_EQ(elements(entries).size(), 3u);
    query.severity = "no such word";  // adds no condition
    EXPECT_TRUE(is_by_number(expect_page_alike()));
}

TEST_F(LogPage, IsWalkedToWhenTheNumbersCannotBeUsed)
{
    fill(1, 20);
    for (const int32_t order : {0, 1}) {
        ask(3, 5, order);
        EXPECT_EQ(expect_alike_without_each(call(), dump()), 2);
        EXPECT_EQ(elements(entries).size(), 3u);
    }
}

TEST_F(LogPage, FailsAsItAlwaysDid)
{
    fill(1, 20);
    ask(3, 5, 0);
    for (const char *column : {"tstamp", "msg_args_xml"})
        for (const char *entry : {"id=5", "id=6", "id=8", "id=9"}) {
            SCOPED_TRACE(std::string(column) + " of " + entry);
            break_where("$log", entry, column);
            const Outcome outcome = expect_page_alike();
            const bool within = std::string(entry) == "id=6" || std::string(entry) == "id=8";
            EXPECT_EQ(outcome.rc, within ? 5u : 0u);
            EXPECT_EQ(outcome.message, within ? "Failed DB Query for 'SELECT $log'. integer overflow" : "");
            mend("$log");
        }
    sql("ALTER TABLE `$log` RENAME TO elsewhere");
    EXPECT_EQ(expect_page_alike().message, "Failed DB Query for 'SELECT $log'. no such table: $log");
}

TEST_F(LogPage, CostsTheSameWhereverItIs)
{
    fill(1, 1000);
    for (const int32_t order : {0, 1}) {
        ask(10, 1, order);
        const Outcome first = expect_page_alike();
        const Outcome first_walked = run(Way::one_by_one, call(), dump());
        ask(10, 900, order);
        const Outcome last = expect_page_alike();
        EXPECT_EQ(last.steps, first.steps);
        EXPECT_GT(run(Way::one_by_one, call(), dump()).steps, first_walked.steps + 899) << "the steps are not counted";
        EXPECT_EQ(last.statements, first.statements) << "each page has statements of its own";
    }
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
