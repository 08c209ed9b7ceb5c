#include "pages.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <sstream>
#include <stdexcept>

#include "arguments.h"
#include "describe.h"
#include "example.h"
#include "records.h"
#include "traits.h"

namespace manual {

using qbcli::Json;

namespace {

constexpr int kLibrarySection = 3;

char lower(char c)
{
    return static_cast<char>(tolower(static_cast<unsigned char>(c)));
}

/// A text that begins like a sentence, unless its first word is a name.
std::string capital(std::string text)
{
    const std::string word = text.substr(0, text.find_first_of(" ,;:"));
    const auto is_lower = [](unsigned char c) { return islower(c); };
    if (std::all_of(word.begin(), word.end(), is_lower)) text[0] = static_cast<char>(toupper(text[0]));
    return text;
}

/// What is said of an argument, without the direction, which stands before it anyway.
std::string without_direction(const std::string &text)
{
    for (const std::string mark : {"In and out: ", "Out: ", "In: "})
        if (text.starts_with(mark)) return capital(text.substr(mark.size()));
    return text;
}

/// "Creates users." as what stands behind the dash of a name: one sentence without its full stop.
std::string one_liner(const std::string &text)
{
    const std::string first = text.substr(0, text.find('\n'));
    const size_t end = first.find(". ");
    std::string sentence = escaped(first.substr(0, end));
    if (sentence.ends_with('.')) sentence.pop_back();
    if (sentence.size() > 1 && !isupper(static_cast<unsigned char>(sentence[1]))) sentence[0] = lower(sentence[0]);
    for (size_t at = 0; (at = sentence.find('"', at)) != std::string::npos;) sentence.replace(at, 1, "\\(dq");
    return sentence;
}

void name(Page &page, const std::vector<std::string> &names, const std::string &what)
{
    page.section("NAME");
    for (size_t i = 0; i < names.size(); i++) page.raw(".Nm " + names[i] + (i + 1 < names.size() ? " ," : ""));
    page.raw(".Nd " + one_liner(what));
}

void prototype(Page &page, const Prototype &prototype)
{
    page.macro("Ft", {prototype.result}).macro("Fo", {prototype.name});
    for (const std::string &each : prototype.arguments) page.macro("Fa", {each});
    page.raw(".Fc");
}

std::string joined(const Json &names)
{
    std::string text;
    for (const Json &each : names) text += (text.empty() ? "" : ", ") + each.get<std::string>();
    return text;
}

void remark(Page &page, const std::string &before, const Json &names)
{
    if (!names.empty()) page.paragraph().line(before + joined(names) + ".");
}

void write_argument(Page &page, const QbobjOperation &operation, const QbobjArgument &row, const Json &told)
{
    const std::string about = told["direction"].get<std::string>() + ", " + told["kind"].get<std::string>() +
                              qbcli::traits_text(*qbobj_argument_traits(&operation, &row)) +
                              (told["optional"].get<bool>() ? ", may be null" : "");
    page.raw(".It Fa " + argument(told["name"].get<std::string>()) + " Pq " + argument(about));
    page.text(without_direction(told["meaning"].get<std::string>()));
    remark(page, "One of the words ", told["words"]);
    remark(page, "Which record is meant is said by ", told["addresses"]);
    for (const qbcli::FieldOfOperation &field : qbcli::fields_of_operation(operation, row))
        page.paragraph().line(field.path + qbcli::traits_text(*field.traits) + ".");
    remark(page, "Not used by this operation, although one might expect it: ", told["ignores"]);
    remark(page, "The eight dots of a masked secret keep what is stored in ", told["keeps"]);
}

void write_arguments(Page &page, const QbobjOperation &operation, const Json &told)
{
    page.subsection("Arguments").raw(".Bl -tag -width Ds");
    page.raw(".It Fa qbdb , db").line("The handle and its connection.");
    for (uint32_t i = 0; i < operation.count; i++)
        write_argument(page, operation, operation.arguments[i], told["arguments"][i]);
    page.raw(".It Fa err").line("The caller's error record: zeroed first, filled when a failure is reported.");
    page.raw(".El");
}

void write_command(Page &page, const Json &told)
{
    page.subsection("On the command line").display(told["usage"].get<std::string>());
    page.paragraph().line("The exit status of").raw(".Xr qbobj 1").line("is");
    page.raw(".Bl -tag -width Ds -compact");
    for (const auto &[status, words] : told["exit"].items()) page.raw(".It " + status).line(words.get<std::string>());
    page.raw(".El");
}

void write_return_values(Page &page, const Json &told)
{
    // What the command line prints of it is the command line's.
    const std::string words = told["returns"].get<std::string>();
    page.section("RETURN VALUES").line("The returned value is " + words.substr(0, words.find(';')) + ".");
    page.paragraph().text(told["result"].get<std::string>());
}

void write_errors(Page &page, const QbobjOperation &operation, const Json &told)
{
    page.section("ERRORS");
    if (told["codes"].empty())
        page.line("There are no codes: the returned value tells of a failure, and the log says why.");
    else page.raw(".Bl -tag -width Ds");
    for (const Json &code : told["codes"]) {
        const char *meaning = qbobj_code_meaning(code.get<uint32_t>());
        page.raw(".It " + std::to_string(code.get<uint32_t>()));
        page.line(meaning ? capital(sentence(meaning)) : "The message says why.");
    }
    if (!told["codes"].empty()) page.raw(".El");
    if (operation.returns != QBOBJ_RETURNS_CODE) return;
    page.paragraph().line(
        "A call that could not begin its transaction returns what the database said (5 when it is locked) and leaves "
        "the error record zero.");
}

bool uses(const QbobjOperation &operation, const QbobjField *type)
{
    for (uint32_t i = 0; i < operation.count; i++)
        if (operation.arguments[i].type == type) return true;
    return false;
}

using References = std::vector<std::pair<std::string, int>>;

References relatives_of(const QbobjOperation &operation)
{
    References pages = {{"qbobj", 1}, {"libqbobj", kLibrarySection}};
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++)
        if (std::string_view(row->family) == operation.family && row->name != operation.name)
            pages.emplace_back(row->name, kLibrarySection);
    for (uint32_t i = 0; i < operation.count; i++)
        if (operation.arguments[i].type) pages.emplace_back(page_of(operation.arguments[i].type), kLibrarySection);
    return pages;
}

/// Operations that take or give a type, types that have it inside or that it has inside.
References relatives_of(const QbobjField *type)
{
    References pages = {{"libqbobj", kLibrarySection}};
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++)
        if (uses(*row, type)) pages.emplace_back(row->name, kLibrarySection);
    for (const QbobjField *other : qbcli::all_types())
        for (const QbobjField *field = other + 1; field->kind != '.'; field++) {
            if (field->subtype && other == type) pages.emplace_back(page_of(field->subtype), kLibrarySection);
            if (field->subtype == type) pages.emplace_back(page_of(other), kLibrarySection);
        }
    std::erase(pages, std::pair{page_of(type), kLibrarySection});
    return pages;
}

void write_field(Page &page, const QbobjField *type, const QbobjField *field, const Json &told)
{
    std::string about = told["kind"].get<std::string>() + qbcli::traits_text(*qbobj_field_traits(type, field));
    if (const std::string direction = told["direction"]; direction != "in and out")
        about += direction == "out" ? ", output only" : ", input only";
    if (told["optional"].get<bool>()) about += told["type"].is_null() ? ", may be absent" : ", may be empty";
    if (told["secret"].get<bool>()) about += ", secret";
    page.raw(".It Fa " + argument(told["name"].get<std::string>()) + " Pq " + argument(about));
    page.text(told["meaning"].get<std::string>());
    remark(page, "Its words are ", told["words"]);
}

bool has_optional_numbers(const QbobjField *type)
{
    for (const QbobjField *field = type + 1; field->kind != '.'; field++)
        if (qbcli::is_number(field) && (field->flags & QBOBJ_FIELD_OPTIONAL)) return true;
    return false;
}

void write_structure(Page &page, const QbobjField *type)
{
    if (qbcli::is_list(type))
        page.paragraph().line("Records of this type stand in lists, each with the next one in").raw(".Fa next .");
    if (qbcli::has_key_word(type)) page.paragraph().line("A record is addressed by its key word,").raw(".Fa key .");
    if (has_optional_numbers(type))
        page.paragraph().line(
            "A number that may be absent is absent when its null indicator, the member of its name with _void, is not "
            "0. "
            "In a record that is all zero it is given, as 0.");
    if (const std::string clear = std::string("qbobj_clear_") + type->name; qbobj_find_type(type->name))
        page.paragraph()
            .macro("Fn", {clear})
            .line(
                "sets every byte of the one record to zero. It frees nothing and walks no list. It returns 0, or "
                "0xFFFFFFFF when the pointer is null.");
}

std::string first_of(const std::string &text, const std::string &marks)
{
    return text.substr(0, text.find_first_of(marks));
}

}  // namespace

Source::Source(const std::string &root, std::string day) : texts(root + "/tools/manual/text"), date(std::move(day))
{
    const std::string include = root + "/include";
    for (const auto &entry : std::filesystem::recursive_directory_iterator(include))
        if (entry.path().extension() == ".h")
            headers[std::filesystem::relative(entry.path(), include)] =
                headers::read_header(headers::read_file(entry.path()));
    std::istringstream lines(headers::read_file(root + "/examples/calls.jsonl"));
    for (std::string line; std::getline(lines, line);) {
        Json call = qbcli::parse_json(line, "calls.jsonl");
        calls[call.at("call").get<std::string>()] = std::move(call["args"]);
    }
}

const headers::Function &Source::function(const std::string &name) const
{
    for (const auto &[file, header] : headers)
        for (const headers::Function &function : header.functions)
            if (function.name == name) return function;
    throw std::runtime_error("no header declares " + name);
}

const headers::Type &Source::type(const std::string &name) const
{
    for (const auto &[file, header] : headers)
        for (const headers::Type &type : header.types)
            if (type.name == name) return type;
    throw std::runtime_error("no header declares struct " + name);
}

Json Source::call(const QbobjOperation &operation) const
{
    const auto known = calls.find(qbcli::short_name(operation));
    return known == calls.end() ? Json::object() : known->second;  // one that is new, until the list is written anew
}

Prototype prototype_of(const headers::Function &function)
{
    const bool is_type = function.code.find("(*" + function.name + ")(") != std::string::npos;
    const std::string name = is_type ? "(*" + function.name + ")" : function.name;
    const size_t at = function.code.find(name + "(");
    if (at == std::string::npos) throw std::runtime_error("no prototype: " + function.code);
    Prototype prototype{(is_type ? "typedef " : "") + headers::trimmed(function.code.substr(0, at)), name, {}};
    const std::string inside = function.code.substr(at + name.size() + 1);
    std::istringstream arguments(inside.substr(0, inside.rfind(')')));
    for (std::string each; std::getline(arguments, each, ',');) prototype.arguments.push_back(headers::trimmed(each));
    return prototype;
}

std::string sentence(const std::string &text)
{
    return text.ends_with('.') ? text : text + ".";
}

std::string page_of(const QbobjField *type)
{
    return std::string("qbobj_") + type->name;
}

std::string operation_page(const Source &source, const QbobjOperation &operation)
{
    const Json told = qbcli::description_json(operation.name);
    Page page(operation.name, kLibrarySection, source.date);
    name(page, {operation.name}, operation.summary);
    page.section("SYNOPSIS").raw(".In qbobj.h");
    prototype(page, prototype_of(source.function(operation.name)));
    page.section("DESCRIPTION").text(told["meaning"].get<std::string>());
    page.paragraph().line(
        std::string("The operation belongs to the family \"") + operation.family + "\" and " +
        (operation.changes ? "changes the database, in one transaction." : "changes nothing, it only reads."));
    write_arguments(page, operation, told);
    write_command(page, told);
    write_return_values(page, told);
    const Json arguments = source.call(operation);
    page.section("EXAMPLES").display(c_example(operation, arguments));
    page.paragraph().line("The same from a shell:").display(shell_example(operation, arguments));
    page.paragraph().line("With --emit c, --emit c++ or --emit python that command prints a whole program.");
    write_errors(page, operation, told);
    return page.section("SEE ALSO").references(relatives_of(operation)).source();
}

std::string type_page(const Source &source, const QbobjField *type)
{
    const Json told = qbcli::description_json(type->name);
    const std::string meaning = told["meaning"].get<std::string>();
    const bool has_clear = qbobj_find_type(type->name) != nullptr;
    Page page(page_of(type), kLibrarySection, source.date);
    const std::string clear = std::string("qbobj_clear_") + type->name;
    name(page, has_clear ? std::vector<std::string>{type->name, clear} : std::vector<std::string>{type->name}, meaning);
    // Not in the marks of a function: some would not fit a line of 80 columns, and cannot be broken.
    const std::string prototype = has_clear ? "\nuint32_t " + clear + "(" + type->name + " *record);\n" : "";
    page.section("SYNOPSIS").raw(".In qbobj.h").display(source.type(type->name).code + prototype);
    page.section("DESCRIPTION").text(meaning);
    write_structure(page, type);
    page.paragraph().line("The fields are:").raw(".Bl -tag -width Ds");
    for (size_t i = 0; i < told["fields"].size(); i++) write_field(page, type, type + 1 + i, told["fields"][i]);
    return page.raw(".El").section("SEE ALSO").references(relatives_of(type)).source();
}

void write_operations(Page &page)
{
    std::vector<std::string> families;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++)
        if (std::find(families.begin(), families.end(), row->family) == families.end())
            families.emplace_back(row->family);
    for (const std::string &family : families) {
        page.subsection("Operations: " + family).raw(".Bl -tag -width Ds -compact");
        for (const QbobjOperation *row = qbobj_operations(); row->name; row++)
            if (family == row->family) page.raw(std::string(".It Xr ") + row->name + " 3").line(row->summary);
        page.raw(".El");
    }
}

void write_types(Page &page)
{
    page.raw(".Bl -tag -width Ds -compact");
    for (const QbobjField *type : qbcli::all_types()) {
        page.raw(".It Xr " + page_of(type) + " 3");
        page.line(first_of(qbobj_type_meaning(type), "\n"));
    }
    page.raw(".El");
}

void write_codes(Page &page)
{
    page.raw(".Bl -tag -width Ds -compact");
    for (const QbobjCode *row = qbobj_codes(); row->code; row++)
        page.raw(".It " + std::to_string(row->code)).line(capital(sentence(row->meaning)));
    page.raw(".El");
}

void write_members(Page &page, const std::vector<headers::Named> &members)
{
    if (members.empty()) return;
    page.paragraph().raw(".Bl -tag -width Ds -offset indent -compact");
    for (const headers::Named &member : members) page.macro("It Fa", {member.name}).text(member.text);
    page.raw(".El");
}

void write_function(Page &page, const headers::Function &function)
{
    page.paragraph();
    prototype(page, prototype_of(function));
    page.paragraph().text(function.meaning);
    write_members(page, function.arguments);
    if (!function.result.empty()) page.paragraph().text("Returns " + function.result);
    if (function.results.empty()) return;
    page.paragraph().line("Returns").raw(".Bl -tag -width Ds -offset indent -compact");
    for (const headers::Named &each : function.results) page.macro("It", {each.name}).text(each.text);
    page.raw(".El");
}

std::map<std::string, std::string> all_pages(const Source &source)
{
    std::map<std::string, std::string> pages;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++)
        pages[std::string("man3/") + row->name + ".3"] = operation_page(source, *row);
    for (const QbobjField *type : qbcli::all_types()) pages["man3/" + page_of(type) + ".3"] = type_page(source, type);
    for (const std::string name : {"qbobj.1", "libqbobj.3", "libqbdb.3"})
        pages["man" + name.substr(name.size() - 1) + "/" + name] = written_page(source, name);
    return pages;
}

}  // namespace manual
// SPDX-License-Identifier: Apache-2.0
