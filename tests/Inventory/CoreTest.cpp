// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Cores of captured and made machines.
#include "Inventory/Core.h"

#include "support/SystemTree.h"

#include <gtest/gtest.h>

using namespace Kivo;
using namespace Kivo::Inventory;
using namespace K7Test;

TEST(CoreCaptured, HasEachCoresOwnUse)
{
    const FixtureRoot board("virt-board");
    const auto listing = listCores();
    EXPECT_TRUE(listing.known);
    EXPECT_TRUE(listing.problems.empty());
    ASSERT_EQ(listing.records.size(), 2U);
    const Core& core = listing.records[1];
    EXPECT_EQ(core.number, 1U);
    EXPECT_EQ(core.online, true);
    EXPECT_EQ(core.model, "Cortex-A72");
    EXPECT_EQ(core.megahertz, std::nullopt);
    EXPECT_EQ(core.busySeconds, (Real{3.44, 2}));
    EXPECT_EQ(core.idleSeconds, (Real{10.46, 2}));
}

TEST(CoreCaptured, ListsCoresThatAreOffline)
{
    TemporaryTree tree;
    tree.file("/sys/devices/system/cpu/present", "0-3\n")
        .file("/sys/devices/system/cpu/online", "0,2\n")
        .file("/proc/stat", "cpu  2 0 0 2\ncpu0 1 0 0 1\ncpu2 1 0 0 1\n")
        .file("/sys/devices/system/cpu/cpufreq/policy0/related_cpus", "0 1\n")
        .file("/sys/devices/system/cpu/cpufreq/policy0/scaling_cur_freq", "600000\n")
        .file("/sys/devices/system/cpu/cpufreq/policy0/cpuinfo_max_freq", "1200000\n");
    const auto listing = listCores();
    EXPECT_TRUE(listing.problems.empty());
    ASSERT_EQ(listing.records.size(), 4U);
    EXPECT_EQ(listing.records[0].megahertz, (Real{600, 0}));
    EXPECT_EQ(listing.records[1].online, false);
    EXPECT_EQ(listing.records[1].megahertz, std::nullopt);
    EXPECT_EQ(listing.records[1].largestMegahertz, (Real{1200, 0}));
    EXPECT_EQ(listing.records[2].online, true);
    EXPECT_EQ(listing.records[2].usePercent, (Real{50, 1}));
    EXPECT_EQ(listing.records[3].usePercent, std::nullopt);
}

TEST(CoreCaptured, BoundsWhatATreeMaySay)
{
    TemporaryTree tree;
    tree.file("/sys/devices/system/cpu/present", "0-4294967295\n");
    const auto listing = listCores();
    EXPECT_EQ(listing.records.size(), 16384U);
    ASSERT_EQ(listing.problems.size(), 1U);
    EXPECT_EQ(listing.problems[0].reason, "has more entries than are listed");
}
