// A worker's type, read off the operation that it works for:
//
//     Worker<qbobj_addUser> x_qbobj_addUser;          // uint32_t (CallContext *, sqlite3 *, User *)
//     Worker<qbobj_getUID, int32_t> x_qbobj_getUID;   // answers with a value, which is -1 for every failure
#pragma once

#include <cstddef>
#include <tuple>
#include <utility>

#include "frame/report.h"

namespace qb {

template <auto Operation, class Result>
struct WorkerOf;

template <class... All, uint32_t (*Operation)(qbdb_t *, sqlite3 *, All...), class Result>
struct WorkerOf<Operation, Result> {
    template <size_t... I>
    static auto type(std::index_sequence<I...>)
        -> Result (*)(CallContext *, sqlite3 *, std::tuple_element_t<I, std::tuple<All...>>...);
    /// The operation's arguments without the error record, which stands in the context.
    using Type = std::remove_pointer_t<decltype(type(std::make_index_sequence<sizeof...(All) - 1>{}))>;
};

template <auto Operation, class Result = uint32_t>
using Worker = typename WorkerOf<Operation, Result>::Type;

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
