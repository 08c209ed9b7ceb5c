// Tables of inputs and results.
#pragma once

#include "checks.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <optional>
#include <set>

namespace checks {

/// An input, null or a text, and what the check has to answer.
struct Row {
    std::optional<std::string> input;
    int32_t result;
    std::string output = {}; ///< compared when the check hands something back
};

/// The text with everything but printable ASCII as \xNN, and long texts cut.
inline std::string shown(const std::optional<std::string> &text)
{
    if (!text)
        return "null";
    std::string result = "\"";
    for (size_t i = 0; i < text->size() && i < 100; ++i) {
        const auto byte = static_cast<unsigned char>((*text)[i]);
        char escaped[8];
        std::snprintf(escaped, sizeof escaped, byte >= 0x20 && byte < 0x7f ? "%c" : "\\x%02x", byte);
        result += escaped;
    }
    return result + "\"" + (text->size() > 100 ? "..." : "") + " (" + std::to_string(text->size()) + " bytes)";
}

inline void expect_row(const Check &check, const Row &row)
{
    const auto copy = row.input ? std::make_unique<Exact>(*row.input) : nullptr;
    const char *text = copy ? copy->get() : nullptr;
    const Outcome outcome = check.run(text);
    EXPECT_EQ(outcome.result, row.result) << check.name << " of " << shown(row.input);
    EXPECT_EQ(outcome.fault, nullptr) << check.name << " of " << shown(row.input) << ": "
                                      << (outcome.fault ? outcome.fault : "");
    if (outcome.result == 0 && row.result == 0) {
        EXPECT_EQ(outcome.output, row.output) << check.name << " of " << shown(row.input);
    }
}

/// Runs a check on each row. The rows together have to show every result that the check documents, and no other.
inline void expect_table(const char *name, const std::vector<Row> &rows)
{
    const Check &check = named(name);
    std::set<int32_t> seen;
    for (const Row &row : rows) {
        expect_row(check, row);
        seen.insert(row.result);
    }
    EXPECT_EQ(seen, std::set<int32_t>(check.results.begin(), check.results.end()))
        << "the table of " << name << " does not show every result";
}

inline std::string times(size_t count, const std::string &text)
{
    std::string result;
    while (count-- > 0)
        result += text;
    return result;
}

} // namespace checks
// SPDX-License-Identifier: Apache-2.0
