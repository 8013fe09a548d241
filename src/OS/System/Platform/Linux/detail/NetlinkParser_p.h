// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Messages of the kernel's routing socket about interfaces and their addresses.
#pragma once

#include "Core/K7IPv4Address.h"
#include "Core/K7MacAddress.h"

#include <optional>
#include <string>
#include <string_view>

namespace Kivo {

/// One message of a datagram.
struct NetlinkMessage {
    uint16 type = 0;
    uint16 flags = 0;
    std::string_view payload;
};

/// Delivers the messages of a datagram that are there as a whole.
class NetlinkMessages {
public:
    explicit NetlinkMessages(std::string_view datagram) : _rest(datagram) {}

    /// @return false at the end
    bool next(NetlinkMessage* message);

private:
    std::string_view _rest;
};

/// What an RTM_NEWLINK message tells.
struct LinkRow {
    std::string name;
    uint32 index = 0;
    uint32 flags = 0; ///< IFF_UP and so on
    std::optional<K7MacAddress> macAddress;
    std::optional<std::string> state;
    std::optional<uint32> mtu;
    std::optional<uint32> carrierChanges;
};

/// @return nothing for a message that is cut
[[nodiscard]] std::optional<LinkRow> parseLink(std::string_view payload);

/// What an RTM_NEWADDR message tells of an IPv4 address.
struct IPv4Row {
    K7IPv4Address address;
    uint32 index = 0;
    uint32 prefixLength = 0;
    uint8 scope = 0; ///< RT_SCOPE_UNIVERSE and so on
};

/// @return nothing for a message that is cut or about another family
[[nodiscard]] std::optional<IPv4Row> parseAddressV4(std::string_view payload);

} // namespace Kivo
