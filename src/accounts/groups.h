// What adding, changing and removing groups have in common.
#pragma once

#include "frame/query.h"
#include "qbobj/accounts.h"

namespace qb {

/// Checks the form of a name that a group is to get; not null.
uint32_t check_given_group_name(CallContext *ctx, const char *name);

/// Checks that a group has this id, be it a removed one.
uint32_t require_group(CallContext *ctx, sqlite3 *db, int32_t id);

/// Makes a user, addressed by id, a secondary member of a group.
uint32_t add_member(CallContext *ctx, sqlite3 *db, int32_t group_id, const User *member);

}  // namespace qb
