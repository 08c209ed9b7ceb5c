// Users, the read side: workers, and the readers that other account workers call.
#pragma once

#include "accounts/accounts.h"
#include "frame/query.h"

namespace qb {

uint32_t x_qbobj_getUserCollection(CallContext *ctx, sqlite3 *db, UserCollection *users, AccountQuery *query,
                                   int32_t with_password);
uint32_t x_qbobj_getUser(CallContext *ctx, sqlite3 *db, User *user);
uint32_t x_qbobj_getSystemUser(CallContext *ctx, sqlite3 *db, SystemUser *user);
uint32_t x_qbobj_getCloudUser(CallContext *ctx, sqlite3 *db, UserCollection *users);
uint32_t x_qbobj_getUserInGroupName(CallContext *ctx, sqlite3 *db, const char *groupName, int32_t primary_only,
                                    UserCollection *users);
int32_t x_qbobj_getUID(CallContext *ctx, sqlite3 *db, const char *name, int32_t *id);
int32_t x_qbobj_getUserName(CallContext *ctx, sqlite3 *db, int32_t id, const char **name);
int32_t x_qbobj_getPosixUID(CallContext *ctx, sqlite3 *db, const char *name);
int32_t x_qbobj_getPosixUIDbyUID(CallContext *ctx, sqlite3 *db, int32_t id);
int32_t x_qbobj_getPosixUIDGID(CallContext *ctx, sqlite3 *db, const char *name, int32_t *uid, int32_t *gid);
uint32_t x_qbobj_getUserHomeFolderTotalConsumedInByte(CallContext *ctx, sqlite3 *db, uint64_t *bytes);

/// How a stored password hash is handed out.
enum class Passwords { masked, stored };

/// What stands for a stored password hash: the mask, or "" when there is none. A static text.
const char *masked(const char *hash);

/// Where a statement has the columns that come after id, uname, gname, home, email, passwd and the domain
/// flag; -1 for one that it does not read.
struct UserColumns {
    int full_name;
    int is_locked;
    int group_id;
    int shell_access;
};

/// Fills a user from a row; columns that the statement does not read leave their fields alone. A primary
/// group without a row is asked of the directory. 0, or 2 without memory.
uint32_t fill_user(CallContext *ctx, sqlite3 *db, const Rows &rows, int row, const UserColumns &columns,
                   Passwords passwords, User *user);

/// Reads a user's home-folder settings; null when it has none.
uint32_t read_home_folder_settings(CallContext *ctx, sqlite3 *db, int32_t user_id, UserHomeFolderSettings **settings);

/// Reads a user's Time Machine allowance and measures what is used of it; null when it has none.
uint32_t read_time_machine_allowance(CallContext *ctx, sqlite3 *db, int32_t user_id, UserTimeMachineQuota **allowance);

/// Reads what hangs on a user: quotas (appended), home-folder settings, Time Machine allowance.
uint32_t read_user_details(CallContext *ctx, sqlite3 *db, int32_t user_id, User *user);

}  // namespace qb
