#include "records.h"

#include <charconv>
#include <limits>
#include <utility>

#include "failure.h"
#include "utf8.h"

namespace qbcli {
namespace {

constexpr size_t kKeyWordPosition = sizeof(void *);  // right after the link word

/// A member of a record by its offset.
template <class T>
T &at(void *record, size_t position)
{
    return *reinterpret_cast<T *>(static_cast<char *>(record) + position);
}

template <class T>
const T &at(const void *record, size_t position)
{
    return *reinterpret_cast<const T *>(static_cast<const char *>(record) + position);
}

/// Calls `visit` with a null pointer of the C++ type that a number's kind letter stands for.
template <class Visit>
auto with_number_type(char kind, Visit visit)
{
    switch (kind) {
        case 'u': return visit(static_cast<uint32_t *>(nullptr));
        case 'l': return visit(static_cast<int64_t *>(nullptr));
        case 'n': return visit(static_cast<uint64_t *>(nullptr));
        default: return visit(static_cast<int32_t *>(nullptr));
    }
}

/// The null indicator of an optional number stands right before it, in a slot of the number's size.
size_t indicator_position(const QbobjField *field)
{
    const size_t size = with_number_type(field->kind, [](auto *type) { return sizeof *type; });
    return field->position - size;
}

bool is_optional_number(const QbobjField *field)
{
    return is_number(field) && (field->flags & QBOBJ_FIELD_OPTIONAL);
}

template <class T>
[[noreturn]] void refuse_number(const std::string &where, const std::string &given)
{
    using Limits = std::numeric_limits<T>;
    throw Failure(where, "a whole number from " + std::to_string(Limits::min()) + " to " +
                             std::to_string(Limits::max()) + " is needed, not " + given);
}

template <class T>
T number_from(const Json &value, const std::string &where)
{
    if (value.is_number_unsigned()) {
        if (const auto number = value.get<uint64_t>(); std::in_range<T>(number)) return static_cast<T>(number);
    } else if (value.is_number_integer()) {
        if (const auto number = value.get<int64_t>(); std::in_range<T>(number)) return static_cast<T>(number);
    }
    refuse_number<T>(where, brief(value));
}

[[noreturn]] void refuse_unknown(const QbobjField *type, const std::string &name, const std::string &where)
{
    throw Failure(where.empty() ? type->name : where,
                  "there is no field " + name + did_you_mean(name, field_names(type)));
}

std::string inside(const std::string &where, const std::string &name)
{
    return where.empty() ? name : where + "." + name;
}

void set_number(void *record, const QbobjField *field, const Json &value, const std::string &where)
{
    with_number_type(field->kind, [&](auto *type) {
        using T = std::remove_pointer_t<decltype(type)>;
        at<T>(record, field->position) = number_from<T>(value, where);
    });
    if (is_optional_number(field)) at<int32_t>(record, indicator_position(field)) = 0;
}

void set_field(Arena &arena, void *record, const QbobjField *type, const QbobjField *field, const Json &value,
               const std::string &where)
{
    if (is_number(field)) return set_number(record, field, value, where);
    if (field->kind == 'o') {
        const auto make = is_list(field->subtype) ? list_from : record_from;
        at<void *>(record, field->position) = make(arena, field->subtype, value, where);
        return;
    }
    const char *text = nullptr;
    if (!qbobj_is_secret(type, field)) text = text_from(arena, value, where);
    else if (!value.is_string()) throw Failure(where, "a text is needed");
    else {
        const auto &secret = value.get_ref<const std::string &>();
        check_text(secret, where);
        text = arena.copy_secret(secret);
    }
    at<const char *>(record, field->position) = text;
}

const QbobjField *head_field(const QbobjField *type)
{
    return type + 1;
}

}  // namespace

bool is_number(const QbobjField *field)
{
    return field->kind != 's' && field->kind != 'o';
}

bool is_list(const QbobjField *type)
{
    return type->flags & QBOBJ_TYPE_LIST;
}

bool has_key_word(const QbobjField *type)
{
    return type->flags & QBOBJ_TYPE_KEY_WORD;
}

bool is_bare_list(const QbobjField *type)
{
    const QbobjField *head = head_field(type);
    return (head->flags & QBOBJ_FIELD_HEAD) && head[1].kind == '.' && !has_key_word(type);
}

const QbobjField *find_field(const QbobjField *type, std::string_view name)
{
    for (const QbobjField *field = type + 1; field->kind != '.'; field++)
        if (name == field->name) return field;
    return nullptr;
}

Names field_names(const QbobjField *type)
{
    Names names;
    for (const QbobjField *field = type + 1; field->kind != '.'; field++) names.emplace_back(field->name);
    if (has_key_word(type)) names.emplace_back(kKeyWord);
    return names;
}

std::string kind_name(const QbobjField *field)
{
    switch (field->kind) {
        case 'i': return "32-bit number";
        case 'u': return "unsigned 32-bit number";
        case 'l': return "64-bit number";
        case 'n': return "unsigned 64-bit number";
        case 'o': return (is_list(field->subtype) ? "list of " : "record ") + std::string(field->subtype->name);
        default: return "text";
    }
}

Json number_from_text(char kind, std::string_view text, const std::string &where)
{
    return with_number_type(kind, [&](auto *type) -> Json {
        using T = std::remove_pointer_t<decltype(type)>;
        T number{};
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error != std::errc() || end != text.data() + text.size()) refuse_number<T>(where, brief(std::string(text)));
        return number;
    });
}

int32_t int32_from(const Json &value, const std::string &where)
{
    return number_from<int32_t>(value, where);
}

uint64_t uint64_from(const Json &value, const std::string &where)
{
    return number_from<uint64_t>(value, where);
}

void check_text(std::string_view text, const std::string &where)
{
    if (text.find('\0') != std::string_view::npos) throw Failure(where, "the text holds a NUL character");
    if (!is_utf8(text)) throw Failure(where, "the text is not valid UTF-8");
}

void refuse_visible_secret(const std::string &where)
{
    throw Failure(where, "a secret on the command line can be seen by others. Write " + where +
                             "=- to be asked for it (or to pipe it in), or give JSON from a file (@FILE) or from "
                             "standard input (-)");
}

void refuse_visible_secrets(const QbobjField *type, const Json &value, const std::string &where)
{
    if (value.is_array()) {
        for (const Json &element : value)
            refuse_visible_secrets(is_bare_list(type) ? head_field(type)->subtype : type, element, where);
    } else if (value.is_object()) {
        for (const auto &[name, part] : value.items()) {
            const QbobjField *field = find_field(type, name);
            if (!field) continue;  // refused later, by name
            if (field->kind == 'o') refuse_visible_secrets(field->subtype, part, inside(where, name));
            const bool secret = qbobj_is_secret(type, field);
            if (secret && !part.is_null() && part != masked_password) refuse_visible_secret(inside(where, name));
        }
    }
}

void *absent_record(Arena &arena, const QbobjField *type)
{
    void *record = arena.zeroed(type->position);
    for (const QbobjField *field = type + 1; field->kind != '.'; field++)
        if (is_optional_number(field)) at<int32_t>(record, indicator_position(field)) = 1;
    return record;
}

const char *text_from(Arena &arena, const Json &value, const std::string &where)
{
    if (!value.is_string()) throw Failure(where, "a text is needed, not " + brief(value));
    const auto &text = value.get_ref<const std::string &>();
    check_text(text, where);
    return arena.copy(text);
}

void *record_from(Arena &arena, const QbobjField *type, const Json &value, const std::string &where)
{
    void *record = absent_record(arena, type);
    if (value.is_array() && is_bare_list(type)) {
        set_field(arena, record, type, head_field(type), value, where);
        return record;
    }
    if (!value.is_object()) throw Failure(where, std::string("a JSON object (") + type->name + ") is needed");
    for (const auto &[name, part] : value.items()) {
        const QbobjField *field = find_field(type, name);
        const bool key_word = !field && has_key_word(type) && name == kKeyWord;
        if (!field && !key_word) refuse_unknown(type, name, where);
        if (part.is_null()) continue;
        if (key_word) at<const char *>(record, kKeyWordPosition) = text_from(arena, part, inside(where, name));
        else set_field(arena, record, type, field, part, inside(where, name));
    }
    return record;
}

void *list_from(Arena &arena, const QbobjField *type, const Json &value, const std::string &where)
{
    if (value.is_object()) return record_from(arena, type, value, where);
    if (!value.is_array()) throw Failure(where, std::string("a JSON array (list of ") + type->name + ") is needed");
    void *first = nullptr;
    void **link = &first;  // the link word is the first word of an element
    size_t index = 0;
    for (const Json &element : value) {
        *link = record_from(arena, type, element, where + "[" + std::to_string(index++) + "]");
        link = static_cast<void **>(*link);
    }
    return first;
}

namespace {

/// A field's value. JSON has exact 64-bit numbers as far as this program writes and reads them.
Json field_to_json(const QbobjField *type, const QbobjField *field, const void *record, bool secrets)
{
    if (is_optional_number(field) && at<int32_t>(record, indicator_position(field))) return nullptr;
    if (is_number(field))
        return with_number_type(field->kind, [&](auto *number) -> Json {
            return at<std::remove_pointer_t<decltype(number)>>(record, field->position);
        });
    if (field->kind == 'o') {
        const void *part = at<const void *>(record, field->position);
        return is_list(field->subtype) ? list_to_json(field->subtype, part, secrets)
                                       : record_to_json(field->subtype, part, secrets);
    }
    const char *text = at<const char *>(record, field->position);
    const bool masked = !secrets && text && *text && qbobj_is_secret(type, field);
    return text_to_json(masked ? masked_password : text);
}

}  // namespace

Json text_to_json(const char *text)
{
    return text ? Json(text) : Json(nullptr);
}

Json record_to_json(const QbobjField *type, const void *record, bool secrets)
{
    if (!record) return nullptr;
    if (is_bare_list(type)) return field_to_json(type, head_field(type), record, secrets);
    Json object = Json::object();
    auto &members = object.get_ref<Json::object_t &>();  // field names are distinct: no look-up for each
    const char *key_word = has_key_word(type) ? at<const char *>(record, kKeyWordPosition) : nullptr;
    if (key_word) members.emplace_back(kKeyWord, key_word);
    for (const QbobjField *field = type + 1; field->kind != '.'; field++)
        members.emplace_back(field->name, field_to_json(type, field, record, secrets));
    return object;
}

Json list_to_json(const QbobjField *type, const void *first, bool secrets)
{
    Json array = Json::array();
    for (const void *element = first; element; element = next_element(element))
        array.push_back(record_to_json(type, element, secrets));
    return array;
}

const void *next_element(const void *element)
{
    return at<const void *>(element, 0);
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
