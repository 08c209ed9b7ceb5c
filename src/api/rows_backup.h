// Operation rows: backup.
#pragma once

#include "api/operation.h"

namespace qb {

inline constexpr QbobjOperation kBackupRows[] = {
    // ---- jobs
    QB_OPERATION(getBackupJobCollection, "backup", kReads, QBOBJ_RETURNS_CODE, "2 5", "Lists the backup jobs.",
                 out("jobs")),
    QB_OPERATION(getBackupJob, "backup", kReads, QBOBJ_RETURNS_CODE, "2 5 6", "Reads a backup job by its id.",
                 inout("job")),
    QB_OPERATION(addBackupJob, "backup", kChanges, QBOBJ_RETURNS_CODE, "2 5 8 807 841",
                 "Adds backup jobs, all of them or none.", inout("job").or_null().chained()),
    QB_OPERATION(modifyBackupJob, "backup", kChanges, QBOBJ_RETURNS_CODE, "2 5 8 807 841",
                 "Writes backup jobs anew, all of them or none, and tells which changed.",
                 inout("job").or_null().chained().keeps("Source.Password Destination.Password")),
    QB_OPERATION(deleteBackupJob, "backup", kChanges, QBOBJ_RETURNS_CODE, "5 6 8",
                 "Deletes backup jobs by their ids, all of them or none.", inout("job").or_null().chained()),
    QB_OPERATION(hasBackupJob, "backup", kReads, QBOBJ_RETURNS_TRUTH, "",
                 "Tells whether there is a backup job with an id.", in("jobId")),

    // ---- targets
    QB_OPERATION(getBackupTargetCollection, "backup", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Lists what a backup job can read and write.", out("targets")),
    QB_OPERATION(getBackupUSBSubType, "backup", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Name of a USB port for backup, null for an unknown port.", in("usbPortName"), out("subType")),

    // ---- the backup button
    QB_OPERATION(getBackupButtonJobCollection, "backup", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Lists the jobs that the backup button starts, in their order.", out("jobs")),
    QB_OPERATION(setBackupButtonJobCollection, "backup", kChanges, QBOBJ_RETURNS_CODE, "5",
                 "Sets the jobs that the backup button starts.", in("jobs").ignores("Jobs.JobName")),
};

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
