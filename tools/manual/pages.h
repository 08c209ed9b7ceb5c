// The pages of the manual: one for each operation and record type, and three that people wrote around what the tables,
// the headers and the command line say of themselves.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "headers.h"
#include "json_text.h"
#include "mdoc.h"
#include "qbobj.h"

namespace manual {

/// What the pages are made of.
struct Source {
    std::map<std::string, headers::Header> headers;  ///< By their names, "qbobj/types.h".
    std::map<std::string, qbcli::Json> calls;        ///< A call's arguments for each operation.
    std::string texts;                               ///< Folder of the pages that people wrote.
    std::string date;                                ///< "November 21, 2026"

    /// @param root Root of the source tree.
    Source(const std::string &root, std::string date);

    const headers::Function &function(const std::string &name) const;
    const headers::Type &type(const std::string &name) const;
    /// An operation's arguments in its example.
    qbcli::Json call(const QbobjOperation &operation) const;
};

/// A prototype in its parts: "uint32_t", "qbobj_addUser", {"qbdb_t *qbdb", …}.
struct Prototype {
    std::string result;
    std::string name;
    std::vector<std::string> arguments;
};
Prototype prototype_of(const headers::Function &function);

/// A text with a full stop.
std::string sentence(const std::string &text);

/// The name of a type's page, "qbobj_User": the names themselves are those of other pages, too.
std::string page_of(const QbobjField *type);

std::string operation_page(const Source &source, const QbobjOperation &operation);
std::string type_page(const Source &source, const QbobjField *type);
/// A page that people wrote, "qbobj.1". A line "@NAME@" in it stands for what is known by that name.
std::string written_page(const Source &source, const std::string &name);

/// Every page: "man3/qbobj_addUser.3" and its text.
std::map<std::string, std::string> all_pages(const Source &source);

/// @name What stands for the lines in the pages that people wrote @{
void write_options(Page &page);
void write_commands(Page &page);
void write_operations(Page &page);
void write_types(Page &page);
void write_codes(Page &page);
void write_statuses(Page &page);
/// @}
void write_header(Page &page, const headers::Header &header);
/// What is said of the arguments of a function or the members of a structure.
void write_members(Page &page, const std::vector<headers::Named> &members);
/// A function that is no operation, or the type of one.
void write_function(Page &page, const headers::Function &function);

}  // namespace manual
// SPDX-License-Identifier: Apache-2.0
