// What the commands around the journal share.
#pragma once

#include <string>

#include "database.h"
#include "qbdb_journal.h"
#include "records.h"

namespace qbcli {

/// Who runs the program, by name.
std::string caller_name();

/// Throws what the support library failed with.
void check(int rc, const char *what);

/// A call's number as it was typed.
int64_t number_of_call(const std::string &text);

/// How a database's journal stands.
qbdb_journal_state state_of(const Database &database);

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
