// qbobj schema: what there is, for programs that generate or check.
#include <memory>

#include "command_line.h"
#include "json_schema.h"

namespace qbcli {

void add_schema(CommandLine &line)
{
    struct Given {
        bool json_schema = false;
        bool openapi = false;
    };
    const auto given = std::make_shared<Given>();
    CLI::App *command = add_command(line, "schema", "Print all types and operations as a schema", [&line, given] {
        if (given->json_schema == given->openapi) throw Failure("schema: one of --json-schema and --openapi is needed");
        print_json(given->openapi ? openapi() : json_schema(), line.options.output);
    });
    command->add_flag("--json-schema", given->json_schema, "JSON Schema 2020-12: a line of \"qbobj batch\"");
    command->add_flag("--openapi", given->openapi, "OpenAPI 3.1: a POST for each operation");
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
