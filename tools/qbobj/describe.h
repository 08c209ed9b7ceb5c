// What there is: operations and types, listed and described from the library's own tables.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "json_text.h"
#include "qbobj.h"
#include "suggest.h"

namespace qbcli {

Names operation_names();
Names type_names();
/// The codes that an operation fails with.
std::vector<uint32_t> codes_of(const QbobjOperation &operation);

/// The types of the type-name table, then those that only arguments have.
const std::vector<const QbobjField *> &all_types();

/// The operation of a name, with or without its prefix. An unknown one is refused with a suggestion.
const QbobjOperation &find_operation(const std::string &name);

/// @name Operations whose name matches a pattern ("*User*"), or that mention it anywhere when it is none. @{
std::string operations_text(const std::string &pattern);
Json operations_json(const std::string &pattern);
/// @}
/// Names of the record types that match.
std::string types_text(const std::string &pattern);
Json types_json(const std::string &pattern);

/// @name An operation or a type in full, found by its name. @{
std::string description_text(const std::string &name);
Json description_json(const std::string &name);
/// @}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
