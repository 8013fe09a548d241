// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Succeeds when all three libraries are there and work.
#include "Core/K7IPv4Address.h"
#include "OS/System/K7SystemUtil.h"

int main()
{
    Kivo::K7IPv4Address address;
    return address.fromString("127.0.0.1") && address.toString() == L"127.0.0.1" &&
                   Kivo::K7SystemUtil::Memory::getMemTotal() > 0
               ? 0
               : 1;
}
