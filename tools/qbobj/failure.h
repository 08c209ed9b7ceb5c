// What ends a command: a message for the user, with the library's error record when there is one.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "qbobj.h"

namespace qbcli {

struct Failure : std::runtime_error {
    std::string operation;        ///< Empty outside of an operation.
    std::optional<int64_t> code;  ///< The operation's code; none when it was not called.
    std::string file;             ///< Where the library reported it; empty when it did not.
    uint32_t line = 0;

    explicit Failure(const std::string &message) : std::runtime_error(message) {}
    /// @param where What the message is about; may be empty.
    Failure(const std::string &where, const std::string &message)
        : std::runtime_error(where.empty() ? message : where + ": " + message)
    {
    }
    /// An operation that failed, and what it reported.
    Failure(const std::string &message, std::string_view name, int64_t result, const ErrorInfo &err)
        : std::runtime_error(message), operation(name), code(result), file(err.file ? err.file : ""), line(err.line)
    {
    }
};

}  // namespace qbcli
