// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Interrupts of captured and made machines.
#include "Inventory/Interrupts.h"

#include "support/SystemTree.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace Kivo;
using namespace Kivo::Inventory;
using namespace K7Test;

namespace {

const Interrupt* findInterrupt(const Listing<Interrupt>& listing, std::string_view name)
{
    const auto found = std::find_if(listing.records.begin(), listing.records.end(),
                                    [name](const Interrupt& interrupt) { return interrupt.name == name; });
    return found == listing.records.end() ? nullptr : &*found;
}

} // namespace

TEST(InterruptsCaptured, KeepTheKernelsOrder)
{
    const FixtureRoot board("virt-board");
    const auto listing = listInterrupts();
    EXPECT_TRUE(listing.known);
    ASSERT_EQ(listing.records.size(), 24U);
    EXPECT_EQ(listing.records.front().name, "11");
    EXPECT_EQ(listing.records.front().count, 5798U);
    EXPECT_EQ(listing.records.back().name, "Err");
    const Interrupt* const calls = findInterrupt(listing, "IPI1");
    ASSERT_TRUE(calls);
    EXPECT_EQ(calls->count, 1517U);
    EXPECT_EQ(calls->description, "Function call interrupts");
}

// Four cores of which two are online: only those have a column.
TEST(InterruptsCaptured, NeverAddHardwareNumbers)
{
    TemporaryTree tree;
    tree.file("/sys/devices/system/cpu/present", "0-3\n")
        .file("/proc/interrupts", "           CPU0       CPU2       \n"
                                  " 19:          8          1       MSI 16384 Edge      ahci[0000:00:01.0]\n"
                                  " 20:          5\n"
                                  "IPI1:1794000000 1723000000       Function call interrupts\n"
                                  "\nnot a row\n : 7 7\n"
                                  "Err:          0\n");
    const auto listing = listInterrupts();
    EXPECT_TRUE(listing.problems.empty());
    ASSERT_EQ(listing.records.size(), 4U);
    EXPECT_EQ(listing.records[0].count, 9U);
    EXPECT_EQ(listing.records[0].description, "MSI 16384 Edge ahci[0000:00:01.0]");
    EXPECT_EQ(listing.records[1].count, 5U);
    EXPECT_EQ(listing.records[2].count, 3517000000U);
    EXPECT_EQ(listing.records[3].description, "");
}
