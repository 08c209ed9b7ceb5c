// Configuration of the power supplies.
#include "fixture/fixture.h"
#include "fixture/plans.h"
#include "fixture/text_of.h"

using test::elements;
using test::text_of;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using Field = const char *UpsConfig::*;

struct Ups : test::Database {
    UpsConfig unit{};

    static UpsConfig local(const char *name = "desk")
    {
        UpsConfig made{};
        made.Type = "local";
        made.Name = name;
        made.Enabled = 1;
        made.Description = "under the desk";
        made.ShutdownThreshold = 20;
        made.Share_enabled = 1;
        made.List1 = "0.0.0.0";
        return made;
    }
    static UpsConfig snmp(const char *name = "rack")
    {
        UpsConfig made{};
        made.Type = "snmp";
        made.Name = name;
        made.Enabled = 1;
        made.Description = "in the rack";
        made.ShutdownThreshold = 30;
        made.Port = "10.0.0.7";
        made.SnmpCommunity = "public";
        made.SnmpMibs = "apcc";
        return made;
    }
    static UpsConfig remote(const char *name = "hall")
    {
        UpsConfig made{};
        made.Type = "remote";
        made.Name = name;
        made.Enabled = 1;
        made.Description = "in the hall";
        made.ShutdownThreshold = 40;
        made.Port = "10.0.0.8";
        made.RemoteUserName = "monitor";
        made.RemotePassword = "it's secret";
        return made;
    }

    uint32_t add(UpsConfig made) { return qbobj_addUpsConfig(qbdb, db, &made, &err); }
    void add_all()
    {
        for (const UpsConfig &each : {local(), snmp(), remote()}) ASSERT_EQ(add(each), 0u) << err.message;
    }
    uint32_t get(const char *key)
    {
        unit = {};
        return qbobj_getUpsConfigByNameAtHost(qbdb, db, key, &unit, &err);
    }
    uint32_t list(UpsConfigCollection *units) { return qbobj_getUpsConfigCollection(qbdb, db, units, &err); }
    uint32_t set(UpsConfig changed, const char *key)
    {
        changed.key = key;
        return qbobj_setUpsConfig(qbdb, db, &changed, &err);
    }
    uint32_t inform(UpsConfig learnt, const char *key)
    {
        learnt.key = key;
        return qbobj_setUpsInfo(qbdb, db, &learnt, &err);
    }
    uint32_t remove(const char *key) { return qbobj_deleteUpsConfig(qbdb, db, key, &err); }

    std::vector<std::string> stored() const
    {
        return rows(
            "SELECT name,host,port,type,enabled,description,shutdown_threshold,snmp_community,snmp_mibs,"
            "remote_username,remote_password FROM _ups_config ORDER BY rowid");
    }
    std::string sharing() const { return rows("SELECT * FROM service_upsd")[0]; }
};

constexpr char kLocal[] = "desk|localhost|auto|local|1|under the desk|20|NULL|NULL|NULL|NULL";
constexpr char kSnmp[] = "rack|localhost|10.0.0.7|snmp|1|in the rack|30|public|apcc|NULL|NULL";
constexpr char kRemote[] = "hall|10.0.0.8|10.0.0.8|remote|1|in the hall|40|NULL|NULL|monitor|it's secret";

// ---- Adding

TEST_F(Ups, AddsAUnitOfEachType)
{
    const struct {
        UpsConfig unit;
        const char *row;
        const char *key;
        const char *sharing;
    } units[] = {
        {snmp(), kSnmp, "rack@localhost", "0|"},
        {remote(), kRemote, "hall@10.0.0.8", "0|"},
        {local(), kLocal, "desk@localhost", "1|0.0.0.0"},
    };
    std::vector<std::string> so_far;
    for (const auto &each : units) {
        UpsConfig made = each.unit;
        ASSERT_EQ(qbobj_addUpsConfig(qbdb, db, &made, &err), 0u) << err.message;
        EXPECT_STREQ(made.key, each.key);
        so_far.emplace_back(each.row);
        EXPECT_EQ(stored(), so_far);
        EXPECT_EQ(sharing(), each.sharing) << "only a local unit is shared";
    }
}

TEST_F(Ups, AddsWhatIsNotGivenAsNothing)
{
    UpsConfig bare{};
    bare.Type = "local";
    bare.Name = "a";
    ASSERT_EQ(add(bare), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre("a|localhost|auto|local|0|NULL|0|NULL|NULL|NULL|NULL"));
    EXPECT_EQ(sharing(), "0|NULL");
}

TEST_F(Ups, AddsOnlyTheFirstOfAChain)
{
    UpsConfig second = snmp();
    UpsConfig first = local();
    first.next = &second;
    ASSERT_EQ(qbobj_addUpsConfig(qbdb, db, &first, &err), 0u) << err.message;
    EXPECT_THAT(stored(), SizeIs(1));
}

TEST_F(Ups, AcceptsEveryMib)
{
    int number = 0;
    for (const char *mib : {"auto", "mge", "apcc", "netvision", "pw", "aphel_genesisII", "aphel_revelation", "raritan",
                            "baytech", "cpqpower", "cyberpower"}) {
        const std::string name = "u" + std::to_string(number++);
        UpsConfig made = snmp(name.c_str());
        made.SnmpMibs = mib;
        made.Enabled = 0;
        EXPECT_EQ(add(made), 0u) << mib << ": " << err.message;
    }
}

struct NameCase {
    const char *name;
    uint32_t code;
    const char *message;
};

constexpr NameCase kNames[] = {
    {"a", 0, nullptr},
    {"Ups1", 0, nullptr},
    {"abcdefghijklmno", 0, nullptr},
    {nullptr, 8, "Invalid UPS Name ((null)), rc=-1"},
    {"", 8, "Invalid UPS Name (), rc=-1"},
    {"1ups", 825, "UPS Name (1ups) contains invalid char. Must be '[a-zA-Z][0-9a-zA-Z]*'."},
    {"-", 825, "UPS Name (-) contains invalid char. Must be '[a-zA-Z][0-9a-zA-Z]*'."},
    {"my-ups", 825, "UPS Name (my-ups) contains invalid char. Must be '[a-zA-Z][0-9a-zA-Z]*'."},
    {"my ups", 825, "UPS Name (my ups) contains invalid char. Must be '[a-zA-Z][0-9a-zA-Z]*'."},
    {"ups\xc3\xa4", 825, "UPS Name (ups\xc3\xa4) contains invalid char. Must be '[a-zA-Z][0-9a-zA-Z]*'."},
    {"abcdefghijklmnop", 806, "UPS Name (abcdefghijklmnop) is too long"},
    {"1bcdefghijklmnop", 825, "UPS Name (1bcdefghijklmnop) contains invalid char. Must be '[a-zA-Z][0-9a-zA-Z]*'."},
};

TEST_F(Ups, NamesOfNewUnits)
{
    for (const NameCase &each : kNames) {
        UpsConfig made = local(each.name);
        made.Enabled = 0;
        if (each.code) expect_failure(each.code, each.message, [&] { return add(made); });
        else EXPECT_EQ(add(made), 0u) << each.name << ": " << err.message;
    }
}

struct Refusal {
    UpsConfig (*unit)(const char *);
    Field field;
    const char *value;
    const char *message;
};

constexpr Refusal kRefusals[] = {
    {Ups::snmp, &UpsConfig::SnmpCommunity, nullptr, "Invalid community ((null))."},
    {Ups::snmp, &UpsConfig::SnmpCommunity, "", "Invalid community ()."},
    {Ups::snmp, &UpsConfig::SnmpCommunity, "a b", "Invalid community (a b)."},
    {Ups::snmp, &UpsConfig::SnmpCommunity, "abcdefghijklmnop", "Invalid community (abcdefghijklmnop)."},
    {Ups::snmp, &UpsConfig::SnmpMibs, nullptr, "Invalid mibs ((null))."},
    {Ups::snmp, &UpsConfig::SnmpMibs, "", "Invalid mibs ()."},
    {Ups::snmp, &UpsConfig::SnmpMibs, "APCC", "Invalid mibs (APCC)."},
    {Ups::snmp, &UpsConfig::SnmpMibs, "apc", "Invalid mibs (apc)."},
    {Ups::remote, &UpsConfig::RemoteUserName, nullptr, "Need to specify RemoteUserName."},
    {Ups::remote, &UpsConfig::RemoteUserName, "", "Invalid remote NUT user name ()."},
    {Ups::remote, &UpsConfig::RemoteUserName, "1234", "Invalid remote NUT user name (1234)."},
    {Ups::remote, &UpsConfig::RemoteUserName, "a b", "Invalid remote NUT user name (a b)."},
    {Ups::remote, &UpsConfig::RemoteUserName, "everyone", "Invalid remote NUT user name (everyone)."},
    {Ups::remote, &UpsConfig::RemotePassword, nullptr, "Need to specify RemotePassword."},
    {Ups::remote, &UpsConfig::RemotePassword, "", "Invalid remote NUT passwer ()."},
};

TEST_F(Ups, RefusesBadFieldsOfANewUnit)
{
    constexpr Refusal kOfNew[] = {
        {Ups::local, &UpsConfig::Type, nullptr, "Invalid Type ((null)), must be either 'remote' or 'snmp'."},
        {Ups::local, &UpsConfig::Type, "", "Invalid Type (), must be either 'remote' or 'snmp'."},
        {Ups::local, &UpsConfig::Type, "Local", "Invalid Type (Local), must be either 'remote' or 'snmp'."},
        {Ups::local, &UpsConfig::Type, "usb", "Invalid Type (usb), must be either 'remote' or 'snmp'."},
        {Ups::snmp, &UpsConfig::Port, nullptr, "Invalid Port ((null)), must be IPv4 address."},
        {Ups::snmp, &UpsConfig::Port, "auto", "Invalid Port (auto), must be IPv4 address."},
        {Ups::remote, &UpsConfig::Port, "", "Invalid Port (), must be IPv4 address."},
        {Ups::remote, &UpsConfig::Port, "10.0.0.256", "Invalid Port (10.0.0.256), must be IPv4 address."},
        {Ups::remote, &UpsConfig::Port, "ups.example.com", "Invalid Port (ups.example.com), must be IPv4 address."},
    };
    std::vector<Refusal> all(std::begin(kOfNew), std::end(kOfNew));
    all.insert(all.end(), std::begin(kRefusals), std::end(kRefusals));
    for (const Refusal &refusal : all) {
        UpsConfig bad = refusal.unit("ups");
        bad.*refusal.field = refusal.value;
        expect_failure(8, refusal.message, [&] { return add(bad); });
    }
}

TEST_F(Ups, LooksAtNameTypeAddressRoomAndTheRestInThisOrder)
{
    for (int i = 0; i < 6; i++) ASSERT_EQ(add(local(("u" + std::to_string(i)).c_str())), 0u) << err.message;
    UpsConfig bad{};
    bad.Name = "-";
    expect_failure(825, "UPS Name (-) contains invalid char. Must be '[a-zA-Z][0-9a-zA-Z]*'.",
                   [&] { return add(bad); });
    bad.Name = "ups";
    bad.Type = "x";
    expect_failure(8, "Invalid Type (x), must be either 'remote' or 'snmp'.", [&] { return add(bad); });
    bad.Type = "snmp";
    expect_failure(8, "Invalid Port ((null)), must be IPv4 address.", [&] { return add(bad); });
    bad.Port = "10.0.0.1";
    expect_failure(826, "Too many UPS. There are 6 UPSs enalbed already.", [&] { return add(bad); });
    sql("UPDATE _ups_config SET enabled=0");
    expect_failure(8, "Invalid community ((null)).", [&] { return add(bad); });
    bad.SnmpCommunity = "public";
    expect_failure(8, "Invalid mibs ((null)).", [&] { return add(bad); });
}

TEST_F(Ups, SixUnitsAreSwitchedOn)
{
    for (int i = 0; i < 6; i++) {
        const std::string name = "u" + std::to_string(i);
        EXPECT_EQ(add(i % 2 ? snmp(name.c_str()) : local(name.c_str())), 0u) << i << ": " << err.message;
    }
    expect_failure(826, "Too many UPS. There are 6 UPSs enalbed already.", [&] { return add(remote()); });
    UpsConfig off = local("off");
    off.Enabled = 0;
    expect_failure(826, "Too many UPS. There are 6 UPSs enalbed already.", [&] { return add(off); });
    sql("UPDATE _ups_config SET enabled=2 WHERE name='u1'");
    EXPECT_EQ(add(off), 0u) << "a unit is on when enabled is 1";
    EXPECT_EQ(add(remote()), 0u) << err.message;
}

// ---- Reading

TEST_F(Ups, ReadsBackWhatWasAdded)
{
    add_all();
    ASSERT_EQ(get("rack@localhost"), 0u) << err.message;
    const UpsConfig want = snmp();
    EXPECT_STREQ(unit.key, "rack@localhost");
    for (const Field field : {&UpsConfig::Port, &UpsConfig::Type, &UpsConfig::Name, &UpsConfig::Description,
                              &UpsConfig::SnmpCommunity, &UpsConfig::SnmpMibs})
        EXPECT_STREQ(unit.*field, want.*field);
    EXPECT_EQ(text_of(unit),
              "key=rack@localhost Port=10.0.0.7 Type=snmp Enabled=1 Name=rack Description='in the rack' "
              "ShutdownThreshold=30 SnmpCommunity=public SnmpMibs=apcc UpsStatus=? UpsAlarm=?")
        << "only a local unit is shared";
    ASSERT_EQ(get("hall@10.0.0.8"), 0u) << err.message;
    EXPECT_STREQ(unit.RemoteUserName, "monitor");
    EXPECT_STREQ(unit.RemotePassword, "it's secret");
    ASSERT_EQ(get("desk@localhost"), 0u) << err.message;
    EXPECT_STREQ(unit.Port, "auto");
    EXPECT_EQ(unit.Share_enabled, 1);
    EXPECT_STREQ(unit.List1, "0.0.0.0");
}

TEST_F(Ups, TheLinkStaysTheCallers)
{
    add_all();
    UpsConfig after{};
    unit.next = &after;
    ASSERT_EQ(qbobj_getUpsConfigByNameAtHost(qbdb, db, "desk@localhost", &unit, &err), 0u) << err.message;
    EXPECT_EQ(unit.next, &after);
    EXPECT_STREQ(unit.Name, "desk");
}

TEST_F(Ups, AnUnknownUnitLeavesTheRecordAlone)
{
    add_all();
    for (const char *key :
         {"desk", "desk@10.0.0.8", "Desk@localhost", "", "' OR '1'='1", static_cast<const char *>(nullptr)}) {
        unit = {};
        unit.Description = "mine";
        EXPECT_EQ(qbobj_getUpsConfigByNameAtHost(qbdb, db, key, &unit, &err), 0u);
        EXPECT_STREQ(unit.Description, "mine");
        EXPECT_EQ(unit.key, nullptr);
    }
}

TEST_F(Ups, ListsAllUnits)
{
    add_all();
    UpsConfig first{};
    UpsConfigCollection units{&first};
    ASSERT_EQ(list(&units), 0u) << err.message;
    EXPECT_EQ(units.UpsConfig, &first) << "a list that is not empty is appended to";
    std::vector<std::string> keys;
    for (const UpsConfig *each : elements(first.next)) {
        keys.emplace_back(each->key);
        EXPECT_EQ(each->Share_enabled, each->Type == std::string("local"));
        EXPECT_EQ(each->List1 != nullptr, each->Type == std::string("local"));
        EXPECT_EQ(each->BatteryCharge, nullptr);
        EXPECT_EQ(each->BatteryRunTime, 0);
        EXPECT_EQ(each->BatteryVoltage, nullptr);
    }
    EXPECT_THAT(keys, testing::UnorderedElementsAre("desk@localhost", "rack@localhost", "hall@10.0.0.8"));
}

TEST_F(Ups, ListsNothingOfAnEmptyTable)
{
    UpsConfigCollection units{};
    ASSERT_EQ(list(&units), 0u) << err.message;
    EXPECT_EQ(units.UpsConfig, nullptr);
}

TEST_F(Ups, ReadsTheLastStatus)
{
    add_all();
    sql("INSERT INTO _ups_health (name,host,ups_status,ups_alarm) VALUES ('desk','localhost','OL CHRG BOOST','!'),"
        "('rack','10.0.0.7','OB',''),('hall','10.0.0.8',NULL,NULL)");
    const struct {
        const char *key;
        const char *status;
        const char *alarm;
    } units[] = {
        {"desk@localhost", "OL_CHRG_BOOST", "!"},
        {"rack@localhost", "?", "?"},  // a reading of another host
        {"hall@10.0.0.8", "?", "?"},   // a reading without values
    };
    for (const auto &each : units) {
        ASSERT_EQ(get(each.key), 0u) << err.message;
        EXPECT_STREQ(unit.UpsStatus, each.status) << each.key;
        EXPECT_STREQ(unit.UpsAlarm, each.alarm) << each.key;
    }
}

TEST_F(Ups, ALocalUnitIsReadWithoutTheRowOfItsSharing)
{
    ASSERT_EQ(add(local()), 0u) << err.message;
    sql("DELETE FROM service_upsd");
    ASSERT_EQ(get("desk@localhost"), 0u) << err.message;
    EXPECT_EQ(unit.Share_enabled, 0);
    EXPECT_EQ(unit.List1, nullptr);
}

// ---- Changing

TEST_F(Ups, ChangesALocalUnit)
{
    ASSERT_EQ(add(local()), 0u) << err.message;
    UpsConfig change = local("chair");
    change.Enabled = 0;
    change.Description = "it's moved";
    change.ShutdownThreshold = 50;
    change.Share_enabled = 0;
    change.List1 = "127.0.0.1";
    ASSERT_EQ(set(change, "desk@localhost"), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre("chair|localhost|auto|local|0|it's moved|50|NULL|NULL|NULL|NULL"));
    EXPECT_EQ(sharing(), "0|127.0.0.1");
}

TEST_F(Ups, ChangesAnSnmpUnitAndSwitchesItOn)
{
    ASSERT_EQ(add(snmp()), 0u) << err.message;
    UpsConfig change = snmp("tower");
    change.Enabled = 0;
    change.Port = "10.9.9.9";
    change.SnmpCommunity = "private";
    change.SnmpMibs = "mge";
    ASSERT_EQ(set(change, "rack@localhost"), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre("tower|localhost|10.0.0.7|snmp|1|in the rack|30|private|mge|NULL|NULL"));
    EXPECT_EQ(sharing(), "0|");
}

TEST_F(Ups, ARemoteUnitCannotBeChanged)
{
    ASSERT_EQ(add(remote()), 0u) << err.message;
    expect_failure(5, "Failed DB Query for 'UPDATE _ups_config' for REMOTE ups. incomplete input",
                   [&] { return set(remote("floor"), "hall@10.0.0.8"); });
}

TEST_F(Ups, AChangeIsWrittenToEveryUnit)
{
    add_all();
    UpsConfig change = local("one");
    change.Description = "all";
    ASSERT_EQ(set(change, "desk@localhost"), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre("one|localhost|auto|local|1|all|20|NULL|NULL|NULL|NULL",
                                      "one|localhost|10.0.0.7|snmp|1|all|20|public|apcc|NULL|NULL",
                                      "one|10.0.0.8|10.0.0.8|remote|1|all|20|NULL|NULL|monitor|it's secret"));
}

TEST_F(Ups, WithoutATypeTheStoredOneStands)
{
    add_all();
    UpsConfig change = local();
    change.Type = nullptr;
    EXPECT_EQ(set(change, "desk@localhost"), 0u) << err.message;
}

TEST_F(Ups, RefusesBadChanges)
{
    add_all();
    expect_failure(8, "Invalid resource-id ((null))", [&] { return set(local(), nullptr); });
    expect_failure(8, "No UPS for resource-id='desk@10.0.0.8'.", [&] { return set(local(), "desk@10.0.0.8"); });
    expect_failure(8, "No UPS for resource-id=''.", [&] { return set(local(), ""); });
    expect_failure(8, "Cannot change UPS type snmp-->local.", [&] { return set(local(), "rack@localhost"); });
    expect_failure(8, "Cannot change UPS type remote-->snmp.", [&] { return set(snmp(), "hall@10.0.0.8"); });
    for (const NameCase &each : kNames)
        if (each.code) expect_failure(each.code, each.message, [&] { return set(local(each.name), "desk@localhost"); });
    for (const Refusal &refusal : kRefusals) {
        UpsConfig bad = refusal.unit("ups");
        bad.*refusal.field = refusal.value;
        expect_failure(8, refusal.message,
                       [&] { return set(bad, refusal.unit == Ups::snmp ? "rack@localhost" : "hall@10.0.0.8"); });
    }
    sql("UPDATE _ups_config SET type=NULL WHERE name='desk'");
    expect_failure(8, "Cannot change UPS type (null)-->local.", [&] { return set(local(), "desk@localhost"); });
    UpsConfig untyped = local();
    untyped.Type = nullptr;
    expect_failure(8, "Invalid Type ((null)), must be either 'remote' or 'snmp'.",
                   [&] { return set(untyped, "desk@localhost"); });
}

// ---- What a unit tells of itself

TEST_F(Ups, StoresWhatAUnitTellsOfItself)
{
    add_all();
    UpsConfig learnt{};
    learnt.UpsModel = "Model 1500";
    learnt.UpsMfr = "it's them";
    learnt.UpsMfrDate = "2026-01-01";
    learnt.UpsSerial = "S1";
    learnt.ShutdownThreshold = 77;
    for (const char *key : {"desk@localhost", "hall@10.0.0.8"}) ASSERT_EQ(inform(learnt, key), 0u) << err.message;
    EXPECT_THAT(rows("SELECT name,ups_model,ups_mfr,ups_mfr_date,ups_serial,shutdown_threshold FROM _ups_config"),
                ElementsAre("desk|Model 1500|it's them|2026-01-01|S1|77", "rack|NULL|NULL|NULL|NULL|30",
                            "hall|Model 1500|it's them|2026-01-01|S1|40"))
        << "a remote unit's threshold is its server's business";
    ASSERT_EQ(get("desk@localhost"), 0u) << err.message;
    EXPECT_EQ(text_of(unit),
              "key=desk@localhost Port=auto Type=local Enabled=1 Name=desk Description='under the desk' "
              "UpsModel='Model 1500' UpsMfr='it's them' UpsMfrDate=2026-01-01 UpsSerial=S1 ShutdownThreshold=77 "
              "Share_enabled=1 List1=0.0.0.0 UpsStatus=? UpsAlarm=?");
    ASSERT_EQ(inform({}, "desk@localhost"), 0u) << err.message;
    EXPECT_EQ(value("SELECT ups_model FROM _ups_config WHERE name='desk'"), "NULL");
}

TEST_F(Ups, RefusesToInformOfNoUnit)
{
    add_all();
    expect_failure(8, "NULL resource_id", [&] { return inform({}, nullptr); });
    expect_failure(8, "No UPS for resource-id='desk'.", [&] { return inform({}, "desk"); });
}

// ---- Deleting

TEST_F(Ups, DeletingALocalUnitStopsTheSharing)
{
    add_all();
    ASSERT_EQ(remove("hall@10.0.0.8"), 0u) << err.message;
    ASSERT_EQ(remove("rack@localhost"), 0u) << err.message;
    EXPECT_THAT(stored(), ElementsAre(kLocal));
    EXPECT_EQ(sharing(), "1|0.0.0.0");
    ASSERT_EQ(remove("desk@localhost"), 0u) << err.message;
    EXPECT_THAT(stored(), IsEmpty());
    EXPECT_EQ(sharing(), "0|0.0.0.0");
}

TEST_F(Ups, RefusesToDeleteNoUnit)
{
    add_all();
    expect_failure(8, "NULL resource_id", [&] { return remove(nullptr); });
    expect_failure(8, "Specified resource-id='desk' does not exist.", [&] { return remove("desk"); });
    expect_failure(8, "Specified resource-id='' does not exist.", [&] { return remove(""); });
    expect_failure(8, "Specified resource-id='x' OR '1'='1' does not exist.", [&] { return remove("x' OR '1'='1"); });
    ASSERT_EQ(remove("desk@localhost"), 0u) << err.message;
    expect_failure(8, "Specified resource-id='desk@localhost' does not exist.",
                   [&] { return remove("desk@localhost"); });
}

// ---- Plans

TEST_F(Ups, OnlyTheHandfulOfUnitsIsReadWhole)
{
    add_all();
    take_statements();
    UpsConfigCollection units{};
    ASSERT_EQ(list(&units), 0u);
    ASSERT_EQ(get("desk@localhost"), 0u);
    ASSERT_EQ(add(snmp("other")), 0u) << err.message;
    ASSERT_EQ(set(local(), "desk@localhost"), 0u) << err.message;
    ASSERT_EQ(inform({}, "desk@localhost"), 0u) << err.message;
    ASSERT_EQ(remove("desk@localhost"), 0u) << err.message;
    test::expect_indexed(db, take_statements(), {{"_ups_config", "", "a handful of units"}});
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
