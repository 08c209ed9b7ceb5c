/// @file
/// Sets of bytes and comparison of words, independent of the process locale.
///
/// The names that are checked here end up in configuration files, on disk and on the wire, so what is accepted must
/// not change with the locale of the program that calls the library: isalnum(), strcasecmp() and friends are not used.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qb {

/// A set of bytes. The NUL byte is never a member, so that a loop "while the set has the byte" ends with the string.
struct CharSet {
    std::array<uint64_t, 4> bits{};

    constexpr bool has(char c) const
    {
        const auto byte = static_cast<unsigned char>(c);
        return ((bits[byte >> 6] >> (byte & 63)) & 1) != 0;
    }

    friend constexpr CharSet operator|(CharSet a, const CharSet &b)
    {
        for (size_t i = 0; i < a.bits.size(); ++i) a.bits[i] |= b.bits[i];
        return a;
    }
};

/// The bytes from `low` to `high`, both included.
constexpr CharSet byte_range(unsigned low, unsigned high)
{
    CharSet set;
    for (unsigned byte = low; byte <= high; ++byte) set.bits[byte >> 6] |= uint64_t{1} << (byte & 63);
    return set;
}

/// The bytes of `text`.
constexpr CharSet chars(std::string_view text)
{
    CharSet set;
    for (char c : text) set = set | byte_range(static_cast<unsigned char>(c), static_cast<unsigned char>(c));
    return set;
}

inline constexpr CharSet digits = byte_range('0', '9');
inline constexpr CharSet alpha = byte_range('a', 'z') | byte_range('A', 'Z');
inline constexpr CharSet alnum = alpha | digits;
/// Any byte of a multi-byte UTF-8 character; sequences are not decoded.
inline constexpr CharSet non_ascii = byte_range(0x80, 0xff);
/// A byte that may begin a multi-byte UTF-8 character.
inline constexpr CharSet utf8_lead = byte_range(0xc0, 0xff);

constexpr char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Whether `text` begins with `prefix`, ASCII letters compared without regard to case.
constexpr bool begins_nocase(const char *text, const char *prefix)
{
    for (; *prefix != '\0'; ++text, ++prefix)
        if (lower(*text) != lower(*prefix)) return false;
    return true;
}

/// Whether the texts are equal, ASCII letters compared without regard to case.
constexpr bool equal_nocase(const char *a, const char *b)
{
    for (; lower(*a) == lower(*b); ++a, ++b)
        if (*a == '\0') return true;
    return false;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
