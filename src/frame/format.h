// Formats that the compiler checks against their arguments.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace qb {

/// Kind of value that a conversion takes, as a letter; 0 for anything that no format of ours takes.
template <class T>
consteval char conversion_kind()
{
    using Bare = std::decay_t<T>;
    if constexpr (std::is_same_v<Bare, const char *> || std::is_same_v<Bare, char *>) return 's';
    else if constexpr (std::is_integral_v<Bare> || std::is_enum_v<Bare>) return sizeof(Bare) == 8 ? 'l' : 'i';
    else return 0;
}

/// Reached while a format is checked at compile time: the format and its arguments do not agree.
inline void format_mismatch() {}

/// Checks a format against the kinds of its arguments. `strings` are the letters that take a text.
template <size_t N, size_t Kinds>
consteval void check_format(const char (&format)[N], const char (&kinds)[Kinds], const char *strings)
{
    size_t argument = 0;
    for (size_t i = 0; i < N; i++) {
        if (format[i] != '%') continue;
        i++;
        if (format[i] == '%') continue;
        size_t longs = 0;
        for (; format[i] == 'l' && longs < 2; i++) longs++;
        const char letter = format[i];
        const bool number = letter == 'd' || letter == 'u';
        bool string = false;
        for (const char *at = strings; *at; at++) string = string || (letter == *at && longs == 0);
        const char kind = argument + 1 < Kinds ? kinds[argument] : '\0';
        if (!(string && kind == 's') && !(number && kind == (longs ? 'l' : 'i'))) format_mismatch();
        argument++;
    }
    if (argument + 1 != Kinds) format_mismatch();
}

/// How many conversions a format has.
template <size_t N>
consteval size_t conversions(const char (&format)[N])
{
    size_t count = 0;
    for (size_t i = 0; i < N; i++)
        if (format[i] == '%' && format[++i] != '%') count++;
    return count;
}

/// A source file's name without its folders.
consteval const char *file_name(const char *path)
{
    const char *name = path;
    for (const char *at = path; *at; at++)
        if (*at == '/') name = at + 1;
    return name;
}

/// A statement's format, checked while it is compiled, and where it stands.
template <class... Args>
struct SqlFormat {
    const char *text;
    const char *file;
    uint32_t line;

    template <size_t N>
    consteval SqlFormat(const char (&format)[N], const char *f = __builtin_FILE(), uint32_t l = __builtin_LINE())
        : text(format), file(file_name(f)), line(l)
    {
        constexpr char kKinds[] = {conversion_kind<Args>()..., '\0'};
        check_format(format, kKinds, "sqQ");
    }
};

/// The words for a statement that failed, checked while they are compiled, and where they stand. They take the
/// arguments given and, with a last %s more, the database's own words.
template <class... Args>
struct FailureFormat {
    const char *text;
    const char *file;
    uint32_t line;

    template <size_t N>
    consteval FailureFormat(const char (&format)[N], const char *f = __builtin_FILE(), uint32_t l = __builtin_LINE())
        : text(format), file(file_name(f)), line(l)
    {
        constexpr char kKinds[] = {conversion_kind<Args>()..., '\0'};
        constexpr char kWithWords[] = {conversion_kind<Args>()..., 's', '\0'};
        if (conversions(format) > sizeof...(Args)) check_format(format, kWithWords, "s");
        else check_format(format, kKinds, "s");
    }
};

template <class... Args>
using Sql = SqlFormat<std::type_identity_t<Args>...>;
template <class... Args>
using FailureText = FailureFormat<std::type_identity_t<Args>...>;

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
