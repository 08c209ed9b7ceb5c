// Text as people see it: UTF-8 checked, measured in terminal columns, cut, and made harmless to print.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace qbcli {

/// One character of a text: its code point and its bytes. An ill-formed byte stands alone, as U+FFFD.
struct Character {
    char32_t point;
    size_t size;
    bool valid;
};

/// The first character of a text that is not empty.
Character first_character(std::string_view text);

bool is_utf8(std::string_view text);

/// The text with U+FFFD in place of ill-formed bytes.
std::string well_formed(std::string_view text);

/// Columns that a text takes on a terminal.
size_t display_width(std::string_view text);

/// The text, cut to a number of columns; "…" then stands in the last of them.
std::string fit(std::string_view text, size_t columns);

/// The text with control characters written out ("\n", "\x1b"): what comes out of a database must not
/// reach the terminal as a command. Ill-formed bytes become U+FFFD.
std::string printable(std::string_view text);

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
