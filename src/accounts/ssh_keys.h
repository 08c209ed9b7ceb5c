// What the workers of SSH public keys share.
#pragma once

#include "frame/query.h"
#include "qbobj/accounts.h"

namespace qb {

inline constexpr const char *kSshKeyTable = "ssh_public_key";
/// Owner of the twins of the administrator's keys.
inline constexpr int32_t kRootId = 0;
/// No key is added when this many are stored, twins included. The last one may still bring its own twin.
inline constexpr int32_t kMostSshKeys = 256;

/// A key on one line, for the log.
const char *one_line(CallContext *ctx, const SshPublicKey *key);

/// Reads a row into a record; without memory the record stays as it was.
uint32_t read_ssh_key(CallContext *ctx, const Rows &rows, int row, SshPublicKey *key);

/// Reports a look-up that could not read the keys.
uint32_t key_lookup_failed(CallContext *ctx, sqlite3 *db);

/// Checks that there is a key of this id.
uint32_t require_key(CallContext *ctx, sqlite3 *db, int32_t id);

/// Title of root's twin of a key.
uint32_t make_root_title(CallContext *ctx, const char *worker, const char *title, const char **root_title);

/// Finds root's twin of one of the administrator's keys.
uint32_t find_root_key(CallContext *ctx, sqlite3 *db, int32_t key_id, SshPublicKey *root_key);

/// Writes the login shell of a key's owner anew, because it depends on the keys.
uint32_t refresh_owner_shell(CallContext *ctx, sqlite3 *db, int32_t user_id);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
