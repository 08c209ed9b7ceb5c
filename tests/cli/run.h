// Running the built program, and functions, with captured output or on a pseudo-terminal.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "fixture/fixture.h"
#include "fixture/paths.h"

namespace test {

struct Result {
    int status = -1;  ///< Exit status; 128 + signal number when a signal ended it.
    std::string out;  ///< On a terminal all that it showed.
    std::string err;
};

inline std::string program()
{
    return build_path("tools/qbobj/qbobj");
}

inline int exit_status(int status)
{
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

[[noreturn]] inline void execute(const std::vector<std::string> &words)
{
    std::vector<char *> argv;
    for (const std::string &word : words) argv.push_back(const_cast<char *>(word.c_str()));
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    _exit(127);
}

/// Runs a command with an input, captures both outputs.
/// @param prepare Called in the new process first.
inline Result run_command(const std::vector<std::string> &words, const std::string &input = "",
                          const std::function<void()> &prepare = {})
{
    int pipes[3][2];
    for (auto &ends : pipes)
        if (pipe2(ends, O_CLOEXEC) != 0) abort();
    fflush(stdout);  // what waits in the buffer is not the child's to write
    const pid_t child = fork();
    if (child == 0) {
        dup2(pipes[0][0], 0);
        dup2(pipes[1][1], 1);
        dup2(pipes[2][1], 2);
        if (prepare) prepare();
        execute(words);
    }
    close(pipes[0][0]);
    close(pipes[1][1]);
    close(pipes[2][1]);
    signal(SIGPIPE, SIG_IGN);  // a program that refuses its arguments reads no input
    if (!input.empty()) (void)!write(pipes[0][1], input.data(), input.size());  // small: fits the pipe
    close(pipes[0][1]);
    Result result;
    pollfd outputs[2] = {{pipes[1][0], POLLIN, 0}, {pipes[2][0], POLLIN, 0}};
    while (outputs[0].fd >= 0 || outputs[1].fd >= 0) {
        poll(outputs, 2, -1);
        for (int i = 0; i < 2; i++) {
            if (outputs[i].fd < 0 || !outputs[i].revents) continue;
            char buffer[4096];
            const ssize_t size = read(outputs[i].fd, buffer, sizeof buffer);
            if (size > 0) (i == 0 ? result.out : result.err).append(buffer, static_cast<size_t>(size));
            else close(std::exchange(outputs[i].fd, -1));
        }
    }
    int status = 0;
    waitpid(child, &status, 0);
    result.status = exit_status(status);
    return result;
}

/// What is waited for on a terminal, and what is typed then.
using Dialogue = std::vector<std::pair<std::string, std::string>>;

/// Runs a function in a process of its own on a terminal.
inline Result run_on_terminal(const std::function<int()> &body, const Dialogue &dialogue = {},
                              unsigned short columns = 80)
{
    winsize size{};
    size.ws_row = 24;
    size.ws_col = columns;
    int terminal = -1;
    fflush(stdout);  // what waits in the buffer is not the child's to write
    const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
    if (child == 0) _exit(body());
    Result result;
    size_t seen = 0;
    size_t step = 0;
    for (;;) {
        char buffer[4096];
        pollfd wait = {terminal, POLLIN, 0};
        if (poll(&wait, 1, 20000) <= 0) {
            ADD_FAILURE() << "the program waits; so far: " << result.out;
            kill(child, SIGKILL);
            break;
        }
        const ssize_t count = read(terminal, buffer, sizeof buffer);
        if (count <= 0) break;  // EIO: the last process has closed it
        result.out.append(buffer, static_cast<size_t>(count));
        const size_t at = step < dialogue.size() ? result.out.find(dialogue[step].first, seen) : std::string::npos;
        if (at == std::string::npos) continue;
        seen = at + dialogue[step].first.size();
        usleep(50000);  // let the prompt's echo setting take effect, as a person would
        const std::string &typed = dialogue[step++].second;
        if (write(terminal, typed.data(), typed.size()) < 0) break;
    }
    close(terminal);
    int status = 0;
    waitpid(child, &status, 0);
    result.status = exit_status(status);
    // A terminal ends its lines with CR and LF.
    for (size_t at = 0; (at = result.out.find("\r\n", at)) != std::string::npos;) result.out.erase(at, 1);
    EXPECT_EQ(step, dialogue.size()) << "not everything that was waited for came: " << result.out;
    return result;
}

/// A fresh database, closed, and the program to be run on it.
struct Program : testing::Test {
    TemporaryDirectory directory;
    std::string path = directory.path + "/appliance.db";

    Program()
    {
        unsetenv("QBOBJ_DB");
        unsetenv("COLUMNS");
        EXPECT_EQ(run({"init", path, "--volume", "tank"}).status, 0);
    }

    Result run(std::vector<std::string> words, const std::string &input = "") const
    {
        words.insert(words.begin(), program());
        return run_command(words, input);
    }

    /// Runs it on the fixture's database.
    Result call(std::vector<std::string> words, const std::string &input = "") const
    {
        words.insert(words.begin(), {"-d", path});
        return run(words, input);
    }

    std::string file(const std::string &name, const std::string &content) const
    {
        const std::string whole = directory.path + "/" + name;
        FILE *stream = fopen(whole.c_str(), "w");
        if (stream) {
            fwrite(content.data(), 1, content.size(), stream);
            fclose(stream);
        }
        return whole;
    }

    /// A query's first value, read beside the program.
    std::string value(const std::string &sql) const
    {
        sqlite3 *db = nullptr;
        sqlite3_stmt *stmt = nullptr;
        std::string text;
        if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK &&
            sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr) == SQLITE_OK && sqlite3_step(stmt) == SQLITE_ROW)
            if (const auto *column = reinterpret_cast<const char *>(sqlite3_column_text(stmt, 0))) text = column;
        sqlite3_finalize(stmt);
        sqlite3_close(db);
        return text;
    }

    std::string count() const { return value("SELECT COUNT(*) FROM `$log`"); }
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
