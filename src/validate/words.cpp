// Words with a meaning, and numbers written as text.

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "frame/report.h"
#include "validate/charset.h"
#include "validate/validate.h"

namespace {

using namespace qb;

struct WordPair {
    const char *word;
    const char *stored;
};

constexpr WordPair read_write_disabled[] = {
    {"ReadOnly", "readonly"},
    {"ReadWrite", "writeable"},
    {"Disabled", "disabled"},
};
constexpr WordPair read_disabled[] = {
    {"ReadOnly", "readonly"},
    {"Disabled", "disabled"},
};
constexpr WordPair enabled_disabled[] = {
    {"Enabled", "enabled"},
    {"Disabled", "disabled"},
};

/// What an access word grants, in the three ways in which it is stored.
struct Access {
    const char *word;
    int32_t read, write;
    int32_t bits, folder_bits;
    int32_t removed_bits, removed_folder_bits;
};

constexpr Access access_words[] = {
    // word        read, write   bits   removed bits
    {"ReadOnly", 1, 0, 4, 5, 2, 2},
    {"ReadWrite", 1, 1, 6, 7, 0, 0},
    {"Disabled", 0, 0, 0, 0, 6, 7},
};

/// A word and its number.
struct WordNumber {
    const char *word;
    int32_t number;
};

constexpr WordNumber media_types[] = {
    {"All", 0}, {"Music", 1}, {"Photo", 2}, {"Video", 3}, {"0", 0}, {"1", 1}, {"2", 2}, {"3", 3},
};

/// No letter case to tell apart in the numbers, so one comparison serves both.
constexpr WordNumber switch_words[] = {{"0", 0}, {"1", 1}, {"off", 0}, {"on", 1}};

constexpr const char *share_types[] = {"share", "zvol", "replicate"};

void put(int32_t *out, int32_t value)
{
    if (out != nullptr) *out = value;
}

const char *given(const char *value, const char *fallback)
{
    return value != nullptr ? value : fallback;
}

bool equal(const char *a, const char *b, Case letters)
{
    return letters == Case::exact ? std::strcmp(a, b) == 0 : equal_nocase(a, b);
}

/// The row whose word is `value`, or null; null for a null value.
template <class Row, size_t n>
const Row *find(const Row (&rows)[n], const char *value, Case letters)
{
    if (value != nullptr)
        for (const Row &row : rows)
            if (equal(row.word, value, letters)) return &row;
    return nullptr;
}

template <size_t n>
int32_t map_word(const WordPair (&pairs)[n], const char *value, const char *fallback, const char **out)
{
    const WordPair *pair = find(pairs, given(value, fallback), Case::exact);
    if (out != nullptr) *out = pair != nullptr ? pair->stored : nullptr;
    return pair != nullptr ? 0 : 1;
}

template <size_t n>
int32_t map_number(const WordNumber (&rows)[n], const char *value, const char *fallback, Case letters, int32_t *out)
{
    const WordNumber *row = find(rows, given(value, fallback), letters);
    if (row == nullptr) return 1;
    put(out, row->number);
    return 0;
}

const Access *find_access(const char *value, const char *fallback)
{
    return find(access_words, given(value, fallback), Case::exact);
}

}  // namespace

int32_t qbobj_validate_sharetype(const char *name, const char **sharetype)
{
    QB_ASSERT(sharetype);
    *sharetype = nullptr;
    if (name == nullptr || *name == '\0') name = share_types[0];
    for (const char *type : share_types)
        if (equal_nocase(name, type)) {
            *sharetype = type;
            return 0;
        }
    return 1;
}

namespace qb {

int32_t map_read_write_disabled(const char *value, const char *fallback, const char **out)
{
    return map_word(read_write_disabled, value, fallback, out);
}

int32_t map_read_disabled(const char *value, const char *fallback, const char **out)
{
    return map_word(read_disabled, value, fallback, out);
}

int32_t map_enabled_disabled(const char *value, const char *fallback, const char **out)
{
    return map_word(enabled_disabled, value, fallback, out);
}

int32_t map_access_flags(const char *value, const char *fallback, int32_t *read, int32_t *write)
{
    const Access *access = find_access(value, fallback);
    if (access == nullptr) return 1;
    put(read, access->read);
    put(write, access->write);
    return 0;
}

int32_t map_access_bits(const char *value, const char *fallback, bool folder, int32_t *out)
{
    const Access *access = find_access(value, fallback);
    if (access == nullptr) return 1;
    put(out, folder ? access->folder_bits : access->bits);
    return 0;
}

int32_t map_access_removed_bits(const char *value, const char *fallback, bool folder, int32_t *out)
{
    const Access *access = find_access(value, fallback);
    if (access == nullptr) return 1;
    put(out, folder ? access->removed_folder_bits : access->removed_bits);
    return 0;
}

int32_t parse_switch(const char *value, const char *fallback, int32_t *out)
{
    return map_number(switch_words, value, fallback, Case::ignored, out);
}

int32_t parse_integer(const char *value, const char *fallback, long minimum, long maximum, long *out)
{
    const char *text = given(value, fallback);
    if (text == nullptr) return 1;
    const int saved_errno = errno;
    errno = 0;
    const long number = std::strtol(text, nullptr, 0);
    // A number beyond the range of long comes back as the nearest long, which may be a bound.
    const bool overflow = errno == ERANGE;
    errno = saved_errno;
    if (overflow || number < minimum || number > maximum) return 1;
    if (out != nullptr) *out = number;
    return 0;
}

int32_t check_one_of(const char *value, Case letters, std::span<const char *const> words)
{
    if (value != nullptr)
        for (const char *word : words)
            if (equal(value, word, letters)) return 0;
    return 1;
}

int32_t check_literal_list(const char *text)
{
    static constexpr CharSet blank = chars(" \t\n\r");
    const auto skip_blanks = [&text] {
        while (blank.has(*text)) ++text;
    };
    if (text == nullptr) return 1;
    for (;;) {
        skip_blanks();
        if (*text++ != '\'') return 1;
        for (; *text != '\'' || text[1] == '\''; ++text) {
            if (*text == '\0') return 1;
            if (*text == '\'') ++text;
        }
        ++text;
        skip_blanks();
        if (*text != ',') return *text == '\0' ? 0 : 1;
        ++text;
    }
}

int32_t check_protocol_name(const char *name)
{
    return check_one_of(name, Case::exact, protocol_names);
}

int32_t parse_media_type(const char *value, const char *fallback, int32_t *out)
{
    return map_number(media_types, value, fallback, Case::exact, out);
}

int32_t parse_resource_id(const char *text, int32_t *out)
{
    if (text == nullptr) return 1;
    int64_t id = 0;
    for (; *text != '\0'; ++text) {
        if (!digits.has(*text)) return 1;
        id = id * 10 + (*text - '0');
        if (id > INT32_MAX) return 1;
    }
    if (id < 1) return 1;
    put(out, static_cast<int32_t>(id));
    return 0;
}

bool is_password_mask(const char *password)
{
    return password != nullptr && std::strcmp(password, masked_password) == 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
