#include "example.h"

#include <algorithm>
#include <vector>

#include "arguments.h"
#include "records.h"

namespace manual {

using qbcli::Json;

namespace {

// ---- As a program

std::string c_text(const std::string &text)
{
    std::string literal = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') literal += '\\';
        if (c == '\n') literal += "\\n";
        else if (c == '\t') literal += "\\t";
        else literal += c;
    }
    return literal + "\"";
}

std::string c_scalar(const Json &value)
{
    return value.is_string() ? c_text(value.get<std::string>()) : value.dump();
}

bool is_given(const Json &value, const char *name)
{
    return value.is_object() && value.contains(name) && !value[name].is_null();
}

std::string c_list(const QbobjField *type, const Json &value, const std::string &indent);

/// What stands between the braces of a record, a member a line; what is not given and can be absent is marked so.
std::string c_members(const QbobjField *type, const Json &value, const std::string &next, const std::string &indent)
{
    std::string members;
    const auto member = [&](const std::string &name, const std::string &text) {
        members += indent + "    ." + name + " = " + text + ",\n";
    };
    if (value.is_array()) member(type[1].name, c_list(type[1].subtype, value, indent + "    "));
    if (is_given(value, qbcli::kKeyWord) && qbcli::has_key_word(type))
        member(qbcli::kKeyWord, c_scalar(value[qbcli::kKeyWord]));
    for (const QbobjField *field = type + 1; field->kind != '.' && !value.is_array(); field++) {
        const bool optional = qbcli::is_number(field) && (field->flags & QBOBJ_FIELD_OPTIONAL);
        if (is_given(value, field->name) && field->subtype)
            member(field->name, c_list(field->subtype, value[field->name], indent + "    "));
        else if (is_given(value, field->name)) member(field->name, c_scalar(value[field->name]));
        else if (optional) member(std::string(field->name) + "_void", "1");
    }
    if (!next.empty()) member("next", next);
    return members;
}

std::string c_record(const QbobjField *type, const Json &value, const std::string &next, const std::string &indent)
{
    const std::string members = c_members(type, value, next, indent);
    return members.empty() ? "{0}" : "{\n" + members + indent + "}";
}

std::string c_address(const QbobjField *type, const Json &value, const std::string &next, const std::string &indent)
{
    return "&(" + std::string(type->name) + ")" + c_record(type, value, next, indent);
}

/// The address of the first of several records, from a place among them on.
std::string c_elements(const QbobjField *type, const Json &values, size_t at, const std::string &indent)
{
    if (at == values.size()) return "";
    return c_address(type, values[at], c_elements(type, values, at + 1, indent + "    "), indent);
}

/// The address of a record, or of the first of several.
std::string c_list(const QbobjField *type, const Json &value, const std::string &indent)
{
    if (!value.is_array() || qbcli::is_bare_list(type)) return c_address(type, value, "", indent);
    return value.empty() ? "NULL" : c_elements(type, value, 0, indent);
}

bool is_chain(const QbobjArgument &argument, const Json &value)
{
    return value.is_array() && !qbcli::is_bare_list(argument.type);
}

/// A chain's first record, with the others behind it.
std::string c_chain(const QbobjField *type, const Json &value)
{
    return c_record(type, value[0], c_elements(type, value, 1, "        "), "    ");
}

struct CArgument {
    std::string declaration;  ///< Empty for one that is written into the call.
    std::string word;         ///< In the call.
};

/// A number, a text or a tree: what is only read is written into the call.
CArgument c_value(const QbobjArgument &argument, const Json *given)
{
    const std::string name = argument.name;
    const bool is_number = argument.kind == QBOBJ_KIND_INT32 || argument.kind == QBOBJ_KIND_UINT64;
    if (argument.direction == QBOBJ_IN) return {"", given ? c_scalar(*given) : is_number ? "0" : "NULL"};
    switch (argument.kind) {
        case QBOBJ_KIND_INT32: return {"int32_t " + name + " = 0;", "&" + name};
        case QBOBJ_KIND_UINT64: return {"uint64_t " + name + " = 0;", "&" + name};
        case QBOBJ_KIND_STRING: return {"const char *" + name + " = NULL;", "&" + name};
        default: return {"struct _xmlNode *" + name + " = NULL;", "&" + name};
    }
}

CArgument c_argument(const QbobjArgument &argument, const Json *given)
{
    const QbobjField *type = argument.type;
    if (!type) return c_value(argument, given);
    const std::string name = argument.name;
    const std::string declared = std::string(type->name) + (argument.kind == QBOBJ_KIND_LIST ? " *" : " ") + name;
    if (argument.kind == QBOBJ_KIND_LIST)
        return {declared + " = " + (given ? c_list(type, *given, "    ") : "NULL") + ";", "&" + name};
    if (!given && argument.optional) return {"", "NULL"};
    const Json none = Json::object();
    const Json &value = given ? *given : none;
    const std::string record = is_chain(argument, value) ? c_chain(type, value) : c_record(type, value, "", "    ");
    return {declared + " = " + record + ";", "&" + name};
}

std::string c_print(char kind, const std::string &name, const std::string &value, const std::string &indent)
{
    const std::string label = indent + "printf(\"" + name;
    switch (kind) {
        case 's': return label + ": %s\\n\", " + value + " ? " + value + " : \"\");\n";
        case 'u': return label + ": %u\\n\", " + value + ");\n";
        case 'n': return label + ": %llu\\n\", (unsigned long long)" + value + ");\n";
        case 'l': return label + ": %lld\\n\", (long long)" + value + ");\n";
        default: return label + ": %d\\n\", " + value + ");\n";
    }
}

/// Prints the field of a record that tells most, which is the first that is no secret and no record.
std::string c_print_record(const QbobjField *type, const std::string &record, const std::string &indent)
{
    for (const QbobjField *field = type + 1; field->kind != '.'; field++)
        if (!field->subtype && !qbobj_is_secret(type, field))
            return c_print(field->kind, field->name, record + field->name, indent);
    return "";
}

std::string c_print_list(const QbobjField *type, const std::string &first)
{
    const std::string line = c_print_record(type, "each->", "        ");
    if (line.empty()) return "";
    return std::string("    for (const ") + type->name + " *each = " + first + "; each; each = each->next)\n" + line;
}

std::string c_print(const QbobjArgument &argument)
{
    const std::string name = argument.name;
    if (argument.direction != QBOBJ_OUT) return "";
    switch (argument.kind) {
        case QBOBJ_KIND_INT32: return c_print('i', name, name, "    ");
        case QBOBJ_KIND_UINT64: return c_print('n', name, name, "    ");
        case QBOBJ_KIND_STRING: return c_print('s', name, name, "    ");
        case QBOBJ_KIND_LIST: return c_print_list(argument.type, name);
        case QBOBJ_KIND_XML: return "    /* " + name + " is freed with xmlFreeNode(). */\n";
        default: break;
    }
    const QbobjField *head = argument.type + 1;
    if (head->subtype && qbcli::is_list(head->subtype)) return c_print_list(head->subtype, name + "." + head->name);
    return c_print_record(argument.type, name + ".", "    ");
}

std::string c_judge(const QbobjOperation &operation, const std::string &call)
{
    const std::string signed_call = "    int32_t result = (int32_t)" + call + ";\n";
    switch (operation.returns) {
        case QBOBJ_RETURNS_CODE:
            return "    uint32_t code = " + call +
                   ";\n    if (code != 0) {\n"
                   "        fprintf(stderr, \"%u %s\\n\", code, err.message ? err.message : \"\");\n"
                   "        return;\n    }\n";
        case QBOBJ_RETURNS_FOUND:
            return "    if (" + call + " != 0) {\n        puts(\"not found\");\n        return;\n    }\n";
        case QBOBJ_RETURNS_ANSWER:
            return signed_call + "    puts(result == 0 ? \"yes\" : result == 1 ? \"no\" : \"failed\");\n";
        case QBOBJ_RETURNS_TRUTH: return signed_call + "    puts(result == 1 ? \"yes\" : \"no\");\n";
        default:
            return signed_call + "    if (result == -1) {\n        puts(\"none\");\n        return;\n    }\n" +
                   "    printf(\"%d\\n\", result);\n";
    }
}

// ---- As a line for a shell

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

std::string quoted(const std::string &text)
{
    const auto plain = [](unsigned char c) {
        return isalnum(c) || std::string_view("_./@:,+-").find(static_cast<char>(c)) != std::string_view::npos;
    };
    if (!text.empty() && std::all_of(text.begin(), text.end(), plain)) return text;
    std::string word = "'";
    for (const char c : text) {
        if (c == '\'') word += "'\\''";
        else word += c;
    }
    return word + "'";
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
        else words.push_back(path + name + "=" + (secret ? "-" : quoted(text_of(value))));
    }
}

std::vector<std::string> words_of(const QbobjOperation &operation, const Json &arguments)
{
    std::vector<std::string> words;
    for (uint32_t i = 0; i < operation.count; i++) {
        const QbobjArgument &argument = operation.arguments[i];
        if (!arguments.contains(argument.name) || arguments[argument.name].is_null()) continue;
        const Json &value = arguments[argument.name];
        const std::string name = argument.name;
        if (argument.type) add_words(words, argument.type, value, operation.count > 1 ? name + "." : "");
        else words.push_back(name + "=" + quoted(text_of(value)));
    }
    return words;
}

}  // namespace

std::string c_example(const QbobjOperation &operation, const Json &arguments)
{
    std::string declarations;
    std::string call = std::string(operation.name) + "(qbdb, db, ";
    std::string prints;
    for (uint32_t i = 0; i < operation.count; i++) {
        const QbobjArgument &argument = operation.arguments[i];
        const bool given = is_given(arguments, argument.name);
        const CArgument word = c_argument(argument, given ? &arguments[argument.name] : nullptr);
        if (!word.declaration.empty()) declarations += "    " + word.declaration + "\n";
        call += word.word + ", ";
        prints += c_print(argument);
    }
    return "#include <qbdb.h>\n#include <qbobj.h>\n#include <stdio.h>\n\nvoid example_" + qbcli::short_name(operation) +
           "(qbdb_t *qbdb, sqlite3 *db)\n{\n" + declarations + "    ErrorInfo err;\n\n" +
           c_judge(operation, call + "&err)") + prints + "}\n";
}

std::string shell_example(const QbobjOperation &operation, const Json &arguments)
{
    const std::string call = "qbobj -d appliance.db " + qbcli::short_name(operation);
    if (!fits_words(arguments)) return call + " - <<'END'\n" + json_text(arguments) + "\nEND\n";
    std::string line = call;
    for (const std::string &word : words_of(operation, arguments)) {
        if (line.size() - (line.rfind('\n') + 1) + word.size() > 76) line += " \\\n   ";
        line += " " + word;
    }
    return line + (line == call && operation.changes && operation.count > 0 ? " null\n" : "\n");
}

}  // namespace manual
// SPDX-License-Identifier: Apache-2.0
