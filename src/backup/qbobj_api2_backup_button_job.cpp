// The jobs that the button on the front starts.
#include "backup/backup.h"
#include "frame/list.h"
#include "frame/query.h"
#include "frame/read_row.h"

namespace qb {

uint32_t x_qbobj_getBackupButtonJobCollection(CallContext *ctx, sqlite3 *db, BackupButtonJobCollection *jobs)
{
    QB_ASSERT(jobs);
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT J.backup_id,B.name FROM backup_button_jobs J INNER JOIN backup B ON B.id=J.backup_id "
               "ORDER BY J.`order`")
            .or_report(ctx, "Failed DB Query for (SELECT backup_button_jobs). %s"));
    BackupButtonJob *read = nullptr;
    List<BackupButtonJob> list(&read);
    for (int i = 0; i < rows.count; i++) {
        BackupButtonJob *job = list.append(ctx);
        TRY_MEMORY(ctx, "Failed to allocate object.");
        read_row(ctx, rows, i, job->JobId, empty(job->JobName));
    }
    TRY_MEMORY(ctx, "Failed to allocate object.");
    List<BackupButtonJob>(&jobs->Jobs).link(read);
    return 0;
}

uint32_t x_qbobj_setBackupButtonJobCollection(CallContext *ctx, sqlite3 *db, BackupButtonJobCollection *jobs)
{
    QB_ASSERT(jobs);
    TRY(execute(ctx, db, "DELETE FROM backup_button_jobs")
            .or_report(ctx, "Failed DB Query (DELETE backup_button_jobs). %s"));
    for (const BackupButtonJob *job = jobs->Jobs; job; job = job->next)
        TRY(execute(ctx, db,
                    "INSERT INTO backup_button_jobs (`order`,backup_id) VALUES((SELECT IFNULL(MAX(`order`),0)+1 FROM "
                    "backup_button_jobs),%d)",
                    job->JobId)
                .or_report(ctx, "Failed DB Query for (INSERT backup_button_jobs). %s"));
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
