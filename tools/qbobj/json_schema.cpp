#include "json_schema.h"

#include <limits>

#include "arguments.h"
#include "call.h"
#include "describe.h"
#include "records.h"
#include "traits.h"

namespace qbcli {
namespace {

template <class T>
Json whole_number(const char *format)
{
    using Limits = std::numeric_limits<T>;
    return {{"type", "integer"}, {"format", format}, {"minimum", Limits::min()}, {"maximum", Limits::max()}};
}

Json number(char kind)
{
    switch (kind) {
        case 'u': return whole_number<uint32_t>("uint32");
        case 'l': return whole_number<int64_t>("int64");
        case 'n': return whole_number<uint64_t>("uint64");
        default: return whole_number<int32_t>("int32");
    }
}

Json text()
{
    return {{"type", "string"}};
}

Json list_of(Json elements)
{
    return {{"type", "array"}, {"items", std::move(elements)}};
}

Json nullable(Json schema)
{
    if (!schema.contains("type")) return {{"anyOf", {std::move(schema), {{"type", "null"}}}}};
    schema["type"] = {schema["type"], "null"};
    return schema;
}

/// A text that knows its words; one that is not given, or empty, is the operation's to judge.
Json one_of(const char *const *words)
{
    Json schema = {{"type", {"string", "null"}}, {"enum", Json::array()}};
    for (; *words; words++) schema["enum"].push_back(*words);
    schema["enum"].push_back("");
    schema["enum"].push_back(nullptr);
    return schema;
}

/// Puts a text before what a schema says otherwise.
Json described(const char *meaning, Json schema)
{
    if (!meaning || !*meaning) return schema;
    Json whole = {{"description", meaning}};
    whole.update(schema);
    return whole;
}

Json closed_object(Json properties)
{
    return {{"type", "object"}, {"properties", std::move(properties)}, {"additionalProperties", false}};
}

std::string meaning_of(const QbobjOperation &operation, const QbobjArgument &argument)
{
    const char *meaning = qbobj_argument_meaning(&operation, &argument);
    std::string text = meaning ? meaning : "";
    const auto add = [&text](const char *what, const char *fields) {
        if (fields) text.append(text.empty() ? "" : "\n").append(what).append(fields);
    };
    add("Fields that say which record is meant: ", qbobj_argument_addresses(&operation, &argument));
    add("Fields that are not used: ", argument.ignores);
    add("Fields in which the mask keeps the stored secret: ", argument.keeps);
    return text;
}

/// What an operation says of fields of a record, beside what their type says: "Cifs.EnableDFS" is a property of a
/// property.
Json of_operation(const QbobjOperation &operation, const QbobjArgument &argument)
{
    Json all = Json::object();
    for (const FieldOfOperation &field : fields_of_operation(operation, argument)) {
        Json *properties = &all;
        const QbobjField *type = argument.type;
        size_t begin = 0;
        for (size_t dot; (dot = field.path.find('.', begin)) != std::string::npos; begin = dot + 1) {
            const std::string name = field.path.substr(begin, dot - begin);
            type = find_field(type, name)->subtype;
            Json &inside = (*properties)[name];
            properties = is_list(type) ? &inside["items"]["properties"] : &inside["properties"];
        }
        const std::string name = field.path.substr(begin);
        Json schema = Json::object();
        if (is_number(find_field(type, name))) schema["type"] = {"integer", "null"};
        add_traits(*field.traits, schema);
        (*properties)[name] = std::move(schema);
    }
    return all;
}

/// A reference, with more said of what it leads to where there is more.
Json narrowed(Json reference, const Json &more)
{
    if (more.empty()) return reference;
    return {{"allOf", {std::move(reference), more}}};
}

Json narrowed_record(Json reference, const Json &properties)
{
    return properties.empty() ? reference : narrowed(std::move(reference), {{"properties", properties}});
}

/// A text that the operation needs must be there, and a number where it changes something.
bool is_needed(const QbobjOperation &operation, const QbobjArgument &argument)
{
    if (argument.optional || !is_scalar(argument)) return false;
    return argument.kind == QBOBJ_KIND_STRING || operation.changes;
}

}  // namespace

Json SchemaWriter::reference(const QbobjField *type) const
{
    return {{"$ref", types_ + type->name}};
}

Json SchemaWriter::field(const QbobjField *type, const QbobjField *field) const
{
    Json schema;
    if (field->kind == 'o') {
        const Json inside = reference(field->subtype);
        schema = is_list(field->subtype) ? list_of(inside) : nullable(inside);
    } else if (is_number(field)) {
        schema = number(field->kind);
        if (field->flags & QBOBJ_FIELD_OPTIONAL) schema = nullable(std::move(schema));
    } else if (const char *const *words = qbobj_field_words(type, field)) {
        schema = one_of(words);
    } else {
        schema = nullable(text());
    }
    const QbobjDirection direction = qbobj_field_direction(type, field);
    if (qbobj_is_secret(type, field) || direction == QBOBJ_IN) schema["writeOnly"] = true;
    if (direction == QBOBJ_OUT) schema["readOnly"] = true;
    add_traits(*qbobj_field_traits(type, field), schema);
    return described(qbobj_field_meaning(type, field), std::move(schema));
}

Json SchemaWriter::type(const QbobjField *type) const
{
    const char *meaning = qbobj_type_meaning(type);
    if (is_bare_list(type)) return described(meaning, list_of(reference(type[1].subtype)));
    Json properties = Json::object();
    if (has_key_word(type))
        properties[kKeyWord] = described("The key word by which it is addressed.", nullable(text()));
    for (const QbobjField *each = type + 1; each->kind != '.'; each++) properties[each->name] = field(type, each);
    return described(meaning, closed_object(std::move(properties)));
}

Json SchemaWriter::argument(const QbobjOperation &operation, const QbobjArgument &argument) const
{
    Json schema;
    switch (argument.kind) {
        case QBOBJ_KIND_INT32: schema = number('i'); break;
        case QBOBJ_KIND_UINT64: schema = number('n'); break;
        case QBOBJ_KIND_RECORD:
            schema = narrowed_record(reference(argument.type), of_operation(operation, argument));
            if (argument.chain) schema = {{"anyOf", {schema, list_of(schema)}}};
            break;
        case QBOBJ_KIND_LIST: schema = list_of(reference(argument.type)); break;
        default: schema = argument.words ? one_of(argument.words) : text();
    }
    const bool may_be_null = argument.optional || (is_scalar(argument) && !is_needed(operation, argument));
    if (may_be_null && !argument.words) schema = nullable(std::move(schema));
    add_traits(*qbobj_argument_traits(&operation, &argument), schema);
    return described(meaning_of(operation, argument).c_str(), std::move(schema));
}

Json SchemaWriter::arguments(const QbobjOperation &operation) const
{
    Json properties = Json::object();
    Json required = Json::array();
    for (uint32_t i = 0; i < operation.count; i++) {
        const QbobjArgument &each = operation.arguments[i];
        if (!is_input(each)) continue;
        properties[each.name] = argument(operation, each);
        if (is_needed(operation, each)) required.push_back(each.name);
    }
    Json schema = closed_object(std::move(properties));
    if (!required.empty()) schema["required"] = std::move(required);
    return schema;
}

Json SchemaWriter::any_arguments(const QbobjOperation &operation) const
{
    Json object = arguments(operation);
    Json &properties = object["properties"];
    Json lists = Json::array();
    for (uint32_t i = 0; i < operation.count; i++) {
        const QbobjArgument &argument = operation.arguments[i];
        if (!is_input(argument) || !argument.type) continue;
        const Json more = of_operation(operation, argument);
        if (is_bare_list(argument.type)) lists.push_back(reference(argument.type));
        else if (argument.chain || argument.kind == QBOBJ_KIND_LIST)
            lists.push_back(list_of(narrowed_record(reference(argument.type), more)));
        for (const std::string_view name : field_names(argument.type)) {
            const std::string member(name);
            if (properties.contains(member)) continue;
            const std::string at = is_bare_list(argument.type) ? "" : "/properties/" + member;
            properties[member] =
                narrowed({{"$ref", types_ + argument.type->name + at}}, more.value(member, Json::object()));
        }
    }
    Json forms = Json::array({std::move(object)});
    if (lists.size() == 1) forms.push_back(std::move(lists.front()));
    Json schema = {{"description", std::string("What is given to ") + short_name(operation) + "."}};
    if (forms.size() == 1) schema.update(forms.front());
    else schema["anyOf"] = std::move(forms);
    return schema;
}

Json SchemaWriter::output(const QbobjOperation &operation, const QbobjArgument &argument) const
{
    Json schema;
    switch (argument.kind) {
        case QBOBJ_KIND_INT32: schema = number('i'); break;
        case QBOBJ_KIND_UINT64: schema = number('n'); break;
        case QBOBJ_KIND_LIST: schema = list_of(reference(argument.type)); break;
        case QBOBJ_KIND_RECORD:
            schema = reference(argument.type);
            // A chain comes back as it was given, and some operations make one of the record that they are given.
            if (is_list(argument.type)) schema = {{"anyOf", {schema, list_of(schema)}}};
            break;
        default: schema = nullable(text());
    }
    add_traits(*qbobj_argument_traits(&operation, &argument), schema);
    return described(qbobj_argument_meaning(&operation, &argument), std::move(schema));
}

Json SchemaWriter::result(const QbobjOperation &operation) const
{
    Json properties = Json::object();
    Json required = Json::array();
    bool alone = !returns_answer(operation);
    bool may_be_missing = false;
    for (uint32_t i = 0; i < operation.count; i++) {
        const QbobjArgument &each = operation.arguments[i];
        if (each.direction == QBOBJ_IN) continue;
        properties[each.name] = output(operation, each);
        if (each.direction == QBOBJ_INOUT && each.optional) may_be_missing = true;
        else required.push_back(each.name);
        if (is_scalar(each) || each.kind == QBOBJ_KIND_XML) alone = false;
    }
    const char *meaning = qbobj_result_meaning(&operation);
    if (returns_answer(operation)) {
        properties[kReturned] = described(meaning, number('i'));
        required.push_back(kReturned);
    }
    if (properties.empty()) return {{"description", "Nothing."}, {"type", "null"}};
    if (alone && properties.size() == 1) {
        Json schema = std::move(properties.front());
        return may_be_missing ? nullable(std::move(schema)) : schema;
    }
    Json schema = closed_object(std::move(properties));
    if (!required.empty()) schema["required"] = std::move(required);
    return schema;
}

Json SchemaWriter::failure()
{
    const Json properties = {
        {"operation", described("The operation; null of a failure outside of one.", nullable(text()))},
        {"code", described("The operation's code, -1 when nothing was found; null when it was not called.",
                           {{"type", {"integer", "null"}}})},
        {"message", described("What went wrong.", text())},
        {"file", described("The source file that reported it; null when none did.", nullable(text()))},
        {"line", described("Its line.", {{"type", {"integer", "null"}}})},
        {"status",
         described("The class: 1 refused, 2 wrong usage, 3 nothing found, 4 database failure, 5 out of memory.",
                   {{"type", "integer"}, {"minimum", 1}, {"maximum", 5}})}};
    Json schema = closed_object(properties);
    schema["required"] = {"operation", "code", "message", "file", "line", "status"};
    return described("Why a call failed.", std::move(schema));
}

Json json_schema()
{
    const SchemaWriter writer("#/$defs/");
    Json definitions = Json::object();
    for (const QbobjField *type : all_types()) definitions[type->name] = writer.type(type);
    Json names = Json::array();
    Json cases = Json::array();
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) {
        const std::string name = short_name(*row);
        definitions[name + ".args"] = writer.any_arguments(*row);
        definitions[name + ".result"] = writer.result(*row);
        names.push_back(name);
        cases.push_back({{"if", {{"properties", {{"call", {{"const", name}}}}}}},
                         {"then", {{"properties", {{"args", {{"$ref", "#/$defs/" + name + ".args"}}}}}}}});
    }
    definitions["error"] = SchemaWriter::failure();
    return {{"$schema", kJsonSchemaDialect},
            {"title", "A call of the object library"},
            {"description",
             std::string("A line of \"qbobj batch\", and below $defs the record types, what each operation is given "
                         "(NAME.args) and what it returns (NAME.result). Library ") +
                 qbobj_version() + "."},
            {"type", "object"},
            {"properties",
             {{"call", {{"description", "The operation."}, {"enum", std::move(names)}}},
              {"args", {{"description", "What it is given."}}},
              {"fields",
               {{"description", "The fields that are wanted of the result, those of records inside with dots."},
                {"type", "array"},
                {"items", text()},
                {"minItems", 1},
                {"uniqueItems", true}}},
              {"id", {{"description", "Comes back in the answer."}}}}},
            {"required", Json::array({"call"})},
            {"additionalProperties", false},
            {"allOf", std::move(cases)},
            {"$defs", std::move(definitions)}};
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
