// Assertions hold in release builds: this file is always compiled as one.
#undef NDEBUG
#define NDEBUG 1

#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include "frame/report.h"

namespace {

constexpr int kLine = __LINE__ + 4;

void needs(const char *shares)
{
    QB_ASSERT(shares);
}

void needs_under_another_name(const char *pointer)
{
    QB_ASSERT_AS(pointer != nullptr, "shares");
}

TEST(AssertionDeathTest, NamesFileLineFunctionAndCondition)
{
    needs("something");
    EXPECT_DEATH(needs(nullptr),
                 "^assertion_test\\.cpp:" + std::to_string(kLine) + ": needs: Assertion `shares' failed\\.\n");
    EXPECT_DEATH(needs_under_another_name(nullptr),
                 "^assertion_test\\.cpp:[0-9]+: needs_under_another_name: Assertion `shares' failed\\.");
}

TEST(AssertionDeathTest, Aborts)
{
    EXPECT_EXIT(needs(nullptr), testing::KilledBySignal(SIGABRT), "failed");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
