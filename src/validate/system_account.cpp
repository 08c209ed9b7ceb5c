// The operating system's own accounts, as "getent" tells them.
#include "validate/system_account.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "frame/program.h"

namespace qb {
namespace {

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
    const char *const arguments[] = {"getent", "passwd", "--", name, nullptr};
    Program getent;
    if (getent.start(arguments)) return -1;
    char line[1024];
    const bool complete = read_all(getent.output, line);
    const int status = getent.wait();
    if (!complete || (status != 0 && status != kUnknownKey)) return -1;
    int32_t id = 0;
    if (status != 0 || sscanf(line, "%*[^:]:%*[^:]:%d:", &id) != 1) return 1;
    if (is_number(name) && !is_line_of(line, name)) return 1;
    if (uid) *uid = id;
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
