// qbobj list, qbobj describe: what there is.
#include <memory>

#include "command_line.h"
#include "describe.h"

namespace qbcli {
namespace {

/// These two are read by people through pipes, too: JSON only when it is asked for.
bool wants_json(const OutputOptions &options)
{
    return options.json || options.compact;
}

}  // namespace

void add_list(CommandLine &line)
{
    struct Given {
        std::string pattern;
        bool types = false;
    };
    const auto given = std::make_shared<Given>();
    CLI::App *command = add_command(line, "list", "List operations by family", [given, &options = line.options.output] {
        const std::string &pattern = given->pattern;
        if (wants_json(options)) print_json(given->types ? types_json(pattern) : operations_json(pattern), options);
        else print_text(given->types ? types_text(pattern) : operations_text(pattern));
    });
    command->add_option("PATTERN", given->pattern, "A pattern for names (*User*), or a word that is mentioned");
    command->add_flag("--types", given->types, "List record types instead")->disable_flag_override();
}

void add_describe(CommandLine &line)
{
    const auto name = std::make_shared<std::string>();
    CLI::App *command =
        add_command(line, "describe", "Describe an operation or a record type", [name, &options = line.options.output] {
            if (wants_json(options)) print_json(description_json(*name), options);
            else print_text(description_text(*name));
        });
    command->add_option("NAME", *name, "addLog, LogQuery, ...")->required();
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
