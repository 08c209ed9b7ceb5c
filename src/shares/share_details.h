// What belongs to a share, as share_load reads it.
#pragma once

#include "shares/shares.h"

namespace qb {

/// Owner of a share as stored. A group without a row is no group.
struct StoredOwner {
    int32_t user = 0;
    int32_t user_void = 1;
    int32_t group = 0;
    int32_t group_void = 1;
};

/// Fills owner, permissions and ACL of a folder as they are on disk. Without the folder the stored owner and the
/// permissions that `stat` holds remain. The folder is looked at, never opened.
uint32_t read_folder(CallContext *ctx, sqlite3 *db, const char *path, const StoredOwner &owner, FileStat *stat);

/// Reads the options of every protocol that a share has, with their lists.
uint32_t read_protocols(CallContext *ctx, sqlite3 *db, const ShareSettings &settings, int32_t share_id, Share *share);

/// Appends the hosts, users or groups of one protocol's list.
uint32_t read_host_acl(CallContext *ctx, sqlite3 *db, int32_t share_id, const char *proto, HostAcl **head);
uint32_t read_user_acl(CallContext *ctx, sqlite3 *db, int32_t ads, int32_t share_id, const char *proto, UserAcl **head);
uint32_t read_group_acl(CallContext *ctx, sqlite3 *db, int32_t ads, int32_t share_id, const char *proto,
                        GroupAcl **head);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
