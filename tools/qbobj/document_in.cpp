// A document brought into a fresh database.
#include <stdlib.h>

#include <filesystem>
#include <set>

#include "document.h"
#include "failure.h"
#include "qbdb_journal.h"

namespace qbcli {
namespace {

/// What stands for a secret that the document does not hold, where nothing would be an open door: no password matches.
constexpr struct {
    const char *table;
    const char *column;
    const char *value;
} kNoSecret[] = {{"$user", "passwd", "*"}};

/// A column that tells the day on which a database was made.
constexpr const char *kDayColumn = "last_changed";

Value no_secret(const Table &table, const Column &column)
{
    for (const auto &row : kNoSecret)
        if (table.name == row.table && column.name == row.column) return std::string(row.value);
    return {};
}

/// A database as init makes it, to compare with; it goes with its folder.
class Fresh {
public:
    /// @param volume Name of its first volume; may be empty.
    explicit Fresh(const std::string &volume)
    {
        std::string folder = (std::filesystem::temp_directory_path() / "qbobj-XXXXXX").string();
        if (!mkdtemp(folder.data())) throw Failure("no folder can be made for comparison", Status::kFailed);
        folder_ = folder;
        options_.path = folder + "/fresh.db";
        try {
            create_database(options_.path, volume);
        } catch (...) {
            remove();
            throw;
        }
    }
    ~Fresh() { remove(); }
    Fresh(const Fresh &) = delete;
    Fresh &operator=(const Fresh &) = delete;

    const DatabaseOptions &options() const { return options_; }

private:
    void remove() const
    {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    std::filesystem::path folder_;
    DatabaseOptions options_;
};

bool has_same_rows(const Database &one, const Database &other, const Table &table)
{
    Statement left(one, table.select());
    Statement right(other, table.select());
    for (;;) {
        const bool more = left.next();
        if (more != right.next()) return false;
        if (!more) return true;
        for (size_t i = 0; i < table.columns.size(); i++) {
            const int column = static_cast<int>(i);
            if (table.columns[i].name != kDayColumn && left.value(column) != right.value(column)) return false;
        }
    }
}

/// The name of the only volume; empty when there is none, or more.
std::string first_volume(const Database &database)
{
    Statement volumes(database, "SELECT MAX(id) FROM _volume HAVING COUNT(*)=1");
    return volumes.next() ? volumes.text(0) : "";
}

/// Refuses a database that holds anything that would be lost.
void check_fresh(const Database &database, const std::vector<Table> &tables)
{
    const Fresh fresh(first_volume(database));
    const Database reference(fresh.options());
    const std::vector<Table> made = read_tables(reference);
    for (const Table &table : tables) {
        const Table *same = find_table(made, table.name);
        if (same && same->select() == table.select() && has_same_rows(database, reference, table)) continue;
        throw Failure(
            "the database is not fresh: " + table.name + " is not as \"qbobj init\" makes it. Import into a new one",
            Status::kRefused);
    }
}

// ---- The document, checked against the schema before anything is written

struct Place {
    std::string text;
    Place inside(const std::string &name) const { return {text + "." + name}; }
    Place at(size_t index) const { return {text + "[" + std::to_string(index) + "]"}; }
};

void check_row(const Json &row, const Table &table, bool secrets, const Place &place)
{
    if (!row.is_object()) throw Failure(place.text, "a row is an object with a member for each column");
    const auto &members = row.get_ref<const Json::object_t &>();
    for (const auto &[name, value] : members) {
        const Column *column = table.find(name);
        const std::string where = place.inside(name).text;
        if (!column) throw Failure(where, "the table has no such column");
        value_from_json(value, column->storage, where);
        if (column->number && !value.is_number_integer()) throw Failure(where, "the number of a row is a whole number");
    }
    for (const Column &column : table.columns)
        if (!row.contains(column.name) && (secrets || !column.secret))
            throw Failure(place.text, "the column " + column.name + " is missing");
}

void check_tables(const Json &document, const std::vector<Table> &tables, bool secrets, const Place &place)
{
    for (const auto &[name, rows] : document.get_ref<const Json::object_t &>()) {
        const Table *table = find_table(tables, name);
        const Place inside = place.inside(name);
        if (!table) throw Failure(inside.text, "there is no such table");
        if (!rows.is_array()) throw Failure(inside.text, "a list of rows is needed");
        size_t index = 0;
        for (const Json &row : rows) check_row(row, *table, secrets, inside.at(index++));
    }
    for (const Table &table : tables)
        if (!document.contains(table.name)) throw Failure(place.text, "the table " + table.name + " is missing");
}

std::set<std::string> counted_tables(const Database &database)
{
    std::set<std::string> names;
    Statement rows(database, "SELECT name FROM sqlite_schema WHERE type='table' AND sql LIKE '%AUTOINCREMENT%'");
    while (rows.next()) names.insert(rows.text(0));
    return names;
}

void check_counters(const Json &counters, const Database &database, const Place &place)
{
    const std::set<std::string> counted = counted_tables(database);
    for (const auto &[name, value] : counters.get_ref<const Json::object_t &>()) {
        const std::string where = place.inside(name).text;
        if (!counted.contains(name)) throw Failure(where, "there is no such counter");
        if (value.is_null()) throw Failure(where, "a whole number of 64 bits is needed");
        value_from_json(value, Storage::integer, where);
    }
}

struct Member {
    const char *name;
    Json::value_t type;
    const char *needed;
};

constexpr Member kMembers[] = {
    {"format", Json::value_t::string, "a text is needed"},
    {"schema_version", Json::value_t::number_unsigned, "a number is needed"},
    {"library_version", Json::value_t::string, "a text is needed"},
    {"secrets", Json::value_t::boolean, "true or false is needed"},
    {"tables", Json::value_t::object, "an object with a member for each table is needed"},
    {"counters", Json::value_t::object, "an object with a member for each counter is needed"},
};

void check_head(const Json &document, const Database &database, const std::string &origin)
{
    if (!document.is_object()) throw Failure(origin, "is no configuration that \"qbobj export\" wrote");
    const Json::const_iterator format = document.find("format");
    if (format == document.end() || *format != kFormat)
        throw Failure(origin, "is no configuration that \"qbobj export\" wrote");
    for (const auto &[name, value] : document.get_ref<const Json::object_t &>()) {
        const auto known = [&name = name](const Member &member) { return name == member.name; };
        if (std::none_of(std::begin(kMembers), std::end(kMembers), known))
            throw Failure(std::string(origin).append(": ").append(name), "there is no such member");
    }
    for (const Member &member : kMembers) {
        if (!document.contains(member.name)) throw Failure(origin, std::string(member.name) + " is missing");
        if (document[member.name].type() != member.type) throw Failure(origin + ": " + member.name, member.needed);
    }
    const auto version = document["schema_version"].get<uint64_t>();
    const auto ours = static_cast<uint64_t>(pragma_number(database, "user_version"));
    if (version != ours)
        throw Failure(origin + ": schema_version",
                      "is " + std::to_string(version) + "; the database has version " + std::to_string(ours));
}

// ---- The writing

/// The columns whose secrets were not in the document, and in how many rows.
using Withheld = std::vector<std::pair<std::string, uint64_t>>;

std::string insert_statement(const Table &table)
{
    std::string places;
    for (size_t i = 0; i < table.columns.size(); i++) places += places.empty() ? "?" : ",?";
    return "INSERT INTO main." + sql_name(table.name) + "(" + table.column_list() + ") VALUES(" + places + ")";
}

void insert_rows(const Database &database, const Table &table, const Json &rows, const Place &place, Withheld &withheld)
{
    Statement insert(database, insert_statement(table));
    std::vector<uint64_t> missing(table.columns.size());
    size_t index = 0;
    for (const Json &row : rows) {
        const Place here = place.at(index++);
        std::vector<Value> values(table.columns.size());
        for (size_t i = 0; i < values.size(); i++) {
            const Column &column = table.columns[i];
            const auto given = row.find(column.name);
            missing[i] += given == row.end();
            values[i] = given == row.end() ? no_secret(table, column)
                                           : value_from_json(*given, column.storage, here.inside(column.name).text);
            insert.bind(static_cast<int>(i + 1), values[i]);
        }
        if (const int rc = insert.run())
            throw Failure(here.text, sqlite3_errmsg(database.connection()),
                          rc == SQLITE_CONSTRAINT ? Status::kRefused : Status::kFailed);
    }
    for (size_t i = 0; i < missing.size(); i++)
        if (missing[i]) withheld.emplace_back(table.name + "." + table.columns[i].name, missing[i]);
}

void run(const Database &database, const std::string &sql)
{
    Statement statement(database, sql);
    statement.next();
}

void set_counters(const Database &database, const Json &counters, const Place &place)
{
    run(database, "DELETE FROM sqlite_sequence");
    Statement insert(database, "INSERT INTO sqlite_sequence(name,seq) VALUES(?,?)");
    for (const auto &[name, json] : counters.get_ref<const Json::object_t &>()) {
        const Value table = name;
        const Value number = value_from_json(json, Storage::integer, place.inside(name).text);
        insert.bind(1, table);
        insert.bind(2, number);
        if (insert.run())
            throw Failure(place.inside(name).text, sqlite3_errmsg(database.connection()), Status::kFailed);
    }
}

/// A schema may come to have foreign keys; SQLite does not enforce them by itself.
void check_references(const Database &database, const Place &place)
{
    Statement broken(database, "PRAGMA foreign_key_check");
    if (broken.next())
        throw Failure(place.inside(broken.text(0)).text,
                      "a row refers to one of " + broken.text(2) + " that is not there", Status::kRefused);
}

std::string in_words(const Withheld &withheld)
{
    std::string text;
    for (const auto &[column, rows] : withheld)
        text += (text.empty() ? "" : ", ") + column + " (" + std::to_string(rows) + (rows == 1 ? " row)" : " rows)");
    return text;
}

}  // namespace

Imported import_document(const Database &database, const Json &document, const std::string &origin, uint32_t timeout_ms)
{
    const std::vector<Table> tables = read_tables(database);
    const Place place{origin + ": tables"};
    const Place counters{origin + ": counters"};
    check_head(document, database, origin);
    check_tables(document["tables"], tables, document["secrets"].get<bool>(), place);
    check_counters(document["counters"], database, counters);

    Imported imported;
    Withheld withheld;
    Transaction transaction(database, timeout_ms);
    check_fresh(database, tables);
    for (const Table &table : tables) run(database, "DELETE FROM main." + sql_name(table.name));
    for (const Table &table : tables) {
        const Json &rows = document["tables"][table.name];
        insert_rows(database, table, rows, place.inside(table.name), withheld);
        imported.tables++;
        imported.rows += rows.size();
    }
    set_counters(database, document["counters"], counters);
    check_references(database, place);
    const Json arguments = {{"rows", imported.rows}, {"secrets", document["secrets"]}};
    qbdb_journal_call(database.handle(), database.connection(), "import", arguments.dump().c_str());
    transaction.commit();
    imported.withheld = in_words(withheld);
    return imported;
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
