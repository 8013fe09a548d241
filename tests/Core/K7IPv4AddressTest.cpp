// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// IPv4 addresses.
#include "Core/K7IPv4Address.h"

#include "support/AddressText.h"

using namespace Kivo;

TEST(K7IPv4Address, TakesOneWholeDottedQuad)
{
    const K7IPv4Address before(0x01020304);
    expectText(before, "255.255.255.0", {"255.255.255.0"});
    expectText(before, nullptr,
               {"", "1.2.3", "1.2.3.4.5", "256.1.1.1", "1.2.3.4 ", "01.2.3.4", "0x7f.0.0.1", "\xEF\xBC\x91.2.3.4"});
    EXPECT_FALSE(K7IPv4Address().fromString(J3String(std::wstring(L"1.2.3.5\0", 8))));
}

TEST(K7IPv4Address, RefusesOctetsOutOfRange)
{
    EXPECT_FALSE(K7IPv4Address().set(192, 168, 256, 1));
    EXPECT_FALSE(K7IPv4Address().set(-1, 168, 0, 1));
}
