// The C++ wrapper: who owns what, results, lists, optional fields, and what the compiler says of a wrong call.
#include <algorithm>
#include <numeric>

#include "fixture/files.h"
#include "fixture/fixture.h"
#include "qbobj.hpp"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// ---- Kinds, as the compiler sees them

static_assert(std::ranges::forward_range<qb::List<User>> && std::ranges::view<qb::List<User>>);
static_assert(std::ranges::borrowed_range<qb::List<const User>>);
static_assert(std::ranges::random_access_range<decltype(qb::operations())>);
static_assert(std::movable<qb::Database> && !std::copyable<qb::Database>);
static_assert(std::movable<qb::Request> && !std::copyable<qb::Request>);

template <auto Operation, class... Given>
using ResultOf = decltype(qb::call<Operation>(std::declval<const qb::Database &>(), std::declval<Given>()...));

static_assert(std::same_as<ResultOf<qbobj_truncateLog, int>, qb::Result<void>>);
static_assert(std::same_as<ResultOf<qbobj_getUID, const char *>, qb::Result<int32_t>>);
static_assert(std::same_as<ResultOf<qbobj_getPosixUID, std::string>, qb::Result<int32_t>>);
static_assert(std::same_as<ResultOf<qbobj_getUserName, int>, qb::Result<const char *>>);
static_assert(std::same_as<ResultOf<qbobj_isMemberOfGroup, const char *, const char *>, qb::Result<bool>>);
static_assert(std::same_as<ResultOf<qbobj_hasBackupJob, int>, qb::Result<bool>>);
static_assert(std::same_as<ResultOf<qbobj_getUser, User>, qb::Result<User>>);
static_assert(std::same_as<ResultOf<qbobj_getUser, User *>, qb::Result<void>>);
static_assert(std::same_as<ResultOf<qbobj_getUserHomeFolderTotalConsumedInByte>, qb::Result<uint64_t>>);
static_assert(std::same_as<ResultOf<qbobj_getDictionary, std::nullptr_t>, qb::Result<qb::Xml>>);
static_assert(
    std::same_as<ResultOf<qbobj_getLog, LogQuery>, qb::Result<std::tuple<qb::List<LogEntry>, int32_t, int32_t>>>);

struct Wrapper : testing::Test {
    test::TemporaryDirectory directory;
    std::string path = directory.path + "/appliance.db";
    qb::Database db = qb::Database::open(path, qb::Open::create, "tank").value();

    Wrapper()
    {
        qbdb_set_log_hook(
            db.handle(), [](void *, const char *, uint32_t, uint32_t, uint32_t, const char *) {}, nullptr);
    }

    qb::Result<User> add(const std::string &name) const
    {
        auto user = qb::absent<User>();
        user.UserName = name.c_str();
        user.GroupName = "users";
        user.Password = "secret";
        return qb::call<qbobj_addUser>(db, user);
    }
    std::vector<std::string> names() const
    {
        std::vector<std::string> all;
        const auto users = qb::call<qbobj_getUserCollection>(db, nullptr, 0).value();
        for (const User &user : qb::List(users.User)) all.emplace_back(user.UserName);
        return all;
    }
};

// ---- Lifetime

TEST_F(Wrapper, TellsWhyADatabaseCannotBeOpened)
{
    const auto missing = qb::Database::open(directory.path + "/none.db");
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().code, SQLITE_CANTOPEN);
    EXPECT_STREQ(missing.error().operation, "qbdb_open");
    EXPECT_STREQ(missing.error().meaning, sqlite3_errstr(SQLITE_CANTOPEN));
    EXPECT_NE(missing.error().message, "");
}

TEST_F(Wrapper, DatabaseMovesWithItsRequest)
{
    ASSERT_TRUE(add("anna"));
    auto request = db.request().value();
    qb::Database moved = std::move(db);
    ASSERT_TRUE(qb::call<qbobj_getUID>(moved, "anna"));
    db = std::move(moved);
    EXPECT_THAT(names(), ElementsAre("anna"));
    qb::Request other = std::move(request);
    EXPECT_NE(db.handle()->request_pool, nullptr);
    EXPECT_TRUE(other.restart());
    other.finish();
    EXPECT_EQ(db.handle()->request_pool, nullptr);
    EXPECT_FALSE(other.restart());
}

TEST_F(Wrapper, OneRequestAtATime)
{
    auto request = db.request();
    ASSERT_TRUE(request);
    const auto second = db.request();
    ASSERT_FALSE(second);
    EXPECT_EQ(second.error().code, SQLITE_MISUSE);
    request->finish();
    EXPECT_TRUE(db.request());
}

TEST_F(Wrapper, RequestKeepsTheHandleOpen)
{
    auto request = [](const std::string &file) { return qb::Database::open(file).value().request().value(); }(path);
    EXPECT_TRUE(request.restart());
}

TEST_F(Wrapper, ErrorOutlivesTheDatabase)
{
    const auto result = [](const std::string &file) {
        const auto other = qb::Database::open(file).value();
        const auto request = other.request().value();
        other.handle()->log_level = 0;
        return qb::call<qbobj_addLog>(other, 0, "loud", nullptr, nullptr, nullptr);
    }(path);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().text(), "qbobj_addLog: 8 Specified Severity (loud) is invalid.");
}

TEST_F(Wrapper, MovedFromDatabaseEndsTheProgram)
{
    const qb::Database moved = std::move(db);
    EXPECT_DEATH((void)db.handle(), "moved away");  // NOLINT(bugprone-use-after-move)
    db = qb::Database::open(path).value();
}

// ---- Errors

TEST_F(Wrapper, ErrorHasCodeMeaningMessageAndPlace)
{
    ASSERT_TRUE(add("anna"));
    const auto again = add("anna");
    ASSERT_FALSE(again);
    EXPECT_EQ(again.error().code, 801);
    EXPECT_STREQ(again.error().meaning, "the user name is taken");
    EXPECT_EQ(again.error().message, "User (anna) already exists.");
    EXPECT_THAT(again.error().file, HasSubstr("add_user"));
    EXPECT_GT(again.error().line, 0U);
    EXPECT_STREQ(again.error().operation, "qbobj_addUser");
}

TEST_F(Wrapper, NotFoundIsMinusOne)
{
    const auto id = qb::call<qbobj_getUID>(db, "nobody there");
    ASSERT_FALSE(id);
    EXPECT_EQ(id.error().code, -1);
    EXPECT_EQ(id.error().text(), "qbobj_getUID: not found, or the look-up failed");
}

TEST_F(Wrapper, LockedDatabaseIsNamed)
{
    db.set_timeout(std::chrono::milliseconds(1));
    sqlite3 *other = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    const auto result = qb::call<qbobj_truncateLog>(db, 0);
    sqlite3_close(other);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().code, SQLITE_BUSY);
    EXPECT_EQ(result.error().message, "database is locked");
    EXPECT_EQ(result.error().file, nullptr);
}

TEST_F(Wrapper, ChangeThatCouldNotBeStoredIsAnError)
{
    const auto refuse = [](void *) { return 1; };
    sqlite3_commit_hook(db.connection(), refuse, nullptr);
    const auto result = add("anna");
    sqlite3_commit_hook(db.connection(), nullptr, nullptr);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().message, "the change could not be stored; the database is as it was");
    EXPECT_THAT(names(), ElementsAre());
}

TEST_F(Wrapper, TrialIsTakenBack)
{
    {
        const auto trial = db.trial();
        ASSERT_TRUE(trial);
        EXPECT_EQ(db.trial().error().code, SQLITE_MISUSE);
        EXPECT_TRUE(add("anna"));
        EXPECT_THAT(names(), ElementsAre());
    }
    EXPECT_TRUE(add("anna"));
    EXPECT_THAT(names(), ElementsAre("anna"));
}

TEST_F(Wrapper, SuccessMayComeWithAWarning)
{
    const auto result = qb::call<qbobj_setDiskSpare>(db, nullptr, 1);
    ASSERT_TRUE(result);
    ASSERT_NE(result.warning(), nullptr);
    EXPECT_EQ(result.warning()->code, 8);
    EXPECT_EQ(qb::call<qbobj_truncateLog>(db, 5).warning(), nullptr);
}

// ---- Results

TEST_F(Wrapper, ResultGoesOn)
{
    ASSERT_TRUE(add("anna"));
    const auto name = qb::call<qbobj_getUID>(db, "anna")
                          .and_then([&](int32_t id) { return qb::call<qbobj_getUserName>(db, id); })
                          .transform([](const char *text) { return std::string(text) + "!"; });
    EXPECT_EQ(name.value_or("nobody"), "anna!");
    bool asked = false;
    const auto none = qb::call<qbobj_getUID>(db, "bert").and_then([&](int32_t) {
        asked = true;
        return qb::Result<void>();
    });
    EXPECT_FALSE(none);
    EXPECT_FALSE(asked);
    EXPECT_EQ(none.error().code, -1);
    const auto rescued = qb::call<qbobj_getUID>(db, "bert").or_else([](const qb::Error &error) {
        return error.code == -1 ? qb::Result<int32_t>(0) : qb::Result<int32_t>(error);
    });
    EXPECT_EQ(*rescued, 0);
    EXPECT_EQ(qb::call<qbobj_getUID>(db, "bert").value_or(-7), -7);
    int touched = 0;
    EXPECT_TRUE(qb::call<qbobj_truncateLog>(db, 5).transform([&] { touched++; }));
    EXPECT_EQ(touched, 1);
}

TEST_F(Wrapper, ValueOfAFailureThrows)
{
    try {
        (void)qb::call<qbobj_getUID>(db, "bert").value();
        FAIL();
    } catch (const qb::BadResult &bad) {
        EXPECT_EQ(bad.error().code, -1);
        EXPECT_THAT(bad.what(), HasSubstr("qbobj_getUID"));
    }
    const qb::Result<void> fine;
    EXPECT_DEATH((void)fine.error(), "has no error");
}

TEST(Result, HoldsWhatCanOnlyBeMoved)
{
    qb::Result<std::unique_ptr<int>> result(std::make_unique<int>(7));
    EXPECT_EQ(**result, 7);
    const std::unique_ptr<int> taken = std::move(result).value();
    EXPECT_EQ(*taken, 7);
    EXPECT_EQ(qb::Result<int>(qb::Error{.code = 6}).value_or(3), 3);
}

// ---- What is given

TEST_F(Wrapper, TextsOfAnyKind)
{
    ASSERT_TRUE(add("anna"));
    const std::string text = "anna and more";
    const int32_t id = qb::call<qbobj_getUID>(db, "anna").value();
    EXPECT_EQ(qb::call<qbobj_getUID>(db, text.substr(0, 4)).value(), id);
    EXPECT_EQ(qb::call<qbobj_getUID>(db, std::string_view(text).substr(0, 4)).value(), id);
    EXPECT_EQ(qb::call<qbobj_getUID>(db, std::optional<std::string>("anna")).value(), id);
    const int32_t guest = qb::call<qbobj_getUID>(db, nullptr).value();
    EXPECT_EQ(qb::call<qbobj_getUID>(db, std::nullopt).value(), guest);
    EXPECT_EQ(qb::call<qbobj_getUID>(db, std::optional<std::string>()).value(), guest);
    EXPECT_EQ(qb::call<qbobj_getUID>(db.handle(), db.connection(), "anna").value(), id);
}

TEST_F(Wrapper, TextWithANulIsNotCutShort)
{
    ASSERT_TRUE(add("anna"));
    using namespace std::string_view_literals;
    const auto result = qb::call<qbobj_getUID>(db, "anna\0x"sv);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().code, 8);
    EXPECT_EQ(result.error().message, "a text holds a NUL character");
}

TEST_F(Wrapper, RecordGivenByPointerIsCompletedInItsPlace)
{
    std::vector<User> users(3, qb::absent<User>());
    const std::vector<std::string> wanted = {"anna", "bert", "carl"};
    for (size_t i = 0; i < users.size(); i++) {
        users[i].UserName = wanted[i].c_str();
        users[i].GroupName = "users";
        users[i].Password = "secret";
    }
    ASSERT_TRUE(qb::call<qbobj_addUser>(db, qb::chain(users)));
    EXPECT_GT(users[2].UserId, users[0].UserId);
    EXPECT_EQ(names(), wanted);
    EXPECT_EQ(qb::chain(std::span<User>()), nullptr);
    EXPECT_TRUE(qb::call<qbobj_addUser>(db, nullptr));
}

TEST_F(Wrapper, RecordGivenIsCopied)
{
    ASSERT_TRUE(add("anna"));
    User asked{};
    asked.UserId = qb::call<qbobj_getUID>(db, "anna").value();
    const User user = qb::call<qbobj_getUser>(db, asked).value();
    EXPECT_STREQ(user.UserName, "anna");
    EXPECT_EQ(asked.UserName, nullptr);
}

// ---- Lists, optional fields, tables

TEST_F(Wrapper, ListsAreRanges)
{
    for (int i = 0; i < 5; i++)
        ASSERT_TRUE(qb::call<qbobj_addLog>(db, 100 + i, i % 2 ? "err" : "info", nullptr, "LOGMSG_HELLO", nullptr));
    const auto [entries, count, total] = qb::call<qbobj_getLog>(db, nullptr).value();
    EXPECT_EQ(count, 5);
    EXPECT_EQ(total, 5);
    EXPECT_EQ(std::ranges::distance(entries), 5);
    EXPECT_EQ(std::ranges::count_if(entries, [](const LogEntry &entry) { return qb::text(entry.Severity) == "err"; }),
              2);
    EXPECT_EQ(std::ranges::max(entries, {}, &LogEntry::TimeStamp).TimeStamp, 104);
    EXPECT_EQ(entries.front().TimeStamp, 100);
    EXPECT_TRUE(qb::List<LogEntry>().empty());
    EXPECT_EQ(qb::text(nullptr), "");
}

TEST(OptionalField, IsAbsentOrHasAValue)
{
    Share zero{};
    EXPECT_EQ(qb::maybe(std::as_const(zero).QuotaMB, std::as_const(zero).QuotaMB_void), uint64_t{0});
    auto share = qb::absent<Share>();
    const auto quota = qb::maybe(share.QuotaMB, share.QuotaMB_void);
    EXPECT_FALSE(quota);
    EXPECT_EQ(quota.value_or(9), 9U);
    quota = 500;
    EXPECT_EQ(share.QuotaMB, 500U);
    EXPECT_EQ(share.QuotaMB_void, 0);
    EXPECT_EQ(quota.get(), 500U);
    quota.reset();
    EXPECT_EQ(quota.get(), std::nullopt);
    EXPECT_EQ(qb::maybe(std::as_const(share).QuotaMB, std::as_const(share).QuotaMB_void), std::nullopt);
}

/// The indicators that the field tables tell of, in a record.
template <class T>
int indicators(const T &record, int &numbers)
{
    int set = 0;
    for (const QbobjField &field : qb::fields<T>()) {
        if (!(field.flags & QBOBJ_FIELD_OPTIONAL) || field.kind == 's' || field.kind == 'o') continue;
        numbers++;
        int32_t indicator = 0;
        const size_t size = field.kind == 'l' || field.kind == 'n' ? 8 : 4;
        memcpy(&indicator, reinterpret_cast<const char *>(&record) + field.position - size, sizeof indicator);
        set += indicator != 0;
    }
    return set;
}

TEST(OptionalField, AbsentRecordHasNoneOfThem)
{
    int numbers = 0;
#define TEST_ABSENT(T)                                    \
    {                                                     \
        int own = 0;                                      \
        EXPECT_EQ(indicators(qb::absent<T>(), own), own); \
        numbers += own;                                   \
    }
    QBOBJ_FOR_EACH_TYPE(TEST_ABSENT)
#undef TEST_ABSENT
    EXPECT_GT(numbers, 20);
    auto volume = qb::absent<AfpShareOption>();
    EXPECT_EQ(volume.AllowGuestAccess_void, 1);
}

TEST(Tables, AreArrays)
{
    EXPECT_EQ(qb::types().size(), 110U);
    EXPECT_STREQ(qb::types()[0].name, "SshPublicKey");
    EXPECT_EQ(qb::codes()[0].code, 1U);
    const QbobjField *security = qbobj_find_type("Security");
    EXPECT_THAT(qb::words(security, security + 1), testing::Contains(testing::StrEq("ads")));
    EXPECT_TRUE(qb::words(security, security + 2).empty());
    EXPECT_STREQ(qb::fields<Quota>().back().name, "UsedMB");
}

// ---- The compiler

struct Fault {
    const char *code;
    const char *message;
};

TEST(Compiler, SaysWhatIsWrongWithACall)
{
    // One program for all, each fault in a function of its own.
    const Fault faults[] = {
        {"qb::call<qbobj_getUser>(db)", "give a value for each argument"},
        {"qb::call<qbobj_getUID>(db, \"a\", 1)", "give a value for each argument"},
        {"qb::call<qbobj_truncateLog>(db, \"all\")", "this argument is a number"},
        {"qb::call<qbobj_truncateLog>(db, int64_t{5})", "this argument is a number"},
        {"qb::call<qbobj_truncateLog>(db, nullptr)", "must not be null"},
        {"qb::call<qbobj_getUID>(db, 5)", "this argument is a text"},
        {"qb::call<qbobj_getUser>(db, Group{})", "this argument is a record"},
        {"qb::call<qbobj_types>(db)", "none of the library's operations"},
    };
    std::string code = "#include \"qbobj.hpp\"\n";
    int number = 0;
    for (const Fault &fault : faults)
        code += "void f" + std::to_string(++number) + "(const qb::Database &db) { (void)" + fault.code + "; }\n";
    const auto outcome = test::compile(test::cxx_compiler(), "c++", "-std=c++20 -fmax-errors=0", code);
    EXPECT_NE(outcome.status, 0);
    for (const Fault &fault : faults) EXPECT_THAT(outcome.output, HasSubstr(fault.message)) << fault.code;
    EXPECT_THAT(outcome.output, HasSubstr("none of the library's operations"));
}

TEST(Compiler, WarnsOfNothing)
{
    const std::string example = test::read_file(test::source_path("examples/users.cpp"));
    const std::string flags =
        "-Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast -Werror ";
    int compiled = 0;
    for (const std::string compiler : {"g++", "clang++"}) {
        if (test::run("command -v " + compiler).status != 0) continue;
        for (const std::string more : {"-std=c++20", "-std=c++20 -fno-exceptions -fno-rtti"}) {
            const auto outcome = test::compile(compiler, "c++", flags + more, example);
            EXPECT_EQ(outcome.status, 0) << compiler << " " << more << ":\n" << outcome.output;
            compiled++;
        }
    }
    EXPECT_GT(compiled, 0);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
