// Fixed ids of accounts, the limits of ids, and the directory mode that many account operations ask for first.
#pragma once

#include "accounts/directory_mode.h"

namespace qb {

/// Highest and lowest id of a local user or group.
inline constexpr int32_t kLowestId = 100;
inline constexpr int32_t kHighestId = 32767;
/// The administrator: user `admin` and the group of the same name.
inline constexpr int32_t kAdminId = 98;
/// Primary group of a user that names none.
inline constexpr int32_t kDefaultGroupId = 99;

}  // namespace qb
