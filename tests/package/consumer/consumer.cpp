// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Succeeds when all four libraries are there and work.
#include "Core/K7IPv4Address.h"
#include "Inventory/Memory.h"
#include "Inventory/Section.h"
#include "OS/System/K7SystemUtil.h"

int main()
{
    Kivo::K7IPv4Address address;
    if (!address.fromString("127.0.0.1") || address.toString() != L"127.0.0.1")
        return 1;
    if (Kivo::K7SystemUtil::Memory::getMemTotal() == 0)
        return 2;
    const auto memory = Kivo::Inventory::readMemory();
    if (!memory.record.total || !memory.record.used())
        return 3;
    const Kivo::Inventory::Section* const section = Kivo::Inventory::findSection("memory");
    return section && section->collect().rows.size() == 1 ? 0 : 4;
}
