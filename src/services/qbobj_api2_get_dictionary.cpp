// The texts of the user interface: all of them as an XML tree, or one.
#include <libxml/threads.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include <cstring>
#include <utility>

#include "frame/pool.h"
#include "frame/query.h"
#include "frame/report_line.h"
#include "services/services.h"

namespace qb {
namespace {

constexpr char kEnglish[] = "en-us";

/// libxml2 keeps state of its own for each thread, and does not look whether that could be made.
bool has_thread_state()
{
#if LIBXML_VERSION >= 21200
    return xmlCheckThreadLocalStorage() == 0;
#else
    return xmlGetGlobalState() != nullptr;
#endif
}

/// A lack of memory is said in the call's own report, not by libxml2 on the standard error output.
struct QuietXml {
    xmlStructuredErrorFunc handler = xmlStructuredError;
    void *context = xmlStructuredErrorContext;

    QuietXml() { xmlSetStructuredErrorFunc(nullptr, ignore); }
    QuietXml(const QuietXml &) = delete;
    QuietXml &operator=(const QuietXml &) = delete;
    ~QuietXml() { xmlSetStructuredErrorFunc(context, handler); }

    template <class Error>
    static void ignore(void *, Error *)
    {
    }
};

/// A tree under construction, freed with all that hangs on it unless it is handed over.
struct Tree {
    xmlNode *root = nullptr;

    Tree() = default;
    Tree(const Tree &) = delete;
    Tree &operator=(const Tree &) = delete;
    ~Tree() { xmlFreeNode(root); }
};

const xmlChar *xml_text(const char *text)
{
    return reinterpret_cast<const xmlChar *>(text);
}

/// Hangs a new node on another and hands it back. Without memory there may be neither, and libxml2 hands out nodes
/// whose text it had no room for.
xmlNode *append(CallContext *ctx, xmlNode *parent, xmlNode *child)
{
    const bool whole = child && (child->type == XML_ELEMENT_NODE ? child->name : child->content);
    if (whole && parent && xmlAddChild(parent, child)) return child;
    ctx->short_of_memory = true;
    xmlFreeNode(child);
    return nullptr;
}

xmlNode *append_element(CallContext *ctx, xmlNode *parent, const char *name)
{
    return append(ctx, parent, xmlNewNode(nullptr, xml_text(name)));
}

void set_attribute(CallContext *ctx, xmlNode *element, const char *name, const char *value)
{
    const xmlAttr *attribute = element ? xmlNewProp(element, xml_text(name), xml_text(or_empty(value))) : nullptr;
    if (!attribute || !attribute->name || !attribute->children || !attribute->children->content)
        ctx->short_of_memory = true;
}

void append_item(CallContext *ctx, xmlNode *language, const char *key, const char *text)
{
    xmlNode *item = append_element(ctx, language, "item");
    set_attribute(ctx, item, "key", key);
    const char *content = or_empty(text);
    append(ctx, item, xmlNewCDataBlock(nullptr, xml_text(content), static_cast<int>(strlen(content))));
}

/// The English texts define the set of keys.
uint32_t append_items(CallContext *ctx, sqlite3 *db, xmlNode *element, const char *language)
{
    Rows rows;
    TRY(select(
            ctx, db, rows,
            "SELECT EN.id,IFNULL(D.str,EN.str) FROM (SELECT id,str FROM _dictionary WHERE "
            "lang_id=(SELECT id FROM _lang_supported WHERE lang='en-us')) AS EN LEFT JOIN _dictionary D ON D.id=EN.id "
            "AND D.lang_id=(SELECT id FROM _lang_supported WHERE lang=%Q)",
            language)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM _dictionary'. %s"));
    for (int i = 0; i < rows.count && !ctx->short_of_memory; i++)
        append_item(ctx, element, rows.cell(i, 0), rows.cell(i, 1));
    return 0;
}

/// The configured language, which "auto" leaves to the caller's wish.
Failure choose_language(CallContext *ctx, sqlite3 *db, const char *wish, const char *&language)
{
    language = nullptr;
    const Failure bad = select_text(ctx, db, language,
                                    "SELECT CASE WHEN val='auto' THEN IFNULL(%Q,'en-us') ELSE val END "
                                    "FROM service_misc WHERE key='GLASSDECKLOCALE'",
                                    wish);
    if (!language) language = kEnglish;
    return bad;
}

}  // namespace

uint32_t x_qbobj_getDictionary(CallContext *ctx, sqlite3 *db, const char *wish, xmlNode **dictionary)
{
    QB_ASSERT(dictionary);
    if (!has_thread_state()) ctx->short_of_memory = true;
    TRY_MEMORY(ctx);
    const QuietXml quiet;
    Tree tree;
    tree.root = noted(ctx, xmlNewNode(nullptr, xml_text("Dictionary")));
    if (tree.root && !tree.root->name) ctx->short_of_memory = true;
    TRY_MEMORY(ctx);
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT lang,spell FROM _lang_supported ORDER BY id")
            .or_report(ctx, "Failed DB Query for 'SELECT FROM _lang_supported'. %s"));
    const char *language = nullptr;
    TRY(choose_language(ctx, db, wish, language).or_report(ctx, "Failed DB Query for 'SELECT FROM service_misc'. %s"));
    for (int i = 0; i < rows.count; i++) {
        const char *code = or_empty(rows.cell(i, 0));
        xmlNode *element = append_element(ctx, tree.root, "Language");
        set_attribute(ctx, element, "code", code);
        set_attribute(ctx, element, "spell", rows.cell(i, 1));
        TRY_MEMORY(ctx);
        if (strcmp(code, language) == 0) TRY(append_items(ctx, db, element, language));
    }
    TRY_MEMORY(ctx);
    *dictionary = std::exchange(tree.root, nullptr);
    return 0;
}

uint32_t x_qbobj_getTranslatedString(CallContext *ctx, sqlite3 *db, const char *wish, const char *key,
                                     const char *default_text, const char **text)
{
    QB_ASSERT(text);
    const char *language = nullptr;
    if (const Failure bad = choose_language(ctx, db, wish, language))
        return REPORT_LINE(ctx, kStatementFailed, "Failed DB Query for 'SELECT FROM service_misc'. %s", bad.text);
    int32_t id = 0;
    if (const Failure bad = select_int32(ctx, db, id,
                                         "SELECT IFNULL((SELECT id FROM _lang_supported WHERE lang=%Q),"
                                         "(SELECT id FROM _lang_supported WHERE lang='en-us'))",
                                         language))
        return REPORT_LINE(ctx, kStatementFailed, "Failed DB Query for 'SELECT FROM _lang_supported'. %s", bad.text);
    const char *found = nullptr;
    TRY(select_text(ctx, db, found,
                    "SELECT COALESCE((SELECT D.str FROM _dictionary D WHERE D.lang_id=%d AND D.id=%Q),"
                    "(SELECT EN.str FROM _dictionary EN WHERE EN.lang_id=(SELECT L.id FROM _lang_supported L "
                    "WHERE L.lang='en-us') AND EN.id=%Q),%Q)",
                    id, key, key, default_text)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM _dictionary'. %s"));
    TRY_MEMORY(ctx);
    *text = found;
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
