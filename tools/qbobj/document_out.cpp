// A configuration as a document.
#include "document.h"
#include "qbobj.h"

namespace qbcli {
namespace {

/// In one line, with a blank behind each colon.
std::string json_text(const Json &value)
{
    if (!value.is_object()) return value.dump();
    const auto &[kind, inside] = value.get_ref<const Json::object_t &>().front();
    return "{" + json_text(kind) + ": " + json_text(inside) + "}";
}

void add_row(PrivateText &text, const Table &table, const Statement &rows, bool secrets)
{
    const char *before = "{";
    for (size_t i = 0; i < table.columns.size(); i++) {
        const Column &column = table.columns[i];
        const Value value = rows.value(static_cast<int>(i));
        if (!secrets && is_withheld(column, value)) continue;
        Json json = value_to_json(value, column.storage);
        std::string shown = json_text(json);
        text.append(before).append(json_text(column.name)).append(": ").append(shown);
        wipe(shown);
        wipe(json);
        before = ", ";
    }
    text += '}';
}

void add_table(PrivateText &text, const Database &database, const Table &table, bool secrets)
{
    text.append("    ").append(json_text(table.name)).append(": [");
    Statement rows(database, table.select());
    const char *before = "\n      ";
    while (rows.next()) {
        text += before;
        add_row(text, table, rows, secrets);
        before = ",\n      ";
    }
    text += before[0] == ',' ? "\n    ]" : "]";
}

/// The tables whose row numbers are never given again have counters, in a table of SQLite's own.
void add_counters(PrivateText &text, const Database &database)
{
    Statement rows(database, "SELECT name,seq FROM sqlite_sequence WHERE name IS NOT NULL ORDER BY name");
    const char *before = "\n    ";
    while (rows.next()) {
        text.append(before).append(json_text(rows.text(0))).append(": ");
        text += json_text(value_to_json(rows.value(1), Storage::integer));
        before = ",\n    ";
    }
    if (before[0] == ',') text += "\n  ";
}

}  // namespace

bool is_withheld(const Column &column, const Value &value)
{
    const auto *text = std::get_if<std::string>(&value);
    return column.secret && !std::holds_alternative<std::monostate>(value) && !(text && text->empty());
}

PrivateText document_of(const Database &database, bool secrets)
{
    const Snapshot snapshot(database);
    PrivateText text = private_text();
    text.append("{\n  \"format\": ").append(json_text(kFormat));
    text.append(",\n  \"schema_version\": ").append(std::to_string(pragma_number(database, "user_version")));
    text.append(",\n  \"library_version\": ").append(json_text(qbobj_version()));
    text.append(",\n  \"secrets\": ").append(secrets ? "true" : "false");
    text.append(",\n  \"tables\": {");
    const char *before = "\n";
    for (const Table &table : read_tables(database)) {
        text += before;
        add_table(text, database, table, secrets);
        before = ",\n";
    }
    text += "\n  },\n  \"counters\": {";
    add_counters(text, database);
    text += "}\n}\n";
    return text;
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
