// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The command line tool: net and dns.
#include "support/Sandbox.h"
#include "support/SystemTree.h"
#include "support/ToolRun.h"
#include "support/VethPair.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace K7Test;
using Json = nlohmann::json;

namespace {

const std::string BOARD = std::string(K7_FIXTURES) + "/virt-board";

Json json(std::vector<std::string> arguments)
{
    arguments.emplace_back("--json");
    const Outcome outcome = runTool(arguments);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    return Json::parse(outcome.output, nullptr, false);
}

} // namespace

TEST(ToolNet, ShowsLiveInterfaces)
{
    K7_REQUIRE_SANDBOX();
    const VethPair pair("k7a", "k7b");
    ASSERT_TRUE(
        ip("addr add 10.9.8.7/20 dev k7a\naddr add fd00:9::7/56 dev k7a nodad\nroute add default via 10.9.8.1"));
    EXPECT_EQ(json({"net"})["network_interfaces"].size(), 3U) << "lo and the pair";
    const Json facts = json({"net", "k7a"})["network_interfaces"][0];
    EXPECT_EQ(facts["ipv4"], "10.9.8.7");
    EXPECT_EQ(facts["ipv4_mask"], "255.255.240.0");
    EXPECT_EQ(facts["ipv4_gateway"], "10.9.8.1");
    EXPECT_EQ(facts["ipv6"], "fd00:9::7");
    EXPECT_EQ(facts["link"], true);
    EXPECT_TRUE(facts["scatter_gather"].is_boolean());
    EXPECT_EQ(runTool({"net", "k7c"}).exitCode, 1);
    EXPECT_NE(runTool({"net", "k7a"}).output.find("10.9.8.7 20 global"), std::string::npos);
}

TEST(ToolNet, ShowsACapturedInterface)
{
    const Json facts = json({"net", "eth1", "--root", BOARD})["network_interfaces"][0];
    EXPECT_EQ(facts["mac"], "52:54:00:11:22:01");
    EXPECT_EQ(facts["speed_mbit_per_s"], 1000);
    EXPECT_EQ(facts["sent"]["bytes"], 602);
}

TEST(ToolNet, WatchesRatesInPlainLines)
{
    const Outcome watch = runTool({"net", "--watch", "lo", "--interval", "0.2", "--count", "2", "--json"});
    EXPECT_EQ(std::count(watch.output.begin(), watch.output.end(), '\n'), 2) << watch.output;
    const Json look = Json::parse(watch.output.substr(0, watch.output.find('\n')));
    ASSERT_EQ(look["network_interfaces"].size(), 1U) << "the interface that was named";
    EXPECT_TRUE(look["network_interfaces"][0]["sent_bytes_per_s"].is_number()) << watch.output;
    EXPECT_EQ(runTool({"net", "lo", "--watch"}, 300).exitCode, 0) << "an interrupt is its regular end";
}

TEST(ToolDns, ShowsAndWritesTheResolverFile)
{
    K7_REQUIRE_SANDBOX();
    const CoveredFile resolver("/etc/resolv.conf", "nameserver 10.1.1.1\nnameserver fd00::53\n");
    const auto shown = [](const char* key) { return json({"dns"})["name_servers"][key]; };
    EXPECT_EQ(shown("ipv4_first"), "10.1.1.1");
    const Outcome set = runTool({"dns", "set", "192.168.0.1"});
    EXPECT_EQ(set.exitCode, 0) << set.errors;
    EXPECT_EQ(set.output, "written to /etc/resolv.conf\n");
    EXPECT_NE(set.errors.find("servers only: 192.168.0.1, "), std::string::npos) << set.errors;
    EXPECT_EQ(shown("ipv4_first"), "192.168.0.1");
    EXPECT_EQ(shown("ipv6_first"), "fd00::53") << "the family that was not named";
    EXPECT_EQ(runTool({"dns", "clear"}).exitCode, 0);
    EXPECT_EQ(shown("ipv4_first"), "8.8.8.8");
}
