// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Captured and made machines as a whole.
#include "Inventory/Host.h"

#include "support/SystemTree.h"

#include "Inventory/detail/HostParser_p.h"

#include <gtest/gtest.h>

using namespace Kivo;
using namespace Kivo::Inventory;
using namespace K7Test;

TEST(HostCaptured, IsTheBoardThatWasCaptured)
{
    const FixtureRoot board("virt-board");
    const auto [host, problems] = readHost();
    EXPECT_TRUE(problems.empty());
    EXPECT_EQ(host.name, "(none)");
    EXPECT_EQ(host.model, "linux,dummy-virt");
    EXPECT_EQ(host.compatible, std::vector<std::string>{"linux,dummy-virt"});
    EXPECT_EQ(host.kernelVersion, "6.1.0");
    EXPECT_EQ(host.kernelRelease, "6.1.0-56-arm64");
    EXPECT_EQ(host.architecture, std::nullopt); // not this machine's
    EXPECT_EQ(host.commandLine, "console=ttyAMA0 panic=-1 quiet");
    EXPECT_EQ(host.uptime, (Real{14.42, 2}));
    EXPECT_EQ(host.load1, (Real{0.08, 2}));
    EXPECT_EQ(host.threadsRunning, 1U);
    EXPECT_EQ(host.threads, 85U);
    EXPECT_EQ(host.osName, std::nullopt);
}

TEST(HostCaptured, FindsWhatOtherMachinesKeepElsewhere)
{
    TemporaryTree tree;
    tree.file("/proc/version", "Linux version 4.9.337-nvr (builder@host) #1 SMP\n")
        .file("/proc/device-tree/compatible", {"maker,board\0maker,chip\0", 23})
        .file("/sys/class/dmi/id/product_name", "Recorder\n")
        .file("/usr/lib/os-release", "NAME=x\nPRETTY_NAME='Board OS 1'\n")
        .link("/etc/os-release", "../usr/lib/os-release");
    const auto [host, problems] = readHost();
    EXPECT_TRUE(problems.empty());
    EXPECT_EQ(host.kernelRelease, "4.9.337-nvr");
    EXPECT_EQ(host.kernelVersion, "4.9.337");
    EXPECT_EQ(host.compatible, (std::vector<std::string>{"maker,board", "maker,chip"}));
    EXPECT_EQ(host.model, "Recorder");
    EXPECT_EQ(host.osName, "Board OS 1");
}

TEST(HostCaptured, TellsWhatItDoesNotUnderstand)
{
    TemporaryTree tree;
    tree.file("/proc/uptime", "nan nan\n").file("/proc/loadavg", "0.1 0.2 0.3 1\n");
    const auto [host, problems] = readHost();
    EXPECT_EQ(host.uptime, std::nullopt);
    EXPECT_EQ(host.load1, std::nullopt);
    ASSERT_EQ(problems.size(), 2U);
    EXPECT_EQ(problems[0], (Problem{"host", "has unexpected contents", 0, "/proc/uptime"}));
    EXPECT_EQ(problems[1].subject, "/proc/loadavg");
}

TEST(HostCaptured, CutsTextsThatAreTooLong)
{
    TemporaryTree tree;
    tree.file("/proc/sys/kernel/hostname", std::string(5000, 'x'));
    const auto name = readHost().record.name;
    ASSERT_TRUE(name.has_value());
    EXPECT_EQ(*name, std::string(253, 'x') + "...");
}

TEST(HostParser, TakesVersionsApart)
{
    EXPECT_EQ(parseKernelRelease("Linux version 6.1.0-56-arm64 (x)"), "6.1.0-56-arm64");
    EXPECT_EQ(parseKernelRelease("BSD version 6"), "");
    const std::pair<const char*, const char*> cases[] = {
        {"6.1.0-56-arm64", "6.1.0"}, {"5.10-rc1", "5.10"}, {"4.9.337", "4.9.337"}, {"6.", "6"}, {"x", ""}};
    for (const auto& [release, numbers] : cases)
        EXPECT_EQ(parseKernelNumbers(release), numbers) << release;
}

TEST(HostParser, RemovesTheQuotesOfOsRelease)
{
    const std::pair<const char*, const char*> cases[] = {{"plain", "plain"},
                                                         {"\"two words\"", "two words"},
                                                         {"'single'", "single"},
                                                         {R"("a \"b\" \\ c")", R"(a "b" \ c)"},
                                                         {"\"", "\""}};
    for (const auto& [written, value] : cases)
        EXPECT_EQ(parseOsRelease(std::string("A=1\nKEY_2=2\nKEY=") + written + "\r\n", "KEY"), value) << written;
    EXPECT_EQ(parseOsRelease("KEYS=1\n", "KEY"), std::nullopt);
}
