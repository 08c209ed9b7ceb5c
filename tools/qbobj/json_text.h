// JSON text to JSON values, stricter than the parser alone.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace qbcli {

/// Members keep the order in which they were written.
using Json = nlohmann::ordered_json;

/// No record of the interface nests as deep.
constexpr int kDeepestJson = 32;

/// Parses a text. Malformed JSON (with line and column), a member that is given twice, and nesting
/// deeper than kDeepestJson are refused; nothing of the text is quoted, for it may hold a password.
/// @param origin What the text is called in messages.
Json parse_json(std::string_view text, const std::string &origin);

/// Bytes as hexadecimal digits.
std::string hexadecimal(const void *bytes, size_t size);
/// The bytes that a text of hexadecimal digits stands for; false when it is none.
bool from_hexadecimal(const std::string &text, std::string &bytes);

/// Overwrites every text in a value.
void wipe(Json &value);

/// A value in a few characters, for messages.
std::string brief(const Json &value);

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
