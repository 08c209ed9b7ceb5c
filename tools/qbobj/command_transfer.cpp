// qbobj export, import: a whole configuration as a document and back.
#include <unistd.h>

#include <memory>
#include <optional>

#include "changes.h"
#include "command_line.h"
#include "document.h"
#include "failure.h"
#include "new_file.h"

namespace qbcli {
namespace {

void export_configuration(const Options &options, const std::string &path, bool secrets)
{
    if (path == "-" && secrets && isatty(STDOUT_FILENO))
        throw Failure("export", "secrets are not shown on a terminal: name a file, or write into a pipe");
    Options reading = options;
    reading.database.read_only = true;
    const Database database = open_chosen_database(reading);
    const PrivateText document = document_of(database, secrets);
    if (path == "-") print_text(document);
    else write_new_file(path, document);
}

void import_configuration(const Options &options, const std::string &path)
{
    refuse_when_read_only(options);
    StandardInput input;
    const std::string origin = path == "-" ? "standard input" : path;
    Json document;
    {
        const PrivateText text = path == "-" ? input.document() : read_regular_file(path);
        document = parse_json(text, origin);
    }
    Database database = open_chosen_database(options);
    std::optional<Watch> watch;
    if (options.dry_run || options.changes) watch.emplace(database, options.dry_run);
    Imported imported;
    try {
        imported = import_document(database, document, origin, options.database.timeout_ms);
    } catch (...) {
        wipe(document);
        throw;
    }
    wipe(document);
    if (!imported.withheld.empty())
        print_warning("import", "the document is without secrets; to be set anew: " + imported.withheld);
    const Json outcome = {{"Tables", imported.tables}, {"Rows", imported.rows}, {"Imported", !options.dry_run}};
    if (watch) print_changes(outcome, watch->finish(options.output.secrets), options.dry_run, options.output);
    else print_outcome(outcome, options.output);
}

}  // namespace

void add_export(CommandLine &line)
{
    struct Given {
        std::string path = "-";
        bool secrets = false;
    };
    const auto given = std::make_shared<Given>();
    CLI::App *command = add_command(line, "export", "Write the whole configuration as JSON", [&line, given] {
        export_configuration(line.options, given->path, given->secrets || line.options.output.secrets);
    });
    command->add_option("FILE", given->path, "Where to write it; standard output without it, or as -");
    command->add_flag("--secrets", given->secrets, "Password hashes, keys and other secrets as well, in clear");
    command->footer(
        "The file is its owner's alone (mode 0600), and is there whole or not at all. Without --secrets the\n"
        "secrets are left out. The journal is not part of it.");
}

void add_import(CommandLine &line)
{
    const auto path = std::make_shared<std::string>();
    CLI::App *command = add_command(
        line, "import", "Bring a configuration that export wrote into a fresh database",
        [&line, path] { import_configuration(line.options, *path); }, Watching::kOfItsCalls);
    command->add_option("FILE", *path, "The document; - for standard input")->required();
    command->footer(
        "The database is one that \"qbobj init\" made and that nothing was entered into. It is imported whole or\n"
        "not at all, with all ids. With --dry-run everything is checked, written and taken back.");
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
