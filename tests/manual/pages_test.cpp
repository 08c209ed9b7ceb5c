// The pages that the build wrote: one for everything there is, each whole and without a complaint of the formatter.
#include <gmock/gmock.h>

#include <filesystem>
#include <map>
#include <regex>
#include <set>

#include "describe.h"
#include "fixture/files.h"
#include "manual/rendered.h"
#include "qbobj.h"

using testing::HasSubstr;

namespace {

std::string folder()
{
    return test::build_path("tools/manual");
}

/// The source of each page by its file's name.
const std::map<std::string, std::string> &pages()
{
    static const std::map<std::string, std::string> all = [] {
        std::map<std::string, std::string> found;
        for (const char *section : {"man1", "man3"})
            for (const auto &entry : std::filesystem::directory_iterator(folder() + "/" + section))
                found[entry.path().filename()] = test::read_file(entry.path());
        return found;
    }();
    return all;
}

const std::string &page(const std::string &name)
{
    static const std::string none;
    const auto found = pages().find(name);
    EXPECT_NE(found, pages().end()) << name;
    return found == pages().end() ? none : found->second;
}

/// Letters and digits only: marks and line ends do not count.
std::string words_of(const std::string &text)
{
    std::string words;
    const std::string plain =
        std::regex_replace(text, std::regex("\\\\\\[u[0-9A-F]+\\]|\\\\\\(..|\\\\e|\n\\.[A-Z][a-z][^\n]*"), "");
    for (const char c : plain)
        if (isalnum(static_cast<unsigned char>(c))) words += c;
    return words;
}

/// What follows a macro, for each of its lines.
std::vector<std::string> lines_with(const std::string &source, const std::string &macro)
{
    std::vector<std::string> found;
    for (const std::string &line : test::lines_of(source))
        if (line.starts_with("." + macro + " ")) found.push_back(line.substr(macro.size() + 2));
    return found;
}

TEST(Pages, ThereIsOneForEachOperationAndTypeAndForWhatHoldsThem)
{
    std::set<std::string> wanted = {"qbobj.1", "libqbobj.3", "libqbdb.3"};
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) wanted.insert(std::string(row->name) + ".3");
    for (const QbobjType *row = qbobj_types(); row->name; row++)
        wanted.insert(std::string("qbobj_") + row->name + ".3");
    wanted.insert("qbobj_FolderAttribute.3");  // an argument's type that is in no table of types
    std::set<std::string> there;
    for (const auto &[name, source] : pages()) there.insert(name);
    EXPECT_EQ(there, wanted);
}

TEST(Pages, AnOperationsPageSaysAllThatIsKnown)
{
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) {
        SCOPED_TRACE(row->name);
        const std::string &source = page(std::string(row->name) + ".3");
        const std::string words = words_of(source);
        EXPECT_THAT(source, HasSubstr(std::string(".Nm ") + row->name + "\n"));
        EXPECT_THAT(words, HasSubstr(words_of(qbobj_operation_meaning(row))));
        EXPECT_THAT(words, HasSubstr(words_of(qbobj_result_meaning(row))));
        EXPECT_THAT(words, HasSubstr(words_of(row->family)));
        std::istringstream codes(row->codes);
        for (std::string code; codes >> code;) EXPECT_THAT(source, HasSubstr("\n.It " + code + "\n"));
        for (uint32_t i = 0; i < row->count; i++) {
            const QbobjArgument &argument = row->arguments[i];
            EXPECT_THAT(source, testing::ContainsRegex("\n\\.It Fa (\\\\&)?" + std::string(argument.name) + " Pq "));
            const std::string said = qbobj_argument_meaning(row, &argument);
            // Without the direction, and whatever the case of its first letter.
            EXPECT_THAT(words,
                        HasSubstr(words_of(std::regex_replace(said, std::regex("^(In and out|Out|In): ."), ""))));
            if (!argument.type) continue;
            EXPECT_THAT(source, testing::ContainsRegex("\n\\.Xr qbobj_" + std::string(argument.type->name) + " 3"));
        }
    }
}

TEST(Pages, AnOperationsPrototypeHasTheArgumentsOfTheTable)
{
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) {
        std::vector<std::string> wanted = {"qbdb", "db"};
        for (uint32_t i = 0; i < row->count; i++) wanted.emplace_back(row->arguments[i].name);
        wanted.emplace_back("err");
        std::vector<std::string> names;
        for (const std::string &each : lines_with(page(std::string(row->name) + ".3"), "Fa"))
            names.push_back(std::regex_replace(each, std::regex(".*[ *]([A-Za-z0-9_]+)\"?$"), "$1"));
        EXPECT_EQ(names, wanted) << row->name;
    }
}

TEST(Pages, ATypesPageSaysAllThatIsKnown)
{
    for (const QbobjField *type : qbcli::all_types()) {
        SCOPED_TRACE(type->name);
        const std::string &source = page(std::string("qbobj_") + type->name + ".3");
        const std::string words = words_of(source);
        EXPECT_THAT(words, HasSubstr(words_of(qbobj_type_meaning(type))));
        for (const QbobjField *field = type + 1; field->kind != '.'; field++) {
            EXPECT_THAT(source, testing::ContainsRegex("\n\\.It Fa (\\\\&)?" + std::string(field->name) + " Pq "));
            EXPECT_THAT(words, HasSubstr(words_of(qbobj_field_meaning(type, field))));
        }
    }
}

/// The structures that the pages show are those of the headers: their fields lie where the tables say.
TEST(Pages, TheStructuresAreTheOnesOfTheLibrary)
{
    std::string program = "#include <stddef.h>\n#include <qbobj/types.h>\n";
    std::string checks;
    for (const QbobjType *row = qbobj_types(); row->name; row++) {
        const std::string &source = page(std::string("qbobj_") + row->name + ".3");
        const size_t begin = source.find("\n.Bd ") + 1;
        program +=
            source.substr(source.find('\n', begin), source.find("\n.Ed", begin) - source.find('\n', begin)) + "\n";
        const std::string name = row->name;
        checks += "_Static_assert(sizeof(" + name + ") == " + std::to_string(row->fields->position) + ", \"\");\n";
        for (const QbobjField *field = row->fields + 1; field->kind != '.'; field++) {
            const std::string member = name + ", " + field->name;
            const char *size = field->kind == 'i' || field->kind == 'u' ? "4" : "8";
            checks += "_Static_assert(offsetof(" + member + ") == " + std::to_string(field->position) + ", \"" + name +
                      "." + field->name + "\");\n";
            checks += "_Static_assert(sizeof ((" + name + " *)0)->" + field->name + " == " + size + ", \"" + name +
                      "." + field->name + "\");\n";
        }
    }
    const test::Outcome outcome = test::compile(
        test::c_compiler(), "c", "-std=c11 -Wall -Werror -I" + test::source_path("include"), program + checks);
    EXPECT_EQ(outcome.status, 0) << outcome.output;
}

TEST(Pages, TheFormatterHasNothingToComplainOf)
{
    for (const char *section : {"man1", "man3"}) {
        const test::Outcome outcome = test::run("mandoc -Tlint -W warning " + folder() + "/" + section + "/*");
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.output, "");
    }
}

TEST(Pages, AreAsciiAndReferToPagesThatThereAre)
{
    for (const auto &[name, source] : pages()) {
        EXPECT_TRUE(std::all_of(source.begin(), source.end(), [](char c) { return c > 0; })) << name;
        for (const std::string &line : lines_with(source, "Xr")) {
            std::istringstream words(line);
            std::string other;
            std::string section;
            words >> other >> section;
            EXPECT_TRUE(other == "sqlite3" || pages().contains(other + "." + section)) << name << ": " << line;
            EXPECT_NE(other + "." + section, name);
        }
    }
}

/// What the program says of its options and commands stands in its page.
TEST(Pages, TheProgramsPageHasEveryOptionAndCommand)
{
    const std::string program = test::build_path("tools/qbobj/qbobj");
    const std::string text = test::rendered(folder() + "/man1/qbobj.1");
    const std::string help = test::run(program + " --help").output;
    std::set<std::string> commands;
    std::istringstream listed(help.substr(help.find("\nCommands:\n") + 11));
    for (std::string line; std::getline(listed, line) && line.starts_with("  ");)
        if (line[2] != ' ') commands.insert(line.substr(2, line.find(' ', 2) - 2));
    EXPECT_GE(commands.size(), 12u);
    std::string all = help.substr(0, help.find("\nArguments of an operation:"));
    for (const std::string &command : commands) {
        EXPECT_THAT(text, testing::ContainsRegex("\n     " + command + "( |\n)"));
        all += test::run(program + " help " + command).output;
    }
    const std::regex option("(^|[ ,\n])(--[a-z-]+)");
    for (std::sregex_iterator at(all.begin(), all.end(), option), end; at != end; ++at)
        EXPECT_THAT(text, HasSubstr((*at)[2].str()));
}

TEST(Pages, TheLibrariesPagesHaveEveryExportedFunction)
{
    const std::string libraries = page("libqbobj.3") + page("libqbdb.3");
    for (const char *library : {"libqbobj", "libqbdb"})
        for (const std::string &symbol :
             test::lines_of(test::read_file(test::source_path("tests/abi/" + std::string(library) + ".symbols")))) {
            const std::string name = symbol.substr(symbol.rfind(' ') + 1);
            if (!std::regex_match(name, std::regex("(qbobj|qbdb|get)_[A-Za-z0-9_]+"))) continue;
            const bool has_page = pages().contains(name + ".3") || name.starts_with("qbobj_clear_");
            EXPECT_TRUE(has_page || libraries.find(name + "\n") != std::string::npos) << name;
        }
}

TEST(Pages, OneInFull)
{
    test::expect_golden("tests/manual/qbobj_getLog.txt", test::rendered(folder() + "/man3/qbobj_getLog.3"));
    test::expect_golden("tests/manual/qbobj_SystemUser.txt", test::rendered(folder() + "/man3/qbobj_SystemUser.3"));
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
