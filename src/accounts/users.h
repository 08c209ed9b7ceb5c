// Reading users: their rows, and what hangs on them in other tables.
#pragma once

#include "frame/read_row.h"
#include "frame/related.h"
#include "qbobj/accounts.h"

namespace qb {

/// How a stored password hash is handed out.
enum class Passwords { masked, stored };

/// What stands for a stored password hash: the mask, or "" when there is none. A static text.
const char *masked(const char *hash);

/// Cells of a user's row that do not go into the record as they are.
struct UserCells {
    const char *group = nullptr;  // name of the primary group; null when that has no row
    const char *hash = nullptr;
};

/// Reads a row of a statement on users. All begin with id, uname, gname, home, email, passwd and the domain flag;
/// `more` are the fields of the columns that follow.
template <class... More>
void read_user(CallContext *ctx, const Rows &rows, int row, User *user, UserCells *cells, More &&...more)
{
    read_row(ctx, rows, row, both(user->resource_id, user->UserId), empty(user->UserName), uncopied(cells->group),
             empty(user->HomeDirectory), empty(user->Email), uncopied(cells->hash), user->IsDomainMember, more...);
}

/// Name of a user's primary group. The directory is asked for that of a group without a row.
const char *group_name(CallContext *ctx, sqlite3 *db, const UserCells &cells, int32_t group_id);

/// Reads a user's home-folder settings; null when it has none.
uint32_t read_home_folder_settings(CallContext *ctx, sqlite3 *db, int32_t user_id, UserHomeFolderSettings **settings);

/// Reads what hangs on a user: quotas (appended), home-folder settings, Time Machine allowance.
uint32_t read_user_details(CallContext *ctx, sqlite3 *db, int32_t user_id, User *user);

/// What hangs on the users of a list.
struct UserRelations {
    Related quotas;
    Related homes;
    Related allowances;  // whose there are: few, and each is measured

    /// Reads it at once where that pays. False when each user has to be read for itself.
    bool read(CallContext *ctx, sqlite3 *db, const IdRange &users);
};

/// As read_user_details, of what was read for the list.
uint32_t take_user_details(CallContext *ctx, sqlite3 *db, UserRelations *related, int32_t user_id, User *user);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
