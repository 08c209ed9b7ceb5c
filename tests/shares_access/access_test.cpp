// Who may see and change what: the SMB and HTTP checks, and the operations that answer by them.
#include "fixture/plans.h"
#include "shares_read/shares.h"

using namespace test;

namespace {

struct Access : Shares {
    Access()
    {
        add_accounts();  // anna is a primary member of staff, Bob a secondary member of Editors
        add_share(1, "media", "path='/tank/media'");
        add_user(103, "dora");
    }

    void cifs(const std::string &access, int guest = 0)
    {
        sql("DELETE FROM user_acl; DELETE FROM group_acl; INSERT OR REPLACE INTO cifs_share_option "
            "(share_id,cifs_access,cifs_guest_access,available) VALUES(1," +
            access + "," + std::to_string(guest) + ",1)");
    }
    std::string access(const char *user, const char *name = "media")
    {
        const char *word = nullptr;
        EXPECT_EQ(qbobj_getShareAccess(qbdb, db, name, user, &word, &err), 0u);
        EXPECT_EQ(err.code, 0u);
        return text(word);
    }
    std::string path_access(const char *path, const char *user)
    {
        const char *word = nullptr;
        EXPECT_EQ(qbobj_getPathAccess(qbdb, db, path, user, &word, &err), 0u);
        return text(word);
    }
};

TEST_F(Access, ByDefaultAndLists)
{
    struct Case {
        const char *what;
        const char *access;
        const char *rows;  // user_acl, then group_acl
        const char *user;
        const char *answer;
    };
    const Case cases[] = {
        {"no settings", "NULL", "", "anna", "Disabled"},
        {"open to write", "'writeable'", "", "anna", "ReadWrite"},
        {"open to read", "'readonly'", "", "anna", "ReadOnly"},
        {"closed", "'disabled'", "", "anna", "Disabled"},
        {"the guest is a user", "'writeable'", "", nullptr, "ReadWrite"},
        {"a user row takes write away", "'writeable'", "U(1,100,'cifs',1,0)", "anna", "ReadOnly"},
        {"of another user", "'writeable'", "U(1,101,'cifs',1,0)", "anna", "ReadWrite"},
        {"of another protocol", "'writeable'", "U(1,100,'ftp',1,0)", "anna", "ReadWrite"},
        {"of another share", "'writeable'", "U(2,100,'cifs',1,0)", "anna", "ReadWrite"},
        {"primary group without write", "'writeable'", "G(1,110,'cifs',1,0)", "anna", "ReadOnly"},
        {"secondary group without write", "'writeable'", "G(1,111,'cifs',1,0)", "Bob", "ReadOnly"},
        {"group of others", "'writeable'", "G(1,111,'cifs',1,0)", "anna", "ReadWrite"},
        {"a row with write changes nothing", "'writeable'", "U(1,100,'cifs',1,1)", "anna", "ReadWrite"},
        {"a user row gives write", "'readonly'", "U(1,100,'cifs',1,1)", "anna", "ReadWrite"},
        {"a group row gives write", "'readonly'", "G(1,111,'cifs',1,1)", "Bob", "ReadWrite"},
        {"let in to read", "'disabled'", "U(1,100,'cifs',1,0)", "anna", "ReadOnly"},
        {"let in to write", "'disabled'", "U(1,100,'cifs',1,1)", "anna", "ReadWrite"},
        {"kept out", "'disabled'", "U(1,100,'cifs',0,0)", "anna", "Disabled"},
        {"write without read", "'disabled'", "U(1,100,'cifs',0,1)", "anna", "Disabled"},
        {"let in with the primary group", "'disabled'", "G(1,110,'cifs',1,0)", "anna", "ReadOnly"},
        {"let in with a secondary group", "'disabled'", "G(1,111,'cifs',1,1)", "Bob", "ReadWrite"},
        {"another word", "'odd'", "G(1,111,'cifs',1,1)", "Bob", "ReadWrite"},
        {"unknown user", "'writeable'", "", "nobody-here", "Disabled"},
    };
    for (const Case &each : cases) {
        SCOPED_TRACE(each.what);
        cifs(each.access);
        if (*each.rows)
            sql(std::string("INSERT INTO ") + (*each.rows == 'U' ? "user_acl" : "group_acl") + " VALUES" +
                (each.rows + 1));
        EXPECT_EQ(access(each.user), each.answer);
        EXPECT_EQ(path_access("/tank/media", each.user), each.answer);
    }
}

TEST_F(Access, SharesThatAreNotThere)
{
    cifs("'writeable'");
    EXPECT_EQ(access("anna", "MEDIA"), "ReadWrite") << "without case";
    EXPECT_EQ(access("anna", "gone"), "Disabled");
    EXPECT_THAT(logged(2), IsEmpty());
    for (const char *bad : {"home", "a/b", ""}) {
        log.clear();
        EXPECT_EQ(access("anna", bad), "Disabled");
        EXPECT_THAT(logged(2), ElementsAre("Share name '" + std::string(bad) + "' is invalid."));
        EXPECT_EQ(log[0].flag, 0u);
    }
    EXPECT_EQ(access("anna", nullptr), "Disabled");
}

TEST_F(Access, PathsInAndOutOfShares)
{
    cifs("'writeable'");
    EXPECT_EQ(path_access("/tank/media/a/b", "anna"), "ReadWrite");
    EXPECT_EQ(path_access("/tank/mediathek", "anna"), "Disabled");
    qbdb->log_level = 5;
    log.clear();
    EXPECT_EQ(path_access("/tank", "anna"), "Disabled");
    EXPECT_THAT(logged(5), testing::Contains("Path '/tank' is not in share."));
    EXPECT_EQ(path_access(nullptr, "anna"), "Disabled");
}

TEST_F(Access, DomainUsersOfNegativeIdsAreNoUsers)
{
    directory_mode();
    cifs("'writeable'", 0);
    EXPECT_EQ(access("EXAMPLE\\fred"), "Disabled");
    cifs("'writeable'", 1);
    EXPECT_EQ(access("EXAMPLE\\fred"), "ReadWrite") << "as a guest";
    cifs("'disabled'", 1);
    sql("INSERT INTO user_acl VALUES(1,-10,'cifs',1,1)");
    EXPECT_EQ(access("EXAMPLE\\fred"), "Disabled");
    EXPECT_EQ(access("anna"), "Disabled") << "local users are not known in directory mode";
}

TEST_F(Access, AFailedCheckGrantsNothing)
{
    cifs("'writeable'");
    struct Case {
        const char *part;
        int nth;
        const char *answer;
    };
    for (const Case &each : {Case{"service_cifs", 1, "Disabled"}, Case{"SELECT U.id", 1, "Disabled"},
                             Case{"SELECT id FROM share", 1, "Disabled"}, Case{"cifs_share_option", 1, "Disabled"},
                             Case{"cifs_share_option", 2, "ReadOnly"}, Case{"FROM user_acl", 1, "ReadOnly"},
                             Case{"FROM group_acl", 1, "ReadOnly"}}) {
        SCOPED_TRACE(each.part);
        fail_statement(each.nth, 1, "injected", each.part);
        EXPECT_EQ(access("anna"), each.answer);
        fail_statement(0);
        EXPECT_EQ(access("anna"), "ReadWrite");
    }
    EXPECT_THAT(logged(2), testing::Contains("Failed in access check. injected\n"));
}

// ---- the shares that a user may see

struct Accessible : Access {
    /// The names of the shares that were filled; the others carry their id and nothing else.
    std::vector<std::string> seen(const char *user, const char *proto)
    {
        shares = {};
        EXPECT_EQ(qbobj_getAccessibleShareCollection(qbdb, db, user, proto, &shares, &err), 0u) << text(err.message);
        std::vector<std::string> names;
        for (const Share *each : elements(shares.Share)) {
            EXPECT_NE(each->ShareId, nullptr);
            EXPECT_STREQ(each->key, each->ShareId);
            EXPECT_EQ(each->ShareName != nullptr, each->Stat != nullptr);
            if (each->ShareName) names.push_back(each->ShareName);
            else EXPECT_EQ(each->ZfsName, nullptr);
        }
        return names;
    }
    bool sees(const char *user, const char *proto) { return !seen(user, proto).empty(); }
};

TEST_F(Accessible, BareEntriesStayInTheList)
{
    add_share(2, "Archive");
    add_share(3, "zoo");
    add_share(4, "block", "type='zvol'");
    sql("INSERT INTO cifs_share_option (share_id,cifs_access) VALUES(1,'disabled'),(2,'readonly'),(3,'writeable')");
    EXPECT_THAT(seen("anna", "cifs"), ElementsAre("Archive", "zoo"));
    const auto all = elements(shares.Share);
    ASSERT_EQ(all.size(), 3u) << "file shares only";
    EXPECT_STREQ(all[1]->ShareId, "1");
    EXPECT_EQ(all[1]->Cifs, nullptr);
    EXPECT_NE(all[2]->Cifs, nullptr);
}

TEST_F(Accessible, OverSmb)
{
    struct Case {
        const char *access;
        int guest;
        bool nobody;
        bool anna;
        bool bob;
    };
    for (const Case &each : {Case{"'writeable'", 0, false, true, true}, Case{"'writeable'", 1, true, true, true},
                             Case{"'readonly'", 0, false, true, true}, Case{"'readonly'", 1, true, true, true},
                             Case{"'disabled'", 1, false, true, false}, Case{"NULL", 1, false, false, false}}) {
        SCOPED_TRACE(each.access);
        cifs(each.access, each.guest);
        sql("INSERT INTO user_acl VALUES(1,100,'cifs',1,0),(1,101,'cifs',0,0)");
        EXPECT_EQ(sees(nullptr, "cifs"), each.nobody);
        EXPECT_EQ(sees("anna", "cifs"), each.anna);
        EXPECT_EQ(sees("Bob", "cifs"), each.bob);
    }
}

TEST_F(Accessible, OverHttp)
{
    struct Case {
        const char *what;
        const char *access;
        const char *rows;  // of user_acl or group_acl
        bool nobody;
        bool anna;
        bool bob;
    };
    const Case cases[] = {
        {"no settings", "NULL", "", false, false, false},
        {"open, no lists", "'writeable'", "", true, true, true},
        {"open to read, no lists", "'readonly'", "", true, true, true},
        {"on the user list, whatever it grants", "'writeable'", "U(1,100,'http',0,0)", false, true, false},
        {"primary members do not count", "'readonly'", "G(1,110,'http',1,1)", false, false, false},
        {"secondary members do", "'readonly'", "G(1,111,'http',1,1)", false, false, true},
        {"lists of other protocols do not count", "'writeable'", "U(1,100,'cifs',1,1)", true, true, true},
        {"closed", "'disabled'", "", false, false, false},
        {"closed, on the user list", "'disabled'", "U(1,100,'http',0,0)", false, true, false},
        {"closed, primary members", "'disabled'", "G(1,110,'http',0,0)", false, true, false},
        {"closed, secondary members", "'odd'", "G(1,111,'http',0,0)", false, false, true},
    };
    for (const Case &each : cases) {
        SCOPED_TRACE(each.what);
        sql(std::string(
                "DELETE FROM user_acl; DELETE FROM group_acl; INSERT OR REPLACE INTO http_share_option VALUES(1,1,") +
            each.access + ",0)");
        if (*each.rows)
            sql(std::string("INSERT INTO ") + (*each.rows == 'U' ? "user_acl" : "group_acl") + " VALUES" +
                (each.rows + 1));
        EXPECT_EQ(sees(nullptr, "http"), each.nobody);
        EXPECT_EQ(sees("anna", "http"), each.anna);
        EXPECT_EQ(sees("Bob", "http"), each.bob);
    }
}

TEST_F(Accessible, DomainUsersOverHttp)
{
    directory_mode();
    sql("INSERT INTO http_share_option VALUES(1,1,'disabled',0); INSERT INTO user_acl VALUES(1,-10,'http',1,0)");
    EXPECT_TRUE(sees("EXAMPLE\\fred", "http"));
}

TEST_F(Accessible, OtherProtocolsHaveNoCheck)
{
    const auto list = [&](const char *proto) {
        shares = {};
        return qbobj_getAccessibleShareCollection(qbdb, db, "anna", proto, &shares, &err);
    };
    for (const char *proto : {"nfs", "afp", "ftp", "rsync"}) {
        expect_failure(2, "Failed in access check.", [&] { return list(proto); });
        EXPECT_EQ(elements(shares.Share).size(), 1u) << "it stops at the first share";
    }
    for (const char *proto : {"CIFS", "bogus", ""})
        expect_failure(8, "ProtocolName (" + std::string(proto) + ") is invalid", [&] { return list(proto); });
    expect_failure(8, "ProtocolName ((null)) is invalid", [&] { return list(nullptr); });
    sql("DELETE FROM share");
    EXPECT_EQ(list("nfs"), 0u) << "without a share nothing is checked";
}

TEST_F(Accessible, UsersHaveToBeKnown)
{
    expect_failure(8, "User (stranger) is invalid.",
                   [&] { return qbobj_getAccessibleShareCollection(qbdb, db, "stranger", "cifs", &shares, &err); });
    expect_failure(8, "User () is invalid.",
                   [&] { return qbobj_getAccessibleShareCollection(qbdb, db, "", "bogus", &shares, &err); });
}

TEST_F(Accessible, AFailedCheckEndsTheList)
{
    struct Case {
        const char *proto;
        const char *part;
        const char *access;
    };
    for (const Case &each :
         {Case{"cifs", "SELECT CIFS.cifs_access", "disabled"}, Case{"cifs", "FROM user_acl", "disabled"},
          Case{"cifs", "FROM group_acl", "disabled"}, Case{"http", "SELECT HTTP.http_access", "disabled"},
          Case{"http", "FROM user_acl", "disabled"}, Case{"http", "FROM group_acl", "disabled"},
          Case{"http", "COUNT(*) FROM user_acl", "readonly"}, Case{"http", "COUNT(*) FROM group_acl", "readonly"}}) {
        SCOPED_TRACE(each.part);
        sql(std::string("INSERT OR REPLACE INTO cifs_share_option (share_id,cifs_access) VALUES(1,'") + each.access +
            "'); INSERT OR REPLACE INTO http_share_option VALUES(1,1,'" + each.access + "',0)");
        fail_statement(1, 1, "injected", each.part);
        shares = {};
        expect_failure(2, "Failed in access check.",
                       [&] { return qbobj_getAccessibleShareCollection(qbdb, db, "anna", each.proto, &shares, &err); });
    }
}

TEST_F(Accessible, ChecksUseIndexes)
{
    add_share(2, "closed");
    sql("INSERT INTO cifs_share_option (share_id,cifs_access) VALUES(1,'writeable'),(2,'disabled');"
        "INSERT INTO http_share_option VALUES(1,1,'writeable',0),(2,1,'disabled',0);"
        "INSERT INTO user_acl VALUES(1,103,'http',1,1)");
    take_statements();
    for (const char *proto : {"cifs", "http"}) seen("anna", proto);
    access("anna");
    access("anna", "closed");
    path_access("/tank/media/x", "anna");
    expect_indexed(db, take_statements(),
                   {{"share", "ORDER BY S.name COLLATE NOCASE", "lists all of them in order"},
                    {"share", "LIKE path||'/%'", "every share's path is a pattern"}});
}

using AccessDeathTest = Access;

TEST_F(AccessDeathTest, NeedTheirOutputs)
{
    EXPECT_DEATH(qbobj_getShareAccess(qbdb, db, "media", "anna", nullptr, &err), "Assertion `access' failed");
    EXPECT_DEATH(qbobj_getPathAccess(qbdb, db, "/tank", "anna", nullptr, &err), "Assertion `access' failed");
    EXPECT_DEATH(qbobj_getAccessibleShareCollection(qbdb, db, "anna", "cifs", nullptr, &err),
                 "Assertion `shares' failed");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
