// A program that runs beside a call and writes its output into a pipe. No shell has a part in it: an argument is one
// argument, whatever characters it holds.
#pragma once

#include <sys/types.h>

#include <cstdio>

namespace qb {

struct Program {
    pid_t child = -1;
    int output = -1;  // the end to read from

    Program() = default;
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;
    /// Whatever is left of its output is not read, and the program is waited for.
    ~Program();

    /// Starts a program of the PATH, with nothing to read or to complain to. The arguments begin with its name and end
    /// with null. 0, or why it did not start (ENOENT: there is no such program).
    int start(const char *const *arguments);

    /// Hands the output over as a stream, which the caller closes; null when there is none.
    FILE *open_output();

    /// Waits for the end. The exit status; -1 when it was killed; 0 when a process that ignores the end of its children
    /// does not learn it: then the output tells enough.
    int wait();

private:
    void close_output();
};

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
