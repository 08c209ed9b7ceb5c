// A share record that asks for everything, for the tests to change.
#pragma once

#include "shares_read/shares.h"

namespace test {

/// A list of elements with storage of its own.
template <class T>
struct Chain {
    std::vector<std::unique_ptr<T>> all;
    T *add(const T &element)
    {
        all.push_back(std::make_unique<T>(element));
        if (all.size() > 1) all[all.size() - 2]->next = all.back().get();
        return all.back().get();
    }
    T *head() const { return all.empty() ? nullptr : all[0].get(); }
};

/// A record with every optional number absent.
inline Share new_share(const char *name)
{
    Share share{};
    share.ShareName = name;
    share.VolumeId = "tank";
    share.QuotaMB_void = share.ReserveMB_void = share.RefQuotaMB_void = share.RefReserveMB_void = 1;
    share.Compression_void = share.BitRotProtection_void = share.Dedup_void = 1;
    return share;
}

template <class Block>
void give_rights(Block *block, const char *file_group, const char *file_everyone, const char *folder_group,
                 const char *folder_everyone)
{
    block->FileCreateGroupRights = file_group;
    block->FileCreateEveryoneRights = file_everyone;
    block->FolderCreateGroupRights = folder_group;
    block->FolderCreateEveryoneRights = folder_everyone;
}

inline CifsShareOption new_cifs(const char *access = "ReadWrite")
{
    CifsShareOption cifs{};
    cifs.DefaultAccess = access;
    cifs.AllowGuestAccess_void = cifs.ShareDisplayOption_void = cifs.EnableRecycleBin_void = 1;
    cifs.RecycleSizeLimit_void = cifs.RecycleAgeLimit_void = cifs.NewFileFolderPermAutoset_void = 1;
    cifs.AclChangeRestrictionToggle_void = cifs.EnableOplocks_void = 1;
    give_rights(&cifs, "ReadWrite", "ReadOnly", "ReadOnly", "Disabled");
    return cifs;
}
inline AfpShareOption new_afp(const char *access = "ReadWrite")
{
    AfpShareOption afp{};
    afp.DefaultAccess = access;
    afp.AllowGuestAccess_void = afp.NewFileFolderPermAutoset_void = 1;
    return afp;
}
inline FtpShareOption new_ftp(const char *access = "ReadWrite")
{
    FtpShareOption ftp{};
    ftp.DefaultAccess = access;
    ftp.NewFileFolderPermAutoset_void = 1;
    give_rights(&ftp, "ReadWrite", "ReadOnly", "ReadOnly", "Disabled");
    return ftp;
}
inline HttpShareOption new_http(const char *access = "ReadWrite")
{
    HttpShareOption http{};
    http.DefaultAccess = access;
    http.EnableWebDav_void = 1;
    return http;
}
inline NfsShareOption new_nfs(const char *access = "ReadWrite")
{
    NfsShareOption nfs{};
    nfs.DefaultAccess = access;
    return nfs;
}
inline RsyncShareOption new_rsync(const char *access = "ReadWrite")
{
    RsyncShareOption rsync{};
    rsync.DefaultAccess = access;
    rsync.PasswordProtection = "Disabled";
    return rsync;
}

struct NewShares : Shares {
    std::vector<std::string> regenerated;

    NewShares()
    {
        add_accounts();
        share = new_share("music");
        qbdb_set_service_hook(
            qbdb,
            [](void *self, qbdb_t *, sqlite3 *, const char *proto) {
                static_cast<NewShares *>(self)->regenerated.emplace_back(proto);
                return 1;  // what comes of it is not looked at
            },
            this);
    }

    uint32_t add() { return qbobj_addShare(qbdb, db, &share, &err); }
    void expect_added() { EXPECT_EQ(add(), 0u) << text(err.message); }
    void expect_refused(uint32_t code, const std::string &message)
    {
        share.ShareId = nullptr;
        expect_failure(code, message, [&] { return add(); });
        EXPECT_EQ(share.ShareId, nullptr);
    }
    /// Removes the shares that were added, so that the next case begins anew.
    void clear()
    {
        for (const char *table :
             {"share", "zfs_attr", "cifs_share_option", "afp_share_option", "nfs_share_option", "ftp_share_option",
              "http_share_option", "rsync_share_option", "dlna_share_option", "daap_share_option", "zvol_share_option",
              "host_acl", "user_acl", "group_acl", "cifs_dfs_option", "rsync_user_password_acl", "snapshot_schedule",
              "snapshot_management", "`$application_on_share`"})
            sql(std::string("DELETE FROM ") + table +
                (strcmp(table, "snapshot_management") ? "" : " WHERE share_id>0"));
        regenerated.clear();
    }
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
