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

    void link(T *element)
    {
        *tail = element;
        tail = &element->next;
    }

    /// A new zero-filled element at the tail, or null without memory.
    T *append(const CallContext *ctx)
    {
        T *element = allocate<T>(ctx);
        if (element) link(element);
        return element;
    }
};

}  // namespace qb
