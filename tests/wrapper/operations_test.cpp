// Every operation through the wrapper: the list of operations equals the table, each one can be called, and says and
// returns what it does by the table.
#include <sstream>

#include "fixture/files.h"
#include "fixture/fixture.h"
#include "qbobj.hpp"

namespace {

// ---- The list

std::string line_of(const QbobjOperation &row)
{
    static constexpr const char *kReturns[] = {"CODE", "FOUND", "ID", "COUNT", "ANSWER", "TRUTH"};
    static constexpr const char *kDirections[] = {"in", "out", "inout"};
    std::string ways;
    for (uint32_t i = 0; i < row.count; i++) {
        if (i > 0) ways += " ";
        ways += kDirections[row.arguments[i].direction];
        if (row.arguments[i].optional) ways += "?";
    }
    return std::string("    X(") + row.name + ", " + kReturns[row.returns] + ", " +
           (row.changes ? "CHANGES" : "READS") + ", \"" + ways + "\")";
}

TEST(Operations, ListEqualsTheTable)
{
    static const std::string kFile = "include/qbobj/operations.h";
    static const std::string kDefine = "#define QBOBJ_FOR_EACH_OPERATION(X)";
    std::vector<std::string> lines = {kDefine};
    for (const QbobjOperation &row : qb::operations()) lines.push_back(line_of(row));
    size_t width = 0;
    for (const std::string &line : lines) width = std::max(width, line.size());
    std::string text;
    for (std::string &line : lines) {
        const bool last = &line == &lines.back();
        text += line + (last ? "\n" : std::string(width - line.size(), ' ') + " \\\n");
    }
    const std::string before = test::read_file(test::source_path(kFile));
    test::expect_golden(kFile, before.substr(0, before.find(kDefine)) + text + before.substr(before.find("\n#endif")));
}

// ---- Calls

/// What is given for an argument of a type, when nothing in particular is meant.
template <class P>
struct Usual {
    using Given = std::remove_pointer_t<P>;
    static Given value() { return Given{}; }
    static QbobjValue raw(Given &record) { return {.p = &record}; }
};
template <>
struct Usual<int32_t> {
    using Given = int32_t;
    static Given value() { return 1; }
    static QbobjValue raw(Given &number) { return {.i = number}; }
};
template <>
struct Usual<uint64_t> {
    using Given = uint64_t;
    static Given value() { return 1; }
    static QbobjValue raw(Given &number) { return {.n = number}; }
};
template <>
struct Usual<const char *> {
    using Given = std::string;
    static Given value() { return "tank"; }
    static QbobjValue raw(Given &text) { return {.s = text.c_str()}; }
};

/// Memory for what an operation fills: zero, and large enough for any record.
struct Space {
    alignas(16) std::array<char, 1024> bytes{};
};

/// Frees what an argument of a type was filled with, where it is not the pool's.
template <class P>
void free_tree(const Space &space)
{
    if constexpr (std::is_same_v<P, _xmlNode **>) {
        _xmlNode *root = nullptr;
        memcpy(&root, space.bytes.data(), sizeof root);
        xmlFreeNode(root);
    }
}

/// A call by the table and the same one by the wrapper, each on trial.
template <auto Operation>
struct Twice {
    using Signature = qb::detail::Signature<decltype(Operation)>;
    static constexpr const qb::detail::Described &kRow = qb::detail::described<Operation>;

    template <size_t I>
    static auto given()
    {
        if constexpr (kRow.ways[I].direction == qb::detail::Direction::out) return std::tuple<>();
        else return std::tuple(Usual<typename Signature::template Type<I>>::value());
    }

    template <size_t I, class Values>
    static QbobjValue raw(Values &values, Space &space)
    {
        if constexpr (kRow.ways[I].direction == qb::detail::Direction::out) return {.p = space.bytes.data()};
        else return Usual<typename Signature::template Type<I>>::raw(std::get<kRow.given(I)>(values));
    }

    template <size_t... I>
    static void run(const qb::Database &db, std::index_sequence<I...>)
    {
        const QbobjOperation *row = qbobj_find_operation(kRow.name);
        ASSERT_NE(row, nullptr);
        [[maybe_unused]] auto values = std::tuple_cat(given<I>()...);
        std::array<Space, sizeof...(I) + 1> spaces;
        const std::array<QbobjValue, sizeof...(I) + 1> raws = {raw<I>(values, spaces[I])...};
        ErrorInfo err{};
        uint32_t returned = 0;
        {
            const auto trial = db.trial();
            returned = row->call(db.handle(), db.connection(), raws.data(), &err);
        }
        (free_tree<typename Signature::template Type<I>>(spaces[I]), ...);
        const auto trial = db.trial();
        const auto result =
            std::apply([&](auto &&...each) { return qb::call<Operation>(db, each...); }, std::tuple_cat(given<I>()...));
        judge(returned, err, result);
    }

    template <class R>
    static void judge(uint32_t returned, const ErrorInfo &err, const R &result)
    {
        const bool code = kRow.returns == QBOBJ_RETURNS_CODE;
        const bool failed = code ? returned != 0 : kRow.returns == QBOBJ_RETURNS_TRUTH ? false : returned == 0xFFFFFFFF;
        ASSERT_EQ(result.has_value(), !failed) << err.code << " " << (err.message ? err.message : "");
        const qb::Error *said = failed ? &result.error() : result.warning();
        ASSERT_EQ(said != nullptr, failed || err.code != 0);
        if (!said) return;
        EXPECT_EQ(static_cast<uint32_t>(said->code), err.code != 0 ? err.code : returned);
        if (err.code != 0) {
            EXPECT_EQ(said->message, err.message ? err.message : "");
            EXPECT_STREQ(said->file, err.file);
            EXPECT_EQ(said->line, err.line);
        }
        EXPECT_STREQ(said->operation, kRow.name);
        EXPECT_STRNE(said->meaning, "");
    }
};

template <auto Operation>
void call_twice(const qb::Database &db)
{
    SCOPED_TRACE(qb::detail::described<Operation>.name);
    Twice<Operation>::run(db, std::make_index_sequence<Twice<Operation>::kRow.count>{});
}

using CallTwice = void (*)(const qb::Database &);
constexpr CallTwice kAll[] = {
#define TEST_CALL(function, returns, access, ways) call_twice<function>,
    QBOBJ_FOR_EACH_OPERATION(TEST_CALL)
#undef TEST_CALL
};

TEST(Operations, EachIsCalledAndTellsWhatTheTableTells)
{
    ASSERT_EQ(std::size(kAll), qb::operations().size());
    const test::TemporaryDirectory directory;
    const auto db = qb::Database::open(directory.path + "/appliance.db", qb::Open::create, "tank");
    ASSERT_TRUE(db);
    qbdb_import_options root{};
    root.root = directory.path.c_str();
    ASSERT_EQ(qbdb_set_import_options(db->handle(), &root), 0);
    qbdb_set_log_hook(
        db->handle(), [](void *, const char *, uint32_t, uint32_t, uint32_t, const char *) {}, nullptr);
    for (const CallTwice each : kAll) each(*db);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
