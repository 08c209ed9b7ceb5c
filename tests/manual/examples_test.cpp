// The calls that the manual shows are those that the tests make; as programs they compile, as commands they are
// understood.
#include <gmock/gmock.h>

#include "anomaly/setups.h"
#include "arguments.h"
#include "emit.h"
#include "example.h"
#include "fixture/files.h"
#include "manual/rendered.h"
#include "pages.h"

namespace {

using qbcli::Json;

/// The first call of an operation that the tests make on a common appliance.
Json call_of(const std::string &operation)
{
    for (const test::Family &family : test::kFamilies)
        for (const test::Trial &trial : family.trials)
            if (trial.operation == operation) return Json{{"call", operation}, {"args", Json::parse(trial.arguments)}};
    return nullptr;
}

const manual::Source &source()
{
    static const manual::Source all(test::source_path(), "November 21, 2026");
    return all;
}

Json arguments_of(const QbobjOperation &operation)
{
    return source().call(operation);
}

TEST(Examples, AreCallsThatTheTestsMake)
{
    std::string calls;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) {
        const Json call = call_of(qbcli::short_name(*row));
        EXPECT_FALSE(call.is_null()) << row->name;
        calls += call.dump() + "\n";
    }
    test::expect_golden("examples/calls.jsonl", calls);
}

std::string example_of(const QbobjOperation &operation)
{
    return manual::c_example(operation, arguments_of(operation));
}

const std::string &flags()
{
    static const std::string all =
        "-std=c11 -Wall -Wextra -pedantic -Werror -I" + test::source_path("include") + " " + test::compile_flags();
    return all;
}

TEST(Examples, CompileAsPrograms)
{
    std::string includes;
    std::string program;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) {
        const std::string example = example_of(*row);
        const size_t end = example.find("\n\n") + 1;
        if (includes.empty()) includes = example.substr(0, end);
        EXPECT_EQ(example.substr(0, end), includes) << row->name;
        program += example.substr(end);
    }
    const test::Outcome outcome =
        test::compile(test::c_compiler(), "c", flags() + " -Wno-unused-function", includes + program);
    EXPECT_EQ(outcome.status, 0) << outcome.output;
}

TEST(Examples, OneStandsAloneAsAFile)
{
    const std::string use = "int (*const used)(qbdb_t *, sqlite3 *, const char *) = call_addUser;\n";
    const test::Outcome outcome =
        test::compile(test::c_compiler(), "c", flags(), example_of(*qbobj_find_operation("addUser")) + use);
    EXPECT_EQ(outcome.status, 0) << outcome.output;
}

/// What a page shows up to the call is what the command line prints.
TEST(Examples, ArePartsOfThePrograms)
{
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) {
        const std::string example = example_of(*row);
        const size_t begin = example.find("static int call_");
        const size_t end = example.find("&err);\n");
        ASSERT_TRUE(begin < end && end != std::string::npos) << row->name;
        qbcli::StandardInput nothing;
        qbcli::Arguments arguments(*row, nothing);
        arguments.take(arguments_of(*row));
        const std::string program = qbcli::emit(qbcli::Language::kC, {*row, arguments, {}, {}});
        EXPECT_THAT(program, testing::HasSubstr(example.substr(begin, end - begin)));
    }
}

/// The one of the library's page: as the command line prints it.
TEST(Examples, AWholeProgramCompiles)
{
    const QbobjOperation &log = *qbobj_find_operation("addLog");
    const std::string program = manual::c_program(log, arguments_of(log));
    std::string line = manual::shell_example(log, arguments_of(log));
    ASSERT_TRUE(line.starts_with("qbobj "));
    line.replace(0, 5, test::build_path("tools/qbobj/qbobj") + " --emit c");
    EXPECT_EQ(test::run(line).output, program);
    const test::Outcome outcome = test::compile(test::c_compiler(), "c", flags(), program);
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    const std::string page = test::rendered(test::build_path("tools/manual/man3/libqbobj.3"));
    for (const std::string &each : test::lines_of(program)) EXPECT_THAT(page, testing::HasSubstr(each));
}

TEST(Examples, HoldNoSecret)
{
    const QbobjOperation &password = *qbobj_find_operation("setUserPassword");
    const Json arguments = {{"pw", {{"UserId", 100}, {"Password", "opensesame"}}}};
    EXPECT_THAT(
        manual::c_example(password, arguments),
        testing::AllOf(testing::HasSubstr("call_setUserPassword(qbdb_t *qbdb, sqlite3 *db, const char *secret_1)"),
                       testing::HasSubstr("    pw.Password = secret_1;\n"),
                       testing::Not(testing::HasSubstr("opensesame"))));
    EXPECT_EQ(manual::shell_example(password, arguments),
              "qbobj -d appliance.db setUserPassword UserId=100 Password=-\n");
}

/// Everything that is wrong with what was given is found before the database is opened, and this one is not there.
TEST(Examples, AreUnderstoodByTheShellAndTheProgram)
{
    const std::string program = test::build_path("tools/qbobj/qbobj");
    std::string script;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) {
        std::string line = manual::shell_example(*row, arguments_of(*row));
        line.replace(line.find("qbobj -d appliance.db"), 21, program + " -d /nonexistent/appliance.db");
        script +=
            "{\n" + line + "} > /dev/null 2> why < secrets\n[ $? -eq 4 ] || { echo " + row->name + "; cat why; }\n";
    }
    test::write_file("secrets", "one\none\ntwo\ntwo\n");
    test::write_file("examples.sh", script);
    const test::Outcome outcome = test::run("sh ./examples.sh");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "");
    for (const char *file : {"secrets", "why", "examples.sh"}) std::remove(file);
}

TEST(Examples, TheFormsOfAValue)
{
    const QbobjOperation &log = *qbobj_find_operation("addLog");
    EXPECT_EQ(
        manual::shell_example(log, Json{{"time", 7}, {"severity", "it's"}, {"category", nullptr}, {"msgTag", ""}}),
        "qbobj -d appliance.db addLog time=7 'severity=it'\\''s' msgTag=\n");
    const QbobjOperation &empty = *qbobj_find_operation("deleteLog");
    EXPECT_EQ(manual::shell_example(empty, Json::object()), "qbobj -d appliance.db deleteLog null\n");
    EXPECT_THAT(manual::c_example(log, Json{{"time", 7}, {"argsXml", "a\"b\\c\n"}}),
                testing::HasSubstr("qbobj_addLog(qbdb, db, 7, NULL, NULL, NULL, \"a\\\"b\\\\c\\n\", &err);\n"));
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
