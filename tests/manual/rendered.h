// Pages as a reader sees them.
#pragma once

#include <fstream>
#include <string>

#include "fixture/files.h"

namespace test {

inline void write_file(const std::string &path, const std::string &text)
{
    std::ofstream(path) << text;
}

/// A page as plain text: what is bold or underlined on a terminal is written over itself.
inline std::string rendered(const std::string &path)
{
    const Outcome outcome = run("mandoc -Tascii -Ios=libqbobj -Owidth=100 '" + path + "'");
    EXPECT_EQ(outcome.status, 0) << path;
    std::string text;
    for (const char c : outcome.output) {
        if (c == '\b') text.pop_back();
        else text += c;
    }
    return text;
}

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
