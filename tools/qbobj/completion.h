// Completion of command lines in bash and zsh. The scripts ask the program itself for candidates, so that
// they never go out of date.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace qbcli {

/// The script for a shell, "bash" or "zsh".
const char *completion_script(const std::string &shell);

/// Candidates for the last of the words that follow the program's name, not filtered by what stands
/// there already. One that ends in "=" or "." goes on.
std::vector<std::string> completion_candidates(const CLI::App &app, const std::vector<std::string> &words);

/// The words of a command line that are no options and no option's value: the command and what follows it.
std::vector<std::string> plain_words(const CLI::App &app, const std::vector<std::string> &words);

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
