// The one password hash of the appliance.
#pragma once

#include "frame/report.h"

namespace qb {

/// Hashes a password with MD5-crypt and a fresh random salt. "" for a null or empty password; null when
/// hashing failed. The hash lives in the call's pool.
const char *hash_password(CallContext *ctx, const char *password);

/// Checks a password and hashes it: 0 and a hash ("" for an empty password), or 1 and null for a null
/// one and when hashing failed.
int32_t check_password(CallContext *ctx, const char *password, const char **hash);

/// Whether a password matches a stored hash. A hash that is none (empty, locked) matches nothing.
bool verify_password(CallContext *ctx, const char *password, const char *hash);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
