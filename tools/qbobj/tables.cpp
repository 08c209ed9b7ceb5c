#include "tables.h"

#include <cmath>
#include <limits>
#include <new>
#include <utility>

#include "failure.h"
#include "qbdb_journal.h"
#include "utf8.h"

namespace qbcli {
namespace {

[[noreturn]] void fail(sqlite3 *db)
{
    throw Failure(sqlite3_errmsg(db), sqlite3_errcode(db) == SQLITE_NOMEM ? Status::kMemory : Status::kFailed);
}

std::string in_capitals(std::string text)
{
    for (char &c : text)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return text;
}

/// By the words of the declared type, as SQLite itself goes about it.
Storage storage_of(const std::string &type)
{
    const auto has = [&type](const char *word) { return type.find(word) != std::string::npos; };
    if (has("INT")) return Storage::integer;
    if (has("CHAR") || has("CLOB") || has("TEXT")) return Storage::text;
    return has("REAL") || has("FLOA") || has("DOUB") ? Storage::real : Storage::other;
}

Table read_table(const Database &database, const std::string &name, bool has_row_numbers)
{
    Table table{name, {}, false};
    Statement rows(database, "SELECT name,type,pk FROM pragma_table_info(?,'main') ORDER BY cid");
    const Value wanted = name;
    rows.bind(1, wanted);
    int keys = 0;
    while (rows.next()) {
        Column column;
        column.name = rows.text(0);
        const std::string type = in_capitals(rows.text(1));
        column.storage = storage_of(type);
        column.key = rows.number(2) > 0;
        column.number = has_row_numbers && column.key && type == "INTEGER";
        column.secret = qbdb_is_secret_column(name.c_str(), column.name.c_str());
        keys += column.key;
        table.columns.push_back(column);
    }
    table.keyed = keys > 0;
    bool numbered = !has_row_numbers;
    for (Column &column : table.columns) {
        column.number = column.number && keys == 1;
        numbered = numbered || column.number;
    }
    if (numbered) return table;
    Column number;
    number.name = kRowNumber;
    number.storage = Storage::integer;
    number.number = true;
    table.columns.insert(table.columns.begin(), number);
    return table;
}

Json tagged(const char *kind, Json value)
{
    Json object = Json::object();
    object[kind] = std::move(value);
    return object;
}

Json real_to_json(double number)
{
    if (std::isfinite(number)) return number;
    return number < 0 ? "-Infinity" : "Infinity";
}

int64_t integer_from(const Json &json, const std::string &where)
{
    if (json.is_number_unsigned() && std::in_range<int64_t>(json.get<uint64_t>())) return json.get<int64_t>();
    if (json.is_number_integer() && !json.is_number_unsigned()) return json.get<int64_t>();
    throw Failure(where, "a whole number of 64 bits is needed");
}

double real_from(const Json &json, const std::string &where)
{
    if (json.is_number()) return json.get<double>();
    if (json == "Infinity") return std::numeric_limits<double>::infinity();
    if (json == "-Infinity") return -std::numeric_limits<double>::infinity();
    throw Failure(where, "a number, \"Infinity\" or \"-Infinity\" is needed");
}

const std::string &text_of(const Json &json, const std::string &where)
{
    if (!json.is_string()) throw Failure(where, "a text is needed");
    return json.get_ref<const std::string &>();
}

std::string bytes_from(const Json &json, const std::string &where)
{
    std::string bytes;
    if (!from_hexadecimal(text_of(json, where), bytes)) throw Failure(where, "hexadecimal digits are needed");
    return bytes;
}

Value tagged_from(const Json &json, const std::string &where)
{
    if (json.size() == 1) {
        const auto &[kind, value] = json.get_ref<const Json::object_t &>().front();
        const std::string inside = where + "." + kind;
        if (kind == "integer") return integer_from(value, inside);
        if (kind == "real") return real_from(value, inside);
        if (kind == "text") return text_of(value, inside);
        if (kind == "bytes") return bytes_from(value, inside);
        if (kind == "blob") return Blob{bytes_from(value, inside)};
    }
    throw Failure(where, "an object has one member: integer, real, text, bytes or blob");
}

constexpr const char *kSource = "tables.cpp";

}  // namespace

const Column *Table::find(std::string_view column) const
{
    for (const Column &each : columns)
        if (each.name == column) return &each;
    return nullptr;
}

std::string Table::column_list() const
{
    std::string list;
    for (const Column &column : columns) list += (list.empty() ? "" : ",") + sql_name(column.name);
    return list;
}

std::string Table::select() const
{
    std::string order;
    for (const Column &column : columns)
        if (column.number) order = sql_name(column.name);
    for (const Column &column : columns)
        if (column.key && order.empty()) order = sql_name(column.name);
    return "SELECT " + column_list() + " FROM main." + sql_name(name) + " ORDER BY " + order;
}

std::string sql_name(std::string_view name)
{
    std::string text = "\"";
    for (const char c : name) text += c == '"' ? "\"\"" : std::string(1, c);
    return text + "\"";
}

std::vector<Table> read_tables(const Database &database)
{
    Statement rows(database,
                   "SELECT name,wr FROM pragma_table_list WHERE schema='main' AND type='table' AND name NOT LIKE "
                   "'sqlite\\_%' ESCAPE '\\' AND name NOT IN ('_journal','_journal_state') ORDER BY name");
    std::vector<Table> tables;
    while (rows.next()) tables.push_back(read_table(database, rows.text(0), !rows.number(1)));
    return tables;
}

const Table *find_table(const std::vector<Table> &tables, std::string_view name)
{
    for (const Table &table : tables)
        if (table.name == name) return &table;
    return nullptr;
}

Json value_to_json(const Value &value, Storage storage)
{
    if (const auto *number = std::get_if<int64_t>(&value))
        return storage == Storage::integer ? Json(*number) : tagged("integer", *number);
    if (const auto *number = std::get_if<double>(&value)) {
        const bool plain = storage == Storage::real && std::isfinite(*number);
        return plain ? Json(*number) : tagged("real", real_to_json(*number));
    }
    if (const auto *text = std::get_if<std::string>(&value)) {
        if (!is_utf8(*text)) return tagged("bytes", hexadecimal(text->data(), text->size()));
        return storage == Storage::text ? Json(*text) : tagged("text", *text);
    }
    if (const auto *blob = std::get_if<Blob>(&value))
        return tagged("blob", hexadecimal(blob->bytes.data(), blob->bytes.size()));
    return nullptr;
}

Value value_from_json(const Json &json, Storage storage, const std::string &where)
{
    if (json.is_null()) return {};
    if (json.is_object()) return tagged_from(json, where);
    switch (storage) {
        case Storage::integer: return integer_from(json, where);
        case Storage::real: return real_from(json, where);
        case Storage::text: return text_of(json, where);
        default: throw Failure(where, "an object that says of which kind the value is is needed");
    }
}

Statement::Statement(const Database &database, const std::string &sql) : db_(database.connection())
{
    if (sqlite3_prepare_v2(db_, sql.c_str(), -1, &stmt_, nullptr) != SQLITE_OK) fail(db_);
}

void Statement::bind(int place, const Value &value)
{
    int rc = SQLITE_OK;
    if (const auto *number = std::get_if<int64_t>(&value)) rc = sqlite3_bind_int64(stmt_, place, *number);
    else if (const auto *real = std::get_if<double>(&value)) rc = sqlite3_bind_double(stmt_, place, *real);
    else if (const auto *text = std::get_if<std::string>(&value))
        rc = sqlite3_bind_text64(stmt_, place, text->data(), text->size(), SQLITE_STATIC, SQLITE_UTF8);
    else if (const auto *blob = std::get_if<Blob>(&value))
        rc = sqlite3_bind_blob64(stmt_, place, blob->bytes.data(), blob->bytes.size(), SQLITE_STATIC);
    else rc = sqlite3_bind_null(stmt_, place);
    if (rc != SQLITE_OK) fail(db_);
}

bool Statement::next()
{
    const int rc = sqlite3_step(stmt_);
    if (rc != SQLITE_ROW && rc != SQLITE_DONE) fail(db_);
    return rc == SQLITE_ROW;
}

int Statement::run()
{
    sqlite3_step(stmt_);
    return sqlite3_reset(stmt_) & 0xFF;
}

Value Statement::value(int column) const
{
    const auto bytes = [&](const void *start) {
        return std::string(static_cast<const char *>(start), static_cast<size_t>(sqlite3_column_bytes(stmt_, column)));
    };
    const int type = sqlite3_column_type(stmt_, column);
    if (type == SQLITE_INTEGER) return sqlite3_column_int64(stmt_, column);
    if (type == SQLITE_FLOAT) return sqlite3_column_double(stmt_, column);
    if (type == SQLITE_NULL) return {};
    const void *start = type == SQLITE_TEXT ? static_cast<const void *>(sqlite3_column_text(stmt_, column))
                                            : sqlite3_column_blob(stmt_, column);
    if (!start && sqlite3_errcode(db_) == SQLITE_NOMEM) throw std::bad_alloc();
    if (type == SQLITE_TEXT) return bytes(start);
    return Blob{start ? bytes(start) : ""};
}

std::string Statement::text(int column) const
{
    const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(stmt_, column));
    return text ? std::string(text, static_cast<size_t>(sqlite3_column_bytes(stmt_, column))) : "";
}

Snapshot::Snapshot(const Database &database) : db_(database.connection())
{
    if (sqlite3_exec(db_, "BEGIN", nullptr, nullptr, nullptr) != SQLITE_OK) fail(db_);
}

Snapshot::~Snapshot()
{
    sqlite3_exec(db_, "ROLLBACK", nullptr, nullptr, nullptr);
}

Transaction::Transaction(const Database &database, uint32_t timeout_ms) : database_(database)
{
    const uint32_t rc = qbdb_sql_begin(database.handle(), database.connection(), 0, kSource, __LINE__);
    if (rc != SQLITE_OK) throw Failure(why_not_begun(rc, timeout_ms), Status::kFailed);
}

Transaction::~Transaction()
{
    if (open_) qbdb_sql_rollback(database_.handle(), database_.connection(), 0, kSource, __LINE__);
}

void Transaction::commit()
{
    open_ = false;
    if (qbdb_sql_commit(database_.handle(), database_.connection(), 0, kSource, __LINE__) == SQLITE_OK) return;
    throw Failure("the change could not be stored; the database is as it was (" + database_.logged_failure() + ")",
                  Status::kFailed);
}

int64_t pragma_number(const Database &database, const std::string &pragma)
{
    Statement statement(database, "PRAGMA " + pragma);
    return statement.next() ? statement.number(0) : 0;
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
