// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Main memory and swap.
#pragma once

#include "Inventory/Column.h"
#include "Inventory/Listing.h"

#include <optional>

namespace Kivo::Inventory {

/// Main memory and swap, in KiB.
struct Memory {
    std::optional<uint64> total;
    std::optional<uint64> available; ///< what can be had without swapping
    std::optional<uint64> free;
    std::optional<uint64> buffers;
    std::optional<uint64> cached;
    std::optional<uint64> swapTotal;
    std::optional<uint64> swapFree;
    std::optional<uint64> swapCached;
    std::optional<uint64> vmallocUsed;
    std::optional<uint64> oomKills; ///< processes killed for lack of memory since the start; a plain number

    /// What processes and the kernel hold: total without free, buffers and cached.
    [[nodiscard]] K7INVENTORY_API std::optional<uint64> used() const;
};

template <>
K7INVENTORY_API std::span<const Column<Memory>> columns<Memory>();

/// *Source*: `/proc/meminfo`, `/proc/vmstat`
[[nodiscard]] K7INVENTORY_API Reading<Memory> readMemory();

} // namespace Kivo::Inventory
