// What the marks in the headers' sentences say stands in the tables, and nothing else does. The headers are read here
// by other means than those of the build.
#include <climits>
#include <regex>
#include <set>

#include "abi/all_types.h"
#include "fixture/fixture.h"
#include "fixture/header_text.h"

using Mark = std::vector<std::string>;

namespace {

/// One line of everything that is known of a field or an argument.
std::string line(const QbobjTraits &traits)
{
    std::string text;
    if (traits.unit) text += std::string(" unit=") + traits.unit;
    if (traits.default_value) text += std::string(" default=") + traits.default_value;
    if (traits.pattern) text += " pattern";
    if (traits.ranged) text += " " + std::to_string(traits.minimum) + ".." + std::to_string(traits.maximum);
    if (traits.besides)
        text += " or " + std::to_string(traits.besides_minimum) + ".." + std::to_string(traits.besides_maximum);
    return text;
}

/// The same line of a text's marks. Those that name a field first belong to that field; `field` is "" for the others.
std::string line(const std::string &text, const std::string &field)
{
    std::map<std::string, std::string> said;
    for (Mark mark : test::marks_in(text)) {
        const std::string name = mark[0];
        mark.erase(mark.begin());
        if (name == "by") continue;
        const size_t own = name == "range" ? 2 : 1;
        const bool of_a_field = name != "unit" && mark.size() > own;
        if ((of_a_field ? mark[0] : "") != field) continue;
        if (of_a_field) mark.erase(mark.begin());
        std::string value = mark[0];
        if (value[0] == '"') value = value.substr(1, value.size() - 2);
        if (name == "unit") said["1"] = " unit=" + value;
        if (name == "default") said["2"] = " default=" + value;
        if (name == "pattern") said["3"] = " pattern";
        if (name == "range") said["4"] = " " + value + ".." + mark[1];
        if (name == "also") said["5"] = std::string(" or ").append(value).append("..").append(value);
        if (name == "below")
            said["5"] = " or " + std::to_string(INT_MIN) + ".." + std::to_string(std::stoll(value) - 1);
    }
    std::string all;
    for (const auto &[order, part] : said) all += part;
    return all;
}

/// Comments of functions, with their marks.
std::map<std::string, std::string> function_comments()
{
    std::map<std::string, std::string> comments;
    for (const test::Declaration &each : test::all_declarations()) comments[each.name] = each.marked;
    return comments;
}

/// What is said of an operation's argument: the text of the operation speaks of the first.
std::string said_of(const std::string &comment, const QbobjOperation *row, uint32_t argument)
{
    const std::string own = test::part_about(comment, row->arguments[argument].name);
    return argument == 0 ? test::part_about(comment, "") + own : own;
}

const QbobjField *find_field(const QbobjField *type, const std::string &path)
{
    const size_t dot = path.find('.');
    for (const QbobjField *field = type + 1; field->kind != '.'; field++)
        if (path.substr(0, dot) == field->name)
            return dot == std::string::npos ? field
                   : field->subtype         ? find_field(field->subtype, path.substr(dot + 1))
                                            : nullptr;
    return nullptr;
}

TEST(Traits, OfFieldsAreThoseOfTheirMarks)
{
    const auto comments = test::member_comments();
    int known = 0;
    for (const QbobjField *type : all_types())
        for (const QbobjField *field = type + 1; field->kind != '.'; field++) {
            const std::string name = std::string(type->name) + "." + field->name;
            ASSERT_TRUE(comments.count(name)) << name;
            const std::string told = line(*qbobj_field_traits(type, field));
            EXPECT_EQ(told, line(comments.at(name), "")) << name;
            if (told.find("..") != std::string::npos || told.find("unit") != std::string::npos) known++;
            // A sentence does not say it a second time, without a mark.
            const std::string rest = std::regex_replace(comments.at(name), std::regex("@[a-z]+\\{[^{}]*\\}"), "");
            for (const char *plain : {" in MB", "per cent", "seconds since", " in bytes", "LIKE pattern", "KB per"})
                EXPECT_EQ(rest.find(plain), std::string::npos) << name << ": " << plain;
        }
    EXPECT_GT(known, 60);
}

TEST(Traits, OfArgumentsAreThoseOfTheirMarks)
{
    const auto comments = function_comments();
    int known = 0;
    int of_fields = 0;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++)
        for (uint32_t i = 0; i < row->count; i++) {
            const QbobjArgument *argument = &row->arguments[i];
            const std::string name = std::string(row->name) + "(" + argument->name + ")";
            const std::string said = said_of(comments.at(row->name), row, i);
            EXPECT_FALSE(said.empty()) << name;
            const std::string told = line(*qbobj_argument_traits(row, argument));
            EXPECT_EQ(told, line(said, "")) << name;
            known += !told.empty();
            std::set<std::string> fields;
            for (const Mark &mark : test::marks_in(said))
                if (mark[0] != "unit" && mark[0] != "by" && mark.size() > (mark[0] == "range" ? 3 : 2))
                    fields.insert(mark[1]);
            for (const std::string &field : fields) {
                ASSERT_TRUE(argument->type && find_field(argument->type, field)) << name << "." << field;
                EXPECT_EQ(line(*qbobj_argument_field_traits(row, argument, field.c_str())), line(said, field))
                    << name << "." << field;
                of_fields++;
            }
        }
    EXPECT_GT(known, 20);
    EXPECT_GT(of_fields, 15);
}

TEST(Traits, AddressesAreThoseOfTheMarks)
{
    const auto comments = function_comments();
    int known = 0;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++)
        for (uint32_t i = 0; i < row->count; i++) {
            const QbobjArgument *argument = &row->arguments[i];
            std::string names;
            for (const Mark &mark : test::marks_in(said_of(comments.at(row->name), row, i))) {
                if (mark[0] != "by") continue;
                names += (names.empty() ? "" : " ") + mark[1];
                const std::string last = mark[1].substr(mark[1].rfind('.') + 1);
                EXPECT_TRUE(last == "key" || find_field(argument->type, mark[1])) << row->name << " " << mark[1];
            }
            const char *told = qbobj_argument_addresses(row, argument);
            EXPECT_EQ(told ? told : "", names) << row->name << "(" << argument->name << ")";
            known += told != nullptr;
        }
    EXPECT_GT(known, 35);
}

TEST(Traits, DirectionsAreThoseOfTheSentences)
{
    const auto comments = test::member_comments();
    int one_way = 0;
    for (const QbobjField *type : all_types()) {
        const bool none_given =
            std::string(qbobj_type_meaning(type)).find("all fields are output only") != std::string::npos;
        for (const QbobjField *field = type + 1; field->kind != '.'; field++) {
            const std::string said = comments.at(std::string(type->name) + "." + field->name);
            const bool begins_out = said.rfind("Out:", 0) == 0 || said.rfind("Out,", 0) == 0;
            const bool out = none_given || said.find("output only") != std::string::npos ||
                             (begins_out && said.find(" In:") == std::string::npos);
            const bool in = said.find("input only") != std::string::npos ||
                            (said.rfind("In:", 0) == 0 && said.find("ut: ") == std::string::npos);
            EXPECT_FALSE(in && out) << said;
            EXPECT_EQ(qbobj_field_direction(type, field), out  ? QBOBJ_OUT
                                                          : in ? QBOBJ_IN
                                                               : QBOBJ_INOUT)
                << type->name << "." << field->name << ": " << said;
            one_way += in || out;
        }
    }
    EXPECT_GT(one_way, 60);
}

TEST(Traits, SomeInFull)
{
    const auto of = [](const char *type, const char *field) {
        const QbobjField *fields = qbobj_find_type(type);
        return line(*qbobj_field_traits(fields, find_field(fields, field)));
    };
    EXPECT_EQ(of("AccountDefault", "DiskQuotaWarn"), " unit=per cent 1..99");
    EXPECT_EQ(of("HttpsOptions", "Port"), " 1024..65535 or 0..0");
    EXPECT_EQ(of("AccountQuery", "name_like"), " pattern");
    EXPECT_EQ(of("Share", "UpdateTS"), " unit=seconds since the epoch");
    EXPECT_EQ(of("User", "UserName"), "");
    const QbobjOperation *add = qbobj_find_operation("addGroup");
    EXPECT_EQ(line(*qbobj_argument_field_traits(add, add->arguments, "GroupId")), " 100..32767 or -2147483648..0");
    EXPECT_EQ(line(*qbobj_argument_field_traits(add, add->arguments, "Nothing")), "");
    const QbobjOperation *log = qbobj_find_operation("addLog");
    EXPECT_EQ(line(*qbobj_argument_traits(log, log->arguments)), " unit=seconds since the epoch");
    EXPECT_EQ(line(*qbobj_argument_traits(log, log->arguments + 1)), " default=info");
    EXPECT_EQ(qbobj_argument_addresses(log, log->arguments), nullptr);
    const QbobjOperation *get = qbobj_find_operation("getShare");
    EXPECT_STREQ(qbobj_argument_addresses(get, get->arguments), "key ShareId ShareName");
}

TEST(Traits, WhatIsInNoTableHasNone)
{
    const QbobjField other[] = {{0, "Other", 8, nullptr, 0}, {'i', "Field", 0, nullptr, 0}, {'.', "", 0, nullptr, 0}};
    EXPECT_EQ(line(*qbobj_field_traits(other, other + 1)), "");
    EXPECT_EQ(qbobj_field_direction(other, other + 1), QBOBJ_INOUT);
    QbobjOperation operation{};
    operation.name = "qbobj_addNothing";
    operation.arguments[0].name = "user";
    EXPECT_EQ(line(*qbobj_argument_traits(&operation, operation.arguments)), "");
    EXPECT_EQ(line(*qbobj_argument_field_traits(&operation, operation.arguments, "")), "");
    EXPECT_EQ(qbobj_argument_addresses(&operation, operation.arguments), nullptr);
}

TEST(Traits, PlacesAreThoseOfTheStructures)
{
    const QbobjField *share = qbobj_find_type("Share");
    EXPECT_EQ(qbobj_type_key_word(share), static_cast<int32_t>(offsetof(Share, key)));
    EXPECT_EQ(qbobj_type_key_word(qbobj_find_type("User")), -1);
    EXPECT_EQ(qbobj_field_indicator(find_field(share, "QuotaMB")), static_cast<int32_t>(offsetof(Share, QuotaMB_void)));
    EXPECT_EQ(qbobj_field_indicator(find_field(share, "Dedup")), static_cast<int32_t>(offsetof(Share, Dedup_void)));
    EXPECT_EQ(qbobj_field_indicator(find_field(share, "UsedMB")), -1);
    EXPECT_EQ(qbobj_field_indicator(find_field(share, "Comment")), -1);
    EXPECT_EQ(qbobj_field_indicator(find_field(share, "Cifs")), -1);
    EXPECT_EQ(qbobj_field_is_list(find_field(share, "UserQuota")), 1);
    EXPECT_EQ(qbobj_field_is_list(find_field(share, "Cifs")), 0);
    EXPECT_EQ(qbobj_field_is_list(find_field(share, "Comment")), 0);
}

/// What the tables of fields say of places is what the headers' structures have: an indicator is a member of its own.
TEST(Traits, EachIndicatorIsDeclared)
{
    const auto comments = test::member_comments();
    for (const QbobjField *type : all_types())
        for (const QbobjField *field = type + 1; field->kind != '.'; field++) {
            const std::string name = std::string(type->name) + "." + field->name + "_void";
            EXPECT_EQ(qbobj_field_indicator(field) >= 0, comments.count(name) == 1) << name;
        }
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
