// Operation rows: iSCSI.
#pragma once

#include "api/operation.h"

namespace qb {

inline constexpr QbobjOperation kIscsiRows[] = {
    // ---- LUN groups
    QB_OPERATION(getLunGroupCollection, "iSCSI", kReads, QBOBJ_RETURNS_CODE, "2 5", "Lists the LUN groups by name.",
                 out("groups")),
    QB_OPERATION(getLunGroup, "iSCSI", kReads, QBOBJ_RETURNS_CODE, "2 5 6", "Reads a LUN group by its Name.",
                 inout("group")),
    QB_OPERATION(getLunGroupId, "iSCSI", kReads, QBOBJ_RETURNS_ID, "", "Row id of a LUN group.", in("name")),
    QB_OPERATION(addLunGroup, "iSCSI", kChanges, QBOBJ_RETURNS_CODE, "5 8", "Adds a LUN group.", in("group").or_null()),
    QB_OPERATION(modifyLunGroup, "iSCSI", kChanges, QBOBJ_RETURNS_CODE, "5 8",
                 "Writes everything but the name of the LUN group of that Name.",
                 in("group").or_null().keeps("ChapSecret")),
    QB_OPERATION(deleteLunGroup, "iSCSI", kChanges, QBOBJ_RETURNS_CODE, "5 8",
                 "Deletes a LUN group; its LUNs and its access list stay.", in("name").or_null()),

    // ---- initiators
    QB_OPERATION(getInitiatorCollection, "iSCSI", kReads, QBOBJ_RETURNS_CODE, "2 5", "Lists the initiators by name.",
                 out("initiators")),
    QB_OPERATION(getInitiator, "iSCSI", kReads, QBOBJ_RETURNS_CODE, "2 5 6", "Reads an initiator by its Name.",
                 inout("initiator")),
    QB_OPERATION(getInitiatorId, "iSCSI", kReads, QBOBJ_RETURNS_ID, "",
                 "Row id of an initiator whose name would do for a share.", in("name")),
    QB_OPERATION(addInitiator, "iSCSI", kChanges, QBOBJ_RETURNS_CODE, "5 8", "Adds an initiator.",
                 in("initiator").or_null()),
    QB_OPERATION(modifyInitiator, "iSCSI", kChanges, QBOBJ_RETURNS_CODE, "5 8",
                 "Writes the CHAP settings of the initiator of that Name.",
                 in("initiator").or_null().keeps("ChapSecret")),
    QB_OPERATION(deleteInitiator, "iSCSI", kChanges, QBOBJ_RETURNS_CODE, "5 8",
                 "Deletes an initiator; access lists keep its name.", in("name").or_null()),

    // ---- LUNs
    QB_OPERATION(getLun, "iSCSI", kReads, QBOBJ_RETURNS_CODE, "2 5 6", "Reads a LUN by its Name.", inout("lun")),
    QB_OPERATION(getLunId, "iSCSI", kReads, QBOBJ_RETURNS_ID, "", "Row id of a LUN whose name would do for a share.",
                 in("name")),
    QB_OPERATION(addLun, "iSCSI", kChanges, QBOBJ_RETURNS_CODE, "5 8", "Adds a LUN.", in("lun").or_null()),
    QB_OPERATION(deleteLun, "iSCSI", kChanges, QBOBJ_RETURNS_CODE, "5 8", "Deletes a LUN.", in("name").or_null()),

    // ---- access lists
    QB_OPERATION(getLunGroupAccessList, "iSCSI", kReads, QBOBJ_RETURNS_CODE, "2 5 8",
                 "Reads which initiators a LUN group admits.", in("lunGroup").or_null(), out("initiators")),
    QB_OPERATION(addLunGroupAccessList, "iSCSI", kChanges, QBOBJ_RETURNS_CODE, "5 8",
                 "Admits an initiator to a LUN group.", in("lunGroup").or_null(), in("initiator").or_null()),
    QB_OPERATION(deleteLunGroupAccessList, "iSCSI", kChanges, QBOBJ_RETURNS_CODE, "5 8",
                 "Empties the access list of a LUN group.", in("lunGroup").or_null()),
    QB_OPERATION(deleteIniFromLunGroupAccessList, "iSCSI", kChanges, QBOBJ_RETURNS_CODE, "5 8",
                 "Takes an initiator out of all access lists.", in("initiator").or_null()),
};

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
