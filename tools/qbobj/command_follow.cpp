// qbobj follow, journal stream, journal apply: copies that are kept current.
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <iostream>
#include <memory>
#include <optional>
#include <thread>

#include "command_line.h"
#include "follow.h"
#include "journal.h"
#include "json_text.h"
#include "qbdb_standby.h"

namespace qbcli {
namespace {

constexpr uint32_t kBatch = 100;  // calls that are read at a time: no longer is the original's log kept from shrinking
constexpr auto kPause = std::chrono::milliseconds(200);

/// What is done with each call, and how far it is.
struct Progress {
    Database *copy = nullptr;
    int64_t last = 0;
    int64_t calls = 0;
    std::optional<Failure> failure;

    static int apply(void *context, const qbdb_journal_entry *entry)
    {
        auto *progress = static_cast<Progress *>(context);
        char why[4096] = "";
        const int rc =
            qbdb_journal_apply(progress->copy->handle(), progress->copy->connection(), entry, why, sizeof why);
        if (rc) progress->failure = Failure(why, rc == SQLITE_CONSTRAINT ? Status::kRefused : Status::kFailed);
        progress->last = entry->id;
        progress->calls += !rc;
        return rc ? SQLITE_ABORT : 0;
    }

    static int print(void *context, const qbdb_journal_entry *entry)
    {
        auto *progress = static_cast<Progress *>(context);
        print_text(line_of(*entry));
        progress->last = entry->id;
        return 0;
    }
};

/// Reads calls until there are no more. Throws what stops it.
void read_on(const Database &from, Progress &progress, qbdb_journal_reader reader)
{
    for (int64_t before = -1; before != progress.last;) {
        before = progress.last;
        const int rc = qbdb_journal_read(from.handle(), from.connection(), before, kBatch, reader, &progress);
        if (progress.failure) throw Failure(*progress.failure);
        check(rc, "cannot be read");
    }
}

/// Refuses to continue a copy from a journal that cannot.
void check_continuation(const qbdb_journal_state &original, const qbdb_journal_state &copy)
{
    if (!original.on) throw Failure("the original keeps no journal: \"qbobj journal on\"", Status::kRefused);
    if (copy.last > original.last || (copy.last == original.last && copy.mark != original.mark))
        throw Failure("the copy was changed by somebody else, or is one of another database; make it anew",
                      Status::kRefused);
    if (original.last > copy.last && (!original.first || original.first > copy.last + 1))
        throw Failure(
            "the journal does not hold call " + std::to_string(copy.last + 1) + " any more; make the copy anew",
            Status::kRefused);
}

DatabaseOptions options_for(const CommandLine &line, const std::string &path, bool read_only)
{
    DatabaseOptions options = line.options.database;
    options.path = path;
    options.read_only = read_only;
    return options;
}

const std::string &chosen_path(const CommandLine &line)
{
    if (line.options.database.path.empty()) throw Failure("which database? Give -d FILE, or set QBOBJ_DB");
    return line.options.database.path;
}

void make_copy(const Database &from, const std::string &path)
{
    struct stat status;
    if (lstat(path.c_str(), &status) == 0) return;
    qbdb_journal_state state = state_of(from);
    if (!state.on) throw Failure("the original keeps no journal: \"qbobj journal on\"", Status::kRefused);
    char why[512] = "";
    if (qbdb_copy_database(from.handle(), from.connection(), path.c_str(), why, sizeof why))
        throw Failure(why, Status::kFailed);
}

void follow(const CommandLine &line, const std::string &original, const std::string &copy, bool once)
{
    Database from(options_for(line, original, true));
    make_copy(from, copy);
    Database to(options_for(line, copy, false));
    Progress progress;
    progress.copy = &to;
    for (;;) {
        const qbdb_journal_state reached = state_of(to);
        check_continuation(state_of(from), reached);
        progress.last = reached.last;
        read_on(from, progress, Progress::apply);
        if (once) break;
        std::this_thread::sleep_for(kPause);
    }
    print_outcome({{"applied", progress.calls}, {"last", state_of(to).last}}, line.options.output);
}

/// Applies one line of a stream.
void apply_line(Progress &progress, const std::string &text, int64_t number)
{
    const Failure damaged("line " + std::to_string(number) + " of the stream is no call; nothing of it was applied",
                          Status::kFailed);
    std::string operation;
    std::string who;
    std::string arguments;
    std::string bytes;
    qbdb_journal_entry entry{};
    try {
        const Json json = parse_json(text, "the stream");
        const auto get_id = [&json](const char *name) { return json.at(name).get<int64_t>(); };
        entry.id = get_id("call");
        entry.time = get_id("time");
        entry.undoes = get_id("undoes");
        entry.previous = get_id("previous");
        entry.mark = get_id("mark");
        operation = json.at("operation").get<std::string>();
        who = json.at("who").get<std::string>();
        if (!from_hexadecimal(json.at("arguments").get<std::string>(), arguments)) throw Failure(damaged);
        if (!from_hexadecimal(json.at("changes").get<std::string>(), bytes)) throw Failure(damaged);
    } catch (const std::exception &) {
        throw Failure(damaged);
    }
    entry.operation = operation.c_str();
    entry.who = who.c_str();
    entry.arguments = arguments.c_str();
    entry.changes = bytes.data();
    entry.size = static_cast<int>(bytes.size());
    Progress::apply(&progress, &entry);
    if (progress.failure) throw Failure(*progress.failure);
}

}  // namespace

std::string line_of(const qbdb_journal_entry &entry)
{
    // The arguments may hold bytes that are no text: they go over as the changes do.
    const Json json = {{"call", entry.id},
                       {"time", entry.time},
                       {"operation", entry.operation},
                       {"who", entry.who},
                       {"undoes", entry.undoes},
                       {"previous", entry.previous},
                       {"mark", entry.mark},
                       {"arguments", hexadecimal(entry.arguments, std::string_view(entry.arguments).size())},
                       {"changes", hexadecimal(entry.changes, static_cast<size_t>(entry.size))}};
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

void stream_journal(const CommandLine &line, int64_t after, bool on)
{
    if (isatty(STDOUT_FILENO))
        throw Failure("journal stream", "not on a terminal: secrets stand in it in clear. Write it into a pipe");
    Database from(options_for(line, chosen_path(line), true));
    Progress progress;
    const qbdb_journal_state state = state_of(from);
    if (!state.on) throw Failure("journal stream", "the database keeps no journal", Status::kRefused);
    if (after && state.first > after + 1)
        throw Failure("journal stream", "the journal does not hold call " + std::to_string(after + 1) + " any more",
                      Status::kRefused);
    progress.last = after;
    for (;;) {
        read_on(from, progress, Progress::print);
        if (!on) return;
        std::this_thread::sleep_for(kPause);
    }
}

void apply_stream(const CommandLine &line)
{
    Database to(options_for(line, chosen_path(line), false));
    Progress progress;
    progress.copy = &to;
    const int64_t before = state_of(to).last;
    std::string text;
    for (int64_t number = 1; std::getline(std::cin, text); number++) {
        if (std::cin.eof())
            throw Failure("the stream ends within line " + std::to_string(number) + "; nothing of it was applied",
                          Status::kFailed);
        apply_line(progress, text, number);
    }
    const int64_t last = state_of(to).last;  // calls that were there already do not count
    print_outcome({{"applied", last - before}, {"last", last}}, line.options.output);
}

void add_follow(CommandLine &line)
{
    struct Given {
        std::string from;
        std::string to;
        bool once = false;
    };
    const auto given = std::make_shared<Given>();
    CLI::App *command = add_command(line, "follow", "Keep a copy of a database current from its journal",
                                    [&line, given] { follow(line, given->from, given->to, given->once); });
    command->add_option("--from", given->from, "The database that is followed")->type_name("FILE")->required();
    command->add_option("--to", given->to, "The copy; made when there is none")->type_name("FILE")->required();
    command->add_flag("--once", given->once, "Stop when the copy is current");
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
