// Statements: what a format and its arguments become, and that the outcome is what SQLite's own formatter and
// sqlite3_get_table would have given.
#include <climits>
#include <cmath>
#include <memory>
#include <random>

#include "fixture/fixture.h"
#include "format.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

using Table = std::vector<std::string>;

struct Statements : test::Database {
    const char *text = nullptr;
    std::string names;  // of the columns read last

    Statements()
    {
        sql("CREATE TABLE t (id INTEGER PRIMARY KEY, name TEXT, n INTEGER, x);"
            "CREATE TABLE `$odd name` (a, b);");
    }

    template <class... Args>
    int exec(const char *format, Args... args)
    {
        return qbdb_sql_exec_mprintf(qbdb, db, &text, "here.cpp", 7, format, args...);
    }

    template <class... Args>
    int read(Table *cells, const char *format, Args... args)
    {
        char **table = nullptr;
        int rows = -1;
        int columns = -1;
        const int rc =
            qbdb_sql_get_table_mprintf(qbdb, db, &text, "here.cpp", 8, &table, &rows, &columns, format, args...);
        cells->clear();
        if (rc) {
            EXPECT_EQ(table, nullptr);
            EXPECT_EQ(rows, 0);
            EXPECT_EQ(columns, 0);
        }
        take(cells, table, rows, columns);
        return rc;
    }

    static void take(Table *cells, char **table, int rows, int columns)
    {
        cells->push_back(std::to_string(rows) + "x" + std::to_string(columns));
        for (int i = 0; table && i < (rows + 1) * columns; i++)
            cells->push_back(table[i] ? std::string("=") + table[i] : "NULL");
        sqlite3_free_table(table);
    }

    template <class... Args>
    std::string scalar(const char *format, Args... args)
    {
        const char *value = "untouched";
        const int rc = qbdb_sql_get_scaler_mprintf(qbdb, db, &text, "here.cpp", 9, &value, format, args...);
        return rc ? "rc " + std::to_string(rc) : value ? value : "(null)";
    }

    uint32_t held() const { return statistics().held; }
    qbdb_cache_statistics statistics() const
    {
        qbdb_cache_statistics now;
        qbdb_get_cache_statistics(qbdb, &now);
        return now;
    }

    /// The same statement through SQLite's formatter and sqlite3_get_table, twice through the engine (once
    /// prepared, once kept): code, table and failure text have to be the same.
    template <class... Args>
    void same(const char *format, Args... args)
    {
        char *plain = sqlite3_mprintf(format, args...);
        SCOPED_TRACE(plain);
        char **table = nullptr;
        int rows = 0;
        int columns = 0;
        char *why = nullptr;
        const int rc = sqlite3_get_table(db, plain, &table, &rows, &columns, &why);
        Table expected;
        take(&expected, rc ? nullptr : table, rc ? 0 : rows, rc ? 0 : columns);
        if (rc) sqlite3_free_table(table);
        for (int time = 0; time < 2; time++) {
            Table cells;
            text = "untouched";
            EXPECT_EQ(read(&cells, format, args...), rc & 0xFF);
            EXPECT_EQ(cells, expected);
            EXPECT_EQ(std::string(text ? text : ""), std::string(why ? why : ""));
        }
        sqlite3_free(why);
        sqlite3_free(plain);
    }
};

// ---- What a format becomes

struct PlanCase {
    const char *format;
    const char *bound;  // one letter per conversion: b bound, s spliced; "plain" for SQLite's own formatter
};

struct Plans : testing::TestWithParam<PlanCase> {};

TEST_P(Plans, BindWhereAValueStands)
{
    qdb::Plan *plan = qdb::make_plan(GetParam().format);
    ASSERT_NE(plan, nullptr);
    std::string bound;
    for (uint32_t i = 0; i < plan->count; i++) bound += plan->conversions[i].bound ? 'b' : 's';
    EXPECT_EQ(plan->plain ? "plain" : bound, GetParam().bound) << GetParam().format;
    sqlite3_free(plan);
}

const PlanCase kPlans[] = {
    {"SELECT 1", ""},
    {"SELECT a FROM t WHERE a=%d AND b=%u AND c=%ld AND d=%lu AND e=%lld AND f=%llu AND g=%Q", "bbbbbbb"},
    {"SELECT a FROM t WHERE a='%q' AND b LIKE '%%%q%%' AND c='%d'", "bbs"},
    {"SELECT '/home/%s', '%s/%s', x'%s', 'it''s %s', '%s''s', '%s'%d, '%s'", "bsssssssb"},
    {"SELECT '%s", "s"},
    {"SELECT a FROM t ORDER BY '%s'", "s"},
    {"SELECT a FROM `%s` WHERE %s=%d", "ssb"},
    {"SELECT a FROM t WHERE a=%c", "s"},
    {"SELECT a FROM t WHERE col%d=1 AND x%Q=2 AND %d.5=a AND %Qx AND %d%d", "ssssss"},
    {"SELECT \"%d\",`%d`,[%d],'%d' FROM t", "ssss"},
    {"SELECT a -- %d\n FROM t /* %d */ WHERE a=%d", "ssb"},
    {"SELECT 'it''s' FROM t WHERE a=%d", "b"},
    {"SELECT a/b FROM t WHERE a=%d - %d", "bb"},
    {"SELECT a FROM t ORDER BY %d LIMIT %d OFFSET %d", "sbb"},
    {"SELECT a FROM t GROUP BY a, %d HAVING a>%d", "sb"},
    {"SELECT a FROM t WHERE a=(SELECT b FROM t ORDER BY %d) AND b=%d", "sb"},
    {"SELECT a FROM t WHERE by_day=%d AND standby=%d", "bb"},
    {"INSERT INTO t VALUES(%d,%Q)", "bb"},
    {"INSERT OR REPLACE INTO t(a) VALUES(%d)", "b"},
    {"replace into t VALUES(%d)", "b"},
    {"UPDATE t SET a=%d WHERE b=%Q", "bb"},
    {"DELETE FROM t WHERE a=%d", "b"},
    {"WITH c(n) AS (VALUES(%d)) SELECT n FROM c", "b"},
    {"/* note */ SELECT %d", "b"},
    {"CREATE TABLE u AS SELECT %d", "plain"},
    {"PRAGMA user_version=%d", "plain"},
    {"%s FROM t", "s"}, {"%sFROM t", "plain"},
    {"SELECT %f", "plain"},
    {"SELECT %5d", "plain"},
    {"SELECT %w", "plain"},
    {"SELECT %", "plain"},
    {"SELECT ?, %d", "plain"},
    {"SELECT :a, %d", "plain"},
    {"SELECT @a, %d", "plain"},
    {"SELECT $a, %d", "plain"},
    {"SELECT ':a ?1 $x', a$b, `$user` FROM t WHERE a=%d", "b"},
    {"SELECT %d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d",
     "bbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbb"},
    {"SELECT %d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d",
     "plain"},
    {"", "plain"},
};

INSTANTIATE_TEST_SUITE_P(Formats, Plans, testing::ValuesIn(kPlans));

TEST_F(Statements, PrepareASetOfColumnsOnce)
{
    sql("INSERT INTO t(id) VALUES(1),(2)");
    ASSERT_EQ(exec("UPDATE t SET %s WHERE id=%d", "name='anna',n=5", 1), 0);
    const auto before = statistics();
    ASSERT_EQ(exec("UPDATE t SET %s WHERE id=%d", "name='o''hara',n=-6", 2), 0);
    ASSERT_EQ(exec("UPDATE t SET %s WHERE id=%d", "name='',n=7", 1), 0);
    EXPECT_EQ(statistics().misses, before.misses);
    EXPECT_THAT(rows("SELECT id,name,n,typeof(n) FROM t"), ElementsAre("1||7|integer", "2|o'hara|-6|integer"));
    ASSERT_EQ(exec("UPDATE t SET %s WHERE id=%d", "name='x'", 2), 0);
    EXPECT_EQ(statistics().misses, before.misses + 1);
    std::string many = "n=0";
    for (int i = 1; i < 40; i++) many += ",n=" + std::to_string(i);
    ASSERT_EQ(exec("UPDATE t SET %s WHERE id=%d", many.c_str(), 2), 0);
    EXPECT_EQ(value("SELECT n FROM t WHERE id=2"), "39");
}

TEST_F(Statements, AreTheSameWhateverTheirLength)
{
    for (const size_t length : {0, 900, 1000, 1001, 1002, 1003, 1004, 1005, 1006, 1007, 1008, 2100, 40000}) {
        const std::string blanks(length, ' ');
        same("SELECT %s%d AS n", blanks.c_str(), 7);
        same("SELECT %d AS n,%s %Q AS q", 7, (blanks + "1").c_str(), "it's");
    }
}

// ---- Equal to SQLite's own

TEST_F(Statements, GiveWhatSqliteGives)
{
    EXPECT_EQ(exec("INSERT INTO t "
                   "VALUES(1,'anna',10,NULL),(2,'it''s',-5,x'00ff'),(3,NULL,9223372036854775807,1.5),(4,'',0,'')"),
              0);
    EXPECT_EQ(exec("INSERT INTO `$odd name` VALUES(1,'a')"), 0);
    same("SELECT * FROM t");
    same("SELECT * FROM t WHERE id=%d", 2);
    same("SELECT * FROM t WHERE id=%d", 99);
    same("SELECT * FROM t WHERE name=%Q", "it's");
    same("SELECT * FROM t WHERE name=%Q", nullptr);
    same("SELECT * FROM t WHERE name IS %Q", nullptr);
    same("SELECT * FROM t WHERE name LIKE '%%%q%%'", "'");
    same("SELECT '100%%' AS p, id FROM t WHERE id>%u", 1u);
    same("SELECT * FROM t WHERE n=%lld OR n=%ld", 9223372036854775807LL, -5L);
    same("SELECT typeof(%llu) AS y, %llu AS v", 9223372036854775807ULL, 9223372036854775807ULL);
    same("SELECT typeof(%llu) AS y, %llu AS v, id FROM t WHERE id=%d", 9223372036854775808ULL, ULLONG_MAX, 3);
    same("SELECT typeof(%lu) AS y, id FROM t WHERE id<%lu", ULONG_MAX, ULONG_MAX);
    same("SELECT * FROM %s WHERE %s=%d", "t", "id", 3);
    same("SELECT * FROM `%s` WHERE a=%d", "$odd name", 1);
    same("SELECT id FROM t ORDER BY n %s LIMIT %d OFFSET %d", "DESC", 2, 1);
    same("SELECT id, name FROM t ORDER BY %d", 2);
    same("SELECT n, COUNT(*) AS c FROM t GROUP BY %d", 1);
    same("SELECT '%c' AS c, '%d' AS d, '%Q' AS q", 'z', 12, "a");
    same("SELECT 1 AS %Q FROM %Q", "name", "t");
    same("SELECT (%d) AS a, id FROM t -- note ' %d\n WHERE id=%d", 1, 2, 3);
    same("SELECT 1 AS a /* %s */ WHERE %d", "*/ , 2 AS b /*", 1);
    same("SELECT id FROM t WHERE n=0-%s", "-5");
    same("SELECT id FROM t WHERE n=0-%s AND name=%Q\n", "-5 ", "x");
    same("SELECT 8%s* 2 */ AS a, %d AS b", "/", 4);
    same("SELECT 8 %s/* ' */ AS a, '%d' AS b", "/ 2", 4);
    same("SELECT '%s' AS a, %d AS b", "x' AS z, 'y", 4);
    same("SELECT '%s AS a, %d AS b", "x'", 4);
    same("SELECT '%s' || '' AS a, %d AS b", "x", 4);
    for (const char *name : {"anna", "o'hara", "", "100%"}) {
        same("SELECT '/home/%s' AS a, %d AS b, '<%q>' AS c", name, 4, name);
        same("SELECT '/home/%s/100%%' AS a", name);
        same("SELECT id FROM t WHERE name='%q' OR name LIKE '%%%q%%'", name, name);
        same("SELECT 1 AS '%s'", name);
        same("SELECT id FROM '%s'", name);
        same("SELECT id FROM t WHERE id IN '%s'", name);
    }
    same("SELECT id FROM '%s' WHERE name='%q'", "t", "anna");
    same("SELECT %s AS a, %d AS b", "?", 4);
    same("SELECT %s AS a, %d AS b", "$v", 4);
    same("SELECT %s$v AS a, %d AS b", "", 4);
    same("SELECT %s AS a, %d AS b", ":v", 4);
    same("SELECT %s AS a, %d AS b, %s AS c", "'?:@$#'", 4, "\"x\"");
    same("SELECT %d AS a; -- the end", 1);
    same("; ;SELECT %d AS a;;", 1);
    same("SELECT id FROM t WHERE id IN (%s) AND id<%d", "1,2,3", 3);
    same("SELECT %s", nullptr);
    same("SELECT '%q' AS a, %Q AS b, '%s' AS c", nullptr, nullptr, nullptr);
    same("SELECT * FROM missing WHERE a=%d", 1);
    same("SELECT * FROM t WHERE missing=%d", 1);
    same("SELEC %d", 1);
    same("SELECT * FROM t WHERE name=%Q AND", "a");
    same("SELECT * FROM t WHERE a='%q", "a");
    same("SELECT abs(%lld) AS a", static_cast<long long>(INT64_MIN));
    same("SELECT 1 AS a WHERE %d COLLATE nosuch = 2", 1);
    same("PRAGMA table_info(%Q)", "t");
    same("EXPLAIN QUERY PLAN SELECT id FROM t WHERE id=%d", 1);
    same("SELECT printf('%%d', %d) AS a", 5);
    same("SELECT x'%s' AS a, length(x'00') AS b", "410042");
    same("SELECT '%c' AS a, 2 AS b", 0);
    same("VALUES(%d,%Q)", 1, "a");
    sql("INSERT INTO t(id) VALUES(9)");
    same("INSERT INTO t(id,name) VALUES(%d,%Q) ON CONFLICT(id) DO UPDATE SET name=%Q RETURNING id,name", 9, "a", "b");
    for (const char *list :
         {"name='it''s',n=-5", "name='''',x=007", "name='',n=0", "n=999999999999999999", "n=9999999999999999999",
          "n=-0", "name='a?1 :b $c',n=1", "n=id+1", "name=upper('x')", "n=1.5", "x=x'00ff'", "name=NULL,n=2",
          "name='a' || 'b'",
          "n=1 ", " n=1", "n =1", "n=1,", ",n=1", "", "n=", "n='", "n='a''", "=1", "1=1", "n=1 WHERE 0 --",
          "missing=1", "`n`=1", "\"n\"=1", "name='\xC3\x28',n=3", "n=1,n=2", "(n,x)=(1,2)", "n=-", "name=\"id\""}) {
        same("UPDATE t SET %s WHERE id=%d RETURNING id,name,n,typeof(n) AS tn,x,typeof(x) AS tx", list, 9);
        same("UPDATE t SET %s RETURNING *", list);
        same("UPDATE t SET n=8,%s WHERE id=%d RETURNING *", list, 9);
        same("UPDATE t SET %s,x=%Q WHERE id=%d RETURNING *", list, "y", 9);
        same("UPDATE t SET %s%s WHERE id=%d RETURNING *", list, list, 9);
        same("SELECT ' SET %s' AS a, %d AS b", list, 1);
    }
    same("UPDATE t SET %s WHERE id=9 RETURNING *", nullptr);
    same("INSERT INTO t(id) VALUES(%d)", 1);
    same("SELECT a FROM (SELECT %d AS a UNION SELECT %d) ORDER BY %d DESC", 1, 2, 1);
}

TEST_F(Statements, GiveWhatSqliteGivesForRandomRows)
{
    std::mt19937_64 random(20240611);
    const auto pick = [&random](size_t n) { return random() % n; };
    const std::string bytes[] = {"",   "'",  "''", "\"", "`",   "%", "%%", "?",        "?1",           ";",
                                 "--", "/*", "*/", "\n", "\\",  "[", "]",  "\xC3\xA4", "\xE2\x82\xAC", "a",
                                 "B",  "0",  "12", "-1", "1e3", " ", "$x", ":y",       "@z",           "NULL"};
    const auto word = [&] {
        std::string made;
        for (size_t n = pick(6); n; n--) made += bytes[pick(std::size(bytes))];
        return made;
    };
    const double reals[] = {0.0, -0.0, 1.0, 0.1, -2.5, 1e100, 1e-9, 123456789.123456789, 9.3e18, 3e-320, INFINITY};
    sqlite3_stmt *insert = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(db, "INSERT INTO t(name,n,x) VALUES(?1,?2,?3)", -1, &insert, nullptr), SQLITE_OK);
    for (int row = 0; row < 300; row++) {
        const std::string name = word();
        const std::string blob = word() + std::string(pick(3), '\0') + word();
        if (pick(8)) sqlite3_bind_text(insert, 1, name.c_str(), -1, SQLITE_TRANSIENT);
        else sqlite3_bind_text(insert, 1, blob.data(), static_cast<int>(blob.size()), SQLITE_TRANSIENT);
        sqlite3_bind_int64(insert, 2, static_cast<int64_t>(random() >> pick(64)) * (pick(2) ? 1 : -1));
        if (const size_t kind = pick(4); kind == 0) sqlite3_bind_double(insert, 3, reals[pick(std::size(reals))]);
        else if (kind == 1) sqlite3_bind_blob(insert, 3, blob.data(), static_cast<int>(blob.size()), SQLITE_TRANSIENT);
        else if (kind == 2) sqlite3_bind_int64(insert, 3, pick(2) ? INT64_MIN : INT64_MAX);
        else sqlite3_bind_null(insert, 3);
        ASSERT_EQ(sqlite3_step(insert), SQLITE_DONE);
        sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    same("SELECT * FROM t");
    same("SELECT rowid, x || '' AS s, n * 1.0 AS r, quote(x) AS q FROM t");
    for (int round = 0; round < 400; round++) {
        const std::string a = word();
        const std::string b = word();
        const auto n = static_cast<int>(random());
        const auto big = static_cast<long long>(random());
        const auto wide = static_cast<unsigned long long>(random());
        switch (round % 10) {
            case 0: same("SELECT id,name FROM t WHERE name=%Q OR name='%q'", a.c_str(), b.c_str()); break;
            case 1: same("SELECT id,n FROM t WHERE n<%lld AND id>%d LIMIT %d", big, n % 300, n % 9); break;
            case 2:
                same("SELECT %llu AS w, typeof(%llu) AS y, %lu AS v, %u AS u", wide, wide, wide,
                     static_cast<unsigned>(n));
                break;
            case 3: same("SELECT id FROM t WHERE name LIKE '%%%q%%' ESCAPE '!' OR n=%lld", a.c_str(), big); break;
            case 4: same("SELECT %Q AS a, '%q' AS b, %d AS c, '%d' AS d", a.c_str(), b.c_str(), n, n); break;
            case 5: same("SELECT '%s' AS a, %d AS b", a.c_str(), n); break;
            case 6: same("SELECT %s AS a, %d AS b", a.c_str(), n); break;
            case 7: same("SELECT %d AS b, id%sid AS a FROM t WHERE id<%d", n, a.c_str(), 4); break;
            case 8: same("SELECT `%s`, %d AS b FROM t WHERE id=%d", a.c_str(), n, 1); break;
            default:
                same("SELECT /* %s */ %d AS b, %Q AS c -- %s\n, 1 AS d", a.c_str(), n, a.c_str(), b.c_str());
                break;
        }
    }
}

// ---- Each call

TEST_F(Statements, ExecStoresValues)
{
    ASSERT_EQ(exec("INSERT INTO t VALUES(%d,%Q,%llu,%Q)", -1, "a'b", 18446744073709551615ULL, nullptr), 0) << text;
    EXPECT_EQ(text, nullptr);
    EXPECT_THAT(rows("SELECT id,name,typeof(n),n,x FROM t"), ElementsAre("-1|a'b|real|1.84467440737096e+19|NULL"));
    ASSERT_EQ(exec("SELECT id FROM t"), 0);
    ASSERT_EQ(exec("  -- nothing\n"), 0);
    ASSERT_EQ(exec("SELECT 1 WHERE 0%s", ""), 0);
}

TEST_F(Statements, ReturnPrimaryCodesWithAText)
{
    sql("CREATE TABLE u (a UNIQUE NOT NULL)");
    ASSERT_EQ(exec("INSERT INTO u VALUES(%d)", 1), 0);
    EXPECT_EQ(exec("INSERT INTO u VALUES(%d)", 1), 19);
    EXPECT_STREQ(text, "UNIQUE constraint failed: u.a");
    EXPECT_EQ(exec("INSERT INTO u VALUES(%Q)", nullptr), 19);
    EXPECT_STREQ(text, "NOT NULL constraint failed: u.a");
    EXPECT_EQ(exec("INSERT INTO nowhere VALUES(%d)", 1), 1);
    EXPECT_STREQ(text, "no such table: nowhere");
    EXPECT_EQ(exec("SELECT %d; SELECT 2", 1), 1);
    EXPECT_STREQ(text, "more than one statement");
    EXPECT_EQ(qbdb_sql_exec_mprintf(qbdb, db, nullptr, "f", 1, "SELECT * FROM nowhere"), 1);
    EXPECT_EQ(qbdb_sql_exec_mprintf(qbdb, nullptr, &text, "f", 1, "SELECT 1"), 21);
    EXPECT_STREQ(text, "no database connection");
    Table cells;
    EXPECT_EQ(read(&cells, "SELECT id FROM nowhere WHERE id=%d", 1), 1);
    EXPECT_STREQ(text, "no such table: nowhere");
    EXPECT_EQ(read(&cells, "SELECT abs(%lld)", static_cast<long long>(INT64_MIN)), 1);
    EXPECT_STREQ(text, "integer overflow");
    EXPECT_EQ(scalar("SELECT abs(%lld)", static_cast<long long>(INT64_MIN)), "rc 1");
    EXPECT_STREQ(text, "integer overflow");
    EXPECT_EQ(scalar("SELECT"), "rc 1");
    EXPECT_STREQ(text, "incomplete input");
}

TEST_F(Statements, ScalarReadsText)
{
    sql("INSERT INTO t VALUES(1,'anna',7,NULL),(2,NULL,NULL,x'4100')");
    EXPECT_EQ(scalar("SELECT name FROM t WHERE id=%d", 1), "anna");
    EXPECT_EQ(scalar("SELECT n FROM t WHERE id=%d", 1), "7");
    EXPECT_EQ(scalar("SELECT name FROM t WHERE id=%d", 2), "(null)");
    EXPECT_EQ(scalar("SELECT name FROM t WHERE id=%d", 3), "(null)");
    EXPECT_EQ(scalar("SELECT x FROM t WHERE id=%d", 2), "A");
    EXPECT_EQ(scalar(" "), "(null)");
    EXPECT_EQ(scalar("UPDATE t SET n=n+1 RETURNING n"), "8");
    EXPECT_THAT(rows("SELECT n FROM t"), ElementsAre("8", "NULL"));
}

TEST_F(Statements, ScalarLivesInTheRequestPool)
{
    ASSERT_EQ(qbdb_request_begin(qbdb), 0);
    const char *value = nullptr;
    ASSERT_EQ(qbdb_sql_get_scaler_mprintf(qbdb, db, nullptr, "f", 1, &value, "SELECT 'a' || %d", 5), 0);
    EXPECT_STREQ(value, "a5");
    const char *const first = value;
    ASSERT_EQ(qbdb_request_begin(qbdb), 0);
    ASSERT_EQ(qbdb_sql_get_scaler_mprintf(qbdb, db, nullptr, "f", 1, &value, "SELECT 'b' || %d", 5), 0);
    EXPECT_EQ(value, first) << "the emptied pool gives the same place again";
    EXPECT_STREQ(value, "b5");
    qbdb_request_end(qbdb);
}

struct NumberCase {
    const char *sql;
    int32_t i32;
    uint64_t u64;
    int notfound;
};

TEST_F(Statements, NumbersAreRead)
{
    const NumberCase cases[] = {
        {"SELECT 5", 5, 5, 0},
        {"SELECT -5", -5, static_cast<uint64_t>(-5), 0},
        {"SELECT NULL", 0, 0, 0},
        {"SELECT '017'", 17, 15, 0},
        {"SELECT '0x1F'", 0, 31, 0},
        {"SELECT '12ab'", 12, 12, 0},
        {"SELECT 'ab'", 0, 0, 0},
        {"SELECT '18446744073709551615'", -1, UINT64_MAX, 0},
        {"SELECT 2.9", 2, 2, 0},
        {"SELECT 9223372036854775808", -1, 9223372036854775808ull, 0},
        {"SELECT 1e30", -1, UINT64_MAX, 0},
        {"SELECT -1e30", 0, 9223372036854775808ull, 0},
        {"SELECT 1 WHERE 0", 77, 77, 1},
        {" ", 77, 77, 1},
    };
    for (const NumberCase &each : cases) {
        SCOPED_TRACE(each.sql);
        int32_t i32 = 77;
        uint64_t u64 = 77;
        int notfound = 9;
        EXPECT_EQ(qbdb_sql_get_int32_mprintf(qbdb, db, &text, "f", 1, &i32, &notfound, each.sql), 0);
        EXPECT_EQ(i32, each.i32);
        EXPECT_EQ(notfound, each.notfound);
        notfound = 9;
        EXPECT_EQ(qbdb_sql_get_uint64_mprintf(qbdb, db, &text, "f", 1, &u64, &notfound, each.sql), 0);
        EXPECT_EQ(u64, each.u64);
        EXPECT_EQ(notfound, each.notfound);
        EXPECT_EQ(qbdb_sql_get_int32_mprintf(qbdb, db, nullptr, "f", 1, &i32, nullptr, each.sql), 0);
    }
}

TEST_F(Statements, NumbersStayAsTheyWereOnFailure)
{
    int32_t i32 = 77;
    uint64_t u64 = 78;
    EXPECT_EQ(qbdb_sql_get_int32_mprintf(qbdb, db, &text, "f", 1, &i32, nullptr, "SELECT a FROM nowhere"), 1);
    EXPECT_STREQ(text, "no such table: nowhere");
    EXPECT_EQ(qbdb_sql_get_uint64_mprintf(qbdb, db, nullptr, "f", 1, &u64, nullptr, "SELECT abs(%lld)",
                                          static_cast<long long>(INT64_MIN)),
              1);
    // The row is read, then the rest of the statement fails: nothing is taken from it.
    sql("CREATE TABLE u (a UNIQUE); INSERT INTO u VALUES(1);"
        "CREATE TRIGGER g AFTER UPDATE ON t BEGIN INSERT INTO u VALUES(1); END; INSERT INTO t(id,n) VALUES(1,5)");
    EXPECT_EQ(qbdb_sql_get_int32_mprintf(qbdb, db, &text, "f", 1, &i32, nullptr, "UPDATE t SET n=6 RETURNING n"), 19);
    EXPECT_EQ(i32, 77);
    EXPECT_EQ(u64, 78u);
    EXPECT_EQ(value("SELECT n FROM t"), "5");
}

// ---- The cache

TEST_F(Statements, AreKeptAndFoundAgain)
{
    const auto before = statistics();
    for (int i = 0; i < 10; i++) EXPECT_EQ(scalar("SELECT %d + 1", i), std::to_string(i + 1));
    const auto after = statistics();
    EXPECT_EQ(after.misses - before.misses, 1u);
    EXPECT_EQ(after.hits - before.hits, 9u);
    EXPECT_EQ(after.held - before.held, 1u);
    // Another format with the same text is the same statement.
    const std::string copy = "SELECT %d + 1";
    EXPECT_EQ(scalar(copy.c_str(), 1), "2");
    EXPECT_EQ(statistics().held, after.held);
    EXPECT_EQ(statistics().misses, after.misses);
}

TEST_F(Statements, AQueryThatIsSplicedInFirstIsKept)
{
    const auto ask = [this](const char *head, int value) { return scalar("%s WHERE 5=%d", head, value); };
    const auto before = statistics();
    for (int i = 0; i < 6; i++) EXPECT_EQ(ask("SELECT '?'||'x'", i), i == 5 ? "?x" : "(null)");
    EXPECT_EQ(statistics().misses - before.misses, 1u);
    EXPECT_EQ(statistics().hits - before.hits, 5u);
    // A number behind BY is a column's place, and what is no query takes no values.
    sql("CREATE TABLE o (a, b); INSERT INTO o VALUES(1,9),(2,8)");
    const auto held = statistics().held;
    EXPECT_EQ(scalar("%s %d", "SELECT a,b FROM o ORDER BY", 2), "2");
    EXPECT_EQ(scalar("%s %d DESC", "SELECT b FROM o ORDER BY a,", 1), "9");
    EXPECT_EQ(ask("VALUES(7) UNION SELECT 8 FROM o", 5), "7");
    EXPECT_EQ(scalar("%s", "SELECT 6"), "6");
    EXPECT_EQ(statistics().held, held);
}

TEST_F(Statements, OneBufferMayHoldDifferentFormats)
{
    char format[32];
    for (int i = 0; i < 3; i++) {
        snprintf(format, sizeof format, "SELECT %%d * %d", i);
        EXPECT_EQ(scalar(format, 5), std::to_string(5 * i));
    }
}

TEST_F(Statements, TheLeastRecentlyUsedGoesFirst)
{
    qbdb_set_statement_cache(qbdb, 0);
    EXPECT_EQ(held(), 0u);
    qbdb_set_statement_cache(qbdb, 3);
    const char *const formats[] = {"SELECT %d+0", "SELECT %d+1", "SELECT %d+2", "SELECT %d+3"};
    for (int i = 0; i < 3; i++) scalar(formats[i], 1);
    scalar(formats[0], 1);  // used again: the second one is the oldest now
    const auto before = statistics();
    EXPECT_EQ(before.held, 3u);
    scalar(formats[3], 1);
    EXPECT_EQ(statistics().held, 3u);
    EXPECT_EQ(statistics().evictions, before.evictions + 1);
    const auto misses = statistics().misses;
    EXPECT_EQ(scalar(formats[0], 1), "1");
    EXPECT_EQ(scalar(formats[2], 1), "3");
    EXPECT_EQ(statistics().misses, misses);
    EXPECT_EQ(scalar(formats[1], 1), "2");
    EXPECT_EQ(statistics().misses, misses + 1);
    qbdb_set_statement_cache(qbdb, 1);
    EXPECT_EQ(held(), 1u);
    qbdb_set_statement_cache(qbdb, 0);
    EXPECT_EQ(scalar(formats[1], 1), "2");
    EXPECT_EQ(held(), 0u);
}

TEST_F(Statements, TheCacheStaysWithinItsBound)
{
    qbdb_set_statement_cache(qbdb, 20);
    for (int i = 0; i < 500; i++)
        EXPECT_EQ(scalar("SELECT %d AS c%s", i, std::to_string(i).c_str()), std::to_string(i));
    EXPECT_EQ(held(), 20u);
    std::vector<std::string> formats;
    for (int i = 0; i < 3000; i++) formats.push_back("SELECT " + std::to_string(i) + "+%d");
    for (int i = 0; i < 3000; i++) EXPECT_EQ(scalar(formats[static_cast<size_t>(i)].c_str(), 1), std::to_string(i + 1));
    EXPECT_EQ(held(), 20u);
}

TEST_F(Statements, SchemaChangesAreNoticed)
{
    sql("INSERT INTO t(id) VALUES(1)");
    Table cells;
    ASSERT_EQ(read(&cells, "SELECT * FROM t WHERE id=%d", 1), 0);
    EXPECT_EQ(cells[0], "1x4");
    ASSERT_EQ(exec("ALTER TABLE t ADD COLUMN added DEFAULT 'new'"), 0) << text;
    same("SELECT * FROM t WHERE id=%d", 1);
    ASSERT_EQ(read(&cells, "SELECT * FROM t WHERE id=%d", 1), 0);
    EXPECT_EQ(cells[0], "1x5");
    EXPECT_EQ(cells.back(), "=new");
    ASSERT_EQ(exec("DROP TABLE t"), 0);
    same("SELECT * FROM t WHERE id=%d", 1);
    ASSERT_EQ(exec("CREATE TABLE t AS SELECT %d AS id", 1), 0) << text;
    same("SELECT * FROM t WHERE id=%d", 1);
}

TEST_F(Statements, KeptStatementsHoldNoLocks)
{
    sql("INSERT INTO t(id) VALUES(1),(2)");
    EXPECT_EQ(scalar("SELECT id FROM t WHERE id>=%d", 1), "1");
    ASSERT_EQ(exec("DROP TABLE t"), 0) << text;
    ASSERT_EQ(qbdb_sql_begin(qbdb, db, 0, "f", 1), 0u);
    ASSERT_EQ(qbdb_sql_commit(qbdb, db, 0, "f", 1), 0u);
}

TEST_F(Statements, ForeignConnectionsAreNotCached)
{
    sqlite3 *other = nullptr;
    ASSERT_EQ(sqlite3_open(":memory:", &other), SQLITE_OK);
    const auto before = statistics();
    const char *value = nullptr;
    for (int i = 0; i < 3; i++) {
        ASSERT_EQ(qbdb_sql_get_scaler_mprintf(qbdb, other, &text, "f", 1, &value, "SELECT %d || %Q", i, "x"), 0);
        EXPECT_EQ(value, std::to_string(i) + "x");
    }
    EXPECT_EQ(qbdb_sql_exec_mprintf(qbdb, other, &text, "f", 1, "SELECT * FROM nowhere"), 1);
    EXPECT_STREQ(text, "no such table: nowhere");
    EXPECT_EQ(statistics().misses, before.misses);
    EXPECT_EQ(statistics().hits, before.hits);
    EXPECT_EQ(sqlite3_close(other), SQLITE_OK) << "a statement is left";
}

TEST_F(Statements, NamesForValuesArePreparedPlainFromThenOn)
{
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM %Q", "t"), "0");
    const auto after = statistics();
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM %Q", "$user"), value("SELECT COUNT(*) FROM `$user`"));
    EXPECT_EQ(statistics().misses, after.misses);
}

// ---- Called back while a statement is prepared or runs

struct Inner {
    Statements *test;
    const char *format;
    std::vector<std::string> answers;
};

void call_back(sqlite3_context *context, int, sqlite3_value **arguments)
{
    auto *inner = static_cast<Inner *>(sqlite3_user_data(context));
    const int depth = sqlite3_value_int(arguments[0]);
    const std::string answer = depth > 0 ? inner->test->scalar(inner->format, depth - 1) : "end";
    sqlite3_result_text(context, (std::to_string(depth) + " " + answer).c_str(), -1, SQLITE_TRANSIENT);
}

TEST_F(Statements, MayCallThemselves)
{
    Inner inner{this, "SELECT deeper(%d)", {}};
    sqlite3_create_function(db, "deeper", 1, SQLITE_UTF8, &inner, call_back, nullptr, nullptr);
    EXPECT_EQ(scalar(inner.format, 3), "3 2 1 0 end");
    EXPECT_EQ(scalar(inner.format, 1), "1 0 end");
    EXPECT_EQ(held(), statistics().held);
}

void empty_cache(sqlite3_context *context, int, sqlite3_value **)
{
    auto *test = static_cast<Statements *>(sqlite3_user_data(context));
    qbdb_set_statement_cache(test->qbdb, 0);
    sqlite3_result_int(context, static_cast<int>(test->held()));
}

TEST_F(Statements, TheCacheMayBeEmptiedWhileOneRuns)
{
    scalar("SELECT 5");
    sqlite3_create_function(db, "empty_cache", 0, SQLITE_UTF8, this, empty_cache, nullptr, nullptr);
    EXPECT_EQ(scalar("SELECT empty_cache() + %d", 0), "1") << "only the running one is left";
    EXPECT_EQ(held(), 0u);
}

size_t plan_slot(const char *format)
{
    const auto number = reinterpret_cast<uintptr_t>(format);
    return ((number >> 3) ^ (number >> 13)) & 1023;
}

int connect_module(sqlite3 *db, void *data, int, const char *const *, sqlite3_vtab **vtab, char **)
{
    auto *inner = static_cast<Inner *>(data);
    if (inner->answers.size() < 3) {
        inner->answers.push_back(inner->test->scalar(inner->format, 6, 7));
        inner->answers.push_back(inner->test->scalar("SELECT %d", 8));
    }
    sqlite3_declare_vtab(db, "CREATE TABLE x(a)");
    *vtab = static_cast<sqlite3_vtab *>(sqlite3_malloc(sizeof(sqlite3_vtab)));
    memset(*vtab, 0, sizeof **vtab);
    return SQLITE_OK;
}

// A virtual table that reads its own tables when it is connected does so while the outer statement is being
// prepared. Its format may share the slot of the outer one's plan.
TEST_F(Statements, PreparingMayCallBack)
{
    static sqlite3_module module{};
    module.xConnect = connect_module;
    module.xBestIndex = [](sqlite3_vtab *, sqlite3_index_info *) { return SQLITE_OK; };
    module.xDisconnect = [](sqlite3_vtab *vtab) {
        sqlite3_free(vtab);
        return SQLITE_OK;
    };
    module.xOpen = [](sqlite3_vtab *, sqlite3_vtab_cursor **cursor) {
        *cursor = static_cast<sqlite3_vtab_cursor *>(sqlite3_malloc(sizeof(sqlite3_vtab_cursor)));
        memset(*cursor, 0, sizeof **cursor);
        return SQLITE_OK;
    };
    module.xClose = [](sqlite3_vtab_cursor *cursor) {
        sqlite3_free(cursor);
        return SQLITE_OK;
    };
    module.xFilter = [](sqlite3_vtab_cursor *, int, const char *, int, sqlite3_value **) { return SQLITE_OK; };
    module.xNext = [](sqlite3_vtab_cursor *) { return SQLITE_OK; };
    module.xEof = [](sqlite3_vtab_cursor *) { return 1; };
    module.xColumn = [](sqlite3_vtab_cursor *, sqlite3_context *, int) { return SQLITE_OK; };
    module.xRowid = [](sqlite3_vtab_cursor *, sqlite3_int64 *) { return SQLITE_OK; };

    const auto memory = std::make_unique<char[]>(1 << 20);
    char *outer = memory.get();
    strcpy(outer, "SELECT COUNT(*) + %d FROM own_table WHERE a<>%Q");
    char *shared = nullptr;
    for (char *at = outer + 4096; at < outer + (1 << 20) - 64 && !shared; at += 8)
        if (plan_slot(at) == plan_slot(outer)) shared = at;
    ASSERT_NE(shared, nullptr);
    strcpy(shared, "SELECT %d * %d");

    Inner inner{this, shared, {}};
    ASSERT_EQ(sqlite3_create_module(db, "own_table", &module, &inner), SQLITE_OK);
    EXPECT_EQ(scalar(outer, 3, "x"), "3");
    EXPECT_THAT(inner.answers, testing::Contains("42"));
    EXPECT_THAT(inner.answers, testing::Contains("8"));
    EXPECT_EQ(scalar(shared, 6, 8), "48");
    EXPECT_EQ(scalar(outer, 5, "x"), "5");
    EXPECT_EQ(scalar(shared, 7, 8), "56");
}

// ---- The statement hook

struct Seen {
    std::string sql;
    std::string file;
    uint32_t line;
};

struct Hook {
    std::vector<Seen> seen;
    std::string refuse;
    const char *text = nullptr;
    int rc = 5;
    static int call(void *self, const char *sql, const char *file, uint32_t line, const char **text)
    {
        auto *hook = static_cast<Hook *>(self);
        hook->seen.push_back({sql, file, line});
        if (hook->refuse.empty() || hook->seen.back().sql.find(hook->refuse) == std::string::npos) return 0;
        *text = hook->text;
        return hook->rc;
    }
    std::vector<std::string> texts() const
    {
        std::vector<std::string> all;
        for (const Seen &each : seen) all.push_back(each.file + ":" + std::to_string(each.line) + " " + each.sql);
        return all;
    }
};

TEST_F(Statements, TheHookSeesEachStatementWithItsValues)
{
    Hook hook;
    qbdb_set_statement_hook(qbdb, Hook::call, &hook);
    Table cells;
    int32_t i32 = 0;
    uint64_t u64 = 0;
    EXPECT_EQ(qbdb_sql_begin(qbdb, db, 0, "a.cpp", 1), 0u);
    EXPECT_EQ(exec("INSERT INTO t(id,name) VALUES(%d,%Q)", 1, "it's"), 0);
    EXPECT_EQ(read(&cells, "SELECT id FROM t WHERE id=%d", 1), 0);
    EXPECT_EQ(scalar("SELECT %llu", ULLONG_MAX), "1.84467440737096e+19");
    EXPECT_EQ(qbdb_sql_get_int32_mprintf(qbdb, db, nullptr, "b.cpp", 2, &i32, nullptr, "SELECT %d", 2), 0);
    EXPECT_EQ(qbdb_sql_get_uint64_mprintf(qbdb, db, nullptr, "c.cpp", 3, &u64, nullptr, "SELECT %d", 3), 0);
    EXPECT_EQ(qbdb_sql_commit(qbdb, db, 0, "d.cpp", 4), 0u);
    EXPECT_EQ(qbdb_sql_begin(qbdb, db, 0, "e.cpp", 5), 0u);
    EXPECT_EQ(qbdb_sql_rollback(qbdb, db, 0, "f.cpp", 6), 0u);
    EXPECT_THAT(hook.texts(),
                ElementsAre("a.cpp:1 BEGIN IMMEDIATE", "here.cpp:7 INSERT INTO t(id,name) VALUES(1,'it''s')",
                            "here.cpp:8 SELECT id FROM t WHERE id=1", "here.cpp:9 SELECT 18446744073709551615",
                            "b.cpp:2 SELECT 2", "c.cpp:3 SELECT 3", "d.cpp:4 COMMIT", "e.cpp:5 BEGIN IMMEDIATE",
                            "f.cpp:6 ROLLBACK"));
    qbdb_set_statement_hook(qbdb, nullptr, nullptr);
    EXPECT_EQ(scalar("SELECT 1"), "1");
    EXPECT_EQ(hook.seen.size(), 9u);
}

TEST_F(Statements, TheHookMayRefuseAnyStatement)
{
    Hook hook;
    qbdb_set_statement_hook(qbdb, Hook::call, &hook);
    char temporary[] = "disk on fire";
    hook.refuse = "SELECT";
    hook.text = temporary;
    hook.rc = 2067;
    EXPECT_EQ(scalar("SELECT 1"), "rc 19");
    temporary[0] = 'D';
    EXPECT_STREQ(text, "disk on fire") << "the text is copied";
    hook.text = nullptr;
    hook.rc = 10;
    Table cells;
    EXPECT_EQ(read(&cells, "SELECT %d", 1), 10);
    EXPECT_STREQ(text, "refused");
    EXPECT_EQ(qbdb_sql_exec_mprintf(qbdb, db, nullptr, "f", 1, "SELECT 1"), 10);
    hook.refuse = "BEGIN";
    EXPECT_EQ(qbdb_sql_begin(qbdb, db, 0, "f", 1), 10u);
    EXPECT_TRUE(sqlite3_get_autocommit(db));
    hook.refuse = "COMMIT";
    EXPECT_EQ(qbdb_sql_begin(qbdb, db, 0, "f", 1), 0u);
    EXPECT_EQ(exec("INSERT INTO t(id) VALUES(1)"), 0);
    EXPECT_EQ(qbdb_sql_commit(qbdb, db, 0, "f", 1), 10u);
    EXPECT_TRUE(sqlite3_get_autocommit(db));
    EXPECT_THAT(rows("SELECT * FROM t"), IsEmpty());
    hook.refuse = "ROLLBACK";
    EXPECT_EQ(qbdb_sql_begin(qbdb, db, 0, "f", 1), 0u);
    EXPECT_EQ(qbdb_sql_rollback(qbdb, db, 0, "f", 1), 0u);
    EXPECT_TRUE(sqlite3_get_autocommit(db));
    qbdb_set_statement_hook(qbdb, nullptr, nullptr);
}

int nested_hook(void *self, const char *sql, const char *, uint32_t, const char **)
{
    auto *test = static_cast<Statements *>(self);
    if (strstr(sql, "outer")) test->scalar("SELECT %d AS inner_value", 1);
    return 0;
}

TEST_F(Statements, TheHookMayRunStatementsItself)
{
    qbdb_set_statement_hook(qbdb, nested_hook, this);
    for (int i = 0; i < 3; i++) EXPECT_EQ(scalar("SELECT %d AS outer_value", i), std::to_string(i));
    qbdb_set_statement_hook(qbdb, nullptr, nullptr);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
