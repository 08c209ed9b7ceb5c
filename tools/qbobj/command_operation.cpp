// qbobj OPERATION: a call of the object library.
#include <algorithm>
#include <cctype>
#include <optional>

#include "arguments.h"
#include "call.h"
#include "changes.h"
#include "command_line.h"
#include "describe.h"
#include "emit.h"
#include "failure.h"
#include "selection.h"

namespace qbcli {
namespace {

bool is_negative_number(const std::string &word)
{
    return word.size() > 1 && word[0] == '-' && std::isdigit(static_cast<unsigned char>(word[1]));
}

/// The command line without --emit.
std::vector<std::string> words_to_emit(const CommandLine &line)
{
    static constexpr std::string_view kOption = "--emit";
    std::vector<std::string> words;
    bool options = true;
    for (size_t i = 0; i < line.words.size(); i++) {
        const std::string_view word = line.words[i];
        options = options && word != "--";
        if (options && word == kOption) i++;
        else if (!options || !word.starts_with("--emit=")) words.emplace_back(word);
    }
    return words;
}

void print_program(const CommandLine &line, const QbobjOperation &operation, const Arguments &arguments)
{
    const Options &options = line.options;
    const auto language =
        std::find(std::begin(kLanguages), std::end(kLanguages) - 1, options.emit) - std::begin(kLanguages);
    const OutputOptions &output = options.output;
    const bool rows = output.tsv || output.csv || !output.fields.empty();
    const bool shell = static_cast<Language>(language) == Language::kShell;
    if (!shell && (rows || options.dry_run || options.changes || options.trace || output.secrets ||
                   options.database.log_level != 0))
        throw Failure(
            "--emit: --fields, --tsv, --csv, --dry-run, --changes, --with-secrets, --trace and --log-level are not "
            "part "
            "of a program");
    (void)selection_of(operation, output);  // of the shell's line the fields are right as well
    Emitted what{operation, arguments, words_to_emit(line), options.database};
    if (what.database.path.empty()) what.database.path = "appliance.db";
    print_text(emit(static_cast<Language>(language), what));
}

void call(CommandLine &line, const QbobjOperation &operation)
{
    const Options &options = line.options;
    if (operation.changes) refuse_when_read_only(options);
    StandardInput input;
    Arguments arguments(operation, input);
    const std::vector<std::string> words = words_of(line);
    if (words.empty()) refuse_empty_change(operation);
    arguments.take(words);
    arguments.checks().refuse_useless();
    // First with the secrets left out, so that nobody types a password for a call that cannot be made.
    {
        const Call possible(operation, arguments);
    }
    if (!options.emit.empty()) return print_program(line, operation, arguments);
    Database database = open_chosen_database(options);
    make_call(line, operation, arguments, database);
}

}  // namespace

std::vector<std::string> words_of(const CommandLine &line)
{
    std::vector<std::string> words = line.app.remaining(true);
    for (const std::string &word : words)
        if (word.size() > 1 && word[0] == '-' && !is_negative_number(word)) refuse_unknown_option(line, word);
    words.insert(words.end(), line.verbatim.begin(), line.verbatim.end());
    return words;
}

Performed perform(const Options &options, const QbobjOperation &operation, const Arguments &arguments,
                  Database &database)
{
    Call call(operation, arguments);
    database.begin_call();
    std::optional<Watch> watch;
    if (options.dry_run || options.changes) watch.emplace(database, options.dry_run);
    Performed done;
    for (const std::string &warning : {call.run(database, options.database.timeout_ms), arguments.checks().warning()})
        if (!warning.empty()) done.warnings.push_back(warning);
    done.outputs = call.outputs(options.output.secrets);
    if (watch) done.changes = watch->finish(options.output.secrets);
    done.status = call.status();
    return done;
}

void make_call(CommandLine &line, const QbobjOperation &operation, Arguments &arguments, Database &database)
{
    const Options &options = line.options;
    const std::optional<Selection> selection = selection_of(operation, options.output);
    arguments.ask_for_secrets();
    Performed done = perform(options, operation, arguments, database);
    for (const std::string &warning : done.warnings) print_warning(short_name(operation), warning);
    if (!done.changes) print_outputs(selection, std::move(done.outputs), options.output);
    else print_changes(selected(selection, std::move(done.outputs)), *done.changes, options.dry_run, options.output);
    line.status = done.status;
}

void add_operation(CommandLine &line, const std::string &name)
{
    const QbobjOperation &operation = find_operation(name);
    CLI::App *command = line.app.add_subcommand(name, operation.summary)->group("");
    command->allow_extras();
    command->fallthrough();
    command->callback([&line, &operation] {
        try {
            call(line, operation);
        } catch (Failure &failure) {
            failure.operation = short_name(operation);
            throw;
        }
    });
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
