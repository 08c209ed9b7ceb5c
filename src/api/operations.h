// The operation table: one row per exported operation. Front ends, tests, fuzzers and bindings walk it.
#pragma once

#include <array>

#include "api/rows_accounts.h"
#include "api/rows_backup.h"
#include "api/rows_health.h"
#include "api/rows_iscsi.h"
#include "api/rows_legacy.h"
#include "api/rows_services.h"
#include "api/rows_shares.h"
#include "api/rows_snapshots.h"
#include "api/rows_system.h"
#include "api/rows_ups.h"
#include "api/rows_volumes.h"

namespace qb {

/// The families' rows in one table, which an empty row ends.
template <size_t... N>
consteval auto joined(const QbobjOperation (&...families)[N])
{
    std::array<QbobjOperation, (N + ...) + 1> table{};
    QbobjOperation *end = table.data();
    const auto append = [&](const auto &rows) {
        for (const QbobjOperation &row : rows) *end++ = row;
    };
    (append(families), ...);
    return table;
}

inline constexpr auto kOperations = joined(  //
    kSystemRows,                             //
    kLegacyRows,                             //
    kAccountsRows,                           //
    kServicesRows,                           //
    kSharesRows,                             //
    kVolumesRows,                            //
    kSnapshotsRows,                          //
    kHealthRows,                             //
    kIscsiRows,                              //
    kBackupRows,                             //
    kUpsRows);

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
