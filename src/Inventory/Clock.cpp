// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The system clock, the time zone and the hardware clock.
#include "Inventory/Clock.h"

#include "Inventory/detail/ClockParser_p.h"
#include "Inventory/detail/CoreSources_p.h"

#include <cerrno>
#include <ctime>

#include <sys/timex.h>

namespace Kivo::Inventory {

namespace {

constexpr ColumnInfo text(const char* key, const char* heading, const char* help, uint16 traits = PLAIN)
{
    return {key, heading, help, Unit::NONE, Align::LEFT, traits};
}

constexpr Column<Clock> COLUMNS[] = {
    column<&Clock::time>(text("time", "time", "Time of the system clock in UTC", LIVE_ONLY | VOLATILE)),
    column<&Clock::bootTime>(text("boot_time", "started", "Time of the start in UTC")),
    column<&Clock::timeZone>(text("time_zone", "time zone", "Zone that local time is told for")),
    column<&Clock::utcOffset>({"utc_offset_seconds", "UTC offset", "What local time is ahead of UTC", Unit::SECONDS,
                               Align::RIGHT, LIVE_ONLY}),
    column<&Clock::isSynchronized>(
        text("synchronized", "synchronized", "Whether a reference such as a time server sets the clock", LIVE_ONLY)),
    column<&Clock::source>(text("clock_source", "clock source", "Hardware that the kernel counts time with")),
    column<&Clock::rtcName>(text("rtc_name", "RTC", "Driver and device of the hardware clock")),
    column<&Clock::rtcTime>(
        text("rtc_time", "RTC time", "Time of the hardware clock, which is UTC as a rule", VOLATILE)),
};

void readSystemClock(Source& source, Clock* clock)
{
    const std::time_t now = std::time(nullptr);
    clock->time = isoTime(now);
    std::tm local{};
    if (::localtime_r(&now, &local))
        clock->utcOffset = local.tm_gmtoff;
    timex query{};
    const int state = ::adjtimex(&query);
    if (state >= 0)
        clock->isSynchronized = state != TIME_ERROR && (query.status & STA_UNSYNC) == 0;
    else if (errno != EPERM && errno != ENOSYS) // a container may refuse the question to everybody
        source.note("adjtimex() failed", errno, {});
}

std::optional<std::string> timeZone(Source& source)
{
    if (const auto target = source.link("/etc/localtime"))
        if (auto zone = parseZoneLink(*target))
            return zone;
    for (const char* path : {"/etc/timezone", "/etc/TZ"})
        if (auto zone = source.text(path))
            return zone;
    return std::nullopt;
}

void readHardwareClock(Source& source, Clock* clock)
{
    const std::string directory = "/sys/class/rtc/rtc0/";
    clock->rtcName = source.text(directory + "name");
    // A clock whose battery was empty has no valid time.
    if (const auto seconds = source.number(directory + "since_epoch", 10, {EINVAL}))
        clock->rtcTime = isoTime(*seconds);
}

} // namespace

template <>
std::span<const Column<Clock>> columns<Clock>()
{
    return COLUMNS;
}

Reading<Clock> readClock()
{
    Reading<Clock> reading;
    Source source("clock", &reading.problems);
    Clock& clock = reading.record;
    if (isLive())
        readSystemClock(source, &clock);
    const auto stat = readStat(source);
    if (stat && stat->bootTime)
        clock.bootTime = isoTime(*stat->bootTime);
    clock.timeZone = timeZone(source);
    clock.source = source.text("/sys/devices/system/clocksource/clocksource0/current_clocksource");
    readHardwareClock(source, &clock);
    return reading;
}

} // namespace Kivo::Inventory
