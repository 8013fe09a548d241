// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// IPv6 addresses.
#include "Core/K7IPv6Address.h"

#include "support/AddressText.h"

using namespace Kivo;

static constexpr uint64 ALL = ~uint64{0};

TEST(K7IPv6Address, TakesOneWholeTextOfAnyForm)
{
    const K7IPv6Address before(1, 2);
    expectText(before, "fe80::211:22ff:fe33:4455", {"FE80:0:0:0:0211:22FF:FE33:4455"});
    expectText(before, nullptr, {"", ":", "1::2::3", "1:2:3:4:5:6:7", "12345::", "fe80::1%lo", "::1/64", "1.2.3.4"});
}

TEST(K7IPv6Address, MasksAtEveryPrefixLength)
{
    const uint64 cases[][3] = {{0, 0, 0},       {1, ALL << 63, 0},     {64, ALL, 0}, {127, ALL, ALL << 1},
                               {128, ALL, ALL}, {UINT32_MAX, ALL, ALL}};
    for (const auto& [length, msb, lsb] : cases) {
        K7IPv6Address address(ALL, ALL);
        address.maskSubnet(static_cast<uint32>(length));
        EXPECT_EQ(address, K7IPv6Address(msb, lsb)) << length;
    }
}
