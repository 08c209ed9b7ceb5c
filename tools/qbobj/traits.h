// Units, ranges, defaults and ways of fields and arguments, as the library's tables tell them, for what front ends
// print.
#pragma once

#include <string>
#include <vector>

#include "json_text.h"
#include "qbobj.h"

namespace qbcli {

/// "in", "out" or "in and out".
const char *direction_word(QbobjDirection direction);

/// ", MB, 1 to 99 or 0, default 25000": what stands behind the kind of a field or an argument.
std::string traits_text(const QbobjTraits &traits);

/// The members that describe something as JSON: unit, minimum, maximum, besides, default, pattern.
Json traits_json(const QbobjTraits &traits);

/// Adds to a JSON schema what is known: the range, the default, the unit.
void add_traits(const QbobjTraits &traits, Json &schema);

/// Fields of a record argument of which its operation says something of its own.
struct FieldOfOperation {
    std::string path;  ///< "Cifs.RecycleSizeLimit"
    const QbobjTraits *traits;
};
std::vector<FieldOfOperation> fields_of_operation(const QbobjOperation &operation, const QbobjArgument &argument);

/// The fields that say which record is meant: "resource_id", "UserId".
std::vector<std::string> addresses(const QbobjOperation &operation, const QbobjArgument &argument);

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
