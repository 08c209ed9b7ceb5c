// The names that stand in a database, to be offered while a command line is typed.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qbcli {

/// The statement that reads the names which an argument or a field stands for: of users, groups, shares, data sets,
/// volumes and so on.
/// @param of   The type of the record that has the field, or the family of the operation that has the argument.
/// @param name The argument's or field's own name.
/// @return Null where it is no name that is looked up.
const char *names_statement(std::string_view of, std::string_view name);

/// Reads names. It changes nothing, waits for nobody, and gives nothing when anything is wrong. Names with control
/// characters or ill-formed bytes are left out.
/// @param path      The database.
/// @param beginning With what they begin.
std::vector<std::string> stored_names(const std::string &path, const char *statement, const std::string &beginning);

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
