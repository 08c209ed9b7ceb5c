// --emit: the programs of every operation compile, and do what the command line does.
#include "emit.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>

#include "call.h"
#include "cli/run.h"
#include "command_line.h"
#include "fixture/files.h"
#include "qbdb_journal.h"
#include "utf8.h"

namespace {

using qbcli::Json;
using testing::HasSubstr;
using testing::Not;

// ---- Every operation

/// A value of a type with everything in it: numbers at their ends, texts that are hard to write, lists of two.
Json full_record(const QbobjField *type);

Json full_value(const QbobjField *field)
{
    switch (field->kind) {
        case 'i': return INT32_MIN;
        case 'u': return UINT32_MAX;
        case 'l': return INT64_MIN;
        case 'n': return UINT64_MAX;
        case 's':
            return "q\"uote'd\\ ?\?/ ?\?=\n\t\x01"
                   "7\x7f \u00e4\u00f6 \u202e {} %s %d */ // \U0001F600";
        default: break;
    }
    const Json part = full_record(field->subtype);
    return qbcli::is_list(field->subtype) ? Json::array({part, part}) : part;
}

Json full_record(const QbobjField *type)
{
    Json record = Json::object();
    for (const QbobjField *field = type + 1; field->kind != '.'; field++) record[field->name] = full_value(field);
    if (qbcli::has_key_word(type)) record[qbcli::kKeyWord] = "the key";
    return record;
}

/// A document for an operation: everything given, or nothing that may be left out.
Json document_for(const QbobjOperation &operation, bool full)
{
    Json document = Json::object();
    for (uint32_t i = 0; i < operation.count; i++) {
        const QbobjArgument &argument = operation.arguments[i];
        if (!qbcli::is_input(argument)) continue;
        if (argument.kind == QBOBJ_KIND_STRING && (full || !argument.optional)) document[argument.name] = "a \"text\"";
        else if (argument.kind == QBOBJ_KIND_INT32) document[argument.name] = full ? INT32_MIN : 1;
        else if (argument.kind == QBOBJ_KIND_UINT64) document[argument.name] = UINT64_MAX;
        else if (full && argument.type) document[argument.name] = full_record(argument.type);
    }
    return document;
}

std::string written(const QbobjOperation &operation, bool full, qbcli::Language language)
{
    qbcli::StandardInput input;
    qbcli::Arguments arguments(operation, input);
    arguments.take(document_for(operation, full));
    qbcli::DatabaseOptions database;
    database.path = "it's \"here\".db";
    if (full) database.who = database.root = "so\\me\"body";
    return qbcli::emit(language, {operation, arguments, {}, database});
}

/// A program in its parts.
struct Parts {
    std::string includes;
    std::string rest;
};

Parts parts_of(const std::string &program)
{
    Parts parts;
    for (const std::string &line : test::lines_of(program))
        (line.starts_with("#include") ? parts.includes : parts.rest) += line + "\n";
    return parts;
}

/// A program in C++ in a namespace of its own, its main() by the name "program".
std::string in_namespace(size_t number, const std::string &rest)
{
    return "namespace program_" + std::to_string(number) + " {\n" +
           std::regex_replace(rest, std::regex("\nint main\\("), "\nint program(") + "}\n";
}

/// A program in C with names of its own for all that it defines.
std::string in_own_names(size_t number, const std::string &rest)
{
    static const std::regex definition("\n(?:static )?(?:const )?\\w+ \\*?(\\w+)\\(");
    std::string before;
    std::string after;
    for (std::sregex_iterator at(rest.begin(), rest.end(), definition), end; at != end; ++at) {
        const std::string name = (*at)[1];
        before += "#define " + name + " " + name + "_" + std::to_string(number) + "\n";
        after += "#undef " + name + "\n";
    }
    return before + rest + after;
}

/// Programs joined as far as they include the same: a compiler reads that once then.
template <class Separate>
std::vector<std::string> joined(const std::vector<std::string> &programs, Separate separate)
{
    std::map<std::string, std::string> by_includes;
    for (size_t i = 0; i < programs.size(); i++) {
        const Parts parts = parts_of(programs[i]);
        by_includes[parts.includes] += separate(i, parts.rest);
    }
    std::vector<std::string> texts;
    for (const auto &[includes, rest] : by_includes) texts.push_back(includes + rest);
    return texts;
}

std::vector<std::string> every_program(qbcli::Language language, bool first_full)
{
    std::vector<std::string> programs;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++)
        programs.push_back(written(*row, (programs.size() % 2 == 0) == first_full, language));
    EXPECT_GT(programs.size(), 190u);
    return programs;
}

struct Emitted : test::Program {
    const std::string flags =
        test::compile_flags() + " $(pkg-config --cflags libxml-2.0) -I'" + test::source_path("include") +
        "' " QBOBJ_PROGRAM_FLAGS " -Wall -Wextra -Wpedantic -Wconversion -Wno-overlength-strings -Werror ";

    void write_all(const std::string &ending, const std::vector<std::string> &texts) const
    {
        for (size_t i = 0; i < texts.size(); i++) file("all_" + std::to_string(i) + ending, texts[i]);
    }

    void expect_compiled(const std::string &command) const
    {
        const auto outcome = test::run("cd '" + directory.path + "' && " + command);
        EXPECT_EQ(outcome.status, 0) << outcome.output.substr(0, 4000);
    }
};

TEST_F(Emitted, EveryOperationCompilesInC)
{
    write_all(".c", joined(every_program(qbcli::Language::kC, false), in_own_names));
    expect_compiled("'" + test::c_compiler() + "' -std=gnu11 -fsyntax-only " + flags + " all_*.c");
}

TEST_F(Emitted, EveryOperationCompilesInCpp)
{
    write_all(".cpp", joined(every_program(qbcli::Language::kCpp, true), in_namespace));
    expect_compiled("'" + test::cxx_compiler() + "' -std=c++20 -fsyntax-only " + flags + " all_*.cpp");
}

// ---- The same as the command line

struct Line {
    std::vector<std::string> words;
    std::string input;
};

/// Some 10,000 characters that are hard to write.
std::string long_text()
{
    std::string text;
    while (text.size() < 10000) text += "'\"\\$`?\?!\n\t\u00fc\u4e2d%s";
    return text;
}

std::vector<Line> lines()
{
    const std::string nasty = "q\"u'o\\te ?\?= ?\?/ $HOME `id` %s\n2nd\tline \u00e4\u4e2d\u202e !x #";
    const std::string rights = R"("FileCreateGroupRights":"ReadWrite","FileCreateEveryoneRights":"ReadOnly",)"
                               R"("FolderCreateGroupRights":"ReadWrite","FolderCreateEveryoneRights":"ReadOnly")";
    const std::string cifs = "\"Cifs\":{\"DefaultAccess\":\"Disabled\"," + rights +
                             R"(,"UserAcl":[{"User":{"resource_id":100},"Access":"ReadWrite"}]})";
    return {
        // the system log
        {{"addLog", "time=5", "severity=err", "category=disk", "msgTag=LOGMSG_X", "argsXml=" + nasty}, ""},
        {{"addLog", "5", "loud"}, ""},
        {{"getLog", "severity=info", "limit=1", "offset=1"}, ""},
        {{"deleteLog", "null"}, ""},
        {{"truncateLog", "-5"}, ""},
        // older entry points
        {{"setRegistryEntry", "key=" + nasty, "val=" + nasty}, ""},
        {{"setRegistryEntry", "key=long", "val=" + long_text()}, ""},
        {{"setRegistryEntry", "key=empty", "val="}, ""},
        {{"setRegistryEntry", "key=none"}, ""},
        {{"getRegistryEntry", "known"}, ""},
        {{"getFolderAttribute", "/tank/media"}, ""},
        // accounts
        {{"addUser", "UserName=dora", "GroupName=users", "Password=-", "Email=" + nasty}, "wonder\"land\n"},
        {{"addUser", "UserName=anna", "GroupName=users", "Password=-"}, "secret\n"},
        {{"addUser", R"([{"UserName":"emil","GroupName":"users"},{"UserName":"fritz","GroupName":"family"}])"}, ""},
        {{"addUser", "null"}, ""},
        {{"modifyUser", "UserId=100", "Password=" + std::string(masked_password),
          "HomeFolderSettings.SizeLimit=18446744073709551615"},
         ""},
        {{"getUserCollection", "order=-1"}, ""},
        {{"getUser", "UserId=100"}, ""},
        {{"getUser", "UserId=4711"}, ""},
        {{"getUID", "anna"}, ""},
        {{"getUID", "nobody there"}, ""},
        {{"getPosixUIDGID", "root"}, ""},
        {{"isMemberOfGroup", "anna", "users"}, ""},
        {{"isMemberOfGroup", "anna", "family"}, ""},
        {{"addGroup", "GroupName=choir", R"(SecondaryMember=[{"UserId":100},{"UserId":101}])"}, ""},
        {{"setMyPassword", "UserName=anna", "NewPassword=-", "OldPassword=-"}, "looking glass\nsecret\n"},
        {{"getSmbUserNameMapCount", "anna", "uname"}, ""},
        {{"getSecurity"}, ""},
        // shares and services
        {{"addShare", "{\"ShareName\":\"box\",\"VolumeId\":\"tank\",\"QuotaMB\":500," + cifs + "}"}, ""},
        {{"getShareCollection"}, ""},
        {{"getProtocolCollection"}, ""},
        {{"setProtocolEnable", "FTP", "1"}, ""},
        {{"getDictionary"}, ""},
        {{"getTranslatedString", "languageWish=de-de", "key=Yes", "defaultText=" + nasty}, ""},
        // storage, backup, system
        {{"getVolumeCollection"}, ""},
        {{"setDiskSpare", "flag=1"}, ""},
        {{"getSnapshotCollectionCount", "type=0", "from=0", "to=0"}, ""},
        {{"getLunId", "none"}, ""},
        {{"addInitiator", "Name=laptop", "ChapAuth=1", "ChapSecret=-"}, "twelve letters\n"},
        {{"getInitiatorCollection"}, ""},
        {{"hasBackupJob", "1"}, ""},
        {{"addBackupJob", "JobName=night", "Source.Type=share", "Source.ShareNameOrProtocol=media",
          "Destination.Type=remote", "Destination.Login=a", "Destination.Password=-", "Schedule.Enabled=1",
          "Option.RsyncExclude=" + nasty},
         "pass\n"},
        {{"addNetworkInterface", "Name=eth7", "Mac=0:1:2:3:4:5", "Protocol=" + nasty, "IP=10.0.0.1"}, ""},
        {{"deleteNetworkInterface", "eth9"}, ""},
        {{"addUpsConfig", "Name=cellar", "Type=remote", "Port=10.0.0.9", "RemoteUserName=watch", "RemotePassword=-"},
         "pw\n"},
        {{"getUpsConfigCollection"}, ""},
    };
}

/// What the programs print of a value, made of the command line's JSON.
void show(std::string &text, const std::string &name, const Json &value, const QbobjField *type, size_t indent)
{
    if (value.is_array() && type && !qbcli::is_list(type) && qbcli::is_bare_list(type))
        return show(text, name, Json{{type[1].name, value}}, type, indent);
    if (value.is_array()) {
        for (const Json &each : value) show(text, name, each, type, indent);
        return;
    }
    const std::string space(indent, ' ');
    if (value.is_object()) {
        text += space + name + ":\n";
        for (const auto &[member, part] : value.items()) {
            const QbobjField *field = qbcli::find_field(type, member);
            show(text, member, part, field ? field->subtype : nullptr, indent + 2);
        }
    } else if (!value.is_null()) {
        text += space + name + ": " + (value.is_string() ? value.get<std::string>() : value.dump()) + "\n";
    }
}

std::string shown(const QbobjOperation &operation, const std::string &printed)
{
    if (printed.empty()) return "";
    const Json outcome = Json::parse(printed);
    std::vector<const QbobjArgument *> outputs;
    for (uint32_t i = 0; i < operation.count; i++)
        if (operation.arguments[i].direction != QBOBJ_IN) outputs.push_back(&operation.arguments[i]);
    std::string text;
    const bool alone = outputs.size() == 1 && outputs[0]->type && !qbcli::returns_answer(operation);
    if (alone) show(text, outputs[0]->name, outcome, outputs[0]->type, 0);
    else
        for (const auto &[name, value] : outcome.items()) {
            const QbobjField *type = nullptr;
            for (const QbobjArgument *output : outputs)
                if (name == output->name) type = output->type;
            show(text, name, value, type, 0);
        }
    return text;
}

/// Everything in a database but what is salted: of a secret only whether it is there.
std::string content(const std::string &path)
{
    sqlite3 *db = nullptr;
    EXPECT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
    const auto each_row = [db](const std::string &sql, const auto &visit) {
        sqlite3_stmt *stmt = nullptr;
        EXPECT_EQ(sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr), SQLITE_OK) << sql;
        while (sqlite3_step(stmt) == SQLITE_ROW) visit(stmt);
        sqlite3_finalize(stmt);
    };
    const auto column = [](sqlite3_stmt *stmt, int i) {
        const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(stmt, i));
        return std::string(text ? text : "NULL");
    };
    std::vector<std::string> tables;
    each_row("SELECT name FROM sqlite_schema WHERE type='table' ORDER BY name",
             [&](sqlite3_stmt *stmt) { tables.push_back(column(stmt, 0)); });
    std::string text;
    for (const std::string &table : tables)
        each_row("SELECT * FROM \"" + table + "\"", [&](sqlite3_stmt *stmt) {
            text += table;
            for (int i = 0; i < sqlite3_column_count(stmt); i++) {
                const bool secret = qbdb_is_secret_column(table.c_str(), sqlite3_column_name(stmt, i)) &&
                                    sqlite3_column_bytes(stmt, i) > 0;
                text += "|" + (secret ? "(secret)" : column(stmt, i));
            }
            text += "\n";
        });
    sqlite3_close(db);
    // When a share was made.
    return std::regex_replace(text, std::regex("20\\d\\d-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d"), "(now)");
}

/// What a command line came to.
struct Effect {
    test::Result said;
    std::string content;
};

/// A database with something in it, and what each line comes to on a copy of it: made once for all tests.
struct Shared {
    test::TemporaryDirectory directory;
    std::string path = directory.path + "/base.db";
    std::vector<Effect> effects;

    std::string copy(const std::string &name) const
    {
        const std::string whole = directory.path + "/" + name;
        std::filesystem::copy_file(path, whole, std::filesystem::copy_options::overwrite_existing);
        return whole;
    }
};

struct Equal : Emitted {
    const std::vector<Line> all = lines();

    Equal()
    {
        setenv("ASAN_OPTIONS", "detect_leaks=0", 1);  // the programs' secrets live as long as they do
        if (!shared) make_shared();
    }
    ~Equal() override { unsetenv("ASAN_OPTIONS"); }
    static void TearDownTestSuite() { shared.reset(); }

    void make_shared() const
    {
        shared = std::make_unique<Shared>();
        EXPECT_EQ(run({"init", shared->path, "--volume", "tank"}).status, 0);
        std::string calls;
        const auto call = [&calls](const char *name, const Json &args) {
            calls += Json{{"call", name}, {"args", args}}.dump() + "\n";
        };
        call("addGroup", {{"GroupName", "family"}});
        for (const char *name : {"anna", "bert"})
            call("addUser", {{"UserName", name}, {"GroupName", "users"}, {"Password", "secret"}});
        call("addShare", {{"ShareName", "media"}, {"VolumeId", "tank"}});
        call("setRegistryEntry", {{"key", "known"}, {"val", "two\nlines"}});
        for (int i = 1; i < 4; i++)
            call("addLog", {{"time", i}, {"severity", "notice"}, {"msgTag", "LOGMSG_" + std::to_string(i)}});
        call("addInitiator", {{"Name", "desk"}, {"ChapAuth", 1}, {"ChapSecret", "twelve letters"}});
        const test::Result made = run({"-d", shared->path, "batch", "--stop-on-error"}, calls);
        EXPECT_EQ(made.status, 0) << made.out;
        for (const Line &line : all) {
            const std::string database = shared->copy("expected.db");
            std::vector<std::string> words = line.words;
            words.insert(words.begin(), {"-d", database, "--compact"});
            const test::Result said = run(words, line.input);
            EXPECT_NE(said.status, 2) << said.err;
            shared->effects.push_back({said, content(database)});
        }
    }

    /// What --emit prints for a command line.
    std::string emitted(const std::string &language, const Line &line) const
    {
        std::vector<std::string> words = line.words;
        words.insert(words.begin(), {"--emit", language});
        testing::internal::CaptureStdout();
        EXPECT_EQ(qbcli::run(words), 0) << line.words[0];
        return testing::internal::GetCapturedStdout();
    }

    /// Runs the programs by a command each, and compares.
    /// @param full_name Failures begin with the function's name, not the operation's.
    /// @param command Words of the command for a line's number and a database.
    template <class Command>
    void expect_the_same(bool full_name, Command command)
    {
        for (size_t i = 0; i < all.size(); i++) {
            const Line &line = all[i];
            SCOPED_TRACE(line.words[0] + " " + (line.words.size() > 1 ? line.words[1].substr(0, 60) : ""));
            const QbobjOperation *operation = qbobj_find_operation(line.words[0].c_str());
            const test::Result &said = shared->effects[i].said;
            const std::string database = shared->copy("actual.db");
            const test::Result result = test::run_command(command(i, database), line.input);
            EXPECT_EQ(result.status, said.status) << result.err;
            EXPECT_EQ(result.out, shown(*operation, said.out));
            EXPECT_EQ(content(database), shared->effects[i].content);
            const std::string failure = "qbobj: " + line.words[0] + ": ";
            if (said.err.starts_with(failure) && isdigit(static_cast<unsigned char>(said.err[failure.size()]))) {
                // The command line writes control characters out.
                const std::string own = qbcli::printable(result.err.substr(0, result.err.size() - 1)) + "\n";
                const std::string name = full_name ? operation->name : line.words[0];
                EXPECT_EQ(own, name + said.err.substr(failure.size() - 2));
            }
        }
    }

    static std::unique_ptr<Shared> shared;
};

std::unique_ptr<Shared> Equal::shared;

TEST_F(Equal, InC)
{
    std::vector<std::string> programs;
    std::string declarations = "#include <stdlib.h>\n";
    std::string cases;
    for (const Line &line : all) {
        const std::string main = "main_" + std::to_string(programs.size());
        declarations += "int " + main + "(int argc, char **argv);\n";
        cases += "        case " + std::to_string(programs.size()) + ": return " + main + "(argc - 1, argv + 1);\n";
        programs.push_back(emitted("c", line));
    }
    write_all(".c", joined(programs, in_own_names));
    file("driver.c", declarations + "int main(int argc, char **argv)\n{\n    switch (atoi(argv[1])) {\n" + cases +
                         "        default: return 99;\n    }\n}\n");
    expect_compiled("'" + test::c_compiler() + "' -std=gnu11 -O0 " + flags + " driver.c all_*.c -o program -L'" +
                    test::build_path("") + "' -lqbobj -lqbdb -lxml2 -Wl,-rpath,'" + test::build_path("") + "'");
    expect_the_same(false, [&](size_t i, const std::string &database) {
        return std::vector<std::string>{directory.path + "/program", std::to_string(i), database};
    });
}

TEST_F(Equal, InCpp)
{
    std::string includes;
    std::string programs;
    std::string cases;
    for (size_t i = 0; i < all.size(); i++) {
        const Parts parts = parts_of(emitted("c++", all[i]));
        includes += parts.includes;
        programs += in_namespace(i, parts.rest);
        cases += "        case " + std::to_string(i) + ": return program_" + std::to_string(i) +
                 "::program(argc - 1, argv + 1);\n";
    }
    file("program.cpp", includes + programs +
                            "int main(int argc, char **argv)\n{\n    switch (std::stoi(argv[1])) {\n" + cases +
                            "        default: return 99;\n    }\n}\n");
    expect_compiled("'" + test::cxx_compiler() + "' -std=c++20 -O0 " + flags + " program.cpp -o program -L'" +
                    test::build_path("") + "' -lqbobj -lqbdb -lsqlite3 -lxml2 -Wl,-rpath,'" + test::build_path("") +
                    "'");
    expect_the_same(true, [&](size_t i, const std::string &database) {
        return std::vector<std::string>{directory.path + "/program", std::to_string(i), database};
    });
}

TEST_F(Equal, InPython)
{
    for (size_t i = 0; i < all.size(); i++) file("program_" + std::to_string(i) + ".py", emitted("python", all[i]));
    setenv("PYTHONPATH", test::source_path("python").c_str(), 1);
    setenv("QBOBJ_LIBRARY", test::build_path("libqbobj.so").c_str(), 1);
    setenv("PYTHONDONTWRITEBYTECODE", "1", 1);
    // An interpreter without sanitizers can load a library with them when their runtime is there first, and behind it
    // the library whose functions the runtime stands before.
    const std::string runtime =
        test::run("printf %s \"$(" + test::cxx_compiler() + " -print-file-name=libasan.so)\"").output;
    const bool sanitized = std::string_view(QBOBJ_PROGRAM_FLAGS).find("address") != std::string_view::npos;
    if (sanitized) setenv("QBOBJ_PRELOAD", (runtime + " libcrypt.so.1").c_str(), 1);
    expect_the_same(false, [&](size_t i, const std::string &database) {
        const std::string program = directory.path + "/program_" + std::to_string(i) + ".py";
        return std::vector<std::string>{
            "/bin/sh", "-c", "LD_PRELOAD=\"$QBOBJ_PRELOAD\" exec /usr/bin/python3 \"$0\" \"$1\"", program, database};
    });
    for (const char *name : {"PYTHONPATH", "QBOBJ_LIBRARY", "PYTHONDONTWRITEBYTECODE", "QBOBJ_PRELOAD"}) unsetenv(name);
}

TEST_F(Equal, InTheShell)
{
    const std::string path_of_tool = test::build_path("tools/qbobj");
    for (size_t i = 0; i < all.size(); i++) {
        SCOPED_TRACE(all[i].words[0]);
        const std::string line = emitted("shell", all[i]);
        EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1);
        // The words that come out of the line are those that went in.
        const auto words =
            test::run_command({"/bin/bash", "--norc", "-c", "qbobj() { printf '%s\\0' \"$@\"; }; " + line});
        std::string wanted;
        for (const std::string &word : all[i].words) wanted += word + '\0';
        EXPECT_EQ(words.out, wanted);
    }
    const Line &nasty = all[0];
    const std::string database = shared->copy("actual.db");
    const std::string script =
        "PATH='" + path_of_tool + "':$PATH; export QBOBJ_DB='" + database + "'; " + emitted("shell", nasty);
    EXPECT_EQ(test::run_command({"/bin/bash", "--norc", "-c", script}).status, 0);
    EXPECT_EQ(content(database), shared->effects[0].content);
}

// ---- Secrets, options, literals

TEST_F(Equal, ASecretIsNeverPrinted)
{
    const std::string document =
        file("users.json", R"([{"UserName":"gerd","GroupName":"users","Password":"opensesame"}])");
    for (const char *language : {"c", "c++", "python", "shell"}) {
        SCOPED_TRACE(language);
        const std::string program = emitted(language, {{"addUser", "@" + document}, ""});
        EXPECT_THAT(program, Not(HasSubstr("opensesame")));
        EXPECT_THAT(program,
                    HasSubstr(std::string(language) == "shell" ? "users.json" : "read_secret(\"user.Password\")"));
        const test::Result visible = run({"--emit", language, "addUser", "UserName=a", "Password=opensesame"});
        EXPECT_EQ(visible.status, 2);
        EXPECT_EQ(visible.out, "");
    }
}

TEST_F(Emitted, NothingIsOpenedOrCalled)
{
    const std::string before = value("SELECT COUNT(*) FROM `$log`");
    const test::Result result = call({"--emit", "c", "addLog", "5"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, HasSubstr("\"" + path + "\""));
    EXPECT_EQ(value("SELECT COUNT(*) FROM `$log`"), before);
    EXPECT_EQ(run({"-d", "/no/such.db", "--emit", "c", "addLog", "5"}).status, 0);
}

TEST_F(Emitted, TheShellsLineHasTheFieldsAndTheForm)
{
    const test::Result result = run({"--emit", "shell", "--csv", "--fields", "LogId,Severity", "getLog", "limit=1"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "qbobj --csv --fields LogId,Severity getLog limit=1\n");
}

TEST_F(Emitted, WhatIsWrongIsRefused)
{
    const std::pair<std::vector<std::string>, const char *> wrong[] = {
        {{"--emit", "cobol", "getLog"}, "there is no language \"cobol\" (c, c++, python, shell)"},
        {{"--emit", "c", "list"}, "--emit is for operations"},
        {{"--emit", "c", "--dry-run", "truncateLog", "5"}, "not part of a program"},
        {{"--emit", "c", "--fields", "LogId", "getLog"},
         "--fields, --tsv, --csv, --dry-run, --changes, --with-secrets, "
         "--trace and --log-level are not part of a program"},
        {{"--emit", "c++", "--tsv", "getLog"}, "not part of a program"},
        {{"--emit", "python", "--csv", "getLog"}, "not part of a program"},
        {{"--emit", "shell", "--fields", "LogIt", "getLog"}, "LogIt"},
        {{"--emit", "c", "addLog", "five"}, "a whole number"},
        {{"--emit", "c", "deleteLog"}, "nothing is given"},
        {{"--emit", "python", "--root", "/mnt", "truncateLog", "5"}, "nothing for --root"},
        {{"--emit", "c", "edit", "modifyUser", "UserId=100", "IsLocked=1"}, "--emit is for operations"},
    };
    for (const auto &[words, message] : wrong) {
        const test::Result result = run(words);
        EXPECT_EQ(result.status, 2) << message;
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.err, HasSubstr(message));
    }
}

TEST(Literal, IsReadBackAsItWas)
{
    EXPECT_EQ(qbcli::c_literal("a\"b\\c\n\x01"
                               "1?\?/"),
              "\"a\\\"b\\\\c\\n\\0011?\\?/\"");
    EXPECT_EQ(qbcli::c_literal("\u00e4\u202e"), "\"\u00e4\\342\\200\\256\"");
    EXPECT_EQ(qbcli::c_literal("??\?="), "\"?\\?\\?=\"");
    EXPECT_EQ(qbcli::python_literal("\"\\\x7f\u202e\u00e4\U000e0001"), "\"\\\"\\\\\\x7f\\u202e\u00e4\\U000e0001\"");
    EXPECT_EQ(qbcli::shell_word("a=b/c.d"), "a=b/c.d");
    EXPECT_EQ(qbcli::shell_word(""), "''");
    EXPECT_EQ(qbcli::shell_word("=ls"), "'=ls'");
    EXPECT_EQ(qbcli::shell_word("it's $HOME"), "'it'\\''s $HOME'");
    EXPECT_EQ(qbcli::shell_word("it's\n"), "$'it\\'s\\n'");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
