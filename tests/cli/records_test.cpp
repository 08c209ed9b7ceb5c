// Records to JSON and back, for every type there is.
#include "records.h"

#include <sstream>

#include "cli/run.h"
#include "database.h"
#include "failure.h"
#include "table.h"

using namespace qbcli;
using testing::HasSubstr;

namespace {

Json extreme(char kind)
{
    switch (kind) {
        case 'u': return UINT32_MAX;
        case 'l': return INT64_MIN;
        case 'n': return UINT64_MAX;
        default: return INT32_MIN;
    }
}

/// A record of a type with every field given, lists of two elements; as the caller writes it.
Json sample(const QbobjField *type, int seed = 0)
{
    const auto value = [&](const QbobjField *field) -> Json {
        if (field->kind == 's') return std::string(field->name) + " ä " + std::to_string(seed);
        if (field->kind != 'o') return extreme(field->kind);
        if (!is_list(field->subtype)) return sample(field->subtype, seed);
        return {sample(field->subtype, seed + 1), sample(field->subtype, seed + 2)};
    };
    if (is_bare_list(type)) return value(type + 1);
    Json object;
    if (has_key_word(type)) object[kKeyWord] = "the key word";
    for (const QbobjField *field = type + 1; field->kind != '.'; field++) object[field->name] = value(field);
    return object;
}

/// A sample as it comes back: secrets masked.
Json masked(const QbobjField *type, Json value)
{
    if (value.is_array())
        for (Json &element : value) element = masked(is_bare_list(type) ? type[1].subtype : type, element);
    if (value.is_object())
        for (const QbobjField *field = type + 1; field->kind != '.'; field++) {
            if (field->kind == 'o') value[field->name] = masked(field->subtype, value[field->name]);
            if (qbobj_is_secret(type, field)) value[field->name] = masked_password;
        }
    return value;
}

struct EveryType : testing::TestWithParam<const QbobjType *> {
    const QbobjField *type = GetParam()->fields;
    Arena arena;
};

TEST_P(EveryType, ComesBackAsItWasGiven)
{
    const Json given = sample(type);
    EXPECT_EQ(record_to_json(type, record_from(arena, type, given, "")).dump(2), masked(type, given).dump(2));
}

TEST_P(EveryType, WithItsSecretsIsWhatWasGiven)
{
    const Json given = sample(type);
    const Json shown = record_to_json(type, record_from(arena, type, given, ""), true);
    EXPECT_EQ(shown, given);
    EXPECT_EQ(record_to_json(type, record_from(arena, type, shown, ""), true), given) << "and can be written back";
}

/// The sample with one text for every secret, at any depth.
Json with_secrets(const QbobjField *type, Json value)
{
    if (value.is_array())
        for (Json &element : value) element = with_secrets(is_bare_list(type) ? type[1].subtype : type, element);
    if (value.is_object())
        for (const QbobjField *field = type + 1; field->kind != '.'; field++) {
            if (field->kind == 'o') value[field->name] = with_secrets(field->subtype, value[field->name]);
            if (qbobj_is_secret(type, field)) value[field->name] = "hunter2";
        }
    return value;
}

TEST_P(EveryType, ShowsNoSecretInAnyForm)
{
    const void *record = record_from(arena, type, with_secrets(type, sample(type)), "");
    const Json one = record_to_json(type, record);
    EXPECT_THAT(one.dump(), testing::Not(HasSubstr("hunter2")));
    for (const size_t width : {0, 40, 80, 500})
        for (const Json &shown : {one, Json{one, one}})
            EXPECT_THAT(lay_out(shown, width), testing::Not(HasSubstr("hunter2")));
    // A dump has the lines that --trace shows.
    char *text = nullptr;
    size_t size = 0;
    FILE *stream = open_memstream(&text, &size);
    qbobj_api2_dump_struct(stream, type->name, record);
    fclose(stream);
    std::istringstream lines(text);
    free(text);
    for (std::string line; std::getline(lines, line);)
        EXPECT_THAT(redacted(line, {}), testing::Not(HasSubstr("hunter2")));
}

TEST_P(EveryType, IsAbsentWhereNothingIsGiven)
{
    const Json absent = record_to_json(type, record_from(arena, type, Json::object(), ""));
    for (const QbobjField *field = type + 1; field->kind != '.'; field++) {
        SCOPED_TRACE(field->name);
        const Json &value = is_bare_list(type) ? absent : absent[field->name];
        if (field->kind == 'o' && is_list(field->subtype)) EXPECT_EQ(value, Json::array());
        else if (field->kind == 'o' || field->kind == 's' || (field->flags & QBOBJ_FIELD_OPTIONAL))
            EXPECT_EQ(value, nullptr);
        else EXPECT_EQ(value, 0) << "a number without an indicator is 0";
    }
}

TEST_P(EveryType, NullIsTheSameAsLeftOut)
{
    if (is_bare_list(type)) return;
    Json nulls = Json::object();
    for (const std::string_view name : field_names(type)) nulls[std::string(name)] = nullptr;
    EXPECT_EQ(record_to_json(type, record_from(arena, type, nulls, "")),
              record_to_json(type, record_from(arena, type, Json::object(), "")));
}

TEST_P(EveryType, RefusesFieldsOfAnotherKind)
{
    for (const QbobjField *field = type + 1; field->kind != '.'; field++) {
        const std::vector<Json> wrong = field->kind == 's'   ? std::vector<Json>{5, true, Json::array(), 1.5}
                                        : field->kind == 'o' ? std::vector<Json>{5, "text", true, Json({1})}
                                                             : std::vector<Json>{"5", true, 1.5, Json::array()};
        for (const Json &value : wrong) {
            SCOPED_TRACE(field->name + (" " + value.dump()));
            try {
                record_from(arena, type, Json{{field->name, value}}, "");
                ADD_FAILURE() << "was taken";
            } catch (const Failure &failure) {
                EXPECT_THAT(failure.what(), HasSubstr(field->name)) << "says which field";
            }
        }
    }
}

std::vector<const QbobjType *> all_types()
{
    std::vector<const QbobjType *> all;
    for (const QbobjType *type = qbobj_types(); type->name; type++) all.push_back(type);
    return all;
}

INSTANTIATE_TEST_SUITE_P(Types, EveryType, testing::ValuesIn(all_types()),
                         [](const auto &each) { return std::string(each.param->name); });

struct Records : testing::Test {
    Arena arena;
    std::string refusal(const char *type, const char *text)
    {
        try {
            record_from(arena, qbobj_find_type(type), Json::parse(text), "record");
        } catch (const Failure &failure) {
            return failure.what();
        }
        return "(taken)";
    }
};

TEST_F(Records, SetTheIndicatorsOfTheirStructures)
{
    const auto *share = static_cast<const Share *>(
        record_from(arena, qbobj_find_type("Share"), Json{{"QuotaMB", 0}, {"Dedup", 1}, {"key", "7"}}, ""));
    EXPECT_EQ(share->QuotaMB_void, 0);
    EXPECT_EQ(share->QuotaMB, 0u);
    EXPECT_NE(share->ReserveMB_void, 0);
    EXPECT_EQ(share->Dedup_void, 0);
    EXPECT_EQ(share->Dedup, 1);
    EXPECT_NE(share->Compression_void, 0);
    EXPECT_STREQ(share->key, "7");
    EXPECT_EQ(share->next, nullptr);
    EXPECT_EQ(share->Cifs, nullptr);
}

TEST_F(Records, TakeOneObjectForAListAndLinkTheElementsOfAnArray)
{
    const auto *user = static_cast<const User *>(record_from(
        arena, qbobj_find_type("User"),
        Json::parse(R"({"HomeFolderSettings":{"SizeLimit":5},"UserQuota":[{"HardMB":1},{"HardMB":2},{"HardMB":3}]})"),
        ""));
    ASSERT_NE(user->HomeFolderSettings, nullptr);
    EXPECT_EQ(user->HomeFolderSettings->SizeLimit, 5u);
    EXPECT_EQ(user->HomeFolderSettings->next, nullptr);
    const auto quotas = test::elements(user->UserQuota);
    ASSERT_EQ(quotas.size(), 3u);
    EXPECT_EQ(quotas[2]->HardMB, 3u);
}

TEST_F(Records, NameTheFieldThatIsWrong)
{
    const struct {
        const char *type;
        const char *text;
        const char *message;
    } cases[] = {
        {"User", R"({"UserQuota":[{},{"HardMB":-1}]})",
         "record.UserQuota[1].HardMB: a whole number from 0 to 18446744073709551615 is needed, not -1"},
        {"User", R"({"UserQuota":[5]})", "record.UserQuota[0]: a JSON object (Quota) is needed"},
        {"User", R"({"UserQuota":"x"})", "record.UserQuota: a JSON array (list of Quota) is needed"},
        {"User", R"({"Usrname":"x"})", "record: there is no field Usrname (did you mean UserName?)"},
        {"User", R"({"next":"x"})", "record: there is no field next"},
        {"User", R"({"key":"x"})", "record: there is no field key"},
        {"User", R"({"Password":5})", "record.Password: a text is needed"},
        {"Share", R"({"key":5})", "record.key: a text is needed, not 5"},
        {"Share", R"({"QuotaMB_void":1})", "record: there is no field QuotaMB_void"},
        {"Volume", R"({"BlockTotal":9223372036854775808})",
         "record.BlockTotal: a whole number from -9223372036854775808 to 9223372036854775807 is needed, not "
         "9223372036854775808"},
        {"Volume", R"([])", "record: a JSON object (Volume) is needed"},
    };
    for (const auto &each : cases) EXPECT_EQ(refusal(each.type, each.text), each.message);
}

TEST_F(Records, NumbersKeepAllTheirDigits)
{
    const QbobjField *quota = qbobj_find_type("Quota");
    const Json given = Json::parse(R"({"HardMB":18446744073709551615,"UsedMB":9007199254740993})");
    const Json back = record_to_json(quota, record_from(arena, quota, given, ""));
    EXPECT_EQ(back["HardMB"].dump(), "18446744073709551615");
    EXPECT_EQ(back["UsedMB"].dump(), "9007199254740993");
}

TEST_F(Records, AnEmptySecretIsNotMasked)
{
    const QbobjField *user = qbobj_find_type("User");
    EXPECT_EQ(record_to_json(user, record_from(arena, user, Json{{"Password", ""}}, ""))["Password"], "");
    EXPECT_EQ(record_to_json(user, record_from(arena, user, Json{{"Password", "x"}}, ""))["Password"], masked_password);
    ASSERT_EQ(arena.secrets().size(), 1u);
    EXPECT_EQ(arena.secrets()[0], "x");
}

TEST_F(Records, NumbersOfTextAreChecked)
{
    const struct {
        char kind;
        const char *text;
        const char *value;
    } good[] = {{'i', "-2147483648", "-2147483648"},
                {'i', "007", "7"},
                {'u', "4294967295", "4294967295"},
                {'l', "-9223372036854775808", "-9223372036854775808"},
                {'n', "18446744073709551615", "18446744073709551615"}};
    for (const auto &each : good) EXPECT_EQ(number_from_text(each.kind, each.text, "n").dump(), each.value);
    const std::pair<char, const char *> bad[] = {
        {'i', ""},  {'i', "2147483648"}, {'u', "-1"}, {'n', "18446744073709551616"},
        {'l', "x"}, {'n', "0x10"},       {'n', "1 "}, {'i', "1e3"}};
    for (const auto &[kind, text] : bad) EXPECT_THROW(number_from_text(kind, text, "n"), Failure) << kind << text;
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
