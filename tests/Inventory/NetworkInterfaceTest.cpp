// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Network interfaces of a captured board, of made trees, and of the sandbox beside what ip tells of them.
#include "Inventory/NetworkInterface.h"

#include "support/IpOutput.h"
#include "support/Sandbox.h"
#include "support/SystemTree.h"
#include "support/VethPair.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include <unistd.h>

using namespace Kivo;
using namespace Kivo::Inventory;
using namespace K7Test;

namespace {

const std::string HEADINGS = "Inter-|   Receive\n face |bytes\n";
const std::string COUNTERS = ": 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\n";

/// "10.0.0.1/24 global" of every address.
std::vector<std::string> texts(const std::optional<std::vector<NetworkInterface::Address>>& addresses)
{
    std::vector<std::string> result;
    for (const auto& address : addresses.value_or(std::vector<NetworkInterface::Address>())) {
        const Row row = rowOf(address);
        result.push_back(address.address.toString().to_string() + "/" + std::to_string(address.prefixLength) + " " +
                         *row.back().value.as<std::string>());
    }
    return result;
}

std::string valueText(const NetworkInterface& interface, std::string_view key)
{
    for (const auto& column : columns<NetworkInterface>())
        if (key == column.info.key) {
            const Value value = column.read(interface);
            return value.as<std::string>() ? *value.as<std::string>() : value.isKnown() ? "not a text" : "not known";
        }
    return "no such column";
}

} // namespace

TEST(NetworkInterfaceCaptured, TellsWhatTheBoardHas)
{
    const FixtureRoot board("virt-board");
    const auto listing = listNetworkInterfaces();
    EXPECT_TRUE(listing.problems.empty());
    ASSERT_EQ(listing.records.size(), 3U);
    const NetworkInterface& eth0 = listing.records[1];
    const NetworkInterface& eth1 = listing.records[2];
    EXPECT_EQ(eth1.name, "eth1");
    EXPECT_EQ(eth1.state, "up");
    EXPECT_EQ(eth1.link, true);
    EXPECT_EQ(eth1.speed, 1000U);
    EXPECT_EQ(eth1.duplex, "full");
    EXPECT_EQ(eth1.mtu, 1500U);
    EXPECT_EQ(eth1.mac, "52:54:00:11:22:01");
    EXPECT_EQ(eth1.driver, "e1000e");
    EXPECT_EQ(eth1.carrierChanges, 2U);
    EXPECT_EQ(eth1.received->multicast, 2U);
    EXPECT_EQ(eth1.ipv4, std::nullopt) << "only the live kernel can tell";
    EXPECT_EQ(texts(eth1.ipv6),
              (std::vector<std::string>{"fec0::5054:ff:fe11:2201/64 site", "fe80::5054:ff:fe11:2201/64 link"}));
    EXPECT_EQ(eth0.speed, std::nullopt);
    EXPECT_EQ(eth0.duplex, std::nullopt);
    EXPECT_EQ(valueText(eth0, "ipv4_gateway"), "10.0.2.2");
    EXPECT_EQ(valueText(eth0, "ipv6_gateway"), "fe80::2");
    EXPECT_EQ(valueText(eth1, "ipv6_gateway"), "fe80::2") << "both interfaces have the gateway";
    EXPECT_EQ(valueText(eth1, "ipv4_gateway"), "not known");
}

TEST(NetworkInterfaceCaptured, GatewayIsThatOfTheLowestMetricByTheExactName)
{
    TemporaryTree tree;
    tree.file("/proc/net/dev", HEADINGS + "eth1" + COUNTERS + "eth10" + COUNTERS + "eth2" + COUNTERS);
    const std::string tail = "\t00000000\t0\t0\t0\n";
    tree.file("/proc/net/route", "Iface\tDestination\tGateway\n"
                                 "eth1\t00000000\t0100000A\t0003\t0\t0\t200" +
                                     tail + "eth1\t00000000\t0200000A\t0003\t0\t0\t100" + tail +
                                     "eth1\t00000000\t0300000A\t0003\t0\t0\t100" + tail +
                                     "eth2\t00000000\t00000000\t0001\t0\t0\t0" + tail);
    const auto listing = listNetworkInterfaces();
    ASSERT_EQ(listing.records.size(), 3U);
    EXPECT_EQ(valueText(listing.records[0], "ipv4_gateway"), "10.0.0.2");
    EXPECT_EQ(valueText(listing.records[1], "ipv4_gateway"), "not known");
    EXPECT_EQ(valueText(listing.records[2], "ipv4_gateway"), "not known");
}

TEST(NetworkInterfaceCaptured, ABrokenAttributeIsAProblemAndNoMore)
{
    TemporaryTree tree;
    EXPECT_FALSE(listNetworkInterfaces().known);
    std::string rows = HEADINGS;
    for (int number = 0; number < 3000; ++number)
        rows += "dummy" + std::to_string(number) + COUNTERS;
    tree.file("/proc/net/dev", rows + "../../../x" + COUNTERS + "a\x1b[31m" + COUNTERS);
    tree.directory("/sys/class/net/dummy7/mtu").file("/sys/class/net/dummy7/speed", "fast\n");
    tree.file("/sys/class/net/dummy7/operstate", "up\n").file("/sys/class/net/dummy8/speed", "-1\n");
    tree.file("/x/mtu", "1\n");
    const auto listing = listNetworkInterfaces();
    ASSERT_EQ(listing.records.size(), 3001U) << "a name is not a path";
    EXPECT_EQ(listing.records[7].state, "up");
    EXPECT_EQ(listing.records[7].mtu, std::nullopt);
    EXPECT_EQ(listing.records[8].speed, std::nullopt);
    EXPECT_EQ(listing.records[2999].sent->compressed, 16U);
    EXPECT_EQ(listing.problems.size(), 2U);
}

/// The kernel tells the other end of a link that was set down a moment later.
static void waitForState(const std::string& interface, const std::string& state)
{
    std::string found;
    for (int round = 0; round < 500 && found != state; ++round, ::usleep(10'000))
        std::getline(std::ifstream("/sys/class/net/" + interface + "/operstate"), found);
    EXPECT_EQ(found, state);
}

TEST(NetworkInterfaceLive, AgreesWithIp)
{
    K7_REQUIRE_SANDBOX();
    const VethPair pair("k7a", "k7b");
    const VethPair idle("k7c", "k7d");
    ASSERT_TRUE(ip("addr add 10.9.0.1/24 dev k7a\naddr add 10.9.1.1/30 dev k7a label k7a:1\n"
                   "addr add 10.9.2.1 peer 10.9.2.2/32 dev k7a\naddr add 169.254.7.7/16 scope link dev k7a\n"
                   "addr add fd00:9::1/64 dev k7a nodad\naddr add fe80::9/64 dev k7a nodad\n"
                   "link set k7b mtu 1400\nlink set k7d down\nroute add default via 10.9.0.254 dev k7a"));
    waitForState("k7c", "lowerlayerdown");
    const auto listing = listNetworkInterfaces();
    const Json links = ipJson("addr");
    ASSERT_EQ(listing.records.size(), links.size());
    EXPECT_TRUE(listing.problems.empty());
    for (const NetworkInterface& interface : listing.records) {
        const auto link = std::find_if(links.begin(), links.end(),
                                       [&](const Json& entry) { return entry["ifname"] == interface.name; });
        ASSERT_NE(link, links.end()) << interface.name;
        std::vector<std::string> expected[2];
        for (const Json& address : (*link)["addr_info"])
            expected[address["family"] == "inet6"].push_back(address["local"].get<std::string>() + "/" +
                                                             std::to_string(address["prefixlen"].get<int>()) + " " +
                                                             address["scope"].get<std::string>());
        auto listedIPv6 = texts(interface.ipv6); // in another order, on purpose
        std::sort(listedIPv6.begin(), listedIPv6.end());
        std::sort(expected[1].begin(), expected[1].end());
        EXPECT_EQ(texts(interface.ipv4), expected[0]) << interface.name;
        EXPECT_EQ(listedIPv6, expected[1]) << interface.name;
        EXPECT_EQ(interface.index, (*link)["ifindex"].get<uint32>()) << interface.name;
        EXPECT_EQ(interface.mtu, (*link)["mtu"].get<uint32>()) << interface.name;
        std::string state = (*link)["operstate"].get<std::string>();
        std::transform(state.begin(), state.end(), state.begin(), [](unsigned char c) { return std::tolower(c); });
        EXPECT_EQ(interface.state, state) << interface.name;
        EXPECT_EQ(interface.mac, (*link)["address"].get<std::string>()) << interface.name;
    }
    const auto one = readNetworkInterface("k7a");
    ASSERT_EQ(one.records.size(), 1U);
    EXPECT_EQ(one.records[0].link, true);
    EXPECT_EQ(one.records[0].speed, 10000U);
    EXPECT_NE(one.records[0].scatterGather, std::nullopt);
    EXPECT_EQ(valueText(one.records[0], "ipv4_gateway"), "10.9.0.254");
    EXPECT_EQ(valueText(one.records[0], "ipv4_mask"), "255.255.0.0") << "the kernel lists narrow scopes first";
    EXPECT_EQ(readNetworkInterface("k7c").records[0].link, false);
    EXPECT_EQ(readNetworkInterface("k7d").records[0].link, std::nullopt) << "not known while it is down";
    EXPECT_TRUE(readNetworkInterface("none").records.empty());
}
