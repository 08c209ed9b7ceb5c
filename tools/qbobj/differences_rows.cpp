// Rows of two databases compared.
#include "differences.h"

namespace qbcli {
namespace {

using Row = std::vector<Value>;

bool is_compared(const Column &column)
{
    return column.name != kRowNumber;
}

Row read_row(const Statement &rows, const Table &table)
{
    Row row(table.columns.size());
    for (size_t i = 0; i < row.size(); i++)
        if (is_compared(table.columns[i])) row[i] = rows.value(static_cast<int>(i));
    return row;
}

Row key_of(const Table &table, const Row &row)
{
    if (!table.keyed) return row;
    Row key;
    for (size_t i = 0; i < row.size(); i++)
        if (table.columns[i].key) key.push_back(row[i]);
    return key;
}

/// Takes the rows of the second database out of those of the first, as far as they are equal.
void compare_table(const Database &before, const Database &after, const Table &table,
                   std::vector<RowDifference> &differences)
{
    std::multimap<Row, Row> old;
    Statement left(before, table.select());
    while (left.next()) {
        Row row = read_row(left, table);
        Row key = key_of(table, row);
        old.emplace(std::move(key), std::move(row));
    }
    const size_t count = old.size();
    std::vector<Row> added;
    size_t later = 0;
    for (Statement right(after, table.select()); right.next(); later++) {
        Row row = read_row(right, table);
        const auto same = old.find(key_of(table, row));
        if (same == old.end()) {
            added.push_back(std::move(row));
            continue;
        }
        if (same->second != row) differences.push_back({&table, Change::changed, same->second, row});
        old.erase(same);
    }
    if (!table.keyed && count == 1 && later == 1 && !added.empty()) {
        differences.push_back({&table, Change::changed, old.begin()->second, added.front()});
        return;
    }
    for (const auto &[key, row] : old) differences.push_back({&table, Change::removed, row, {}});
    for (const Row &row : added) differences.push_back({&table, Change::added, {}, row});
}

}  // namespace

std::vector<RowDifference> row_differences(const Database &before, const Database &after,
                                           const std::vector<Table> &tables)
{
    std::vector<RowDifference> differences;
    for (const Table &table : tables) compare_table(before, after, table, differences);
    return differences;
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
