// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The command line tool: ping.
#include "support/Sandbox.h"
#include "support/ToolRun.h"
#include "support/TunResponder.h"
#include "support/VethPair.h"

#include <nlohmann/json.hpp>

using namespace K7Test;
using namespace std::chrono_literals;

TEST(ToolPing, GradesTargetsByWhatTheyAnswer)
{
    K7_REQUIRE_SANDBOX();
    TunResponder network;
    if (!network.isUp())
        GTEST_SKIP() << "no tun device";
    const struct {
        std::string address;
        Answer answer;
        std::string description;
    } cases[] = {
        {"10.77.0.10", {.delay = 10ms}, "Great (packet round-trip avg < 50 ms)"},
        {"10.77.0.3", {.delay = 60ms}, "Good (packet round-trip avg < 100 ms)"},
        {"10.77.0.4", {.delay = 150ms}, "Normal (packet round-trip avg < 300 ms)"},
        {"10.77.0.5", {.delay = 400ms}, "Bad (packet round-trip avg >= 300 ms)"},
        {"10.77.0.6", {.copies = 0}, "Error (packet-loss or bad checksum or duplicates)"},
    };
    std::vector<std::string> words = {"ping", "-i", "tun0", "-c", "1", "--json"};
    for (const auto& test : cases) {
        network.answer(test.address, test.answer);
        words.push_back(test.address);
    }
    const Outcome outcome = runTool(words);
    EXPECT_EQ(outcome.exitCode, 1);
    const auto results = nlohmann::json::parse(outcome.output, nullptr, false)["results"];
    ASSERT_EQ(results.size(), std::size(cases)) << outcome.output << outcome.errors;
    for (std::size_t i = 0; const auto& test : cases) {
        EXPECT_EQ(results[i]["address"], test.address);
        EXPECT_EQ(results[i++]["description"], test.description);
    }
    EXPECT_NEAR(results[1]["rtt_avg_ms"], 70, 10);
}

TEST(ToolPing, FindsNoFaultWithTargetsInWhatOthersSend)
{
    K7_REQUIRE_SANDBOX();
    std::thread other([] { EXPECT_EQ(runTool({"ping", "-i", "lo", "-c", "1", "127.0.0.2"}).exitCode, 0); });
    const Outcome lines = runTool({"ping", "-i", "lo", "-c", "1", "127.0.0.1"});
    other.join();
    EXPECT_EQ(lines.exitCode, 0);
    EXPECT_NE(lines.output.find("\n        0  127.0.0.1     1 "), std::string::npos) << lines.output;
    EXPECT_NE(lines.output.find("\n        -  -             0 "), std::string::npos) << lines.output;
}

TEST(ToolPing, TellsWhatItHasOnAnInterrupt)
{
    K7_REQUIRE_SANDBOX();
    const Outcome outcome = runTool({"ping", "-i", "lo", "localhost", "--json"}, 1500);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.errors.find("interrupted"), std::string::npos) << outcome.errors;
    const auto document = nlohmann::json::parse(outcome.output, nullptr, false);
    EXPECT_EQ(document["test"]["complete"], false);
    EXPECT_EQ(document["results"][0]["address"], "127.0.0.1") << "the host's first IPv4 address";
    EXPECT_EQ(document["results"][0]["sent"], 1);
}

TEST(ToolPing, LeavesByTheBestDefaultRoute)
{
    K7_REQUIRE_SANDBOX();
    const VethPair first("k7a", "k7b");
    const VethPair second("k7c", "k7d");
    ASSERT_TRUE(ip("route add default dev k7a metric 200\nroute add default dev k7c metric 100"));
    const Outcome outcome = runTool({"ping", "-c", "1", "10.1.2.3", "--json"});
    EXPECT_EQ(nlohmann::json::parse(outcome.output, nullptr, false)["test"]["interface"], "k7c") << outcome.errors;
}

TEST(ToolPing, SaysWhyItCouldNotPing)
{
    K7_REQUIRE_SANDBOX();
    const Outcome unknown = runTool({"ping", "-i", "k7none0", "-c", "1", "10.77.0.2"});
    EXPECT_NE(unknown.errors.find("No such device"), std::string::npos) << unknown.errors;
    EXPECT_EQ(runTool({"ping", "no-such-host.invalid"}).exitCode, 1);
}
