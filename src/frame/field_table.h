// The making of a field table. Kind letter, position, sub-type and most header flags are read off the
// structure itself, and a table is proved against it while it is compiled: fields ascend, nothing
// overlaps, no gap is larger than alignment asks for, and every member of the structure is accounted for.
#pragma once

#include <string_view>

#include "frame/records.h"

namespace qb {

/// Converts to anything: as many of these initialise a structure as it has members.
struct Anything {
    template <class T>
    constexpr operator T() const;
};

template <class T, class... Members>
consteval size_t member_count()
{
    if constexpr (requires { T{Members{}..., Anything{}}; }) return member_count<T, Members..., Anything>();
    else return sizeof...(Members);
}

template <class T>
consteval char kind_letter()
{
    if constexpr (std::is_same_v<T, int32_t>) return 'i';
    else if constexpr (std::is_same_v<T, uint32_t>) return 'u';
    else if constexpr (std::is_same_v<T, int64_t>) return 'l';
    else if constexpr (std::is_same_v<T, uint64_t>) return 'n';
    else if constexpr (std::is_same_v<T, const char *>) return 's';
    else {
        static_assert(std::is_pointer_v<T> && Record<std::remove_pointer_t<T>>,
                      "a field is a number, a constant text or a pointer to a record");
        return 'o';
    }
}

template <class T>
consteval const QbobjField *subtype_of()
{
    if constexpr (kind_letter<T>() == 'o') return fields_of<std::remove_pointer_t<T>>;
    else return nullptr;
}

template <class T>
consteval QbobjField header(const char *name, uint32_t flags)
{
    if (requires(T record) { record.next; }) flags |= QBOBJ_TYPE_LIST;
    if (requires(T record) {
            record.next;
            record.key;
        })
        flags |= QBOBJ_TYPE_KEY_WORD;
    return {'\0', name, sizeof(T), nullptr, flags};
}

template <class Member>
consteval QbobjField field(const char *name, size_t position, uint32_t flags)
{
    return {kind_letter<Member>(), name, static_cast<uint32_t>(position), subtype_of<Member>(), flags};
}

/// Reached while a table is compiled whose null indicator does not stand right before its value.
inline void null_indicator_out_of_place() {}

template <class Member>
consteval QbobjField optional_field(const char *name, size_t position, size_t indicator)
{
    if (position - indicator != sizeof(Member)) null_indicator_out_of_place();
    return field<Member>(name, position, QBOBJ_FIELD_OPTIONAL);
}

constexpr size_t size_of_kind(char kind)
{
    return kind == 'i' || kind == 'u' ? 4 : 8;
}

/// A type that is said to begin with its database key does.
consteval bool has_its_row_id(const QbobjField &head, const QbobjField &first)
{
    return !(head.flags & QBOBJ_TYPE_ROW_ID) || (first.kind == 'i' && std::string_view(first.name) == "resource_id");
}

/// The proof of a table against its structure.
template <class T, size_t N>
consteval bool is_complete(const QbobjField (&table)[N])
{
    const uint32_t flags = table[0].flags;
    size_t end = (flags & QBOBJ_TYPE_LIST ? 8 : 0) + (flags & QBOBJ_TYPE_KEY_WORD ? 8 : 0);
    size_t members = end / 8;
    for (size_t i = 1; i + 1 < N; i++) {
        const size_t size = size_of_kind(table[i].kind);
        const bool optional = (table[i].flags & QBOBJ_FIELD_OPTIONAL) && table[i].kind != 's' && table[i].kind != 'o';
        const size_t aligned = (end + size - 1) / size * size;
        if (table[i].position != aligned + (optional ? size : 0)) return false;
        end = table[i].position + size;
        members += optional ? 2 : 1;
    }
    const size_t whole = (end + alignof(T) - 1) / alignof(T) * alignof(T);
    return table[N - 1].kind == '.' && whole == sizeof(T) && members == member_count<T>() &&
           has_its_row_id(table[0], table[1]);
}

}  // namespace qb

/// Defines the field table of a record type in namespace qb: QB_RECORD(Host, QBOBJ_TYPE_ROW_ID, F(resource_id), …)
#define QB_RECORD(T, flags, ...)                                                                              \
    namespace of_##T {                                                                                        \
    using R = ::T;                                                                                            \
    constexpr QbobjField table[] = {header<R>(#T, flags), __VA_ARGS__, {'.', nullptr, 0, nullptr, 0}};        \
    static_assert(is_complete<R>(table), "the field table of " #T " does not match its structure");           \
    }
#define F(m) field<decltype(R::m)>(#m, offsetof(R, m), 0)                                  // always there
#define OPT(m) optional_field<decltype(R::m)>(#m, offsetof(R, m), offsetof(R, m##_void))   // optional number
#define WORD(m) field<decltype(R::m)>(#m, offsetof(R, m), QBOBJ_FIELD_OPTIONAL)            // optional string
#define MAYBE(m) field<decltype(R::m)>(#m, offsetof(R, m), QBOBJ_FIELD_OPTIONAL)           // optional sub-record
#define HEAD(m) field<decltype(R::m)>(#m, offsetof(R, m), QBOBJ_FIELD_HEAD)                // head of the record's list
#define LIST(m) field<decltype(R::m)>(#m, offsetof(R, m), QBOBJ_FIELD_HEAD | QBOBJ_FIELD_OPTIONAL)  // may be empty
#define SUB(m) F(m)                                                                        // sub-record or list
// SPDX-License-Identifier: Apache-2.0
