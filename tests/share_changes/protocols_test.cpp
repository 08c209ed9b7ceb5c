// Changing the protocols of shares: what is written, what is refused, and whose Changed is raised.
#include <sstream>

#include "fixture/plans.h"
#include "share_changes/changes.h"

using namespace test;

namespace {

struct ChangeProtocols : ShareChanges {
    ChangeProtocols() { add_both(); }
    std::string options(const std::string &proto, int id = 1)
    {
        const auto all = rows("SELECT * FROM " + proto + "_share_option WHERE share_id=" + std::to_string(id));
        return all.empty() ? "" : all[0];
    }
    std::vector<std::string> list(const std::string &kind, const std::string &proto, int id = 1)
    {
        return rows("SELECT " + kind + "_id,read,write" + (kind == "host" ? ",root" : "") + " FROM " + kind +
                    "_acl WHERE share_id=" + std::to_string(id) + " AND proto='" + proto + "' ORDER BY 1");
    }
};

/// Changes one after the other to a block, and the row of options that each leaves.
struct Step {
    const char *block;
    const char *row;
    bool changes = true;
};

void expect_steps(ChangeProtocols &test, const char *proto, const char *field, int id, std::vector<Step> steps)
{
    for (const Step &step : steps) {
        SCOPED_TRACE(step.block);
        test.change(std::string("\"") + field + "\":{" + step.block + "}", id);
        EXPECT_EQ(test.options(proto, id), step.row);
        EXPECT_EQ(test.changed().size(), step.changes);
    }
}

TEST_F(ChangeProtocols, CifsFieldByField)
{
    sql("DELETE FROM host_acl; DELETE FROM user_acl; DELETE FROM group_acl; DELETE FROM cifs_dfs_option");
    expect_steps(
        *this, "cifs", "Cifs", 1,
        {{R"("EnableDFS":1)", "1|readonly|1|1|6|4|1|7|0|1023|1|25000|0|0|1|1", false},
         {R"("DefaultAccess":"ReadWrite")", "1|writeable|1|1|6|4|1|7|0|1023|1|25000|0|0|1|0"},
         {R"("DefaultAccess":"Disabled","EnableDFS":5)", "1|disabled|1|1|6|4|1|7|0|1023|1|25000|0|0|1|1"},
         {R"("AllowGuestAccess":0,"ShareDisplayOption":2)", "1|disabled|0|2|6|4|1|7|0|1023|1|25000|0|0|1|0"},
         {R"("EnableRecycleBin":0,"RecycleSizeLimit":5,"RecycleAgeLimit":6)",
          "1|disabled|0|2|6|4|1|7|0|1023|0|5|6|0|1|0"},
         {R"("NewFileFolderPermAutoset":0,"AclChangeRestrictionToggle":7,"EnableOplocks":1)",
          "1|disabled|0|2|6|4|0|7|0|7|0|5|6|1|1|0"},
         {R"("FileCreateGroupRights":"Disabled")", "1|disabled|0|2|0|4|0|7|0|7|0|5|6|1|1|0"},
         {R"("FileCreateEveryoneRights":"ReadWrite","FolderCreateGroupRights":"ReadOnly")",
          "1|disabled|0|2|0|6|0|5|0|7|0|5|6|1|1|0"},
         {R"("FolderCreateEveryoneRights":"ReadWrite","NotAvailable":1)", "1|disabled|0|2|0|6|0|5|7|7|0|5|6|1|0|0"},
         {R"("NotAvailable":2)", "1|disabled|0|2|0|6|0|5|7|7|0|5|6|1|0|0", false},
         {"", "1|disabled|0|2|0|6|0|5|7|7|0|5|6|1|1|0"}});
}

TEST_F(ChangeProtocols, CifsMakesNoRow)
{
    change(R"("Cifs":{"DefaultAccess":"ReadOnly","UserAcl":[{"User":{"resource_id":100},"Access":"ReadWrite"}]})", 2);
    EXPECT_EQ(options("cifs", 2), "");
    EXPECT_THAT(list("user", "cifs", 2), ElementsAre("100|1|1")) << "lists are written all the same";
    EXPECT_THAT(changed(), ElementsAre("Cifs"));
}

TEST_F(ChangeProtocols, AfpFieldByField)
{
    expect_steps(
        *this, "afp", "Afp", 2,
        {{"", "2|1|writeable|1|NULL|NULL"},
         {R"("DefaultAccess":"ReadOnly","AllowGuestAccess":0,"NotAvailable":1)", "2|0|readonly|0|NULL|NULL"},
         {R"("NotAvailable":1,"FileCreateGroupRights":"ReadWrite")", "2|0|readonly|0|NULL|NULL", false},
         {R"("NewFileFolderPermAutoset":1,"FileCreateGroupRights":"ReadWrite")", "2|1|readonly|0|48|0"},
         {R"("NewFileFolderPermAutoset":1,"FolderCreateEveryoneRights":"ReadOnly")", "2|1|readonly|0|48|5"},
         {R"("FolderCreateEveryoneRights":"ReadWrite")", "2|1|readonly|0|48|5", false},
         {R"("NewFileFolderPermAutoset":0,"FolderCreateEveryoneRights":"ReadWrite")", "2|1|readonly|0|NULL|NULL"}});
}

TEST_F(ChangeProtocols, AfpHostsAreCheckedAndNotStored)
{
    sql("INSERT INTO host_acl VALUES(1,1,'afp',1,1,0)");
    change(R"("Afp":{"HostAcl":[{"Host":{"HostName":"new.example.com"},"Access":"ReadOnly"}]})");
    EXPECT_THAT(list("host", "afp"), IsEmpty());
    EXPECT_EQ(value("SELECT COUNT(*) FROM host WHERE name='new.example.com'"), "1");
}

TEST_F(ChangeProtocols, NfsFieldByField)
{
    expect_steps(*this, "nfs", "Nfs", 2,
                 {{"", "2|1|writeable|0"},
                  {R"("DefaultAccess":"Disabled","Sync":1)", "2|1|disabled|1"},
                  {R"("NotAvailable":1,"Sync":1)", "2|0|disabled|1"},
                  {R"("NotAvailable":1,"Sync":1)", "2|0|disabled|1", false},
                  {R"("DefaultAccess":"ReadOnly")", "2|1|readonly|0"}});
}

TEST_F(ChangeProtocols, FtpFieldByField)
{
    expect_steps(
        *this, "ftp", "Ftp", 2,
        {{"", "2|1|writeable|0|0|0"},
         {R"("FileCreateEveryoneRights":"ReadOnly")", "2|1|writeable|0|2|0"},
         {R"("FolderCreateGroupRights":"Disabled")", "2|1|writeable|0|2|56"},
         {R"("FileCreateGroupRights":"Disabled","FolderCreateEveryoneRights":"ReadOnly")", "2|1|writeable|0|50|58"},
         {R"("NewFileFolderPermAutoset":5,"DefaultAccess":"ReadOnly","NotAvailable":1)", "2|0|readonly|1|50|58"},
         {R"("NotAvailable":1)", "2|0|readonly|1|50|58", false}});
}

TEST_F(ChangeProtocols, HttpFieldByField)
{
    expect_steps(*this, "http", "Http", 2,
                 {{"", "2|1|writeable|NULL"},
                  {R"("EnableWebDav":1,"DefaultAccess":"ReadOnly")", "2|1|readonly|1"},
                  {R"("NotAvailable":1)", "2|0|readonly|1"},
                  {R"("NotAvailable":1)", "2|0|readonly|1", false}});
}

TEST_F(ChangeProtocols, HttpServiceLeavesAShareThatIsClosed)
{
    struct Case {
        const char *block;
        const char *shown;
    };
    for (const Case &each :
         {Case{"", "media"}, Case{R"("DefaultAccess":"ReadOnly")", "media"}, Case{R"("NotAvailable":2)", "media"},
          Case{R"("NotAvailable":1)", ""}, Case{R"("DefaultAccess":"Disabled")", ""}}) {
        SCOPED_TRACE(each.block);
        sql("UPDATE service_http SET share_name='media'");
        change(std::string(R"("Http":{)") + each.block + "}");
        EXPECT_EQ(value("SELECT share_name FROM service_http"), each.shown);
    }
    sql("UPDATE service_http SET share_name='bare'");
    change(R"("Http":{"NotAvailable":1})");
    EXPECT_EQ(value("SELECT share_name FROM service_http"), "bare");
}

TEST_F(ChangeProtocols, HttpServiceKnowsTheNameOfBefore)
{
    sql("UPDATE service_http SET share_name='media'");
    change(R"("ShareName":"films","Http":{"NotAvailable":1})");
    EXPECT_EQ(value("SELECT share_name FROM service_http"), "media") << "the share has its new name by then";
}

TEST_F(ChangeProtocols, DlnaComesAndGoes)
{
    expect_steps(*this, "dlna", "Dlna", 2,
                 {{R"("NotAvailable":1,"DefaultAccess":"bogus")", "", false},
                  {R"("DefaultAccess":"ReadOnly","MediaType":"Music")", "2|1|readonly|1"},
                  {R"("DefaultAccess":"ReadOnly","MediaType":"Music")", "2|1|readonly|1", false},
                  {R"("MediaType":"3","NotAvailable":1)", "2|0|readonly|3"},
                  {R"("NotAvailable":1)", "2|0|readonly|0"},
                  {R"("DefaultAccess":"Disabled","MediaType":"bogus")", ""}});
}

TEST_F(ChangeProtocols, DaapComesAndStays)
{
    expect_steps(*this, "daap", "Daap", 2,
                 {{R"("NotAvailable":1)", "", false}, {"", "2|1"}, {"", "2|1", false}, {R"("NotAvailable":1)", "2|0"}});
}

TEST_F(ChangeProtocols, RsyncComesAndGoes)
{
    expect_steps(*this, "rsync", "Rsync", 2,
                 {{R"("NotAvailable":1,"DefaultAccess":"Disabled")", "", false},
                  {R"("DefaultAccess":"ReadOnly","PasswordProtection":"Enabled")", "2|1|readonly|enabled"},
                  {R"("DefaultAccess":"ReadWrite")", "2|1|writeable|enabled"},
                  {R"("PasswordProtection":"Disabled","NotAvailable":1)", "2|0|writeable|disabled"},
                  {R"("NotAvailable":1)", "2|0|writeable|disabled", false}});
    change(R"("Rsync":{"DefaultAccess":"Disabled","UserPasswordAcl":[{"UserName":"new","Password":"x"}]})");
    EXPECT_EQ(options("rsync"), "");
    EXPECT_THAT(list("host", "rsync"), IsEmpty());
    EXPECT_THAT(rows("SELECT * FROM rsync_user_password_acl"), IsEmpty());
    EXPECT_THAT(changed(), ElementsAre("Rsync"));
}

TEST_F(ChangeProtocols, RsyncUsersKeepWhatTheMaskStandsFor)
{
    const std::string mask = masked_password;
    change(R"("Rsync":{"HostAcl":[{"Host":{"HostId":1},"Access":"ReadOnly"}],"UserPasswordAcl":[
        {"UserName":"backup","Password":")" +
           mask + R"("},{"UserName":"new","Password":"x"}]})");
    EXPECT_THAT(rows("SELECT user,password FROM rsync_user_password_acl ORDER BY 1"),
                ElementsAre("backup|secret", "new|x"));
    EXPECT_THAT(changed(), IsEmpty()) << "users do not count";
}

// ---- refusals: what is written before them is not stored

TEST_F(ChangeProtocols, WordsThatAreNone)
{
    struct Case {
        const char *proto;
        const char *fields;
        const char *more = "";
    };
    for (const Case &each : {Case{"Cifs",
                                  "DefaultAccess FileCreateGroupRights FileCreateEveryoneRights "
                                  "FolderCreateGroupRights FolderCreateEveryoneRights"},
                             Case{"Afp",
                                  "DefaultAccess FileCreateGroupRights FileCreateEveryoneRights "
                                  "FolderCreateGroupRights FolderCreateEveryoneRights",
                                  R"("NewFileFolderPermAutoset":1,)"},
                             Case{"Ftp",
                                  "DefaultAccess FileCreateGroupRights FileCreateEveryoneRights "
                                  "FolderCreateGroupRights FolderCreateEveryoneRights"},
                             Case{"Nfs", "DefaultAccess"}, Case{"Dlna", "DefaultAccess MediaType"},
                             Case{"Rsync", "DefaultAccess PasswordProtection"}, Case{"Http", "DefaultAccess"}}) {
        std::istringstream fields(each.fields);
        for (std::string field; fields >> field;)
            refuse(8, std::string("Invalid ") + each.proto + "->" + field + " (readonly).",
                   std::string(R"("Comment":"new",")") + each.proto + "\":{" + each.more + "\"" + field +
                       R"(":"readonly"})");
    }
}

TEST_F(ChangeProtocols, WhatAShareGetsIsCheckedAsInANewOne)
{
    refuse(8, "Invalid Dlna->DefaultAccess (Disabled).", R"("Dlna":{"DefaultAccess":"Disabled"})", 2);
    refuse(8, "Invalid Dlna->MediaType ((null)).", R"("Dlna":{"DefaultAccess":"ReadOnly"})", 2);
    refuse(8, "Invalid Rsync->DefaultAccess ((null)).", R"("Rsync":{})", 2);
    refuse(8, "Invalid Rsync->PasswordProtection ((null)).", R"("Rsync":{"DefaultAccess":"ReadOnly"})", 2);
    refuse(8, "Invalid Dlna->DefaultAccess (ReadWrite).", R"("Dlna":{"DefaultAccess":"ReadWrite"})");
}

TEST_F(ChangeProtocols, ListsThatAreNone)
{
    refuse(8, "Invalid HostAcl->Host cannot be NULL", R"("Nfs":{"HostAcl":[{"Access":"ReadOnly"}]})");
    refuse(8, "Invalid HostName or Network specified (a b).",
           R"("Nfs":{"HostAcl":[{"Host":{"HostName":"a b"},"Access":"ReadOnly"}]})");
    refuse(8, "Specified HostId (9) and/or HostName ((null)) conflict with db. ",
           R"("Afp":{"HostAcl":[{"Host":{"HostId":9},"Access":"ReadOnly"}]})");
    refuse(8, "Invalid UserAcl->User (resource_id=999, UserName=(null)).",
           R"("Ftp":{"UserAcl":[{"User":{"resource_id":999},"Access":"ReadOnly"}]})");
    refuse(8, "Invalid UserAcl->Group cannot be NULL", R"("Http":{"GroupAcl":[{"Access":"ReadOnly"}]})");
    refuse(8, "Invalid UserPasswordAcl->UserName cannot be NULL", R"("Rsync":{"UserPasswordAcl":[{"Password":"x"}]})");
}

// ---- lists and Changed

TEST_F(ChangeProtocols, ABlockWithoutListsEmptiesThem)
{
    for (const char *proto : {"Cifs", "Afp", "Nfs", "Ftp", "Http"}) change(std::string("\"") + proto + "\":{}");
    EXPECT_THAT(rows("SELECT proto FROM host_acl"), ElementsAre("rsync"));
    EXPECT_THAT(rows("SELECT * FROM user_acl"), IsEmpty());
    EXPECT_THAT(rows("SELECT * FROM group_acl"), IsEmpty());
    EXPECT_THAT(rows("SELECT * FROM cifs_dfs_option"), IsEmpty());
}

TEST_F(ChangeProtocols, EachTableOfEachProtocolCounts)
{
    struct Case {
        const char *proto;
        std::vector<const char *> lists;
    };
    const std::map<std::string, std::string> elements = {
        {"HostAcl", R"({"Host":{"HostName":"other.example.com"},"Access":"ReadWrite"})"},
        {"UserAcl", R"({"User":{"resource_id":102},"Access":"Disabled"})"},
        {"GroupAcl", R"({"Group":{"resource_id":111},"Access":"ReadOnly"})"},
        {"DfolderAcl", R"({"Name":"other"})"}};
    for (const Case &each :
         {Case{"Cifs", {"HostAcl", "UserAcl", "GroupAcl", "DfolderAcl"}}, Case{"Afp", {"UserAcl", "GroupAcl"}},
          Case{"Nfs", {"HostAcl"}}, Case{"Ftp", {"HostAcl", "UserAcl", "GroupAcl"}},
          Case{"Http", {"HostAcl", "UserAcl", "GroupAcl"}}, Case{"Rsync", {"HostAcl"}}}) {
        for (const char *list : each.lists) {
            SCOPED_TRACE(std::string(each.proto) + "." + list);
            expect_done("getShare", record(""));
            const qbcli::Json read = last->outcome(true);
            qbcli::Json block = read[each.proto];
            block[list] = qbcli::parse_json("[" + elements.at(list) + "]", "list");
            change(std::string("\"") + each.proto + "\":" + block.dump());
            EXPECT_THAT(changed(), ElementsAre(each.proto));
            change(std::string("\"") + each.proto + "\":" + block.dump());
            EXPECT_THAT(changed(), IsEmpty());
        }
    }
}

TEST_F(ChangeProtocols, OrderOfAListDoesNotCount)
{
    const char *links[] = {R"({"Name":"a"})", R"({"Name":"b","Address":"x"})", R"({"Name":"a"})"};
    const auto block = [&](int first, int second, int third) {
        return std::string(R"("Cifs":{"DfolderAcl":[)") + links[first] + "," + links[second] + "," + links[third] +
               "]}";
    };
    change(block(0, 1, 2));
    EXPECT_THAT(changed(), ElementsAre("Cifs"));
    change(block(1, 0, 2));
    EXPECT_THAT(changed(), IsEmpty());
    change(block(1, 0, 1));
    EXPECT_THAT(changed(), ElementsAre("Cifs")) << "how often an element stands there does";
}

TEST_F(ChangeProtocols, ChangedIsRaisedAndNeverLowered)
{
    change(R"("Daap":{"NotAvailable":1,"Changed":5})");
    EXPECT_EQ(answer("Daap")["Changed"], 5) << "DAAP was off already";
    change(R"("Daap":{"NotAvailable":0,"Changed":5})");
    EXPECT_EQ(answer("Daap")["Changed"], 1);
}

TEST_F(ChangeProtocols, OtherSharesDoNotCount)
{
    expect_done("addShare", R"({"share":{"ShareName":"third","VolumeId":"tank","Nfs":{"DefaultAccess":"ReadOnly",
        "HostAcl":[{"Host":{"HostId":1},"Access":"ReadWrite"}]}}})");
    const auto others = rows("SELECT * FROM host_acl WHERE share_id<>1");
    change(R"("Nfs":{"DefaultAccess":"ReadWrite"})");
    EXPECT_THAT(changed(), ElementsAre("Nfs"));
    EXPECT_EQ(rows("SELECT * FROM host_acl WHERE share_id<>1"), others);
}

TEST_F(ChangeProtocols, ServicesReadTheirSharesAnew)
{
    change(R"("Afp":{},"Nfs":{},"Daap":{},"Dlna":{},"Rsync":{},"Http":{},"Ftp":{},"Cifs":{})");
    EXPECT_THAT(regenerated, ElementsAre("cifs", "ftp", "http"));
}

TEST_F(ChangeProtocols, AllStatementsGoByAnIndex)
{
    take_statements();
    expect_done("getShare", record(""));
    const qbcli::Json read = last->outcome(true);
    qbcli::Json share = read;
    share["ShareName"] = "films";
    share["UsedBy"] = qbcli::parse_json(R"([{"AppName":"tm"}])", "list");
    share["UserQuota"] = qbcli::parse_json(R"([{"AccountId":100,"HardMB":1}])", "list");
    expect_done("modifyShare", qbcli::Json{{"share", share}}.dump());
    const auto statements = take_statements();
    EXPECT_GT(statements.size(), 100u);
    expect_indexed(db, statements);
    for (const std::string &each : statements)
        EXPECT_THAT(each, testing::Not(HasSubstr("_modify_"))) << "no table is copied";
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
