#include "accounts/account_list.h"

namespace qb {

void build_page(const AccountQuery *query, PageClause &clause)
{
    if (!query->limit) return;
    if (query->offset) sqlite3_snprintf(sizeof clause, clause, "LIMIT %d,%d", query->offset, query->limit);
    else sqlite3_snprintf(sizeof clause, clause, "LIMIT %d", query->limit);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
