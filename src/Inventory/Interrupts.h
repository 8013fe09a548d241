// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Interrupts and how often they came.
#pragma once

#include "Inventory/Column.h"
#include "Inventory/Listing.h"

namespace Kivo::Inventory {

/// A source of interrupts.
struct Interrupt {
    std::string name;        ///< its label without the colon: "11", "IPI0", "LOC"
    uint64 count = 0;        ///< since the start, on the cores that are online
    std::string description; ///< "MSI 16384 Edge ahci[0000:00:01.0]"
};

template <>
K7INVENTORY_API std::span<const Column<Interrupt>> columns<Interrupt>();

/// Every interrupt in the kernel's order.
/// *Source*: `/proc/interrupts`
[[nodiscard]] K7INVENTORY_API Listing<Interrupt> listInterrupts();

} // namespace Kivo::Inventory
