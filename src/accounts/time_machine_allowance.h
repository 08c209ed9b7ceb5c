// Who may back up with Time Machine, and how much.
#pragma once

#include "frame/related.h"
#include "qbobj/accounts.h"

namespace qb {

/// How many users may have a Time Machine allowance.
inline constexpr int32_t kMostTimeMachineUsers = 16;

/// Reads a user's Time Machine allowance and measures what is used of it; null when it has none.
uint32_t read_time_machine_allowance(CallContext *ctx, sqlite3 *db, int32_t user_id, UserTimeMachineQuota **allowance);

/// Reads which users of a list have an allowance. False when that failed.
bool read_allowances_of_users(CallContext *ctx, sqlite3 *db, const IdRange &users, Related *allowances);

/// Counts the Time Machine allowances, disabled and shared ones included.
uint32_t count_allowances(CallContext *ctx, sqlite3 *db, int32_t *count);

/// Reports that this user would be one too many.
uint32_t too_many_allowances(CallContext *ctx, const char *user_name);

/// Switches the AFP service on, which serves Time Machine.
uint32_t switch_afp_on(CallContext *ctx, sqlite3 *db);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
