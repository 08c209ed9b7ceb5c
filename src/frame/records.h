// Which record types there are, and the field tables that are deduced from their structures.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "qbobj.h"

namespace qb {

#define QB_DECLARE_TABLE(T)               \
    namespace of_##T {                    \
    extern const QbobjField table[];      \
    }
QBOBJ_FOR_EACH_TYPE(QB_DECLARE_TABLE)
QB_DECLARE_TABLE(FolderAttribute)  // a record, but none of the named types
#undef QB_DECLARE_TABLE

/// Field table of a record type; null for any other type.
template <class T>
inline constexpr const QbobjField *fields_of = nullptr;
template <class T>
inline constexpr bool is_record = false;
#define QB_BIND_TABLE(T)                                                             \
    template <> inline constexpr const QbobjField *fields_of<T> = of_##T::table;     \
    template <> inline constexpr bool is_record<T> = true;
QBOBJ_FOR_EACH_TYPE(QB_BIND_TABLE)
QB_BIND_TABLE(FolderAttribute)
#undef QB_BIND_TABLE

/// A record type of the interface. (Comparing a table's address with null is no constant under a sanitizer.)
template <class T>
concept Record = is_record<std::remove_cv_t<T>>;

/// The 32-bit null indicator of an optional number.
inline int32_t is_void(const QbobjField *field, const void *record)
{
    const size_t back = field->kind == 'n' || field->kind == 'l' ? 8 : 4;
    return *reinterpret_cast<const int32_t *>(static_cast<const char *>(record) + field->position - back);
}

/// Where a field's value stands in a record.
template <class T>
const T &value_of(const QbobjField *field, const void *record)
{
    return *reinterpret_cast<const T *>(static_cast<const char *>(record) + field->position);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
