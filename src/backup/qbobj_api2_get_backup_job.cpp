// Reading backup jobs.
#include "backup/job.h"
#include "frame/list.h"
#include "frame/query.h"
#include "frame/read_row.h"

namespace qb {
namespace {

/// Fills a job from a row of 27 columns and those of `more`.
template <class... More>
uint32_t read_job(CallContext *ctx, const Rows &rows, int row, BackupJob *job, More &...more)
{
    BackupJob_SourceOrDestination *source = job->Source;
    BackupJob_SourceOrDestination *destination = job->Destination;
    BackupJob_Schedule *schedule = job->Schedule;
    BackupJob_Option *option = job->Option;
    int32_t days = 0;
    read_row(ctx, rows, row, both(job->resource_id, job->JobId), empty(job->JobName), schedule->Enabled,
             empty(source->Type), empty(source->ShareNameOrProtocol), empty(source->Path), empty(source->Login),
             empty(source->Password), source->Port, empty(destination->Type), empty(destination->ShareNameOrProtocol),
             empty(destination->Path), empty(destination->Login), empty(destination->Password), destination->Port,
             schedule->Frequency, schedule->Start, schedule->End, days, empty(option->FullBackupFrequency),
             option->RemovePreviousBackup, option->ChownToShareOwner, option->RsyncOption, empty(option->RsyncExclude),
             option->EmailThisToAlertEmail, option->MiscOption, empty(option->WolAddress), more...);
    schedule->DayOfWeek = noted(ctx, qbdb_i_to_dow(ctx->qbdb, days));
    TRY_MEMORY(ctx);
    return 0;
}

uint32_t allocate_parts(CallContext *ctx, BackupJob *job)
{
    job->Source = allocate<BackupJob_SourceOrDestination>(ctx);
    job->Destination = allocate<BackupJob_SourceOrDestination>(ctx);
    job->Schedule = allocate<BackupJob_Schedule>(ctx);
    job->Option = allocate<BackupJob_Option>(ctx);
    TRY_MEMORY(ctx);
    return 0;
}

}  // namespace

uint32_t x_qbobj_getBackupJobCollection(CallContext *ctx, sqlite3 *db, BackupJobCollection *jobs)
{
    QB_ASSERT(jobs);
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT B.id,B.name,B.enabled,B.src_type,B.src_share_proto,B.src_path,B.src_login,B.src_password,"
               "B.src_port,B.dst_type,B.dst_share_proto,B.dst_path,B.dst_login,B.dst_password,B.dst_port,B.sch_every,"
               "B.sch_start,B.sch_end,B.sch_dow,B.opt_full_backup_freq,B.opt_remove_previous_backup,"
               "B.opt_chown_to_share_owner,B.opt_rsync_options,B.opt_rsync_exclude,B.opt_email_this_to_alert_email,"
               "B.opt_misc_option,B.wol_addr,B.src_eject,B.dst_eject,"
               "B.src_type='usb' OR B.src_type='share' AND EXISTS (SELECT 1 FROM share S WHERE "
               "S.name=B.src_share_proto AND S.volume_id='media'),"
               "B.dst_type='usb' OR B.dst_type='share' AND EXISTS (SELECT 1 FROM share S WHERE "
               "S.name=B.dst_share_proto AND S.volume_id='media') FROM backup B")
            .or_report(ctx, "Failed DB Query for backup. %s"));
    BackupJob *read = nullptr;
    List<BackupJob> list(&read);
    for (int i = 0; i < rows.count; i++) {
        BackupJob *job = list.append(ctx);
        TRY_MEMORY(ctx);
        TRY(allocate_parts(ctx, job));
        TRY(read_job(ctx, rows, i, job, job->Source->Eject, job->Destination->Eject, job->Source->Ejectable,
                     job->Destination->Ejectable));
    }
    List<BackupJob>(&jobs->BackupJob).link(read);
    return 0;
}

uint32_t x_qbobj_getBackupJob(CallContext *ctx, sqlite3 *db, BackupJob *job)
{
    QB_ASSERT(job);
    const int32_t id = id_of(job);
    if (id < 1) return REPORT(ctx, 5, "Invalid resouce_id=%d.", id);
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT B.id,B.name,B.enabled,B.src_type,B.src_share_proto,B.src_path,B.src_login,B.src_password,"
               "B.src_port,B.dst_type,B.dst_share_proto,B.dst_path,B.dst_login,B.dst_password,B.dst_port,B.sch_every,"
               "B.sch_start,B.sch_end,B.sch_dow,B.opt_full_backup_freq,B.opt_remove_previous_backup,"
               "B.opt_chown_to_share_owner,B.opt_rsync_options,B.opt_rsync_exclude,B.opt_email_this_to_alert_email,"
               "B.opt_misc_option,B.wol_addr FROM backup B WHERE id=%d",
               id)
            .or_report(ctx, "Failed DB Query for backup. %s"));
    if (rows.count == 0) return REPORT(ctx, 6, "None of row selected for resource_id=%d.", id);
    BackupJob read{};
    TRY(allocate_parts(ctx, &read));
    TRY(read_job(ctx, rows, 0, &read));
    read.next = job->next;
    *job = read;
    return 0;
}

int32_t x_qbobj_hasBackupJob(CallContext *ctx, sqlite3 *db, int32_t jobId)
{
    int32_t count = 0;
    if (jobId < 1) return 0;
    if (select_int32(ctx, db, count, "SELECT COUNT(*) FROM backup WHERE id=%d", jobId)
            .logged(ctx, "Failed to SELECT FROM backup\n")) {
        // There is no third answer: a job that cannot be read, for want of memory too, does not exist.
        ctx->short_of_memory = false;
        return 0;
    }
    return count > 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
