#include "frame/program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

namespace qb {
namespace {

int spawn(const char *const *arguments, int output, pid_t *child)
{
    posix_spawn_file_actions_t actions;
    if (const int why = posix_spawn_file_actions_init(&actions)) return why;
    // Output first: in a process started without standard files, the pipe may have been given one of their numbers.
    int why = posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    if (!why) why = posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    if (!why) why = posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    if (!why) why = posix_spawnp(child, arguments[0], &actions, nullptr, const_cast<char *const *>(arguments), environ);
    posix_spawn_file_actions_destroy(&actions);
    return why;
}

}  // namespace

int Program::start(const char *const *arguments)
{
    int end[2];
    if (pipe2(end, O_CLOEXEC)) return errno;
    output = end[0];
    const int why = spawn(arguments, end[1], &child);
    close(end[1]);
    if (!why) return 0;
    child = -1;
    close_output();
    return why;
}

FILE *Program::open_output()
{
    FILE *stream = output >= 0 ? fdopen(output, "r") : nullptr;
    if (stream) output = -1;
    return stream;
}

int Program::wait()
{
    if (child < 0) return -1;
    int status = 0;
    pid_t ended;
    do ended = waitpid(child, &status, 0);
    while (ended < 0 && errno == EINTR);
    child = -1;
    if (ended < 0) return 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void Program::close_output()
{
    if (output >= 0) close(output);
    output = -1;
}

Program::~Program()
{
    close_output();
    wait();
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
