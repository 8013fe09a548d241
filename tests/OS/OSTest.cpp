// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Kernel version, uptime, the clock operations, and the platform configuration.
#include "OS/System/OS.h"

#include "support/RecordingRunner.h"
#include "support/Sandbox.h"
#include "support/SystemTree.h"

#include <ctime>
#include <regex>

#include <sys/time.h>
#include <sys/utsname.h>

using namespace Kivo;
using namespace K7Test;
using OS = K7SystemUtil::OS;

namespace {

timeval s_clockSetting;

/// The number that the operation throws, 0 for none.
int thrownNumber(K7Version* version)
{
    try {
        OS::getKernelVersion(version);
    } catch (int number) {
        return number;
    }
    return 0;
}

} // namespace

/// Stands before the C library's: the tests note what would be set, and set nothing.
extern "C" int settimeofday(const timeval* time, const struct timezone*) noexcept
{
    s_clockSetting = *time;
    return 0;
}

TEST(OSCaptured, VersionAndUptimeComeFromTheFirstLines)
{
    TemporaryTree tree;
    tree.file("/proc/uptime", "12345.67 54321.00\n")
        .file("/proc/version", "Linux version 260.256.511-56-arm64 (gcc)\n");
    char text[12] = "";
    J3String wide;
    EXPECT_TRUE(OS::getKernelVersion(text));
    EXPECT_STREQ(text, "4.0.255");
    EXPECT_TRUE(OS::getKernelVersion(&wide));
    EXPECT_EQ(wide, L"4.0.255");
    EXPECT_DOUBLE_EQ(OS::systemUptime(), 12345.67);
    for (const char* none : {"", "nan 1", "-nan", "inf", "-5.0", "x", "1e999"}) {
        tree.file("/proc/uptime", none);
        EXPECT_EQ(OS::systemUptime(), 0.0) << none;
    }
}

TEST(OSCaptured, WhatCannotBeReadIsThrown)
{
    TemporaryTree tree;
    EXPECT_FALSE(OS::getKernelVersion(static_cast<char*>(nullptr)));
    EXPECT_EQ(thrownNumber(nullptr), 1);
    EXPECT_THROW(static_cast<void>(OS::systemUptime()), J3String);
    EXPECT_EQ(K7SystemUtil::lastFailure().reason, L"can't open \"/proc/uptime\"");
    K7Version version(1, 2, 3);
    for (const char* line : {"", "Linux version 5.10-rc1\n", "BSD version 4.9.118\n", "Linux version 4.9.\n118\n"}) {
        tree.file("/proc/version", line);
        EXPECT_EQ(thrownNumber(&version), 3) << line;
    }
    EXPECT_EQ(version, K7Version(1, 2, 3));
}

TEST(OSLive, KernelAgreesWithItsSystemCalls)
{
    timespec sinceBoot{};
    utsname names{};
    ASSERT_EQ(::clock_gettime(CLOCK_BOOTTIME, &sinceBoot) | ::uname(&names), 0);
    EXPECT_NEAR(OS::systemUptime(), static_cast<double>(sinceBoot.tv_sec), 2);
    uint8 parts[3] = {};
    std::sscanf(names.release, "%hhu.%hhu.%hhu", &parts[0], &parts[1], &parts[2]);
    K7Version version;
    EXPECT_TRUE(OS::getKernelVersion(&version));
    EXPECT_EQ(version, K7Version(parts[0], parts[1], parts[2]));
}

TEST(OSLive, ClockOperationsSetTheBeginningOf2000AndApplyTheTimeByTheRunner)
{
    K7_REQUIRE_SANDBOX();
    OS::fixupSystemTime();
    EXPECT_EQ(s_clockSetting.tv_sec, 30 * 365 * 86400 + 7 * 86400);
    RecordingRunner runner;
    OS::applyTimeToShell();
    const std::regex form(R"(date -s "20\d\d-\d\d-\d\d \d\d:\d\d:\d\d")");
    ASSERT_EQ(runner.commands().size(), 1U);
    EXPECT_TRUE(std::regex_match(runner.commands()[0], form)) << runner.commands()[0];
}
