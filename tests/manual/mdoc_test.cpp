// What means something to a formatter comes out as itself.
#include "mdoc.h"

#include <gmock/gmock.h>

#include <regex>

#include "fixture/files.h"
#include "manual/rendered.h"

namespace {

struct Row {
    const char *text;
    const char *source;
};

void PrintTo(const Row &row, std::ostream *out)
{
    *out << row.text;
}

class Escaped : public testing::TestWithParam<Row> {};

TEST_P(Escaped, IsWrittenSoThatItStandsForItself)
{
    EXPECT_EQ(manual::escaped(GetParam().text), GetParam().source);
}

INSTANTIATE_TEST_SUITE_P(Characters, Escaped,
                         testing::Values(Row{"plain words", "plain words"}, Row{"C:\\temp", "C:\\etemp"},
                                         Row{"read-only", "read-only"}, Row{"-1", "\\-1"},
                                         Row{"a -wal file", "a \\-wal file"}, Row{"utf-8", "utf\\-8"},
                                         Row{"the caller's", "the caller's"},
                                         Row{"'err','crit'", "\\(aqerr\\(aq,\\(aqcrit\\(aq"}, Row{"`x`", "\\(gax\\(ga"},
                                         Row{"~ ^", "\\(ti \\(ha"}, Row{"a…", "a..."}, Row{"●", "\\[u25CF]"},
                                         Row{"é", "\\[u00E9]"}, Row{"🔑", "\\[u1F511]"}, Row{"", ""}));

TEST(Literal, HasMinusSignsForHyphens)
{
    EXPECT_EQ(manual::literal("read-only don't"), "read\\-only don\\(aqt");
}

TEST(Argument, IsOneWordAndNoMacro)
{
    EXPECT_EQ(manual::argument("qbdb_t *qbdb"), "\"qbdb_t *qbdb\"");
    EXPECT_EQ(manual::argument("Op"), "\\&Op");  // would be a macro
    EXPECT_EQ(manual::argument("."), "\\&.");    // would be a delimiter
    EXPECT_EQ(manual::argument("say \"so\""), "\"say \\(dqso\\(dq\"");
    EXPECT_EQ(manual::argument(""), "\\&");
}

TEST(Page, TextIsNeverARequest)
{
    manual::Page page("x", 3, "November 21, 2026");
    page.line(".so /etc/passwd").line("'br is text. .Nm too").display(".nf\n'fi\n\\fB\n  indented");
    EXPECT_EQ(page.source(),
              ".Dd November 21, 2026\n.Dt X 3\n.Os\n\\&.so /etc/passwd\n\\(aqbr is text.\n\\&.Nm too\n"
              ".Bd -literal -offset indent\n\\&.nf\n\\(aqfi\n\\efB\n  indented\n.Ed\n");
}

TEST(Page, LongLinesAndSentencesBegin)
{
    manual::Page page("x", 3, "November 21, 2026");
    page.line(std::string(70, 'a') + " bbbbbbb c. D (e.) f");
    EXPECT_THAT(page.source(), testing::EndsWith(std::string(70, 'a') + " bbbbbbb\nc.\nD (e.)\nf\n"));
}

TEST(Page, ListsAndParagraphs)
{
    manual::Page page("x", 3, "November 21, 2026");
    page.text("One:\n- first\n- second\nTwo");
    EXPECT_THAT(page.source(),
                testing::EndsWith("\nOne:\n.Bl -bullet -compact\n.It\nfirst\n.It\nsecond\n.El\n.Pp\nTwo\n"));
}

TEST(Page, ReferencesAreInOrderAndOnce)
{
    manual::Page page("x", 3, "November 21, 2026");
    page.references({{"b", 3}, {"A", 3}, {"z", 1}, {"b", 3}});
    EXPECT_THAT(page.source(), testing::EndsWith(".Os\n.Xr z 1 ,\n.Xr A 3 ,\n.Xr b 3\n"));
}

/// The proof: what went in comes out of a formatter.
TEST(Page, IsRenderedAsItWasMeant)
{
    const std::string odd = R"(.Nm 'Op' \fB \\ -x --y "Ar" ~/.x `date` ^a$ a|b #c %d .. \(aq \*(Aq \n(.l Ns , . ( ))";
    manual::Page page("x", 3, "November 21, 2026");
    page.section("NAME").raw(".Nm x").raw(".Nd y").section("DESCRIPTION");
    page.line(odd).display(odd + "\n.TH\n\n'x").raw(".Bl -tag -width Ds");
    page.macro("It Fa", {"Op"}).line("tagged").raw(".El");
    test::write_file("odd.3", page.source());
    const std::string rendered = test::rendered("odd.3");
    std::string in_one_line = std::regex_replace(rendered, std::regex("\\s+"), " ");
    EXPECT_THAT(in_one_line, testing::HasSubstr(odd));
    EXPECT_THAT(rendered, testing::HasSubstr("\n           " + odd + "\n           .TH\n\n           'x\n"));
    EXPECT_THAT(in_one_line, testing::HasSubstr(" Op tagged "));
    EXPECT_EQ(test::run("mandoc -Tlint -W warning odd.3").output, "");
    std::remove("odd.3");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
