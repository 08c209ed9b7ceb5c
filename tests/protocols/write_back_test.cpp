// What was read can be written back: for every protocol, by the tables of protocols and fields.
#include <cstring>
#include <map>

#include "protocols/protocols.h"
#include "validate/validate.h"

namespace {

struct WriteBack : test::Protocols {};

/// States of a database that an operation would have left. The factory lets every host ask over SNMP, which is written
/// as no host named (see below).
const std::pair<const char *, std::string> kStates[] = {
    {"factory", "UPDATE service_snmp SET allow_host=''"},
    {"every setting", test::kEverySetting},
    {"off", std::string(test::kEverySetting) +
                "UPDATE service_avahi SET enabled=0,cifs=0,afp=0,glassdeck=0,printer=0,quillbox=0,timemachine=0;"
                "UPDATE service_ssh SET enabled=0,ui_enabled=0;"
                "UPDATE service_ftp SET enabled=0,masquerade=NULL;"
                "UPDATE service_nfs SET domain=NULL;"
                "UPDATE service_snmp SET allow_host=NULL,trap_destination=NULL;"
                "UPDATE service_replicate SET owner=NULL,priv_data=NULL;"
                "UPDATE service_http SET share_name=NULL;"},
};

TEST_F(WriteBack, LeavesEveryTableAsItWas)
{
    for (const auto &[state, statements] : kStates) {
        sql(statements);
        const auto before = test::every_table(*this);
        for (const char *word : qb::protocol_names) {
            SCOPED_TRACE(std::string(state) + ": " + word);
            const Protocol *protocol = stored(word);
            ASSERT_EQ(set(), 0u) << err.message;
            EXPECT_EQ(protocol->Changed, 0);
            EXPECT_EQ(test::every_table(*this), before);
        }
    }
}

TEST_F(WriteBack, OfTheWholeCollectionToo)
{
    for (const auto &[state, statements] : kStates) {
        SCOPED_TRACE(state);
        sql(statements);
        const auto before = test::every_table(*this);
        collection = {};
        ASSERT_EQ(get_all(), 0u) << err.message;
        ASSERT_EQ(get("bonjour"), 0u) << err.message;
        ASSERT_EQ(set(), 0u) << err.message;
        EXPECT_EQ(test::every_table(*this), before);
    }
}

TEST_F(WriteBack, EveryHostIsWrittenAsNoneNamed)
{
    const Protocol *snmp = stored("snmp");
    ASSERT_EQ(set(), 0u) << err.message;
    EXPECT_EQ(snmp->Changed, 1);
    EXPECT_EQ(value("SELECT allow_host FROM service_snmp"), "");
}

// ---- and what is changed in between arrives: for every field of every protocol's options

/// What a field is changed to where not any value will do.
const std::map<std::string, const char *> kTexts = {
    {"FtpOptions.AuthMode", "user"},
    {"FtpOptions.MasqueradeAddress", "10.9.8.7"},
    {"SnmpOptions.AllowHost", "10.9.8.7"},
    {"SnmpOptions.Community", "other"},
    {"SnmpOptions.TrapDestination", "10.9.8.7"},
    {"HttpsOptions.SslKeyHost", "other"},
};
const std::map<std::string, int32_t> kNumbers = {
    {"FtpOptions.PassiveRangeMin", 40050}, {"FtpOptions.PassiveRangeMax", 40200}, {"HttpsOptions.Port", 0}};

/// Fields that another operation writes, or none.
const std::map<std::string, const char *> kNotWritten = {
    {"CifsOptions.UserHomeDirectory", "home-folder options"},
    {"CifsOptions.UserHomeDirectoryRecycle", "nobody"},
    {"CifsOptions.UserHomeDirectoryRecycleMaxDays", "nobody"},
    {"CifsOptions.UserHomeDirectoryRecycleMaxSize", "nobody"},
    {"NfsOptions.Changed", "is not kept"},
    {"FtpOptions.UserHomeDirectory", "home-folder options"},
    {"ReplicateOptions.Password", "is not kept"},
    {"DaapOptions.directory", "nobody"},
};

/// The options record of a protocol and its type; null when it has none.
std::pair<char *, const QbobjField *> options_of(Protocol *protocol)
{
    for (const QbobjField *field = qbobj_find_type("Protocol") + 1; field->kind != '.'; field++) {
        char *record = nullptr;
        memcpy(&record, reinterpret_cast<char *>(protocol) + field->position, sizeof record);
        if (field->kind == 'o' && record) return {record, field->subtype};
    }
    return {nullptr, nullptr};
}

/// A field's value as text.
std::string text_of(const QbobjField *field, const char *record)
{
    if (field->kind == 's') {
        const char *text = nullptr;
        memcpy(&text, record + field->position, sizeof text);
        return text ? text : "NULL";
    }
    EXPECT_EQ(field->kind, 'i') << field->name;
    int32_t number = 0;
    memcpy(&number, record + field->position, sizeof number);
    return std::to_string(number);
}

/// Gives a field another value and tells it as text.
std::string change(const std::string &name, const QbobjField *field, char *record)
{
    if (field->kind == 's') {
        const auto sample = kTexts.find(name);
        const char *text = sample == kTexts.end() ? "changed" : sample->second;
        memcpy(record + field->position, &text, sizeof text);
        return text;
    }
    int32_t number = 0;
    memcpy(&number, record + field->position, sizeof number);
    const auto sample = kNumbers.find(name);
    number = sample != kNumbers.end() ? sample->second : number > 1 ? number - 1 : !number;
    memcpy(record + field->position, &number, sizeof number);
    return std::to_string(number);
}

TEST_F(WriteBack, EveryFieldThatIsChangedIsKept)
{
    int written = 0;
    sql(test::kEverySetting);
    for (const char *word : qb::protocol_names) {
        for (const QbobjField *field = options_of(stored(word)).second; field && (++field)->kind != '.';) {
            Protocol *protocol = stored(word);
            const auto [record, type] = options_of(protocol);
            const std::string name = std::string(type->name) + "." + field->name;
            SCOPED_TRACE(name);
            const std::string was = text_of(field, record);
            const std::string becomes = change(name, field, record);
            EXPECT_NE(was, becomes);
            ASSERT_EQ(set(), 0u) << err.message;
            const bool kept = kNotWritten.count(name) == 0;
            EXPECT_EQ(protocol->Changed, kept);
            EXPECT_EQ(text_of(field, options_of(stored(word)).first), kept ? becomes : was);
            written += kept;
        }
        Protocol *protocol = stored(word);
        protocol->Enabled = !protocol->Enabled;
        const int32_t becomes = protocol->Enabled;
        ASSERT_EQ(set(), 0u) << err.message;
        const bool has_switch = strcmp(word, "https") != 0;
        EXPECT_EQ(stored(word)->Enabled, has_switch ? becomes : 0) << word;
    }
    EXPECT_EQ(written, 39);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
