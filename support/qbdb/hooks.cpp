// The hooks: how appliance code and tests take part.
#include "import.h"
#include "recorder.h"

void qbdb_set_log_hook(qbdb_t *qbdb, qbdb_log_hook hook, void *context)
{
    qbdb->internal->log_hook = hook;
    qbdb->internal->log_context = context;
}

void qbdb_set_statement_hook(qbdb_t *qbdb, qbdb_statement_hook hook, void *context)
{
    qbdb->internal->statement_hook = hook;
    qbdb->internal->statement_context = context;
}

int qbdb_statements_watched(const qbdb_t *qbdb)
{
    return qbdb->internal->statement_hook != nullptr;
}

void qbdb_set_import_hook(qbdb_t *qbdb, qbdb_import_hook hook, void *context)
{
    qbdb->internal->import_hook = hook;
    qbdb->internal->import_context = context;
}

int qbdb_set_import_options(qbdb_t *qbdb, const qbdb_import_options *options)
{
    qbdb_import_options copy = options ? *options : qbdb_import_options{};
    if (copy.root && !(copy.root = qdb::copy_text(qbdb->pool, copy.root))) return SQLITE_NOMEM;
    qbdb->internal->import = copy;
    return SQLITE_OK;
}

void qbdb_set_service_hook(qbdb_t *qbdb, qbdb_service_hook hook, void *context)
{
    qbdb->internal->service_hook = hook;
    qbdb->internal->service_context = context;
}

void qbdb_set_directory_hooks(qbdb_t *qbdb, const qbdb_directory_hooks *hooks)
{
    qbdb->internal->directory = hooks ? *hooks : qbdb_directory_hooks{};
}

int qbdb_import_nolock(qbdb_t *qbdb, sqlite3 *db, int selector)
{
    const qbdb_private *internal = qbdb->internal;
    if (internal->import_hook) return internal->import_hook(internal->import_context, qbdb, db, selector);
    if (internal->read_only) return 0;  // what was last imported stands
    switch (selector) {
        case QBDB_IMPORT_DISKS: return qdb::import_disks(qbdb, db);
        case QBDB_IMPORT_HOME_FOLDERS: return qdb::import_home_folders(qbdb, db);
        default: return 0;
    }
}

int qbdb_hf_stats_import(qbdb_t *qbdb, sqlite3 *db)
{
    return qbdb_import_nolock(qbdb, db, QBDB_IMPORT_HOME_FOLDERS);
}

int qbdb_service_update_setting_by_share(qbdb_t *qbdb, sqlite3 *db, const char *protocol)
{
    const qbdb_private *internal = qbdb->internal;
    if (qdb::is_trial(internal)) return 0;  // what it would read is taken back
    return internal->service_hook ? internal->service_hook(internal->service_context, qbdb, db, protocol) : 0;
}
// SPDX-License-Identifier: Apache-2.0
