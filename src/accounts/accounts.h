// The accounts' fixed ids and the range of the others; the directory mode, which many operations ask for first.
#pragma once

#include "accounts/directory_mode.h"

namespace qb {

/// Range of the ids of local users and groups.
inline constexpr int32_t kLowestId = 100;
inline constexpr int32_t kHighestId = 32767;
/// The administrator: user `admin` and the group of the same name.
inline constexpr int32_t kAdminId = 98;
/// Primary group of a user for whom none is named.
inline constexpr int32_t kDefaultGroupId = 99;

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
