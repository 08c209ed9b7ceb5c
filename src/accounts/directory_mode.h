// How the appliance treats the users and groups of a directory.
#pragma once

#include "frame/query.h"

namespace qb {

/// Reads whether the CIFS service runs in directory mode (1) or not (0).
Failure find_ads_mode(CallContext *ctx, sqlite3 *db, int32_t &ads);
uint32_t read_ads_mode(CallContext *ctx, sqlite3 *db, int32_t *ads);

/// Reads whether directory users are looked up live instead of being synchronised (not 0).
uint32_t read_no_sync_ads(CallContext *ctx, sqlite3 *db, int32_t *no_sync);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
