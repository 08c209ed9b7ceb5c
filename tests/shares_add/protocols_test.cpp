// Creating shares: the block and the lists of each protocol.
#include "shares_add/new_share.h"

using namespace test;

namespace {

struct AddProtocols : NewShares {
    Chain<HostAcl> hosts;
    Chain<UserAcl> users;
    Chain<GroupAcl> groups;
    std::vector<std::unique_ptr<Host>> host_records;
    std::vector<std::unique_ptr<SystemUser>> user_records;
    std::vector<std::unique_ptr<SystemGroup>> group_records;

    void host(const char *name, const char *access, int32_t root = 0, int32_t id = 0)
    {
        host_records.push_back(std::make_unique<Host>(Host{nullptr, 0, id, name}));
        hosts.add({nullptr, host_records.back().get(), access, root});
    }
    void user(int32_t id, const char *access, const char *name = nullptr)
    {
        user_records.push_back(std::make_unique<SystemUser>(SystemUser{nullptr, id, 0, name, 0}));
        users.add({nullptr, user_records.back().get(), access});
    }
    void group(int32_t id, const char *access, const char *name = nullptr)
    {
        group_records.push_back(std::make_unique<SystemGroup>(SystemGroup{nullptr, id, 0, name, 0}));
        groups.add({nullptr, group_records.back().get(), access});
    }
    void clear_lists()
    {
        hosts = {};
        users = {};
        groups = {};
        clear();
    }
    template <class Block>
    void give_lists(Block *block)
    {
        block->HostAcl = hosts.head();
        block->UserAcl = users.head();
        block->GroupAcl = groups.head();
    }
    std::vector<std::string> stored_hosts()
    {
        return rows(
            "SELECT H.name,A.proto,A.read,A.write,A.root FROM host_acl A INNER JOIN host H ON H.id=A.host_id "
            "ORDER BY A.proto,H.name");
    }
    std::vector<std::string> stored_users()
    {
        return rows("SELECT user_id,proto,read,write FROM user_acl ORDER BY 2,1");
    }
    std::vector<std::string> stored_groups()
    {
        return rows("SELECT group_id,proto,read,write FROM group_acl ORDER BY 2,1");
    }
};

// ---- SMB

TEST_F(AddProtocols, CifsDefaults)
{
    CifsShareOption cifs = new_cifs();
    share.Cifs = &cifs;
    const std::string columns =
        "SELECT cifs_access,cifs_guest_access,cifs_hide_share,cifs_group_create_mask,cifs_everyone_create_mask,"
        "cifs_enable_masks,cifs_group_directory_mask,cifs_everyone_directory_mask,cifs_enable_forced_minimum,"
        "cifs_recycle,cifs_recycle_mb_limit,cifs_recycle_age_limit,oplocks,available,cifs_enabledfs FROM "
        "cifs_share_option";
    expect_added();
    EXPECT_THAT(rows(columns), ElementsAre("writeable|1|0|6|4|1|5|0|1023|1|25000|0|0|1|0"));
    EXPECT_THAT(regenerated, ElementsAre("cifs"));
    directory_mode();
    clear();
    expect_added();
    EXPECT_THAT(rows(columns), ElementsAre("writeable|0|0|6|4|1|5|0|1023|1|25000|0|0|1|0"));
    clear();
    cifs = CifsShareOption{};
    cifs.DefaultAccess = "Disabled";
    cifs.NotAvailable = 1;
    cifs.EnableDFS = 1;
    cifs.AllowGuestAccess = 1;
    cifs.ShareDisplayOption = 2;
    cifs.RecycleSizeLimit = 3;
    cifs.RecycleAgeLimit = 4;
    cifs.AclChangeRestrictionToggle = 5;
    cifs.EnableOplocks = 6;
    give_rights(&cifs, "Disabled", "ReadWrite", "ReadWrite", "ReadOnly");
    expect_added();
    EXPECT_THAT(rows(columns), ElementsAre("disabled|1|2|0|6|0|7|5|5|0|3|4|6|0|1"));
}

TEST_F(AddProtocols, DfsLinks)
{
    CifsShareOption cifs = new_cifs();
    DfolderAcl second{nullptr, "link", "10.0.0.9", "films"};
    DfolderAcl first{&second, "it's", "server", nullptr};
    cifs.DfolderAcl = &first;
    share.Cifs = &cifs;
    expect_added();
    EXPECT_THAT(rows("SELECT * FROM cifs_dfs_option"),
                ElementsAre("1|tank|music|it's|server|NULL", "1|tank|music|link|10.0.0.9|films"));
}

// ---- AFP, NFS, FTP, HTTP

TEST_F(AddProtocols, Afp)
{
    AfpShareOption afp = new_afp("ReadOnly");
    share.Afp = &afp;
    expect_added();
    EXPECT_THAT(rows("SELECT * FROM afp_share_option"), ElementsAre("1|1|readonly|1|NULL|NULL"))
        << "the rights words are not looked at";
    directory_mode();
    clear();
    afp.NewFileFolderPermAutoset_void = 0;
    expect_added();
    EXPECT_THAT(rows("SELECT * FROM afp_share_option"), ElementsAre("1|1|readonly|0|NULL|NULL"));
    clear();
    afp.NewFileFolderPermAutoset = 1;
    afp.AllowGuestAccess_void = 0;
    afp.AllowGuestAccess = 1;
    afp.NotAvailable = 1;
    give_rights(&afp, "ReadWrite", "ReadOnly", "ReadOnly", "ReadWrite");
    expect_added();
    EXPECT_THAT(rows("SELECT * FROM afp_share_option"), ElementsAre("1|0|readonly|1|52|47"));
    EXPECT_THAT(regenerated, IsEmpty());
}

TEST_F(AddProtocols, NfsAnswersFromTheDisk)
{
    NfsShareOption nfs = new_nfs("ReadOnly");
    share.Nfs = &nfs;
    expect_added();
    EXPECT_THAT(rows("SELECT * FROM nfs_share_option"), ElementsAre("1|1|readonly|1")) << "whatever Sync says";
}

TEST_F(AddProtocols, FtpStoresWhatIsTakenAway)
{
    FtpShareOption ftp = new_ftp("Disabled");
    share.Ftp = &ftp;
    expect_added();
    EXPECT_THAT(rows("SELECT * FROM ftp_share_option"), ElementsAre("1|1|disabled|0|2|23"));
    EXPECT_THAT(regenerated, ElementsAre("ftp"));
    clear();
    ftp.NewFileFolderPermAutoset_void = 0;
    ftp.NewFileFolderPermAutoset = 7;
    give_rights(&ftp, "Disabled", "ReadWrite", "ReadWrite", "Disabled");
    expect_added();
    EXPECT_THAT(rows("SELECT * FROM ftp_share_option"), ElementsAre("1|1|disabled|1|48|7"));
}

TEST_F(AddProtocols, Http)
{
    HttpShareOption http = new_http();
    share.Http = &http;
    expect_added();
    EXPECT_THAT(rows("SELECT * FROM http_share_option"), ElementsAre("1|1|writeable|0"));
    EXPECT_THAT(regenerated, ElementsAre("http"));
    clear();
    http.EnableWebDav_void = 0;
    http.EnableWebDav = 1;
    http.NotAvailable = 1;
    expect_added();
    EXPECT_THAT(rows("SELECT * FROM http_share_option"), ElementsAre("1|0|writeable|1"));
}

TEST_F(AddProtocols, DlnaAndDaap)
{
    DlnaShareOption dlna{0, 0, "ReadOnly", "Video"};
    DaapShareOption daap{1, 0};
    share.Dlna = &dlna;
    share.Daap = &daap;
    expect_added();
    EXPECT_THAT(rows("SELECT * FROM dlna_share_option"), ElementsAre("1|1|readonly|3"));
    EXPECT_THAT(rows("SELECT * FROM daap_share_option"), ElementsAre("1|0"));
    clear();
    for (const char *access : {"Disabled", "ReadWrite", "readonly"}) {
        dlna.DefaultAccess = access;
        expect_refused(8, "Invalid Dlna->DefaultAccess (" + std::string(access) + ").");
    }
    dlna.DefaultAccess = nullptr;
    expect_refused(8, "Invalid Dlna->DefaultAccess ((null)).");
    dlna.DefaultAccess = "ReadOnly";
    dlna.MediaType = "Bogus";
    expect_refused(8, "Invalid Dlna->MediaType (Bogus).");
    dlna.MediaType = nullptr;
    expect_refused(8, "Invalid Dlna->MediaType ((null)).");
}

TEST_F(AddProtocols, Rsync)
{
    RsyncShareOption rsync = new_rsync("ReadOnly");
    UserPasswordAcl masked{nullptr, "masked", masked_password};
    UserPasswordAcl silent{&masked, "silent", nullptr};
    UserPasswordAcl backup{&silent, "backup", "it's"};
    rsync.UserPasswordAcl = &backup;
    host("desk", "ReadOnly");
    rsync.HostAcl = hosts.head();
    share.Rsync = &rsync;
    expect_added();
    EXPECT_THAT(rows("SELECT * FROM rsync_share_option"), ElementsAre("1|1|readonly|disabled"));
    EXPECT_THAT(rows("SELECT * FROM rsync_user_password_acl"), ElementsAre("1|backup|it's"))
        << "a new user has no stored password to keep";
    EXPECT_THAT(stored_hosts(), ElementsAre("desk|rsync|1|0|0"));
    clear();
    // What an earlier share of the same number left behind is cleared or, behind the mask, kept.
    sql("INSERT INTO rsync_user_password_acl VALUES(1,'masked','old'),(1,'stranger','x'),(1,'backup','old')");
    rsync.PasswordProtection = "Enabled";
    expect_added();
    EXPECT_THAT(rows("SELECT * FROM rsync_user_password_acl ORDER BY user"),
                ElementsAre("1|backup|it's", "1|masked|old"));
    EXPECT_EQ(value("SELECT passwordprotection FROM rsync_share_option"), "enabled");
    clear();
    backup.UserName = nullptr;
    expect_refused(8, "Invalid UserPasswordAcl->UserName cannot be NULL");
    rsync.PasswordProtection = "yes";
    expect_refused(8, "Invalid Rsync->PasswordProtection (yes).");
    rsync.DefaultAccess = "yes";
    expect_refused(8, "Invalid Rsync->DefaultAccess (yes).");
}

TEST_F(AddProtocols, WordsThatAreNone)
{
    CifsShareOption cifs = new_cifs();
    AfpShareOption afp = new_afp();
    afp.NewFileFolderPermAutoset_void = 0;
    afp.NewFileFolderPermAutoset = 1;
    give_rights(&afp, "ReadOnly", "ReadOnly", "ReadOnly", "ReadOnly");
    NfsShareOption nfs = new_nfs();
    FtpShareOption ftp = new_ftp();
    HttpShareOption http = new_http();
    share.Cifs = &cifs;
    share.Afp = &afp;
    share.Nfs = &nfs;
    share.Ftp = &ftp;
    share.Http = &http;
    const std::pair<const char **, const char *> words[] = {
        {&cifs.DefaultAccess, "Invalid Cifs->DefaultAccess (%). Valid value is ReadWrite, ReadOnly or DIsabled."},
        {&cifs.FileCreateGroupRights, "Invalid Cifs->FileCreateGroupRights (%)."},
        {&cifs.FileCreateEveryoneRights, "Invalid Cifs->FileCreateEveryoneRights (%)."},
        {&cifs.FolderCreateGroupRights, "Invalid Cifs->FolderCreateGroupRights (%)."},
        {&cifs.FolderCreateEveryoneRights, "Invalid Cifs->FolderCreateEveryoneRights (%)."},
        {&afp.DefaultAccess, "Invalid Afp->DfefaultAccess (%)."},
        {&afp.FileCreateGroupRights, "Invalid Afp->FileCreateGroupRights (%)."},
        {&afp.FileCreateEveryoneRights, "Invalid Afp->FileCreateGroupRights (%)."},
        {&afp.FolderCreateGroupRights, "Invalid Afp->FolderCreateGroupRights (%)."},
        {&afp.FolderCreateEveryoneRights, "Invalid Afp->FolderCreateGroupRights (%)."},
        {&nfs.DefaultAccess, "Invalid Nfs->DfefaultAccess (%)."},
        {&ftp.DefaultAccess, "Invalid Ftp->DfefaultAccess (%)."},
        {&ftp.FileCreateGroupRights, "Invalid Ftp->FileCreateGroupRights (%)."},
        {&ftp.FileCreateEveryoneRights, "Invalid Ftp->FileCreateGroupRights (%)."},
        {&ftp.FolderCreateGroupRights, "Invalid Ftp->FolderCreateGroupRights (%)."},
        {&ftp.FolderCreateEveryoneRights, "Invalid Ftp->FolderCreateGroupRights (%)."},
        {&http.DefaultAccess, "Invalid Http->DfefaultAccess (%)."},
    };
    for (const auto &[word, message] : words)
        for (const char *bad : {"readonly", static_cast<const char *>(nullptr)}) {
            const char *good = std::exchange(*word, bad);
            std::string expected = message;
            expect_refused(8, expected.replace(expected.find('%'), 1, text(bad)));
            *word = good;
        }
    expect_added();
}

// ---- host lists

TEST_F(AddProtocols, HostListsByProtocol)
{
    struct Case {
        const char *proto;
        const char *access;  // default
        std::vector<std::string> stored;
    };
    // a: read only, b: read and write, c: nothing, d: nothing, but root
    const Case cases[] = {
        {"cifs", "ReadWrite", {"a|cifs|1|1|0", "b|cifs|1|1|0", "c|cifs|1|1|0", "d|cifs|1|1|0"}},
        {"afp", "ReadWrite", {}},
        {"nfs", "ReadWrite", {"a|nfs|1|0|0", "b|nfs|1|1|0", "c|nfs|0|0|0", "d|nfs|1|1|1"}},
        {"nfs", "ReadOnly", {"a|nfs|1|0|0", "b|nfs|1|1|0", "c|nfs|0|0|0", "d|nfs|1|0|1"}},
        {"nfs", "Disabled", {"a|nfs|1|0|0", "b|nfs|1|1|0", "c|nfs|0|0|0", "d|nfs|0|0|1"}},
        {"ftp", "ReadWrite", {"a|ftp|1|0|0", "b|ftp|0|0|0", "c|ftp|0|0|0", "d|ftp|0|0|0"}},
        {"ftp", "ReadOnly", {"a|ftp|0|0|0", "b|ftp|1|1|0", "c|ftp|0|0|0", "d|ftp|0|0|0"}},
        {"ftp", "Disabled", {"a|ftp|1|0|0", "b|ftp|1|1|0", "c|ftp|0|0|0", "d|ftp|0|0|0"}},
        {"http", "ReadWrite", {"a|http|1|0|0", "b|http|1|1|0", "c|http|0|0|0", "d|http|0|0|0"}},
        {"rsync", "ReadWrite", {"a|rsync|1|0|0", "b|rsync|1|1|0", "c|rsync|0|0|0", "d|rsync|0|0|0"}},
    };
    host("a", "ReadOnly");
    host("b", "ReadWrite");
    host("c", "Disabled");
    host("d", "Disabled", 1);
    for (const Case &each : cases) {
        SCOPED_TRACE(std::string(each.proto) + " " + each.access);
        clear();
        share = new_share("music");
        CifsShareOption cifs = new_cifs(each.access);
        AfpShareOption afp = new_afp(each.access);
        NfsShareOption nfs = new_nfs(each.access);
        FtpShareOption ftp = new_ftp(each.access);
        HttpShareOption http = new_http(each.access);
        RsyncShareOption rsync = new_rsync(each.access);
        const std::string proto = each.proto;
        const auto give = [&](const char *name, auto *block, auto **member) {
            if (proto != name) return;
            block->HostAcl = hosts.head();
            *member = block;
        };
        give("cifs", &cifs, &share.Cifs);
        give("afp", &afp, &share.Afp);
        give("nfs", &nfs, &share.Nfs);
        give("ftp", &ftp, &share.Ftp);
        give("http", &http, &share.Http);
        give("rsync", &rsync, &share.Rsync);
        expect_added();
        EXPECT_THAT(stored_hosts(), testing::ElementsAreArray(each.stored));
        EXPECT_EQ(value("SELECT COUNT(*) FROM host WHERE name IN ('a','b','c','d')"), "4") << "names become known";
    }
}

TEST_F(AddProtocols, HostsByIdAndName)
{
    NfsShareOption nfs = new_nfs();
    share.Nfs = &nfs;
    struct Case {
        int32_t id;
        const char *name;
        const char *stored;   // host, or
        const char *refused;  // message
    };
    for (const Case &each :
         {Case{1, nullptr, "10.0.0.0/8", nullptr}, Case{2, "desk.example.com", "desk.example.com", nullptr},
          Case{0, "192.168.1", "192.168.1.0/24", nullptr}, Case{0, "10", "10.0.0.0/8", nullptr},
          Case{0, "desk.example.com", "desk.example.com", nullptr},
          Case{2, "other", nullptr, "Specified HostId (2) and/or HostName (other) conflict with db. "},
          Case{99, nullptr, nullptr, "Specified HostId (99) and/or HostName ((null)) conflict with db. "},
          Case{0, "192.168.1.0/33", nullptr, "Invalid HostName or Network specified (192.168.1.0/33)."},
          Case{0, "a b", nullptr, "Invalid HostName or Network specified (a b)."},
          Case{0, nullptr, nullptr, "Invalid HostName or Network specified ((null))."}}) {
        clear_lists();
        host(each.name, "ReadOnly", 0, each.id);
        nfs.HostAcl = hosts.head();
        if (each.refused) {
            expect_refused(8, each.refused);
            continue;
        }
        expect_added();
        EXPECT_THAT(stored_hosts(), ElementsAre(std::string(each.stored) + "|nfs|1|0|0"));
    }
    EXPECT_EQ(value("SELECT COUNT(*) FROM host"), "3") << "known ones are not added again";
}

TEST_F(AddProtocols, HostByItsOtherId)
{
    NfsShareOption nfs = new_nfs();
    Host desk{nullptr, 2, 0, nullptr};
    HostAcl acl{nullptr, &desk, "ReadOnly", 0};
    nfs.HostAcl = &acl;
    share.Nfs = &nfs;
    expect_added();
    EXPECT_THAT(stored_hosts(), ElementsAre("desk.example.com|nfs|1|0|0"));
}

TEST_F(AddProtocols, HostElementsThatAreNone)
{
    AfpShareOption afp = new_afp();
    share.Afp = &afp;
    HostAcl empty{};
    afp.HostAcl = &empty;
    expect_refused(8, "Invalid HostAcl->Host cannot be NULL");
    host("desk", "readonly");
    afp.HostAcl = hosts.head();
    expect_refused(8, "Invalid HostAcl->Access (readonly).");
    EXPECT_EQ(value("SELECT COUNT(*) FROM host WHERE name='desk'"), "0") << "rolled back";
}

// ---- user and group lists

TEST_F(AddProtocols, WhoGetsTheDefaultIsLeftOut)
{
    struct Case {
        const char *access;
        std::vector<std::string> users;
    };
    // 98 is the administrator, 104 of the cloud; 100 read only, 101 read and write, 102 nothing.
    const Case cases[] = {
        {"ReadWrite", {"98|http|1|1", "100|http|1|0", "102|http|0|0", "104|http|1|1"}},
        {"ReadOnly", {"98|http|1|1", "101|http|1|1", "102|http|0|0", "104|http|1|1"}},
        {"Disabled", {"98|http|1|1", "100|http|1|0", "101|http|1|1", "102|http|0|0", "104|http|1|1"}},
    };
    add_user(104, "ida@example.com", "97");
    user(98, "ReadWrite");
    user(100, "ReadOnly");
    user(101, "ReadWrite");
    user(102, "Disabled");
    user(104, "ReadWrite");
    group(98, "ReadWrite");
    group(110, "ReadOnly");
    group(111, "Disabled");
    for (const Case &each : cases) {
        SCOPED_TRACE(each.access);
        clear();
        HttpShareOption http = new_http(each.access);
        give_lists(&http);
        share.Http = &http;
        expect_added();
        EXPECT_THAT(stored_users(), testing::ElementsAreArray(each.users));
        const std::string all = strcmp(each.access, "ReadWrite") ? "98|http|1|1" : "110|http|1|0";
        EXPECT_THAT(stored_groups(), testing::Contains(all));
        EXPECT_EQ(stored_groups().size(), strcmp(each.access, "Disabled") ? 2u : 3u)
            << "administrators' groups are no exception";
    }
}

TEST_F(AddProtocols, EachProtocolHasItsLists)
{
    user(100, "ReadOnly");
    group(110, "Disabled");
    CifsShareOption cifs = new_cifs();
    AfpShareOption afp = new_afp();
    FtpShareOption ftp = new_ftp();
    HttpShareOption http = new_http();
    give_lists(&cifs);
    give_lists(&afp);
    give_lists(&ftp);
    give_lists(&http);
    share.Cifs = &cifs;
    share.Afp = &afp;
    share.Ftp = &ftp;
    share.Http = &http;
    expect_added();
    EXPECT_THAT(stored_users(), ElementsAre("100|afp|1|0", "100|cifs|1|0", "100|ftp|1|0", "100|http|1|0"));
    EXPECT_THAT(stored_groups(), ElementsAre("110|afp|0|0", "110|cifs|0|0", "110|ftp|0|0", "110|http|0|0"));
    EXPECT_THAT(regenerated, ElementsAre("cifs", "ftp", "http"));
}

TEST_F(AddProtocols, AFailedQuestionForThePrimaryGroupIsLogged)
{
    user(98, "ReadWrite");
    HttpShareOption http = new_http();
    give_lists(&http);
    share.Http = &http;
    fail_statement(1, 1, "injected", "SELECT DISTINCT 1");
    expect_added();
    EXPECT_THAT(
        logged(2),
        ElementsAre(testing::MatchesRegex("ERROR:share_write_lists.cpp:[0-9]+ Failed DB Query error: injected")));
    EXPECT_THAT(stored_users(), IsEmpty()) << "taken for one of the others";
    EXPECT_EQ(err.code, 0u);
}

TEST_F(AddProtocols, AccountsOfTheDirectory)
{
    directory_mode();
    uids["EXAMPLE\\live"] = 20011;
    gids["EXAMPLE\\people"] = 20020;
    user(0, "ReadOnly", "EXAMPLE\\live");
    user(-10, "Disabled");
    user(100, "ReadOnly");
    group(0, "ReadOnly", "EXAMPLE\\people");
    group(-20, "Disabled");
    HttpShareOption http = new_http();
    give_lists(&http);
    share.Http = &http;
    expect_added();
    EXPECT_THAT(stored_users(), ElementsAre("-10|http|0|0", "100|http|1|0", "20011|http|1|0"));
    EXPECT_THAT(stored_groups(), ElementsAre("-20|http|0|0", "20020|http|1|0"));
}

TEST_F(AddProtocols, AccountsThatAreNotThere)
{
    struct Case {
        bool directory;
        int32_t id;
        const char *name;
        const char *access;
        const char *shown;
    };
    for (const Case &each : {Case{false, 0, "anna", "ReadOnly", "resource_id=0, %=anna"},
                             Case{false, 999, nullptr, "ReadOnly", "resource_id=999, %=(null)"},
                             Case{true, 0, "stranger", "ReadOnly", "resource_id=0, %=stranger"},
                             Case{true, 0, nullptr, "ReadOnly", "resource_id=0, %=(null)"}}) {
        directory_mode(each.directory);
        HttpShareOption http = new_http();
        share.Http = &http;
        clear_lists();
        user(each.id, each.access, each.name);
        http.UserAcl = users.head();
        std::string shown = each.shown;
        expect_refused(8, "Invalid UserAcl->User (" + shown.replace(shown.find('%'), 1, "UserName") + ").");
        group(each.id, each.access, each.name);
        http.UserAcl = nullptr;
        http.GroupAcl = groups.head();
        shown = each.shown;
        expect_refused(8, "Invalid GroupAcl->Group (" + shown.replace(shown.find('%'), 1, "GroupName") + ").");
    }
}

TEST_F(AddProtocols, AccountElementsThatAreNone)
{
    HttpShareOption http = new_http();
    share.Http = &http;
    UserAcl no_user{};
    http.UserAcl = &no_user;
    expect_refused(8, "Invalid UserAcl->User cannot be NULL");
    GroupAcl no_group{};
    http.UserAcl = nullptr;
    http.GroupAcl = &no_group;
    expect_refused(8, "Invalid UserAcl->Group cannot be NULL");
    user(100, "readonly");
    group(110, nullptr);
    http.GroupAcl = groups.head();
    expect_refused(8, "Invalid GroupAcl->Access ((null)).");
    http.UserAcl = users.head();
    expect_refused(8, "Invalid UserAcl->Access (readonly).");
}

TEST_F(AddProtocols, TheSameUserTwiceIsRefusedByTheTable)
{
    user(100, "ReadOnly");
    user(100, "Disabled");
    HttpShareOption http = new_http();
    give_lists(&http);
    share.Http = &http;
    expect_refused(
        5,
        "Failed DB Query for 'INSERT user_acl'. UNIQUE constraint failed: user_acl.share_id, user_acl.proto, "
        "user_acl.user_id");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
