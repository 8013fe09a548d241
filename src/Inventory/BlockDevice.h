// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Block devices, and what was read from and written to them.
#pragma once

#include "Inventory/Column.h"
#include "Inventory/Listing.h"

#include <optional>

namespace Kivo::Inventory {

/// What went through a block device since it came to be.
struct BlockTraffic {
    uint64 reads; ///< finished requests
    uint64 readBytes;
    uint64 writes; ///< finished requests
    uint64 writtenBytes;
    uint64 busyTime; ///< ms during which a request was under way
};

/// A whole block device, not its partitions.
struct BlockDevice {
    std::string name;           ///< "sda"
    std::optional<uint64> size; ///< bytes
    std::optional<std::string> model;
    std::optional<bool> removable;
    std::optional<bool> readOnly;
    std::optional<BlockTraffic> traffic;
};

template <>
K7INVENTORY_API std::span<const Column<BlockDevice>> columns<BlockDevice>();

/// Every block device in the text order of its name, without those of size 0 (unused loop and RAM devices, empty card
/// readers).
/// *Source*: `/sys/block`, `/proc/diskstats`
[[nodiscard]] K7INVENTORY_API Listing<BlockDevice> listBlockDevices();

} // namespace Kivo::Inventory
