// Where results, warnings and failures go, and in which form.
#pragma once

#include <string>
#include <string_view>

#include "failure.h"
#include "json_text.h"

namespace qbcli {

struct OutputOptions {
    bool json = false;     ///< Asked for by name.
    bool table = false;    ///< Asked for by name.
    bool compact = false;  ///< JSON in one line.
    bool secrets = false;  ///< Secrets in clear, for a file or a pipe.
    bool tsv = false;      ///< Rows with tabs between their cells.
    bool csv = false;      ///< Rows with commas between their cells.
    std::string fields;    ///< The fields that are wanted, with commas between them; empty for all.
};

/// Whether results are printed as JSON.
bool prints_json(const OutputOptions &options);
/// Columns of the terminal; 0, for no limit, when standard output is none.
size_t terminal_width();
/// Prints an operation's outcome: as JSON when it is asked for or standard output is no terminal, else
/// laid out for people. A discarded value prints nothing.
void print_outcome(const Json &outcome, const OutputOptions &options);
/// Prints a value as JSON.
void print_json(const Json &value, const OutputOptions &options);
/// Prints a text as it is.
void print_text(std::string_view text);

/// A failure as a JSON object.
Json failure_to_json(const Failure &failure);
/// @name On standard error; a failure as a JSON object with --json. @{
void print_failure(const Failure &failure, const OutputOptions &options);
void print_warning(const std::string &operation, const std::string &message);
/// @}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
