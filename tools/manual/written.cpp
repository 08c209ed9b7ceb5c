// The pages that people wrote, and what the program and the headers say of themselves in their midst.
#include <functional>
#include <sstream>
#include <stdexcept>

#include "command_line.h"
#include "example.h"
#include "failure.h"
#include "pages.h"

namespace manual {
namespace {

using qbcli::Status;

/// "-d , Fl -database Ar FILE": the names of an option as marks.
std::string marks_of(const CLI::Option &option)
{
    std::string marks;
    const auto add = [&](const std::string &name) { marks += (marks.empty() ? "Fl " : " , Fl ") + argument(name); };
    for (const std::string &name : option.get_snames()) add(name);
    for (const std::string &name : option.get_lnames()) add("-" + name);
    if (option.get_items_expected_max() > 0) marks += " Ar " + argument(option.get_type_name());
    return marks;
}

void write_option(Page &page, const CLI::Option &option)
{
    page.raw(".It " + marks_of(option)).line(sentence(option.get_description()));
    if (!option.get_envname().empty())
        page.line("Without it the environment variable").raw(".Ev " + option.get_envname()).line("says it.");
    if (!option.get_default_str().empty()) page.line("Unless given, it is " + option.get_default_str() + ".");
}

bool is_flag(const CLI::Option *option)
{
    return !option->get_positional();
}

bool is_help(const CLI::Option *option)
{
    return option->check_lname("help");
}

/// What is said below a command: lines that are set off stay as they are, the others are paragraphs.
void write_footer(Page &page, const std::string &footer)
{
    std::istringstream lines(footer);
    std::string prose;
    std::string program;
    const auto flush = [&] {
        if (!prose.empty()) page.paragraph().line(prose);
        if (!program.empty()) page.display(program);
        prose.clear();
        program.clear();
    };
    for (std::string line; std::getline(lines, line);) {
        const bool set_off = line.starts_with("  ");
        if (line.empty() || (set_off ? !prose.empty() : !program.empty())) flush();
        if (set_off) program += line.substr(2) + "\n";
        else if (!line.empty()) prose += (prose.empty() ? "" : " ") + line;
    }
    flush();
}

std::string words_of(const CLI::App &command)
{
    std::string words = ".It Ic " + argument(command.get_name());
    for (const CLI::Option *option : command.get_options(is_flag))
        if (!is_help(option))
            words += option->get_required() ? " " + marks_of(*option) : " Oo " + marks_of(*option) + " Oc";
    for (const CLI::Option *option : command.get_options([](const CLI::Option *o) { return o->get_positional(); }))
        words += option->get_required() ? " Ar " + argument(option->get_name(true))
                                        : " Oo Ar " + argument(option->get_name(true)) + " Oc";
    return words;
}

void write_command(Page &page, const CLI::App &command)
{
    page.raw(words_of(command)).line(sentence(command.get_description()));
    const auto options = command.get_options([](const CLI::Option *option) { return !is_help(option); });
    if (!options.empty()) page.raw(".Bl -tag -width Ds");
    for (const CLI::Option *option : options) {
        if (option->get_positional())
            page.macro("It Ar", {option->get_name(true)}).line(sentence(option->get_description()));
        else write_option(page, *option);
    }
    if (!options.empty()) page.raw(".El");
    write_footer(page, command.get_footer());
}

/// Hands the program's own declaration of its options and commands to `write`.
void with_program(const std::function<void(const CLI::App &)> &write)
{
    qbcli::CommandLine line;
    qbcli::set_up(line, {});
    write(line.app);
}

void write_status(Page &page, Status status, const std::string &words)
{
    std::string codes;
    for (const QbobjCode *row = qbobj_codes(); row->code; row++)
        if (qbcli::status_of(row->code) == status) codes += (codes.empty() ? "" : ", ") + std::to_string(row->code);
    page.raw(".It " + std::to_string(static_cast<int>(status))).line(words);
    if (!codes.empty()) page.line((codes.find(',') == std::string::npos ? "Code " : "Codes ") + codes + ".");
}

/// A command, and the program that does the same.
void write_program(Page &page, const Source &source)
{
    const QbobjOperation &operation = *qbobj_find_operation("addLog");
    const qbcli::Json arguments = source.call(operation);
    page.line("With --emit c the command").display(shell_example(operation, arguments));
    page.paragraph().line("prints this program:").display(c_program(operation, arguments));
}

/// Writes what a line "@WORD@" stands for.
void write_placeholder(Page &page, const Source &source, const std::string &word)
{
    static const std::map<std::string, void (*)(Page &)> kWriters = {
        {"OPTIONS", write_options}, {"COMMANDS", write_commands}, {"OPERATIONS", write_operations},
        {"TYPES", write_types},     {"CODES", write_codes},       {"STATUSES", write_statuses}};
    if (const auto known = kWriters.find(word); known != kWriters.end()) return known->second(page);
    if (word == "PROGRAM") return write_program(page, source);
    if (const auto header = source.headers.find(word); header != source.headers.end())
        return write_header(page, header->second);
    throw std::runtime_error("@" + word + "@: nothing is known by that name");
}

}  // namespace

void write_options(Page &page)
{
    with_program([&](const CLI::App &app) {
        page.raw(".Bl -tag -width Ds");
        for (const CLI::Option *option : app.get_options(is_flag)) write_option(page, *option);
        page.raw(".El");
    });
}

void write_commands(Page &page)
{
    with_program([&](const CLI::App &app) {
        page.raw(".Bl -tag -width Ds");
        for (const CLI::App *command :
             app.get_subcommands([](const CLI::App *each) { return !each->get_group().empty(); }))
            write_command(page, *command);
        page.raw(".El");
    });
}

void write_statuses(Page &page)
{
    page.raw(".Bl -tag -width Ds");
    write_status(page, Status::kDone, "Done. An answer is \"yes\", an id was found.");
    write_status(page, Status::kRefused, "The library refused the call.");
    write_status(page, Status::kUsage, "Wrong usage: nothing was called.");
    write_status(page, Status::kNotFound,
                 "Nothing was found, or nothing changed. An answer is \"no\", an id was not found.");
    write_status(page, Status::kFailed,
                 "The database is locked, cannot be opened, or failed; or the result could not be written.");
    write_status(page, Status::kMemory, "Out of memory.");
    page.raw(".El");
}

void write_header(Page &page, const headers::Header &header)
{
    if (!header.constants.empty()) {
        page.raw(".Bl -tag -width Ds");
        for (const headers::Constant &each : header.constants)
            page.raw(".It Dv " + each.name + " Pq " + argument(each.value)).text(each.meaning);
        page.raw(".El");
    }
    for (const headers::Type &type : header.types) {
        page.paragraph().text(type.meaning).display(type.code);
        write_members(page, type.members);
    }
    for (const headers::Function &hook : header.hooks) write_function(page, hook);
    for (const headers::Function &function : header.functions)
        if (!qbobj_find_operation(function.name.c_str())) write_function(page, function);
}

std::string written_page(const Source &source, const std::string &name)
{
    const size_t dot = name.rfind('.');
    Page page(name.substr(0, dot), std::stoi(name.substr(dot + 1)), source.date);
    std::istringstream lines(headers::read_file(source.texts + "/" + name));
    for (std::string line; std::getline(lines, line);) {
        if (line.size() > 2 && line.front() == '@' && line.back() == '@')
            write_placeholder(page, source, line.substr(1, line.size() - 2));
        else if (!line.starts_with(".\\\"")) page.raw(line);
    }
    return page.source();
}

}  // namespace manual
// SPDX-License-Identifier: Apache-2.0
