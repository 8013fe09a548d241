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
    const Json facts = json({"net", "k7a"});
    EXPECT_EQ(json({"net"}).size(), 3U) << "lo and the pair";
    EXPECT_EQ(facts["ipv4"], "10.9.8.7");
    EXPECT_EQ(facts["ipv4_mask"], "255.255.240.0");
    EXPECT_EQ(facts["ipv4_gateway"], "10.9.8.1");
    EXPECT_EQ(facts["ipv6"], "fd00:9::7");
    EXPECT_EQ(facts["ipv6_prefix_length"], 56);
    EXPECT_EQ(facts["link"], true);
    EXPECT_TRUE(facts["scatter_gather"].is_boolean());
    EXPECT_EQ(runTool({"net", "k7c"}).exitCode, 1);
    EXPECT_NE(runTool({"net", "k7a"}).output.find("10.9.8.7/20"), std::string::npos);
}

TEST(ToolNet, SaysWhatACapturedTreeCannotTell)
{
    const Outcome net = runTool({"net", "--root", BOARD});
    EXPECT_NE(net.output.find("can only be asked of the live system"), std::string::npos) << net.output;
    const Json facts = json({"net", "eth1", "--root", BOARD});
    EXPECT_EQ(facts["ipv4"], nullptr);
    EXPECT_EQ(facts["mac"], "52:54:00:11:22:01");
    EXPECT_EQ(facts["speed_mbit_per_s"], 1000);
    EXPECT_EQ(facts["sent"]["bytes"], 602);
}

TEST(ToolNet, WatchesRatesInPlainLines)
{
    const Outcome watch = runTool({"net", "lo", "--watch", "0.2", "--count", "2", "--json"});
    EXPECT_EQ(std::count(watch.output.begin(), watch.output.end(), '\n'), 2) << watch.output;
    EXPECT_TRUE(Json::parse(watch.output.substr(0, watch.output.find('\n')))[0]["sent_bytes_per_s"].is_number());
    EXPECT_EQ(runTool({"net", "lo", "--watch"}, 300).exitCode, 0) << "an interrupt is its regular end";
    EXPECT_EQ(runTool({"net", "--watch", "0"}).exitCode, 2);
}

TEST(ToolDns, ShowsAndWritesTheResolverFile)
{
    K7_REQUIRE_SANDBOX();
    const CoveredFile resolver("/etc/resolv.conf", "nameserver 10.1.1.1\nnameserver fd00::53\n");
    EXPECT_EQ(json({"dns"})["ipv4_first"], "10.1.1.1");
    EXPECT_EQ(runTool({"dns", "set", "192.168.0.1", "fd00::1"}).exitCode, 0);
    EXPECT_EQ(json({"dns"})["ipv4_first"], "192.168.0.1");
    EXPECT_EQ(json({"dns"})["ipv6_first"], "fd00::1");
    EXPECT_EQ(runTool({"dns", "clear"}).exitCode, 0);
    EXPECT_EQ(json({"dns"})["ipv4_first"], "8.8.8.8");
    for (const auto& wrong : {std::vector<std::string>{"dns", "set", "name"},
                              {"dns", "set", "1.2.3.4", "1.2.3.5"},
                              {"dns", "clear", "--root", BOARD}})
        EXPECT_EQ(runTool(wrong).exitCode, 2);
}
