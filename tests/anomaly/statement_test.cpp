// Every statement of every operation fails, one at a time.
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "anomaly/anomaly.h"

extern "C" uint32_t __wrap_qbdb_rand(void)
{
    return 4;
}

using namespace test;

namespace {

std::string golden_of(const Family &family)
{
    return source_path(std::string("tests/anomaly/failures/") + family.name + ".txt");
}

/// A statement without its values.
std::string shape(const std::string &sql)
{
    std::string text;
    for (size_t i = 0; i < sql.size(); i++) {
        const char c = sql[i];
        if (c == '\'') {
            for (i++; i < sql.size() && (sql[i] != '\'' || sql[i + 1] == '\''); i++) i += sql[i] == '\'';
            text += "'…'";
        } else if (c == '\n') {
            text += ' ';
        } else {
            text += c;
        }
    }
    return text;
}

std::string result(const Outcome &outcome)
{
    const bool number = outcome.rc < 0x80000000;
    std::string text = (number ? std::to_string(outcome.rc) : std::to_string(static_cast<int32_t>(outcome.rc)));
    if (outcome.code) text += outcome.code == outcome.rc ? "" : " (error " + std::to_string(outcome.code) + ")";
    text += outcome.message.empty() ? "" : " \"" + outcome.message + "\"";
    return text;
}

struct Statements : Anomaly, testing::WithParamInterface<const Family *> {
    std::string table;

    Statements() : Anomaly(*GetParam()) {}

    /// What the operation's row says of a call that lost a statement.
    void check(const Trial &setup, const Outcome &outcome, const Outcome &reference, int n, int rc)
    {
        const QbobjOperation &operation = operation_of(setup);
        const bool began = n > 1;
        if (reference.statements[static_cast<size_t>(n - 1)] == "COMMIT") {
            EXPECT_EQ(outcome.rc, after_refused_commit(setup, rc));
            EXPECT_EQ(outcome.code, 0u);
            return;
        }
        EXPECT_FALSE(outcome.rc != 0 && outcome.wrote_outputs && !is_listed(family.left_outputs, setup));
        if (outcome.rc == reference.rc && outcome.committing) return;  // went on without it; the table shows it
        if (operation.returns != QBOBJ_RETURNS_CODE) {
            EXPECT_EQ(outcome.code, 0u);
            EXPECT_EQ(outcome.message, "");
            return;
        }
        if (!began) {
            EXPECT_EQ(outcome.rc, static_cast<uint32_t>(SQLITE_BUSY));
            EXPECT_EQ(outcome.code, 0u);
            return;
        }
        if (outcome.rc == 0) return;
        EXPECT_TRUE(documents(operation, outcome.rc)) << "the operation does not document " << outcome.rc;
        if (is_listed(family.silent, setup)) return;
        EXPECT_EQ(outcome.code, outcome.rc);
        EXPECT_NE(outcome.message, "");
    }

    void fail_one(const Trial &setup, const Outcome &reference, int n)
    {
        const std::string &statement = reference.statements[static_cast<size_t>(n - 1)];
        SCOPED_TRACE(name_of(setup) + ", statement " + std::to_string(n) + ": " + statement);
        std::string first;
        for (const int rc : {SQLITE_ERROR, SQLITE_CONSTRAINT}) {
            const Outcome outcome = run(setup, n, n == 1 ? SQLITE_BUSY : rc);
            EXPECT_EQ(image_of(db), before);
            check(setup, outcome, reference, n, rc);
            std::string line = result(outcome);
            if (outcome.rc == reference.rc && outcome.committing)
                line += outcome.stored == reference.stored ? " [goes on, stores all]"
                        : outcome.stored == before         ? " [goes on, stores nothing]"
                                                           : " [goes on, stores the rest]";
            if (outcome.rc != 0 && outcome.wrote_outputs) line += " [outputs written]";
            if (line != first)
                table += (first.empty() ? "  " + std::to_string(n) + " " + shape(statement) + "\n" : "") +
                         (first.empty() ? "      " : "      constraint: ") + line + "\n";
            if (first.empty()) first = line;
            expect_next_call_works(setup, reference);
        }
        failed++;
    }

    void expect_next_call_works(const Trial &setup, const Outcome &reference)
    {
        const Outcome next = run(setup);
        EXPECT_EQ(next.rc, reference.rc) << next.message;
        EXPECT_EQ(next.outputs, reference.outputs);
        EXPECT_EQ(next.statements, reference.statements);
        EXPECT_TRUE(next.stored == reference.stored);
    }

    size_t failed = 0;
};

TEST_P(Statements, EachFails)
{
    for (const Trial &setup : family.trials) {
        SCOPED_TRACE(name_of(setup));
        begin(setup);
        const Outcome reference = run(setup);
        EXPECT_EQ(reference.rc, after_refused_commit(setup, SQLITE_FULL)) << reference.message;
        table += name_of(setup) + " = " + result(reference) + "\n";
        for (int n = 1; n <= static_cast<int>(reference.statements.size()); n++) fail_one(setup, reference, n);
    }
    printf("%zu statements of %zu calls failed\n", failed, family.trials.size());
    if (getenv("QBOBJ_UPDATE_GOLDEN")) std::ofstream(golden_of(family)) << table;
    std::ifstream file(golden_of(family));
    std::stringstream golden;
    golden << file.rdbuf();
    EXPECT_EQ(table, golden.str()) << "when the change is meant, run again with QBOBJ_UPDATE_GOLDEN=1";
}

INSTANTIATE_TEST_SUITE_P(, Statements, testing::ValuesIn(families()), name_of_family);

/// A family's calls on a connection that keeps every statement.
struct Kept : Anomaly {
    explicit Kept(const Family &tested) : Anomaly(tested) { qbdb_set_statement_cache(qbdb, 1 << 20); }
    void TestBody() override {}

    /// Bytes that each kept statement takes, by its text.
    void add_to(std::map<std::string, int> *statements) const
    {
        for (sqlite3_stmt *each = sqlite3_next_stmt(db, nullptr); each; each = sqlite3_next_stmt(db, each))
            (*statements)[sqlite3_sql(each)] = sqlite3_stmt_status(each, SQLITE_STMTSTATUS_MEMUSED, 0);
    }
};

TEST(StatementCache, HoldsWhatAllOperationsUse)
{
    std::map<std::string, int> statements;
    for (const Family &family : kFamilies) {
        Kept kept(family);
        for (const Trial &setup : family.trials) {
            kept.begin(setup);
            kept.run(setup);
        }
        kept.add_to(&statements);
    }
    long bytes = 0;
    for (const auto &[text, size] : statements) bytes += size + static_cast<long>(text.size());
    printf("%zu statements, %ld KiB\n", statements.size(), bytes / 1024);
    EXPECT_GT(statements.size(), 400u);
    EXPECT_LT(statements.size(), size_t{QBDB_DEFAULT_STATEMENTS});
}

TEST(Trials, EveryOperationHasOne)
{
    std::set<const QbobjOperation *> called;
    for (const Family &family : kFamilies)
        for (const Trial &setup : family.trials) called.insert(qbobj_find_operation(setup.operation));
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++)
        EXPECT_TRUE(called.contains(row)) << row->name;
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
