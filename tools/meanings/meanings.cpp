// Takes what the public headers say of types, fields, operations and arguments into a table of the library, so that
// programs can show it. It runs while the library is built:
//     qbobj_meanings OUT.cpp HEADER...
#include <fstream>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string>

#include "headers.h"

namespace {

/// "User.UserName", "addUser", "addUser(user)", "addUser()" for what is returned, and what the header says.
using Meanings = std::map<std::string, std::string>;

void add(const headers::Header &header, Meanings &meanings)
{
    for (const headers::Type &type : header.types) {
        meanings[type.name] = type.meaning;
        for (const auto &[member, text] : type.members) meanings[type.name + "." + member] = text;
    }
    for (const headers::Function &function : header.functions) {
        meanings[function.name] = function.meaning;
        for (const auto &[argument, text] : function.arguments) meanings[function.name + "(" + argument + ")"] = text;
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

int write_table(const char *path, const Meanings &meanings)
{
    std::ofstream out(path);
    out << "// Made from the public headers while the library is built.\n#include \"api/meanings.h\"\n\n"
           "namespace qb {\n\nconst Meaning kMeanings[] = {\n";
    for (const auto &[name, text] : meanings) out << "    {" << quoted(name) << ", " << quoted(text) << "},\n";
    out << "};\n\nconst size_t kMeaningCount = sizeof kMeanings / sizeof kMeanings[0];\n\n}  // namespace qb\n";
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
        for (int i = 2; i < argc; i++) add(headers::read_header(headers::read_file(argv[i])), meanings);
        return write_table(argv[1], meanings);
    } catch (const std::runtime_error &failure) {
        std::cerr << failure.what() << "\n";
        return 1;
    }
}
// SPDX-License-Identifier: Apache-2.0
