// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What the kernel's files tell of network interfaces and sockets.
#include "Core/K7Cast.h"
#include "OS/System/Network.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/SystemFile_p.h"
#include "OS/System/Platform/Linux/detail/Text_p.h"

#include <arpa/inet.h>
#include <linux/route.h>

namespace Kivo {

namespace {

constexpr std::size_t NAME_COMPARED = 31;
constexpr std::size_t HALF_DIGITS = 16;
constexpr std::size_t SPEED_SIZE = 255;
constexpr std::size_t SOCKET_COUNT_COLUMN = 14;

using Stat = K7SystemUtil::Network::NetDevIoStat;

// Iface  Destination  Gateway   Flags  RefCnt  Use  Metric  Mask      MTU  Window  IRTT
// eth0   00000000     0202000A  0003   0       0    0       00000000  0    0       0
/// The gateway, in network byte order, of a default route through @p devName; most lines fail at the first fields.
bool parseDefaultRoute(std::string_view line, std::string_view devName, uint32* gateway)
{
    TextScanner scanner(line);
    uint32 flags = 0;
    return scanner.wordAtBeginOf(devName, 16) && scanner.zero() && scanner.number(gateway, 16) &&
           scanner.number(&flags, 16) && (flags & RTF_GATEWAY) != 0 && scanner.skipWord() && scanner.skipWord() &&
           scanner.skipWord() && scanner.zero();
}

// fec00000000000000000000000000000 40 00000000000000000000000000000000 00 fe800000000000000000000000000002 00000400
//     00000001 00000000 00450003     eth0
/// The next hop, 32 digits, of a route with a gateway through @p devName.
bool parseRouteV6(std::string_view line, std::string_view devName, std::string_view* nextHop)
{
    TextScanner scanner(line);
    std::string_view ignored;
    std::string_view name;
    uint32 prefixLength = 0;
    uint32 metric = 0;
    uint32 flags = 0;
    return scanner.word(&ignored, 32) && scanner.number(&prefixLength, 16, 2) && scanner.word(&ignored, 32) &&
           scanner.skipNumber(16) && scanner.word(nextHop, 32) && scanner.number(&metric, 16) &&
           scanner.skipNumber(16) && scanner.skipNumber(16) && scanner.number(&flags, 16) &&
           (flags & RTF_GATEWAY) != 0 && scanner.word(&name, 8) && devName.starts_with(name);
}

// fe80000000000000505400fffe112201 03 40 20 80     eth1
/// An address, 32 digits, and its prefix length, which is not 0, of @p devName.
bool parseAddressV6(std::string_view line, std::string_view devName, std::string_view* address, uint32* prefixLength)
{
    TextScanner scanner(line);
    std::string_view name;
    uint32 index = 0;
    uint32 scope = 0;
    uint32 flags = 0;
    return scanner.word(address, 32) && scanner.number(&index, 16, 2) && scanner.number(prefixLength, 16, 2) &&
           *prefixLength != 0 && scanner.number(&scope, 16, 2) && scanner.number(&flags, 16, 2) &&
           scanner.word(&name, 8) && devName.starts_with(name);
}

bool toIPv6Address(std::string_view digits, K7IPv6Address* address)
{
    unsigned long long high = 0;
    unsigned long long low = 0;
    if (digits.size() != 2 * HALF_DIGITS || !K7::castFrom(&high, toWide(digits.substr(0, HALF_DIGITS)), true, false) ||
        !K7::castFrom(&low, toWide(digits.substr(HALF_DIGITS)), true, false))
        return false;
    address->setValue64(0, high);
    address->setValue64(1, low);
    return true;
}

/// What follows the colon in the line of @p devName.
bool findCounters(std::string_view line, std::string_view devName, std::string_view* counters)
{
    while (!line.empty() && isSpace(line.front()))
        line.remove_prefix(1);
    if (!line.starts_with(devName))
        return false;
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos || line.substr(0, std::min(colon, NAME_COMPARED)) != devName)
        return false;
    *counters = line.substr(colon + 1);
    return true;
}

//   eth1:     114       1    0    0    0     0          0         2      602       7    0    0    0     0       0
//            0
bool parseCounters(std::string_view text, Stat* stat)
{
    auto& rx = stat->rx;
    auto& tx = stat->tx;
    TextScanner scanner(text);
    const auto read = [&](auto&... counters) { return (scanner.number(&counters) && ...); };
    return read(rx.bytes, rx.packets, rx.errs, rx.drop, rx.fifo, rx.frame, rx.compressed, rx.multicast) &&
           read(tx.bytes, tx.packets, tx.errs, tx.drop, tx.fifo, tx.colls, tx.carrier, tx.compressed);
}

} // namespace

bool K7SystemUtil::Network::getGateway(const char* devName, K7IPv4Address* gateway)
{
    if (!hasText(devName) || !gateway)
        return false;
    const std::string_view wanted = devName;
    return anyLine("/proc/net/route", [&](std::string_view line) {
        in_addr address{};
        char text[INET_ADDRSTRLEN];
        return parseDefaultRoute(line, wanted, &address.s_addr) && ::inet_ntop(AF_INET, &address, text, sizeof text) &&
               gateway->fromString(text);
    });
}

bool K7SystemUtil::Network::getGateway(const char* devName, K7IPv6Address* gateway)
{
    if (!devName || !gateway)
        return false;
    return anyLine("/proc/net/ipv6_route", [&](std::string_view line) {
        std::string_view nextHop;
        return parseRouteV6(line, devName, &nextHop) && toIPv6Address(nextHop, gateway);
    });
}

bool K7SystemUtil::Network::getSubnetMask(const char* devName, K7IPv6Address* mask)
{
    if (!devName || !mask)
        return false;
    return anyLine("/proc/net/if_inet6", [&](std::string_view line) {
        std::string_view address;
        uint32 prefixLength = 0;
        if (!parseAddressV6(line, devName, &address, &prefixLength) || !toIPv6Address(address, mask))
            return false;
        mask->maskSubnet(prefixLength);
        return true;
    });
}

K7IPv4Address K7SystemUtil::Network::getDefaultGateway(const char* devName)
{
    K7IPv4Address gateway;
    getGateway(devName, &gateway);
    return gateway;
}

K7IPv6Address K7SystemUtil::Network::getDefaultGatewayV6(const char* devName)
{
    K7IPv6Address gateway;
    getGateway(devName, &gateway);
    return gateway;
}

K7IPv6Address K7SystemUtil::Network::getSubnetMaskV6(const char* devName)
{
    K7IPv6Address mask;
    getSubnetMask(devName, &mask);
    return mask;
}

bool K7SystemUtil::Network::getNetDevIoStat(const char* devName, NetDevIoStat* stat)
{
    return attempt("Network::getNetDevIoStat", [&] {
        require(hasText(devName) && stat, "invalid input parameters");
        SystemLines lines("/proc/net/dev", 512);
        requireCall(static_cast<bool>(lines), "fopen() failed");
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

bool K7SystemUtil::Network::getEthernetLinkSpeed(const char* devName, int32* speed)
{
    if (!hasText(devName) || !speed)
        return false;
    SystemFile file(std::string("/sys/class/net/") + devName + "/speed");
    char buffer[SPEED_SIZE];
    std::string_view text;
    if (!file || (text = file.readInto(buffer, sizeof buffer)).empty())
        return false;
    while (!text.empty() && isSpace(text.back()))
        text.remove_suffix(1);
    if (text == "10" || text == "100" || text == "1000")
        *speed = leadingNumber<int32>(text);
    return true;
}

// sockets: used 123
int32 K7SystemUtil::Network::getUsedSocketCount()
{
    int32 count = 0;
    anyLine("/proc/net/sockstat", [&](std::string_view line) {
        if (line.find("sockets:") == std::string_view::npos)
            return false;
        TextScanner(line.substr(std::min(SOCKET_COUNT_COLUMN, line.size()))).number(&count);
        return true;
    });
    return count;
}

} // namespace Kivo
