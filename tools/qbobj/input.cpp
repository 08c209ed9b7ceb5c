#include "input.h"

#include <fcntl.h>
#include <signal.h>
#include <string.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "descriptor.h"
#include "failure.h"

namespace qbcli {
namespace {

constexpr size_t kLargestDocument = 256u << 20;
constexpr size_t kLongestLine = 64u << 10;

PrivateText read_all(int fd, const std::string &name)
{
    PrivateText text = private_text();
    PrivateText block(64u << 10, '\0', wiping_memory());
    for (;;) {
        const ssize_t size = read(fd, block.data(), block.size());
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) throw Failure(name, strerror(errno));
        if (size == 0) return text;
        text.append(block.data(), static_cast<size_t>(size));
        if (text.size() > kLargestDocument) throw Failure(name, "is larger than 256 MiB");
    }
}

volatile sig_atomic_t interrupted_by = 0;

void note_signal(int signal)
{
    interrupted_by = signal;
}

/// Reads up to the end of a line, byte by byte so that the next reader finds the rest. False at the end
/// of the input and on a signal.
bool read_line(PrivateText &line)
{
    for (;;) {
        char byte;
        const ssize_t size = read(STDIN_FILENO, &byte, 1);
        if (size < 0 && errno == EINTR && !interrupted_by) continue;
        if (size < 0 && errno != EINTR) throw Failure("standard input", strerror(errno));
        if (size <= 0) return !line.empty() && !interrupted_by;
        if (byte == '\n') return true;
        if (line.size() == kLongestLine) throw Failure("standard input", "the line is too long for a secret");
        line.push_back(byte);
    }
}

/// The terminal without echo. Signals that would end the program wait until the echo is back.
class Silence {
public:
    Silence()
    {
        interrupted_by = 0;
        struct sigaction note {};
        note.sa_handler = note_signal;  // without SA_RESTART: the read returns
        for (size_t i = 0; i < kEnding.size(); i++) sigaction(kEnding[i], &note, &before_[i]);
        struct sigaction ignore {};
        ignore.sa_handler = SIG_IGN;
        sigaction(SIGTSTP, &ignore, &stop_before_);
        tcgetattr(STDIN_FILENO, &terminal_before_);
        termios silent = terminal_before_;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
    }
    ~Silence()
    {
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &terminal_before_);
        for (size_t i = 0; i < kEnding.size(); i++) sigaction(kEnding[i], &before_[i], nullptr);
        sigaction(SIGTSTP, &stop_before_, nullptr);
        if (interrupted_by) raise(interrupted_by);
    }
    Silence(const Silence &) = delete;
    Silence &operator=(const Silence &) = delete;

private:
    static constexpr std::array<int, 4> kEnding = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
    std::array<struct sigaction, kEnding.size()> before_{};
    struct sigaction stop_before_ {};
    termios terminal_before_{};
};

}  // namespace

PrivateText read_file(const std::string &path)
{
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.fd < 0) throw Failure(path, strerror(errno));
    return read_all(file.fd, path);
}

PrivateText read_regular_file(const std::string &path)
{
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (file.fd < 0) throw Failure(path, strerror(errno));
    struct stat status;
    if (fstat(file.fd, &status) != 0) throw Failure(path, strerror(errno));
    if (!S_ISREG(status.st_mode)) throw Failure(path, "is not a file");
    return read_all(file.fd, path);
}

PrivateText StandardInput::document()
{
    if (read_whole_ || read_lines_) throw Failure("standard input", "it is read once, but two values ask for it");
    read_whole_ = true;
    return read_all(STDIN_FILENO, "standard input");
}

PrivateText StandardInput::typed(const std::string &prompt)
{
    PrivateText line = private_text();
    bool complete;
    {
        dprintf(STDERR_FILENO, "%s: ", prompt.c_str());
        const Silence silence;
        complete = read_line(line);
        dprintf(STDERR_FILENO, "\n");  // the user's own was not echoed
    }
    if (!complete || line.empty()) throw Failure(prompt, "nothing was entered");
    return line;
}

PrivateText StandardInput::secret(const std::string &name, bool confirmed)
{
    if (read_whole_) throw Failure(name, "standard input is read already, as JSON");
    if (isatty(STDIN_FILENO)) {
        PrivateText text = typed(name);
        if (confirmed && typed(name + " again") != text) throw Failure(name, "the two entries differ");
        return text;
    }
    read_lines_ = true;
    PrivateText line = private_text();
    if (!read_line(line) || line.empty()) throw Failure(name, "a line was expected on standard input");
    return line;
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
