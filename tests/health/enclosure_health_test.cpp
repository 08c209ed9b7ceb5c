// Health of enclosures: sensors of the model, their history, listing, readings to test with.
#include <sys/stat.h>

#include <chrono>
#include <fstream>

#include "fixture/allocations.h"
#include "fixture/fixture.h"
#include "fixture/plans.h"
#include "fixture/text_of.h"

using test::text_of;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct EnclosureHealthTest : test::Database {
    EnclosureHealthTest()
    {
        sql("INSERT INTO _disk_enclosure (controller,name,nr_cpu,nr_fan,nr_psu,nr_volt) VALUES"
            "(0,'chassis',1,2,3,4),(1,'shelf',NULL,5,6,7),(2,'without a port',0,0,0,0);"
            "INSERT INTO jbod_port (controller,label) VALUES(0,'HEAD'),(1,'JBOD-1');"
            "INSERT INTO enclosure_health_spec (controller,name,devid,min,max,label) VALUES"
            "(0,'fan','1',1000,9001,'Rear fan'),(0,'cpu','0',0,85,'CPU'),(0,'fan','2',1000,9000,'Front fan'),"
            "(1,'psu','1',NULL,12,NULL)");
    }
    uint32_t get(EnclosureHealth &enclosure) { return qbobj_getEnclosureHealth(qbdb, db, &enclosure, &err); }
    uint32_t get(EnclosureHealthCollection &all) { return qbobj_getEnclosureHealthCollection(qbdb, db, &all, &err); }
    uint32_t set(EnclosureHealth &enclosure) { return qbobj_setEnclosureHealth(qbdb, db, &enclosure, &err); }
    uint32_t set_for_test(const char *path) { return qbobj_setEnclosureHealthForTest(qbdb, db, path, &err); }

    uint32_t write(int32_t controller, const char *name, const char *device, int32_t value)
    {
        EnclosureHealthItem item{};
        item.Name = name;
        item.DevId = device;
        item.Value = value;
        EnclosureHealth enclosure{};
        enclosure.Controller = controller;
        enclosure.Health = &item;
        return set(enclosure);
    }
    /// Writes a text to a file of the test's directory and hands back its path.
    std::string file(const std::string &text) const
    {
        const std::string name = directory.path + "/readings";
        std::ofstream(name) << text;
        return name;
    }
    std::vector<std::string> stored() const
    {
        return rows("SELECT * FROM _enclosure_health ORDER BY controller,name,devid");
    }
};

std::string as_text(const EnclosureHealthItem &item)
{
    std::string text = std::string(item.Name) + "|" + item.DevId + "|" + item.Label;
    for (const int32_t number : {item.Value, item.ValuePrev1, item.ValuePrev2, item.ValuePrev3, item.Min, item.Max})
        text += "|" + std::to_string(number);
    return text;
}

std::vector<std::string> as_texts(EnclosureHealthItem *head)
{
    std::vector<std::string> texts;
    for (const EnclosureHealthItem *item : test::elements(head)) texts.push_back(as_text(*item));
    return texts;
}

TEST_F(EnclosureHealthTest, TheHistoryMovesByOne)
{
    ASSERT_EQ(write(0, "cpu", "0", 40), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre("0|cpu|0|40|40|40|40"));
    for (const int32_t value : {42, 43, 44, 45}) ASSERT_EQ(write(0, "cpu", "0", value), 0u);
    EXPECT_THAT(stored(), ElementsAre("0|cpu|0|45|44|43|42"));
    ASSERT_EQ(write(1, "cpu", "0", 7), 0u);
    ASSERT_EQ(write(0, "cpu", "1", 8), 0u);
    EXPECT_THAT(stored(), ElementsAre("0|cpu|0|45|44|43|42", "0|cpu|1|8|8|8|8", "1|cpu|0|7|7|7|7"));
}

TEST_F(EnclosureHealthTest, ItemsComeFromTheSpecification)
{
    ASSERT_EQ(write(0, "fan", "1", 3000), 0u);
    ASSERT_EQ(write(0, "fan", "1", 3100), 0u);
    ASSERT_EQ(write(0, "fan", "2", 4000), 0u);
    ASSERT_EQ(write(0, "volt", "9", 5), 0u);  // no such sensor in the model
    EnclosureHealth enclosure{};
    enclosure.PortLabel = "as it was";
    enclosure.NrFan = 77;
    ASSERT_EQ(get(enclosure), 0u) << err.message;
    EXPECT_STREQ(enclosure.key, "controller-0");
    EXPECT_STREQ(enclosure.PortLabel, "as it was");
    EXPECT_EQ(enclosure.NrFan, 77);
    // The one never measured has no name, which comes first.
    EXPECT_THAT(as_texts(enclosure.Health),
                ElementsAre("||CPU|0|0|0|0|0|85", "fan|2|Front fan|4000|4000|4000|4000|1000|9000",
                            "fan|1|Rear fan|3100|3000|3000|3000|1000|9001"));
    ASSERT_EQ(get(enclosure), 0u);
    EXPECT_EQ(test::elements(enclosure.Health).size(), 6u) << "items are appended";
}

TEST_F(EnclosureHealthTest, AMissingLimitIsZeroAndAMissingLabelEmpty)
{
    EnclosureHealth enclosure{};
    enclosure.Controller = 1;
    ASSERT_EQ(get(enclosure), 0u);
    EXPECT_THAT(as_texts(enclosure.Health), ElementsAre("|||0|0|0|0|0|12"));
    EXPECT_STREQ(enclosure.key, "controller-1");
}

TEST_F(EnclosureHealthTest, EnclosuresWithAPortAreListed)
{
    ASSERT_EQ(write(0, "cpu", "0", 40), 0u);
    EnclosureHealthCollection all{};
    ASSERT_EQ(get(all), 0u) << err.message;
    const auto enclosures = test::elements(all.Health);
    ASSERT_EQ(enclosures.size(), 2u);
    const EnclosureHealth &first = *enclosures[0];
    EXPECT_EQ(text_of(first),
              "key=controller-0 PortLabel=HEAD NrCpu=1 NrFan=2 NrPsu=3 NrVolt=4 Health=[{Name='' DevId='' Min=1000 "
              "Max=9000 Label='Front fan'} {Name='' DevId='' Min=1000 Max=9001 Label='Rear fan'} {Name=cpu DevId=0 "
              "Value=40 ValuePrev1=40 ValuePrev2=40 ValuePrev3=40 Max=85 Label=CPU}]");
    EXPECT_EQ(test::elements(first.Health).size(), 3u);
    EXPECT_STREQ(enclosures[1]->key, "controller-1");
    EXPECT_EQ(enclosures[1]->NrCpu, 0);
    EXPECT_EQ(test::elements(enclosures[1]->Health).size(), 1u);
    ASSERT_EQ(get(all), 0u);
    EXPECT_EQ(test::elements(all.Health).size(), 4u) << "enclosures are appended";
}

TEST_F(EnclosureHealthTest, WithoutEnclosuresOrSensorsThereIsNoData)
{
    EnclosureHealth unknown{};
    unknown.Controller = 9;
    expect_failure(6, "No data in _enclosure_health table", [&] { return get(unknown); });
    EXPECT_EQ(unknown.Health, nullptr);
    EXPECT_EQ(unknown.key, nullptr);
    EnclosureHealthCollection all{};
    sql("DELETE FROM enclosure_health_spec WHERE controller=1");
    expect_failure(6, "No data in _enclosure_health table", [&] { return get(all); });
    EXPECT_EQ(all.Health, nullptr) << "not even the enclosure before";
    sql("DELETE FROM jbod_port");
    expect_failure(6, "No data in _enclosure_health table", [&] { return get(all); });
}

TEST_F(EnclosureHealthTest, FailedStatementsAreTold)
{
    EnclosureHealthCollection all{};
    EnclosureHealth enclosure{};
    fail_statement(1);
    expect_failure(5, "Failed DB Query for 'SELECT FROM _disk_enclosure'. injected", [&] { return get(all); });
    fail_statement(3);
    expect_failure(5, "Failed DB Query for 'SELECT FROM enclosure_health_spec'. injected", [&] { return get(all); });
    fail_statement(1);
    expect_failure(5, "Failed DB Query for 'SELECT FROM enclosure_health_spec'. injected",
                   [&] { return get(enclosure); });
    EXPECT_EQ(all.Health, nullptr);
    EXPECT_EQ(enclosure.Health, nullptr);
    fail_statement(1);
    expect_failure(8, "Fail 'INSERT INTO _enclousre_health. injected", [&] { return write(0, "cpu", "0", 1); });
    fail_statement(2);
    expect_failure(8, "Fail 'UPDATE _enclousre_health. injected", [&] { return write(0, "cpu", "0", 1); });
    fail_statement(1);
    expect_failure(8, "Fail 'INSERT INTO _enclousre_health. injected", [&] { return set_for_test(nullptr); });
}

TEST_F(EnclosureHealthTest, ItemsAreWrittenAllOrNone)
{
    EnclosureHealthItem second{};
    second.Name = "fan";
    second.DevId = "1";
    EnclosureHealthItem first = second;
    first.Name = "cpu";
    first.next = &second;
    EnclosureHealth enclosure{};
    enclosure.Health = &first;
    fail_statement(4);
    expect_failure(8, "Fail 'UPDATE _enclousre_health. injected", [&] { return set(enclosure); });
    enclosure.Health = nullptr;
    EXPECT_EQ(set(enclosure), 0u) << "no items, nothing to do";
}

TEST_F(EnclosureHealthTest, ASensorWithoutNameOrDeviceIsPassedOver)
{
    EXPECT_EQ(write(0, nullptr, "1", 5), 0u);
    EXPECT_EQ(write(0, "fan", nullptr, 5), 0u);
    EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(EnclosureHealthTest, WithoutMemoryNothingIsHandedOut)
{
    const auto read_all = [&] {
        EnclosureHealthCollection all{};
        const uint32_t rc = get(all);
        EXPECT_EQ(all.Health == nullptr, rc != 0);
        return rc;
    };
    test::expect_each_allocation_noticed(err, read_all, 2, "Failed to allocate resource.");
    const auto read_one = [&] {
        EnclosureHealth one{};
        const uint32_t rc = get(one);
        EXPECT_EQ(one.Health == nullptr, rc != 0);
        EXPECT_EQ(one.key == nullptr, rc != 0);
        return rc;
    };
    test::expect_each_allocation_noticed(err, read_one, 2, "Failed to allocate resource.");
}

// ---- Readings to test with

TEST_F(EnclosureHealthTest, WithoutAFileMissingSensorsGetTheMiddleOfTheirLimits)
{
    ASSERT_EQ(write(0, "cpu", "0", 40), 0u);
    ASSERT_EQ(set_for_test(nullptr), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre("0|cpu|0|40|40|40|40", "0|fan|1|5000|5000|5000|5000",
                                      "0|fan|2|5000|5000|5000|5000", "1|psu|1|NULL|NULL|NULL|NULL"));
}

TEST_F(EnclosureHealthTest, Files)
{
    const std::string name31(31, 'n');
    const std::string name32(32, 'n');
    struct {
        const char *name;
        std::string text;
        std::vector<std::string> stored;
    } const table[] = {
        {"nothing", "", {}},
        {"a line", "1,fan,2,3000\n", {"1|fan|2|3000|3000|3000|3000"}},
        {"a line without an end", "1,fan,2,3000", {"1|fan|2|3000|3000|3000|3000"}},
        {"the rest of a line is skipped",
         "1,fan,2,3000 rpm, all well\n1,fan,3,-5;x\n",
         {"1|fan|2|3000|3000|3000|3000", "1|fan|3|-5|-5|-5|-5"}},
        {"the history moves", "1,fan,2,10\n1,fan,2,11\n1,fan,2,12\n", {"1|fan|2|12|11|10|10"}},
        {"blanks belong to the name", "1, fan ,2 b,10\n", {"1| fan |2 b|10|10|10|10"}},
        {"blank lines are skipped", "1,fan,2,10\n\n\n1,fan,3,11\n", {"1|fan|2|10|10|10|10", "1|fan|3|11|11|11|11"}},
        {"it ends at the first line that is none", "1,fan,2,10\nfan,3,11\n1,fan,4,12\n", {"1|fan|2|10|10|10|10"}},
        {"an empty name is none", "1,,2,10\n", {}},
        {"no value", "1,fan,2,\n1,fan,3,4\n", {}},
        {"a name does not go on in the next line", "1,fan\n2,3,4\n", {}},
        {"lines that end as elsewhere",
         "1,fan,2,10\r\n\r\n1,fan,3,11\r\n",
         {"1|fan|2|10|10|10|10", "1|fan|3|11|11|11|11"}},
        {"31 characters", "1," + name31 + "," + name31 + ",10\n", {"1|" + name31 + "|" + name31 + "|10|10|10|10"}},
        {"32 characters of a name", "1," + name32 + ",2,10\n", {}},
        {"32 characters of a device", "1,fan," + name32 + ",10\n", {}},
        {"not a text", std::string("\0\xFF\n", 3), {}},
        {"quotes are no SQL", "1,it's,2,10\n1,x');--,2,11\n", {"1|it's|2|10|10|10|10", "1|x');--|2|11|11|11|11"}},
    };
    for (const auto &row : table) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(set_for_test(file(row.text).c_str()), 0u) << err.message;
        EXPECT_EQ(stored(), row.stored);
        sql("DELETE FROM _enclosure_health");
    }
}

TEST_F(EnclosureHealthTest, AFailureTakesTheWholeFileBack)
{
    const std::string path = file("1,fan,2,10\n1,fan,3,11\n");
    fail_statement(3);
    expect_failure(8, "Fail 'INSERT INTO _enclousre_health. injected", [&] { return set_for_test(path.c_str()); });
}

TEST_F(EnclosureHealthTest, WhatIsNoFileOfReadingsIsRefusedAtOnce)
{
    const std::string missing = directory.path + "/missing";
    const std::string pipe = directory.path + "/pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string large = file("1,fan,2,10\n");
    ASSERT_EQ(truncate(large.c_str(), 1024 * 1024 + 1), 0);
    const auto begun = std::chrono::steady_clock::now();
    struct {
        std::string path;
        const char *why;
    } const table[] = {
        {missing, "No such file or directory"}, {pipe, "Invalid argument"},
        {directory.path, "Invalid argument"},   {"/dev/zero", "Invalid argument"},
        {"/dev/tty0/x", "Not a directory"},     {large, "File too large"},
        {"", "No such file or directory"},      {std::string(5000, 'p'), "File name too long"},
    };
    for (const auto &row : table)
        if (row.path != "/dev/tty0/x" || access("/dev/tty0", F_OK) == 0)
            expect_failure(8, "Cannot read file (" + row.path + "). " + row.why,
                           [&] { return set_for_test(row.path.c_str()); });
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(5)) << "a pipe must not hold us up";
}

TEST_F(EnclosureHealthTest, AFileThatIsLargeEnoughIsReadWhole)
{
    std::string text;
    for (int i = 0; i < 20000; i++) text += "1,fan," + std::to_string(i % 100) + "," + std::to_string(i) + "\n";
    ASSERT_LT(text.size(), 1024u * 1024);
    ASSERT_EQ(set_for_test(file(text).c_str()), 0u) << err.message;
    EXPECT_EQ(value("SELECT COUNT(*) FROM _enclosure_health"), "100");
    EXPECT_EQ(value("SELECT value||','||value_prev3 FROM _enclosure_health WHERE devid='99'"), "19999,19699");
}

TEST_F(EnclosureHealthTest, StatementsUseIndexes)
{
    EnclosureHealth enclosure{};
    take_statements();
    get(enclosure);
    write(0, "fan", "1", 3);
    test::expect_indexed(db, take_statements());
    EnclosureHealthCollection all{};
    get(all);
    set_for_test(nullptr);
    test::expect_indexed(db, take_statements(),
                         {{"_disk_enclosure", "", "a listing of all enclosures"},
                          {"enclosure_health_spec", "INSERT", "each sensor is filled"}});
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
