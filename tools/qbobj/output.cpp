#include "output.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "table.h"
#include "utf8.h"

namespace qbcli {
namespace {

constexpr size_t kUsualWidth = 80;

std::string json_text(const Json &value, bool compact)
{
    constexpr int kIndent = 2;
    // Bytes that are not UTF-8 can stand in a database that others wrote.
    return value.dump(compact ? -1 : kIndent, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace

size_t terminal_width()
{
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
    if (const char *columns = getenv("COLUMNS"); columns && atoi(columns) > 0)
        return static_cast<size_t>(atoi(columns));
    return isatty(STDOUT_FILENO) ? kUsualWidth : 0;
}

bool prints_json(const OutputOptions &options)
{
    return options.json || options.compact || (!options.table && !isatty(STDOUT_FILENO));
}

void print_text(std::string_view text)
{
    const bool written = fwrite(text.data(), 1, text.size(), stdout) == text.size() && fflush(stdout) == 0;
    if (!written) throw Failure(std::string("the result cannot be written: ") + strerror(errno), Status::kFailed);
}

void print_json(const Json &value, const OutputOptions &options)
{
    print_text(json_text(value, options.compact));
}

void print_outcome(const Json &outcome, const OutputOptions &options)
{
    if (outcome.is_discarded()) return;
    if (prints_json(options)) print_json(outcome, options);
    else print_text(lay_out(outcome, terminal_width()));
}

namespace {

/// A message of the library for people: "Invalid UserName ((null))" comes of a name that was not given.
std::string readable(std::string text)
{
    static constexpr std::string_view kNull = "(null)";
    static constexpr std::string_view kWords = "not given";
    for (size_t at = 0; (at = text.find(kNull, at)) != std::string::npos; at += kWords.size())
        text.replace(at, kNull.size(), kWords);
    return printable(text);
}

}  // namespace

Json failure_to_json(const Failure &failure)
{
    const auto text_or_null = [](const std::string &text) { return text.empty() ? Json(nullptr) : Json(text); };
    return {{"operation", text_or_null(failure.operation)},
            {"code", failure.code ? Json(*failure.code) : Json(nullptr)},
            {"message", failure.what()},
            {"file", text_or_null(failure.file)},
            {"line", failure.line ? Json(failure.line) : Json(nullptr)},
            {"status", static_cast<int>(failure.status)}};
}

void print_failure(const Failure &failure, const OutputOptions &options)
{
    if (options.json) {
        fputs(json_text(failure_to_json(failure), options.compact).c_str(), stderr);
        return;
    }
    std::string text = "qbobj: ";
    if (!failure.operation.empty()) text += failure.operation + ": ";
    if (failure.code && *failure.code >= 0) text += std::to_string(*failure.code) + " ";
    text += failure.what();
    fprintf(stderr, "%s\n", (failure.says_null ? printable(text) : readable(text)).c_str());
}

void print_warning(const std::string &operation, const std::string &message)
{
    fprintf(stderr, "%s\n", readable("qbobj: " + operation + ": warning: " + message).c_str());
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
