// "Did you mean": the nearest of the names that would have been right.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qbcli {

using Names = std::vector<std::string_view>;

/// Insertions, deletions, replacements and swaps of neighbours between two words; case does not count.
size_t edit_distance(std::string_view a, std::string_view b);

/// The name that was probably meant; empty when none is near.
std::string_view nearest(std::string_view wrong, const Names &names);

/// The operation that was probably meant: another verb for it ("createUser", "user-add"), a plural ("listUsers",
/// "userlist"), else the nearest name; empty when none is near.
std::string_view nearest_operation(std::string_view wrong, const Names &names);

/// @name " (did you mean addUser?)", or nothing. @{
std::string did_you_mean(std::string_view wrong, const Names &names);
std::string did_you_mean_operation(std::string_view wrong, const Names &names);
/// @}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
