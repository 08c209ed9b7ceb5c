// Deleting backup jobs, and what the sharing of a job's sides with shares asks for.
#include "backup/job.h"
#include "frame/pool.h"
#include "frame/query.h"

namespace qb {
namespace {

/// The name of a job, null when there is no such job.
uint32_t read_name(CallContext *ctx, sqlite3 *db, int32_t id, const char **name)
{
    return select_text(ctx, db, *name, "SELECT B.name FROM backup B WHERE id=%d", id)
        .or_report(ctx, "Failed DB Query for backup. %s");
}

uint32_t delete_job(CallContext *ctx, sqlite3 *db, BackupJob *job)
{
    const int32_t id = id_of(job);
    if (id < 1) return REPORT(ctx, 8, "Invalid resource_id (%d)", id);
    const char *name = job->JobName;
    if (!name) TRY(read_name(ctx, db, id, &name));
    TRY(execute(ctx, db, "DELETE FROM backup WHERE id=%d", id).or_report(ctx, "Failed DB Query for backup. %s"));
    if (sqlite3_changes(db) == 0) return REPORT(ctx, 6, "None of row is deleted. May be bad resource_id=%d'", id);
    TRY(execute(ctx, db, "DELETE FROM backup_button_jobs WHERE backup_id=%d", id)
            .or_report(ctx, "Failed DB Query for backup_button_jobs. %s"));
    job->JobName = or_empty(name);
    return 0;
}

}  // namespace

uint32_t x_qbobj_deleteBackupJob(CallContext *ctx, sqlite3 *db, BackupJob *job)
{
    for (; job; job = job->next) TRY(delete_job(ctx, db, job));
    return 0;
}

uint32_t rename_share_in_backup_jobs(CallContext *ctx, sqlite3 *db, const char *old_name, const char *new_name)
{
    TRY(execute(ctx, db, "UPDATE `backup` SET src_share_proto=%Q WHERE src_type='share' AND src_share_proto=%Q",
                new_name, old_name)
            .or_report(ctx, "Failed DB Query for 'UPDATE backup'. %s"));
    return execute(ctx, db, "UPDATE `backup` SET dst_share_proto=%Q WHERE dst_type='share' AND dst_share_proto=%Q",
                   new_name, old_name)
        .or_report(ctx, "Failed DB Query for 'UPDATE backup'. %s");
}

uint32_t delete_backup_jobs_of_share(CallContext *ctx, sqlite3 *db, int32_t share_id)
{
    return execute(ctx, db,
                   "DELETE FROM backup WHERE (src_type='share' AND src_share_proto=(SELECT S.name FROM share S WHERE "
                   "S.id==%d)) OR (dst_type='share' AND dst_share_proto=(SELECT S.name FROM share S WHERE S.id==%d))",
                   share_id, share_id)
        .or_report(ctx, "Failed DB Query for 'DELETE backup'. %s");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
