// Allocation in the pool of a call. Everything comes zero-filled; nothing is freed one by one.
#pragma once

#include <apr_strings.h>

#include <cstring>
#include <new>

#include "frame/report.h"

namespace qb {

/// Notes in the call when a block is missing.
template <class T>
T *noted(CallContext *ctx, T *block)
{
    if (!block) [[unlikely]]
        ctx->short_of_memory = true;
    return block;
}

/// A zero-filled record, or null without memory.
template <class T>
T *allocate(CallContext *ctx)
{
    // Not apr_pcalloc: that is a macro which clears the block without looking whether there is one.
    void *block = noted(ctx, apr_palloc(pool_of(ctx->qbdb), sizeof(T)));
    return block ? new (block) T{} : nullptr;
}

/// A copy of a text; null for null and without memory. Not apr_pstrdup, which writes to the block without
/// looking whether there is one.
inline char *copy_text(apr_pool_t *pool, const char *text)
{
    if (!text) return nullptr;
    const size_t size = strlen(text) + 1;
    void *block = apr_palloc(pool, size);
    return block ? static_cast<char *>(memcpy(block, text, size)) : nullptr;
}

/// A copy of a text in the pool of the call.
inline const char *copy_text(CallContext *ctx, const char *text)
{
    return text ? noted(ctx, copy_text(pool_of(ctx->qbdb), text)) : nullptr;
}

/// Whether a string field was given a value.
inline bool is_set(const char *text)
{
    return text && *text;
}

/// A string field, empty when it is null.
inline const char *or_empty(const char *text)
{
    return text ? text : "";
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
