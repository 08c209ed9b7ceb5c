// A bounded text: SET lists, WHERE clauses and the like. What does not fit is left out whole.
#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <cstring>

#include "frame/query.h"

namespace qb {

/// Items joined by a separator in a fixed buffer of N bytes, the terminating NUL included.
template <size_t N>
struct JoinedText {
    const char *separator;
    size_t size = 0;
    bool dropped = false;
    char text[N] = "";

    explicit JoinedText(const char *join) : separator(join) {}
    JoinedText(const JoinedText &) = delete;
    JoinedText &operator=(const JoinedText &) = delete;

    bool empty() const { return size == 0; }

    /// Adds one item, or drops it when it does not fit. False when it was dropped.
    template <class... Args>
    bool add(Sql<Args...> format, Args... args)
    {
        char *item = sqlite3_mprintf(format.text, args...);
        const size_t join = empty() ? 0 : strlen(separator);
        const size_t length = item ? strlen(item) : 0;
        const bool fits = item && size + join + length < N;
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
    SetList() : JoinedText<N>(",") {}
};

}  // namespace qb
