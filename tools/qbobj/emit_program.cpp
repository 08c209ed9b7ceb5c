#include "emit_program.h"

#include <cstdint>
#include <limits>

namespace qbcli {
namespace {

std::string number(char kind, const Json &value)
{
    const std::string digits = value.dump();
    switch (kind) {
        case 'u': return digits + "U";
        case 'n': return "UINT64_C(" + digits + ")";
        case 'l': return value == std::numeric_limits<int64_t>::min() ? "INT64_MIN" : "INT64_C(" + digits + ")";
        default: return value == std::numeric_limits<int32_t>::min() ? "INT32_MIN" : digits;
    }
}

}  // namespace

std::string ProgramWriter::text(const Json &value) const
{
    if (const size_t secret = EmittedValues::secret_of(value))
        return "secret_" + std::to_string(secret) + dialect_.end_of_secret;
    const auto &given = value.get_ref<const std::string &>();
    return given == masked_password ? "masked_password" : c_literal(given);
}

/// A record, with everything in it, as a variable.
void ProgramWriter::record(const QbobjField *type, const Json &value, const std::string &name)
{
    const Json members = value.is_array() ? Json{{type[1].name, value}} : value;
    declare(type, members, name);
    for (const auto &[member, part] : members.items()) {
        if (part.is_null()) continue;
        const QbobjField *field = find_field(type, member);  // null for the key word
        if (field && field->kind == 'o') {
            inside(field->subtype, part, joined({name, "_", member}), joined({name, ".", member}));
            continue;
        }
        const std::string assigned = field && is_number(field) ? number(field->kind, part) : text(part);
        line(joined({target(field, name, member), " = ", assigned, ";"}));
    }
}

/// A record or list inside a record.
void ProgramWriter::inside(const QbobjField *type, const Json &value, const std::string &name, const std::string &place)
{
    const bool list = is_list(type) && value.is_array();
    if (list) records(type, value, name);
    else record(type, value, name);
    if (!list || !value.empty()) line(joined({place, " = &", name, ";"}));
}

/// The elements of a list, the first by the name of the list.
void ProgramWriter::records(const QbobjField *type, const Json &value, const std::string &name)
{
    std::string before;
    for (size_t i = 0; i < value.size(); i++) {
        const std::string own = i == 0 ? name : name + "_" + std::to_string(i + 1);
        record(type, value[i], own);
        if (i > 0) line(joined({before, ".next = &", own, ";"}));
        before = own;
    }
}

std::string ProgramWriter::scalar(const QbobjArgument &argument, const std::optional<Json> &given) const
{
    const bool nothing = !given || given->is_null();
    if (argument.kind == QBOBJ_KIND_STRING) return nothing ? dialect_.null : text(*given);
    return number(argument.kind == QBOBJ_KIND_UINT64 ? 'n' : 'i', nothing ? Json(0) : *given);
}

std::string ProgramWriter::given(size_t index)
{
    const QbobjArgument &argument = operation_.arguments[index];
    const std::optional<Json> &given = values_.given(index);
    if (is_scalar(argument)) return scalar(argument, given);
    switch (passing_of(argument, given)) {
        case Passing::kNull: return dialect_.null;
        case Passing::kRecords:
            records(argument.type, *given, argument.name);
            return std::string("&") + argument.name;  // the chain begins there
        default: record(argument.type, given && !given->is_null() ? *given : Json::object(), argument.name);
    }
    return passed(argument);
}

void ProgramWriter::add_printer(const QbobjField *type)
{
    if (!printed_.insert(type).second) return;
    for (const QbobjField *field = type + 1; field->kind != '.'; field++)
        if (field->subtype) add_printer(field->subtype);
    std::string text = printer_head(type->name);
    if (has_key_word(type) && !find_field(type, kKeyWord)) text += text_line(kKeyWord, false);
    for (const QbobjField *field = type + 1; field->kind != '.'; field++)
        text += field->kind == 's' ? text_line(field->name, qbobj_is_secret(type, field)) : field_line(field);
    printers_ += text + "}\n\n";
}

std::string ProgramWriter::secrets() const
{
    std::string text;
    size_t number = 0;
    for (const std::string &name : values_.secrets())
        text += joined({"    const ", dialect_.secret, "secret_", std::to_string(++number), " = read_secret(",
                        c_literal(name), ");\n"});
    return text;
}

std::string ProgramWriter::settings() const
{
    const DatabaseOptions &database = what_.database;
    const std::string handle = dialect_.handle;
    std::string text;
    if (database.timeout_ms != QBDB_DEFAULT_TIMEOUT_MS)
        text += joined({"    qbdb_set_timeout(", handle, ", ", std::to_string(database.timeout_ms), ");\n"});
    if (!database.who.empty()) text += joined({"    qbdb_set_caller(", handle, ", ", c_literal(database.who), ");\n"});
    if (!database.root.empty())
        text +=
            joined({"    qbdb_import_options import", dialect_.zero, ";\n    import.root = ", c_literal(database.root),
                    ";\n    qbdb_set_import_options(", handle, ", &import);\n"});
    return text;
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
