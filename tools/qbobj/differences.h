// What two databases differ in: rows, and the records that the reading operations make of them.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "database.h"
#include "json_text.h"
#include "qbobj.h"
#include "tables.h"

namespace qbcli {

enum class Change { added, removed, changed };

/// A row that only one database has, or that is another in the second.
struct RowDifference {
    const Table *table;
    Change change;
    std::vector<Value> before;  ///< Empty for an added one.
    std::vector<Value> after;   ///< Empty for a removed one.
};

/// The rows that differ, paired by the declared key; in tables without one by their whole content, but for one row on
/// either side, which is then the same one. The numbers of rows that stand in no column do not count.
std::vector<RowDifference> row_differences(const Database &before, const Database &after,
                                           const std::vector<Table> &tables);

/// A field of a record, with those of records and list elements inside ("HomeFolderSettings[0].SizeLimit").
struct Leaf {
    std::string name;
    Json value;  ///< A number or text.
    bool secret = false;
};
using Leaves = std::vector<Leaf>;

/// A record that only one database shows, or that is another in the second.
struct RecordDifference {
    std::string type;
    std::string name;  ///< By which people know it; empty for one that there is once.
    Change change;
    Leaves before;                        ///< All fields that are not absent; empty for an added one.
    Leaves after;                         ///< Likewise, for a removed one.
    const std::set<std::string> *tables;  ///< Those that the operation reads.
};

/// The records that differ, as far as an operation shows them that only reads and need be given nothing.
class RecordComparison {
public:
    /// @param differing Tables that differ: operations that read none of them are not compared.
    void compare(Database &before, Database &after, const std::set<std::string> &differing, uint32_t timeout_ms);
    const std::vector<RecordDifference> &differences() const { return differences_; }

private:
    void compare_operation(const QbobjOperation &operation, Database &before, Database &after,
                           const std::set<std::string> &differing, uint32_t timeout_ms);
    void compare_records(const QbobjField *type, const Json &before, const Json &after,
                         const std::set<std::string> &tables);
    void add(RecordDifference difference);

    std::vector<RecordDifference> differences_;
    std::multimap<std::string, size_t> by_name_;
    std::map<std::string, std::set<std::string>> read_;  // by operation
};

/// A text as it is, anything else as JSON.
std::string plain_text(const Json &value);

/// A field that differs.
struct FieldDifference {
    const Leaf *before;  ///< Null where it is absent.
    const Leaf *after;
};
std::vector<FieldDifference> field_differences(const RecordDifference &difference);

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
