// qbobj batch: calls as JSON lines, answered in JSON lines by one process.
#include <fcntl.h>
#include <string.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "arguments.h"
#include "command_line.h"
#include "describe.h"
#include "failure.h"
#include "input.h"
#include "selection.h"

namespace qbcli {
namespace {

/// The lines of a file or of standard input. Each is handed out as soon as it is there, so that a program can wait for
/// an answer before it writes the next call.
class Lines {
public:
    explicit Lines(const std::string &path) : name_(path == "-" ? "standard input" : path)
    {
        if (path == "-") return;
        fd_ = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd_ < 0) throw Failure(name_, strerror(errno));
    }
    ~Lines()
    {
        if (fd_ != STDIN_FILENO) close(fd_);
    }
    Lines(const Lines &) = delete;
    Lines &operator=(const Lines &) = delete;

    /// The next line without its end. False when there is none.
    bool next(PrivateText &line)
    {
        line.clear();
        for (;;) {
            const size_t end = block_.find('\n', at_);
            line.append(block_, at_, end == PrivateText::npos ? end : end - at_);
            if (line.size() > kLongestLine) throw Failure(name_, "a line is longer than 16 MiB");
            if (end != PrivateText::npos) {
                at_ = end + 1;
                return true;
            }
            if (!fill()) return !line.empty();
        }
    }

private:
    static constexpr size_t kLongestLine = 16u << 20;
    static constexpr size_t kBlock = 64u << 10;

    bool fill()
    {
        at_ = 0;
        block_.resize(kBlock);
        ssize_t size;
        do size = read(fd_, block_.data(), block_.size());
        while (size < 0 && errno == EINTR);
        if (size < 0) throw Failure(name_, strerror(errno));
        block_.resize(static_cast<size_t>(size));
        return size > 0;
    }

    std::string name_;
    int fd_ = STDIN_FILENO;
    PrivateText block_ = private_text();
    size_t at_ = 0;
};

/// A line's call and its arguments.
struct Order {
    std::optional<Json> id;
    std::string call;
    std::optional<Json> arguments;
    std::optional<std::vector<std::string>> fields;
};

/// The names of fields in a line.
std::vector<std::string> names_in(const Json &value)
{
    std::vector<std::string> names;
    if (value.is_array())
        for (const Json &name : value)
            if (name.is_string()) names.push_back(name.get<std::string>());
    if (names.empty() || names.size() != value.size()) throw Failure("fields", "an array of names is needed");
    return names;
}

/// Takes a line apart as far as it goes: the id first, so that a refusal can carry it.
void read_order(std::string_view line, Order &order)
{
    Json object = parse_json(line, "the line");
    if (!object.is_object()) throw Failure("a line is a JSON object, {\"call\": …, \"args\": …}");
    if (const auto id = object.find("id"); id != object.end()) order.id = *id;
    for (auto &[name, value] : object.get_ref<Json::object_t &>()) {
        if (name == "id") continue;
        if (name == "call" && value.is_string()) order.call = value.get_ref<std::string &>();
        else if (name == "args" && value.is_structured()) order.arguments = std::move(value);
        else if (name == "args" && value.is_null()) order.arguments.reset();
        else if (name == "fields") order.fields = names_in(value);
        else if (name == "args") throw Failure("args", "an object or an array is needed");
        else if (name == "call") throw Failure("call", "the name of an operation is needed");
        else throw Failure("a line has no member " + name + "; it has call, args, fields and id");
    }
    if (order.call.empty()) throw Failure("the line names no call");
}

/// The members of an answer that tell what came out of a call.
Json answer_of(Database &database, const Options &options, Order &order)
{
    const QbobjOperation &operation = find_operation(order.call);
    try {
        if (operation.changes) refuse_when_read_only(options);
        StandardInput input;
        Arguments arguments(operation, input);
        if (order.arguments) arguments.take(std::move(*order.arguments));
        else refuse_empty_change(operation);
        arguments.judge();
        arguments.checks().refuse_useless();
        std::optional<Selection> selection;
        if (order.fields) selection.emplace(operation, *order.fields);
        Performed done = perform(options, operation, arguments, database);
        Json result = selected(selection, std::move(done.outputs));
        Json answer = {{"result", result.is_discarded() ? Json(nullptr) : std::move(result)}};
        if (done.changes) answer["changes"] = std::move(*done.changes);
        if (!done.warnings.empty()) answer["warnings"] = std::move(done.warnings);
        return answer;
    } catch (Failure &failure) {
        failure.operation = short_name(operation);
        throw;
    }
}

void batch(CommandLine &line, const std::string &path, bool stop_on_error)
{
    Lines lines(path);
    Database database = open_chosen_database(line.options);
    OutputOptions output = line.options.output;
    output.compact = true;
    PrivateText text = private_text();
    while (lines.next(text)) {
        if (text.find_first_not_of(" \t\r") == PrivateText::npos) continue;
        Order order;
        Json answer = Json::object();
        Status status = Status::kDone;
        try {
            read_order(text, order);
            answer = answer_of(database, line.options, order);
        } catch (const Failure &failure) {
            answer = {{"error", failure_to_json(failure)}};
            status = failure.status;
        }
        if (order.id) answer["id"] = std::move(*order.id);
        print_json(answer, output);
        if (status == Status::kDone) continue;
        if (line.status == Status::kDone) line.status = status;
        if (stop_on_error) return;
    }
}

}  // namespace

void add_batch(CommandLine &line)
{
    struct Given {
        std::string path = "-";
        bool stop_on_error = false;
    };
    const auto given = std::make_shared<Given>();
    CLI::App *command = add_command(
        line, "batch", "Make calls that are given as JSON lines",
        [&line, given] { batch(line, given->path, given->stop_on_error); }, Watching::kOfItsCalls);
    command->add_option("FILE", given->path, "The lines; standard input without it, or as -");
    command->add_flag("--stop-on-error", given->stop_on_error, "End with the first call that fails");
    command->footer(
        "A line is {\"call\": OPERATION, \"args\": …}: args as the operation takes them in a JSON argument. Its\n"
        "answer is one line, {\"result\": …} or {\"error\": …}, written before the next line is read. An \"id\" comes\n"
        "back; \"fields\", an array of names, are what is wanted of the result.\n"
        "Each call is a transaction of its own. The exit status is 0, or that of the first call that failed.");
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
