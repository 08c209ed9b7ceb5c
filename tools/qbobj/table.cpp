#include "table.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <vector>

#include "records.h"
#include "utf8.h"

namespace qbcli {
namespace {

constexpr size_t kGap = 2;              // blanks between columns
constexpr size_t kWidestSqueezed = 40;  // widths that a cell is cut to when a table is too wide
constexpr size_t kNarrowestSqueezed = 20;
constexpr int kLastRank = 3;
constexpr const char *kNothing = "(none)";

bool is_empty(const Json &value)
{
    return value.is_null() || (value.is_string() && value.get_ref<const std::string &>().empty()) ||
           (value.is_structured() && value.empty());
}

/// A value in one cell or line.
std::string cell_text(const Json &value)
{
    if (value.is_null()) return "";
    if (value.is_string()) return printable(value.get_ref<const std::string &>());
    if (value.is_array()) return std::to_string(value.size()) + (value.size() == 1 ? " entry" : " entries");
    return value.dump();
}

/// What a person looks for first: names, then ids, then the rest; what a record was called before, the
/// database's own key, and what is masked, last.
int rank(std::string_view name)
{
    if (name == "resource_id" || name.starts_with('_') || name.starts_with("Old")) return kLastRank;
    if (name.ends_with("Name")) return 0;
    if (name.ends_with("Id") || name.ends_with("ID") || name == kKeyWord) return 1;
    return 2;
}

struct PrintedColumn {
    std::string name;
    std::vector<std::string> cells;
    size_t width = 0;
    bool numbers = true;

    explicit PrintedColumn(const std::string &title) : name(title), width(display_width(title)) {}
    bool empty() const
    {
        return std::all_of(cells.begin(), cells.end(), [](const std::string &cell) { return cell.empty(); });
    }
    int order() const
    {
        const bool masked = std::find(cells.begin(), cells.end(), masked_password) != cells.end();
        return masked ? kLastRank : rank(name);
    }
};

/// The key word as a rule repeats a field; then it needs no column of its own.
bool repeats_a_field(const Json &row)
{
    const auto &members = row.get_ref<const Json::object_t &>();
    const auto key = row.find(kKeyWord);
    return std::any_of(members.begin(), members.end(),
                       [&](const auto &member) { return member.first != kKeyWord && member.second == *key; });
}

bool shows_key_word(const Json &rows)
{
    return std::any_of(rows.begin(), rows.end(), [](const Json &row) {
        return row.is_object() && row.contains(kKeyWord) && !repeats_a_field(row);
    });
}

class PrintedTable {
public:
    PrintedTable(const Json &rows, bool chosen)
    {
        const bool with_key_word = chosen || shows_key_word(rows);
        for (const Json &row : rows) {
            if (row.is_object()) {
                for (const auto &[name, value] : row.items())
                    if (name != kKeyWord || with_key_word) add(name, value);
            } else {
                add("value", row);
            }
            height_++;
        }
        for (PrintedColumn &column : columns_) column.cells.resize(height_);
        if (chosen) return;
        std::erase_if(columns_, [](const PrintedColumn &column) { return column.empty(); });
        std::stable_sort(columns_.begin(), columns_.end(),
                         [](const PrintedColumn &a, const PrintedColumn &b) { return a.order() < b.order(); });
    }

    std::string text(size_t indent, size_t width)
    {
        const size_t left_out = records_inside_.size() + (width ? squeeze(width > indent ? width - indent : 1) : 0);
        const std::string margin(indent, ' ');
        std::string text = margin + line([](const PrintedColumn &column, size_t) { return column.name; }, 0);
        for (size_t i = 0; i < height_; i++)
            text += margin + line([](const PrintedColumn &column, size_t row) { return column.cells[row]; }, i);
        if (left_out > 0)
            text += margin + "(" + std::to_string(left_out) + (left_out == 1 ? " more column" : " more columns") +
                    ": --json shows all)\n";
        return text;
    }

private:
    void add(const std::string &name, const Json &value)
    {
        if (value.is_object() && !value.empty()) {
            records_inside_.insert(name);
            return;
        }
        auto [found, is_new] = index_.try_emplace(name, columns_.size());
        if (is_new) columns_.emplace_back(name);
        PrintedColumn &column = columns_[found->second];
        column.cells.resize(height_);
        column.cells.push_back(is_empty(value) ? "" : cell_text(value));
        column.width = std::max(column.width, display_width(column.cells.back()));
        column.numbers = column.numbers && (value.is_number() || value.is_null());
    }

    size_t total(size_t widest, size_t count) const
    {
        size_t sum = 0;
        for (size_t i = 0; i < count; i++) sum += std::min(columns_[i].width, widest) + (i ? kGap : 0);
        return sum;
    }

    /// Makes the table fit; returns how many columns had to go.
    size_t squeeze(size_t width)
    {
        const size_t all = columns_.size();
        size_t widest = total(SIZE_MAX, all) <= width ? SIZE_MAX : kWidestSqueezed;
        while (widest > kNarrowestSqueezed && widest != SIZE_MAX && total(widest, all) > width) widest--;
        size_t count = all;
        while (count > 1 && total(widest, count) > width) count--;
        while (count < all && widest < kWidestSqueezed && total(widest + 1, count) <= width) widest++;
        if (count == 1) widest = std::min(widest, width);
        columns_.resize(count, PrintedColumn(""));
        for (PrintedColumn &column : columns_) column.width = std::min(column.width, widest);
        return all - count;
    }

    template <class CellOf>
    std::string line(CellOf cell_of, size_t row) const
    {
        std::string text;
        for (const PrintedColumn &column : columns_) {
            const std::string cell = fit(cell_of(column, row), column.width);
            const std::string blanks(column.width - display_width(cell), ' ');
            if (&column != &columns_.front()) text.append(kGap, ' ');
            text += column.numbers ? blanks + cell : cell + blanks;
        }
        text.erase(text.find_last_not_of(' ') + 1);
        return text + "\n";
    }

    std::vector<PrintedColumn> columns_;  // in the order of display once the table is made
    std::map<std::string, size_t> index_;
    std::set<std::string> records_inside_;  // have no room in a cell
    size_t height_ = 0;
};

/// Whether a list's records differ in the records inside, as the protocols with their options do.
bool vary(const Json &rows)
{
    std::map<std::string, size_t> count;
    for (const Json &row : rows)
        if (row.is_object())
            for (const auto &[name, value] : row.items())
                if (value.is_object() && !value.empty()) count[name]++;
    return std::any_of(count.begin(), count.end(), [&](const auto &each) { return each.second < rows.size(); });
}

/// Whether a record is little more than the list inside, as an enclosure is with its disks.
bool is_group(const Json &row)
{
    constexpr size_t kMostFields = 4;
    if (!row.is_object()) return false;
    size_t fields = 0;
    bool list = false;
    for (const Json &value : row) {
        if (value.is_array() && !value.empty()) list = true;
        else if (!is_empty(value)) fields++;
    }
    return list && fields <= kMostFields;
}

bool reads_as_sections(const Json &rows)
{
    return vary(rows) || std::any_of(rows.begin(), rows.end(), is_group);
}

/// What a section is called: the record's key word or name, else its number.
std::string title(const Json &record, size_t i)
{
    const auto text = [](const Json &value) { return value.is_string() && !is_empty(value); };
    if (record.is_object()) {
        if (record.contains(kKeyWord) && text(record[kKeyWord])) return cell_text(record[kKeyWord]);
        for (const auto &[name, value] : record.items())
            if (rank(name) == 0 && text(value)) return cell_text(value);
    }
    return "[" + std::to_string(i + 1) + "]";
}

class Layout {
public:
    Layout(size_t width, bool chosen) : width_(width), chosen_(chosen) {}

    void add(const Json &value, size_t indent)
    {
        if (value.is_object()) return add_record(value, indent);
        if (value.is_array() && value.size() == 1) return add(value.front(), indent);
        if (value.is_array() && !value.empty()) {
            if (!chosen_ && reads_as_sections(value)) return add_sections(value, indent);
            text_ += PrintedTable(value, chosen_ && indent == 0).text(indent, width_);
            return;
        }
        text_ += std::string(indent, ' ') + (is_empty(value) ? kNothing : cell_text(value)) + "\n";
    }

    std::string take() { return std::move(text_); }

private:
    /// XML of several lines.
    static bool is_markup(const Json &value)
    {
        if (!value.is_string()) return false;
        const auto &text = value.get_ref<const std::string &>();
        return text.starts_with('<') && text.find('\n') != std::string::npos;
    }

    void add_lines(const std::string &text, size_t indent)
    {
        for (size_t start = 0; start < text.size();) {
            const size_t end = std::min(text.find('\n', start), text.size());
            text_.append(indent, ' ').append(printable(text.substr(start, end - start))).append("\n");
            start = end + 1;
        }
    }

    void add_sections(const Json &rows, size_t indent)
    {
        for (size_t i = 0; i < rows.size(); i++) {
            if (i > 0 && indent == 0) text_ += '\n';
            text_.append(indent, ' ').append(title(rows[i], i)).append("\n");
            add(rows[i], indent + kGap);
        }
    }

    /// A list with its counts, of which also the empty list is worth a line; a record has texts.
    static bool is_counted_list(const Json &record)
    {
        return std::all_of(record.begin(), record.end(),
                           [](const Json &value) { return value.is_number() || value.is_array(); });
    }

    void add_record(const Json &record, size_t indent)
    {
        const bool with_empty_lists = indent == 0 && is_counted_list(record);
        const auto shown = [&](const std::string &name, const Json &value) {
            if (chosen_ && indent == 0) return true;
            if (name == kKeyWord && repeats_a_field(record)) return false;
            return !is_empty(value) || (value.is_array() && with_empty_lists);
        };
        size_t longest = 0;
        bool any = false;
        for (const auto &[name, value] : record.items()) {
            if (!shown(name, value)) continue;
            any = true;
            if ((!value.is_structured() && !is_markup(value)) || value.empty())
                longest = std::max(longest, display_width(name));
        }
        if (!any) text_ += std::string(indent, ' ') + kNothing + "\n";
        for (const auto &[name, value] : record.items())
            if (shown(name, value)) add_member(name, value, indent, longest);
    }

    void add_member(const std::string &name, const Json &value, size_t indent, size_t longest)
    {
        text_.append(indent, ' ').append(name);
        if (is_markup(value)) {
            text_ += '\n';
            return add_lines(value.get_ref<const std::string &>(), indent + kGap);
        }
        if (value.is_structured() && !value.empty()) {
            text_ += '\n';
            return add(value, indent + kGap);
        }
        text_.append(longest - display_width(name) + kGap, ' ');
        text_ += value.is_structured() ? kNothing : cell_text(value);
        text_ += '\n';
    }

    const size_t width_;
    const bool chosen_;
    std::string text_;
};

}  // namespace

std::string lay_out(const Json &value, size_t width, bool chosen)
{
    Layout layout(width, chosen);
    layout.add(value, 0);
    return layout.take();
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
