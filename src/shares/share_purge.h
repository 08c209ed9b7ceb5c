// Removing shares with everything that is keyed by them. The caller has made sure that the share may go.
#pragma once

#include "frame/query.h"

namespace qb {

/// Removes a share: its rows in every table that knows it, then its own. 6 when there is no such share.
uint32_t share_purge(CallContext *ctx, sqlite3 *db, int32_t share_id);

/// Removes every share of a volume, in row order, also those that applications use or that hold other shares.
uint32_t share_purge_volume(CallContext *ctx, sqlite3 *db, const char *volume_id);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
