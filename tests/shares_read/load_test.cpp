// What a share carries when it is read: its own fields, and what hangs on it in other tables.
#include "fixture/files.h"
#include "shares_read/shares.h"

using namespace test;

namespace {

struct ShareLoad : Shares {
    ShareLoad()
    {
        add_accounts();
        add_share(1, "media");
    }
};

TEST_F(ShareLoad, EverythingIsRead)
{
    add_everything(1);
    expect_golden("tests/shares_read/golden/share.txt", dump(get(1)));
}

TEST_F(ShareLoad, WhatIsMissingIsAbsent)
{
    sql("UPDATE share SET "
        "user_id=NULL,user_access=NULL,group_access=NULL,everyone_access=NULL,path=NULL,update_ts=NULL");
    expect_golden("tests/shares_read/golden/bare.txt", dump(get(1)));
}

TEST_F(ShareLoad, KeyIsTheId)
{
    EXPECT_STREQ(get(1)->key, "1");
    EXPECT_STREQ(share.ShareId, "1");
}

TEST_F(ShareLoad, OwnersThatAreGone)
{
    sql("UPDATE share SET user_id=777,group_id=888");
    get(1);
    ASSERT_NE(share.Stat->User, nullptr);
    EXPECT_EQ(share.Stat->User->resource_id, 777);
    EXPECT_EQ(share.Stat->User->UserId, 777);
    EXPECT_STREQ(share.Stat->User->UserName, "777");
    EXPECT_EQ(share.Stat->Group, nullptr);
}

TEST_F(ShareLoad, BusyIsTheHighestBlocking)
{
    struct Case {
        const char *holders;
        int32_t busy;
    };
    for (const Case &each :
         {Case{"(2,1,5)", 0}, Case{"(1,1,0)", 1}, Case{"(1,1,0),(1,2,3),(1,3,1)", 4}, Case{"(1,1,NULL)", 0}}) {
        sql(std::string("DELETE FROM process_on_share; INSERT INTO process_on_share (share_id,pid,blocking) VALUES") +
            each.holders);
        EXPECT_EQ(get(1)->Busy, each.busy) << each.holders;
    }
}

TEST_F(ShareLoad, SnapshotFolder)
{
    struct Case {
        const char *stored;
        int32_t visible;
        const char *folder;
    };
    for (const Case &each : {Case{"NULL", 0, ""}, Case{"''", 0, ""}, Case{"'old'", 1, "old"}}) {
        sql(std::string("UPDATE share SET visible_snapdir=") + each.stored);
        EXPECT_EQ(get(1)->VisibleSnapshot, each.visible) << each.stored;
        EXPECT_STREQ(share.VisibleSnapFolder, each.folder);
    }
}

TEST_F(ShareLoad, PermissionBitsAsWords)
{
    const char *words[] = {"Disabled", "Disabled", "ReadWrite", "ReadWrite",
                           "ReadOnly", "ReadOnly", "ReadWrite", "ReadWrite"};
    sql("INSERT INTO cifs_share_option (share_id) VALUES(1)");
    for (int bits = 0; bits < 8; bits++) {
        const std::string n = std::to_string(bits);
        sql("UPDATE share SET user_access=" + n + ",group_access=7-" + n + ",everyone_access=" + n);
        sql("UPDATE cifs_share_option SET cifs_group_create_mask=" + n + ",cifs_everyone_create_mask=7-" + n +
            ",cifs_group_directory_mask=7-" + n + ",cifs_everyone_directory_mask=" + n);
        get(1);
        EXPECT_STREQ(share.Stat->UserAccess, words[bits]);
        EXPECT_STREQ(share.Stat->GroupAccess, words[7 - bits]);
        EXPECT_STREQ(share.Stat->EveryoneAccess, words[bits]);
        EXPECT_STREQ(share.Cifs->FileCreateGroupRights, words[bits]);
        EXPECT_STREQ(share.Cifs->FileCreateEveryoneRights, words[7 - bits]);
        EXPECT_STREQ(share.Cifs->FolderCreateGroupRights, words[7 - bits]);
        EXPECT_STREQ(share.Cifs->FolderCreateEveryoneRights, words[bits]);
    }
}

TEST_F(ShareLoad, FtpMasksTakeBitsAway)
{
    const char *words[] = {"ReadWrite", "ReadWrite", "ReadOnly", "ReadOnly",
                           "ReadWrite", "ReadWrite", "Disabled", "Disabled"};
    sql("INSERT INTO ftp_share_option (share_id) VALUES(1)");
    for (int bits = 0; bits < 8; bits++) {
        const std::string n = std::to_string(bits);
        sql("UPDATE ftp_share_option SET ftp_create_mask=8*" + n + "+7-" + n + ",ftp_directory_mask=8*(7-" + n + ")+" +
            n);
        get(1);
        EXPECT_STREQ(share.Ftp->FileCreateGroupRights, words[bits]);
        EXPECT_STREQ(share.Ftp->FileCreateEveryoneRights, words[7 - bits]);
        EXPECT_STREQ(share.Ftp->FolderCreateGroupRights, words[7 - bits]);
        EXPECT_STREQ(share.Ftp->FolderCreateEveryoneRights, words[bits]);
    }
}

TEST_F(ShareLoad, AfpMasksMayBeMissing)
{
    struct Case {
        const char *masks;
        int32_t autoset;
        std::vector<std::string> rights;
    };
    const Case cases[] = {
        {"NULL,NULL", 0, {"Disabled", "Disabled", "Disabled", "Disabled"}},
        {"54,63", 1, {"ReadWrite", "ReadWrite", "ReadWrite", "ReadWrite"}},
        {"32,5", 1, {"ReadOnly", "Disabled", "Disabled", "ReadOnly"}},
        {"54,NULL", 0, {"ReadWrite", "ReadWrite", "Disabled", "Disabled"}},
    };
    for (const Case &each : cases) {
        SCOPED_TRACE(each.masks);
        sql(std::string("INSERT OR REPLACE INTO afp_share_option VALUES(1,1,'x',0,") + each.masks + ")");
        const AfpShareOption *afp = get(1)->Afp;
        EXPECT_EQ(afp->NewFileFolderPermAutoset_void, 0);
        EXPECT_EQ(afp->NewFileFolderPermAutoset, each.autoset);
        EXPECT_THAT((std::vector<std::string>{afp->FileCreateGroupRights, afp->FileCreateEveryoneRights,
                                              afp->FolderCreateGroupRights, afp->FolderCreateEveryoneRights}),
                    testing::ElementsAreArray(each.rights));
    }
}

/// What each protocol makes of the stored default access.
TEST_F(ShareLoad, DefaultAccessWords)
{
    sql("INSERT INTO cifs_share_option (share_id,available) VALUES(1,1);"
        "INSERT INTO afp_share_option (share_id,available) VALUES(1,1);"
        "INSERT INTO nfs_share_option (share_id,available) VALUES(1,1);"
        "INSERT INTO ftp_share_option (share_id,available) VALUES(1,1);"
        "INSERT INTO http_share_option (share_id,available) VALUES(1,1);"
        "INSERT INTO rsync_share_option (share_id,available) VALUES(1,1)");
    struct Case {
        const char *stored;
        const char *word;
        const char *rsync;
    };
    for (const Case &each : {Case{"'writeable'", "ReadWrite", "ReadWrite"}, Case{"'readonly'", "ReadOnly", "ReadOnly"},
                             Case{"'disabled'", "Disabled", "ReadWrite"}, Case{"'odd'", "Disabled", "ReadWrite"},
                             Case{"NULL", "Disabled", "ReadWrite"}}) {
        SCOPED_TRACE(each.stored);
        for (const char *proto : {"cifs", "afp", "nfs", "ftp", "http", "rsync"})
            sql(std::string("UPDATE ") + proto + "_share_option SET " + proto + "_access=" + each.stored);
        get(1);
        EXPECT_STREQ(share.Cifs->DefaultAccess, each.word);
        EXPECT_STREQ(share.Afp->DefaultAccess, each.word);
        EXPECT_STREQ(share.Nfs->DefaultAccess, each.word);
        EXPECT_STREQ(share.Ftp->DefaultAccess, each.word);
        EXPECT_STREQ(share.Http->DefaultAccess, each.word);
        EXPECT_STREQ(share.Rsync->DefaultAccess, each.rsync);
    }
}

TEST_F(ShareLoad, NotAvailableNegatesTheColumn)
{
    for (const char *proto : {"cifs", "afp", "nfs", "ftp", "http", "rsync", "daap", "dlna"})
        sql(std::string("INSERT INTO ") + proto + "_share_option (share_id) VALUES(1)");
    sql("UPDATE dlna_share_option SET access='readonly'");
    for (const char *stored : {"1", "0", "NULL"}) {
        SCOPED_TRACE(stored);
        for (const char *proto : {"cifs", "afp", "nfs", "ftp", "http", "rsync", "daap", "dlna"})
            sql(std::string("UPDATE ") + proto + "_share_option SET available=" + stored);
        get(1);
        const int32_t expected = *stored != '1';
        EXPECT_EQ(share.Cifs->NotAvailable, expected);
        EXPECT_EQ(share.Afp->NotAvailable, expected);
        EXPECT_EQ(share.Nfs->NotAvailable, expected);
        EXPECT_EQ(share.Ftp->NotAvailable, expected);
        EXPECT_EQ(share.Http->NotAvailable, expected);
        EXPECT_EQ(share.Rsync->NotAvailable, expected);
        EXPECT_EQ(share.Daap->NotAvailable, expected);
        EXPECT_EQ(share.Dlna->NotAvailable, expected);
    }
}

TEST_F(ShareLoad, DlnaIsReadOnlyOrNotThere)
{
    for (const char *stored : {"'disabled'", "'writeable'", "NULL"}) {
        sql(std::string("INSERT OR REPLACE INTO dlna_share_option VALUES(1,1,") + stored + ",0)");
        EXPECT_EQ(get(1)->Dlna, nullptr) << stored;
    }
    sql("INSERT OR REPLACE INTO dlna_share_option VALUES(1,1,'readonly',3)");
    ASSERT_NE(get(1)->Dlna, nullptr);
    EXPECT_STREQ(share.Dlna->DefaultAccess, "ReadOnly");
    EXPECT_STREQ(share.Dlna->MediaType, "3");
}

TEST_F(ShareLoad, RsyncPasswordProtection)
{
    for (const char *stored : {"'enabled'", "'disabled'", "'Enabled'", "NULL"}) {
        sql(std::string("INSERT OR REPLACE INTO rsync_share_option VALUES(1,1,'readonly',") + stored + ")");
        EXPECT_STREQ(get(1)->Rsync->PasswordProtection, strcmp(stored, "'enabled'") ? "Disabled" : "Enabled");
    }
}

TEST_F(ShareLoad, ListsNameLocalOrDomainAccounts)
{
    add_everything(1);
    get(1);
    EXPECT_THAT(grants(share.Cifs->UserAcl), ElementsAre("anna=ReadWrite", "Bob=ReadOnly", "carl=Disabled"));
    EXPECT_THAT(grants(share.Cifs->GroupAcl), ElementsAre("Editors=ReadWrite", "staff=ReadOnly"));
    directory_mode();
    get(1);
    EXPECT_THAT(grants(share.Cifs->UserAcl), ElementsAre("EXAMPLE\\fred=ReadWrite"));
    EXPECT_THAT(grants(share.Cifs->GroupAcl), ElementsAre("EXAMPLE\\domain users=ReadOnly"));
    EXPECT_EQ(share.Afp->UserAcl, nullptr);
}

TEST_F(ShareLoad, AnonymousFtpHasHostsOnly)
{
    add_everything(1);
    EXPECT_THAT(grants(get(1)->Ftp->UserAcl), ElementsAre("Bob=ReadWrite"));
    EXPECT_THAT(grants(share.Ftp->GroupAcl), ElementsAre("Editors=ReadOnly"));
    sql("UPDATE service_ftp SET auth_mode='anonymous'");
    EXPECT_EQ(get(1)->Ftp->UserAcl, nullptr);
    EXPECT_EQ(share.Ftp->GroupAcl, nullptr);
    EXPECT_THAT(grants(share.Ftp->HostAcl), ElementsAre("desk.example.com=Disabled"));
}

TEST_F(ShareLoad, WithoutTheFtpModeItIsNotAnonymous)
{
    add_everything(1);
    sql("UPDATE service_ftp SET auth_mode='anonymous'");
    fail_statement(1, 1, "injected", "service_ftp");
    EXPECT_THAT(grants(get(1)->Ftp->UserAcl), ElementsAre("Bob=ReadWrite"));
    EXPECT_THAT(logged(2), ElementsAre("Fail query. injected\n"));
    EXPECT_EQ(err.message, nullptr);
}

TEST_F(ShareLoad, BlockVolumeAsksTheFileSystem)
{
    // The data set's folder lies where the volume says.
    sql("UPDATE _volume SET lv_name='" + directory.path.substr(1) + "'");
    sql("INSERT INTO zvol_share_option VALUES(1,4096,0)");
    EXPECT_EQ(get(1)->Zvol->UsedKB, 0u) << "there is nothing yet";
    EXPECT_EQ(share.Zvol->SizeKB, 4096u);
    EXPECT_EQ(share.Zvol->ZfsName, directory.path.substr(1) + "/media");
    write_file(directory.path + "/media/block", std::string(300000, 'x'));
    EXPECT_GE(get(1)->Zvol->UsedKB, 292u);
    EXPECT_LE(share.Zvol->UsedKB, 340u);
    sql("UPDATE share SET volume_id='gone'");
    EXPECT_EQ(get(1)->Zvol, nullptr) << "without its volume there is no data set";
}

TEST_F(ShareLoad, ClonesMayRepeatAShare)
{
    sql("INSERT INTO `$snapshot_clones` VALUES(5,'media','mon','origin'),(6,'media','tue','origin')");
    const char *origin = get(1)->CloneOf;
    EXPECT_TRUE(!strcmp(origin, "tank/origin@mon") || !strcmp(origin, "tank/origin@tue")) << origin;
    EXPECT_THAT(collect([&] { return qbobj_getShareCollection(qbdb, db, &shares, &err); }),
                ElementsAre("media", "media"));
}

TEST_F(ShareLoad, PolicyOfSeveralRulesIsOneShare)
{
    sql("INSERT INTO snapshot_management VALUES(1,1,1,100,3,'01',1,1),(1,1,4,200,5,'01',1,1)");
    EXPECT_THAT(collect([&] { return qbobj_getShareCollection(qbdb, db, &shares, &err); }), ElementsAre("media"));
    const Share *read = shares.Share;
    EXPECT_EQ(read->CustomSnapshotManagement, 1);
    EXPECT_STREQ(read->CustomSnapshotSchedule, "01");
    EXPECT_EQ(read->NonEmptySnapshots, 1);
    EXPECT_EQ(read->PrevVersions, 1);
    ASSERT_EQ(elements(read->SnapshotRetentionRules).size(), 2u);
    EXPECT_EQ(read->SnapshotRetentionRules->next->Type, 4);
    EXPECT_EQ(read->SnapshotRetentionRules->next->Lifetime, 200);
    EXPECT_EQ(read->SnapshotRetentionRules->next->Number, 5);
}

TEST_F(ShareLoad, LargeNumbers)
{
    sql("INSERT INTO zfs_attr (share_id,mb_quota) VALUES(1,9223372036854775807);"
        "INSERT INTO zvol_share_option VALUES(1,9223372036854775807,0);"
        "INSERT INTO _zfs_stat (share_id,used) VALUES(1,9223372036854775807)");
    EXPECT_EQ(get(1)->QuotaMB, 9223372036854775807u);
    EXPECT_EQ(share.Zvol->SizeKB, 9223372036854775807u);
    EXPECT_EQ(share.UsedMB, 8796093022207u);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
