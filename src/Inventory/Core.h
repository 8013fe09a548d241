// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The cores of the processor.
#pragma once

#include "Inventory/Column.h"
#include "Inventory/Listing.h"

#include <optional>

namespace Kivo::Inventory {

/// A core of the processor.
struct Core {
    uint32 number = 0;
    std::optional<bool> online;
    std::optional<std::string> model;
    std::optional<Real> megahertz;        ///< now
    std::optional<Real> largestMegahertz; ///< what it can reach
    std::optional<Real> usePercent;       ///< since the start
    std::optional<Real> busySeconds;      ///< since the start
    std::optional<Real> idleSeconds;
};

template <>
K7INVENTORY_API std::span<const Column<Core>> columns<Core>();

/// Every core that is present, by ascending number.
/// *Source*: `/proc/cpuinfo` and `stat`, `/sys/devices/system/cpu`. *Cost*: reads files, never waits.
[[nodiscard]] K7INVENTORY_API Listing<Core> listCores();

} // namespace Kivo::Inventory
