// The login shell that goes with a user's shell access and keys: one rule for all operations.
#pragma once

#include "frame/query.h"

namespace qb {

/// Finds the login shell of a user with this shell access; `shell` is a static text.
Failure find_login_shell(CallContext *ctx, sqlite3 *db, int32_t user_id, int32_t shell_access, const char *&shell);

/// Writes the login shell anew after a user's shell access or keys changed. Fails for an id below 100 other than the
/// administrator's.
Failure refresh_shell(CallContext *ctx, sqlite3 *db, int32_t user_id);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
