#include "call.h"

#include "failure.h"
#include "xml.h"

namespace qbcli {
namespace {

constexpr uint32_t kMinusOne = 0xFFFFFFFF;

constexpr struct {
    uint32_t code;
    const char *meaning;
} kMeanings[] = {
    {1, "a file that the operation reads is missing or malformed"},
    {2, "out of memory, or an internal step failed"},
    {3, "table copies made for a comparison could not be removed"},
    {5, "a database statement failed"},
    {6, "nothing was found, or nothing changed"},
    {8, "an argument is missing, malformed, or refers to nothing"},
    {801, "the user name is taken"},
    {802, "the user id is taken, or the system's own"},
    {803, "the group name is taken"},
    {804, "the group id is taken"},
    {806, "the name is too long"},
    {809, "the user name is reserved"},
    {810, "the FTP port is out of range"},
    {812, "the passive port range is malformed"},
    {813, "the authentication mode is unknown"},
    {814, "the masquerade address is malformed"},
    {816, "a host that is to be allowed is malformed"},
    {817, "the SNMP community is malformed"},
    {818, "a trap destination is malformed"},
    {819, "the workgroup is malformed"},
    {820, "the realm is malformed"},
    {821, "the SSH port is out of range"},
    {822, "the group is the primary group of a user"},
    {827, "the additional HTTPS port is out of range"},
    {828, "something listens on the additional HTTPS port"},
    {829, "the host of the SSL key is malformed"},
    {830, "a bandwidth is out of range"},
    {832, "the directory does not know the user"},
    {833, "the password server is malformed"},
    {834, "a remote user has the user name"},
    {836, "there is no such user"},
    {837, "the SSH public key is stored already"},
    {838, "there is no such SSH public key, or root's twin of it is missing"},
    {842, "there are too many SSH public keys"},
    {843, "there are too many Time Machine users"},
    {844, "the group is the default group"},
    {845, "the user name is an alias of a remote user"},
};

}  // namespace

const char *meaning_of(uint32_t code)
{
    for (const auto &row : kMeanings)
        if (row.code == code) return row.meaning;
    return nullptr;
}

bool returns_answer(const QbobjOperation &operation)
{
    switch (operation.returns) {
        case QBOBJ_RETURNS_ID:
        case QBOBJ_RETURNS_COUNT:
        case QBOBJ_RETURNS_ANSWER: return true;
        default: return false;
    }
}

Call::Call(const QbobjOperation &operation, const Arguments &arguments) : operation_(operation)
{
    for (size_t i = 0; i < operation_.count; i++) bind(i, arguments.given(i));
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

/// Throws when a returned value means failure.
void Call::judge(uint32_t rc, const ErrorInfo &err, const Database &database, uint32_t timeout_ms) const
{
    const bool failed = operation_.returns == QBOBJ_RETURNS_CODE ? rc != 0 : rc == kMinusOne;
    if (rc != 0 && err.code == 0 && !database.got_past_begin()) {
        std::string why = sqlite3_errstr(static_cast<int>(rc));
        if (rc == SQLITE_BUSY)
            why += " by another process (waited " + std::to_string(timeout_ms) + " ms; see --timeout)";
        fail(rc, err, why);
    }
    if (failed && err.code != 0) fail(err.code, err, redacted(err.message ? err.message : "", secrets()));
    if (failed && rc == kMinusOne)
        fail(rc, err, operation_.returns == QBOBJ_RETURNS_ANSWER ? "there is no answer" : "not found");
    if (failed) fail(rc, err, meaning_of(rc) ? meaning_of(rc) : "the operation failed and does not say why");
    // An operation's success does not depend on the commit; the user's does.
    if (rc == 0 && operation_.changes && database.rolled_back())
        throw Failure("the change could not be stored; the database is as it was");
}

void Call::fail(uint32_t rc, const ErrorInfo &err, const std::string &message) const
{
    throw Failure(message, short_name(operation_), rc == kMinusOne ? -1 : static_cast<int64_t>(rc), err);
}

Json Call::argument_to_json(size_t index) const
{
    const QbobjArgument &argument = operation_.arguments[index];
    const Cell &cell = cells_[index];
    switch (argument.kind) {
        case QBOBJ_KIND_INT32: return cell.i;
        case QBOBJ_KIND_UINT64: return cell.n;
        case QBOBJ_KIND_STRING: return text_to_json(cell.s);
        case QBOBJ_KIND_XML: return cell.p ? Json(xml_text(cell.p)) : Json(nullptr);
        case QBOBJ_KIND_LIST: return list_to_json(argument.type, cell.p);
        default: break;
    }
    // A record comes back in the form in which it was given, unless the operation made a chain of it.
    const bool chain = cell.array || (cell.p && is_list(argument.type) && next_element(cell.p));
    return chain ? list_to_json(argument.type, cell.p) : record_to_json(argument.type, cell.p);
}

Json Call::outcome() const
{
    Json object = Json::object();
    bool alone = !returns_answer(operation_);
    for (size_t i = 0; i < operation_.count; i++) {
        const QbobjArgument &argument = operation_.arguments[i];
        if (argument.direction == QBOBJ_IN) continue;
        object[argument.name] = argument_to_json(i);
        if (is_scalar(argument) || argument.kind == QBOBJ_KIND_XML) alone = false;
    }
    if (returns_answer(operation_)) object["result"] = static_cast<int32_t>(returned_);
    if (object.empty()) return Json(Json::value_t::discarded);
    return alone && object.size() == 1 ? std::move(object.front()) : object;
}

}  // namespace qbcli
