#include "services/tivo_devices.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <memory>

#include "frame/list.h"

namespace qb {
namespace {

constexpr char kStateFile[] = "/var/lib/kestrelcast/status";
constexpr int kAttempts = 15;
constexpr size_t kLineSize = 512;
constexpr long kMostLines = 4096;  // far more than a house has devices; a file that goes on and on is none of ours

struct CloseFile {
    void operator()(FILE *file) const { fclose(file); }
};
using File = std::unique_ptr<FILE, CloseFile>;

/// Opens the state file, unless it is something other than a file: a pipe would hold us up.
File open_state_file(CallContext *ctx)
{
    const int descriptor = open(kStateFile, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0) return nullptr;
    struct stat about;
    FILE *file = nullptr;
    if (fstat(descriptor, &about) == 0 && S_ISREG(about.st_mode)) file = noted(ctx, fdopen(descriptor, "r"));
    if (!file) close(descriptor);
    return File(file);
}

bool contains(const char *text, std::initializer_list<const char *> words)
{
    for (const char *word : words)
        if (strstr(text, word)) return true;
    return false;
}

/// Whether a device takes part, as its state tells; null when it does not tell.
const char *activity_of(const char *status)
{
    if (contains(status, {"archiving", "ready"})) return "true";
    if (contains(status, {"verifying", "unauthorized", "unconfigured"})) return "false";
    return nullptr;
}

/// The text between the brackets of a line that opens a section, which is cut there; else null.
char *section_name(char *line)
{
    char *end = line[0] == '[' ? strrchr(line, ']') : nullptr;
    if (!end) return nullptr;
    *end = '\0';
    return line + 1;
}

/// The text after "status=" up to the end of the line; else null.
const char *status_text(char *line)
{
    constexpr char kStatus[] = "status=";
    constexpr size_t kLength = sizeof kStatus - 1;
    if (strncmp(line, kStatus, kLength) != 0) return nullptr;
    line[strcspn(line, "\r\n")] = '\0';
    return line + kLength;
}

enum class State { settled, searching };

/// One reading of the file.
struct Reading {
    CallContext *ctx;
    TIVOhostsAcl *first = nullptr;
    List<TIVOhostsAcl> list{&first};
    TIVOhostsAcl *device = nullptr;  // whose section it is
    bool of_service = false;         // or it is the service's own

    void open_section(const char *name)
    {
        of_service = strcmp(name, "info") == 0;
        device = of_service ? nullptr : list.append(ctx);
        if (device) device->name = copy_text(ctx, name);
    }
    State take_status(const char *status)
    {
        if (of_service) return strstr(status, "scanning") ? State::searching : State::settled;
        if (!device || device->status) return State::settled;
        if (strstr(status, "waiting")) return State::searching;
        device->status = copy_text(ctx, status);
        device->active = activity_of(status);
        return State::settled;
    }
    State read(FILE *file)
    {
        char line[kLineSize];
        for (long lines = 0; lines < kMostLines && fgets(line, sizeof line, file); lines++) {
            if (const char *name = section_name(line)) open_section(name);
            else if (const char *status = status_text(line); status && take_status(status) == State::searching)
                return State::searching;
        }
        return State::settled;
    }
};

void wait_a_second()
{
    timespec left{1, 0};
    while (nanosleep(&left, &left) != 0) {
    }
}

}  // namespace

uint32_t read_tivo_devices(CallContext *ctx, TIVOhostsAcl **devices)
{
    *devices = nullptr;
    for (int attempt = 1; attempt <= kAttempts; attempt++) {
        const File file = open_state_file(ctx);
        Reading reading{ctx};
        const State state = file ? reading.read(file.get()) : State::settled;
        TRY_MEMORY(ctx, "Failed to allocate resource for TIVOhostsAcl.");
        if (state == State::settled) {
            *devices = reading.first;
            return 0;
        }
        if (attempt < kAttempts) wait_a_second();
    }
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
