// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The running kernel, the system clock, and the application's configuration.
#include "OS/System/OS.h"

#include "Foundation/J3Time.h"
#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/KernelParser_p.h"
#include "OS/System/Platform/Linux/detail/SystemFile_p.h"
#include "OS/System/Shell.h"

#include <cstdio>
#include <ctime>

#include <sys/time.h>

namespace Kivo {

namespace {

constexpr int NULL_ARGUMENT = 1;
constexpr int NO_VERSION = 3;
constexpr const char* VERSION_PATH = "/proc/version";
constexpr std::size_t VERSION_LINE_SIZE = 511;
constexpr const char* UPTIME_PATH = "/proc/uptime";
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
    if (lines.failed())
        throwCantRead(path);
    return std::string(line);
}

bool failed(const char* reason)
{
    noteFailure({reason});
    return false;
}

} // namespace

J3Immortal<K7PlatformConfig> K7SystemUtil::OS::_platformConfig(false, 1);

bool K7SystemUtil::OS::getKernelVersion(K7Version* version)
{
    return attemptOrThrow("OS::getKernelVersion", [version] {
        if (!version) {
            noteFailure({"version is null"});
            throw NULL_ARGUMENT;
        }
        if (!parseKernelVersion(readLine(VERSION_PATH, VERSION_LINE_SIZE), version)) {
            noteFailure({"no version of three numbers", 0, VERSION_PATH});
            throw NO_VERSION;
        }
        return true;
    });
}

bool K7SystemUtil::OS::getKernelVersion(char* buffer)
{
    return attemptOrThrow("OS::getKernelVersion", [buffer] {
        if (!buffer)
            return failed("buffer is null");
        K7Version version;
        getKernelVersion(&version);
        std::sprintf(buffer, "%u.%u.%u", version.major(), version.minor(), version.patch());
        return true;
    });
}

bool K7SystemUtil::OS::getKernelVersion(J3String* text)
{
    return attemptOrThrow("OS::getKernelVersion", [text] {
        if (!text)
            return failed("text is null");
        K7Version version;
        getKernelVersion(&version);
        text->format(L"%@", &version);
        return true;
    });
}

double K7SystemUtil::OS::systemUptime()
{
    return attemptOrThrow("OS::systemUptime", [] { return parseUptime(readLine(UPTIME_PATH, UPTIME_LINE_SIZE)); });
}

void K7SystemUtil::OS::fixupSystemTime()
{
    attempt("OS::fixupSystemTime", [] {
        const timeval time{YEAR_2000, 0};
        requireCall(::settimeofday(&time, nullptr) == 0, "settimeofday() failed");
    });
}

void K7SystemUtil::OS::applyTimeToShell()
{
    attempt("OS::applyTimeToShell", [] {
        const J3String now = J3Time::from_time_t(std::time(nullptr)).toString();
        J3String command;
        command.format(L"date -s \"%@\"", &now);
        return Shell::runCommand(command.to_string().c_str()) == 0;
    });
}

void K7SystemUtil::OS::setPlatformConfig(const K7PlatformConfig& config) { *_platformConfig = config; }

const K7PlatformConfig& K7SystemUtil::OS::getPlatformConfig() { return *_platformConfig; }

} // namespace Kivo
