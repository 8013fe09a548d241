// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Hardware addresses.
#include "Core/K7MacAddress.h"

#include "support/AddressText.h"

using namespace Kivo;

static const uint8 MAC[] = {0x00, 0x11, 0x22, 0xAA, 0xBB, 0xCC};

TEST(K7MacAddress, TakesSixPairsOfDigitsWithOneSeparator)
{
    const K7MacAddress before(MAC);
    expectText(before, "01:23:45:67:89:ab", {"01:23:45:67:89:aB", "01-23-45-67-89-AB"});
    expectText(before, nullptr,
               {"", "01:23:45:67:89", "01:23:45:67:89:ab:cd", "01:23-45:67:89:ab", "01:23:45:67:89:-a"});
}
