// Where values come from besides the command line: files, standard input, the terminal.
#pragma once

#include <string>

#include "memory.h"

namespace qbcli {

/// A whole file.
PrivateText read_file(const std::string &path);
/// The same of a file and nothing else: what is no file is refused without waiting for it.
PrivateText read_regular_file(const std::string &path);

/// Standard input, which can be used up only once.
class StandardInput {
public:
    /// All of it, as one JSON document.
    PrivateText document();
    /// A secret: typed without echo on a terminal (twice, to be `confirmed`), else the next line.
    PrivateText secret(const std::string &name, bool confirmed);

private:
    PrivateText typed(const std::string &prompt);
    bool read_whole_ = false;
    bool read_lines_ = false;
};

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
