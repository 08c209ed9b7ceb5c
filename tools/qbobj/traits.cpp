#include "traits.h"

#include <sstream>

#include "records.h"

namespace qbcli {
namespace {

bool says_something(const QbobjTraits &traits)
{
    return traits.unit || traits.default_value || traits.pattern || traits.ranged || traits.besides;
}

std::string range(int64_t minimum, int64_t maximum)
{
    if (minimum == maximum) return std::to_string(minimum);
    if (minimum == INT32_MIN) return "below " + std::to_string(maximum + 1);
    return std::to_string(minimum) + " to " + std::to_string(maximum);
}

bool is_number(const std::string &text)
{
    return text.find_first_not_of("-0123456789") == std::string::npos;
}

/// A default as the type of its value has it.
Json default_of(const QbobjTraits &traits, bool as_number)
{
    if (as_number) return std::stoll(traits.default_value);
    return traits.default_value;
}

void visit(const QbobjOperation &operation, const QbobjArgument &argument, const QbobjField *type,
           const std::string &before, std::vector<FieldOfOperation> &found)
{
    for (const QbobjField *field = type + 1; field->kind != '.'; field++) {
        const std::string path = before + field->name;
        const QbobjTraits *traits = qbobj_argument_field_traits(&operation, &argument, path.c_str());
        if (says_something(*traits)) found.push_back({path, traits});
        if (field->subtype) visit(operation, argument, field->subtype, path + ".", found);
    }
}

}  // namespace

const char *direction_word(QbobjDirection direction)
{
    switch (direction) {
        case QBOBJ_IN: return "in";
        case QBOBJ_OUT: return "out";
        default: return "in and out";
    }
}

std::string traits_text(const QbobjTraits &traits)
{
    std::string text;
    if (traits.unit) text.append(", ").append(traits.unit);
    if (traits.ranged) text += ", " + range(traits.minimum, traits.maximum);
    if (traits.besides) text += " or " + range(traits.besides_minimum, traits.besides_maximum);
    if (const std::string value = traits.default_value ? traits.default_value : ""; !value.empty())
        text += ", default " + (is_number(value) ? value : "\"" + value + "\"");
    if (traits.pattern) text += ", SQL pattern";
    return text;
}

Json traits_json(const QbobjTraits &traits)
{
    Json json = {{"unit", text_to_json(traits.unit)},
                 {"minimum", nullptr},
                 {"maximum", nullptr},
                 {"besides", nullptr},
                 {"default", text_to_json(traits.default_value)},
                 {"pattern", traits.pattern != 0}};
    if (traits.ranged) {
        json["minimum"] = traits.minimum;
        json["maximum"] = traits.maximum;
    }
    if (traits.besides) json["besides"] = Json::array({traits.besides_minimum, traits.besides_maximum});
    return json;
}

void add_traits(const QbobjTraits &traits, Json &schema)
{
    const Json type = schema.value("type", Json());
    const bool as_number = type == "integer" || (type.is_array() && type[0] == "integer");
    if (traits.ranged && traits.besides) {
        schema["anyOf"] = {{{"minimum", traits.minimum}, {"maximum", traits.maximum}},
                           {{"minimum", traits.besides_minimum}, {"maximum", traits.besides_maximum}}};
    } else if (traits.ranged) {
        schema["minimum"] = traits.minimum;
        schema["maximum"] = traits.maximum;
    }
    if (traits.default_value) schema["default"] = default_of(traits, as_number);
    if (traits.unit) schema["x-unit"] = traits.unit;
}

std::vector<FieldOfOperation> fields_of_operation(const QbobjOperation &operation, const QbobjArgument &argument)
{
    std::vector<FieldOfOperation> found;
    if (argument.type) visit(operation, argument, argument.type, "", found);
    return found;
}

std::vector<std::string> addresses(const QbobjOperation &operation, const QbobjArgument &argument)
{
    const char *names = qbobj_argument_addresses(&operation, &argument);
    std::istringstream stream(names ? names : "");
    std::vector<std::string> all;
    for (std::string name; stream >> name;) all.push_back(name);
    return all;
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
