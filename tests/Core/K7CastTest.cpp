// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Strict conversion of texts to integers.
#include "Core/K7Cast.h"

#include "Foundation/J3Exception.h"

#include <gtest/gtest.h>

using namespace Kivo;

static_assert(K7::CastTarget<uint64> && K7::CastTarget<uint8>);
static_assert(!K7::CastTarget<bool> && !K7::CastTarget<char> && !K7::CastTarget<double> && !K7::CastTarget<J3String>);

TEST(K7Cast, TakesOneWholeNumberInRange)
{
    uint8 byte = 42;
    for (const char* bad : {"256", "-1", "+1", "", " 1", "1 ", "1x", "ff", "0x1", "1.0", "\xD9\xA1"})
        EXPECT_FALSE(K7::castFrom(&byte, bad)) << bad;
    for (const char* bad : {"0x", "x1", "0x0x1", "0x-1", "-0x-1", "100", "fg"})
        EXPECT_FALSE(K7::castFrom(&byte, bad, true)) << bad;
    EXPECT_THROW(K7::castFromThrowable(&byte, L"300"), J3Exception);
    EXPECT_EQ(byte, 42) << "unchanged on failure";
    EXPECT_TRUE(K7::castFrom(&byte, " \t0x1f\r\n", true, true));
    EXPECT_EQ(byte, 0x1F);
    unsigned long long wide = 0;
    EXPECT_FALSE(K7::castFrom(&wide, "18446744073709551616"));
    EXPECT_TRUE(K7::castFrom(&wide, "fe80000000000001", true));
    EXPECT_EQ(wide, 0xFE80000000000001);
}
