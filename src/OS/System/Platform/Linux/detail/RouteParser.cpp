// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The lines of /proc/net/route and /proc/net/ipv6_route.
#include "Base/TextScanner_p.h"
#include "OS/System/Platform/Linux/detail/InterfaceParser_p.h"
#include "OS/System/Platform/Linux/detail/RouteParser_p.h"

#include <bit>

#include <linux/route.h>

namespace Kivo {

namespace {

K7IPv4Address fromNetworkOrder(uint32 value)
{
    K7IPv4Address address;
    address.setNetworkValue(value);
    return address;
}

/// Whether the line's name does not begin @p devName, or its destination is not 0. Tells it of most lines with a look
/// at a dozen characters; the others are for the scanner to tell.
bool isOtherRoute(std::string_view line, std::string_view devName)
{
    const std::size_t size = std::min(line.size(), devName.size());
    std::size_t at = 0;
    while (at < size && line[at] == devName[at])
        ++at;
    if (at == line.size() || line[at] != '\t')
        return false;
    do
        ++at;
    while (at < line.size() && line[at] == '0');
    return at < line.size() && isHexaDigit(line[at]);
}

} // namespace

// Iface  Destination  Gateway   Flags  RefCnt  Use  Metric  Mask      MTU  Window  IRTT
// eth0   00000000     0202000A  0003   0       0    0       00000000  0    0       0
bool parseDefaultRoute(std::string_view line, std::string_view devName, uint32* gateway)
{
    TextScanner scanner(line);
    uint32 address = 0;
    uint32 flags = 0;
    if (isOtherRoute(line, devName) || !scanner.wordAtBeginOf(devName, 16) || !scanner.zero() ||
        !scanner.number(&address, 16) || !scanner.number(&flags, 16) || (flags & RTF_GATEWAY) == 0 ||
        !scanner.skipWord() || !scanner.skipWord() || !scanner.skipWord() || !scanner.zero())
        return false;
    *gateway = address;
    return true;
}

bool parseRoute(std::string_view line, K7SystemUtil::Network::Route* route)
{
    TextScanner scanner(line);
    std::string_view name;
    uint32 destination = 0;
    uint32 gateway = 0;
    uint32 mask = 0;
    if (!scanner.word(&name) || !scanner.number(&destination, 16) || !scanner.number(&gateway, 16) ||
        !scanner.number(&route->flags, 16) || !scanner.skipWord() || !scanner.skipWord() ||
        !scanner.number(&route->metric) || !scanner.number(&mask, 16))
        return false;
    const uint32 bits = fromNetworkOrder(mask).value();
    route->prefixLength = static_cast<uint32>(std::countl_one(bits));
    if (route->prefixLength + static_cast<uint32>(std::countr_zero(bits)) < 32)
        return false;
    route->interfaceName = name;
    route->destination = fromNetworkOrder(destination);
    route->gateway = fromNetworkOrder(gateway);
    return true;
}

// fec00000000000000000000000000000 40 00000000000000000000000000000000 00 fe800000000000000000000000000002 00000400
//     00000001 00000000 00450003     eth0
bool parseGatewayV6(std::string_view line, std::string_view devName, K7IPv6Address* gateway)
{
    TextScanner scanner(line);
    std::string_view ignored;
    std::string_view nextHop;
    std::string_view name;
    uint32 flags = 0;
    uint32 unused = 0;
    return scanner.word(&ignored, 32) && scanner.number(&unused, 16, 2) && scanner.word(&ignored, 32) &&
           scanner.skipNumber(16) && scanner.word(&nextHop, 32) && scanner.number(&unused, 16) &&
           scanner.skipNumber(16) && scanner.skipNumber(16) && scanner.number(&flags, 16) &&
           (flags & RTF_GATEWAY) != 0 && scanner.word(&name, 8) && devName.starts_with(name) &&
           parseDigitsV6(nextHop, gateway);
}

bool parseRouteV6(std::string_view line, K7SystemUtil::Network::Route* route)
{
    constexpr uint32 LONGEST_PREFIX = 128;
    TextScanner scanner(line);
    std::string_view destination;
    std::string_view ignored;
    std::string_view nextHop;
    std::string_view name;
    K7IPv6Address address;
    K7IPv6Address gateway;
    if (!scanner.word(&destination) || !scanner.number(&route->prefixLength, 16) || !scanner.word(&ignored) ||
        !scanner.skipNumber(16) || !scanner.word(&nextHop) || !scanner.number(&route->metric, 16) ||
        !scanner.skipNumber(16) || !scanner.skipNumber(16) || !scanner.number(&route->flags, 16) ||
        !scanner.word(&name) || route->prefixLength > LONGEST_PREFIX || !parseDigitsV6(destination, &address) ||
        !parseDigitsV6(nextHop, &gateway))
        return false;
    route->interfaceName = name;
    route->destination = address;
    route->gateway = gateway;
    return true;
}

} // namespace Kivo
