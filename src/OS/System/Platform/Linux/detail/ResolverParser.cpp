// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The lines of a resolver file and of the DHCP client's result file.
#include "Base/TextScanner_p.h"
#include "OS/System/Platform/Linux/detail/ResolverParser_p.h"

#include <arpa/inet.h>

namespace Kivo {

// nameserver 192.168.0.1
// nameserver fe80::1%eth0
std::string_view parseServerText(std::string_view line)
{
    constexpr std::size_t LONGEST_SERVER = 256;
    TextScanner scanner(line);
    std::string_view server;
    if (scanner.literal("nameserver") && (scanner.rest().starts_with(' ') || scanner.rest().starts_with('\t')))
        scanner.word(&server, LONGEST_SERVER);
    return server;
}

bool parseServer(std::string_view text, K7IPv4Address* address)
{
    in_addr value{};
    if (::inet_aton(std::string(text).c_str(), &value) == 0)
        return false;
    address->setNetworkValue(value.s_addr);
    return true;
}

bool parseServer(std::string_view text, K7IPv6Address* address)
{
    return address->fromString(std::string(text.substr(0, text.find('%'))).c_str());
}

bool parseNameServer(std::string_view line, K7SystemUtil::Network::NameServer* server)
{
    const std::string_view text = parseServerText(line);
    K7IPv4Address ipv4;
    K7IPv6Address ipv6;
    server->scope.clear();
    if (parseServer(text, &ipv4)) {
        server->address = ipv4;
        return true;
    }
    if (!parseServer(text, &ipv6))
        return false;
    server->address = ipv6;
    if (const std::size_t percent = text.find('%'); percent != std::string_view::npos)
        server->scope = text.substr(percent + 1);
    return true;
}

bool parseLeaseResult(std::string_view line, bool* leased)
{
    int32 result = 0;
    if (!TextScanner(line).number(&result))
        return false;
    *leased = result != 0;
    return true;
}

} // namespace Kivo
