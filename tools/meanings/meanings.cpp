// Takes what the public headers say of types, fields, operations and arguments into tables of the library, so that
// programs can show it: the sentences, and what the marks in them say. It runs while the library is built:
//     qbobj_meanings OUT.cpp HEADER...
#include <cstdint>
#include <fstream>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "headers.h"

namespace {

/// "User.UserName", "addUser", "addUser(user)", "addUser()" for what is returned, and what the header says.
using Meanings = std::map<std::string, std::string>;

/// Numbers from one to another.
struct Range {
    bool known = false;
    int64_t minimum = 0;
    int64_t maximum = 0;
};

/// What marks say of a field or an argument.
struct Marked {
    std::string unit;
    std::string default_value;
    bool pattern = false;
    Range range;
    Range besides;
    std::string direction = "QBOBJ_INOUT";
    std::string addresses;

    bool says_nothing() const
    {
        return unit.empty() && default_value.empty() && !pattern && !range.known && !besides.known &&
               direction == "QBOBJ_INOUT" && addresses.empty();
    }
};
using AllMarked = std::map<std::string, Marked>;

int64_t number(const std::string &text)
{
    size_t end = 0;
    const int64_t value = std::stoll(text, &end);
    if (end != text.size()) throw std::runtime_error("not a number: " + text);
    return value;
}

std::string unquoted(const std::string &text)
{
    const bool quoted = text.size() > 1 && text.front() == '"' && text.back() == '"';
    return quoted ? text.substr(1, text.size() - 2) : text;
}

/// Takes the values of a mark, those behind the name of a field.
void take(const std::string &mark, const std::vector<std::string> &values, Marked &marked)
{
    if (mark == "range") marked.range = {true, number(values[0]), number(values[1])};
    if (mark == "also") marked.besides = {true, number(values[0]), number(values[0])};
    if (mark == "below") marked.besides = {true, INT32_MIN, number(values[0]) - 1};
    if (mark == "default") marked.default_value = unquoted(values[0]);
}

/// A mark says something of what its sentence is about (`name`), or of a field of it, which it names first.
void take(const headers::Mark &mark, const std::string &name, AllMarked &all)
{
    std::vector<std::string> values = mark.arguments;
    if (mark.name == "unit") {
        all[name].unit = values[0];
    } else if (mark.name == "pattern") {
        all[name].pattern = true;
    } else if (mark.name == "by") {
        std::string &addresses = all[name].addresses;
        if ((" " + addresses + " ").find(" " + values[0] + " ") == std::string::npos)
            addresses += (addresses.empty() ? "" : " ") + values[0];
    } else {
        std::string about = name;
        if (values.size() > (mark.name == "range" ? 2 : 1)) {
            about += "." + values.front();
            values.erase(values.begin());
        }
        take(mark.name, values, all[about]);
    }
}

/// Which way a field goes, by what its sentence says in so many words.
std::string direction_of(const std::string &text)
{
    const auto says = [&text](const char *words) { return text.find(words) != std::string::npos; };
    if (says("output only") || (text.rfind("Out", 0) == 0 && !says("In:"))) return "QBOBJ_OUT";
    if (says("input only") || (text.rfind("In:", 0) == 0 && !says("Out:") && !says("out:"))) return "QBOBJ_IN";
    return "QBOBJ_INOUT";
}

/// The argument that the text of a function speaks of: the first that is the operation's own.
std::string first_argument(const headers::Function &function)
{
    for (const headers::Named &argument : function.arguments)
        if (argument.name != "qbdb" && argument.name != "db") return argument.name;
    throw std::runtime_error(function.name + " has a mark and no argument");
}

void add(const headers::Header &header, Meanings &meanings, AllMarked &marked)
{
    for (const headers::Type &type : header.types) {
        meanings[type.name] = type.meaning;
        const bool all_out = type.meaning.find("all fields are output only") != std::string::npos;
        for (const headers::Named &member : type.members) {
            if (member.name == "next") continue;  // no field
            const std::string name = type.name + "." + member.name;
            meanings[name] = member.text;
            for (const headers::Mark &mark : member.marks) take(mark, name, marked);
            marked[name].direction = all_out ? "QBOBJ_OUT" : direction_of(member.text);
        }
    }
    for (const headers::Function &function : header.functions) {
        const auto name = [&function](const std::string &argument) { return function.name + "(" + argument + ")"; };
        meanings[function.name] = function.meaning;
        for (const headers::Mark &mark : function.marks) take(mark, name(first_argument(function)), marked);
        for (const headers::Named &argument : function.arguments) {
            meanings[name(argument.name)] = argument.text;
            for (const headers::Mark &mark : argument.marks) take(mark, name(argument.name), marked);
        }
        if (!function.result.empty()) meanings[function.name + "()"] = function.result;
    }
}

/// A C string literal.
std::string quoted(const std::string &text)
{
    std::string literal = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') literal += '\\';
        if (c == '\n') literal += "\\n";
        else literal += c;
    }
    return literal + "\"";
}

std::string quoted_or_null(const std::string &text)
{
    return text.empty() ? "nullptr" : quoted(text);
}

std::string range(const Range &range)
{
    return std::to_string(range.known) + ", " + std::to_string(range.minimum) + ", " + std::to_string(range.maximum);
}

std::string row(const Marked &marked)
{
    return "{" + quoted_or_null(marked.unit) + ", " + quoted_or_null(marked.default_value) + ", " +
           std::to_string(marked.pattern) + ", " + range(marked.range) + ", " + range(marked.besides) + "}, " +
           marked.direction + ", " + quoted_or_null(marked.addresses);
}

int write_tables(const char *path, const Meanings &meanings, const AllMarked &marked)
{
    std::ofstream out(path);
    out << "// Made from the public headers while the library is built.\n#include \"api/meanings.h\"\n\n"
           "namespace qb {\n\nconst Meaning kMeanings[] = {\n";
    for (const auto &[name, text] : meanings) out << "    {" << quoted(name) << ", " << quoted(text) << "},\n";
    out << "};\n\nconst size_t kMeaningCount = sizeof kMeanings / sizeof kMeanings[0];\n\nconst Marked kMarked[] = {\n";
    for (const auto &[name, each] : marked)
        if (!each.says_nothing()) out << "    {" << quoted(name) << ", " << row(each) << "},\n";
    out << "};\n\nconst size_t kMarkedCount = sizeof kMarked / sizeof kMarked[0];\n\n}  // namespace qb\n";
    out.close();
    if (out) return 0;
    std::cerr << path << ": cannot be written\n";
    return 1;
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc < 3) {
        std::cerr << "usage: qbobj_meanings OUT.cpp HEADER...\n";
        return 2;
    }
    try {
        Meanings meanings;
        AllMarked marked;
        for (int i = 2; i < argc; i++) add(headers::read_header(headers::read_file(argv[i])), meanings, marked);
        return write_tables(argv[1], meanings, marked);
    } catch (const std::exception &failure) {
        std::cerr << failure.what() << "\n";
        return 1;
    }
}
// SPDX-License-Identifier: Apache-2.0
