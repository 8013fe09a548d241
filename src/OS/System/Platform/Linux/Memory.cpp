// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Memory counters from /proc/meminfo.
#include "OS/System/Memory.h"

#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/MeminfoParser_p.h"
#include "OS/System/Platform/Linux/detail/SystemFile_p.h"
#include "OS/System/Shell.h"

namespace Kivo {

namespace {

constexpr const char* MEMINFO_PATH = "/proc/meminfo";
constexpr std::size_t MEMINFO_BUFFER_SIZE = 2048;
constexpr std::size_t MEMINFO_TOO_SHORT = 32;

} // namespace

K7TickGuage K7SystemUtil::Memory::_refreshTickGuage(1000, false);
std::atomic<bool> K7SystemUtil::Memory::_everRefreshed{false};
std::map<J3String, uint32> K7SystemUtil::Memory::_memoryInfoMap;
J3Lock K7SystemUtil::Memory::_refreshLock;

void K7SystemUtil::Memory::refresh()
{
    if (_everRefreshed.load(std::memory_order_relaxed) && !_refreshTickGuage.isElapsed())
        return;
    _refreshTickGuage.restart();
    _everRefreshed.store(true, std::memory_order_relaxed);
    if (!_refreshLock.tryLock())
        return;
    const std::lock_guard<J3Lock> held(_refreshLock, std::adopt_lock);

    attempt("Memory::refresh", [] {
        SystemFile file(MEMINFO_PATH);
        requireCall(static_cast<bool>(file), "can't open /proc/meminfo");
        char buffer[MEMINFO_BUFFER_SIZE];
        const std::string_view text = file.readInto(buffer, sizeof buffer);
        require(text.size() > MEMINFO_TOO_SHORT, "/proc/meminfo is too short");
        MeminfoParser rows(text);
        for (MeminfoRow row; rows.next(&row);)
            _memoryInfoMap[J3String(std::wstring(row.name.begin(), row.name.end()))] =
                static_cast<uint32>(row.value); // the kernel's names are ASCII
    });
}

bool K7SystemUtil::Memory::readCounters(std::vector<Counter>* counters)
{
    return attempt("Memory::readCounters", [counters] {
        require(counters, "counters is null");
        SystemFile file(MEMINFO_PATH);
        requireCall(static_cast<bool>(file), "can't open the file", MEMINFO_PATH);
        std::string text;
        requireCall(file.readAll(&text), "can't read the file", MEMINFO_PATH);
        std::vector<Counter> found;
        MeminfoParser rows(text);
        for (MeminfoRow row; rows.next(&row);)
            found.push_back({std::string(row.name), row.value});
        *counters = std::move(found);
    });
}

uint32 K7SystemUtil::Memory::valueOf(const J3String& key)
{
    refresh();
    if (!_refreshLock.tryLock())
        return 0;
    const std::lock_guard<J3Lock> held(_refreshLock, std::adopt_lock);
    return _memoryInfoMap[key];
}

void K7SystemUtil::Memory::forget()
{
    const std::lock_guard<J3Lock> held(_refreshLock);
    for (auto& [key, value] : _memoryInfoMap)
        value = 0; // what a missing key gives
    _everRefreshed.store(false, std::memory_order_relaxed);
}

// The key is made once: a getter from the table allocates nothing.
#define K7_MEMORY_GETTER(Name)                                                                                         \
    uint32 K7SystemUtil::Memory::get##Name()                                                                           \
    {                                                                                                                  \
        static const J3String key(L## #Name);                                                                          \
        return valueOf(key);                                                                                           \
    }
K7_MEMORY_GETTER(MemTotal)
K7_MEMORY_GETTER(MemFree)
K7_MEMORY_GETTER(Buffers)
K7_MEMORY_GETTER(Cached)
K7_MEMORY_GETTER(SwapCached)
K7_MEMORY_GETTER(VmallocTotal)
K7_MEMORY_GETTER(VmallocUsed)
K7_MEMORY_GETTER(VmallocChunk)
#undef K7_MEMORY_GETTER

void K7SystemUtil::Memory::dropSystemCachedBuffers()
{
    Shell::runCommand("sync; sync; echo 3 > /proc/sys/vm/drop_caches");
}

} // namespace Kivo
