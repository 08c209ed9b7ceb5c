#include "utf8.h"

#include <locale.h>
#include <wchar.h>

#include <cstdio>

namespace qbcli {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr std::string_view kReplacementText = "\xEF\xBF\xBD";
constexpr std::string_view kEllipsis = "…";

/// The character classes of the C library, whatever language the user's environment asks for.
struct Utf8Locale {
    locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    ~Utf8Locale()
    {
        if (locale) freelocale(locale);
    }
};

size_t width_of(char32_t point)
{
    static const Utf8Locale utf8;
    if (point < 0x7F || !utf8.locale) return 1;
    const locale_t users = uselocale(utf8.locale);
    const int width = wcwidth(static_cast<wchar_t>(point));
    uselocale(users);
    return width < 0 ? 1 : static_cast<size_t>(width);
}

bool is_control(char32_t point)
{
    return point < 0x20 || (point >= 0x7F && point < 0xA0);
}

std::string written_out(char32_t point)
{
    switch (point) {
        case '\n': return "\\n";
        case '\r': return "\\r";
        case '\t': return "\\t";
        default: break;
    }
    char text[8];
    snprintf(text, sizeof text, "\\x%02x", static_cast<unsigned>(point));
    return text;
}

}  // namespace

Character first_character(std::string_view text)
{
    const auto byte = [text](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80) return {lead, 1, true};
    const size_t size = lead >= 0xF0 && lead < 0xF5   ? 4
                        : lead >= 0xE0 && lead < 0xF0 ? 3
                        : lead >= 0xC2 && lead < 0xE0 ? 2
                                                      : 0;
    if (size == 0 || text.size() < size) return {kReplacement, 1, false};
    char32_t point = lead & (0xFFu >> (size + 1));
    for (size_t i = 1; i < size; i++) {
        if ((byte(i) & 0xC0) != 0x80) return {kReplacement, 1, false};
        point = point << 6 | (byte(i) & 0x3Fu);
    }
    constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = point >= 0xD800 && point < 0xE000;
    if (point < kLeast[size] || point > 0x10FFFF || surrogate) return {kReplacement, 1, false};
    return {point, size, true};
}

bool is_utf8(std::string_view text)
{
    while (!text.empty()) {
        const Character character = first_character(text);
        if (!character.valid) return false;
        text.remove_prefix(character.size);
    }
    return true;
}

std::string well_formed(std::string_view text)
{
    if (is_utf8(text)) return std::string(text);
    std::string whole;
    while (!text.empty()) {
        const Character character = first_character(text);
        if (character.valid) whole += text.substr(0, character.size);
        else whole += kReplacementText;
        text.remove_prefix(character.size);
    }
    return whole;
}

size_t display_width(std::string_view text)
{
    size_t columns = 0;
    while (!text.empty()) {
        const Character character = first_character(text);
        columns += width_of(character.point);
        text.remove_prefix(character.size);
    }
    return columns;
}

std::string fit(std::string_view text, size_t columns)
{
    if (display_width(text) <= columns) return std::string(text);
    if (columns == 0) return "";
    size_t used = 0;
    size_t end = 0;
    while (end < text.size()) {
        const Character character = first_character(text.substr(end));
        const size_t width = width_of(character.point);
        if (used + width > columns - 1) break;  // the last column is the ellipsis'
        used += width;
        end += character.size;
    }
    return std::string(text.substr(0, end)).append(kEllipsis);
}

std::string printable(std::string_view text)
{
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        const Character character = first_character(text);
        if (!character.valid) shown += kReplacementText;
        else if (is_control(character.point)) shown += written_out(character.point);
        else shown += text.substr(0, character.size);
        text.remove_prefix(character.size);
    }
    return shown;
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
