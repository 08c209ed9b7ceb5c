// The program in C++, over qbobj.hpp.
#include "emit_program.h"

namespace qbcli {
namespace {

constexpr const char *kFailedInCpp = R"(// Says why the call failed. The exit status is the class of the failure.
int failed(const qb::Error &error)
{
    std::cerr << error.text() << '\n';
    switch (error.code) {
        case 2: return 5;  // out of memory
        case 5:
        case 7: return 4;  // the database is locked, or failed
        case -1:
        case 6: return 3;  // nothing found
        default: return 1;  // refused
    }
}

)";

constexpr const char *kReadSecretInCpp = R"(// A line of standard input: a secret stands in no program.
std::string read_secret(const char *name)
{
    std::string line;
    if (std::getline(std::cin, line) && !line.empty()) return line;
    std::cerr << name << ": a line of standard input is needed\n";
    std::exit(2);
}

)";

constexpr const char *kPrintNumber = R"(template <class T>
void print(int indent, const char *name, const T &number)
{
    std::cout << std::setw(indent) << "" << name << ": " << number << '\n';
}

)";

constexpr const char *kPrintTextInCpp = R"(void print(int indent, const char *name, const char *text)
{
    if (text) std::cout << std::setw(indent) << "" << name << ": " << text << '\n';
}

)";

constexpr Dialect kDialectInCpp = {"nullptr", "db->handle()", "{}", "std::string ", ".c_str()"};

class CppWriter : public ProgramWriter {
public:
    explicit CppWriter(const Emitted &what) : ProgramWriter(what, kDialectInCpp) {}

    std::string program()
    {
        const std::string call = written_call();
        const std::string outputs = written_outputs();
        std::string text = "// c++ -std=c++20 program.cpp -o program $(pkg-config --cflags --libs qbobj" +
                           std::string(prints_xml_ ? " libxml-2.0" : "") + ")\n";
        text += has_secrets() ? "#include <cstdlib>\n" : "";
        text += "#include <iomanip>\n#include <iostream>\n";
        if (prints_xml_) text += "#include <libxml/tree.h>\n";
        text += "#include <qbobj.hpp>\n#include <string>\n\nnamespace {\n\n";
        text += kFailedInCpp;
        if (has_secrets()) text += kReadSecretInCpp;
        if (prints_number_) text += kPrintNumber;
        if (prints_text_) text += kPrintTextInCpp;
        return text + printers_ + "}  // namespace\n\n" + main_function(call, outputs);
    }

private:
    // ---- What is given

    void declare(const QbobjField *type, const Json &, const std::string &name) override
    {
        line("auto " + name + " = qb::absent<" + type->name + ">();");
    }

    std::string target(const QbobjField *field, const std::string &record, const std::string &member) const override
    {
        const std::string place = joined({record, ".", member});
        const std::string indicator = field ? indicator_of(field) : "";
        return indicator.empty() ? place : joined({"qb::maybe(", place, ", ", record, ".", indicator, ")"});
    }

    /// What is completed is completed where it is: the operation may make a chain of it.
    std::string passed(const QbobjArgument &argument) const override
    {
        return (argument.direction == QBOBJ_INOUT ? "&" : "") + std::string(argument.name);
    }

    std::string written_call()
    {
        std::string call = std::string("qb::call<") + operation_.name + ">(*db";
        for (size_t i = 0; i < operation_.count; i++)
            if (operation_.arguments[i].direction != QBOBJ_OUT) call += ", " + given(i);
        return call + ")";
    }

    // ---- What comes back

    std::string written_outputs()
    {
        std::vector<const QbobjArgument *> filled;
        std::string text;
        std::string bound;
        for (size_t i = 0; i < operation_.count; i++) {
            const QbobjArgument &argument = operation_.arguments[i];
            if (!comes_back(argument, values_.given(i))) continue;
            text += output(argument);
            if (argument.direction != QBOBJ_OUT) continue;
            filled.push_back(&argument);
            bound += (bound.empty() ? "" : ", ") + std::string(argument.name);
        }
        if (returns_number()) text += "    print(0, \"result\", " + result() + ");\n";
        if (filled.empty()) return text;
        return "    const auto &" + (filled.size() == 1 ? bound : "[" + bound + "]") + " = *outcome;\n" + text;
    }

    bool returns_number()
    {
        const bool number = operation_.returns != QBOBJ_RETURNS_CODE && operation_.returns != QBOBJ_RETURNS_FOUND;
        prints_number_ = prints_number_ || number;
        return number;
    }

    /// The number that the command line prints.
    std::string result() const
    {
        switch (operation_.returns) {
            case QBOBJ_RETURNS_ANSWER: return "*outcome ? 0 : 1";
            case QBOBJ_RETURNS_TRUTH: return "*outcome ? 1 : 0";
            default: return "*outcome";
        }
    }

    std::string output(const QbobjArgument &argument)
    {
        const std::string name = argument.name;
        const std::string print = "print(0, \"" + name + "\", ";
        switch (argument.kind) {
            case QBOBJ_KIND_INT32:
            case QBOBJ_KIND_UINT64: prints_number_ = true; return "    " + print + name + ");\n";
            case QBOBJ_KIND_STRING: prints_text_ = true; return "    " + print + name + ");\n";
            case QBOBJ_KIND_XML: prints_xml_ = true; return xml_output(name);
            default: break;
        }
        add_printer(argument.type);
        if (argument.kind == QBOBJ_KIND_RECORD && (argument.direction == QBOBJ_OUT || !is_list(argument.type)))
            return "    " + print + name + ");\n";
        const std::string list = argument.kind == QBOBJ_KIND_LIST ? name : "qb::List(&" + name + ")";
        return "    for (const " + std::string(argument.type->name) + " &each : " + list + ") " + print + "each);\n";
    }

    static std::string xml_output(const std::string &name)
    {
        return joined({"    xmlBufferPtr buffer = xmlBufferCreate();\n    xmlNodeDump(buffer, nullptr, ", name,
                       ".get(), 0, 1);\n    std::cout << \"", name,
                       ": \" << reinterpret_cast<const char *>(xmlBufferContent(buffer)) << '\\n';\n",
                       "    xmlBufferFree(buffer);\n"});
    }

    std::string printer_head(const std::string &type) const override
    {
        return "void print(int indent, const char *name, const " + type +
               " &record)\n{\n    std::cout << std::setw(indent) << \"\" << name << \":\\n\";\n    indent += 2;\n";
    }

    std::string text_line(const std::string &name, bool secret) override
    {
        prints_text_ = true;
        const std::string value = "record." + name;
        return "    print(indent, \"" + name + "\", " +
               (secret ? "qb::text(" + value + ").empty() ? " + value + " : masked_password" : value) + ");\n";
    }

    std::string field_line(const QbobjField *field) override
    {
        const std::string name = field->name;
        const std::string value = "record." + name;
        const std::string print = "print(indent, \"" + name + "\", ";
        if (field->subtype) {
            if (!is_list(field->subtype)) return "    if (" + value + ") " + print + "*" + value + ");\n";
            return "    for (const " + std::string(field->subtype->name) + " &each : qb::List(" + value + ")) " +
                   print + "each);\n";
        }
        prints_number_ = true;
        const std::string indicator = indicator_of(field);
        if (indicator.empty()) return "    " + print + value + ");\n";
        return "    if (const auto number = qb::maybe(" + value + ", record." + indicator + ")) " + print +
               "*number);\n";
    }

    // ---- The whole

    std::string main_function(const std::string &call, const std::string &outputs)
    {
        const DatabaseOptions &database = what_.database;
        std::string text = "int main(int argc, char **argv)\n{\n" + secrets();
        text += "    const auto db = qb::Database::open(argc > 1 ? argv[1] : " + c_literal(database.path) +
                (database.read_only ? ", qb::Open::readonly" : "") +
                ");\n    if (!db) {\n        std::cerr << db.error().message << '\\n';\n        return 4;\n    }\n";
        text += "    db->handle()->log_level = 0;  // what fails is said below\n" + settings();
        text +=
            "    const auto request = db->request();  // the pool of what is returned\n"
            "    if (!request) return 5;\n\n" +
            body_;
        return text + judged(call) + outputs + status();
    }

    std::string judged(const std::string &call) const
    {
        std::string text = "    const auto outcome = " + call + ";\n";
        const bool answer = operation_.returns == QBOBJ_RETURNS_ANSWER;
        if (!answer && operation_.returns != QBOBJ_RETURNS_COUNT)
            text += "    if (!outcome) return failed(outcome.error());\n";
        else
            text += joined({"    if (!outcome) {\n        const int status = failed(outcome.error());\n",
                            "        return outcome.error().code == -1 ? ", answer ? "4" : "1", " : status;\n    }\n"});
        if (operation_.returns == QBOBJ_RETURNS_CODE)
            text += "    if (outcome.warning()) std::cerr << \"warning: \" << outcome.warning()->message << '\\n';\n";
        return text;
    }

    std::string status() const
    {
        const bool answer = operation_.returns == QBOBJ_RETURNS_ANSWER || operation_.returns == QBOBJ_RETURNS_TRUTH;
        return answer ? "    return *outcome ? 0 : 3;\n}\n" : "    return 0;\n}\n";
    }

    bool prints_number_ = false;
};

}  // namespace

std::string emit_cpp(const Emitted &what)
{
    return CppWriter(what).program();
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
