// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Text for a person: columns, bars, sizes, and colour where there is a terminal.
#include "Terminal.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include <unistd.h>

namespace K7Tool {

namespace {

std::string formatted(const char* format, auto... arguments)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, format, arguments...);
    return buffer;
}

const char* escape(Style style)
{
    switch (style) {
    case Style::HEADING:
        return "\033[1m";
    case Style::DIM:
        return "\033[2m";
    case Style::GOOD:
        return "\033[32m";
    case Style::WARNING:
        return "\033[33m";
    case Style::BAD:
        return "\033[31m";
    case Style::PLAIN:
        break;
    }
    return "";
}

bool usesColour()
{
    const char* const noColour = std::getenv("NO_COLOR");
    return onTerminal() && !(noColour && *noColour);
}

} // namespace

bool onTerminal() { return ::isatty(STDOUT_FILENO) == 1; }

std::string styled(Style style, const std::string& text)
{
    if (style == Style::PLAIN || text.empty() || !usesColour())
        return text;
    return escape(style) + text + "\033[0m";
}

std::string printable(std::string_view text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool control = byte < 0x20 || byte == 0x7F;
        const bool c1 = byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
        if (c1)
            ++i;
        result += control || c1 ? '?' : text[i];
    }
    return result;
}

std::size_t columns(std::string_view text)
{
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }));
}

std::string sizeText(std::uint64_t bytes)
{
    const char* const units[] = {"B", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
    auto value = static_cast<double>(bytes);
    std::size_t unit = 0;
    for (; value >= 1024 && unit + 1 < std::size(units); ++unit)
        value /= 1024;
    return formatted(unit == 0 ? "%.0f %s" : "%.1f %s", value, units[unit]);
}

std::string durationText(double seconds)
{
    const auto whole = static_cast<std::uint64_t>(std::clamp(seconds, 0.0, 1e15));
    const std::uint64_t days = whole / 86400;
    const std::uint64_t hours = whole / 3600 % 24;
    const std::uint64_t minutes = whole / 60 % 60;
    if (days > 0)
        return formatted("%llu d %02llu h %02llu min", static_cast<unsigned long long>(days),
                         static_cast<unsigned long long>(hours), static_cast<unsigned long long>(minutes));
    if (hours > 0)
        return formatted("%llu h %02llu min", static_cast<unsigned long long>(hours),
                         static_cast<unsigned long long>(minutes));
    if (minutes > 0)
        return formatted("%llu min %02llu s", static_cast<unsigned long long>(minutes),
                         static_cast<unsigned long long>(whole % 60));
    return formatted("%llu s", static_cast<unsigned long long>(whole));
}

std::string bar(double part, double whole, std::size_t width)
{
    const double share = whole > 0 ? std::clamp(part / whole, 0.0, 1.0) : 0.0;
    const auto filled = static_cast<std::size_t>(std::lround(share * static_cast<double>(width)));
    return "[" + std::string(filled, '#') + std::string(width - filled, '.') + "]";
}

Table::Table(std::vector<std::string> headings, std::vector<Align> aligns)
    : _aligns(std::move(aligns)),
      _hasHeadings(!std::all_of(headings.begin(), headings.end(), [](const std::string& text) { return text.empty(); }))
{
    _aligns.resize(headings.size(), LEFT);
    if (_hasHeadings)
        add(std::move(headings), Style::DIM);
}

void Table::add(std::vector<std::string> cells, Style style)
{
    cells.resize(_aligns.size());
    for (std::string& cell : cells)
        cell = printable(cell);
    _rows.push_back({std::move(cells), style});
}

std::string Table::text(const std::string& indent) const
{
    std::vector<std::size_t> widths(_aligns.size(), 0);
    for (const Row& row : _rows)
        for (std::size_t i = 0; i < widths.size(); ++i)
            widths[i] = std::max(widths[i], columns(row.cells[i]));

    std::string result;
    for (const Row& row : _rows) {
        std::string line;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            const std::string padding(widths[i] - columns(row.cells[i]), ' ');
            line += (i == 0 ? "" : "  ") + (_aligns[i] == RIGHT ? padding + row.cells[i] : row.cells[i] + padding);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        result += indent + styled(row.style, line) + "\n";
    }
    return result;
}

} // namespace K7Tool
