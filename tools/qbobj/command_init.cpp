// qbobj init: a fresh database.
#include <memory>

#include "command_line.h"

namespace qbcli {

void add_init(CommandLine &line)
{
    struct Given {
        std::string path;
        std::string volume;
    };
    const auto given = std::make_shared<Given>();
    CLI::App *command = add_command(line, "init", "Create a fresh appliance database",
                                    [given] { create_database(given->path, given->volume); });
    command->add_option("FILE", given->path, "Where to create it; must not exist")->required();
    command->add_option("--volume", given->volume, "Name of a first volume")->type_name("NAME");
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
