// Records of two databases compared, over the library's tables of operations and types.
#include <algorithm>
#include <optional>

#include "arguments.h"
#include "call.h"
#include "differences.h"
#include "failure.h"
#include "input.h"
#include "records.h"

namespace qbcli {
namespace {

/// The record or list that an operation fills, when that is all it gives besides numbers and texts and it need be given
/// nothing: then it shows all there is.
const QbobjArgument *shown_by(const QbobjOperation &operation)
{
    if (operation.changes || operation.returns != QBOBJ_RETURNS_CODE) return nullptr;
    const QbobjArgument *shown = nullptr;
    for (uint32_t i = 0; i < operation.count; i++) {
        const QbobjArgument &argument = operation.arguments[i];
        const bool given = argument.direction != QBOBJ_OUT && !argument.optional;
        if (is_scalar(argument)) {
            if (given && argument.kind == QBOBJ_KIND_STRING) return nullptr;
            continue;
        }
        if (argument.kind == QBOBJ_KIND_XML) return nullptr;
        if (argument.direction == QBOBJ_IN && argument.optional) continue;
        const bool fills =
            argument.direction == QBOBJ_OUT ||
            (argument.direction == QBOBJ_INOUT && argument.kind == QBOBJ_KIND_RECORD && is_bare_list(argument.type));
        if (!fills || shown) return nullptr;
        shown = &argument;
    }
    return shown;
}

/// Notes which tables are read while it lasts.
class Reading {
public:
    Reading(sqlite3 *db, std::set<std::string> &tables) : db_(db)
    {
        constexpr auto note = [](void *context, int action, const char *table, const char *, const char *,
                                 const char *) {
            if (action == SQLITE_READ) static_cast<std::set<std::string> *>(context)->insert(table);
            return SQLITE_OK;
        };
        sqlite3_set_authorizer(db_, note, &tables);
    }
    ~Reading() { sqlite3_set_authorizer(db_, nullptr, nullptr); }
    Reading(const Reading &) = delete;
    Reading &operator=(const Reading &) = delete;

private:
    sqlite3 *db_;
};

/// What an operation shows of a database; none when it refuses. Rows tell then what differs.
std::optional<Json> read(const QbobjOperation &operation, const QbobjArgument &shown, Database &database,
                         std::set<std::string> &tables, uint32_t timeout_ms)
{
    StandardInput nothing;
    const Arguments arguments(operation, nothing);
    Call call(operation, arguments);
    const Reading reading(database.connection(), tables);
    database.begin_call();
    try {
        call.run(database, timeout_ms);
    } catch (const Failure &failure) {
        if (failure.status == Status::kMemory) throw;
        return std::nullopt;
    }
    Json outcome = call.outcome(true);
    const bool alone = std::none_of(operation.arguments, operation.arguments + operation.count,
                                    [](const auto &each) { return is_scalar(each) && each.direction != QBOBJ_IN; });
    return alone ? outcome : outcome[shown.name];
}

/// The field that heads the elements of a collection; null for any other record.
const QbobjField *head_of(const QbobjField *type)
{
    return type[1].flags & QBOBJ_FIELD_HEAD ? type + 1 : nullptr;
}

/// The fields by which records of a type are told apart, the surest first.
std::vector<std::string> identifying_fields(const QbobjField *type)
{
    std::vector<std::string> names;
    if (has_key_word(type)) names.emplace_back(kKeyWord);
    for (const QbobjField *field = type + 1; field->kind != '.'; field++)
        if (field->kind != 'o' && !qbobj_is_secret(type, field)) names.emplace_back(field->name);
    constexpr size_t kMost = 3;  // what stands behind is a property
    if (names.size() > kMost) names.resize(kMost);
    return names;
}

/// Whether a field is set and another one in each record.
bool tells_apart(const Json &records, const std::string &field)
{
    std::set<std::string> seen;
    for (const Json &record : records) {
        if (!record.is_object()) return false;
        const auto value = record.find(field);
        if (value == record.end() || value->is_null() || *value == "" || !seen.insert(value->dump()).second)
            return false;
    }
    return true;
}

/// The records of a list by what tells them apart in both lists, or else by their place.
struct Keyed {
    std::string field;  // empty: the place
    std::string key(const Json &record, size_t index) const
    {
        return field.empty() ? std::to_string(index) : plain_text(record[field]);
    }
};

Keyed keyed(const QbobjField *type, std::initializer_list<const Json *> lists)
{
    for (const std::string &field : identifying_fields(type))
        if (std::all_of(lists.begin(), lists.end(), [&field](const Json *list) { return tells_apart(*list, field); }))
            return {field};
    return {};
}

/// The fields of a record, those inside with the way to them.
class Flattened {
public:
    static Leaves of(const QbobjField *type, const Json &record)
    {
        Flattened flattened;
        flattened.add_record(type, record, "");
        return std::move(flattened.leaves_);
    }

private:
    void add_list(const QbobjField *type, const Json &list, const std::string &path)
    {
        const Keyed by = keyed(type, {&list});
        size_t index = 0;
        for (const Json &element : list) add_record(type, element, path + "[" + by.key(element, index++) + "]");
    }

    void add_record(const QbobjField *type, const Json &record, const std::string &path)
    {
        if (record.is_array()) return add_list(is_list(type) ? type : type[1].subtype, record, path);
        if (!record.is_object()) return;
        const std::string inside = path.empty() ? "" : path + ".";
        for (const auto &[name, value] : record.get_ref<const Json::object_t &>()) {
            if (value.is_null()) continue;
            const QbobjField *field = find_field(type, name);
            if (field && field->subtype) add_record(field->subtype, value, inside + name);
            else leaves_.push_back({inside + name, value, field && qbobj_is_secret(type, field)});
        }
    }

    Leaves leaves_;
};

bool equal(const Leaves &one, const Leaves &other)
{
    return std::equal(one.begin(), one.end(), other.begin(), other.end(), [](const Leaf &left, const Leaf &right) {
        return left.name == right.name && left.value == right.value;
    });
}

/// What people call a record, and the id behind it: the name that is the type's own ("ShareName"), or else the first.
std::string name_of(const QbobjField *type, const Leaves &leaves, const std::string &key)
{
    const Leaf *name = nullptr;
    const auto is_own = [type](const Leaf &leaf) {
        return std::string_view(type->name).ends_with(leaf.name.substr(0, leaf.name.size() - 4));
    };
    for (const Leaf &leaf : leaves) {
        const bool inside = leaf.name.find_first_of(".[") != std::string::npos;
        if (inside || leaf.secret || !leaf.name.ends_with("Name") || !leaf.value.is_string() || leaf.value == "")
            continue;
        if (!name || (is_own(leaf) && !is_own(*name))) name = &leaf;
    }
    const std::string text = name ? plain_text(name->value) : key;
    return text == key ? key : text + " (" + key + ")";
}

std::map<std::string, Leaves> by_key(const QbobjField *type, const Json &list, const Keyed &by)
{
    std::map<std::string, Leaves> records;
    size_t index = 0;
    for (const Json &record : list) {
        const std::string key = by.key(record, index++);
        records.emplace(key, Flattened::of(type, record));
    }
    return records;
}

bool is_nothing(const Leaf *leaf)
{
    return !leaf || leaf->value == "" || leaf->value == 0;
}

/// Whether what a difference tells was told of a record of the same name already: several operations show the same.
bool tells_nothing_new(const RecordDifference &known, const RecordDifference &difference)
{
    if (known.name != difference.name || known.change != difference.change) return false;
    const std::vector<FieldDifference> told = field_differences(known);
    const auto same = [](const Leaf *one, const Leaf *other) {
        return one && other ? one->name == other->name && one->value == other->value : one == other;
    };
    const std::vector<FieldDifference> fields = field_differences(difference);
    return std::all_of(fields.begin(), fields.end(), [&](const FieldDifference &field) {
        if (is_nothing(field.before) && is_nothing(field.after)) return true;
        return std::any_of(told.begin(), told.end(), [&](const FieldDifference &other) {
            return same(field.before, other.before) && same(field.after, other.after);
        });
    });
}

}  // namespace

std::string plain_text(const Json &value)
{
    return value.is_string() ? value.get<std::string>() : value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::vector<FieldDifference> field_differences(const RecordDifference &difference)
{
    std::map<std::string, const Leaf *> before;
    for (const Leaf &leaf : difference.before) before[leaf.name] = &leaf;
    std::vector<FieldDifference> fields;
    for (const Leaf &leaf : difference.after) {
        const auto old = before.find(leaf.name);
        if (old == before.end()) {
            fields.push_back({nullptr, &leaf});
            continue;
        }
        if (old->second->value != leaf.value) fields.push_back({old->second, &leaf});
        before.erase(old);
    }
    for (const Leaf &leaf : difference.before)
        if (before.contains(leaf.name)) fields.push_back({&leaf, nullptr});
    return fields;
}

void RecordComparison::add(RecordDifference difference)
{
    const auto [first, last] = by_name_.equal_range(difference.name);
    for (auto known = first; known != last; ++known)
        if (tells_nothing_new(differences_[known->second], difference)) return;
    by_name_.emplace(difference.name, differences_.size());
    differences_.push_back(std::move(difference));
}

void RecordComparison::compare_records(const QbobjField *type, const Json &before, const Json &after,
                                       const std::set<std::string> &tables)
{
    const Keyed by = keyed(type, {&before, &after});
    std::map<std::string, Leaves> old = by_key(type, before, by);
    std::map<std::string, Leaves> later = by_key(type, after, by);
    for (auto &[key, leaves] : old) {
        const auto other = later.find(key);
        if (other == later.end()) add({type->name, name_of(type, leaves, key), Change::removed, leaves, {}, &tables});
        else if (!equal(leaves, other->second))
            add({type->name, name_of(type, leaves, key), Change::changed, leaves, other->second, &tables});
    }
    for (auto &[key, leaves] : later)
        if (!old.contains(key)) add({type->name, name_of(type, leaves, key), Change::added, {}, leaves, &tables});
}

void RecordComparison::compare_operation(const QbobjOperation &operation, Database &before, Database &after,
                                         const std::set<std::string> &differing, uint32_t timeout_ms)
{
    const QbobjArgument *shown = shown_by(operation);
    if (!shown) return;
    std::set<std::string> &tables = read_[operation.name];
    const std::optional<Json> old = read(operation, *shown, before, tables, timeout_ms);
    const std::optional<Json> later = read(operation, *shown, after, tables, timeout_ms);
    const auto differs = [&differing](const std::string &table) { return differing.contains(table); };
    if (!old || !later || std::none_of(tables.begin(), tables.end(), differs)) return;
    const QbobjField *type = shown->type;
    if (shown->kind == QBOBJ_KIND_LIST) return compare_records(type, *old, *later, tables);
    const QbobjField *head = head_of(type);
    if (head && is_bare_list(type)) return compare_records(head->subtype, *old, *later, tables);
    if (head && is_list(head->subtype))
        return compare_records(head->subtype, (*old)[head->name], (*later)[head->name], tables);
    RecordDifference difference{type->name, "", Change::changed, Flattened::of(type, *old), Flattened::of(type, *later),
                                &tables};
    if (!equal(difference.before, difference.after)) add(std::move(difference));
}

void RecordComparison::compare(Database &before, Database &after, const std::set<std::string> &differing,
                               uint32_t timeout_ms)
{
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++)
        compare_operation(*row, before, after, differing, timeout_ms);
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
