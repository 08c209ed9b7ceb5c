// Manual pages in mdoc(7): the marks, and text that is safe between them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace manual {

/// Text without a character that means something to the formatter, in the middle of a line. Hyphens between letters
/// stay hyphens, others are minus signs; quotation marks are those of ASCII.
std::string escaped(std::string_view text);

/// The same where every character stands for itself, as in a program: all hyphens are minus signs.
std::string literal(std::string_view text);

/// One argument of a macro, whatever is in it.
std::string argument(std::string_view text);

class Page {
public:
    Page(const std::string &name, int section, const std::string &date);

    /// A macro and its arguments, each taken as it is.
    Page &macro(std::string_view name, const std::vector<std::string> &arguments = {});
    /// A line of macros that is written already.
    Page &raw(std::string_view line);
    Page &section(const std::string &title) { return macro("Sh", {title}); }
    Page &subsection(const std::string &title) { return macro("Ss", {title}); }
    /// Begins a paragraph, where a title does not begin one anyway.
    Page &paragraph();
    /// Paragraphs, one a line of the text; lines that begin with "- " are a list.
    Page &text(std::string_view paragraphs);
    /// One paragraph, without a mark of its own.
    Page &line(std::string_view paragraph);
    /// Lines of a program or of a terminal.
    Page &display(std::string_view lines);
    /// References to other pages, without repetition and in order.
    Page &references(std::vector<std::pair<std::string, int>> pages);

    const std::string &source() const { return source_; }

private:
    std::string source_;
};

}  // namespace manual
// SPDX-License-Identifier: Apache-2.0
