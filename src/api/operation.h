// The making of an operation's row: argument kinds and record types are read off the function's type.
#pragma once

#include <tuple>
#include <type_traits>
#include <utility>

#include "frame/records.h"

struct _xmlNode;

namespace qb {

/// What a function's type does not tell of an argument.
struct ArgumentName {
    const char *name;
    QbobjDirection direction;
    bool optional = false;
    bool chain = false;
    const char *const *words = nullptr;
    const char *ignored = nullptr;
    const char *kept = nullptr;

    /// The same with one thing more known. It stands first because a compiler may want it defined before it is called.
    template <class T>
    constexpr ArgumentName with(T ArgumentName::*member, std::type_identity_t<T> value) const
    {
        ArgumentName changed = *this;
        changed.*member = value;
        return changed;
    }

    /// The argument may be null.
    constexpr ArgumentName or_null() const { return with(&ArgumentName::optional, true); }
    /// The operation walks the chain of records, not only the first.
    constexpr ArgumentName chained() const { return with(&ArgumentName::chain, true); }
    /// The text is one of a list of words that null ends.
    constexpr ArgumentName one_of(const char *const *list) const { return with(&ArgumentName::words, list); }
    /// Fields that one might expect to be used, and that are not: "FullName HomeFolderSettings.UserId".
    constexpr ArgumentName ignores(const char *fields) const { return with(&ArgumentName::ignored, fields); }
    /// Secrets in which the mask means that the stored value stays.
    constexpr ArgumentName keeps(const char *fields) const { return with(&ArgumentName::kept, fields); }

};

constexpr ArgumentName in(const char *name)
{
    return {.name = name, .direction = QBOBJ_IN};
}
constexpr ArgumentName out(const char *name)
{
    return {.name = name, .direction = QBOBJ_OUT};
}
constexpr ArgumentName inout(const char *name)
{
    return {.name = name, .direction = QBOBJ_INOUT};
}

template <class A>
consteval QbobjArgument argument(ArgumentName name)
{
    QbobjArgument row{name.name,  QBOBJ_KIND_INT32, name.direction, nullptr,  name.optional,
                      name.chain, name.words,       name.ignored,   name.kept};
    using Target = std::remove_cv_t<std::remove_pointer_t<A>>;
    using Element = std::remove_cv_t<std::remove_pointer_t<Target>>;
    if constexpr (std::is_same_v<A, int32_t> || std::is_same_v<A, int32_t *>) {
        row.kind = QBOBJ_KIND_INT32;
    } else if constexpr (std::is_same_v<A, uint64_t> || std::is_same_v<A, uint64_t *>) {
        row.kind = QBOBJ_KIND_UINT64;
    } else if constexpr (std::is_same_v<A, const char *> || std::is_same_v<A, const char **>) {
        row.kind = QBOBJ_KIND_STRING;
    } else if constexpr (std::is_same_v<A, _xmlNode **>) {
        row.kind = QBOBJ_KIND_XML;
    } else if constexpr (std::is_pointer_v<Target>) {
        row.kind = QBOBJ_KIND_LIST;
        row.type = fields_of<Element>;
    } else {
        static_assert(Record<Target>, "an argument is a number, a text, a record or a list of records");
        row.kind = QBOBJ_KIND_RECORD;
        row.type = fields_of<Target>;
    }
    return row;
}

template <class A>
A argument_value(QbobjValue value)
{
    if constexpr (std::is_same_v<A, int32_t>) return value.i;
    else if constexpr (std::is_same_v<A, uint64_t>) return value.n;
    else if constexpr (std::is_same_v<A, const char *>) return value.s;
    else return static_cast<A>(value.p);
}

/// Takes an operation's function type apart.
template <auto Function>
struct Signature;

template <class... All, uint32_t (*Function)(All...)>
struct Signature<Function> {
    using Types = std::tuple<All...>;
    static constexpr size_t count = sizeof...(All) - 3;  // between the connection and the error record
    using Indices = std::make_index_sequence<count>;
    template <size_t I>
    using Type = std::tuple_element_t<I + 2, Types>;

    template <size_t... I>
    static uint32_t call(qbdb_t *qbdb, sqlite3 *db, [[maybe_unused]] const QbobjValue *values, ErrorInfo *err,
                         std::index_sequence<I...>)
    {
        return Function(qbdb, db, argument_value<Type<I>>(values[I])..., err);
    }

    template <size_t... I>
    static consteval void describe(QbobjOperation *row, const ArgumentName *names, std::index_sequence<I...>)
    {
        ((row->arguments[I] = argument<Type<I>>(names[I])), ...);
    }
};

inline constexpr int kReads = 0;
inline constexpr int kChanges = 1;

/// One row of the operation table.
template <auto Function, class... Names>
consteval QbobjOperation operation(const char *name, const char *family, int changes, QbobjReturn returns,
                                   const char *codes, const char *summary, Names... names)
{
    using Signed = Signature<Function>;
    static_assert(sizeof...(Names) == Signed::count, "an operation's row names each of its arguments");
    static_assert(Signed::count <= QBOBJ_MAX_ARGUMENTS);
    QbobjOperation row{};
    row.name = name;
    row.family = family;
    row.summary = summary;
    row.codes = codes;
    row.returns = returns;
    row.changes = changes;
    row.count = Signed::count;
    const ArgumentName given[Signed::count + 1] = {names..., in(nullptr)};
    Signed::describe(&row, given, typename Signed::Indices{});
    row.call = [](qbdb_t *qbdb, sqlite3 *db, const QbobjValue *values, ErrorInfo *err) {
        return Signed::call(qbdb, db, values, err, typename Signed::Indices{});
    };
    return row;
}

}  // namespace qb

/// A row: QB_OPERATION(getLog, "system log", kReads, QBOBJ_RETURNS_CODE, "2 5", "Reads …", in("query").or_null(), …)
#define QB_OPERATION(verb, ...) operation<qbobj_##verb>("qbobj_" #verb, __VA_ARGS__)
/// A row of an older entry point, whose name has no prefix.
#define QB_LEGACY_OPERATION(function, ...) operation<function>(#function, "legacy", __VA_ARGS__)
// SPDX-License-Identifier: Apache-2.0
