// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Routes of both families.
#pragma once

#include "Inventory/Column.h"
#include "Inventory/Listing.h"
#include "OS/System/Network.h"

namespace Kivo::Inventory {

/// A route.
using Route = K7SystemUtil::Network::Route;

template <>
K7INVENTORY_API std::span<const Column<Route>> columns<Route>();

/// The routes that were configured, IPv4 first, each family in the kernel's order; not those to the machine's own and
/// to multicast addresses, which the kernel keeps beside them.
/// *Source*: K7SystemUtil::Network::listRoutes()
[[nodiscard]] K7INVENTORY_API Listing<Route> listRoutes();

} // namespace Kivo::Inventory
