#include <crypt.h>
#include <sys/random.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>
#include <deque>
#include <set>

#include "fixture/fixture.h"
#include "validate/password.h"

using testing::MatchesRegex;
using testing::SizeIs;

namespace {

std::deque<uint32_t> next_random;  // what the kernel answers next; its own numbers when empty

}  // namespace

// In front of the C library's: the random numbers of a salt can be chosen.
extern "C" ssize_t getrandom(void *buffer, size_t size, unsigned flags)
{
    if (next_random.empty() || size != sizeof(uint32_t)) return syscall(SYS_getrandom, buffer, size, flags);
    memcpy(buffer, &next_random.front(), size);
    next_random.pop_front();
    return static_cast<ssize_t>(size);
}

namespace {

constexpr char kAlphabet[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789./";

std::string crypt_of(const std::string &password, const std::string &setting)
{
    crypt_data area{};
    const char *hash = crypt_r(password.c_str(), setting.c_str(), &area);
    return hash ? hash : "";
}

struct Hash : test::Database {
    qb::CallContext ctx{qbdb, &err};
    std::string hash(const std::string &password)
    {
        const char *text = qb::hash_password(&ctx, password.c_str());
        return text ? text : "(none)";
    }
};

TEST_F(Hash, OfNoPasswordIsEmpty)
{
    EXPECT_STREQ(qb::hash_password(&ctx, nullptr), "");
    EXPECT_STREQ(qb::hash_password(&ctx, ""), "");
}

TEST_F(Hash, IsWhatTheSystemLibraryMakesOfTheSalt)
{
    for (const std::string password : {"x", "secret", "●●●●●●●●", "o'brien \" %s", "$1$"}) {
        const std::string made = hash(password);
        EXPECT_THAT(made, MatchesRegex("\\$1\\$[a-zA-Z0-9./]{8}\\$[a-zA-Z0-9./]{22}"));
        EXPECT_EQ(made, crypt_of(password, made.substr(0, 12))) << password;
        EXPECT_NE(made, crypt_of(password + "x", made.substr(0, 12))) << password;
    }
}

TEST_F(Hash, SaltsTakeTheLowBitFieldsOfTwoRandomNumbersInOrder)
{
    const auto number = [](uint32_t a, uint32_t b, uint32_t c, uint32_t d) { return a | b << 6 | c << 12 | d << 18; };
    next_random = {number(0, 1, 25, 26) | 0xFF000000u, number(51, 52, 61, 63)};
    EXPECT_EQ(hash("secret").substr(0, 12), "$1$abzAZ09/$");
    EXPECT_TRUE(next_random.empty());
    next_random = {number(62, 62, 62, 62), number(63, 0, 63, 0) | 0xA5000000u};
    EXPECT_EQ(hash("secret"), crypt_of("secret", "$1$..../a/a$"));
}

TEST_F(Hash, SaltsUseTheWholeAlphabetAndNothingElse)
{
    std::set<char> seen;
    std::set<std::string> salts;
    for (int i = 0; i < 250; i++) {
        const std::string salt = hash("x").substr(3, 8);
        seen.insert(salt.begin(), salt.end());
        salts.insert(salt);
    }
    EXPECT_EQ(seen, std::set<char>(kAlphabet, kAlphabet + 64));
    EXPECT_THAT(salts, SizeIs(250));  // of 2^48
}

TEST_F(Hash, TwoOfOnePasswordDifferAndBothVerify)
{
    const std::string one = hash("secret");
    const std::string two = hash("secret");
    EXPECT_NE(one.substr(0, 12), two.substr(0, 12));
    for (const std::string &each : {one, two}) {
        EXPECT_TRUE(qb::verify_password(&ctx, "secret", each.c_str()));
        EXPECT_FALSE(qb::verify_password(&ctx, "Secret", each.c_str()));
        EXPECT_FALSE(qb::verify_password(&ctx, "", each.c_str()));
    }
}

TEST_F(Hash, OfAPasswordThatTheSystemLibraryRefusesIsNone)
{
    EXPECT_THAT(hash(std::string(511, 'x')), SizeIs(34));
    EXPECT_EQ(qb::hash_password(&ctx, std::string(512, 'x').c_str()), nullptr);
}

TEST_F(Hash, CheckTellsNullFromEmpty)
{
    const char *out = "before";
    EXPECT_EQ(qb::check_password(&ctx, nullptr, &out), 1);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(qb::check_password(&ctx, "", &out), 0);
    EXPECT_STREQ(out, "");
    EXPECT_EQ(qb::check_password(&ctx, "secret", &out), 0);
    EXPECT_EQ(crypt_of("secret", out), out);
    EXPECT_EQ(qb::check_password(&ctx, std::string(512, 'x').c_str(), &out), 1);
    EXPECT_EQ(out, nullptr);
}

TEST_F(Hash, NothingMatchesWhatIsNoHash)
{
    const std::string locked = "!" + hash("secret");
    for (const char *stored :
         {static_cast<const char *>(nullptr), "", "*", "!", "*0", "*1", "secret", locked.c_str()}) {
        SCOPED_TRACE(stored ? stored : "null");
        for (const char *password : {"", "secret", "*", "*0", "*1", stored ? stored : "null"})
            EXPECT_FALSE(qb::verify_password(&ctx, password, stored)) << password;
    }
}

TEST_F(Hash, VerifiesHashesOfOtherKinds)
{
    const std::string sha = crypt_of("secret", "$6$saltsalt$");
    ASSERT_EQ(sha.substr(0, 3), "$6$");
    EXPECT_TRUE(qb::verify_password(&ctx, "secret", sha.c_str()));
    EXPECT_FALSE(qb::verify_password(&ctx, "other", sha.c_str()));
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
