// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Kernel version, uptime, the clock operations, and the platform configuration.
#include "OS/System/OS.h"

#include "support/RecordingRunner.h"
#include "support/Sandbox.h"
#include "support/SystemTree.h"

#include "Foundation/J3Assert.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include <sys/time.h>
#include <sys/utsname.h>
#include <time.h>

using namespace Kivo;
using namespace K7Test;
using OS = K7SystemUtil::OS;

namespace {

std::vector<timeval> s_clockSettings;
std::string s_report;

std::string versionText()
{
    char text[12] = "untouched";
    EXPECT_TRUE(OS::getKernelVersion(text));
    return text;
}

template <class Thrown, class Call>
Thrown thrownBy(Call&& call)
{
    try {
        call();
    } catch (const Thrown& thrown) {
        return thrown;
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}

} // namespace

/// Stands before the C library's: the tests note what would be set, and set nothing.
extern "C" int settimeofday(const timeval* time, const struct timezone*) noexcept
{
    s_clockSettings.push_back(*time);
    errno = EPERM;
    return -1;
}

TEST(OS, KernelVersionComesFromTheFirstLine)
{
    TemporaryTree tree;
    const std::pair<const char*, const char*> cases[] = {
        {"Linux version 4.9.118\n", "4.9.118"},
        {"Linux version 6.1.0-56-arm64 (debian-kernel@lists.debian.org) (gcc-12)\n", "6.1.0"},
        {"Linux version 255.255.255", "255.255.255"},
        {"Linux version 260.256.374 (modulo)\n", "4.0.118"},
    };
    for (const auto& [line, text] : cases) {
        tree.file("/proc/version", line);
        EXPECT_EQ(versionText(), text);
        J3String wide;
        EXPECT_TRUE(OS::getKernelVersion(&wide));
        EXPECT_EQ(wide.to_string(), text);
        K7Version version;
        EXPECT_TRUE(OS::getKernelVersion(&version));
        EXPECT_EQ(version.toString(), wide);
    }
}

TEST(OS, KernelVersionOfAnotherFormIsThrown)
{
    TemporaryTree tree;
    const std::size_t descriptors = openDescriptors();
    for (const char* line : {"Linux version 5.10-rc1 (two numbers)\n", "", "\n", "BSD version 4.9.118\n",
                             "Linux version 4.9.\n118\n", "Linux version\n4.9.118\n"}) {
        tree.file("/proc/version", line);
        K7Version version(1, 2, 3);
        EXPECT_EQ(thrownBy<int>([&] { OS::getKernelVersion(&version); }), 3) << line;
        EXPECT_EQ(version, K7Version(1, 2, 3));
        char buffer[12];
        EXPECT_THROW(OS::getKernelVersion(buffer), int);
    }
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST(OS, MissingFilesAreThrownByTheirPath)
{
    const TemporaryTree tree;
    J3String text;
    EXPECT_EQ(thrownBy<J3String>([&] { OS::getKernelVersion(&text); }), L"can't open \"/proc/version\"");
    EXPECT_EQ(K7SystemUtil::lastFailure().errorCode, ENOENT);
    EXPECT_EQ(thrownBy<J3String>([] { static_cast<void>(OS::systemUptime()); }), L"can't open \"/proc/uptime\"");
    EXPECT_EQ(K7SystemUtil::lastFailure().operation, L"OS::systemUptime");
}

TEST(OS, NullArgumentsAreRefusedBeforeAnythingIsRead)
{
    const TemporaryTree tree;
    EXPECT_FALSE(OS::getKernelVersion(static_cast<char*>(nullptr)));
    EXPECT_FALSE(OS::getKernelVersion(static_cast<J3String*>(nullptr)));
    EXPECT_EQ(thrownBy<int>([] { OS::getKernelVersion(static_cast<K7Version*>(nullptr)); }), 1);
}

TEST(OS, UptimeIsTheFirstNumber)
{
    TemporaryTree tree;
    const std::pair<const char*, double> cases[] = {
        {"12345.67 54321.00\n", 12345.67}, {"  7 8\n", 7}, {"0.01\n", 0.01}, {"soon\n", 0}, {"", 0},
    };
    for (const auto& [line, seconds] : cases) {
        tree.file("/proc/uptime", line);
        EXPECT_DOUBLE_EQ(OS::systemUptime(), seconds) << line;
    }
}

TEST(OS, CapturedBoardTellsItsVersionAndUptime)
{
    const FixtureRoot board("virt-board");
    EXPECT_EQ(versionText(), "6.1.0");
    EXPECT_DOUBLE_EQ(OS::systemUptime(), 14.42);
}

TEST(OS, LiveKernelAgreesWithItsSystemCalls)
{
    utsname names{};
    ASSERT_EQ(::uname(&names), 0);
    unsigned parts[3];
    if (std::sscanf(names.release, "%u.%u.%u", &parts[0], &parts[1], &parts[2]) != 3)
        GTEST_SKIP() << "this kernel's release has no three numbers: " << names.release;
    K7Version version;
    ASSERT_TRUE(OS::getKernelVersion(&version));
    EXPECT_EQ(version.major(), parts[0] % 256);
    EXPECT_EQ(version.minor(), parts[1] % 256);
    EXPECT_EQ(version.patch(), parts[2] % 256);

    timespec sinceBoot{};
    ASSERT_EQ(::clock_gettime(CLOCK_BOOTTIME, &sinceBoot), 0);
    EXPECT_NEAR(OS::systemUptime(), static_cast<double>(sinceBoot.tv_sec), 2);
}

TEST(OS, FixedTimeIsTheBeginningOf2000)
{
    K7_REQUIRE_SANDBOX();
    s_clockSettings.clear();
    OS::fixupSystemTime();
    ASSERT_EQ(s_clockSettings.size(), 1U);
    const tm utc = *std::gmtime(&s_clockSettings[0].tv_sec);
    EXPECT_EQ(utc.tm_year + 1900, 2000);
    EXPECT_EQ(utc.tm_yday + utc.tm_hour + utc.tm_min + utc.tm_sec, 0);
    EXPECT_EQ(s_clockSettings[0].tv_usec, 0);
}

TEST(OS, TimeIsAppliedAsLocalTimeByTheRunner)
{
    ::setenv("TZ", "XYZ-5:30", 1);
    ::tzset();
    RecordingRunner runner;
    const time_t before = ::time(nullptr);
    OS::applyTimeToShell();
    const time_t after = ::time(nullptr);
    ASSERT_EQ(runner.commands().size(), 1U);
    tm local{};
    const char* const end = ::strptime(runner.commands()[0].c_str(), "date -s \"%Y-%m-%d %H:%M:%S\"", &local);
    ASSERT_NE(end, nullptr) << runner.commands()[0];
    EXPECT_STREQ(end, "");
    const time_t applied = ::mktime(&local);
    EXPECT_GE(applied, before);
    EXPECT_LE(applied, after);
}

TEST(PlatformConfig, ProcessStartsWithTheUsualValues)
{
    const K7PlatformConfig& config = OS::getPlatformConfig();
    EXPECT_EQ(config.appendCheckInterval(), 3000);
    EXPECT_EQ(config.forceCleanupFrameWritersInterval(), 3600000);
    EXPECT_EQ(config.partialFlushInterval(), 2000);
    EXPECT_FALSE(config.isUsingParallelAppender());
    EXPECT_EQ(config.storageGroupCount(), 1);
    EXPECT_EQ(config.threadParam(0), nullptr);
}

TEST(PlatformConfig, WholeRecordIsHandedDown)
{
    const K7PlatformConfig usual = OS::getPlatformConfig();
    {
        K7PlatformConfig config(true, 4);
        config.setLocalRecordParam(1, 2, 3);
        config.addThreadParam(7, 0x3, 50, J3Thread::POLICY_REALTIME_RR);
        config.addThreadParam(7, 0x1, 10, J3Thread::POLICY_NORMAL);
        OS::setPlatformConfig(*std::unique_ptr<K7PlatformConfig>(config.clone()));
    }
    OS::setPlatformConfig(OS::getPlatformConfig());
    const K7PlatformConfig& config = OS::getPlatformConfig();
    EXPECT_TRUE(config.isUsingParallelAppender());
    EXPECT_EQ(config.storageGroupCount(), 4);
    EXPECT_EQ(config.appendCheckInterval(), 1);
    EXPECT_EQ(config.forceCleanupFrameWritersInterval(), 2);
    EXPECT_EQ(config.partialFlushInterval(), 3);
    ASSERT_NE(config.threadParam(7), nullptr);
    EXPECT_EQ(config.threadParam(7)->affinityMask(), 0x3U);
    EXPECT_EQ(config.threadParam(7)->priority(), 50U);
    EXPECT_EQ(config.threadParam(7)->policy(), J3Thread::POLICY_REALTIME_RR);
    EXPECT_EQ(config.threadParam(8), nullptr);
    OS::setPlatformConfig(usual);
}

TEST(PlatformConfig, IntervalBeyondTheTableIsReportedAndZero)
{
    J3AssertFunc::setHandler(
        [](const J3String&, const J3String& message, const J3String& function, const J3String& path, int) {
            s_report += message.to_string() + " in " + function.to_string() + " of " + path.to_string() + "\n";
        });
    const K7PlatformConfig::LocalRecordParam param;
    EXPECT_EQ(param.interval(K7PlatformConfig::LocalRecordParam::PARTIAL_FLUSH), 2000);
    EXPECT_EQ(s_report, "");
    EXPECT_EQ(param.interval(3), 0);
    EXPECT_EQ(param.interval(-1), 0);
    const std::string report = "invalid index in interval of Application/K7PlatformConfig\n";
    EXPECT_EQ(s_report, report + report);
    J3AssertFunc::setHandler(nullptr);
}
