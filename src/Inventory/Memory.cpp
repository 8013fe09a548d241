// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Main memory and swap.
#include "Inventory/Memory.h"

#include "Inventory/detail/MemoryParser_p.h"
#include "Inventory/detail/Source_p.h"
#include "OS/System/Memory.h"

#include <algorithm>

namespace Kivo::Inventory {

namespace {

constexpr const char* WHAT = "memory";

constexpr ColumnInfo size(const char* key, const char* heading, const char* help, uint16 traits = VOLATILE)
{
    return {key, heading, help, Unit::KIBIBYTES, Align::RIGHT, traits};
}

constexpr Column<Memory> COLUMNS[] = {
    column<&Memory::total>(size("mem_total_kib", "total", "Main memory that the kernel manages", PLAIN)),
    {size("mem_used_kib", "used", "What processes and the kernel hold"),
     [](const Memory& m) { return Value(m.used()); }},
    column<&Memory::available>(size("mem_available_kib", "available", "What can be had without swapping")),
    column<&Memory::free>(size("mem_free_kib", "free", "What nothing uses")),
    column<&Memory::buffers>(size("buffers_kib", "buffers", "Cache of block devices")),
    column<&Memory::cached>(size("cached_kib", "cached", "Cache of files")),
    column<&Memory::swapTotal>(size("swap_total_kib", "swap", "Swap space", PLAIN)),
    column<&Memory::swapFree>(size("swap_free_kib", "swap free", "Swap space that nothing uses")),
    column<&Memory::swapCached>(
        size("swap_cached_kib", "swap cached", "Pages in memory and in swap", VOLATILE | DETAIL)),
    column<&Memory::vmallocUsed>(
        size("vmalloc_used_kib", "vmalloc used", "Kernel memory that is mapped page by page", VOLATILE | DETAIL)),
    column<&Memory::oomKills>({"oom_kills", "OOM kills", "Processes killed for lack of memory since the start",
                               Unit::NONE, Align::RIGHT, COUNTER}),
};

} // namespace

std::optional<uint64> Memory::used() const
{
    if (!total || !free)
        return std::nullopt;
    uint64 used = *total;
    for (const uint64 unused : {*free, buffers.value_or(0), cached.value_or(0)})
        used -= std::min(used, unused);
    return used;
}

template <>
std::span<const Column<Memory>> columns<Memory>()
{
    return COLUMNS;
}

Reading<Memory> readMemory()
{
    Reading<Memory> reading;
    Source source(WHAT, &reading.problems);
    Memory& memory = reading.record;
    const struct {
        const char* name;
        std::optional<uint64>* value;
    } rows[] = {
        {"MemTotal", &memory.total},    {"MemAvailable", &memory.available}, {"MemFree", &memory.free},
        {"Buffers", &memory.buffers},   {"Cached", &memory.cached},          {"SwapTotal", &memory.swapTotal},
        {"SwapFree", &memory.swapFree}, {"SwapCached", &memory.swapCached},  {"VmallocUsed", &memory.vmallocUsed},
    };
    std::vector<K7SystemUtil::Memory::Counter> counters;
    if (!K7SystemUtil::Memory::readCounters(&counters))
        source.noteFailure();
    for (const auto& counter : counters)
        for (const auto& row : rows)
            if (counter.name == row.name)
                *row.value = counter.value;
    if (const auto vmstat = source.contents("/proc/vmstat"))
        memory.oomKills = parseOomKills(*vmstat); // none before kernel 4.13
    return reading;
}

} // namespace Kivo::Inventory
