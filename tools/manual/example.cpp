#include "example.h"

#include <algorithm>
#include <vector>

#include "arguments.h"
#include "emit.h"
#include "records.h"

namespace manual {

using qbcli::Json;

namespace {

constexpr const char *kDatabase = "appliance.db";

/// JSON in as few lines as are short.
std::string json_text(const Json &value, const std::string &indent = "")
{
    std::string flat = value.dump();
    if (!value.is_structured() || indent.size() + flat.size() <= 76) return flat;
    std::string text;
    for (const auto &[name, member] : value.items()) {
        text += (text.empty() ? "\n  " : ",\n  ") + indent;
        if (value.is_object()) text += Json(name).dump() + ": ";
        text += json_text(member, indent + "  ");
    }
    return (value.is_object() ? "{" : "[") + text + "\n" + indent + (value.is_object() ? "}" : "]");
}

std::string text_of(const Json &value)
{
    return value.is_string() ? value.get<std::string>() : value.dump();
}

/// Whether every field can be written as a word. A list cannot, nor can a text of several lines.
bool fits_words(const Json &value)
{
    if (value.is_string()) return value.get<std::string>().find('\n') == std::string::npos;
    if (!value.is_object()) return !value.is_array();
    return std::all_of(value.begin(), value.end(), fits_words);
}

void add_words(std::vector<std::string> &words, const QbobjField *type, const Json &record, const std::string &path)
{
    for (const auto &[name, value] : record.items()) {
        const QbobjField *field = qbcli::find_field(type, name);
        const bool secret = field && qbobj_is_secret(type, field);
        if (value.is_null()) continue;
        if (field && value.is_object()) add_words(words, field->subtype, value, path + name + ".");
        else words.push_back(path + name + "=" + (secret ? "-" : text_of(value)));
    }
}

void add_words(std::vector<std::string> &words, const QbobjOperation &operation, const Json &arguments)
{
    for (uint32_t i = 0; i < operation.count; i++) {
        const QbobjArgument &argument = operation.arguments[i];
        const std::string name = argument.name;
        const auto given = arguments.find(name);
        if (given == arguments.end() || given->is_null()) continue;
        if (argument.type) add_words(words, argument.type, *given, operation.count > 1 ? name + "." : "");
        else words.push_back(name + "=" + text_of(*given));
    }
}

std::string emitted(std::string (*emit)(const qbcli::Emitted &), const QbobjOperation &operation, const Json &arguments)
{
    qbcli::StandardInput nothing;
    qbcli::Arguments given(operation, nothing);
    given.take(arguments);
    qbcli::DatabaseOptions database;
    database.path = kDatabase;
    return emit({operation, given, {}, database});
}

}  // namespace

std::string c_example(const QbobjOperation &operation, const Json &arguments)
{
    return emitted(qbcli::emit_c_call, operation, arguments);
}

std::string c_program(const QbobjOperation &operation, const Json &arguments)
{
    return emitted(qbcli::emit_c, operation, arguments);
}

std::string shell_example(const QbobjOperation &operation, const Json &arguments)
{
    constexpr size_t kColumns = 76;
    std::vector<std::string> words = {"qbobj", "-d", kDatabase, qbcli::short_name(operation)};
    if (!fits_words(arguments)) {
        words.emplace_back("-");
        return qbcli::shell_command(words) + " <<'END'\n" + json_text(arguments) + "\nEND\n";
    }
    const size_t before = words.size();
    add_words(words, operation, arguments);
    if (words.size() == before && operation.changes && operation.count > 0) words.emplace_back("null");
    return qbcli::shell_command(words, kColumns) + "\n";
}

}  // namespace manual
// SPDX-License-Identifier: Apache-2.0
