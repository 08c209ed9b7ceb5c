// The tables of an open database: which there are, and their rows, value by value, exactly.
//
// Names come out of the database's own schema and stand quoted in statements; values are bound.
#pragma once

#include <compare>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "database.h"
#include "json_text.h"

namespace qbcli {

/// Name of the row number of a table whose rows have one that stands in no column.
inline constexpr const char *kRowNumber = "_rowid_";

/// What a column's values are as a rule.
enum class Storage { integer, real, text, other };

struct Column {
    std::string name;
    Storage storage = Storage::other;
    bool key = false;     ///< Belongs to the declared key.
    bool number = false;  ///< Is the number of the row: never null.
    bool secret = false;  ///< Front ends do not show it.
};

struct Table {
    std::string name;
    std::vector<Column> columns;  ///< First the row number, where rows have one that stands in no column.
    bool keyed = false;           ///< Has a declared key.

    const Column *find(std::string_view column) const;
    /// The columns' names, quoted, with commas between.
    std::string column_list() const;
    /// A statement that reads all rows, in the order of their numbers or keys.
    std::string select() const;
};

/// The tables in the order of their names, but for those of SQLite and of the journal.
std::vector<Table> read_tables(const Database &database);
const Table *find_table(const std::vector<Table> &tables, std::string_view name);

/// A name as it stands in a statement.
std::string sql_name(std::string_view name);

/// A value as SQLite stores it.
struct Blob {
    std::string bytes;
    auto operator<=>(const Blob &) const = default;
};
using Value = std::variant<std::monostate, int64_t, double, std::string, Blob>;

/// @name Values as JSON
/// Null, the whole numbers of a column of whole numbers, the texts of a column of texts stand as they are. Anything
/// else is an object with the kind for its member: {"integer": 5}, {"real": 1.5}, {"real": "Infinity"},
/// {"text": "five"}, {"blob": "00ff"}, and {"bytes": "80"} for a text that is not UTF-8. @{
Json value_to_json(const Value &value, Storage storage);
/// @param where Names the place in messages, which do not quote the value.
Value value_from_json(const Json &json, Storage storage, const std::string &where);
/// @}

/// A statement. Throws what it fails with.
class Statement {
public:
    Statement(const Database &database, const std::string &sql);
    ~Statement() { sqlite3_finalize(stmt_); }
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;

    /// @param place Counted from 1. The value has to stay until the statement has run.
    void bind(int place, const Value &value);
    void bind(int place, Value &&value) = delete;
    /// Whether there is a row.
    bool next();
    /// Runs a statement without rows and makes it ready for its next use. 0 or a result code.
    int run();
    int count() const { return sqlite3_column_count(stmt_); }
    Value value(int column) const;
    std::string text(int column) const;
    int64_t number(int column) const { return sqlite3_column_int64(stmt_, column); }

private:
    sqlite3 *db_;
    sqlite3_stmt *stmt_ = nullptr;
};

/// Everything that is read while it lasts is of one moment.
class Snapshot {
public:
    explicit Snapshot(const Database &database);
    ~Snapshot();
    Snapshot(const Snapshot &) = delete;
    Snapshot &operator=(const Snapshot &) = delete;

private:
    sqlite3 *db_;
};

/// A transaction that writes. It is taken back unless it was committed.
class Transaction {
public:
    /// @param timeout_ms How long another process's lock is waited for, for the message.
    Transaction(const Database &database, uint32_t timeout_ms);
    ~Transaction();
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;
    void commit();

private:
    const Database &database_;
    bool open_ = true;
};

/// A pragma's number.
int64_t pragma_number(const Database &database, const std::string &pragma);

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
