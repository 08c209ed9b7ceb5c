// Operation rows: health of disks, enclosures and UPS units.
#pragma once

#include "api/operation.h"

namespace qb {

inline constexpr QbobjOperation kHealthRows[] = {
    QB_OPERATION(getDiskHealthCollection, "health", kReads, QBOBJ_RETURNS_CODE, "2 5 6",
                 "Lists the latest readings of the disks.", out("health")),
    QB_OPERATION(setDiskHealth, "health", kChanges, QBOBJ_RETURNS_CODE, "2 8", "Stores readings of disks.",
                 in("health").or_null().chained()),
    QB_OPERATION(getEnclosureHealth, "health", kReads, QBOBJ_RETURNS_CODE, "2 5 6",
                 "Reads the sensors of the enclosure of a Controller.", inout("health")),
    QB_OPERATION(getEnclosureHealthCollection, "health", kReads, QBOBJ_RETURNS_CODE, "2 5 6",
                 "Lists the enclosures with their sensors.", out("health")),
    QB_OPERATION(setEnclosureHealth, "health", kChanges, QBOBJ_RETURNS_CODE, "2 8",
                 "Stores readings of an enclosure's sensors.", in("health")),
    QB_OPERATION(setEnclosureHealthForTest, "health", kChanges, QBOBJ_RETURNS_CODE, "2 8",
                 "Stores readings to test with: those of a file, or the middle of the limits of each sensor never "
                 "measured.",
                 in("path").or_null()),
    QB_OPERATION(getUpsHealthCollection, "health", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Lists the UPS units with their latest readings, ready for display.", out("health")),
    QB_OPERATION(setUpsHealth, "health", kChanges, QBOBJ_RETURNS_CODE, "2 8", "Stores readings of UPS units.",
                 in("health").or_null().chained()),
};

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
