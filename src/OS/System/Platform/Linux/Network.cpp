// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Queries of one network interface. The lists, the name servers and reachability have sources of their own: together
// they would be a source of 700 lines.
#include "OS/System/Network.h"

#include "Base/TextScanner_p.h"
#include "Core/K7SystemError.h"
#include "OS/System/Platform/Linux/detail/InterfaceParser_p.h"
#include "OS/System/Platform/Linux/detail/LineWalk_p.h"
#include "OS/System/Platform/Linux/detail/NamedInterface_p.h"
#include "OS/System/Platform/Linux/detail/RouteParser_p.h"
#include "OS/System/Platform/Linux/detail/SystemFile_p.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

#include <arpa/inet.h>
#include <ifaddrs.h>

namespace Kivo {

namespace {

constexpr const char* INVALID_PARAMETERS = "invalid input parameters";
constexpr std::size_t NAME_COMPARED = 31;
constexpr std::size_t NAME_COMPARED_V6 = 8;
constexpr std::size_t SPEED_SIZE = 255;
constexpr std::size_t INTERFACE_LIST_SIZE = 1200;

bool isSameName(const char* left, const char* right) { return std::strncmp(left, right, NAME_COMPARED) == 0; }

const void* bytesOf(const sockaddr& address)
{
    if (address.sa_family == AF_INET6)
        return &reinterpret_cast<const sockaddr_in6&>(address).sin6_addr;
    return &reinterpret_cast<const sockaddr_in&>(address).sin_addr;
}

template <class Address>
void fill(Address* out, const sockaddr& address, const char* reason)
{
    char text[INET6_ADDRSTRLEN];
    requireCall(::inet_ntop(address.sa_family, bytesOf(address), text, sizeof text), reason);
    require(out->fromString(text), "invalid address");
}

template <class Address>
bool firstAddress(const char* devName, int family, Address* out)
{
    return attempt("Network::getIpAddress", [&] {
        require(devName, "invalid devName");
        require(out, INVALID_PARAMETERS);
        requireLiveSystem();
        ifaddrs* first = nullptr;
        requireCall(::getifaddrs(&first) == 0, "getifaddrs() failed", devName);
        const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owner(first, ::freeifaddrs);
        for (const ifaddrs* entry = first; entry; entry = entry->ifa_next) {
            if (entry->ifa_addr && entry->ifa_addr->sa_family == family && isSameName(entry->ifa_name, devName)) {
                fill(out, *entry->ifa_addr, "inet_ntop() failed");
                return true;
            }
        }
        return false;
    });
}

bool isConfigured(NamedInterface& device, const char* devName)
{
    alignas(ifreq) char buffer[INTERFACE_LIST_SIZE] = {};
    ifconf list{};
    list.ifc_len = sizeof buffer;
    list.ifc_buf = buffer;
    device.listConfigured(&list);
    const ifreq* const end = list.ifc_req + static_cast<std::size_t>(list.ifc_len) / sizeof(ifreq);
    return std::any_of(static_cast<const ifreq*>(list.ifc_req), end,
                       [&](const ifreq& entry) { return isSameName(entry.ifr_name, devName); });
}

/// @return whether a line was taken; without a file there is none
template <class Take>
bool takeLine(const char* path, Take&& take)
{
    return walkLines(path, std::forward<Take>(take)) == LineWalk::TAKEN;
}

/// The value form of a query that fills an address: one that is not set when the query fails.
template <class Address, class Query>
Address valueOf(const char* name, Query&& query)
{
    return attemptOr(name, Address(), [&] {
        Address address;
        query(&address);
        return address;
    });
}

/// The given hardware address, or the interface's.
bool chooseMac(const char* devName, const K7MacAddress* given, K7MacAddress* mac)
{
    if (!given)
        return K7SystemUtil::Network::getMacAddress(mac, devName);
    *mac = *given;
    return true;
}

} // namespace

bool K7SystemUtil::Network::getIpAddress(const char* devName, K7IPv4Address* address)
{
    return firstAddress(devName, AF_INET, address);
}

bool K7SystemUtil::Network::getIpAddress(const char* devName, K7IPv6Address* address)
{
    return firstAddress(devName, AF_INET6, address);
}

bool K7SystemUtil::Network::getGateway(const char* devName, K7IPv4Address* gateway)
{
    return attempt("Network::getGateway", [&] {
        require(hasText(devName) && gateway, INVALID_PARAMETERS);
        const std::string_view wanted = devName;
        return takeLine("/proc/net/route", [&](std::string_view line) {
            uint32 address = 0;
            if (!parseDefaultRoute(line, wanted, &address))
                return false;
            gateway->setNetworkValue(address);
            return true;
        });
    });
}

bool K7SystemUtil::Network::getGateway(const char* devName, K7IPv6Address* gateway)
{
    return attempt("Network::getGateway", [&] {
        require(devName && gateway, INVALID_PARAMETERS);
        return takeLine("/proc/net/ipv6_route",
                        [&](std::string_view line) { return parseGatewayV6(line, devName, gateway); });
    });
}

bool K7SystemUtil::Network::getSubnetMask(const char* devName, K7IPv4Address* mask)
{
    return attempt("Network::getSubnetMask", [&] {
        require(hasText(devName) && mask, INVALID_PARAMETERS);
        NamedInterface device(devName);
        fill(mask, device.call(SIOCGIFNETMASK, "ioctl(SIOCGIFNETMASK) failed").ifr_netmask, "inet_ntoa() failed");
    });
}

bool K7SystemUtil::Network::getSubnetMask(const char* devName, K7IPv6Address* mask)
{
    return attempt("Network::getSubnetMask", [&] {
        require(devName && mask, INVALID_PARAMETERS);
        const std::string_view wanted = devName;
        return takeLine("/proc/net/if_inet6", [&](std::string_view line) {
            IPv6Row row;
            if (!parseAddressV6(line, &row) || row.prefixLength == 0 ||
                !wanted.starts_with(row.name.substr(0, NAME_COMPARED_V6)))
                return false;
            *mask = row.address;
            mask->maskSubnet(row.prefixLength);
            return true;
        });
    });
}

K7IPv4Address K7SystemUtil::Network::getDefaultGateway(const char* devName)
{
    return valueOf<K7IPv4Address>("Network::getDefaultGateway",
                                  [&](K7IPv4Address* out) { return getGateway(devName, out); });
}

K7IPv6Address K7SystemUtil::Network::getDefaultGatewayV6(const char* devName)
{
    return valueOf<K7IPv6Address>("Network::getDefaultGatewayV6",
                                  [&](K7IPv6Address* out) { return getGateway(devName, out); });
}

K7IPv4Address K7SystemUtil::Network::getSubnetMask(const char* devName)
{
    return valueOf<K7IPv4Address>("Network::getSubnetMask",
                                  [&](K7IPv4Address* out) { return getSubnetMask(devName, out); });
}

K7IPv6Address K7SystemUtil::Network::getSubnetMaskV6(const char* devName)
{
    return valueOf<K7IPv6Address>("Network::getSubnetMaskV6",
                                  [&](K7IPv6Address* out) { return getSubnetMask(devName, out); });
}

bool K7SystemUtil::Network::getMacAddress(uint8* mac, const char* devName)
{
    return attempt("Network::getMacAddress", [&] {
        require(devName, "invalid devName");
        require(mac, INVALID_PARAMETERS);
        NamedInterface device(devName);
        const ifreq& answer = device.call(SIOCGIFHWADDR, "ioctl(SIOCGIFHWADDR) failed");
        std::memcpy(mac, answer.ifr_hwaddr.sa_data, K7MacAddress::SIZE);
    });
}

bool K7SystemUtil::Network::getMacAddress(K7MacAddress* mac, const char* devName)
{
    uint8 bytes[K7MacAddress::SIZE];
    if (!getMacAddress(mac ? bytes : nullptr, devName))
        return false;
    mac->setBytes(bytes);
    return true;
}

bool K7SystemUtil::Network::isValidMacAddress(const K7MacAddress& mac)
{
    constexpr uint8 GROUP_BIT = 1;
    return mac.isValid() && (mac.bytes()[0] & GROUP_BIT) == 0;
}

K7IPv4Address K7SystemUtil::Network::getDefaultLinkLocalAddressV4(const char* devName, const K7MacAddress* mac)
{
    return valueOf<K7IPv4Address>("Network::getDefaultLinkLocalAddressV4", [&](K7IPv4Address* address) {
        K7MacAddress chosen;
        return chooseMac(devName, mac, &chosen) && address->set(169, 254, chosen.bytes()[4], chosen.bytes()[5]);
    });
}

K7IPv6Address K7SystemUtil::Network::getDefaultLinkLocalAddressV6(const char* devName, const K7MacAddress* mac)
{
    return valueOf<K7IPv6Address>("Network::getDefaultLinkLocalAddressV6", [&](K7IPv6Address* address) {
        K7MacAddress chosen;
        if (!chooseMac(devName, mac, &chosen))
            return false;
        const uint8* const b = chosen.bytes();
        char text[INET6_ADDRSTRLEN];
        std::snprintf(text, sizeof text, "fe80::%x%02x:%x%02x:%x%02x:%x%02x", b[0] ^ 2U, b[1], b[2], 0xFFU, 0xFEU, b[3],
                      b[4], b[5]);
        return address->fromString(text);
    });
}

bool K7SystemUtil::Network::getNetDevIoStat(const char* devName, NetDevIoStat* stat)
{
    return attempt("Network::getNetDevIoStat", [&] {
        constexpr const char* PATH = "/proc/net/dev";
        require(hasText(devName) && stat, INVALID_PARAMETERS);
        SystemLines lines(PATH, 512);
        requireCall(static_cast<bool>(lines), "fopen() failed", PATH);
        const std::string_view wanted = std::string_view(devName).substr(0, NAME_COMPARED);
        std::string_view line;
        for (int heading = 0; heading < 2; ++heading)
            lines.next(&line);
        while (lines.next(&line)) {
            std::string_view counters;
            if (!findCounters(line, wanted, &counters))
                continue;
            NetDevIoStat found{};
            if (!parseCounters(counters, &found))
                continue;
            wanted.copy(found.devName, sizeof found.devName - 1);
            *stat = found;
            return true;
        }
        return false;
    });
}

bool K7SystemUtil::Network::getNetworkLink(const char* devName)
{
    return attempt("Network::getNetworkLink", [&] {
        require(hasText(devName), INVALID_PARAMETERS);
        NamedInterface device(devName, AF_PACKET);
        const int flags = device.call(SIOCGIFFLAGS, "ioctl(SIOCGIFFLAGS) failed").ifr_flags;
        return (flags & IFF_UP) != 0 && (flags & IFF_RUNNING) != 0;
    });
}

bool K7SystemUtil::Network::getEthernetLink(const char* devName, bool* link)
{
    return attempt("Network::getEthernetLink", [&] {
        require(hasText(devName) && link, INVALID_PARAMETERS);
        NamedInterface device(devName);
        const bool configured = isConfigured(device, devName);
        *link = false;
        if (configured)
            *link = device.ethtool(ETHTOOL_GLINK) != 0;
        return configured;
    });
}

bool K7SystemUtil::Network::getEthernetLinkSpeed(const char* devName, int32* speed)
{
    return attempt("Network::getEthernetLinkSpeed", [&] {
        require(hasText(devName) && speed, INVALID_PARAMETERS);
        const std::string path = std::string("/sys/class/net/") + devName + "/speed";
        SystemFile file(path);
        if (!file && errno == ENOENT)
            return false;
        requireCall(static_cast<bool>(file), "can't open the file", path);
        std::string contents;
        const bool isRead = file.readAll(&contents, SPEED_SIZE);
        requireCall(isRead || errno == EINVAL, "can't read the file", path); // EINVAL: the link has no speed
        std::string_view text = contents;
        while (!text.empty() && isSpace(text.back()))
            text.remove_suffix(1);
        if (text == "10" || text == "100" || text == "1000")
            *speed = leadingNumber<int32>(text);
        return !contents.empty();
    });
}

bool K7SystemUtil::Network::getEthernetToolSG(const char* devName, bool* on)
{
    return attempt("Network::getEthernetToolSG", [&] {
        require(hasText(devName) && on, INVALID_PARAMETERS);
        *on = NamedInterface(devName).ethtool(ETHTOOL_GSG) != 0;
    });
}

bool K7SystemUtil::Network::setEthernetToolSG(const char* devName, bool on)
{
    return attempt("Network::setEthernetToolSG", [&] {
        require(hasText(devName), INVALID_PARAMETERS);
        NamedInterface(devName).ethtool(ETHTOOL_SSG, on ? 1 : 0);
    });
}

void K7SystemUtil::Network::fixupBugForEthernetFeatureSG(const K7EthDevInfo* info)
{
    attempt("Network::fixupBugForEthernetFeatureSG", [&] {
        require(info, "info is null");
        const char* const devName = info->devNameCStr();
        int32 speed = 0;
        if (!getEthernetLinkSpeed(devName, &speed) || speed == 0)
            return false;
        K7SystemError::trace(J3String().format(L"WAN: LINK_SPEED %d Mbps", speed), 0);
        bool on = false;
        if (!getEthernetToolSG(devName, &on)) {
            K7SystemError::trace(L"WAN: ETHTOOL_GET_SG: FAILED", lastFailure().errorCode);
            return false;
        }
        const bool wanted = speed == 1000;
        if (on == wanted)
            return true;
        const bool switched = setEthernetToolSG(devName, wanted);
        K7SystemError::trace(
            J3String().format(L"WAN: ETHTOOL_SET_SG: '%s' %s", wanted ? "On" : "Off", switched ? "SUCCESS" : "FAILED"),
            lastFailure().errorCode);
        return switched;
    });
}

int32 K7SystemUtil::Network::getUsedSocketCount()
{
    return attemptOr("Network::getUsedSocketCount", 0, [] {
        int32 count = 0;
        takeLine("/proc/net/sockstat", [&](std::string_view line) { return parseSocketCount(line, &count); });
        return count;
    });
}

bool K7SystemUtil::Network::updateIpAddress(K7EthDevInfo* info, bool* changed)
{
    return attempt("Network::updateIpAddress", [&] {
        require(info && info->isValid(), INVALID_PARAMETERS);
        K7IPv4Address ipv4Address;
        if (!getIpAddress(info->ifceNameCStr(), &ipv4Address))
            return false;
        K7IPv6Address ipv6Address;
        tolerated([&] { return getIpAddress(info->ifceNameCStr(), &ipv6Address); });
        if (changed)
            *changed = ipv4Address != info->ipv4Address() || ipv6Address != info->ipv6Address();
        info->setIpv4Address(ipv4Address);
        info->setIpv6Address(ipv6Address);
        return true;
    });
}

bool K7SystemUtil::Network::updateMacAddress(K7EthDevInfo* info)
{
    return attempt("Network::updateMacAddress", [&] {
        require(info && info->isValid(), INVALID_PARAMETERS);
        K7MacAddress mac;
        if (!getMacAddress(&mac, info->devNameCStr()))
            return false;
        info->setMacAddress(mac);
        return true;
    });
}

} // namespace Kivo
