// The program in Python, over the package qbobj.
#include "emit.h"
#include "failure.h"

namespace qbcli {
namespace {

constexpr const char *kShow = R"(def show(name: str, value: object, indent: int = 0) -> None:
    """Prints what came back: a field a line, what is absent not at all, secrets as dots."""
    if isinstance(value, list):
        for each in value:
            show(name, each, indent)
    elif isinstance(value, qbobj.Record):
        print(f"{' ' * indent}{name}:")
        for field in value._type.fields:
            part = getattr(value, field.name)
            show(field.name, qbobj.masked_password if field.secret and part else part, indent + 2)
    elif value is not None:
        print(f"{' ' * indent}{name}: {value}")


)";

constexpr const char *kReadSecretInPython = R"(def read_secret(name: str) -> str:
    """A line of standard input: a secret stands in no program."""
    line = sys.stdin.readline().rstrip("\n")
    if not line:
        sys.exit(f"{name}: a line of standard input is needed")
    return line


)";

constexpr const char *kStatus = R"(    except qbobj.Error as error:
        print(error, file=sys.stderr)
        if isinstance(error, qbobj.NotFound):
            return 3
        return {2: 5, 5: 4, 7: 4}.get(error.code or 0, %OTHERWISE%)
)";

constexpr size_t kIndent = 4;
constexpr size_t kColumns = 100;

class PythonWriter {
public:
    explicit PythonWriter(const Emitted &what) : what_(what), operation_(what.operation), values_(what) {}

    std::string program() const
    {
        const DatabaseOptions &database = what_.database;
        const std::string outputs = written_outputs();
        std::string text = "#!/usr/bin/env python3\nimport sys\n\nimport qbobj\n\n\n";
        if (outputs.find("show(") != std::string::npos) text += kShow;
        if (!values_.secrets().empty()) text += kReadSecretInPython;
        text += "def main() -> int:\n    file = sys.argv[1] if len(sys.argv) > 1 else " +
                python_literal(database.path) + "\n";
        for (size_t i = 0; i < values_.secrets().size(); i++)
            text += "    secret_" + std::to_string(i + 1) + " = read_secret(" + python_literal(values_.secrets()[i]) +
                    ")\n";
        text += "    try:\n        with qbobj.open(file" + std::string(database.read_only ? ", readonly=True" : "") +
                timeout() + caller() + ") as db:\n            ";
        if (!outputs.empty()) text += "result = ";
        text += written_call() + "\n" + failures();
        return text + outputs + "    return " + status() + "\n\n\nif __name__ == \"__main__\":\n    sys.exit(main())\n";
    }

private:
    std::string timeout() const
    {
        constexpr uint32_t kThousand = 1000;
        const uint32_t limit = what_.database.timeout_ms;
        if (limit == QBDB_DEFAULT_TIMEOUT_MS) return "";
        std::string fraction = std::to_string(limit % kThousand);
        fraction.insert(0, 3 - fraction.size(), '0');
        return ", timeout=" + std::to_string(limit / kThousand) + "." + fraction;
    }

    std::string caller() const
    {
        return what_.database.who.empty() ? "" : ", caller=" + python_literal(what_.database.who);
    }

    std::string failures() const
    {
        static constexpr std::string_view kOtherwise = "%OTHERWISE%";
        std::string text = kStatus;
        return text.replace(text.find(kOtherwise), kOtherwise.size(),
                            operation_.returns == QBOBJ_RETURNS_ANSWER ? "4" : "1");
    }

    // ---- What is given

    std::string written_call() const
    {
        constexpr size_t kDepth = 3;
        std::vector<std::string> parts;
        for (size_t i = 0; i < operation_.count; i++)
            if (is_input(operation_.arguments[i]))
                parts.push_back(given(operation_.arguments[i], values_.given(i), kDepth + 1));
        return "db." + short_name(operation_) + in_brackets("(", parts, ")", kDepth);
    }

    std::string given(const QbobjArgument &argument, const std::optional<Json> &value, size_t depth) const
    {
        const bool nothing = !value || value->is_null();
        if (argument.kind == QBOBJ_KIND_STRING) return nothing ? "None" : text(*value);
        if (is_scalar(argument)) return nothing ? "0" : value->dump();
        switch (passing_of(argument, value)) {
            case Passing::kNull: return "None";
            case Passing::kRecords: return list(argument.type, *value, depth);
            default: return record(argument.type, nothing ? Json::object() : *value, depth);
        }
    }

    std::string record(const QbobjField *type, const Json &value, size_t depth) const
    {
        const Json members = value.is_array() ? Json{{type[1].name, value}} : value;
        std::vector<std::string> parts;
        for (const auto &[member, part] : members.items()) {
            if (part.is_null()) continue;
            const QbobjField *field = find_field(type, member);
            std::string shown;
            if (!field || field->kind == 's') shown = text(part);
            else if (is_number(field)) shown = part.dump();
            else if (is_list(field->subtype)) shown = list(field->subtype, part, depth + 1);
            else shown = record(field->subtype, part, depth + 1);
            parts.push_back(joined({member, "=", shown}));
        }
        return std::string("qbobj.") + type->name + in_brackets("(", parts, ")", depth);
    }

    std::string list(const QbobjField *type, const Json &value, size_t depth) const
    {
        std::vector<std::string> parts;
        if (value.is_object()) parts.push_back(record(type, value, depth + 1));
        else
            for (const Json &each : value) parts.push_back(record(type, each, depth + 1));
        return in_brackets("[", parts, "]", depth);
    }

    static std::string text(const Json &value)
    {
        if (const size_t secret = EmittedValues::secret_of(value)) return "secret_" + std::to_string(secret);
        const auto &given = value.get_ref<const std::string &>();
        return given == masked_password ? "qbobj.masked_password" : python_literal(given);
    }

    /// In one line, or a line each where that is too long.
    static std::string in_brackets(const char *open, const std::vector<std::string> &parts, const char *close,
                                   size_t depth)
    {
        std::string line;
        std::string lines;
        const std::string space = "\n" + std::string(depth * kIndent, ' ');
        for (const std::string &part : parts) {
            line += (line.empty() ? "" : ", ") + part;
            lines += joined({space, std::string(kIndent, ' '), part, ","});
        }
        const bool fits = depth * kIndent + line.size() < kColumns && line.find('\n') == std::string::npos;
        return fits ? open + line + close : open + lines + space + close;
    }

    // ---- What comes back

    std::string written_outputs() const
    {
        std::vector<std::string> names;
        for (size_t i = 0; i < operation_.count; i++)
            if (comes_back(operation_.arguments[i], values_.given(i))) names.emplace_back(operation_.arguments[i].name);
        if (is_answer())
            return "    print(f\"result: {int(result" + std::string(yes_is_zero() ? " is False" : "") + ")}\")\n";
        if (operation_.returns == QBOBJ_RETURNS_ID || operation_.returns == QBOBJ_RETURNS_COUNT)
            return "    print(f\"result: {result}\")\n";
        std::string text;
        for (size_t i = 0; i < names.size(); i++)
            text += "    show(\"" + names[i] + "\", result" + (names.size() > 1 ? "[" + std::to_string(i) + "]" : "") +
                    ")\n";
        return text;
    }

    bool yes_is_zero() const { return operation_.returns == QBOBJ_RETURNS_ANSWER; }
    bool is_answer() const { return yes_is_zero() || operation_.returns == QBOBJ_RETURNS_TRUTH; }
    std::string status() const { return is_answer() ? "0 if result else 3" : "0"; }

    const Emitted &what_;
    const QbobjOperation &operation_;
    EmittedValues values_;
};

}  // namespace

std::string emit_python(const Emitted &what)
{
    if (!what.database.root.empty()) throw Failure("--emit python: a program in Python has nothing for --root");
    return PythonWriter(what).program();
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
