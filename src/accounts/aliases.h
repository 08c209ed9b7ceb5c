// The aliases by which the cloud service knows its users: rows of the SMB user-name map.
#pragma once

#include "frame/query.h"

namespace qb {

/// Whether this name and primary group make a user of the cloud service, which may have an alias.
bool may_have_alias(const char *user_name, const char *group_name);

/// Whether a text can be such an alias.
bool is_alias(const char *alias);

/// Refuses a name that is another user's alias: SMB clients could not tell the two apart.
uint32_t check_alias_clash(CallContext *ctx, sqlite3 *db, const char *user_name);

/// Adds an alias to those that a user has.
uint32_t add_alias(CallContext *ctx, sqlite3 *db, const char *user_name, const char *alias);

/// Changes a user's alias, or gives it one when it has none.
uint32_t set_alias(CallContext *ctx, sqlite3 *db, const char *user_name, const char *alias);

/// How many rows of a type the map has for a user.
Failure count_maps(CallContext *ctx, sqlite3 *db, const char *unix_name, const char *type, int32_t &count);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
