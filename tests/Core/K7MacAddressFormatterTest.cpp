// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Text forms of hardware addresses.
#include "Core/K7MacAddressFormatter.h"

#include <gtest/gtest.h>

using namespace Kivo;

static const uint8 MAC[] = {0x00, 0x11, 0x22, 0xAA, 0xBB, 0xCC};

TEST(K7MacAddressFormatter, WritesGroups)
{
    const K7MacAddress mac(MAC);
    EXPECT_EQ(K7MacAddressFormatter(L"-", true, 1, 99).formatAddress(mac), L"00-11-22-AA-BB-CC");
    EXPECT_EQ(K7MacAddressFormatter(L".", false, 2, 6).formatAddress(mac), L"0011.22aa.bbcc");
    EXPECT_EQ(K7MacAddressFormatter(L":", false, 0, 3).formatAddress(mac), L"001122");
}
