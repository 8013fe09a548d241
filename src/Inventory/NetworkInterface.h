// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Network interfaces: links, addresses, traffic.
#pragma once

#include "Inventory/Column.h"
#include "Inventory/Listing.h"
#include "OS/System/Network.h"

#include <optional>

namespace Kivo::Inventory {

/// A network interface.
struct NetworkInterface {
    using Address = K7SystemUtil::Network::InterfaceAddress;
    using Traffic = K7SystemUtil::Network::Traffic;

    std::string name;
    std::optional<uint32> index;
    std::optional<std::string> state;         ///< "up", "down", "lowerlayerdown", "unknown" ...
    std::optional<bool> link;                 ///< whether a carrier is there; not known while the interface is down
    std::optional<uint32> speed;              ///< Mbit/s; not known without a link
    std::optional<std::string> duplex;        ///< "full" or "half"
    std::optional<uint32> mtu;                ///< bytes
    std::optional<std::string> mac;           ///< "52:54:00:11:22:02"
    std::optional<std::string> driver;        ///< none of a virtual interface
    std::optional<uint64> carrierChanges;     ///< how often the link came or went
    std::optional<bool> scatterGather;        ///< told by readNetworkInterface() alone
    std::optional<std::vector<Address>> ipv4; ///< live only
    std::optional<std::vector<Address>> ipv6; ///< the widest scope first
    std::optional<K7IPv4Address> ipv4Gateway; ///< of the default route with the lowest metric
    std::optional<K7IPv6Address> ipv6Gateway;
    std::optional<Traffic> received;
    std::optional<Traffic> sent;
};

template <>
K7INVENTORY_API std::span<const Column<NetworkInterface::Address>> columns<NetworkInterface::Address>();
template <>
K7INVENTORY_API std::span<const Column<NetworkInterface::Traffic>> columns<NetworkInterface::Traffic>();
template <>
K7INVENTORY_API std::span<const Column<NetworkInterface>> columns<NetworkInterface>();

/// Every interface in the kernel's order.
/// *Source*: K7SystemUtil::Network::listInterfaces() and listRoutes(), once each; `/sys/class/net/<interface>`
[[nodiscard]] K7INVENTORY_API Listing<NetworkInterface> listNetworkInterfaces();

/// One interface with all that is to be known of it. @return no record when there is no such interface
/// *Source*: as listNetworkInterfaces(); ETHTOOL_GSG
[[nodiscard]] K7INVENTORY_API Listing<NetworkInterface> readNetworkInterface(const std::string& name);

} // namespace Kivo::Inventory
