// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// All interfaces and all routes, each list of the kernel read once.
#include "Base/TextScanner_p.h"
#include "OS/System/Network.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/InterfaceParser_p.h"
#include "OS/System/Platform/Linux/detail/LineWalk_p.h"
#include "OS/System/Platform/Linux/detail/NetlinkDump_p.h"
#include "OS/System/Platform/Linux/detail/NetlinkParser_p.h"
#include "OS/System/Platform/Linux/detail/RouteParser_p.h"

#include <algorithm>
#include <map>

#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/socket.h>

namespace Kivo {

namespace {

using Network = K7SystemUtil::Network;
using AddressScope = Network::AddressScope;

constexpr const char* TOO_MANY_INTERFACES = "more interfaces than MAX_INTERFACES";
constexpr const char* TOO_MANY_ADDRESSES = "more IPv6 addresses than MAX_ADDRESSES";
constexpr const char* TOO_MANY_ROUTES = "more routes than MAX_ROUTES";

/// Hand every line of a file to @p take. @return false when there is no such file
template <class Take>
bool eachLine(const char* path, Take&& take)
{
    const auto takeAll = [&](std::string_view line) {
        take(line);
        return false;
    };
    return walkLines(path, takeAll) != LineWalk::NO_FILE;
}

/// Interfaces in the order in which they were first told of.
class InterfaceTable {
public:
    using Interfaces = std::vector<Network::Interface>;

    /// The interface of that name, which is added when it is new.
    Network::Interface& at(std::string_view name)
    {
        const auto place = _places.find(name);
        if (place != _places.end())
            return _interfaces[place->second];
        require(_interfaces.size() < Network::MAX_INTERFACES, TOO_MANY_INTERFACES);
        _places.emplace(name, _interfaces.size());
        _interfaces.emplace_back().name = name;
        return _interfaces.back();
    }

    Interfaces& interfaces() { return _interfaces; }

private:
    Interfaces _interfaces;
    // Not hashed: names of a captured tree may be chosen to collide.
    std::map<std::string, std::size_t, std::less<>> _places;
};

/// Whether the kernel would give an interface this name. One from a captured tree may be anything.
bool isInterfaceName(std::string_view name)
{
    const bool isPlain =
        std::none_of(name.begin(), name.end(), [](char c) { return c == '\0' || c == '/' || isSpace(c); });
    return isPlain && !name.empty() && name.size() < IFNAMSIZ && name != "." && name != "..";
}

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

AddressScope toScopeV4(uint8 kernelScope)
{
    switch (kernelScope) {
    case RT_SCOPE_HOST:
        return AddressScope::HOST;
    case RT_SCOPE_LINK:
        return AddressScope::LINK;
    case RT_SCOPE_SITE:
        return AddressScope::SITE;
    default:
        return AddressScope::GLOBAL;
    }
}

void readLinks(InterfaceTable* table)
{
    if (hasSystemRoot())
        return;
    std::map<uint32, std::string> names;
    const std::string links = netlinkDump(RTM_GETLINK, AF_UNSPEC);
    NetlinkMessages linkMessages(links);
    for (NetlinkMessage message; linkMessages.next(&message);) {
        auto row = message.type == RTM_NEWLINK ? parseLink(message.payload) : std::nullopt;
        if (!row)
            continue;
        Network::Interface& interface = table->at(row->name);
        interface.index = row->index;
        interface.flags = row->flags;
        interface.macAddress = row->macAddress;
        interface.state = std::move(row->state);
        interface.mtu = row->mtu;
        interface.carrierChanges = row->carrierChanges;
        names[row->index] = std::move(row->name);
    }
    const std::string addresses = netlinkDump(RTM_GETADDR, AF_INET);
    for (Network::Interface& interface : table->interfaces())
        interface.ipv4.emplace();
    NetlinkMessages addressMessages(addresses);
    for (NetlinkMessage message; addressMessages.next(&message);) {
        const auto row = message.type == RTM_NEWADDR ? parseAddressV4(message.payload) : std::nullopt;
        const auto name = row ? names.find(row->index) : names.end();
        if (name != names.end())
            table->at(name->second).ipv4->push_back({row->address, row->prefixLength, toScopeV4(row->scope)});
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
