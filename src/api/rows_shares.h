// Operation rows: shares.
#pragma once

#include "api/operation.h"

namespace qb {

/// A share stays on its volume and what it is. How snapshots show is told by the name of their folder.
inline constexpr const char *kNotOfAShareChange =
    "ZfsName ShareType VolumeId VisibleSnapshot Origin Stat.AclInherit SnapshotSchedule.Month "
    "SnapshotSchedule.TemporaryDisable";

inline constexpr QbobjOperation kSharesRows[] = {
    // ---- reading
    QB_OPERATION(getShareCollection, "share query", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Lists the file shares by name, with everything that belongs to them.", out("shares")),
    QB_OPERATION(getSimpleShareCollection, "share query", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Lists the file shares in brief: id, name, common protocols, applications.", out("shares")),
    QB_OPERATION(getShareAndZvolCollection, "share query", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Lists file shares and block volumes by name.", out("shares")),
    QB_OPERATION(getSubvolumeShareCollection, "share query", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Lists the shares of all types by name.", out("shares")),
    QB_OPERATION(getAccessibleShareCollection, "share query", kReads, QBOBJ_RETURNS_CODE, "2 5 8",
                 "Lists the file shares, filling those that a user may see over cifs or http.",
                 in("userName").or_null(), in("protocolName"), out("shares")),
    QB_OPERATION(getShare, "share query", kReads, QBOBJ_RETURNS_CODE, "2 5 6",
                 "Reads shares by ShareId or ShareName, with everything that belongs to them.",
                 inout("share").chained()),
    QB_OPERATION(getShareId, "share query", kReads, QBOBJ_RETURNS_ID, "", "Finds the id of a share by its name.",
                 in("shareName").or_null()),
    QB_OPERATION(getShareAccess, "share query", kReads, QBOBJ_RETURNS_CODE, "2",
                 "Tells what a user may do in a share over SMB.", in("shareName").or_null(), in("userName").or_null(),
                 out("access")),
    QB_OPERATION(getPathAccess, "share query", kReads, QBOBJ_RETURNS_CODE, "2",
                 "Tells what a user may do over SMB in the share that a path lies in.", in("path").or_null(),
                 in("userName").or_null(), out("access")),
    QB_OPERATION(getUsedByOn, "share query", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Lists the applications that use a data set or any data set of a volume.", in("name").or_null(),
                 out("usedby")),
    QB_OPERATION(queryShare, "share query", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Lists the shares that match a volume, a name pattern and a data set.", in("volumeId").or_null(),
                 in("namePattern").or_null(), in("zfsName").or_null(), out("shares")),
    QB_OPERATION(getShareSnapshotSchedule, "share query", kReads, QBOBJ_RETURNS_CODE, "2 5 6",
                 "Reads the snapshot schedule of a share.", in("shareName").or_null(), out("schedule")),
    QB_OPERATION(getShareProcess, "share query", kReads, QBOBJ_RETURNS_CODE, "2 5 8",
                 "Lists the processes that hold a share.", in("zfsName").or_null(), out("procs").or_null()),

    // ---- creating
    QB_OPERATION(addShare, "share creation", kChanges, QBOBJ_RETURNS_CODE, "2 5 8 800 806 808 835",
                 "Creates shares, all or none, with options, access lists and snapshot policy.",
                 inout("share").or_null().chained()),
    QB_OPERATION(addShareProcess, "share creation", kChanges, QBOBJ_RETURNS_CODE, "5",
                 "Registers a process that holds a share.", in("zfsName").or_null(), in("pid"), in("blocking")),
    QB_OPERATION(addShareUsedBy, "share creation", kChanges, QBOBJ_RETURNS_CODE, "5 8",
                 "Registers an application that uses a data set.", in("zfsName").or_null(), in("usedby").or_null()),

    // ---- changing
    QB_OPERATION(
        modifyShare, "share modification", kChanges, QBOBJ_RETURNS_CODE, "2 5 6 8 800 806 808 831 835 901 903",
        "Changes shares, all or none: what a record gives, with all lists of the protocols that it gives.",
        inout("share").or_null().chained().ignores(kNotOfAShareChange).keeps("Rsync.UserPasswordAcl.Password")),
    QB_OPERATION(modifyShareVisibleSnapFolder, "share modification", kChanges, QBOBJ_RETURNS_CODE, "5",
                 "Sets the folder in which the snapshots of a share show.", in("zfsName").or_null(),
                 in("folder").or_null()),
    QB_OPERATION(modifyShareUsedBy, "share modification", kChanges, QBOBJ_RETURNS_CODE, "5 8",
                 "Registers an application that uses a share, unless it does already.", in("shareId").or_null(),
                 in("usedby").or_null()),
    QB_OPERATION(modifyShareUsedByExclusive, "share modification", kChanges, QBOBJ_RETURNS_CODE, "5 8",
                 "Registers an application that uses a share and no other.", in("zfsName").or_null(),
                 in("usedby").or_null()),
    QB_OPERATION(modifyZvol, "share modification", kChanges, QBOBJ_RETURNS_CODE, "5",
                 "Changes name, comment and size of a block volume.", in("zfsName").or_null(),
                 in("shareName").or_null(), in("comment").or_null(), in("sizeKB"), in("isSparse")),
    QB_OPERATION(modifyShareSnapshotSchedule, "share modification", kChanges, QBOBJ_RETURNS_CODE, "2 5 6",
                 "Changes when snapshots of a share are taken.", in("shareName").or_null(),
                 in("schedule").ignores("Month TemporaryDisable")),

    // ---- deleting
    QB_OPERATION(deleteShare, "share deletion", kChanges, QBOBJ_RETURNS_CODE, "2 5 6 8 902",
                 "Deletes shares by ShareId, all or none, with everything that belongs to them.",
                 in("share").or_null().chained().ignores("ShareName VolumeId Path ZfsName")),
    QB_OPERATION(deleteZvol, "share deletion", kChanges, QBOBJ_RETURNS_CODE, "2 5 6",
                 "Deletes the block volume or share of a data set, whoever uses it.", in("zfsName").or_null()),
    QB_OPERATION(deleteShareOnVolume, "share deletion", kChanges, QBOBJ_RETURNS_CODE, "2 5 6",
                 "Deletes every share of a volume, whoever uses it.", in("volumeId").or_null()),
    QB_OPERATION(deleteShareProcess, "share deletion", kChanges, QBOBJ_RETURNS_CODE, "5",
                 "Takes a process off a share that it held, or all of them.", in("zfsName").or_null(), in("pid")),
    QB_OPERATION(deleteShareUsedBy, "share deletion", kChanges, QBOBJ_RETURNS_CODE, "5 8",
                 "Takes an application off a data set that it used.", in("zfsName").or_null(),
                 in("usedby").or_null().ignores("AppData")),

    // ---- migrating and copying
    QB_OPERATION(preMigrateShare, "share migration", kChanges, QBOBJ_RETURNS_CODE, "5 8 815",
                 "Marks a share that is about to move to another volume.", in("zfsName").or_null(),
                 in("destVolumeId").or_null()),
    QB_OPERATION(postMigrateShare, "share migration", kChanges, QBOBJ_RETURNS_CODE, "2 5",
                 "Ends a migration: moves the share's records, or leaves it where it was.", in("zfsName").or_null(),
                 in("success"), out("newPath").or_null()),
    QB_OPERATION(copyShare, "share migration", kChanges, QBOBJ_RETURNS_CODE, "2 5 8 800",
                 "Copies a share's configuration under a new name.", in("volumeName").or_null(),
                 in("shareName").or_null(), in("newShareName").or_null(), out("newShareId").or_null()),
};

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
