// The small parts: JSON text, suggestions, UTF-8, layout, hidden secrets.
#include "cli/run.h"
#include "database.h"
#include "failure.h"
#include "json_text.h"
#include "memory.h"
#include "suggest.h"
#include "table.h"
#include "utf8.h"

using namespace qbcli;
using testing::HasSubstr;
using testing::Not;

namespace {

std::string refusal(const std::string &text)
{
    try {
        parse_json(text, "it");
    } catch (const Failure &failure) {
        return failure.what();
    }
    return "(taken)";
}

TEST(JsonText, RefusesDuplicatesAtAnyDepthOnly)
{
    EXPECT_EQ(refusal(R"({"a":[{"b":1,"c":{},"b":2}]})"), "it: b is given twice");
    EXPECT_EQ(refusal(R"({"a":{"b":1},"c":{"b":1}})"), "(taken)");
    EXPECT_EQ(refusal(R"([{"a":1},{"a":1}])"), "(taken)");
}

TEST(JsonText, RefusesNestingBeyondTheLimit)
{
    const auto nested = [](int levels) {
        return std::string(static_cast<size_t>(levels), '[') + std::string(static_cast<size_t>(levels), ']');
    };
    EXPECT_EQ(refusal(nested(kDeepestJson)), "(taken)");
    EXPECT_THAT(refusal(nested(kDeepestJson + 1)), HasSubstr("nested deeper than 32 levels"));
    EXPECT_THAT(refusal(std::string(1000000, '[')), HasSubstr("nested deeper"));
}

TEST(JsonText, NeverQuotesWhatItRead)
{
    for (const char *text : {R"({"Password":"hunter2)", R"({"Password":"hunter2"x)", R"({"Password":hunter2})",
                             R"({"Password" "hunter2"})", "{\"Password\":\"hunter2\xFF\"}"}) {
        EXPECT_THAT(refusal(text), HasSubstr("it: malformed JSON at line 1, column "));
        EXPECT_THAT(refusal(text), Not(HasSubstr("hunter2")));
    }
}

TEST(Suggest, FindsTheNearest)
{
    const Names names = {"addUser", "addUserList", "getUser", "getUserCollection", "deleteShare"};
    const std::pair<const char *, const char *> cases[] = {{"adUser", "addUser"},
                                                           {"ADDUSER", "addUser"},
                                                           {"addUesr", "addUser"},
                                                           {"getUserColl", "getUserCollection"},
                                                           {"deletShare", "deleteShare"},
                                                           {"xyz", ""},
                                                           {"", ""},
                                                           {"q", ""}};
    for (const auto &[wrong, right] : cases) EXPECT_EQ(nearest(wrong, names), right) << wrong;
    EXPECT_EQ(did_you_mean("xyz", names), "");
}

TEST(Suggest, KnowsOtherVerbsAndPlurals)
{
    const Names names = {"addUser",      "addUserList", "getUser",  "getUserCollection", "modifyUser",
                         "deleteUser",   "getLog",      "addLog",   "setAccountDefault", "getAccountDefault",
                         "updateVolume", "queryShare",  "getShare", "getShareCollection"};
    const std::pair<const char *, const char *> cases[] = {{"createUser", "addUser"},
                                                           {"create-user", "addUser"},
                                                           {"userAdd", "addUser"},
                                                           {"newuser", "addUser"},
                                                           {"qbobj_newuser", ""},
                                                           {"removeUser", "deleteUser"},
                                                           {"rmuser", "deleteUser"},
                                                           {"user_del", "deleteUser"},
                                                           {"userlist", "getUserCollection"},
                                                           {"listUsers", "getUserCollection"},
                                                           {"users", "getUserCollection"},
                                                           {"getUsers", "getUserCollection"},
                                                           {"getUserList", "getUserCollection"},
                                                           {"user", "getUser"},
                                                           {"showUser", "getUser"},
                                                           {"updateUser", "modifyUser"},
                                                           {"setUser", "modifyUser"},
                                                           {"changeAccountDefault", "setAccountDefault"},
                                                           {"editVolume", "updateVolume"},
                                                           {"log", "getLog"},
                                                           {"findShare", "getShare"},
                                                           {"addUesr", "addUser"},
                                                           {"add", "addLog"},
                                                           {"xyzzy", ""}};
    for (const auto &[wrong, right] : cases) EXPECT_EQ(nearest_operation(wrong, names), right) << wrong;
}

TEST(Suggest, CountsSwapsAsOne)
{
    EXPECT_EQ(edit_distance("ab", "ba"), 1u);
    EXPECT_EQ(edit_distance("kitten", "sitting"), 3u);
    EXPECT_EQ(edit_distance("", "abc"), 3u);
    EXPECT_EQ(edit_distance("Same", "same"), 0u);
}

TEST(Utf8, KnowsWhatIsWellFormed)
{
    for (const char *good : {"", "abc", "ä", "€", "😀", "\xF4\x8F\xBF\xBF"}) EXPECT_TRUE(is_utf8(good)) << good;
    for (const char *bad :
         {"\x80", "\xC0\xAF", "\xC3", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "a\xFF"})
        EXPECT_FALSE(is_utf8(bad));
}

TEST(Utf8, MeasuresAndCutsByColumns)
{
    EXPECT_EQ(display_width("Grüße"), 5u);
    EXPECT_EQ(display_width("日本"), 4u);
    EXPECT_EQ(display_width("e\xCC\x81"), 1u) << "a combining accent takes no column";
    EXPECT_EQ(fit("abcdef", 6), "abcdef");
    EXPECT_EQ(fit("abcdef", 4), "abc…");
    EXPECT_EQ(fit("日本語", 4), "日…");
    EXPECT_EQ(fit("日本語", 5), "日本…");
    EXPECT_EQ(fit("e\xCC\x81xyz", 3), "e\xCC\x81x…") << "the accent stays on its letter";
    EXPECT_EQ(fit("abc", 0), "");
}

TEST(Utf8, WritesControlCharactersOut)
{
    EXPECT_EQ(printable("a\tb\r\n\x1b[0m\x7f\xC2\x9B"), "a\\tb\\r\\n\\x1b[0m\\x7f\\x9b");
    EXPECT_EQ(printable("a\xFF"
                        "b"),
              "a\xEF\xBF\xBD"
              "b");
}

TEST(Redacted, HidesDumpedSecretsByTheirNames)
{
    const std::vector<std::string_view> none;
    EXPECT_EQ(redacted("  s Password = hunter2", none), "  s Password = ●●●●●●●●");
    EXPECT_EQ(redacted(" s SysHash = $6$ab\ncd", none), " s SysHash = ●●●●●●●●");
    EXPECT_EQ(redacted(" s Password = (null)", none), " s Password = (null)");
    EXPECT_EQ(redacted(" s Email = a = b", none), " s Email = a = b");
    EXPECT_EQ(redacted(" i Password = 5", none), " i Password = 5");
}

TEST(Redacted, HidesGivenSecretsAnywhere)
{
    EXPECT_EQ(redacted("UPDATE x SET p='hunter2',q='hunter2'", {"hunter2"}), "UPDATE x SET p='●●●●●●●●',q='●●●●●●●●'");
    EXPECT_EQ(redacted("a word", {"a"}), "a word") << "too short to be told from other text";
}

TEST(Memory, IsWiped)
{
    std::string text = "hunter2";
    wipe(text);
    EXPECT_EQ(text, std::string(7, '\0'));
    Json value = Json::parse(R"({"a":["hunter2"],"b":"x"})");
    wipe(value);
    EXPECT_EQ(value["a"][0], std::string(7, '\0'));
    EXPECT_EQ(value["b"], std::string(1, '\0'));
}

TEST(LayOut, ShowsARecordAsLines)
{
    const Json user = Json::parse(R"({"resource_id":0,"UserName":"anna","Email":null,"FullName":"","IsLocked":0,
        "UserQuota":[{"ShareId":"1","HardMB":100}],"HomeFolderSettings":[],"Stat":{"UserAccess":"rw"}})");
    EXPECT_EQ(lay_out(user, 0),
              "resource_id  0\n"
              "UserName     anna\n"
              "IsLocked     0\n"
              "UserQuota\n"
              "  ShareId  1\n"
              "  HardMB   100\n"
              "Stat\n"
              "  UserAccess  rw\n");
}

TEST(LayOut, ShowsAListAsATable)
{
    const Json rows = Json::parse(R"([
        {"resource_id":1,"Size":5,"OldName":"x","VolumeId":"v1","Name":"tank","Empty":"","Void":null,"List":[],"Part":{"a":1}},
        {"resource_id":2,"Size":1234,"OldName":"y","VolumeId":"v22","Name":"日本","Empty":null,"Void":null,"List":[1],"Part":{"a":2}}])");
    EXPECT_EQ(lay_out(rows, 0),
              "Name  VolumeId  Size  List     resource_id  OldName\n"
              "tank  v1           5                     1  x\n"
              "日本  v22       1234  1 entry            2  y\n"
              "(1 more column: --json shows all)\n");
}

TEST(LayOut, ShowsRecordsThatDifferInsideAsSections)
{
    const Json protocols = Json::parse(R"([
        {"key":"ftp","ProtocolId":"ftp","Enabled":1,"FtpOptions":{"Port":21,"AuthMode":"user"},"SshOptions":null},
        {"key":"ssh","ProtocolId":"ssh","Enabled":0,"FtpOptions":null,"SshOptions":{"Port":22}}])");
    const std::string sections =
        "ftp\n"
        "  ProtocolId  ftp\n"
        "  Enabled     1\n"
        "  FtpOptions\n"
        "    Port      21\n"
        "    AuthMode  user\n";
    EXPECT_EQ(lay_out(protocols, 80), sections +
                                          "\nssh\n"
                                          "  ProtocolId  ssh\n"
                                          "  Enabled     0\n"
                                          "  SshOptions\n"
                                          "    Port  22\n");
    EXPECT_THAT(lay_out(Json{{"Protocol", protocols}, {"Count", 2}}, 80),
                testing::StartsWith("Protocol\n  ftp\n    P"));
}

TEST(LayOut, ShowsXmlAsItsLines)
{
    EXPECT_EQ(lay_out({{"dictionary", "<D>\n  <L code=\"en\"/>\x1b\n</D>"}, {"count", 1}}, 80),
              "dictionary\n  <D>\n    <L code=\"en\"/>\\x1b\n  </D>\ncount  1\n");
    EXPECT_EQ(lay_out({{"text", "a\nb"}}, 80), "text  a\\nb\n");
}

TEST(LayOut, ShowsGroupsWithTheirLists)
{
    const Json enclosures = Json::parse(R"([
        {"EnclosureId":"0","Disk":[{"DevName":"sda","Slot":1},{"DevName":"sdb","Slot":2}]},
        {"EnclosureId":"1","Disk":[]}])");
    EXPECT_EQ(lay_out(enclosures, 80),
              "[1]\n"
              "  EnclosureId  0\n"
              "  Disk\n"
              "    DevName  Slot\n"
              "    sda         1\n"
              "    sdb         2\n"
              "\n"
              "[2]\n"
              "  EnclosureId  1\n");
}

TEST(LayOut, LeavesOutAKeyWordThatRepeatsAField)
{
    const Json same = Json::parse(R"({"key":"7","ShareId":"7","ShareName":"media"})");
    EXPECT_EQ(lay_out({same, same}, 0), "ShareName  ShareId\nmedia      7\nmedia      7\n");
    EXPECT_EQ(lay_out(same, 0), "ShareId    7\nShareName  media\n");
    const Json other = Json::parse(R"({"key":"a@b","Name":"a"})");
    EXPECT_EQ(lay_out({other, other}, 0), "Name  key\na     a@b\na     a@b\n");
    EXPECT_EQ(lay_out(other, 0), "key   a@b\nName  a\n");
}

TEST(LayOut, ShowsAListOfOneAsItsRecord)
{
    EXPECT_EQ(lay_out(Json::parse(R"([{"Name":"tank","Size":5}])"), 0), "Name  tank\nSize  5\n");
}

TEST(LayOut, SaysThatThereIsNothing)
{
    EXPECT_EQ(lay_out(Json::array(), 0), "(none)\n");
    EXPECT_EQ(lay_out(Json::parse(R"({"User":[],"Entries":0})"), 0), "User     (none)\nEntries  0\n");
    EXPECT_EQ(lay_out(Json::parse(R"({"a":null})"), 0), "(none)\n");
    EXPECT_EQ(lay_out(nullptr, 0), "(none)\n");
}

TEST(LayOut, ShowsMaskedColumnsLast)
{
    const Json user = {{"Password", "●●●●●●●●"}, {"Email", "a@b"}, {"UserName", "anna"}};
    EXPECT_EQ(lay_out({user, user}, 0),
              "UserName  Email  Password\nanna      a@b    ●●●●●●●●\nanna      a@b    ●●●●●●●●\n");
}

TEST(LayOut, NeverExceedsTheWidth)
{
    Json row;
    for (int i = 0; i < 20; i++) row["Field" + std::to_string(i)] = std::string(static_cast<size_t>(1 + 7 * i), 'x');
    row["TheName"] = "日本語日本語日本語日本語日本語日本語日本語";
    const Json rows = {row, row};
    for (size_t width = 1; width < 400; width++) {
        const std::string text = lay_out(rows, width);
        for (size_t start = 0; start < text.size();) {
            const size_t end = text.find('\n', start);
            const std::string line = text.substr(start, end - start);
            if (!line.starts_with("(")) {
                EXPECT_LE(display_width(line), width) << line;
            }
            start = end + 1;
        }
    }
    EXPECT_THAT(lay_out(rows, 80), HasSubstr("(16 more columns: --json shows all)\n"));
    EXPECT_THAT(lay_out(rows, 80), testing::StartsWith("TheName "));
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
