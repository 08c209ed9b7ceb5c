#include "headers.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace headers {
namespace {

bool in_name(char c)
{
    return isalnum(static_cast<unsigned char>(c)) || c == '_';
}

std::string last_name(const std::string &text)
{
    size_t end = text.size();
    while (end > 0 && !in_name(text[end - 1])) end--;
    size_t start = end;
    while (start > 0 && in_name(text[start - 1])) start--;
    return text.substr(start, end - start);
}

/// The words that a mark stands for, as the page maker's file of settings (Doxyfile) has them, too: \1 is what stands
/// first between the braces.
struct Words {
    std::string_view mark;
    size_t arguments;
    std::string_view text;
};

constexpr Words kWords[] = {
    {"unit", 1, "\\1"},         {"unit", 2, "\\2"},          // MB; MB,megabytes
    {"range", 2, "\\1 to \\2"}, {"range", 3, "\\2 to \\3"},  // 1,99; UserId,100,32767
    {"also", 1, "\\1"},         {"also", 2, "\\2"},          // 0; UserId,0
    {"below", 1, "below \\1"},  {"below", 2, "below \\2"},   // 1; UserId,1
    {"default", 1, "\\1"},      {"default", 2, "\\2"},       // 25000; Comment,"none"
    {"pattern", 1, "\\1"},                                   // SQL LIKE pattern
    {"by", 1, "\\1"},                                        // UserId
};

std::vector<std::string> split(const std::string &list)
{
    std::vector<std::string> parts;
    std::istringstream stream(list);
    for (std::string part; std::getline(stream, part, ',');) parts.push_back(part);
    return parts;
}

std::string words_of(const Mark &mark)
{
    for (const Words &row : kWords) {
        if (row.mark != mark.name || row.arguments != mark.arguments.size()) continue;
        std::string text;
        for (size_t i = 0; i < row.text.size(); i++)
            if (row.text[i] == '\\') text += mark.arguments[row.text[++i] - '1'];
            else text += row.text[i];
        return text;
    }
    throw std::runtime_error("there is no mark @" + mark.name + " of " + std::to_string(mark.arguments.size()));
}

/// The text of a comment without stars and marks: a line a paragraph or list item.
std::string comment_text(const std::string &comment, std::vector<Mark> *marks = nullptr)
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
    text = without_marks(text, marks);
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
    if (before.compare(open, 3, "/**") != 0 || before.compare(open, 5, "/**< ") == 0) return "";
    return before.substr(open + 3, before.size() - open - 5);
}

/// What the comment that follows a position says of what stands before it; "" when none does.
std::string comment_behind(const std::string &text, size_t at, std::vector<Mark> *marks = nullptr)
{
    const size_t next = text.find_first_not_of(" \t\n", at);
    if (text.compare(next, 5, "/**< ") != 0) return "";
    return comment_text(text.substr(next + 5, text.find("*/", next) - next - 5), marks);
}

std::string without_comments(const std::string &text)
{
    std::string code;
    for (size_t at = 0; at < text.size();) {
        const size_t open = std::min(text.find("/*", at), text.size());
        code += text.substr(at, open - at);
        at = open == text.size() ? open : text.find("*/", open) + 2;
    }
    std::string lines;
    std::istringstream all(code);
    for (std::string line; std::getline(all, line);) {
        line.erase(line.find_last_not_of(' ') + 1);
        if (!line.empty()) lines += line + "\n";
    }
    return lines;
}

/// The members of a structure whose brace opens at a position, each with the comment that follows it.
std::vector<Named> members_in(const std::string &text, size_t at)
{
    std::vector<Named> members;
    const size_t end = text.find("\n}", at);
    while (at < end) {
        const size_t stop = text.find(';', at);
        if (stop >= end) break;
        const std::string name = last_name(text.substr(at, stop - at));
        at = stop + 1;
        std::vector<Mark> marks;
        const std::string said = comment_behind(text, at, &marks);
        if (said.empty()) continue;
        members.push_back({name, said, marks});
        at = text.find("*/", at) + 2;
    }
    return members;
}

std::vector<Type> types_in(const std::string &text)
{
    std::vector<Type> types;
    for (size_t at = text.find("struct "); at != std::string::npos; at = text.find("struct ", at + 1)) {
        size_t end = at + 7;
        while (in_name(text[end])) end++;
        if (text.compare(end, 3, " {\n") != 0) continue;
        const size_t line = text.rfind('\n', at) + 1;
        const size_t close = text.find(';', text.find("\n}", end)) + 1;
        types.push_back({text.substr(at + 7, end - at - 7), without_comments(text.substr(line, close - line)),
                         comment_text(comment_before(text, line)), members_in(text, end + 2)});
    }
    return types;
}

std::string in_one_line(const std::string &code)
{
    std::istringstream words(without_comments(code));
    std::string line;
    for (std::string word; words >> word;) line += (line.empty() ? "" : " ") + word;
    return line.substr(0, line.find(" __attribute__"));
}

/// Where the next line with a tag begins, which is no mark.
size_t next_tag(const std::string &comment, size_t at)
{
    for (;; at++) {
        at = comment.find("\n * @", at);
        if (at == std::string::npos) return at;
        size_t end = at + 5;
        while (end < comment.size() && in_name(comment[end])) end++;
        if (end == at + 5 || comment[end] != '{') return at;
    }
}

Function function_of(const std::string &name, const std::string &code, const std::string &comment)
{
    size_t at = next_tag(comment, 0);
    Function function{name, in_one_line(code), "", {}, "", {}, {}};
    function.meaning = comment_text(comment.substr(0, at), &function.marks);
    while (at != std::string::npos) {
        const size_t next = next_tag(comment, at + 1);
        std::istringstream tag(comment.substr(at + 4, next - at - 4));
        std::string word;
        std::string about;
        tag >> word;
        if (word != "@return") tag >> about;
        std::string rest;
        std::getline(tag, rest, '\0');
        std::vector<Mark> marks;
        const std::string text = comment_text(rest, &marks);
        if (word == "@param") function.arguments.push_back({about, text, marks});
        if (word == "@return") function.result = text;
        if (word == "@retval") function.results.push_back({about, text});
        at = next;
    }
    return function;
}

std::vector<Function> functions_in(const std::string &text)
{
    std::vector<Function> functions;
    for (size_t at = text.find("_API "); at != std::string::npos; at = text.find("_API ", at + 1)) {
        const size_t line = text.rfind('\n', at) + 1;
        const size_t stop = text.find(';', at);
        const size_t open = text.find('(', at);
        const std::string comment = comment_before(text, line);
        if (text.compare(line, 2, "QB") != 0 || open > stop || comment.empty()) continue;
        const size_t code = at + 5;
        functions.push_back(
            function_of(last_name(text.substr(code, open - code)), text.substr(code, stop - code), comment));
    }
    return functions;
}

std::vector<Function> hooks_in(const std::string &text)
{
    std::vector<Function> hooks;
    const std::string mark = "\ntypedef ";
    for (size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + 1)) {
        const size_t stop = text.find(';', at);
        const size_t open = text.find("(*", at);
        if (open > stop || text.find('{', at) < stop) continue;
        const size_t name = open + 2;
        hooks.push_back(function_of(text.substr(name, text.find(')', name) - name),
                                    text.substr(at + mark.size(), stop - at - mark.size()), comment_before(text, at)));
    }
    return hooks;
}

std::vector<Constant> constants_in(const std::string &text)
{
    std::vector<Constant> constants;
    const std::string mark = "\n#define ";
    for (size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + 1)) {
        std::istringstream line(text.substr(at + mark.size(), text.find('\n', at + 1) - at - mark.size()));
        Constant constant;
        line >> constant.name >> constant.value;
        if (constant.value.empty() || !isalnum(static_cast<unsigned char>(constant.value[0])) ||
            constant.name.find('(') != std::string::npos)
            continue;
        constant.meaning = comment_behind(
            text, text.find(constant.value, at + mark.size() + constant.name.size()) + constant.value.size());
        if (constant.meaning.empty()) constant.meaning = comment_text(comment_before(text, at));
        if (!constant.meaning.empty()) constants.push_back(constant);
    }
    return constants;
}

/// The comment at the head of a file, without its first line, which names the file.
std::string about(const std::string &text)
{
    const size_t open = text.find("@file");
    if (open == std::string::npos) return "";
    const size_t line = text.find('\n', open);
    return comment_text(text.substr(line, text.find("*/", line) - line));
}

}  // namespace

std::string trimmed(const std::string &text)
{
    const size_t first = text.find_first_not_of(" \t\n");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t\n") + 1 - first);
}

std::string without_marks(const std::string &text, std::vector<Mark> *marks)
{
    std::string plain;
    for (size_t at = 0; at < text.size(); at++) {
        size_t end = at + 1;
        while (end < text.size() && in_name(text[end])) end++;
        if (text[at] != '@' || end == at + 1 || end == text.size() || text[end] != '{') {
            plain += text[at];
            continue;
        }
        const size_t close = text.find('}', end);
        if (close == std::string::npos) throw std::runtime_error("a mark does not end: " + text.substr(at, 40));
        const Mark mark{text.substr(at + 1, end - at - 1), split(text.substr(end + 1, close - end - 1))};
        plain += words_of(mark);
        if (marks) marks->push_back(mark);
        at = close;
    }
    return plain;
}

std::string read_file(const std::string &path)
{
    std::ifstream in(path);
    std::ostringstream text;
    text << in.rdbuf();
    if (!in) throw std::runtime_error(path + ": cannot be read");
    return text.str();
}

Header read_header(const std::string &text)
{
    return {about(text), functions_in(text), hooks_in(text), types_in(text), constants_in(text)};
}

}  // namespace headers
// SPDX-License-Identifier: Apache-2.0
