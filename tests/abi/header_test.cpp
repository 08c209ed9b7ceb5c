// The public headers: each compiles alone in every language and dialect that callers use, declares what the
// libraries export and nothing else, and says what each function does.
#include <algorithm>
#include <cctype>
#include <cstring>
#include <map>
#include <set>
#include <sstream>

#include "fixture/files.h"
#include "fixture/fixture.h"
#include "fixture/header_text.h"

namespace {

using test::all_declarations;
using test::Declaration;
using test::exported;
using test::headers;

bool is_installed(const std::string &program)
{
    return test::run("command -v " + program).status == 0;
}

/// Includes a header twice, so that a missing guard shows.
std::string includes(const std::string &header)
{
    return "#include \"" + header + "\"\n#include \"" + header + "\"\nint main(void) { return 0; }\n";
}

struct Dialect {
    const char *compiler;
    const char *language;
    const char *standard;
};

TEST(Headers, EachCompilesAlone)
{
    const Dialect dialects[] = {
        {"gcc", "c", "c11"},   {"gcc", "c", "c17"},   {"g++", "c++", "c++17"},     {"g++", "c++", "c++20"},
        {"clang", "c", "c11"}, {"clang", "c", "c17"}, {"clang++", "c++", "c++17"}, {"clang++", "c++", "c++20"},
    };
    ASSERT_GE(headers().size(), 10u);
    int compiled = 0;
    for (const Dialect &dialect : dialects) {
        if (!is_installed(dialect.compiler)) continue;
        for (const std::string &header : headers()) {
            const auto outcome = test::compile(
                dialect.compiler, dialect.language,
                std::string("-std=") + dialect.standard + " -Wall -Wextra -pedantic -Werror", includes(header));
            EXPECT_EQ(outcome.status, 0) << header << " as " << dialect.standard << ":\n" << outcome.output;
            compiled++;
        }
    }
    EXPECT_GT(compiled, 0);
}

TEST(Headers, AFaultInAHeaderWouldShow)
{
    EXPECT_NE(test::compile(test::c_compiler(), "c", "-std=c11 -Wall -Wextra -pedantic -Werror",
                            includes("qbobj.h") + "enum { trailing, };\nstruct {};\n")
                  .status,
              0);
}

TEST(Headers, FunctionsHaveCLinkage)
{
    // A C caller and a C++ caller mean the same symbol.
    const std::string code =
        "#include \"qbobj.h\"\n#include \"qbdb.h\"\n"
        "extern \"C\" uint32_t qbobj_clear_Share(Share *record);\n"
        "extern \"C\" const QbobjType *qbobj_types(void);\n"
        "extern \"C\" void qbdb_close(qbdb_t *qbdb);\n";
    const auto outcome = test::compile(test::cxx_compiler(), "c++", "-std=c++17 -Werror", code);
    EXPECT_EQ(outcome.status, 0) << outcome.output;
}

TEST(Headers, QbobjIncludesAllOfItsFamily)
{
    const std::string text = test::read_file(test::source_path("include/qbobj.h"));
    for (const std::string &header : headers())
        if (header.rfind("qbobj/", 0) == 0) {
            EXPECT_NE(text.find("#include \"" + header + "\""), std::string::npos) << header;
        }
}

// ---- Comments

TEST(Comments, StandBeforeEachDeclaration)
{
    int functions = 0;
    for (const Declaration &each : all_declarations()) {
        SCOPED_TRACE(each.header + ": " + each.name);
        ASSERT_FALSE(each.name.empty());
        if (!each.function) continue;  // data carries its comment behind it
        functions++;
        EXPECT_FALSE(each.comment.empty()) << "no comment";
        const size_t text = each.comment.find_first_not_of("/* \n");
        EXPECT_TRUE(text != std::string::npos &&
                    (isupper(static_cast<unsigned char>(each.comment[text])) || each.comment[text] == '@'))
            << "does not begin with a sentence";
    }
    EXPECT_GT(functions, 110);
}

/// Names that a comment explains with @param, each once.
std::vector<std::string> explained(const std::string &comment)
{
    std::vector<std::string> names;
    for (const std::string mark : {"@param", "\\param"})
        for (size_t at = comment.find(mark); at != std::string::npos; at = comment.find(mark, at + 1)) {
            std::istringstream words(comment.substr(at + mark.size()));
            std::string name;
            words >> name;
            if (name[0] == '[') words >> name;
            names.push_back(name);
        }
    return names;
}

TEST(Comments, ExplainEachParameterAndTheValueReturned)
{
    for (const Declaration &each : all_declarations()) {
        if (!each.function) continue;
        SCOPED_TRACE(each.header + ": " + each.name);
        std::vector<std::string> parameters = each.parameters;
        parameters.erase(std::remove(parameters.begin(), parameters.end(), "..."), parameters.end());
        std::vector<std::string> names = explained(each.comment);
        names.erase(std::remove(names.begin(), names.end(), "..."), names.end());
        EXPECT_EQ(names, parameters);
        const bool says =
            each.comment.find("@return") != std::string::npos || each.comment.find("\\return") != std::string::npos ||
            each.comment.find("\\retval") != std::string::npos || each.comment.find("@retval") != std::string::npos;
        EXPECT_EQ(says, each.returns_value);
    }
}

TEST(Comments, ExplainEachMember)
{
    // In a structure each member stands on a line of its own and says what it is.
    for (const std::string &header : headers()) {
        bool inside = false;
        bool open = false;  // in a comment of more than one line
        int number = 0;
        for (const std::string &line :
             test::lines_of(test::read_file(test::source_path("include/" + header)))) {
            number++;
            if (line.rfind("struct ", 0) == 0 && line.back() == '{') inside = true;
            if (line[0] == '}') inside = false;
            const size_t comment = line.find("/**<");
            const bool continued = comment == std::string::npos && (open || line.find("*/") != std::string::npos);
            open = (comment != std::string::npos || open) && line.find("*/") == std::string::npos;
            if (!inside || continued || line.find(';') == std::string::npos) continue;
            EXPECT_NE(line.find("/**<"), std::string::npos) << header << ":" << number << ": " << line;
            EXPECT_EQ(line.find("/**< */"), std::string::npos) << header << ":" << number << ": " << line;
        }
    }
}

// ---- Declarations and symbols

std::vector<std::string> declared(bool (*belongs)(const std::string &header))
{
    std::vector<std::string> names;
    for (const Declaration &each : all_declarations())
        if (belongs(each.header)) names.push_back(each.name);
    std::sort(names.begin(), names.end());
    return names;
}

std::string joined(const std::vector<std::string> &lines)
{
    std::string text;
    for (const std::string &line : lines) text += line + "\n";
    return text;
}

TEST(Symbols, ObjectLibraryExportsWhatItsHeadersDeclare)
{
    const auto names = exported("libqbobj.so");
    EXPECT_EQ(joined(names), joined(declared([](const std::string &header) { return header.rfind("qbdb", 0) != 0; })));
    test::expect_golden("tests/abi/libqbobj.symbols", joined(names));
}

TEST(Symbols, SupportLibraryExportsWhatItsHeaderDeclares)
{
    const auto names = exported("libqbdb.so");
    EXPECT_EQ(joined(names), joined(declared([](const std::string &header) { return header.rfind("qbdb", 0) == 0; })));
    test::expect_golden("tests/abi/libqbdb.symbols", joined(names));
}

std::vector<std::string> dynamic_entries(const std::string &library, const std::string &tag)
{
    const test::Outcome outcome = test::run("readelf -d '" + test::build_path(library) + "'");
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    std::vector<std::string> names;
    for (const std::string &line : test::lines_of(outcome.output)) {
        if (line.find("(" + tag + ")") == std::string::npos) continue;
        const size_t open = line.find('[');
        names.push_back(line.substr(open + 1, line.find(']') - open - 1));
    }
    std::sort(names.begin(), names.end());
    return names;
}

/// Libraries that a sanitizer, coverage or the language brings along in some builds.
bool comes_with_the_build(const std::string &name)
{
    for (const char *each : {"libasan", "libubsan", "libtsan", "libgcov", "libstdc++", "libm.", "libgcc_s",
                             "libpthread", "libdl", "ld-linux"})
        if (name.rfind(each, 0) == 0) return true;
    return false;
}

TEST(Symbols, LibrariesNeedNoMoreThanListed)
{
    for (const std::string library : {"libqbobj", "libqbdb"}) {
        auto needed = dynamic_entries(library + ".so", "NEEDED");
        needed.erase(std::remove_if(needed.begin(), needed.end(), comes_with_the_build), needed.end());
        test::expect_golden("tests/abi/" + library + ".needed", joined(needed));
    }
}

TEST(Symbols, LibrariesAreNamedByTheirMajorVersion)
{
    EXPECT_EQ(joined(dynamic_entries("libqbobj.so", "SONAME")), "libqbobj.so.1\n");
    EXPECT_EQ(joined(dynamic_entries("libqbdb.so", "SONAME")), "libqbdb.so.1\n");
}

TEST(Symbols, ObjectLibraryUsesOnlyTheListedCallsOfTheSupportLibrary)
{
    const test::Outcome outcome = test::run("nm -D --undefined-only '" + test::build_path("libqbobj.so") + "'");
    ASSERT_EQ(outcome.status, 0) << outcome.output;
    const auto ours = exported("libqbdb.so");
    std::vector<std::string> used;
    std::vector<std::string> optional;  // weak references: null where a support library has none
    for (const std::string &line : test::lines_of(outcome.output)) {
        const size_t space = line.rfind(' ');
        std::string name = line.substr(space + 1);
        name = name.substr(0, name.find('@'));
        if (!std::binary_search(ours.begin(), ours.end(), name)) continue;
        (line[space - 1] == 'U' ? used : optional).push_back(name);
    }
    std::sort(used.begin(), used.end());
    test::expect_golden("tests/abi/libqbdb.optional", joined(optional));
    const auto allowed = test::lines_of(test::read_file(test::source_path("tests/abi/libqbdb.contract")));
    EXPECT_FALSE(used.empty());
    for (const std::string &name : used)
        EXPECT_TRUE(std::find(allowed.begin(), allowed.end(), name) != allowed.end()) << name;
    for (const std::string &name : allowed)
        EXPECT_TRUE(std::binary_search(ours.begin(), ours.end(), name)) << name << " is not exported";
}

// ---- Operations

bool is_operation(const std::string &name)
{
    static const std::set<std::string> others = {
        "qbobj_types",
        "qbobj_find_type",
        "qbobj_is_secret",
        "qbobj_codes",
        "qbobj_code_meaning",
        "qbobj_field_words",
        "qbobj_operations",
        "qbobj_find_operation",
        "qbobj_api2_utils_dump_object",
        "qbobj_api2_dump_struct",
        "qbobj_type_meaning",
        "qbobj_field_meaning",
        "qbobj_operation_meaning",
        "qbobj_argument_meaning",
        "qbobj_result_meaning",
        "qbobj_field_traits",
        "qbobj_argument_traits",
        "qbobj_argument_field_traits",
        "qbobj_argument_addresses",
        "qbobj_field_direction",
        "qbobj_field_is_list",
        "qbobj_field_indicator",
        "qbobj_type_key_word",
        "qbobj_row_size",
        "qbobj_version",
    };
    return name.rfind("qbobj_", 0) == 0 && name.rfind("qbobj_clear_", 0) != 0 &&
           name.rfind("qbobj_validate_", 0) != 0 && !others.count(name);
}

TEST(OperationTable, ListsEveryExportedOperationAndNoOther)
{
    std::vector<std::string> listed;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++)
        if (strcmp(row->family, "legacy") != 0) listed.push_back(row->name);
    std::sort(listed.begin(), listed.end());
    std::vector<std::string> symbols;
    for (const std::string &name : exported("libqbobj.so"))
        if (is_operation(name)) symbols.push_back(name);
    EXPECT_EQ(joined(listed), joined(symbols));
}

TEST(OperationTable, NamesArgumentsAsTheHeaderDoes)
{
    std::map<std::string, std::vector<std::string>> parameters;
    for (const Declaration &each : all_declarations()) parameters[each.name] = each.parameters;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) {
        SCOPED_TRACE(row->name);
        std::vector<std::string> names = {"qbdb", "db"};
        for (uint32_t i = 0; i < row->count; i++) names.push_back(row->arguments[i].name);
        names.push_back("err");
        EXPECT_EQ(parameters[row->name], names);
    }
}

TEST(OperationTable, SaysWhichArgumentsMayBeNullAsTheHeaderDoes)
{
    // The comment of an argument that may be null says so.
    std::map<std::string, Declaration> found;
    for (const Declaration &each : all_declarations()) found[each.name] = each;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) {
        for (uint32_t i = 0; i < row->count; i++) {
            const QbobjArgument &argument = row->arguments[i];
            if (!argument.optional) continue;
            const std::string &comment = found[row->name].comment;
            size_t at = comment.find(std::string("@param ") + argument.name + " ");
            if (at == std::string::npos) at = comment.find(std::string("\\param ") + argument.name + " ");
            ASSERT_NE(at, std::string::npos) << row->name << " " << argument.name;
            const std::string text = comment.substr(at, comment.find_first_of("@\\", at + 1) - at);
            EXPECT_TRUE(text.find("null") != std::string::npos || text.find("Null") != std::string::npos)
                << row->name << ": " << text;
        }
    }
}

/// The numbers of what is returned that can be codes: those of one digit and those from 800 on.
std::set<std::string> codes_of(const std::string &comment)
{
    std::set<std::string> codes;
    std::istringstream words(comment.substr(comment.find("@return")));
    std::string word;
    for (std::string next; words >> next; word = next.substr(0, next.find_last_not_of(";,.:") + 1)) {
        if (next == "to") continue;  // a range of something else
        const bool number = !word.empty() && word.find_first_not_of("0123456789") == std::string::npos;
        if (number && word != "0" && (word.size() == 1 || (word.size() == 3 && word >= "800"))) codes.insert(word);
    }
    return codes;
}

TEST(OperationTable, ListsTheCodesThatTheHeaderDoes)
{
    std::map<std::string, std::string> comments;
    for (const Declaration &each : all_declarations()) comments[each.name] = each.comment;
    int compared = 0;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) {
        SCOPED_TRACE(row->name);
        std::string comment = comments[row->name];
        const std::string other = "@return As ";
        if (const size_t at = comment.find(other); at != std::string::npos) {
            const size_t name = at + other.size();
            comment = comments[comment.substr(name, comment.find('(', name) - name)];
        }
        ASSERT_NE(comment.find("@return"), std::string::npos);
        if (row->returns != QBOBJ_RETURNS_CODE) {
            EXPECT_STREQ(row->codes, "");
            continue;
        }
        std::set<std::string> listed;
        std::istringstream codes(row->codes);
        for (std::string code; codes >> code;) EXPECT_TRUE(listed.insert(code).second) << code << " stands twice";
        EXPECT_EQ(listed, codes_of(comment));
        compared++;
    }
    EXPECT_GT(compared, 0);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
