#include "table.h"

#include <cerrno>
#include <climits>

using namespace checks;

TEST(Words, ShareType)
{
    expect_table("share type", {
        {std::nullopt, 0, "share"}, {"", 0, "share"},
        {"share", 0, "share"}, {"SHARE", 0, "share"}, {"Share", 0, "share"},
        {"zvol", 0, "zvol"}, {"ZVol", 0, "zvol"}, {"replicate", 0, "replicate"}, {"Replicate", 0, "replicate"},
        {"shar", 1}, {"shares", 1}, {" share", 1}, {"share ", 1}, {"zfs", 1}, {"\x80", 1}, {"share\xff", 1},
        {"z\x76ol\n", 1}, {times(400, "s"), 1},
    });
}

TEST(WordsDeathTest, ShareTypeNeedsAnOutput)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(qbobj_validate_sharetype("share", nullptr), "Assertion `sharetype' failed");
}

TEST(Words, ReadWriteDisabled)
{
    expect_table("read-write-disabled", {
        {"ReadOnly", 0, "readonly"}, {"ReadWrite", 0, "writeable"}, {"Disabled", 0, "disabled"},
        {std::nullopt, 1}, {"", 1}, {"readonly", 1}, {"READONLY", 1}, {"writeable", 1}, {"disabled", 1}, {"Enabled", 1},
        {"ReadOnly ", 1}, {"ReadOnl", 1}, {"ReadOnlyX", 1}, {"\xff", 1},
    });
}

TEST(Words, ReadDisabled)
{
    expect_table("read-disabled", {
        {"ReadOnly", 0, "readonly"}, {"Disabled", 0, "disabled"},
        {std::nullopt, 1}, {"", 1}, {"ReadWrite", 1}, {"readonly", 1}, {"DISABLED", 1}, {"\x80", 1},
    });
}

TEST(Words, EnabledDisabled)
{
    expect_table("enabled-disabled", {
        {"Enabled", 0, "enabled"}, {"Disabled", 0, "disabled"},
        {std::nullopt, 1}, {"", 1}, {"enabled", 1}, {"disabled", 1}, {"ReadOnly", 1}, {"1", 1}, {"on", 1},
    });
}

TEST(Words, AccessFlags)
{
    expect_table("access flags", {
        {"ReadOnly", 0, "1 0"}, {"ReadWrite", 0, "1 1"}, {"Disabled", 0, "0 0"},
        {std::nullopt, 1}, {"", 1}, {"readonly", 1}, {"READWRITE", 1}, {"disabled", 1}, {"Enabled", 1},
    });
    int32_t write = -1;
    EXPECT_EQ(qb::map_access_flags(nullptr, "ReadWrite", nullptr, &write), 0);
    EXPECT_EQ(write, 1);
}

TEST(Words, AccessBits)
{
    expect_table("access bits", {
        {"ReadOnly", 0, "4"}, {"ReadWrite", 0, "6"}, {"Disabled", 0, "0"}, {std::nullopt, 1}, {"", 1}, {"readonly", 1},
    });
    expect_table("access bits of folders", {
        {"ReadOnly", 0, "5"}, {"ReadWrite", 0, "7"}, {"Disabled", 0, "0"}, {std::nullopt, 1}, {"", 1}, {"readonly", 1},
    });
    expect_table("removed bits", {
        {"ReadOnly", 0, "2"}, {"ReadWrite", 0, "0"}, {"Disabled", 0, "6"}, {std::nullopt, 1}, {"", 1}, {"disabled", 1},
    });
    expect_table("removed bits of folders", {
        {"ReadOnly", 0, "2"}, {"ReadWrite", 0, "0"}, {"Disabled", 0, "7"}, {std::nullopt, 1}, {"", 1}, {"disabled", 1},
    });
}

TEST(Words, FallbackStandsInForNullOnly)
{
    const char *out = untouched;
    EXPECT_EQ(qb::map_read_write_disabled(nullptr, "ReadOnly", &out), 0);
    EXPECT_STREQ(out, "readonly");
    EXPECT_EQ(qb::map_read_write_disabled("Disabled", "ReadOnly", &out), 0);
    EXPECT_STREQ(out, "disabled");
    EXPECT_EQ(qb::map_read_write_disabled("", "ReadOnly", &out), 1);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(qb::map_read_write_disabled(nullptr, nullptr, &out), 1);
    EXPECT_EQ(qb::map_read_disabled(nullptr, nullptr, nullptr), 1);
    EXPECT_EQ(qb::map_enabled_disabled(nullptr, "enabled", nullptr), 1);
    EXPECT_EQ(qb::map_access_flags(nullptr, nullptr, nullptr, nullptr), 1);
    EXPECT_EQ(qb::map_access_bits(nullptr, nullptr, true, nullptr), 1);
    EXPECT_EQ(qb::map_access_removed_bits(nullptr, nullptr, true, nullptr), 1);
    int32_t number = -1;
    EXPECT_EQ(qb::parse_switch(nullptr, nullptr, &number), 1);
    EXPECT_EQ(qb::parse_media_type(nullptr, nullptr, &number), 1);
    EXPECT_EQ(number, -1);
    EXPECT_EQ(qb::parse_switch(nullptr, "on", &number), 0);
    EXPECT_EQ(number, 1);
    EXPECT_EQ(qb::parse_media_type(nullptr, "All", &number), 0);
    EXPECT_EQ(number, 0);
    long value = -1;
    EXPECT_EQ(qb::parse_integer(nullptr, nullptr, 0, 9, &value), 1);
    EXPECT_EQ(value, -1);
    EXPECT_EQ(qb::parse_integer(nullptr, "5", 0, 9, &value), 0);
    EXPECT_EQ(value, 5);
    EXPECT_EQ(qb::parse_integer("10", "5", 0, 9, &value), 1);
}

TEST(Words, Switch)
{
    expect_table("switch", {
        {"0", 0, "0"}, {"1", 0, "1"}, {"off", 0, "0"}, {"OFF", 0, "0"}, {"Off", 0, "0"}, {"on", 0, "1"}, {"On", 0, "1"},
        {"ON", 0, "1"}, {"oN", 0, "1"},
        {"", 1}, {"2", 1}, {"00", 1}, {"01", 1}, {"10", 1}, {" 1", 1}, {"1 ", 1}, {"-1", 1}, {"+1", 1}, {"o", 1},
        {"of", 1}, {"offf", 1}, {"onn", 1}, {"true", 1}, {"yes", 1}, {"Enabled", 1}, {"\x81", 1}, {"1\xff", 1},
    });
}

TEST(Words, Integer)
{
    expect_table("integer", { // -100 to 65535
        {"0", 0, "0"}, {"-100", 0, "-100"}, {"65535", 0, "65535"}, {"+7", 0, "7"}, {" \t7", 0, "7"},
        {"0x10", 0, "16"}, {"0XfF", 0, "255"}, {"010", 0, "8"}, {"-0x10", 0, "-16"}, {"-010", 0, "-8"}, {"00", 0, "0"},
        {"08", 0, "0"}, {"12 MB", 0, "12"}, {"", 0, "0"}, {"abc", 0, "0"}, {"0x", 0, "0"}, {"\xff", 0, "0"},
        {"0xffff", 0, "65535"}, {"0177777", 0, "65535"},
        {"-101", 1}, {"65536", 1}, {"0x10000", 1}, {"0200000", 1}, {"9223372036854775807", 1},
        {"9223372036854775808", 1}, {"-9223372036854775809", 1}, {times(400, "9"), 1},
    });
}

TEST(Words, IntegerBounds)
{
    struct {
        const char *text;
        long minimum, maximum;
        int32_t result;
    } const rows[] = {
        {"1", 1, 65535, 0},
        {"0", 1, 65535, 1},
        {"65535", 1, 65535, 0},
        {"65536", 1, 65535, 1},
        {"5", 5, 5, 0},
        {"4", 5, 5, 1},
        {"6", 5, 5, 1},
        {"5", 6, 4, 1},
        {"9223372036854775807", LONG_MIN, LONG_MAX, 0},
        {"9223372036854775808", LONG_MIN, LONG_MAX, 1},
        {"-9223372036854775808", LONG_MIN, LONG_MAX, 0},
        {"-9223372036854775809", LONG_MIN, LONG_MAX, 1},
        {"0x7fffffffffffffff", LONG_MIN, LONG_MAX, 0},
        {"0x8000000000000000", LONG_MIN, LONG_MAX, 1},
        {"0x8000000000000000", LONG_MAX, LONG_MAX, 1},
    };
    for (const auto &row : rows) {
        errno = EINTR;
        EXPECT_EQ(qb::parse_integer(row.text, nullptr, row.minimum, row.maximum, nullptr), row.result)
            << row.text << " in " << row.minimum << " to " << row.maximum;
        EXPECT_EQ(errno, EINTR);
    }
}

TEST(Words, OneOf)
{
    expect_table("one of", { // without regard to case
        {"standard", 0}, {"ALWAYS", 0}, {"Disabled", 0},
        {std::nullopt, 1}, {"", 1}, {"standar", 1}, {"standards", 1}, {"standard,always", 1}, {"\xff", 1},
    });
    using qb::Case;
    EXPECT_EQ(qb::check_one_of("user", Case::exact, {"user", "ads"}), 0);
    EXPECT_EQ(qb::check_one_of("ads", Case::exact, {"user", "ads"}), 0);
    EXPECT_EQ(qb::check_one_of("ADS", Case::exact, {"user", "ads"}), 1);
    EXPECT_EQ(qb::check_one_of("ADS", Case::ignored, {"user", "ads"}), 0);
    EXPECT_EQ(qb::check_one_of("", Case::exact, {"user", ""}), 0);
    EXPECT_EQ(qb::check_one_of("user", Case::exact, std::initializer_list<const char *>{}), 1);
    EXPECT_EQ(qb::check_one_of("nfs", Case::exact, qb::protocol_names), 0);
    // Letters beyond ASCII have no case here: capital and small e with an acute accent differ.
    EXPECT_EQ(qb::check_one_of("\xc3\x89", Case::ignored, {"\xc3\xa9"}), 1);
    // Nor have the neighbours of the ASCII letters, which differ from each other as a letter does from its capital.
    EXPECT_EQ(qb::check_one_of("@", Case::ignored, {"`"}), 1);
    EXPECT_EQ(qb::check_one_of("[", Case::ignored, {"{"}), 1);
}

TEST(Words, ProtocolName)
{
    expect_table("protocol name", {
        {"skyloft", 0}, {"anti-virus", 0}, {"daap", 0}, {"bonjour", 0}, {"replicate", 0}, {"ssh", 0}, {"snmp", 0},
        {"dlna", 0}, {"upnpd", 0}, {"smartnetwork", 0}, {"rsync", 0}, {"https", 0}, {"http", 0}, {"ftp", 0}, {"nfs", 0},
        {"afp", 0}, {"cifs", 0},
        {std::nullopt, 1}, {"", 1}, {"CIFS", 1}, {"Nfs", 1}, {"bogus", 1}, {"httpss", 1}, {"htt", 1}, {"zvol", 1},
        {" nfs", 1}, {"nfs ", 1}, {"\xff", 1},
    });
}

TEST(Words, MediaType)
{
    expect_table("media type", {
        {"All", 0, "0"}, {"Music", 0, "1"}, {"Photo", 0, "2"}, {"Video", 0, "3"},
        {"0", 0, "0"}, {"1", 0, "1"}, {"2", 0, "2"}, {"3", 0, "3"},
        {"", 1}, {"Bogus", 1}, {"all", 1}, {"MUSIC", 1}, {"4", 1}, {"-1", 1}, {"00", 1}, {" 1", 1}, {"Photos", 1},
        {"\x80", 1},
    });
}

TEST(Words, ResourceId)
{
    expect_table("resource id", {
        {"1", 0, "1"}, {"98", 0, "98"}, {"2147483647", 0, "2147483647"}, {"007", 0, "7"},
        {times(390, "0") + "1", 0, "1"},
        {std::nullopt, 1}, {"", 1}, {"0", 1}, {"000", 1}, {"-1", 1}, {"+1", 1}, {" 1", 1}, {"1 ", 1}, {"0x1", 1},
        {"1a", 1}, {"abc", 1}, {"2147483648", 1}, {"4294967297", 1}, {"18446744073709551617", 1}, {times(400, "9"), 1},
        {"1.0", 1}, {"1\n", 1}, {"\xb2", 1}, {"1\xff", 1}, {"/", 1}, {":", 1},
    });
}

TEST(Words, LiteralList)
{
    expect_table("literal list", {
        {"'a'", 0}, {"''", 0}, {"'a','b'", 0}, {" 'a' ,\t'b'\n", 0}, {"'it''s'", 0}, {"''''", 0}, {"',','--'", 0},
        {"') OR (1=1'", 0}, {"'\xff'", 0}, {"'''','a'", 0},
        {std::nullopt, 1}, {"", 1}, {" ", 1}, {",", 1}, {"a", 1}, {"'", 1}, {"'a", 1}, {"'''", 1}, {"a'", 1}, {"'a',", 1},
        {",'a'", 1}, {"'a''", 1}, {"'a' 'b'", 1}, {"'a',,'b'", 1}, {"'a') OR ('1'='1'", 1}, {"\"a\"", 1}, {"'a'--", 1},
        {"'a'/**/", 1}, {"x'00'", 1}, {"('a')", 1}, {"'a'||'b'", 1}, {"'a';", 1},
    });
}

TEST(Words, PasswordMask)
{
    expect_table("password mask", {
        {"\u25cf\u25cf\u25cf\u25cf\u25cf\u25cf\u25cf\u25cf", 1},
        {std::nullopt, 0}, {"", 0}, {"********", 0}, {times(7, "\u25cf"), 0}, {times(9, "\u25cf"), 0},
        {times(8, "\u25cf") + " ", 0}, {" " + times(8, "\u25cf"), 0}, {times(7, "\u25cf") + "\xe2\x97", 0},
        {times(7, "\u25cf") + "\u25cb", 0}, {"secret", 0},
    });
    expect_row(named("password mask"), {masked_password, 1});
}
// SPDX-License-Identifier: Apache-2.0
