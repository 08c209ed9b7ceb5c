// Backup jobs: what other families may call, and the workers.
#pragma once

#include "frame/report.h"
#include "frame/worker.h"
#include "qbobj/backup.h"

namespace qb {

/// Lets the jobs that read or write a share follow its new name.
uint32_t rename_share_in_backup_jobs(CallContext *ctx, sqlite3 *db, const char *old_name, const char *new_name);

/// Deletes the jobs that read or write a share. Call it while the share has still its row. Their places on the list
/// of the backup button stay and do not show.
uint32_t delete_backup_jobs_of_share(CallContext *ctx, sqlite3 *db, int32_t share_id);

Worker<qbobj_getBackupJobCollection> x_qbobj_getBackupJobCollection;
Worker<qbobj_getBackupJob> x_qbobj_getBackupJob;
Worker<qbobj_addBackupJob> x_qbobj_addBackupJob;
Worker<qbobj_modifyBackupJob> x_qbobj_modifyBackupJob;
Worker<qbobj_deleteBackupJob> x_qbobj_deleteBackupJob;
Worker<qbobj_hasBackupJob, int32_t> x_qbobj_hasBackupJob;
Worker<qbobj_getBackupTargetCollection> x_qbobj_getBackupTargetCollection;
Worker<qbobj_getBackupButtonJobCollection> x_qbobj_getBackupButtonJobCollection;
Worker<qbobj_setBackupButtonJobCollection> x_qbobj_setBackupButtonJobCollection;
Worker<qbobj_getBackupUSBSubType> x_qbobj_getBackupUSBSubType;

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
