// The program in C.
#include "emit_program.h"

namespace qbcli {
namespace {

constexpr const char *kFailedInC = R"(/* Says why the call failed. The exit status is the class of the failure. */
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

constexpr const char *kReadSecretInC = R"(/* A line of standard input: a secret stands in no program. */
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

constexpr const char *kPrintTextInC = R"(static void print_text(int indent, const char *name, const char *text)
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

constexpr Dialect kDialectInC = {"NULL", "qbdb", " = {0}", "char *", ""};

/// What it means that an operation returns less than 0 and reports nothing.
struct Loss {
    const char *words;
    int status;
};

Loss loss_of(const QbobjOperation &operation)
{
    switch (operation.returns) {
        case QBOBJ_RETURNS_COUNT: return {"an argument is malformed", 1};
        case QBOBJ_RETURNS_ANSWER: return {"there is no answer", 4};
        default: return {"not found", 3};
    }
}

/// The first text that is no secret, or else the first number; null where there is nothing but records.
const QbobjField *telling_field(const QbobjField *type)
{
    const QbobjField *first = nullptr;
    for (const QbobjField *field = type + 1; field->kind != '.'; field++) {
        if (field->kind == 's' && !qbobj_is_secret(type, field)) return field;
        if (!first && is_number(field)) first = field;
    }
    return first;
}

std::string print_number(const char *before, const std::string &name, char kind, const std::string &values)
{
    return joined({"printf(\"", before, name, ": %\" ", format_of_number(kind), " \"\\n\", ", values, ");\n"});
}

class CWriter : public ProgramWriter {
public:
    /// @param alone Only the function that makes the call is wanted, and has to do without the others.
    CWriter(const Emitted &what, bool alone) : ProgramWriter(what, kDialectInC), alone_(alone) {}

    std::string call_alone()
    {
        const std::string function = call_function();
        return includes() + "\n" + function;
    }

    std::string program()
    {
        const std::string function = call_function();
        std::string text = "/* cc program.c -o program $(pkg-config --cflags --libs qbobj" +
                           std::string(prints_xml_ ? " libxml-2.0" : "") + ") */\n" + includes() + "\n";
        if (operation_.returns != QBOBJ_RETURNS_TRUTH) text += replaced(kFailedInC, "%OPERATION%", short_name(operation_));
        if (has_secrets()) text += kReadSecretInC;
        if (prints_text_) text += kPrintTextInC;
        return text + printers_ + function + "\n" + main_function();
    }

private:
    // ---- What is given

    void declare(const QbobjField *type, const Json &members, const std::string &name) override
    {
        line(std::string(type->name) + " " + name + " = {0};");
        for (const QbobjField *field = type + 1; field->kind != '.'; field++) {
            const std::string indicator = indicator_of(field);
            const auto given = members.find(field->name);
            if (!indicator.empty() && (given == members.end() || given->is_null()))
                line(joined({name, ".", indicator, " = 1; /* not given */"}));
        }
    }

    std::string target(const QbobjField *, const std::string &record, const std::string &member) const override
    {
        return joined({record, ".", member});
    }

    std::string passed(const QbobjArgument &argument) const override { return std::string("&") + argument.name; }

    /// What is passed for an argument that is only filled.
    std::string filled(const QbobjArgument &argument)
    {
        const std::string name = argument.name;
        switch (argument.kind) {
            case QBOBJ_KIND_INT32: line("int32_t " + name + " = 0;"); break;
            case QBOBJ_KIND_UINT64: line("uint64_t " + name + " = 0;"); break;
            case QBOBJ_KIND_STRING: line("const char *" + name + " = NULL;"); break;
            case QBOBJ_KIND_LIST: line(std::string(argument.type->name) + " *" + name + " = NULL;"); break;
            case QBOBJ_KIND_XML: line("struct _xmlNode *" + name + " = NULL;"); break;
            default: line(std::string(argument.type->name) + " " + name + " = {0};");
        }
        return "&" + name;
    }

    std::string written_call()
    {
        std::string call = std::string(operation_.name) + "(qbdb, db, ";
        for (size_t i = 0; i < operation_.count; i++) {
            const QbobjArgument &argument = operation_.arguments[i];
            call += (argument.direction == QBOBJ_OUT ? filled(argument) : given(i)) + ", ";
        }
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
        switch (argument.kind) {
            case QBOBJ_KIND_INT32: return "    " + print_number("", name, 'i', name);
            case QBOBJ_KIND_UINT64: return "    " + print_number("", name, 'n', name);
            case QBOBJ_KIND_STRING: return "    " + print_text(name, name);
            case QBOBJ_KIND_XML: return xml_output(name);
            default: break;
        }
        const QbobjField *head = argument.type + 1;
        if (alone_ && head->subtype && is_list(head->subtype))
            return list_output(head->subtype, head->name, name + "." + head->name);
        if (argument.kind == QBOBJ_KIND_LIST) return list_output(argument.type, name, name);
        if (is_list(argument.type)) return list_output(argument.type, name, "&" + name);
        const std::string print = print_record(argument.type, name, "&" + name, name + ".");
        return print.empty() ? "" : "    " + print;
    }

    std::string list_output(const QbobjField *type, const std::string &name, const std::string &first)
    {
        const std::string print = print_record(type, name, "each", "each->");
        return print.empty() ? ""
                             : joined({"    for (const ", type->name, " *each = ", first,
                                       "; each; each = each->next)\n        ", print});
    }

    /// Prints a record by the function that prints its type, or, where there is none, the field that tells most.
    std::string print_record(const QbobjField *type, const std::string &name, const std::string &address,
                             const std::string &member)
    {
        if (!alone_) {
            add_printer(type);
            return joined({"print_", type->name, "(0, \"", name, "\", ", address, ");\n"});
        }
        const QbobjField *field = telling_field(type);
        if (!field) return "";
        const std::string value = member + field->name;
        if (field->kind == 's') return print_text(field->name, value);
        const std::string indicator = indicator_of(field);
        const std::string condition = indicator.empty() ? "" : joined({"if (!", member, indicator, ") "});
        return condition + print_number("", field->name, field->kind, value);
    }

    std::string print_text(const std::string &name, const std::string &value)
    {
        if (alone_) return joined({"if (", value, ") printf(\"", name, ": %s\\n\", ", value, ");\n"});
        prints_text_ = true;
        return joined({"print_text(0, \"", name, "\", ", value, ");\n"});
    }

    std::string xml_output(const std::string &name)
    {
        if (alone_) return "    /* " + name + " is freed with xmlFreeNode(). */\n";
        prints_xml_ = true;
        return joined({"    xmlBufferPtr buffer = xmlBufferCreate();\n    xmlNodeDump(buffer, NULL, ", name,
                       ", 0, 1);\n    printf(\"", name,
                       ": %s\\n\", (const char *)xmlBufferContent(buffer));\n    xmlBufferFree(buffer);\n",
                       "    xmlFreeNode(", name, ");\n"});
    }

    std::string printer_head(const std::string &type) const override
    {
        return "static void print_" + type + "(int indent, const char *name, const " + type +
               " *record)\n{\n    printf(\"%*s%s:\\n\", indent, \"\", name);\n    indent += 2;\n";
    }

    std::string text_line(const std::string &name, bool secret) override
    {
        prints_text_ = true;
        const std::string value = "record->" + name;
        return "    print_text(indent, \"" + name + "\", " +
               (secret ? value + " && *" + value + " ? masked_password : " + value : value) + ");\n";
    }

    std::string field_line(const QbobjField *field) override
    {
        const std::string name = field->name;
        if (field->subtype) {
            const std::string part = field->subtype->name;
            const std::string print = "print_" + part + "(indent, \"" + name + "\", ";
            if (!is_list(field->subtype)) return "    if (record->" + name + ") " + print + "record->" + name + ");\n";
            return "    for (const " + part + " *each = record->" + name + "; each; each = each->next)\n        " +
                   print + "each);\n";
        }
        const std::string indicator = indicator_of(field);
        return (indicator.empty() ? "    " : "    if (!record->" + indicator + ") ") +
               print_number("%*s", name, field->kind, "indent, \"\", record->" + name);
    }

    // ---- The function that makes the call

    std::string includes() const
    {
        std::string text = "#include <inttypes.h>\n";
        if (prints_xml_) text += "#include <libxml/tree.h>\n";
        text += "#include <qbdb.h>\n";
        if (!what_.database.who.empty()) text += "#include <qbdb_journal.h>\n";
        text += "#include <qbobj.h>\n#include <stdio.h>\n";
        return text + (has_secrets() && !alone_ ? "#include <stdlib.h>\n#include <sys/types.h>\n" : "");
    }

    std::string call_function()
    {
        const std::string call = written_call();
        const std::string outputs = written_outputs();
        std::string secrets;
        for (size_t i = 0; i < values_.secrets().size(); i++)
            secrets += ", const char *secret_" + std::to_string(i + 1);
        return joined({"static int call_", short_name(operation_), "(qbdb_t *qbdb, sqlite3 *db", secrets, ")\n{\n",
                       body_, "    ErrorInfo err = {0};\n\n", judged(call), outputs, ended(), "}\n"});
    }

    /// The call, and what it means that it failed.
    std::string judged(const std::string &call) const
    {
        const std::string name = short_name(operation_);
        if (operation_.returns == QBOBJ_RETURNS_CODE) {
            const std::string made = "    const uint32_t code = " + call + ";\n    if (code != 0) ";
            if (!alone_)
                return made +
                       "return failed(code, &err);\n"
                       "    if (err.code != 0) fprintf(stderr, \"warning: %s\\n\", err.message);\n";
            return made + "{\n        fprintf(stderr, \"" + name +
                   ": %\" PRIu32 \" %s\\n\", code, err.message ? err.message : \"\");\n        return 1;\n    }\n";
        }
        std::string made = "    const int32_t result = (int32_t)" + call + ";\n";
        if (operation_.returns == QBOBJ_RETURNS_TRUTH) return made;
        const Loss loss = loss_of(operation_);
        return joined({made, "    if (result < 0) {\n",
                       alone_ ? "" : "        if (err.code != 0) return failed(err.code, &err);\n",
                       "        fprintf(stderr, \"", name, ": ", loss.words, "\\n\");\n        return ",
                       std::to_string(loss.status), ";\n    }\n"});
    }

    /// The returned value, where it is no code, and what it means.
    std::string ended() const
    {
        const std::string print = "    " + print_number("", "result", 'i', "result");
        switch (operation_.returns) {
            case QBOBJ_RETURNS_ID:
            case QBOBJ_RETURNS_COUNT: return print + "    return 0;\n";
            case QBOBJ_RETURNS_ANSWER: return print + "    return result == 0 ? 0 : 3; /* 3: no */\n";
            case QBOBJ_RETURNS_TRUTH: return print + "    return result != 0 ? 0 : 3; /* 3: no */\n";
            default: return "    return 0;\n";
        }
    }

    // ---- The function that opens the database

    std::string main_function() const
    {
        const DatabaseOptions &database = what_.database;
        std::string call = "call_" + short_name(operation_) + "(qbdb, db";
        for (size_t i = 0; i < values_.secrets().size(); i++) call += ", secret_" + std::to_string(i + 1);
        return joined({"int main(int argc, char **argv)\n{\n    const char *file = argc > 1 ? argv[1] : ",
                       c_literal(database.path), ";\n", secrets(),
                       "    qbdb_t *qbdb = NULL;\n    sqlite3 *db = NULL;\n    char why[256] = \"\";\n\n",
                       "    if (qbdb_open(file, ", database.read_only ? "QBDB_OPEN_READONLY" : "QBDB_OPEN_EXISTING",
                       ", NULL, &qbdb, &db, why, sizeof why) != 0) {\n        fprintf(stderr, \"%s\\n\", why);\n",
                       "        return 4;\n    }\n    qbdb->log_level = 0; /* what fails is said above */\n",
                       settings(), "    if (qbdb_request_begin(qbdb) != 0) { /* the pool of what is returned */\n",
                       "        qbdb_close(qbdb);\n        return 5;\n    }\n    const int status = ", call,
                       ");\n    qbdb_close(qbdb); /* and all that was returned */\n    return status;\n}\n"});
    }

    const bool alone_;
};

}  // namespace

std::string emit_c(const Emitted &what)
{
    return CWriter(what, false).program();
}

std::string emit_c_call(const Emitted &what)
{
    return CWriter(what, true).call_alone();
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
