// A statement format, taken apart once: which conversions become bound values and which become text.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qdb {

/// Where in the SQL text a position stands. Only in `code` may a value stand.
enum class Lexical : uint8_t {
    code,
    single_quoted,
    double_quoted,
    back_quoted,
    bracketed,
    line_comment,
    block_comment
};

/// Follows the lexical state of SQL over `size` bytes. `previous` carries the last byte across calls.
Lexical follow(Lexical state, char *previous, const char *text, size_t size);

/// Whether a character in code begins a parameter (`?1`, `:name`, `@name`, `$name`) after another.
bool is_parameter(char previous, char c);

/// What an argument is in the caller's argument list.
enum class Argument : uint8_t { int32, uint32, character, int64, uint64, text };

/// One conversion of a format.
struct Conversion {
    Argument argument;
    bool bound;        // becomes `?n`; else its text is spliced in
    char letter;       // d u c s q Q
    Lexical state;     // where it stands
    uint32_t literal;  // length of the literal text before it
    // Of a text within quotes ('/home/%s') the whole literal becomes the value: how much of the text before
    // and after the conversion belongs to it, the quotes included. 0 for any other conversion.
    uint32_t head;
    uint32_t rest;
};

inline constexpr uint32_t kMaxConversions = 32;

/// A format taken apart. The literal text (with `%%` resolved) and the conversions follow each other.
struct Plan {
    const char *format;  // own copy, compared before the plan is used
    char *literals;      // all literal text, one piece after the other
    uint32_t literal_size;
    uint32_t tail;  // length of the literal text after the last conversion
    uint32_t count;
    uint32_t bound;     // how many conversions are bound
    bool spliced_head;  // the first conversion stands for the SELECT that the statement begins with
    bool fixed;         // all values are bound, whatever they are: the text is always the same
    bool plain;         // left to SQLite's own formatter: values cannot be bound in it
    Conversion conversions[kMaxConversions];
};

/// Takes a format apart; null when there is no memory. The plan is one sqlite3_malloc block.
Plan *make_plan(const char *format);

}  // namespace qdb
// SPDX-License-Identifier: Apache-2.0
