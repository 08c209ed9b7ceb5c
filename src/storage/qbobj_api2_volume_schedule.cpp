// The recurring jobs of volumes.
#include <cstdio>

#include "frame/list.h"
#include "frame/read_row.h"
#include "storage/volumes.h"

namespace qb {
namespace {

constexpr int32_t kNeverUsed = 0;  // a job number that counts as free, whatever is stored
constexpr int32_t kAllOfVolume = -1;

uint32_t find_job(CallContext *ctx, sqlite3 *db, int32_t job_id, bool *found)
{
    *found = false;
    if (job_id == kNeverUsed) return 0;
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT job_id from volume_schedule WHERE job_id=%d", job_id)
            .or_report(ctx, "Failed DB Query for get_volume_schedule_jobid. %s"));
    *found = rows.count > 0;
    return 0;
}

uint32_t check_schedule(CallContext *ctx, const VolumeSchedule *schedule)
{
    if (schedule && schedule->Interval) return 0;
    return REPORT(ctx, 5, "VolumeSchedule and its Interval cannot be NULL.");
}

const char *job_key(CallContext *ctx, int32_t job_id)
{
    char key[16];
    snprintf(key, sizeof key, "%d", job_id);
    return copy_text(ctx, key);
}

/// The volume's name stands in the statement as it was given; a name with a quote in it breaks the statement.
uint32_t delete_jobs_of(CallContext *ctx, sqlite3 *db, const char *volume)
{
    return execute(ctx, db, "DELETE FROM volume_schedule WHERE volume_id='%s'", volume)
        .or_report(ctx, "Failed DB Query for 'DELETE FROM volume_schedule'. %s");
}

}  // namespace

uint32_t x_qbobj_getVolumeScheduleCollection(CallContext *ctx, sqlite3 *db, VolumeScheduleCollection *schedules)
{
    QB_ASSERT(schedules);
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT job_id,volume_id,enabled,action,minute,hour,dayofmonth,month,dayofweek FROM volume_schedule")
            .or_report(ctx, "Failed DB Query for 'SELECT FROM volume_schedule'. %s"));
    List<VolumeSchedule> list(&schedules->VolumeSchedule);
    for (int i = 0; i < rows.count; i++) {
        VolumeSchedule *job = list.append(ctx);
        TRY_MEMORY(ctx);
        CronSchedule *interval = job->Interval = allocate<CronSchedule>(ctx);
        TRY_MEMORY(ctx, "Failed to allocate Interval.");
        read_row(ctx, rows, i, job->JobID, empty(job->VolumeName), job->Enabled, job->Action, empty(interval->Minute),
                 empty(interval->Hour), empty(interval->DayOfMonth), empty(interval->Month),
                 empty(interval->DayOfWeek));
        job->key = job_key(ctx, job->JobID);
    }
    TRY_MEMORY(ctx);
    return 0;
}

uint32_t x_qbobj_addVolumeSchedule(CallContext *ctx, sqlite3 *db, VolumeSchedule *schedule)
{
    TRY(check_schedule(ctx, schedule));
    bool found = false;
    TRY(find_job(ctx, db, schedule->JobID, &found));
    if (found) return REPORT(ctx, 5, "JobID (%d) already exists.", schedule->JobID);
    const CronSchedule &at = *schedule->Interval;
    return execute(ctx, db,
                   "INSERT INTO volume_schedule(job_id,volume_id,enabled,action,minute,hour,dayofmonth,month,"
                   "dayofweek)VALUES(%d,%Q,%d,%d,%Q,%Q,%Q,%Q,%Q)",
                   schedule->JobID, schedule->VolumeName, schedule->Enabled, schedule->Action, at.Minute, at.Hour,
                   at.DayOfMonth, at.Month, at.DayOfWeek)
        .or_report(ctx, "Failed DB Query for 'INSERT INTO volume_schedule'. %s");
}

uint32_t x_qbobj_updateVolumeSchedule(CallContext *ctx, sqlite3 *db, VolumeSchedule *schedule)
{
    TRY(check_schedule(ctx, schedule));
    const CronSchedule &at = *schedule->Interval;
    return execute(ctx, db,
                   "UPDATE volume_schedule SET enabled=%d,action=%d,minute=%Q,hour=%Q,dayofmonth=%Q,month=%Q,"
                   "dayofweek=%Q WHERE job_id=%d",
                   schedule->Enabled, schedule->Action, at.Minute, at.Hour, at.DayOfMonth, at.Month, at.DayOfWeek,
                   schedule->JobID)
        .or_report(ctx, "Failed DB Query for 'Update volume_schedule'. %s");
}

uint32_t x_qbobj_deleteVolumeSchedule(CallContext *ctx, sqlite3 *db, VolumeSchedule *schedule)
{
    if (!schedule) return REPORT(ctx, 5, "VolumeSchedule cannot be NULL.");
    if (schedule->JobID == kAllOfVolume && schedule->VolumeName) return delete_jobs_of(ctx, db, schedule->VolumeName);
    bool found = false;
    TRY(find_job(ctx, db, schedule->JobID, &found));
    if (!found) return REPORT(ctx, 5, "JobID (%d) does not exist.", schedule->JobID);
    return execute(ctx, db, "DELETE FROM volume_schedule WHERE job_id=%d", schedule->JobID)
        .or_report(ctx, "Failed DB Query for 'DELETE FROM volume_schedule'. %s");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
