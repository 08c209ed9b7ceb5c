#include <cstring>

#include "protocols/protocols.h"

using test::elements;
using testing::ElementsAre;

namespace {

struct ProtocolRead : test::Protocols {
    std::vector<std::string> words() const
    {
        std::vector<std::string> all;
        for (const Protocol *each : elements(collection.Protocol)) all.emplace_back(each->key);
        return all;
    }
};

/// The option records that a protocol has.
std::vector<std::string> options_of(const Protocol *protocol)
{
    std::vector<std::string> all;
    for (const QbobjField *field = qbobj_find_type("Protocol") + 1; field->kind != '.'; field++) {
        const void *value = nullptr;
        memcpy(&value, reinterpret_cast<const char *>(protocol) + field->position, sizeof value);
        if (field->kind == 'o' && value) all.emplace_back(field->name);
    }
    return all;
}

TEST_F(ProtocolRead, ListsAllInAFixedOrder)
{
    ASSERT_EQ(get_all(), 0u) << err.message;
    EXPECT_THAT(words(), ElementsAre("cifs", "afp", "nfs", "ftp", "daap", "snmp", "ssh", "replicate", "smartnetwork",
                                     "upnpd", "rsync", "dlna", "http", "https", "anti-virus", "skyloft"));
    for (const Protocol *each : elements(collection.Protocol)) {
        EXPECT_STREQ(each->ProtocolId, each->key);
        EXPECT_STREQ(each->ProtocolName, each->key);
        EXPECT_EQ(each->Changed, 0);
    }
}

TEST_F(ProtocolRead, AppendsToTheList)
{
    Protocol first{};
    collection.Protocol = &first;
    ASSERT_EQ(get("ssh"), 0u) << err.message;
    ASSERT_EQ(get_all(), 0u) << err.message;
    EXPECT_EQ(collection.Protocol, &first);
    EXPECT_EQ(elements(collection.Protocol).size(), 18u);
    EXPECT_STREQ(first.next->key, "ssh");
}

TEST_F(ProtocolRead, EachHasItsOwnOptionsOnly)
{
    const std::pair<const char *, std::vector<std::string>> kOptions[] = {
        {"cifs", {"CifsOptions"}},
        {"afp", {}},
        {"nfs", {"NfsOptions"}},
        {"ftp", {"FtpOptions"}},
        {"daap", {"DaapOptions"}},
        {"snmp", {"SnmpOptions"}},
        {"ssh", {"SshOptions"}},
        {"replicate", {"ReplicateOptions"}},
        {"smartnetwork", {}},
        {"upnpd", {}},
        {"rsync", {}},
        {"dlna", {"DlnaOptions"}},
        {"http", {"HttpOptions"}},
        {"https", {"HttpsOptions"}},
        {"bonjour", {"BonjourOptions"}},
        {"anti-virus", {}},
        {"skyloft", {}},
    };
    for (const auto &[word, options] : kOptions) EXPECT_EQ(options_of(stored(word)), options) << word;
}

TEST_F(ProtocolRead, EverySettingIsReadFromItsColumn)
{
    sql(test::kEverySetting);
    const auto text = [](const Protocol *protocol) {
        char *buffer = nullptr;
        size_t size = 0;
        FILE *stream = open_memstream(&buffer, &size);
        qbobj_api2_dump_struct(stream, "Protocol", protocol);
        fclose(stream);
        const std::string all(buffer, size);
        free(buffer);
        return all;
    };
    // Line by line, so that a field that took another's column shows.
    const std::pair<const char *, std::vector<std::string>> kLines[] = {
        {"cifs",
         {"i Enabled = 1", "i UserHomeDirectory = 1", "i UserHomeDirectoryRecycle = 1",
          "i UserHomeDirectoryRecycleMaxDays = 30", "i UserHomeDirectoryRecycleMaxSize = 4096"}},
        {"nfs",
         {"i Enabled = 1", "i Threads = 16", "i UserHomeDirectory = 1", "i NfsV4Enable = 1",
          "s NfsV4Domain = example.com"}},
        {"ftp",
         {"i Enabled = 1", "i Port = 2121", "s AuthMode = anonymous", "i PassiveRangeMin = 40000",
          "i PassiveRangeMax = 40100", "i EnableMasquerade = 1", "s MasqueradeAddress = nas.example.com",
          "i AllowUploadResume = 0", "i UserHomeDirectory = 1", "i Ftps = 0", "i ForceFtps = 1",
          "i ServerTransferLog = 1", "i MaxUploadRate = 100", "i MaxDownloadRate = 99999"}},
        {"daap",
         {"i Enabled = 1", "s sharename = o'brien's music", "s password = secret", "s directory = /tank/music"}},
        {"snmp",
         {"i Enabled = 1", "s AllowHost = 10.0.0.1,host.example.com,10.1.0.0/16", "s Community = private",
          "s TrapDestination = 10.0.0.2,10.0.0.3"}},
        {"ssh", {"i Enabled = 1", "i Port = 2222", "i PasswordAuthentication = 1"}},
        {"replicate", {"i Enabled = 1", "s Owner = anna", "s PrivData = {\"peer\":\"nas2\"}", "s Password = (null)"}},
        {"dlna", {"i Enabled = 1", "i AutoScan = 0", "i EnableTivoServer = 1", "i EnableTivoArchiver = 1"}},
        {"http", {"i Enabled = 1", "i LoginEnabled = 0", "s ShareName = web", "i HttpAdmin = 0"}},
        {"https", {"i Enabled = 0", "i Port = 4443", "s SslKeyHost = nas.example.com"}},
        {"bonjour",
         {"i Enabled = 1", "i CifsEnabled = 0", "i AfpEnabled = 1", "i GlassdeckEnabled = 0", "i PrinterEnabled = 1",
          "i QuillboxEnabled = 0", "i TimemachineEnabled = 1"}},
        {"afp", {"i Enabled = 1"}},
        {"smartnetwork", {"i Enabled = 1"}},
        {"upnpd", {"i Enabled = 1"}},
        {"rsync", {"i Enabled = 1"}},
        {"anti-virus", {"i Enabled = 1"}},
        {"skyloft", {"i Enabled = 1"}},
    };
    for (const auto &[word, lines] : kLines) {
        const std::string all = text(stored(word));
        for (const std::string &line : lines) EXPECT_THAT(all, testing::HasSubstr(" " + line + "\n")) << word;
    }
}

TEST_F(ProtocolRead, SshFollowsTheAdministratorsSwitchAndHasAPort)
{
    for (const char *port : {"NULL", "0", "-5"}) {
        sql(std::string("UPDATE service_ssh SET enabled=0,ui_enabled=1,port=") + port);
        EXPECT_EQ(stored("ssh")->Enabled, 1) << port;
        EXPECT_EQ(stored("ssh")->SshOptions->Port, 22) << port;
    }
    sql("UPDATE service_ssh SET enabled=1,ui_enabled=0,port=1");
    EXPECT_EQ(stored("ssh")->Enabled, 0);
    EXPECT_EQ(stored("ssh")->SshOptions->Port, 1);
}

TEST_F(ProtocolRead, EveryHostIsAnEmptyAllowHost)
{
    EXPECT_EQ(value("SELECT allow_host FROM service_snmp"), "default");
    EXPECT_STREQ(stored("snmp")->SnmpOptions->AllowHost, "");
    SnmpOptions alone{};
    ASSERT_EQ(qbobj_getSnmpOptions(qbdb, db, &alone, &err), 0u) << err.message;
    EXPECT_STREQ(alone.AllowHost, "");
    EXPECT_STREQ(alone.Community, "public");
    EXPECT_STREQ(alone.TrapDestination, "");
}

TEST_F(ProtocolRead, NullColumnsAreNullTextsAndZeros)
{
    sql("UPDATE service_nfs SET enabled=NULL,threads=NULL,domain=NULL;"
        "UPDATE service_snmp SET allow_host=NULL,community=NULL,trap_destination=NULL");
    EXPECT_EQ(stored("nfs")->Enabled, 0);
    EXPECT_EQ(stored("nfs")->NfsOptions->Threads, 0);
    EXPECT_EQ(stored("nfs")->NfsOptions->NfsV4Domain, nullptr);
    SnmpOptions alone{"set", "set", "set"};
    ASSERT_EQ(qbobj_getSnmpOptions(qbdb, db, &alone, &err), 0u) << err.message;
    EXPECT_EQ(alone.AllowHost, nullptr);
    EXPECT_EQ(alone.Community, nullptr);
    EXPECT_EQ(alone.TrapDestination, nullptr);
}

TEST_F(ProtocolRead, AMissingRowReadsAsZeros)
{
    for (const char *table : {"cifs", "afp", "nfs", "ftp", "daap", "snmp", "ssh", "replicate", "smartnetwork", "upnpd",
                              "rsync", "dlna", "http", "https", "avahi"})
        sql(std::string("DELETE FROM service_") + table);
    ASSERT_EQ(get_all(), 0u) << err.message;
    ASSERT_EQ(get("bonjour"), 0u) << err.message;
    for (const Protocol *each : elements(collection.Protocol)) {
        EXPECT_STREQ(each->ProtocolId, each->key);
        EXPECT_EQ(each->Enabled, 0) << each->key;
    }
    EXPECT_EQ(stored("ftp")->FtpOptions->Port, 0);
    EXPECT_EQ(stored("ftp")->FtpOptions->AuthMode, nullptr);
    EXPECT_EQ(stored("ssh")->SshOptions, nullptr);
    SnmpOptions alone{};
    ASSERT_EQ(qbobj_getSnmpOptions(qbdb, db, &alone, &err), 0u) << err.message;
    EXPECT_EQ(alone.Community, nullptr);
}

TEST_F(ProtocolRead, AServiceThatWasNeverSwitchedHasItsKeyWordOnly)
{
    sql("DELETE FROM service_misc WHERE key IN ('ANTIVIRUS','SKYLOFT')");
    for (const char *word : {"anti-virus", "skyloft"}) {
        const Protocol *each = stored(word);
        EXPECT_EQ(each->ProtocolId, nullptr);
        EXPECT_EQ(each->ProtocolName, nullptr);
        EXPECT_EQ(each->Enabled, 0);
    }
}

TEST_F(ProtocolRead, RefusesUnknownNames)
{
    for (const char *name : {"upnpd", "CIFS", "", "cifs ", "avahi"})
        expect_failure(8, "Unknojwn protocol name " + std::string(name) + "\n", [&] { return get(name); });
    expect_failure(8, "Unknojwn protocol name (null)\n", [&] { return get(nullptr); });
    EXPECT_EQ(collection.Protocol, nullptr);
}

TEST_F(ProtocolRead, AFailureLeavesTheElementsReadSoFarAndABareOne)
{
    fail_statement(1, 1, "disk on fire", "service_ftp");
    expect_failure(5, "Failed DB Query 'SELECT service_ftp'. (disk on fire)", [&] { return get_all(); });
    EXPECT_THAT(words(), ElementsAre("cifs", "afp", "nfs", "ftp"));
    const Protocol *bare = elements(collection.Protocol).back();
    EXPECT_EQ(bare->ProtocolId, nullptr);
    EXPECT_EQ(bare->ProtocolName, nullptr);
    EXPECT_THAT(options_of(bare), testing::IsEmpty());
}

struct HomeFolders : test::Database {
    HomeFolderOptions options{};
    uint32_t get() { return qbobj_getHomeFolderOptions(qbdb, db, &options, &err); }
    uint32_t set() { return qbobj_setHomeFolderOptions(qbdb, db, &options, &err); }
    std::string policy() const
    {
        return rows(
                   "SELECT enabled,retention_rule,lifetime,number,schedule,nonempty_snapshots "
                   "FROM snapshot_management WHERE share_id=0")
            .at(0);
    }
};

/// The five switches with the tables that they stand in.
struct HomeSwitch {
    int32_t HomeFolderOptions::*field;
    const char *table;
};
constexpr HomeSwitch kSwitches[] = {
    {&HomeFolderOptions::UserHomeDirectory, "service_cifs"},
    {&HomeFolderOptions::NfsUserHomeDirectory, "service_nfs"},
    {&HomeFolderOptions::FtpUserHomeDirectory, "service_ftp"},
    {&HomeFolderOptions::DlnaUserHomeDirectory, "service_dlna"},
    {&HomeFolderOptions::AfpUserHomeDirectory, "service_afp"},
};

TEST_F(HomeFolders, EachSwitchStandsInItsTable)
{
    for (const auto &[on, on_table] : kSwitches) {
        options = {};
        options.*on = 1;
        ASSERT_EQ(set(), 0u) << err.message;
        for (const auto &[field, table] : kSwitches)
            EXPECT_EQ(value(std::string("SELECT user_home_directory FROM ") + table), field == on ? "1" : "0") << table;
        options = {};
        ASSERT_EQ(get(), 0u) << err.message;
        for (const auto &[field, table] : kSwitches) EXPECT_EQ(options.*field, field == on) << table;
    }
}

TEST_F(HomeFolders, ThePolicyIsThatOfShareZero)
{
    sql("UPDATE snapshot_management SET enabled=1,retention_rule=2,lifetime=3,number=4,schedule='0101',"
        "nonempty_snapshots=5;INSERT INTO snapshot_management (share_id,enabled) VALUES(7,9)");
    ASSERT_EQ(get(), 0u) << err.message;
    const CustomSnapshotManagement *policy = options.CustomSnapshotManagement;
    ASSERT_NE(policy, nullptr);
    EXPECT_EQ(policy->Enabled, 1);
    EXPECT_STREQ(policy->CustomSnapshotSchedule, "0101");
    EXPECT_EQ(policy->NonEmptySnapshots, 5);
    ASSERT_NE(policy->SnapshotRetentionRules, nullptr);
    EXPECT_EQ(policy->SnapshotRetentionRules->Type, 2);
    EXPECT_EQ(policy->SnapshotRetentionRules->Lifetime, 3);
    EXPECT_EQ(policy->SnapshotRetentionRules->Number, 4);
}

TEST_F(HomeFolders, WithoutARowThereIsNoPolicy)
{
    sql("DELETE FROM snapshot_management");
    CustomSnapshotManagement before{};
    options.CustomSnapshotManagement = &before;
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_EQ(options.CustomSnapshotManagement, nullptr);
}

TEST_F(HomeFolders, AreWrittenBackAsTheyWereRead)
{
    sql("UPDATE snapshot_management SET enabled=1,retention_rule=2,lifetime=3,number=4,nonempty_snapshots=1");
    const std::string before = content();
    ASSERT_EQ(get(), 0u) << err.message;
    ASSERT_EQ(set(), 0u) << err.message;
    EXPECT_EQ(content(), before);
}

TEST_F(HomeFolders, OfThePolicyTheGivenPartsAreWritten)
{
    sql("UPDATE snapshot_management SET enabled=1,retention_rule=2,lifetime=3,number=4,schedule='0101',"
        "nonempty_snapshots=1");
    ASSERT_EQ(set(), 0u) << err.message;
    EXPECT_EQ(policy(), "1|2|3|4|0101|1");  // none given
    CustomSnapshotManagement given{};
    options.CustomSnapshotManagement = &given;
    ASSERT_EQ(set(), 0u) << err.message;
    EXPECT_EQ(policy(), "0|2|3|4|0101|0");
    SnapshotRetentionRules rules{};
    rules.Type = 5;
    rules.Number = 6;
    rules.Lifetime = 7;
    given.SnapshotRetentionRules = &rules;
    given.CustomSnapshotSchedule = "o'clock";
    given.Enabled = given.NonEmptySnapshots = 1;
    ASSERT_EQ(set(), 0u) << err.message;
    EXPECT_EQ(policy(), "1|5|7|6|o'clock|1");
    given.CustomSnapshotSchedule = "";
    ASSERT_EQ(set(), 0u) << err.message;
    EXPECT_EQ(policy(), "1|5|7|6||1");
}

TEST_F(HomeFolders, AScheduleThatDoesNotFitStaysAsItIs)
{
    CustomSnapshotManagement given{};
    options.CustomSnapshotManagement = &given;
    given.Enabled = 1;
    // "enabled=1" and ",schedule=''" are 21 bytes of the 1023.
    const std::string fits(1002, 'x');
    given.CustomSnapshotSchedule = fits.c_str();
    ASSERT_EQ(set(), 0u) << err.message;
    EXPECT_EQ(value("SELECT schedule FROM snapshot_management"), fits);
    const std::string large(1003, 'y');
    given.CustomSnapshotSchedule = large.c_str();
    given.NonEmptySnapshots = 1;
    ASSERT_EQ(set(), 0u) << err.message;
    EXPECT_EQ(value("SELECT schedule FROM snapshot_management"), fits);
    EXPECT_EQ(value("SELECT nonempty_snapshots FROM snapshot_management"), "1");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
