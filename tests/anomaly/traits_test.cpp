// What the tables tell of fields and arguments is how the operations behave: ranges are refused at their ends, absent
// values are their defaults, what is output only is not looked at, and without what addresses a record the call is
// another one. The calls are those of the set-ups, with single values changed.
#include "traits.h"

#include <set>

#include "anomaly/anomaly.h"
#include "records.h"

using qbcli::Json;

namespace test {
namespace {

using Visit = std::function<void(Json &record, const QbobjField *type, const std::string &path)>;

/// Visits a record, or each of a list, and the records inside. A path names fields alone: "Cifs.HostAcl.".
void visit_records(Json &value, const QbobjField *type, const std::string &path, const Visit &visit)
{
    if (value.is_array()) {
        const bool bare = qbcli::is_bare_list(type);
        for (Json &element : value)
            visit_records(element, bare ? type[1].subtype : type, bare ? path + type[1].name + "." : path, visit);
    }
    if (!value.is_object()) return;
    for (const QbobjField *field = type + 1; field->kind != '.'; field++)
        if (field->subtype && value.contains(field->name))
            visit_records(value[field->name], field->subtype, path + field->name + ".", visit);
    visit(value, type, path);
}

/// The arguments of a set-up, and the calls that are made with others.
struct TraitsOfCalls : Anomaly {
    using Anomaly::Anomaly;
    void TestBody() override {}

    static Json arguments_of(const Trial &setup) { return Json::parse(setup.arguments); }

    Outcome call(const Trial &setup, const Json &arguments)
    {
        const std::string text = arguments.dump();
        Trial changed = setup;
        changed.arguments = text.c_str();
        Outcome outcome = run(changed);
        qbdb_request_end(qbdb);
        return outcome;
    }
};

/// What a call comes to, for comparison.
bool same(const Outcome &a, const Outcome &b)
{
    return a.rc == b.rc && a.code == b.code && a.message == b.message && a.stored == b.stored &&
           a.committing == b.committing;
}

/// A family at a time; what was found is counted over all.
void with_each_trial(const std::function<void(TraitsOfCalls &, const Trial &, const QbobjOperation &)> &look)
{
    for (const Family &family : kFamilies) {
        TraitsOfCalls calls(family);
        for (const Trial &trial : family.trials) {
            SCOPED_TRACE(name_of(trial));
            calls.begin(trial);
            look(calls, trial, operation_of(trial));
        }
    }
}

// ---- Ranges

/// Two numbers of a record of which the one must not be above the other: tried at the same end.
const char *partner_of(const std::string &field)
{
    if (field == "PassiveRangeMin") return "PassiveRangeMax";
    return field == "PassiveRangeMax" ? "PassiveRangeMin" : nullptr;
}

/// Calls with a number at and beyond the ends of its range.
void expect_range(TraitsOfCalls &calls, const Trial &trial, const QbobjTraits &traits,
                  const std::function<Json(int64_t number, bool partners)> &with)
{
    const auto in_besides = [&](int64_t number) {
        return traits.besides && traits.besides_minimum <= number && number <= traits.besides_maximum;
    };
    std::set<uint32_t> refusals;
    for (const int64_t number : {traits.minimum - 1, traits.maximum + 1}) {
        if (in_besides(number)) continue;
        const Outcome outcome = calls.call(trial, with(number, false));
        EXPECT_GE(outcome.rc, 8u) << number << " is taken";
        EXPECT_NE(outcome.message, "") << number;
        EXPECT_FALSE(outcome.committing) << number << " is stored";
        refusals.insert(outcome.rc);
    }
    EXPECT_EQ(refusals.size(), 1u);
    std::vector<int64_t> allowed = {traits.minimum, traits.maximum};
    if (traits.besides) allowed.insert(allowed.end(), {traits.besides_minimum, traits.besides_maximum});
    for (const int64_t number : allowed) {
        const Outcome outcome = calls.call(trial, with(number, true));
        EXPECT_FALSE(refusals.count(outcome.rc)) << number << ": " << outcome.message;
    }
}

TEST(TraitsOfAllCalls, NumbersBeyondTheirRangesAreRefused)
{
    std::set<std::string> judged;
    with_each_trial([&](TraitsOfCalls &calls, const Trial &trial, const QbobjOperation &operation) {
        if (!operation.changes) return;
        for (uint32_t i = 0; i < operation.count; i++) {
            const QbobjArgument &argument = operation.arguments[i];
            Json given = TraitsOfCalls::arguments_of(trial);
            if (!argument.type || argument.direction == QBOBJ_OUT || !given.contains(argument.name)) continue;
            visit_records(
                given[argument.name], argument.type, "", [&](Json &record, const QbobjField *type, const auto &path) {
                    for (const QbobjField *field = type + 1; field->kind != '.'; field++) {
                        const QbobjTraits *traits = qbobj_field_traits(type, field);
                        const std::string own = path + field->name;
                        const QbobjTraits *here = qbobj_argument_field_traits(&operation, &argument, own.c_str());
                        const bool of_the_operation = here->ranged != 0;
                        if (of_the_operation) traits = here;
                        if (!traits->ranged || qbobj_field_direction(type, field) == QBOBJ_OUT) continue;
                        SCOPED_TRACE(own);
                        const Json before = record;
                        expect_range(calls, trial, *traits, [&](int64_t number, bool partners) {
                            record = before;
                            record[field->name] = number;
                            if (const char *partner = partner_of(field->name); partner && partners)
                                record[partner] = number;
                            return given;
                        });
                        record = before;
                        judged.insert(of_the_operation ? std::string(trial.operation) + ":" + own
                                                       : std::string(type->name) + "." + field->name);
                    }
                });
        }
    });

    std::set<std::string> ranged;
    for (const QbobjType *type = qbobj_types(); type->name; type++)
        for (const QbobjField *field = type->fields + 1; field->kind != '.'; field++)
            if (qbobj_field_traits(type->fields, field)->ranged &&
                qbobj_field_direction(type->fields, field) != QBOBJ_OUT)
                ranged.insert(std::string(type->name) + "." + field->name);
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++)
        for (uint32_t i = 0; i < row->count; i++)
            for (const auto &field : qbcli::fields_of_operation(*row, row->arguments[i]))
                if (field.traits->ranged) ranged.insert(qbcli::short_name(*row) + ":" + field.path);
    EXPECT_EQ(ranged.erase("ResourceId.resource_id"), 1u) << "no operation takes the type; the table is for its makers";
    EXPECT_EQ(judged, ranged);
}

// ---- Defaults

/// Whether a call says that an absent argument and its default come to the same, and another value to something else.
bool shows_default(TraitsOfCalls &calls, const Trial &trial, const QbobjArgument &argument, const char *value)
{
    const Json given = TraitsOfCalls::arguments_of(trial);
    Json absent = given;
    absent.erase(argument.name);
    Json same_as = given;
    same_as[argument.name] = value;
    Json other = given;
    if (!other.contains(argument.name) || other == same_as)
        other[argument.name] = argument.words ? argument.words[0] : "LOGMSG_OTHER";
    if (argument.words && other == same_as) other[argument.name] = argument.words[1];
    const Outcome without = calls.call(trial, absent);
    const Outcome with = calls.call(trial, same_as);
    EXPECT_TRUE(same(without, with)) << argument.name;
    EXPECT_EQ(without.outputs, with.outputs) << argument.name;
    const Outcome different = calls.call(trial, other);
    return !same(without, different) || without.outputs != different.outputs;
}

/// The same of a number in a record; false, too, where the call gives no such record.
bool shows_default(TraitsOfCalls &calls, const Trial &trial, const QbobjArgument &argument,
                   const qbcli::FieldOfOperation &field)
{
    Json changed = TraitsOfCalls::arguments_of(trial);
    if (!changed.contains(argument.name)) return false;
    Json *place = nullptr;
    visit_records(changed[argument.name], argument.type, "", [&](Json &record, const QbobjField *, const auto &path) {
        const bool holds = field.path.rfind(path, 0) == 0 && field.path.find('.', path.size()) == std::string::npos;
        if (!place && holds) place = &record[field.path.substr(path.size())];
    });
    if (!place) return false;
    const int64_t number = std::stoll(field.traits->default_value);
    const auto with = [&](const Json &value) {
        *place = value;
        return calls.call(trial, changed);
    };
    const Outcome without = with(nullptr);
    EXPECT_TRUE(same(without, with(number))) << field.path;
    return !same(without, with(number == 0 ? 1 : 0));
}

TEST(TraitsOfAllCalls, AbsentValuesAreTheirDefaults)
{
    std::set<std::string> compared;
    std::set<std::string> told;
    const auto look = [&](const std::string &name, bool shown) {
        told.insert(name);
        if (shown) compared.insert(name);
    };
    with_each_trial([&](TraitsOfCalls &calls, const Trial &trial, const QbobjOperation &operation) {
        for (uint32_t i = 0; i < operation.count; i++) {
            const QbobjArgument &argument = operation.arguments[i];
            if (argument.direction == QBOBJ_OUT) continue;
            const std::string name = std::string(trial.operation) + "(" + argument.name + ")";
            if (const char *value = qbobj_argument_traits(&operation, &argument)->default_value)
                look(name, shows_default(calls, trial, argument, value));
            for (const auto &field : qbcli::fields_of_operation(operation, argument))
                if (field.traits->default_value)
                    look(name + "." + field.path, shows_default(calls, trial, argument, field));
        }
    });
    EXPECT_EQ(compared, told) << "no call shows that the default is one of several values";
}

// ---- Output only

/// Options that are read only as a whole are given by no set-up.
constexpr Trial kReadOnlyOptions = {"setProtocolCollection", "SMB",
                                    R"({"collection":{"Protocol":[{"key":"cifs","Enabled":1,"CifsOptions":[{}]}]}})"};

/// Another value than the one that is there.
Json other_value(const QbobjField *type, const QbobjField *field)
{
    if (qbcli::is_number(field)) return 77;
    if (const char *const *words = qbobj_field_words(type, field)) return words[0];
    return "something else";
}

TEST(TraitsOfAllCalls, NobodyLooksAtWhatIsOutputOnly)
{
    std::set<std::string> tried;
    const auto look = [&](TraitsOfCalls &calls, const Trial &trial, const QbobjOperation &operation) {
        Json given = TraitsOfCalls::arguments_of(trial);
        const Outcome plain = calls.call(trial, given);
        for (uint32_t i = 0; i < operation.count; i++) {
            const QbobjArgument &argument = operation.arguments[i];
            if (!argument.type || argument.direction == QBOBJ_OUT || !given.contains(argument.name)) continue;
            visit_records(given[argument.name], argument.type, "",
                          [&](Json &record, const QbobjField *type, const auto &path) {
                              for (const QbobjField *field = type + 1; field->kind != '.'; field++) {
                                  if (qbobj_field_direction(type, field) != QBOBJ_OUT || field->kind == 'o') continue;
                                  const Json before = record;
                                  record[field->name] = other_value(type, field);
                                  EXPECT_TRUE(same(plain, calls.call(trial, given))) << path << field->name;
                                  tried.insert(std::string(type->name) + "." + field->name);
                                  record = before;
                              }
                          });
        }
    };
    with_each_trial(look);
    for (const Family &family : kFamilies) {
        if (strcmp(family.name, "services") != 0) continue;
        TraitsOfCalls calls(family);
        calls.begin(kReadOnlyOptions);
        look(calls, kReadOnlyOptions, operation_of(kReadOnlyOptions));
    }
    std::set<std::string> told;
    for (const QbobjType *type = qbobj_types(); type->name; type++)
        for (const QbobjField *field = type->fields + 1; field->kind != '.'; field++)
            if (field->kind != 'o' && qbobj_field_direction(type->fields, field) == QBOBJ_OUT &&
                std::string(type->name) != "SecurityAdsProgress")  // no operation is given one
                told.insert(std::string(type->name) + "." + field->name);
    std::set<std::string> missed;
    std::set_difference(told.begin(), told.end(), tried.begin(), tried.end(), std::inserter(missed, missed.end()));
    EXPECT_EQ(missed, std::set<std::string>()) << "no call gives them";
    EXPECT_GT(tried.size(), 60u);
}

// ---- Input only

/// Outputs of an operation by the names of its arguments: a record that is returned alone stands for itself.
Json output_of(const Outcome &outcome, const QbobjArgument &argument)
{
    const Json all = outcome.outputs.empty() ? Json() : Json::parse(outcome.outputs);
    return all.is_object() && all.contains(argument.name) ? all[argument.name] : all;
}

TEST(TraitsOfAllCalls, NobodyReturnsWhatIsInputOnly)
{
    std::set<std::string> looked_at;
    with_each_trial([&](TraitsOfCalls &calls, const Trial &trial, const QbobjOperation &operation) {
        const Outcome outcome = calls.call(trial, TraitsOfCalls::arguments_of(trial));
        for (uint32_t i = 0; i < operation.count; i++) {
            const QbobjArgument &argument = operation.arguments[i];
            if (!argument.type || argument.direction != QBOBJ_OUT) continue;
            Json returned = output_of(outcome, argument);
            visit_records(returned, argument.type, "", [&](Json &record, const QbobjField *type, const auto &path) {
                for (const QbobjField *field = type + 1; field->kind != '.'; field++) {
                    if (qbobj_field_direction(type, field) != QBOBJ_IN || !record.contains(field->name)) continue;
                    const Json &value = record[field->name];
                    EXPECT_TRUE(value.is_null() || value == 0) << path << field->name << ": " << value;
                    looked_at.insert(std::string(type->name) + "." + field->name);
                }
            });
        }
    });
    EXPECT_GE(looked_at.size(), 6u);
}

// ---- Addresses

TEST(TraitsOfAllCalls, WithoutItsAddressARecordIsAnother)
{
    std::set<std::string> changed;
    std::set<std::string> told;
    with_each_trial([&](TraitsOfCalls &calls, const Trial &trial, const QbobjOperation &operation) {
        for (uint32_t i = 0; i < operation.count; i++) {
            const QbobjArgument &argument = operation.arguments[i];
            const std::vector<std::string> addresses = qbcli::addresses(operation, argument);
            if (addresses.empty()) continue;
            told.insert(trial.operation);
            Json given = TraitsOfCalls::arguments_of(trial);
            if (!given.contains(argument.name)) continue;
            const Outcome plain = calls.call(trial, given);
            visit_records(
                given[argument.name], argument.type, "", [&](Json &record, const QbobjField *, const auto &path) {
                    for (const std::string &address : addresses)
                        if (address.rfind(path, 0) == 0 && address.find('.', path.size()) == std::string::npos)
                            record.erase(address.substr(path.size()));
                });
            const Outcome without = calls.call(trial, given);
            if (!same(plain, without) || plain.outputs != without.outputs) changed.insert(trial.operation);
        }
    });
    told.erase("getGroup");  // always fails, whatever it is given
    changed.erase("getGroup");
    EXPECT_EQ(changed, told);
}

}  // namespace
}  // namespace test
// SPDX-License-Identifier: Apache-2.0
