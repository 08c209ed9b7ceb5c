#include "frame/related.h"

#include "frame/optional_calls.h"

namespace qb {

bool statements_are_watched(const CallContext *ctx)
{
    return !qbdb_statements_watched || qbdb_statements_watched(ctx->qbdb);
}

IdRange::IdRange(const Rows &rows) : count(rows.count)
{
    for (int i = 0; i < rows.count; i++) {
        const int32_t id = rows.int32(i, 0);
        least = i ? std::min(least, id) : id;
        most = i ? std::max(most, id) : id;
    }
}

bool IdRange::is_most_of(CallContext *ctx, sqlite3 *db, const char *table) const
{
    constexpr int kForOne = 2;
    if (is_dense(kForOne)) return true;
    if (count < kFewest || count > INT32_MAX / kForOne) return false;
    // No more are counted than are of interest: there may be very many.
    Rows others;
    return try_select(ctx, db, others, "SELECT id FROM `%s` WHERE id BETWEEN %d AND %d LIMIT 1 OFFSET %d", table, least,
                      most, kForOne * count) &&
           others.count == 0;
}

RowRange Related::of(int32_t wanted)
{
    int first = next_;
    if (!begins(first, wanted)) {
        int behind = rows.count;
        for (first = 0; first < behind;) {
            const int middle = first + (behind - first) / 2;
            if (id(middle) < wanted) first = middle + 1;
            else behind = middle;
        }
    }
    for (next_ = first; next_ < rows.count && id(next_) == wanted;) next_++;
    return {first, next_};
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
