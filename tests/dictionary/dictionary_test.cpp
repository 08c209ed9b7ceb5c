#include <libxml/tree.h>
#include <time.h>

#include <algorithm>
#include <map>

#include "fixture/fixture.h"
#include "fixture/plans.h"

using testing::ElementsAre;
using testing::SizeIs;

namespace {

using Items = std::map<std::string, std::string>;

std::string text(const xmlChar *chars)
{
    return chars ? reinterpret_cast<const char *>(chars) : "NULL";
}

std::string attribute(xmlNode *node, const char *name)
{
    xmlChar *chars = xmlGetNoNsProp(node, reinterpret_cast<const xmlChar *>(name));
    std::string all = text(chars);
    xmlFree(chars);
    return all;
}

std::vector<xmlNode *> children(const xmlNode *node)
{
    std::vector<xmlNode *> all;
    for (xmlNode *child = node->children; child; child = child->next) all.push_back(child);
    return all;
}

struct Dictionary : test::Database {
    xmlNode *root = nullptr;

    Dictionary()
    {
        sql("DELETE FROM _dictionary;"
            "INSERT INTO _dictionary (id,lang_id,str) VALUES ('add',1,'Add'),('cancel',1,'Cancel'),('ok',1,'OK'),"
            "('add',2,'Hinzufügen'),('cancel',2,NULL),('nur',2,'nur deutsch'),('add',4,'Ajouter')");
    }
    ~Dictionary() override { xmlFreeNode(root); }

    void configure(const char *language)
    {
        sql(std::string("UPDATE service_misc SET val=") + language + " WHERE key='GLASSDECKLOCALE'");
    }
    uint32_t get(const char *wish)
    {
        xmlFreeNode(root);
        root = nullptr;
        return qbobj_getDictionary(qbdb, db, wish, &root, &err);
    }
    /// The languages that have items.
    std::vector<std::string> filled() const
    {
        std::vector<std::string> all;
        for (xmlNode *language : children(root))
            if (language->children) all.push_back(attribute(language, "code"));
        return all;
    }
    Items items() const
    {
        Items all;
        for (const xmlNode *language : children(root))
            for (xmlNode *item : children(language)) {
                EXPECT_EQ(text(item->name), "item");
                EXPECT_THAT(children(item), SizeIs(1));
                EXPECT_EQ(item->children->type, XML_CDATA_SECTION_NODE);
                EXPECT_TRUE(all.emplace(attribute(item, "key"), text(item->children->content)).second);
            }
        return all;
    }
    std::string translated(const char *wish, const char *key, const char *fallback)
    {
        const char *found = "unset";
        EXPECT_EQ(qbobj_getTranslatedString(qbdb, db, wish, key, fallback, &found, &err), 0u) << err.message;
        return found ? found : "NULL";
    }
};

const Items kEnglish = {{"add", "Add"}, {"cancel", "Cancel"}, {"ok", "OK"}};
const Items kGerman = {{"add", "Hinzufügen"}, {"cancel", "Cancel"}, {"ok", "OK"}};

TEST_F(Dictionary, HasALanguageForEachInTheirOrder)
{
    ASSERT_EQ(get(nullptr), 0u) << err.message;
    EXPECT_EQ(text(root->name), "Dictionary");
    EXPECT_EQ(root->ns, nullptr);
    EXPECT_EQ(root->doc, nullptr);
    EXPECT_EQ(root->parent, nullptr);
    std::vector<std::string> languages;
    for (xmlNode *language : children(root)) {
        EXPECT_EQ(text(language->name), "Language");
        languages.push_back(attribute(language, "code") + "|" + attribute(language, "spell"));
    }
    EXPECT_EQ(languages, rows("SELECT lang,spell FROM _lang_supported ORDER BY id"));
}

TEST_F(Dictionary, TheConfiguredLanguageWinsAndAutoLeavesItToTheCaller)
{
    struct Row {
        const char *configured;
        const char *wish;
        std::vector<std::string> filled;
        Items items;
    };
    const Row kRows[] = {
        {"'auto'", nullptr, {"en-us"}, kEnglish},
        {"'auto'", "de-de", {"de-de"}, kGerman},
        {"'auto'", "xx-yy", {}, {}},
        {"'auto'", "", {}, {}},
        {"'auto'", "DE-DE", {}, {}},
        {"'de-de'", nullptr, {"de-de"}, kGerman},
        {"'de-de'", "fr-fr", {"de-de"}, kGerman},
        {"'xx-yy'", "de-de", {}, {}},
        {"NULL", "de-de", {"en-us"}, kEnglish},
    };
    for (const Row &row : kRows) {
        SCOPED_TRACE(std::string(row.configured) + " " + (row.wish ? row.wish : "no wish"));
        configure(row.configured);
        ASSERT_EQ(get(row.wish), 0u) << err.message;
        EXPECT_EQ(filled(), row.filled);
        EXPECT_EQ(items(), row.items);
    }
    sql("DELETE FROM service_misc WHERE key='GLASSDECKLOCALE'");
    ASSERT_EQ(get("de-de"), 0u) << err.message;
    EXPECT_THAT(filled(), ElementsAre("en-us"));
}

TEST_F(Dictionary, KeepsTextsAsTheyAre)
{
    const std::string large(100000, 'x');
    const Items texts = {
        {"a&b<c>\"d'", "<b>&amp;</b>"}, {"empty", ""}, {"end", "a]]>b"}, {"large", large}, {"lines", "a\nb\t"},
        {"unicode", "日本語"}};
    sql("DELETE FROM _dictionary");
    for (const auto &[key, str] : texts) {
        char *row =
            sqlite3_mprintf("INSERT INTO _dictionary (id,lang_id,str) VALUES(%Q,1,%Q)", key.c_str(), str.c_str());
        sql(row);
        sqlite3_free(row);
    }
    sql("INSERT INTO _dictionary (id,lang_id,str) VALUES('null',1,NULL);"
        "UPDATE _lang_supported SET spell=NULL WHERE id=1;UPDATE _lang_supported SET spell='<a&\"b\">' WHERE id=2");
    ASSERT_EQ(get(nullptr), 0u) << err.message;
    Items expected = texts;
    expected["null"] = "";
    EXPECT_EQ(items(), expected);
    EXPECT_EQ(attribute(children(root)[0], "spell"), "");
    EXPECT_EQ(attribute(children(root)[1], "spell"), "<a&\"b\">");
}

TEST_F(Dictionary, BadUnicodeIsHandedOnWithoutAWordOnTheErrorOutput)
{
    sql("UPDATE _lang_supported SET spell=CAST(x'4dfffe' AS TEXT) WHERE id=1");
    testing::internal::CaptureStderr();
    EXPECT_EQ(get(nullptr), 0u) << err.message;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(attribute(children(root)[0], "spell"), "M\xFF\xFE");
}

TEST_F(Dictionary, BelongsToTheCallerAloneOrInADocument)
{
    ASSERT_EQ(get("de-de"), 0u) << err.message;
    xmlDoc *document = xmlNewDoc(reinterpret_cast<const xmlChar *>("1.0"));
    xmlDocSetRootElement(document, root);
    root = nullptr;
    xmlChar *out = nullptr;
    int size = 0;
    xmlDocDumpMemoryEnc(document, &out, &size, "UTF-8");
    EXPECT_THAT(text(out), testing::HasSubstr("<item key=\"add\"><![CDATA[Hinzufügen]]></item>"));
    xmlFree(out);
    xmlFreeDoc(document);
    // The request pool goes, the tree stays.
    ASSERT_EQ(qbdb_request_begin(qbdb), 0);
    ASSERT_EQ(get("de-de"), 0u) << err.message;
    ASSERT_EQ(qbdb_request_begin(qbdb), 0);
    EXPECT_EQ(items(), kGerman);
}

TEST_F(Dictionary, TheCallersErrorHandlerStays)
{
    int seen = 0;
    auto *handler = +[](void *count, xmlErrorPtr) { ++*static_cast<int *>(count); };
    xmlSetStructuredErrorFunc(&seen, handler);
    sql("UPDATE _lang_supported SET spell=CAST(x'ff' AS TEXT) WHERE id=1");
    ASSERT_EQ(get(nullptr), 0u) << err.message;
    EXPECT_EQ(xmlStructuredErrorContext, &seen);
    EXPECT_TRUE(xmlStructuredError == handler);
    xmlSetStructuredErrorFunc(nullptr, nullptr);
    EXPECT_EQ(seen, 0);
}

TEST_F(Dictionary, AFailureWritesNothing)
{
    for (const auto &[part, message] :
         {std::pair{"spell", "Failed DB Query for 'SELECT FROM _lang_supported'. injected"},
          std::pair{"GLASSDECKLOCALE", "Failed DB Query for 'SELECT FROM service_misc'. injected"},
          std::pair{"_dictionary", "Failed DB Query for 'SELECT FROM _dictionary'. injected"}}) {
        xmlNode *untouched = nullptr;
        fail_statement(1, 1, "injected", part);
        expect_failure(5, message, [&] { return qbobj_getDictionary(qbdb, db, nullptr, &untouched, &err); });
        EXPECT_EQ(untouched, nullptr);
    }
}

TEST_F(Dictionary, TenThousandTextsCostTenThousandSteps)
{
    const auto fill = [this](int count) {
        sql("DELETE FROM _dictionary;WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<" +
            std::to_string(count) +
            ") INSERT INTO _dictionary (id,lang_id,str) SELECT 'key'||i,l,'text '||i||' '||l "
            "FROM n,(SELECT 1 AS l UNION ALL SELECT 2)");
    };
    // Of this thread alone: the machine may be busy.
    const auto clock = [] {
        timespec now{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
        return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
    };
    const auto time_of = [&] {
        double best = 1e9;
        for (int i = 0; i < 7; i++) {
            const double begun = clock();
            EXPECT_EQ(get("de-de"), 0u) << err.message;
            best = std::min(best, clock() - begun);
        }
        return best;
    };
    fill(1000);
    const double thousand = time_of();
    fill(10000);
    const double ten_thousand = time_of();
    EXPECT_THAT(items(), SizeIs(10000));
    EXPECT_EQ(items()["key9999"], "text 9999 2");
    EXPECT_LT(ten_thousand, 30 * thousand) << "not in step with the number of texts";
}

TEST_F(Dictionary, FindsTextsByTheirKeys)
{
    take_statements();
    ASSERT_EQ(get("de-de"), 0u) << err.message;
    translated("de-de", "add", "?");
    test::expect_indexed(db, take_statements(), {{"_lang_supported", "ORDER BY id", "all are wanted"}});
}

// ---- one text

TEST_F(Dictionary, TranslatesOneText)
{
    struct Row {
        const char *configured, *wish, *key, *fallback, *found;
    };
    const Row kRows[] = {
        {"'auto'", "de-de", "add", "?", "Hinzufügen"}, {"'auto'", "de-de", "ok", "?", "OK"},
        {"'auto'", "de-de", "cancel", "?", "Cancel"},  {"'auto'", "de-de", "nur", "?", "nur deutsch"},
        {"'auto'", nullptr, "add", "?", "Add"},        {"'auto'", nullptr, "nur", "?", "?"},
        {"'auto'", "xx-yy", "add", "?", "Add"},        {"'auto'", "", "add", "?", "Add"},
        {"'fr-fr'", "de-de", "add", "?", "Ajouter"},   {"NULL", "de-de", "add", "?", "Add"},
        {"'auto'", "de-de", "none", "it's", "it's"},   {"'auto'", "de-de", "none", nullptr, "NULL"},
        {"'auto'", "de-de", nullptr, "?", "?"},        {"'auto'", "de-de", "o'clock", "", ""},
    };
    for (const Row &row : kRows) {
        configure(row.configured);
        EXPECT_EQ(translated(row.wish, row.key, row.fallback), row.found)
            << row.configured << " " << (row.wish ? row.wish : "NULL") << " " << (row.key ? row.key : "NULL");
    }
}

TEST_F(Dictionary, AFailedTranslationWritesNothing)
{
    const std::pair<const char *, std::string> kLooked[] = {
        {"GLASSDECKLOCALE", "Failed DB Query for 'SELECT FROM service_misc'. injected"},
        {"IFNULL((SELECT", "Failed DB Query for 'SELECT FROM _lang_supported'. injected"}};
    for (const auto &[part, message] : kLooked) {
        const char *found = "before";
        log.clear();
        fail_statement(1, 1, "injected", part);
        EXPECT_EQ(qbobj_getTranslatedString(qbdb, db, nullptr, "add", "?", &found, &err), 5u);
        EXPECT_STREQ(found, "before");
        EXPECT_EQ(err.code, 5u);
        EXPECT_EQ(std::string(err.message ? err.message : "NULL"), message);
        EXPECT_EQ(logged(2), std::vector{message + "\n"});
        EXPECT_THAT(log, testing::Each(testing::Field(&test::LogLine::flag, 0u)));
    }
    const char *found = "before";
    fail_statement(1, 1, "injected", "COALESCE");
    expect_failure(5, "Failed DB Query for 'SELECT FROM _dictionary'. injected",
                   [&] { return qbobj_getTranslatedString(qbdb, db, nullptr, "add", "?", &found, &err); });
    EXPECT_STREQ(found, "before");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
