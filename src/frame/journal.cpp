#include "frame/journal.h"

#include "frame/records.h"

namespace qb {
namespace {

constexpr int kLongestArguments = 64 << 10;  // of a longer call the journal keeps the length alone

/// Arguments as JSON text.
struct Writer {
    sqlite3_str *text = sqlite3_str_new(nullptr);

    Writer() = default;
    Writer(const Writer &) = delete;
    Writer &operator=(const Writer &) = delete;
    ~Writer() { sqlite3_free(sqlite3_str_finish(text)); }

    bool full() const { return sqlite3_str_length(text) > kLongestArguments; }
    void name(const char *word, bool &first)
    {
        sqlite3_str_appendf(text, "%s\"%s\":", first ? "" : ",", word);
        first = false;
    }
    void string(const char *value);
    void record(const QbobjField *type, const void *record);
    void list(const QbobjField *type, const void *first);
    void field(const QbobjField *type, const QbobjField *field, const void *record, bool &first);
    bool argument(const QbobjArgument &argument, QbobjValue value, bool &first);
};

void Writer::string(const char *value)
{
    sqlite3_str_appendchar(text, 1, '"');
    for (const char *at = value; *at && !full(); at++) {
        const auto c = static_cast<unsigned char>(*at);
        if (c == '"' || c == '\\') sqlite3_str_appendchar(text, 1, '\\');
        if (c < ' ') sqlite3_str_appendf(text, "\\u%04x", c);
        else sqlite3_str_appendchar(text, 1, *at);
    }
    sqlite3_str_appendchar(text, 1, '"');
}

/// What is absent is left out.
void Writer::field(const QbobjField *type, const QbobjField *field, const void *record, bool &first)
{
    const bool number = field->kind != 's' && field->kind != 'o';
    if (number && (field->flags & QBOBJ_FIELD_OPTIONAL) && is_void(field, record)) return;
    if (!number && !value_of<const void *>(field, record)) return;
    name(field->name, first);
    switch (field->kind) {
        case 'i': return sqlite3_str_appendf(text, "%d", value_of<int32_t>(field, record));
        case 'u': return sqlite3_str_appendf(text, "%u", value_of<uint32_t>(field, record));
        case 'l':
            return sqlite3_str_appendf(text, "%lld", static_cast<sqlite3_int64>(value_of<int64_t>(field, record)));
        case 'n':
            return sqlite3_str_appendf(text, "%llu", static_cast<sqlite3_uint64>(value_of<uint64_t>(field, record)));
        case 's': return string(qbobj_is_secret(type, field) ? masked_password : value_of<const char *>(field, record));
        default: break;
    }
    const void *inner = value_of<const void *>(field, record);
    if (field->subtype->flags & QBOBJ_TYPE_LIST) list(field->subtype, inner);
    else this->record(field->subtype, inner);
}

void Writer::record(const QbobjField *type, const void *record)
{
    sqlite3_str_appendchar(text, 1, '{');
    bool first = true;
    for (const QbobjField *at = type + 1; at->kind != '.' && !full(); at++) field(type, at, record, first);
    sqlite3_str_appendchar(text, 1, '}');
}

void Writer::list(const QbobjField *type, const void *element)
{
    sqlite3_str_appendchar(text, 1, '[');
    for (bool first = true; element && !full(); element = *static_cast<void *const *>(element), first = false) {
        if (!first) sqlite3_str_appendchar(text, 1, ',');
        record(type, element);
    }
    sqlite3_str_appendchar(text, 1, ']');
}

/// An argument that the operation reads; false when there is nothing to be said of it.
bool Writer::argument(const QbobjArgument &argument, QbobjValue value, bool &first)
{
    const bool direct = argument.direction == QBOBJ_IN;
    if (argument.direction == QBOBJ_OUT || (!direct && !value.p)) return false;
    switch (argument.kind) {
        case QBOBJ_KIND_INT32:
            name(argument.name, first);
            sqlite3_str_appendf(text, "%d", direct ? value.i : *static_cast<int32_t *>(value.p));
            return true;
        case QBOBJ_KIND_UINT64:
            name(argument.name, first);
            sqlite3_str_appendf(text, "%llu",
                                static_cast<sqlite3_uint64>(direct ? value.n : *static_cast<uint64_t *>(value.p)));
            return true;
        case QBOBJ_KIND_STRING: {
            const char *words = direct ? value.s : *static_cast<const char **>(value.p);
            if (!words) return false;
            name(argument.name, first);
            string(words);
            return true;
        }
        case QBOBJ_KIND_RECORD:
            if (!value.p) return false;
            name(argument.name, first);
            if (argument.chain) list(argument.type, value.p);
            else record(argument.type, value.p);
            return true;
        case QBOBJ_KIND_LIST:
            if (!value.p) return false;
            name(argument.name, first);
            list(argument.type, *static_cast<void **>(value.p));
            return true;
        default: return false;
    }
}

}  // namespace

void note_call(qbdb_t *qbdb, sqlite3 *db, const char *operation, const QbobjValue *values)
{
    const QbobjOperation *row = qbobj_find_operation(operation);
    Writer writer;
    sqlite3_str_appendchar(writer.text, 1, '{');
    bool first = true;
    for (uint32_t i = 0; row && i < row->count && !writer.full(); i++)
        writer.argument(row->arguments[i], values[i], first);
    sqlite3_str_appendchar(writer.text, 1, '}');
    if (writer.full()) {
        sqlite3_str_reset(writer.text);
        sqlite3_str_appendall(writer.text, "{\"left out\":\"the arguments are too long\"}");
    }
    const char *text = sqlite3_str_errcode(writer.text) == SQLITE_OK ? sqlite3_str_value(writer.text) : nullptr;
    qbdb_journal_call(qbdb, db, operation, text);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
