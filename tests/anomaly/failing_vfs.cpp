#include "anomaly/failing_vfs.h"

#include <cstring>

namespace test {
namespace {

FailingFiles *layer = nullptr;  // SQLite's functions have no context
sqlite3_vfs *real = nullptr;

/// SQLite's view of a file: our methods, then the system's file.
struct File {
    sqlite3_file base;
    sqlite3_file *under() { return reinterpret_cast<sqlite3_file *>(this + 1); }
};

sqlite3_file *under(sqlite3_file *file)
{
    return reinterpret_cast<File *>(file)->under();
}

int refusal(Request request)
{
    return layer->refuses(request) ? layer->refusal().rc : SQLITE_OK;
}

int close_file(sqlite3_file *file)
{
    layer->hold(-1);
    return under(file)->pMethods->xClose(under(file));
}

int read_file(sqlite3_file *file, void *buffer, int size, sqlite3_int64 at)
{
    const int rc = refusal(Request::read);
    if (rc == SQLITE_OK) return under(file)->pMethods->xRead(under(file), buffer, size, at);
    memset(buffer, 0xA5, static_cast<size_t>(size));
    if (layer->refusal().half) under(file)->pMethods->xRead(under(file), buffer, size / 2, at);
    return rc;
}

int write_file(sqlite3_file *file, const void *buffer, int size, sqlite3_int64 at)
{
    const int rc = refusal(Request::write);
    if (rc == SQLITE_OK) return under(file)->pMethods->xWrite(under(file), buffer, size, at);
    if (layer->refusal().half && size > 1) under(file)->pMethods->xWrite(under(file), buffer, size / 2, at);
    return rc;
}

int truncate_file(sqlite3_file *file, sqlite3_int64 size)
{
    const int rc = refusal(Request::truncate);
    return rc == SQLITE_OK ? under(file)->pMethods->xTruncate(under(file), size) : rc;
}

/// Nothing is gained by making the disk busy: what was written is there for whoever reads it.
int sync_file(sqlite3_file *, int)
{
    return refusal(Request::sync);
}

int file_size(sqlite3_file *file, sqlite3_int64 *size)
{
    const int rc = refusal(Request::file_size);
    return rc == SQLITE_OK ? under(file)->pMethods->xFileSize(under(file), size) : rc;
}

int lock_file(sqlite3_file *file, int level)
{
    const int rc = refusal(Request::lock);
    return rc == SQLITE_OK ? under(file)->pMethods->xLock(under(file), level) : rc;
}

int unlock_file(sqlite3_file *file, int level)
{
    return under(file)->pMethods->xUnlock(under(file), level);
}

int check_lock(sqlite3_file *file, int *locked)
{
    return under(file)->pMethods->xCheckReservedLock(under(file), locked);
}

int control_file(sqlite3_file *file, int what, void *argument)
{
    return under(file)->pMethods->xFileControl(under(file), what, argument);
}

int sector_size(sqlite3_file *file)
{
    return under(file)->pMethods->xSectorSize(under(file));
}

int characteristics(sqlite3_file *file)
{
    return under(file)->pMethods->xDeviceCharacteristics(under(file));
}

int map_index(sqlite3_file *file, int region, int size, int extend, void volatile **memory)
{
    const int rc = refusal(Request::index_map);
    if (rc == SQLITE_OK) return under(file)->pMethods->xShmMap(under(file), region, size, extend, memory);
    *memory = nullptr;
    return rc;
}

/// Taking a lock can fail, giving it back cannot.
int lock_index(sqlite3_file *file, int first, int count, int flags)
{
    const int rc = flags & SQLITE_SHM_LOCK ? refusal(Request::index_lock) : SQLITE_OK;
    return rc == SQLITE_OK ? under(file)->pMethods->xShmLock(under(file), first, count, flags) : rc;
}

void index_barrier(sqlite3_file *file)
{
    under(file)->pMethods->xShmBarrier(under(file));
}

int unmap_index(sqlite3_file *file, int remove)
{
    return under(file)->pMethods->xShmUnmap(under(file), remove);
}

constexpr sqlite3_io_methods kMethods = {
    .iVersion = 2,
    .xClose = close_file,
    .xRead = read_file,
    .xWrite = write_file,
    .xTruncate = truncate_file,
    .xSync = sync_file,
    .xFileSize = file_size,
    .xLock = lock_file,
    .xUnlock = unlock_file,
    .xCheckReservedLock = check_lock,
    .xFileControl = control_file,
    .xSectorSize = sector_size,
    .xDeviceCharacteristics = characteristics,
    .xShmMap = map_index,
    .xShmLock = lock_index,
    .xShmBarrier = index_barrier,
    .xShmUnmap = unmap_index,
    .xFetch = nullptr,
    .xUnfetch = nullptr,
};

int open_file(sqlite3_vfs *, const char *name, sqlite3_file *file, int flags, int *given)
{
    file->pMethods = nullptr;
    int rc = refusal(Request::open);
    if (rc == SQLITE_OK) rc = real->xOpen(real, name, under(file), flags, given);
    if (rc != SQLITE_OK) return rc;
    file->pMethods = &kMethods;
    layer->hold(1);
    return SQLITE_OK;
}

int remove_file(sqlite3_vfs *, const char *name, int)
{
    const int rc = refusal(Request::remove);
    return rc == SQLITE_OK ? real->xDelete(real, name, 0) : rc;
}

int access_file(sqlite3_vfs *, const char *name, int flags, int *answer)
{
    const int rc = refusal(Request::access);
    return rc == SQLITE_OK ? real->xAccess(real, name, flags, answer) : rc;
}

/// The same numbers each time, so that two runs of a call leave the same bytes.
int randomness(sqlite3_vfs *, int size, char *bytes)
{
    memset(bytes, 7, static_cast<size_t>(size));
    return size;
}

sqlite3_vfs vfs;

}  // namespace

FailingFiles::FailingFiles()
{
    real = sqlite3_vfs_find(nullptr);
    vfs = *real;
    vfs.pNext = nullptr;
    vfs.zName = "failing";
    vfs.szOsFile = static_cast<int>(sizeof(File)) + real->szOsFile;
    vfs.xOpen = open_file;
    vfs.xDelete = remove_file;
    vfs.xAccess = access_file;
    vfs.xRandomness = randomness;
    vfs.xSleep = [](sqlite3_vfs *, int microseconds) { return microseconds; };  // nobody else is waited for
    layer = this;
    sqlite3_vfs_register(&vfs, 1);
}

FailingFiles::~FailingFiles()
{
    sqlite3_vfs_unregister(&vfs);
    sqlite3_vfs_register(real, 1);
    layer = nullptr;
}

const char *FailingFiles::undisturbed() const
{
    return real->zName;
}

void FailingFiles::start(const Refusal &refusal, long nth, bool on)
{
    refusal_ = refusal;
    counts_.fill(0);
    nth_ = nth;
    on_ = on;
    refused_ = false;
    watching_ = true;
}

bool FailingFiles::refuses(Request request)
{
    if (!watching_) return false;
    const long count = ++counts_[static_cast<size_t>(request)];
    if (nth_ == 0 || request != refusal_.request || count < nth_ || (count > nth_ && !on_)) return false;
    refused_ = true;
    return true;
}

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
