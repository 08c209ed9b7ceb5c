// Random texts: whatever arrives, a check gives one of its results, gives it again, and touches nothing else.

#include "table.h"

#include <map>
#include <random>

using namespace checks;

namespace {

constexpr int texts_per_kind = 20'000;

/// Pieces that lead deep into the checks.
const char *const pieces[] = {
    "home", "usb_", "c_", "share", "ZVOL", "ReadOnly", "ReadWrite", "Disabled", "Enabled", "on", "off", "All", "nfs",
    "ferrydock", "standard", "\u25cf", "\u25cf\u25cf\u25cf\u25cf\u25cf\u25cf\u25cf\u25cf", "@", ".", "..", "-", "_",
    "\"",
    "[", "]", "/", ":", " ", "0x", "0", "1", "25", "255", "256", "10.", "1.2.3.4", "255.255.255.0", "/24", "/33",
    "ff:", "00:11:22:33:44:55", "[1.2.3.4]", "a", "Z", "$", "&", "!", "+", "\xc3\xa9", "\x80", "\xff", "\n", "\x7f",
};

/// 0: random bytes, NUL among them; 1: printable ASCII; 2: pieces; 3: one character over and over, one change.
std::string random_text(std::mt19937 &random, int kind)
{
    const auto below = [&random](size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(random); };
    const size_t length = kind != 1 || below(2) == 0 ? below(401) : below(40);
    std::string text;
    switch (kind) {
    case 0:
        while (text.size() < length)
            text += static_cast<char>(below(256));
        break;
    case 1:
        while (text.size() < length)
            text += static_cast<char>(0x20 + below(95));
        break;
    case 2:
        for (size_t count = below(10); count > 0; --count)
            text += pieces[below(std::size(pieces))];
        break;
    default:
        text.assign(length, "aZ1.@$\xc3\x80"[below(8)]);
        if (length > 0 && below(2) == 0)
            text[below(length)] = static_cast<char>(below(256));
    }
    return text.substr(0, 400);
}

} // namespace

class Properties : public ::testing::TestWithParam<size_t> {};

TEST_P(Properties, HoldForRandomTexts)
{
    const Check &check = all()[GetParam()];
    std::mt19937 random(20'240'229u + static_cast<unsigned>(GetParam()));
    std::map<int32_t, int> seen;
    for (int kind = 0; kind < 4; ++kind)
        for (int i = 0; i < texts_per_kind; ++i) {
            const std::string text = random_text(random, kind);
            const Exact copy(text);
            const Outcome outcome = check.run(copy.get());
            ASSERT_TRUE(check.documents(outcome.result))
                << check.name << " gives " << outcome.result << " for " << shown(text);
            ASSERT_EQ(outcome.fault, nullptr) << check.name << " of " << shown(text) << ": " << outcome.fault;
            const Outcome again = check.run(Exact(text).get());
            ASSERT_EQ(outcome.result, again.result) << check.name << " of " << shown(text);
            ASSERT_EQ(outcome.output, again.output) << check.name << " of " << shown(text);
            ASSERT_EQ(std::memcmp(copy.get(), text.c_str(), text.size() + 1), 0) << check.name << " of " << shown(text);
            ++seen[outcome.result];
        }
    // A generator that never gets anything accepted, or never anything refused, would prove little.
    EXPECT_GT(seen.size(), 1u) << check.name;
}

INSTANTIATE_TEST_SUITE_P(Checks, Properties, ::testing::Range(size_t{0}, all().size()), [](const auto &info) {
    std::string name = all()[info.param].name;
    std::erase_if(name, [](char c) { return c == ' ' || c == '-'; });
    return name;
});

TEST(Relations, HoldForRandomTexts)
{
    std::mt19937 random(7);
    for (int kind = 0; kind < 4; ++kind)
        for (int i = 0; i < texts_per_kind; ++i) {
            const std::string text = random_text(random, kind);
            const char *broken = broken_relation(Exact(text).get());
            ASSERT_EQ(broken, nullptr) << shown(text) << ": " << broken;
        }
}
// SPDX-License-Identifier: Apache-2.0
