// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The functions of the machine's PCI devices.
#pragma once

#include "Inventory/Column.h"
#include "Inventory/Listing.h"

#include <optional>

namespace Kivo::Inventory {

/// Width and speed of a PCI Express link. Neither is known of a function without a link of its own.
struct PciLink {
    std::optional<uint32> width;  ///< lanes
    std::optional<float64> speed; ///< GT/s of one lane
};

/// One function of a PCI device.
struct PciFunction {
    std::string address;                 ///< "0000:00:1f.2"
    std::optional<std::string> vendorId; ///< four hexadecimal digits, as the three that follow
    std::optional<std::string> deviceId;
    std::optional<std::string> subsystemVendorId;
    std::optional<std::string> subsystemDeviceId;
    std::optional<uint32> classCode;   ///< class, subclass and programming interface, a byte each
    std::optional<std::string> driver; ///< none when no driver is bound
    PciLink link;
    PciLink linkLimit;               ///< the most that the device is capable of
    std::optional<uint32> interrupt; ///< the number of its interrupt line, if it has one

    /// What the class code says, in words.
    [[nodiscard]] K7INVENTORY_API std::optional<std::string> className() const;
};

template <>
K7INVENTORY_API std::span<const Column<PciFunction>> columns<PciFunction>();

/// Every PCI function in the text order of its address.
/// *Source*: `/sys/bus/pci/devices`
[[nodiscard]] K7INVENTORY_API Listing<PciFunction> listPciFunctions();

} // namespace Kivo::Inventory
