// What the public headers declare, and what they say of it: read for the library's table of meanings and for the
// manual.
#pragma once

#include <string>
#include <vector>

namespace headers {

/// A mark in a comment, `@range{1,99}`: what it says to programs. To people it says the words that it stands for.
struct Mark {
    std::string name;
    std::vector<std::string> arguments;
};

/// Something that has a name, and what is said of it: a line a paragraph.
struct Named {
    std::string name;
    std::string text;
    std::vector<Mark> marks{};
};

/// A function, or the type of one.
struct Function {
    std::string name;
    std::string code;  ///< The declaration in one line, "uint32_t qbobj_addUser(qbdb_t *qbdb, …)".
    std::string meaning;
    std::vector<Named> arguments;
    std::string result;
    std::vector<Named> results;  ///< Single results, where they are listed.
    std::vector<Mark> marks;     ///< Those of the meaning.
};

struct Type {
    std::string name;
    std::string code;  ///< The declaration in its lines, without comments.
    std::string meaning;
    std::vector<Named> members;
};

/// A macro that stands for a value.
struct Constant {
    std::string name;
    std::string value;
    std::string meaning;
};

struct Header {
    std::string about;                ///< What stands at the head of the file.
    std::vector<Function> functions;  ///< In the order of the file, as all of these.
    std::vector<Function> hooks;      ///< Types of functions that the caller provides.
    std::vector<Type> types;
    std::vector<Constant> constants;
};

/// Reads a file; throws std::runtime_error when it cannot.
std::string read_file(const std::string &path);

Header read_header(const std::string &text);

/// A text with the words in place of its marks, which are appended to a list. Throws std::runtime_error for a mark that
/// there is not.
std::string without_marks(const std::string &text, std::vector<Mark> *marks);

/// Without the blanks at both ends.
std::string trimmed(const std::string &text);

}  // namespace headers
// SPDX-License-Identifier: Apache-2.0
