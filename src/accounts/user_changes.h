// Checks and steps that creating, changing and removing users have in common.
#pragma once

#include "frame/query.h"
#include "qbobj/accounts.h"

namespace qb {

/// What says that a name is too long: the operations differ in its words.
inline constexpr char kNewNameTooLong[] = "UserName (%s) is too long";
inline constexpr char kChangedNameTooLong[] = "UserName is too long (%s)";

/// Checks the form of a name that a user is to get. Names of a directory may hold blanks.
uint32_t check_given_user_name(CallContext *ctx, int32_t ads, const char *name, const char *too_long);

/// Checks an address; an empty or null one is none.
uint32_t check_given_email(CallContext *ctx, const char *email);

/// Hashes a password that is to be stored.
uint32_t hash_given_password(CallContext *ctx, const char *password, const char **hash);

/// Finds the group that a record names as primary group: a local one, in directory mode one of the directory.
uint32_t require_primary_group(CallContext *ctx, sqlite3 *db, int32_t ads, const char *name, int32_t *id);

/// A user as it is stored. A directory user that was not imported has no row.
struct StoredUser {
    const char *name = nullptr;
    const char *home = nullptr;
    bool protected_account = false;
};

/// Checks that a user has this id, be it a removed one. `too_low` is the message for an id that none has.
uint32_t require_user(CallContext *ctx, sqlite3 *db, int32_t id, const char *too_low);

/// Reads name, home path and protection of a user.
uint32_t read_stored_user(CallContext *ctx, sqlite3 *db, int32_t id, StoredUser *stored);

}  // namespace qb
