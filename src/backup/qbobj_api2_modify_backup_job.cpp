// Changing backup jobs.
#include "backup/job.h"
#include "frame/pool.h"
#include "frame/query.h"
#include "frame/set_list.h"
#include "validate/validate.h"

namespace qb {
namespace {

using Assignments = SetList<2048>;
using Text = Sql<const char *>;
using Number = Sql<int32_t>;

/// The assignments of a source or a destination.
struct SideAssignments {
    Text type, name, path, login, password;
    Number port, eject;
};

constexpr SideAssignments kSource = {
    "src_type=%Q",     "src_share_proto=%Q", "src_path=%Q",  "src_login=%Q",
    "src_password=%Q", "src_port=%d",        "src_eject=%d",
};
constexpr SideAssignments kDestination = {
    "dst_type=%Q",     "dst_share_proto=%Q", "dst_path=%Q",  "dst_login=%Q",
    "dst_password=%Q", "dst_port=%d",        "dst_eject=%d",
};

void assign_side(CallContext *ctx, Assignments *set, const SideAssignments &to,
                 const BackupJob_SourceOrDestination *side)
{
    set->add(to.type, side->Type);
    set->add(to.name, side->ShareNameOrProtocol);
    set->add(to.path, stored_path(ctx, side));
    set->add(to.login, or_empty(side->Login));
    // Who writes back what a front end showed has not seen the password.
    if (!is_password_mask(side->Password)) set->add(to.password, or_empty(side->Password));
    set->add(to.port, side->Port);
    set->add(to.eject, side->Eject);
}

void assign_schedule(Assignments *set, const BackupJob_Schedule *schedule, int32_t days)
{
    set->add("enabled=%d", schedule->Enabled);
    set->add("sch_every=%d", schedule->Frequency);
    set->add("sch_start=%d", schedule->Start);
    set->add("sch_end=%d", schedule->End);
    set->add("sch_dow=%d", days);
}

void assign_option(Assignments *set, const BackupJob_Option *option)
{
    set->add("opt_full_backup_freq=%Q", or_empty(option->FullBackupFrequency));
    set->add("opt_remove_previous_backup=%d", option->RemovePreviousBackup != 0);
    set->add("opt_chown_to_share_owner=%d", option->ChownToShareOwner != 0);
    set->add("opt_rsync_options=%d", option->RsyncOption);
    set->add("opt_rsync_exclude=%Q", or_empty(option->RsyncExclude));
    set->add("opt_email_this_to_alert_email=%d", option->EmailThisToAlertEmail);
    set->add("opt_misc_option=%d", option->MiscOption);
    set->add("wol_addr=%Q", or_empty(option->WolAddress));
}

uint32_t check_changed_job(CallContext *ctx, sqlite3 *db, const BackupJob *job, int32_t id)
{
    TRY(check_sides(ctx, db, job));
    TRY(check_job_name(ctx, db, job, id));
    return check_timemachine(ctx, db, job);
}

uint32_t update_job(CallContext *ctx, sqlite3 *db, const BackupJob *job, int32_t id, int32_t days)
{
    Assignments set;
    set.add("name=%Q", or_empty(job->JobName));
    assign_side(ctx, &set, kSource, job->Source);
    assign_side(ctx, &set, kDestination, job->Destination);
    assign_schedule(&set, job->Schedule, days);
    assign_option(&set, job->Option);
    TRY_MEMORY(ctx);
    if (set.dropped) LOG_FAILURE(ctx, "Backup job %d is too long, not all of it is stored\n", id);
    return execute(ctx, db, "UPDATE backup SET %s WHERE id=%d", +set.text, id)
        .or_report(ctx, "Failed DB Query for backup. %s");
}

uint32_t modify_job(CallContext *ctx, sqlite3 *db, BackupJob *job)
{
    const int32_t id = id_of(job);
    if (id < 1) return REPORT(ctx, 5, "Invalid resouce_id=%d.", id);
    TRY(check_parts(ctx, job));
    const int32_t days = qbdb_dow_to_i(job->Schedule->DayOfWeek);
    if (job->Schedule->Enabled && days == 0) {
        TRACE(ctx, "Backup Job is Enabled, but no schedule. Force it to Disabled");
        job->Schedule->Enabled = 0;
    }
    if (job->Schedule->Start > job->Schedule->End)
        return REPORT(ctx, 5, "Invalid schedule time of Backup job %s.", job->JobName);
    TRY(check_changed_job(ctx, db, job, id));
    return update_job(ctx, db, job, id, days);
}

/// The jobs as they were before the call. Without memory or room for the copy nothing can be said of changes.
struct JobsBefore {
    static constexpr const char *kTables[] = {"backup", nullptr};
    static constexpr char kPrefix[] = "x_modify_";
    static constexpr char kCopy[] = "x_modify_backup";

    CallContext *ctx;
    sqlite3 *db;
    bool kept;

    JobsBefore(CallContext *context, sqlite3 *connection) : ctx(context), db(connection)
    {
        kept = !noted(ctx, {qbdb_sql_duplicate_table(ctx->qbdb, db, 0, "backup", kCopy)});
    }

    /// Tells a job whether its row differs from what it was.
    void compare(BackupJob *job) const
    {
        if (!kept) return;
        JoinedText<32> row("");
        row.add("id=%d", id_of(job));
        int32_t changed = 0;
        if (!noted(ctx, {qbdb_sql_compare_table_row(ctx->qbdb, db, 0, "backup", kCopy, row.text, &changed)}))
            job->Changed = changed;
    }

    /// A copy of all jobs, passwords included, must not stay in the database: better no change at all.
    uint32_t drop() const
    {
        if (!kept) return 0;
        return noted(ctx, {qbdb_sql_delete_tables(ctx->qbdb, db, 0, kTables, kPrefix), "The copy cannot be dropped."})
            .or_report(ctx, "Failed DB Query for backup. %s");
    }
};

}  // namespace

uint32_t x_qbobj_modifyBackupJob(CallContext *ctx, sqlite3 *db, BackupJob *job)
{
    if (!job) return 0;
    const JobsBefore before(ctx, db);
    for (; job; job = job->next) {
        TRY(modify_job(ctx, db, job));
        before.compare(job);
    }
    return before.drop();
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
