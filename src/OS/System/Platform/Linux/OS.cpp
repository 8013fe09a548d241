// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The running kernel, the system clock, and the application's configuration.
#include "OS/System/OS.h"

#include "Foundation/J3Time.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/SystemFile_p.h"
#include "OS/System/Platform/Linux/detail/Text_p.h"
#include "OS/System/Shell.h"

#include <cstdio>
#include <ctime>

#include <sys/time.h>

namespace Kivo {

namespace {

constexpr int NULL_ARGUMENT = 1;
constexpr int NO_VERSION = 3;
constexpr std::size_t VERSION_LINE_SIZE = 511;
constexpr std::size_t UPTIME_LINE_SIZE = 255;
constexpr time_t YEAR_2000 = 946684800;

/// The first line of a file that has to be there.
std::string readLine(const char* path, std::size_t size)
{
    SystemLines lines(path, size);
    if (!lines)
        throwCantOpen(path);
    std::string_view line;
    lines.next(&line);
    return std::string(line);
}

// Linux version 6.1.0-56-arm64 (debian-kernel@lists.debian.org) (gcc-12 (Debian 12.2.0-14+deb12u1) 12.2.0, ...
bool parseVersion(const std::string& line, K7Version* version)
{
    int major = 0;
    int minor = 0;
    int patch = 0;
    if (std::sscanf(line.c_str(), "Linux version %d.%d.%d", &major, &minor, &patch) != 3)
        return false;
    version->setMajor(static_cast<uint8>(major));
    version->setMinor(static_cast<uint8>(minor));
    version->setPatch(static_cast<uint8>(patch));
    return true;
}

// 12345.67 54321.00
// The kernel's decimal point is a point in every locale of the host, which is why sscanf would not do.
double parseUptime(std::string_view line)
{
    double uptime = 0;
    TextScanner(line).real(&uptime);
    return uptime;
}

} // namespace

K7PlatformConfig K7SystemUtil::OS::_platformConfig(false, 1);

bool K7SystemUtil::OS::getKernelVersion(K7Version* version)
{
    if (!version)
        throw NULL_ARGUMENT;
    return attemptOrThrow("OS::getKernelVersion", [version] {
        if (!parseVersion(readLine("/proc/version", VERSION_LINE_SIZE), version)) {
            noteFailure({"no version of three numbers", 0, "/proc/version"});
            throw NO_VERSION;
        }
        return true;
    });
}

bool K7SystemUtil::OS::getKernelVersion(char* buffer)
{
    if (!buffer)
        return false;
    K7Version version;
    const bool known = getKernelVersion(&version);
    if (known)
        std::sprintf(buffer, "%u.%u.%u", version.major(), version.minor(), version.patch());
    return known;
}

bool K7SystemUtil::OS::getKernelVersion(J3String* text)
{
    if (!text)
        return false;
    K7Version version;
    const bool known = getKernelVersion(&version);
    if (known)
        text->format(L"%@", &version);
    return known;
}

double K7SystemUtil::OS::systemUptime()
{
    return attemptOrThrow("OS::systemUptime", [] { return parseUptime(readLine("/proc/uptime", UPTIME_LINE_SIZE)); });
}

void K7SystemUtil::OS::fixupSystemTime()
{
    const timeval time{YEAR_2000, 0};
    static_cast<void>(::settimeofday(&time, nullptr));
}

void K7SystemUtil::OS::applyTimeToShell()
{
    const J3String now = J3Time::from_time_t(std::time(nullptr)).toString();
    J3String command;
    command.format(L"date -s \"%@\"", &now);
    Shell::runCommand(command.to_string().c_str());
}

void K7SystemUtil::OS::setPlatformConfig(const K7PlatformConfig& config) { _platformConfig = config; }

const K7PlatformConfig& K7SystemUtil::OS::getPlatformConfig() { return _platformConfig; }

} // namespace Kivo
