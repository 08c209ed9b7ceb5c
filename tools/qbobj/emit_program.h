// What the programs in C and in C++ have in common: how records are given, a statement a line, and in which order the
// functions stand that print what comes back.
#pragma once

#include <set>
#include <string>

#include "emit.h"

namespace qbcli {

/// What the two languages write differently, where that is a word.
struct Dialect {
    const char *null;
    const char *handle;         ///< The handle of the open database.
    const char *zero;           ///< What makes a structure all zero.
    const char *secret;         ///< The type of a variable that holds a secret.
    const char *end_of_secret;  ///< What makes a text of it.
};

class ProgramWriter {
public:
    ProgramWriter(const ProgramWriter &) = delete;
    ProgramWriter &operator=(const ProgramWriter &) = delete;

protected:
    ProgramWriter(const Emitted &what, const Dialect &dialect)
        : what_(what), operation_(what.operation), values_(what), dialect_(dialect)
    {
    }
    ~ProgramWriter() = default;

    void line(const std::string &text) { body_ += "    " + text + "\n"; }
    /// What is passed for an argument that is given; what it needs is declared.
    std::string given(size_t argument);
    /// Adds the function that prints a type, after those of the types in it.
    void add_printer(const QbobjField *type);
    bool has_secrets() const { return !values_.secrets().empty(); }
    /// Lines that read the secrets.
    std::string secrets() const;
    /// Lines that set what the command line's options say of the open database.
    std::string settings() const;

    /// @name What a language writes in its own way @{
    /// Declares a record in which everything is absent that is not among its members.
    virtual void declare(const QbobjField *type, const Json &members, const std::string &name) = 0;
    /// What a number or text of a record is assigned to.
    virtual std::string target(const QbobjField *field, const std::string &record, const std::string &member) const = 0;
    /// What is passed for a record that has been declared.
    virtual std::string passed(const QbobjArgument &argument) const = 0;
    /// The function that prints a type, up to its first field.
    virtual std::string printer_head(const std::string &type) const = 0;
    /// A line of it, for a text and for any other field.
    virtual std::string text_line(const std::string &name, bool secret) = 0;
    virtual std::string field_line(const QbobjField *field) = 0;
    /// @}

    const Emitted &what_;
    const QbobjOperation &operation_;
    EmittedValues values_;
    std::string body_;      // declares what is given
    std::string printers_;  // functions that print records
    bool prints_text_ = false;
    bool prints_xml_ = false;

private:
    void record(const QbobjField *type, const Json &value, const std::string &name);
    void inside(const QbobjField *type, const Json &value, const std::string &name, const std::string &place);
    void records(const QbobjField *type, const Json &value, const std::string &name);
    std::string scalar(const QbobjArgument &argument, const std::optional<Json> &given) const;
    std::string text(const Json &value) const;

    const Dialect &dialect_;
    std::set<const QbobjField *> printed_;
};

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
