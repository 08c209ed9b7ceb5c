// Copies that are kept current, over a pipe.
#pragma once

#include <string>

#include "command_line.h"
#include "qbdb_journal.h"

namespace qbcli {

/// A call as a line of a stream.
std::string line_of(const qbdb_journal_entry &entry);

/// Writes the calls after one to standard output, each as a line of JSON.
/// @param on Go on with those that come.
void stream_journal(const CommandLine &line, int64_t after, bool on);

/// Applies what standard input brings to the database.
void apply_stream(const CommandLine &line);

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
