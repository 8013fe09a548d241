// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Addresses of either family.
#include "Core/K7InetAddress.h"

#include "support/AddressText.h"

#include "Foundation/J3MemoryStream.h"

using namespace Kivo;

TEST(K7InetAddress, TakesTheFamilyThatTheTextHas)
{
    const K7InetAddress before(K7IPv4Address(0x01020304));
    expectText(before, "fe80::1", {"fe80::1"});
    expectText(before, nullptr, {"", "10.0.0", "1:2"});
}

TEST(K7InetAddress, RefusesToReadAnUnknownFamilyOrTwoAddresses)
{
    for (const auto& [family, lastByte] : {std::pair<uint8, uint8>{5, 0}, {4, 1}, {0, 0}}) {
        uint8 image[21] = {family, 10};
        image[20] = lastByte;
        J3MemoryStream stream(image, sizeof(image));
        K7InetAddress address;
        EXPECT_THROW(address.deserializeFrom(&stream), J3RangeException);
        EXPECT_EQ(address, K7InetAddress());
    }
}
