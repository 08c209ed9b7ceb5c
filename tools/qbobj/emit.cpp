#include "emit.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "utf8.h"

namespace qbcli {
namespace {

/// Characters that are not seen or change how others are seen: they are escaped where a program is read by people.
bool is_deceptive(char32_t point)
{
    constexpr std::array<std::pair<char32_t, char32_t>, 7> kRanges = {{{0x80, 0x9F},
                                                                       {0xAD, 0xAD},
                                                                       {0x200B, 0x200F},
                                                                       {0x2028, 0x202E},
                                                                       {0x2060, 0x206F},
                                                                       {0xFEFF, 0xFEFF},
                                                                       {0xE0000, 0xE0FFF}}};
    return std::any_of(kRanges.begin(), kRanges.end(),
                       [point](auto range) { return point >= range.first && point <= range.second; });
}

std::string formatted(const char *format, uint32_t number)
{
    std::array<char, 16> text{};
    (void)snprintf(text.data(), text.size(), format, number);
    return text.data();
}

/// The bytes of a character as octal escapes: three digits end one whatever follows.
std::string octal(const Character &, std::string_view bytes)
{
    std::string escapes;
    for (const char each : bytes) escapes += formatted("\\%03o", static_cast<unsigned char>(each));
    return escapes;
}

/// The code point of a character as Python writes it.
std::string by_code_point(const Character &character, std::string_view)
{
    constexpr char32_t kTwoDigits = 0x100;
    constexpr char32_t kFourDigits = 0x10000;
    const char *format = character.point < kTwoDigits    ? "\\x%02x"
                         : character.point < kFourDigits ? "\\u%04x"
                                                         : "\\U%08x";
    return formatted(format, character.point);
}

bool is_seen(const Character &character)
{
    constexpr char32_t kDelete = 0x7F;
    return character.valid && character.point >= ' ' && character.point != kDelete && !is_deceptive(character.point);
}

/// A text as it stands between quotes.
/// @param quoted Characters that get a backslash.
/// @param escape Writes a character that does not stand for itself.
std::string escaped(std::string_view text, std::string_view quoted,
                    std::string (*escape)(const Character &, std::string_view))
{
    std::string literal;
    while (!text.empty()) {
        const Character character = first_character(text);
        const std::string_view bytes = text.substr(0, character.size);
        text.remove_prefix(character.size);
        if (bytes == "\n") literal += "\\n";
        else if (bytes == "\t") literal += "\\t";
        else if (quoted.find(bytes) != std::string_view::npos) literal.append("\\").append(bytes);
        else if (is_seen(character)) literal += bytes;
        else literal += escape(character, bytes);
    }
    return literal;
}

bool is_plain_word(std::string_view text)
{
    constexpr std::string_view kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-+=./,:@%";
    // "=word" is looked up as a command by zsh.
    return !text.empty() && text[0] != '=' && text.find_first_not_of(kPlain) == std::string_view::npos;
}

bool needs_escapes(std::string_view text)
{
    while (!text.empty()) {
        const Character character = first_character(text);
        if (!is_seen(character)) return true;
        text.remove_prefix(character.size);
    }
    return false;
}

constexpr std::array<std::string (*)(const Emitted &), 4> kWriters = {emit_c, emit_cpp, emit_python, emit_shell};

}  // namespace

std::string c_literal(std::string_view text)
{
    std::string literal = escaped(text, "\"\\", octal);
    // "??" would begin a trigraph.
    for (size_t at = 0; (at = literal.find("??", at)) != std::string::npos; at += 2) literal.replace(at, 2, "?\\?");
    return "\"" + literal + "\"";
}

std::string python_literal(std::string_view text)
{
    return "\"" + escaped(text, "\"\\", by_code_point) + "\"";
}

std::string shell_word(std::string_view text)
{
    if (is_plain_word(text)) return std::string(text);
    if (needs_escapes(text)) return "$'" + escaped(text, "'\\", octal) + "'";
    std::string word = "'";
    for (const char each : text) {
        if (each == '\'') word += "'\\''";
        else word += each;
    }
    return word + "'";
}

std::string shell_command(const std::vector<std::string> &words, size_t columns)
{
    std::string text;
    size_t start = 0;  // of the line
    for (const std::string &word : words) {
        const std::string shown = shell_word(word);
        if (text.size() - start + 1 + shown.size() > columns) {
            text += " \\\n   ";
            start = text.size() - 3;
        }
        text += (text.empty() ? "" : " ") + shown;
    }
    return text;
}

std::string indicator_of(const QbobjField *field)
{
    const bool number = is_number(field);
    return number && (field->flags & QBOBJ_FIELD_OPTIONAL) ? std::string(field->name) + "_void" : "";
}

// ---- Values

EmittedValues::EmittedValues(const Emitted &what)
{
    secrets_ = what.arguments.wanted_secrets();
    for (size_t i = 0; i < what.operation.count; i++) {
        values_[i] = what.arguments.marked(i);
        const QbobjArgument &argument = what.operation.arguments[i];
        if (values_[i] && argument.type) hide(argument.type, *values_[i], argument.name);
    }
}

size_t EmittedValues::secret_of(const Json &value)
{
    return value.is_binary() ? static_cast<size_t>(value.get_binary().subtype()) : 0;
}

/// Takes the secrets out that a document gave.
void EmittedValues::hide(const QbobjField *type, Json &value, const std::string &where)
{
    if (value.is_array()) {
        const QbobjField *element = is_bare_list(type) ? type[1].subtype : type;
        for (Json &each : value) hide(element, each, where);
        return;
    }
    if (!value.is_object()) return;
    for (auto &[name, part] : value.get_ref<Json::object_t &>()) {
        const QbobjField *field = find_field(type, name);
        if (!field) continue;
        const std::string inside = joined({where, ".", name});
        if (field->kind == 'o') hide(field->subtype, part, inside);
        const bool shown = !part.is_string() || part == "" || part == masked_password;
        if (shown || !qbobj_is_secret(type, field)) continue;
        wipe(part);
        secrets_.push_back(inside);
        part = Arguments::mark_of_secret(secrets_.size());
    }
}

Passing passing_of(const QbobjArgument &argument, const std::optional<Json> &given)
{
    if (argument.direction == QBOBJ_OUT) return Passing::kFilled;
    const bool nothing = !given || given->is_null();
    if (nothing) return argument.optional ? Passing::kNull : Passing::kRecord;
    const bool chain = given->is_array() && argument.chain;
    if (chain && given->empty()) return Passing::kNull;
    return chain ? Passing::kRecords : Passing::kRecord;
}

bool comes_back(const QbobjArgument &argument, const std::optional<Json> &given)
{
    return argument.direction == QBOBJ_OUT ||
           (argument.direction == QBOBJ_INOUT && passing_of(argument, given) != Passing::kNull);
}

std::string emit_shell(const Emitted &what)
{
    std::vector<std::string> words = what.words;
    words.insert(words.begin(), "qbobj");
    return shell_command(words) + "\n";
}

std::string emit(Language language, const Emitted &what)
{
    return kWriters[static_cast<size_t>(language)](what);
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
