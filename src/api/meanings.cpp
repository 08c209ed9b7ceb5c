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

using Pieces = std::initializer_list<std::string_view>;

/// The row of a name, or null.
template <class Row>
const Row *find_row(const Row *rows, size_t count, Pieces pieces)
{
    const Row *end = rows + count;
    const Row *at = std::lower_bound(rows, end, pieces,
                                     [](const Row &row, Pieces wanted) { return compare(row.name, wanted) < 0; });
    return at != end && compare(at->name, pieces) == 0 ? at : nullptr;
}

const char *find(Pieces pieces)
{
    const Meaning *row = find_row(kMeanings, kMeaningCount, pieces);
    return row ? row->text : nullptr;
}

const Marked *find_marked(Pieces pieces)
{
    return find_row(kMarked, kMarkedCount, pieces);
}

const QbobjTraits *find_traits(Pieces pieces)
{
    static constexpr QbobjTraits kNone{};
    const Marked *row = find_marked(pieces);
    return row ? &row->traits : &kNone;
}

}  // namespace
}  // namespace qb

using qb::find;
using qb::find_marked;
using qb::find_traits;

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

const QbobjTraits *qbobj_field_traits(const QbobjField *type, const QbobjField *field)
{
    return find_traits({type->name, ".", field->name});
}

const QbobjTraits *qbobj_argument_traits(const QbobjOperation *operation, const QbobjArgument *argument)
{
    return find_traits({operation->name, "(", argument->name, ")"});
}

const QbobjTraits *qbobj_argument_field_traits(const QbobjOperation *operation, const QbobjArgument *argument,
                                               const char *field)
{
    return find_traits({operation->name, "(", argument->name, ").", field});
}

const char *qbobj_argument_addresses(const QbobjOperation *operation, const QbobjArgument *argument)
{
    const qb::Marked *row = find_marked({operation->name, "(", argument->name, ")"});
    return row ? row->addresses : nullptr;
}

QbobjDirection qbobj_field_direction(const QbobjField *type, const QbobjField *field)
{
    const qb::Marked *row = find_marked({type->name, ".", field->name});
    return row ? row->direction : QBOBJ_INOUT;
}

int qbobj_field_is_list(const QbobjField *field)
{
    return field->subtype && (field->subtype->flags & QBOBJ_TYPE_LIST) ? 1 : 0;
}

int32_t qbobj_field_indicator(const QbobjField *field)
{
    if (!(field->flags & QBOBJ_FIELD_OPTIONAL)) return -1;
    switch (field->kind) {
        case 'i':
        case 'u': return static_cast<int32_t>(field->position - sizeof(int32_t));
        case 'l':
        case 'n': return static_cast<int32_t>(field->position - sizeof(int64_t));
        default: return -1;
    }
}

int32_t qbobj_type_key_word(const QbobjField *type)
{
    if (!(type->flags & QBOBJ_TYPE_KEY_WORD)) return -1;
    return type->flags & QBOBJ_TYPE_LIST ? static_cast<int32_t>(sizeof(void *)) : 0;
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
        {"QbobjCode", sizeof(QbobjCode)},         {"QbobjTraits", sizeof(QbobjTraits)},
    };
    if (!row) return 0;
    for (const auto &known : kRows)
        if (strcmp(known.name, row) == 0) return known.size;
    return 0;
}
// SPDX-License-Identifier: Apache-2.0
