// qbobj diff: what two databases differ in.
//
// Rows are compared first, and equal databases are known by them. What differs is then told in records, where an
// operation shows it; what is left of the rows is told as rows, so that nothing stays untold.
#include <algorithm>
#include <memory>
#include <new>
#include <unordered_map>

#include "changes.h"
#include "command_line.h"
#include "differences.h"
#include "failure.h"
#include "utf8.h"

namespace qbcli {
namespace {

const char *word_for(Change change)
{
    if (change == Change::added) return "added";
    return change == Change::removed ? "removed" : "changed";
}

std::string text_of(const Value &value)
{
    if (const auto *text = std::get_if<std::string>(&value)) return *text;
    const Json json = value_to_json(value, Storage::integer);
    return json.is_null() ? "" : plain_text(json);
}

/// A record that differs, and what in it does.
struct Told {
    const RecordDifference *record;
    std::vector<FieldDifference> fields;
    std::set<std::string> values;  ///< All that the record holds, before and after.

    explicit Told(const RecordDifference &difference) : record(&difference), fields(field_differences(difference))
    {
        for (const Leaves *leaves : {&difference.before, &difference.after})
            for (const Leaf &leaf : *leaves) values.insert(plain_text(leaf.value));
    }
};

/// Finds what records tell of a row.
class Teller {
public:
    explicit Teller(const std::vector<RecordDifference> &differences)
    {
        told_.reserve(differences.size());
        for (const RecordDifference &difference : differences) {
            told_.emplace_back(difference);
            for (const std::string &value : told_.back().values) by_value_[value].push_back(told_.size() - 1);
        }
        for (size_t i = 0; i < told_.size(); i++) all_.push_back(i);
    }

    const std::vector<Told> &told() const { return told_; }

    /// The columns of a row that no record tells of.
    std::vector<size_t> untold(const RowDifference &row) const
    {
        const std::vector<std::string> keys = keys_of(row);
        std::vector<size_t> fewest = differing_columns(row);
        for (const size_t i : candidates(keys)) {
            const Told &told = told_[i];
            const auto mentions = [&told](const std::string &key) { return told.values.contains(key); };
            const bool reads = told.record->tables->contains(row.table->name);
            if (!reads || !std::all_of(keys.begin(), keys.end(), mentions)) continue;
            std::vector<size_t> left = untold_by(told, row);
            if (left.size() < fewest.size()) fewest = std::move(left);
        }
        return fewest;
    }

private:
    static const std::vector<Value> &either(const RowDifference &row)
    {
        return row.before.empty() ? row.after : row.before;
    }

    static std::vector<std::string> keys_of(const RowDifference &row)
    {
        std::vector<std::string> keys;
        for (size_t i = 0; i < row.table->columns.size(); i++)
            if (row.table->columns[i].key) keys.push_back(text_of(either(row)[i]));
        return keys;
    }

    static const Value &value_at(const std::vector<Value> &values, size_t i)
    {
        static const Value kNothing;
        return values.empty() ? kNothing : values[i];
    }

    static std::vector<size_t> differing_columns(const RowDifference &row)
    {
        std::vector<size_t> columns;
        for (size_t i = 0; i < row.table->columns.size(); i++)
            if (value_at(row.before, i) != value_at(row.after, i)) columns.push_back(i);
        return columns;
    }

    const std::vector<size_t> &candidates(const std::vector<std::string> &keys) const
    {
        static const std::vector<size_t> kNone;
        if (keys.empty()) return all_;
        const auto found = by_value_.find(keys.front());
        return found == by_value_.end() ? kNone : found->second;
    }

    /// Each field tells of one column only. The key is told by any field that tells of the row.
    static std::vector<size_t> untold_by(const Told &told, const RowDifference &row)
    {
        std::vector<size_t> left;
        std::vector<bool> used(told.fields.size());
        bool tells = false;
        for (const size_t column : differing_columns(row)) {
            const std::string before = text_of(value_at(row.before, column));
            const std::string after = text_of(value_at(row.after, column));
            size_t i = 0;
            while (i < used.size() && (used[i] || !says(told.fields[i], before, after))) i++;
            if (i < used.size()) used[i] = tells = true;
            else if (!row.table->columns[column].key) left.push_back(column);
        }
        return tells ? left : differing_columns(row);
    }

    static bool says(const FieldDifference &field, const std::string &before, const std::string &after)
    {
        const auto is = [](const Leaf *leaf, const std::string &text) {
            return leaf ? plain_text(leaf->value) == text : text.empty();
        };
        return is(field.before, before) && is(field.after, after);
    }

    std::vector<Told> told_;
    std::vector<size_t> all_;
    std::unordered_map<std::string, std::vector<size_t>> by_value_;
};

// ---- What is printed

bool is_nothing(const Json &value)
{
    return value.is_null() || value == "";
}

Json masked(const Json &value, bool secret)
{
    return secret && !is_nothing(value) ? Json(masked_password) : value;
}

Json leaf_to_json(const Leaf *leaf)
{
    return leaf ? masked(leaf->value, leaf->secret) : Json(nullptr);
}

Json record_to_json(const Told &told)
{
    Json fields = Json::array();
    for (const FieldDifference &field : told.fields)
        fields.push_back({{"field", (field.before ? field.before : field.after)->name},
                          {"before", leaf_to_json(field.before)},
                          {"after", leaf_to_json(field.after)}});
    return {{"record", told.record->type},
            {"name", told.record->name},
            {"change", word_for(told.record->change)},
            {"fields", std::move(fields)}};
}

Json value_shown(const std::vector<Value> &values, size_t i, const Column &column)
{
    if (values.empty()) return nullptr;
    return masked(value_to_json(values[i], column.storage), column.secret);
}

/// As changes of a call are told: an entry for each column.
void list_row(Json &list, const RowDifference &row, const std::vector<size_t> &columns)
{
    Json key = Json::object();
    const std::vector<Value> &either = row.before.empty() ? row.after : row.before;
    for (size_t i = 0; i < either.size(); i++)
        if (row.table->columns[i].key) key[row.table->columns[i].name] = value_shown(either, i, row.table->columns[i]);
    for (const size_t i : columns) {
        const Column &column = row.table->columns[i];
        list.push_back({{"table", row.table->name},
                        {"change", word_for(row.change)},
                        {"key", key},
                        {"column", column.name},
                        {"before", value_shown(row.before, i, column)},
                        {"after", value_shown(row.after, i, column)}});
    }
}

std::string shown(const Leaf *leaf)
{
    return leaf ? printable(plain_text(leaf->value)) : "";
}

void add_field(std::string &text, const FieldDifference &field, Change change)
{
    const Leaf &leaf = field.before ? *field.before : *field.after;
    // Of a whole record people see what is set.
    if (change != Change::changed && (is_nothing(leaf.value) || leaf.value == 0)) return;
    text += "  " + printable(leaf.name);
    if (leaf.secret) text += change == Change::changed ? " changed" : std::string("  ") + masked_password;
    else if (change != Change::changed) text += "  " + shown(&leaf);
    else text += "  " + shown(field.before) + " -> " + shown(field.after);
    text += "\n";
}

void print_for_people(const std::vector<Told> &records, const Json &rows)
{
    std::string text;
    for (const Told &told : records) {
        const std::string &name = told.record->name;
        text += told.record->type + (name.empty() ? "" : " " + printable(name)) + " " + word_for(told.record->change) +
                "\n";
        for (const FieldDifference &field : told.fields) add_field(text, field, told.record->change);
    }
    print_text(text);
    if (!rows.empty()) print_change_table(rows, records.empty() ? "Rows" : "Rows that no record shows");
}

// ---- The comparison

void check_tables(const std::vector<Table> &tables, const std::vector<Table> &others)
{
    for (const Table &table : tables) {
        const Table *same = find_table(others, table.name);
        if (!same || same->select() != table.select())
            throw Failure("diff", "the databases differ in their tables: " + table.name);
    }
}

std::vector<Table> same_tables(const Database &before, const Database &after)
{
    std::vector<Table> tables = read_tables(before);
    const std::vector<Table> later = read_tables(after);
    check_tables(tables, later);
    check_tables(later, tables);
    return tables;
}

std::vector<RowDifference> compare_rows(const Database &before, const Database &after, const std::vector<Table> &tables)
{
    const Snapshot of_before(before);
    const Snapshot of_after(after);
    return row_differences(before, after, tables);
}

/// Operations read each in a transaction of its own; what is committed in between must not pass for a difference.
class Constancy {
public:
    Constancy(const Database &one, const Database &other) : databases_{&one, &other}, versions_(versions()) {}
    void check() const
    {
        if (versions() != versions_) throw Failure("diff", "a database was changed while it was compared; try again");
    }

private:
    std::vector<int64_t> versions() const
    {
        std::vector<int64_t> versions;
        for (const Database *database : databases_) versions.push_back(pragma_number(*database, "data_version"));
        return versions;
    }
    std::vector<const Database *> databases_;
    std::vector<int64_t> versions_;
};

Options options_for(const CommandLine &line, const std::string &path)
{
    Options options = line.options;
    options.database.path = path;
    options.database.read_only = true;
    return options;
}

void print_differences(const CommandLine &line, const std::vector<RowDifference> &rows,
                       const std::vector<RecordDifference> &records)
{
    const Teller teller(records);
    Json left = Json::array();
    for (const RowDifference &row : rows) list_row(left, row, teller.untold(row));
    const OutputOptions &output = line.options.output;
    if (!output.json && !output.compact) return print_for_people(teller.told(), left);
    Json list = Json::array();
    for (const Told &told : teller.told()) list.push_back(record_to_json(told));
    print_json({{"records", std::move(list)}, {"rows", std::move(left)}}, output);
}

void compare(CommandLine &line, const std::string &one, const std::string &other)
{
    Database before = open_chosen_database(options_for(line, one));
    Database after = open_chosen_database(options_for(line, other));
    const Constancy constancy(before, after);
    const std::vector<Table> tables = same_tables(before, after);
    const std::vector<RowDifference> rows = compare_rows(before, after, tables);
    RecordComparison records;
    if (!rows.empty()) {
        std::set<std::string> differing;
        for (const RowDifference &row : rows) differing.insert(row.table->name);
        records.compare(before, after, differing, line.options.database.timeout_ms);
    }
    constancy.check();
    if (!rows.empty() || line.options.output.json || line.options.output.compact)
        print_differences(line, rows, records.differences());
    // As diff does: 0 equal, 1 different.
    line.status = rows.empty() ? Status::kDone : Status::kRefused;
}

void diff(CommandLine &line, const std::string &one, const std::string &other)
{
    // As diff does: whatever goes wrong is 2.
    try {
        compare(line, one, other);
    } catch (Failure &failure) {
        failure.status = Status::kUsage;
        throw;
    } catch (const std::bad_alloc &) {
        throw Failure("diff", "out of memory");
    } catch (const std::exception &failure) {
        throw Failure("diff", failure.what());
    }
}

}  // namespace

void add_diff(CommandLine &line)
{
    struct Given {
        std::string one;
        std::string other;
    };
    const auto given = std::make_shared<Given>();
    CLI::App *command = add_command(line, "diff", "Say what two databases differ in",
                                    [&line, given] { diff(line, given->one, given->other); });
    command->add_option("OLD", given->one, "A database")->required();
    command->add_option("NEW", given->other, "The one that it is compared with")->required();
    command->footer(
        "Users, groups, shares and whatever else operations show is told by fields, old and new; what differs besides\n"
        "that, by rows. Secrets are not shown. The exit status is 0 for equal, 1 for different, 2 for trouble.");
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
