// qbobj diff: what two databases differ in, told in records, and nothing left untold.
#include <filesystem>

#include "anomaly/setups.h"
#include "json_text.h"
#include "run.h"

using qbcli::Json;
using test::Result;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

struct Diff : test::Program {
    std::string other = directory.path + "/other.db";

    Diff() { copy(); }

    /// Both become the same again.
    void copy() const
    {
        for (const char *end : {"", "-wal", "-shm"}) std::filesystem::remove(other + end);
        std::filesystem::copy_file(path, other);
    }
    static void ASSERT_OK(const Result &result) { EXPECT_EQ(result.status, 0) << result.err; }

    static void execute(const std::string &file, const std::string &sql)
    {
        sqlite3 *db = nullptr;
        char *why = nullptr;
        EXPECT_EQ(sqlite3_open_v2(file.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &why), SQLITE_OK) << why;
        sqlite3_close(db);
    }
    void change(std::vector<std::string> words, const std::string &input = "") const
    {
        words.insert(words.begin(), {"-d", other});
        ASSERT_OK(run(words, input));
    }
    Result diff(const std::vector<std::string> &more = {}) const
    {
        std::vector<std::string> words = {"diff", path, other};
        words.insert(words.end(), more.begin(), more.end());
        return run(words);
    }
    Json json() const { return Json::parse(diff({"--json"}).out); }
};

TEST_F(Diff, EqualDatabasesAreEqual)
{
    const Result result = diff();
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(result.out, IsEmpty());
    EXPECT_EQ(diff({"--compact"}).out, "{\"records\":[],\"rows\":[]}\n");
}

TEST_F(Diff, TellsRecordsByTheirNamesAndFields)
{
    ASSERT_OK(call({"addUser", "UserName=anna", "GroupName=users", "Password=-"}, "geheim\n"));
    ASSERT_OK(call({"addShare", "ShareName=films", "VolumeId=tank"}));
    copy();
    change({"edit", "modifyUser", "UserId=100", "Email=anna@example.com"});
    change({"addGroup", "GroupName=family"});
    change({"deleteShare", "ShareId=1"});
    const Result result = diff();
    EXPECT_EQ(result.status, 1) << result.err;
    EXPECT_THAT(result.out, HasSubstr("User anna (100) changed\n  Email   -> anna@example.com\n"));
    EXPECT_THAT(result.out, HasSubstr("Group family (100) added\n"));
    EXPECT_THAT(result.out, HasSubstr("Share films (1) removed\n"));
    EXPECT_THAT(result.out, HasSubstr("  ZfsName  tank/films\n"));
    EXPECT_THAT(result.out, Not(HasSubstr("SimpleShare"))) << "it tells nothing that Share does not";

    const Json records = json()["records"];
    const auto user =
        std::find_if(records.begin(), records.end(), [](const Json &each) { return each["record"] == "User"; });
    ASSERT_NE(user, records.end());
    EXPECT_EQ(
        user->dump(),
        R"json({"record":"User","name":"anna (100)","change":"changed","fields":[{"field":"Email","before":"","after":"anna@example.com"}]})json");
}

TEST_F(Diff, TurnedRoundItTellsTheOpposite)
{
    change({"addGroup", "GroupName=family"});
    const Result result = run({"diff", other, path});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.out, HasSubstr("Group family (100) removed\n"));
}

TEST_F(Diff, ARecordThatThereIsOnce)
{
    change({"edit", "setAccountDefault", "DiskQuotaWarn=70"});
    EXPECT_THAT(diff().out, HasSubstr("AccountDefault changed\n  DiskQuotaWarn  80 -> 70\n"));
    EXPECT_EQ(json()["rows"], Json::array());
}

TEST_F(Diff, WhatNoOperationShowsIsToldByRows)
{
    change({"setRegistryEntry", "a", "b"});
    change({"setServiceEntry", "LANGUAGE", "de-de"});
    EXPECT_EQ(
        json().dump(),
        R"({"records":[],"rows":[)"
        R"({"table":"$registry","change":"added","key":{"key":"a"},"column":"key","before":null,"after":"a"},)"
        R"({"table":"$registry","change":"added","key":{"key":"a"},"column":"value","before":null,"after":"b"},)"
        R"({"table":"service_misc","change":"changed","key":{"key":"LANGUAGE"},"column":"val","before":"en-us","after":"de-de"}]})");
    const Result result = diff();
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.out, HasSubstr("LANGUAGE"));
}

TEST_F(Diff, SecretsAreToldAsChangedAndNotShown)
{
    execute(path,
            "INSERT INTO `$iscsi_initiator` (id,name,chap_auth,chap_secret) VALUES(1,'laptop',1,'vorher-geheim')");
    ASSERT_OK(call({"addUser", "UserName=anna", "GroupName=users", "Password=-"}, "geheim\n"));
    copy();
    execute(other, "UPDATE `$iscsi_initiator` SET chap_secret='nachher-geheim'");
    change({"setUserPassword", "UserId=100", "Password=-"}, "anderes\n");
    for (const Result &result : {diff(), diff({"--json"})}) {
        EXPECT_EQ(result.status, 1);
        EXPECT_THAT(result.out, Not(HasSubstr("geheim")));
        EXPECT_THAT(result.out, Not(HasSubstr("$1$")));
        EXPECT_THAT(result.out, HasSubstr("passwd"));
    }
    EXPECT_THAT(diff().out, HasSubstr("ChapSecret changed\n"));
}

TEST_F(Diff, RowsOfTablesWithoutAKeyCountByTheirContent)
{
    execute(path, "INSERT INTO cifs_dfs_option (share_id,share) VALUES(9,'x'),(9,'x'),(9,'y')");
    copy();
    execute(other, "DELETE FROM cifs_dfs_option; INSERT INTO cifs_dfs_option (share_id,share) VALUES(9,'y'),(9,'x')");
    const Json rows = json()["rows"];
    ASSERT_EQ(rows.size(), 2u) << rows;
    EXPECT_EQ(rows[0]["change"], "removed");
    EXPECT_EQ(rows[1]["before"], "x");
}

/// Each value of each row, changed alone, is told somewhere.
TEST_F(Diff, NoChangedColumnIsHidden)
{
    const struct {
        const char *change;
        const char *words;
    } cases[] = {
        {"UPDATE `$user` SET shell='/bin/other' WHERE id=100", "/bin/other"},
        {"UPDATE `$user` SET email='else@example.com' WHERE id=98", "else@example.com"},
        {"UPDATE `$user` SET is_locked=7 WHERE id=100", "7"},
        {"UPDATE `$group` SET rid=4711 WHERE id=110", "4711"},
        {"UPDATE share SET comment='another' WHERE id=1", "another"},
        {"UPDATE share SET update_ts='2001-01-01 00:00:00' WHERE id=1", "2001-01-01"},
        {"UPDATE user_acl SET write=0 WHERE share_id=1", "user_acl"},
        {"UPDATE `$timemachine_quota` SET capacity_mb=4711 WHERE user_id=101", "4711"},
        {"UPDATE service_ssh SET port=NULL", "22"},
        {"UPDATE service_ftp SET masquerade=X'4711'", "4711"},
        {"UPDATE _dictionary SET str='else' WHERE id='add'", "else"},
        {"INSERT INTO `$application_on_share` VALUES('tank/media','app','data')", "app"},
        {"DELETE FROM _lang_supported WHERE id=9", "zh-tw"},
    };
    execute(path, test::kPopulation);
    for (const auto &each : cases) {
        SCOPED_TRACE(each.change);
        copy();
        execute(other, each.change);
        const Result result = diff({"--compact"});
        EXPECT_EQ(result.status, 1) << result.err;
        EXPECT_THAT(result.out, HasSubstr(each.words));
    }
}

TEST_F(Diff, NeitherDatabaseIsWrittenTo)
{
    change({"addGroup", "GroupName=family"});
    const auto sum = [](const std::string &file) { return test::run_command({"/usr/bin/cksum", file}).out; };
    const std::string before = sum(path) + sum(other);
    EXPECT_EQ(diff().status, 1);
    EXPECT_EQ(diff({"--read-only"}).status, 1);
    EXPECT_EQ(sum(path) + sum(other), before);
}

TEST_F(Diff, TroubleIsTwo)
{
    const std::string text = file("text", "no database");
    const struct {
        std::vector<std::string> words;
        const char *message;
    } cases[] = {
        {{"diff", path, directory.path + "/none.db"}, "no such database"},
        {{"diff", text, path}, "is not an appliance database"},
        {{"diff", path}, "diff: the NEW is missing"},
        {{"diff", path, other, other}, "is one word too many"},
        {{"diff", path, other, "--dry-run"}, "--dry-run is for operations"},
    };
    for (const auto &each : cases) {
        const Result result = run(each.words);
        EXPECT_EQ(result.status, 2) << each.message;
        EXPECT_THAT(result.err, HasSubstr(each.message));
        EXPECT_THAT(result.out, IsEmpty());
    }
    execute(other, "CREATE TABLE stray (a)");
    EXPECT_EQ(diff().status, 2);
    EXPECT_THAT(diff().err, HasSubstr("the databases differ in their tables: stray"));
}

TEST_F(Diff, WhatWentOutAndCameBackIsEqual)
{
    execute(path, test::kPopulation);
    const std::string document = directory.path + "/configuration.json";
    std::filesystem::remove(other);
    ASSERT_OK(call({"export", "--secrets", document}));
    ASSERT_OK(run({"init", other}));
    EXPECT_EQ(diff().status, 1);
    ASSERT_OK(run({"-d", other, "import", document}));
    EXPECT_EQ(diff().status, 0) << diff().out;
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
