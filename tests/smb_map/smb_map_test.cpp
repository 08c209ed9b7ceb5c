#include "fixture/fixture.h"

using test::elements;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

constexpr uint32_t kNone = 0xFFFFFFFF;
constexpr char kAll[] = "SELECT * FROM smb_username_map ORDER BY id";

struct Map : test::Database {
    SmbUserNameMapCollection maps{};

    SmbUserNameMap map(const char *unix_name, const char *smb_name,
                       const char *type = TABLE_SMB_USERNAME_MAP_TYPE_UNAME) const
    {
        SmbUserNameMap row{};
        row.UnixUserName = unix_name;
        row.SmbUserName = smb_name;
        row.Type = type;
        return row;
    }
    uint32_t add(SmbUserNameMap row) { return qbobj_addSmbUserNameMap(qbdb, db, &row, &err); }
    uint32_t set_smb_name(SmbUserNameMap row) { return qbobj_setSmbUserNameMapSmbUserName(qbdb, db, &row, &err); }
    uint32_t count(const char *name, const char *type = TABLE_SMB_USERNAME_MAP_TYPE_UNAME)
    {
        return qbobj_getSmbUserNameMapCount(qbdb, db, name, type, &err);
    }
    uint32_t list() { return qbobj_getSmbUserNameMapCollection(qbdb, db, &maps, &err); }

    /// The map's failures are logged once, with a line feed, and not as a copy of the caller's error.
    template <class Call>
    void expect_map_failure(uint32_t code, const std::string &message, Call call)
    {
        SCOPED_TRACE(message);
        const std::string before = content();
        log.clear();
        EXPECT_EQ(call(), code);
        EXPECT_EQ(err.code, code);
        EXPECT_STREQ(err.message, message.c_str());
        EXPECT_STREQ(err.file, "qbobj_api2_smb_username_map.cpp");
        EXPECT_GT(err.line, 0u);
        EXPECT_EQ(logged(2), std::vector{message + "\n"});
        EXPECT_THAT(log, Not(Contains(testing::Field(&test::LogLine::flag, 1u))));
        EXPECT_EQ(content(), before);
        EXPECT_TRUE(sqlite3_get_autocommit(db));
    }
    void expect_no_statement() { EXPECT_THAT(take_statements(), ElementsAre(StartsWith("BEGIN"), "ROLLBACK")); }
};

TEST_F(Map, ListsInTableOrderAndAppends)
{
    sql("INSERT INTO smb_username_map "
        "VALUES(7,'anna@x.com','anna','uname'),(3,'bob','b''b','other'),(9,NULL,NULL,NULL)");
    SmbUserNameMap before{};
    maps.SmbUserNameMap = &before;
    ASSERT_EQ(list(), 0u) << err.message;
    const auto rows = elements(maps.SmbUserNameMap);
    ASSERT_EQ(rows.size(), 4u);
    EXPECT_EQ(rows[0], &before);
    EXPECT_EQ(rows[1]->resource_id, 3);
    EXPECT_EQ(rows[1]->Id, 3);
    EXPECT_STREQ(rows[1]->UnixUserName, "bob");
    EXPECT_STREQ(rows[1]->SmbUserName, "b'b");
    EXPECT_STREQ(rows[1]->Type, "other");
    EXPECT_EQ(rows[2]->Id, 7);
    EXPECT_EQ(rows[3]->Id, 9);
    EXPECT_EQ(rows[3]->UnixUserName, nullptr);
}

TEST_F(Map, ListingTracesItsRows)
{
    sql("INSERT INTO smb_username_map VALUES(7,'a','b','uname'),(9,NULL,NULL,NULL)");
    qbdb->log_level = 5;
    ASSERT_EQ(qbobj_getSmbUserNameMapCollection(qbdb, db, &maps, &err), 0u);
    EXPECT_THAT(logged(5), Contains("x_qbobj_getSmbUserNameMapCollection() rc=0 nrow=2\n"));
    fail_statement(1);
    ASSERT_EQ(qbobj_getSmbUserNameMapCollection(qbdb, db, &maps, &err), 5u);
    EXPECT_THAT(logged(5), Contains("x_qbobj_getSmbUserNameMapCollection() rc=5 nrow=0\n"));
}

TEST_F(Map, AnEmptyMapIsAnEmptyList)
{
    ASSERT_EQ(list(), 0u) << err.message;
    EXPECT_EQ(maps.SmbUserNameMap, nullptr);
}

TEST_F(Map, Counts)
{
    sql("INSERT INTO smb_username_map(unix_uname,smb_uname,type) VALUES('anna','a','uname'),('anna','b','uname'),"
        "('anna','c','other'),('bob','d','uname')");
    EXPECT_EQ(count("anna"), 2u);
    EXPECT_EQ(err.code, 0u);
    EXPECT_EQ(count("bob"), 1u);
    EXPECT_EQ(count("nobody"), 0u);
    EXPECT_EQ(count("o'brien"), 0u);
}

TEST_F(Map, CountsNothingOfAnInvalidTypeWithoutAQuery)
{
    for (const char *type : {"other", "", static_cast<const char *>(nullptr)}) {
        take_statements();
        EXPECT_EQ(count("anna", type), kNone);
        EXPECT_EQ(err.code, 0u);
        expect_no_statement();
    }
    EXPECT_EQ(count(nullptr), kNone);
    expect_no_statement();
}

TEST_F(Map, AFailedCountIsLoggedOnly)
{
    fail_statement(1);
    EXPECT_EQ(count("anna"), kNone);
    EXPECT_EQ(err.code, 0u);
    EXPECT_EQ(err.message, nullptr);
    EXPECT_THAT(logged(2), ElementsAre("Failed DB Query for 'SELECT FROM smb_username_map'. injected\n"));
}

TEST_F(Map, AddsTheSameMappingTwice)
{
    ASSERT_EQ(add(map("o'brien@x.com", "o'b")), 0u) << err.message;
    ASSERT_EQ(add(map("o'brien@x.com", "o'b")), 0u) << err.message;
    EXPECT_THAT(rows(kAll), ElementsAre("1|o'brien@x.com|o'b|uname", "2|o'brien@x.com|o'b|uname"));
}

TEST_F(Map, AddsOnlyTheFirstOfAChain)
{
    SmbUserNameMap second = map("bob", "b");
    SmbUserNameMap first = map("anna", "a");
    first.next = &second;
    ASSERT_EQ(add(first), 0u) << err.message;
    EXPECT_THAT(rows(kAll), ElementsAre("1|anna|a|uname"));
}

TEST_F(Map, RemovesANamesRowsOfEveryType)
{
    sql("INSERT INTO smb_username_map(unix_uname,smb_uname,type) VALUES('anna','a','uname'),('anna','b','other'),"
        "('annabel','c','uname')");
    ASSERT_EQ(qbobj_deleteSmbUserNameMap(qbdb, db, "anna", &err), 0u) << err.message;
    EXPECT_THAT(rows(kAll), ElementsAre("3|annabel|c|uname"));
    EXPECT_EQ(qbobj_deleteSmbUserNameMap(qbdb, db, "anna", &err), 0u);
}

TEST_F(Map, MovesANamesRowsOfEveryType)
{
    sql("INSERT INTO smb_username_map(unix_uname,smb_uname,type) VALUES('anna','a','uname'),('anna','b','other'),"
        "('bob','c','uname')");
    ASSERT_EQ(qbobj_setSmbUserNameMapUnixUserNameForAll(qbdb, db, "anna", "o'brien", &err), 0u) << err.message;
    EXPECT_THAT(rows(kAll), ElementsAre("1|o'brien|a|uname", "2|o'brien|b|other", "3|bob|c|uname"));
}

TEST_F(Map, MovingANameWithoutRowsSucceedsAndChangesNothing)
{
    sql("INSERT INTO smb_username_map(unix_uname,smb_uname,type) VALUES('bob','c','uname')");
    const std::string before = content();
    EXPECT_EQ(qbobj_setSmbUserNameMapUnixUserNameForAll(qbdb, db, "anna", "carl", &err), 0u);
    EXPECT_EQ(content(), before);
}

TEST_F(Map, ChangesTheSmbNameOfOneType)
{
    sql("INSERT INTO smb_username_map(unix_uname,smb_uname,type) VALUES('anna','a','uname'),('anna','b','other'),"
        "('bob','c','uname')");
    ASSERT_EQ(set_smb_name(map("anna", "o'a")), 0u) << err.message;
    EXPECT_THAT(rows(kAll), ElementsAre("1|anna|o'a|uname", "2|anna|b|other", "3|bob|c|uname"));
    EXPECT_EQ(set_smb_name(map("carl", "x")), 0u);
}

TEST_F(Map, RunsOneStatementEach)
{
    struct {
        const char *statement;
        uint32_t (*call)(Map *);
    } const cases[] = {
        {"SELECT id, unix_uname, smb_uname, type FROM `smb_username_map`", [](Map *t) { return t->list(); }},
        {"SELECT COUNT(*) FROM `smb_username_map` WHERE unix_uname='o''b' AND type='uname'",
         [](Map *t) { return t->count("o'b"); }},
        {"INSERT INTO `smb_username_map` (unix_uname, smb_uname, type) VALUES('o''b', 'x', 'uname')",
         [](Map *t) { return t->add(t->map("o'b", "x")); }},
        {"UPDATE `smb_username_map` SET smb_uname='y' WHERE unix_uname='o''b' AND type='uname'",
         [](Map *t) { return t->set_smb_name(t->map("o'b", "y")); }},
        {"UPDATE `smb_username_map` SET unix_uname='bob' WHERE unix_uname='o''b'",
         [](Map *t) { return qbobj_setSmbUserNameMapUnixUserNameForAll(t->qbdb, t->db, "o'b", "bob", &t->err); }},
        {"DELETE FROM `smb_username_map` WHERE unix_uname = 'bob'",
         [](Map *t) { return qbobj_deleteSmbUserNameMap(t->qbdb, t->db, "bob", &t->err); }},
    };
    for (const auto &row : cases) {
        take_statements();
        EXPECT_EQ(row.call(this), 0u) << row.statement;
        EXPECT_THAT(take_statements(), ElementsAre(testing::StartsWith("BEGIN"), row.statement, "COMMIT"));
    }
}

TEST_F(Map, RefusesTypes)
{
    sql("INSERT INTO smb_username_map(unix_uname,smb_uname,type) VALUES('anna','a','uname')");
    struct {
        const char *type;
        const char *shown;
    } const cases[] = {{nullptr, "(null)"}, {"", ""}, {"other", "other"}, {"UNAME", "UNAME"}};
    for (const auto &row : cases) {
        take_statements();
        expect_map_failure(8, std::string("x_qbobj_addSmbUserNameMap: Invalid map type ") + row.shown + "!",
                           [&] { return add(map("anna", "b", row.type)); });
        expect_no_statement();
        expect_map_failure(8, std::string("x_qbobj_setSmbUserNameMapSmbUserName: Invalid map type ") + row.shown + "!",
                           [&] { return set_smb_name(map("anna", "b", row.type)); });
        expect_no_statement();
    }
}

TEST_F(Map, RefusesMissingArgumentsWithoutAStatement)
{
    struct {
        const char *worker;
        uint32_t (*call)(Map *);
    } const cases[] = {
        {"getSmbUserNameMapCollection",
         [](Map *t) { return qbobj_getSmbUserNameMapCollection(t->qbdb, t->db, nullptr, &t->err); }},
        {"addSmbUserNameMap", [](Map *t) { return qbobj_addSmbUserNameMap(t->qbdb, t->db, nullptr, &t->err); }},
        {"deleteSmbUserNameMap", [](Map *t) { return qbobj_deleteSmbUserNameMap(t->qbdb, t->db, nullptr, &t->err); }},
        {"setSmbUserNameMapUnixUserNameForAll",
         [](Map *t) { return qbobj_setSmbUserNameMapUnixUserNameForAll(t->qbdb, t->db, nullptr, "b", &t->err); }},
        {"setSmbUserNameMapUnixUserNameForAll",
         [](Map *t) { return qbobj_setSmbUserNameMapUnixUserNameForAll(t->qbdb, t->db, "a", nullptr, &t->err); }},
        {"setSmbUserNameMapSmbUserName",
         [](Map *t) { return qbobj_setSmbUserNameMapSmbUserName(t->qbdb, t->db, nullptr, &t->err); }},
    };
    for (const auto &row : cases) {
        take_statements();
        expect_map_failure(8, std::string("x_qbobj_") + row.worker + ": Missing argument!",
                           [&] { return row.call(this); });
        expect_no_statement();
    }
}

TEST_F(Map, ReportsFailedStatements)
{
    sql("INSERT INTO smb_username_map(unix_uname,smb_uname,type) VALUES('anna','a','uname')");
    struct {
        const char *message;
        uint32_t (*call)(Map *);
    } const cases[] = {
        {"Failed DB Query for 'SELECT FROM smb_username_map'. injected", [](Map *t) { return t->list(); }},
        {"Failed DB Query for 'INSERT smb_username_map'. injected", [](Map *t) { return t->add(t->map("bob", "b")); }},
        {"Failed DB Query for 'DELETE smb_username_map'. injected",
         [](Map *t) { return qbobj_deleteSmbUserNameMap(t->qbdb, t->db, "anna", &t->err); }},
        {"Failed DB Query for 'UPDATE smb_username_map'. injected",
         [](Map *t) { return qbobj_setSmbUserNameMapUnixUserNameForAll(t->qbdb, t->db, "anna", "bob", &t->err); }},
        {"Failed DB Query for 'UPDATE smb_username_map'. injected",
         [](Map *t) { return t->set_smb_name(t->map("anna", "b")); }},
    };
    for (const auto &row : cases) {
        fail_statement(1);
        expect_map_failure(5, row.message, [&] { return row.call(this); });
        EXPECT_EQ(maps.SmbUserNameMap, nullptr);
    }
}

TEST_F(Map, AQuietHandleLogsNothing)
{
    qbdb->log_level = 1;
    log.clear();
    EXPECT_EQ(add(map("anna", "a", "other")), 8u);
    EXPECT_STREQ(err.message, "x_qbobj_addSmbUserNameMap: Invalid map type other!");
    EXPECT_THAT(log, IsEmpty());
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
