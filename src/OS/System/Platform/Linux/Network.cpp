// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What the kernel tells of a network interface through a socket.
#include "OS/System/Network.h"

#include "Core/K7SystemError.h"
#include "OS/System/Platform/Linux/detail/NamedInterface_p.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string_view>

#include <arpa/inet.h>
#include <ifaddrs.h>

namespace Kivo {

namespace {

constexpr std::size_t NAME_COMPARED = 31;
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
        require(out, "invalid input parameters");
        requireLiveSystem();
        ifaddrs* first = nullptr;
        requireCall(::getifaddrs(&first) == 0, "getifaddrs() failed");
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

bool isConfigured(const NamedInterface& device, const char* devName)
{
    alignas(ifreq) char buffer[INTERFACE_LIST_SIZE] = {};
    ifconf list{};
    list.ifc_len = sizeof buffer;
    list.ifc_buf = buffer;
    requireCall(::ioctl(device.socket(), SIOCGIFCONF, &list) == 0, "ioctl(SIOCGIFCONF) failed");
    const ifreq* const end = list.ifc_req + static_cast<std::size_t>(list.ifc_len) / sizeof(ifreq);
    return std::any_of(static_cast<const ifreq*>(list.ifc_req), end,
                       [&](const ifreq& entry) { return isSameName(entry.ifr_name, devName); });
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

bool K7SystemUtil::Network::getSubnetMask(const char* devName, K7IPv4Address* mask)
{
    return attempt("Network::getSubnetMask", [&] {
        require(hasText(devName) && mask, "invalid input parameters");
        NamedInterface device(devName);
        fill(mask, device.call(SIOCGIFNETMASK, "ioctl(SIOCGIFNETMASK) failed").ifr_netmask, "inet_ntoa() failed");
    });
}

K7IPv4Address K7SystemUtil::Network::getSubnetMask(const char* devName)
{
    K7IPv4Address mask;
    getSubnetMask(devName, &mask);
    return mask;
}

bool K7SystemUtil::Network::getMacAddress(uint8* mac, const char* devName)
{
    return attempt("Network::getMacAddress", [&] {
        require(devName, "invalid devName");
        require(mac, "invalid input parameters");
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
    K7IPv4Address address;
    K7MacAddress chosen;
    if (chooseMac(devName, mac, &chosen))
        address.set(169, 254, chosen.bytes()[4], chosen.bytes()[5]);
    return address;
}

K7IPv6Address K7SystemUtil::Network::getDefaultLinkLocalAddressV6(const char* devName, const K7MacAddress* mac)
{
    K7IPv6Address address;
    K7MacAddress chosen;
    if (chooseMac(devName, mac, &chosen)) {
        const uint8* const b = chosen.bytes();
        char text[INET6_ADDRSTRLEN];
        std::snprintf(text, sizeof text, "fe80::%x%02x:%x%02x:%x%02x:%x%02x", b[0] ^ 2U, b[1], b[2], 0xFFU, 0xFEU, b[3],
                      b[4], b[5]);
        address.fromString(text);
    }
    return address;
}

bool K7SystemUtil::Network::getNetworkLink(const char* devName)
{
    return attempt("Network::getNetworkLink", [&] {
        require(hasText(devName), "invalid input parameters");
        NamedInterface device(devName, AF_PACKET);
        const int flags = device.tryCall(SIOCGIFFLAGS).ifr_flags;
        return (flags & IFF_UP) != 0 && (flags & IFF_RUNNING) != 0;
    });
}

bool K7SystemUtil::Network::getEthernetLink(const char* devName, bool* link)
{
    return attempt("Network::getEthernetLink", [&] {
        require(hasText(devName) && link, "invalid input parameters");
        NamedInterface device(devName);
        const bool configured = isConfigured(device, devName);
        *link = false;
        if (configured)
            *link = device.ethtool(ETHTOOL_GLINK) != 0;
        return configured;
    });
}

bool K7SystemUtil::Network::getEthernetToolSG(const char* devName, bool* on)
{
    return attempt("Network::getEthernetToolSG", [&] {
        require(hasText(devName) && on, "invalid input parameters");
        *on = NamedInterface(devName).ethtool(ETHTOOL_GSG) != 0;
    });
}

bool K7SystemUtil::Network::setEthernetToolSG(const char* devName, bool on)
{
    return attempt("Network::setEthernetToolSG", [&] {
        require(hasText(devName), "invalid input parameters");
        NamedInterface(devName).ethtool(ETHTOOL_SSG, on ? 1 : 0);
    });
}

void K7SystemUtil::Network::fixupBugForEthernetFeatureSG(const K7EthDevInfo* info)
{
    int32 speed = 0;
    if (!info || !getEthernetLinkSpeed(info->devNameCStr(), &speed) || speed == 0)
        return;
    K7SystemError::trace(J3String().format(L"WAN: LINK_SPEED %d Mbps", speed), 0);
    bool on = false;
    if (!getEthernetToolSG(info->devNameCStr(), &on)) {
        K7SystemError::trace(L"WAN: ETHTOOL_GET_SG: FAILED", lastFailure().errorCode);
        return;
    }
    const bool wanted = speed == 1000;
    if (on == wanted)
        return;
    const bool switched = setEthernetToolSG(info->devNameCStr(), wanted);
    K7SystemError::trace(
        J3String().format(L"WAN: ETHTOOL_SET_SG: '%s' %s", wanted ? "On" : "Off", switched ? "SUCCESS" : "FAILED"),
        lastFailure().errorCode);
}

bool K7SystemUtil::Network::updateIpAddress(K7EthDevInfo* info, bool* changed)
{
    K7IPv4Address ipv4Address;
    K7IPv6Address ipv6Address;
    if (!info || !info->isValid() || !getIpAddress(info->ifceNameCStr(), &ipv4Address))
        return false;
    getIpAddress(info->ifceNameCStr(), &ipv6Address);
    if (changed)
        *changed = ipv4Address != info->ipv4Address() || ipv6Address != info->ipv6Address();
    info->setIpv4Address(ipv4Address);
    info->setIpv6Address(ipv6Address);
    return true;
}

bool K7SystemUtil::Network::updateMacAddress(K7EthDevInfo* info)
{
    K7MacAddress mac;
    if (!info || !info->isValid() || !getMacAddress(&mac, info->devNameCStr()))
        return false;
    info->setMacAddress(mac);
    return true;
}

} // namespace Kivo
