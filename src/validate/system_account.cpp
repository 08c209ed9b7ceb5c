// The operating system's own accounts, as "getent" tells them. No shell has a part in it: a name is one
// argument, whatever characters it holds.
#include "validate/system_account.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace qb {
namespace {

/// Both ends of a pipe, closed on every path.
struct Pipe {
    int end[2] = {-1, -1};

    Pipe() = default;
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;
    ~Pipe()
    {
        close_end(0);
        close_end(1);
    }

    bool open() { return pipe2(end, O_CLOEXEC) == 0; }
    void close_end(int which)
    {
        if (end[which] >= 0) close(end[which]);
        end[which] = -1;
    }
};

/// Starts getent with its output in the pipe and nothing to read or to complain to.
bool start(const char *name, Pipe &output, pid_t *child)
{
    posix_spawn_file_actions_t actions;
    if (posix_spawn_file_actions_init(&actions)) return false;
    char *const arguments[] = {const_cast<char *>("getent"), const_cast<char *>("passwd"), const_cast<char *>("--"),
                               const_cast<char *>(name), nullptr};
    // The output first: in a process without standard files the pipe may have one of their numbers.
    const bool started = posix_spawn_file_actions_adddup2(&actions, output.end[1], 1) == 0 &&
                         posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0) == 0 &&
                         posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0) == 0 &&
                         posix_spawnp(child, arguments[0], &actions, nullptr, arguments, environ) == 0;
    posix_spawn_file_actions_destroy(&actions);
    return started;
}

/// Reads to the end, so that the writer is never stopped, and keeps what there is room for.
template <size_t N>
bool read_all(int file, char (&text)[N])
{
    size_t size = 0;
    char rest[512];
    for (;;) {
        const bool room = size < N - 1;
        const ssize_t got = read(file, room ? text + size : rest, room ? N - 1 - size : sizeof rest);
        if (got > 0 && room) size += static_cast<size_t>(got);
        if (got == 0 || (got < 0 && errno != EINTR)) {
            text[size] = '\0';
            return got == 0;
        }
    }
}

/// Waits for the child. -1 when it was killed; 0 when a process that ignores the end of its children does
/// not learn it: then the output tells enough.
int exit_status(pid_t child)
{
    int status = 0;
    while (waitpid(child, &status, 0) < 0)
        if (errno != EINTR) return 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Whether getent takes a name for a number, and so for a uid: as strtoul() reads it, sign and blanks too.
bool is_number(const char *name)
{
    name += strspn(name, " \t\n\v\f\r");
    name += *name == '-' || *name == '+';
    return *name && name[strspn(name, "0123456789")] == '\0';
}

bool is_line_of(const char *line, const char *name)
{
    const size_t length = strlen(name);
    return strncmp(line, name, length) == 0 && line[length] == ':';
}

}  // namespace

int32_t check_system_account(const char *name, int32_t *uid)
{
    constexpr int kUnknownKey = 2;  // getent's exit status
    if (!name || !*name || *name == '-') return 1;
    Pipe output;
    pid_t child = -1;
    if (!output.open() || !start(name, output, &child)) return -1;
    output.close_end(1);
    char line[1024];
    const bool complete = read_all(output.end[0], line);
    const int status = exit_status(child);
    if (!complete || (status != 0 && status != kUnknownKey)) return -1;
    int32_t id = 0;
    if (status != 0 || sscanf(line, "%*[^:]:%*[^:]:%d:", &id) != 1) return 1;
    if (is_number(name) && !is_line_of(line, name)) return 1;
    if (uid) *uid = id;
    return 0;
}

}  // namespace qb
