// What the files of this library share: the private part of a handle and the statement engine's calls.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <cstring>

#include "qbdb.h"

namespace qdb {
struct StatementCache;
struct Entry;
struct Recorder;
}  // namespace qdb

struct qbdb_private {
    apr_allocator_t *allocator;
    sqlite3 *db;               // the connection that qbdb_open opened
    sqlite3 *begun;            // `db` while a transaction of ours is open on it, else null
    sqlite3 *begun_elsewhere;  // the same for a connection that the caller opened
    sqlite3 *refused;          // the last call was a begin here that found our transaction open; else null
    bool read_only;
    uint32_t timeout_ms;
    int64_t waiting_since_us;  // when the busy handler was first called for the present lock
    sqlite3_stmt *begin;
    sqlite3_stmt *begin_reading;
    sqlite3_stmt *commit;
    sqlite3_stmt *rollback;
    bool renew_rollback;  // the statement may need memory when it next runs
    bool rollback_owed;   // there was no memory for it
    qdb::StatementCache *cache;
    qdb::Recorder *recorder;  // null until changes are recorded
    qbdb_log_hook log_hook;
    void *log_context;
    qbdb_statement_hook statement_hook;
    void *statement_context;
    qbdb_import_hook import_hook;
    void *import_context;
    qbdb_import_options import;
    int32_t import_home_next;  // the user whose home folder the next import measures first; 0 for any
    qbdb_service_hook service_hook;
    void *service_context;
    qbdb_directory_hooks directory;
};

namespace qdb {

inline apr_pool_t *pool_of(const qbdb_t *qbdb)
{
    return qbdb->request_pool ? qbdb->request_pool : qbdb->pool;
}

/// A copy of `size` bytes as a text; null without memory. The pool library's own copying functions write
/// to the block without looking whether there is one.
inline char *copy_text(apr_pool_t *pool, const char *text, size_t size)
{
    auto *copy = static_cast<char *>(apr_palloc(pool, size + 1));
    if (!copy) return nullptr;
    memcpy(copy, text, size);
    copy[size] = '\0';
    return copy;
}

inline char *copy_text(apr_pool_t *pool, const char *text)
{
    return text ? copy_text(pool, text, strlen(text)) : nullptr;
}

/// Where a statement comes from and where its failure text goes.
struct Call {
    qbdb_t *qbdb;
    sqlite3 *db;
    const char **text;
    const char *file;
    uint32_t line;
};

/// Stores a failure text (copied into the handle's pool) and returns the primary code.
int fail(const Call &call, int rc, const char *text);

/// Asks the statement hook, if there is one; non-zero is the code to fail with, its text already stored.
int ask_hook_of(const Call &call, const char *sql);
inline int ask_hook(const Call &call, const char *sql)
{
    return call.qbdb->internal->statement_hook ? ask_hook_of(call, sql) : 0;
}

/// A prepared statement with its values bound, ready to step; released on every path.
struct Statement {
    sqlite3_stmt *stmt = nullptr;
    StatementCache *cache = nullptr;
    Entry *entry = nullptr;   // the cache's entry; null for a statement of this one call
    bool holds_text = false;  // texts are bound

    Statement() = default;
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;
    ~Statement();
};

/// Turns a format and its arguments into a prepared statement. 0 or a primary code, failure stored.
int prepare(const Call &call, Statement *statement, const char *format, va_list args);

/// Runs a complete SQL text without the cache: for statements that change the schema.
int run(const Call &call, const char *sql);

/// Makes and releases a handle's statement cache.
StatementCache *create_cache(uint32_t bound);
void destroy_cache(StatementCache *cache);
void empty_cache(StatementCache *cache);
void set_cache_bound(StatementCache *cache, uint32_t bound);
void read_cache_statistics(const StatementCache *cache, qbdb_cache_statistics *statistics);

}  // namespace qdb
// SPDX-License-Identifier: Apache-2.0
