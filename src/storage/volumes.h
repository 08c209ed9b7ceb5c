// Volumes, disks, spares and the volumes' jobs: workers, and what they share.
#pragma once

#include "frame/pool.h"
#include "frame/worker.h"
#include "qbobj/storage.h"

namespace qb {

Worker<qbobj_getVolumeCollection> x_qbobj_getVolumeCollection;
Worker<qbobj_updateVolume> x_qbobj_updateVolume;
Worker<qbobj_deleteVolume> x_qbobj_deleteVolume;
Worker<qbobj_getDiskCollection> x_qbobj_getDiskCollection;
Worker<qbobj_getDiskCollectionForController> x_qbobj_getDiskCollectionForController;
Worker<qbobj_getDiskEnclosureCollection> x_qbobj_getDiskEnclosureCollection;
Worker<qbobj_getDiskEnclosurePort> x_qbobj_getDiskEnclosurePort;
Worker<qbobj_getDiskByDevname> x_qbobj_getDiskByDevname;
Worker<qbobj_setDiskSpare> x_qbobj_setDiskSpare;
Worker<qbobj_deleteDiskByDevname> x_qbobj_deleteDiskByDevname;
Worker<qbobj_getDiskDiff> x_qbobj_getDiskDiff;
Worker<qbobj_getDiskByDiskDiff> x_qbobj_getDiskByDiskDiff;
Worker<qbobj_getVolumeSparesCollection> x_qbobj_getVolumeSparesCollection;
Worker<qbobj_addVolumeSpare> x_qbobj_addVolumeSpare;
Worker<qbobj_deleteVolumeSpare> x_qbobj_deleteVolumeSpare;
Worker<qbobj_getVolumeScheduleCollection> x_qbobj_getVolumeScheduleCollection;
Worker<qbobj_addVolumeSchedule> x_qbobj_addVolumeSchedule;
Worker<qbobj_updateVolumeSchedule> x_qbobj_updateVolumeSchedule;
Worker<qbobj_deleteVolumeSchedule> x_qbobj_deleteVolumeSchedule;

/// The word for a disk's state in its pool, as stored with the pool's volume and host: "NEW" for a disk that no pool
/// has taken. A static text.
const char *pool_state_name(const char *state, const char *volume, uint64_t host_id);

/// The name by which an enclosure is addressed: "controller-" and its number. Null without memory.
const char *enclosure_key(CallContext *ctx, int32_t controller);

/// Reads the disk of a DevName. The record stays as it is when there is none, or when its port leads to several slots.
uint32_t find_disk(CallContext *ctx, sqlite3 *db, Disk *disk);

/// A disk's resource number: the leading decimal digits of its id.
int32_t disk_number(const char *id);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
