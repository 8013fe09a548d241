// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Main memory of captured and made machines.
#include "Inventory/Memory.h"

#include "support/SystemTree.h"

#include "Inventory/detail/MemoryParser_p.h"

#include <gtest/gtest.h>

using namespace Kivo;
using namespace Kivo::Inventory;
using namespace K7Test;

TEST(MemoryCaptured, IsWhatTheKernelCounts)
{
    const FixtureRoot board("virt-board");
    const auto [memory, problems] = readMemory();
    EXPECT_TRUE(problems.empty());
    EXPECT_EQ(memory.total, 1000840U);
    EXPECT_EQ(memory.available, 848676U);
    EXPECT_EQ(memory.used(), 52776U);
    EXPECT_EQ(memory.swapTotal, 0U);
    EXPECT_EQ(memory.oomKills, 0U);
}

TEST(MemoryCaptured, IsUnknownWhereAnOldKernelDoesNotTell)
{
    TemporaryTree tree;
    tree.file("/proc/meminfo", "MemTotal: 100 kB\nCached: 1000 kB\n").file("/proc/vmstat", "pgfault 1\n");
    const auto [memory, problems] = readMemory();
    EXPECT_TRUE(problems.empty());
    EXPECT_EQ(memory.available, std::nullopt);
    EXPECT_EQ(memory.oomKills, std::nullopt);
    EXPECT_EQ(memory.used(), std::nullopt);
}

TEST(Memory, UsesAtLeastNothing)
{
    Memory memory;
    memory.total = 100;
    memory.free = 60;
    memory.cached = ~uint64{0};
    EXPECT_EQ(memory.used(), 0U);
    EXPECT_EQ(parseOomKills("oom_kill_x 1\noom_kill 3\n"), 3U);
    EXPECT_EQ(parseOomKills("oom_kill -3\n"), std::nullopt);
}
