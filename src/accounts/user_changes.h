// Creating, changing and removing users: workers, and the checks and steps that they have in common.
#pragma once

#include "accounts/accounts.h"

namespace qb {

uint32_t x_qbobj_addUser(CallContext *ctx, sqlite3 *db, User *user);
uint32_t x_qbobj_addUserList(CallContext *ctx, sqlite3 *db, User *user);
uint32_t x_qbobj_checkUserList(CallContext *ctx, sqlite3 *db, UserCollection *users, GroupCollection *groups,
                               UserCollection *existingUsers, GroupCollection *existingGroups);
uint32_t x_qbobj_modifyUser(CallContext *ctx, sqlite3 *db, User *user);
uint32_t x_qbobj_setPrimaryGroupByName(CallContext *ctx, sqlite3 *db, const char *userName, const char *groupName);
uint32_t x_qbobj_disableEnableLocalUserByName(CallContext *ctx, sqlite3 *db, int32_t enable, const char *userName);
uint32_t x_qbobj_modifyUserVisibleSnapFolder(CallContext *ctx, sqlite3 *db, int32_t userId, const char *folder);
uint32_t x_qbobj_deleteUser(CallContext *ctx, sqlite3 *db, User *user);
uint32_t x_qbobj_deleteUserByName(CallContext *ctx, sqlite3 *db, User *user);

/// The id by which a record addresses its user.
inline int32_t addressed_user(const User *user)
{
    return user->resource_id < 1 ? user->UserId : user->resource_id;
}

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
uint32_t resolve_group(CallContext *ctx, sqlite3 *db, int32_t ads, const char *name, int32_t *id);

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

/// Whether a user of this name and primary group is one of the cloud service, which knows it by an alias.
bool may_have_alias(const char *user_name, const char *group_name);

/// Whether a text can be such an alias.
bool is_alias(const char *alias);

/// Refuses a name that is the alias of another user: SMB clients could not tell the two apart.
uint32_t check_alias_clash(CallContext *ctx, sqlite3 *db, const char *user_name);

/// Counts the Time Machine allowances, disabled and shared ones included.
uint32_t count_allowances(CallContext *ctx, sqlite3 *db, int32_t *count);

/// The report that a user would be one too many.
uint32_t too_many_allowances(CallContext *ctx, const char *user_name);

/// Time Machine is served over AFP.
uint32_t switch_afp_on(CallContext *ctx, sqlite3 *db);

}  // namespace qb
