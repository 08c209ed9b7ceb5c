// Operation rows: volumes, disks, spares, and the volumes' jobs.
#pragma once

#include "api/operation.h"

namespace qb {

inline constexpr QbobjOperation kVolumesRows[] = {
    // ---- volumes and disks
    QB_OPERATION(getVolumeCollection, "volumes and disks", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Lists the volumes by name.", out("volumes")),
    QB_OPERATION(deleteVolume, "volumes and disks", kChanges, QBOBJ_RETURNS_CODE, "3 5 6",
                 "Deletes a volume with its shares and all Time Machine allowances; home folders go to another volume.",
                 in("volumeId")),
    QB_OPERATION(updateVolume, "volumes and disks", kChanges, QBOBJ_RETURNS_CODE, "5",
                 "Refreshes the figures of the volume of that VolumeId.", in("volume").or_null()),
    QB_OPERATION(getDiskCollection, "volumes and disks", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Lists the disks of the main chassis by channel.", out("disks")),
    QB_OPERATION(getDiskCollectionForController, "volumes and disks", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Lists the disks of an enclosure by channel.", out("disks"), in("controller")),
    QB_OPERATION(getDiskEnclosureCollection, "volumes and disks", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Lists all enclosures with their disks.", out("enclosures")),
    QB_OPERATION(getDiskEnclosurePort, "volumes and disks", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Reads the label of the port that leads to an enclosure.", in("controller"), out("label")),
    QB_OPERATION(getDiskByDevname, "volumes and disks", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Reads a disk by its DevName.", inout("disk").or_null()),
    QB_OPERATION(setDiskSpare, "volumes and disks", kChanges, QBOBJ_RETURNS_CODE, "5",
                 "Notes whether a spare stands in for a disk.", in("devname").or_null(), in("flag")),
    QB_OPERATION(getDiskDiff, "volumes and disks", kChanges, QBOBJ_RETURNS_CODE, "2 3",
                 "Takes an inventory of the disks and tells which were plugged in and which were pulled.",
                 out("diff").or_null()),
    QB_OPERATION(getDiskByDiskDiff, "volumes and disks", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Reads the absent disk that sat in the bay of a difference.", in("diff").or_null(),
                 inout("disk").or_null()),
    QB_OPERATION(deleteDiskByDevname, "volumes and disks", kChanges, QBOBJ_RETURNS_CODE, "5",
                 "Removes the disk of that DevName from the inventory.", in("disk").or_null()),

    // ---- spares and volume schedules
    QB_OPERATION(getVolumeSparesCollection, "spares and volume schedules", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Lists the disks set aside as spares.", out("spares")),
    QB_OPERATION(addVolumeSpare, "spares and volume schedules", kChanges, QBOBJ_RETURNS_CODE, "5",
                 "Sets a disk aside as a spare.", in("diskId")),
    QB_OPERATION(deleteVolumeSpare, "spares and volume schedules", kChanges, QBOBJ_RETURNS_CODE, "5",
                 "Takes a disk from the spares.", in("diskId")),
    QB_OPERATION(addVolumeSchedule, "spares and volume schedules", kChanges, QBOBJ_RETURNS_CODE, "5",
                 "Adds a volume's recurring job under a number that is free.", in("schedule").or_null()),
    QB_OPERATION(deleteVolumeSchedule, "spares and volume schedules", kChanges, QBOBJ_RETURNS_CODE, "5",
                 "Deletes the job of that JobID, or with -1 all jobs of the volume of that VolumeName.",
                 in("schedule").or_null()),
    QB_OPERATION(getVolumeScheduleCollection, "spares and volume schedules", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Lists the recurring jobs of volumes.", out("schedules")),
    QB_OPERATION(updateVolumeSchedule, "spares and volume schedules", kChanges, QBOBJ_RETURNS_CODE, "5",
                 "Changes when the job of that JobID runs and what it does.", in("schedule").or_null()),
};

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
