// Adding backup jobs.
#include "backup/job.h"
#include "frame/pool.h"
#include "frame/query.h"

namespace qb {
namespace {

uint32_t check_new_job(CallContext *ctx, sqlite3 *db, const BackupJob *job)
{
    TRY(check_sides(ctx, db, job));
    TRY(check_job_name(ctx, db, job, 0));
    return check_timemachine(ctx, db, job);
}

uint32_t insert_job(CallContext *ctx, sqlite3 *db, const BackupJob *job, int32_t days)
{
    const BackupJob_SourceOrDestination *source = job->Source;
    const BackupJob_SourceOrDestination *destination = job->Destination;
    const BackupJob_Schedule *schedule = job->Schedule;
    const BackupJob_Option *option = job->Option;
    const char *source_path = stored_path(ctx, source);
    const char *destination_path = stored_path(ctx, destination);
    TRY_MEMORY(ctx);
    return execute(ctx, db,
                   "INSERT OR REPLACE INTO backup(enabled,name,src_type,src_share_proto,src_path,src_login,"
                   "src_password,src_port,src_eject,dst_type,dst_share_proto,dst_path,dst_login,dst_password,dst_port,"
                   "dst_eject,sch_every,sch_start,sch_end,sch_dow,opt_full_backup_freq,opt_remove_previous_backup,"
                   "opt_chown_to_share_owner,opt_rsync_options,opt_rsync_exclude,opt_email_this_to_alert_email,"
                   "opt_misc_option,wol_addr)VALUES(%d,%Q,%Q,%Q,%Q,%Q,%Q,%d,%d,%Q,%Q,%Q,%Q,%Q,%d,%d,%d,%d,%d,%d,%Q,"
                   "%d,%d,%d,%Q,%d,%d,%Q)",
                   schedule->Enabled, or_empty(job->JobName), source->Type, source->ShareNameOrProtocol, source_path,
                   or_empty(source->Login), or_empty(source->Password), source->Port, source->Eject, destination->Type,
                   destination->ShareNameOrProtocol, destination_path, or_empty(destination->Login),
                   or_empty(destination->Password), destination->Port, destination->Eject, schedule->Frequency,
                   schedule->Start, schedule->End, days, or_empty(option->FullBackupFrequency),
                   option->RemovePreviousBackup != 0, option->ChownToShareOwner != 0, option->RsyncOption,
                   or_empty(option->RsyncExclude), option->EmailThisToAlertEmail, option->MiscOption,
                   or_empty(option->WolAddress))
        .or_report(ctx, "Failed DB Query for backup. %s");
}

uint32_t add_job(CallContext *ctx, sqlite3 *db, BackupJob *job)
{
    TRY(check_parts(ctx, job));
    const int32_t days = qbdb_dow_to_i(job->Schedule->DayOfWeek);
    if (job->Schedule->Enabled && days == 0) {
        TRACE(ctx, "Backup Job is Enabled, but no schedule (DayOfWeek=%s). Force it to Disabled\n",
              job->Schedule->DayOfWeek);
        job->Schedule->Enabled = 0;
    }
    TRY(check_new_job(ctx, db, job));
    TRY(insert_job(ctx, db, job, days));
    job->resource_id = job->JobId = static_cast<int32_t>(sqlite3_last_insert_rowid(db));
    return 0;
}

}  // namespace

uint32_t x_qbobj_addBackupJob(CallContext *ctx, sqlite3 *db, BackupJob *job)
{
    for (; job; job = job->next) TRY(add_job(ctx, db, job));
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
