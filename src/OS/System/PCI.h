// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The PCI functions of the machine.
#pragma once

#include "OS/System/K7SystemUtilClass.h"

#include <compare>
#include <vector>

namespace Kivo {

/// A table of the machine's first 16 PCI functions, empty until it is filled by updatePciDeviceInfo() or rescan().
///
/// *Source*: `/sys/bus/pci/devices`. *Threads*: nothing is locked: fill the table from one thread, while no other one
/// asks; any number may ask a table that is not being filled.
class K7SAL_API K7SystemUtil::PCI {
public:
    PCI() = delete;

    /// A PCI function and what it is.
    struct K7SAL_API DeviceInfo {
        /// Where a PCI function sits.
        struct K7SAL_API Address {
            int32 _domain = -1;
            int32 _bus = -1;
            int32 _device = -1;
            int32 _function = -1;

            constexpr Address() = default;

            constexpr Address(int32 domain, int32 bus, int32 device, int32 function)
                : _domain(domain), _bus(bus), _device(device), _function(function)
            {}

            /// Whether none of the four is -1.
            [[nodiscard]] bool isValid() const;

            /// "0000:00:1f.2"
            [[nodiscard]] J3String toString() const;

            /// Equal in all four numbers.
            friend bool operator==(const Address&, const Address&) = default;

            /// By domain (its low 16 bits), bus (8 bits), device (5 bits) and function (3 bits), in this order.
            friend std::weak_ordering operator<=>(const Address& left, const Address& right)
            {
                return left.key() <=> right.key();
            }

        private:
            [[nodiscard]] uint32 key() const;
        };

        Address _addr;
        int32 _vendorId = -1;
        int32 _deviceId = -1;

        constexpr DeviceInfo() = default;

        constexpr DeviceInfo(Address addr, int32 vendorId, int32 deviceId)
            : _addr(addr), _vendorId(vendorId), _deviceId(deviceId)
        {}

        /// Whether the address is valid and neither identifier is -1.
        [[nodiscard]] bool isValid() const;

        /// The address, then vendor and device: "0000:03:00.0 80861533"
        [[nodiscard]] J3String toString() const;
    };

    static constexpr const char* PCI_DEVICE_INFO_PATH = "/sys/bus/pci/devices";

    /// Do nothing; the table is filled on demand.
    static void init();

    /// List all functions in ascending order of address, however many there are.
    /// @param devices becomes the functions; an identifier that cannot be read is -1
    /// @return false, with @p devices as they were, when the directory cannot be read
    /// *Threads*: any; the table is not touched.
    static bool listDevices(std::vector<DeviceInfo>* devices);

    /// Rebuild the table from listDevices(). Functions with an identifier that cannot be read are left out, as is what
    /// exceeds 16.
    /// @return false, with an empty table, when the directory cannot be read
    static bool updatePciDeviceInfo();

    /// Rebuild the table as updatePciDeviceInfo() does.
    static void rescan();

    /// Count the table's entries of one kind; with -1 and -1 those that are free.
    static int32 getDeviceCount(int32 vendorId, int32 deviceId);

    /// Give one entry of the table.
    /// @param index 0 to 15
    /// @return the entry; an invalid one when it is free and for any other index
    static DeviceInfo getDeviceInfo(int32 index);

private:
    static constexpr int32 MAX_DEVICE_COUNT = 16;

    static DeviceInfo INDEX_TO_PCI_DEVICE_INFO[MAX_DEVICE_COUNT];
};

} // namespace Kivo
