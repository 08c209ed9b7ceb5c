#include "command_line.h"

#include <algorithm>
#include <memory>
#include <set>

#include "describe.h"
#include "failure.h"
#include "qbobj.h"

namespace qbcli {
namespace {

constexpr void (*kCommands[])(CommandLine &) = {add_init, add_list, add_describe, add_completion, add_import_users};

constexpr const char *kDescription =
    "qbobj reads and changes the configuration database of the appliance: shares, accounts, services,\n"
    "storage, backup, system. It calls the operations of the object library by their names.";

constexpr const char *kUsage = R"(
Usage:
  qbobj [-d FILE] OPERATION [ARGUMENT]...
  qbobj COMMAND ...
)";

constexpr const char *kExamples = R"(
Arguments of an operation:
  Field=value        a field of its record, or one of its arguments by name
  Field.Part=value   a field of a record inside the record
  Field='[{...}]'    a list inside, as JSON
  Password=-         asks for the secret on a terminal, else reads a line of standard input
  '{...}'            fields as JSON; @FILE reads them from a file, - from standard input
  value              a bare value fills the next number or text that it takes

A field that is not named is absent. The result is a table on a terminal and JSON elsewhere.

First steps:
  qbobj init appliance.db --volume tank      create a database
  export QBOBJ_DB=appliance.db               so that -d need not be given
  qbobj list log                             operations that have to do with the log
  qbobj describe getLog                      one operation in full
  qbobj addLog time=0 severity=warning msgTag=LOGMSG_HELLO
  qbobj getLog limit=10
)";

constexpr uint32_t kTraceLevel = 5;

/// The parser's help page, but for the usage, of which it knows one form only.
class HelpPage : public CLI::Formatter {
public:
    std::string make_usage(const CLI::App *app, std::string name) const override
    {
        return app->get_parent() ? CLI::Formatter::make_usage(app, name) : kUsage;
    }
};

void add_options(CommandLine &line)
{
    CLI::App &app = line.app;
    Options &options = line.options;
    app.add_option("-d,--database", options.database.path, "Database file")->envname("QBOBJ_DB")->type_name("FILE");
    app.add_flag("-j,--json", options.output.json, "JSON, on a terminal, too; failures as JSON on standard error");
    app.add_flag("--table", options.output.table, "A table, into a file or pipe, too");
    app.add_flag("--compact", options.output.compact, "JSON in one line");
    app.add_flag("--read-only", options.database.read_only, "Open the database for reading only");
    app.add_option("--timeout", options.database.timeout_ms, "How long to wait for another process's lock")
        ->type_name("MS")
        ->capture_default_str();
    app.add_option("--root", options.database.root, "Look for disks and home folders below a directory instead of /")
        ->type_name("DIR");
    app.add_flag("--trace", options.trace, "The library's log lines on standard error, all of them");
    app.add_option("--log-level", options.database.log_level, "Those up to a level: 2 errors, 4 calls, 5 details")
        ->type_name("N");
    app.parse_complete_callback([&options = options.output] {
        if (options.table && (options.json || options.compact))
            throw Failure("a table or JSON? --table excludes the other");
    });
}

void set_up(CommandLine &line, const std::vector<std::string> &words)
{
    CLI::App &app = line.app;
    app.name("qbobj");
    app.description(kDescription);
    app.footer(kExamples);
    app.formatter(std::make_shared<HelpPage>());
    app.set_version_flag("--version", std::string("qbobj ") + QBOBJ_VERSION + " (SQLite " + sqlite3_libversion() + ")");
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

/// Neither a command nor an operation was recognised: says what was probably meant.
void refuse_commandless(const CommandLine &line)
{
    for (const std::string &word : line.app.remaining()) {
        if (word.starts_with('-')) refuse_unknown_option(line, word);
        Names names = operation_names();
        for (const CLI::App *command : line.app.get_subcommands(nullptr)) names.emplace_back(command->get_name());
        throw Failure("there is no operation " + word + did_you_mean(word, names) + "; \"qbobj list\" shows all");
    }
    throw Failure("which operation? \"qbobj list\" shows all, \"qbobj --help\" how to call them");
}

/// --help: of an operation its description, else the parser's page.
int show_help(const CommandLine &line, const CLI::Error &request)
{
    for (const CLI::App *command : line.app.get_subcommands())
        if (qbobj_find_operation(command->get_name().c_str())) {
            print_text(description_text(command->get_name()));
            return 0;
        }
    return line.app.exit(request);
}

int parse_and_act(CommandLine &line, const std::vector<std::string> &words)
{
    const auto end = std::find(words.begin(), words.end(), "--");
    if (end != words.end()) line.verbatim.assign(end + 1, words.end());
    std::vector<std::string> parsed(words.begin(), end);
    set_up(line, parsed);
    std::reverse(parsed.begin(), parsed.end());  // as the parser takes them
    try {
        line.app.parse(parsed);
    } catch (const CLI::Success &request) {
        return show_help(line, request);
    } catch (const CLI::ParseError &error) {
        throw Failure(error.what());
    }
    if (line.app.get_subcommands().empty()) refuse_commandless(line);
    return 0;
}

}  // namespace

void refuse_unknown_option(const CommandLine &line, const std::string &word)
{
    Names names;
    std::vector<std::string> options;
    for (const CLI::Option *option : line.app.get_options())
        for (const std::string &name : option->get_lnames()) options.push_back("--" + name);
    names.assign(options.begin(), options.end());
    throw Failure("there is no option " + word + did_you_mean(word, names));
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
        return parse_and_act(line, words);
    } catch (const Failure &failure) {
        print_failure(failure, line.options.output);
    } catch (const std::exception &failure) {
        print_failure(Failure(failure.what()), line.options.output);
    }
    return 1;
}

}  // namespace qbcli
