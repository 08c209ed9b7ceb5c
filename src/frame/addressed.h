// Which row a record means.
#pragma once

#include <cstdint>

namespace qb {

/// The id by which a record addresses its row: its resource_id, or its own id when that is below 1.
/// addressed(user, &User::UserId)
template <class Record>
int32_t addressed(const Record *record, int32_t Record::*own_id)
{
    return record->resource_id < 1 ? record->*own_id : record->resource_id;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
