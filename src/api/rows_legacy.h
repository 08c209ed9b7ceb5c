// Operation rows: settings by key, folder attributes.
#pragma once

#include "api/operation.h"

namespace qb {

inline constexpr QbobjOperation kLegacyRows[] = {
    QB_LEGACY_OPERATION(getFolderAttribute, kReads, QBOBJ_RETURNS_CODE, "2 5",
                        "Tells whether a folder is a share or a home folder, or lies in one.", in("path").or_null(),
                        out("attr")),
    QB_LEGACY_OPERATION(getServiceEntry, kReads, QBOBJ_RETURNS_CODE, "5 6", "Reads a service setting.", in("key"),
                        out("val")),
    QB_LEGACY_OPERATION(setServiceEntry, kChanges, QBOBJ_RETURNS_CODE, "2 5 8",
                        "Writes a service setting and its mirror, or removes it (null).", in("key"),
                        in("val").or_null()),
    QB_LEGACY_OPERATION(getRegistryEntry, kReads, QBOBJ_RETURNS_CODE, "5 6", "Reads an entry of the registry.",
                        in("key"), out("val")),
    QB_LEGACY_OPERATION(setRegistryEntry, kChanges, QBOBJ_RETURNS_CODE, "5",
                        "Writes an entry of the registry; removing one (null) always fails.", in("key"),
                        in("val").or_null()),
};

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
