// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// How much work waits for the processor, for memory and for disks.
#include "Inventory/Pressure.h"

#include "Inventory/detail/PressureParser_p.h"
#include "Inventory/detail/Source_p.h"

#include <cerrno>

namespace Kivo::Inventory {

namespace {

const char* const DIRECTORY = "/proc/pressure";

template <Delay Pressure::*Kind, std::optional<Real> Delay::*Member>
constexpr Column<Pressure> delay(const char* key, const char* heading, const char* help, Unit unit = Unit::PERCENT,
                                 uint16 traits = VOLATILE)
{
    return {{key, heading, help, unit, Align::RIGHT, traits},
            [](const Pressure& pressure) { return Value(pressure.*Kind.*Member); }};
}

constexpr Column<Pressure> COLUMNS[] = {
    column<&Pressure::resource>({"resource", "resource", "What is waited for", Unit::NONE, Align::LEFT, IDENTITY}),
    delay<&Pressure::some, &Delay::average10>("some_avg10_percent", "some 10 s",
                                              "Part of the last 10 seconds in which a task waited"),
    delay<&Pressure::some, &Delay::average60>("some_avg60_percent", "some 60 s",
                                              "Part of the last 60 seconds in which a task waited"),
    delay<&Pressure::some, &Delay::average300>("some_avg300_percent", "some 300 s",
                                               "Part of the last 300 seconds in which a task waited"),
    delay<&Pressure::some, &Delay::totalSeconds>("some_total_seconds", "some total",
                                                 "Time since the start in which a task waited", Unit::SECONDS, COUNTER),
    delay<&Pressure::full, &Delay::average10>("full_avg10_percent", "full 10 s",
                                              "Part of the last 10 seconds in which every task waited"),
    delay<&Pressure::full, &Delay::average60>("full_avg60_percent", "full 60 s",
                                              "Part of the last 60 seconds in which every task waited"),
    delay<&Pressure::full, &Delay::average300>("full_avg300_percent", "full 300 s",
                                               "Part of the last 300 seconds in which every task waited"),
    delay<&Pressure::full, &Delay::totalSeconds>(
        "full_total_seconds", "full total", "Time since the start in which every task waited", Unit::SECONDS, COUNTER),
};

Delay delayOf(const std::optional<PressureLine>& line)
{
    if (!line)
        return {};
    return {line->average10, line->average60, line->average300,
            Real{static_cast<float64>(line->microseconds) / 1e6, 6}};
}

} // namespace

template <>
std::span<const Column<Pressure>> columns<Pressure>()
{
    return COLUMNS;
}

Listing<Pressure> listPressures()
{
    Listing<Pressure> listing;
    Source source("pressure", &listing.problems);
    const auto names = source.names(DIRECTORY);
    for (const std::string& name : names.value_or(std::vector<std::string>())) {
        // Kernels that keep no pressure may show the files and refuse to open them.
        const auto text = source.parsed(std::string(DIRECTORY) + "/" + name, parsePressure, {EOPNOTSUPP});
        if (text)
            listing.records.push_back({name, delayOf(text->some), delayOf(text->full)});
    }
    listing.known = !listing.records.empty();
    return listing;
}

} // namespace Kivo::Inventory
