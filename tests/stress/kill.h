// A child process that reports what it does through a pipe until it is killed.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <vector>

#include "stress/stress.h"

namespace stress {

/// Writes a report into the pipe. False when there is no room.
template <class Report>
bool send(int pipe, const Report &report)
{
    return write(pipe, &report, sizeof report) == sizeof report;
}

/// Runs a function in a process of its own and kills it after a while.
/// @return What it reported through the pipe that it got.
template <class Report>
std::vector<Report> kill_after(int microseconds, const std::function<void(int)> &body)
{
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    fcntl(ends[1], F_SETPIPE_SZ, 1 << 20);  // it shall not wait for its reader
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        body(ends[1]);
        _exit(0);
    }
    close(ends[1]);
    usleep(static_cast<useconds_t>(microseconds));
    kill(child, SIGKILL);
    std::vector<Report> reports;
    for (Report report; read(ends[0], &report, sizeof report) == sizeof report;) reports.push_back(report);
    close(ends[0]);
    EXPECT_EQ(waitpid(child, nullptr, 0), child);
    return reports;
}

}  // namespace stress
// SPDX-License-Identifier: Apache-2.0
