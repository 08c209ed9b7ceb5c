// Marks in the headers' sentences: what people read, and mistakes, which end the build.
#include <gmock/gmock.h>

#include <stdexcept>

#include "headers.h"

using testing::ElementsAre;

namespace {

TEST(Marks, AreReadAsWordsAndKept)
{
    std::vector<headers::Mark> marks;
    EXPECT_EQ(headers::without_marks("In @unit{MB,megabytes}, @range{UserId,100,32767} or @below{1}.", &marks),
              "In megabytes, 100 to 32767 or below 1.");
    ASSERT_EQ(marks.size(), 3u);
    EXPECT_EQ(marks[1].name, "range");
    EXPECT_THAT(marks[1].arguments, ElementsAre("UserId", "100", "32767"));
}

TEST(Marks, WhatIsNoneStays)
{
    std::vector<headers::Mark> marks;
    for (const char *text : {"mail@example.org", "@", "@ {1}", "a {b}"})
        EXPECT_EQ(headers::without_marks(text, &marks), text);
    EXPECT_TRUE(marks.empty());
}

/// What the build says of a text.
std::string refusal(const char *text)
{
    try {
        return "taken: " + headers::without_marks(text, nullptr);
    } catch (const std::runtime_error &failure) {
        return failure.what();
    }
}

TEST(Marks, ThatThereAreNotAreRefused)
{
    EXPECT_EQ(refusal("@units{MB}"), "there is no mark @units of 1");
    EXPECT_EQ(refusal("@range{1}"), "there is no mark @range of 1");
    EXPECT_EQ(refusal("@unit{MB"), "a mark does not end: @unit{MB");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
