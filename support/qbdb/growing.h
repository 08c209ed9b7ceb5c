// An array for what is mostly small.
#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qdb {

/// An array that begins in place and moves to the heap when it outgrows that: most results are a row or two.
template <class T, size_t InPlace>
struct Growing {
    T *items = in_place;
    uint64_t count = 0;
    uint64_t capacity = InPlace;
    T in_place[InPlace];

    Growing() {}  // the place is not worth clearing
    Growing(const Growing &) = delete;
    Growing &operator=(const Growing &) = delete;
    ~Growing()
    {
        if (items != in_place) sqlite3_free(items);
    }

    /// Room for more items, or null without memory.
    T *extend(uint64_t more)
    {
        if (count + more > capacity && !grow(count + more)) return nullptr;
        T *room = items + count;
        count += more;
        return room;
    }

private:
    bool grow(uint64_t wanted)
    {
        const bool first = items == in_place;
        void *grown = sqlite3_realloc64(first ? nullptr : items, wanted * 2 * sizeof(T));
        if (!grown) return false;
        if (first) memcpy(grown, in_place, count * sizeof(T));
        items = static_cast<T *>(grown);
        capacity = wanted * 2;
        return true;
    }
};

}  // namespace qdb
// SPDX-License-Identifier: Apache-2.0
