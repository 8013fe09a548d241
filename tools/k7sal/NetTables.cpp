// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Network facts as tables.
#include "NetTables.h"

#include "Reading.h"
#include "Terminal.h"
#include "Text.h"

namespace K7Tool {

namespace {

std::string volume(const Json& direction)
{
    return direction.is_null() ? "-" : sizeText(direction["bytes"].get<std::uint64_t>());
}

std::string leaseText(const Json& leased) { return leased.is_null() ? "-" : leased == true ? "leased" : "no lease"; }

} // namespace

std::string withPrefix(const Json& address, const Json& length)
{
    return address.is_null() || length.is_null() ? cell(address) : cell(address) + "/" + cell(length);
}

std::string linkText(const Json& link) { return link.is_null() ? "-" : link == true ? "yes" : "no"; }

std::string counterText(const Json& direction, const char* key)
{
    return direction.is_null() ? "-" : cell(direction[key]);
}

std::string interfaceTables(const Json& interfaces, bool captured)
{
    Table link({"name", "state", "link", "Mbit/s", "MAC", "IPv4", "gateway", "IPv6"},
               {Table::LEFT, Table::LEFT, Table::LEFT, Table::RIGHT});
    Table traffic({"name", "received", "packets", "errors", "sent", "packets", "errors"},
                  {Table::LEFT, Table::RIGHT, Table::RIGHT, Table::RIGHT, Table::RIGHT, Table::RIGHT, Table::RIGHT});
    for (const Json& facts : interfaces) {
        const Json& received = facts["received"];
        const Json& sent = facts["sent"];
        link.add({cell(facts["name"]), cell(facts["state"]), linkText(facts["link"]), cell(facts["speed_mbit_per_s"]),
                  cell(facts["mac"]), withPrefix(facts["ipv4"], facts["ipv4_prefix_length"]),
                  cell(facts["ipv4_gateway"]), withPrefix(facts["ipv6"], facts["ipv6_prefix_length"])},
                 facts["state"] == "down" ? Style::DIM : Style::PLAIN);
        traffic.add({cell(facts["name"]), volume(received), counterText(received, "packets"),
                     counterText(received, "errors"), volume(sent), counterText(sent, "packets"),
                     counterText(sent, "errors")});
    }
    if (interfaces.empty())
        return "  none\n";
    return link.text() + "\n" + traffic.text() + missingNote(captured);
}

std::string missingNote(bool captured)
{
    return captured
               ? styled(Style::DIM, "  IPv4 addresses, masks and offloads can only be asked of the live system.") + "\n"
               : "";
}

std::string dnsTables(const Json& dns)
{
    Table servers({"", "first", "second"});
    servers.add({"IPv4", cell(dns["ipv4_first"]), cell(dns["ipv4_second"])});
    servers.add({"IPv6", cell(dns["ipv6_first"]), cell(dns["ipv6_second"])});
    servers.add({"from DHCP", cell(dns["dhcp_ipv4"]), ""});
    servers.add({"WAN DHCP", leaseText(dns["wan_leased"]), ""});
    servers.add({"video-input DHCP", leaseText(dns["video_input_leased"]), ""});
    return servers.text();
}

} // namespace K7Tool
