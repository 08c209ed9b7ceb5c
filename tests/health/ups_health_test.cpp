// Health of UPS units: storing what their monitors tell and listing it for display.
#include "fixture/allocations.h"
#include "fixture/fixture.h"
#include "fixture/plans.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct UpsHealthTest : test::Database {
    uint32_t get(UpsHealthCollection &all) { return qbobj_getUpsHealthCollection(qbdb, db, &all, &err); }
    uint32_t set(UpsHealth &ups) { return qbobj_setUpsHealth(qbdb, db, &ups, &err); }
    std::vector<std::string> stored() const { return rows("SELECT * FROM _ups_health ORDER BY name,host"); }
};

UpsHealth reading(const char *name, const char *host)
{
    return {nullptr, nullptr, name, host, "not stored", "On Battery Now", "none", "87", "12", "230.1"};
}

std::string as_text(const UpsHealth &ups)
{
    std::string text;
    for (const char *field : {ups.key, ups.UpsName, ups.ServerHost, ups.UpsModel, ups.UpsStatus, ups.UpsAlarm,
                              ups.BatteryCharge, ups.BatteryRunTime, ups.BatteryVoltage})
        text += (text.empty() ? "" : "|") + std::string(field);
    return text;
}

TEST_F(UpsHealthTest, UnitsAreListedReadyForDisplay)
{
    sql("INSERT INTO _ups_config (name,host,ups_model) VALUES('ups','localhost','Back-UPS'),('ups','10.0.0.5',NULL)");
    UpsHealth first = reading("ups", "localhost");
    UpsHealth unknown = reading("other", "localhost");
    first.next = &unknown;
    ASSERT_EQ(set(first), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre("other|localhost|On Battery Now|none|87|12|230.1",
                                      "ups|localhost|On Battery Now|none|87|12|230.1"));
    UpsHealthCollection all{};
    ASSERT_EQ(get(all), 0u) << err.message;
    std::vector<std::string> texts;
    for (const UpsHealth *ups : test::elements(all.Health)) texts.push_back(as_text(*ups));
    EXPECT_THAT(texts, ElementsAre("ups@localhost|ups|localhost|Back-UPS|On_Battery_Now|none|87 %|12 min|230.1 V",
                                   "ups@10.0.0.5|ups|10.0.0.5|?|?|?|? %|? min|? V"));
    ASSERT_EQ(get(all), 0u);
    EXPECT_EQ(test::elements(all.Health).size(), 4u) << "units are appended";
}

TEST_F(UpsHealthTest, WithoutUnitsTheListIsEmpty)
{
    UpsHealthCollection all{};
    EXPECT_EQ(get(all), 0u) << err.message;
    EXPECT_EQ(all.Health, nullptr);
    EXPECT_EQ(err.code, 0u);
}

TEST_F(UpsHealthTest, AReadingReplacesTheOneBefore)
{
    UpsHealth ups = reading("ups", "localhost");
    ASSERT_EQ(set(ups), 0u);
    ups.UpsStatus = "Online";
    ups.UpsAlarm = nullptr;
    ups.BatteryCharge = "it's 100";
    ASSERT_EQ(set(ups), 0u);
    EXPECT_THAT(stored(), ElementsAre("ups|localhost|Online|NULL|it's 100|12|230.1"));
    EXPECT_EQ(qbobj_setUpsHealth(qbdb, db, nullptr, &err), 0u);
}

TEST_F(UpsHealthTest, AChainIsStoredWholeOrNotAtAll)
{
    for (const auto &[name, host, column] : {std::tuple{static_cast<const char *>(nullptr), "h", "name"},
                                             std::tuple{"n", static_cast<const char *>(nullptr), "host"}}) {
        UpsHealth second = reading(name, host);
        UpsHealth first = reading("ups", "localhost");
        first.next = &second;
        expect_failure(8,
                       std::string("Fail 'INSERT INTO _ups_health'. NOT NULL constraint failed: _ups_health.") + column,
                       [&] { return set(first); });
    }
    UpsHealth ups = reading("ups", "localhost");
    fail_statement(1);
    expect_failure(8, "Fail 'INSERT INTO _ups_health'. injected", [&] { return set(ups); });
}

TEST_F(UpsHealthTest, AFailedReadIsTold)
{
    UpsHealthCollection all{};
    fail_statement(1);
    expect_failure(5, "Failed DB Query for 'SELECT FROM _ups_health'. injected", [&] { return get(all); });
}

TEST_F(UpsHealthTest, WithoutMemoryNothingIsHandedOut)
{
    sql("INSERT INTO _ups_config (name,host) VALUES('ups','localhost')");
    const auto read = [&] {
        UpsHealthCollection all{};
        const uint32_t rc = get(all);
        EXPECT_EQ(all.Health == nullptr, rc != 0);
        return rc;
    };
    test::expect_each_allocation_noticed(err, read, 2, "Failed to allocate resource.");
}

TEST_F(UpsHealthTest, StatementsUseIndexes)
{
    sql("INSERT INTO _ups_config (name,host) VALUES('ups','localhost')");
    UpsHealth ups = reading("ups", "localhost");
    UpsHealthCollection all{};
    take_statements();
    set(ups);
    get(all);
    test::expect_indexed(db, take_statements(), {{"_ups_config", "", "a handful of units"}});
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
