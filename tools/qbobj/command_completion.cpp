// qbobj completion: the scripts, and the candidates that they ask for.
#include <unistd.h>

#include <memory>

#include "command_line.h"
#include "completion.h"

namespace qbcli {

void add_completion(CommandLine &line)
{
    const auto shell = std::make_shared<std::string>();
    CLI::App *command = add_command(line, "completion", "Print a completion script for a shell", [shell] {
        if (*shell != "bash" && *shell != "zsh") throw Failure("completion: for bash and for zsh, not for " + *shell);
        print_text(completion_script(*shell));
    });
    command->add_option("SHELL", *shell, "bash or zsh")->required();

    CLI::App *candidates = line.app.add_subcommand("complete", "Candidates for the words after --")->group("");
    candidates->callback([&line] {
        constexpr unsigned kPatience = 5;  // seconds
        alarm(kPatience);                  // whatever a file system does: nobody waits for candidates
        std::string text;
        for (const std::string &candidate : completion_candidates(line.app, line.verbatim)) text += candidate + "\n";
        print_text(text);
    });
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
