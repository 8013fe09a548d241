// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The name servers that the resolver uses, and where they come from.
#include "Inventory/NameServers.h"

#include "Inventory/detail/Address_p.h"
#include "Inventory/detail/Source_p.h"
#include "OS/System/Network.h"

namespace Kivo::Inventory {

namespace {

using Network = K7SystemUtil::Network;

constexpr const char* WHAT = "name servers";

constexpr ColumnInfo address(const char* key, const char* heading, const char* help, uint16 traits = PLAIN)
{
    return {key, heading, help, Unit::NONE, Align::LEFT, traits, Secret::IP_ADDRESS};
}

constexpr Column<NameServer> SERVER_COLUMNS[] = {
    column<&NameServer::address>(address("address", "address", "The server's address", IDENTITY)),
    column<&NameServer::interface>({"interface", "interface", "Interface that a link-local server is reached by"}),
    column<&NameServer::isUsed>({"used", "used", "Whether the C library asks it, which it does of the first three"}),
};

constexpr Column<NameServers> COLUMNS[] = {
    column<&NameServers::ipv4First>(address("ipv4_first", "IPv4 first", "First IPv4 server")),
    column<&NameServers::ipv4Second>(address("ipv4_second", "IPv4 second", "Second IPv4 server")),
    column<&NameServers::ipv6First>(address("ipv6_first", "IPv6 first", "First IPv6 server")),
    column<&NameServers::ipv6Second>(address("ipv6_second", "IPv6 second", "Second IPv6 server")),
    column<&NameServers::dhcpIpv4>(
        address("dhcp_ipv4", "from DHCP", "First IPv4 server that the DHCP client was given")),
    column<&NameServers::wanLeased>({"wan_leased", "WAN DHCP", "Whether the WAN interface has a DHCP lease"}),
    column<&NameServers::videoInputLeased>(
        {"video_input_leased", "video-input DHCP", "Whether the video input interface has a DHCP lease"}),
    column<&NameServers::file>({"file", "file", "Resolver file in force", Unit::NONE, Align::LEFT, DETAIL}),
    {{"servers", "servers", "All servers in the order of the file", Unit::NONE, Align::LEFT, DETAIL, Secret::NONE,
      &columnInfos<NameServer>},
     [](const NameServers& n) { return n.servers ? Value(rowsOf(*n.servers)) : Value(); }},
};

/// The text of an address that an operation gives; it is not set when there is none or the operation fails.
template <class Address>
std::optional<std::string> told(Source& source, const Address& address)
{
    if (!address.isValid())
        source.noteFailure();
    return setAddressText(address);
}

std::optional<bool> readLease(Source& source, bool (*query)(bool*))
{
    bool leased = false;
    if (query(&leased))
        return leased;
    source.noteFailure();
    return std::nullopt;
}

void readServers(Source& source, NameServers* record)
{
    std::vector<Network::NameServer> listed;
    std::string file;
    if (!Network::listNameServers(&listed, &file)) {
        source.noteFailure();
        return;
    }
    record->file = std::move(file);
    std::vector<NameServer>& servers = record->servers.emplace();
    for (const Network::NameServer& server : listed)
        servers.push_back({addressText(server.address),
                           server.scope.empty() ? std::nullopt : std::optional(server.scope),
                           servers.size() < Network::NAME_SERVERS_USED});
}

} // namespace

template <>
std::span<const Column<NameServer>> columns<NameServer>()
{
    return SERVER_COLUMNS;
}

template <>
std::span<const Column<NameServers>> columns<NameServers>()
{
    return COLUMNS;
}

Reading<NameServers> readNameServers()
{
    Reading<NameServers> reading;
    Source source(WHAT, &reading.problems);
    NameServers& record = reading.record;
    readServers(source, &record);
    if (record.servers) {
        record.ipv4First = told(source, Network::getDnsIpAddress(0, true));
        record.ipv4Second = told(source, Network::getDnsIpAddress(0, false));
        record.ipv6First = told(source, Network::getDnsIpAddressV6(0, true));
        record.ipv6Second = told(source, Network::getDnsIpAddressV6(0, false));
    }
    record.dhcpIpv4 = told(source, Network::getAutoDnsIpAddress());
    record.wanLeased = readLease(source, Network::getWanDhcpcLeaseResult);
    record.videoInputLeased = readLease(source, Network::getVinDhcpcLeaseResult);
    return reading;
}

} // namespace Kivo::Inventory
