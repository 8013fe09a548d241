// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The system clock, the time zone and the hardware clock.
#pragma once

#include "Inventory/Column.h"
#include "Inventory/Listing.h"

#include <optional>

namespace Kivo::Inventory {

/// The system clock and what it is compared with. Times are UTC: "2026-11-21T09:30:08Z".
struct Clock {
    std::optional<std::string> time;
    std::optional<std::string> bootTime;
    std::optional<std::string> timeZone; ///< "Europe/Berlin"
    std::optional<int64> utcOffset;      ///< local time without UTC, in seconds
    std::optional<bool> isSynchronized;  ///< whether a time server, or another reference, sets the clock
    std::optional<std::string> source;   ///< the hardware that the kernel counts time with
    std::optional<std::string> rtcName;  ///< the hardware clock's driver and device
    std::optional<std::string> rtcTime;  ///< none when its time is not valid
};

template <>
K7INVENTORY_API std::span<const Column<Clock>> columns<Clock>();

/// *Source*: `clock_gettime`, `adjtimex`, `/proc/stat`, `/etc/localtime`, `timezone` and `TZ`,
/// `/sys/devices/system/clocksource`, `/sys/class/rtc/rtc0`
[[nodiscard]] K7INVENTORY_API Reading<Clock> readClock();

} // namespace Kivo::Inventory
