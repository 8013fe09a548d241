// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The processor as a whole.
#pragma once

#include "Inventory/Column.h"
#include "Inventory/Listing.h"

#include <optional>

namespace Kivo::Inventory {

/// The processor as a whole.
struct Processor {
    std::optional<std::string> model; ///< "Cortex-A72"; several are joined by " + "
    std::optional<uint64> coreCount;  ///< those that are present
    std::optional<uint64> onlineCount;
    std::optional<uint64> packageCount;   ///< sockets
    std::optional<Real> largestMegahertz; ///< the fastest core's
    std::optional<std::string> governor;  ///< who chooses the frequency; several are joined by " + "
    std::optional<Real> usePercent;       ///< since the start
    std::optional<Real> busySeconds;      ///< of all cores together
    std::optional<Real> idleSeconds;
};

template <>
K7INVENTORY_API std::span<const Column<Processor>> columns<Processor>();

/// *Source*: `/proc/cpuinfo` and `stat`, `/sys/devices/system/cpu`. *Cost*: reads files, never waits.
[[nodiscard]] K7INVENTORY_API Reading<Processor> readProcessor();

} // namespace Kivo::Inventory
