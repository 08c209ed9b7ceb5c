#include "command_line.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <set>

#include "completion.h"
#include "describe.h"
#include "emit.h"
#include "failure.h"
#include "qbobj.h"

namespace qbcli {
namespace {

constexpr void (*kCommands[])(CommandLine &) = {
    add_init,    add_list, add_describe, add_schema, add_completion, add_import_users, add_batch, add_edit,
    add_journal, add_undo, add_follow,   add_export, add_import,     add_diff,         add_help,  add_version};

constexpr const char *kDescription =
    "qbobj reads and changes the configuration database of the appliance: shares, accounts, services,\n"
    "storage, backup, system. It calls the operations of the object library by their names.";

constexpr const char *kUsage = R"(
Usage:
  qbobj [-d FILE] OPERATION [ARGUMENT]...
  qbobj COMMAND ...
  qbobj help [OPERATION|TYPE|COMMAND]
)";

constexpr const char *kExamples = R"(
Arguments of an operation:
  Field=value        a field of its record, or one of its arguments by name
  Field.Part=value   a field of a record inside the record
  Field='[{...}]'    a list inside, as JSON
  Password=-         asks for the secret on a terminal, else reads a line of standard input
  '{...}'            fields as JSON; @FILE reads them from a file, - from standard input
  value              a bare value fills the next number or text that it takes

A field that is not named is absent. An operation that changes the database is not called without arguments;
null says that nothing is meant. The result is a table on a terminal and JSON elsewhere.

Exit status: 0 done, 1 refused by the library, 2 wrong usage, 3 nothing found (or "no"), 4 database failure,
5 out of memory.

First steps:
  qbobj init appliance.db --volume tank      create a database
  export QBOBJ_DB=appliance.db               so that -d need not be given
  qbobj list log                             operations that have to do with the log
  qbobj describe getLog                      one operation in full
  qbobj addLog time=0 severity=warning msgTag=LOGMSG_HELLO
  qbobj getLog limit=10
)";

constexpr uint32_t kTraceLevel = 5;

std::string version_text()
{
    return std::string("qbobj ") + QBOBJ_VERSION + " (SQLite " + sqlite3_libversion() + ")";
}

/// The parser's help page, but for the usage, of which it knows one form only.
class HelpPage : public CLI::Formatter {
public:
    std::string make_usage(const CLI::App *app, std::string name) const override
    {
        return app->get_parent() ? CLI::Formatter::make_usage(app, name) : kUsage;
    }
};

/// A whole number without a sign, in words of our own.
std::string check_number(const std::string &text)
{
    uint32_t number;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc() && end == text.data() + text.size()) return "";
    return "a whole number from 0 to " + std::to_string(UINT32_MAX) + " is needed, not \"" + text + "\"";
}

std::string check_language(const std::string &text)
{
    std::string known;
    for (const char *const *language = kLanguages; *language; language++) {
        if (text == *language) return "";
        known += std::string(known.empty() ? "" : ", ") + *language;
    }
    return "there is no language \"" + text + "\" (" + known + ")";
}

void add_options(CommandLine &line)
{
    CLI::App &app = line.app;
    Options &options = line.options;
    const auto flag = [&app](const char *names, bool &value, const char *what) {
        app.add_flag(names, value, what)->disable_flag_override();
    };
    const auto number = [&app](const char *name, uint32_t &value, const char *type, const char *what) {
        return app.add_option(name, value, what)->type_name(type)->check(check_number);
    };
    app.add_option("-d,--database", options.database.path, "Database file")->envname("QBOBJ_DB")->type_name("FILE");
    flag("-j,--json", options.output.json, "JSON, on a terminal, too; failures as JSON on standard error");
    flag("--table", options.output.table, "A table, into a file or pipe, too");
    flag("--compact", options.output.compact, "JSON in one line");
    flag("--tsv", options.output.tsv, "Rows with tabs between their cells, below a line of names");
    flag("--csv", options.output.csv, "Rows with commas between their cells, below a line of names");
    app.add_option("--fields", options.output.fields, "Nothing but these fields of what is returned, in this order")
        ->type_name("A,B.C")
        ->check([](const std::string &text) { return std::string(text.empty() ? "names are needed" : ""); });
    flag("--with-secrets", options.output.secrets, "Secrets in clear, into a file or pipe, to be written back");
    flag("--dry-run", options.dry_run, "Call the operation, print what it would change, and take it back");
    flag("--changes", options.changes, "Print what the operation changed as well");
    app.add_option("--emit", options.emit, "Print the program that makes the call: c, c++, python, shell")
        ->type_name("LANGUAGE")
        ->check(check_language);
    app.add_option("--who", options.database.who,
                   "On whose behalf, for the journal; unless given, who runs the program")
        ->type_name("NAME");
    flag("--read-only", options.database.read_only, "Open the database for reading only");
    number("--timeout", options.database.timeout_ms, "MS", "How long to wait for another process's lock")
        ->capture_default_str();
    app.add_option("--root", options.database.root, "Look for disks and home folders below a directory instead of /")
        ->type_name("DIR");
    flag("--trace", options.trace, "The library's log lines on standard error, all of them");
    number("--log-level", options.database.log_level, "N", "Those up to a level: 2 errors, 4 calls, 5 details");
    app.parse_complete_callback([&options = options.output, &given = options] {
        if (options.table && (options.json || options.compact))
            throw Failure("a table or JSON? --table excludes the other");
        if ((options.tsv || options.csv) &&
            (options.table || options.json || options.compact || options.tsv == options.csv))
            throw Failure("in which form? --tsv and --csv exclude each other, JSON and the table");
        if ((options.tsv || options.csv) && (given.changes || given.dry_run))
            throw Failure(std::string("changes are no rows of ") + (options.tsv ? "--tsv" : "--csv"));
        if (options.secrets && (options.table || isatty(STDOUT_FILENO)))
            throw Failure("--with-secrets: not on a terminal and not in a table, where people would read them");
    });
}

/// Neither a command nor an operation was recognised: says what was probably meant.
void refuse_commandless(const CommandLine &line)
{
    for (const std::string &word : line.app.remaining()) {
        if (word.starts_with('-')) refuse_unknown_option(line, word);
        Names names = operation_names();
        for (const CLI::App *command : line.app.get_subcommands(nullptr)) names.emplace_back(command->get_name());
        throw Failure("there is no operation " + word + did_you_mean_operation(word, names) +
                      "; \"qbobj list\" shows all");
    }
    throw Failure("which operation? \"qbobj list\" shows all, \"qbobj --help\" how to call them");
}

/// --help: of an operation its description, else the parser's page.
void show_help(const CommandLine &line, const CLI::Error &request)
{
    for (const CLI::App *command : line.app.get_subcommands())
        if (qbobj_find_operation(command->get_name().c_str())) {
            print_text(description_text(command->get_name()));
            return;
        }
    line.app.exit(request);
}

/// What the parser did not understand, in words of our own.
std::string in_our_words(const CLI::App &app, const CLI::ParseError &error)
{
    const auto commands = app.get_subcommands();
    const std::string command = commands.empty() ? "" : commands.front()->get_name();
    std::string text = error.what();
    const std::string name = text.substr(0, text.find_first_of(": "));
    if (dynamic_cast<const CLI::RequiredError *>(&error))
        return command + ": the " + name + " is missing; \"qbobj help " + command + "\" says how it is called";
    if (!dynamic_cast<const CLI::ArgumentMismatch *>(&error)) return text;
    if (text.find(" missing") != std::string::npos) return name + ": a value is missing";
    if (text.find("flag override") != std::string::npos) return "--" + name + ": takes no value";
    return name + ": is given twice";
}

/// Words after "--" are an operation's as they are. Elsewhere the parser deals with them.
std::vector<std::string> take_verbatim(CommandLine &line, std::vector<std::string> words)
{
    const auto end = std::find(words.begin(), words.end(), "--");
    const auto before = plain_words(line.app, {words.begin(), end});
    const bool of_command = !before.empty() && before[0] != "complete" && !qbobj_find_operation(before[0].c_str());
    if (end == words.end() || of_command) return words;
    line.verbatim.assign(end + 1, words.end());
    words.erase(end, words.end());
    return words;
}

void parse_and_act(CommandLine &line, const std::vector<std::string> &words)
{
    line.words = words;
    set_up(line, words);
    std::vector<std::string> parsed = take_verbatim(line, words);
    std::reverse(parsed.begin(), parsed.end());  // as the parser takes them
    try {
        line.app.parse(parsed);
    } catch (const CLI::Success &request) {
        show_help(line, request);
        return;
    } catch (const CLI::ParseError &error) {
        throw Failure(in_our_words(line.app, error));
    }
    if (line.app.get_subcommands().empty()) refuse_commandless(line);
}

/// Refuses what a sub-command did not take.
void refuse_surplus(const CommandLine &line, const CLI::App &command)
{
    for (const std::string &word : line.app.remaining(true)) {
        if (word == "--") continue;
        if (word.starts_with('-')) refuse_unknown_option(line, word, &command);
        throw Failure(command.get_name() + ": \"" + word + "\" is one word too many; \"qbobj help " +
                      command.get_name() + "\" says how it is called");
    }
}

/// Fields are chosen of what operations return.
void refuse_rows(const OutputOptions &output, const CLI::App &command)
{
    if (!output.tsv && !output.csv && output.fields.empty()) return;
    const std::string option = output.tsv ? "--tsv" : output.csv ? "--csv" : "--fields";
    throw Failure(command.get_name(), option + " is for operations");
}

/// What changes is shown of calls; a command that has a trial of its own takes the same option itself.
void refuse_watching(const Options &options, const CLI::App &command)
{
    if (!options.dry_run && !options.changes) return;
    const char *option = options.dry_run ? "--dry-run" : "--changes";
    if (options.dry_run && command.get_option_no_throw("--dry-run"))
        throw Failure(command.get_name(), std::string("write --dry-run behind the command"));
    throw Failure(command.get_name(), std::string(option) + " is for operations");
}

/// A command's page, or an operation's or type's description; without a name the program's page.
void print_help(const CommandLine &line, const std::string &name)
{
    if (name.empty())
        return print_text(line.app.get_formatter()->make_help(&line.app, "qbobj", CLI::AppFormatMode::Normal));
    for (const CLI::App *command : line.app.get_subcommands(nullptr))
        if (command->get_name() == name && !qbobj_find_operation(name.c_str()))
            return print_text(command->help("qbobj"));
    print_text(description_text(name));
}

}  // namespace

void set_up(CommandLine &line, const std::vector<std::string> &words)
{
    CLI::App &app = line.app;
    app.name("qbobj");
    app.description(kDescription);
    app.footer(kExamples);
    app.formatter(std::make_shared<HelpPage>());
    app.set_version_flag("--version", version_text());
    app.allow_extras();            // so that an unknown operation gets a suggestion
    app.require_subcommand(0, 1);  // what follows an operation is never taken for a command
    add_options(line);
    for (const auto add : kCommands) add(line);
    for (CLI::App *command : app.get_subcommands(nullptr)) {
        if (command->get_footer() == app.get_footer()) command->footer("");  // the examples are not each command's
        if (!command->get_group().empty()) command->group("Commands");
    }
    for (const std::string &word : std::set<std::string>(words.begin(), words.end()))
        if (qbobj_find_operation(word.c_str())) add_operation(line, word);
}

void add_help(CommandLine &line)
{
    const auto name = std::make_shared<std::string>();
    add_command(line, "help", "Explain a command, an operation or a type", [&line, name] {
        print_help(line, *name);
    })->add_option("NAME", *name, "init, addLog, LogQuery, ...");
}

void add_version(CommandLine &line)
{
    add_command(line, "version", "Print the version", [] { print_text(version_text() + "\n"); });
}

CLI::App *add_command(CommandLine &line, const std::string &name, const std::string &what, std::function<void()> act,
                      Watching watching)
{
    CLI::App *command = line.app.add_subcommand(name, what);
    command->fallthrough();
    command->callback([&line, command, watching, act = std::move(act)] {
        refuse_surplus(line, *command);
        if (!line.options.emit.empty()) throw Failure(command->get_name(), "--emit is for operations");
        refuse_rows(line.options.output, *command);
        if (watching == Watching::kNone) refuse_watching(line.options, *command);
        act();
    });
    return command;
}

void refuse_when_read_only(const Options &options)
{
    if (options.database.read_only) throw Failure("it changes the database, which --read-only forbids");
}

void refuse_unknown_option(const CommandLine &line, const std::string &word, const CLI::App *command)
{
    std::vector<std::string> options;
    for (const CLI::App *app : {&line.app, command})
        if (app)
            for (const CLI::Option *option : app->get_options())
                for (const std::string &name : option->get_lnames()) options.push_back("--" + name);
    const Names names(options.begin(), options.end());
    const std::string where = command ? command->get_name() : "";
    throw Failure(where, "there is no option " + word + did_you_mean(word.substr(0, word.find('=')), names));
}

Database open_chosen_database(const Options &options)
{
    if (options.database.path.empty()) throw Failure("which database? Give -d FILE, or set QBOBJ_DB");
    DatabaseOptions chosen = options.database;
    if (options.trace && chosen.log_level < kTraceLevel) chosen.log_level = kTraceLevel;
    return Database(chosen);
}

int run(const std::vector<std::string> &words)
{
    CommandLine line;
    try {
        parse_and_act(line, words);
    } catch (const Failure &failure) {
        line.status = failure.status;
        print_failure(failure, line.options.output);
    } catch (const std::bad_alloc &) {
        line.status = Status::kMemory;
        print_failure(Failure("out of memory", line.status), line.options.output);
    } catch (const std::exception &failure) {
        line.status = Status::kFailed;
        print_failure(Failure(failure.what(), line.status), line.options.output);
    }
    return static_cast<int>(line.status);
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
