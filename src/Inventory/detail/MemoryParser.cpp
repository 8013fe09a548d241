// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What /proc/vmstat tells of memory.
#include "Inventory/detail/MemoryParser_p.h"

namespace Kivo::Inventory {

// oom_kill 0
std::optional<uint64> parseOomKills(std::string_view vmstat)
{
    TextScanner lines(vmstat);
    for (std::string_view line; lines.line(&line);) {
        TextScanner words(line);
        if (words.literal("oom_kill "))
            return wholeNumber<uint64>(trimmed(words.rest()));
    }
    return std::nullopt;
}

} // namespace Kivo::Inventory
