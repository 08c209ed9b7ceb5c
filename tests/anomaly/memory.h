// Memory that runs out on command: blocks in pools, SQLite's blocks, and (where no sanitizer owns them) all
// blocks of the heap.
#pragma once

#include <cstddef>
#include <ostream>

namespace test {

enum class Source { none, pool, sqlite, heap };

/// What is refused. Nothing is, and nothing counted, unless `watching`.
struct Memory {
    Source source = Source::none;
    bool watching = false;
    bool forever = false;  // refuse everything from the n-th on
    long nth = 0;          // the first to be refused; 0 refuses none
    long count = 0;        // allocations seen
    bool refused = false;
    long blocks = 0;  // of the heap, taken and not given back, over the whole program

    bool refuse(Source from)
    {
        if (!watching || from != source) return false;
        count++;
        if (nth == 0 || !(forever ? count >= nth : count == nth)) return false;
        refused = true;
        return true;
    }
};

extern Memory memory;

/// What a test refuses: one request, or that and all after it.
struct Trouble {
    Source source;
    bool forever;
    const char *name;
};

inline void PrintTo(const Trouble &trouble, std::ostream *out)
{
    *out << trouble.name;
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kHeapIsOurs = false;
#else
inline constexpr bool kHeapIsOurs = true;
#endif

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
