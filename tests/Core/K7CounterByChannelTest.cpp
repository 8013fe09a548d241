// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Counters for each channel.
#include "Core/K7CounterByChannel.h"

#include "support/AssertReports.h"

#include <gtest/gtest.h>

using namespace Kivo;

TEST(K7CounterByChannel, ReportsWhatIsOutOfRangeAndGoesOn)
{
    const K7Test::AssertReports reports;
    K7CounterByChannel<4> counter(1);
    counter.add(0, 3);
    counter.add(0, 4);
    counter.set(1, 0, 7);
    ASSERT_EQ(reports.texts.size(), 2U);
    EXPECT_TRUE(reports.texts[0].ends_with(", add: index is out of range!")) << reports.texts[0];
    EXPECT_TRUE(reports.texts[1].ends_with(", set: channel is out of range!")) << reports.texts[1];
    EXPECT_EQ(counter.getByChannel(0), (std::array<unsigned, 4>{0, 0, 0, 1}));
}

TEST(K7CounterByChannel, KeepsTheChannelsThatStayAndCopiesAsValues)
{
    K7CounterByChannel<1> counter(2);
    counter.set(0, 0, 5);
    counter.set(1, 0, 6);
    counter.setChannelCount(1);
    counter.setChannelCount(2);
    K7CounterByChannel<1> copy;
    copy = counter;
    counter.clear();
    EXPECT_EQ(copy.getByChannel(0)[0], 5U);
    EXPECT_EQ(copy.getByChannel(1)[0], 0U);
}
