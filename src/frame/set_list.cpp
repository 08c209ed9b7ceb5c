#include "frame/set_list.h"

#include <charconv>
#include <cstring>

namespace qb {
namespace {

/// A text in a place that may be too small for it.
struct Place {
    char *at;
    const char *end;
    bool full = false;

    void put(const char *text, size_t size)
    {
        full = full || size > static_cast<size_t>(end - at);
        if (full) return;
        memcpy(at, text, size);
        at += size;
    }
    void put(const char *text) { put(text, strlen(text)); }

    /// A text within quotes of SQL: those in it are doubled.
    void put_doubled(const char *text)
    {
        for (const char *quote; !full && (quote = strchr(text, '\'')); text = quote + 1) {
            put(text, static_cast<size_t>(quote - text));
            put("''", 2);
        }
        put(text);
    }

    template <class Number>
    void put_number(Number number)
    {
        char digits[24];
        put(digits, static_cast<size_t>(std::to_chars(digits, digits + sizeof digits, number).ptr - digits));
    }
};

void write_quoted(Place *out, const char *text)
{
    if (!text) return out->put("NULL");
    out->put("'", 1);
    out->put_doubled(text);
    out->put("'", 1);
}

/// Writes one value; the compiler has seen to it that there are no other letters.
void write_value(Place *out, char letter, bool wide, const ItemValue &value)
{
    switch (letter) {
        case 's': return out->put(value.text ? value.text : "");
        case 'q': return out->put_doubled(value.text ? value.text : "(NULL)");
        case 'Q': return write_quoted(out, value.text);
        case 'u':
            return out->put_number(wide ? static_cast<uint64_t>(value.number) : static_cast<uint32_t>(value.number));
        default: return out->put_number(wide ? value.number : static_cast<int32_t>(value.number));
    }
}

}  // namespace

char *write_item(char *at, size_t room, const char *separator, const char *format, const ItemValue *values)
{
    Place out{at, at + room};
    out.put(separator);
    for (const char *percent; (percent = strchr(format, '%')); format++) {
        out.put(format, static_cast<size_t>(percent - format));
        format = percent + 1;
        const bool wide = *format == 'l';
        while (*format == 'l') format++;
        if (*format == '%') out.put(format, 1);
        else write_value(&out, *format, wide, *values++);
    }
    out.put(format);
    out.put("", 1);
    if (!out.full) return out.at - 1;
    *at = '\0';
    return nullptr;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
