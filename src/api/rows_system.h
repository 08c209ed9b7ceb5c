// Operation rows: the log and the network interfaces.
#pragma once

#include "api/operation.h"

namespace qb {

inline constexpr const char *kSeverities[] = {"debug", "info",  "notice", "warning", "err",
                                              "crit",  "alert", "emerge", nullptr};
inline constexpr const char *kCategories[] = {"snapshot", "mbackup", "backup", "account", "share", "volume",
                                              "disk",     "system",  "misc",   "apps",    nullptr};

inline constexpr QbobjOperation kSystemRows[] = {
    // ---- system log
    QB_OPERATION(getLog, "system log", kReads, QBOBJ_RETURNS_CODE, "2 5 8",
                 "Reads the entries that match a query, page by page, and counts the matching and all entries.",
                 in("query").or_null(), out("entries"), out("count"), out("total")),
    QB_OPERATION(deleteLog, "system log", kChanges, QBOBJ_RETURNS_CODE, "2 5 8",
                 "Deletes the entries that match a query's times, least severity and categories.",
                 in("query").or_null().ignores("limit offset order severity_in msg_tag")),
    QB_OPERATION(truncateLog, "system log", kChanges, QBOBJ_RETURNS_CODE, "5",
                 "Cuts the log down to its newest entries.", in("keep")),
    QB_OPERATION(addLog, "system log", kChanges, QBOBJ_RETURNS_CODE, "5 8", "Adds an entry.", in("time"),
                 in("severity").or_null().one_of(kSeverities), in("category").or_null().one_of(kCategories),
                 in("msgTag").or_null(), in("argsXml").or_null()),

    // ---- network interfaces
    QB_OPERATION(getNetworkInterfaceCollection, "network interfaces", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Lists the network interfaces by name.", out("interfaces")),
    QB_OPERATION(getNetworkInterface, "network interfaces", kReads, QBOBJ_RETURNS_CODE, "2 5 6 8",
                 "Reads a network interface by its Name.", inout("nif")),
    QB_OPERATION(addNetworkInterface, "network interfaces", kChanges, QBOBJ_RETURNS_CODE, "5 8",
                 "Adds a network interface.", in("nif")),
    QB_OPERATION(deleteNetworkInterface, "network interfaces", kChanges, QBOBJ_RETURNS_CODE, "5 6 8",
                 "Deletes a network interface by its name.", in("name")),
    QB_OPERATION(modifyNetworkInterface, "network interfaces", kChanges, QBOBJ_RETURNS_CODE, "2 5 8",
                 "Changes the given fields, the subnet excepted, of the network interface of that Name.",
                 in("nif").ignores("Subnet")),
};

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
