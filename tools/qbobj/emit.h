// The program that does what a command line does: an operation and its arguments, written in a language.
#pragma once

#include <array>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "arguments.h"
#include "database.h"

namespace qbcli {

enum class Language { kC, kCpp, kPython, kShell };

/// The languages' names, in the order of the enumeration; null ends them.
inline constexpr const char *kLanguages[] = {"c", "c++", "python", "shell", nullptr};

/// What is written.
struct Emitted {
    const QbobjOperation &operation;
    const Arguments &arguments;      ///< Complete and right: a Call can be made of them.
    std::vector<std::string> words;  ///< The command line behind the program's name, for the shell.
    DatabaseOptions database;        ///< How the database is opened; a program takes another file as its argument.
};

/// Writes the program. A secret is never part of it: it reads a line of its standard input for each.
std::string emit(Language language, const Emitted &what);
/// The part of a program in C that makes the call: a function that takes the open database and the secrets, and prints
/// of each record that comes back the field that tells most. It stands for itself.
std::string emit_c_call(const Emitted &what);

/// @name Texts as literals of a language: one line, in quotes. Control characters and what turns the direction of
/// writing are escaped. @{
std::string c_literal(std::string_view text);
std::string python_literal(std::string_view text);
/// A word of a POSIX shell (2024), bash or zsh; only quoted where it has to be.
std::string shell_word(std::string_view text);
/// @}
/// Words as a shell's command, in one line, or in several that are no wider than they have to be.
std::string shell_command(const std::vector<std::string> &words, size_t columns = std::string::npos);

/// Parts of a text, put together.
inline std::string joined(std::initializer_list<std::string_view> parts)
{
    std::string whole;
    for (const std::string_view part : parts) whole += part;
    return whole;
}

/// The name of an optional number's indicator; empty for any other field.
std::string indicator_of(const QbobjField *field);

/// The values of a call with a number in place of each secret, and what the secrets are called.
class EmittedValues {
public:
    explicit EmittedValues(const Emitted &what);

    const std::optional<Json> &given(size_t argument) const { return values_[argument]; }
    /// What the secrets are called, in the order in which they are read.
    const std::vector<std::string> &secrets() const { return secrets_; }
    /// Which secret a value stands for, from 1; 0 for any other value.
    static size_t secret_of(const Json &value);

private:
    void hide(const QbobjField *type, Json &value, const std::string &where);

    std::array<std::optional<Json>, QBOBJ_MAX_ARGUMENTS> values_;
    std::vector<std::string> secrets_;
};

/// What happens to an argument of a record's or list's kind.
enum class Passing {
    kFilled,   ///< The operation fills it; nothing is given.
    kNull,     ///< Nothing is given, and that is said.
    kRecord,   ///< One record.
    kRecords,  ///< A chain, or a list, of records.
};
Passing passing_of(const QbobjArgument &argument, const std::optional<Json> &given);

/// An argument that comes back from the call.
bool comes_back(const QbobjArgument &argument, const std::optional<Json> &given);

/// @name The languages @{
std::string emit_c(const Emitted &what);
std::string emit_cpp(const Emitted &what);
std::string emit_python(const Emitted &what);
std::string emit_shell(const Emitted &what);
/// @}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
