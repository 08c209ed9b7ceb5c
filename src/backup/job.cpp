#include "backup/job.h"

#include <cstring>

#include "frame/pool.h"
#include "frame/query.h"
#include "validate/validate.h"
#include "validate/validate_db.h"

namespace qb {
namespace {

using Side = BackupJob_SourceOrDestination;

bool is_type(const Side *side, const char *type)
{
    return strcmp(side->Type, type) == 0;
}

bool is_same(const Side *source, const Side *destination)
{
    return is_type(destination, source->Type) &&
           strcmp(source->ShareNameOrProtocol, destination->ShareNameOrProtocol) == 0;
}

bool is_all_homes(const Side *side)
{
    return strcmp(side->ShareNameOrProtocol, "*") == 0;
}

/// Both rules are looked at: all homes into all homes breaks both, and the second is the better one to be told.
uint32_t check_home(CallContext *ctx, const Side *source, const Side *destination)
{
    uint32_t rc = 0;
    if (!is_type(destination, "home")) return rc;
    if (is_same(source, destination)) rc = REPORT(ctx, 8, "Source/Destination cannot be the same user's home");
    if (is_all_homes(source)) rc = REPORT(ctx, 8, "Cannot backup all homes to one's home");
    return rc;
}

/// A volume may be copied into a share, even into one of its own; only a database that does not answer is an error.
uint32_t check_volume(CallContext *ctx, sqlite3 *db, const Side *source, const Side *destination)
{
    if (is_same(source, destination)) return REPORT(ctx, 8, "Source/Destination cannot be the same volume");
    if (!is_type(destination, "share")) return 0;
    Rows rows;
    return select(ctx, db, rows, "SELECT 1 FROM share S INNER JOIN _volume V ON V.id=S.volume_id WHERE S.name=%Q",
                  destination->ShareNameOrProtocol)
        .or_report(ctx, "Failed DB Query (SELECT share). %s");
}

}  // namespace

uint32_t check_parts(CallContext *ctx, const BackupJob *job)
{
    const Side *source = job->Source;
    const Side *destination = job->Destination;
    if (!source || !destination || !job->Schedule || !job->Option || !source->ShareNameOrProtocol ||
        !destination->ShareNameOrProtocol)
        return REPORT(ctx, 8, "Source, Destination, Schedule or Option is NULL");
    if (!source->Type || !destination->Type) return REPORT(ctx, 8, "Source->Type or  Destination->Type is NULL");
    return 0;
}

uint32_t check_sides(CallContext *ctx, sqlite3 *db, const BackupJob *job)
{
    const Side *source = job->Source;
    const Side *destination = job->Destination;
    if (is_type(source, "share"))
        return is_same(source, destination) ? REPORT(ctx, 8, "Source/Destination cannot be the same share") : 0;
    if (is_type(source, "home")) return check_home(ctx, source, destination);
    if (is_type(source, "volume")) return check_volume(ctx, db, source, destination);
    if (is_type(source, "usb"))
        return is_same(source, destination) ? REPORT(ctx, 8, "Source/Destination cannot be the same usb port") : 0;
    if (is_type(source, "remote") && is_type(destination, "remote"))
        return REPORT(ctx, 8, "Source/Destination cannot be remote");
    return 0;
}

uint32_t check_job_name(CallContext *ctx, sqlite3 *db, const BackupJob *job, int32_t id)
{
    int32_t taken = 0;
    bool found = false;
    // A look-up that fails counts as not found.
    if (find_name(ctx, db, NameCheck::backup_job, job->JobName, found, taken) || !found || taken == id) return 0;
    return REPORT(ctx, 807, "JobName specified is already exist.");
}

uint32_t check_timemachine(CallContext *ctx, sqlite3 *db, const BackupJob *job)
{
    if (is_type(job->Source, "timemachine") && !qbdb_is_timemachine_path_valid(ctx->qbdb, db))
        return REPORT(ctx, 841, "Timemachine is not configured.");
    return 0;
}

const char *stored_path(CallContext *ctx, const Side *side)
{
    const char *path = or_empty(side->Path);
    if (check_one_of(side->ShareNameOrProtocol, Case::exact, {"cifs", "cifs-ab"})) return path;
    return noted(ctx, qbdb_normalize_smb_path(ctx->qbdb, path));
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
