// What must not compile does not, and for the reason meant: field tables that disagree with their structure,
// statements and messages whose arguments do not fit their format, rows that do not name their arguments.
#include "fixture/files.h"
#include "fixture/fixture.h"

using testing::HasSubstr;

namespace {

struct Case {
    const char *name;
    const char *code;
    const char *complaint;  // null: it compiles
};

void PrintTo(const Case &each, std::ostream *out)
{
    *out << each.name;
}

struct Compile : testing::TestWithParam<Case> {};

constexpr char kTables[] = "#include \"frame/field_table.h\"\n";
constexpr char kQueries[] =
    "#include \"frame/set_list.h\"\n"
    "using namespace qb;\n"
    "void use(CallContext *ctx, sqlite3 *db, int32_t i, uint64_t n, const char *s) {\n"
    "Rows rows; (void)ctx; (void)db; (void)i; (void)n; (void)s; (void)rows;\n";
constexpr char kReadRow[] =
    "#include \"qbobj.h\"\n#include \"frame/read_row.h\"\n"
    "using namespace qb;\n"
    "void use(CallContext *ctx, const Rows &rows, Share *share, double d, char *t) {\n"
    "(void)d; (void)t;\n";
constexpr char kWorkers[] =
    "#include \"qbobj.h\"\n#include \"frame/worker.h\"\nusing namespace qb;\n";
constexpr char kRows[] = "#include \"api/operation.h\"\nusing namespace qb;\nconstexpr QbobjOperation row =\n";

const Case kFieldTables[] = {
    {"Right", "QB_RECORD(Host, QBOBJ_TYPE_ROW_ID, F(resource_id), F(HostId), F(HostName))", nullptr},
    {"MissingFirst", "QB_RECORD(Host, QBOBJ_TYPE_ROW_ID, F(HostId), F(HostName))", "does not match its structure"},
    {"MissingMiddle", "QB_RECORD(Host, QBOBJ_TYPE_ROW_ID, F(resource_id), F(HostName))",
     "does not match its structure"},
    {"MissingLast", "QB_RECORD(Host, QBOBJ_TYPE_ROW_ID, F(resource_id), F(HostId))", "does not match its structure"},
    // The hole that alignment would leave anyway: only the number of members tells.
    {"MissingInAHole", "QB_RECORD(PosixAcl, 0, F(Type), F(Tag), F(Perm), F(Name))", "does not match its structure"},
    {"MissingAtAHollowEnd", "QB_RECORD(UserCollection, 0, LIST(User), F(Entries))", "does not match its structure"},
    {"WrongOrder", "QB_RECORD(Host, QBOBJ_TYPE_ROW_ID, F(HostId), F(resource_id), F(HostName))",
     "does not match its structure"},
    {"WrongOrderOfTexts", "QB_RECORD(MyPassword, 0, F(UserName), F(NewPassword), F(OldPassword))",
     "does not match its structure"},
    {"Twice", "QB_RECORD(Host, QBOBJ_TYPE_ROW_ID, F(resource_id), F(HostId), F(HostId), F(HostName))",
     "does not match its structure"},
    {"NoSuchMember", "QB_RECORD(Host, QBOBJ_TYPE_ROW_ID, F(resource_id), F(HostId), F(HostNames))", "HostNames"},
    {"IndicatorForgotten",
     "QB_RECORD(HttpShareOption, 0, F(NotAvailable), F(Changed), F(DefaultAccess), F(HostAcl), F(UserAcl), "
     "F(GroupAcl), "
     "F(EnableWebDav))",
     "does not match its structure"},
    {"IndicatorRight",
     "QB_RECORD(HttpShareOption, 0, F(NotAvailable), F(Changed), F(DefaultAccess), F(HostAcl), F(UserAcl), "
     "F(GroupAcl), "
     "OPT(EnableWebDav))",
     nullptr},
    {"IndicatorThatIsNone", "QB_RECORD(Host, QBOBJ_TYPE_ROW_ID, F(resource_id), OPT(HostId), F(HostName))",
     "HostId_void"},
};

const Case kOwnStructures[] = {
    {"IndicatorBefore",
     "struct Odd { int32_t Value_void; int32_t Value; int32_t Other; };\n"
     "namespace qb { QB_RECORD(Odd, 0, OPT(Value), F(Other)) }",
     nullptr},
    {"IndicatorApart",
     "struct Odd { int32_t Value_void; int32_t Other; int32_t Value; };\n"
     "namespace qb { QB_RECORD(Odd, 0, F(Other), OPT(Value)) }",
     "null_indicator_out_of_place"},
    {"IndicatorBehind",
     "struct Odd { int32_t Value; int32_t Value_void; };\n"
     "namespace qb { QB_RECORD(Odd, 0, OPT(Value)) }",
     "null_indicator_out_of_place"},
    {"WideIndicatorInItsSlot",
     "struct Odd { QBOBJ_ALIGN8 int32_t Value_void; uint64_t Value; };\n"
     "namespace qb { QB_RECORD(Odd, 0, OPT(Value)) }",
     nullptr},
    {"WideIndicatorInTheUpperHalf",
     "struct Odd { int32_t Other; int32_t Value_void; uint64_t Value; };\n"
     "namespace qb { QB_RECORD(Odd, 0, F(Other), OPT(Value)) }",
     "null_indicator_out_of_place"},
    {"LinkNotFirst",
     "struct Odd { int32_t Value; struct Odd *next; };\n"
     "namespace qb { QB_RECORD(Odd, 0, F(Value)) }",
     "does not match its structure"},
    {"KeyNotSecond",
     "struct Odd { struct Odd *next; int32_t Value; const char *key; };\n"
     "namespace qb { QB_RECORD(Odd, 0, F(Value)) }",
     "does not match its structure"},
    {"OtherKinds",
     "struct Odd { double Value; };\n"
     "namespace qb { QB_RECORD(Odd, 0, F(Value)) }",
     "a field is a number, a constant text or a pointer to a record"},
    {"TextThatIsNotConstant",
     "struct Odd { char *Value; };\n"
     "namespace qb { QB_RECORD(Odd, 0, F(Value)) }",
     "a field is a number, a constant text or a pointer to a record"},
    {"PointerToNoRecord",
     "struct Odd { int32_t *Value; };\n"
     "namespace qb { QB_RECORD(Odd, 0, F(Value)) }",
     "a field is a number, a constant text or a pointer to a record"},
    {"PointerToARecord",
     "struct Odd { struct Host *Value; };\n"
     "namespace qb { QB_RECORD(Odd, 0, F(Value)) }",
     nullptr},
    {"RowIdNotFirst",
     "struct Odd { struct Odd *next; int32_t Id; int32_t resource_id; };\n"
     "namespace qb { QB_RECORD(Odd, QBOBJ_TYPE_ROW_ID, F(Id), F(resource_id)) }",
     "does not match its structure"},
    {"RowIdOfAnotherKind",
     "struct Odd { struct Odd *next; const char *resource_id; };\n"
     "namespace qb { QB_RECORD(Odd, QBOBJ_TYPE_ROW_ID, F(resource_id)) }",
     "does not match its structure"},
};

const Case kRowReads[] = {
    {"EachKind",
     "read_row(ctx, rows, 0, both(share->key, share->ShareId), empty(share->Comment), skip, share->VisibleSnapshot,\n"
     "optional(share->QuotaMB, share->QuotaMB_void));",
     nullptr},
    {"Fraction", "read_row(ctx, rows, 0, d);", "no matching function"},
    {"TextThatIsNotConstant", "read_row(ctx, rows, 0, t);", "no matching function"},
    {"SubRecord", "read_row(ctx, rows, 0, share->next);", "no matching function"},
    {"BothOfTwoTypes", "read_row(ctx, rows, 0, both(share->key, share->VisibleSnapshot));", "no matching function"},
};

const Case kWorkerTypes[] = {
    {"Right", "Worker<qbobj_addUser> worker; uint32_t worker(CallContext *, sqlite3 *, User *) { return 0; }", nullptr},
    {"WithAnAnswer",
     "Worker<qbobj_getUID, int32_t> worker; int32_t (*same)(CallContext *, sqlite3 *, const char *, int32_t *) = worker;",
     nullptr},
    {"OtherArguments", "Worker<qbobj_addUser> worker; uint32_t (*same)(CallContext *, sqlite3 *, Group *) = worker;",
     "invalid conversion"},
    {"OtherResult", "Worker<qbobj_addUser> worker; int32_t worker(CallContext *, sqlite3 *, User *) { return 0; }",
     "ambiguating new declaration"},
};

const Case kStatements[] = {
    {"Right", "(void)select(ctx, db, rows, \"SELECT %d,%lu,%Q,'%q',%s,%%\", i, n, s, s, s);", nullptr},
    {"TooFew", "(void)select(ctx, db, rows, \"SELECT %d,%Q\", i);", "format_mismatch"},
    {"TooMany", "(void)select(ctx, db, rows, \"SELECT %d\", i, s);", "format_mismatch"},
    {"NoneAtAll", "(void)execute(ctx, db, \"SELECT %d\");", "format_mismatch"},
    {"TextForNumber", "(void)execute(ctx, db, \"SELECT %d\", s);", "format_mismatch"},
    {"NumberForText", "(void)execute(ctx, db, \"SELECT %Q\", i);", "format_mismatch"},
    {"WideForNarrow", "(void)execute(ctx, db, \"SELECT %d\", n);", "format_mismatch"},
    {"NarrowForWide", "(void)execute(ctx, db, \"SELECT %lu\", i);", "format_mismatch"},
    {"Fraction", "(void)execute(ctx, db, \"SELECT %d\", 1.5);", "format_mismatch"},
    {"UnknownConversion", "(void)execute(ctx, db, \"SELECT %z\", s);", "format_mismatch"},
    {"WidthAndFlags", "(void)execute(ctx, db, \"SELECT %05d\", i);", "format_mismatch"},
    {"ThreeLongs", "(void)execute(ctx, db, \"SELECT %llld\", n);", "format_mismatch"},
    {"LonePercent", "(void)execute(ctx, db, \"SELECT 5 %\");", "format_mismatch"},
    {"FormatAtRunTime", "(void)execute(ctx, db, s);", "error"},
    {"Int32Mismatch", "int32_t v; (void)select_int32(ctx, db, v, \"SELECT %d\", s);", "format_mismatch"},
    {"TextMismatch", "const char *v; (void)select_text(ctx, db, v, \"SELECT %d\", s);", "format_mismatch"},
    {"FindMismatch", "int32_t v; bool f; (void)find_int32(ctx, db, v, f, \"SELECT %d\", s);", "format_mismatch"},
    {"Uint64Mismatch", "uint64_t v; (void)select_uint64(ctx, db, v, \"SELECT %d\", s);", "format_mismatch"},
    {"ItemRight", "SetList<512> set; set.add(\"a=%d\", i);", nullptr},
    {"ItemMismatch", "SetList<512> set; set.add(\"a=%d\", s);", "format_mismatch"},
    {"IgnoredFailure", "execute(ctx, db, \"DELETE FROM t\");", "nodiscard"},
    {"IgnoredReport", "execute(ctx, db, \"DELETE FROM t\").or_report(ctx, \"%s\");", "nodiscard"},
    {"FailureWords", "(void)execute(ctx, db, \"DELETE FROM t\").or_report(ctx, \"for '%s' %d. %s\", s, i);", nullptr},
    {"FailureWordsAlone", "(void)execute(ctx, db, \"DELETE FROM t\").or_report(ctx, 2, \"in '%s'\", s);", nullptr},
    {"FailureWordsTooMany", "(void)execute(ctx, db, \"DELETE FROM t\").or_report(ctx, \"%s %s\");", "format_mismatch"},
    {"FailureWordsTooFew", "(void)execute(ctx, db, \"DELETE FROM t\").or_report(ctx, \"none\", s);", "format_mismatch"},
    {"FailureWordsOtherKind", "(void)execute(ctx, db, \"DELETE FROM t\").or_report(ctx, \"%d %s\", s);", "format_mismatch"},
    {"FailureWordsEndInNumber", "(void)execute(ctx, db, \"DELETE FROM t\").or_report(ctx, \"%d\");", "format_mismatch"},
    {"LoggedWords", "(void)execute(ctx, db, \"DELETE FROM t\").logged(ctx, \"%s %s %s\", s);", "format_mismatch"},
    {"ReportRight", "(void)REPORT(ctx, 8, \"%d %s\", i, s);", nullptr},
    {"ReportMismatch", "(void)REPORT(ctx, 8, \"%d\", s);", "-Werror=format="},
    {"TraceMismatch", "TRACE(ctx, \"%s\", i);", "-Werror=format="},
    {"LogFailureMismatch", "LOG_FAILURE(ctx, \"%s\");", "-Werror=format="},
};

const Case kOperationRows[] = {
    {"Right",
     "QB_OPERATION(truncateLog, \"system log\", kChanges, QBOBJ_RETURNS_CODE, \"5\", \"Cuts.\", in(\"keep\"));",
     nullptr},
    {"ArgumentForgotten", "QB_OPERATION(truncateLog, \"system log\", kChanges, QBOBJ_RETURNS_CODE, \"5\", \"Cuts.\");",
     "names each of its arguments"},
    {"ArgumentTooMany",
     "QB_OPERATION(truncateLog, \"system log\", kChanges, QBOBJ_RETURNS_CODE, \"5\", \"Cuts.\", in(\"a\"), in(\"b\"));",
     "names each of its arguments"},
    {"NoSuchOperation", "QB_OPERATION(truncateLogs, \"system log\", kChanges, QBOBJ_RETURNS_CODE, \"5\", \"Cuts.\");",
     "qbobj_truncateLogs"},
};

void check(const Case &each, const std::string &code)
{
    const test::Outcome outcome = test::compile(test::cxx_compiler(), "c++", "-std=gnu++20 -Wall -Wextra -Werror", code);
    if (each.complaint) {
        EXPECT_NE(outcome.status, 0) << code;
        EXPECT_THAT(outcome.output, HasSubstr(each.complaint));
    } else {
        EXPECT_EQ(outcome.status, 0) << outcome.output;
    }
}

struct FieldTables : Compile {};
TEST_P(FieldTables, Compile)
{
    check(GetParam(), std::string(kTables) + "namespace qb {\n" + GetParam().code + "\n}\n");
}
INSTANTIATE_TEST_SUITE_P(Of, FieldTables, testing::ValuesIn(kFieldTables),
                         [](const auto &each) { return each.param.name; });

struct OwnStructures : Compile {};
TEST_P(OwnStructures, Compile)
{
    check(GetParam(), std::string(kTables) + GetParam().code + "\n");
}
INSTANTIATE_TEST_SUITE_P(Of, OwnStructures, testing::ValuesIn(kOwnStructures),
                         [](const auto &each) { return each.param.name; });

struct Statements : Compile {};
TEST_P(Statements, Compile)
{
    check(GetParam(), std::string(kQueries) + GetParam().code + "\n}\n");
}
INSTANTIATE_TEST_SUITE_P(Of, Statements, testing::ValuesIn(kStatements),
                         [](const auto &each) { return each.param.name; });

struct RowReads : Compile {};
TEST_P(RowReads, Compile)
{
    check(GetParam(), std::string(kReadRow) + GetParam().code + "\n}\n");
}
INSTANTIATE_TEST_SUITE_P(Of, RowReads, testing::ValuesIn(kRowReads), [](const auto &each) { return each.param.name; });

struct WorkerTypes : Compile {};
TEST_P(WorkerTypes, Compile)
{
    check(GetParam(), std::string(kWorkers) + GetParam().code + "\n");
}
INSTANTIATE_TEST_SUITE_P(Of, WorkerTypes, testing::ValuesIn(kWorkerTypes),
                         [](const auto &each) { return each.param.name; });

struct OperationRows : Compile {};
TEST_P(OperationRows, Compile)
{
    check(GetParam(), std::string(kRows) + GetParam().code + "\n");
}
INSTANTIATE_TEST_SUITE_P(Of, OperationRows, testing::ValuesIn(kOperationRows),
                         [](const auto &each) { return each.param.name; });

}  // namespace
// SPDX-License-Identifier: Apache-2.0
