// The importers: what the system itself tells, brought into the database.
#pragma once

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

#include "handle.h"

namespace qdb {

/// An open file or directory, closed on every path.
struct Descriptor {
    int fd;
    explicit Descriptor(int opened) : fd(opened) {}
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor()
    {
        if (fd >= 0) close(fd);
    }
    explicit operator bool() const { return fd >= 0; }
};

/// A directory being read.
struct Folder {
    DIR *dir;
    /// Takes an opened directory. `errno` tells why there is nothing to read.
    explicit Folder(int fd) : dir(fd >= 0 ? fdopendir(fd) : nullptr)
    {
        const int error = errno;
        if (!dir && fd >= 0) close(fd);
        errno = error;
    }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;
    ~Folder()
    {
        if (dir) closedir(dir);
    }
    /// The next entry but "." and ".."; null at the end.
    const dirent *next() const
    {
        for (const dirent *entry = dir ? readdir(dir) : nullptr; entry; entry = readdir(dir))
            if (strcmp(entry->d_name, ".") != 0 && strcmp(entry->d_name, "..") != 0) return entry;
        return nullptr;
    }
};

/// The directory that stands for "/".
inline const char *import_root(const qbdb_t *qbdb)
{
    return qbdb->internal->import.root ? qbdb->internal->import.root : "/";
}

/// Opens a directory.
inline int open_folder(int at, const char *path, int flags = 0)
{
    return openat(at, path, O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC | flags);
}

/// Brings `$disk_info` in line with the disks that the kernel shows. 0, or a result code: the inventory is as it was.
int import_disks(qbdb_t *qbdb, sqlite3 *db);

/// Brings `_hf_zfs_stat` in line with what the home folders use. 0, or a result code of the database.
int import_home_folders(qbdb_t *qbdb, sqlite3 *db);

}  // namespace qdb
// SPDX-License-Identifier: Apache-2.0
