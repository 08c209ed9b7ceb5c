// JSON laid out for people: a list of records as a table, a record as "Field  value" lines.
#pragma once

#include <string>

#include "json_text.h"

namespace qbcli {

/// Lays a value out, each line ended. A list of one is shown as its one record. Columns that are empty in every row and
/// fields without a value are left out. A table that is too wide loses width in its long cells first, then its last
/// columns.
/// @param width  Columns of the terminal; 0 for no limit.
/// @param chosen The columns are those that somebody named: all stay, in their order.
std::string lay_out(const Json &value, size_t width, bool chosen = false);

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
