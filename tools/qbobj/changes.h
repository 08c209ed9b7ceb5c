// What a call changed, or would change, for people and programs.
#pragma once

#include "database.h"
#include "json_text.h"
#include "output.h"

namespace qbcli {

/// A changeset as a list: an object for each changed column of each row, with "table", "change" (added, changed,
/// removed), "key", "column", "before" and "after".
/// @param secrets In clear, not masked.
Json changes_to_json(const Database &database, const void *changes, int size, bool secrets);

/// The recording of one call. Nothing is recorded unless the call is watched.
class Watch {
public:
    /// @param trial The call is taken back.
    Watch(Database &database, bool trial);
    ~Watch();
    Watch(const Watch &) = delete;
    Watch &operator=(const Watch &) = delete;

    /// What the call changed.
    Json finish(bool secrets);

private:
    Database &database_;
    bool open_ = true;
};

/// Prints an operation's outcome and what it changed or would change: one JSON object with "result" and "changes", or a
/// table below the other.
void print_changes(const Json &outcome, const Json &changes, bool trial, const OutputOptions &options);

/// A list of changes laid out for people.
void print_change_table(const Json &changes, const std::string &title);

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
