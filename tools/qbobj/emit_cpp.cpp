// The program in C++, over qbobj.hpp.
#include <cstdint>
#include <limits>
#include <set>

#include "emit.h"

namespace qbcli {
namespace {

constexpr const char *kFailed = R"(// Says why the call failed. The exit status is the class of the failure.
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

constexpr const char *kReadSecret = R"(// A line of standard input: a secret stands in no program.
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

constexpr const char *kPrintText = R"(void print(int indent, const char *name, const char *text)
{
    if (text) std::cout << std::setw(indent) << "" << name << ": " << text << '\n';
}

)";

class Writer {
public:
    explicit Writer(const Emitted &what) : what_(what), operation_(what.operation), values_(what) {}

    std::string program()
    {
        const std::string call = written_call();
        const std::string outputs = written_outputs();
        std::string text = "// c++ -std=c++20 program.cpp -o program $(pkg-config --cflags --libs qbobj" +
                           std::string(prints_xml_ ? " libxml-2.0" : "") + ")\n";
        text += values_.secrets().empty() ? "" : "#include <cstdlib>\n";
        text += "#include <iomanip>\n#include <iostream>\n";
        if (prints_xml_) text += "#include <libxml/tree.h>\n";
        text += "#include <qbobj.hpp>\n#include <string>\n\nnamespace {\n\n";
        text += kFailed;
        if (!values_.secrets().empty()) text += kReadSecret;
        if (prints_number_) text += kPrintNumber;
        if (prints_text_) text += kPrintText;
        return text + printers_ + "}  // namespace\n\n" + main_function(call, outputs);
    }

private:
    // ---- What is given

    void line(const std::string &text) { body_ += "    " + text + "\n"; }

    void record(const QbobjField *type, const Json &value, const std::string &name)
    {
        line("auto " + name + " = qb::absent<" + type->name + ">();");
        const Json members = value.is_array() ? Json{{type[1].name, value}} : value;
        for (const auto &[member, part] : members.items()) {
            if (part.is_null()) continue;
            const QbobjField *field = find_field(type, member);
            std::string place = joined({name, ".", member});
            if (field && field->kind == 'o') {
                inside(field->subtype, part, joined({name, "_", member}), place);
                continue;
            }
            if (field && !indicator_of(field).empty())
                place = joined({"qb::maybe(", place, ", ", name, ".", indicator_of(field), ")"});
            line(place + " = " + (field && is_number(field) ? number(field->kind, part) : text(part)) + ";");
        }
    }

    void inside(const QbobjField *type, const Json &value, const std::string &name, const std::string &place)
    {
        const bool list = is_list(type) && value.is_array();
        if (list) records(type, value, name);
        else record(type, value, name);
        if (!list || !value.empty()) line(place + " = &" + name + ";");
    }

    void records(const QbobjField *type, const Json &value, const std::string &name)
    {
        std::string before;
        for (size_t i = 0; i < value.size(); i++) {
            const std::string own = i == 0 ? name : name + "_" + std::to_string(i + 1);
            record(type, value[i], own);
            if (i > 0) line(joined({before, ".next = &", own, ";"}));
            before = own;
        }
    }

    static std::string number(char kind, const Json &value)
    {
        const std::string digits = value.dump();
        switch (kind) {
            case 'u': return digits + "U";
            case 'n': return "UINT64_C(" + digits + ")";
            case 'l': return value == std::numeric_limits<int64_t>::min() ? "INT64_MIN" : "INT64_C(" + digits + ")";
            default: return value == std::numeric_limits<int32_t>::min() ? "INT32_MIN" : digits;
        }
    }

    static std::string text(const Json &value)
    {
        if (const size_t secret = EmittedValues::secret_of(value))
            return "secret_" + std::to_string(secret) + ".c_str()";
        const auto &given = value.get_ref<const std::string &>();
        return given == masked_password ? "masked_password" : c_literal(given);
    }

    /// What is given for an argument that is not merely filled; what it needs is declared.
    std::string passed(size_t index)
    {
        const QbobjArgument &argument = operation_.arguments[index];
        const std::optional<Json> &given = values_.given(index);
        const bool given_value = given && !given->is_null();
        switch (argument.kind) {
            case QBOBJ_KIND_INT32: return given_value ? number('i', *given) : "0";
            case QBOBJ_KIND_UINT64: return given_value ? number('n', *given) : "UINT64_C(0)";
            case QBOBJ_KIND_STRING: return given_value ? text(*given) : "nullptr";
            default: break;
        }
        switch (passing_of(argument, given)) {
            case Passing::kNull: return "nullptr";
            case Passing::kRecords:
                records(argument.type, *given, argument.name);
                return std::string("&") + argument.name;
            default: record(argument.type, given_value ? *given : Json::object(), argument.name);
        }
        // What is completed is completed where it is: the operation may make a chain of it.
        return (argument.direction == QBOBJ_INOUT ? "&" : "") + std::string(argument.name);
    }

    std::string written_call()
    {
        std::string call = std::string("qb::call<") + operation_.name + ">(*db";
        for (size_t i = 0; i < operation_.count; i++)
            if (operation_.arguments[i].direction != QBOBJ_OUT) call += ", " + passed(i);
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
        return "    xmlBufferPtr buffer = xmlBufferCreate();\n"
               "    xmlNodeDump(buffer, nullptr, " +
               name +
               ".get(), 0, 1);\n"
               "    std::cout << \"" +
               name +
               ": \" << reinterpret_cast<const char *>(xmlBufferContent(buffer)) << '\\n';\n"
               "    xmlBufferFree(buffer);\n";
    }

    void add_printer(const QbobjField *type)
    {
        if (!printed_.insert(type).second) return;
        for (const QbobjField *field = type + 1; field->kind != '.'; field++)
            if (field->subtype) add_printer(field->subtype);
        std::string text =
            "void print(int indent, const char *name, const " + std::string(type->name) +
            " &record)\n{\n    std::cout << std::setw(indent) << \"\" << name << \":\\n\";\n    indent += 2;\n";
        if (has_key_word(type) && !find_field(type, kKeyWord)) text += text_line(kKeyWord, false);
        for (const QbobjField *field = type + 1; field->kind != '.'; field++) text += field_line(type, field);
        printers_ += text + "}\n\n";
    }

    std::string text_line(const std::string &name, bool secret)
    {
        prints_text_ = true;
        const std::string value = "record." + name;
        return "    print(indent, \"" + name + "\", " +
               (secret ? "qb::text(" + value + ").empty() ? " + value + " : masked_password" : value) + ");\n";
    }

    std::string field_line(const QbobjField *type, const QbobjField *field)
    {
        const std::string name = field->name;
        const std::string value = "record." + name;
        if (field->kind == 's') return text_line(name, qbobj_is_secret(type, field));
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
        std::string text = "int main(int argc, char **argv)\n{\n";
        for (size_t i = 0; i < values_.secrets().size(); i++)
            text += "    const std::string secret_" + std::to_string(i + 1) + " = read_secret(" +
                    c_literal(values_.secrets()[i]) + ");\n";
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

    std::string settings() const
    {
        const DatabaseOptions &database = what_.database;
        std::string text;
        if (database.timeout_ms != QBDB_DEFAULT_TIMEOUT_MS)
            text += "    db->set_timeout(std::chrono::milliseconds(" + std::to_string(database.timeout_ms) + "));\n";
        if (!database.who.empty()) text += "    qbdb_set_caller(db->handle(), " + c_literal(database.who) + ");\n";
        if (!database.root.empty())
            text += "    qbdb_import_options import{};\n    import.root = " + c_literal(database.root) +
                    ";\n    qbdb_set_import_options(db->handle(), &import);\n";
        return text;
    }

    std::string judged(const std::string &call) const
    {
        std::string text = "    const auto outcome = " + call + ";\n";
        const bool own = operation_.returns == QBOBJ_RETURNS_ANSWER || operation_.returns == QBOBJ_RETURNS_COUNT;
        if (!own) text += "    if (!outcome) return failed(outcome.error());\n";
        else
            text +=
                "    if (!outcome) {\n        const int status = failed(outcome.error());\n"
                "        return outcome.error().code == -1 ? " +
                std::string(operation_.returns == QBOBJ_RETURNS_ANSWER ? "4" : "1") + " : status;\n    }\n";
        if (operation_.returns == QBOBJ_RETURNS_CODE)
            text += "    if (outcome.warning()) std::cerr << \"warning: \" << outcome.warning()->message << '\\n';\n";
        return text;
    }

    std::string status() const
    {
        const bool answer = operation_.returns == QBOBJ_RETURNS_ANSWER || operation_.returns == QBOBJ_RETURNS_TRUTH;
        return answer ? "    return *outcome ? 0 : 3;\n}\n" : "    return 0;\n}\n";
    }

    const Emitted &what_;
    const QbobjOperation &operation_;
    EmittedValues values_;
    std::string body_;
    std::string printers_;
    std::set<const QbobjField *> printed_;
    bool prints_number_ = false;
    bool prints_text_ = false;
    bool prints_xml_ = false;
};

}  // namespace

std::string emit_cpp(const Emitted &what)
{
    return Writer(what).program();
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
