// Lists the record types and operations that the library describes, without opening a database.
#include <qbobj.h>

#include <cstdio>

int main()
{
    int types = 0;
    int operations = 0;
    for (const QbobjType *type = qbobj_types(); type->name; type++) types++;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++, operations++)
        std::printf("%-40s %s\n", row->name, row->summary);
    std::printf("%d record types, %d operations\n", types, operations);
    return types == 110 && operations > 0 ? 0 : 1;
}
// SPDX-License-Identifier: Apache-2.0
