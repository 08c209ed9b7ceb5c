// Dumps: a golden text per type and form, the same texts once more from a second writer that knows only
// the list of record types and the format, and the edges of the format.
#include <cstring>
#include <deque>
#include <memory>

#include "fixture/files.h"
#include "fixture/fixture.h"
#include "fixture/record_list.h"

using test::listed_type;
using test::ListedField;
using test::ListedType;
using test::record_list;
using testing::ElementsAre;

namespace {

constexpr int kLevels = 3;  // records inside records that the filler makes

// ---- What stands in a filled record: functions of type, number of the field and number of the element

int32_t int_value(size_t field, int element)
{
    const int32_t value = static_cast<int32_t>(field) * 10 + element + 1;
    return field % 4 == 3 ? -value : value;
}

int64_t long_value(size_t field, int element)
{
    return -4000000000LL * (static_cast<int64_t>(field) + 1) - element;
}

uint64_t number_value(size_t field, int element)
{
    return 18000000000000000000ULL + field * 10 + static_cast<uint64_t>(element);
}

std::string text_value(const std::string &type, const std::string &field, int element)
{
    return type + "." + field + (element ? "'" : "");
}

bool void_value(size_t field, int element)
{
    return (field + static_cast<size_t>(element)) % 2 == 1;
}
bool null_text(size_t field, int element)
{
    return element == 1 && field % 3 == 2;
}
bool null_object(size_t field, int element, int level)
{
    return level + 1 == kLevels || (element == 1 && field % 2 == 1);
}

// ---- The filler walks a field table

struct Filler {
    std::deque<std::unique_ptr<uint64_t[]>> memory;
    std::deque<std::string> texts;

    template <class T>
    static void put(char *record, size_t position, T value)
    {
        memcpy(record + position, &value, sizeof value);
    }

    char *fill(const QbobjField *type, int element, int level)
    {
        memory.push_back(std::make_unique<uint64_t[]>(type->position / 8 + 1));
        char *record = reinterpret_cast<char *>(memory.back().get());
        for (size_t i = 0; type[i + 1].kind != '.'; i++) {
            const QbobjField &field = type[i + 1];
            const bool wide = field.kind == 'n' || field.kind == 'l';
            if ((field.flags & QBOBJ_FIELD_OPTIONAL) && (wide || field.kind == 'i'))
                put(record, field.position - (wide ? 8 : 4), static_cast<int32_t>(void_value(i, element)));
            switch (field.kind) {
                case 'i': put(record, field.position, int_value(i, element)); break;
                case 'l': put(record, field.position, long_value(i, element)); break;
                case 'n': put(record, field.position, number_value(i, element)); break;
                case 's':
                    if (null_text(i, element)) break;
                    texts.push_back(text_value(type->name, field.name, element));
                    put(record, field.position, texts.back().c_str());
                    break;
                case 'o':
                    if (!null_object(i, element, level)) put(record, field.position, list(field.subtype, level + 1));
                    break;
                default: ADD_FAILURE() << "kind " << field.kind;
            }
        }
        return record;
    }

    /// Two linked elements of a list type, one record of any other.
    char *list(const QbobjField *type, int level)
    {
        char *first = fill(type, 0, level);
        if (type->flags & QBOBJ_TYPE_LIST) put(first, 0, fill(type, 1, level));
        return first;
    }
};

// ---- The second writer knows the list and the format

struct Writer {
    bool stream;
    std::string out;

    void line(int depth, const std::string &text)
    {
        out += std::string(static_cast<size_t>(depth < 15 ? depth : 15), ' ') + text + "\n";
    }

    void fields(const ListedType &type, int element, int level, int depth)
    {
        for (size_t i = 0; i < type.fields.size(); i++) {
            const ListedField &field = type.fields[i];
            const std::string start = std::string(1, field.kind) + " " + field.name;
            const bool nothing = field.has_indicator() && void_value(i, element) && !stream;
            if (field.kind == 'o') {
                object(field, start, null_object(i, element, level), level, depth);
            } else if (nothing) {
                line(depth, start + " = void");
            } else if (field.kind == 's') {
                const bool null = null_text(i, element);
                line(depth, start + " = " + (null ? "(null)" : text_value(type.name, field.name, element)));
            } else {
                line(depth, start + " = " +
                                (field.kind == 'i'   ? std::to_string(int_value(i, element))
                                 : field.kind == 'l' ? std::to_string(long_value(i, element))
                                                     : std::to_string(number_value(i, element))));
            }
        }
    }

    void object(const ListedField &field, const std::string &start, bool null, int level, int depth)
    {
        const ListedType &type = listed_type(field.subtype);
        if (null) {
            if (!type.is_list() || !stream) line(depth, start + " = NULL");
            return;
        }
        block(type, start, level + 1, depth);
    }

    void block(const ListedType &type, const std::string &start, int level, int depth)
    {
        for (int element = 0; element < (type.is_list() ? 2 : 1); element++) {
            line(depth, start + (type.is_list() ? "[" + std::to_string(element) + "]" : "") + " = {");
            fields(type, element, level, depth + 1);
            line(depth, "}");
        }
    }
};

// ---- The dumps themselves

std::string stream_dump(const char *name, const void *record)
{
    char *text = nullptr;
    size_t size = 0;
    FILE *stream = open_memstream(&text, &size);
    qbobj_api2_dump_struct(stream, name, record);
    fclose(stream);
    std::string result(text, size);
    free(text);
    return result;
}

struct Dump : test::Database {
    std::string log_dump(const QbobjField *type, const void *record, int depth = 0)
    {
        log.clear();
        qbobj_api2_utils_dump_object(qbdb, type, record, depth, "here.cpp", 42);
        std::string text;
        for (const test::LogLine &line : log) {
            EXPECT_EQ(line.file, "here.cpp");
            EXPECT_EQ(line.line, 42u);
            EXPECT_EQ(line.level, 5u);
            EXPECT_EQ(line.flag, 0u);
            EXPECT_EQ(line.text.find('\n'), line.text.size() - 1) << line.text;
            text += line.text;
        }
        return text;
    }
    std::string log_dump(const char *name, const void *record, int depth = 0)
    {
        return log_dump(qbobj_find_type(name), record, depth);
    }
};

#define TYPE_NAME(T) #T,
const char *const kTypeNames[] = {QBOBJ_FOR_EACH_TYPE(TYPE_NAME)};

struct EachType : Dump {};

TEST_F(EachType, LogForm)
{
    for (const char *name : kTypeNames) {
        SCOPED_TRACE(name);
        Filler filler;
        const std::string text = log_dump(name, filler.list(qbobj_find_type(name), 0));
        Writer writer{false, ""};
        writer.block(listed_type(name), name, 0, 0);
        EXPECT_EQ(text, writer.out);
        test::expect_golden(std::string("tests/frame/golden/") + name + ".log", text);
    }
}

TEST_F(EachType, StreamForm)
{
    for (const char *name : kTypeNames) {
        SCOPED_TRACE(name);
        Filler filler;
        const std::string text = stream_dump(name, filler.list(qbobj_find_type(name), 0));
        Writer writer{true, std::string("*** Dump ") + name + " ***\n"};
        writer.block(listed_type(name), name, 0, 0);
        EXPECT_EQ(text, writer.out);
        test::expect_golden(std::string("tests/frame/golden/") + name + ".stream", text);
    }
}

TEST_F(EachType, NullRecord)
{
    for (const std::string name : kTypeNames) {
        SCOPED_TRACE(name);
        const std::string block = listed_type(name).is_list() ? "" : name + " = {\n  obj=NULL\n}\n";
        EXPECT_EQ(log_dump(name.c_str(), nullptr), block);
        EXPECT_EQ(stream_dump(name.c_str(), nullptr), "*** Dump " + name + " ***\n" + block);
    }
}

TEST_F(EachType, AZeroedRecordHasAllItsNumbers)
{
    for (const char *name : kTypeNames) {
        SCOPED_TRACE(name);
        const QbobjField *type = qbobj_find_type(name);
        const auto memory = std::make_unique<uint64_t[]>(type->position / 8 + 1);
        const std::string text = log_dump(type, memory.get());
        EXPECT_EQ(text.find("void"), std::string::npos);
        for (const ListedField &field : listed_type(name).fields) {
            const std::string value = field.kind == 's' ? "(null)" : field.kind == 'o' ? "NULL" : "0";
            EXPECT_NE(text.find(std::string("\n ") + field.kind + " " + field.name + " = " + value + "\n"),
                      std::string::npos)
                << field.name;
        }
    }
}

// ---- Edges of the format

TEST_F(Dump, IndentGrowsToFifteenBlanks)
{
    ResourceId record{nullptr, 7};
    for (const int depth : {0, 1, 13, 14, 15, 16, 20, 1000}) {
        SCOPED_TRACE(depth);
        const std::string outer(static_cast<size_t>(std::min(depth, 15)), ' ');
        const std::string inner(static_cast<size_t>(std::min(depth + 1, 15)), ' ');
        EXPECT_EQ(log_dump("ResourceId", &record, depth),
                  outer + "ResourceId[0] = {\n" + inner + "i resource_id = 7\n" + outer + "}\n");
    }
    EXPECT_EQ(log_dump("ResourceId", &record, 20), log_dump("ResourceId", &record, 15));
}

TEST_F(Dump, IndentOfANullRecord)
{
    EXPECT_EQ(log_dump("LogQuery", nullptr, 3), "   LogQuery = {\n     obj=NULL\n   }\n");
    const std::string blanks(15, ' ');
    EXPECT_EQ(log_dump("LogQuery", nullptr, 20), blanks + "LogQuery = {\n" + blanks + " obj=NULL\n" + blanks + "}\n");
}

TEST_F(Dump, VoidNumberInTheLogItsValueInAStream)
{
    Share share{};
    share.QuotaMB_void = 1;
    share.QuotaMB = 4711;
    share.Dedup_void = -1;  // any non-zero indicator
    share.Dedup = 3;
    share.ReserveMB = 5;
    const std::string logged = log_dump("Share", &share);
    EXPECT_NE(logged.find("\n n QuotaMB = void\n"), std::string::npos) << logged;
    EXPECT_NE(logged.find("\n i Dedup = void\n"), std::string::npos);
    EXPECT_NE(logged.find("\n n ReserveMB = 5\n"), std::string::npos);
    EXPECT_EQ(logged.find("4711"), std::string::npos);
    const std::string streamed = stream_dump("Share", &share);
    EXPECT_NE(streamed.find("\n n QuotaMB = 4711\n"), std::string::npos) << streamed;
    EXPECT_NE(streamed.find("\n i Dedup = 3\n"), std::string::npos);
    EXPECT_EQ(streamed.find("void"), std::string::npos);
}

TEST_F(Dump, AnOptionalTextHasNoIndicator)
{
    Share share{};
    share.Dedup = 1;  // the word before LogBias
    EXPECT_NE(log_dump("Share", &share).find("\n s LogBias = (null)\n"), std::string::npos);
    share.LogBias = "latency";
    EXPECT_NE(log_dump("Share", &share).find("\n s LogBias = latency\n"), std::string::npos);
}

TEST_F(Dump, ThreeElementsAreNumberedFromZero)
{
    Subvolume third{nullptr, "3", "/c"};
    Subvolume second{&third, "2", "/b"};
    Subvolume first{&second, "1", "/a"};
    SubvolumeCollection collection{&first};
    const std::string block =
        "SubvolumeCollection = {\n"
        " o Subvolume[0] = {\n"
        "  s Path = /a\n"
        " }\n"
        " o Subvolume[1] = {\n"
        "  s Path = /b\n"
        " }\n"
        " o Subvolume[2] = {\n"
        "  s Path = /c\n"
        " }\n"
        "}\n";
    EXPECT_EQ(log_dump("SubvolumeCollection", &collection), block);
    EXPECT_EQ(stream_dump("SubvolumeCollection", &collection), "*** Dump SubvolumeCollection ***\n" + block);
    const std::string list =
        "Subvolume[0] = {\n s Path = /a\n}\n"
        "Subvolume[1] = {\n s Path = /b\n}\n"
        "Subvolume[2] = {\n s Path = /c\n}\n";
    EXPECT_EQ(log_dump("Subvolume", &first), list);
    EXPECT_EQ(stream_dump("Subvolume", &first), "*** Dump Subvolume ***\n" + list);
}

TEST_F(Dump, EmptyListsAndMissingRecords)
{
    Group group{};
    group.GroupName = "users";
    const std::string logged = log_dump("Group", &group);
    EXPECT_NE(logged.find(" o SecondaryMember = NULL\n o GroupQuota = NULL\n"), std::string::npos) << logged;
    EXPECT_EQ(stream_dump("Group", &group).find("SecondaryMember"), std::string::npos);

    VolumeSchedule schedule{};
    EXPECT_NE(log_dump("VolumeSchedule", &schedule).find(" o Interval = NULL\n"), std::string::npos);
    EXPECT_NE(stream_dump("VolumeSchedule", &schedule).find(" o Interval = NULL\n"), std::string::npos);
}

TEST_F(Dump, OneRecordOfAListTypeHasAnIndexToo)
{
    Host host{nullptr, 1, 2, "nas"};
    HostAcl acl{nullptr, &host, "ReadOnly", 1};
    EXPECT_EQ(log_dump("HostAcl", &acl),
              "HostAcl[0] = {\n"
              " o Host[0] = {\n"
              "  i resource_id = 1\n"
              "  i HostId = 2\n"
              "  s HostName = nas\n"
              " }\n"
              " s Access = ReadOnly\n"
              " i Root = 1\n"
              "}\n");
}

TEST_F(Dump, UnknownNameWritesTheBannerOnly)
{
    ResourceId record{};
    EXPECT_EQ(stream_dump("Nothing", &record), "*** Dump Nothing ***\n");
    EXPECT_EQ(stream_dump("resourceid", &record), "*** Dump resourceid ***\n");
    EXPECT_EQ(stream_dump("", nullptr), "*** Dump  ***\n");
    EXPECT_EQ(stream_dump(nullptr, &record), "*** Dump (null) ***\n");
}

struct ByHand {
    int32_t small;
    uint32_t count_void;
    uint32_t count;
    uint32_t huge;
    int64_t low;
    uint64_t high;
    int64_t wide_void;
    int64_t wide;
};

constexpr QbobjField kByHand[] = {
    {'\0', "ByHand", sizeof(ByHand), nullptr, 0},
    {'i', "small", offsetof(ByHand, small), nullptr, 0},
    {'x', "skipped", offsetof(ByHand, small), nullptr, 0},
    {'x', "skipped_optional", offsetof(ByHand, count), nullptr, QBOBJ_FIELD_OPTIONAL},
    {'u', "count", offsetof(ByHand, count), nullptr, QBOBJ_FIELD_OPTIONAL},
    {'u', "huge", offsetof(ByHand, huge), nullptr, 0},
    {'l', "low", offsetof(ByHand, low), nullptr, 0},
    {'n', "high", offsetof(ByHand, high), nullptr, 0},
    {'l', "wide", offsetof(ByHand, wide), nullptr, QBOBJ_FIELD_OPTIONAL},
    {'.', nullptr, 0, nullptr, 0},
};

TEST_F(Dump, EveryNumberKindAtItsEnds)
{
    ByHand record{INT32_MIN, 0, 3, UINT32_MAX, INT64_MIN, UINT64_MAX, 0, INT64_MAX};
    EXPECT_EQ(log_dump(kByHand, &record),
              "ByHand = {\n"
              " i small = -2147483648\n"
              " u count = 3\n"
              " u huge = 4294967295\n"
              " l low = -9223372036854775808\n"
              " n high = 18446744073709551615\n"
              " l wide = 9223372036854775807\n"
              "}\n");
    record.count_void = 1;
    record.wide_void = 1;
    EXPECT_EQ(log_dump(kByHand, &record),
              "ByHand = {\n"
              " i small = -2147483648\n"
              " u count = void\n"
              " u huge = 4294967295\n"
              " l low = -9223372036854775808\n"
              " n high = 18446744073709551615\n"
              " l wide = void\n"
              "}\n");
}

TEST_F(Dump, LongTextsArriveWhole)
{
    const std::string path(100000, 'p');
    Subvolume subvolume{nullptr, "k", path.c_str()};
    EXPECT_EQ(log_dump("Subvolume", &subvolume), "Subvolume[0] = {\n s Path = " + path + "\n}\n");
}

TEST_F(Dump, PercentSignsInTextsAreText)
{
    Subvolume subvolume{nullptr, "k", "100%s%n"};
    EXPECT_EQ(log_dump("Subvolume", &subvolume), "Subvolume[0] = {\n s Path = 100%s%n\n}\n");
    EXPECT_EQ(stream_dump("Subvolume", &subvolume), "*** Dump Subvolume ***\nSubvolume[0] = {\n s Path = 100%s%n\n}\n");
}

using DumpDeathTest = Dump;

TEST_F(DumpDeathTest, MissingStreamTableOrHandle)
{
    EXPECT_DEATH(qbobj_api2_dump_struct(nullptr, "Share", nullptr), "Assertion .stream. failed");
    EXPECT_DEATH(qbobj_api2_utils_dump_object(qbdb, nullptr, nullptr, 0, "f", 1), "Assertion .type. failed");
    EXPECT_DEATH(qbobj_api2_utils_dump_object(nullptr, qbobj_find_type("Share"), nullptr, 0, "f", 1),
                 "Assertion .qbdb. failed");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
