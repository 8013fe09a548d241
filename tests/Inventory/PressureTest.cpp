// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Pressure of made machines.
#include "Inventory/Pressure.h"

#include "support/SystemTree.h"

#include "Inventory/detail/PressureParser_p.h"

#include <gtest/gtest.h>

using namespace Kivo;
using namespace Kivo::Inventory;
using namespace K7Test;

constexpr const char* IO = R"(some avg10=1.25 avg60=0.40 avg300=0.05 total=7727296
full avg10=0.10 avg60=0.06 avg300=0.01 total=6405329
)";

TEST(PressureCaptured, HasEveryResourceOfTheKernel)
{
    TemporaryTree tree;
    tree.file("/proc/pressure/io", IO).file("/proc/pressure/cpu", "some avg10=0.00 avg60=0.00 avg300=0.00 total=12\n");
    const auto listing = listPressures();
    EXPECT_TRUE(listing.known);
    EXPECT_TRUE(listing.problems.empty());
    ASSERT_EQ(listing.records.size(), 2U);
    const Pressure& cpu = listing.records[0];
    EXPECT_EQ(cpu.resource, "cpu");
    EXPECT_EQ(cpu.some.totalSeconds, (Real{0.000012, 6}));
    EXPECT_EQ(cpu.full.average10, std::nullopt);
    const Pressure& io = listing.records[1];
    EXPECT_EQ(io.some.average10, (Real{1.25, 2}));
    EXPECT_EQ(io.full.totalSeconds, (Real{6.405329, 6}));
}

TEST(PressureCaptured, TellsWhatItDoesNotUnderstand)
{
    TemporaryTree tree;
    tree.file("/proc/pressure/io", "some avg10=inf avg60=0.40 avg300=0.05 total=1\n").directory("/proc/pressure/cpu");
    const auto listing = listPressures();
    EXPECT_FALSE(listing.known);
    ASSERT_EQ(listing.problems.size(), 2U);
    EXPECT_EQ(listing.problems[0].subject, "/proc/pressure/cpu");
    EXPECT_EQ(listing.problems[1].reason, "has unexpected contents");
}

TEST(PressureParser, KeepsTheLineThatIsWhole)
{
    const auto pressure = parsePressure("some avg10=1 avg60=2\nfull avg10=0.5 avg60=0.25 avg300=0 total=3");
    ASSERT_TRUE(pressure && pressure->full);
    EXPECT_FALSE(pressure->some);
    EXPECT_EQ(pressure->full->average60, (Real{0.25, 2}));
    EXPECT_EQ(pressure->full->microseconds, 3U);
    EXPECT_FALSE(parsePressure(""));
}
