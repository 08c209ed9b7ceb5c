// Operation rows: configuration of the power supplies.
#pragma once

#include "api/operation.h"

namespace qb {

inline constexpr char kNotTold[] =
    "Port Type Enabled Name Description Share_enabled List1 SnmpCommunity SnmpMibs RemoteUserName RemotePassword";

inline constexpr QbobjOperation kUpsRows[] = {
    QB_OPERATION(getUpsConfigCollection, "power supplies", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Lists the power supply units with their last status.", out("ups")),
    QB_OPERATION(getUpsConfigByNameAtHost, "power supplies", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Reads a power supply unit by its resource id, name@host.", in("resourceId"), out("ups")),
    QB_OPERATION(addUpsConfig, "power supplies", kChanges, QBOBJ_RETURNS_CODE, "2 5 8 806 825 826",
                 "Adds a local, remote or SNMP power supply unit.",
                 inout("ups").ignores("UpsModel UpsMfr UpsMfrDate UpsSerial")),
    QB_OPERATION(deleteUpsConfig, "power supplies", kChanges, QBOBJ_RETURNS_CODE, "5 8",
                 "Deletes a power supply unit; a local one also stops being shared.", in("resourceId").or_null()),
    QB_OPERATION(setUpsConfig, "power supplies", kChanges, QBOBJ_RETURNS_CODE, "2 5 8 806 825",
                 "Changes the configuration of the power supply: the values are written to every unit.",
                 in("ups").ignores("Port UpsModel UpsMfr UpsMfrDate UpsSerial")),
    QB_OPERATION(setUpsInfo, "power supplies", kChanges, QBOBJ_RETURNS_CODE, "2 5 8",
                 "Stores what a power supply unit tells of itself.", in("ups").ignores(kNotTold)),
};

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
