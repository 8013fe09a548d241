// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What is kept of a frame, and its stream mode.
#include "VideoClient/K7FrameInfo.h"

#include <gtest/gtest.h>

#include <limits>

using namespace Kivo;

TEST(K7FrameInfo, ConvertsThePipelinesModes)
{
    const std::pair<int32, int> cases[] = {{1, 0},   {2, 1},    {3, 2},  {4, 3},
                                           {5, 0},   {7, 2},    {8, 3},  {9, 0},
                                           {0, 255}, {-1, 254}, {-3, 0}, {std::numeric_limits<int32>::min(), 255}};
    for (const auto& [mode, index] : cases)
        EXPECT_EQ(K7FrameInfo::convertToFrameInfoMode(mode), index) << mode;
}

TEST(K7FrameInfo, CopiesWhatIsKeptOfAFrame)
{
    J3Frame frame;
    frame.setChannel(-1);
    frame.setAlternativeChannel(5);
    frame.setFlag(9);
    frame.setSpot({7, 1ULL << 40});
    const K7FrameInfo info(frame, 3);
    EXPECT_EQ(info.channel(), 5);
    EXPECT_EQ(info.key(), 0x502U);
    EXPECT_EQ(info.flag(), 9);
    EXPECT_EQ(info.spot(), (J3Spot{7, 1ULL << 40}));
    frame.setChannel(4);
    EXPECT_EQ(K7FrameInfo(frame, 3).channel(), 4) << "the alternative channel counts in place of -1 alone";
    EXPECT_FALSE(K7FrameInfo().localTime().isValid());
}
