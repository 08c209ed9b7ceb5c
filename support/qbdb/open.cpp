// Opening and creating a database, closing it, the handle's pools.
#include <apr_allocator.h>
#include <apr_general.h>
#include <apr_strings.h>
#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <initializer_list>

#include "recorder.h"
#include "schema.h"

namespace {

constexpr uint32_t kApplicationId = 0x51424F42;  // stands in the file's header
constexpr size_t kPoolKeptFree = 4u << 20;       // bytes that an emptied pool keeps for its next use
constexpr int64_t kBriefWaitUs = 50;
constexpr int64_t kShortestNapUs = 20;
constexpr int64_t kLongestNapUs = 800;
constexpr const char *kExists = "is an appliance database already";

struct Opening {
    const char *path;
    char *text;
    size_t size;
};

int refuse(const Opening &opening, int rc, const char *why)
{
    if (opening.text && opening.size) snprintf(opening.text, opening.size, "%s: %s", opening.path, why);
    return rc & 0xFF;
}

int refuse(const Opening &opening, int rc, sqlite3 *db)
{
    return refuse(opening, rc, db ? sqlite3_errmsg(db) : sqlite3_errstr(rc));
}

int64_t now_us()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000000 + now.tv_nsec / 1000;
}

/// Waits for another process's lock. A lock is held for some ten microseconds as a rule, which is less than
/// the shortest nap: so the processor is only offered to others at first. The naps after that grow with the
/// time already spent: many callers who ask too often take the processors from those who read. They stay below
/// a millisecond, so that a caller who has waited long still gets its turn. The caller gives up at the timeout.
int wait_for_lock(void *context, int count)
{
    auto *internal = static_cast<qbdb_private *>(context);
    const int64_t now = now_us();
    if (count == 0) internal->waiting_since_us = now;
    const int64_t waited = now - internal->waiting_since_us;
    const int64_t left = static_cast<int64_t>(internal->timeout_ms) * 1000 - waited;
    if (left <= 0) return 0;
    if (waited < kBriefWaitUs) {
        sched_yield();
        return 1;
    }
    const int64_t pause = std::min(std::clamp<int64_t>(waited / 4, kShortestNapUs, kLongestNapUs), left);
    const timespec nap = {0, static_cast<long>(pause * 1000)};
    nanosleep(&nap, nullptr);
    return 1;
}

uint32_t header_number(const unsigned char *header, size_t at)
{
    return static_cast<uint32_t>(header[at]) << 24 | static_cast<uint32_t>(header[at + 1]) << 16 |
           static_cast<uint32_t>(header[at + 2]) << 8 | header[at + 3];
}

int check_version(const Opening &opening, int64_t version)
{
    if (version == QBDB_SCHEMA_VERSION) return SQLITE_OK;
    char why[128];
    snprintf(why, sizeof why, "has schema version %lld; this library reads version %d", static_cast<long long>(version),
             QBDB_SCHEMA_VERSION);
    return refuse(opening, SQLITE_NOTADB, why);
}

/// Looks at what kind of file it is before anything of SQLite's touches it. 0, or SQLITE_EMPTY when there
/// is none.
int look_at_path(const Opening &opening)
{
    struct stat status;
    if (stat(opening.path, &status) != 0)
        return errno == ENOENT && *opening.path ? SQLITE_EMPTY : refuse(opening, SQLITE_CANTOPEN, strerror(errno));
    if (S_ISDIR(status.st_mode)) return refuse(opening, SQLITE_CANTOPEN, "is a directory");
    if (!S_ISREG(status.st_mode)) return refuse(opening, SQLITE_CANTOPEN, "is not a file");
    return SQLITE_OK;
}

/// Reads the header, so that a file of somebody else's or of a newer schema is not so much as locked. It is
/// read through SQLite's own descriptor: closing another one would drop the locks that this process may
/// hold on the same database. 0 when it is an appliance database, SQLITE_EMPTY for an empty file.
int look_at_header(const Opening &opening, sqlite3 *db)
{
    sqlite3_file *file = nullptr;
    sqlite3_file_control(db, "main", SQLITE_FCNTL_FILE_POINTER, &file);
    sqlite3_int64 size = 0;
    if (file->pMethods->xFileSize(file, &size) != SQLITE_OK) return refuse(opening, SQLITE_IOERR, "cannot be read");
    if (size == 0) return SQLITE_EMPTY;
    unsigned char header[100];
    const int rc = file->pMethods->xRead(file, header, sizeof header, 0);
    if (rc != SQLITE_OK && rc != SQLITE_IOERR_SHORT_READ) return refuse(opening, rc, sqlite3_errstr(rc));
    if (rc != SQLITE_OK || memcmp(header, "SQLite format 3", 16) != 0 || header_number(header, 68) != kApplicationId)
        return refuse(opening, SQLITE_NOTADB, "is not an appliance database");
    return check_version(opening, header_number(header, 60));
}

/// Reads one number. 0 or a result code.
int read_number(sqlite3 *db, const char *sql, int64_t *number)
{
    sqlite3_stmt *stmt = nullptr;
    int rc = sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr);
    if (rc == SQLITE_OK && (rc = sqlite3_step(stmt)) == SQLITE_ROW) {
        *number = sqlite3_column_int64(stmt, 0);
        rc = SQLITE_OK;
    }
    sqlite3_finalize(stmt);
    return rc;
}

/// Reads the schema and its version, which may be newer in the write-ahead log than in the header.
int check_schema(const Opening &opening, sqlite3 *db)
{
    int64_t count = 0;
    int64_t version = 0;
    int rc = read_number(db, "SELECT COUNT(*) FROM sqlite_schema", &count);
    if (rc == SQLITE_OK) rc = read_number(db, "PRAGMA user_version", &version);
    return rc == SQLITE_OK ? check_version(opening, version) : refuse(opening, rc, db);
}

int add_volume(sqlite3 *db, const char *volume)
{
    sqlite3_stmt *stmt = nullptr;
    int rc = SQLITE_OK;
    for (const char *sql :
         {"INSERT INTO _volume (id,lv_name) VALUES(?1,?1)", "UPDATE account_default SET home_volume_id=?1"}) {
        rc = sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr);
        if (rc == SQLITE_OK) rc = sqlite3_bind_text(stmt, 1, volume, -1, SQLITE_STATIC);
        if (rc == SQLITE_OK) sqlite3_step(stmt);
        rc = sqlite3_finalize(stmt);
        if (rc != SQLITE_OK) break;
    }
    return rc;
}

/// Writes the schema and the factory rows in one transaction: a crash leaves a file that can be created again.
int create_schema(const Opening &opening, sqlite3 *db, const char *volume)
{
    int rc = sqlite3_exec(db, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
    int64_t objects = 0;
    if (rc == SQLITE_OK) rc = read_number(db, "SELECT COUNT(*) FROM sqlite_schema", &objects);
    if (rc == SQLITE_OK && objects) return refuse(opening, SQLITE_CANTOPEN, kExists);
    for (const qdb::SchemaFile *file = qdb::kSchemaFiles; rc == SQLITE_OK && file->name; file++)
        rc = sqlite3_exec(db, file->sql, nullptr, nullptr, nullptr);
    if (rc == SQLITE_OK && volume) rc = add_volume(db, volume);
    if (rc == SQLITE_OK) {
        char sql[96];
        snprintf(sql, sizeof sql, "PRAGMA application_id=%u; PRAGMA user_version=%d; COMMIT", kApplicationId,
                 QBDB_SCHEMA_VERSION);
        rc = sqlite3_exec(db, sql, nullptr, nullptr, nullptr);
    }
    return rc == SQLITE_OK ? rc : refuse(opening, rc, db);  // closing the connection rolls back
}

int configure(const Opening &opening, qbdb_private *internal)
{
    sqlite3 *db = internal->db;
    sqlite3_db_config(db, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    const char *sql = internal->read_only ? "PRAGMA temp_store=MEMORY; PRAGMA trusted_schema=OFF"
                                          : "PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL;"
                                            "PRAGMA temp_store=MEMORY; PRAGMA trusted_schema=OFF";
    int rc = sqlite3_exec(db, sql, nullptr, nullptr, nullptr);
    const struct {
        const char *sql;
        sqlite3_stmt **stmt;
    } prepared[] = {{"BEGIN", &internal->begin_reading},
                    {"BEGIN IMMEDIATE", &internal->begin},
                    {"COMMIT", &internal->commit},
                    {"ROLLBACK", &internal->rollback}};
    for (const auto &each : prepared)
        if (rc == SQLITE_OK) rc = sqlite3_prepare_v3(db, each.sql, -1, SQLITE_PREPARE_PERSISTENT, each.stmt, nullptr);
    if (rc != SQLITE_OK) return refuse(opening, rc, db);
    internal->cache = qdb::create_cache(0);
    return internal->cache ? SQLITE_OK : refuse(opening, SQLITE_NOMEM, "out of memory");
}

/// A file in which a creation was interrupted has the header of an appliance database, but a journal beside
/// it that takes everything back. A database that was created whole is in WAL mode and has none.
bool creation_was_interrupted(const Opening &opening, qbdb_t *qbdb)
{
    const char *journal = apr_pstrcat(qbdb->pool, opening.path, "-journal", nullptr);
    return journal && access(journal, F_OK) == 0;
}

/// Makes the empty file, for its creator's eyes alone: password hashes go into it. SQLite gives the journals the mode
/// of the database. A file that is there already keeps the mode that it has.
int make_file(const Opening &opening)
{
    const int file = open(opening.path, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file >= 0) {
        close(file);  // no lock of this process is on it yet
        return SQLITE_OK;
    }
    if (errno != EEXIST) return refuse(opening, SQLITE_CANTOPEN, strerror(errno));
    const int rc = look_at_path(opening);  // somebody else made it meanwhile
    return rc == SQLITE_EMPTY ? refuse(opening, SQLITE_CANTOPEN, "is a link that leads nowhere") : rc;
}

/// The name that makes SQLite open the file as one that nobody changes; null without memory.
const char *immutable_name(apr_pool_t *pool, const char *path)
{
    static constexpr char kImmutable[] = "?immutable=1";
    const char *start = *path == '/' ? "file://" : "file:./";
    auto *name = static_cast<char *>(apr_palloc(pool, strlen(start) + 3 * strlen(path) + sizeof kImmutable));
    if (!name) return nullptr;
    char *at = stpcpy(name, start);
    for (; *path; path++) {
        if (strchr("%?#", *path)) at += sprintf(at, "%%%02X", static_cast<unsigned char>(*path));
        else *at++ = *path;
    }
    memcpy(at, kImmutable, sizeof kImmutable);
    return name;
}

int connect(const Opening &opening, const char *name, int flags, qbdb_private *internal)
{
    const int rc = sqlite3_open_v2(name, &internal->db, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    if (rc != SQLITE_OK) return refuse(opening, rc, internal->db);
    sqlite3_busy_handler(internal->db, wait_for_lock, internal);
    // Until the file has proved to be ours and of our version it is not written to, not even on close.
    sqlite3_db_config(internal->db, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    return SQLITE_OK;
}

/// Even reading takes a file beside the database through which processes tell each other what they read. Where none can
/// be made (a backup, a snapshot: the folder may not be written to) nobody is at work on the database, and it is read
/// as it stands; with a journal beside it, it would be read without the changes in there.
int read_as_it_stands(const Opening &opening, qbdb_t *qbdb)
{
    qbdb_private *internal = qbdb->internal;
    const char *file = sqlite3_db_filename(internal->db, "main");
    if (access(sqlite3_filename_wal(file), F_OK) == 0 || access(sqlite3_filename_journal(file), F_OK) == 0)
        return refuse(opening, SQLITE_CANTOPEN, "needs write access to its folder: a journal lies beside it");
    const char *name = immutable_name(qbdb->pool, opening.path);
    if (!name) return refuse(opening, SQLITE_NOMEM, "out of memory");
    sqlite3_close(internal->db);
    internal->db = nullptr;
    const int rc = connect(opening, name, SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, internal);
    return rc == SQLITE_OK ? check_schema(opening, internal->db) : rc;
}

/// Reads the schema; 0 when it is ours.
int check_content(const Opening &opening, qbdb_t *qbdb)
{
    qbdb_private *internal = qbdb->internal;
    char why[PATH_MAX + 256] = "";
    const int rc = check_schema({opening.path, why, sizeof why}, internal->db);
    const bool no_room_beside_it = rc == SQLITE_CANTOPEN || rc == SQLITE_READONLY;
    if (internal->read_only && no_room_beside_it) return read_as_it_stands(opening, qbdb);
    if (rc != SQLITE_OK && opening.text && opening.size) snprintf(opening.text, opening.size, "%s", why);
    return rc;
}

/// Opens the file and proves that it is what is wanted: an appliance database, or none yet.
int open_file(const Opening &opening, unsigned mode, qbdb_t *qbdb)
{
    static constexpr int kFlags[] = {SQLITE_OPEN_READWRITE, SQLITE_OPEN_READWRITE, SQLITE_OPEN_READONLY};
    qbdb_private *internal = qbdb->internal;
    const bool create = mode == QBDB_OPEN_CREATE;
    int rc = look_at_path(opening);
    if (rc == SQLITE_EMPTY) rc = create ? make_file(opening) : refuse(opening, SQLITE_CANTOPEN, "no such database");
    if (rc != SQLITE_OK) return rc;
    // A name is a file's name: SQLite takes "file:..." and ":memory:" for something else.
    const char *name = apr_pstrcat(qbdb->pool, *opening.path == '/' ? "" : "./", opening.path, nullptr);
    if (!name) return refuse(opening, SQLITE_NOMEM, "out of memory");
    rc = connect(opening, name, kFlags[mode], internal);
    if (rc != SQLITE_OK) return rc;
    rc = look_at_header(opening, internal->db);
    if (rc == SQLITE_OK && create && !creation_was_interrupted(opening, qbdb))
        return refuse(opening, SQLITE_CANTOPEN, kExists);
    if (rc == SQLITE_EMPTY) return create ? SQLITE_OK : refuse(opening, SQLITE_NOTADB, "is not an appliance database");
    return rc;
}

int open_connection(const Opening &opening, unsigned mode, const char *volume, qbdb_t *qbdb)
{
    if (mode > QBDB_OPEN_READONLY) return refuse(opening, SQLITE_MISUSE, "unknown way to open");
    qbdb_private *internal = qbdb->internal;
    int rc = open_file(opening, mode, qbdb);
    if (rc != SQLITE_OK) return rc;
    internal->read_only = mode == QBDB_OPEN_READONLY;
    if (!internal->read_only && sqlite3_db_readonly(internal->db, "main") == 1)
        return refuse(opening, SQLITE_READONLY, "may not be written to");
    rc = mode == QBDB_OPEN_CREATE ? create_schema(opening, internal->db, volume) : check_content(opening, qbdb);
    if (rc != SQLITE_OK) return rc;
    sqlite3_db_config(internal->db, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);
    return configure(opening, internal);
}

pthread_once_t apr_once = PTHREAD_ONCE_INIT;

void start_apr()
{
    apr_initialize();
}

qbdb_t *make_handle()
{
    pthread_once(&apr_once, start_apr);
    apr_allocator_t *allocator = nullptr;
    if (apr_allocator_create(&allocator) != APR_SUCCESS) return nullptr;
    apr_allocator_max_free_set(allocator, kPoolKeptFree);
    apr_pool_t *pool = nullptr;
    if (apr_pool_create_unmanaged_ex(&pool, nullptr, allocator) != APR_SUCCESS) {
        apr_allocator_destroy(allocator);
        return nullptr;
    }
    apr_allocator_owner_set(allocator, pool);
    auto *qbdb = static_cast<qbdb_t *>(apr_pcalloc(pool, sizeof(qbdb_t)));
    auto *internal = qbdb ? static_cast<qbdb_private *>(apr_pcalloc(pool, sizeof(qbdb_private))) : nullptr;
    if (!internal) {
        apr_pool_destroy(pool);
        return nullptr;
    }
    qbdb->pool = pool;
    qbdb->log_level = 2;
    qbdb->internal = internal;
    internal->allocator = allocator;
    internal->timeout_ms = QBDB_DEFAULT_TIMEOUT_MS;
    return qbdb;
}

}  // namespace

int qbdb_open(const char *path, unsigned mode, const char *volume, qbdb_t **qbdb, sqlite3 **db, char *text, size_t size)
{
    *qbdb = nullptr;
    *db = nullptr;
    const Opening opening{path, text, size};
    qbdb_t *handle = make_handle();
    if (!handle) return refuse(opening, SQLITE_NOMEM, "out of memory");
    if (const int rc = open_connection(opening, mode, volume, handle)) {
        qbdb_close(handle);
        return rc;
    }
    *qbdb = handle;
    *db = handle->internal->db;
    return SQLITE_OK;
}

void qbdb_close(qbdb_t *qbdb)
{
    if (!qbdb) return;
    qbdb_private *internal = qbdb->internal;
    qdb::destroy_recorder(internal);
    qdb::destroy_cache(internal->cache);
    for (sqlite3_stmt *stmt : {internal->begin, internal->begin_reading, internal->commit, internal->rollback})
        sqlite3_finalize(stmt);
    if (internal->db) {
        // A statement that the caller has not finalised keeps the connection alive, but not what it calls.
        sqlite3_busy_handler(internal->db, nullptr, nullptr);
        if (!sqlite3_get_autocommit(internal->db)) sqlite3_exec(internal->db, "ROLLBACK", nullptr, nullptr, nullptr);
        sqlite3_close_v2(internal->db);
    }
    apr_pool_destroy(qbdb->pool);  // the request pool is its child, the handle lives in it
}

int qbdb_request_begin(qbdb_t *qbdb)
{
    if (qbdb->request_pool) {
        apr_pool_clear(qbdb->request_pool);
        return SQLITE_OK;
    }
    const bool made = apr_pool_create_ex(&qbdb->request_pool, qbdb->pool, nullptr, nullptr) == APR_SUCCESS;
    if (!made) qbdb->request_pool = nullptr;
    return made ? SQLITE_OK : SQLITE_NOMEM;
}

void qbdb_request_end(qbdb_t *qbdb)
{
    if (qbdb->request_pool) apr_pool_destroy(qbdb->request_pool);
    qbdb->request_pool = nullptr;
}

void qbdb_set_timeout(qbdb_t *qbdb, uint32_t milliseconds)
{
    qbdb->internal->timeout_ms = milliseconds;
}

void qbdb_set_statement_cache(qbdb_t *qbdb, uint32_t count)
{
    qdb::set_cache_bound(qbdb->internal->cache, count);
}

void qbdb_get_cache_statistics(const qbdb_t *qbdb, qbdb_cache_statistics *statistics)
{
    qdb::read_cache_statistics(qbdb->internal->cache, statistics);
}
// SPDX-License-Identifier: Apache-2.0
