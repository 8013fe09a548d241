// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Texts from outside made fit for a terminal, and numbers made fit for a person.
#include "Text.h"

#include <utf8.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>

namespace K7Tool {

namespace {

struct Range {
    char32_t first;
    char32_t last;
};

template <std::size_t Count>
bool isIn(const Range (&ranges)[Count], char32_t c)
{
    return std::any_of(std::begin(ranges), std::end(ranges),
                       [c](const Range& range) { return c >= range.first && c <= range.last; });
}

/// Controls, marks and overrides of the direction, separators of lines and paragraphs, tags.
constexpr Range ACTING[] = {{0x00, 0x1F},     {0x7F, 0x9F},     {0x061C, 0x061C},  {0x200E, 0x200F},
                            {0x2028, 0x202E}, {0x2066, 0x2069}, {0xE0000, 0xE007F}};

/// Characters that stand upon the one before.
constexpr Range COMBINING[] = {{0x0300, 0x036F}, {0x200B, 0x200D}, {0x20D0, 0x20FF}, {0xFE00, 0xFE0F}};

/// East Asian characters and pictures, of two columns.
constexpr Range WIDE[] = {{0x1100, 0x115F}, {0x2E80, 0xA4CF}, {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},  {0xFE30, 0xFE6F},
                          {0xFF00, 0xFF60}, {0xFFE0, 0xFFE6}, {0x1F300, 0x1FAFF}, {0x20000, 0x3FFFD}};

/// Hand every character of a well-formed text over, with its bytes.
template <class Take>
void forEachCharacter(std::string_view text, Take&& take)
{
    for (const char* at = text.data(); at != text.data() + text.size();) {
        const char* const begin = at;
        const char32_t c = utf8::unchecked::next(at);
        take(c, std::string_view(begin, static_cast<std::size_t>(at - begin)));
    }
}

std::string wellFormed(std::string_view text)
{
    std::string result;
    utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(result), '?');
    return result;
}

std::size_t widthOf(char32_t c) { return isIn(COMBINING, c) ? 0 : isIn(WIDE, c) ? 2 : 1; }

} // namespace

std::string printable(std::string_view text)
{
    if (std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; }))
        return std::string(text);
    std::string result;
    forEachCharacter(wellFormed(text), [&](char32_t c, std::string_view bytes) {
        result += isIn(ACTING, c) ? std::string_view("?") : bytes;
    });
    return result;
}

std::string jsonSafe(std::string_view json)
{
    std::string result;
    result.reserve(json.size());
    const auto escape = [&](char32_t c, std::string_view bytes) {
        if (!isIn(ACTING, c))
            result += bytes;
        else if (c < 0x10000)
            result += formatted("\\u%04x", static_cast<unsigned>(c));
        else
            result += formatted("\\u%04x\\u%04x", static_cast<unsigned>(0xD7C0 + (c >> 10U)),
                                static_cast<unsigned>(0xDC00 + (c & 0x3FFU)));
    };
    // Nearly all of a document is plain, and is copied in one piece.
    const auto isPlain = [](char c) { return (c >= ' ' && c <= '~') || c == '\n'; };
    for (const auto* at = json.begin(); at != json.end();) {
        const auto* const plainEnd = std::find_if_not(at, json.end(), isPlain);
        result.append(at, plainEnd);
        at = std::find_if(plainEnd, json.end(), isPlain);
        forEachCharacter({plainEnd, at}, escape);
    }
    return result;
}

std::size_t columnsOf(std::string_view text)
{
    std::size_t columns = 0;
    forEachCharacter(text, [&](char32_t c, std::string_view) { columns += widthOf(c); });
    return columns;
}

std::string fitted(std::string text, std::size_t width)
{
    if (text.size() <= width || columnsOf(text) <= width)
        return text;
    const std::string_view mark = width > 3 ? "..." : "";
    std::size_t columns = mark.size();
    std::size_t kept = 0;
    bool full = false;
    forEachCharacter(text, [&](char32_t c, std::string_view bytes) {
        columns += widthOf(c);
        full = full || columns > width;
        kept += full ? 0 : bytes.size();
    });
    text.resize(kept);
    return text.append(mark);
}

std::string sizeText(double bytes)
{
    const char* const units[] = {"B", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
    constexpr double SMALL = 10000; // below this every byte counts, as of an MTU
    double value = bytes > 0 ? bytes : 0;
    if (value < SMALL)
        return formatted("%.0f B", value);
    std::size_t unit = 0;
    for (; value >= 1024 && unit + 1 < std::size(units); ++unit)
        value /= 1024;
    return formatted("%.1f %s", value, units[unit]);
}

std::string durationText(double seconds)
{
    using Long = unsigned long long;
    constexpr double LONGEST = 1e15;
    if (seconds < 0)
        return "-" + durationText(-seconds);
    const auto whole = static_cast<Long>(seconds > 0 ? std::min(seconds, LONGEST) : 0);
    const Long days = whole / 86400;
    const Long hours = whole / 3600 % 24;
    const Long minutes = whole / 60 % 60;
    if (days > 0)
        return formatted("%llu d %02llu h %02llu min", days, hours, minutes);
    if (hours > 0)
        return formatted("%llu h %02llu min", hours, minutes);
    if (minutes > 0)
        return formatted("%llu min %02llu s", minutes, whole % 60);
    return formatted("%llu s", whole);
}

std::string bar(double part, double whole, std::size_t width)
{
    const double share = whole > 0 && part > 0 ? std::min(part / whole, 1.0) : 0.0;
    const auto filled = static_cast<std::size_t>(std::lround(share * static_cast<double>(width)));
    return "[" + std::string(filled, '#') + std::string(width - filled, '.') + "]";
}

} // namespace K7Tool
