// Renaming shares.
#include "share_changes/changes.h"

using namespace test;

namespace {

struct RenameShare : ShareChanges {
    RenameShare() { add_both(); }
};

TEST_F(RenameShare, TakesEverythingWithIt)
{
    sql("INSERT INTO `$snapshot` (zfs_name,name,type,created_on) VALUES('tank/media','a',1,1),('tank/bare','b',1,1);"
        "INSERT INTO `$snapshot_clones` (cloned_zfs_name,parent_snapshot_name,parent_zfs_name) VALUES"
        "('copy','a','media'),('media','a','origin'),('other','a','bare');"
        "INSERT INTO backup (id,name,src_type,src_share_proto,dst_type,dst_share_proto) VALUES"
        "(1,'a','share','media','usb','media'),(2,'b','remote','media','share','media'),"
        "(3,'c','share','bare','share','bare')");
    change(R"("ShareName":"films")");
    EXPECT_THAT(rows("SELECT name,zfs_name,path FROM share WHERE id=1"), ElementsAre("films|tank/films|/tank/films"));
    EXPECT_THAT(rows("SELECT zfs_name,name FROM `$snapshot` ORDER BY 2"), ElementsAre("tank/films|a", "tank/bare|b"));
    EXPECT_THAT(rows("SELECT cloned_zfs_name,parent_zfs_name FROM `$snapshot_clones`"),
                ElementsAre("copy|films", "films|origin", "other|bare"));
    EXPECT_THAT(rows("SELECT src_share_proto,dst_share_proto FROM backup"),
                ElementsAre("films|media", "media|films", "bare|bare"));
    EXPECT_EQ(answer("OldShareName"), "media");
    EXPECT_EQ(answer("OldPath"), "/tank/media");
    EXPECT_EQ(answer("Path"), "/tank/films");
    EXPECT_THAT(changed(), IsEmpty());
}

TEST_F(RenameShare, OwnNameIsNone)
{
    const auto before = tables();
    change(R"("ShareName":"media")");
    EXPECT_EQ(tables(), before);
    EXPECT_EQ(answer("OldShareName"), qbcli::Json());
}

TEST_F(RenameShare, AnotherLetterCaseIsOne)
{
    change(R"("ShareName":"MEDIA")");
    EXPECT_THAT(rows("SELECT name,zfs_name,path FROM share WHERE id=1"), ElementsAre("MEDIA|tank/MEDIA|/tank/MEDIA"));
    EXPECT_EQ(answer("OldShareName"), "media");
}

TEST_F(RenameShare, AnotherLetterCaseOfABadNameIsNotJudged)
{
    sql("UPDATE share SET name='pool' WHERE id=1");
    change(R"("ShareName":"Pool")");
    EXPECT_EQ(value("SELECT name FROM share WHERE id=1"), "Pool");
}

TEST_F(RenameShare, Refused)
{
    const std::string long_name(33, 'a');
    refuse(806, "ShareName is too long (" + long_name + ")", R"("ShareName":")" + long_name + "\"");
    refuse(808, "ShareName (usb_1) is reserved", R"("ShareName":"usb_1")");
    refuse(808, "ShareName (Homes) is reserved", R"("ShareName":"Homes")");
    refuse(8, "Invalid ShareName (a/b), rc=2", R"("ShareName":"a/b")");
    refuse(8, "Invalid ShareName (), rc=-1", R"("ShareName":"")");
    refuse(800, "Cannot rename to the name which already exist.", R"("ShareName":"bare")");
    refuse(800, "Cannot rename to the name which already exist.", R"("ShareName":"BARE")");
    refuse(831, "Cannot rename to/from reserved share name", R"("ShareName":"FerryDock")");
    sql("UPDATE share SET name='ferrydock' WHERE id=1");
    refuse(831, "Cannot rename to/from reserved share name", R"("ShareName":"films")");
}

TEST_F(RenameShare, NotWhileAnApplicationUsesIt)
{
    sql("INSERT INTO `$application_on_share` VALUES('tank/media','surveillance','x')");
    for (const char *name : {"films", "Media", "ferrydock"})
        refuse(903, "(surveillance).", std::string(R"("ShareName":")") + name + "\"");
    refuse(800, "Cannot rename to the name which already exist.", R"("ShareName":"bare")");
    change(R"("ShareName":"media","Comment":"x")");
    EXPECT_EQ(value("SELECT comment FROM share WHERE id=1"), "x");
}

TEST_F(RenameShare, DatasetThatIsTaken)
{
    sql("UPDATE share SET zfs_name='tank/films' WHERE id=2");
    refuse(800, "Sharename specified is already exist.", R"("ShareName":"films")");
}

TEST_F(RenameShare, VolumeTellsThePlace)
{
    sql("INSERT INTO _volume (id,lv_name) VALUES('v2','pool two'); UPDATE share SET volume_id='v2' WHERE id=1");
    change(R"("ShareName":"films")");
    EXPECT_THAT(rows("SELECT zfs_name,path FROM share WHERE id=1"), ElementsAre("pool two/films|/pool two/films"));
    sql("UPDATE share SET volume_id='gone' WHERE id=1");
    change(R"("ShareName":"movies")");
    EXPECT_THAT(rows("SELECT name,zfs_name,path FROM share WHERE id=1"),
                ElementsAre("movies|pool two/films|/pool two/films"));
}

TEST_F(RenameShare, NothingIsCutOff)
{
    sql("INSERT INTO _volume (id,lv_name) VALUES('v2','" + std::string(300, 'v') +
        "'); UPDATE share SET volume_id='v2' WHERE id=1");
    refuse(5, "Failed DB Query for 'UPDATE share'. The path is too long.", R"("ShareName":"films")");
}

TEST_F(RenameShare, LinksCarryTheNewNameWhenTheyAreWritten)
{
    change(R"("ShareName":"films")");
    EXPECT_EQ(value("SELECT share FROM cifs_dfs_option"), "media");
    change(R"("Cifs":{"DfolderAcl":[{"Name":"a","Address":"b","RemoteShare":"c"}]})");
    EXPECT_THAT(rows("SELECT * FROM cifs_dfs_option"), ElementsAre("1|tank|films|a|b|c"));
    EXPECT_THAT(changed(), ElementsAre("Cifs"));
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
