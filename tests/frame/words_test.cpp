// What the tables say of values: words of fields and arguments, fields that an operation ignores, secrets that it
// keeps.
#include <set>
#include <sstream>

#include "fixture/fixture.h"

namespace {

/// Follows a dotted name from a record's type; null when it leads nowhere.
struct Place {
    const QbobjField *type = nullptr;
    const QbobjField *field = nullptr;
};

Place find(const QbobjField *type, const std::string &path)
{
    std::istringstream names(path);
    Place place{type, nullptr};
    for (std::string name; std::getline(names, name, '.');) {
        if (place.field) place.type = place.field->subtype;
        place.field = nullptr;
        for (const QbobjField *field = place.type ? place.type + 1 : nullptr; field && field->kind != '.'; field++)
            if (name == field->name) place.field = field;
        if (!place.field) return {};
    }
    return place;
}

std::set<std::string> words_of(const char *const *words)
{
    std::set<std::string> all;
    for (; *words; words++) EXPECT_TRUE(all.insert(*words).second) << *words;
    return all;
}

TEST(FieldWords, BelongToTextFields)
{
    size_t fields = 0;
    for (const QbobjType *type = qbobj_types(); type->name; type++)
        for (const QbobjField *field = type->fields + 1; field->kind != '.'; field++) {
            const char *const *words = qbobj_field_words(type->fields, field);
            if (!words) continue;
            fields++;
            SCOPED_TRACE(type->name + (std::string(".") + field->name));
            EXPECT_EQ(field->kind, 's');
            EXPECT_GE(words_of(words).size(), 1u);
            EXPECT_FALSE(qbobj_is_secret(type->fields, field));
        }
    EXPECT_GE(fields, 30u);
}

TEST(FieldWords, AreThoseOfTheField)
{
    const auto words = [](const char *type, const char *field) {
        const Place place = find(qbobj_find_type(type), field);
        return words_of(qbobj_field_words(place.type, place.field));
    };
    EXPECT_EQ(words("Security", "Security"), (std::set<std::string>{"user", "ads"}));
    EXPECT_EQ(words("Share", "Sync"), (std::set<std::string>{"standard", "always", "disabled"}));
    EXPECT_EQ(words("HostAcl", "Access"), (std::set<std::string>{"ReadWrite", "ReadOnly", "Disabled"}));
    const QbobjField *user = qbobj_find_type("User");
    EXPECT_EQ(qbobj_field_words(user, find(user, "Email").field), nullptr) << "any text";
    EXPECT_EQ(qbobj_field_words(user, find(user, "UserId").field), nullptr) << "no text";
}

TEST(OperationRows, NameFieldsAndWordsThatThereAre)
{
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++)
        for (uint32_t i = 0; i < row->count; i++) {
            const QbobjArgument &argument = row->arguments[i];
            SCOPED_TRACE(row->name + (std::string(" ") + argument.name));
            if (argument.words) {
                EXPECT_EQ(argument.kind, QBOBJ_KIND_STRING);
                EXPECT_GE(words_of(argument.words).size(), 1u);
            }
            std::istringstream ignored(argument.ignores ? argument.ignores : "");
            for (std::string name; ignored >> name;) EXPECT_NE(find(argument.type, name).field, nullptr) << name;
            std::istringstream kept(argument.keeps ? argument.keeps : "");
            for (std::string name; kept >> name;) {
                const Place place = find(argument.type, name);
                ASSERT_NE(place.field, nullptr) << name;
                EXPECT_TRUE(qbobj_is_secret(place.type, place.field)) << name;
                EXPECT_TRUE(row->changes) << "only what is stored can be kept";
            }
        }
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
