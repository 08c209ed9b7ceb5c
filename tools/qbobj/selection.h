// The fields that a caller wants of what an operation returns: as rows and columns, or cut out of its JSON.
//
// What comes out is a tree: at its root the outputs, below a record or a list its fields, and a collection heads a list
// further down. A row is a record of the deepest level that a named field belongs to; fields of the records around it
// may be named as well and come with each row.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "call.h"
#include "json_text.h"
#include "output.h"
#include "qbobj.h"

namespace qbcli {

class Selection {
public:
    /// Finds the named fields in the operation's outputs. Unknown ones, and those of different lists, are refused.
    /// @param fields Names with dots, in the order of the columns; none for all fields of the rows.
    Selection(const QbobjOperation &operation, const std::vector<std::string> &fields);

    /// The names of the columns.
    std::vector<std::string> columns() const;
    /// The rows, each an array with a value for each column: null for what is absent, an array or object where a list
    /// or record is named.
    Json rows(const Outputs &outputs) const;
    /// The outputs with nothing but the named fields in them, in the named order.
    Outputs limited(Outputs &&outputs) const;

private:
    using Path = std::vector<std::string>;

    /// A kind of record on the way down to the rows.
    struct Level {
        const QbobjField *type;  // null for the root
        std::string step;        // the member of the level above that holds it
    };
    /// A way down: the root, an argument, the lists that it heads.
    using Branch = std::vector<Level>;

    struct Column {
        std::string name;
        size_t level;
        Path path;  // members from a record of that level down
    };

    static std::vector<Branch> branches_of(const QbobjOperation &operation);
    static void add_branches(std::vector<Branch> &all, Branch branch, const QbobjField *type, const char *step);
    bool find(const Branch &branch, Column &column) const;
    bool resolve(const Branch &branch, const std::vector<std::string> &fields, std::vector<Column> &columns) const;
    std::vector<Column> all_columns(const Branch &branch) const;
    [[noreturn]] void refuse(const std::vector<std::string> &fields, const std::vector<Branch> &branches) const;
    void expand(Json &rows, size_t level, const Json &value, std::vector<const Json *> &around) const;
    static Path address(const Branch &branch, const Column &column);
    friend std::vector<std::string> returned_fields(const QbobjOperation &operation);

    const QbobjOperation &operation_;
    Branch branch_;
    std::vector<Column> columns_;
    size_t row_level_ = 0;
};

/// The names of the fields that an operation returns, those of records inside with dots.
std::vector<std::string> returned_fields(const QbobjOperation &operation);

/// The selection that the options ask for; none where everything is printed as it comes.
std::optional<Selection> selection_of(const QbobjOperation &operation, const OutputOptions &options);
/// The outputs in one value, with what is wanted of them.
Json selected(const std::optional<Selection> &selection, Outputs outputs);
/// Prints the outputs in the form that the options ask for.
void print_outputs(const std::optional<Selection> &selection, Outputs outputs, const OutputOptions &options);

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
