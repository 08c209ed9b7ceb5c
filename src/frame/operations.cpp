// The operation table: one row per exported operation. Front ends, tests, fuzzers and bindings walk it.
#include <cstring>

#include "frame/operation.h"

namespace {

using namespace qb;

constexpr QbobjOperation kOperations[] = {
    // ---- system log
    QB_OPERATION(getLog, "system log", kReads, QBOBJ_RETURNS_CODE, "2 5",
                 "Reads the entries that match a query, page by page, and counts the matching and all entries.",
                 in("query").or_null(), out("entries"), out("count"), out("total")),
    QB_OPERATION(deleteLog, "system log", kChanges, QBOBJ_RETURNS_CODE, "5",
                 "Deletes the entries that match a query's times, least severity and categories.", in("query").or_null()),
    QB_OPERATION(truncateLog, "system log", kChanges, QBOBJ_RETURNS_CODE, "5",
                 "Cuts the log down to its newest entries.", in("keep")),
    QB_OPERATION(addLog, "system log", kChanges, QBOBJ_RETURNS_CODE, "5 8", "Adds an entry.", in("time"),
                 in("severity").or_null(), in("category").or_null(), in("msgTag").or_null(), in("argsXml").or_null()),

    {},
};

}  // namespace

const QbobjOperation *qbobj_operations(void)
{
    return kOperations;
}

const QbobjOperation *qbobj_find_operation(const char *name)
{
    static constexpr char kPrefix[] = "qbobj_";
    constexpr size_t kPrefixLength = sizeof kPrefix - 1;
    if (!name) return nullptr;
    if (strncmp(name, kPrefix, kPrefixLength) == 0) name += kPrefixLength;
    for (const QbobjOperation *row = kOperations; row->name; row++)
        if (strcmp(row->name + kPrefixLength, name) == 0) return row;
    return nullptr;
}
