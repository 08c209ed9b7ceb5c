#include "api/operations.h"

#include <cstring>

namespace {

using namespace qb;

const char *without_prefix(const char *name)
{
    static constexpr char kPrefix[] = "qbobj_";
    constexpr size_t kLength = sizeof kPrefix - 1;
    return strncmp(name, kPrefix, kLength) == 0 ? name + kLength : name;
}

}  // namespace

const QbobjOperation *qbobj_operations(void)
{
    return kOperations.data();
}

const QbobjOperation *qbobj_find_operation(const char *name)
{
    if (!name) return nullptr;
    for (const QbobjOperation *row = kOperations.data(); row->name; row++)
        if (strcmp(without_prefix(row->name), without_prefix(name)) == 0) return row;
    return nullptr;
}
// SPDX-License-Identifier: Apache-2.0
