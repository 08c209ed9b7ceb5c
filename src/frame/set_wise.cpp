#include "frame/set_wise.h"

#include <sqlite3.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>
#include <string_view>

namespace qb {
namespace {

using std::string_view;

constexpr char kSelect[] = "SELECT ";

/// Words after which a statement is another than the plain kind: one row no longer stands for one row. Of `*` and of
/// most functions nobody here knows what they come to.
constexpr string_view kRefused[] = {
    "DISTINCT", "GROUP",   "HAVING", "LIMIT", "UNION", "EXCEPT",       "INTERSECT",    "WINDOW",           "OVER",
    "WITH",     "NATURAL", "USING",  "RIGHT", "FULL",  "CURRENT_TIME", "CURRENT_DATE", "CURRENT_TIMESTAMP"};

/// What may stand before a parenthesis: functions of their arguments and nothing else, and words of the language.
constexpr string_view kBeforeParenthesis[] = {"IFNULL", "COALESCE", "NULLIF", "AND",  "OR",   "NOT", "IN",
                                              "ON",     "WHERE",    "WHEN",   "THEN", "ELSE", "CASE"};

bool is_word(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '$';
}

bool equal(string_view a, string_view b)
{
    return a.size() == b.size() && sqlite3_strnicmp(a.data(), b.data(), static_cast<int>(a.size())) == 0;
}

template <size_t N>
bool contains(const string_view (&words)[N], string_view word)
{
    return std::any_of(words, words + N, [word](string_view each) { return equal(each, word); });
}

string_view without_blanks_behind(string_view text)
{
    while (text.ends_with(' ')) text.remove_suffix(1);
    return text;
}

/// The parts of a statement, found in one walk over its words. What is quoted is passed over.
class Parts {
public:
    string_view columns;  // between SELECT and the outer FROM
    string_view before;   // between there and the %d
    string_view behind;   // what follows the %d
    string_view order;    // what follows the outer ORDER BY; empty without one

    /// False for a statement that is not of the plain kind.
    bool find(const char *format)
    {
        if (strncmp(format, kSelect, strlen(kSelect)) != 0) return false;
        const char *at = format;
        while (*at) {
            if (is_word(*at)) {
                const char *end = at;
                while (is_word(*end)) end++;
                if (!take_word({at, static_cast<size_t>(end - at)})) return false;
                at = end;
            } else {
                at = take_sign(at);
                if (!at) return false;
            }
        }
        if (!value_ || depth_ != 0) return false;
        const char *from_end = from_ + strlen("FROM");
        const char *value_end = value_ + strlen("%d");
        columns = without_blanks_behind({format + strlen(kSelect), from_});
        before = {from_end, value_};
        behind = without_blanks_behind({value_end, order_ ? order_ : at});
        if (by_) order = without_blanks_behind({by_ + strlen("BY "), at});
        return true;
    }

private:
    const char *from_ = nullptr;
    const char *value_ = nullptr;
    const char *order_ = nullptr;
    const char *by_ = nullptr;
    int depth_ = 0;
    string_view last_;  // the last word, empty once something else but blanks stood behind it

    bool take_word(string_view word)
    {
        const string_view last = last_;
        const bool outer = depth_ == 0;
        last_ = word;
        if (contains(kRefused, word) || word.front() == '$') return false;
        if (equal(word, "FROM") && outer) {
            if (from_) return false;
            from_ = word.data();
        }
        if (equal(word, "BY")) {
            if (!outer || by_ || !value_ || !equal(last, "ORDER")) return false;
            order_ = last.data();
            by_ = word.data();
        }
        // A number in the order is a column by its place, which is another one then.
        return !by_ || word.front() < '0' || word.front() > '9';
    }

    /// What stands behind a sign; null when it has no place in a plain statement.
    const char *take_sign(const char *at)
    {
        const char sign = *at;
        if (sign == ' ') return at + 1;
        const string_view word = last_;
        last_ = {};
        switch (sign) {
            case '\'':
            case '`': return behind_quoted(at + 1, sign);
            case '(': depth_++; return word.empty() || contains(kBeforeParenthesis, word) ? at + 1 : nullptr;
            case ')': return --depth_ < 0 ? nullptr : at + 1;
            case '%': return take_conversion(at);
            case '-': return at[1] == '-' ? nullptr : at + 1;
            default: return strchr(".,=<>!+&|/", sign) ? at + 1 : nullptr;
        }
    }

    static const char *behind_quoted(const char *at, char quote)
    {
        while (*at && *at != quote && *at != '%') at++;
        return *at == quote ? at + 1 : nullptr;
    }

    const char *take_conversion(const char *at)
    {
        // A value that is quoted by the formatter is one; text that is put in may be anything.
        if (!from_ || (at[1] != 'd' && at[1] != 'Q') || is_word(at[2])) return nullptr;
        if (at[1] == 'd') {
            if (value_ || at[-1] != '=') return nullptr;
            value_ = at;
        }
        return at + 2;
    }
};

/// The place of a column among those of a result; -1 when none has just this text.
int column_of(string_view columns, string_view wanted)
{
    int depth = 0;
    int number = 0;
    bool quoted = false;
    size_t begin = 0;
    for (size_t at = 0; at <= columns.size(); at++) {
        const char sign = at < columns.size() ? columns[at] : ',';
        if (sign == '\'') quoted = !quoted;
        if (quoted) continue;
        depth += (sign == '(') - (sign == ')');
        if (sign != ',' || depth != 0) continue;
        if (columns.substr(begin, at - begin) == wanted) return number;
        begin = at + 1;
        number++;
    }
    return -1;
}

/// The column by whose text a statement sorts without regard to case, when it sorts by nothing else.
int sorted_by(const Parts &parts)
{
    constexpr string_view kNoCase = " COLLATE NOCASE";
    if (!parts.order.ends_with(kNoCase)) return SetWise::kInOrder;
    return column_of(parts.columns, parts.order.substr(0, parts.order.size() - kNoCase.size()));
}

void append(sqlite3_str *text, string_view piece)
{
    sqlite3_str_append(text, piece.data(), static_cast<int>(piece.size()));
}

/// Puts the statement's format together; null without memory.
char *turned(const Parts &parts, const char *table, int sort_by)
{
    sqlite3_str *text = sqlite3_str_new(nullptr);
    append(text, "SELECT related_key,");
    append(text, parts.columns);
    sqlite3_str_appendf(text,
                        " FROM (SELECT id AS related_key,+id AS related_value FROM `%s` WHERE id BETWEEN %%d AND %%d) "
                        "CROSS JOIN",
                        table);
    append(text, parts.before);
    append(text, "related_value");
    append(text, parts.behind);
    append(text, " ORDER BY related_key");
    if (sort_by == SetWise::kInOrder && !parts.order.empty()) {
        append(text, ",");
        append(text, parts.order);
    }
    return sqlite3_str_finish(text);
}

/// The statements that were made, each once for all threads: the support library finds what it knows of a format by its
/// address. They stay to the end: a thread may still be reading a list while the program is on its way out.
class Statements {
public:
    SetWise find(const char *format, const char *table)
    {
        for (const Made *made = head_; made; made = made->next)
            if (made->format == format && made->table == table) return {made->text, made->sort_by};
        return add(format, table);
    }

private:
    struct Made {
        const char *format;
        const char *table;
        char *text;
        int sort_by;
        Made *next;
    };
    std::atomic<Made *> head_ = nullptr;

    SetWise add(const char *format, const char *table)
    {
        Parts parts;
        const bool plain = parts.find(format);
        const int sort_by = plain ? sorted_by(parts) : SetWise::kInOrder;
        char *text = plain ? turned(parts, table, sort_by) : nullptr;
        auto *made = plain && !text ? nullptr : new (std::nothrow) Made{format, table, text, sort_by, head_};
        if (!made) {
            sqlite3_free(text);
            return {};  // perhaps there is memory the next time
        }
        while (!head_.compare_exchange_weak(made->next, made)) continue;
        return {text, sort_by};
    }
};
constinit Statements statements;

}  // namespace

SetWise set_wise(const char *format, const char *table)
{
    return statements.find(format, table);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
