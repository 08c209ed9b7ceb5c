// Sizes and offsets of every structure that crosses the interface, against a checked-in list. The list is
// compared with the field tables, with the placing rules, and by the C compiler with the headers themselves.
#include <cstddef>
#include <map>
#include <sstream>

#include "fixture/files.h"
#include "fixture/fixture.h"
#include "fixture/record_list.h"

namespace {

constexpr char kList[] = "tests/abi/layout.txt";

std::string line(size_t offset, const std::string &name)
{
    const std::string number = std::to_string(offset);
    return "    " + std::string(number.size() < 4 ? 4 - number.size() : 0, ' ') + number + " " + name + "\n";
}

#define MEMBER(T, m) line(offsetof(T, m), #m)

std::string other_structures()
{
    std::string text = "ErrorInfo " + std::to_string(sizeof(ErrorInfo)) + "\n";
    text += MEMBER(ErrorInfo, code) + MEMBER(ErrorInfo, file) + MEMBER(ErrorInfo, line) + MEMBER(ErrorInfo, message);
    text += "qbdb\n";  // its size is the support library's own affair
    text += MEMBER(qbdb_t, log_level) + MEMBER(qbdb_t, pool) + MEMBER(qbdb_t, request_pool);
    text += "QbobjField " + std::to_string(sizeof(QbobjField)) + "\n";
    text += MEMBER(QbobjField, kind) + MEMBER(QbobjField, name) + MEMBER(QbobjField, position) +
            MEMBER(QbobjField, subtype) + MEMBER(QbobjField, flags);
    text += "QbobjType " + std::to_string(sizeof(QbobjType)) + "\n";
    text += MEMBER(QbobjType, name) + MEMBER(QbobjType, fields);
    text += "QbobjCode " + std::to_string(sizeof(QbobjCode)) + "\n";
    text += MEMBER(QbobjCode, code) + MEMBER(QbobjCode, meaning);
    text += "QbobjTraits " + std::to_string(sizeof(QbobjTraits)) + "\n";
    text += MEMBER(QbobjTraits, unit) + MEMBER(QbobjTraits, default_value) + MEMBER(QbobjTraits, pattern) +
            MEMBER(QbobjTraits, ranged) + MEMBER(QbobjTraits, minimum) + MEMBER(QbobjTraits, maximum) +
            MEMBER(QbobjTraits, besides) + MEMBER(QbobjTraits, besides_minimum) + MEMBER(QbobjTraits, besides_maximum);
    text += "QbobjArgument " + std::to_string(sizeof(QbobjArgument)) + "\n";
    text += MEMBER(QbobjArgument, name) + MEMBER(QbobjArgument, kind) + MEMBER(QbobjArgument, direction) +
            MEMBER(QbobjArgument, type) + MEMBER(QbobjArgument, optional) + MEMBER(QbobjArgument, chain) +
            MEMBER(QbobjArgument, words) + MEMBER(QbobjArgument, ignores) + MEMBER(QbobjArgument, keeps);
    text += "QbobjOperation " + std::to_string(sizeof(QbobjOperation)) + "\n";
    text += MEMBER(QbobjOperation, name) + MEMBER(QbobjOperation, family) + MEMBER(QbobjOperation, summary) +
            MEMBER(QbobjOperation, codes) + MEMBER(QbobjOperation, returns) + MEMBER(QbobjOperation, changes) +
            MEMBER(QbobjOperation, count) + MEMBER(QbobjOperation, arguments) + MEMBER(QbobjOperation, call);
    return text;
}

/// The records by their field tables.
std::string by_field_tables()
{
    std::string text;
    for (const QbobjType *type = qbobj_types(); type->name; type++) {
        const QbobjField *header = type->fields;
        text += std::string(type->name) + " " + std::to_string(header->position) + "\n";
        if (header->flags & QBOBJ_TYPE_LIST) text += line(0, "next");
        if (header->flags & QBOBJ_TYPE_KEY_WORD) text += line(8, "key");
        for (const QbobjField *field = header + 1; field->kind != '.'; field++) {
            const bool wide = field->kind == 'l' || field->kind == 'n';
            if ((field->flags & QBOBJ_FIELD_OPTIONAL) && (wide || field->kind == 'i' || field->kind == 'u'))
                text += line(field->position - (wide ? 8 : 4), std::string(field->name) + "_void");
            text += line(field->position, field->name);
        }
    }
    return text;
}

/// The records by the rules: natural alignment, link and key word first, an indicator in a slot as wide as
/// its value right before it.
std::string by_rules()
{
    std::string text;
    for (const test::ListedType &type : test::record_list()) {
        std::string members;
        size_t end = 0;
        size_t alignment = 4;
        const auto place = [&](const std::string &name, size_t size) {
            alignment = std::max(alignment, size);
            end = (end + size - 1) / size * size;
            members += line(end, name);
            end += size;
        };
        if (type.is_list()) place("next", 8);
        if (type.has_key()) place("key", 8);
        for (const test::ListedField &field : type.fields) {
            if (field.has_indicator()) place(field.name + "_void", field.size());
            place(field.name, field.size());
        }
        text += type.name + " " + std::to_string((end + alignment - 1) / alignment * alignment) + "\n" + members;
    }
    return text;
}

TEST(Layout, EqualsTheList)
{
    test::expect_golden(kList, other_structures() + by_field_tables());
}

TEST(Layout, FollowsTheRules)
{
    EXPECT_EQ(by_field_tables(), by_rules());
}

TEST(Layout, HoldsForACCompiler)
{
    std::string code = "#include <stddef.h>\n#include \"qbobj.h\"\n#include \"qbdb.h\"\n";
    std::string type;
    for (const std::string &each : test::lines_of(test::read_file(test::source_path(kList)))) {
        std::istringstream words(each);
        if (each[0] != ' ') {
            std::string size;
            words >> type >> size;
            if (!size.empty())
                code += "_Static_assert(sizeof(struct " + type + ")==" + size + ",\"size of " + type + "\");\n";
        } else {
            size_t offset = 0;
            std::string name;
            words >> offset >> name;
            code += "_Static_assert(offsetof(struct " + type + "," + name + ")==" + std::to_string(offset) + ",\"" +
                    type + "." + name + "\");\n";
        }
    }
    const auto right = test::compile(test::c_compiler(), "c", "-std=c11", code);
    EXPECT_EQ(right.status, 0) << right.output;
    const auto wrong = test::compile(test::c_compiler(), "c", "-std=c11",
                                     code + "_Static_assert(offsetof(struct Share,QuotaMB)==4,\"wrong\");\n");
    EXPECT_NE(wrong.status, 0);
}

TEST(Layout, WordsThatTheRulesPin)
{
    EXPECT_EQ(offsetof(Share, next), 0u);
    EXPECT_EQ(offsetof(Share, key), 8u);
    EXPECT_EQ(offsetof(Share, ShareId), 16u);
    EXPECT_EQ(offsetof(Share, QuotaMB) - offsetof(Share, QuotaMB_void), 8u);
    EXPECT_EQ(offsetof(Share, Dedup) - offsetof(Share, Dedup_void), 4u);
    EXPECT_EQ(offsetof(Disk, PoolHostId) - offsetof(Disk, PoolHostId_void), 8u);
    EXPECT_EQ(offsetof(DiskDiff, PoolHostId) - offsetof(DiskDiff, PoolHostId_void), 8u);
    EXPECT_EQ(offsetof(User, resource_id), 8u);
    EXPECT_EQ(offsetof(UserCollection, User), 0u);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
