// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What the attributes of a PCI function mean.
#include "Base/TextScanner_p.h"
#include "Inventory/detail/PciParser_p.h"

namespace Kivo::Inventory {

std::string pciClassName(uint32 classCode)
{
    static constexpr struct {
        uint32 value;
        uint32 mask;
        const char* name;
    } CLASSES[] = {
        {0x000000, 0xFF0000, "Unclassified device"},
        {0x010100, 0xFFFF00, "IDE controller"},
        {0x010600, 0xFFFF00, "SATA controller"},
        {0x010700, 0xFFFF00, "SAS controller"},
        {0x010800, 0xFFFF00, "NVMe controller"},
        {0x010000, 0xFF0000, "Storage controller"},
        {0x020000, 0xFFFF00, "Ethernet controller"},
        {0x028000, 0xFFFF00, "Network controller"},
        {0x020000, 0xFF0000, "Network controller"},
        {0x030000, 0xFF0000, "Display controller"},
        {0x040000, 0xFF0000, "Multimedia device"},
        {0x050000, 0xFF0000, "Memory controller"},
        {0x060000, 0xFFFF00, "Host bridge"},
        {0x060100, 0xFFFF00, "ISA bridge"},
        {0x060400, 0xFFFF00, "PCI bridge"},
        {0x060000, 0xFF0000, "Bridge"},
        {0x070000, 0xFF0000, "Communication controller"},
        {0x080000, 0xFF0000, "System peripheral"},
        {0x0C0300, 0xFFFF00, "USB controller"},
        {0x0C0500, 0xFFFF00, "SMBus"},
        {0x0C0000, 0xFF0000, "Serial bus controller"},
        {0x120000, 0xFF0000, "Accelerator"},
        {0xFF0000, 0xFF0000, "Unassigned class"},
    };
    for (const auto& entry : CLASSES)
        if ((classCode & entry.mask) == entry.value)
            return entry.name;
    return "Class " + std::to_string(classCode >> 16U);
}

// 16
// 0 where there is no link, 255 where the device does not answer
std::optional<uint32> parsePciLinkWidth(std::string_view text)
{
    constexpr uint32 NO_ANSWER = 255;
    const auto width = wholeNumber<uint32>(trimmed(text));
    return width && *width != 0 && *width < NO_ANSWER ? width : std::nullopt;
}

// 8.0 GT/s PCIe
// 8 GT/s, Unknown speed (before Linux 5.7)
// Unknown
std::optional<float64> parsePciLinkSpeed(std::string_view text)
{
    TextScanner scanner(text);
    float64 speed = 0;
    if (!scanner.real(&speed) || !scanner.literal(" GT/s") || speed <= 0)
        return std::nullopt;
    return speed;
}

} // namespace Kivo::Inventory
