#include "frame/query.h"

#include <cstdlib>

#include "frame/pool.h"

namespace qb {

int32_t Rows::int32(int row, int column) const
{
    const char *text = cell(row, column);
    return text ? static_cast<int32_t>(strtol(text, nullptr, 10)) : 0;
}

uint64_t Rows::uint64(int row, int column) const
{
    const char *text = cell(row, column);
    return text ? strtoull(text, nullptr, 0) : 0;
}

const char *Rows::text(const CallContext *ctx, int row, int column) const
{
    return copy_text(ctx, cell(row, column));
}

const char *Rows::word(const CallContext *ctx, int row, int column) const
{
    return is_set(cell(row, column)) ? text(ctx, row, column) : "";
}

}  // namespace qb
