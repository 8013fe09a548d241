// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Messages of the kernel's routing socket about interfaces and their addresses.
#include "OS/System/Platform/Linux/detail/NetlinkParser_p.h"

#include <algorithm>
#include <cstring>

#include <linux/if_addr.h>
#include <linux/if_link.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>

namespace Kivo {

namespace {

/// A kernel structure or number at the beginning of @p bytes, which need not be aligned.
template <class T>
std::optional<T> copied(std::string_view bytes)
{
    if (bytes.size() < sizeof(T))
        return std::nullopt;
    T value;
    std::memcpy(&value, bytes.data(), sizeof value);
    return value;
}

/// Take @p header, whose length counts itself, with what belongs to it from the front of @p rest, and the padding.
/// @return what follows the header; nothing when the length is impossible
std::optional<std::string_view> takeBlock(std::string_view* rest, std::size_t header, std::size_t length)
{
    constexpr std::size_t ALIGNMENT = 4; // of messages and attributes alike
    if (length < header || length > rest->size())
        return std::nullopt;
    const std::string_view payload = rest->substr(header, length - header);
    rest->remove_prefix(std::min((length + ALIGNMENT - 1) / ALIGNMENT * ALIGNMENT, rest->size()));
    return payload;
}

/// Hand every attribute that follows a structure of @p size bytes to @p take(type, value).
template <class Take>
void eachAttribute(std::string_view payload, std::size_t size, Take&& take)
{
    std::string_view rest = payload.substr(std::min(NLMSG_ALIGN(size), payload.size()));
    while (const auto attribute = copied<rtattr>(rest)) {
        const auto value = takeBlock(&rest, sizeof *attribute, attribute->rta_len);
        if (!value)
            return;
        take(attribute->rta_type, *value);
    }
}

/// The kernel's names for operational states, as sysfs has them.
std::optional<std::string> stateName(std::optional<uint8> state)
{
    static constexpr const char* NAMES[] = {"unknown", "notpresent", "down", "lowerlayerdown",
                                            "testing", "dormant",    "up"};
    return state && *state < std::size(NAMES) ? std::optional<std::string>(NAMES[*state]) : std::nullopt;
}

} // namespace

bool NetlinkMessages::next(NetlinkMessage* message)
{
    const auto header = copied<nlmsghdr>(_rest);
    const auto payload = header ? takeBlock(&_rest, sizeof *header, header->nlmsg_len) : std::nullopt;
    if (!payload)
        return false;
    *message = {header->nlmsg_type, header->nlmsg_flags, *payload};
    return true;
}

std::optional<LinkRow> parseLink(std::string_view payload)
{
    const auto link = copied<ifinfomsg>(payload);
    if (!link)
        return std::nullopt;
    LinkRow row;
    row.index = static_cast<uint32>(link->ifi_index);
    row.flags = link->ifi_flags;
    eachAttribute(payload, sizeof *link, [&row](uint16 type, std::string_view value) {
        if (type == IFLA_IFNAME)
            row.name = value.substr(0, value.find('\0'));
        else if (type == IFLA_ADDRESS && value.size() == K7MacAddress::SIZE)
            row.macAddress = K7MacAddress(reinterpret_cast<const uint8*>(value.data()));
        else if (type == IFLA_OPERSTATE)
            row.state = stateName(copied<uint8>(value));
        else if (type == IFLA_MTU)
            row.mtu = copied<uint32>(value);
        else if (type == IFLA_CARRIER_CHANGES)
            row.carrierChanges = copied<uint32>(value);
    });
    return row.name.empty() ? std::nullopt : std::optional(row);
}

std::optional<IPv4Row> parseAddressV4(std::string_view payload)
{
    constexpr uint8 IPV4_FAMILY = 2; // AF_INET
    const auto message = copied<ifaddrmsg>(payload);
    if (!message || message->ifa_family != IPV4_FAMILY)
        return std::nullopt;
    std::optional<uint32> local;
    eachAttribute(payload, sizeof *message, [&local](uint16 type, std::string_view value) {
        if (type == IFA_LOCAL) // IFA_ADDRESS is the other end of a point-to-point link
            local = copied<uint32>(value);
    });
    if (!local)
        return std::nullopt;
    IPv4Row row{{}, message->ifa_index, message->ifa_prefixlen, message->ifa_scope};
    row.address.setNetworkValue(*local);
    return row;
}

} // namespace Kivo
