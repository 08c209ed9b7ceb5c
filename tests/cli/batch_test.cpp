// qbobj batch: calls as JSON lines, one answer a line.
#include <sys/stat.h>

#include <sstream>

#include "json_text.h"
#include "run.h"

using qbcli::Json;
using test::Result;
using testing::HasSubstr;

namespace {

struct Batch : test::Program {
    Result batch(const std::string &lines, const std::vector<std::string> &more = {})
    {
        std::vector<std::string> words = {"batch"};
        words.insert(words.end(), more.begin(), more.end());
        return call(words, lines);
    }

    static std::vector<Json> answers(const Result &result)
    {
        std::vector<Json> all;
        std::istringstream lines(result.out);
        for (std::string line; std::getline(lines, line);) all.push_back(Json::parse(line));
        return all;
    }

    /// The only answer's error message.
    std::string refusal(const std::string &line, int status = 2)
    {
        const Result result = batch(line + "\n");
        EXPECT_EQ(result.status, status);
        EXPECT_EQ(result.err, "");
        const auto all = answers(result);
        return all.size() == 1 && all[0].contains("error") ? all[0]["error"]["message"].get<std::string>() : result.out;
    }
};

TEST_F(Batch, AnswersEachCallInALine)
{
    const Result result = batch(
        "{\"call\":\"addLog\",\"args\":{\"time\":7,\"msgTag\":\"LOGMSG_ONE\"},\"id\":\"a\"}\n"
        "\n"
        "{\"call\":\"qbobj_getLog\",\"id\":2,\"args\":{\"limit\":1}}\n"
        "{\"call\":\"isMemberOfGroup\",\"args\":{\"userName\":\"admin\",\"groupName\":\"guest\"}}");
    EXPECT_EQ(result.status, 0) << result.err;
    const auto all = answers(result);
    ASSERT_EQ(all.size(), 3u) << result.out;
    EXPECT_EQ(all[0], Json::parse(R"({"result":null,"id":"a"})"));
    EXPECT_EQ(all[1]["result"]["count"], 1);
    EXPECT_EQ(all[1]["id"], 2);
    EXPECT_THAT(result.out, HasSubstr("LOGMSG_ONE"));
    EXPECT_EQ(all[2], Json::parse(R"({"result":{"result":1}})")) << "no is an answer, not a failure";
    EXPECT_EQ(count(), "1");
}

TEST_F(Batch, GoesOnAfterAFailureUnlessToldToStop)
{
    const std::string lines =
        "{\"call\":\"addLog\",\"args\":{\"time\":0,\"severity\":\"loud\"},\"id\":1}\n"
        "{\"call\":\"deleteNetworkInterface\",\"args\":{\"name\":\"none\"},\"id\":2}\n"
        "{\"call\":\"addLog\",\"args\":{\"time\":0},\"id\":3}\n";
    Result result = batch(lines);
    EXPECT_EQ(result.status, 1) << "that of the first failure";
    auto all = answers(result);
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all[0]["error"]["operation"], "addLog");
    EXPECT_EQ(all[0]["error"]["code"], 8);
    EXPECT_EQ(all[0]["error"]["message"], "Specified Severity (loud) is invalid.");
    EXPECT_EQ(all[1]["error"]["operation"], "deleteNetworkInterface");
    EXPECT_EQ(all[1]["error"]["code"], 6);
    EXPECT_EQ(all[1]["error"]["status"], 3);
    EXPECT_EQ(all[1]["id"], 2);
    EXPECT_EQ(all[2], Json::parse(R"({"result":null,"id":3})"));
    EXPECT_EQ(count(), "1");

    result = batch(lines, {"--stop-on-error"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(answers(result).size(), 1u);
    EXPECT_EQ(count(), "1");
}

TEST_F(Batch, AFailureIsForgottenByTheNextCall)
{
    const Result result = batch(
        "{\"call\":\"getGroup\",\"args\":{\"GroupId\":99}}\n"
        "{\"call\":\"getUID\",\"args\":{\"name\":\"unknown\"}}\n"
        "{\"call\":\"getUID\",\"args\":{\"name\":\"admin\"}}\n");
    const auto all = answers(result);
    ASSERT_EQ(all.size(), 3u) << result.out;
    EXPECT_EQ(all[0]["error"]["code"], 5);
    EXPECT_EQ(all[1]["error"]["message"], "not found");
    EXPECT_EQ(all[1]["error"]["status"], 3);
    EXPECT_EQ(all[2]["result"]["id"], 98);
}

TEST_F(Batch, RefusesLinesThatAreNoCalls)
{
    EXPECT_EQ(refusal("[]"), "a line is a JSON object, {\"call\": …, \"args\": …}");
    EXPECT_THAT(refusal("{\"call\":"), HasSubstr("the line: malformed JSON at line 1"));
    EXPECT_THAT(refusal("{\"call\":\"addLog\",\"call\":\"addLog\"}"), HasSubstr("call is given twice"));
    EXPECT_EQ(refusal("{}"), "the line names no call");
    EXPECT_EQ(refusal("{\"call\":7}"), "call: the name of an operation is needed");
    EXPECT_EQ(refusal("{\"call\":\"addLog\",\"args\":7}"), "args: an object or an array is needed");
    EXPECT_EQ(refusal("{\"call\":\"addLog\",\"arguments\":{}}"),
              "a line has no member arguments; it has call, args, fields and id");
    EXPECT_EQ(refusal("{\"call\":\"addLgo\"}"), "there is no operation addLgo (did you mean addLog?)");
    EXPECT_THAT(refusal("{\"call\":\"deleteLog\"}"), HasSubstr("it changes the database, and nothing is given"));
    EXPECT_THAT(refusal("{\"call\":\"addLog\",\"args\":{\"time\":\"x\"}}"), HasSubstr("time"));
    EXPECT_EQ(count(), "0");
}

TEST_F(Batch, KeepsSecretsToItself)
{
    const Result result = batch(
        "{\"call\":\"addUser\",\"args\":[{\"UserName\":\"anna\",\"GroupName\":\"users\",\"Password\":\"verysecret\"}]}"
        "\n"
        "{\"call\":\"getUserCollection\"}\n");
    EXPECT_EQ(result.status, 0) << result.out;
    EXPECT_EQ((result.out + result.err).find("verysecret"), std::string::npos);
    EXPECT_EQ(result.out.find(value("SELECT passwd FROM `$user` WHERE uname='anna'")), std::string::npos);
    EXPECT_EQ(value("SELECT COUNT(*) FROM `$user` WHERE uname='anna' AND passwd LIKE '$%'"), "1");
}

TEST_F(Batch, ReadOnlyLeavesOutWhatChanges)
{
    const std::string lines = "{\"call\":\"addLog\",\"args\":{\"time\":0}}\n{\"call\":\"getLog\"}\n";
    const Result result = batch(lines, {"--read-only"});
    EXPECT_EQ(result.status, 2);
    const auto all = answers(result);
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0]["error"]["message"], "it changes the database, which --read-only forbids");
    EXPECT_EQ(all[1]["result"]["count"], 0);
}

TEST_F(Batch, ADryRunTellsWhatEachCallWouldChange)
{
    const std::string line = "{\"call\":\"addLog\",\"args\":{\"time\":0,\"msgTag\":\"LOGMSG_ONE\"}}\n";
    const Result result = batch(line + line, {"--dry-run"});
    EXPECT_EQ(result.status, 0) << result.err;
    const auto all = answers(result);
    ASSERT_EQ(all.size(), 2u) << result.out;
    EXPECT_EQ(all[0]["changes"][0]["table"], "$log");
    EXPECT_EQ(all[0], all[1]);
    EXPECT_EQ(count(), "0");
}

TEST_F(Batch, GivesTheFieldsThatAreWanted)
{
    const Result result = batch(
        "{\"call\":\"addLog\",\"args\":{\"time\":7,\"msgTag\":\"LOGMSG_ONE\"}}\n"
        "{\"call\":\"getLog\",\"fields\":[\"MessageTag\",\"LogId\",\"total\"]}\n"
        "{\"call\":\"getLog\",\"fields\":[\"LogId\"],\"args\":{\"limit\":1}}\n");
    EXPECT_EQ(result.out,
              "{\"result\":null}\n"
              "{\"result\":{\"entries\":[{\"MessageTag\":\"LOGMSG_ONE\",\"LogId\":1}],\"total\":1}}\n"
              "{\"result\":{\"entries\":[{\"LogId\":1}]}}\n");
    EXPECT_EQ(refusal("{\"call\":\"getLog\",\"fields\":[\"LgoId\"]}"),
              "there is no field LgoId in what it returns (did you mean LogId?)");
    EXPECT_EQ(refusal("{\"call\":\"truncateLog\",\"args\":{\"keep\":0},\"fields\":[\"LogId\"]}"),
              "it returns nothing of which fields could be chosen");
    EXPECT_EQ(count(), "1") << "refused before the call";
    for (const char *fields : {"\"LogId\"", "[]", "[1]", "null", "{\"a\":\"b\"}"})
        EXPECT_EQ(refusal(std::string("{\"call\":\"getLog\",\"fields\":") + fields + "}"),
                  "fields: an array of names is needed");
}

TEST_F(Batch, ReadsAFile)
{
    const std::string lines = file("calls.jsonl", "{\"call\":\"addLog\",\"args\":{\"time\":0}}\r\n");
    EXPECT_EQ(call({"batch", lines}).out, "{\"result\":null}\n");
    const Result missing = call({"batch", directory.path + "/none"});
    EXPECT_EQ(missing.status, 2);
    EXPECT_THAT(missing.err, HasSubstr("No such file or directory"));
}

TEST_F(Batch, AnswersBeforeTheNextLineIsThere)
{
    const std::string fifo = directory.path + "/calls";
    const std::string out = directory.path + "/answers";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    // The second call is written once the first is answered.
    const Result result = test::run_command(
        {"/bin/sh", "-c",
         "'" + test::program() + "' -d '" + path + "' batch '" + fifo + "' > '" + out + "' & exec 3>'" + fifo +
             "'; echo '{\"call\":\"addLog\",\"args\":{\"time\":0}}' >&3; n=0; until [ -s '" + out +
             "' ]; do n=$((n+1)); [ $n -lt 400 ] || exit 9; sleep 0.05; done; echo '{\"call\":\"getLog\"}' >&3; exec "
             "3>&-; wait $!; cat '" +
             out + "'"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("\"count\":1"));
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
