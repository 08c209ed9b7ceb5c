#include "fixture/fixture.h"

namespace {

struct Folders : test::Database {
    FolderAttribute attr{};

    void SetUp() override
    {
        sql(R"(
            INSERT INTO share (id,name,zfs_name,path,comment) VALUES
                (1,'plain','tank/plain','/tank/plain','Plain one'), (2,'smb','tank/smb','/tank/smb','It''s shared'),
                (3,'hid','tank/hid','/tank/hid',NULL), (4,'odd','tank/odd','/tank/odd',''),
                (5,'homes1','tank/homes1','/tank/homes1','Homes'), (6,'a_b','tank/a_b','/tank/a_b','x'),
                (7,'nopath','tank/nopath',NULL,'x'), (8,'nul','tank/nul','/tank/nul','n');
            INSERT INTO cifs_share_option (share_id,cifs_hide_share) VALUES (2,0), (3,1), (4,2), (8,NULL);
            INSERT INTO dlna_share_option (share_id,media_type) VALUES (2,3), (3,NULL), (1,1);
            INSERT INTO `$user` (id,uname,home) VALUES
                (100,'anna','/tank/home/anna'), (101,'bob','/tank/homes1/bob'), (102,'c',NULL), (103,'d','/tank/plain');
        )");
        take_statements();
    }
    uint32_t ask(const char *path)
    {
        attr = {99, 99, "stale", 99, 99};
        return getFolderAttribute(qbdb, db, path, &attr, &err);
    }
};

TEST_F(Folders, TellsWhatAFolderIs)
{
    const struct {
        const char *path;
        uint32_t flags, media;
        const char *comment;
        uint32_t home, sub;
    } cases[] = {
        {"/tank/plain", 0, 1, "Plain one", 0, 0},  // also somebody's home: the share goes first
        {"/tank/smb", QBOBJ_FOLDER_SHARED, 3, "It's shared", 0, 0},
        {"/tank/hid", QBOBJ_FOLDER_SHARED | QBOBJ_FOLDER_HIDDEN, 0, "", 0, 0},
        {"/tank/odd", QBOBJ_FOLDER_SHARED | QBOBJ_FOLDER_HIDDEN, 0, "", 0, 0},  // any number hides
        {"/tank/nul", QBOBJ_FOLDER_SHARED, 0, "n", 0, 0},
        {"/tank/smb/sub/folder", 0, 0, "", 0, 1},
        {"/tank/smb/", 0, 0, "", 0, 1},
        {"/TANK/SMB/sub", 0, 0, "", 0, 1},  // patterns know no case
        {"/tank/axb/sub", 0, 0, "", 0, 1},  // and take "_" for any character
        {"/tank/home/anna", QBOBJ_FOLDER_SHARED, 0, "", 1, 0},
        {"/tank/home/anna/letters", 0, 0, "", 1, 1},
        {"/tank/homes1/bob", 0, 0, "", 0, 1},  // a home inside a share: as inside the share
        {"/tank/homes1/bob/letters", 0, 0, "", 0, 1},
        {"/TANK/SMB", 0, 0, nullptr, 0, 0},
        {"/tank/home", 0, 0, nullptr, 0, 0},
        {"/tank/home/ann", 0, 0, nullptr, 0, 0},
        {"/tank/smb2", 0, 0, nullptr, 0, 0},
        {"/", 0, 0, nullptr, 0, 0},
        {"", 0, 0, nullptr, 0, 0},
        {"' OR ''='", 0, 0, nullptr, 0, 0},
        {nullptr, 0, 0, nullptr, 0, 0},
    };
    for (const auto &each : cases) {
        SCOPED_TRACE(each.path ? each.path : "null");
        ASSERT_EQ(ask(each.path), 0u) << err.message;
        EXPECT_EQ(attr.ShareFlags, each.flags);
        EXPECT_EQ(attr.MediaType, each.media);
        EXPECT_STREQ(attr.Comment, each.comment);
        EXPECT_EQ(attr.IsHome, each.home);
        EXPECT_EQ(attr.IsSubfolder, each.sub);
        EXPECT_EQ(err.code, 0u);
    }
}

TEST_F(Folders, AsksNoMoreThanItNeeds)
{
    const std::string shares =
        "SELECT CASE WHEN CIFS.share_id NOT NULL THEN 1 ELSE 0 END|CASE WHEN CIFS.cifs_hide_share THEN 2 ELSE 0 END,"
        "IFNULL(DLNA.media_type,0),S.comment FROM share S LEFT JOIN cifs_share_option CIFS ON CIFS.share_id=S.id "
        "LEFT JOIN dlna_share_option DLNA ON DLNA.share_id=S.id WHERE ";
    const struct {
        std::string path;
        size_t questions;
    } cases[] = {{"/tank/smb", 1}, {"/tank/smb/x", 2}, {"/tank/home/anna", 3}, {"/tank/home/anna/x", 4}, {"/", 4}};
    for (const auto &each : cases) {
        SCOPED_TRACE(each.path);
        std::vector<std::string> expected = {
            shares + "S.path='" + each.path + "'",
            shares + "'" + each.path + "' LIKE S.path||'/%'",
            "SELECT 1 FROM `$user` U WHERE U.home='" + each.path + "'",
            "SELECT 1 FROM `$user` U WHERE '" + each.path + "' LIKE U.home||'/%'",
        };
        expected.resize(each.questions);
        expected.insert(expected.begin(), "BEGIN");
        expected.push_back("COMMIT");
        ASSERT_EQ(ask(each.path.c_str()), 0u);
        EXPECT_EQ(take_statements(), expected);
    }
}

TEST_F(Folders, CopiesTheCommentIntoThePool)
{
    ASSERT_EQ(ask("/tank/smb"), 0u);
    sql("UPDATE share SET comment='other'");
    EXPECT_STREQ(attr.Comment, "It's shared");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
