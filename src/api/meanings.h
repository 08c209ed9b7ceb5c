// What the public headers say of types, fields, operations and arguments: tables made of them by tools/meanings.
#pragma once

#include <stddef.h>

#include "qbobj/types.h"

namespace qb {

struct Meaning {
    const char *name;  // "User.UserName", "qbobj_addUser", "qbobj_addUser(user)", "qbobj_addUser()" for the result
    const char *text;
};

/// Sorted by name.
extern const Meaning kMeanings[];
extern const size_t kMeaningCount;

/// What the marks in a sentence say.
struct Marked {
    const char *name;  // "User.UserName", "qbobj_addUser(user)", "qbobj_addUser(user).UserId"
    QbobjTraits traits;
    QbobjDirection direction;  // of a field
    const char *addresses;     // of an argument
};

/// Sorted by name; without those of whom nothing is said.
extern const Marked kMarked[];
extern const size_t kMarkedCount;

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
