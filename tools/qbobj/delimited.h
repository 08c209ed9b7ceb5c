// Rows and columns as text for other programs.
#pragma once

#include <string>
#include <vector>

#include "json_text.h"

namespace qbcli {

/// @name A header line and a line for each row. What is absent is empty; a list or a record is JSON in one line.
/// @param rows     Arrays of as many values as there are columns.
/// @param terminal Control characters are written out, so that nothing out of a database is a command to a terminal.
/// @{
/// Cells with tabs between them. A tab, a line's end, a carriage return and a backslash inside are `\t`, `\n`, `\r` and
/// `\\`.
std::string tsv_text(const std::vector<std::string> &columns, const Json &rows, bool terminal);
/// Cells with commas between them, lines ended by CR and LF. Cells with commas, quotes or line ends stand in quotes, in
/// which a quote is doubled; so do empty texts, which are not absent.
std::string csv_text(const std::vector<std::string> &columns, const Json &rows, bool terminal);
/// @}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
