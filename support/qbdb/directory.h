// Asking the system's name service.
#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdlib>

namespace qdb {

inline constexpr size_t kFirstEntrySize = 1024;
inline constexpr size_t kLargestEntrySize = 16u << 20;  // a group with some hundred thousand members

/// Asks one of the getpwnam_r family for an entry. How much room an entry needs is known only when it fits,
/// so the buffer grows until it does. `use` sees the entry while the buffer lives; false when there is none.
template <class Entry, class Key, class Use>
bool ask_name_service(int (*get)(Key, Entry *, char *, size_t, Entry **), Key key, Use use)
{
    for (size_t size = kFirstEntrySize; size <= kLargestEntrySize; size *= 2) {
        auto *buffer = static_cast<char *>(malloc(size));
        if (!buffer) return false;
        Entry entry;
        Entry *found = nullptr;
        int rc;
        do rc = get(key, &entry, buffer, size, &found);
        while (rc == EINTR);
        if (rc == 0 && found) use(*found);
        free(buffer);
        if (rc != ERANGE) return rc == 0 && found;
    }
    return false;
}

}  // namespace qdb
// SPDX-License-Identifier: Apache-2.0
