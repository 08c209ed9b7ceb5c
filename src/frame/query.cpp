#include "frame/query.h"

#include <cstdlib>
#include <limits>

#include "frame/pool.h"

namespace qb {

namespace {

/// Whether a text is what an integer column gives: digits, no more than the number holds in any case, and no sign, no
/// blank and no leading zero. Nearly every number is, and needs none of the C library's care.
template <class Number>
bool is_plain_number(const char *text, Number &number)
{
    constexpr int kDigits = std::numeric_limits<Number>::digits10;
    if (*text == '0' && text[1]) return false;
    number = 0;
    int i = 0;
    for (; i < kDigits && text[i] >= '0' && text[i] <= '9'; i++)
        number = number * 10 + static_cast<Number>(text[i] - '0');
    return i > 0 && !text[i];
}

}  // namespace

int32_t Rows::int32(int row, int column) const
{
    const char *text = cell(row, column);
    int32_t number = 0;
    if (!text || is_plain_number(text, number)) return number;
    return static_cast<int32_t>(strtol(text, nullptr, 10));
}

int64_t Rows::int64(int row, int column) const
{
    const char *text = cell(row, column);
    int64_t number = 0;
    if (!text || is_plain_number(text, number)) return number;
    return strtoll(text, nullptr, 10);
}

uint64_t Rows::uint64(int row, int column) const
{
    const char *text = cell(row, column);
    uint64_t number = 0;
    if (!text || is_plain_number(text, number)) return number;
    return strtoull(text, nullptr, 0);
}

const char *Rows::text(CallContext *ctx, int row, int column) const
{
    return copy_text(ctx, cell(row, column));
}

const char *Rows::word(CallContext *ctx, int row, int column) const
{
    return is_set(cell(row, column)) ? text(ctx, row, column) : "";
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
