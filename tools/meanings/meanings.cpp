// Takes what the public headers say of types, fields, operations and arguments into a table of the library, so that
// programs can show it. It runs while the library is built:
//     qbobj_meanings OUT.cpp HEADER...
#include <cctype>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <string>

namespace {

/// "User.UserName", "addUser", "addUser(user)", "addUser()" for what is returned, and what the header says.
using Meanings = std::map<std::string, std::string>;

bool in_name(char c)
{
    return isalnum(static_cast<unsigned char>(c)) || c == '_';
}

std::string trimmed(const std::string &text)
{
    const size_t first = text.find_first_not_of(" \t\n");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t\n") + 1 - first);
}

std::string last_name(const std::string &text)
{
    size_t end = text.size();
    while (end > 0 && !in_name(text[end - 1])) end--;
    size_t start = end;
    while (start > 0 && in_name(text[start - 1])) start--;
    return text.substr(start, end - start);
}

/// The text of a comment without its marks: a line a paragraph or list item.
std::string comment_text(const std::string &comment)
{
    std::istringstream lines(comment);
    std::string text;
    bool paragraph_ends = false;
    for (std::string line; std::getline(lines, line);) {
        line = trimmed(line);
        if (line.rfind('*', 0) == 0) line = trimmed(line.substr(1));
        if (line.empty()) {
            paragraph_ends = true;
            continue;
        }
        const bool item = line.rfind("- ", 0) == 0;
        if (!text.empty()) text += paragraph_ends || item ? '\n' : ' ';
        paragraph_ends = false;
        text += line;
    }
    std::string plain;
    for (size_t i = 0; i < text.size(); i++) {
        const bool link = text[i] == '#' && i + 1 < text.size() && isalpha(static_cast<unsigned char>(text[i + 1]));
        if (text[i] != '`' && !link) plain += text[i];
    }
    return trimmed(plain);
}

/// What stands between the marks of the comment that ends right before a position; "" when there is none.
std::string comment_before(const std::string &text, size_t at)
{
    const std::string before = trimmed(text.substr(0, at));
    if (before.size() < 5 || before.compare(before.size() - 2, 2, "*/") != 0) return "";
    const size_t open = before.rfind("/*");
    if (before.compare(open, 3, "/**") != 0) return "";
    return before.substr(open + 3, before.size() - open - 5);
}

/// The members of a structure whose brace opens at a position, each with the comment that follows it.
void read_members(const std::string &text, size_t at, const std::string &type, Meanings &meanings)
{
    const size_t end = text.find("\n}", at);
    while (at < end) {
        const size_t stop = text.find(';', at);
        if (stop >= end) return;
        const std::string name = last_name(text.substr(at, stop - at));
        const size_t next = text.find_first_not_of(" \t\n", stop + 1);
        at = stop + 1;
        if (text.compare(next, 5, "/**< ") != 0) continue;
        at = text.find("*/", next) + 2;
        meanings[std::string(type).append(".").append(name)] = comment_text(text.substr(next + 5, at - 2 - next - 5));
    }
}

void read_types(const std::string &text, Meanings &meanings)
{
    for (size_t at = text.find("struct "); at != std::string::npos; at = text.find("struct ", at + 1)) {
        size_t end = at + 7;
        while (in_name(text[end])) end++;
        if (text.compare(end, 3, " {\n") != 0) continue;
        const std::string type = text.substr(at + 7, end - at - 7);
        const size_t line = text.rfind('\n', at) + 1;
        meanings[type] = comment_text(comment_before(text, line));
        read_members(text, end + 2, type, meanings);
    }
}

void read_function(const std::string &name, const std::string &comment, Meanings &meanings)
{
    size_t at = comment.find("\n * @");
    meanings[name] = comment_text(comment.substr(0, at));
    while (at != std::string::npos) {
        const size_t next = comment.find("\n * @", at + 1);
        std::istringstream tag(comment.substr(at + 4, next - at - 4));
        std::string word;
        std::string argument;
        tag >> word;
        if (word == "@param") tag >> argument;
        std::string rest;
        std::getline(tag, rest, '\0');
        if (word == "@param" || word == "@return")
            meanings[std::string(name).append("(").append(argument).append(")")] = comment_text(rest);
        at = next;
    }
}

void read_functions(const std::string &text, Meanings &meanings)
{
    const std::string mark = "\nQBOBJ_API ";
    for (size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + 1)) {
        const size_t stop = text.find(';', at);
        const size_t open = text.find('(', at);
        const std::string comment = comment_before(text, at);
        if (open < stop && !comment.empty()) read_function(last_name(text.substr(at, open - at)), comment, meanings);
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
    Meanings meanings;
    for (int i = 2; i < argc; i++) {
        std::ifstream in(argv[i]);
        std::ostringstream text;
        text << in.rdbuf();
        if (!in) {
            std::cerr << argv[i] << ": cannot be read\n";
            return 1;
        }
        read_types(text.str(), meanings);
        read_functions(text.str(), meanings);
    }
    return write_table(argv[1], meanings);
}
