// What the lists of users and groups have in common.
#pragma once

#include <cstddef>

#include "qbobj/accounts.h"

namespace qb {

/// A name pattern of this many bytes is too long.
inline constexpr size_t kPatternLimit = 257;

/// The clause that cuts a list to a page, with room for two numbers of any length.
using PageClause = char[32];

/// Writes the page clause that a query asks for; a query without a limit leaves it alone.
void build_page(const AccountQuery *query, PageClause &clause);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
