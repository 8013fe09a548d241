// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Times and time zones.
#include "Inventory/detail/ClockParser_p.h"

#include <ctime>

namespace Kivo::Inventory {

std::optional<std::string> isoTime(int64 seconds)
{
    constexpr int64 YEAR_10000 = 253402300800;
    if (seconds < 0 || seconds >= YEAR_10000)
        return std::nullopt;
    const std::time_t time = seconds;
    std::tm parts{};
    ::gmtime_r(&time, &parts);
    char text[sizeof "2026-11-21T09:30:08Z"];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text;
}

// /usr/share/zoneinfo/Europe/Berlin
std::optional<std::string> parseZoneLink(std::string_view target)
{
    constexpr std::string_view DIRECTORY = "/zoneinfo/";
    const std::size_t at = target.find(DIRECTORY);
    const std::string_view zone = at == std::string_view::npos ? "" : target.substr(at + DIRECTORY.size());
    return zone.empty() ? std::nullopt : std::optional(std::string(zone.substr(0, 256)));
}

} // namespace Kivo::Inventory
