// Small helpers: paths, days of the week, lists, random numbers, space figures, snapshot folders.
#include <apr_strings.h>
#include <fts.h>
#include <strings.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "handle.h"

namespace {

constexpr const char *kDays[][2] = {{"Sun", "Sunday"},   {"Mon", "Monday"}, {"Tue", "Tuesday"}, {"Wed", "Wednesday"},
                                    {"Thu", "Thursday"}, {"Fri", "Friday"}, {"Sat", "Saturday"}};

bool is_blank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// One item of a comma-separated list, blanks around it dropped.
struct Item {
    const char *begin;
    size_t size;
};

/// Takes the next item that is not empty from the list at `*at`; false at its end.
bool next_item(const char **at, Item *item)
{
    while (**at) {
        const char *begin = *at;
        const char *end = begin + strcspn(begin, ",");
        *at = *end ? end + 1 : end;
        while (begin < end && is_blank(*begin)) begin++;
        while (begin < end && is_blank(end[-1])) end--;
        *item = {begin, static_cast<size_t>(end - begin)};
        if (item->size) return true;
    }
    return false;
}

bool is_folder(const char *path)
{
    struct stat status;
    return stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

/// Bytes on disk of a file or a folder's tree. Other file systems mounted inside are not part of it. False
/// when something in it cannot be read.
bool tree_size(char *path, uint64_t *bytes)
{
    char *paths[] = {path, nullptr};
    FTS *tree = fts_open(paths, FTS_PHYSICAL | FTS_XDEV | FTS_NOCHDIR, nullptr);
    if (!tree) return false;
    bool whole = true;
    *bytes = 0;
    while (const FTSENT *entry = fts_read(tree)) {
        if (entry->fts_info == FTS_NS || entry->fts_info == FTS_DNR || entry->fts_info == FTS_ERR) whole = false;
        if (entry->fts_info == FTS_NS || entry->fts_info == FTS_ERR || entry->fts_info == FTS_DP) continue;
        // A file with several names counts once: each name has its part.
        const struct stat *status = entry->fts_statp;
        const uint64_t names = S_ISDIR(status->st_mode) || status->st_nlink == 0 ? 1 : status->st_nlink;
        *bytes += static_cast<uint64_t>(status->st_blocks) * 512 / names;
    }
    fts_close(tree);
    return whole;
}

/// A data set that is a file system of its own knows its use; a plain folder's is added up.
bool used_bytes(char *path, uint64_t *bytes)
{
    char parent[PATH_MAX];
    struct stat own;
    struct stat above;
    const int size = snprintf(parent, sizeof parent, "%s/..", path);
    if (size < 0 || size >= static_cast<int>(sizeof parent) || lstat(path, &own) != 0) return false;
    struct statvfs space;
    const bool mounted =
        S_ISDIR(own.st_mode) && stat(parent, &above) == 0 && (own.st_dev != above.st_dev || own.st_ino == above.st_ino);
    if (!mounted || statvfs(path, &space) != 0) return tree_size(path, bytes);
    *bytes = static_cast<uint64_t>(space.f_blocks - space.f_bfree) * space.f_frsize;
    return true;
}

bool available_bytes(char *path, uint64_t *bytes)
{
    struct statvfs space;
    if (statvfs(path, &space) != 0) return false;
    *bytes = static_cast<uint64_t>(space.f_bavail) * space.f_frsize;
    return true;
}

constexpr struct {
    const char *name;
    bool (*read)(char *path, uint64_t *bytes);
} kAttributes[] = {{"usedbydataset", used_bytes}, {"used", used_bytes}, {"available", available_bytes}};

}  // namespace

const char *qbdb_normalize_smb_path(qbdb_t *qbdb, const char *path)
{
    if (!path) return nullptr;
    char *normal = qdb::copy_text(qdb::pool_of(qbdb), path);
    if (!normal) return nullptr;
    char *out = normal;
    for (const char *at = normal; *at; at++) {
        const char c = *at == '\\' ? '/' : *at;
        if (c != '/' || out == normal || out[-1] != '/') *out++ = c;
    }
    *out = '\0';
    return normal;
}

int32_t qbdb_dow_to_i(const char *text)
{
    int32_t days = 0;
    Item item;
    for (const char *at = text ? text : ""; next_item(&at, &item);)
        for (size_t day = 0; day < sizeof kDays / sizeof *kDays; day++)
            for (const char *word : kDays[day])
                if (strlen(word) == item.size && strncasecmp(item.begin, word, item.size) == 0) days |= 1 << day;
    return days;
}

const char *qbdb_i_to_dow(qbdb_t *qbdb, int32_t dow)
{
    char text[sizeof kDays / sizeof *kDays * 4 + 1] = "";
    char *out = text;
    for (size_t day = 0; day < sizeof kDays / sizeof *kDays; day++) {
        if (!(dow & 1 << day)) continue;
        if (out != text) *out++ = ',';
        memcpy(out, kDays[day][0], 4);
        out += 3;
    }
    return qdb::copy_text(qdb::pool_of(qbdb), text);
}

int qbdb_fs_get_attr_scanf(qbdb_t *, const char *dataset, const char *attr, const char *format, ...)
{
    if (!dataset || !*dataset || !attr) return -1;
    char path[PATH_MAX];
    const int size = snprintf(path, sizeof path, "%s%s", *dataset == '/' ? "" : "/", dataset);
    if (size < 0 || size >= static_cast<int>(sizeof path)) return -1;
    for (const auto &attribute : kAttributes) {
        if (strcmp(attribute.name, attr) != 0) continue;
        uint64_t bytes = 0;
        if (!attribute.read(path, &bytes)) return -1;
        char text[24];
        snprintf(text, sizeof text, "%llu", static_cast<unsigned long long>(bytes));
        va_list args;
        va_start(args, format);
        const int values = vsscanf(text, format, args);
        va_end(args);
        return values >= 1 ? 0 : -1;
    }
    return -1;
}

char **qbdb_csv_to_array(qbdb_t *qbdb, const char *csv)
{
    apr_pool_t *pool = qdb::pool_of(qbdb);
    size_t count = 0;
    Item item;
    for (const char *at = csv ? csv : ""; next_item(&at, &item);) count++;
    auto **items = static_cast<char **>(apr_palloc(pool, (count + 1) * sizeof(char *)));
    if (!items) return nullptr;
    items[count] = nullptr;
    size_t i = 0;
    for (const char *at = csv ? csv : ""; next_item(&at, &item); i++) {
        items[i] = qdb::copy_text(pool, item.begin, item.size);
        if (!items[i]) return nullptr;
    }
    return items;
}

uint32_t qbdb_rand(void)
{
    uint32_t number = 0;
    ssize_t got;
    do got = getrandom(&number, sizeof number, 0);
    while (got < 0 && errno == EINTR);  // early after a start the kernel may have to be waited for
    if (got != static_cast<ssize_t>(sizeof number)) abort();
    return number;
}

int snapshot_get_path(const char *dir, const char *name, const char **result)
{
    // Where the file systems in use show their snapshots.
    static constexpr const char *kFormats[] = {"%s/.snapshot/%s", "%s/.snapshots/%s", "%s/.zfs/snapshot/%s"};
    static thread_local char path[PATH_MAX];
    *result = nullptr;
    if (!dir || !name || !*name || strchr(name, '/') || strcmp(name, ".") == 0 || strcmp(name, "..") == 0) return -1;
    for (const char *format : kFormats) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
        const int size = snprintf(path, sizeof path, format, dir, name);
#pragma GCC diagnostic pop
        if (size < 0 || size >= static_cast<int>(sizeof path) || !is_folder(path)) continue;
        *result = path;
        return 0;
    }
    return -1;
}
// SPDX-License-Identifier: Apache-2.0
