// The program: its options and sub-commands. Each sub-command is one add_… function, listed in kCommands;
// operations are found in the library's table.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "arguments.h"
#include "call.h"
#include "database.h"
#include "failure.h"
#include "output.h"

namespace qbcli {

struct Options {
    DatabaseOptions database;
    OutputOptions output;
    bool trace = false;
    bool dry_run = false;  ///< An operation is called and taken back.
    bool changes = false;  ///< What an operation changes is printed.
    std::string emit;      ///< The language of a program that makes the call; empty to make it.
};

/// The sub-commands find here what they share.
struct CommandLine {
    CLI::App app;
    Options options;
    std::vector<std::string> words;     ///< All of them, as they were given.
    std::vector<std::string> verbatim;  ///< An operation's words after "--".
    Status status = Status::kDone;      ///< Of a command that did not fail.
};

/// @name Sub-commands @{
void add_init(CommandLine &line);
void add_list(CommandLine &line);
void add_describe(CommandLine &line);
void add_schema(CommandLine &line);
void add_completion(CommandLine &line);
void add_import_users(CommandLine &line);
void add_batch(CommandLine &line);
void add_edit(CommandLine &line);
void add_journal(CommandLine &line);
void add_undo(CommandLine &line);
void add_follow(CommandLine &line);
void add_export(CommandLine &line);
void add_import(CommandLine &line);
void add_diff(CommandLine &line);
void add_help(CommandLine &line);
void add_version(CommandLine &line);
/// @}
/// Declares the options and sub-commands, and the operations among the words.
void set_up(CommandLine &line, const std::vector<std::string> &words);

/// What --dry-run and --changes are to a command.
enum class Watching { kNone, kOfItsCalls };
/// Declares a sub-command. `act` runs once every word that was given has been understood.
CLI::App *add_command(CommandLine &line, const std::string &name, const std::string &what, std::function<void()> act,
                      Watching watching = Watching::kNone);
/// Adds an operation as a sub-command.
void add_operation(CommandLine &line, const std::string &name);

/// An operation's words: what the option parser left, then what stood after "--".
std::vector<std::string> words_of(const CommandLine &line);

/// What came out of a call.
struct Performed {
    Outputs outputs;
    std::optional<Json> changes;        ///< Where the options ask for them.
    std::vector<std::string> warnings;  ///< Of what went well all the same.
    Status status;
};
/// Calls an operation, and takes the call back if the options say so.
Performed perform(const Options &options, const QbobjOperation &operation, const Arguments &arguments,
                  Database &database);

/// Asks for the secrets that are wanted, calls the operation and prints what came out.
void make_call(CommandLine &line, const QbobjOperation &operation, Arguments &arguments, Database &database);

/// Refuses a word that looks like an option and is none of the program's or the command's.
[[noreturn]] void refuse_unknown_option(const CommandLine &line, const std::string &word,
                                        const CLI::App *command = nullptr);

/// Refuses what changes the database when it is opened for reading only.
void refuse_when_read_only(const Options &options);

/// Opens the database that the options name.
Database open_chosen_database(const Options &options);

/// Runs the program.
/// @return Its exit status, a Status.
int run(const std::vector<std::string> &words);

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
