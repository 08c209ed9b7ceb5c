// A file that is there whole or not at all.
#pragma once

#include <string>
#include <string_view>

namespace qbcli {

/// Writes a file, readable by its owner alone: beside its place first, then put there by its name, in place of a file
/// that is there. A link, anything else that is no file, and a database are not replaced.
void write_new_file(const std::string &path, std::string_view content);

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
