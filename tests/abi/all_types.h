// Every record type: those of the type-name table, and one that only an argument has.
#pragma once

#include <set>

#include "qbobj.h"

inline std::set<const QbobjField *> all_types()
{
    std::set<const QbobjField *> types;
    for (const QbobjType *row = qbobj_types(); row->name; row++) types.insert(row->fields);
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++)
        for (uint32_t i = 0; i < row->count; i++)
            if (row->arguments[i].type) types.insert(row->arguments[i].type);
    return types;
}
// SPDX-License-Identifier: Apache-2.0
