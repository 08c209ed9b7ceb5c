// Statements about one record, turned into statements about all of them, and which are left alone.
#include "frame/set_wise.h"

#include "fixture/fixture.h"

namespace {

constexpr char kKeys[] =
    " (SELECT id AS related_key,+id AS related_value FROM `share` WHERE id BETWEEN %d AND %d) CROSS JOIN ";

TEST(SetWise, TheRecordsComeFirst)
{
    const struct {
        const char *format, *head, *rest;
    } kTurned[] = {
        {"SELECT a FROM t WHERE id=%d", "SELECT related_key,a FROM", "t WHERE id=related_value ORDER BY related_key"},
        {"SELECT a,b FROM t WHERE id=%d ORDER BY a COLLATE NOCASE,b", "SELECT related_key,a,b FROM",
         "t WHERE id=related_value ORDER BY related_key,a COLLATE NOCASE,b"},
        {"SELECT a FROM t INNER JOIN u ON u.id=%d AND u.word=%Q WHERE t.b IS NULL", "SELECT related_key,a FROM",
         "t INNER JOIN u ON u.id=related_value AND u.word=%Q WHERE t.b IS NULL ORDER BY related_key"},
        {"SELECT a||'(FROM x LIMIT' FROM `order by` WHERE b=(SELECT c FROM u WHERE u.id=%d)",
         "SELECT related_key,a||'(FROM x LIMIT' FROM",
         "`order by` WHERE b=(SELECT c FROM u WHERE u.id=related_value) ORDER BY related_key"},
        {"SELECT IFNULL((SELECT b FROM u WHERE u.id=t.id),2) FROM t WHERE (id=%d)",
         "SELECT related_key,IFNULL((SELECT b FROM u WHERE u.id=t.id),2) FROM",
         "t WHERE (id=related_value) ORDER BY related_key"},
    };
    for (const auto &[format, head, rest] : kTurned) {
        const qb::SetWise turned = qb::set_wise(format, "share");
        EXPECT_STREQ(turned.format, (std::string(head) + kKeys + rest).c_str());
        EXPECT_EQ(turned.sort_by, qb::SetWise::kInOrder);
        EXPECT_EQ(qb::set_wise(format, "share").format, turned.format) << "made once";
    }
}

/// An order by a text of the result without regard to case is not made by the statement.
TEST(SetWise, OneOrderIsLeftToOthers)
{
    const struct {
        const char *format;
        int column;
    } kSorted[] = {
        {"SELECT a FROM t WHERE id=%d ORDER BY a COLLATE NOCASE", 0},
        {"SELECT a,t.b FROM t WHERE id=%d ORDER BY t.b COLLATE NOCASE", 1},
        {"SELECT ',a',IFNULL(b,'('),a FROM t WHERE id=%d ORDER BY a COLLATE NOCASE", 2},
        {"SELECT IFNULL(b,a),a  FROM t WHERE id=%d  ORDER BY a COLLATE NOCASE ", 1},
        {"SELECT IFNULL((SELECT c FROM u WHERE u.d IN (1,2)),b),b FROM t WHERE id=%d ORDER BY b COLLATE NOCASE", 1},
    };
    for (const auto &[format, column] : kSorted) {
        const qb::SetWise turned = qb::set_wise(format, "share");
        EXPECT_EQ(turned.sort_by, column) << format;
        EXPECT_THAT(turned.format, testing::EndsWith("WHERE id=related_value ORDER BY related_key"));
        EXPECT_EQ(qb::set_wise(format, "share").sort_by, column) << "kept";
    }
    for (const char *format :
         {"SELECT a FROM t WHERE id=%d ORDER BY a", "SELECT a FROM t WHERE id=%d ORDER BY b COLLATE NOCASE",
          "SELECT ',b,' FROM t WHERE id=%d ORDER BY b COLLATE NOCASE",
          "SELECT a,b FROM t WHERE id=%d ORDER BY b,a COLLATE NOCASE",
          "SELECT a FROM t WHERE id=%d ORDER BY a COLLATE NOCASE DESC",
          "SELECT a FROM t WHERE id=%d ORDER BY a COLLATE NOCASE,b",
          "SELECT t.a FROM t WHERE id=%d ORDER BY a COLLATE NOCASE",
          "SELECT IFNULL(b,a) FROM t WHERE id=%d ORDER BY a COLLATE NOCASE"}) {
        const qb::SetWise turned = qb::set_wise(format, "share");
        EXPECT_EQ(turned.sort_by, qb::SetWise::kInOrder) << format;
        EXPECT_THAT(turned.format, testing::HasSubstr("ORDER BY related_key,")) << format;
    }
}

/// Of these a record would get other rows than alone, or nobody can be sure that it would not.
TEST(SetWise, WhatIsNotPlainIsLeftAlone)
{
    const char *const kLeft[] = {
        "",
        "SELECT ",
        "SELECT a FROM t",
        "SELECT a WHERE id=%d",
        " SELECT a FROM t WHERE id=%d",
        "select a FROM t WHERE id=%d",
        "UPDATE t SET a=1 WHERE id=%d",
        "DELETE FROM t WHERE id=%d",
        "WITH x AS (SELECT 1) SELECT a FROM t WHERE id=%d",
        // Rows are counted, joined into one, cut off or put in.
        "SELECT COUNT(*) FROM t WHERE id=%d",
        "SELECT count (a) FROM t WHERE id=%d",
        "SELECT MAX(a) FROM t WHERE id=%d",
        "SELECT group_concat(a) FROM t WHERE id=%d",
        "SELECT own(a) FROM t WHERE id=%d",
        "SELECT DISTINCT a FROM t WHERE id=%d",
        "SELECT a FROM t WHERE id=%d GROUP BY a",
        "SELECT a FROM t WHERE id=%d LIMIT 1",
        "SELECT a FROM t WHERE id=%d UNION SELECT b FROM u",
        "SELECT a FROM t WHERE id=%d EXCEPT SELECT b FROM u",
        "SELECT a FROM t WHERE b IN (SELECT b FROM u WHERE id=%d ORDER BY b)",
        // The columns of the records would be in it, or another column in the place of one.
        "SELECT * FROM t WHERE id=%d",
        "SELECT t.* FROM t WHERE id=%d",
        "SELECT a FROM t NATURAL JOIN u WHERE id=%d",
        "SELECT a FROM t JOIN u USING (b) WHERE id=%d",
        "SELECT a FROM t RIGHT JOIN u ON u.b=t.b WHERE id=%d",
        "SELECT a FROM t FULL JOIN u ON u.b=t.b WHERE id=%d",
        "SELECT a,b FROM t WHERE id=%d ORDER BY 2",
        "SELECT a,b FROM t WHERE id=%d ORDER BY b, 1",
        // Tables within the query know nothing of the records.
        "SELECT a FROM (SELECT a FROM t WHERE id=%d)",
        "SELECT a FROM t JOIN (SELECT b FROM u) WHERE id=%d",
        // Each time another answer.
        "SELECT RANDOM() FROM t WHERE id=%d",
        "SELECT CURRENT_TIMESTAMP FROM t WHERE id=%d",
        "SELECT DATETIME('now') FROM t WHERE id=%d",
        // The record's number is no value, or not the only one; text that is put in may be anything.
        "SELECT a FROM t WHERE id='%d'",
        "SELECT a FROM t WHERE id IN (%d)",
        "SELECT a FROM t WHERE id=%d0",
        "SELECT a FROM t%d WHERE id=%d",
        "SELECT a=%d FROM t",
        "SELECT a FROM t WHERE id=%d AND b=%d",
        "SELECT a FROM t WHERE id=%d %s",
        "SELECT a FROM t WHERE id=%d AND b='%q'",
        "SELECT a||'%%' FROM t WHERE id=%d",
        "SELECT a FROM t WHERE id=%u",
        "SELECT a FROM t WHERE id=%ld",
        "SELECT a FROM t ORDER BY id=%d",
        // What is not understood.
        "SELECT a FROM t WHERE id=%d -- AND b",
        "SELECT a FROM t WHERE id=%d /* b */",
        "SELECT a FROM t WHERE id=%d; SELECT b FROM t",
        "SELECT a FROM t WHERE id=%d AND b=?1",
        "SELECT a FROM t WHERE id=%d AND b=:b",
        "SELECT a FROM t WHERE id=%d AND b=$b",
        "SELECT a FROM t WHERE id=%d AND b='",
        "SELECT a FROM t WHERE id=%d AND `b",
        "SELECT a FROM t WHERE id=%d AND \"b\"=1",
        "SELECT a FROM t WHERE id=%d AND [b]=1",
        "SELECT a FROM t WHERE (id=%d",
        "SELECT a FROM t WHERE id=%d)",
        "SELECT a FROM t WHERE id=%d)(",
        "SELECT a FROM t INDEXED BY i WHERE id=%d",
        "SELECT a FROM t WHERE id=%",
    };
    for (const char *format : kLeft) EXPECT_EQ(qb::set_wise(format, "share").format, nullptr) << format;
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
