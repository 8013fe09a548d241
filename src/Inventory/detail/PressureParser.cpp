// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The text of the files in /proc/pressure.
#include "Inventory/detail/PressureParser_p.h"

namespace Kivo::Inventory {

namespace {

std::optional<PressureLine> parseLine(TextScanner words)
{
    const auto average = [&words](std::string_view name) {
        std::string_view word;
        words.skipSpace();
        return words.literal(name) && words.word(&word) ? parseReal(word) : std::nullopt;
    };
    const auto average10 = average("avg10=");
    const auto average60 = average("avg60=");
    const auto average300 = average("avg300=");
    words.skipSpace();
    uint64 total = 0;
    if (!average10 || !average60 || !average300 || !words.literal("total=") || !words.number(&total))
        return std::nullopt;
    return PressureLine{*average10, *average60, *average300, total};
}

} // namespace

// some avg10=0.00 avg60=0.12 avg300=0.05 total=217483
// full avg10=0.00 avg60=0.00 avg300=0.00 total=10452
std::optional<PressureText> parsePressure(std::string_view text)
{
    PressureText pressure;
    TextScanner lines(text);
    for (std::string_view line; lines.line(&line);) {
        TextScanner words(line);
        if (words.literal("some "))
            pressure.some = parseLine(words);
        else if (words.literal("full "))
            pressure.full = parseLine(words);
    }
    return pressure.some || pressure.full ? std::optional(pressure) : std::nullopt;
}

} // namespace Kivo::Inventory
