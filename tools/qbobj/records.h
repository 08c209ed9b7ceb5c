// Records to JSON and back, over the library's field tables.
//
// A list is a JSON array and a record an object, except that a record which is nothing but the head of a
// list (most collections) is the array itself. An absent number or text is null, a secret its mask, and
// "key" is the key word of the types that have one. In the other direction a list may also be given as one
// object, and what is null or left out is absent.
#pragma once

#include <string>
#include <string_view>

#include "json_text.h"
#include "memory.h"
#include "qbobj.h"
#include "suggest.h"

namespace qbcli {

/// JSON's name of the key word.
inline constexpr const char *kKeyWord = "key";

bool is_number(const QbobjField *field);
bool is_list(const QbobjField *type);
bool has_key_word(const QbobjField *type);
/// Whether a record is nothing but the head of a list.
bool is_bare_list(const QbobjField *type);

/// A field by its name, or null.
const QbobjField *find_field(const QbobjField *type, std::string_view name);
/// Names of the fields, the key word's included.
Names field_names(const QbobjField *type);
/// "32-bit number", "text", "list of Quota", …
std::string kind_name(const QbobjField *field);

/// @name What the caller wrote, checked: `where` names the field in messages. @{
Json number_from_text(char kind, std::string_view text, const std::string &where);
int32_t int32_from(const Json &value, const std::string &where);
uint64_t uint64_from(const Json &value, const std::string &where);
/// Refuses text that is not UTF-8 or holds a NUL.
void check_text(std::string_view text, const std::string &where);
/// Refuses a secret, other than the mask, in a value that stands on the command line.
void refuse_visible_secrets(const QbobjField *type, const Json &value, const std::string &where);
[[noreturn]] void refuse_visible_secret(const std::string &where);
/// @}

/// A record in which everything is absent: null indicators are set.
void *absent_record(Arena &arena, const QbobjField *type);
/// @name Records made of JSON, in the arena. @{
const char *text_from(Arena &arena, const Json &value, const std::string &where);
void *record_from(Arena &arena, const QbobjField *type, const Json &value, const std::string &where);
void *list_from(Arena &arena, const QbobjField *type, const Json &value, const std::string &where);
/// @}

/// @name JSON made of records. A null record is null, a null list an empty array; secrets are masked, unless they are
/// asked for. @{
Json text_to_json(const char *text);
Json record_to_json(const QbobjField *type, const void *record, bool secrets = false);
Json list_to_json(const QbobjField *type, const void *first, bool secrets = false);
/// @}

/// The next element of a list.
const void *next_element(const void *element);

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
