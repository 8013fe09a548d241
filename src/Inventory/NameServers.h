// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The name servers that the resolver uses, and where they come from.
#pragma once

#include "Inventory/Column.h"
#include "Inventory/Listing.h"

#include <optional>

namespace Kivo::Inventory {

/// A name server of the resolver file.
struct NameServer {
    std::string address;
    std::optional<std::string> interface; ///< the scope of a link-local server
    bool isUsed = false;                  ///< whether the C library asks it; it ignores all but the first three
};

/// Name servers and the leases that they come with.
struct NameServers {
    std::optional<std::string> file;                ///< the resolver file in force
    std::optional<std::vector<NameServer>> servers; ///< in the order of the file
    std::optional<std::string> ipv4First;           ///< as K7SystemUtil::Network::getDnsIpAddress() reads them
    std::optional<std::string> ipv4Second;
    std::optional<std::string> ipv6First;
    std::optional<std::string> ipv6Second;
    std::optional<std::string> dhcpIpv4;  ///< what the DHCP client was given
    std::optional<bool> wanLeased;        ///< whether the WAN interface has a DHCP lease
    std::optional<bool> videoInputLeased; ///< the same of the video input interface
};

template <>
K7INVENTORY_API std::span<const Column<NameServer>> columns<NameServer>();
template <>
K7INVENTORY_API std::span<const Column<NameServers>> columns<NameServers>();

/// *Source*: K7SystemUtil::Network, `/etc/resolv.conf` and the state files of the DHCP client
[[nodiscard]] K7INVENTORY_API Reading<NameServers> readNameServers();

} // namespace Kivo::Inventory
