#include "assignments.h"

#include <cstring>

namespace qdb {
namespace {

constexpr uint32_t kMostDigits = 18;  // every such number is one of SQLite's integers

bool is_name(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

/// Reads a column's name and the "=" behind it; null when there is no such thing.
const char *read_column(const char *at, Assignment *assignment)
{
    assignment->column = at;
    if (is_digit(*at)) return nullptr;
    while (is_name(*at)) at++;
    if (at == assignment->column || *at != '=') return nullptr;
    at++;
    assignment->column_size = static_cast<uint32_t>(at - assignment->column);
    return at;
}

/// Reads a text behind its first quote.
const char *read_text(const char *at, Assignment *assignment)
{
    assignment->text = at;
    assignment->quotes_within = false;
    for (;; at += 2) {
        at = strchr(at, '\'');
        if (!at) return nullptr;
        if (at[1] != '\'') break;
        assignment->quotes_within = true;
    }
    assignment->text_size = static_cast<uint32_t>(at - assignment->text);
    return at + 1;
}

const char *read_number(const char *at, Assignment *assignment)
{
    const bool negative = *at == '-';
    if (negative) at++;
    int64_t number = 0;
    uint32_t digits = 0;
    for (; is_digit(*at); at++)
        if (++digits <= kMostDigits) number = number * 10 + (*at - '0');
    if (digits == 0 || digits > kMostDigits) return nullptr;
    assignment->text = nullptr;
    assignment->number = negative ? -number : number;
    return at;
}

}  // namespace

bool Assignments::take(const char *list)
{
    uint32_t taken = 0;
    for (const char *at = list; at && taken < kMostAssignments; at++) {
        Assignment *next = &items[taken++];
        at = read_column(at, next);
        if (at) at = *at == '\'' ? read_text(at + 1, next) : read_number(at, next);
        if (!at || (*at && *at != ',')) break;
        if (*at) continue;
        count = taken;
        return true;
    }
    return false;
}

int bind(sqlite3_stmt *stmt, int number, const Assignment &assignment)
{
    if (!assignment.text) return sqlite3_bind_int64(stmt, number, assignment.number);
    const auto size = static_cast<int>(assignment.text_size);
    if (!assignment.quotes_within) return sqlite3_bind_text(stmt, number, assignment.text, size, SQLITE_STATIC);
    auto *copy = static_cast<char *>(sqlite3_malloc64(assignment.text_size));
    if (!copy) return SQLITE_NOMEM;
    int copied = 0;
    for (int i = 0; i < size; i++) {
        copy[copied++] = assignment.text[i];
        i += assignment.text[i] == '\'';
    }
    return sqlite3_bind_text(stmt, number, copy, copied, sqlite3_free);
}

}  // namespace qdb
// SPDX-License-Identifier: Apache-2.0
