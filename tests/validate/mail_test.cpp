#include "table.h"

using namespace checks;

namespace {

const std::string local64 = times(64, "l");
const std::string domain255 = times(255, "d");

} // namespace

TEST(Mail, Address)
{
    expect_table("e-mail address", {
        {std::nullopt, 1}, {"", 1},
        {"anna@example.com", 0}, {"a@b", 0}, {"o'brien@example.com", 0}, {"a.b.c@example.com", 0}, {"A+1@x-y.Z", 0},
        {"!#$%&'*+-/=?^_`{|}~@example.com", 0}, {"-@x", 0}, {"@", 0}, {"@x.com", 0}, {"a@", 0},
        {local64 + "@" + domain255, 2}, {times(63, "l") + "@" + domain255, 0}, {times(319, "a"), 8},
        {times(320, "a"), 2}, {times(1000, "@"), 2}, {"\"" + times(320, "a"), 2},
        // quoted
        {"\"anna\"@example.com", 0}, {"\"a b\"@x", 0}, {"\"a@b\"@x", 0}, {"\"()<>[]:;@, .\"@x", 0}, {"\"..\"@x", 0},
        {"\"a\"@", 0},
        {"\"", 3}, {"\"anna", 3}, {"\"anna@x", 3}, {"\"a\\b\"@x", 3}, {"\"a\tb\"@x", 3}, {"\"\xc3\xa9\"@x", 3},
        {"\"a\x7f\"@x", 3}, {"\"a\x01", 3},
        {"\"\"@x", 4}, {"\"\"", 4}, {"\"" + times(62, "q") + "\"@x", 0}, {"\"" + times(63, "q") + "\"@x", 4},
        {"\"" + times(63, "q") + "\"", 4},
        {"\"a\"", 5}, {"\"a\"x@y", 5}, {"\"a\"\"b\"@x", 5}, {"\"a\" @x", 5},
        {"\"a\"@" + domain255, 0}, {"\"a\"@" + domain255 + "d", 6}, {"\"a\"@-" + domain255, 6},
        {"\"a\"@[1.2.3.4]", 0}, {"\"a\"@-", 26}, {"\"a\"@ ", 25}, {"\"a\"@[", 21},
        // plain
        {"a..b@x", 7}, {"..", 7}, {"a..@x", 7}, {"..a@x", 7}, {"a..b", 7}, {"a...b@x", 7}, {"a b..c@x", 8},
        {"anna", 8}, {"an na@x", 8}, {"a\"b\"@x", 8}, {"a(b@x", 8}, {"\xc3\xa9@x", 8}, {"a\x80@x", 8}, {" a@x", 8},
        {"a\n@x", 8}, {"a,b@x", 8}, {"a\\b@x", 8}, {"\x01", 8}, {"\xff", 8}, {".a", 8}, {"a.", 8},
        {".a@x", 9}, {"a.@x", 9}, {".@x", 9}, {"." + local64 + "@x", 9},
        {local64 + "@x", 0}, {local64 + "l@x", 10}, {local64 + "l@-", 10}, {local64 + "l@" + times(254, "d"), 2},
        {"a@" + domain255, 0}, {"a@" + domain255 + "d", 11}, {"a@ " + domain255, 11}, {"@" + domain255 + "d", 11},
        {times(62, "l") + "@" + domain255 + "d", 11}, {times(63, "l") + "@" + domain255 + "d", 2},
        // domain
        {"a@[1.2.3.4]", 0}, {"a@[1-2.3.4]", 20}, {"a@[]", 21}, {"a@[256.1.1.1]", 22}, {"a@[1.2.3.4", 23},
        {"a@[1.2.3.4]x", 24}, {"a@x y", 25}, {"a@b@c", 25}, {"a@\xc3\xa9", 25}, {"a@.x", 26}, {"a@x-", 26},
        {"a@\"x\"", 25},
    });
}

TEST(Mail, Domain)
{
    expect_table("mail domain", {
        {std::nullopt, 1}, {"", 0},
        {"example.com", 0}, {"x", 0}, {"1", 0}, {"a-b.c", 0}, {"x.", 0}, {"a..b", 0}, {"1.2.3.4", 0},
        {times(400, "d"), 0},
        {"x y", 25}, {"x_y", 25}, {"x@y", 25}, {"\xc3\xa9", 25}, {"x\x80", 25}, {"x\xff", 25}, {" ", 25}, {"x]", 25},
        {"x[1.2.3.4]", 25}, {"-x ", 25}, {"x\n", 25}, {"\x01", 25},
        {"-x", 26}, {".x", 26}, {"x-", 26}, {"-", 26}, {".", 26}, {"a.b-", 26},
        {"[0.0.0.0]", 0}, {"[255.255.255.255]", 0}, {"[1.2.3.004]", 0}, {"[" + times(300, "0") + ".0.0.0]", 0},
        {"[1", 20}, {"[1]", 20}, {"[1.2.3]", 20}, {"[1.2.3", 20}, {"[1,2.3.4]", 20}, {"[1 .2.3.4]", 20},
        {"[1x.2.3.4]", 20},
        {"[", 21}, {"[]", 21}, {"[.1.2.3]", 21}, {"[1.", 21}, {"[1..2.3]", 21}, {"[1.2.3.]", 21}, {"[-1.2.3.4]", 21},
        {"[ 1.2.3.4]", 21}, {"[+1.2.3.4]", 21}, {"[x", 21}, {"[[", 21}, {"[\xff", 21},
        {"[256.0.0.0]", 22}, {"[1.2.3.256]", 22}, {"[999", 22}, {"[4294967297.2.3.4]", 22}, {"[1.1000.", 22},
        {"[" + times(200, "9"), 22},
        {"[1.2.3.4", 23}, {"[1.2.3.4.", 23}, {"[1.2.3.4.5]", 23}, {"[1.2.3.4 ]", 23}, {"[1.2.3.4)", 23},
        {"[1.2.3.4]x", 24}, {"[1.2.3.4] ", 24}, {"[1.2.3.4]]", 24}, {"[1.2.3.4].", 24},
    });
}

TEST(Mail, EveryByte)
{
    const std::string alnum = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    const std::string plain = alnum + "!#$%&'*+-/=?^_`{|}~.";
    const std::string quoted = plain + "()<>[]:;@, ";
    for (unsigned byte = 1; byte < 256; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        const Check &email = named("e-mail address");
        if (byte == '@') {
            expect_row(email, {"a@z", 0});
            expect_row(email, {"a@z@x", 25});
        } else {
            expect_row(email, {"a" + text + "z@x", plain.find(text) != std::string::npos ? 0 : 8});
        }
        // A quote in the middle closes the part, and what follows is no "@".
        const bool in_quotes = quoted.find(text) != std::string::npos;
        expect_row(email, {"\"a" + text + "z\"@x", in_quotes ? 0 : byte == '"' ? 5 : 3});
        const bool in_domain = alnum.find(text) != std::string::npos || byte == '-' || byte == '.';
        expect_row(named("mail domain"), {"a" + text + "z", in_domain ? 0 : 25});
    }
}
// SPDX-License-Identifier: Apache-2.0
