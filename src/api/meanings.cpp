#include "api/meanings.h"

#include <string.h>

#include <algorithm>
#include <string_view>

#include "qbobj/codes.h"
#include "qbobj/types.h"

namespace qb {
namespace {

/// Compares a name of the table with one that is given in pieces.
int compare(const char *name, std::initializer_list<std::string_view> pieces)
{
    for (const std::string_view piece : pieces) {
        const int order = strncmp(name, piece.data(), piece.size());
        if (order != 0) return order;
        name += piece.size();
    }
    return *name ? 1 : 0;
}

const char *find(std::initializer_list<std::string_view> pieces)
{
    const Meaning *end = kMeanings + kMeaningCount;
    const Meaning *at = std::lower_bound(kMeanings, end, pieces,
                                         [](const Meaning &row, auto wanted) { return compare(row.name, wanted) < 0; });
    return at != end && compare(at->name, pieces) == 0 ? at->text : nullptr;
}

}  // namespace
}  // namespace qb

using qb::find;

const char *qbobj_type_meaning(const QbobjField *type)
{
    return find({type->name});
}

const char *qbobj_field_meaning(const QbobjField *type, const QbobjField *field)
{
    return find({type->name, ".", field->name});
}

const char *qbobj_operation_meaning(const QbobjOperation *operation)
{
    return find({operation->name});
}

const char *qbobj_argument_meaning(const QbobjOperation *operation, const QbobjArgument *argument)
{
    return find({operation->name, "(", argument->name, ")"});
}

const char *qbobj_result_meaning(const QbobjOperation *operation)
{
    return find({operation->name, "()"});
}

const char *qbobj_version(void)
{
    return QBOBJ_VERSION;
}

uint32_t qbobj_row_size(const char *row)
{
    static constexpr struct {
        const char *name;
        uint32_t size;
    } kRows[] = {
        {"QbobjField", sizeof(QbobjField)},       {"QbobjType", sizeof(QbobjType)},
        {"QbobjArgument", sizeof(QbobjArgument)}, {"QbobjOperation", sizeof(QbobjOperation)},
        {"QbobjCode", sizeof(QbobjCode)},
    };
    if (!row) return 0;
    for (const auto &known : kRows)
        if (strcmp(known.name, row) == 0) return known.size;
    return 0;
}
// SPDX-License-Identifier: Apache-2.0
