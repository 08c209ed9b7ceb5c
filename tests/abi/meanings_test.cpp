// Every type, field, operation, argument and result has a sentence, and it is the header's.
#include <gmock/gmock.h>

#include <regex>
#include <set>

#include "abi/all_types.h"
#include "fixture/files.h"
#include "fixture/header_text.h"
#include "fixture/paths.h"
#include "qbobj.h"

using testing::EndsWith;
using testing::Not;

namespace {

bool says_something(const char *text)
{
    return text && *text && std::string(text).find_first_of("\n`*@") != 0;
}

/// A text of words only, as far as a comment's marks and line ends could differ.
std::string words_of(const std::string &text)
{
    std::string words;
    for (const char c : text)
        if (isalnum(static_cast<unsigned char>(c))) words += c;
    return words;
}

TEST(Meanings, EveryTypeAndFieldHasOne)
{
    for (const QbobjField *type : all_types()) {
        EXPECT_TRUE(says_something(qbobj_type_meaning(type))) << type->name;
        for (const QbobjField *field = type + 1; field->kind != '.'; field++)
            EXPECT_TRUE(says_something(qbobj_field_meaning(type, field))) << type->name << "." << field->name;
    }
}

TEST(Meanings, EveryOperationArgumentAndResultHasOne)
{
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) {
        EXPECT_TRUE(says_something(qbobj_operation_meaning(row))) << row->name;
        EXPECT_TRUE(says_something(qbobj_result_meaning(row))) << row->name;
        for (uint32_t i = 0; i < row->count; i++)
            EXPECT_TRUE(says_something(qbobj_argument_meaning(row, &row->arguments[i])))
                << row->name << " " << row->arguments[i].name;
    }
}

TEST(Meanings, AreTheHeadersOwn)
{
    std::string headers;
    for (const std::string &name : test::headers()) headers += test::read_file(test::source_path("include/" + name));
    headers = test::in_words(headers);
    // The stars that begin a comment's lines are no words, so what is compared are letters and digits in their order.
    const std::string words = words_of(headers);
    for (const QbobjField *type : all_types())
        for (const QbobjField *field = type + 1; field->kind != '.'; field++)
            EXPECT_NE(words.find(words_of(field->name) + words_of(qbobj_field_meaning(type, field))), std::string::npos)
                << type->name << "." << field->name;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++)
        EXPECT_NE(words.find(words_of(qbobj_operation_meaning(row))), std::string::npos) << row->name;
}

TEST(Meanings, SomeInFull)
{
    const QbobjField *quota = qbobj_find_type("Quota");
    EXPECT_STREQ(qbobj_type_meaning(quota), "What one user or group may use of one share.");
    EXPECT_STREQ(qbobj_field_meaning(quota, quota + 3), "Data set of the share (the share's zfs_name).");
    const QbobjOperation *get = qbobj_find_operation("getUID");
    EXPECT_STREQ(qbobj_argument_meaning(get, &get->arguments[0]), "Name of the user; null for the local guest.");
    EXPECT_STREQ(qbobj_result_meaning(get), "0 found, 0xFFFFFFFF (-1) not found or database failure.");
    const QbobjOperation *change = qbobj_find_operation("modifyUser");
    EXPECT_NE(strchr(qbobj_operation_meaning(change), '\n'), nullptr) << "a paragraph is a line";
}

TEST(Meanings, WhatIsInNoTableHasNone)
{
    const QbobjField other[] = {{0, "Other", 8, nullptr, 0}, {'i', "Field", 0, nullptr, 0}, {'.', "", 0, nullptr, 0}};
    EXPECT_EQ(qbobj_type_meaning(other), nullptr);
    EXPECT_EQ(qbobj_field_meaning(other, other + 1), nullptr);
    const QbobjField prefix[] = {{0, "User.", 8, nullptr, 0}, {0, "", 0, nullptr, 0}};
    EXPECT_EQ(qbobj_type_meaning(prefix), nullptr);
    EXPECT_EQ(qbobj_type_meaning(prefix + 1), nullptr);
    QbobjOperation operation{};
    operation.name = "qbobj_addNothing";
    operation.arguments[0].name = "user";
    EXPECT_EQ(qbobj_operation_meaning(&operation), nullptr);
    EXPECT_EQ(qbobj_argument_meaning(&operation, operation.arguments), nullptr);
    EXPECT_EQ(qbobj_result_meaning(&operation), nullptr);
}

TEST(Version, IsThatOfTheBuild)
{
    EXPECT_TRUE(std::regex_match(qbobj_version(), std::regex("[0-9]+\\.[0-9]+\\.[0-9]+")));
}

TEST(Version, RowsAreAsLongAsHeadersSay)
{
    EXPECT_EQ(qbobj_row_size("QbobjField"), sizeof(QbobjField));
    EXPECT_EQ(qbobj_row_size("QbobjType"), sizeof(QbobjType));
    EXPECT_EQ(qbobj_row_size("QbobjArgument"), sizeof(QbobjArgument));
    EXPECT_EQ(qbobj_row_size("QbobjOperation"), sizeof(QbobjOperation));
    EXPECT_EQ(qbobj_row_size("QbobjCode"), sizeof(QbobjCode));
    EXPECT_EQ(qbobj_row_size("QbobjTraits"), sizeof(QbobjTraits));
    EXPECT_EQ(qbobj_row_size("Share"), 0u);
    EXPECT_EQ(qbobj_row_size(nullptr), 0u);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
