// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What the files of a process tell.
#include "Base/TextScanner_p.h"
#include "Inventory/detail/ProcessParser_p.h"

#include <algorithm>

namespace Kivo::Inventory {

namespace {

constexpr float64 TICKS_PER_SECOND = 100; // USER_HZ, the same on every architecture that we run on

std::string_view stateName(std::string_view letter)
{
    static constexpr struct {
        std::string_view letter;
        std::string_view name;
    } STATES[] = {
        {"R", "running"}, {"S", "sleeping"},     {"D", "disk sleep"}, {"T", "stopped"},
        {"Z", "zombie"},  {"t", "tracing stop"}, {"X", "dead"},       {"I", "idle"},
    };
    for (const auto& state : STATES)
        if (state.letter == letter)
            return state.name;
    return letter;
}

} // namespace

// 1 (init) S 0 0 0 0 -1 4194560 225 1429 0 0 3 72 5 82 20 0 1 0 4 2138112 ...
// The name in parentheses may hold parentheses, blanks and line feeds itself. Of the numbers: 4 is the parent, 14 and
// 15 the ticks in user and kernel mode, 20 the threads, 22 the tick at which the process started.
std::optional<ProcessStat> parseProcessStat(std::string_view text)
{
    const std::size_t open = text.find('(');
    const std::size_t close = text.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos || close < open)
        return std::nullopt;
    TextScanner scanner(text.substr(close + 1));
    const auto skip = [&scanner](int words) {
        while (words > 0 && scanner.skipWord())
            --words;
        return words == 0;
    };
    ProcessStat stat;
    std::string_view letter;
    uint64 userTicks = 0;
    uint64 kernelTicks = 0;
    uint64 startTick = 0;
    if (!scanner.word(&letter) || !scanner.number(&stat.parent) || !skip(9) || !scanner.number(&userTicks) ||
        !scanner.number(&kernelTicks) || !skip(4) || !scanner.number(&stat.threads) || !skip(1) ||
        !scanner.number(&startTick))
        return std::nullopt;
    stat.name = text.substr(open + 1, close - open - 1);
    stat.state = stateName(letter);
    stat.processorTime = (static_cast<float64>(userTicks) + static_cast<float64>(kernelTicks)) / TICKS_PER_SECOND;
    stat.startTime = static_cast<float64>(startTick) / TICKS_PER_SECOND;
    return stat;
}

// Uid:    0       0       0       0
// VmRSS:      1372 kB
ProcessStatus parseProcessStatus(std::string_view text)
{
    ProcessStatus status;
    TextScanner lines(text);
    for (std::string_view line; lines.line(&line);) {
        TextScanner words(line);
        uint32 user = 0;
        uint64 size = 0;
        if (words.literal("Uid:") && words.skipNumber() && words.number(&user))
            status.user = user;
        else if (words.literal("VmRSS:") && words.number(&size))
            status.resident = size;
    }
    return status;
}

std::optional<ProcessArguments> parseProcessArguments(std::string_view text)
{
    const std::string_view program = text.substr(0, text.find('\0'));
    if (program.empty())
        return std::nullopt;
    while (text.ends_with('\0'))
        text.remove_suffix(1);
    ProcessArguments arguments{program, std::string(text)};
    std::replace(arguments.line.begin(), arguments.line.end(), '\0', ' ');
    return arguments;
}

} // namespace Kivo::Inventory
