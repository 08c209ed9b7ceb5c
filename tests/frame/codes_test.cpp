// The table of codes: what an operation may fail with, and what that means.
#include "qbobj/codes.h"

#include <set>
#include <sstream>

#include "fixture/fixture.h"

namespace {

TEST(Codes, AscendAndHaveAMeaningEach)
{
    uint32_t last = 0;
    std::set<std::string> meanings;
    for (const QbobjCode *row = qbobj_codes(); row->code; row++) {
        SCOPED_TRACE(row->code);
        EXPECT_GT(row->code, last);
        last = row->code;
        EXPECT_STREQ(qbobj_code_meaning(row->code), row->meaning);
        EXPECT_TRUE(meanings.insert(row->meaning).second) << "two codes mean the same";
        EXPECT_NE(row->meaning[0], '\0');
        EXPECT_NE(std::string(row->meaning).back(), '.');
    }
    EXPECT_EQ(last, 903u);
}

TEST(Codes, OtherNumbersMeanNothing)
{
    for (const uint32_t number : {0u, 4u, 7u, 799u, 805u, 900u, 904u, UINT32_MAX})
        EXPECT_EQ(qbobj_code_meaning(number), nullptr) << number;
}

TEST(Codes, EveryCodeOfTheOperationsHasAMeaning)
{
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) {
        std::istringstream codes(row->codes);
        for (uint32_t code; codes >> code;) EXPECT_NE(qbobj_code_meaning(code), nullptr) << row->name << " " << code;
    }
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
