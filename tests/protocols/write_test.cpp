#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <ctime>

#include "protocols/protocols.h"

using test::elements;
using testing::ElementsAre;

namespace {

struct ProtocolWrite : test::Protocols {
    ProtocolWrite() { sql(test::kEverySetting); }

    /// Expects that one protocol, changed after it was read, is refused.
    template <class Change>
    void expect_refused(uint32_t code, const std::string &message, const char *word, Change change)
    {
        Protocol *protocol = stored(word);
        change(*protocol);
        expect_failure(code, message, [&] { return set(); });
        EXPECT_EQ(protocol->Changed, 0);
    }
    template <class Change>
    void expect_accepted(const char *word, Change change)
    {
        change(*stored(word));
        EXPECT_EQ(set(), 0u) << err.message;
    }
    std::vector<std::string> copies() const
    {
        return rows("SELECT name FROM sqlite_master WHERE name LIKE '\\_setprotocol\\_%' ESCAPE '\\'");
    }
};

TEST_F(ProtocolWrite, AnEmptyCollectionChangesNothing)
{
    const std::string before = content();
    ASSERT_EQ(set(), 0u) << err.message;
    EXPECT_EQ(content(), before);
}

TEST_F(ProtocolWrite, UnknownWordsAreSkipped)
{
    Protocol unknown{};
    for (const char *word : {"CIFS", "avahi", "", static_cast<const char *>(nullptr)}) {
        unknown.key = unknown.ProtocolId = unknown.ProtocolName = word;
        unknown.Enabled = 9;
        collection.Protocol = &unknown;
        const std::string before = content();
        ASSERT_EQ(set(), 0u) << err.message;
        EXPECT_EQ(content(), before);
        EXPECT_EQ(unknown.Changed, 0);
    }
}

TEST_F(ProtocolWrite, EachOfTheThreeWordsNamesTheProtocol)
{
    for (const char *Protocol::*word : {&Protocol::key, &Protocol::ProtocolId, &Protocol::ProtocolName}) {
        sql("UPDATE service_rsync SET enabled=1");
        Protocol rsync{};
        rsync.*word = "rsync";
        collection.Protocol = &rsync;
        ASSERT_EQ(set(), 0u) << err.message;
        EXPECT_EQ(value("SELECT enabled FROM service_rsync"), "0");
        EXPECT_EQ(rsync.Changed, 1);
    }
}

TEST_F(ProtocolWrite, ChangedIsRaisedWhereSomethingChangedAndNeverLowered)
{
    ASSERT_EQ(get_all(), 0u) << err.message;
    for (Protocol *each : elements(collection.Protocol)) {
        if (strcmp(each->key, "nfs") == 0) each->NfsOptions->Threads = 17;
        if (strcmp(each->key, "skyloft") == 0) each->Enabled = 0;
        if (strcmp(each->key, "rsync") == 0) each->Changed = 1;
        if (strcmp(each->key, "afp") == 0) each->Changed = 4;
    }
    ASSERT_EQ(set(), 0u) << err.message;
    for (const Protocol *each : elements(collection.Protocol)) {
        const std::string word = each->key;
        EXPECT_EQ(each->Changed, word == "afp" ? 4 : word == "nfs" || word == "skyloft" || word == "rsync") << word;
    }
    EXPECT_THAT(copies(), testing::IsEmpty());
}

TEST_F(ProtocolWrite, WhatWasNeverStoredCountsAsOff)
{
    sql("DELETE FROM service_misc WHERE key IN ('ANTIVIRUS','SKYLOFT')");
    Protocol on{};
    Protocol off{};
    on.key = "anti-virus";
    on.Enabled = 1;
    on.next = &off;
    off.key = "skyloft";
    collection.Protocol = &on;
    ASSERT_EQ(set(), 0u) << err.message;
    EXPECT_EQ(on.Changed, 1);
    EXPECT_EQ(off.Changed, 0);
    EXPECT_THAT(rows("SELECT key,val FROM service_misc WHERE key IN ('ANTIVIRUS','SKYLOFT') ORDER BY key"),
                ElementsAre("ANTIVIRUS|1", "SKYLOFT|0"));
}

TEST_F(ProtocolWrite, TheSwitchIsStoredAsItIsGiven)
{
    for (const char *word : {"cifs", "anti-virus"}) expect_accepted(word, [](Protocol &p) { p.Enabled = 5; });
    EXPECT_EQ(value("SELECT enabled FROM service_cifs"), "5");
    EXPECT_EQ(value("SELECT val FROM service_misc WHERE key='ANTIVIRUS'"), "5");
}

TEST_F(ProtocolWrite, AnElementThatFailsTakesTheOthersBack)
{
    ASSERT_EQ(get_all(), 0u) << err.message;
    for (Protocol *each : elements(collection.Protocol)) {
        each->Enabled = 0;
        if (each->SshOptions) each->SshOptions->Port = 0;
    }
    expect_failure(821, "Invalid Port (0), 1-65535.", [&] { return set(); });
    for (const Protocol *each : elements(collection.Protocol)) EXPECT_EQ(each->Changed, 0) << each->key;
    EXPECT_THAT(copies(), testing::IsEmpty());
}

TEST_F(ProtocolWrite, MissingOptionsAreRefused)
{
    const std::pair<const char *, const char *> kMessages[] = {
        {"nfs", "NfsOptions cannot be NULL"},     {"ftp", "FtpOptions cannot be NULL"},
        {"daap", "DlnaOptions cannot be NULL"},   {"snmp", "SnmpOptions cannot be NULL"},
        {"ssh", "SshOptions cannot be NULL"},     {"replicate", "ReplicateOptions cannot be NULL"},
        {"dlna", "DlnaOptions cannot be NULL"},   {"http", "HttpOptions cannot be NULL"},
        {"https", "HttpsOptions cannot be NULL"}, {"bonjour", "BonjourOptions cannot be NULL"},
    };
    for (const auto &[word, message] : kMessages)
        expect_refused(8, message, word, [](Protocol &p) {
            const Protocol bare = p;
            p = {};
            p.key = bare.key;
        });
}

TEST_F(ProtocolWrite, FtpPorts)
{
    for (const int32_t port : {0, -1, 65536, INT32_MIN})
        expect_refused(810, "Invalid Port (" + std::to_string(port) + "), 1-65535.", "ftp",
                       [port](Protocol &p) { p.FtpOptions->Port = port; });
    for (const int32_t port : {1, 21, 65535}) {
        expect_accepted("ftp", [port](Protocol &p) { p.FtpOptions->Port = port; });
        EXPECT_EQ(value("SELECT port FROM service_ftp"), std::to_string(port));
    }
}

TEST_F(ProtocolWrite, FtpPassiveRange)
{
    const std::pair<int32_t, int32_t> kBad[] = {{40000, 39999}, {32767, 40000}, {40000, 65536}, {0, 0}, {-1, 65535}};
    for (const auto &[first, last] : kBad)
        expect_refused(812, "Invalid PassiveRange, 32768-65535 and Min=<Max", "ftp", [&](Protocol &p) {
            p.FtpOptions->PassiveRangeMin = first;
            p.FtpOptions->PassiveRangeMax = last;
        });
    for (const auto &[first, last] : {std::pair{32768, 65535}, std::pair{50000, 50000}}) {
        expect_accepted("ftp", [&](Protocol &p) {
            p.FtpOptions->PassiveRangeMin = first;
            p.FtpOptions->PassiveRangeMax = last;
        });
        EXPECT_EQ(value("SELECT passive_range_min||'-'||passive_range_max FROM service_ftp"),
                  std::to_string(first) + "-" + std::to_string(last));
    }
}

TEST_F(ProtocolWrite, FtpModeAndRates)
{
    for (const char *mode : {"Anonymous", "", "users", static_cast<const char *>(nullptr)})
        expect_refused(813, "Invalid Authenticat Mode, Either 'anonymous' or 'user'", "ftp",
                       [mode](Protocol &p) { p.FtpOptions->AuthMode = mode; });
    for (int32_t FtpOptions::*rate : {&FtpOptions::MaxUploadRate, &FtpOptions::MaxDownloadRate}) {
        for (const int32_t value : {-1, 100000})
            expect_refused(830, "Invalid MAX Bandwidth, 0-99999.", "ftp",
                           [&](Protocol &p) { p.FtpOptions->*rate = value; });
        for (const int32_t value : {0, 99999})
            expect_accepted("ftp", [&](Protocol &p) { p.FtpOptions->*rate = value; });
    }
}

TEST_F(ProtocolWrite, FtpMasqueradeIsCheckedWhenItIsUsed)
{
    struct Row {
        const char *address;
        int32_t enabled, masquerade;
        bool accepted;
    };
    const Row kRows[] = {
        {"-nas", 1, 1, false},    {"a b", 1, 1, false}, {"nas.example.com", 1, 1, true},
        {"10.0.0.1", 1, 1, true}, {"0", 1, 1, true},    {"", 1, 1, true},
        {nullptr, 1, 1, true},    {"-nas", 0, 1, true}, {"-nas", 1, 0, true},
    };
    for (const Row &row : kRows) {
        const auto change = [&row](Protocol &p) {
            p.Enabled = row.enabled;
            p.FtpOptions->EnableMasquerade = row.masquerade;
            p.FtpOptions->MasqueradeAddress = row.address;
        };
        if (!row.accepted) {
            expect_refused(814, "Invalid Masquerade Address (" + std::string(row.address) + ").", "ftp", change);
            continue;
        }
        expect_accepted("ftp", change);
        EXPECT_EQ(value("SELECT masquerade FROM service_ftp"), row.address ? row.address : "NULL");
    }
}

TEST_F(ProtocolWrite, FtpChecksInOrder)
{
    Protocol *ftp = stored("ftp");
    FtpOptions &o = *ftp->FtpOptions;
    o = {};
    o.MasqueradeAddress = "-";
    o.EnableMasquerade = 1;
    o.MaxUploadRate = -1;
    expect_failure(810, "Invalid Port (0), 1-65535.", [&] { return set(); });
    o.Port = 21;
    expect_failure(812, "Invalid PassiveRange, 32768-65535 and Min=<Max", [&] { return set(); });
    o.PassiveRangeMin = o.PassiveRangeMax = 40000;
    expect_failure(813, "Invalid Authenticat Mode, Either 'anonymous' or 'user'", [&] { return set(); });
    o.AuthMode = "user";
    expect_failure(814, "Invalid Masquerade Address (-).", [&] { return set(); });
    o.MasqueradeAddress = "0";
    expect_failure(830, "Invalid MAX Bandwidth, 0-99999.", [&] { return set(); });
}

TEST_F(ProtocolWrite, Daap)
{
    expect_refused(8, "DAAP Sharename cannot be NULL", "daap", [](Protocol &p) {
        p.DaapOptions->sharename = nullptr;
        p.DaapOptions->password = nullptr;
    });
    expect_refused(8, "DAAP password cannot be NULL", "daap", [](Protocol &p) { p.DaapOptions->password = nullptr; });
    expect_accepted("daap", [](Protocol &p) {
        p.DaapOptions->sharename = "it's";
        p.DaapOptions->password = "";
        p.DaapOptions->directory = "/elsewhere";
    });
    EXPECT_EQ(rows("SELECT sharename,password,directory FROM service_daap").at(0), "it's||/tank/music");
}

TEST_F(ProtocolWrite, DaapKeepsThePasswordForTheMask)
{
    expect_accepted("daap", [](Protocol &p) {
        p.DaapOptions->sharename = "new";
        p.DaapOptions->password = masked_password;
    });
    EXPECT_EQ(rows("SELECT sharename,password FROM service_daap").at(0), "new|secret");
}

TEST_F(ProtocolWrite, DaapTextsThatDoNotFitAreRefusedWhole)
{
    // "enabled=1,sharename='',password=''" is 34 bytes of the 511.
    const std::string fits(477, 'x');
    expect_accepted("daap", [&](Protocol &p) {
        p.DaapOptions->sharename = fits.c_str();
        p.DaapOptions->password = "";
    });
    EXPECT_EQ(value("SELECT sharename FROM service_daap"), fits);
    const std::string large(478, 'y');
    for (const char *DaapOptions::*field : {&DaapOptions::sharename, &DaapOptions::password})
        expect_refused(5, "Failed DB Query 'UPDATE service_daap'. (The values are too long.)", "daap",
                       [&](Protocol &p) {
                           p.DaapOptions->sharename = p.DaapOptions->password = "";
                           p.DaapOptions->*field = large.c_str();
                       });
}

TEST_F(ProtocolWrite, SnmpHosts)
{
    for (const char *hosts : {"", "10.0.0.1", "host.example.com", "10.0.0.0/8", "192.168.1", "a,b-c,10.0.0.0/255.0.0.0",
                              static_cast<const char *>(nullptr)}) {
        expect_accepted("snmp", [hosts](Protocol &p) { p.SnmpOptions->AllowHost = hosts; });
        EXPECT_EQ(value("SELECT allow_host FROM service_snmp"), hosts ? hosts : "NULL");
    }
    const std::pair<const char *, const char *> kBad[] = {
        {"a b", "a b"}, {"good,-bad,worse worse", "-bad"}, {"10.0.0.0/33", "10.0.0.0/33"}};
    for (const auto &[hosts, item] : kBad)
        expect_refused(816, std::string("Invalid AllowHost (") + item + ") (rc=1).", "snmp",
                       [hosts = hosts](Protocol &p) { p.SnmpOptions->AllowHost = hosts; });
    expect_refused(816, "Invalid AllowHost (10.0.0.256/8) (rc=-1).", "snmp",
                   [](Protocol &p) { p.SnmpOptions->AllowHost = "10.0.0.256/8"; });
}

TEST_F(ProtocolWrite, SnmpCommunity)
{
    const std::string longest(32, 'c');
    const std::string longer(33, 'c');
    for (const char *good : {"public", "a_b-c.d!", longest.c_str()})
        expect_accepted("snmp", [good](Protocol &p) { p.SnmpOptions->Community = good; });
    const std::pair<const char *, int> kBad[] = {{"", 1}, {"_x", 1}, {"a b", 2}, {"ä", 1}, {longer.c_str(), 3}};
    for (const auto &[name, rc] : kBad)
        expect_refused(817, "Invalid Community (" + std::string(name) + ") (rc=" + std::to_string(rc) + ").", "snmp",
                       [name = name](Protocol &p) { p.SnmpOptions->Community = name; });
    expect_refused(817, "Invalid Community ((null)) (rc=-1).", "snmp",
                   [](Protocol &p) { p.SnmpOptions->Community = nullptr; });
}

TEST_F(ProtocolWrite, SnmpTraps)
{
    for (const char *good : {"", "10.0.0.1", "10.0.0.1,10.0.0.2", static_cast<const char *>(nullptr)})
        expect_accepted("snmp", [good](Protocol &p) { p.SnmpOptions->TrapDestination = good; });
    expect_refused(818, "Invalid TrapDestination (b c) (rc=1).", "snmp",
                   [](Protocol &p) { p.SnmpOptions->TrapDestination = "10.0.0.1,b c"; });
    // Hosts before community before traps.
    expect_refused(817, "Invalid Community () (rc=1).", "snmp", [](Protocol &p) {
        p.SnmpOptions->Community = "";
        p.SnmpOptions->TrapDestination = "b c";
    });
}

TEST_F(ProtocolWrite, SshPortAndSwitches)
{
    for (const int32_t port : {0, -1, 65536})
        expect_refused(821, "Invalid Port (" + std::to_string(port) + "), 1-65535.", "ssh",
                       [port](Protocol &p) { p.SshOptions->Port = port; });
    for (const auto &[given, kept] : {std::pair{1, "1"}, std::pair{2, "0"}, std::pair{0, "0"}, std::pair{-1, "0"}}) {
        expect_accepted("ssh", [&, given = given](Protocol &p) {
            p.Enabled = 0;
            p.SshOptions->PasswordAuthentication = given;
        });
        EXPECT_EQ(value("SELECT password_authentication FROM service_ssh"), kept);
    }
    EXPECT_EQ(rows("SELECT enabled,ui_enabled FROM service_ssh").at(0), "0|0");
}

TEST_F(ProtocolWrite, SmartnetworkIsMirrored)
{
    expect_accepted("smartnetwork", [](Protocol &p) { p.Enabled = 0; });
    EXPECT_EQ(value("SELECT val FROM service_misc WHERE key='WIDGETRY'"), "0");
    EXPECT_EQ(value("SELECT table_name FROM service_misc WHERE key='WIDGETRY'"), "service_smartnetwork");
    EXPECT_EQ(value("SELECT enabled FROM service_smartnetwork"), "0");
    sql("DELETE FROM service_misc WHERE key='WIDGETRY'");
    expect_accepted("smartnetwork", [](Protocol &p) { p.Enabled = 1; });
    EXPECT_EQ(value("SELECT COUNT(*) FROM service_misc WHERE key='WIDGETRY'"), "0");
}

TEST_F(ProtocolWrite, BonjourAnnouncesNothingWhileItIsOff)
{
    expect_accepted("bonjour", [](Protocol &p) {
        *p.BonjourOptions = {1, 2, -1, 0, 5, 0};
        p.Enabled = 7;
    });
    EXPECT_THAT(rows("SELECT * FROM service_avahi"), ElementsAre("7|1|1|1|0|1|0"));
    expect_accepted("bonjour", [](Protocol &p) { p.Enabled = 0; });
    EXPECT_THAT(rows("SELECT * FROM service_avahi"), ElementsAre("0|0|0|0|0|0|0"));
}

/// A socket that listens on a port of this machine.
struct Listener {
    int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int32_t port = 0;

    Listener()
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto *general = reinterpret_cast<sockaddr *>(&address);
        EXPECT_EQ(bind(descriptor, general, size), 0);
        EXPECT_EQ(listen(descriptor, 1), 0);
        EXPECT_EQ(getsockname(descriptor, general, &size), 0);
        port = ntohs(address.sin_port);
    }
    Listener(const Listener &) = delete;
    Listener &operator=(const Listener &) = delete;
    ~Listener() { stop(); }
    void stop()
    {
        if (descriptor >= 0) close(descriptor);
        descriptor = -1;
    }
};

TEST_F(ProtocolWrite, HttpsPortsInRange)
{
    for (const int32_t port : {443, 1023, 65536, -1})
        expect_refused(827, "Invalid Additional https port (" + std::to_string(port) + ")(0 ).", "https",
                       [port](Protocol &p) { p.HttpsOptions->Port = port; });
    expect_accepted("https", [](Protocol &p) { p.HttpsOptions->Port = 0; });
    EXPECT_EQ(value("SELECT port FROM service_https"), "0");
}

TEST_F(ProtocolWrite, ANewHttpsPortMustBeFree)
{
    Listener listener;
    const auto take = [&](Protocol &p) { p.HttpsOptions->Port = listener.port; };
    expect_refused(828, "Additional https port in use  (" + std::to_string(listener.port) + ")(-1 ).", "https", take);
    // The port that is stored is the service's own.
    sql("UPDATE service_https SET port=" + std::to_string(listener.port));
    expect_accepted("https", take);
    sql("UPDATE service_https SET port=0");
    listener.stop();
    expect_accepted("https", take);
    EXPECT_EQ(value("SELECT port FROM service_https"), std::to_string(listener.port));
}

TEST_F(ProtocolWrite, AnHttpsServiceThatDoesNotAnswerDoesNotHoldUp)
{
    Listener listener;
    // A full queue: the machine leaves further connections without an answer.
    std::vector<int> waiting;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<uint16_t>(listener.port));
    for (int i = 0; i < 16; i++) {
        waiting.push_back(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
        (void)connect(waiting.back(), reinterpret_cast<sockaddr *>(&address), sizeof address);
    }
    Protocol *https = stored("https");
    https->HttpsOptions->Port = listener.port;
    const time_t begun = time(nullptr);
    EXPECT_EQ(set(), 0u) << err.message;
    EXPECT_LE(time(nullptr) - begun, 10);
    for (const int each : waiting) close(each);
}

TEST_F(ProtocolWrite, HttpsKeyHost)
{
    for (const char *good : {"nas", "10.0.0.1", "nas_1.example.com"})
        expect_accepted("https", [good](Protocol &p) { p.HttpsOptions->SslKeyHost = good; });
    const std::pair<const char *, int> kBad[] = {{"", -11}, {"-nas", 1}, {"a b", 2}};
    for (const auto &[host, rc] : kBad)
        expect_refused(829, "Invalid SSL Key Host Address (" + std::string(host) + ")(" + std::to_string(rc) + " ).",
                       "https", [host = host](Protocol &p) {
                           p.HttpsOptions->SslKeyHost = host;
                           p.HttpsOptions->Port = 443;  // the host comes first
                       });
    expect_refused(829, "Invalid SSL Key Host Address ((null))(-11 ).", "https",
                   [](Protocol &p) { p.HttpsOptions->SslKeyHost = nullptr; });
}

// ---- what stands around the writing: copies, comparison, clearing up

TEST_F(ProtocolWrite, WithoutCopiesTheCallIsLeftOutSilently)
{
    Protocol *cifs = stored("cifs");
    cifs->Enabled = 0;
    const std::string before = content();
    fail_statement(1, 1, "injected", "_setprotocol_service_ssh");
    EXPECT_EQ(set(), 0u);
    EXPECT_EQ(err.code, 0u);
    EXPECT_EQ(cifs->Changed, 0);
    EXPECT_EQ(content(), before);
    fail_statement(0);
    ASSERT_EQ(set(), 0u) << err.message;
    EXPECT_EQ(cifs->Changed, 1);
    EXPECT_EQ(value("SELECT enabled FROM service_cifs"), "0");
}

TEST_F(ProtocolWrite, WithoutAComparisonNothingIsSaidToHaveChanged)
{
    Protocol *cifs = stored("cifs");
    cifs->Enabled = 0;
    fail_statement(1, 1, "injected", "HAVING SUM(weight)");
    EXPECT_EQ(set(), 0u);
    EXPECT_EQ(cifs->Changed, 0);
    EXPECT_EQ(value("SELECT enabled FROM service_cifs"), "0");
    EXPECT_THAT(copies(), testing::IsEmpty());
}

TEST_F(ProtocolWrite, CopiesThatStayTakeEverythingBack)
{
    Protocol *cifs = stored("cifs");
    cifs->Enabled = 0;
    const std::string before = content();
    log.clear();
    fail_statement(1, 1, "injected", "DROP TABLE \"_setprotocol_service_nfs\"");
    EXPECT_EQ(set(), 3u);
    EXPECT_EQ(err.code, 0u);
    EXPECT_EQ(err.message, nullptr);
    EXPECT_THAT(logged(2), testing::Contains("Error in qbdb_sql_delete_tables()\n"));
    EXPECT_EQ(cifs->Changed, 0);
    EXPECT_EQ(content(), before);
}

TEST_F(ProtocolWrite, StaleCopiesAreNoObstacle)
{
    sql("CREATE TABLE _setprotocol_service_afp (x);INSERT INTO _setprotocol_service_afp VALUES(1)");
    Protocol *afp = stored("afp");
    ASSERT_EQ(set(), 0u) << err.message;
    EXPECT_EQ(afp->Changed, 0);
    EXPECT_THAT(copies(), testing::IsEmpty());
}

// ---- one switch

struct ProtocolEnable : test::Database {
    uint32_t enable(const char *name, int32_t on) { return qbobj_setProtocolEnable(qbdb, db, name, on, &err); }
};

TEST_F(ProtocolEnable, StoresZeroOrOne)
{
    for (const auto &[on, kept] : {std::pair{5, "1"}, std::pair{-1, "1"}, std::pair{0, "0"}}) {
        for (const char *name : {"cifs", "afp", "nfs", "ftp", "daap", "snmp", "ssh", "replicate", "upnpd", "rsync",
                                 "dlna", "http", "avahi", "upsd", "smartnetwork"}) {
            ASSERT_EQ(enable(name, on), 0u) << err.message;
            EXPECT_EQ(value(std::string("SELECT enabled FROM service_") + name), kept) << name;
        }
        for (const auto &[name, key] : {std::pair{"anti-virus", "ANTIVIRUS"}, std::pair{"skyloft", "SKYLOFT"},
                                        std::pair{"smartnetwork", "WIDGETRY"}}) {
            ASSERT_EQ(enable(name, on), 0u) << err.message;
            EXPECT_THAT(rows(std::string("SELECT val,typeof(val) FROM service_misc WHERE key='") + key + "'"),
                        ElementsAre(std::string(kept) + "|text"));
        }
    }
}

TEST_F(ProtocolEnable, MakesTheRowThatIsMissing)
{
    sql("DELETE FROM service_misc");
    for (const char *name : {"anti-virus", "skyloft", "smartnetwork"}) ASSERT_EQ(enable(name, 1), 0u) << err.message;
    EXPECT_THAT(rows("SELECT key,val FROM service_misc ORDER BY key"),
                ElementsAre("ANTIVIRUS|1", "SKYLOFT|1", "WIDGETRY|1"));
}

TEST_F(ProtocolEnable, RefusesWhatIsNoService)
{
    const std::pair<const char *, const char *> kNames[] = {
        {"bonjour", "no such table: service_bonjour"},
        {"https", "no such column: enabled"},
        {"", "no such table: service_"},
        {"nothing", "no such table: service_nothing"},
        {"cifs SET security='ads',enabled", "There is no such service."},
        {"cifs SET enabled=0;--", "There is no such service."},
        {"cifs`", "There is no such service."},
        {"a%n%s", "There is no such service."},
    };
    for (const auto &[name, words] : kNames)
        expect_failure(5, std::string("Failed DB Query 'INSERT OR REPLACE service_xxx'. (") + words + ")",
                       [&, name = name] { return enable(name, 1); });
    expect_failure(8, "protocol cannot be NULL", [&] { return enable(nullptr, 1); });
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
