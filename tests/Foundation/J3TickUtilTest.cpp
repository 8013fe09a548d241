// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Ticks.
#include "Foundation/J3TickUtil.h"

#include "Foundation/J3Thread.h"

#include <gtest/gtest.h>

using namespace Kivo;

TEST(J3TickUtil, CountsMillisecondsAndSurvivesTheWrap)
{
    EXPECT_EQ(J3TickUtil::diffTick(0xFFFFFFF0, 0x10), 0x20U);
    const uint32 start = J3TickUtil::currentTick();
    J3Thread::sleep(100);
    const uint32 elapsed = J3TickUtil::diffTick(start, J3TickUtil::currentTick());
    EXPECT_GE(elapsed + J3TickUtil::resolution(), 100U);
    EXPECT_GE(J3TickUtil::resolution(), 1U);
}
