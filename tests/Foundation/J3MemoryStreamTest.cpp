// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Streams over an owned buffer.
#include "Foundation/J3MemoryStream.h"

#include <gtest/gtest.h>

#include <vector>

using namespace Kivo;

TEST(J3MemoryStream, WritesOverItsContentsAndGrowsPastTheEnd)
{
    J3MemoryStream stream("\1\2\3", 3);
    EXPECT_FALSE(stream.moveTo(4));
    EXPECT_TRUE(stream.moveTo(2));
    stream.mark();
    EXPECT_EQ(stream.write("\x8\x9", 2), 2U);
    EXPECT_EQ(stream.fill(7, 2), 2U);
    EXPECT_TRUE(stream.reset());
    std::vector<uint8> rest(9);
    EXPECT_EQ(stream.read(rest.data(), 9), 4U);
    EXPECT_EQ(rest, (std::vector<uint8>{8, 9, 7, 7, 0, 0, 0, 0, 0}));
    stream.clear();
    EXPECT_FALSE(stream.reset()) << "the mark lies beyond the end now";
}
