// Building a list: a cursor to the tail, kept for the time of the call, makes n elements cost n steps.
#pragma once

#include "frame/pool.h"

namespace qb {

template <class T>
struct List {
    T **tail;

    /// Appends to the list at *head, which may hold elements already.
    explicit List(T **head) : tail(head)
    {
        while (*tail) tail = &(*tail)->next;
    }

    /// Links an element, or a whole list that was built apart (none when null), to the tail.
    void link(T *element)
    {
        *tail = element;
        while (*tail) tail = &(*tail)->next;
    }

    /// A new zero-filled element at the tail, or null without memory.
    T *append(CallContext *ctx)
    {
        T *element = allocate<T>(ctx);
        if (element) link(element);
        return element;
    }
};

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
