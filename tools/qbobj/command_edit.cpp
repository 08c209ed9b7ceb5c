// qbobj edit: what is named of a record is changed, the rest of it stays as it is stored.
#include "arguments.h"
#include "call.h"
#include "command_line.h"
#include "describe.h"
#include "failure.h"

namespace qbcli {
namespace {

/// The only record of an operation that stores one; null for any other operation.
const QbobjArgument *stored_record(const QbobjOperation &operation)
{
    const QbobjArgument *record = nullptr;
    for (uint32_t i = 0; i < operation.count; i++) {
        const QbobjArgument &argument = operation.arguments[i];
        if (is_scalar(argument)) continue;
        if (record || argument.kind != QBOBJ_KIND_RECORD || !is_input(argument)) return nullptr;
        record = &argument;
    }
    return operation.changes ? record : nullptr;
}

/// The operation that reads what another one stores: of the same thing, into a record of the same type.
const QbobjOperation *reader_of(const QbobjOperation &operation)
{
    const QbobjArgument *record = stored_record(operation);
    if (!record || is_bare_list(record->type)) return nullptr;
    const std::string name = short_name(operation);
    for (const std::string_view verb : {"modify", "set"}) {
        if (!name.starts_with(verb)) continue;
        const QbobjOperation *reader = qbobj_find_operation(("get" + name.substr(verb.size())).c_str());
        if (!reader || reader->changes || reader->count != operation.count) return nullptr;
        for (uint32_t i = 0; i < reader->count; i++) {
            const QbobjArgument &read = reader->arguments[i];
            const QbobjArgument &stored = operation.arguments[i];
            const bool fills = read.direction != QBOBJ_IN || is_scalar(read);
            if (read.kind != stored.kind || read.type != stored.type || !fills) return nullptr;
        }
        return reader;
    }
    return nullptr;
}

const QbobjOperation &require_reader(const QbobjOperation &operation)
{
    if (const QbobjOperation *reader = reader_of(operation)) return *reader;
    std::string names;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++)
        if (reader_of(*row)) names += (names.empty() ? "" : ", ") + short_name(*row);
    throw Failure("no operation reads what it stores; those that can be edited with are " + names);
}

/// The numbers and texts of a record: by some of them the reader knows what is meant.
Json plain_members(const Json &given)
{
    if (!given.is_object()) throw Failure("one record is edited, and its fields are named");
    Json plain = Json::object();
    for (const auto &[name, value] : given.get_ref<const Json::object_t &>())
        if (!value.is_structured() && !value.is_null()) plain[name] = value;
    return plain;
}

/// Reads what is stored.
Json read_record(const QbobjOperation &reader, const Arguments &given, Database &database, const Options &options)
{
    StandardInput nothing;
    Arguments address(reader, nothing);
    for (uint32_t i = 0; i < reader.count; i++) {
        const QbobjArgument &argument = reader.arguments[i];
        if (!is_input(argument) || !given.given(i)) continue;
        const bool scalar = is_scalar(argument);
        address.take(scalar ? Json{{argument.name, *given.given(i)}} : plain_members(*given.given(i)));
    }
    Call call(reader, address);
    call.run(database, options.database.timeout_ms);
    return call.outcome();  // one record, which stands alone
}

void edit(CommandLine &line, const QbobjOperation &operation, const std::vector<std::string> &words)
{
    const QbobjOperation &reader = require_reader(operation);
    refuse_when_read_only(line.options);
    StandardInput input;
    Arguments arguments(operation, input);
    if (words.empty()) throw Failure("nothing is given that could be changed");
    arguments.take(words);
    Database database = open_chosen_database(line.options);
    Json stored = read_record(reader, arguments, database, line.options);
    const auto record = static_cast<size_t>(stored_record(operation) - operation.arguments);
    arguments.lay_under(record, std::move(stored));
    make_call(line, operation, arguments, database);
}

}  // namespace

void add_edit(CommandLine &line)
{
    CLI::App *command = line.app.add_subcommand("edit", "Change single fields of a stored record");
    command->allow_extras();  // an operation's words, which the parser would take apart
    command->fallthrough();
    command->callback([&line] {
        std::vector<std::string> words = words_of(line);
        if (words.empty()) throw Failure("edit: the OPERATION is missing; \"qbobj help edit\" says how it is called");
        if (!line.options.emit.empty()) throw Failure("edit", "--emit is for operations");
        const QbobjOperation &operation = find_operation(words.front());
        words.erase(words.begin());
        try {
            edit(line, operation, words);
        } catch (Failure &failure) {
            if (failure.operation.empty()) failure.operation = short_name(operation);
            throw;
        }
    });
    command->footer(
        "  qbobj edit OPERATION ARGUMENT...\n\n"
        "The record that the operation stores is read, the given fields are laid over it, and it is stored: what is "
        "not\n"
        "named keeps its value.\n\n"
        "  qbobj edit modifyUser UserId=100 Email=anna@example.org");
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
