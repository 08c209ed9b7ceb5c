// The program in C.
#include <cstdint>
#include <limits>
#include <set>

#include "emit.h"

namespace qbcli {
namespace {

constexpr const char *kFailed = R"(/* Says why the call failed. The exit status is the class of the failure. */
static int failed(uint32_t code, const ErrorInfo *err)
{
    const char *meaning = qbobj_code_meaning(err->code ? err->code : code);
    if (err->code) code = err->code;
    if (err->message) meaning = err->message;
    fprintf(stderr, "%OPERATION%: %" PRIu32 " %s\n", code, meaning ? meaning : "the operation failed");
    switch (code) {
        case 2: return 5; /* out of memory */
        case 5:
        case 7: return 4; /* the database is locked, or failed */
        case 6: return 3; /* nothing found */
        default: return 1; /* refused */
    }
}

)";

constexpr const char *kReadSecret = R"(/* A line of standard input: a secret stands in no program. */
static const char *read_secret(const char *name)
{
    char *line = NULL;
    size_t size = 0;
    ssize_t length = getline(&line, &size, stdin);
    if (length > 0 && line[length - 1] == '\n') line[--length] = '\0';
    if (length <= 0) {
        fprintf(stderr, "%s: a line of standard input is needed\n", name);
        exit(2);
    }
    return line;
}

)";

constexpr const char *kPrintText = R"(static void print_text(int indent, const char *name, const char *text)
{
    if (text) printf("%*s%s: %s\n", indent, "", name, text);
}

)";

std::string replaced(std::string text, std::string_view what, std::string_view by)
{
    for (size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size())
        text.replace(at, what.size(), by);
    return text;
}

/// The macro that prints a number of a kind.
const char *format_of_number(char kind)
{
    switch (kind) {
        case 'u': return "PRIu32";
        case 'l': return "PRId64";
        case 'n': return "PRIu64";
        default: return "PRId32";
    }
}

class Writer {
public:
    explicit Writer(const Emitted &what) : what_(what), operation_(what.operation), values_(what) {}

    std::string program()
    {
        const std::string call = written_call();
        const std::string outputs = written_outputs();
        const bool xml = prints_xml_;
        std::string text = "/* cc program.c -o program $(pkg-config --cflags --libs qbobj" +
                           std::string(xml ? " libxml-2.0" : "") + ") */\n#include <inttypes.h>\n";
        if (xml) text += "#include <libxml/tree.h>\n";
        text += "#include <qbdb.h>\n";
        if (!what_.database.who.empty()) text += "#include <qbdb_journal.h>\n";
        text += "#include <qbobj.h>\n#include <stdio.h>\n";
        if (!values_.secrets().empty()) text += "#include <stdlib.h>\n#include <sys/types.h>\n";
        text += "\n";
        if (operation_.returns != QBOBJ_RETURNS_TRUTH) text += replaced(kFailed, "%OPERATION%", short_name(operation_));
        if (!values_.secrets().empty()) text += kReadSecret;
        if (prints_text_) text += kPrintText;
        return text + printers_ + main_function(call, outputs);
    }

private:
    // ---- What is given

    void line(const std::string &text) { body_ += "    " + text + "\n"; }

    /// A record, with everything in it, as a variable.
    void record(const QbobjField *type, const Json &value, const std::string &name)
    {
        line(std::string(type->name) + " " + name + " = {0};");
        const Json members = value.is_array() ? Json{{type[1].name, value}} : value;
        for (const QbobjField *field = type + 1; field->kind != '.'; field++) {
            const std::string indicator = indicator_of(field);
            const auto given = members.find(field->name);
            if (!indicator.empty() && (given == members.end() || given->is_null()))
                line(joined({name, ".", indicator, " = 1; /* not given */"}));
        }
        for (const auto &[member, part] : members.items()) {
            if (part.is_null()) continue;
            const QbobjField *field = find_field(type, member);
            const std::string place = joined({name, ".", member});
            if (field && field->kind == 'o') inside(field->subtype, part, joined({name, "_", member}), place);
            else line(place + " = " + (field && is_number(field) ? number(field->kind, part) : text(part)) + ";");
        }
    }

    /// A record or list inside a record.
    void inside(const QbobjField *type, const Json &value, const std::string &name, const std::string &place)
    {
        if (is_list(type) && value.is_array()) records(type, value, name);
        else record(type, value, name);
        if (!value.is_array() || !value.empty() || !is_list(type)) line(place + " = &" + name + ";");
    }

    /// The elements of a list, the first by the name of the list.
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
            case 'u': return "UINT32_C(" + digits + ")";
            case 'n': return "UINT64_C(" + digits + ")";
            case 'l': return value == std::numeric_limits<int64_t>::min() ? "INT64_MIN" : "INT64_C(" + digits + ")";
            default: return value == std::numeric_limits<int32_t>::min() ? "INT32_MIN" : digits;
        }
    }

    static std::string text(const Json &value)
    {
        if (const size_t secret = EmittedValues::secret_of(value)) return "secret_" + std::to_string(secret);
        const auto &given = value.get_ref<const std::string &>();
        return given == masked_password ? "masked_password" : c_literal(given);
    }

    /// What is passed for an argument; what it needs is declared.
    std::string passed(size_t index)
    {
        const QbobjArgument &argument = operation_.arguments[index];
        const std::optional<Json> &given = values_.given(index);
        const std::string name = argument.name;
        const bool given_value = given && !given->is_null();
        switch (argument.kind) {
            case QBOBJ_KIND_INT32: return scalar(argument, "int32_t ", "0", given_value ? number('i', *given) : "0");
            case QBOBJ_KIND_UINT64: return scalar(argument, "uint64_t ", "0", given_value ? number('n', *given) : "0");
            case QBOBJ_KIND_STRING:
                return scalar(argument, "const char *", "NULL", given_value ? text(*given) : "NULL");
            case QBOBJ_KIND_LIST: line(std::string(argument.type->name) + " *" + name + " = NULL;"); return "&" + name;
            case QBOBJ_KIND_XML: line("struct _xmlNode *" + name + " = NULL;"); return "&" + name;
            default: break;
        }
        switch (passing_of(argument, given)) {
            case Passing::kNull: return "NULL";
            case Passing::kRecords: records(argument.type, *given, name); break;
            case Passing::kFilled: line(std::string(argument.type->name) + " " + name + " = {0};"); break;
            default: record(argument.type, given_value ? *given : Json::object(), name);
        }
        return "&" + name;
    }

    std::string scalar(const QbobjArgument &argument, const std::string &type, const std::string &nothing,
                       const std::string &value)
    {
        if (argument.direction == QBOBJ_IN) return value;
        line(type + argument.name + " = " + nothing + ";");
        return std::string("&") + argument.name;
    }

    std::string written_call()
    {
        std::string call = std::string(operation_.name) + "(qbdb, db, ";
        for (size_t i = 0; i < operation_.count; i++) call += passed(i) + ", ";
        return call + "&err)";
    }

    // ---- What comes back

    std::string written_outputs()
    {
        std::string text;
        for (size_t i = 0; i < operation_.count; i++)
            if (comes_back(operation_.arguments[i], values_.given(i))) text += output(operation_.arguments[i]);
        return text;
    }

    std::string output(const QbobjArgument &argument)
    {
        const std::string name = argument.name;
        const std::string print = "        printf(\"" + name + ": ";
        switch (argument.kind) {
            case QBOBJ_KIND_INT32: return print + "%\" PRId32 \"\\n\", " + name + ");\n";
            case QBOBJ_KIND_UINT64: return print + "%\" PRIu64 \"\\n\", " + name + ");\n";
            case QBOBJ_KIND_STRING:
                prints_text_ = true;
                return "        print_text(0, \"" + name + "\", " + name + ");\n";
            case QBOBJ_KIND_XML: prints_xml_ = true; return xml_output(name);
            default: break;
        }
        add_printer(argument.type);
        const std::string type = argument.type->name;
        const std::string call = "print_" + type + "(0, \"" + name + "\", ";
        if (!is_list(argument.type)) return "        " + call + "&" + name + ");\n";
        const std::string first = argument.kind == QBOBJ_KIND_LIST ? name : "&" + name;
        return "        for (const " + type + " *each = " + first + "; each; each = each->next)\n            " + call +
               "each);\n";
    }

    static std::string xml_output(const std::string &name)
    {
        return "        xmlBufferPtr buffer = xmlBufferCreate();\n"
               "        xmlNodeDump(buffer, NULL, " +
               name +
               ", 0, 1);\n"
               "        printf(\"" +
               name +
               ": %s\\n\", (const char *)xmlBufferContent(buffer));\n"
               "        xmlBufferFree(buffer);\n"
               "        xmlFreeNode(" +
               name + ");\n";
    }

    /// The function that prints a type, after those of the types in it.
    void add_printer(const QbobjField *type)
    {
        if (!printed_.insert(type).second) return;
        for (const QbobjField *field = type + 1; field->kind != '.'; field++)
            if (field->subtype) add_printer(field->subtype);
        const std::string name = type->name;
        std::string text = "static void print_" + name + "(int indent, const char *name, const " + name +
                           " *record)\n{\n    printf(\"%*s%s:\\n\", indent, \"\", name);\n    indent += 2;\n";
        if (has_key_word(type) && !find_field(type, kKeyWord)) text += text_line(kKeyWord, false);
        for (const QbobjField *field = type + 1; field->kind != '.'; field++) text += field_line(type, field);
        printers_ += text + "}\n\n";
    }

    std::string text_line(const std::string &name, bool secret)
    {
        prints_text_ = true;
        const std::string value = "record->" + name;
        return "    print_text(indent, \"" + name + "\", " +
               (secret ? value + " && *" + value + " ? masked_password : " + value : value) + ");\n";
    }

    std::string field_line(const QbobjField *type, const QbobjField *field)
    {
        const std::string name = field->name;
        if (field->kind == 's') return text_line(name, qbobj_is_secret(type, field));
        if (field->subtype) {
            const std::string part = field->subtype->name;
            const std::string print = "print_" + part + "(indent, \"" + name + "\", ";
            if (!is_list(field->subtype)) return "    if (record->" + name + ") " + print + "record->" + name + ");\n";
            return "    for (const " + part + " *each = record->" + name + "; each; each = each->next)\n        " +
                   print + "each);\n";
        }
        const std::string indicator = indicator_of(field);
        return (indicator.empty() ? "    " : "    if (!record->" + indicator + ") ") + "printf(\"%*s" + name +
               ": %\" " + format_of_number(field->kind) + " \"\\n\", indent, \"\", record->" + name + ");\n";
    }

    // ---- The whole

    std::string main_function(const std::string &call, const std::string &outputs)
    {
        const DatabaseOptions &database = what_.database;
        std::string text = "int main(int argc, char **argv)\n{\n    const char *file = argc > 1 ? argv[1] : " +
                           c_literal(database.path) +
                           ";\n    qbdb_t *qbdb = NULL;\n    sqlite3 *db = NULL;\n    ErrorInfo err = {0};\n"
                           "    char why[256] = \"\";\n    int status = 0;\n";
        for (size_t i = 0; i < values_.secrets().size(); i++)
            text += "    const char *secret_" + std::to_string(i + 1) + " = read_secret(" +
                    c_literal(values_.secrets()[i]) + ");\n";
        text += std::string("\n    if (qbdb_open(file, ") +
                (database.read_only ? "QBDB_OPEN_READONLY" : "QBDB_OPEN_EXISTING") +
                ", NULL, &qbdb, &db, why, sizeof why) != 0) {\n        fprintf(stderr, \"%s\\n\", why);\n"
                "        return 4;\n    }\n";
        text += "    qbdb->log_level = 0; /* what fails is said below */\n" + settings();
        text +=
            "    if (qbdb_request_begin(qbdb) != 0) { /* the pool of what is returned */\n"
            "        qbdb_close(qbdb);\n        return 5;\n    }\n\n" +
            body_ + "\n";
        return text + judged(call, outputs) +
               "    qbdb_close(qbdb); /* and all that was returned */\n    return status;\n}\n";
    }

    std::string settings() const
    {
        const DatabaseOptions &database = what_.database;
        std::string text;
        if (database.timeout_ms != QBDB_DEFAULT_TIMEOUT_MS)
            text += "    qbdb_set_timeout(qbdb, " + std::to_string(database.timeout_ms) + ");\n";
        if (!database.who.empty()) text += "    qbdb_set_caller(qbdb, " + c_literal(database.who) + ");\n";
        if (!database.root.empty())
            text += "    qbdb_import_options import = {0};\n    import.root = " + c_literal(database.root) +
                    ";\n    qbdb_set_import_options(qbdb, &import);\n";
        return text;
    }

    /// The call, and what each of its ends means.
    std::string judged(const std::string &call, const std::string &outputs) const
    {
        const std::string minus_one = "    if (result < 0) {\n        status = err.code ? failed(err.code, &err) : ";
        const auto lost = [&](const char *words, const char *status) {
            return minus_one + status + ";\n        if (!err.code) fprintf(stderr, \"" + short_name(operation_) + ": " +
                   words + "\\n\");\n    }";
        };
        const std::string signed_result = "    const int32_t result = (int32_t)" + call + ";\n";
        const std::string print_result = "        printf(\"result: %\" PRId32 \"\\n\", result);\n";
        const auto otherwise = [](const std::string &text) { return " else {\n" + text + "    }\n"; };
        switch (operation_.returns) {
            case QBOBJ_RETURNS_FOUND: return signed_result + lost("not found", "3") + otherwise(outputs);
            case QBOBJ_RETURNS_ID: return signed_result + lost("not found", "3") + otherwise(print_result);
            case QBOBJ_RETURNS_COUNT:
                return signed_result + lost("an argument is malformed", "1") + otherwise(print_result);
            case QBOBJ_RETURNS_ANSWER:
                return signed_result + lost("there is no answer", "4") +
                       otherwise(print_result + "        status = result == 0 ? 0 : 3; /* no */\n");
            case QBOBJ_RETURNS_TRUTH:
                return signed_result + print_result.substr(4) + "    status = result != 0 ? 0 : 3; /* no */\n";
            default: break;
        }
        std::string text = "    const uint32_t code = " + call +
                           ";\n    if (code != 0) {\n        status = failed(code, &err);\n    }";
        text += outputs.empty() ? "\n" : otherwise(outputs);
        return text + "    if (code == 0 && err.code != 0) fprintf(stderr, \"warning: %s\\n\", err.message);\n";
    }

    const Emitted &what_;
    const QbobjOperation &operation_;
    EmittedValues values_;
    std::string body_;      // declarations of what is given
    std::string printers_;  // functions that print records
    std::set<const QbobjField *> printed_;
    bool prints_text_ = false;
    bool prints_xml_ = false;
};

}  // namespace

std::string emit_c(const Emitted &what)
{
    return Writer(what).program();
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
