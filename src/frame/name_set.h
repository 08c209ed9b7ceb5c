// A set of names: adding one and asking for one take constant time. It lives in the call's pool and copies no name.
#pragma once

#include <cstring>
#include <string_view>

#include "frame/pool.h"

namespace qb {

struct NameSet {
    CallContext *ctx;
    const char **slots = nullptr;
    size_t room = 0;  // a power of two, at least twice what is used
    size_t used = 0;

    explicit NameSet(CallContext *context) : ctx(context) {}

    bool contains(const char *name) const { return room > 0 && slots[slot_of(name)]; }

    /// Adds a name; null is none. Without memory it is missing, and the call notes that.
    void add(const char *name)
    {
        if (!name || (2 * (used + 1) > room && !grow())) return;
        const char *&slot = slots[slot_of(name)];
        used += !slot;
        slot = name;
    }

    /// Adds the names of a list of records.
    template <class T>
    void add_all(const T *head, const char *T::*name)
    {
        for (; head; head = head->next) add(head->*name);
    }

private:
    /// Where a name stands, or the empty slot where it would.
    size_t slot_of(const char *name) const
    {
        size_t slot = std::hash<std::string_view>{}(name) & (room - 1);
        while (slots[slot] && strcmp(slots[slot], name) != 0) slot = (slot + 1) & (room - 1);
        return slot;
    }

    bool grow()
    {
        const NameSet old = *this;
        room = old.room ? 2 * old.room : 64;
        slots = static_cast<const char **>(noted(ctx, apr_palloc(pool_of(ctx->qbdb), room * sizeof *slots)));
        if (!slots) {
            *this = old;
            return false;
        }
        memset(slots, 0, room * sizeof *slots);
        for (size_t i = 0; i < old.room; i++)
            if (old.slots[i]) slots[slot_of(old.slots[i])] = old.slots[i];
        return true;
    }
};

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
