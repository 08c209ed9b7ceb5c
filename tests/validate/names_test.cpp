#include "table.h"

using namespace checks;

namespace {

const std::string alnum_bytes = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
const std::string alpha_bytes = alnum_bytes.substr(0, 52);

bool is_lead(unsigned char byte) { return byte >= 0xc0; }
bool is_non_ascii(unsigned char byte) { return byte >= 0x80; }
bool never(unsigned char) { return false; }
bool printable(unsigned char byte) { return byte >= 0x20 && byte != 0x7f; }

/// What a kind of name allows, written down once more and in another way than in the library.
struct Kind {
    const char *name;
    std::string first;
    bool (*first_also)(unsigned char);
    std::string following;
    bool (*following_also)(unsigned char);
    size_t max_length;
    int32_t bad_first = 1;
    int32_t long_and_bad = 2;
    int32_t digit_alone = 0;
};

const Kind kinds[] = {
    {"share name", alnum_bytes + "$", is_lead, alnum_bytes + "_$-", is_non_ascii, 32},
    {"snapshot name", alnum_bytes + "$", is_lead, alnum_bytes + "_$-.", is_non_ascii, 50},
    {.name = "user name",
     .first = alnum_bytes + "_&",
     .first_also = is_lead,
     .following = alnum_bytes + "_-.@&",
     .following_also = is_non_ascii,
     .max_length = 32,
     .digit_alone = 6},
    {"user name with blanks", alnum_bytes + "_&", is_lead, alnum_bytes + "_-.@& ", is_non_ascii, 32},
    {"group name", alnum_bytes + "_&", is_lead, alnum_bytes + "_-.@&", is_non_ascii, 32},
    {"device name", alnum_bytes, never, alnum_bytes + "_-.!", never, 32},
    {"short name", alnum_bytes, never, alnum_bytes + "_-. ", never, 16},
    {"host name", alnum_bytes, never, alnum_bytes + "_-.", never, 255},
    {.name = "own host name",
     .first = alnum_bytes,
     .first_also = never,
     .following = alnum_bytes + "_-",
     .following_also = never,
     .max_length = 16,
     .bad_first = 2},
    {.name = "ups name",
     .first = alpha_bytes,
     .first_also = never,
     .following = alnum_bytes,
     .following_also = never,
     .max_length = 15,
     .long_and_bad = 3},
    {.name = "share comment",
     .first = "",
     .first_also = printable,
     .following = "",
     .following_also = printable,
     .max_length = 255,
     .bad_first = 2},
};

/// Names that nothing but a whole match reserves.
const char *const reserved[] = {
    "home",     "theme",     "password_recovery", "my_password", "html",     "aquota.user",  "css",
    "extjs",    "legacy",    "raphael",           "recovery",    "xml",      "utest",        "cgi-bin",
    "np",       "glassdeck", "fsbroker",          "recover",     "mypasswd", "stimg",        "fonts",
    "shares",   "homes",     "printers",          "everyone",    "anyone",   "aquota.group", "pool",
    "zpool",    "zfs",       "usb",               "global",      "diag",     "purge",        "core",
};
const char *const reserved_prefixes[] = {"c_", "m_", "r_", "b_", "usb_", "usb_port_", "job_"};

std::string upper(std::string text)
{
    for (char &c : text)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    return text;
}

std::string capitalised(std::string text)
{
    return upper(text.substr(0, 1)) + text.substr(1);
}

} // namespace

TEST(Names, EveryByteInEveryPlace)
{
    for (const Kind &kind : kinds) {
        const Check &check = named(kind.name);
        for (unsigned byte = 1; byte < 256; ++byte) {
            const auto c = static_cast<unsigned char>(byte);
            const std::string text(1, static_cast<char>(byte));
            const bool digit = byte >= '0' && byte <= '9';
            const bool first = kind.first.find(text) != std::string::npos || kind.first_also(c);
            const bool following = kind.following.find(text) != std::string::npos || kind.following_also(c);
            expect_row(check, {text, !first ? kind.bad_first : digit ? kind.digit_alone : 0});
            expect_row(check, {"a" + text, following ? 0 : 2});
            expect_row(check, {"a" + text + "z", following ? 0 : 2});
            expect_row(check, {times(kind.max_length - 1, "a") + text, following ? 0 : 2});
            expect_row(check, {times(kind.max_length, "a") + text, following ? 3 : kind.long_and_bad});
        }
    }
}

TEST(Names, EveryLength)
{
    for (const Kind &kind : kinds)
        for (size_t length = 1; length < 400; ++length) {
            expect_row(named(kind.name), {times(length, "Q"), length <= kind.max_length ? 0 : 3});
            if (kind.first_also(0xc3) && length >= 2)
                expect_row(named(kind.name),
                           {"\xc3" + times(length - 1, "\xa9"), length <= kind.max_length ? 0 : 3});
        }
}

TEST(Names, ReservedNames)
{
    const Check &share = named("share name");
    const Check &user = named("user name");
    const Check &blanks = named("user name with blanks");
    const Check &group = named("group name");
    const Check &snapshot = named("snapshot name");

    for (const std::string name : reserved)
        for (const std::string &spelling : {name, upper(name), capitalised(name)}) {
            const bool dot = name.find('.') != std::string::npos; // no character for a share
            expect_row(share, {spelling, dot ? 2 : 5});
            expect_row(user, {spelling, 5});
            expect_row(blanks, {spelling, 5});
            expect_row(group, {spelling, 0});
            expect_row(snapshot, {spelling, 0});
            for (const std::string &free : {spelling + "x", "x" + spelling, spelling + "-", spelling + "1"}) {
                expect_row(share, {free, dot ? 2 : 0});
                expect_row(user, {free, 0});
                expect_row(blanks, {free, 0});
            }
            if (!dot)
                expect_row(share, {spelling.substr(0, spelling.size() - 1) + "$", 0});
        }

    for (const std::string prefix : reserved_prefixes)
        for (const std::string &spelling : {prefix, upper(prefix), capitalised(prefix)})
            for (const std::string &name : {spelling, spelling + "x", spelling + "data", spelling + "_"}) {
                expect_row(share, {name, 4});
                expect_row(user, {name, 4});
                expect_row(blanks, {name, 4});
                expect_row(group, {name, 0});
                expect_row(share, {"x" + name, 0});
                expect_row(user, {"x" + name, 0});
            }
}

TEST(Names, ShareName)
{
    expect_table("share name", {
        {std::nullopt, -1}, {"", -1},
        {"media", 0}, {"m", 0}, {"9", 0}, {"1234", 0}, {"$hidden", 0}, {"backup$", 0}, {"a_b-c$d", 0},
        {"\xc3\xa9t\xc3\xa9", 0}, {"\xff\x80\xbf", 0}, {"\xe9\x9f\xb3\xe6\xa5\xbd", 0}, {"x\x80", 0},
        {"_x", 1}, {"-x", 1}, {".x", 1}, {" x", 1}, {"\x80x", 1}, {"\xbfx", 1}, {"/", 1}, {"\x01", 1}, {"\x7f", 1},
        {"a b", 2}, {"a.b", 2}, {"a/b", 2}, {"a\nb", 2}, {"a\x7f", 2}, {"a\x01z", 2}, {"a@b", 2}, {"a&b", 2},
        {"a'b", 2}, {"a%b", 2}, {"a\"", 2}, {"a\\", 2},
        {times(32, "a"), 0}, {times(33, "a"), 3}, {times(16, "\xc3\xa9"), 0}, {times(16, "\xc3\xa9") + "a", 3},
        {times(40, "a") + " ", 2}, {" " + times(40, "a"), 1}, {"c_" + times(31, "a"), 3}, {"c_" + times(30, "a"), 4},
        {"c_data", 4}, {"C_data", 4}, {"usb_x", 4}, {"usb_port_1", 4}, {"USB_PORT_1", 4}, {"job_", 4}, {"m_", 4},
        {"r_1", 4}, {"b_b", 4}, {"usb", 5}, {"usbx", 0}, {"usb-1", 0}, {"job", 0}, {"c", 0}, {"c-", 0},
        {"Homes", 5}, {"HOME", 5}, {"homework", 0}, {"hom", 0}, {"recover", 5}, {"recovery", 5}, {"recoverys", 0},
        {"ferrydock", 0}, {"ZFS", 5}, {"cgi-bin", 5}, {"aquota.user", 2}, {"password_recovery", 5},
    });
}

TEST(Names, SnapshotName)
{
    expect_table("snapshot name", {
        {std::nullopt, -1}, {"", -1},
        {"a", 0}, {"2024-01-31_12.00", 0}, {"$x", 0}, {"home", 0}, {"c_x", 0}, {"123", 0}, {"\xc3\xbc.", 0},
        {".x", 1}, {"_x", 1}, {"-x", 1}, {"@x", 1}, {"\x80", 1}, {"\xbf", 1}, {"\t", 1},
        {"a b", 2}, {"a@b", 2}, {"a:b", 2}, {"a/b", 2}, {"a\x1f", 2}, {"a\x7f", 2},
        {times(49, "a"), 0}, {times(50, "a"), 0}, {times(51, "a"), 3}, {times(51, "a") + "@", 2},
        {times(25, "\xc3\xa9"), 0}, {times(25, "\xc3\xa9") + "x", 3},
    });
}

TEST(Names, UserName)
{
    expect_table("user name", {
        {std::nullopt, 1}, {"", 1},
        {"anna", 0}, {"_svc", 0}, {"&co", 0}, {"a.b-c_d&e@example.com", 0}, {"1234a", 0}, {"12_34", 0}, {"a", 0},
        {"\xc3\xa5sa", 0}, {"a\x80", 0}, {"7\xff", 0},
        {" a", 1}, {".a", 1}, {"-a", 1}, {"@a", 1}, {"$a", 1}, {"\x80" "a", 1}, {"\xbf", 1}, {"\n", 1}, {"\x7f", 1},
        {"an na", 2}, {"an\tna", 2}, {"a$", 2}, {"a:b", 2}, {"a/b", 2}, {"a\x7f", 2}, {"a,b", 2}, {"a'b", 2},
        {times(32, "a"), 0}, {times(33, "a"), 3}, {times(32, "1"), 6}, {times(33, "1"), 3}, {times(33, "a") + " ", 2},
        {"c_anna", 4}, {"M_x", 4}, {"usb_1", 4}, {"job_x", 4}, {"b_" + times(31, "x"), 3},
        {"home", 5}, {"Everyone", 5}, {"aquota.user", 5}, {"AQUOTA.GROUP", 5}, {"aquota.users", 0}, {"core", 5},
        {"0", 6}, {"9", 6}, {"1234", 6}, {"0x10", 0}, {"-1", 1}, {"1.5", 0},
    });
}

TEST(Names, UserNameWithBlanks)
{
    expect_table("user name with blanks", {
        {std::nullopt, 1}, {"", 1},
        {"anna", 0}, {"an na", 0}, {"a ", 0}, {"a  b", 0}, {"1234", 0}, {"0", 0}, {"DOM&anna smith", 0},
        {" a", 1}, {" ", 1}, {"\x80", 1}, {"$", 1},
        {"a\tb", 2}, {"a\\b", 2}, {"a\n", 2}, {"a$", 2},
        {times(16, "a "), 0}, {times(16, "a ") + "b", 3},
        {"c_ x", 4}, {"usb_port_ 1", 4},
        {"home", 5}, {"Pool", 5}, {"home ", 0},
    });
}

TEST(Names, GroupName)
{
    expect_table("group name", {
        {std::nullopt, 1}, {"", 1},
        {"users", 0}, {"1234", 0}, {"home", 0}, {"c_x", 0}, {"_a", 0}, {"&a", 0}, {"a@b.c-d_e&", 0}, {"\xc3\xa9", 0},
        {"a\xbf", 0},
        {"@a", 1}, {".a", 1}, {" a", 1}, {"\x80", 1}, {"$", 1},
        {"a b", 2}, {"a$", 2}, {"a+b", 2}, {"a\x01", 2}, {"a\x7f", 2},
        {times(32, "g"), 0}, {times(33, "g"), 3}, {times(33, "g") + "!", 2},
    });
}

TEST(Names, DeviceName)
{
    expect_table("device name", {
        {std::nullopt, -1}, {"", 1},
        {"public", 0}, {"a", 0}, {"0", 0}, {"a_b-c.d!", 0},
        {"!a", 1}, {"_a", 1}, {" a", 1}, {"\xc3\xa9", 1}, {"\x80", 1}, {"\xff", 1},
        {"a b", 2}, {"a\xc3\xa9", 2}, {"a\x80", 2}, {"a\xff", 2}, {"a@", 2}, {"a$", 2}, {"a\n", 2},
        {times(32, "d"), 0}, {times(33, "d"), 3}, {times(33, "d") + "$", 2},
    });
}

TEST(Names, ShortName)
{
    expect_table("short name", {
        {std::nullopt, -1}, {"", 1},
        {"WORKGROUP", 0}, {"eth0", 0}, {"bond0", 0}, {"br-lan", 0}, {"My Group", 0}, {"a.b_c", 0}, {"7", 0},
        {"_WG", 1}, {"-eth", 1}, {" eth", 1}, {".", 1}, {"\xc3", 1},
        {"eth/0", 2}, {"eth!0", 2}, {"a\xc3\xa9", 2}, {"a\t", 2}, {"a\x7f", 2},
        {times(16, "s"), 0}, {times(17, "s"), 3}, {times(40, "s"), 3}, {times(40, "s") + "/", 2},
    });
}

TEST(Names, HostName)
{
    expect_table("host name", {
        {std::nullopt, -11}, {"", -11},
        {"nas", 0}, {"nas.example.com", 0}, {"nas_1-2", 0}, {"0", 0}, {"10.0.0.1", 0}, {"999.999.999.999", 0},
        {"a.", 0}, {"a..b", 0},
        {"-nas", 1}, {".nas", 1}, {"_nas", 1}, {" nas", 1}, {"\xc3\xa9", 1}, {"*", 1}, {"[", 1},
        {"na s", 2}, {"na/s", 2}, {"nas:80", 2}, {"n\xc3\xa9", 2}, {"nas\n", 2}, {"10.0.0.0/8", 2},
        {times(255, "h"), 0}, {times(256, "h"), 3}, {times(256, "h") + " ", 2},
    });
}

TEST(Names, OwnHostName)
{
    expect_table("own host name", {
        {std::nullopt, -11}, {"", -11},
        {"nas", 0}, {"NAS-1_2", 0}, {"7", 0},
        {"-nas", 2}, {"_nas", 2}, {"nas.local", 2}, {"na s", 2}, {"\xc3\xa9", 2}, {"n\x80", 2}, {" ", 2},
        {times(16, "h"), 0}, {times(17, "h"), 3}, {times(17, "h") + ".", 2}, {"." + times(17, "h"), 2},
    });
}

TEST(Names, UpsName)
{
    expect_table("ups name", {
        {std::nullopt, -1}, {"", -1},
        {"ups", 0}, {"U", 0}, {"ups1", 0}, {"Z9", 0},
        {"1ups", 1}, {"_ups", 1}, {" ", 1}, {"\xc3\xa9", 1}, {"1" + times(20, "a"), 1},
        {"ups-1", 2}, {"u p", 2}, {"ups\xff", 2}, {"ups_", 2}, {times(14, "u") + "-", 2},
        {times(15, "u"), 0}, {times(16, "u"), 3}, {times(15, "u") + "-", 3}, {"u-" + times(14, "u"), 3},
    });
}

TEST(Names, SyncName)
{
    expect_table("sync name", {
        {std::nullopt, -1}, {"", -1},
        {"ferrydock", 0}, {"FerryDock", 0}, {"FERRYDOCK", 0},
        {"ferrydoc", 1}, {"ferrydock1", 1}, {" ferrydock", 1}, {"ferrydock ", 1}, {"home", 1}, {"\x80", 1},
    });
}

TEST(Names, ShareComment)
{
    expect_table("share comment", {
        {std::nullopt, -1}, {"", 0},
        {"Films & music; 100% \"ours\"", 0}, {" ", 0}, {"\xc3\x9c" "ber", 0}, {"\x80\xff", 0},
        {"\n", 2}, {"a\nb", 2}, {"a\tb", 2}, {"a\x1f", 2}, {"a\x7f", 2}, {"\x01", 2}, {"a\r", 2}, {"\x1b[0m", 2},
        {times(255, "c"), 0}, {times(256, "c"), 3}, {times(300, "c") + "\n", 2},
    });
}

TEST(Names, TextEndsAtTheFirstNul)
{
    const std::string text("anna\0/../", 9);
    expect_row(named("user name"), {text, 0});
    expect_row(named("share name"), {std::string("\0media", 6), -1});
    expect_row(named("share comment"), {std::string("a\0\n", 3), 0});
}
// SPDX-License-Identifier: Apache-2.0
