#include "delimited.h"

#include "utf8.h"

namespace qbcli {
namespace {

/// A value without quotes and escapes.
std::string plain(const Json &value)
{
    if (value.is_null()) return "";
    // Bytes that are not UTF-8 can stand in a database that others wrote.
    if (value.is_string()) return well_formed(value.get_ref<const std::string &>());
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string tsv_cell(const Json &value)
{
    std::string cell;
    for (const char c : plain(value)) {
        switch (c) {
            case '\t': cell += "\\t"; break;
            case '\n': cell += "\\n"; break;
            case '\r': cell += "\\r"; break;
            case '\\': cell += "\\\\"; break;
            default: cell += c;
        }
    }
    return cell;
}

std::string csv_cell(const Json &value)
{
    std::string text = plain(value);
    const bool quoted = text.find_first_of(",\"\r\n") != std::string::npos || (value.is_string() && text.empty());
    if (!quoted) return text;
    std::string cell = "\"";
    for (const char c : text) cell += c == '"' ? "\"\"" : std::string(1, c);
    return cell + "\"";
}

template <class Cell>
std::string line(const Json &values, char separator, const char *end, bool terminal, Cell cell)
{
    std::string text;
    for (size_t i = 0; i < values.size(); i++) {
        if (i > 0) text += separator;
        const std::string written = cell(values[i]);
        text += terminal ? printable(written) : written;
    }
    return text + end;
}

}  // namespace

std::string tsv_text(const std::vector<std::string> &columns, const Json &rows, bool terminal)
{
    std::string text = line(columns, '\t', "\n", terminal, tsv_cell);
    for (const Json &row : rows) text += line(row, '\t', "\n", terminal, tsv_cell);
    return text;
}

std::string csv_text(const std::vector<std::string> &columns, const Json &rows, bool terminal)
{
    constexpr const char *kEnd = "\r\n";
    std::string text = line(columns, ',', kEnd, terminal, csv_cell);
    for (const Json &row : rows) {
        // A line without anything is taken for no row at all.
        const bool blank = row.size() == 1 && row[0].is_null();
        text += blank ? std::string("\"\"").append(kEnd) : line(row, ',', kEnd, terminal, csv_cell);
    }
    return text;
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
