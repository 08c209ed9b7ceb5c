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

/// Where the parts of a statement stand, found in one walk over its words. What is quoted is passed over.
class Parts {
public:
    const char *from = nullptr;   // behind the outer FROM
    const char *value = nullptr;  // the %d
    const char *order = nullptr;  // behind the outer ORDER BY

    /// False for a statement that is not of the plain kind.
    bool find(const char *format)
    {
        if (strncmp(format, kSelect, strlen(kSelect)) != 0) return false;
        for (const char *at = format; *at;) {
            if (is_word(*at)) {
                const char *behind = at;
                while (is_word(*behind)) behind++;
                if (!take_word({at, static_cast<size_t>(behind - at)})) return false;
                at = behind;
            } else {
                at = take_sign(at);
                if (!at) return false;
            }
        }
        return value && depth_ == 0;
    }

private:
    int depth_ = 0;
    string_view last_;  // the last word, empty once something else but blanks stood behind it

    bool take_word(string_view word)
    {
        const string_view before = last_;
        const bool outer = depth_ == 0;
        const char *behind = word.data() + word.size();
        last_ = word;
        if (contains(kRefused, word) || word.front() == '$') return false;
        if (equal(word, "FROM") && outer) {
            if (from) return false;
            from = behind;
        }
        if (equal(word, "BY")) {
            if (!outer || order || !value || !equal(before, "ORDER")) return false;
            order = behind;
        }
        // A number in the order is a column by its place, which is another one then.
        return !order || word.front() < '0' || word.front() > '9';
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
        if (!from || (at[1] != 'd' && at[1] != 'Q') || is_word(at[2])) return nullptr;
        if (at[1] == 'd') {
            if (value || at[-1] != '=') return nullptr;
            value = at;
        }
        return at + 2;
    }
};

void append(sqlite3_str *text, const char *begin, const char *end)
{
    sqlite3_str_append(text, begin, static_cast<int>(end - begin));
}

/// Makes the format; null without memory and when there is none.
char *turn(const char *format, const char *table)
{
    Parts parts;
    if (!parts.find(format)) return nullptr;
    const char *select = format + strlen(kSelect);
    const char *behind = parts.value + strlen("%d");
    const char *end = format + strlen(format);
    sqlite3_str *text = sqlite3_str_new(nullptr);
    sqlite3_str_appendall(text, "SELECT related_key,");
    append(text, select, parts.from);
    sqlite3_str_appendf(text,
                        " (SELECT id AS related_key,+id AS related_value FROM `%s` WHERE id BETWEEN %%d AND %%d) CROSS "
                        "JOIN",
                        table);
    append(text, parts.from, parts.value);
    sqlite3_str_appendall(text, "related_value");
    append(text, behind, parts.order ? parts.order : end);
    sqlite3_str_appendall(text, parts.order ? " related_key," : " ORDER BY related_key");
    if (parts.order) append(text, parts.order + 1, end);
    return sqlite3_str_finish(text);
}

/// The formats that were made, each once for all threads: the support library finds what it knows of a format by its
/// address. They go when the library goes.
class Formats {
public:
    constexpr Formats() = default;
    Formats(const Formats &) = delete;
    Formats &operator=(const Formats &) = delete;
    ~Formats()
    {
        for (Made *made = head_; made;) {
            Made *next = made->next;
            sqlite3_free(made->text);
            delete made;
            made = next;
        }
    }

    const char *find(const char *format, const char *table)
    {
        for (const Made *made = head_; made; made = made->next)
            if (made->format == format && made->table == table) return made->text;
        return add(format, table);
    }

private:
    struct Made {
        const char *format;
        const char *table;
        char *text;
        Made *next;
    };
    std::atomic<Made *> head_ = nullptr;

    const char *add(const char *format, const char *table)
    {
        auto *made = new (std::nothrow) Made{format, table, turn(format, table), head_};
        if (!made) return nullptr;
        while (!head_.compare_exchange_weak(made->next, made)) continue;
        return made->text;
    }
};
constinit Formats formats;

}  // namespace

const char *set_wise(const char *format, const char *table)
{
    return formats.find(format, table);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
