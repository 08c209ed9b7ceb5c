// Operation rows: snapshots, clones and subvolumes.
#pragma once

#include "api/operation.h"

namespace qb {

inline constexpr QbobjOperation kSnapshotsRows[] = {
    // ---- snapshots of shares
    QB_OPERATION(getSnapshotCollection, "snapshots", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Lists snapshots of shares: of a share, a volume, a type, a range of times, in order, page by page.",
                 out("snapshots"), in("shareName").or_null(), in("volumeName").or_null(), in("type"), in("from"),
                 in("to"), in("sortColumn").or_null(), in("descending"), in("limit"), in("offset")),
    QB_OPERATION(getSnapshotCollectionCount, "snapshots", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Counts snapshots of shares: of a share, a volume, a type, a range of times.",
                 in("shareName").or_null(), in("volumeName").or_null(), in("type"), in("from"), in("to"), out("count")),
    QB_OPERATION(addSnapshot, "snapshots", kChanges, QBOBJ_RETURNS_CODE, "2 5 8",
                 "Records snapshots of shares that were taken.", inout("snapshot").or_null().chained()),
    QB_OPERATION(deleteSnapshot, "snapshots", kChanges, QBOBJ_RETURNS_CODE, "2 5 6 8",
                 "Forgets snapshots of a share or a volume: newer than a time (1) or than a snapshot (2), of a second "
                 "(3), of a name, all.",
                 in("volumeName"), in("shareName").or_null(), in("deleteNewer"), in("snapshotName").or_null(),
                 in("time")),

    // ---- snapshots of home folders
    QB_OPERATION(getHfSnapshotCollection, "snapshots", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Lists snapshots of home folders: of a user, a folder, a type, a range of times, in order, page by "
                 "page.",
                 out("snapshots"), in("userName").or_null(), in("homeDir").or_null(), in("type"), in("from"), in("to"),
                 in("sortColumn").or_null(), in("descending"), in("limit"), in("offset")),
    QB_OPERATION(getHfSnapshotCollectionCount, "snapshots", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Counts snapshots of home folders: of a user, a folder, a type, a range of times.",
                 in("userName").or_null(), in("homeDir").or_null(), in("type"), in("from"), in("to"), out("count")),
    QB_OPERATION(addHfSnapshot, "snapshots", kChanges, QBOBJ_RETURNS_CODE, "2 5 8",
                 "Records snapshots of home folders that were taken.", inout("snapshot").or_null().chained()),
    QB_OPERATION(deleteHfSnapshot, "snapshots", kChanges, QBOBJ_RETURNS_CODE, "2 5 6",
                 "Forgets snapshots of a home folder: newer than a time (1) or than a snapshot (2), of a second (3), "
                 "of a name, all.",
                 in("userName").or_null(), in("homeDir"), in("deleteNewer"), in("snapshotName").or_null(), in("time")),
    QB_OPERATION(getHfSnapshotSchedule, "snapshots", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Reads when snapshots of the home folders are taken.", out("schedule")),
    QB_OPERATION(addHfSnapshotSchedule, "snapshots", kChanges, QBOBJ_RETURNS_CODE, "2 5",
                 "Sets when snapshots of the home folders are taken.", in("schedule")),
    QB_OPERATION(modifyHfSnapshotSchedule, "snapshots", kChanges, QBOBJ_RETURNS_CODE, "2 5",
                 "Changes when snapshots of the home folders are taken: Enabled, the texts given, the other numbers "
                 "that are not 0.",
                 in("schedule")),

    // ---- clones
    QB_OPERATION(getSnapshotClones, "snapshots", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Lists clones: of a snapshot, of a parent, or all.", in("parentSnapshotName").or_null(),
                 in("parentzfsName").or_null(), out("clones")),
    QB_OPERATION(addSnapshotClone, "snapshots", kChanges, QBOBJ_RETURNS_CODE, "2 5", "Records a clone of a snapshot.",
                 in("clonedzfsName"), in("parentSnapshotName"), in("parentzfsName")),
    QB_OPERATION(deleteSnapshotClone, "snapshots", kChanges, QBOBJ_RETURNS_CODE, "2 5",
                 "Forgets the clones of a snapshot (both parent names), else the clone of a name, else those of a "
                 "parent.",
                 in("clonedzfsName").or_null(), in("parentSnapshotName").or_null(), in("parentzfsName").or_null()),

    // ---- subvolumes
    QB_OPERATION(getSubvolumeFullCollection, "subvolumes", kReads, QBOBJ_RETURNS_CODE, "2",
                 "Lists the subvolumes of a volume, its root last.", in("volumeName"), out("subvolumes")),
    QB_OPERATION(getSubvolumeSnapshotCollection, "subvolumes", kReads, QBOBJ_RETURNS_CODE, "2",
                 "Lists the subvolumes of a volume that are snapshots.", in("volumeName"), out("subvolumes")),
    QB_OPERATION(getSubvolumeDataCollection, "subvolumes", kReads, QBOBJ_RETURNS_CODE, "2",
                 "Lists the subvolumes of a volume that are no snapshots, its root last.", in("volumeName"),
                 out("subvolumes")),
};

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
