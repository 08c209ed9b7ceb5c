// What the checks accept is stored and found again byte for byte, whichever way it goes into a statement.
#include <random>

#include "fixture/fixture.h"
#include "frame/query.h"
#include "validate/checks.h"

using namespace qb;

namespace {

struct Storage : test::Database {
    CallContext ctx{qbdb, &err};

    void SetUp() override { sql("BEGIN"); }  // one transaction: nothing is written to the disk

    /// Stores a text in both of the ways, and reads it and its row back.
    void expect_stored(const char *text)
    {
        ASSERT_FALSE(execute(&ctx, db, "DELETE FROM `$registry`"));
        ASSERT_FALSE(execute(&ctx, db, "INSERT INTO `$registry` (key,value) VALUES(%Q,'%q')", text, text));
        const char *bound = nullptr, *spliced = nullptr;
        ASSERT_FALSE(select_text(&ctx, db, bound, "SELECT key FROM `$registry` WHERE key='%q'", text));
        ASSERT_FALSE(select_text(&ctx, db, spliced, "SELECT value FROM `$registry` WHERE key=%Q", text));
        ASSERT_STREQ(bound, text);
        ASSERT_STREQ(spliced, text);
    }
};

/// A check and texts that it accepts, from which others are made by changing a few bytes.
struct Kind {
    const char *check;
    std::vector<std::string> examples;
};

const Kind kKinds[] = {
    {"share name", {"media$1", "Fotos-\xc3\xa4", "x"}},
    {"snapshot name", {"snap-1.0", "\xe6\x97\xa5$"}},
    {"share comment", {"It's \"100%\" `mine`; -- \\", "", "?1 :a @b $c"}},
    {"user name",
     {"anna&b", "o.k@home",
      "\xc3\xbc"
      "ser"}},
    {"user name with blanks", {"Anna  B", "x y z"}},
    {"group name", {"staff", "1234", "a-b_c.d@e&f"}},
    {"device name", {"ups!1", "a_b-c.d"}},
    {"short name", {"eth0", "br-lan 0"}},
    {"host name", {"nas-1.example.org"}},
    {"own host name", {"nas_1"}},
    {"e-mail address", {"\"o'hara;--\"@x.org", "a'b`c?d%e@[10.0.0.1]", "a@"}},
    {"hardware address", {"0:1:2:3:4:5", "aa:BB:0c:1:2:3\n"}},
    {"dotted address", {"10.0.0.1", " 1.2.3.4 "}},
    {"host or network", {"10.0.0.0/8", "nas"}},
};

/// Uneven on purpose: quotes, signs of the formats and the wildcards more often than the rest.
std::string changed(std::mt19937 &random, std::string text)
{
    static const std::string kSigns = "'\"`%\\;-_?:@$\x80\xc3\xff\x01 \n/";
    for (uint32_t left = random() % 4; left; left--) {
        const char byte = random() % 2 ? kSigns[random() % kSigns.size()] : static_cast<char>(1 + random() % 255);
        const size_t at = random() % (text.size() + 1);
        switch (random() % 3) {
            case 0: text.insert(at, 1, byte); break;
            case 1: text.replace(at, at < text.size(), 1, byte); break;
            default: text.erase(at, 1);
        }
    }
    return text;
}

TEST_F(Storage, KeepsWhatTheChecksAccept)
{
    std::mt19937 random(20240229);
    for (const Kind &kind : kKinds) {
        SCOPED_TRACE(kind.check);
        const checks::Check &check = checks::named(kind.check);
        std::set<std::string> accepted;
        for (int i = 0; i < 1500; i++) {
            const std::string text = changed(random, kind.examples[random() % kind.examples.size()]);
            if (check.run(text.c_str()).result != 0 || !accepted.insert(text).second) continue;
            expect_stored(text.c_str());
            if (HasFatalFailure()) return;
        }
        EXPECT_GT(accepted.size(), 20u) << "too few texts to tell anything";
    }
}

TEST_F(Storage, KeepsAnyBytes)
{
    std::mt19937 random(4711);
    for (int i = 0; i < 500; i++) {
        std::string text(random() % 60, ' ');
        for (char &byte : text) byte = static_cast<char>(1 + random() % 255);
        expect_stored(text.c_str());
        if (HasFatalFailure()) return;
    }
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
