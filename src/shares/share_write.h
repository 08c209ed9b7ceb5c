// Writing what belongs to a share: the access lists, options and schedules that creating and changing a share write
// alike. A list is replaced as a whole; an empty one is cleared.
#pragma once

#include "frame/query.h"
#include "qbobj.h"
#include "shares/words.h"
#include "validate/validate.h"

namespace qb {

/// The words for a text that is refused; its %s takes the text.
using Complaint = FailureText<const char *>;

/// Default access of a protocol as a number.
inline constexpr int32_t kLevelClosed = 0;
inline constexpr int32_t kLevelReadOnly = 1;
inline constexpr int32_t kLevelWriteable = 2;

/// Reads the default access of a share's protocol; closed when the share does not have it.
uint32_t share_default_access_level(CallContext *ctx, sqlite3 *db, int32_t share_id, const char *proto, int32_t *level);

/// Writes a protocol's host list.
uint32_t share_write_host_acl(CallContext *ctx, sqlite3 *db, int32_t share_id, const char *proto, const HostAcl *head);

/// Writes a protocol's user list, without those who would get no more than the default access. In directory mode a
/// user may be given by name.
uint32_t share_write_user_acl(CallContext *ctx, sqlite3 *db, int32_t ads, int32_t share_id, const char *proto,
                              const UserAcl *head);

/// Writes a protocol's group list, as the user list.
uint32_t share_write_group_acl(CallContext *ctx, sqlite3 *db, int32_t ads, int32_t share_id, const char *proto,
                               const GroupAcl *head);

/// Writes the three lists of a protocol block.
template <class Block>
uint32_t share_write_lists(CallContext *ctx, sqlite3 *db, int32_t ads, int32_t share_id, const char *proto,
                           const Block *block)
{
    TRY(share_write_host_acl(ctx, db, share_id, proto, block->HostAcl));
    TRY(share_write_user_acl(ctx, db, ads, share_id, proto, block->UserAcl));
    return share_write_group_acl(ctx, db, ads, share_id, proto, block->GroupAcl);
}

/// Writes the DFS links.
uint32_t share_write_dfs_links(CallContext *ctx, sqlite3 *db, int32_t share_id, const DfolderAcl *head);

/// Writes the users of an rsync module. A user with the mask for a password, or none, keeps the stored one.
uint32_t share_write_rsync_users(CallContext *ctx, sqlite3 *db, int32_t share_id, const UserPasswordAcl *head);

/// Inserts the options of a protocol, of rsync with its lists.
uint32_t share_write_rsync_option(CallContext *ctx, sqlite3 *db, int32_t share_id, const RsyncShareOption *rsync);
uint32_t share_write_dlna_option(CallContext *ctx, sqlite3 *db, int32_t share_id, const DlnaShareOption *dlna);
uint32_t share_write_daap_option(CallContext *ctx, sqlite3 *db, int32_t share_id, const DaapShareOption *daap);

/// Writes the snapshot schedule.
uint32_t share_write_snapshot_schedule(CallContext *ctx, sqlite3 *db, int32_t share_id, const Schedule *schedule);

/// Writes the applications that use a share.
uint32_t share_write_used_by(CallContext *ctx, sqlite3 *db, int32_t share_id, const UsedBy *head);

/// Tells a service to read its shares again. Its result is ignored by design.
void regenerate_shares(CallContext *ctx, sqlite3 *db, const char *proto);

/// Tests the form of a new share's name.
uint32_t check_new_share_name(CallContext *ctx, const char *name);

/// Checks the data set's `sync` word: one of three.
uint32_t check_sync(CallContext *ctx, const char *sync);

/// The stored word of a default access, a static text; code 8 with the complaint for a word that is none.
uint32_t choose_access(CallContext *ctx, const char *word, const char **stored, Complaint complaint);

/// The permission bits of a word for a folder's owner, group or everyone; code 8 as choose_access.
uint32_t choose_folder_bits(CallContext *ctx, const char *word, int32_t *bits, Complaint complaint);

/// What a block says of new files and folders: of the group and of everyone, files first.
enum { kFileGroup, kFileEveryone, kFolderGroup, kFolderEveryone, kRights };

struct RightsMasks {
    int32_t of[kRights];

    int32_t files() const { return packed(of[kFileGroup], of[kFileEveryone]); }
    int32_t folders() const { return packed(of[kFolderGroup], of[kFolderEveryone]); }
};

/// How a protocol stores rights: map_access_bits or map_access_removed_bits.
using RightsMap = int32_t (*)(const char *value, const char *fallback, bool folder, int32_t *out);

/// The four words of a block, null where it does not say.
struct RightsWords {
    const char *of[kRights];
};

template <class Block>
RightsWords rights_of(const Block &block)
{
    return {{block.FileCreateGroupRights, block.FileCreateEveryoneRights, block.FolderCreateGroupRights,
             block.FolderCreateEveryoneRights}};
}

/// The masks of four rights words; code 8 with the complaint of the first word that is none.
uint32_t choose_rights(CallContext *ctx, RightsMap map, const RightsWords &words,
                       const Complaint (&complaints)[kRights], RightsMasks *masks);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
