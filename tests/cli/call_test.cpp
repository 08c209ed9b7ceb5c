// Calls of operations that do not exist in the library: what the tables can express, all of it.
#include "call.h"

#include <libxml/tree.h>

#include "cli/run.h"
#include "failure.h"

using namespace qbcli;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

/// What the stand-in operations were called with, and what they are to answer.
struct Scene {
    std::vector<QbobjValue> values;
    uint32_t rc = 0;
    ErrorInfo err{};
    std::function<void(const QbobjValue *)> fill = [](const QbobjValue *) {};
    int calls = 0;
} scene;

uint32_t stand_in(qbdb_t *qbdb, sqlite3 *db, const QbobjValue *values, ErrorInfo *err)
{
    scene.calls++;
    *err = {};
    // As every operation runs: a transaction around it.
    if (const uint32_t rc = qbdb_sql_begin(qbdb, db, 0, "call_test.cpp", 1)) return rc;
    scene.values.assign(values, values + QBOBJ_MAX_ARGUMENTS);
    scene.fill(values);
    *err = scene.err;
    if (scene.rc) qbdb_sql_rollback(qbdb, db, 0, "call_test.cpp", 1);
    else qbdb_sql_commit(qbdb, db, 0, "call_test.cpp", 1);
    return scene.rc;
}

QbobjArgument argument(const char *name, QbobjKind kind, QbobjDirection direction, const char *type = nullptr,
                       bool optional = false, bool chain = false)
{
    return {name, kind, direction, qbobj_find_type(type), optional, chain, nullptr, nullptr, nullptr};
}

QbobjOperation operation(std::vector<QbobjArgument> arguments, QbobjReturn returns = QBOBJ_RETURNS_CODE,
                         int changes = 1)
{
    QbobjOperation row{};
    row.name = "qbobj_tryThing";
    row.family = "tests";
    row.summary = "Does nothing.";
    row.codes = "8";
    row.returns = returns;
    row.changes = changes;
    row.count = static_cast<uint32_t>(arguments.size());
    std::copy(arguments.begin(), arguments.end(), row.arguments);
    row.call = stand_in;
    return row;
}

struct Calls : test::Program {
    DatabaseOptions options{.path = path, .timeout_ms = 30, .root = ""};
    StandardInput input;
    std::string warning;

    Calls() { scene = {}; }

    Json run(const QbobjOperation &operation, const std::vector<std::string> &words)
    {
        Arguments arguments(operation, input);
        arguments.take(words);
        arguments.ask_for_secrets();
        Call call(operation, arguments);
        Database database(options);
        warning = call.run(database, options.timeout_ms);
        return call.outcome();
    }

    Failure refusal(const QbobjOperation &operation, const std::vector<std::string> &words)
    {
        try {
            run(operation, words);
        } catch (const Failure &failure) {
            return failure;
        }
        return Failure("(taken)");
    }

    std::string message(const QbobjOperation &operation, const std::vector<std::string> &words)
    {
        const std::string text = refusal(operation, words).what();
        EXPECT_EQ(scene.calls, 0) << "nothing is called";
        return text;
    }
};

const QbobjOperation kUser = operation({argument("user", QBOBJ_KIND_RECORD, QBOBJ_INOUT, "User", true, true)});

/// An operation that ignores some fields, keeps one secret when the mask comes back, and has a name of its own.
QbobjOperation judging(const char *name, const char *type, const char *ignores, const char *keeps = nullptr)
{
    QbobjOperation row = operation({argument("record", QBOBJ_KIND_RECORD, QBOBJ_IN, type, true, true)});
    row.name = name;
    row.arguments[0].ignores = ignores;
    row.arguments[0].keeps = keeps;
    return row;
}

TEST_F(Calls, BuildRecordsOfPairs)
{
    scene.fill = [](const QbobjValue *values) {
        const auto *user = static_cast<const User *>(values[0].p);
        EXPECT_STREQ(user->UserName, "anna");
        EXPECT_EQ(user->Email, nullptr);
        EXPECT_EQ(user->IsLocked, 1);
        EXPECT_EQ(user->HomeFolderSettings->SizeLimit, 5u);
        EXPECT_EQ(user->HomeFolderSettings->PrevVersions, 1);
        EXPECT_STREQ(user->UserQuota->ShareId, "tank/media");
        EXPECT_STREQ(user->FullName, "=a=b");
        EXPECT_EQ(user->next, nullptr);
    };
    run(kUser, {"UserName=anna", "IsLocked=1", "HomeFolderSettings.SizeLimit=5", "HomeFolderSettings.PrevVersions=1",
                R"(UserQuota=[{"ShareId":"tank/media","HardMB":100}])", "FullName==a=b"});
    EXPECT_EQ(scene.calls, 1);
    run(kUser, {"user.UserName=anna", "user.IsLocked=1", R"(HomeFolderSettings={"SizeLimit":5,"PrevVersions":1})",
                R"(UserQuota={"ShareId":"tank/media"})", R"({"FullName":"=a=b"})"});
    EXPECT_EQ(scene.calls, 2);
}

TEST_F(Calls, WhatIsNamedGoesOverWhatADocumentSays)
{
    const std::string document =
        R"({"UserName":"anna","Email":"old","HomeFolderSettings":[{"SizeLimit":5,"PrevVersions":1}],
        "TimeMachineQuota":[],"UserQuota":[{"HardMB":1},{"HardMB":2}]})";
    scene.fill = [](const QbobjValue *values) {
        const auto *user = static_cast<const User *>(values[0].p);
        EXPECT_STREQ(user->UserName, "anna");
        EXPECT_STREQ(user->Email, "new");
        EXPECT_EQ(user->HomeFolderSettings->SizeLimit, 6u);
        EXPECT_EQ(user->HomeFolderSettings->PrevVersions, 1);
        EXPECT_EQ(user->TimeMachineQuota->CapacityMB, 7);
        EXPECT_EQ(user->UserQuota, nullptr);
    };
    for (const std::string &document_form : {document, "[" + document + "]", "@" + file("user.json", document)})
        run(kUser, {"Email=new", "HomeFolderSettings.SizeLimit=6", "TimeMachineQuota.CapacityMB=7", "UserQuota=[]",
                    document_form});
    EXPECT_EQ(scene.calls, 3);
    scene.calls = 0;
    EXPECT_EQ(message(kUser, {document, "UserQuota.HardMB=3"}),
              "user.UserQuota: which of the document's 2 elements is meant?");
    EXPECT_EQ(message(kUser, {R"([{"UserName":"a"},{"UserName":"b"}])", "Email=x"}),
              "user: which of the document's 2 elements is meant?");
    EXPECT_EQ(message(kUser, {document, "Email=x", "Email=y"}), "Email: is given twice");
    EXPECT_EQ(message(kUser, {document, document}), "UserName: is given twice");
}

TEST_F(Calls, AChainComesBackInTheFormInWhichItWasGiven)
{
    const Json one = run(kUser, {"UserName=anna"});
    ASSERT_TRUE(one.is_object());
    EXPECT_EQ(one["UserName"], "anna");
    const Json two = run(kUser, {R"([{"UserName":"anna"},{"UserName":"bert"}])"});
    ASSERT_TRUE(two.is_array());
    EXPECT_EQ(two.size(), 2u);
    EXPECT_EQ(run(kUser, {R"([{"UserName":"anna"}])"}).size(), 1u);
    EXPECT_EQ(run(kUser, {"[]"}), Json::array());
    EXPECT_EQ(scene.values[0].p, nullptr) << "an empty chain is null";
    scene.calls = 0;
    const auto needed = operation({argument("user", QBOBJ_KIND_RECORD, QBOBJ_INOUT, "User", false, true)});
    EXPECT_EQ(message(needed, {"[]"}), "user: the list is empty");
    static User second{};
    scene.fill = [](const QbobjValue *values) { static_cast<User *>(values[0].p)->next = &second; };
    EXPECT_EQ(run(kUser, {"UserName=anna"}).size(), 2u) << "nothing is lost of a chain that the operation made";
}

TEST_F(Calls, AListIsOnlyTakenWhereTheOperationTakesOne)
{
    const auto single = operation({argument("user", QBOBJ_KIND_RECORD, QBOBJ_IN, "User")});
    EXPECT_EQ(message(single, {"[]"}), "a JSON object is needed: tryThing takes no list");
    EXPECT_EQ(message(single, {"user=[]"}), "a JSON object (User) is needed");
    const auto bare = operation({argument("jobs", QBOBJ_KIND_RECORD, QBOBJ_IN, "BackupButtonJobCollection")});
    scene.fill = [](const QbobjValue *values) {
        const auto *jobs = static_cast<const BackupButtonJobCollection *>(values[0].p);
        EXPECT_EQ(test::elements(jobs->Jobs).size(), 2u);
    };
    run(bare, {R"([{"JobId":1},{"JobId":2}])"});
    run(bare, {R"(Jobs=[{"JobId":1},{"JobId":2}])"});
    run(bare, {R"(jobs=[{"JobId":1},{"JobId":2}])"});
    EXPECT_EQ(scene.calls, 3);
    const auto two = operation({argument("users", QBOBJ_KIND_RECORD, QBOBJ_IN, "User", false, true),
                                argument("groups", QBOBJ_KIND_RECORD, QBOBJ_IN, "Group", false, true)});
    scene.calls = 0;
    EXPECT_EQ(message(two, {"[]"}), "which list is meant? Write users=[…] or groups=[…]");
}

TEST_F(Calls, NamesAreUniqueOrQualified)
{
    const auto two = operation({argument("users", QBOBJ_KIND_RECORD, QBOBJ_IN, "UserCollection"),
                                argument("groups", QBOBJ_KIND_RECORD, QBOBJ_IN, "GroupCollection"),
                                argument("limit", QBOBJ_KIND_INT32, QBOBJ_IN),
                                argument("query", QBOBJ_KIND_RECORD, QBOBJ_IN, "AccountQuery", true)});
    EXPECT_EQ(message(two, {"Entries=1", "limit=1"}), "Entries: is it users.Entries or groups.Entries?");
    EXPECT_EQ(message(two, {R"({"Entries":1})", "limit=1"}), "Entries: is it users.Entries or groups.Entries?");
    scene.fill = [](const QbobjValue *values) {
        EXPECT_EQ(static_cast<const UserCollection *>(values[0].p)->Entries, 1);
        EXPECT_EQ(static_cast<const GroupCollection *>(values[1].p)->Entries, 2);
        EXPECT_EQ(static_cast<const UserCollection *>(values[0].p)->User->UserId, 4);
        EXPECT_EQ(values[2].i, 3) << "an argument's name goes before fields";
        EXPECT_EQ(static_cast<const AccountQuery *>(values[3].p)->limit, 5);
    };
    run(two, {"users.Entries=1", "groups.Entries=2", "limit=3", "User.UserId=4", "query.limit=5"});
    EXPECT_EQ(scene.calls, 1);
}

TEST_F(Calls, WhatIsNotGivenIsNullEmptyOrRefused)
{
    const auto reading = operation(
        {argument("query", QBOBJ_KIND_RECORD, QBOBJ_IN, "AccountQuery", true),
         argument("user", QBOBJ_KIND_RECORD, QBOBJ_IN, "User"), argument("number", QBOBJ_KIND_INT32, QBOBJ_IN),
         argument("word", QBOBJ_KIND_STRING, QBOBJ_IN, nullptr, true)},
        QBOBJ_RETURNS_CODE, 0);
    EXPECT_TRUE(run(reading, {}).is_discarded());
    EXPECT_EQ(scene.values[0].p, nullptr);
    EXPECT_NE(scene.values[1].p, nullptr) << "a record that must not be null is there, empty";
    EXPECT_EQ(scene.values[2].i, 0);
    EXPECT_EQ(scene.values[3].s, nullptr);
    scene.calls = 0;
    EXPECT_EQ(message(operation({argument("word", QBOBJ_KIND_STRING, QBOBJ_IN)}, QBOBJ_RETURNS_CODE, 0), {}),
              "the argument word (a text) is missing");
    EXPECT_EQ(message(operation({argument("size", QBOBJ_KIND_UINT64, QBOBJ_IN)}), {}),
              "the argument size (a number) is missing");
    run(operation({argument("time", QBOBJ_KIND_INT32, QBOBJ_IN, nullptr, true)}), {});
    EXPECT_EQ(scene.values[0].i, 0) << "a number that may be left out is 0";
}

TEST_F(Calls, ScalarsOfEveryKindAndDirection)
{
    const auto all =
        operation({argument("a", QBOBJ_KIND_INT32, QBOBJ_IN), argument("b", QBOBJ_KIND_UINT64, QBOBJ_IN),
                   argument("c", QBOBJ_KIND_STRING, QBOBJ_IN), argument("d", QBOBJ_KIND_INT32, QBOBJ_INOUT),
                   argument("e", QBOBJ_KIND_INT32, QBOBJ_OUT), argument("f", QBOBJ_KIND_UINT64, QBOBJ_OUT),
                   argument("g", QBOBJ_KIND_STRING, QBOBJ_OUT), argument("h", QBOBJ_KIND_STRING, QBOBJ_OUT)});
    scene.fill = [](const QbobjValue *values) {
        EXPECT_EQ(values[0].i, -1);
        EXPECT_EQ(values[1].n, UINT64_MAX);
        EXPECT_STREQ(values[2].s, "c");
        EXPECT_EQ((*static_cast<int32_t *>(values[3].p))++, 7);
        *static_cast<int32_t *>(values[4].p) = -5;
        *static_cast<uint64_t *>(values[5].p) = UINT64_MAX;
        *static_cast<const char **>(values[6].p) = "g";
    };
    EXPECT_EQ(run(all, {"-1", "18446744073709551615", "c", "7"}).dump(),
              R"({"d":8,"e":-5,"f":18446744073709551615,"g":"g","h":null})");
    scene.calls = 0;
    EXPECT_THAT(message(all, {"1", "-1", "c", "7"}), HasSubstr("b: a whole number from 0 to 18446744073709551615"));
}

TEST_F(Calls, OutcomesHaveTheFormThatTheRuleSays)
{
    const auto users = argument("users", QBOBJ_KIND_RECORD, QBOBJ_OUT, "UserCollection");
    const auto shares = argument("shares", QBOBJ_KIND_RECORD, QBOBJ_OUT, "ShareCollection");
    const auto list = argument("procs", QBOBJ_KIND_LIST, QBOBJ_OUT, "Process");
    const auto count = argument("count", QBOBJ_KIND_INT32, QBOBJ_OUT);
    EXPECT_EQ(run(operation({users}), {}).dump(), R"({"User":[],"Entries":0,"TotalEntries":0})");
    EXPECT_EQ(run(operation({shares}), {}).dump(), "[]") << "nothing but a list is the list";
    EXPECT_EQ(run(operation({list}), {}).dump(), "[]");
    EXPECT_EQ(run(operation({count}), {}).dump(), R"({"count":0})");
    EXPECT_EQ(run(operation({list, count}), {}).dump(), R"({"procs":[],"count":0})");
    scene.rc = 17;
    EXPECT_EQ(run(operation({}, QBOBJ_RETURNS_ID), {}).dump(), R"({"result":17})");
    EXPECT_EQ(run(operation({list}, QBOBJ_RETURNS_COUNT), {}).dump(), R"({"procs":[],"result":17})");
    scene.rc = static_cast<uint32_t>(-7);
    EXPECT_EQ(run(operation({}, QBOBJ_RETURNS_ID, 0), {}).dump(), R"({"result":-7})") << "ids may be negative";
}

TEST_F(Calls, OutRecordsAreZeroFilledAndShowWhatTheOperationMadeAbsent)
{
    const auto share = operation({argument("share", QBOBJ_KIND_RECORD, QBOBJ_OUT, "Share")});
    scene.fill = [](const QbobjValue *values) {
        auto *share = static_cast<Share *>(values[0].p);
        share->QuotaMB = UINT64_MAX;
        share->ReserveMB_void = 1;
        share->ShareName = "bad \xFF text";
    };
    const Json got = run(share, {});
    EXPECT_EQ(got["QuotaMB"].dump(), "18446744073709551615");
    EXPECT_EQ(got["ReserveMB"], nullptr);
    EXPECT_EQ(got["Dedup"], 0);
}

TEST_F(Calls, XmlComesOutAsItsText)
{
    scene.fill = [](const QbobjValue *values) {
        xmlNodePtr node = xmlNewNode(nullptr, BAD_CAST "Dictionary");
        xmlNewChild(node, nullptr, BAD_CAST "Word", BAD_CAST "ä &lt; b");
        *static_cast<xmlNodePtr *>(values[0].p) = node;
    };
    const auto xml = operation({argument("dictionary", QBOBJ_KIND_XML, QBOBJ_OUT)});
    const std::string text = run(xml, {})["dictionary"];
    EXPECT_THAT(text, HasSubstr("<Dictionary>"));
    EXPECT_THAT(text, HasSubstr("&lt; b</Word>"));
    scene.fill = [](const QbobjValue *) {};
    EXPECT_EQ(run(xml, {})["dictionary"], nullptr);
    // The root of a document, with texts that must not gain blanks; the document goes with it.
    scene.fill = [](const QbobjValue *values) {
        xmlDocPtr document = xmlNewDoc(BAD_CAST "1.0");
        xmlNodePtr root = xmlNewNode(nullptr, BAD_CAST "Dictionary");
        xmlDocSetRootElement(document, root);
        xmlNodePtr item = xmlNewChild(root, nullptr, BAD_CAST "item", nullptr);
        xmlNewProp(item, BAD_CAST "key", BAD_CAST "a");
        xmlAddChild(item, xmlNewCDataBlock(document, BAD_CAST "<b>", 3));
        *static_cast<xmlNodePtr *>(values[0].p) = root;
    };
    EXPECT_THAT(run(xml, {})["dictionary"].get<std::string>(), HasSubstr("<item key=\"a\"><![CDATA[<b>]]></item>"));
}

TEST_F(Calls, SecretsComeOutInClearOnlyWhenAskedFor)
{
    scene.fill = [](const QbobjValue *values) {
        auto *group = static_cast<Group *>(values[0].p);
        static User member{};
        member.Password = "hunter2";
        group->SecondaryMember = &member;
    };
    const auto group = operation({argument("group", QBOBJ_KIND_RECORD, QBOBJ_OUT, "Group")}, QBOBJ_RETURNS_CODE, 0);
    const Arguments arguments(group, input);
    Call call(group, arguments);
    Database database(options);
    call.run(database, 30);
    EXPECT_EQ(call.outcome()["SecondaryMember"][0]["Password"], masked_password);
    EXPECT_EQ(call.outcome(true)["SecondaryMember"][0]["Password"], "hunter2");
}

TEST_F(Calls, ReturnedValuesAreJudgedByTheirMeaning)
{
    const ErrorInfo reported = {801, "users.cpp", 12, "User (anna) already exists."};
    constexpr uint32_t kMinusOne = 0xFFFFFFFF;
    const struct {
        QbobjReturn returns;
        uint32_t rc;
        ErrorInfo err;
        int64_t code;
        const char *message;
        Status status;
    } failures[] = {
        {QBOBJ_RETURNS_CODE, 801, reported, 801, "User (anna) already exists.", Status::kRefused},
        {QBOBJ_RETURNS_CODE, 5, {}, 5, "a database statement failed", Status::kFailed},
        {QBOBJ_RETURNS_CODE, 3, {}, 3, "an internal database step failed; the log says which", Status::kRefused},
        {QBOBJ_RETURNS_CODE, 4, {}, 4, "the operation failed and does not say why", Status::kRefused},
        {QBOBJ_RETURNS_CODE, 2, {}, 2, "out of memory, or an internal step failed", Status::kMemory},
        {QBOBJ_RETURNS_CODE, 6, {}, 6, "nothing was found, or nothing changed", Status::kNotFound},
        {QBOBJ_RETURNS_FOUND, kMinusOne, {}, -1, "not found", Status::kNotFound},
        {QBOBJ_RETURNS_ID, kMinusOne, {}, -1, "not found", Status::kNotFound},
        {QBOBJ_RETURNS_COUNT, kMinusOne, reported, 801, "User (anna) already exists.", Status::kRefused},
        {QBOBJ_RETURNS_ANSWER, kMinusOne, {}, -1, "there is no answer", Status::kFailed},
    };
    for (const auto &each : failures) {
        scene.rc = each.rc;
        scene.err = each.err;
        const Failure failure = refusal(operation({}, each.returns), {});
        EXPECT_STREQ(failure.what(), each.message);
        EXPECT_EQ(failure.code, each.code);
        EXPECT_EQ(failure.status, each.status);
        EXPECT_EQ(failure.operation, "tryThing");
        EXPECT_EQ(failure.line, each.err.line);
    }
}

TEST_F(Calls, AnAnswerHasItsStatus)
{
    const auto status = [&](QbobjReturn returns, uint32_t rc) {
        scene.rc = rc;
        const QbobjOperation row = operation({}, returns, 0);
        const Arguments arguments(row, input);
        Call call(row, arguments);
        Database database(options);
        call.run(database, 30);
        return call.status();
    };
    EXPECT_EQ(status(QBOBJ_RETURNS_ANSWER, 0), Status::kDone) << "yes";
    EXPECT_EQ(status(QBOBJ_RETURNS_ANSWER, 1), Status::kNotFound) << "no";
    EXPECT_EQ(status(QBOBJ_RETURNS_TRUTH, 1), Status::kDone) << "yes";
    EXPECT_EQ(status(QBOBJ_RETURNS_TRUTH, 0), Status::kNotFound) << "no";
    EXPECT_EQ(status(QBOBJ_RETURNS_ID, 17), Status::kDone);
    EXPECT_EQ(status(QBOBJ_RETURNS_COUNT, 0), Status::kDone) << "a count of none is a count";
}

TEST_F(Calls, AReportWithoutAFailureIsAWarning)
{
    scene.err = {8, "disks.cpp", 5, "Missing argument."};
    EXPECT_TRUE(run(operation({}), {}).is_discarded());
    EXPECT_EQ(warning, "8 Missing argument.");
}

TEST_F(Calls, ALockedDatabaseIsNoId)
{
    sqlite3 *other = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    scene.rc = 5;
    const Failure failure = refusal(operation({}, QBOBJ_RETURNS_ID), {});
    EXPECT_THAT(failure.what(), HasSubstr("database is locked"));
    sqlite3_close(other);
    EXPECT_EQ(run(operation({}, QBOBJ_RETURNS_ID, 0), {}).dump(), R"({"result":5})");
}

TEST_F(Calls, SecretsDoNotStandOnTheCommandLine)
{
    for (const char *word :
         {"Password=hunter2", "Password=", "user.Password=hunter2", R"({"Password":"hunter2"})",
          R"([{"Password":"hunter2"}])", R"(user={"Password":"hunter2"})", R"(user=[{"Password":"-"}])",
          R"({"user":{"Password":"hunter2"}})", R"({"user":{"Password":["hunter2"]}})"}) {
        const std::string text = message(kUser, {"UserName=anna", word});
        EXPECT_THAT(text, HasSubstr("Password=- to be asked for it")) << word;
        EXPECT_THAT(text, testing::Not(HasSubstr("hunter2")));
    }
    const auto group = operation({argument("group", QBOBJ_KIND_RECORD, QBOBJ_IN, "Group")});
    EXPECT_THAT(message(group, {R"(SecondaryMember=[{"Password":"hunter2"}])"}), HasSubstr("SecondaryMember"));
    EXPECT_THAT(message(group, {"SecondaryMember.Password=hunter2"}), HasSubstr("SecondaryMember.Password=-"));
}

TEST_F(Calls, TheMaskIsNoSecretAndAFileMayHoldOne)
{
    std::string seen;
    scene.fill = [&](const QbobjValue *values) { seen = static_cast<const User *>(values[0].p)->Password; };
    QbobjOperation keeping = kUser;
    keeping.arguments[0].keeps = "Password";
    run(keeping, {std::string("Password=") + masked_password});
    EXPECT_EQ(seen, masked_password);
    const Json out = run(kUser, {"@" + file("user.json", R"({"UserName":"anna","Password":"hunter2"})")});
    EXPECT_EQ(seen, "hunter2");
    EXPECT_EQ(out["Password"], masked_password) << "it is not shown again";
}

TEST_F(Calls, ATextMustBeOneOfItsFieldsWords)
{
    const auto security = judging("qbobj_setSecurity", "Security", nullptr);
    EXPECT_EQ(message(security, {"Security=usr"}),
              "Security: \"usr\" is none of its words (user, ads) (did you mean user?)");
    EXPECT_EQ(message(security, {R"({"idmapBackend":"ldap"})"}),
              "idmapBackend: \"ldap\" is none of its words (tdb, rid)");
    const auto share = judging("qbobj_addShare", "Share", nullptr);
    EXPECT_THAT(
        message(share, {R"([{},{"Cifs":{"HostAcl":[{"Access":"all"}]}}])"}),
        HasSubstr("record[1].Cifs.HostAcl[0].Access: \"all\" is none of its words (ReadWrite, ReadOnly, Disabled)"));
    EXPECT_THAT(message(share, {"Cifs.DefaultAccess=ReadWrit"}), HasSubstr("(did you mean ReadWrite?)"));
    for (const char *good : {"Security=user", "Security=ADS", "Security=", "Realm=anything"}) {
        run(security, {good});
        EXPECT_EQ(scene.calls, 1) << good << ": case and an empty text are the library's to judge";
        scene.calls = 0;
    }
}

TEST_F(Calls, WhatTheOperationIgnoresIsSaid)
{
    const auto warning_of = [&](const QbobjOperation &row, const std::vector<std::string> &words) {
        Arguments arguments(row, input);
        arguments.take(words);
        arguments.checks().refuse_useless();
        return arguments.checks().warning();
    };
    const auto add = judging("qbobj_addUser", "User", "FullName HomeFolderSettings.UserId IsDomainMember");
    EXPECT_EQ(warning_of(add, {"UserName=a", "FullName=b"}), "FullName is not stored by addUser");
    EXPECT_EQ(warning_of(add, {R"({"UserName":"a","FullName":"b","IsDomainMember":1})", "HomeFolderSettings.UserId=5"}),
              "FullName, IsDomainMember, HomeFolderSettings.UserId are not stored by addUser");
    EXPECT_EQ(warning_of(add, {R"([{"UserName":"a","FullName":"b"},{"UserName":"c","FullName":"d"}])"}),
              "FullName is not stored by addUser")
        << "once";
    EXPECT_EQ(warning_of(add, {R"({"UserName":"a","FullName":"","IsDomainMember":0,"HomeFolderSettings":null})"}), "");

    const std::string fresh = "@" + file("new.json", R"({"UserName":"a","FullName":"b"})");
    const std::string read = "@" + file("read.json", R"({"resource_id":100,"UserName":"a","FullName":"b"})");
    EXPECT_EQ(warning_of(add, {fresh}), "FullName is not stored by addUser");
    EXPECT_EQ(warning_of(add, {read}), "") << "a record that was read comes back as it is";
    EXPECT_EQ(warning_of(add, {read, "FullName=c"}), "FullName is not stored by addUser") << "this was typed";
    const std::string settings = "@" + file("settings.json", R"({"Security":"user","domainSid":"S-1"})");
    EXPECT_EQ(warning_of(judging("qbobj_setSecurity", "Security", "domainSid"), {settings}), "") << "there is but one";

    const auto clear = judging("qbobj_deleteLog", "LogQuery", "msg_tag limit");
    EXPECT_EQ(warning_of(clear, {"timestamp_max=5", "msg_tag=A"}), "msg_tag is not used by deleteLog");
    EXPECT_THROW(warning_of(clear, {"msg_tag=A", "limit=5"}), Failure) << "nothing would limit what is deleted";
}

TEST_F(Calls, TheMaskIsOnlyTakenWhereItMeansTheStoredSecret)
{
    const std::string mask = masked_password;
    const auto modify = judging("qbobj_modifyUser", "User", nullptr, "Password");
    run(modify, {"UserId=100", "Password=" + mask});
    run(modify, {R"({"UserId":100,"Password":")" + mask + R"("})"});
    EXPECT_EQ(scene.calls, 2);
    scene.calls = 0;
    const std::string refused =
        "the dots stand for a stored secret, which modifyInitiator cannot look up: give the "
        "secret itself, or null (--with-secrets reads it)";
    const auto initiator = judging("qbobj_modifyInitiator", "Initiator", nullptr);
    EXPECT_EQ(message(initiator, {"Name=a", "ChapSecret=" + mask}), "ChapSecret: " + refused);
    EXPECT_EQ(message(initiator, {"@" + file("i.json", R"([{"ChapSecret":")" + mask + R"("}])")}),
              "record[0].ChapSecret: " + refused);
    scene.calls = 0;
    run(judging("qbobj_deleteInitiator", "Initiator", nullptr), {"ChapSecret=" + mask});
    EXPECT_EQ(scene.calls, 1) << "what is removed is not stored";
    run(judging("qbobj_modifyUser", "User", "SysHash"), {"UserId=100", "SysHash=" + mask});
    EXPECT_EQ(scene.calls, 2) << "nor is what is ignored";
}

TEST_F(Calls, MessagesOfTheLibraryDoNotShowAGivenSecret)
{
    scene.rc = 8;
    scene.err = {8, "users.cpp", 1, "Invalid Password (hunter2) rc=3"};
    EXPECT_STREQ(refusal(kUser, {"@" + file("user.json", R"({"Password":"hunter2"})")}).what(),
                 "Invalid Password (●●●●●●●●) rc=3");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
