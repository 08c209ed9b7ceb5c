// Owner, permissions and POSIX ACL of a share's folder, read from real folders.
#include <acl/libacl.h>
#include <sys/acl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

#include "shares_read/shares.h"

using namespace test;

namespace {

struct FreeAcl {
    void operator()(void *object) const { acl_free(object); }
};
using Acl = std::unique_ptr<std::remove_pointer_t<acl_t>, FreeAcl>;

struct ShareFolder : Shares {
    std::string folder = directory.path + "/media";

    ShareFolder()
    {
        add_accounts();
        add_share(1, "media", "path='" + folder + "',user_id=101,group_id=110,user_access=7,group_access=0");
        mkdir(folder.c_str(), 0755);
    }

    bool set_acl(acl_type_t type, const char *entries)
    {
        const Acl acl(acl_from_text(entries));
        EXPECT_TRUE(acl) << entries;
        return acl_set_file(folder.c_str(), type, acl.get()) == 0;
    }

    /// The entries of the share's folder, each as type:tag:id:name:permissions.
    std::vector<std::string> entries()
    {
        std::vector<std::string> all;
        for (const PosixAcl *acl : elements(get(1)->Stat->Acls))
            all.push_back(std::string(acl->Type == ACL_TYPE_ACCESS ? "access" : "default") + ":" +
                          std::to_string(acl->Tag) + ":" + std::to_string(acl->Id) + ":" + text(acl->Name) + ":" +
                          std::to_string(acl->Perm));
        return all;
    }
};

std::string entry(const char *list, int tag, int id, const char *name, int permissions)
{
    return std::string(list) + ":" + std::to_string(tag) + ":" + std::to_string(id) + ":" + name + ":" +
           std::to_string(permissions);
}

TEST_F(ShareFolder, WhatIsOnDiskCounts)
{
    ASSERT_EQ(chmod(folder.c_str(), 01750), 0);
    get(1);
    EXPECT_EQ(share.Stat->_PosixMode, 01750);
    EXPECT_STREQ(share.Stat->UserAccess, "ReadWrite");
    EXPECT_STREQ(share.Stat->GroupAccess, "ReadOnly");
    EXPECT_STREQ(share.Stat->EveryoneAccess, "Disabled");
    EXPECT_EQ(share.Stat->User->resource_id, static_cast<int32_t>(getuid()));
    EXPECT_EQ(share.Stat->User->_PosixId, static_cast<int32_t>(getuid()));
    EXPECT_EQ(share.Stat->Group->resource_id, static_cast<int32_t>(getgid()));
    if (getuid() == 0) {
        EXPECT_STREQ(share.Stat->User->UserName, "root");
    }
}

TEST_F(ShareFolder, OwnerByRowDirectoryOrNumber)
{
    if (getuid() != 0) GTEST_SKIP() << "only root gives folders away";
    uids["EXAMPLE\\live"] = 20011;
    gids["EXAMPLE\\people"] = 20020;
    struct Case {
        uid_t uid;
        gid_t gid;
        const char *user;
        const char *group;
    };
    for (const Case &each : {Case{100, 111, "anna", "Editors"}, Case{20011, 20020, "EXAMPLE\\live", "EXAMPLE\\people"},
                             Case{30000, 30001, "30000", "30001"}}) {
        ASSERT_EQ(chown(folder.c_str(), each.uid, each.gid), 0);
        get(1);
        EXPECT_EQ(share.Stat->User->UserId, static_cast<int32_t>(each.uid));
        EXPECT_STREQ(share.Stat->User->UserName, each.user);
        EXPECT_EQ(share.Stat->Group->GroupId, static_cast<int32_t>(each.gid));
        EXPECT_STREQ(share.Stat->Group->GroupName, each.group);
    }
}

TEST_F(ShareFolder, WithoutAFolderTheStoredOwnerStays)
{
    for (const std::string &path : {folder + "/gone", std::string("media"), std::string()}) {
        sql("UPDATE share SET path='" + path + "'");
        get(1);
        EXPECT_STREQ(share.Stat->User->UserName, "Bob") << path;
        EXPECT_EQ(share.Stat->User->_PosixId, 101);
        EXPECT_STREQ(share.Stat->Group->GroupName, "staff");
        EXPECT_STREQ(share.Stat->GroupAccess, "Disabled");
        EXPECT_EQ(share.Stat->_PosixMode, 0);
        EXPECT_EQ(share.Stat->Acls, nullptr);
        EXPECT_THAT(logged(2), IsEmpty());
    }
    EXPECT_NE(access((folder + "/gone").c_str(), F_OK), 0) << "nothing is created";
}

TEST_F(ShareFolder, PermissionsAloneAreAnAcl)
{
    ASSERT_EQ(chmod(folder.c_str(), 0750), 0);
    const auto read = entries();
    if (read.empty()) GTEST_SKIP() << "the file system of " << folder << " keeps no ACLs";
    EXPECT_THAT(
        read, ElementsAre(entry("access", ACL_USER_OBJ, 0, "(null)", 7), entry("access", ACL_GROUP_OBJ, 0, "(null)", 5),
                          entry("access", ACL_OTHER, 0, "(null)", 0)));
}

TEST_F(ShareFolder, NamedUsersAndGroupsInBothLists)
{
    gids["EXAMPLE\\people"] = 20020;
    if (!set_acl(ACL_TYPE_ACCESS, "u::rwx,u:100:rw-,u:30000:r--,g::r-x,g:110:-wx,m::rwx,o::--x") ||
        !set_acl(ACL_TYPE_DEFAULT, "u::rwx,g::r-x,g:20020:rwx,m::rwx,o::---"))
        GTEST_SKIP() << "the file system of " << folder << " keeps no ACLs: " << strerror(errno);
    EXPECT_THAT(
        entries(),
        testing::UnorderedElementsAre(
            entry("access", ACL_USER_OBJ, 0, "(null)", 7), entry("access", ACL_USER, 100, "anna", 6),
            entry("access", ACL_USER, 30000, "30000", 4), entry("access", ACL_GROUP_OBJ, 0, "(null)", 5),
            entry("access", ACL_GROUP, 110, "staff", 3), entry("access", ACL_MASK, 0, "(null)", 7),
            entry("access", ACL_OTHER, 0, "(null)", 1), entry("default", ACL_USER_OBJ, 0, "(null)", 7),
            entry("default", ACL_GROUP_OBJ, 0, "(null)", 5), entry("default", ACL_GROUP, 20020, "EXAMPLE\\people", 7),
            entry("default", ACL_MASK, 0, "(null)", 7), entry("default", ACL_OTHER, 0, "(null)", 0)));
    EXPECT_THAT(logged(2), IsEmpty());
}

/// A share's path may lead to anything: nothing of it is opened.
TEST_F(ShareFolder, APipeHoldsNobodyUp)
{
    rmdir(folder.c_str());
    ASSERT_EQ(mkfifo(folder.c_str(), 0640), 0);
    EXPECT_EQ(get(1)->Stat->_PosixMode, 0640);
    EXPECT_THAT(logged(2), ElementsAre("Cannot get default ACL from " + folder + ". errno=13\n"))
        << "only folders have a default list";
    EXPECT_EQ(elements(share.Stat->Acls).size(), 3u) << "as far as it got";
}

TEST_F(ShareFolder, AFileSystemWithoutAclsIsLogged)
{
    sql("UPDATE share SET path='/proc/self/fd'");
    get(1);
    EXPECT_EQ(share.Stat->Acls, nullptr);
    EXPECT_THAT(logged(2), ElementsAre("Cannot get access ACL from /proc/self/fd. errno=95\n"));
    EXPECT_EQ(err.message, nullptr);
}

TEST_F(ShareFolder, FailedLookUpsOfNamesAreReported)
{
    for (const auto &[table, message] :
         {std::pair{"FROM `$user` U WHERE U.id=", "Failed DB Query for 'SELECT FROM user'. injected"},
          std::pair{"FROM `$group` G WHERE G.id=", "Failed DB Query for 'SELECT FROM group'. injected"}}) {
        share = {};
        share.ShareId = "1";
        fail_statement(1, 1, "injected", std::string("name ") + table);
        expect_failure(5, message, [&] { return qbobj_getShare(qbdb, db, &share, &err); });
    }
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
