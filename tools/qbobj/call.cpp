#include "call.h"

#include <algorithm>

#include "failure.h"
#include "xml.h"

namespace qbcli {
namespace {

constexpr uint32_t kMinusOne = 0xFFFFFFFF;

/// Whether a text "null" is part of a value.
bool says_null(const Json &value)
{
    if (value.is_string()) return value == "null";
    return value.is_structured() && std::any_of(value.begin(), value.end(), says_null);
}

}  // namespace

bool returns_answer(const QbobjOperation &operation)
{
    switch (operation.returns) {
        case QBOBJ_RETURNS_ID:
        case QBOBJ_RETURNS_COUNT:
        case QBOBJ_RETURNS_ANSWER:
        case QBOBJ_RETURNS_TRUTH: return true;
        default: return false;
    }
}

Call::Call(const QbobjOperation &operation, const Arguments &arguments) : operation_(operation)
{
    for (size_t i = 0; i < operation_.count; i++) {
        bind(i, arguments.given(i));
        says_null_ = says_null_ || (arguments.given(i) && says_null(*arguments.given(i)));
    }
}

Call::~Call()
{
    for (size_t i = 0; i < operation_.count; i++)
        if (operation_.arguments[i].kind == QBOBJ_KIND_XML) free_xml(cells_[i].p);
}

void Call::bind(size_t index, const std::optional<Json> &given)
{
    const QbobjArgument &argument = operation_.arguments[index];
    const Json *value = given && !given->is_null() ? &*given : nullptr;
    if (given && !value && !argument.optional && !is_scalar(argument))
        throw Failure(argument.name, "must not be null; {} is a record without anything");
    if (is_input(argument)) check_presence(argument, value);
    if (is_scalar(argument)) return bind_scalar(index, value);
    if (argument.kind == QBOBJ_KIND_RECORD) return bind_record(index, value);
    if (value) cells_[index].p = list_from(arena_, argument.type, *value, argument.name);
    values_[index].p = &cells_[index].p;
}

/// A text that an operation needs must not be null, and a number cannot be absent: what changes the
/// database must not be done with a 0 that nobody wrote.
void Call::check_presence(const QbobjArgument &argument, const Json *given) const
{
    if (given || argument.optional || !is_scalar(argument)) return;
    const bool text = argument.kind == QBOBJ_KIND_STRING;
    if (text || operation_.changes)
        throw Failure(std::string("the argument ") + argument.name + (text ? " (a text)" : " (a number)") +
                      " is missing");
}

void Call::bind_scalar(size_t index, const Json *given)
{
    const QbobjArgument &argument = operation_.arguments[index];
    const bool by_value = argument.direction == QBOBJ_IN;
    QbobjValue &value = values_[index];
    Cell &cell = cells_[index];
    switch (argument.kind) {
        case QBOBJ_KIND_INT32:
            if (given) cell.i = int32_from(*given, argument.name);
            if (by_value) value.i = cell.i;
            else value.p = &cell.i;
            return;
        case QBOBJ_KIND_UINT64:
            if (given) cell.n = uint64_from(*given, argument.name);
            if (by_value) value.n = cell.n;
            else value.p = &cell.n;
            return;
        default:
            if (given) cell.s = text_from(arena_, *given, argument.name);
            if (by_value) value.s = cell.s;
            else value.p = &cell.s;
    }
}

void Call::bind_record(size_t index, const Json *given)
{
    const QbobjArgument &argument = operation_.arguments[index];
    Cell &cell = cells_[index];
    const std::string where = operation_.count == 1 ? "" : argument.name;
    if (!is_input(argument)) {
        // Filled from nothing, as any caller does it; in a record that is read the absent is marked.
        cell.p = arena_.zeroed(argument.type->position);
    } else if (given && given->is_array() && argument.chain) {
        cell.array = true;
        cell.p = list_from(arena_, argument.type, *given, argument.name);
        if (!cell.p && !argument.optional) throw Failure(argument.name, "the list is empty");
    } else if (given) {
        cell.p = record_from(arena_, argument.type, *given, where);
    } else if (!argument.optional) {
        cell.p = absent_record(arena_, argument.type);
    }
    values_[index].p = cell.p;
}

std::string Call::run(Database &database, uint32_t timeout_ms)
{
    database.hide(secrets());
    ErrorInfo err{};
    invoke(database.handle(), database.connection(), &err);
    judge(returned_, err, database, timeout_ms);
    if (err.code == 0) return "";
    return std::to_string(err.code) + " " + redacted(err.message ? err.message : "", secrets());
}

uint32_t Call::invoke(qbdb_t *qbdb, sqlite3 *db, ErrorInfo *err)
{
    returned_ = operation_.call(qbdb, db, values_.data(), err);
    return returned_;
}

Status Call::status() const
{
    const bool no = (operation_.returns == QBOBJ_RETURNS_ANSWER && returned_ != 0) ||
                    (operation_.returns == QBOBJ_RETURNS_TRUTH && returned_ == 0);
    return no ? Status::kNotFound : Status::kDone;
}

/// Throws when a returned value means failure.
void Call::judge(uint32_t rc, const ErrorInfo &err, const Database &database, uint32_t timeout_ms) const
{
    bool failed = rc == kMinusOne;
    if (operation_.returns == QBOBJ_RETURNS_CODE) failed = rc != 0;
    if (operation_.returns == QBOBJ_RETURNS_TRUTH) failed = rc == 0 && database.statement_failed();
    if (rc != 0 && err.code == 0 && !database.got_past_begin())
        fail(rc, err, why_not_begun(rc, timeout_ms), Status::kFailed);
    if (failed && err.code != 0)
        fail(err.code, err, redacted(err.message ? err.message : "", secrets()), status_of(err.code));
    if (failed) fail_without_report(rc, err, database);
    // An operation's success does not depend on the commit; the user's does.
    if (rc == 0 && operation_.changes && database.rolled_back())
        throw Failure("the change could not be stored; the database is as it was", Status::kFailed);
}

/// The error record is zero: what the code means, and what the library said in its log.
void Call::fail_without_report(uint32_t rc, const ErrorInfo &err, const Database &database) const
{
    const std::string &logged = database.logged_failure();
    if (operation_.returns != QBOBJ_RETURNS_CODE) {
        const bool broken = database.statement_failed() || operation_.returns == QBOBJ_RETURNS_ANSWER;
        // What counts finds always something to count, 0 or more.
        if (!broken && operation_.returns == QBOBJ_RETURNS_COUNT)
            fail(rc, err, "an argument is malformed", Status::kRefused);
        if (!broken) fail(rc, err, "not found", Status::kNotFound);
        fail(rc, err, logged.empty() ? "there is no answer" : logged, Status::kFailed);
    }
    const char *meaning = qbobj_code_meaning(rc);
    const std::string text = meaning ? meaning : "the operation failed and does not say why";
    fail(rc, err, logged.empty() ? text : text + " (" + logged + ")", status_of(rc));
}

void Call::fail(uint32_t rc, const ErrorInfo &err, const std::string &message, Status status) const
{
    Failure failure(message, short_name(operation_), rc == kMinusOne ? -1 : static_cast<int64_t>(rc), err, status);
    failure.says_null = says_null_;
    throw Failure(failure);
}

Json Call::argument_to_json(size_t index, bool secrets) const
{
    const QbobjArgument &argument = operation_.arguments[index];
    const Cell &cell = cells_[index];
    switch (argument.kind) {
        case QBOBJ_KIND_INT32: return cell.i;
        case QBOBJ_KIND_UINT64: return cell.n;
        case QBOBJ_KIND_STRING: return text_to_json(cell.s);
        case QBOBJ_KIND_XML: return cell.p ? Json(xml_text(cell.p)) : Json(nullptr);
        case QBOBJ_KIND_LIST: return list_to_json(argument.type, cell.p, secrets);
        default: break;
    }
    // A record comes back in the form in which it was given, unless the operation made a chain of it.
    const bool chain = cell.array || (cell.p && is_list(argument.type) && next_element(cell.p));
    return chain ? list_to_json(argument.type, cell.p, secrets) : record_to_json(argument.type, cell.p, secrets);
}

Outputs Call::outputs(bool secrets) const
{
    Outputs outputs;
    outputs.alone = !returns_answer(operation_);
    for (size_t i = 0; i < operation_.count; i++) {
        const QbobjArgument &argument = operation_.arguments[i];
        if (argument.direction == QBOBJ_IN) continue;
        const bool nothing_given = argument.direction == QBOBJ_INOUT && argument.optional && !cells_[i].p;
        if (nothing_given && argument.kind == QBOBJ_KIND_RECORD && !cells_[i].array) continue;
        outputs.values.emplace_back(argument.name, argument_to_json(i, secrets));
        if (is_scalar(argument) || argument.kind == QBOBJ_KIND_XML) outputs.alone = false;
    }
    if (returns_answer(operation_)) outputs.values.emplace_back(kReturned, static_cast<int32_t>(returned_));
    outputs.alone = outputs.alone && outputs.values.size() == 1;
    return outputs;
}

Json Outputs::joined() &&
{
    if (values.empty()) return Json(Json::value_t::discarded);
    if (alone) return std::move(values.front().second);
    Json object = Json::object();
    for (auto &[name, value] : values) object[name] = std::move(value);
    return object;
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
