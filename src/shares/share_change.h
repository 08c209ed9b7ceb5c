// Changing a share, step by step. What a record does not give stays as it is: a null text, list or block, and a number
// whose indicator is set.
#pragma once

#include "frame/set_list.h"
#include "shares/share_write.h"
#include "shares/shares.h"

namespace qb {

/// What a change tells its caller: written into the record when the whole call has succeeded.
struct ShareAnswer {
    static constexpr int kProtocols = 8;

    ShareAnswer *next;
    Share *share;
    const char *old_name;  // of a share that has got another; else null, as its path
    const char *old_path;
    const char *path;
    int32_t old_visible;
    int32_t mode;
    int32_t *changed[kProtocols];  // of the protocols whose rows differ
    int protocols;
};

/// A share on its way to another state.
struct ShareChange {
    CallContext *ctx;
    sqlite3 *db;
    const ShareSettings &settings;
    const Share *given;
    ShareAnswer *answer;
    int32_t id = 0;
    Share stored{};  // as it was before
};

using ShareSet = SetList<512>;

/// Says in the log that a SET list is not whole: what does not fit is not stored.
void log_dropped(const ShareChange &change, const ShareSet &set);

/// Judges the name. One that differs from the stored name, be it by its letter case, goes into the SET list, with path
/// and data set.
uint32_t choose_share_name(const ShareChange &change, ShareSet *set);

/// Carries a new name to whatever knows the share by name or data set. Call it when the share has its new row.
uint32_t carry_share_name(const ShareChange &change);

/// Puts comment, snapshot folder, owner and permissions into the SET list.
uint32_t choose_share_folder(const ShareChange &change, ShareSet *set);

/// Writes the attributes of the data set.
uint32_t change_share_attributes(const ShareChange &change);

/// Writes the protocol blocks, and notes whose rows are others than before.
uint32_t change_share_protocols(const ShareChange &change);

/// Writes the snapshot schedule: makes a share without one the default, then assigns what is given.
uint32_t change_snapshot_schedule(CallContext *ctx, sqlite3 *db, int32_t share_id, const Schedule &schedule);

/// Writes the snapshot policy.
uint32_t change_snapshot_policy(const ShareChange &change);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
