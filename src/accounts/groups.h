// What adding, changing and removing groups have in common.
#pragma once

#include "frame/query.h"
#include "qbobj/accounts.h"

namespace qb {

/// Checks the form of a new group name, which is not null.
uint32_t check_given_group_name(CallContext *ctx, const char *name);

/// Checks that there is a group of this id; a removed one counts.
uint32_t require_group(CallContext *ctx, sqlite3 *db, int32_t id);

/// Makes a user, addressed by id, a secondary member of a group.
uint32_t add_member(CallContext *ctx, sqlite3 *db, int32_t group_id, const User *member);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
