// The operating system's own accounts.
#pragma once

#include <cstdint>

namespace qb {

/// Looks an account up in the operating system's account database (files, directory services), by running
/// "getent". Names that are empty or begin with "-" are not asked for: they are never found. A number is
/// found only as an account's name, not as its uid.
///
/// \param name  name of the account; may be null
/// \param uid   its uid when it is found, else left alone; may be null
/// \retval 0   found
/// \retval 1   not found
/// \retval -1  the database could not be asked
int32_t check_system_account(const char *name, int32_t *uid);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
