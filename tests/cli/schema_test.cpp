// qbobj schema: the JSON Schema and the OpenAPI description, and whether real calls fit them.
#include <set>

#include "anomaly/setups.h"
#include "arguments.h"
#include "cli/run.h"
#include "describe.h"
#include "json_schema.h"
#include "records.h"

using qbcli::Json;
using test::Result;
using testing::HasSubstr;

namespace {

/// A value in the one form that the schema knows: the command line also takes an object for a list of one, and the
/// record that heads a list for the list.
Json canonical(const QbobjField *type, Json value)
{
    if (value.is_array()) {
        for (Json &element : value)
            element = canonical(qbcli::is_bare_list(type) ? type[1].subtype : type, std::move(element));
        return value;
    }
    if (!value.is_object()) return value;
    if (qbcli::is_bare_list(type)) return canonical(type, value[type[1].name]);
    for (auto &[name, part] : value.items()) {
        const QbobjField *field = qbcli::find_field(type, name);
        if (!field || !field->subtype) continue;
        part = canonical(field->subtype, std::move(part));
        if (part.is_object() && qbcli::is_list(field->subtype)) part = Json::array({std::move(part)});
    }
    return value;
}

Json canonical_arguments(const QbobjOperation &operation, Json given)
{
    for (uint32_t i = 0; i < operation.count; i++)
        if (const QbobjArgument &argument = operation.arguments[i]; argument.type && given.contains(argument.name))
            given[argument.name] = canonical(argument.type, std::move(given[argument.name]));
    return given;
}

struct Schema : test::Program {
    bool execute(const std::string &sql) const
    {
        sqlite3 *db = nullptr;
        const bool done = sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK &&
                          sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
        EXPECT_TRUE(done) << sqlite3_errmsg(db);
        sqlite3_close(db);
        return done;
    }

    /// Makes a family's calls on its population, each of them taken back. Adds the lines and what was answered.
    void call_family(const test::Family &family, std::string &lines, std::string &answers)
    {
        unlink(path.c_str());
        ASSERT_EQ(run({"init", path, "--volume", "tank"}).status, 0);
        ASSERT_TRUE(execute(test::kPopulation) && execute(family.population)) << family.name;
        std::string own;
        for (const test::Trial &trial : family.trials) {
            const QbobjOperation &operation = qbcli::find_operation(trial.operation);
            const Json args = canonical_arguments(operation, Json::parse(trial.arguments));
            own += Json{{"call", trial.operation}, {"args", args}}.dump() + "\n";
        }
        const Result result = call({"--dry-run", "batch", file("lines", own)});
        EXPECT_EQ(result.err, "") << family.name;
        lines += own;
        answers += result.out;
    }

    /// What the checker counts.
    Json check(const std::string &lines, const std::string &answers, const std::string &refused)
    {
        const Result result = test::run_command(
            {"/usr/bin/python3", test::source_path("tests/cli/check_schema.py"),
             file("schema", run({"schema", "--json-schema"}).out), file("openapi", run({"schema", "--openapi"}).out),
             file("all_lines", lines), file("answers", answers), file("refused", refused)});
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return result.out.empty() ? Json() : Json::parse(result.out);
    }
};

TEST_F(Schema, WhatOperationsTakeAndGiveFitsIt)
{
    if (test::run_command({"/usr/bin/python3", "-c", "import jsonschema"}).status != 0)
        GTEST_SKIP() << "python3-jsonschema is not installed: the schemas are not checked";
    std::string lines;
    std::string answers;
    for (const test::Family &family : test::kFamilies) call_family(family, lines, answers);
    const std::string refused =
        "{\"call\":\"addLgo\"}\n"
        "{\"args\":{}}\n"
        "{\"call\":\"getLog\",\"more\":1}\n"
        "{\"call\":\"addLog\",\"args\":{}}\n"
        "{\"call\":\"addLog\",\"args\":{\"time\":\"x\"}}\n"
        "{\"call\":\"addLog\",\"args\":{\"time\":2147483648}}\n"
        "{\"call\":\"getLog\",\"args\":{\"lmit\":1}}\n"
        "{\"call\":\"getLog\",\"args\":{\"query\":{\"severity\":\"loud\"}}}\n"
        "{\"call\":\"getLog\",\"args\":[]}\n"
        "{\"call\":\"addUser\",\"args\":[{\"HomeFolderSettings\":[{\"SizeLimit\":-1}]}]}\n"
        "{\"call\":\"setAccountDefault\",\"args\":{\"DiskQuotaWarn\":100}}\n"
        "{\"call\":\"addGroup\",\"args\":{\"GroupName\":\"crew\",\"GroupId\":99}}\n"
        "{\"call\":\"addGroup\",\"args\":[{\"GroupName\":\"crew\",\"GroupId\":32768}]}\n"
        "{\"call\":\"addUser\",\"args\":[{\"HomeFolderSettings\":[{\"SizeLimit\":18446744073709551616}]}]}\n";
    const Json counted = check(lines, answers, refused);
    const Result result = call({"batch"}, refused);
    EXPECT_EQ(result.status, 2) << "what the schema refuses, the program refuses";
    EXPECT_EQ(result.out.find("\"result\""), std::string::npos) << result.out;

    size_t operations = 0;
    std::set<std::string> unanswered;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++, operations++)
        unanswered.insert(qbcli::short_name(*row));
    for (const Json &name : counted["answered"]) unanswered.erase(name.get<std::string>());
    EXPECT_EQ(counted["arguments"], operations);
    EXPECT_EQ(counted["results"], operations);
    EXPECT_EQ(counted["paths"], operations);
    EXPECT_EQ(counted["types"], qbcli::all_types().size());
    EXPECT_EQ(counted["components"], qbcli::all_types().size());
    EXPECT_GT(counted["references"], 1000);
    EXPECT_EQ(counted["wrong"], 0);
    EXPECT_THAT(unanswered, testing::ElementsAre("checkUserList", "getGroup", "getShare"))
        << "one reads a file that is not there, the others fail whatever they are given";
}

TEST_F(Schema, SaysWhatTheTablesSay)
{
    const Json definitions = qbcli::json_schema()["$defs"];
    const Json &user = definitions["User"]["properties"];
    EXPECT_EQ(user["Password"]["writeOnly"], true);
    EXPECT_FALSE(user["UserName"].contains("writeOnly"));
    EXPECT_THAT(user["Email"]["description"].get<std::string>(), HasSubstr("mail"));
    EXPECT_EQ(user["HomeFolderSettings"]["items"]["$ref"], "#/$defs/UserHomeFolderSettings");
    EXPECT_EQ(definitions["Security"]["properties"]["Security"]["enum"], Json::parse(R"(["user", "ads", "", null])"));
    EXPECT_EQ(definitions["UserHomeFolderSettings"]["properties"]["SizeLimit"]["maximum"], UINT64_MAX);
    EXPECT_EQ(definitions["Share"]["properties"]["QuotaMB"]["type"], Json::parse(R"(["integer", "null"])"));
    EXPECT_TRUE(definitions["Share"]["properties"].contains("key"));
    EXPECT_EQ(definitions["ShareCollection"]["type"], "array");
    EXPECT_EQ(definitions["setUserPassword.result"]["type"], "null");
    EXPECT_EQ(definitions["addLog.args"]["required"], Json::array({"time"}));
    for (const QbobjField *type : qbcli::all_types())
        EXPECT_FALSE(definitions[type->name]["description"].get<std::string>().empty()) << type->name;

    const Json &warning = definitions["AccountDefault"]["properties"]["DiskQuotaWarn"];
    EXPECT_EQ(warning["minimum"], 1);
    EXPECT_EQ(warning["maximum"], 99);
    EXPECT_EQ(warning["x-unit"], "per cent");
    EXPECT_EQ(definitions["HttpsOptions"]["properties"]["Port"]["anyOf"],
              Json::parse(R"([{"minimum":1024,"maximum":65535},{"minimum":0,"maximum":0}])"));
    EXPECT_EQ(user["HomeDirectory"]["readOnly"], true);
    EXPECT_EQ(user["HomeVolumeId"]["writeOnly"], true);
    EXPECT_FALSE(user["UserName"].contains("readOnly"));
    EXPECT_EQ(definitions["addLog.args"]["properties"]["severity"]["default"], "info");
    EXPECT_THAT(definitions["addShare.args"].dump(), HasSubstr(R"("RecycleSizeLimit":{"type":["integer","null"],)"
                                                               R"("default":25000})"));

    const Json add = qbcli::openapi()["paths"]["/addUser"]["post"];
    EXPECT_EQ(add["tags"], Json::array({"users"}));
    EXPECT_THAT(add["responses"]["default"]["description"].get<std::string>(),
                HasSubstr("\n- 801: the user name is taken\n"));
    EXPECT_EQ(add["x-changes"], true);
    EXPECT_EQ(add["x-codes"][0], 2);
}

TEST_F(Schema, IsPrintedInOneForm)
{
    for (const std::vector<std::string> &words :
         {std::vector<std::string>{"schema"}, {"schema", "--json-schema", "--openapi"}}) {
        const Result result = run(words);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.err, "qbobj: schema: one of --json-schema and --openapi is needed\n");
    }
    EXPECT_EQ(run({"schema", "--openapi", "--compact"}).out, qbcli::openapi().dump() + "\n");
    EXPECT_EQ(run({"schema", "--json-schema", "--compact"}).out, qbcli::json_schema().dump() + "\n");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
