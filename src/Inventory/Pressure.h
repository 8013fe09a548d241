// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// How much work waits for the processor, for memory and for disks.
#pragma once

#include "Inventory/Column.h"
#include "Inventory/Listing.h"

#include <optional>

namespace Kivo::Inventory {

/// How long work waited: averages in percent of the time.
struct Delay {
    std::optional<Real> average10; ///< over 10 s
    std::optional<Real> average60;
    std::optional<Real> average300;
    std::optional<Real> totalSeconds; ///< since the start
};

/// How much work waits for one resource.
struct Pressure {
    std::string resource; ///< "cpu", "io", "memory"
    Delay some;           ///< while at least one task waited
    Delay full;           ///< while every task waited
};

template <>
K7INVENTORY_API std::span<const Column<Pressure>> columns<Pressure>();

/// Every resource that the kernel keeps the pressure of: none before kernel 4.20 and where it is switched off.
/// *Source*: `/proc/pressure`
[[nodiscard]] K7INVENTORY_API Listing<Pressure> listPressures();

} // namespace Kivo::Inventory
