// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The running kernel, the system clock, and the application's configuration.
#pragma once

#include "Application/K7PlatformConfig.h"
#include "Core/K7Version.h"
#include "Foundation/J3Immortal.h"
#include "OS/System/K7SystemUtilClass.h"

namespace Kivo {

/// Facts about the running kernel, the two operations on the system clock, and the process-wide platform configuration.
class K7SAL_API K7SystemUtil::OS {
public:
    OS() = delete;

    /// Read the kernel's version; each of its numbers is kept modulo 256.
    /// @return true; every failure leaves as an exception, with the version untouched
    /// @throws int 1 when @p version is null
    /// @throws J3String "can't open "/proc/version"" when the file cannot be opened, "can't read ..." when not read
    /// @throws int 3 when its first line does not begin with "Linux version " and three numbers ("5.10-rc1")
    /// *Source*: /proc/version
    static bool getKernelVersion(K7Version* version);

    /// Write the kernel's version as text: "6.1.0".
    /// @param buffer at least 12 bytes, what "255.255.255" takes
    /// @return false when @p buffer is null; else as above, exceptions included
    static bool getKernelVersion(char* buffer);

    /// The same as a J3String.
    static bool getKernelVersion(J3String* text);

    /// Seconds since boot, with their fraction; 0 when the kernel's line does not begin with a positive number.
    /// @throws J3String "can't open "/proc/uptime"" when the file cannot be opened, "can't read ..." when not read
    /// *Source*: /proc/uptime
    [[nodiscard]] static double systemUptime();

    /// Set the system clock to 2000-01-01 00:00:00 UTC; only lastFailure() tells whether it worked.
    /// *Source*: settimeofday(2). *Privilege*: CAP_SYS_TIME
    static void fixupSystemTime();

    /// Set the system clock to the time it has, by the host's command runner: `date -s "2026-03-05 07:08:09"`, local
    /// time; only lastFailure() tells its result. The text does not say which of the two it means in the hour that
    /// comes twice when summer time ends: `date` may then set the clock an hour off. Platforms whose `date` also sets a
    /// hardware clock store the time there with it.
    static void applyTimeToShell();

    /// Hand down the platform configuration. *Threads*: once at start-up, before other threads read it.
    static void setPlatformConfig(const K7PlatformConfig& config);

    /// The platform configuration that was handed down last.
    [[nodiscard]] static const K7PlatformConfig& getPlatformConfig();

private:
    static J3Immortal<K7PlatformConfig> _platformConfig;
};

} // namespace Kivo
