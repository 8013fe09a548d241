// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The links of block devices, and the names of USB devices.
#pragma once

#include "Base/TextScanner_p.h"
#include "OS/System/SCSI.h"

#include <optional>
#include <string>

namespace Kivo {

/// The SCSI address in the target of a block device's link: the first component of at least four pieces between colons.
std::optional<K7SystemUtil::SCSI::Address> parseScsiAddress(std::string_view target);

/// The deepest USB device in the target of a block device's link ("1-5.3"), empty when there is none.
std::string_view parseUsbDevice(std::string_view target);

/// Whether a name is made of the characters of USB devices and interfaces alone, and so can stand in a command.
bool isUsbName(std::string_view name);

/// Takes the wiring of USB ports from names in the directory of USB devices, one after the other.
class UsbPortNames {
public:
    /// @return false for a name that has been seen or is not that of a port
    bool take(std::string_view name, K7SystemUtil::SCSI::UsbIndexToDev* dev);

private:
    /// The names seen, without separators; what goes beyond 255 bytes is not noted.
    std::string _seen;
};

} // namespace Kivo
