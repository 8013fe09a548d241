// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// k7sal dns: the name servers in force, and setting them.
#include "Command.h"
#include "Document.h"
#include "NetFacts.h"
#include "NetTables.h"

#include "Core/K7InetAddress.h"
#include "OS/System/Network.h"

#include <iostream>

namespace K7Tool {

using namespace Kivo;
using Network = K7SystemUtil::Network;

namespace {

int show(const Session& session)
{
    const Json facts = dnsFacts();
    if (session.json)
        printJson(facts);
    else
        std::cout << dnsTables(facts);
    return EXIT_DONE;
}

/// What the last rewriting of the resolver file came to.
int written(const char* what)
{
    return K7SystemUtil::lastFailure().operation.isEmpty() ? static_cast<int>(EXIT_DONE) : failed(what);
}

int set(const Session& session, const std::vector<std::string>& servers)
{
    refuseRoot(session, "dns set");
    K7IPv4Address first;
    K7IPv6Address firstV6;
    for (const std::string& text : servers) {
        const bool isIPv4 = !first.isValid() && first.fromString(text.c_str()) && first.isValid();
        if (!isIPv4 && (firstV6.isValid() || !firstV6.fromString(text.c_str()) || !firstV6.isValid()))
            throw CLI::ValidationError("dns set", "\"" + text + "\" is no address, or the second of its family");
    }
    if (first.isValid())
        Network::setDnsIpAddress(first);
    if (firstV6.isValid())
        Network::setDnsIpAddress(firstV6);
    return written("dns set");
}

int clear(const Session& session)
{
    refuseRoot(session, "dns clear");
    Network::clearDnsIpAddress();
    Network::clearDnsIpAddressV6();
    return written("dns clear");
}

} // namespace

void declareDns(CLI::App& command, Session& session)
{
    command.require_subcommand(0, 1);
    CLI::App* const setter =
        command.add_subcommand("set", "Write the resolver file anew with these servers before the public ones");
    const auto servers = std::make_shared<std::vector<std::string>>();
    setter->add_option("address", *servers, "One IPv4 address, one IPv6 address, or both")->required()->expected(1, 2);
    CLI::App* const clearer =
        command.add_subcommand("clear", "Write the resolver file anew with the public servers alone");
    command.callback([=, &session] {
        if (setter->parsed())
            session.exitCode = set(session, *servers);
        else
            session.exitCode = clearer->parsed() ? clear(session) : show(session);
    });
}

} // namespace K7Tool
