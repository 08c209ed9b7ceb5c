// Record dumps, to the log and to a stream: one walk over the field tables, two places to write to.
#include <cstdio>

#include "frame/records.h"
#include "frame/report.h"

namespace {

using namespace qb;

/// Where the lines go: to the handle's log, or to the stream when there is one.
struct Sink {
    FILE *stream;
    qbdb_t *qbdb;
    const char *file;
    uint32_t line;

    template <class... Args>
    void write(const char *format, Args... args) const
    {
        if (stream) fprintf(stream, format, args...);
        else qbdb_log(qbdb, file, line, 5, 0, format, args...);
    }
};

/// A line's indent: as many blanks as the depth, 15 at most.
const char *indent(int depth)
{
    static constexpr char kBlanks[] = "               ";
    constexpr int kDeepest = sizeof kBlanks - 1;
    return kBlanks + kDeepest - (depth > kDeepest ? kDeepest : depth < 0 ? 0 : depth);
}

void dump_fields(const Sink &sink, const QbobjField *type, const void *record, int depth);

const void *next_of(const void *element)
{
    return *static_cast<void *const *>(element);
}

void dump_object_field(const Sink &sink, const QbobjField *field, const void *record, int depth)
{
    const char *blanks = indent(depth);
    const void *value = value_of<const void *>(field, record);
    const bool list = field->subtype->flags & QBOBJ_TYPE_LIST;
    if (!value && list && sink.stream) return;  // the stream form says nothing of an empty list
    if (!value) return sink.write("%s%c %s = NULL\n", blanks, field->kind, field->name);
    if (!list) {
        sink.write("%s%c %s = {\n", blanks, field->kind, field->name);
        dump_fields(sink, field->subtype, value, depth + 1);
        return sink.write("%s}\n", blanks);
    }
    for (int index = 0; value; value = next_of(value), index++) {
        sink.write("%s%c %s[%d] = {\n", blanks, field->kind, field->name, index);
        dump_fields(sink, field->subtype, value, depth + 1);
        sink.write("%s}\n", blanks);
    }
}

bool is_number(char kind)
{
    return kind == 'i' || kind == 'u' || kind == 'l' || kind == 'n';
}

void dump_field(const Sink &sink, const QbobjField *field, const void *record, int depth)
{
    const char *blanks = indent(depth);
    // The stream form prints an optional number whatever its indicator says.
    if (is_number(field->kind) && (field->flags & QBOBJ_FIELD_OPTIONAL) && !sink.stream && is_void(field, record))
        return sink.write("%s%c %s = void\n", blanks, field->kind, field->name);
    switch (field->kind) {
        case 'i': return sink.write("%s%c %s = %d\n", blanks, 'i', field->name, value_of<int32_t>(field, record));
        case 'u': return sink.write("%s%c %s = %u\n", blanks, 'u', field->name, value_of<uint32_t>(field, record));
        case 'l': return sink.write("%s%c %s = %ld\n", blanks, 'l', field->name, value_of<int64_t>(field, record));
        case 'n': return sink.write("%s%c %s = %lu\n", blanks, 'n', field->name, value_of<uint64_t>(field, record));
        case 's': return sink.write("%s%c %s = %s\n", blanks, 's', field->name, value_of<const char *>(field, record));
        case 'o': return dump_object_field(sink, field, record, depth);
        default: return;
    }
}

void dump_fields(const Sink &sink, const QbobjField *type, const void *record, int depth)
{
    if (!record) return sink.write("%s obj=NULL\n", indent(depth));
    for (const QbobjField *field = type + 1; field->kind != '.'; field++) dump_field(sink, field, record, depth);
}

void dump_object(const Sink &sink, const QbobjField *type, const void *record, int depth)
{
    const char *blanks = indent(depth);
    if (!(type->flags & QBOBJ_TYPE_LIST)) {
        sink.write("%s%s = {\n", blanks, type->name);
        dump_fields(sink, type, record, depth + 1);
        return sink.write("%s}\n", blanks);
    }
    for (int index = 0; record; record = next_of(record), index++) {
        sink.write("%s%s[%d] = {\n", blanks, type->name, index);
        dump_fields(sink, type, record, depth + 1);
        sink.write("%s}\n", blanks);
    }
}

}  // namespace

void qbobj_api2_utils_dump_object(qbdb_t *qbdb, const QbobjField *type, const void *record, int depth, const char *file,
                                  uint32_t line)
{
    QB_ASSERT(qbdb);
    QB_ASSERT(type);
    dump_object({nullptr, qbdb, file, line}, type, record, depth);
}

void qbobj_api2_dump_struct(FILE *stream, const char *name, const void *record)
{
    QB_ASSERT(stream);
    const Sink sink{stream, nullptr, nullptr, 0};
    sink.write("*** Dump %s ***\n", name);
    if (const QbobjField *type = qbobj_find_type(name)) dump_object(sink, type, record, 0);
}
// SPDX-License-Identifier: Apache-2.0
