// A bounded text: SET lists, WHERE clauses and the like. What does not fit is left out whole.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "frame/query.h"

namespace qb {

/// What a conversion of an item takes. Its letter says how much of a number counts.
struct ItemValue {
    const char *text = nullptr;
    int64_t number = 0;

    ItemValue(const char *value) : text(value) {}
    template <class Number>
    requires(!std::is_pointer_v<Number>) ItemValue(Number value) : number(static_cast<int64_t>(value)) {}
};

/// Writes a separator and an item, as sqlite3_mprintf would, and the NUL behind it into `room` bytes, at least one.
/// Where that NUL is; null, and it stands at `at`, when there is not room enough.
char *write_item(char *at, size_t room, const char *separator, const char *format, const ItemValue *values);

/// Items joined by a separator in a fixed buffer of N bytes, the terminating NUL included. Takes no memory.
template <size_t N>
struct JoinedText {
    const char *separator;
    size_t size = 0;
    bool dropped = false;
    char text[N];

    explicit JoinedText(const char *join) : separator(join) { text[0] = '\0'; }
    JoinedText(const JoinedText &) = delete;
    JoinedText &operator=(const JoinedText &) = delete;

    bool empty() const { return size == 0; }

    /// Adds one item, or drops it when it does not fit. False when it was dropped.
    template <class... Args>
    bool add(Sql<Args...> format, Args... args)
    {
        const ItemValue values[] = {args..., 0};
        const char *end = write_item(text + size, N - size, empty() ? "" : separator, format.text, values);
        if (end) size = static_cast<size_t>(end - text);
        dropped = dropped || !end;
        return end != nullptr;
    }
};

/// The assignments of an UPDATE, joined by commas.
template <size_t N>
struct SetList : JoinedText<N> {
    SetList() : JoinedText<N>(",") {}
};

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
