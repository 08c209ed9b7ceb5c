// The use of the home folders: what the file system says of a subvolume under quota, else a walk through the folder.
#include <linux/btrfs.h>
#include <linux/btrfs_tree.h>
#include <linux/magic.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <time.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "import.h"

namespace qdb {
namespace {

// ---- btrfs ----------------------------------------------------------------------------------------------------------

/// Finds an item of a file system's quota tree. Null when there is none, or the file system does not tell.
const char *find_quota_item(int fd, uint32_t type, uint64_t id, size_t size, btrfs_ioctl_search_args *search)
{
    *search = {};
    btrfs_ioctl_search_key &key = search->key;
    key.tree_id = BTRFS_QUOTA_TREE_OBJECTID;
    key.min_type = key.max_type = type;
    key.min_offset = key.max_offset = id;
    key.max_transid = UINT64_MAX;
    key.nr_items = 1;
    if (ioctl(fd, BTRFS_IOC_TREE_SEARCH, search) != 0 || key.nr_items == 0) return nullptr;
    btrfs_ioctl_search_header header;
    memcpy(&header, search->buf, sizeof header);
    return header.type == type && header.offset == id && header.len >= size ? search->buf + sizeof header : nullptr;
}

/// Whether quota is on and its figures are right: they are not while they are being counted anew.
bool quota_is_consistent(int fd)
{
    btrfs_ioctl_search_args search;
    btrfs_qgroup_status_item status;
    const char *item =
        find_quota_item(fd, BTRFS_QGROUP_STATUS_KEY, 0, offsetof(btrfs_qgroup_status_item, rescan), &search);
    if (!item) return false;
    memcpy(&status, item, offsetof(btrfs_qgroup_status_item, rescan));
    const uint64_t flags = le64toh(status.flags);
    constexpr uint64_t kUnsettled = BTRFS_QGROUP_STATUS_FLAG_RESCAN | BTRFS_QGROUP_STATUS_FLAG_INCONSISTENT;
    return (flags & BTRFS_QGROUP_STATUS_FLAG_ON) && !(flags & kUnsettled);
}

/// What a folder uses that is a btrfs subvolume under quota; false for any other.
bool ask_file_system(int fd, const struct stat &status, uint64_t *bytes)
{
    struct statfs system;
    if (status.st_ino != BTRFS_FIRST_FREE_OBJECTID || fstatfs(fd, &system) != 0) return false;
    if (system.f_type != BTRFS_SUPER_MAGIC || !quota_is_consistent(fd)) return false;
    btrfs_ioctl_ino_lookup_args lookup = {};
    lookup.objectid = BTRFS_FIRST_FREE_OBJECTID;
    if (ioctl(fd, BTRFS_IOC_INO_LOOKUP, &lookup) != 0) return false;
    btrfs_ioctl_search_args search;
    btrfs_qgroup_info_item info;
    const char *item = find_quota_item(fd, BTRFS_QGROUP_INFO_KEY, lookup.treeid, sizeof info, &search);
    if (!item) return false;
    memcpy(&info, item, sizeof info);
    *bytes = le64toh(info.rfer);
    return true;
}

// ---- A walk ---------------------------------------------------------------------------------------------------------

constexpr const char *kNoMemory = "Out of memory.";
constexpr size_t kDeepest = 256;         // folders in folders: each holds a descriptor while it is walked
constexpr size_t kBlock = 512;           // the unit of st_blocks
constexpr uint32_t kBetweenClocks = 64;  // entries between two looks at the clock

uint64_t now_ms()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1000 + static_cast<uint64_t>(now.tv_nsec) / 1000000;
}

/// Numbers of the files with several names that were met already.
struct SeenFiles {
    ino_t *slots = nullptr;  // 0 is free: no file has this number
    size_t size = 0;
    size_t count = 0;

    SeenFiles() = default;
    SeenFiles(const SeenFiles &) = delete;
    SeenFiles &operator=(const SeenFiles &) = delete;
    ~SeenFiles() { free(slots); }

    /// Where a number stands or is to stand.
    ino_t *slot_of(ino_t number) const
    {
        size_t at = (number * 0x9E3779B97F4A7C15u) >> 16 & (size - 1);
        while (slots[at] && slots[at] != number) at = (at + 1) & (size - 1);
        return &slots[at];
    }
    bool grow()
    {
        SeenFiles larger;
        larger.size = size ? size * 2 : 64;
        larger.slots = static_cast<ino_t *>(calloc(larger.size, sizeof(ino_t)));
        if (!larger.slots) return false;
        for (size_t i = 0; i < size; i++)
            if (slots[i]) *larger.slot_of(slots[i]) = slots[i];
        std::swap(slots, larger.slots);
        std::swap(size, larger.size);
        return true;
    }
    /// Notes a file: 1 when it is new, 0 when it was met before, -1 without memory.
    int note(ino_t number)
    {
        if (count * 2 >= size && !grow()) return -1;
        ino_t *slot = slot_of(number);
        if (*slot) return 0;
        *slot = number;
        count++;
        return 1;
    }
};

/// How far a measurement may go.
struct Bounds {
    uint32_t entries;
    uint64_t deadline_ms;
};

/// Adds up a folder. The folders on the way to the present one are open, so that nobody can put a link in the way.
struct Walk {
    Bounds bounds;
    dev_t device;
    uint64_t bytes = 0;
    uint32_t entries = 0;
    SeenFiles seen;
    DIR *path[kDeepest];
    size_t depth = 0;

    Walk(const Bounds &given, dev_t on) : bounds(given), device(on) {}
    Walk(const Walk &) = delete;
    Walk &operator=(const Walk &) = delete;
    ~Walk()
    {
        while (depth) closedir(path[--depth]);
    }

    /// Goes into a folder, whose descriptor it takes. Null, or why it cannot.
    const char *enter(int fd)
    {
        DIR *dir = depth < kDeepest ? fdopendir(fd) : nullptr;
        if (dir) {
            path[depth++] = dir;
            return nullptr;
        }
        const int error = errno;
        close(fd);
        if (depth == kDeepest) return "Its folders lie too deep in each other.";
        return error == ENOMEM ? kNoMemory : strerror(error);
    }

    const char *within_bounds()
    {
        if (entries >= bounds.entries) return "It has too many files.";
        if (entries++ % kBetweenClocks == 0 && now_ms() >= bounds.deadline_ms) return "The time is up.";
        return nullptr;
    }

    /// Counts an entry of the present folder. Null, or why it cannot. What vanishes meanwhile is not there.
    const char *count(const char *name)
    {
        if (const char *why = within_bounds()) return why;
        const int here = dirfd(path[depth - 1]);
        struct stat status;
        if (fstatat(here, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return errno == ENOENT ? nullptr : strerror(errno);
        if (status.st_dev != device) return nullptr;
        if (!S_ISDIR(status.st_mode) && status.st_nlink > 1) {
            const int noted = seen.note(status.st_ino);
            if (noted <= 0) return noted < 0 ? kNoMemory : nullptr;
        }
        bytes += static_cast<uint64_t>(status.st_blocks) * kBlock;
        if (!S_ISDIR(status.st_mode)) return nullptr;
        const int fd = open_folder(here, name, O_NOFOLLOW);
        if (fd < 0) return errno == ENOENT || errno == ENOTDIR || errno == ELOOP ? nullptr : strerror(errno);
        return enter(fd);
    }

    /// Walks from the folder that was entered first. Null, or why it did not come to the end.
    const char *run()
    {
        while (depth) {
            errno = 0;
            const dirent *entry = readdir(path[depth - 1]);
            if (!entry) {
                if (errno) return strerror(errno);
                closedir(path[--depth]);
            } else if (strcmp(entry->d_name, ".") != 0 && strcmp(entry->d_name, "..") != 0) {
                if (const char *why = count(entry->d_name)) return why;
            }
        }
        return nullptr;
    }
};

/// What a folder uses. Null, or why it cannot be measured. A folder that is not there uses nothing.
const char *measure(int root, const char *home, const Bounds &bounds, uint64_t *bytes)
{
    *bytes = 0;
    while (*home == '/') home++;
    const int fd = open_folder(root, *home ? home : ".", O_NOFOLLOW);
    if (fd < 0) return errno == ENOENT ? nullptr : strerror(errno);
    struct stat status;
    if (fstat(fd, &status) != 0) {
        const int error = errno;
        close(fd);
        return strerror(error);
    }
    if (ask_file_system(fd, status, bytes)) {
        close(fd);
        return nullptr;
    }
    Walk walk(bounds, status.st_dev);
    const char *why = walk.enter(fd);
    if (!why) why = walk.run();
    if (!why) *bytes = walk.bytes + static_cast<uint64_t>(status.st_blocks) * kBlock;
    return why;
}

// ---- All of them ----------------------------------------------------------------------------------------------------

/// The home folders: result rows of id and path, sorted by path. Every user has one but root, whose directory lies on
/// the system's own disk, and users that were deleted.
struct Homes {
    char **cells = nullptr;
    int count = 0;
    int columns = 0;
    Homes() = default;
    Homes(const Homes &) = delete;
    Homes &operator=(const Homes &) = delete;
    ~Homes() { sqlite3_free_table(cells); }
    int32_t id(int i) const { return static_cast<int32_t>(strtol(cells[ptrdiff_t{i + 1} * columns], nullptr, 10)); }
    const char *path(int i) const { return cells[ptrdiff_t{i + 1} * columns + 1]; }
    /// The number of a user's row; 0 when there is none.
    int index_of(int32_t user) const
    {
        int i = 0;
        while (i < count && id(i) != user) i++;
        return i < count ? i : 0;
    }
};

int read_homes(qbdb_t *qbdb, sqlite3 *db, Homes *homes)
{
    if (const int rc = qbdb_sql_exec_mprintf(qbdb, db, nullptr, __FILE__, __LINE__,
                                             "DELETE FROM `_hf_zfs_stat` WHERE user_id NOT IN (SELECT id FROM `$user` "
                                             "WHERE is_privileged>=0 AND id<>0 AND home LIKE '/%%')"))
        return rc;
    return qbdb_sql_get_table_mprintf(
        qbdb, db, nullptr, __FILE__, __LINE__, &homes->cells, &homes->count, &homes->columns,
        "SELECT id,home FROM `$user` WHERE is_privileged>=0 AND id<>0 AND home LIKE '/%%' ORDER BY "
        "home,id");
}

Bounds bounds_of(const qbdb_import_options &options)
{
    const uint32_t entries = options.home_entries ? options.home_entries : QBDB_IMPORT_HOME_ENTRIES;
    const uint32_t milliseconds = options.home_milliseconds ? options.home_milliseconds : QBDB_IMPORT_HOME_MS;
    return {entries, now_ms() + milliseconds};
}

void log_unmeasured(qbdb_t *qbdb, const char *home, const char *why)
{
    if (qbdb->log_level > 1)
        qbdb_log(qbdb, __FILE__, __LINE__, 2, 0, "The home folder %s is not measured. %s\n", home, why);
}

int write_use(qbdb_t *qbdb, sqlite3 *db, int32_t user, uint64_t bytes)
{
    return qbdb_sql_exec_mprintf(qbdb, db, nullptr, __FILE__, __LINE__,
                                 "INSERT OR REPLACE INTO `_hf_zfs_stat` (user_id,used)VALUES(%d,%llu)", user,
                                 static_cast<unsigned long long>(bytes));
}

}  // namespace

// The folders are taken in turn from where the time was up before. A folder for whom alone the time does not suffice
// must not keep the others waiting: the next import begins behind it.
int import_home_folders(qbdb_t *qbdb, sqlite3 *db)
{
    Homes homes;
    if (const int rc = read_homes(qbdb, db, &homes)) return rc;
    const Descriptor root(open_folder(AT_FDCWD, import_root(qbdb)));
    if (!root) return log_unmeasured(qbdb, import_root(qbdb), strerror(errno)), SQLITE_CANTOPEN;
    const Bounds bounds = bounds_of(qbdb->internal->import);
    const int first = homes.index_of(qbdb->internal->import_home_next);
    qbdb->internal->import_home_next = 0;
    const char *measured = nullptr;  // the last folder, which several users may have
    uint64_t bytes = 0;
    for (int i = 0; i < homes.count; i++) {
        const int at = (first + i) % homes.count;
        const bool again = measured && strcmp(measured, homes.path(at)) == 0;
        const char *why = again ? nullptr : measure(root.fd, homes.path(at), bounds, &bytes);
        measured = why ? nullptr : homes.path(at);
        if (why) {
            log_unmeasured(qbdb, homes.path(at), why);
            if (why == kNoMemory) return SQLITE_NOMEM;
            if (now_ms() < bounds.deadline_ms) continue;
            qbdb->internal->import_home_next = homes.id((at + (i == 0)) % homes.count);
            return 0;
        }
        if (const int rc = write_use(qbdb, db, homes.id(at), bytes)) return rc;
    }
    return 0;
}

}  // namespace qdb
// SPDX-License-Identifier: Apache-2.0
