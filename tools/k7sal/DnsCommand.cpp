// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// k7sal dns: the name servers in force, and setting them.
#include "Command.h"
#include "Show.h"

#include "Core/K7InetAddress.h"
#include "Inventory/NameServers.h"
#include "OS/System/Network.h"

#include <cstring>
#include <iostream>

namespace K7Tool {

using namespace Kivo;
using namespace Kivo::Inventory;
using Network = K7SystemUtil::Network;

namespace {

const Section& nameServers() { return *findSection(SectionKey::NAME_SERVERS); }

int show(const Session& session, const ColumnOption& columns)
{
    if (columns.asksForHelp())
        return showColumns({&nameServers()});
    Reading<NameServers> reading = readNameServers();
    const bool isKnown = reading.record.file.has_value() || !reading.problems.empty();
    Sheet sheet = sheetOf(nameServers(), collected(std::move(reading)));
    columns.applyTo(sheet);
    const int result = showDocument(session, {std::move(sheet)}, columns.detail());
    return isKnown ? result : failed("dns", "there is no resolver file");
}

/// Name the servers that the C library does not ask.
void warnOfUnused(const std::vector<Network::NameServer>& servers)
{
    if (servers.size() <= Network::NAME_SERVERS_USED)
        return;
    std::string used;
    for (std::size_t i = 0; i < Network::NAME_SERVERS_USED; ++i)
        used += (i == 0 ? "" : ", ") + servers[i].address.toString().to_string();
    warn("the C library asks the first " + std::to_string(Network::NAME_SERVERS_USED) + " of these " +
         std::to_string(servers.size()) + " servers only: " + used);
}

/// Write the resolver file, and tell which one it was and what it means.
int write(const Session& session, const std::string& command)
{
    Network::ResolverFile written;
    if (!Network::writeResolverFile(&written))
        return failed(command);
    std::vector<Network::NameServer> servers;
    std::string inForce;
    if (!Network::listNameServers(&servers, &inForce))
        return failed(command);
    if (session.json) {
        const int shown = show(session, {});
        if (shown != EXIT_DONE)
            return shown;
    } else {
        std::cout << "written to " << written.path << "\n" << std::flush;
    }
    if (inForce != written.path)
        return failed(command,
                      "the name servers in force are still those of " + inForce + ", which could not be written",
                      written.errorCode);
    warnOfUnused(servers);
    return EXIT_DONE;
}

int set(const Session& session, const std::vector<std::string>& servers)
{
    refuseRoot(session, "dns set");
    K7IPv4Address ipv4;
    K7IPv6Address ipv6;
    for (const std::string& text : servers) {
        K7InetAddress address;
        if (!address.fromString(text.c_str()) || !address.isValid())
            throw CLI::ValidationError("dns set", "\"" + text + "\" is not an address of a name server");
        if (address.isIPv4() ? ipv4.isValid() : ipv6.isValid())
            throw CLI::ValidationError("dns set", "\"" + text + "\" is the second server of its family");
        address.isIPv4() ? static_cast<void>(ipv4 = address.ipv4Address())
                         : static_cast<void>(ipv6 = address.ipv6Address());
    }
    if (!Network::adoptDnsIpAddresses())
        return failed("dns set");
    if (ipv4.isValid())
        Network::setDnsIpAddress(ipv4);
    if (ipv6.isValid())
        Network::setDnsIpAddress(ipv6);
    return write(session, "dns set");
}

int clear(const Session& session)
{
    refuseRoot(session, "dns clear");
    Network::clearDnsIpAddress();
    Network::clearDnsIpAddressV6();
    return write(session, "dns clear");
}

} // namespace

void declareDns(CLI::App& command, Session& session)
{
    command.require_subcommand(0, 1);
    const auto columns = std::make_shared<ColumnOption>();
    columns->declare(command);
    CLI::App* const setter = command.add_subcommand(
        "set", "Write the resolver file with these servers first; a family that is not named keeps its servers");
    const auto servers = std::make_shared<std::vector<std::string>>();
    setter->add_option("address", *servers, "One IPv4 address, one IPv6 address, or both")->required()->expected(1, 2);
    CLI::App* const clearer = command.add_subcommand("clear", "Write the resolver file with the public servers alone");
    command.callback([=, &session] {
        if (setter->parsed())
            session.exitCode = set(session, *servers);
        else
            session.exitCode = clearer->parsed() ? clear(session) : show(session, *columns);
    });
}

} // namespace K7Tool
