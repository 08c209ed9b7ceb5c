#include "selection.h"

#include <unistd.h>

#include <algorithm>
#include <span>

#include "delimited.h"
#include "failure.h"
#include "records.h"
#include "suggest.h"
#include "table.h"

namespace qbcli {
namespace {

std::span<const QbobjArgument> arguments_of(const QbobjOperation &operation)
{
    return {operation.arguments, operation.count};
}

bool is_output(const QbobjArgument &argument)
{
    return argument.direction != QBOBJ_IN;
}

/// The names of what an operation returns.
std::vector<std::string> root_names(const QbobjOperation &operation)
{
    std::vector<std::string> names;
    for (const QbobjArgument &argument : arguments_of(operation))
        if (is_output(argument)) names.emplace_back(argument.name);
    if (returns_answer(operation)) names.emplace_back(kReturned);
    return names;
}

bool is_of_root(const QbobjOperation &operation, const std::string &name)
{
    const auto names = root_names(operation);
    return std::find(names.begin(), names.end(), name) != names.end();
}

std::vector<std::string> split(std::string_view text, char separator)
{
    std::vector<std::string> parts;
    for (;;) {
        const size_t end = text.find(separator);
        parts.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos) return parts;
        text.remove_prefix(end + 1);
    }
}

/// The type whose fields stand in JSON where a record of a type is to be: a bare list is the array itself.
const QbobjField *shown_type(const QbobjField *type)
{
    while (type && is_bare_list(type)) type = type[1].subtype;
    return type;
}

bool knows(const QbobjField *type, std::string_view name)
{
    return find_field(type, name) || (has_key_word(type) && name == kKeyWord);
}

/// Drops from a path the heads of bare lists, which JSON does not show. False when a name leads nowhere.
bool follow(const QbobjField *type, std::vector<std::string> &names)
{
    std::vector<std::string> path;
    for (const std::string &name : names) {
        if (type && is_bare_list(type) && type[1].name == name) {
            type = type[1].subtype;
            continue;
        }
        type = shown_type(type);
        if (!type || !knows(type, name)) return false;
        path.push_back(name);
        const QbobjField *field = find_field(type, name);
        type = field ? field->subtype : nullptr;
    }
    names = std::move(path);
    return !names.empty();
}

/// What a path leads to: in a list the value of its only element, or all values.
Json value_at(const Json &value, const std::vector<std::string> &path, size_t at = 0)
{
    if (at == path.size()) return value;
    if (value.is_object()) {
        const auto member = value.find(path[at]);
        return member == value.end() ? Json(nullptr) : value_at(*member, path, at + 1);
    }
    if (!value.is_array() || value.empty()) return nullptr;
    if (value.size() == 1) return value_at(value.front(), path, at);
    Json all = Json::array();
    for (const Json &element : value) all.push_back(value_at(element, path, at));
    return all;
}

/// The members that are wanted of a record; none for all of them.
struct Wanted {
    std::string name;
    std::vector<Wanted> inside;
};

void want(std::vector<Wanted> &all, const std::vector<std::string> &path, size_t at = 0)
{
    if (at == path.size()) return;
    const auto same = [&](const Wanted &wanted) { return wanted.name == path[at]; };
    auto found = std::find_if(all.begin(), all.end(), same);
    const bool whole = at + 1 == path.size();
    const bool is_new = found == all.end();
    if (is_new) found = all.insert(all.end(), {path[at], {}});
    if (whole) found->inside.clear();
    else if (is_new || !found->inside.empty()) want(found->inside, path, at + 1);
}

Json cut(Json value, const std::vector<Wanted> &wanted)
{
    if (wanted.empty()) return value;
    if (value.is_array()) {
        for (Json &element : value) element = cut(std::move(element), wanted);
        return value;
    }
    if (!value.is_object()) return value;
    Json object = Json::object();
    for (const Wanted &member : wanted)
        if (const auto found = value.find(member.name); found != value.end())
            object[member.name] = cut(std::move(*found), member.inside);
    return object;
}

/// The names of a type's fields and of those inside.
void add_names(std::vector<std::string> &names, const QbobjField *type, const std::string &before)
{
    type = shown_type(type);
    for (const std::string_view name : field_names(type)) names.push_back(before + std::string(name));
    for (const QbobjField *field = type + 1; field->kind != '.'; field++)
        if (field->subtype) add_names(names, field->subtype, before + field->name + ".");
}

std::string listed(const std::vector<std::string> &names)
{
    std::string text;
    for (size_t i = 0; i < names.size(); i++) text += (i == 0 ? "" : i + 1 == names.size() ? " or " : ", ") + names[i];
    return text;
}

/// The names in "A,B.C". Empty ones and those that stand there twice are refused.
std::vector<std::string> field_list(std::string_view text)
{
    std::vector<std::string> names = split(text, ',');
    for (std::string &name : names) {
        const size_t first = name.find_first_not_of(' ');
        name = first == std::string::npos ? "" : name.substr(first, name.find_last_not_of(' ') + 1 - first);
        if (name.empty())
            throw Failure("--fields", "names with commas between them are needed: --fields UserName,Email");
    }
    return names;
}

}  // namespace

Selection::Selection(const QbobjOperation &operation, const std::vector<std::string> &fields) : operation_(operation)
{
    for (const std::string &name : fields)
        if (std::count(fields.begin(), fields.end(), name) > 1) throw Failure(name, "is named twice among the fields");
    if (root_names(operation).empty()) throw Failure("it returns nothing of which fields could be chosen");
    const std::vector<Branch> branches = branches_of(operation);
    if (fields.empty()) {
        if (branches.size() > 1) refuse(fields, branches);
        branch_ = branches.front();
        columns_ = all_columns(branch_);
    }
    for (const Branch &branch : branches) {
        std::vector<Column> columns;
        if (fields.empty() || !resolve(branch, fields, columns)) continue;
        // What two branches have in common may be had from either.
        for (size_t i = 0; i < columns_.size(); i++)
            if (address(branch, columns[i]) != address(branch_, columns_[i])) refuse(fields, branches);
        if (!columns_.empty()) continue;
        branch_ = branch;
        columns_ = std::move(columns);
    }
    if (columns_.empty()) refuse(fields, branches);
    for (const Column &column : columns_) row_level_ = std::max(row_level_, column.level);
}

/// The ways down to rows, by the lists that records head; the root alone where there is neither record nor list.
std::vector<Selection::Branch> Selection::branches_of(const QbobjOperation &operation)
{
    const Branch root = {{nullptr, ""}};
    std::vector<Branch> all;
    for (const QbobjArgument &argument : arguments_of(operation))
        if (is_output(argument) && argument.type) add_branches(all, root, argument.type, argument.name);
    if (all.empty()) all.push_back(root);
    return all;
}

void Selection::add_branches(std::vector<Branch> &all, Branch branch, const QbobjField *type, const char *step)
{
    type = shown_type(type);
    branch.push_back({type, step});
    const size_t before = all.size();
    for (const QbobjField *field = type + 1; field->kind != '.'; field++)
        if (field->flags & QBOBJ_FIELD_HEAD) add_branches(all, branch, field->subtype, field->name);
    if (all.size() == before) all.push_back(std::move(branch));
}

/// Finds a column's name in a branch: what stands in the rows goes before what stands around them. A name may begin
/// with the way down, "users.UserName".
bool Selection::find(const Branch &branch, Column &column) const
{
    Path names = split(column.name, '.');
    size_t highest = 0;
    for (size_t level = 1; level < branch.size() && names.size() > 1; level++) {
        if (names.front() != branch[level].step) continue;
        names.erase(names.begin());
        highest = level;
    }
    for (size_t level = branch.size(); level-- > std::max<size_t>(highest, 1);) {
        column.level = level;
        column.path = names;
        if (follow(branch[level].type, column.path)) return true;
    }
    column.level = 0;
    column.path = names;
    return highest == 0 && names.size() == 1 && is_of_root(operation_, names.front());
}

bool Selection::resolve(const Branch &branch, const std::vector<std::string> &fields,
                        std::vector<Column> &columns) const
{
    for (const std::string &name : fields) columns.push_back({name, 0, {}});
    return std::all_of(columns.begin(), columns.end(), [&](Column &column) { return find(branch, column); });
}

std::vector<Selection::Column> Selection::all_columns(const Branch &branch) const
{
    const size_t level = branch.size() - 1;
    std::vector<Column> columns;
    if (level == 0)
        for (const std::string &name : root_names(operation_)) columns.push_back({name, 0, {name}});
    else if (const QbobjField *type = branch[level].type) {
        if (has_key_word(type)) columns.push_back({kKeyWord, level, {kKeyWord}});
        for (const QbobjField *field = type + 1; field->kind != '.'; field++)
            columns.push_back({field->name, level, {field->name}});
    }
    return columns;
}

void Selection::refuse(const std::vector<std::string> &fields, const std::vector<Branch> &branches) const
{
    for (const std::string &name : fields) {
        Column column{name, 0, {}};
        const auto has_it = [&](const Branch &branch) { return find(branch, column); };
        if (std::any_of(branches.begin(), branches.end(), has_it)) continue;
        const std::vector<std::string> known = returned_fields(operation_);
        throw Failure("there is no field " + name + " in what it returns" +
                      did_you_mean(name, Names(known.begin(), known.end())));
    }
    const std::string example = fields.empty() ? "…" : fields.front().substr(fields.front().rfind('.') + 1);
    const size_t level = branches[0][1].step == branches[1][1].step ? 2 : 1;
    std::vector<std::string> ways;
    ways.reserve(branches.size());
    for (const Branch &branch : branches) ways.push_back(branch[level].step + "." + example);
    throw Failure("it returns several lists: name the fields of one, as in " + listed(ways));
}

std::vector<std::string> Selection::columns() const
{
    std::vector<std::string> names;
    for (const Column &column : columns_) names.push_back(column.name);
    return names;
}

/// A column's members from the root down.
Selection::Path Selection::address(const Branch &branch, const Column &column)
{
    Path path;
    for (size_t level = 1; level <= column.level; level++) path.push_back(branch[level].step);
    path.insert(path.end(), column.path.begin(), column.path.end());
    return path;
}

Json Selection::rows(const Outputs &outputs) const
{
    Json root = Json::object();
    for (const auto &[name, value] : outputs.values) root[name] = value;
    Json rows = Json::array();
    std::vector<const Json *> around(branch_.size());
    expand(rows, 0, root, around);
    return rows;
}

void Selection::expand(Json &rows, size_t level, const Json &value, std::vector<const Json *> &around) const
{
    if (value.is_array())
        for (const Json &element : value) expand(rows, level, element, around);
    if (!value.is_object()) return;
    around[level] = &value;
    if (level < row_level_) {
        const auto inside = value.find(branch_[level + 1].step);
        if (inside != value.end()) expand(rows, level + 1, *inside, around);
        return;
    }
    Json row = Json::array();
    for (const Column &column : columns_) row.push_back(value_at(*around[column.level], column.path));
    rows.push_back(std::move(row));
}

Outputs Selection::limited(Outputs &&outputs) const
{
    std::vector<Wanted> wanted;
    for (const Column &column : columns_) want(wanted, address(branch_, column));
    Outputs limited{{}, outputs.alone};
    for (const Wanted &each : wanted)
        for (auto &[name, value] : outputs.values)
            if (name == each.name) limited.values.emplace_back(name, cut(std::move(value), each.inside));
    return limited;
}

std::vector<std::string> returned_fields(const QbobjOperation &operation)
{
    std::vector<std::string> names;
    const auto branches = Selection::branches_of(operation);
    for (const auto &branch : branches)
        for (size_t level = branch.size(); level-- > 1;)
            add_names(names, branch[level].type, branches.size() > 1 ? branch[level].step + "." : "");
    for (const std::string &name : root_names(operation)) names.push_back(name);
    return names;
}

std::optional<Selection> selection_of(const QbobjOperation &operation, const OutputOptions &options)
{
    if (options.fields.empty() && !options.tsv && !options.csv) return {};
    return Selection(operation, options.fields.empty() ? std::vector<std::string>() : field_list(options.fields));
}

Json selected(const std::optional<Selection> &selection, Outputs outputs)
{
    return selection ? selection->limited(std::move(outputs)).joined() : std::move(outputs).joined();
}

void print_outputs(const std::optional<Selection> &selection, Outputs outputs, const OutputOptions &options)
{
    if (!selection) return print_outcome(std::move(outputs).joined(), options);
    const bool terminal = isatty(STDOUT_FILENO) != 0;
    if (options.tsv) return print_text(tsv_text(selection->columns(), selection->rows(outputs), terminal));
    if (options.csv) return print_text(csv_text(selection->columns(), selection->rows(outputs), terminal));
    if (prints_json(options)) return print_json(selected(selection, std::move(outputs)), options);
    Json table = Json::array();
    const std::vector<std::string> names = selection->columns();
    for (Json &values : selection->rows(outputs)) {
        Json &row = table.emplace_back(Json::object());
        for (size_t i = 0; i < names.size(); i++) row[names[i]] = std::move(values[i]);
    }
    print_text(lay_out(table, terminal_width(), true));
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
