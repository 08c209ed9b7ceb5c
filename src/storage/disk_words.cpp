// The words of disks: pool states, enclosures' names.
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "storage/volumes.h"

namespace qb {
namespace {

/// By the number that a pool's label stores.
constexpr const char *kPoolStates[] = {
    "ACTIVE", "EXPORTED", "DESTROYED", "SPARE", "L2CACHE", "UNINITIALIZED", "UNAVAIL", "POTENTIALLY_ACTIVE",
};

}  // namespace

const char *pool_state_name(const char *state, const char *volume, uint64_t host_id)
{
    if (host_id == 0 || !is_set(volume)) return "NEW";
    const long number = strtol(or_empty(state), nullptr, 10);
    const bool known = number >= 0 && number < static_cast<long>(sizeof kPoolStates / sizeof *kPoolStates);
    return known ? kPoolStates[number] : "UNKNOWN";
}

const char *enclosure_key(CallContext *ctx, int32_t controller)
{
    char key[32];
    snprintf(key, sizeof key, "controller-%d", controller);
    return copy_text(ctx, key);
}

int32_t disk_number(const char *id)
{
    return static_cast<int32_t>(strtol(or_empty(id), nullptr, 10));
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
