// The operation table: one row per exported operation. Front ends, tests, fuzzers and bindings walk it.
#include <array>
#include <cstring>

#include "api/rows_accounts.h"
#include "api/rows_legacy.h"
#include "api/rows_system.h"
#include "api/rows_volumes.h"

namespace {

using namespace qb;

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

constexpr auto kOperations = joined(  //
    kSystemRows,                      //
    kLegacyRows,                      //
    kAccountsRows,                    //
    kVolumesRows);

const char *without_prefix(const char *name)
{
    static constexpr char kPrefix[] = "qbobj_";
    constexpr size_t kLength = sizeof kPrefix - 1;
    return strncmp(name, kPrefix, kLength) == 0 ? name + kLength : name;
}

}  // namespace

const QbobjOperation *qbobj_operations(void)
{
    return kOperations.data();
}

const QbobjOperation *qbobj_find_operation(const char *name)
{
    if (!name) return nullptr;
    for (const QbobjOperation *row = kOperations.data(); row->name; row++)
        if (strcmp(without_prefix(row->name), without_prefix(name)) == 0) return row;
    return nullptr;
}
