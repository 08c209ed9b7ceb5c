// Look-ups in the database: one statement each tells whether a row exists.
#pragma once

#include "frame/query.h"

namespace qb {

/// What is looked up by name. The comment names the column that the look-up hands back.
enum class NameCheck {
    domain_user,        ///< user, domain or privileged: id
    local_user,         ///< local user: id
    share_name,         ///< share: id
    share_of_path,      ///< share whose folder the path is or lies in: id
    share_dataset,      ///< share by its data set: id
    share_application,  ///< application that uses a data set: its name
    volume_id,          ///< volume by id: id
    volume_name,        ///< volume by name: id
    domain_group,       ///< group, domain or privileged: id
    local_group,        ///< local group: id
    backup_job,         ///< backup job: id
    lun,                ///< iSCSI LUN: row id
    lun_group,          ///< iSCSI LUN group: row id
    initiator,          ///< iSCSI initiator: row id
    alias,              ///< SMB alias: the Unix user name that it belongs to
};

/// What is looked up by an id.
enum class IdCheck { user, group };

/// Tells whether a name is there, and its row's id (0 when it is not). A null name is not found.
Failure find_name(CallContext *ctx, sqlite3 *db, NameCheck what, const char *name, bool &found);
Failure find_name(CallContext *ctx, sqlite3 *db, NameCheck what, const char *name, bool &found, int32_t &id);

/// The same with the column named above, in the call's pool; null when nothing is found.
Failure find_name(CallContext *ctx, sqlite3 *db, NameCheck what, const char *name, bool &found, const char *&text);

/// Tells whether a row has this id.
Failure find_id(CallContext *ctx, sqlite3 *db, IdCheck what, int32_t id, bool &found);

/// Volume by id, else by name; `id` receives the volume's id.
Failure find_volume(CallContext *ctx, sqlite3 *db, const char *volume, bool &found);
Failure find_volume(CallContext *ctx, sqlite3 *db, const char *volume, bool &found, const char *&id);

/// Number of a user's SSH keys that serve rsync.
Failure count_rsync_keys(CallContext *ctx, sqlite3 *db, int32_t user_id, int32_t &count);

/// Number of Time Machine allowances.
Failure count_timemachine_quotas(CallContext *ctx, sqlite3 *db, int32_t &count);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
