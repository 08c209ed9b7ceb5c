// One call of an operation, and what a family of operations needs for its calls.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace test {

/// Where the appliance's accounts come from.
enum class Accounts { local, directory, live };

/// One call of an operation: its arguments by name, as JSON.
struct Trial {
    const char *operation;  // without the prefix
    const char *label;      // tells the calls of one operation apart
    const char *arguments;
    Accounts accounts = Accounts::local;
    uint32_t code = 0;      // what it returns when nothing fails
};

/// An operation, or an answer, that a rule of the tests does not hold for, and the reason.
struct Exempt {
    const char *what;
    const char *why;
};

/// An answer other than 2 and 5 with a message that a lack of memory may bring, and the reason.
struct MemoryException {
    const char *operation;
    uint32_t rc;
    const char *message;  // begins with this
    const char *why;
};

/// A family's calls, made on the common population and its own.
struct Family {
    const char *name;  // of its golden file in failures/
    const char *population;
    std::span<const Trial> trials;
    /// Operations that a failed call may leave outputs of. A value that an operation returns is none.
    std::span<const Exempt> left_outputs{};
    /// Operations that fail without filling the error record.
    std::span<const Exempt> silent{};
    /// Operations that report a failure and succeed all the same.
    std::span<const Exempt> goes_on{};
    /// How answers begin that do not tell of a failed request for a file in the usual words, as that test prints them.
    std::span<const Exempt> odd_answers{};
    std::span<const MemoryException> memory_exceptions{};
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
