// A child process that reports what it does through a pipe until it is killed.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <vector>

#include "stress/stress.h"

namespace test {

/// One report: a number that is begun, and then done.
struct Report {
    uint32_t number;
    uint32_t done;
};

inline bool report(int pipe, uint32_t number, bool done)
{
    const Report line{number, done};
    return write(pipe, &line, sizeof line) == sizeof line;
}

/// Runs a function in a process of its own, kills it after a while; what it reported.
inline std::vector<Report> kill_after(int microseconds, const std::function<void(int)> &body)
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
    for (Report line; read(ends[0], &line, sizeof line) == sizeof line;) reports.push_back(line);
    close(ends[0]);
    EXPECT_EQ(waitpid(child, nullptr, 0), child);
    return reports;
}

}  // namespace test
