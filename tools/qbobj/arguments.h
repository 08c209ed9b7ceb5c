// What the caller wrote after the operation's name, sorted to the operation's arguments.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "checks.h"
#include "input.h"
#include "records.h"

namespace qbcli {

/// The values of an operation's arguments as JSON, collected word by word. Nothing but their names and,
/// for Field=value, the form of numbers is checked here; the rest is checked when records are made of them.
class Arguments {
public:
    Arguments(const QbobjOperation &operation, StandardInput &input)
        : operation_(operation), input_(input), checks_(operation)
    {
    }
    ~Arguments();
    Arguments(const Arguments &) = delete;
    Arguments &operator=(const Arguments &) = delete;

    /// Takes words: Field=value, JSON text, @file, "-" for JSON on standard input, and bare values that
    /// fill the scalar arguments that are left, in their order. What is named by itself goes over what a
    /// document says of it, so that a record can be read, changed and written back. A lone "null" is null for all.
    void take(const std::vector<std::string> &words);
    /// Takes one JSON document that nobody could read over the caller's shoulder.
    void take(Json document) { take_document(std::move(document), false); }
    /// Lays what was given for an argument over a record.
    void lay_under(size_t argument, Json record);
    /// Refuses values that the tables refuse. Words are judged as they are taken.
    void judge() const;
    /// Asks for the secrets that were given as "-": last of all, when everything else is known to be right.
    void ask_for_secrets();
    /// @name For programs that make the same call: a mark in place of each secret that is asked for. @{
    /// What these secrets are called, in the order in which they are asked for.
    std::vector<std::string> wanted_secrets() const;
    /// What was given for an argument, with marks.
    std::optional<Json> marked(size_t argument) const;
    /// The mark of a secret by its number, from 1. No document holds such a value.
    static Json mark_of_secret(size_t number) { return Json::binary(std::vector<uint8_t>(), number); }
    /// @}

    /// What was given for an argument; none when nothing was, or null.
    const std::optional<Json> &given(size_t argument) const { return given_[argument]; }

    /// What the tables say of what was given.
    const Checks &checks() const { return checks_; }

private:
    /// Where a value goes: an argument, and in a record the way down to the field.
    struct Target {
        size_t argument;
        std::vector<std::string> path;
        const QbobjField *type = nullptr;   // of the record that holds the field
        const QbobjField *field = nullptr;  // null for the argument itself and for the key word
        bool key_word = false;
        std::string label;  // as messages name it

        const QbobjField *type_of_value(const QbobjOperation &operation) const;
    };

    bool means_nothing(const std::vector<std::string> &words) const;
    void take_pair(std::string_view name, std::string_view value);
    /// @param visible The document stands on the command line itself.
    void take_document(Json document, bool visible);
    void take_bare(const std::string &text);
    Target resolve(const std::vector<std::string> &names, const std::string &label) const;
    void descend(Target &target, const QbobjField *type) const;
    [[noreturn]] void refuse_unknown(const std::string &name) const;
    Json value_from_text(const Target &target, std::string_view text);
    Json structure_from_text(const Target &target, const QbobjField *type, std::string_view text);
    Json document_from(std::string_view source);
    using Values = std::array<std::optional<Json>, QBOBJ_MAX_ARGUMENTS>;
    Json *collected(Json &document) const;
    size_t the_list(const Json &document) const;
    static void join(std::optional<Json> &given, Json &more, const std::string &label);
    void check(const Target &target, const Json &value, Origin origin);
    static void set(Values &values, const Target &target, Json value);
    static Json &at(Json &value, const Target &target);

    const QbobjOperation &operation_;
    StandardInput &input_;
    Checks checks_;
    Values given_;  // at first what documents say, in the end everything
    Values named_;
    std::vector<Target> secrets_;
};

/// An operation's name as users write it, without the prefix.
std::string short_name(const QbobjOperation &operation);
/// Whether a caller gives a value for an argument.
bool is_input(const QbobjArgument &argument);
/// What changes the database is not called with nothing: who means that says null. A number or a text that is
/// needed is asked for by its name instead.
void refuse_empty_change(const QbobjOperation &operation);
/// Whether an argument is a number or a text.
bool is_scalar(const QbobjArgument &argument);

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
