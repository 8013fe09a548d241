// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Routes of a captured board, and of the sandbox beside what ip tells of them.
#include "Inventory/Route.h"

#include "support/IpOutput.h"
#include "support/Sandbox.h"
#include "support/SystemTree.h"
#include "support/VethPair.h"

#include <gtest/gtest.h>

#include <set>

using namespace Kivo;
using namespace Kivo::Inventory;
using namespace K7Test;

namespace {

/// Family, destination, gateway, interface, metric and flags, as a table shows them.
std::string line(const Route& route)
{
    std::string text;
    for (const auto& column : columns<Route>()) {
        const Value value = column.read(route);
        const std::string* const own = value.as<std::string>();
        text += (text.empty() ? "" : " ") + (own               ? *own
                                             : value.isKnown() ? std::to_string(static_cast<uint64>(*value.number()))
                                                               : "-");
    }
    return text;
}

} // namespace

TEST(RouteCaptured, ThoseOfTheBoardWithoutTheKernelsOwn)
{
    const FixtureRoot board("virt-board");
    const auto listing = listRoutes();
    EXPECT_TRUE(listing.known);
    std::vector<std::string> lines;
    for (const Route& route : listing.records)
        lines.push_back(line(route));
    EXPECT_EQ(lines, (std::vector<std::string>{"ipv4 0.0.0.0 0 10.0.2.2 eth0 0 UG", "ipv4 10.0.2.0 24 - eth0 0 U",
                                               "ipv6 fe80:: 64 - eth0 256 U", "ipv6 fe80:: 64 - eth1 256 U",
                                               "ipv6 fec0:: 64 - eth0 256 UA", "ipv6 fec0:: 64 - eth1 256 UA",
                                               "ipv6 :: 0 fe80::2 eth0 1024 UGA", "ipv6 :: 0 fe80::2 eth1 1024 UGA"}));
}

TEST(RouteCaptured, WithoutAFileNothingIsKnown)
{
    const TemporaryTree tree;
    EXPECT_FALSE(listRoutes().known);
    EXPECT_TRUE(listRoutes().problems.empty());
}

TEST(RouteLive, AgreesWithIp)
{
    K7_REQUIRE_SANDBOX();
    const VethPair pair("k7a", "k7b");
    ASSERT_TRUE(ip("addr add 10.9.0.1/24 dev k7a\naddr add fd00:9::1/64 dev k7a nodad\n"
                   "route add default via 10.9.0.254 metric 7\nroute add 10.8.0.0/16 via 10.9.0.253\n"
                   "route add fd00:8::/48 via fd00:9::2 metric 5\nroute add default via fd00:9::fe"));
    std::multiset<std::string> expected;
    for (const char* family : {"-4", "-6"})
        for (const Json& route : ipJson(std::string(family) + " route")) {
            std::string destination = route["dst"].get<std::string>();
            if (destination == "default")
                destination = family == std::string("-4") ? "0.0.0.0/0" : "::/0";
            expected.insert(destination + " " + route.value("gateway", "-") + " " + route["dev"].get<std::string>() +
                            " " + std::to_string(route.value("metric", 0)));
        }
    std::multiset<std::string> listed;
    for (const Route& route : listRoutes().records)
        listed.insert(route.destination.toString().to_string() + "/" + std::to_string(route.prefixLength) + " " +
                      (route.gateway.isValid() ? route.gateway.toString().to_string() : "-") + " " +
                      route.interfaceName + " " + std::to_string(route.metric));
    EXPECT_GE(listed.size(), 6U);
    EXPECT_EQ(listed, expected);
}
