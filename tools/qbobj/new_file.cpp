#include "new_file.h"

#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "descriptor.h"
#include "failure.h"

namespace qbcli {
namespace {

[[noreturn]] void fail(const std::string &path)
{
    throw Failure(path, strerror(errno), Status::kFailed);
}

/// The file beside the place; removed unless it was put there.
struct Beside {
    int folder;
    std::string name;
    bool there = false;

    Beside(int directory, const std::string &place)
        : folder(directory), name("." + place.substr(0, 200) + "." + std::to_string(getpid()) + ".new")
    {
    }
    Beside(const Beside &) = delete;
    Beside &operator=(const Beside &) = delete;
    ~Beside()
    {
        if (there) unlinkat(folder, name.c_str(), 0);
    }
};

/// Databases begin so.
constexpr std::string_view kDatabase = "SQLite format 3";

void check_place(int folder, const std::string &name, const std::string &path)
{
    struct stat status;
    if (fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno != ENOENT) fail(path);
        return;
    }
    if (S_ISLNK(status.st_mode)) throw Failure(path, "is a link; nothing is written through links", Status::kFailed);
    if (!S_ISREG(status.st_mode)) throw Failure(path, "is there and is not a file", Status::kFailed);
    const Descriptor file(openat(folder, name.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (file.fd < 0) fail(path);
    char start[kDatabase.size()];
    const ssize_t size = read(file.fd, start, sizeof start);
    if (size >= 0 && std::string_view(start, static_cast<size_t>(size)) == kDatabase)
        throw Failure(path, "is a database, which is not replaced", Status::kFailed);
}

void write_all(int fd, std::string_view content, const std::string &path)
{
    while (!content.empty()) {
        const ssize_t size = write(fd, content.data(), content.size());
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) fail(path);
        content.remove_prefix(static_cast<size_t>(size));
    }
    if (fsync(fd) != 0) fail(path);
}

}  // namespace

void write_new_file(const std::string &path, std::string_view content)
{
    const size_t slash = path.rfind('/');
    const std::string name = path.substr(slash == std::string::npos ? 0 : slash + 1);
    const std::string directory = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    if (name.empty() || name == "." || name == "..") throw Failure(path, "is not the name of a file");
    const Descriptor folder(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.fd < 0) fail(path);
    check_place(folder.fd, name, path);
    Beside beside(folder.fd, name);
    const Descriptor file(openat(folder.fd, beside.name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW,
                                 S_IRUSR | S_IWUSR));
    if (file.fd < 0) fail(path);
    beside.there = true;
    write_all(file.fd, content, path);
    if (renameat(folder.fd, beside.name.c_str(), folder.fd, name.c_str()) != 0) fail(path);
    beside.there = false;
    if (fsync(folder.fd) != 0) fail(path);
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
