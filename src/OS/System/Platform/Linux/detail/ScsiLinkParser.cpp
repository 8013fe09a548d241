// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The links of block devices, and the names of USB devices.
#include "OS/System/Platform/Linux/detail/ScsiLinkParser_p.h"

namespace Kivo {

namespace {

constexpr std::size_t USB_NAME_LENGTH = 7;
constexpr std::size_t SEEN_LENGTH = 255;

/// "usb2"
bool isUsbBus(std::string_view component)
{
    return component.starts_with("usb") && wholeNumber<uint32>(component.substr(3)).has_value();
}

/// "2-1", "2-1.4", and not the interface "2-1:1.0"
bool isUsbDevice(std::string_view component)
{
    TextScanner numbers(component);
    std::string_view bus;
    return numbers.until('-', &bus) && wholeNumber<uint32>(bus) && !numbers.atEnd() &&
           numbers.rest().find_first_not_of("0123456789.") == std::string_view::npos;
}

} // namespace

// ../devices/platform/4010000000.pcie/pci0000:00/0000:00:01.0/ata1/host0/target0:0:0/0:0:0:0/block/sda
std::optional<K7SystemUtil::SCSI::Address> parseScsiAddress(std::string_view target)
{
    TextScanner components(target);
    for (std::string_view component; components.field(&component, "/");) {
        TextScanner pieces(component);
        std::string_view piece;
        int32 numbers[4] = {};
        std::size_t count = 0;
        while (count < std::size(numbers) && pieces.field(&piece, ":"))
            numbers[count++] = leadingNumber<int32>(piece);
        if (count == std::size(numbers))
            return K7SystemUtil::SCSI::Address(numbers[0], numbers[1], numbers[2], numbers[3]);
    }
    return std::nullopt;
}

// .../0000:00:02.0/usb1/1-5/1-5.3/1-5.3:1.0/host7/target7:0:0/7:0:0:0/block/sdd
std::string_view parseUsbDevice(std::string_view target)
{
    std::string_view device;
    bool isBelowBus = false;
    TextScanner components(target);
    for (std::string_view component; components.field(&component, "/");)
        if (isUsbBus(component))
            isBelowBus = true;
        else if (isBelowBus && isUsbDevice(component))
            device = component;
    return device;
}

bool isUsbName(std::string_view name) { return name.find_first_not_of("0123456789-.:") == std::string_view::npos; }

// 1-1:1.0
bool UsbPortNames::take(std::string_view name, K7SystemUtil::SCSI::UsbIndexToDev* dev)
{
    if (name.size() != USB_NAME_LENGTH || _seen.find(name) != std::string::npos)
        return false;
    _seen.append(name.substr(0, SEEN_LENGTH - _seen.size()));
    if (!isDecimalDigit(name[0]) || !isDecimalDigit(name[2]) || !isDecimalDigit(name[4]))
        return false;
    dev->set(name[0] - '0', name[2] - '0', name[4] - '0');
    return true;
}

} // namespace Kivo
