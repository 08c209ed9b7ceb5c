// The dictionary while libxml2 lacks memory.
#include <libxml/tree.h>
#include <libxml/xmlmemory.h>

#include <cstdlib>
#include <cstring>

#include "fixture/fixture.h"

namespace {

/// libxml2's own means to have its memory from elsewhere: here from the heap, until one request is refused.
struct FailingXml {
    static inline long left = 0;  // requests until the one that is refused; 0 for none
    static inline bool refused = false;

    static bool refuses()
    {
        if (left == 0 || --left != 0) return false;
        refused = true;
        return true;
    }
    static void *allocate(size_t size) { return refuses() ? nullptr : malloc(size); }
    static void *resize(void *block, size_t size) { return refuses() ? nullptr : realloc(block, size); }
    static char *copy(const char *text) { return refuses() ? nullptr : strdup(text); }

    FailingXml() { EXPECT_EQ(xmlMemSetup(free, allocate, resize, copy), 0); }
    ~FailingXml()
    {
        left = 0;
        EXPECT_EQ(xmlMemSetup(free, malloc, realloc, strdup), 0);
    }
    FailingXml(const FailingXml &) = delete;
    FailingXml &operator=(const FailingXml &) = delete;
};

struct DictionaryMemory : test::Database {
    DictionaryMemory() { sql("DELETE FROM _dictionary WHERE id>'b'"); }
};

TEST_F(DictionaryMemory, EachLackOfLibxml2IsNoticedAndLeavesNothing)
{
    const FailingXml failing;
    const std::string before = content();
    long refused = 0;
    for (long n = 1; n < 10000; n++) {
        xmlNode *dictionary = nullptr;
        FailingXml::refused = false;
        FailingXml::left = n;
        testing::internal::CaptureStderr();
        const uint32_t rc = qbobj_getDictionary(qbdb, db, "de-de", &dictionary, &err);
        FailingXml::left = 0;
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        if (!FailingXml::refused) {
            EXPECT_EQ(rc, 0u) << err.message;
            xmlFreeNode(dictionary);
            break;
        }
        refused++;
        ASSERT_EQ(rc, 2u) << "request " << n;
        EXPECT_STREQ(err.message, "Failed to allocate resource.");
        EXPECT_EQ(dictionary, nullptr);
    }
    // A node, its name and its text: nine languages and some texts have more than a hundred of them.
    EXPECT_GT(refused, 100);
    EXPECT_EQ(content(), before);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
