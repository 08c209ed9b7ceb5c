// What the workers of backup jobs share: a job's id, and the rules that a job obeys before it is stored.
#pragma once

#include "backup/backup.h"

namespace qb {

/// The id that addresses a job, below 1 when it names none.
inline int32_t id_of(const BackupJob *job)
{
    return job->resource_id < 1 ? job->JobId : job->resource_id;
}

/// Checks that nothing is missing.
uint32_t check_parts(CallContext *ctx, const BackupJob *job);

/// Checks that the source and the destination go together. Call it after check_parts().
uint32_t check_sides(CallContext *ctx, sqlite3 *db, const BackupJob *job);

/// Checks that no other job than the one with `id` has the job's name.
uint32_t check_job_name(CallContext *ctx, sqlite3 *db, const BackupJob *job, int32_t id);

/// Checks that a source that is the Time Machine store is there.
uint32_t check_timemachine(CallContext *ctx, sqlite3 *db, const BackupJob *job);

/// The path of a side as it is stored, "" for null; null without memory.
const char *stored_path(CallContext *ctx, const BackupJob_SourceOrDestination *side);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
