// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Processors of captured and made machines.
#include "Inventory/Processor.h"

#include "support/SystemTree.h"

#include "Inventory/detail/CoreParser_p.h"

#include <gtest/gtest.h>

using namespace Kivo;
using namespace Kivo::Inventory;
using namespace K7Test;

TEST(ProcessorCaptured, IsTheBoardsWithItsUseSinceTheStart)
{
    const FixtureRoot board("virt-board");
    const auto [processor, problems] = readProcessor();
    EXPECT_TRUE(problems.empty());
    EXPECT_EQ(processor.model, "Cortex-A72");
    EXPECT_EQ(processor.coreCount, 2U);
    EXPECT_EQ(processor.onlineCount, 2U);
    EXPECT_EQ(processor.packageCount, std::nullopt);
    EXPECT_EQ(processor.busySeconds, (Real{11.64, 2}));
    EXPECT_EQ(processor.idleSeconds, (Real{16.28, 2}));
    ASSERT_TRUE(processor.usePercent.has_value());
    EXPECT_NEAR(processor.usePercent->value, 41.69, 0.005);
    EXPECT_EQ(processor.usePercent->decimals, 1);
}

TEST(ProcessorCaptured, JoinsWhatItsCoresDifferIn)
{
    TemporaryTree tree;
    tree.file("/sys/devices/system/cpu/present", "0\n")
        .file("/proc/cpuinfo",
              "processor: 0\nCPU implementer: 0x41\nCPU part: 0xd03\n\nprocessor: 4\n"
              "CPU implementer: 0x41\nCPU part: 0xd08\n\nprocessor: 5\nCPU implementer: 0x61\nCPU part: 0x22\n")
        .file("/sys/devices/system/cpu/cpufreq/policy0/cpuinfo_max_freq", "1416000\n")
        .file("/sys/devices/system/cpu/cpufreq/policy0/scaling_governor", "schedutil\n")
        .file("/sys/devices/system/cpu/cpufreq/policy4/cpuinfo_max_freq", "1800500\n")
        .file("/sys/devices/system/cpu/cpufreq/policy4/scaling_governor", "schedutil\n");
    const auto [processor, problems] = readProcessor();
    EXPECT_TRUE(problems.empty());
    EXPECT_EQ(processor.coreCount, 1U); // a single core has no range
    EXPECT_EQ(processor.onlineCount, std::nullopt);
    EXPECT_EQ(processor.model, "Cortex-A53 + Cortex-A72 + implementer 0x61, part 0x22");
    EXPECT_EQ(processor.largestMegahertz, (Real{1800.5, 1}));
    EXPECT_EQ(processor.governor, "schedutil");
    EXPECT_EQ(processor.usePercent, std::nullopt);
}

TEST(CoreParser, TakesCoreLists)
{
    EXPECT_EQ(parseCoreList("0-3,6\n"), (CoreRanges{{0, 3}, {6, 6}}));
    EXPECT_EQ(parseCoreList("0 1"), (CoreRanges{{0, 0}, {1, 1}}));
    EXPECT_EQ(parseCoreList(""), CoreRanges());
    for (const char* text : {"3-0", "a", "0-", "-1", "0-99999999999", "1;2"})
        EXPECT_EQ(parseCoreList(text), std::nullopt) << text;
}

TEST(CoreParser, AddsTheTimesOfAnyKernel)
{
    const SystemStat stat =
        parseStat("cpu  1 2 3 4 5 6 7 8 9 9\ncpu0 18446744073709551615 1 0 10\ncpu1 1 2 3\ncpux 1 2 3 4\n"
                  "btime 1795253408\n",
                  8);
    ASSERT_TRUE(stat.all.has_value());
    EXPECT_EQ(stat.all->busy, 27U); // what guests took is part of user and nice
    EXPECT_EQ(stat.all->idle, 9U);
    EXPECT_EQ(stat.bootTime, 1795253408);
    ASSERT_EQ(stat.cores.size(), 1U); // the others are not complete
    EXPECT_EQ(stat.cores[0].times.busy, ~uint64{0});
    EXPECT_EQ((CoreTimes{0, 0}.usePercent()), std::nullopt);
    EXPECT_EQ(parseStat("cpu0 1 2 3 4\ncpu1 1 2 3 4\n", 1).cores.size(), 1U);
}

TEST(CoreParser, TakesTheBlocksOfOtherProcessors)
{
    const auto cores = parseCpuinfo("Hardware: x\nprocessor\t: 3\nmodel name\t: AMD EPYC\ncpu MHz\t\t: 2596.122\n"
                                    "physical id\t: 1\nflags\t\t: fpu\n\nmodel name: y\n",
                                    8);
    ASSERT_EQ(cores.size(), 1U);
    EXPECT_EQ(cores[0].number, 3U);
    EXPECT_EQ(cores[0].megahertz, (Real{2596.122, 3}));
    EXPECT_EQ(cores[0].packageId, 1U);
}
