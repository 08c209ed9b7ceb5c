#include "format.h"

#include <sqlite3.h>

#include <cstring>
#include <initializer_list>

namespace qdb {
namespace {

bool is_word(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '$' ||
           static_cast<unsigned char>(c) >= 0x80;
}

bool glues(char c)
{
    return is_word(c) || c == '.' || c == '\'' || c == '"' || c == '`';
}

/// Follows the words and parentheses of a format's literal text as far as it takes to know where a number
/// would stand for a column (ORDER BY 2) and which statements take values at all.
class Grammar {
public:
    void take(Lexical state, char c)
    {
        if (state == Lexical::code && is_word(c)) {
            if (size_ < sizeof word_ - 1) word_[size_++] = c;
            return;
        }
        end_word();
        if (state != Lexical::code) return;
        if (c == '(') depth_++;
        if (c == ')' && --depth_ < by_depth_) by_depth_ = kNone;
    }
    void end_word()
    {
        if (!size_) return;
        word_[size_] = '\0';
        size_ = 0;
        if (!begun_) {
            begun_ = true;
            for (const char *verb : {"SELECT", "INSERT", "UPDATE", "DELETE", "REPLACE", "WITH", "VALUES"})
                takes_values_ = takes_values_ || sqlite3_stricmp(word_, verb) == 0;
        }
        if (sqlite3_stricmp(word_, "BY") == 0) by_depth_ = depth_;
        for (const char *word : {"LIMIT", "HAVING", "UNION", "EXCEPT", "INTERSECT", "WINDOW"})
            if (sqlite3_stricmp(word_, word) == 0) by_depth_ = kNone;
    }
    /// A query that is spliced in before anything else.
    void take_query() { begun_ = takes_values_ = true; }
    bool takes_values() const { return takes_values_; }
    bool in_column_list() const { return by_depth_ != kNone; }

private:
    static constexpr int kNone = -1000000;
    char word_[12];
    size_t size_ = 0;
    bool begun_ = false;
    bool takes_values_ = false;
    int depth_ = 0;
    int by_depth_ = kNone;
};

struct Letter {
    const char *spelling;
    Argument argument;
    char letter;
    bool value;  // may become a bound value
};

constexpr Letter kLetters[] = {
    {"d", Argument::int32, 'd', true},    {"u", Argument::uint32, 'u', true},  {"c", Argument::character, 'c', false},
    {"ld", Argument::int64, 'd', true},   {"lu", Argument::uint64, 'u', true}, {"lld", Argument::int64, 'd', true},
    {"llu", Argument::uint64, 'u', true}, {"s", Argument::text, 's', false},   {"q", Argument::text, 'q', false},
    {"Q", Argument::text, 'Q', true},
};

/// Bytes of literal text up to and with the quote that closes a literal; 0 when another conversion or more of
/// the same token comes first.
uint32_t rest_of_literal(const char *after)
{
    uint32_t size = 1;
    for (; *after && *after != '\''; after++, size++)
        if (*after == '%' && *++after != '%') return 0;
    return *after && !glues(after[1]) && after[1] != '%' ? size : 0;
}

const Letter *find_letter(const char *at)
{
    for (const Letter &letter : kLetters)
        if (strncmp(at, letter.spelling, strlen(letter.spelling)) == 0) return &letter;
    return nullptr;
}

}  // namespace

bool is_parameter(char previous, char c)
{
    return c == '?' || c == ':' || c == '@' || c == '#' || (c == '$' && !is_word(previous));
}

Lexical follow(Lexical state, char *previous, const char *text, size_t size)
{
    for (size_t i = 0; i < size; i++) {
        const char c = text[i];
        const char before = *previous;
        *previous = c;
        switch (state) {
            case Lexical::code:
                if (c == '\'') state = Lexical::single_quoted;
                else if (c == '"') state = Lexical::double_quoted;
                else if (c == '`') state = Lexical::back_quoted;
                else if (c == '[') state = Lexical::bracketed;
                else if (c == '-' && before == '-') state = Lexical::line_comment;
                else if (c == '*' && before == '/') {
                    state = Lexical::block_comment;
                    *previous = '\0';
                }
                break;
            case Lexical::single_quoted:
                if (c == '\'') state = Lexical::code;
                break;
            case Lexical::double_quoted:
                if (c == '"') state = Lexical::code;
                break;
            case Lexical::back_quoted:
                if (c == '`') state = Lexical::code;
                break;
            case Lexical::bracketed:
                if (c == ']') state = Lexical::code;
                break;
            case Lexical::line_comment:
                if (c == '\n') state = Lexical::code;
                break;
            case Lexical::block_comment:
                if (c == '/' && before == '*') {
                    state = Lexical::code;
                    *previous = '\0';
                }
                break;
        }
    }
    return state;
}

/// A number may be beyond SQLite's integers, a text within quotes may end them.
static bool is_always_bound(const Conversion &conversion)
{
    return conversion.bound && conversion.argument != Argument::uint64 && !conversion.rest;
}

Plan *make_plan(const char *format)
{
    const size_t size = strlen(format);
    // One block: the plan, a copy of the format, and the literal text, which is never longer than the format.
    auto *plan = static_cast<Plan *>(sqlite3_malloc64(sizeof(Plan) + 2 * (size + 1)));
    if (!plan) return nullptr;
    memset(plan, 0, sizeof *plan);
    char *copy = reinterpret_cast<char *>(plan + 1);
    memcpy(copy, format, size + 1);
    plan->format = copy;
    plan->literals = copy + size + 1;

    Lexical state = Lexical::code;
    char previous = '\0';
    Grammar grammar;
    char *out = plan->literals;
    const char *piece = out;
    const char *quote = nullptr;  // where the quoted literal began that may be bound as a whole
    for (const char *at = format; *at; at++) {
        if (*at != '%' || at[1] == '%') {
            if (*at == '%') at++;
            *out++ = *at;
            // The values are numbered: a parameter of the format's own would take one of the numbers.
            if (state == Lexical::code && is_parameter(previous, *at)) plan->plain = true;
            if (state == Lexical::code && *at == '\'') quote = previous && glues(previous) ? nullptr : out - 1;
            grammar.take(state, *at);
            state = follow(state, &previous, at, 1);
            continue;
        }
        grammar.end_word();
        const Letter *letter = find_letter(at + 1);
        if (at == format && at[1] == 's' && at[2] == ' ') {
            plan->spliced_head = true;
            grammar.take_query();
        }
        if (!letter || plan->count == kMaxConversions || !grammar.takes_values()) plan->plain = true;
        if (plan->plain) return plan;
        const char *after = at + 1 + strlen(letter->spelling);
        Conversion &conversion = plan->conversions[plan->count++];
        conversion.argument = letter->argument;
        conversion.letter = letter->letter;
        conversion.state = state;
        conversion.literal = static_cast<uint32_t>(out - piece);
        // `col%d` or `x%Q` is part of a longer word: only a free-standing conversion is a value.
        conversion.bound = letter->value && state == Lexical::code && !grammar.in_column_list() &&
                           !(previous && glues(previous)) && !(*after && (glues(*after) || *after == '%'));
        const bool text = conversion.letter == 's' || conversion.letter == 'q';
        if (text && state == Lexical::single_quoted && quote >= piece && !grammar.in_column_list())
            conversion.rest = rest_of_literal(after);
        if (conversion.rest) {
            conversion.bound = true;
            conversion.head = static_cast<uint32_t>(out - quote);
        }
        plan->bound += conversion.bound;
        previous = 'x';
        piece = out;
        at = after - 1;
    }
    grammar.end_word();
    plan->plain = plan->plain || !grammar.takes_values();
    plan->tail = static_cast<uint32_t>(out - piece);
    plan->literal_size = static_cast<uint32_t>(out - plan->literals);
    plan->fixed = true;
    for (uint32_t i = 0; i < plan->count; i++) plan->fixed = plan->fixed && is_always_bound(plan->conversions[i]);
    return plan;
}

}  // namespace qdb
// SPDX-License-Identifier: Apache-2.0
