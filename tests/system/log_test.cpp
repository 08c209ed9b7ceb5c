#include "fixture/fixture.h"

using test::elements;
using testing::ElementsAre;

namespace {

struct Log : test::Database {
    LogEntry *entries = nullptr;
    int32_t count = -1;
    int32_t total = -1;
    uint32_t add(int32_t time, const char *severity = nullptr, const char *category = nullptr, const char *tag = nullptr)
    {
        return qbobj_addLog(qbdb, db, time, severity, category, tag, nullptr, &err);
    }
};

TEST_F(Log, AddsWithDefaults)
{
    ASSERT_EQ(add(5), 0u) << err.message;
    EXPECT_THAT(rows("SELECT tstamp,severity,category,msg_tag,msg_args_xml FROM `$log`"),
                ElementsAre("5|info|misc|LOGMSG_UNKNOWN|NULL"));
    ASSERT_EQ(qbobj_getLog(qbdb, db, nullptr, &entries, &count, &total, &err), 0u) << err.message;
    EXPECT_EQ(count, 1);
    EXPECT_EQ(total, 1);
    ASSERT_EQ(elements(entries).size(), 1u);
    EXPECT_STREQ(entries->Severity, "info");
}

}  // namespace
