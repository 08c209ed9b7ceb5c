// Quotas of users and groups, share by share.
#pragma once

#include "frame/related.h"
#include "qbobj/accounts.h"

namespace qb {

/// Appends a user's per-share quotas to a list.
uint32_t read_user_quotas(CallContext *ctx, sqlite3 *db, int32_t user_id, Quota **head);

/// Reads the quotas of all users of a list. False when that failed.
bool read_quotas_of_users(CallContext *ctx, sqlite3 *db, const IdRange &users, Related *quotas);

/// As read_user_quotas, of what was read for the list.
uint32_t append_user_quotas(CallContext *ctx, Related *quotas, int32_t user_id, Quota **head);

/// Appends a group's per-share quotas to a list.
uint32_t read_group_quotas(CallContext *ctx, sqlite3 *db, int32_t group_id, Quota **head);

/// A quota's limit in the range of the statements: a larger one becomes the largest.
int32_t limit_of(const Quota *quota);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
