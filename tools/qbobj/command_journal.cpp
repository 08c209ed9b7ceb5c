// qbobj journal: what was changed, by whom, when.
#include <pwd.h>
#include <unistd.h>

#include <ctime>
#include <memory>
#include <optional>

#include "arguments.h"
#include "changes.h"
#include "command_line.h"
#include "failure.h"
#include "follow.h"
#include "journal.h"
#include "table.h"

namespace qbcli {
namespace {

constexpr uint64_t kMebibyte = 1u << 20;
constexpr uint64_t kDay = 86400;
constexpr uint32_t kListed = 20;  // calls, unless another number is given

struct Given {
    std::string action;
    std::string number;
    bool on = false;
    uint32_t megabytes = 0;
    uint32_t days = 0;
};

std::string local_time(int64_t seconds)
{
    const time_t time = seconds;
    tm parts{};
    char text[32] = "";
    if (localtime_r(&time, &parts)) strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
    return text;
}

Json parsed_arguments(const char *text)
{
    Json arguments = Json::parse(text, nullptr, false);
    return arguments.is_discarded() ? Json(text) : arguments;
}

/// As the program calls it.
std::string operation_name(const char *name)
{
    const QbobjOperation *operation = qbobj_find_operation(name);
    return operation ? short_name(*operation) : name;
}

int count_row(void *count, const qbdb_change *)
{
    ++*static_cast<int64_t *>(count);
    return 0;
}

/// A call without what it changed.
Json entry_to_json(const Database &database, const qbdb_journal_entry &entry)
{
    int64_t rows = 0;
    qbdb_changes_read(database.handle(), database.connection(), entry.changes, entry.size, count_row, &rows);
    return {{"call", entry.id},
            {"time", entry.time},
            {"who", entry.who},
            {"operation", operation_name(entry.operation)},
            {"rows", rows},
            {"undoes", entry.undoes ? Json(entry.undoes) : Json(nullptr)},
            {"arguments", parsed_arguments(entry.arguments)}};
}

/// The same for people.
Json readable(Json entry)
{
    entry["time"] = local_time(entry["time"].get<int64_t>());
    if (entry["arguments"].is_structured())
        entry["arguments"] = entry["arguments"].dump(-1, ' ', false, Json::error_handler_t::replace);
    return entry;
}

/// Collects calls.
struct Collection {
    const Database &database;
    Json list = Json::array();
    Json changes = Json::array();
    bool with_changes = false;
    bool secrets = false;

    static int add(void *context, const qbdb_journal_entry *entry)
    {
        auto *self = static_cast<Collection *>(context);
        self->list.push_back(entry_to_json(self->database, *entry));
        if (self->with_changes)
            self->changes = changes_to_json(self->database, entry->changes, entry->size, self->secrets);
        return 0;
    }
    void read(int64_t after, uint32_t count)
    {
        check(qbdb_journal_read(database.handle(), database.connection(), after, count, add, this), "cannot be read");
    }
};

void switch_on(Database &database, const Given &given)
{
    check(qbdb_journal_on(database.handle(), database.connection(), given.megabytes * kMebibyte, given.days * kDay),
          "cannot be switched on");
}

void switch_off(Database &database)
{
    check(qbdb_journal_off(database.handle(), database.connection()), "cannot be switched off");
}

void list(const CommandLine &line, const Database &database, const Given &given)
{
    const uint32_t count = given.number.empty() ? kListed : static_cast<uint32_t>(number_of_call(given.number));
    Collection calls{database};
    calls.read(std::max<int64_t>(state_of(database).last - count, 0), count);
    const OutputOptions &output = line.options.output;
    if (prints_json(output)) return print_json(calls.list, output);
    for (Json &entry : calls.list) entry = readable(std::move(entry));
    print_outcome(calls.list, output);
}

void show(const CommandLine &line, const Database &database, const Given &given)
{
    const qbdb_journal_state state = state_of(database);
    const int64_t number = given.number.empty() ? state.last : number_of_call(given.number);
    Collection calls{database};
    calls.with_changes = true;
    calls.secrets = line.options.output.secrets;
    if (number >= state.first && number <= state.last && number) calls.read(number - 1, 1);
    if (calls.list.empty()) throw Failure("journal", "it holds no call " + std::to_string(number), Status::kNotFound);
    Json entry = std::move(calls.list.front());
    if (!prints_json(line.options.output)) {
        print_outcome(readable(std::move(entry)), line.options.output);
        return print_change_table(calls.changes, "Changed");
    }
    entry["changes"] = std::move(calls.changes);
    print_json(entry, line.options.output);
}

void status(const CommandLine &line, const Database &database)
{
    const qbdb_journal_state state = state_of(database);
    print_outcome({{"on", state.on != 0},
                   {"first", state.first},
                   {"last", state.last},
                   {"bytes", state.bytes},
                   {"max_bytes", state.max_bytes},
                   {"max_days", state.max_seconds / kDay}},
                  line.options.output);
}

void act(const CommandLine &line, const Given &given)
{
    if (given.on && given.action != "stream") throw Failure("journal " + given.action, "--follow is for stream");
    if (given.action == "stream")
        return stream_journal(line, given.number.empty() ? 0 : number_of_call(given.number), given.on);
    if (given.action == "apply") return apply_stream(line);
    Database database = open_chosen_database(line.options);
    const bool numbered = given.action == "list" || given.action == "show";
    if (!given.number.empty() && !numbered) throw Failure("journal " + given.action, "takes no number");
    if (given.action == "on") return switch_on(database, given);
    if (given.action == "off") return switch_off(database);
    if (given.action == "list") return list(line, database, given);
    if (given.action == "show") return show(line, database, given);
    status(line, database);
}

void undo(const CommandLine &line, const std::string &given)
{
    const Options &options = line.options;
    const int64_t number = given.empty() ? 0 : number_of_call(given);
    if (!given.empty() && !number) throw Failure("undo", "calls are numbered from 1");
    Database database = open_chosen_database(options);
    std::optional<Watch> watch;
    if (options.dry_run || options.changes) watch.emplace(database, options.dry_run);
    char why[4096] = "";
    int64_t undone = 0;
    const int rc = qbdb_journal_undo(database.handle(), database.connection(), number, &undone, why, sizeof why);
    if (rc) {
        const Status status = rc == SQLITE_NOTFOUND     ? Status::kNotFound
                              : rc == SQLITE_CONSTRAINT ? Status::kRefused
                                                        : Status::kFailed;
        throw Failure("undo", why, status);
    }
    const Json outcome = {{"undone", undone}};
    if (watch) return print_changes(outcome, watch->finish(options.output.secrets), options.dry_run, options.output);
    print_outcome(outcome, options.output);
}

}  // namespace

void add_undo(CommandLine &line)
{
    const auto number = std::make_shared<std::string>();
    CLI::App *command = add_command(
        line, "undo", "Bring back what a call of the journal changed", [&line, number] { undo(line, *number); },
        Watching::kOfItsCalls);
    command->add_option("NUMBER", *number, "Which call; the last one that is not undone unless given");
}

std::string caller_name()
{
    const uid_t uid = getuid();
    const passwd *entry = getpwuid(uid);
    return entry && entry->pw_name ? entry->pw_name : "uid " + std::to_string(uid);
}

void check(int rc, const char *what)
{
    if (rc) throw Failure(std::string("the journal ") + what + ": " + sqlite3_errstr(rc), Status::kFailed);
}

int64_t number_of_call(const std::string &text)
{
    return number_from_text('u', text, "number of a call").get<int64_t>();
}

qbdb_journal_state state_of(const Database &database)
{
    qbdb_journal_state state{};
    check(qbdb_journal_get_state(database.handle(), database.connection(), &state), "cannot be read");
    return state;
}

void add_journal(CommandLine &line)
{
    const auto given = std::make_shared<Given>();
    CLI::App *command = add_command(line, "journal", "Keep a journal of what calls change, and look at it",
                                    [&line, given] { act(line, *given); });
    command->add_option("ACTION", given->action, "on, off, status, list, show, stream, apply")
        ->required()
        ->check(CLI::IsMember({"on", "off", "status", "list", "show", "stream", "apply"}));
    command->add_option("NUMBER", given->number,
                        "list: how many calls, the last 20 unless given; show: which call; stream: after which");
    command->add_flag("--follow", given->on, "stream: go on with the calls that come");
    command->add_option("--max-size", given->megabytes, "on: MiB that all calls may take, 64 unless given")
        ->type_name("MIB");
    command->add_option("--max-age", given->days, "on: days that a call is kept, 90 unless given")->type_name("DAYS");
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
