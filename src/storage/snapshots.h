// Snapshots of shares and home folders, their clones, subvolumes: workers.
#pragma once

#include <cstdio>

#include "frame/list.h"
#include "frame/set_list.h"
#include "frame/worker.h"
#include "qbobj/storage.h"

namespace qb {

Worker<qbobj_getSnapshotCollection> x_qbobj_getSnapshotCollection;
Worker<qbobj_getSnapshotCollectionCount> x_qbobj_getSnapshotCollectionCount;
Worker<qbobj_addSnapshot> x_qbobj_addSnapshot;
Worker<qbobj_deleteSnapshot> x_qbobj_deleteSnapshot;

Worker<qbobj_getHfSnapshotCollection> x_qbobj_getHfSnapshotCollection;
Worker<qbobj_getHfSnapshotCollectionCount> x_qbobj_getHfSnapshotCollectionCount;
Worker<qbobj_addHfSnapshot> x_qbobj_addHfSnapshot;
Worker<qbobj_deleteHfSnapshot> x_qbobj_deleteHfSnapshot;

Worker<qbobj_getHfSnapshotSchedule> x_qbobj_getHfSnapshotSchedule;
Worker<qbobj_addHfSnapshotSchedule> x_qbobj_addHfSnapshotSchedule;
Worker<qbobj_modifyHfSnapshotSchedule> x_qbobj_modifyHfSnapshotSchedule;

Worker<qbobj_getSnapshotClones> x_qbobj_getSnapshotClones;
Worker<qbobj_addSnapshotClone> x_qbobj_addSnapshotClone;
Worker<qbobj_deleteSnapshotClone> x_qbobj_deleteSnapshotClone;

Worker<qbobj_getSubvolumeFullCollection> x_qbobj_getSubvolumeFullCollection;
Worker<qbobj_getSubvolumeSnapshotCollection> x_qbobj_getSubvolumeSnapshotCollection;
Worker<qbobj_getSubvolumeDataCollection> x_qbobj_getSubvolumeDataCollection;

/// A share on its volume, as a snapshot's two names mean it.
struct SharePlace {
    int32_t share_id = 0;
    const char *volume_id = nullptr;
};

/// Looks up a share by its name.
uint32_t require_share(CallContext *ctx, sqlite3 *db, const char *name, SharePlace &place);
/// Looks up a volume by its name.
uint32_t require_volume(CallContext *ctx, sqlite3 *db, const char *name, SharePlace &place);
/// Checks that the share found lies on the volume found.
uint32_t require_share_on_volume(CallContext *ctx, sqlite3 *db, const SharePlace &place, const char *share_name,
                                 const char *volume_name);

/// The assignments of what a schedule gives: whether it runs, texts that are not null and numbers that are not 0.
void assign_schedule(SetList<512> *set, const Schedule &schedule);

/// Reads the tool's listing of a volume's subvolumes to its end and appends each of them.
uint32_t read_subvolumes(CallContext *ctx, FILE *listing, const char *volume_name, List<Subvolume> &list);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
