// Checks and steps that creating, changing and removing users have in common.
#pragma once

#include "frame/query.h"
#include "qbobj/accounts.h"

namespace qb {

/// The message for a name that is too long: operations word it differently.
inline constexpr char kNewNameTooLong[] = "UserName (%s) is too long";
inline constexpr char kChangedNameTooLong[] = "UserName is too long (%s)";

/// Checks the form of a new user name. In directory mode it may hold blanks.
uint32_t check_given_user_name(CallContext *ctx, int32_t ads, const char *name, const char *too_long);

/// Checks an e-mail address, if there is one.
uint32_t check_given_email(CallContext *ctx, const char *email);

/// Hashes a password for storing.
uint32_t hash_given_password(CallContext *ctx, const char *password, const char **hash);

/// Finds the group that a record names as primary group: a local one, in directory mode one of the directory.
uint32_t require_primary_group(CallContext *ctx, sqlite3 *db, int32_t ads, const char *name, int32_t *id);

/// A user as it is stored. A directory user that was not imported has no row.
struct StoredUser {
    const char *name = nullptr;
    const char *home = nullptr;
    bool protected_account = false;
};

/// Checks that there is a user of this id; a removed one counts. `too_low` is the message for an id below 1.
uint32_t require_user(CallContext *ctx, sqlite3 *db, int32_t id, const char *too_low);

/// Reads name, home path and protection of a user.
uint32_t read_stored_user(CallContext *ctx, sqlite3 *db, int32_t id, StoredUser *stored);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
