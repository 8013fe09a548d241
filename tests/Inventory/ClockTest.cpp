// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Clocks of captured and made machines, and this one's.
#include "Inventory/Clock.h"

#include "support/SystemTree.h"

#include "Inventory/detail/ClockParser_p.h"

#include <gtest/gtest.h>

using namespace Kivo;
using namespace Kivo::Inventory;
using namespace K7Test;

TEST(ClockCaptured, NeverMixesWithThisMachines)
{
    const FixtureRoot board("virt-board");
    const auto [clock, problems] = readClock();
    EXPECT_TRUE(problems.empty());
    EXPECT_EQ(clock.time, std::nullopt);
    EXPECT_EQ(clock.utcOffset, std::nullopt);
    EXPECT_EQ(clock.isSynchronized, std::nullopt);
    EXPECT_EQ(clock.bootTime, "2026-11-21T09:30:08Z");
    EXPECT_EQ(clock.source, "arch_sys_counter");
    EXPECT_EQ(clock.rtcName, "rtc-pl031 9010000.pl031");
    EXPECT_EQ(clock.rtcTime, "2026-11-21T09:30:21Z");
}

TEST(ClockCaptured, TakesTheZoneFromTheLinkBeforeTheText)
{
    TemporaryTree tree;
    tree.file("/etc/TZ", "CET-1CEST\n");
    EXPECT_EQ(readClock().record.timeZone, "CET-1CEST");
    tree.file("/etc/timezone", "Europe/Paris\n").file("/etc/localtime", "TZif2");
    const auto [clock, problems] = readClock();
    EXPECT_EQ(clock.timeZone, "Europe/Paris");
    EXPECT_TRUE(problems.empty());
    std::filesystem::remove(tree.real("/etc/localtime"));
    tree.link("/etc/localtime", "../usr/share/zoneinfo/Europe/Berlin");
    EXPECT_EQ(readClock().record.timeZone, "Europe/Berlin");
}

TEST(ClockLive, TellsTheTimeAndWhetherItIsSet)
{
    const auto [clock, problems] = readClock();
    EXPECT_TRUE(problems.empty());
    ASSERT_TRUE(clock.time && clock.bootTime);
    EXPECT_LE(*clock.bootTime, *clock.time);
    EXPECT_TRUE(clock.utcOffset.has_value());
}

TEST(ClockParser, WritesTimesOfFourDigitYears)
{
    EXPECT_EQ(isoTime(0), "1970-01-01T00:00:00Z");
    EXPECT_EQ(isoTime(253402300799), "9999-12-31T23:59:59Z");
    EXPECT_EQ(isoTime(-1), std::nullopt);
    EXPECT_EQ(isoTime(253402300800), std::nullopt);
    EXPECT_EQ(isoTime(std::numeric_limits<int64>::min()), std::nullopt);
}

TEST(ClockParser, KnowsLinksIntoTheZoneDatabase)
{
    EXPECT_EQ(parseZoneLink("/usr/share/zoneinfo/America/Argentina/Ushuaia"), "America/Argentina/Ushuaia");
    EXPECT_EQ(parseZoneLink("/data/localtime"), std::nullopt);
    EXPECT_EQ(parseZoneLink("/usr/share/zoneinfo/"), std::nullopt);
}
