#include "describe.h"

#include <fnmatch.h>
#include <string.h>

#include <algorithm>
#include <sstream>
#include <vector>

#include "arguments.h"
#include "call.h"
#include "failure.h"
#include "records.h"
#include "traits.h"

namespace qbcli {
namespace {

std::string_view bare_name(const QbobjOperation &operation)
{
    return std::string_view(operation.name).substr(strlen(operation.name) - short_name(operation).size());
}

bool is_pattern(const std::string &text)
{
    return text.find_first_of("*?[") != std::string::npos;
}

bool matches(const std::string &pattern, const char *text)
{
    if (is_pattern(pattern)) return fnmatch(pattern.c_str(), text, FNM_CASEFOLD) == 0;
    return strcasestr(text, pattern.c_str()) != nullptr;
}

bool matches(const std::string &pattern, const QbobjOperation &operation)
{
    if (pattern.empty() || matches(pattern, bare_name(operation).data()) || matches(pattern, operation.name))
        return true;
    return !is_pattern(pattern) && (matches(pattern, operation.family) || matches(pattern, operation.summary));
}

/// The operations that match, those of a family together, families in the order of the table.
std::vector<const QbobjOperation *> matching_operations(const std::string &pattern)
{
    std::vector<const QbobjOperation *> found;
    std::vector<std::string_view> families;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) {
        if (std::find(families.begin(), families.end(), row->family) == families.end())
            families.emplace_back(row->family);
        if (matches(pattern, *row)) found.push_back(row);
    }
    std::stable_sort(found.begin(), found.end(), [&](const auto *a, const auto *b) {
        return std::find(families.begin(), families.end(), a->family) <
               std::find(families.begin(), families.end(), b->family);
    });
    if (found.empty())
        throw Failure("no operation matches " + pattern + did_you_mean_operation(pattern, operation_names()));
    return found;
}

const QbobjField *find_type(const std::string &name)
{
    for (const QbobjField *type : all_types())
        if (name == type->name) return type;
    return nullptr;
}

std::vector<const QbobjField *> matching_types(const std::string &pattern)
{
    std::vector<const QbobjField *> found;
    for (const QbobjField *type : all_types())
        if (pattern.empty() || matches(pattern, type->name)) found.push_back(type);
    if (found.empty()) throw Failure("no type matches " + pattern + did_you_mean(pattern, type_names()));
    return found;
}

std::string padded(std::string text, size_t width)
{
    if (text.size() < width) text.append(width - text.size(), ' ');
    return text;
}

/// A text in lines of at most 100 columns, each behind an indent.
std::string wrapped(const char *text, size_t indent)
{
    std::string lines;
    std::istringstream paragraphs(text ? text : "");
    for (std::string paragraph; std::getline(paragraphs, paragraph);) {
        std::istringstream words(paragraph);
        std::string line;
        for (std::string word; words >> word;) {
            if (!line.empty() && indent + line.size() + 1 + word.size() > 100) {
                lines += std::string(indent, ' ') + line + "\n";
                line.clear();
            }
            line += (line.empty() ? "" : " ") + word;
        }
        lines += std::string(indent, ' ') + line + "\n";
    }
    return lines;
}

std::vector<std::string> names_in(const char *list)
{
    std::istringstream stream(list ? list : "");
    std::vector<std::string> names;
    for (std::string name; stream >> name;) names.push_back(name);
    return names;
}

std::vector<std::string> words_in(const char *const *words)
{
    std::vector<std::string> names;
    for (; words && *words; words++) names.emplace_back(*words);
    return names;
}

std::string joined(const std::vector<std::string> &names)
{
    std::string text;
    for (const std::string &name : names) text += (text.empty() ? "" : ", ") + name;
    return text;
}

/// Lines below an argument: its words, which fields address the record, what holds of fields here, what is ignored of
/// it, what the mask keeps.
std::string argument_remarks(const QbobjOperation &operation, const QbobjArgument &argument, size_t indent)
{
    std::string text;
    const auto line = [&](const char *what, const std::vector<std::string> &names) {
        if (!names.empty()) text += std::string(indent, ' ') + what + joined(names) + "\n";
    };
    line("one of ", words_in(argument.words));
    line("addressed by ", addresses(operation, argument));
    for (const FieldOfOperation &field : fields_of_operation(operation, argument))
        text += std::string(indent, ' ') + field.path + ": " + traits_text(*field.traits).substr(2) + "\n";
    line("ignores ", names_in(argument.ignores));
    line("the dots keep ", names_in(argument.keeps));
    return text;
}

std::string kind_word(const QbobjArgument &argument)
{
    switch (argument.kind) {
        case QBOBJ_KIND_INT32: return "32-bit number";
        case QBOBJ_KIND_UINT64: return "unsigned 64-bit number";
        case QBOBJ_KIND_STRING: return "text";
        case QBOBJ_KIND_XML: return "XML";
        case QBOBJ_KIND_LIST: return std::string("list of ") + argument.type->name;
        default: return std::string(argument.chain ? "one or more records " : "record ") + argument.type->name;
    }
}

const char *return_words(const QbobjOperation &operation)
{
    switch (operation.returns) {
        case QBOBJ_RETURNS_FOUND: return "0 when found, -1 when not found or failed";
        case QBOBJ_RETURNS_ID: return "an id, or -1 when there is none; printed as \"result\"";
        case QBOBJ_RETURNS_COUNT: return "a count, or -1 when it failed; printed as \"result\"";
        case QBOBJ_RETURNS_ANSWER: return "0 for yes, 1 for no, -1 when it failed; printed as \"result\"";
        case QBOBJ_RETURNS_TRUTH: return "1 for yes, 0 for no; printed as \"result\"";
        default: return "0, or an error code";
    }
}

/// How a call is written: "addLog time=NUMBER [severity=TEXT]".
std::string usage(const QbobjOperation &operation)
{
    std::string text = "qbobj -d DATABASE " + short_name(operation);
    for (uint32_t i = 0; i < operation.count; i++) {
        const QbobjArgument &argument = operation.arguments[i];
        if (!is_input(argument)) continue;
        const std::string value = argument.kind == QBOBJ_KIND_STRING ? "TEXT" : "NUMBER";
        const std::string word = is_scalar(argument) ? argument.name + ("=" + value) : "Field=value…";
        const bool needed =
            is_scalar(argument) && !argument.optional && (operation.changes || argument.kind == QBOBJ_KIND_STRING);
        text += needed ? " " + word : " [" + word + "]";
    }
    return text;
}

std::string codes_text(const QbobjOperation &operation)
{
    const std::vector<uint32_t> codes = codes_of(operation);
    size_t longest = 0;
    for (const uint32_t code : codes) longest = std::max(longest, std::to_string(code).size());
    std::string text = codes.empty() ? "" : "\nCodes\n";
    for (const uint32_t code : codes) {
        const char *meaning = qbobj_code_meaning(code);
        text += "  " + padded(std::to_string(code), longest + 2) + (meaning ? meaning : "the message says why") + "\n";
    }
    return text;
}

/// What the program's exit status can be after a call, and the codes or answers that it stands for.
std::vector<std::pair<Status, std::string>> exit_statuses(const QbobjOperation &operation)
{
    const bool answers = operation.returns == QBOBJ_RETURNS_ANSWER || operation.returns == QBOBJ_RETURNS_TRUTH;
    const bool finds = operation.returns == QBOBJ_RETURNS_FOUND || operation.returns == QBOBJ_RETURNS_ID;
    const auto with_codes = [&](Status status, const std::string &words) {
        std::string codes;
        for (const uint32_t code : codes_of(operation))
            if (status_of(code) == status) codes += (codes.empty() ? "" : ", ") + std::to_string(code);
        return codes.empty() ? words : words + ": " + codes;
    };
    const auto has_code = [&](Status status) { return with_codes(status, "") != ""; };
    std::vector<std::pair<Status, std::string>> all = {{Status::kDone, answers ? "yes" : finds ? "found" : "done"}};
    if (has_code(Status::kRefused)) all.emplace_back(Status::kRefused, with_codes(Status::kRefused, "refused"));
    all.emplace_back(Status::kUsage, "wrong usage, nothing was called");
    if (answers || finds) all.emplace_back(Status::kNotFound, answers ? "no" : "not found");
    if (has_code(Status::kNotFound))
        all.emplace_back(Status::kNotFound, with_codes(Status::kNotFound, "nothing found, or nothing changed"));
    all.emplace_back(Status::kFailed, with_codes(Status::kFailed, "the database is locked or failed"));
    all.emplace_back(Status::kMemory, with_codes(Status::kMemory, "out of memory"));
    return all;
}

std::string exit_text(const QbobjOperation &operation)
{
    std::string text = "\nExit status\n";
    for (const auto &[status, words] : exit_statuses(operation))
        text += "  " + std::to_string(static_cast<int>(status)) + "  " + words + "\n";
    return text;
}

Json exit_json(const QbobjOperation &operation)
{
    Json statuses = Json::object();
    for (const auto &[status, words] : exit_statuses(operation))
        statuses[std::to_string(static_cast<int>(status))] = words;
    return statuses;
}

std::string operation_text(const QbobjOperation &operation)
{
    std::string text = short_name(operation) + ": " + operation.summary + "\n\n  " + usage(operation) + "\n\n";
    text += wrapped(qbobj_operation_meaning(&operation), 0) + "\n";
    text += std::string("Family   ") + operation.family + "\n";
    text += std::string("Changes  ") + (operation.changes ? "the database" : "nothing, it only reads") + "\n";
    text += std::string("Returns  ") + return_words(operation) + "\n";
    text += wrapped(qbobj_result_meaning(&operation), 9);
    size_t longest = 0;
    for (uint32_t i = 0; i < operation.count; i++) longest = std::max(longest, strlen(operation.arguments[i].name));
    if (operation.count > 0) text += "\nArguments\n";
    for (uint32_t i = 0; i < operation.count; i++) {
        const QbobjArgument &argument = operation.arguments[i];
        text += "  " + padded(argument.name, longest + 2) + padded(direction_word(argument.direction), 12) +
                kind_word(argument) + traits_text(*qbobj_argument_traits(&operation, &argument)) +
                (argument.optional ? ", may be left out" : "") + "\n";
        if (argument.type) text += std::string(longest + 16, ' ') + "(qbobj describe " + argument.type->name + ")\n";
        text += wrapped(qbobj_argument_meaning(&operation, &argument), longest + 16);
        text += argument_remarks(operation, argument, longest + 16);
    }
    return text + codes_text(operation) + exit_text(operation);
}

Json argument_json(const QbobjOperation &operation, const QbobjArgument &argument)
{
    Json json = {{"name", argument.name},
                 {"meaning", text_to_json(qbobj_argument_meaning(&operation, &argument))},
                 {"direction", direction_word(argument.direction)},
                 {"kind", kind_word(argument)},
                 {"type", argument.type ? Json(argument.type->name) : Json(nullptr)},
                 {"optional", argument.optional != 0},
                 {"chain", argument.chain != 0},
                 {"words", words_in(argument.words)},
                 {"addresses", addresses(operation, argument)},
                 {"ignores", names_in(argument.ignores)},
                 {"keeps", names_in(argument.keeps)},
                 {"fields", Json::object()}};
    json.update(traits_json(*qbobj_argument_traits(&operation, &argument)));
    for (const FieldOfOperation &field : fields_of_operation(operation, argument))
        json["fields"][field.path] = traits_json(*field.traits);
    return json;
}

Json operation_json(const QbobjOperation &operation)
{
    Json arguments = Json::array();
    for (uint32_t i = 0; i < operation.count; i++)
        arguments.push_back(argument_json(operation, operation.arguments[i]));
    return {{"name", short_name(operation)},
            {"family", operation.family},
            {"summary", operation.summary},
            {"usage", usage(operation)},
            {"meaning", text_to_json(qbobj_operation_meaning(&operation))},
            {"result", text_to_json(qbobj_result_meaning(&operation))},
            {"changes", operation.changes != 0},
            {"returns", return_words(operation)},
            {"codes", codes_of(operation)},
            {"arguments", std::move(arguments)},
            {"exit", exit_json(operation)}};
}

bool uses(const QbobjOperation &operation, const QbobjField *type)
{
    for (uint32_t i = 0; i < operation.count; i++)
        if (operation.arguments[i].type == type) return true;
    return false;
}

std::string remarks(const QbobjField *type, const QbobjField *field)
{
    std::string text = traits_text(*qbobj_field_traits(type, field));
    const QbobjDirection direction = qbobj_field_direction(type, field);
    if (direction != QBOBJ_INOUT) text += direction == QBOBJ_OUT ? ", output only" : ", input only";
    if (field->flags & QBOBJ_FIELD_OPTIONAL)
        text += field->flags & QBOBJ_FIELD_HEAD ? ", may be empty" : ", may be absent";
    if (qbobj_is_secret(type, field)) text += ", secret";
    if (const char *const *words = qbobj_field_words(type, field)) text += ": " + joined(words_in(words));
    return text;
}

std::string type_text(const QbobjField *type)
{
    std::string text = std::string(type->name) + ": a record" + (is_list(type) ? " that stands in lists" : "");
    text += is_bare_list(type) ? ", in JSON the array itself\n\n" : "\n\n";
    text += wrapped(qbobj_type_meaning(type), 0) + "\n";
    size_t longest = strlen(kKeyWord);
    for (const std::string_view name : field_names(type)) longest = std::max(longest, name.size());
    if (has_key_word(type))
        text += "  " + padded(kKeyWord, longest + 2) + "text, the key word by which it is addressed\n";
    for (const QbobjField *field = type + 1; field->kind != '.'; field++)
        text += "  " + padded(field->name, longest + 2) + kind_name(field) + remarks(type, field) + "\n" +
                wrapped(qbobj_field_meaning(type, field), longest + 4);
    std::string users;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++)
        if (uses(*row, type)) users += (users.empty() ? "" : ", ") + short_name(*row);
    if (!users.empty()) text += "\nUsed by " + users + "\n";
    return text;
}

Json type_json(const QbobjField *type)
{
    Json fields = Json::array();
    for (const QbobjField *field = type + 1; field->kind != '.'; field++) {
        Json json = {{"name", field->name},
                     {"meaning", text_to_json(qbobj_field_meaning(type, field))},
                     {"kind", kind_name(field)},
                     {"type", field->subtype ? Json(field->subtype->name) : Json(nullptr)},
                     {"list", qbobj_field_is_list(field) != 0},
                     {"direction", direction_word(qbobj_field_direction(type, field))},
                     {"optional", (field->flags & QBOBJ_FIELD_OPTIONAL) != 0},
                     {"secret", qbobj_is_secret(type, field) != 0},
                     {"words", words_in(qbobj_field_words(type, field))}};
        json.update(traits_json(*qbobj_field_traits(type, field)));
        fields.push_back(std::move(json));
    }
    return {{"name", type->name},
            {"meaning", text_to_json(qbobj_type_meaning(type))},
            {"list", is_list(type)},
            {"key", has_key_word(type)},
            {"fields", std::move(fields)}};
}

[[noreturn]] void refuse_unknown(const std::string &name)
{
    // Types are many: "FolderAttributes" is nearer to one than to what other verbs would make of it.
    const std::string_view type = nearest(name, type_names());
    const std::string_view operation = nearest_operation(name, operation_names());
    const bool type_is_nearer =
        !type.empty() && (operation.empty() || edit_distance(name, type) <= edit_distance(name, operation));
    throw Failure(
        "there is no operation or type " + name +
        (type_is_nearer ? did_you_mean(name, type_names()) : did_you_mean_operation(name, operation_names())));
}

}  // namespace

std::vector<uint32_t> codes_of(const QbobjOperation &operation)
{
    std::vector<uint32_t> codes;
    for (const std::string &code : names_in(operation.codes)) codes.push_back(static_cast<uint32_t>(std::stoul(code)));
    return codes;
}

const std::vector<const QbobjField *> &all_types()
{
    static const std::vector<const QbobjField *> all = [] {
        std::vector<const QbobjField *> types;
        const auto add = [&types](const QbobjField *type) {
            if (type && std::find(types.begin(), types.end(), type) == types.end()) types.push_back(type);
        };
        for (const QbobjType *row = qbobj_types(); row->name; row++) add(row->fields);
        for (const QbobjOperation *row = qbobj_operations(); row->name; row++)
            for (uint32_t i = 0; i < row->count; i++) add(row->arguments[i].type);
        return types;
    }();
    return all;
}

Names operation_names()
{
    Names names;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) names.push_back(bare_name(*row));
    return names;
}

Names type_names()
{
    Names names;
    for (const QbobjField *type : all_types()) names.emplace_back(type->name);
    return names;
}

const QbobjOperation &find_operation(const std::string &name)
{
    if (const QbobjOperation *operation = qbobj_find_operation(name.c_str())) return *operation;
    throw Failure("there is no operation " + name + did_you_mean_operation(name, operation_names()));
}

std::string operations_text(const std::string &pattern)
{
    const auto operations = matching_operations(pattern);
    size_t longest = 0;
    for (const auto *operation : operations) longest = std::max(longest, bare_name(*operation).size());
    std::string text;
    std::string_view family;
    for (const auto *operation : operations) {
        if (family != operation->family) {
            family = operation->family;
            text.append(text.empty() ? "" : "\n").append(family).append("\n");
        }
        text += "  " + padded(short_name(*operation), longest + 2) + operation->summary + "\n";
    }
    return text;
}

Json operations_json(const std::string &pattern)
{
    Json array = Json::array();
    for (const auto *operation : matching_operations(pattern)) array.push_back(operation_json(*operation));
    return array;
}

std::string types_text(const std::string &pattern)
{
    std::string text;
    for (const QbobjField *type : matching_types(pattern)) text.append(type->name).append("\n");
    return text;
}

Json types_json(const std::string &pattern)
{
    Json array = Json::array();
    for (const QbobjField *type : matching_types(pattern)) array.push_back(type_json(type));
    return array;
}

std::string description_text(const std::string &name)
{
    if (const QbobjOperation *operation = qbobj_find_operation(name.c_str())) return operation_text(*operation);
    if (const QbobjField *type = find_type(name)) return type_text(type);
    refuse_unknown(name);
}

Json description_json(const std::string &name)
{
    if (const QbobjOperation *operation = qbobj_find_operation(name.c_str())) return operation_json(*operation);
    if (const QbobjField *type = find_type(name)) return type_json(type);
    refuse_unknown(name);
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
