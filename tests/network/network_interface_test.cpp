#include <functional>
#include <random>

#include "fixture/fixture.h"

using test::elements;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using Field = const char *NetworkInterface::*;

struct Network : test::Database {
    NetworkInterface nif{};

    static NetworkInterface eth0()
    {
        NetworkInterface made{};
        made.Name = "eth0";
        made.Mac = "00:1a:2B:3c:4D:5e";
        made.Protocol = "static";
        made.IP = "192.168.1.10";
        made.DNS1 = "192.168.1.1";
        made.DNS2 = "192.168.1.2";
        made.Gateway = "192.168.1.254";
        made.Subnet = "255.255.255.0";
        return made;
    }
    static NetworkInterface named(const char *name)
    {
        NetworkInterface made{};
        made.Name = name;
        made.Mac = "0:1:2:3:4:5";
        return made;
    }
    uint32_t add(NetworkInterface made) { return qbobj_addNetworkInterface(qbdb, db, &made, &err); }
    uint32_t modify(NetworkInterface made) { return qbobj_modifyNetworkInterface(qbdb, db, &made, &err); }
    uint32_t get(const char *name)
    {
        nif = {};
        nif.Name = name;
        return qbobj_getNetworkInterface(qbdb, db, &nif, &err);
    }
    uint32_t remove(const char *name) { return qbobj_deleteNetworkInterface(qbdb, db, name, &err); }
    std::vector<std::string> stored() const { return rows("SELECT * FROM network_if ORDER BY name"); }
};

constexpr char kEth0[] =
    "eth0|00:1a:2B:3c:4D:5e|static|192.168.1.10|192.168.1.1|192.168.1.2|192.168.1.254|255.255.255.0";

// ---- Adding

TEST_F(Network, AddsAndReadsBack)
{
    ASSERT_EQ(add(eth0()), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre(kEth0));
    NetworkInterface after{};
    nif.Name = "eth0";
    nif.next = &after;
    ASSERT_EQ(qbobj_getNetworkInterface(qbdb, db, &nif, &err), 0u) << err.message;
    const NetworkInterface want = eth0();
    for (const Field field :
         {&NetworkInterface::Name, &NetworkInterface::Mac, &NetworkInterface::Protocol, &NetworkInterface::IP,
          &NetworkInterface::DNS1, &NetworkInterface::DNS2, &NetworkInterface::Gateway, &NetworkInterface::Subnet})
        EXPECT_STREQ(nif.*field, want.*field);
    EXPECT_STREQ(nif.key, "eth0");
    EXPECT_EQ(nif.next, &after) << "the link is the caller's";
}

TEST_F(Network, AddsWithoutWhatIsOptional)
{
    ASSERT_EQ(add(named("wlan0")), 0u) << err.message;
    NetworkInterface empty = named("wlan1");
    empty.Protocol = empty.IP = empty.DNS1 = empty.DNS2 = empty.Gateway = empty.Subnet = "";
    ASSERT_EQ(add(empty), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre("wlan0|0:1:2:3:4:5|NULL|NULL|NULL|NULL|NULL|NULL", "wlan1|0:1:2:3:4:5||||||"));
    ASSERT_EQ(get("wlan0"), 0u) << err.message;
    EXPECT_EQ(nif.Protocol, nullptr);
    EXPECT_EQ(nif.Subnet, nullptr);
    ASSERT_EQ(get("wlan1"), 0u) << err.message;
    EXPECT_STREQ(nif.Gateway, "");
}

TEST_F(Network, DoesNotCheckProtocolAndSubnet)
{
    NetworkInterface odd = eth0();
    odd.Protocol = "'); DROP TABLE network_if; --";
    odd.Subnet = "999.%d.%s";
    ASSERT_EQ(add(odd), 0u) << err.message;
    ASSERT_EQ(get("eth0"), 0u) << err.message;
    EXPECT_STREQ(nif.Protocol, odd.Protocol);
    EXPECT_STREQ(nif.Subnet, odd.Subnet);
}

TEST_F(Network, AddsOnlyTheFirstOfAChain)
{
    NetworkInterface second = named("eth1");
    NetworkInterface first = named("eth0");
    first.next = &second;
    ASSERT_EQ(qbobj_addNetworkInterface(qbdb, db, &first, &err), 0u) << err.message;
    EXPECT_THAT(stored(), SizeIs(1));
}

TEST_F(Network, AcceptsNamesOfInterfaces)
{
    for (const char *name : {"eth0", "bond0", "br-lan", "eth0.100", "wlan_1", "A", "0", "LAN 1", "0123456789abcdef"})
        EXPECT_EQ(add(named(name)), 0u) << name << ": " << err.message;
}

struct Refusal {
    Field field;
    const char *value;
    const char *message;
};

TEST_F(Network, RefusesBadFieldsOfANewInterface)
{
    const Refusal refusals[] = {
        {&NetworkInterface::Name, nullptr, "Invalid NetworkInterface Name ((null))"},
        {&NetworkInterface::Name, "", "Invalid NetworkInterface Name ()"},
        {&NetworkInterface::Name, "-eth", "Invalid NetworkInterface Name (-eth)"},
        {&NetworkInterface::Name, "eth/0", "Invalid NetworkInterface Name (eth/0)"},
        {&NetworkInterface::Name,
         "\xc3\xa4"
         "0",
         "Invalid NetworkInterface Name (\xc3\xa4"
         "0)"},
        {&NetworkInterface::Name, "0123456789abcdefg", "Invalid NetworkInterface Name (0123456789abcdefg)"},
        {&NetworkInterface::Mac, nullptr, "Invalid NetworkInterface Mac ((null))"},
        {&NetworkInterface::Mac, "", "Invalid NetworkInterface Mac ()"},
        {&NetworkInterface::Mac, "0:1:2:3:4", "Invalid NetworkInterface Mac (0:1:2:3:4)"},
        {&NetworkInterface::Mac, "0:1:2:3:4:5:", "Invalid NetworkInterface Mac (0:1:2:3:4:5:)"},
        {&NetworkInterface::Mac, "0:1:2:3:4:5x", "Invalid NetworkInterface Mac (0:1:2:3:4:5x)"},
        {&NetworkInterface::Mac, "0-1-2-3-4-5", "Invalid NetworkInterface Mac (0-1-2-3-4-5)"},
        {&NetworkInterface::Mac, "0:1:2:3:4:g", "Invalid NetworkInterface Mac (0:1:2:3:4:g)"},
        {&NetworkInterface::IP, "1.2.3", "Invalid NetworkInterface IP (1.2.3)"},
        {&NetworkInterface::IP, "1.2.3.256", "Invalid NetworkInterface IP (1.2.3.256)"},
        {&NetworkInterface::IP, "1.2.3.4/24", "Invalid NetworkInterface IP (1.2.3.4/24)"},
        {&NetworkInterface::IP, "::1", "Invalid NetworkInterface IP (::1)"},
        {&NetworkInterface::DNS1, "ns1", "Invalid NetworkInterface DNS1 (ns1)"},
        {&NetworkInterface::DNS2, " ", "Invalid NetworkInterface DNS2 ( )"},
        {&NetworkInterface::Gateway, "1.2.3.4.5", "Invalid NetworkInterface Gateway (1.2.3.4.5)"},
    };
    for (const Refusal &refusal : refusals) {
        NetworkInterface bad = eth0();
        bad.*refusal.field = refusal.value;
        take_statements();
        expect_failure(8, refusal.message, [&] { return add(bad); });
    }
}

TEST_F(Network, LooksAtFieldsInOrderAndBeforeTheDatabase)
{
    ASSERT_EQ(add(eth0()), 0u);
    NetworkInterface bad = eth0();
    bad.Name = "-";
    bad.Mac = bad.IP = bad.DNS1 = bad.DNS2 = bad.Gateway = "x";
    struct {
        Field field;
        const char *good;
        const char *message;
    } steps[] = {
        {&NetworkInterface::Name, "eth0", "Invalid NetworkInterface Name (-)"},
        {&NetworkInterface::Mac, "0:1:2:3:4:5", "Invalid NetworkInterface Mac (x)"},
        {&NetworkInterface::IP, "1.2.3.4", "Invalid NetworkInterface IP (x)"},
        {&NetworkInterface::DNS1, "1.2.3.4", "Invalid NetworkInterface DNS1 (x)"},
        {&NetworkInterface::DNS2, "1.2.3.4", "Invalid NetworkInterface DNS2 (x)"},
        {&NetworkInterface::Gateway, "1.2.3.4", "Invalid NetworkInterface Gateway (x)"},
    };
    for (const auto &step : steps) {
        take_statements();
        expect_failure(8, step.message, [&] { return add(bad); });
        EXPECT_THAT(take_statements(), ElementsAre("BEGIN IMMEDIATE", "ROLLBACK"));
        bad.*step.field = step.good;
    }
    expect_failure(8, "NetworkInterface Name (eth0) is already exist.", [&] { return add(bad); });
}

TEST_F(Network, TellsNamesApartByCase)
{
    ASSERT_EQ(add(named("eth0")), 0u);
    EXPECT_EQ(add(named("ETH0")), 0u) << err.message;
    EXPECT_EQ(get("Eth0"), 6u);
}

// ---- Reading

TEST_F(Network, ListsByNameWithoutCase)
{
    for (const char *name : {"wlan0", "Bond0", "eth1", "Eth0", "br-lan"}) ASSERT_EQ(add(named(name)), 0u) << name;
    NetworkInterface first{};
    NetworkInterfaceCollection all{&first};
    ASSERT_EQ(qbobj_getNetworkInterfaceCollection(qbdb, db, &all, &err), 0u) << err.message;
    std::vector<std::string> names;
    for (const NetworkInterface *each : elements(first.next)) {
        names.push_back(each->Name);
        EXPECT_STREQ(each->key, each->Name);
        EXPECT_STREQ(each->Mac, "0:1:2:3:4:5");
        EXPECT_EQ(each->IP, nullptr);
    }
    EXPECT_EQ(all.NetworkInterface, &first) << "a list that is not empty is appended to";
    EXPECT_THAT(names, ElementsAre("Bond0", "br-lan", "Eth0", "eth1", "wlan0"));
}

TEST_F(Network, ListingTracesItsRows)
{
    for (const char *name : {"eth0", "eth1"}) ASSERT_EQ(add(named(name)), 0u) << name;
    qbdb->log_level = 5;
    NetworkInterfaceCollection all{};
    ASSERT_EQ(qbobj_getNetworkInterfaceCollection(qbdb, db, &all, &err), 0u);
    EXPECT_THAT(logged(5), testing::Contains("x_qbobj_getNetworkInterfaceCollection() rc=0 nrow=2\n"));
    fail_statement(1);
    ASSERT_EQ(qbobj_getNetworkInterfaceCollection(qbdb, db, &all, &err), 5u);
    EXPECT_THAT(logged(5), testing::Contains("x_qbobj_getNetworkInterfaceCollection() rc=5 nrow=0\n"));
}

TEST_F(Network, ListsNothingOfAnEmptyTable)
{
    NetworkInterfaceCollection all{};
    ASSERT_EQ(qbobj_getNetworkInterfaceCollection(qbdb, db, &all, &err), 0u) << err.message;
    EXPECT_EQ(all.NetworkInterface, nullptr);
}

TEST_F(Network, ReportsWhyAnInterfaceCannotBeRead)
{
    ASSERT_EQ(add(eth0()), 0u);
    expect_failure(8, "NetworkInterface Name cannot be NULL.", [&] { return get(nullptr); });
    expect_failure(6, "NetworkInterface Name=eth9 not exist.", [&] { return get("eth9"); });
    expect_failure(6, "NetworkInterface Name= not exist.", [&] { return get(""); });
    EXPECT_EQ(nif.Mac, nullptr);
    EXPECT_EQ(nif.key, nullptr);
}

// ---- Changing

TEST_F(Network, ChangesWhatIsGiven)
{
    ASSERT_EQ(add(eth0()), 0u);
    ASSERT_EQ(add(named("eth1")), 0u);
    const struct {
        Field field;
        const char *value;
        const char *row;
    } rows[] = {
        {&NetworkInterface::Mac, "a:b:c:d:e:f",
         "eth0|a:b:c:d:e:f|static|192.168.1.10|192.168.1.1|192.168.1.2|192.168.1.254|255.255.255.0"},
        {&NetworkInterface::Protocol, "",
         "eth0|a:b:c:d:e:f||192.168.1.10|192.168.1.1|192.168.1.2|192.168.1.254|255.255.255.0"},
        {&NetworkInterface::IP, "10.0.0.1",
         "eth0|a:b:c:d:e:f||10.0.0.1|192.168.1.1|192.168.1.2|192.168.1.254|255.255.255.0"},
        {&NetworkInterface::DNS1, "10.0.0.2",
         "eth0|a:b:c:d:e:f||10.0.0.1|10.0.0.2|192.168.1.2|192.168.1.254|255.255.255.0"},
        {&NetworkInterface::DNS2, "10.0.0.3",
         "eth0|a:b:c:d:e:f||10.0.0.1|10.0.0.2|10.0.0.3|192.168.1.254|255.255.255.0"},
        {&NetworkInterface::Gateway, "10.0.0.4", "eth0|a:b:c:d:e:f||10.0.0.1|10.0.0.2|10.0.0.3|10.0.0.4|255.255.255.0"},
        {&NetworkInterface::Subnet, "255.0.0.0", "eth0|a:b:c:d:e:f||10.0.0.1|10.0.0.2|10.0.0.3|10.0.0.4|255.255.255.0"},
    };
    for (const auto &row : rows) {
        NetworkInterface change{};
        change.Name = "eth0";
        change.*row.field = row.value;
        EXPECT_EQ(modify(change), 0u) << err.message;
        EXPECT_THAT(stored(), ElementsAre(row.row, "eth1|0:1:2:3:4:5|NULL|NULL|NULL|NULL|NULL|NULL"));
    }
}

TEST_F(Network, ChangesAllAtOnceWithOneStatement)
{
    ASSERT_EQ(add(named("eth0")), 0u);
    take_statements();
    NetworkInterface change = eth0();
    change.Protocol = "it's";
    ASSERT_EQ(modify(change), 0u) << err.message;
    EXPECT_THAT(take_statements(),
                ElementsAre("BEGIN IMMEDIATE",
                            "UPDATE network_if SET mac='00:1a:2B:3c:4D:5e',protocol='it''s',ip='192.168.1.10',"
                            "dns1='192.168.1.1',dns2='192.168.1.2',gateway='192.168.1.254' WHERE Name='eth0'",
                            "COMMIT"));
    EXPECT_THAT(stored(),
                ElementsAre("eth0|00:1a:2B:3c:4D:5e|it's|192.168.1.10|192.168.1.1|192.168.1.2|192.168.1.254|NULL"))
        << "the subnet cannot be changed";
}

TEST_F(Network, ChangesNothingWithoutFieldsOrInterface)
{
    ASSERT_EQ(add(eth0()), 0u);
    NetworkInterface change{};
    change.Name = "eth0";
    change.Subnet = "255.0.0.0";
    take_statements();
    EXPECT_EQ(modify(change), 0u) << err.message;
    EXPECT_THAT(take_statements(), ElementsAre("BEGIN IMMEDIATE", "COMMIT"));
    EXPECT_EQ(modify(named("eth9")), 0u) << err.message;
    EXPECT_EQ(modify(named("")), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre(kEth0));
}

TEST_F(Network, RefusesBadChanges)
{
    ASSERT_EQ(add(eth0()), 0u);
    const Refusal refusals[] = {
        {&NetworkInterface::Name, nullptr, "NetworkInterface Name cannot be NULL."},
        {&NetworkInterface::Mac, "", "NetworkInterface Mac () is invalid."},
        {&NetworkInterface::Mac, "0:1:2:3:4:5:6", "NetworkInterface Mac (0:1:2:3:4:5:6) is invalid."},
        {&NetworkInterface::IP, "", "NetworkInterface IP () is invalid."},
        {&NetworkInterface::IP, "1.2.3.300", "NetworkInterface IP (1.2.3.300) is invalid."},
        {&NetworkInterface::DNS1, "ns", "NetworkInterface DNS1 (ns) is invalid."},
        {&NetworkInterface::DNS2, "1.2.3.4x", "NetworkInterface DNS2 (1.2.3.4x) is invalid."},
        {&NetworkInterface::Gateway, "1.2.3", "NetworkInterface Gateway (1.2.3) is invalid."},
    };
    for (const Refusal &refusal : refusals) {
        NetworkInterface bad = eth0();
        bad.*refusal.field = refusal.value;
        take_statements();
        expect_failure(8, refusal.message, [&] { return modify(bad); });
        EXPECT_THAT(take_statements(), ElementsAre("BEGIN IMMEDIATE", "ROLLBACK")) << "no statement before the checks";
    }
    fail_statement(1);
    expect_failure(5, "Failed 'UPDATE network_if'. injected", [&] { return modify(eth0()); });
}

TEST_F(Network, LooksAtChangesInOrder)
{
    ASSERT_EQ(add(eth0()), 0u);
    NetworkInterface bad{};
    bad.Mac = bad.IP = bad.DNS1 = bad.DNS2 = bad.Gateway = "x";
    const struct {
        Field field;
        const char *good;
        const char *message;
    } steps[] = {
        {&NetworkInterface::Name, "eth0", "NetworkInterface Name cannot be NULL."},
        {&NetworkInterface::Mac, "0:1:2:3:4:5", "NetworkInterface Mac (x) is invalid."},
        {&NetworkInterface::IP, "1.2.3.4", "NetworkInterface IP (x) is invalid."},
        {&NetworkInterface::DNS1, "1.2.3.4", "NetworkInterface DNS1 (x) is invalid."},
        {&NetworkInterface::DNS2, "1.2.3.4", "NetworkInterface DNS2 (x) is invalid."},
        {&NetworkInterface::Gateway, "1.2.3.4", "NetworkInterface Gateway (x) is invalid."},
    };
    for (const auto &step : steps) {
        expect_failure(8, step.message, [&] { return modify(bad); });
        bad.*step.field = step.good;
    }
    EXPECT_EQ(modify(bad), 0u) << err.message;
}

TEST_F(Network, RunsOneStatementEach)
{
    NetworkInterfaceCollection all{};
    const struct {
        std::function<uint32_t()> call;
        std::string statement;
    } calls[] = {
        {[&] { return add(eth0()); },
         "INSERT INTO network_if (name,mac,protocol,ip,dns1,dns2,gateway,subnet) VALUES('eth0','00:1a:2B:3c:4D:5e',"
         "'static','192.168.1.10','192.168.1.1','192.168.1.2','192.168.1.254','255.255.255.0')"},
        {[&] { return qbobj_getNetworkInterfaceCollection(qbdb, db, &all, &err); },
         "SELECT N.name,N.mac,N.protocol,N.ip,N.dns1,N.dns2,N.gateway,N.subnet FROM network_if N ORDER BY N.name "
         "COLLATE NOCASE"},
        {[&] { return get("eth0"); },
         "SELECT N.name,N.mac,N.protocol,N.ip,N.dns1,N.dns2,N.gateway,N.subnet FROM network_if N WHERE "
         "N.name='eth0'"},
        {[&] { return remove("eth0"); }, "DELETE FROM network_if WHERE name='eth0'"},
    };
    for (const auto &each : calls) {
        take_statements();
        EXPECT_EQ(each.call(), 0u) << err.message;
        EXPECT_THAT(take_statements(), ElementsAre(testing::StartsWith("BEGIN"), each.statement, "COMMIT"));
    }
}

TEST_F(Network, LeavesNothingOutThatIsTooLong)
{
    ASSERT_EQ(add(eth0()), 0u);
    NetworkInterface change{};
    change.Name = "eth0";
    const std::string fits(512 - 1 - strlen("protocol=''"), 'p');
    change.Protocol = fits.c_str();
    ASSERT_EQ(modify(change), 0u) << err.message;
    EXPECT_EQ(value("SELECT protocol FROM network_if"), fits);
    const std::string longer = fits + "p";
    change.Protocol = longer.c_str();
    expect_failure(5, "Failed 'UPDATE network_if'. The values are too long.", [&] { return modify(change); });
    change.Protocol = fits.c_str();
    change.Gateway = "1.2.3.4";
    expect_failure(5, "Failed 'UPDATE network_if'. The values are too long.", [&] { return modify(change); });
}

// ---- Deleting

TEST_F(Network, Deletes)
{
    ASSERT_EQ(add(named("eth0")), 0u);
    ASSERT_EQ(add(named("eth1")), 0u);
    ASSERT_EQ(remove("eth0"), 0u) << err.message;
    EXPECT_THAT(rows("SELECT name FROM network_if"), ElementsAre("eth1"));
    EXPECT_EQ(add(eth0()), 0u) << "the name is free again";
}

TEST_F(Network, ReportsWhyAnInterfaceCannotBeDeleted)
{
    ASSERT_EQ(add(eth0()), 0u);
    expect_failure(8, "NetworkInterface Name cannot be NULL.", [&] { return remove(nullptr); });
    expect_failure(6, "None of row is deleted. Specifie Name (eth9) is not exist.", [&] { return remove("eth9"); });
    expect_failure(6, "None of row is deleted. Specifie Name (ETH0) is not exist.", [&] { return remove("ETH0"); });
}

// ---- All of them

TEST_F(Network, EndsTheProcessForANullRecord)
{
    EXPECT_DEATH(qbobj_getNetworkInterfaceCollection(qbdb, db, nullptr, &err), "Assertion `interfaces' failed");
    EXPECT_DEATH(qbobj_getNetworkInterface(qbdb, db, nullptr, &err), "Assertion `nif' failed");
    EXPECT_DEATH(qbobj_addNetworkInterface(qbdb, db, nullptr, &err), "Assertion `nif' failed");
    EXPECT_DEATH(qbobj_modifyNetworkInterface(qbdb, db, nullptr, &err), "Assertion `nif' failed");
    EXPECT_DEATH(qbobj_deleteNetworkInterface(qbdb, db, "eth0", nullptr), "Assertion `err' failed");
}

TEST_F(Network, KeepsEveryNameAndTextThatItAccepts)
{
    std::mt19937 random(7);
    int accepted = 0;
    for (int i = 0; i < 600; i++) {
        static const std::string kLikely = "abyzABYZ019_-. '\"%\\\xc3\xa4";
        std::string name(1 + random() % 18, ' '), word(random() % 80, ' ');
        for (char &byte : name)
            byte = random() % 16 ? kLikely[random() % kLikely.size()] : static_cast<char>(1 + random() % 255);
        for (char &byte : word) byte = static_cast<char>(1 + random() % 255);
        NetworkInterface made = named(name.c_str());
        made.Protocol = word.c_str();
        if (add(made) != 0) {
            ASSERT_EQ(std::string(err.message), "Invalid NetworkInterface Name (" + name + ")");
            continue;
        }
        accepted++;
        ASSERT_EQ(get(name.c_str()), 0u) << err.message;
        ASSERT_STREQ(nif.Name, name.c_str());
        ASSERT_STREQ(nif.Protocol, word.c_str());
        ASSERT_EQ(remove(name.c_str()), 0u) << err.message;
        ASSERT_THAT(stored(), IsEmpty());
    }
    EXPECT_GT(accepted, 50);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
