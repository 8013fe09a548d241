// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// k7sal diff.
#include "support/Sandbox.h"
#include "support/SystemTree.h"
#include "support/ToolRun.h"
#include "support/VethPair.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace K7Test;
using Json = nlohmann::json;

namespace {

/// A machine with the interfaces "eth0" and one of the test's choice.
void makeMachine(TemporaryTree& tree, const std::string& top, const std::string& second, const std::string& mtu,
                 const std::string& memory)
{
    const std::string counters = ": 100 1 0 0 0 0 0 0 200 2 0 0 0 0 0 0\n";
    tree.file(top + "/proc/net/dev",
              "Inter-| Receive | Transmit\n face |bytes |bytes\n  eth0" + counters + "  " + second + counters)
        .file(top + "/sys/class/net/eth0/mtu", mtu)
        .file(top + "/sys/class/net/" + second + "/mtu", "1500\n")
        .file(top + "/proc/meminfo", "MemTotal: 1000 kB\nMemFree: " + memory + " kB\n")
        .file(top + "/proc/uptime", memory + ".0 1.0\n");
}

} // namespace

TEST(DiffCaptured, TellsWhatCameWentAndChanged)
{
    TemporaryTree tree(false);
    makeMachine(tree, "/a", "eth1", "1500\n", "500");
    makeMachine(tree, "/b", "eth2", "9000\n", "600");
    const std::string a = tree.real("/a").string();
    const std::string b = tree.real("/b").string();
    EXPECT_EQ(runTool({"diff", a, a}).exitCode, 0);
    EXPECT_EQ(runTool({"diff", a, a}).output, "");
    const Outcome text = runTool({"diff", a, b});
    EXPECT_EQ(text.exitCode, 1);
    const Json document = Json::parse(runTool({"diff", "--json", a, b}).output);
    const auto find = [&](const char* record, const char* change) {
        for (const Json& difference : document["differences"])
            if (difference["record"] == record && difference["change"] == change)
                return difference;
        return Json();
    };
    EXPECT_EQ(document["differences"].size(), 3U) << "with volatile columns left out: " << document.dump(1);
    EXPECT_EQ(find("eth1", "removed")["before"]["mtu_bytes"], 1500);
    EXPECT_EQ(find("eth2", "added")["section"], "network_interfaces");
    EXPECT_EQ(find("eth0", "changed")["column"], "mtu_bytes");
    EXPECT_EQ(find("eth0", "changed")["before"], 1500);
    EXPECT_EQ(find("eth0", "changed")["after"], 9000);
    const std::string all = runTool({"diff", "--all", a, b}).output;
    EXPECT_NE(all.find("mem_free_kib"), std::string::npos) << all;
}

TEST(DiffCaptured, TellsAMissingSourceFromAnEmptyOne)
{
    TemporaryTree tree(false);
    tree.file("/a/proc/version", "Linux version 6.1.0\n").directory("/a/sys/block");
    tree.file("/b/proc/version", "Linux version 6.1.0\n");
    const Outcome diff = runTool({"diff", "--json", tree.real("/a").string(), tree.real("/b").string()});
    EXPECT_EQ(diff.exitCode, 1);
    const Json differences = Json::parse(diff.output)["differences"];
    ASSERT_EQ(differences.size(), 1U) << differences.dump(1);
    EXPECT_EQ(differences[0]["section"], "block_devices");
    EXPECT_EQ(differences[0]["before"], 0);
    EXPECT_EQ(differences[0]["after"], nullptr);
}

TEST(DiffCaptured, RefusesWrongUse)
{
    EXPECT_EQ(runTool({"diff"}).exitCode, 2);
    EXPECT_EQ(runTool({"--root", "/", "diff", "/"}).exitCode, 2);
    const Outcome missing = runTool({"diff", "/no/such/tree"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_EQ(missing.errors.rfind("k7sal: ", 0), 0U) << missing.errors;
}

TEST(DiffLive, ComparesACaptureWithThisMachine)
{
    K7_REQUIRE_SANDBOX();
    const TemporaryTree tree(false);
    const std::string copy = tree.real("/copy.tar.gz").string();
    ASSERT_EQ(runTool({"capture", copy}).exitCode, 0);
    const VethPair pair("k7diff0", "k7diff1");
    const Outcome diff = runTool({"diff", copy});
    EXPECT_EQ(diff.exitCode, 1) << diff.errors;
    EXPECT_NE(diff.output.find("k7diff1"), std::string::npos) << diff.output;
}
