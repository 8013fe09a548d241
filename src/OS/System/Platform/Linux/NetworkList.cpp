// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// All interfaces and all routes, each list of the kernel read once.
#include "OS/System/Network.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/InterfaceParser_p.h"
#include "OS/System/Platform/Linux/detail/RouteParser_p.h"
#include "OS/System/Platform/Linux/detail/SystemFile_p.h"

#include <algorithm>
#include <bit>
#include <map>
#include <memory>

#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <netpacket/packet.h>

namespace Kivo {

namespace {

using Network = K7SystemUtil::Network;
using AddressScope = Network::AddressScope;

constexpr const char* TOO_MANY_INTERFACES = "more interfaces than MAX_INTERFACES";
constexpr const char* TOO_MANY_ADDRESSES = "more IPv6 addresses than MAX_ADDRESSES";
constexpr const char* TOO_MANY_ROUTES = "more routes than MAX_ROUTES";

/// Hand every line of a file to @p take, or raise a reason. @return false when there is no such file
template <class Take>
bool eachLine(const char* path, Take&& take)
{
    SystemLines lines(path, 512);
    if (!lines && errno == ENOENT)
        return false;
    requireCall(static_cast<bool>(lines), "can't open the file", path);
    std::string_view line;
    while (lines.next(&line))
        take(line);
    return true;
}

/// Interfaces in the order in which they were first told of.
class InterfaceTable {
public:
    using Interfaces = std::vector<Network::Interface>;

    /// The interface of that name, which is added when it is new.
    Network::Interface& at(std::string_view name)
    {
        if (Network::Interface* const known = find(name))
            return *known;
        require(_interfaces.size() < Network::MAX_INTERFACES, TOO_MANY_INTERFACES);
        _places.emplace(name, _interfaces.size());
        _interfaces.emplace_back().name = name;
        return _interfaces.back();
    }

    /// The interface that an address with this label ("eth0", "eth0:1") belongs to, or null.
    Network::Interface* ofLabel(std::string_view label)
    {
        Network::Interface* interface = nullptr;
        for (; !label.empty() && !interface; label.remove_suffix(1))
            interface = find(label);
        return interface;
    }

    Interfaces& interfaces() { return _interfaces; }

private:
    Network::Interface* find(std::string_view name)
    {
        const auto place = _places.find(name);
        return place == _places.end() ? nullptr : &_interfaces[place->second];
    }

    Interfaces _interfaces;
    std::map<std::string, std::size_t, std::less<>>
        _places; // not hashed: names of a captured tree may be chosen to collide
};

bool isInterfaceName(std::string_view name) { return !name.empty() && name.size() < IFNAMSIZ; }

void readTraffic(InterfaceTable* table)
{
    constexpr const char* PATH = "/proc/net/dev";
    int headings = 2;
    const bool exists = eachLine(PATH, [&](std::string_view line) {
        std::string_view name;
        std::string_view counters;
        if (headings-- > 0 || !splitCounters(line, &name, &counters) || !isInterfaceName(name))
            return;
        Network::Traffic received;
        Network::Traffic sent;
        Network::Interface& interface = table->at(name);
        if (parseCounters(counters, &received, &sent)) {
            interface.received = received;
            interface.sent = sent;
        }
    });
    requireCall(exists, "can't open the file", PATH);
}

AddressScope scopeOf(K7IPv4Address address)
{
    if (address.value() >> 24 == 127)
        return AddressScope::HOST;
    return address.value() >> 16 == 0xA9FE ? AddressScope::LINK : AddressScope::GLOBAL; // 169.254/16
}

K7IPv4Address toIPv4(const sockaddr& address)
{
    K7IPv4Address result;
    result.setNetworkValue(reinterpret_cast<const sockaddr_in&>(address).sin_addr.s_addr);
    return result;
}

/// An entry about the interface itself: the ones without hardware addresses have no address there.
void takeLink(const ifaddrs& entry, InterfaceTable* table)
{
    Network::Interface& interface = table->at(entry.ifa_name);
    interface.flags = entry.ifa_flags;
    interface.ipv4.emplace();
    if (!entry.ifa_addr) {
        if (const unsigned int index = ::if_nametoindex(entry.ifa_name))
            interface.index = index;
        return;
    }
    const auto& link = reinterpret_cast<const sockaddr_ll&>(*entry.ifa_addr);
    interface.index = static_cast<uint32>(link.sll_ifindex);
    if (link.sll_halen == K7MacAddress::SIZE)
        interface.macAddress = K7MacAddress(link.sll_addr);
}

void takeIPv4(const ifaddrs& entry, InterfaceTable* table)
{
    Network::Interface* const interface = table->ofLabel(entry.ifa_name);
    if (!interface || !interface->ipv4)
        return;
    const K7IPv4Address address = toIPv4(*entry.ifa_addr);
    const uint32 mask = entry.ifa_netmask ? toIPv4(*entry.ifa_netmask).value() : ~uint32{0};
    interface->ipv4->push_back({address, static_cast<uint32>(std::countl_one(mask)), scopeOf(address)});
}

void readLinks(InterfaceTable* table)
{
    if (hasSystemRoot())
        return;
    ifaddrs* first = nullptr;
    requireCall(::getifaddrs(&first) == 0, "getifaddrs() failed");
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owner(first, ::freeifaddrs);
    for (const ifaddrs* entry = first; entry; entry = entry->ifa_next) {
        if (!entry->ifa_addr || entry->ifa_addr->sa_family == AF_PACKET)
            takeLink(*entry, table);
        else if (entry->ifa_addr->sa_family == AF_INET)
            takeIPv4(*entry, table);
    }
}

AddressScope toScope(uint32 kernelScope)
{
    switch (kernelScope & 0xF0) {
    case 0x10:
        return AddressScope::HOST;
    case 0x20:
        return AddressScope::LINK;
    case 0x40:
        return AddressScope::SITE;
    default:
        return AddressScope::GLOBAL;
    }
}

void readAddressesV6(InterfaceTable* table)
{
    constexpr uint32 LONGEST_PREFIX = 128;
    std::size_t count = 0;
    const bool exists = eachLine("/proc/net/if_inet6", [&](std::string_view line) {
        IPv6Row row;
        if (!parseAddressV6(line, &row) || row.prefixLength > LONGEST_PREFIX || !isInterfaceName(row.name))
            return;
        require(count++ < Network::MAX_ADDRESSES, TOO_MANY_ADDRESSES);
        Network::Interface& interface = table->at(row.name);
        interface.index = row.index;
        if (!interface.ipv6)
            interface.ipv6.emplace();
        interface.ipv6->push_back({row.address, row.prefixLength, toScope(row.scope)});
    });
    for (Network::Interface& interface : table->interfaces()) {
        if (exists && !interface.ipv6)
            interface.ipv6.emplace();
        if (interface.ipv6)
            std::stable_sort(interface.ipv6->begin(), interface.ipv6->end(),
                             [](const auto& left, const auto& right) { return left.scope < right.scope; });
    }
}

void readRoutes(const char* path, bool (*parse)(std::string_view, Network::Route*), bool mustExist,
                std::vector<Network::Route>* routes)
{
    const bool exists = eachLine(path, [&](std::string_view line) {
        Network::Route route;
        if (!parse(line, &route))
            return;
        require(routes->size() < Network::MAX_ROUTES, TOO_MANY_ROUTES, path);
        routes->push_back(std::move(route));
    });
    requireCall(exists || !mustExist, "can't open the file", path);
}

} // namespace

bool K7SystemUtil::Network::listInterfaces(std::vector<Interface>* interfaces)
{
    return attempt("Network::listInterfaces", [&] {
        require(interfaces, "interfaces is null");
        InterfaceTable table;
        const bool hasTraffic = attempt("", [&] { readTraffic(&table); });
        const bool hasLinks = attempt("", [&] { readLinks(&table); });
        const bool hasAddresses = attempt("", [&] { readAddressesV6(&table); });
        if (!hasAddresses)
            for (Interface& interface : table.interfaces())
                interface.ipv6.reset();
        *interfaces = std::move(table.interfaces());
        return hasTraffic && hasLinks && hasAddresses;
    });
}

bool K7SystemUtil::Network::listRoutes(std::vector<Route>* routes)
{
    return attempt("Network::listRoutes", [&] {
        require(routes, "routes is null");
        std::vector<Route> found;
        const bool hasIPv4 = attempt("", [&] { readRoutes("/proc/net/route", parseRoute, true, &found); });
        const bool hasIPv6 = attempt("", [&] { readRoutes("/proc/net/ipv6_route", parseRouteV6, false, &found); });
        *routes = std::move(found);
        return hasIPv4 && hasIPv6;
    });
}

} // namespace Kivo
