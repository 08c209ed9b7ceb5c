// --fields, --tsv and --csv: chosen columns of what operations return.
#include "arguments.h"
#include "cli/run.h"
#include "describe.h"
#include "selection.h"

using qbcli::Json;
using qbcli::Outputs;
using qbcli::Selection;
using test::Result;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

struct Fields : test::Program {
    Fields()
    {
        EXPECT_EQ(call({"addLog", "time=5", "severity=warning", "msgTag=LOGMSG_ONE"}).status, 0);
        EXPECT_EQ(call({"addLog", "time=6", "msgTag=LOGMSG_TWO", "argsXml=" + nasty}).status, 0);
    }

    std::string got(std::vector<std::string> words) const
    {
        const Result result = call(std::move(words));
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return result.out;
    }

    std::string refusal(std::vector<std::string> words) const
    {
        const Result result = call(std::move(words));
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.out, "");
        return result.err;
    }

    /// A CSV text as another program reads it.
    static Json read_csv(const std::string &text)
    {
        const Result result = test::run_command(
            {"/usr/bin/python3", "-c",
             "import csv, io, json, sys; print(json.dumps(list(csv.reader(io.StringIO(sys.stdin.buffer.read()"
             ".decode(), newline=''), strict=True))))"},
            text);
        EXPECT_EQ(result.status, 0) << result.err;
        return Json::parse(result.out);
    }

    const std::string nasty = "a,\"b\"\tc\\t\nd\re ü";
};

TEST_F(Fields, AreTheColumnsInTheGivenOrder)
{
    EXPECT_EQ(got({"getLog", "--fields", "MessageTag,LogId", "--csv"}),
              "MessageTag,LogId\r\nLOGMSG_ONE,1\r\nLOGMSG_TWO,2\r\n");
    EXPECT_EQ(got({"getLog", "--fields=MessageTag, LogId", "--tsv"}),
              "MessageTag\tLogId\nLOGMSG_ONE\t1\nLOGMSG_TWO\t2\n");
    EXPECT_EQ(got({"getLog", "--fields", "MessageTag,LogId", "--table"}),
              "MessageTag  LogId\nLOGMSG_ONE      1\nLOGMSG_TWO      2\n");
    EXPECT_EQ(
        got({"getLog", "--fields", "MessageTag,LogId", "--compact"}),
        "{\"entries\":[{\"MessageTag\":\"LOGMSG_ONE\",\"LogId\":1},{\"MessageTag\":\"LOGMSG_TWO\",\"LogId\":2}]}\n")
        << "in the form of the whole";
    EXPECT_EQ(got({"getLog", "limit=1", "--tsv"}),
              "LogId\tTimeStamp\tSeverity\tCategory\tMessageTag\tMessageArgsXml\n1\t5\twarning\tmisc\tLOGMSG_ONE\t\n");
    EXPECT_EQ(got({"getLog", "msg_tag=LOGMSG_NONE", "--fields", "LogId", "--csv"}), "LogId\r\n");
}

TEST_F(Fields, StandUnescapedInOtherPrograms)
{
    const std::string csv = got({"getLog", "--fields", "LogId,MessageArgsXml", "--csv"});
    EXPECT_EQ(read_csv(csv), Json::array({Json::array({"LogId", "MessageArgsXml"}), Json::array({"1", ""}),
                                          Json::array({"2", nasty})}));
    EXPECT_EQ(got({"getLog", "--fields", "MessageArgsXml,LogId", "--tsv"}),
              "MessageArgsXml\tLogId\n\t1\na,\"b\"\\tc\\\\t\\nd\\re ü\t2\n");
    const Result shown = test::run_on_terminal([&] {
        test::execute({test::program(), "-d", path, "getLog", "--fields", "MessageArgsXml", "--csv"});
        return 0;
    });
    EXPECT_EQ(shown.out, "MessageArgsXml\r\n\"\"\r\n\"a,\"\"b\"\"\\tc\\t\\nd\\re ü\"\r\n") << "in one line each";
}

TEST_F(Fields, OfRecordsInsideAndAround)
{
    EXPECT_EQ(call({"addUser", "UserName=anna", "GroupName=users", "Email=a@example.org"}).status, 0);
    EXPECT_EQ(got({"getUserCollection", "--fields", "UserName,HomeFolderSettings.SizeLimit,TotalEntries", "--csv"}),
              "UserName,HomeFolderSettings.SizeLimit,TotalEntries\r\nanna,0,1\r\n");
    EXPECT_EQ(got({"getUserCollection", "--fields", "HomeFolderSettings.SizeLimit,UserName,HomeFolderSettings.UserId",
                   "--compact"}),
              "{\"User\":[{\"HomeFolderSettings\":[{\"SizeLimit\":0,\"UserId\":100}],\"UserName\":\"anna\"}]}\n");
    EXPECT_EQ(got({"getUserCollection", "--fields", "TotalEntries,Entries", "--tsv"}), "TotalEntries\tEntries\n1\t1\n");
    EXPECT_EQ(got({"getVolumeCollection", "--fields", "VolumeName,SystemRaidMode", "--csv"}),
              "VolumeName,SystemRaidMode\r\ntank,SWELL\r\n");
    const Json rows = read_csv(got({"getUser", "UserId=100", "--fields", "HomeFolderSettings,OldUserName", "--csv"}));
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(Json::parse(rows[1][0].get<std::string>())[0]["UserId"], 100) << "a list is JSON";
    EXPECT_EQ(rows[1][1], "") << "absent";
}

TEST_F(Fields, OfOneRecordAndOfSingleValuesAreOneRow)
{
    EXPECT_EQ(got({"getUID", "admin", "--csv"}), "id\r\n98\r\n");
    EXPECT_EQ(got({"getPosixUIDGID", "admin", "--fields", "gid", "--compact"}), "{\"gid\":98}\n");
    const Result no = call({"isMemberOfGroup", "admin", "guest", "--tsv"});
    EXPECT_EQ(no.status, 3);
    EXPECT_EQ(no.out, "result\n1\n");
    EXPECT_EQ(got({"getLog", "limit=1", "--fields", "count,total", "--csv"}), "count,total\r\n2,2\r\n");
    EXPECT_EQ(got({"getLog", "limit=1", "--fields", "LogId,total", "--csv"}), "LogId,total\r\n1,2\r\n");
    EXPECT_EQ(got({"getLog", "limit=1", "--fields", "count", "--compact"}), "{\"count\":2}\n");
}

TEST_F(Fields, ThatAreUnknownAreRefusedBeforeTheCall)
{
    EXPECT_EQ(refusal({"addUser", "UserName=anna", "GroupName=users", "--fields", "UserName,Emial"}),
              "qbobj: addUser: there is no field Emial in what it returns (did you mean Email?)\n");
    EXPECT_EQ(value("SELECT COUNT(*) FROM `$user` WHERE uname='anna'"), "0");
    EXPECT_THAT(refusal({"getUser", "UserId=98", "--csv", "--fields", "HomeFolderSettings.SizeLimt"}),
                HasSubstr("there is no field HomeFolderSettings.SizeLimt in what it returns (did you mean "
                          "HomeFolderSettings.SizeLimit?)"));
    EXPECT_THAT(refusal({"getUser", "UserId=98", "--fields", "UserName.More"}), HasSubstr("no field UserName.More"));
    EXPECT_THAT(refusal({"getLog", "--fields", "LogId,,Severity"}), HasSubstr("names with commas between them"));
    EXPECT_THAT(refusal({"getLog", "--fields", "LogId,LogId"}), HasSubstr("LogId: is named twice among the fields"));
    EXPECT_THAT(refusal({"getLog", "--fields="}), HasSubstr("--fields: a value is missing"));
}

TEST_F(Fields, OfOneListWhereThereAreSeveral)
{
    EXPECT_THAT(refusal({"checkUserList", "--csv"}),
                HasSubstr("it returns several lists: name the fields of one, as in users.… or groups.…"));
    EXPECT_THAT(refusal({"getBackupTargetCollection", "--fields", "Type", "--csv"}),
                HasSubstr("as in AvailableSourceTarget.Type or AvailableDestinationTarget.Type"));
    const std::string sources = got({"getBackupTargetCollection", "--fields", "AvailableSourceTarget.Type", "--tsv"});
    EXPECT_THAT(sources, StartsWith("AvailableSourceTarget.Type\n"));
    EXPECT_THAT(sources, HasSubstr("\nvolume\n"));
    const Json both = Json::parse(got({"getBackupTargetCollection"}));
    const Json one = Json::parse(got({"getBackupTargetCollection", "--fields", "AvailableSourceTarget.Type"}));
    ASSERT_EQ(one.size(), 1u);
    EXPECT_EQ(one["AvailableSourceTarget"].size(), both["AvailableSourceTarget"].size());
}

TEST_F(Fields, HaveNoPlaceElsewhere)
{
    EXPECT_THAT(refusal({"truncateLog", "1", "--csv"}), HasSubstr("returns nothing of which fields could be chosen"));
    EXPECT_EQ(count(), "2") << "not called";
    EXPECT_THAT(refusal({"list", "--csv"}), HasSubstr("list: --csv is for operations"));
    EXPECT_THAT(refusal({"describe", "addLog", "--tsv"}), HasSubstr("describe: --tsv is for operations"));
    EXPECT_THAT(refusal({"batch", "--fields", "A"}), HasSubstr("batch: --fields is for operations"));
    for (const char *other : {"--tsv", "--json", "--compact", "--table"})
        EXPECT_THAT(refusal({"getLog", "--csv", other}), HasSubstr("in which form?")) << other;
    EXPECT_THAT(refusal({"addUser", "UserName=anna", "GroupName=users", "--csv", "--changes"}),
                HasSubstr("changes are no rows of --csv"));
    EXPECT_EQ(value("SELECT COUNT(*) FROM `$user` WHERE uname='anna'"), "0");
}

TEST_F(Fields, LimitWhatAChangeReturns)
{
    EXPECT_EQ(got({"addUser", "UserName=anna", "GroupName=users", "--fields", "UserId", "--csv"}), "UserId\r\n100\r\n");
    const Json both = Json::parse(got(
        {"edit", "modifyUser", "UserId=100", "Email=a@example.org", "--fields", "UserName", "--dry-run", "--json"}));
    EXPECT_EQ(both["result"], Json({{"UserName", "anna"}}));
    EXPECT_FALSE(both["changes"].empty());
}

TEST_F(Fields, HideSecrets)
{
    const std::string given = file("anna", R"({"UserName": "anna", "GroupName": "users", "Password": "verysecret"})");
    EXPECT_EQ(call({"addUser", "@" + given}).status, 0);
    EXPECT_EQ(got({"getUser", "UserId=100", "--fields", "Password", "--csv"}), "Password\r\n●●●●●●●●\r\n");
    EXPECT_EQ(got({"getUser", "UserId=100", "--fields", "Password", "--tsv"}), "Password\n●●●●●●●●\n");
    const std::string laptop = file("laptop", R"({"Name": "laptop", "ChapAuth": 1, "ChapSecret": "twelve-chars"})");
    EXPECT_EQ(call({"addInitiator", "@" + laptop}).status, 0);
    EXPECT_EQ(got({"getInitiatorCollection", "--fields", "ChapSecret", "--tsv"}), "ChapSecret\n●●●●●●●●\n");
    EXPECT_EQ(got({"--with-secrets", "getInitiatorCollection", "--fields", "ChapSecret", "--tsv"}),
              "ChapSecret\ntwelve-chars\n");
}

Json rows_of(const char *operation, const std::vector<std::string> &fields, const char *argument, const char *value)
{
    const Selection selection(qbcli::find_operation(operation), fields);
    return selection.rows(Outputs{{{argument, Json::parse(value)}}, true});
}

TEST(Selected, ListsInsideGiveOneValueOrAll)
{
    const char *users = R"({"User": [{"UserName": "a", "UserQuota": []},
                                     {"UserName": "b", "UserQuota": [{"HardMB": 1}]},
                                     {"UserName": "c", "UserQuota": [{"HardMB": 2}, {"HardMB": 3}]}]})";
    EXPECT_EQ(rows_of("getUserCollection", {"UserName", "UserQuota.HardMB"}, "users", users),
              Json::parse(R"([["a", null], ["b", 1], ["c", [2, 3]]])"));
    EXPECT_EQ(rows_of("getUserCollection", {"users.UserName"}, "users", users),
              Json::parse(R"([["a"], ["b"], ["c"]])"));
    EXPECT_EQ(rows_of("getUserCollection", {"UserName"}, "users", "null"), Json::array());
}

TEST(Selected, RowsCarryWhatStandsAroundThem)
{
    const char *disks = R"([{"key": "k", "EnclosureName": "left", "Disk": [{"Model": "x"}, {"Model": "y"}]},
                            {"EnclosureName": "right", "Disk": []}])";
    EXPECT_EQ(rows_of("getDiskCollection", {"Model", "EnclosureName"}, "disks", disks),
              Json::parse(R"([["x", "left"], ["y", "left"]])"));
    EXPECT_EQ(rows_of("getDiskCollection", {"EnclosureName"}, "disks", disks), Json::parse(R"([["left"], ["right"]])"));
    EXPECT_EQ(rows_of("getDiskCollection", {"disks.key", "Disk.Model"}, "disks", disks),
              Json::parse(R"([["k", "x"], ["k", "y"]])"));
}

TEST(Selected, EveryOperationThatReturnsAnythingHasColumns)
{
    size_t returning = 0;
    size_t names = 0;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) {
        const std::vector<std::string> fields = qbcli::returned_fields(*row);
        if (fields.empty()) {
            EXPECT_THROW(Selection(*row, {}), qbcli::Failure) << row->name;
            continue;
        }
        returning++;
        names += fields.size();
        for (const std::string &field : fields) {
            try {
                EXPECT_THAT(Selection(*row, {field}).columns(), ElementsAre(field));
            } catch (const qbcli::Failure &failure) {
                EXPECT_THAT(failure.what(), HasSubstr("several lists")) << row->name << " " << field;
                EXPECT_TRUE(row->name == std::string("qbobj_checkUserList") ||
                            row->name == std::string("qbobj_getBackupTargetCollection"))
                    << row->name << " " << field;
            }
        }
    }
    EXPECT_GT(returning, 100u);
    EXPECT_GT(names, 1000u);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
