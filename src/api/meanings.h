// What the public headers say of types, fields, operations and arguments: a table made of them by tools/meanings.
#pragma once

#include <stddef.h>

namespace qb {

struct Meaning {
    const char *name;  // "User.UserName", "qbobj_addUser", "qbobj_addUser(user)", "qbobj_addUser()" for the result
    const char *text;
};

/// Sorted by name.
extern const Meaning kMeanings[];
extern const size_t kMeaningCount;

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
