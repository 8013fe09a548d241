// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Interval gauge over ticks.
#include "Core/K7TickGuage.h"

#include <gtest/gtest.h>

using namespace Kivo;

TEST(K7TickGuage, IsDueWhenMoreThanItsIntervalHasPassed)
{
    constexpr uint32 START = 0xFFFFFF00; // the tick wraps during the interval
    EXPECT_FALSE(K7TickGuage(1000, false, START).isElapsed(START + 1000));
    EXPECT_TRUE(K7TickGuage(1000, false, START).isElapsed(START + 1001));
    EXPECT_TRUE(K7TickGuage(1000, true, START).isElapsed(START));
}

TEST(K7TickGuage, GivesTheFactorOfARateAndStartsAnew)
{
    const uint32 cases[][3] = {{1000, 2000, 500}, {1000, 0, 10000}, {5120, 5120, 5120}, {UINT32_MAX, 9, UINT32_MAX}};
    for (const auto& [interval, elapsed, expected] : cases) {
        K7TickGuage gauge(interval, true, 500);
        EXPECT_EQ(gauge.setNowConsiderElapsed(100, 500 + elapsed), expected) << interval << ' ' << elapsed;
        EXPECT_FALSE(gauge.isElapsed(500 + elapsed));
    }
}
