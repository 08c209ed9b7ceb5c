#include "mdoc.h"

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <sstream>

namespace manual {
namespace {

constexpr size_t kWidth = 78;

bool is_letter(char c)
{
    return isalpha(static_cast<unsigned char>(c));
}

/// A character of several bytes by its number, so that no formatter has to guess the encoding. Moves behind it.
std::string by_number(std::string_view text, size_t &at)
{
    const auto byte = [&](size_t i) { return static_cast<uint8_t>(text[i]); };
    const int more = byte(at) >= 0xF0 ? 3 : byte(at) >= 0xE0 ? 2 : 1;
    uint32_t number = byte(at) & (0x3Fu >> more);
    for (int i = 0; i < more && at + 1 < text.size(); i++) number = number << 6 | (byte(++at) & 0x3F);
    if (number == 0x2026) return "...";  // which every terminal has
    char name[16];
    snprintf(name, sizeof name, "\\[u%04X]", static_cast<unsigned>(number));
    return name;
}

/// What stands for a character that would not come out as itself; null for any other.
const char *replacement(char c)
{
    switch (c) {
        case '\\': return "\\e";
        case '`': return "\\(ga";
        case '^': return "\\(ha";
        case '~': return "\\(ti";
        case '\t': return "    ";
        default: return nullptr;
    }
}

std::string escape(std::string_view text, bool program)
{
    std::string result;
    for (size_t i = 0; i < text.size(); i++) {
        const char c = text[i];
        const bool in_word = i > 0 && is_letter(text[i - 1]) && i + 1 < text.size() && is_letter(text[i + 1]);
        if (const char *known = replacement(c)) result += known;
        else if (c == '-' && (program || !in_word)) result += "\\-";
        else if (c == '\'' && (program || !in_word)) result += "\\(aq";
        else if (static_cast<uint8_t>(c) >= 0xC0) result += by_number(text, i);
        else result += c;
    }
    return result;
}

/// A line that is no request to the formatter.
std::string protected_line(const std::string &line)
{
    return line.starts_with('.') || line.starts_with('\'') ? "\\&" + line : line;
}

bool ends_sentence(std::string_view word)
{
    while (!word.empty() && (word.back() == ')' || word.back() == '"')) word.remove_suffix(1);
    return !word.empty() && (word.back() == '.' || word.back() == '?' || word.back() == '!');
}

}  // namespace

std::string escaped(std::string_view text)
{
    return escape(text, false);
}

std::string literal(std::string_view text)
{
    return escape(text, true);
}

std::string argument(std::string_view text)
{
    std::string safe;
    for (const char c : literal(text)) {
        if (c == '"') safe += "\\(dq";
        else safe += c;
    }
    // Macros are words of two or three letters, delimiters are single characters.
    if (text.size() <= 3) safe.insert(0, "\\&");
    return safe.empty() || safe.find(' ') != std::string::npos ? '"' + safe + '"' : safe;
}

Page::Page(const std::string &name, int section, const std::string &date)
{
    std::string title = name;
    std::transform(title.begin(), title.end(), title.begin(), [](unsigned char c) { return toupper(c); });
    raw(".Dd " + date).raw(".Dt " + title + " " + std::to_string(section)).raw(".Os");
}

Page &Page::raw(std::string_view line)
{
    source_.append(line).append("\n");
    return *this;
}

Page &Page::macro(std::string_view name, const std::vector<std::string> &arguments)
{
    source_.append(".").append(name);
    for (const std::string &each : arguments) source_.append(" ").append(argument(each));
    source_ += '\n';
    return *this;
}

Page &Page::paragraph()
{
    const size_t last = source_.rfind('\n', source_.size() - 2) + 1;
    return source_.compare(last, 2, ".S") == 0 ? *this : raw(".Pp");
}

Page &Page::line(std::string_view paragraph)
{
    std::istringstream words{std::string(paragraph)};
    std::string line;
    const auto end_line = [&] {
        if (!line.empty()) source_ += protected_line(line) + "\n";
        line.clear();
    };
    for (std::string word; words >> word;) {
        const std::string safe = escaped(word);
        if (!line.empty() && line.size() + 1 + safe.size() > kWidth) end_line();
        line += (line.empty() ? "" : " ") + safe;
        if (ends_sentence(word)) end_line();
    }
    end_line();
    return *this;
}

Page &Page::text(std::string_view paragraphs)
{
    std::istringstream lines{std::string(paragraphs)};
    bool first = true;
    bool in_list = false;
    for (std::string each; std::getline(lines, each); first = false) {
        const bool item = each.starts_with("- ");
        if (item && !in_list) raw(".Bl -bullet -compact");
        if (!item && in_list) raw(".El");
        if (!item && !first) raw(".Pp");
        if (item) raw(".It");
        in_list = item;
        line(item ? each.substr(2) : each);
    }
    return in_list ? raw(".El") : *this;
}

Page &Page::display(std::string_view lines)
{
    raw(".Bd -literal -offset indent");
    std::istringstream all{std::string(lines)};
    for (std::string each; std::getline(all, each);) raw(protected_line(literal(each)));
    return raw(".Ed");
}

Page &Page::references(std::vector<std::pair<std::string, int>> pages)
{
    std::sort(pages.begin(), pages.end(), [](const auto &a, const auto &b) {
        if (a.second != b.second) return a.second < b.second;
        const int order = strcasecmp(a.first.c_str(), b.first.c_str());
        return order != 0 ? order < 0 : a.first < b.first;
    });
    pages.erase(std::unique(pages.begin(), pages.end()), pages.end());
    for (size_t i = 0; i < pages.size(); i++)
        raw(".Xr " + pages[i].first + " " + std::to_string(pages[i].second) + (i + 1 < pages.size() ? " ," : ""));
    return *this;
}

}  // namespace manual
// SPDX-License-Identifier: Apache-2.0
