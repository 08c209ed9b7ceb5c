// The calls that the manual shows are those that the tests make; as programs they compile, as commands they are
// understood.
#include <gmock/gmock.h>

#include "anomaly/setups.h"
#include "arguments.h"
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

TEST(Examples, CompileAsPrograms)
{
    std::string program;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++)
        program += "static " +
                   manual::c_example(*row, arguments_of(*row))
                       .substr(std::string("#include <qbdb.h>\n#include <qbobj.h>\n#include <stdio.h>\n\n").size());
    const std::string flags = "-std=c11 -Wall -Wextra -pedantic -Werror -Wno-unused-function -I" +
                              test::source_path("include") + " " + test::compile_flags();
    const test::Outcome outcome = test::compile(
        test::c_compiler(), "c", flags, "#include <qbdb.h>\n#include <qbobj.h>\n#include <stdio.h>\n" + program);
    EXPECT_EQ(outcome.status, 0) << outcome.output;
}

TEST(Examples, OneStandsAloneAsAFile)
{
    const QbobjOperation &add = *qbobj_find_operation("addUser");
    const std::string flags =
        "-std=c11 -Wall -Wextra -pedantic -Werror -I" + test::source_path("include") + " " + test::compile_flags();
    const test::Outcome outcome =
        test::compile(test::c_compiler(), "c", flags, manual::c_example(add, arguments_of(add)));
    EXPECT_EQ(outcome.status, 0) << outcome.output;
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
        "qbobj -d appliance.db addLog time=7 severity='it'\\''s' msgTag=''\n");
    const QbobjOperation &password = *qbobj_find_operation("setUserPassword");
    EXPECT_EQ(manual::shell_example(password, Json{{"pw", {{"UserId", 100}, {"Password", "secret"}}}}),
              "qbobj -d appliance.db setUserPassword UserId=100 Password=-\n");
    const QbobjOperation &empty = *qbobj_find_operation("deleteLog");
    EXPECT_EQ(manual::shell_example(empty, Json::object()), "qbobj -d appliance.db deleteLog null\n");
    EXPECT_THAT(manual::c_example(password, Json{{"pw", {{"Password", "a\"b\\c\n"}}}}),
                testing::HasSubstr("        .Password = \"a\\\"b\\\\c\\n\",\n"));
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
