// Operation rows: protocols, Time Machine, TiVo, Coffer, the dictionary, the daemon's record.
#pragma once

#include "api/operation.h"

namespace qb {

inline constexpr char kStoredPassword[] = "Protocol.DaapOptions.password";
inline constexpr char kUnusedPassword[] = "Protocol.ReplicateOptions.Password";

inline constexpr QbobjOperation kServicesRows[] = {
    // ---- protocol settings
    QB_OPERATION(getProtocolCollection, "protocol settings", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Reads the settings of all protocols but Bonjour.", out("collection")),
    QB_OPERATION(getProtocol, "protocol settings", kReads, QBOBJ_RETURNS_CODE, "2 5 8",
                 "Reads the settings of one protocol by its word.", in("name"), out("collection")),
    QB_OPERATION(getSnmpOptions, "protocol settings", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Reads the SNMP settings alone.", out("options")),
    QB_OPERATION(getHomeFolderOptions, "protocol settings", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Reads over which protocols home folders are served, and their snapshot policy.", out("options")),
    QB_OPERATION(setProtocolCollection, "protocol settings", kChanges, QBOBJ_RETURNS_CODE,
                 "2 3 5 8 810 812 813 814 816 817 818 821 827 828 829 830",
                 "Writes the settings of protocols and tells which have changed.",
                 inout("collection").keeps(kStoredPassword).ignores(kUnusedPassword)),
    QB_OPERATION(setProtocolEnable, "protocol settings", kChanges, QBOBJ_RETURNS_CODE, "2 5 8",
                 "Switches one service on or off by its word.", in("name"), in("enabled")),
    QB_OPERATION(setHomeFolderOptions, "protocol settings", kChanges, QBOBJ_RETURNS_CODE, "2 5",
                 "Writes over which protocols home folders are served, and their snapshot policy.", in("options")),

    // ---- Time Machine, TiVo, Coffer
    QB_OPERATION(getTimemachine, "time machine", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Reads the shared Time Machine target.", out("tm")),
    QB_OPERATION(setTimemachine, "time machine", kChanges, QBOBJ_RETURNS_CODE, "2 5 8 843",
                 "Switches the shared Time Machine target on, with its size and password, or off.",
                 in("tm").keeps("Password")),
    QB_OPERATION(setTimemachineEnable, "time machine", kChanges, QBOBJ_RETURNS_CODE, "2 5",
                 "Switches the shared Time Machine target on or off without other changes.", in("enable")),
    QB_OPERATION(getTIVOSettings, "tivo", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Reads the TiVo archiver's plan, folder and devices; waits while these are looked for.",
                 inout("tivo")),
    QB_OPERATION(setTIVOSettings, "tivo", kChanges, QBOBJ_RETURNS_CODE, "2 5 8",
                 "Writes the plan and the folder of the TiVo archiver.", in("tivo")),
    QB_OPERATION(setTIVOMak, "tivo", kChanges, QBOBJ_RETURNS_CODE, "2 5 8",
                 "Stores or removes the media access key of a TiVo device.", in("mak")),
    QB_OPERATION(getCofferSettings, "coffer", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Reads the settings of the Coffer cloud backup.", out("coffer")),
    QB_OPERATION(setCofferSettings, "coffer", kChanges, QBOBJ_RETURNS_CODE, "2 5 8",
                 "Logs in to the Coffer cloud backup, or out.", in("coffer")),
    QB_OPERATION(cleanCofferSettings, "coffer", kChanges, QBOBJ_RETURNS_CODE, "2 5",
                 "Forgets the account of the Coffer cloud backup."),

    // ---- dictionary and daemon record
    QB_OPERATION(getDictionary, "dictionary", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Hands out the texts of the user interface in one language as XML.", in("languageWish").or_null(),
                 out("dictionary")),
    QB_OPERATION(getTranslatedString, "dictionary", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Translates one text of the user interface.", in("languageWish").or_null(), in("key").or_null(),
                 in("defaultText").or_null(), out("text")),
    QB_OPERATION(getQuillboxdInfo, "daemon record", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Reads when the appliance's daemon last started and stopped, and its version.",
                 out("started").or_null(), out("stopped").or_null(), out("version").or_null()),
    QB_OPERATION(setQuillboxdInfo, "daemon record", kChanges, QBOBJ_RETURNS_CODE, "2 8",
                 "Records when the appliance's daemon started and stopped, and its version; below 0 leaves a time.",
                 in("started"), in("stopped"), in("version").or_null()),
};

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
