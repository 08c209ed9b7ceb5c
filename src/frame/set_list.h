// A bounded text: SET lists, WHERE clauses and the like. What does not fit is left out whole.
#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <cstring>

#include "frame/pool.h"
#include "frame/query.h"

namespace qb {

/// Items joined by a separator in a fixed buffer of N bytes, the terminating NUL included.
template <size_t N>
struct JoinedText {
    CallContext *ctx;
    const char *separator;
    size_t size = 0;
    bool dropped = false;
    char text[N] = {};

    JoinedText(CallContext *context, const char *join) : ctx(context), separator(join) {}
    JoinedText(const JoinedText &) = delete;
    JoinedText &operator=(const JoinedText &) = delete;

    bool empty() const { return size == 0; }

    /// Adds one item, or drops it when it does not fit. False when it was dropped. An item that cannot be made for
    /// lack of memory is missing, too, but the call notes that and comes to nothing.
    template <class... Args>
    bool add(Sql<Args...> format, Args... args)
    {
        char *item = noted(ctx, sqlite3_mprintf(format.text, args...));
        if (!item) return false;
        const size_t join = empty() ? 0 : strlen(separator);
        const size_t length = strlen(item);
        const bool fits = size + join + length < N;
        if (fits) {
            memcpy(text + size, separator, join);
            memcpy(text + size + join, item, length + 1);
            size += join + length;
        }
        sqlite3_free(item);
        dropped = dropped || !fits;
        return fits;
    }
};

/// The assignments of an UPDATE, joined by commas.
template <size_t N>
struct SetList : JoinedText<N> {
    explicit SetList(CallContext *context) : JoinedText<N>(context, ",") {}
};

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
