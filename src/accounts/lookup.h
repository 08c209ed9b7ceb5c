// Ids by name and names by id of users and groups, for workers that answer with a value: a statement that fails is
// logged, leaves the caller's error record alone and has found nothing.
#pragma once

#include "accounts/directory_mode.h"

namespace qb {

/// Stands for "no such id".
inline constexpr int32_t kNoId = -1;

/// Reads whether the CIFS service runs in directory mode. False when that cannot be read.
bool find_ads_mode(CallContext *ctx, sqlite3 *db, int32_t *ads);

/// Id of a user by name: a local user, in directory mode a domain user, and a privileged account in both.
/// A null name stands for the local guest. False and kNoId when there is none; an id may be negative.
bool find_user_id(CallContext *ctx, sqlite3 *db, int32_t ads, const char *name, int32_t *id);

/// Id of a local or privileged group by name. A null name stands for the guest group, or for `nogroup` when
/// there is no guest group. False and kNoId when there is none; an id may be negative.
bool find_group_id(CallContext *ctx, sqlite3 *db, const char *name, int32_t *id);

/// Primary group of a user by name; a null name as in find_group_id. A user without a primary group has
/// none: its NULL must not become group 0. False and kNoId when there is none.
bool find_primary_gid(CallContext *ctx, sqlite3 *db, const char *name, int32_t *id);

/// POSIX uid that goes with a user's id: local ids are their own, negative ones are asked of the directory.
/// kNoId when there is none.
int32_t posix_uid_of(CallContext *ctx, sqlite3 *db, int32_t id);

/// POSIX gid that goes with a group's id, as posix_uid_of.
int32_t posix_gid_of(CallContext *ctx, sqlite3 *db, int32_t id);

/// What is shown for an id that no row names: the number, or "" when it is negative.
const char *name_of_unknown_id(CallContext *ctx, int32_t id);

/// Says that no row has an id; "" without memory.
const char *no_row_text(CallContext *ctx, int32_t id);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
