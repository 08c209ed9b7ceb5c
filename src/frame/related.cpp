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
