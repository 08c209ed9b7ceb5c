// Building lists and bounded texts.
#include "frame/list.h"

#include <cstring>

#include "fixture/fixture.h"
#include "frame/set_list.h"

using namespace qb;
using test::elements;
using testing::ElementsAre;

namespace {

struct Lists : test::Database {
    CallContext ctx{qbdb, &err};
};

std::vector<int32_t> ids(ResourceId *head)
{
    std::vector<int32_t> all;
    for (const ResourceId *element : elements(head)) all.push_back(element->resource_id);
    return all;
}

TEST_F(Lists, AppendKeepsTheOrder)
{
    ResourceId *head = nullptr;
    List<ResourceId> list(&head);
    for (const int32_t id : {3, 1, 2}) list.append(&ctx)->resource_id = id;
    EXPECT_THAT(ids(head), ElementsAre(3, 1, 2));
}

TEST_F(Lists, AppendsToAListThatIsNotEmpty)
{
    ResourceId second{nullptr, 8};
    ResourceId first{&second, 9};
    ResourceId *head = &first;
    List<ResourceId> list(&head);
    list.append(&ctx)->resource_id = 1;
    ResourceId last{nullptr, 2};
    list.link(&last);
    EXPECT_EQ(head, &first);
    EXPECT_THAT(ids(head), ElementsAre(9, 8, 1, 2));
}

TEST_F(Lists, LinksAWholeList)
{
    ResourceId second{nullptr, 2};
    ResourceId first{&second, 1};
    ResourceId *head = nullptr;
    List<ResourceId> list(&head);
    list.link(&first);
    list.append(&ctx)->resource_id = 3;
    list.link(nullptr);
    list.append(&ctx)->resource_id = 4;
    EXPECT_THAT(ids(head), ElementsAre(1, 2, 3, 4));
}

TEST_F(Lists, NothingAppendedNothingChanged)
{
    ResourceId only{nullptr, 8};
    ResourceId *head = &only;
    const List<ResourceId> list(&head);
    EXPECT_EQ(list.tail, &only.next);
    EXPECT_THAT(ids(head), ElementsAre(8));
}

TEST_F(Lists, AppendingDoesNotWalkTheList)
{
    // The links of what is there already are not read again: a walk would lead into the broken one.
    ResourceId *head = nullptr;
    List<ResourceId> list(&head);
    ResourceId *first = list.append(&ctx);
    ResourceId *second = list.append(&ctx);
    first->next = reinterpret_cast<ResourceId *>(8);
    second->resource_id = 2;
    for (int i = 3; i < 1000; i++) list.append(&ctx)->resource_id = i;
    first->next = second;
    const auto all = ids(head);
    ASSERT_EQ(all.size(), 999u);
    EXPECT_EQ(all.back(), 999);
    EXPECT_EQ(all[2], 3);
}

TEST(JoinedText, JoinsWithTheSeparatorBetween)
{
    JoinedText<64> text(" AND ");
    EXPECT_TRUE(text.empty());
    EXPECT_STREQ(text.text, "");
    EXPECT_TRUE(text.add("a=%d", 1));
    EXPECT_STREQ(text.text, "a=1");
    EXPECT_TRUE(text.add("b=%Q", "it's"));
    EXPECT_STREQ(text.text, "a=1 AND b='it''s'");
    EXPECT_EQ(text.size, 17u);
    EXPECT_FALSE(text.empty());
    EXPECT_FALSE(text.dropped);
}

TEST(JoinedText, HoldsOneByteLessThanItsSize)
{
    for (const int length : {0, 1, 14, 15}) {
        JoinedText<16> text(",");
        EXPECT_TRUE(text.add("%s", std::string(static_cast<size_t>(length), 'x').c_str())) << length;
        EXPECT_EQ(text.size, static_cast<size_t>(length));
        EXPECT_EQ(strlen(text.text), static_cast<size_t>(length));
        EXPECT_FALSE(text.dropped);
    }
    for (const int length : {16, 17, 1000}) {
        JoinedText<16> text(",");
        EXPECT_FALSE(text.add("%s", std::string(static_cast<size_t>(length), 'x').c_str())) << length;
        EXPECT_TRUE(text.empty());
        EXPECT_STREQ(text.text, "");
        EXPECT_TRUE(text.dropped);
    }
}

TEST(JoinedText, TheSeparatorCounts)
{
    {
        JoinedText<16> text(" AND ");
        EXPECT_TRUE(text.add("12345"));
        EXPECT_TRUE(text.add("12345"));  // 5 + 5 + 5 fill it
        EXPECT_STREQ(text.text, "12345 AND 12345");
    }
    {
        JoinedText<16> text(" AND ");
        EXPECT_TRUE(text.add("12345"));
        EXPECT_FALSE(text.add("123456"));
        EXPECT_STREQ(text.text, "12345");
        EXPECT_TRUE(text.dropped);
    }
}

TEST(JoinedText, WhatDoesNotFitIsLeftOutWholeAndAShorterItemStillFits)
{
    SetList<16> set;
    EXPECT_TRUE(set.add("a=%d", 1));
    EXPECT_FALSE(set.add("name=%Q", "too long for it"));
    EXPECT_TRUE(set.add("b=%d", 2));
    EXPECT_STREQ(set.text, "a=1,b=2");
    EXPECT_TRUE(set.dropped);
    EXPECT_TRUE(set.add("c=%d", 345));
    EXPECT_STREQ(set.text, "a=1,b=2,c=345");
    EXPECT_FALSE(set.add("d=1"));
    EXPECT_STREQ(set.text, "a=1,b=2,c=345");
}

TEST(JoinedText, TheFirstItemDroppedLeavesNoSeparator)
{
    SetList<8> set;
    EXPECT_FALSE(set.add("much too long"));
    EXPECT_TRUE(set.empty());
    EXPECT_TRUE(set.add("a=1"));
    EXPECT_STREQ(set.text, "a=1");
    EXPECT_TRUE(set.add("b=2"));
    EXPECT_STREQ(set.text, "a=1,b=2");
}

/// An item as it is joined, beside what SQLite's own formatter makes of it.
template <class... Args>
void expect_as_sqlite_writes(Sql<Args...> format, Args... args)
{
    JoinedText<256> text("");
    EXPECT_TRUE(text.add(format, args...));
    char *expected = sqlite3_mprintf(format.text, args...);
    EXPECT_STREQ(text.text, expected) << format.text;
    sqlite3_free(expected);
}

TEST(JoinedText, WritesValuesAsSqliteDoes)
{
    for (const char *value :
         {static_cast<const char *>(nullptr), "", "anna", "'", "''", "o'hara's", "50%", "%s", "\xC3\xA4\xFF"}) {
        expect_as_sqlite_writes("%s", value);
        expect_as_sqlite_writes("a='%q'", value);
        expect_as_sqlite_writes("a=%Q AND b=%d", value, 7);
        expect_as_sqlite_writes("100%% LIKE %Q||'/%%'", value);
    }
    for (const int64_t value : {int64_t{0}, int64_t{-1}, INT64_MAX, INT64_MIN, int64_t{1} << 40}) {
        expect_as_sqlite_writes("%d,%u", static_cast<int32_t>(value), static_cast<uint32_t>(value));
        expect_as_sqlite_writes("%u,%d", static_cast<int32_t>(value), static_cast<uint32_t>(value));
        expect_as_sqlite_writes("%ld,%lu", value, static_cast<uint64_t>(value));
        expect_as_sqlite_writes("%llu,%lld", value, static_cast<uint64_t>(value));
    }
    expect_as_sqlite_writes("");
    expect_as_sqlite_writes("%%");
}

TEST(JoinedText, AnItemThatEndsAnywhereBehindTheRoomIsDropped)
{
    const std::string whole = "a='it''s',b=-7,c=NULL";
    for (size_t taken = 0; taken < 40; taken++) {
        JoinedText<40> text("");
        ASSERT_TRUE(text.add("%s", std::string(taken, 'x').c_str()));
        const bool fits = taken + whole.size() < 40;
        EXPECT_EQ(text.add("a='%q',b=%d,c=%Q", "it's", -7, static_cast<const char *>(nullptr)), fits) << taken;
        EXPECT_EQ(text.text, std::string(taken, 'x') + (fits ? whole : "")) << taken;
    }
}

TEST(JoinedText, WritesNothingBehindItsEnd)
{
    struct {
        SetList<32> set;
        char behind[16];
    } memory;
    memset(memory.behind, 0x5A, sizeof memory.behind);
    for (int i = 0; i < 40; i++) memory.set.add("%s", std::string(static_cast<size_t>(i), 'x').c_str());
    for (const char c : memory.behind) EXPECT_EQ(c, 0x5A);
    EXPECT_EQ(strlen(memory.set.text), memory.set.size);
    EXPECT_LT(memory.set.size, 32u);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
