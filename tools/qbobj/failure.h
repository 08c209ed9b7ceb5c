// What ends a command: a message for the user, with the library's error record when there is one, and the exit status.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "qbobj.h"

namespace qbcli {

/// The program's exit statuses.
enum class Status : int {
    kDone = 0,      ///< Done; "yes"; found.
    kRefused = 1,   ///< The library refused the call.
    kUsage = 2,     ///< Wrong usage: nothing was called.
    kNotFound = 3,  ///< Nothing was found, or nothing changed; "no".
    kFailed = 4,    ///< The database is locked or failed, or the result could not be written.
    kMemory = 5,    ///< Out of memory.
};

/// The class that an operation's code belongs to.
Status status_of(uint32_t code);

struct Failure : std::runtime_error {
    Status status = Status::kUsage;
    std::string operation;        ///< Empty outside of an operation.
    std::optional<int64_t> code;  ///< The operation's code; none when it was not called.
    std::string file;             ///< Where the library reported it; empty when it did not.
    uint32_t line = 0;
    bool says_null = false;  ///< "(null)" in the message can be the caller's own word.

    explicit Failure(const std::string &message) : std::runtime_error(message) {}
    Failure(const std::string &message, Status class_of_it) : std::runtime_error(message), status(class_of_it) {}
    /// @param where What the message is about; may be empty.
    Failure(const std::string &where, const std::string &message)
        : std::runtime_error(where.empty() ? message : where + ": " + message)
    {
    }
    Failure(const std::string &where, const std::string &message, Status class_of_it) : Failure(where, message)
    {
        status = class_of_it;
    }
    /// An operation that failed, and what it reported.
    Failure(const std::string &message, std::string_view name, int64_t result, const ErrorInfo &err, Status class_of_it)
        : std::runtime_error(message),
          status(class_of_it),
          operation(name),
          code(result),
          file(err.file ? err.file : ""),
          line(err.line)
    {
    }
};

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
