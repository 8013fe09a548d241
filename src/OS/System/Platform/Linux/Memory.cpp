// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Memory counters from /proc/meminfo.
#include "OS/System/Memory.h"

#include "OS/System/Platform/Linux/detail/Attempt_p.h"
#include "OS/System/Platform/Linux/detail/MeminfoParser_p.h"
#include "OS/System/Platform/Linux/detail/ProcessLock_p.h"
#include "OS/System/Platform/Linux/detail/SystemFile_p.h"
#include "OS/System/Shell.h"

#include <array>
#include <bit>

#include <pthread.h>

namespace Kivo {

namespace {

constexpr const char* MEMINFO_PATH = "/proc/meminfo";
constexpr std::size_t MEMINFO_BUFFER_SIZE = 2048;
constexpr std::size_t MEMINFO_TOO_SHORT = 32;
constexpr const char* BUSY = "another thread reads the file";

/// A counter's name in words, which are compared and copied faster than texts.
using Name = std::array<uint64, 4>;
constexpr std::size_t LONGEST_NAME = sizeof(Name);

constexpr Name toName(std::string_view text)
{
    std::array<char, LONGEST_NAME> bytes{};
    text.copy(bytes.data(), bytes.size());
    return std::bit_cast<Name>(bytes);
}

/// The places of the rows that getters ask for.
enum KnownRow : std::size_t {
    MEM_TOTAL,
    MEM_FREE,
    BUFFERS,
    CACHED,
    SWAP_CACHED,
    VMALLOC_TOTAL,
    VMALLOC_USED,
    VMALLOC_CHUNK,
    KNOWN_ROWS
};

} // namespace

/// The counters by name. One thread at a time writes, between begin() and end(); any number read meanwhile and see that
/// it does. All of it is atomic and nothing is ever destroyed.
class K7SystemUtil::Memory::CounterTable {
public:
    void begin() { _sequence.store(_sequence.load(std::memory_order_relaxed) | 1, std::memory_order_relaxed); }
    void end() { _sequence.store((_sequence.load(std::memory_order_relaxed) | 1) + 1, std::memory_order_release); }
    [[nodiscard]] bool isBeingWritten() const { return (_sequence.load(std::memory_order_acquire) & 1) != 0; }

    [[nodiscard]] uint64 value(std::size_t row) const { return _rows[row].value.load(std::memory_order_acquire); }

    /// @return the row of a name, _used or more for none
    [[nodiscard]] std::size_t find(const Name& name, std::size_t from = 0) const
    {
        const std::size_t used = _used.load(std::memory_order_acquire);
        for (std::size_t i = 0; i < used; ++i)
            if (const std::size_t row = from + i < used ? from + i : from + i - used; isNamed(row, name))
                return row;
        return ROWS;
    }

    /// @return false for no such row, and, with @p torn set, when the table was written meanwhile
    bool read(const Name& name, uint64* value, bool* torn) const
    {
        const uint32 before = _sequence.load(std::memory_order_acquire);
        const std::size_t row = find(name);
        *value = row < ROWS ? this->value(row) : 0;
        *torn = (before & 1) != 0 || _sequence.load(std::memory_order_relaxed) != before;
        return row < ROWS && !*torn;
    }

    /// Set a row, made when there is room for it. @p hint is where it may be, and becomes where the next one may be.
    void set(std::string_view text, uint64 value, std::size_t* hint)
    {
        if (text.size() > LONGEST_NAME)
            return;
        const Name name = toName(text);
        std::size_t row = find(name, *hint);
        if (row == ROWS) {
            row = _used.load(std::memory_order_relaxed);
            if (row == ROWS)
                return;
            for (std::size_t word = 0; word < name.size(); ++word)
                _rows[row].name[word].store(name[word], std::memory_order_release);
            _used.store(row + 1, std::memory_order_release);
        }
        _rows[row].value.store(value, std::memory_order_release);
        *hint = row + 1;
    }

    void clear()
    {
        _used.store(KNOWN_ROWS, std::memory_order_release);
        for (Row& row : _rows)
            row.value.store(0, std::memory_order_release);
    }

    std::atomic<uint32> generation{~0U}; ///< of the system root that the values are from
    std::atomic<int> error{0};           ///< the errno of the last refresh, or TOO_SHORT
    static constexpr int TOO_SHORT = -1;

private:
    static constexpr std::size_t ROWS = 128;

    struct Row {
        constexpr Row() = default;
        constexpr explicit Row(const Name& words) : name{words[0], words[1], words[2], words[3]} {}

        std::array<std::atomic<uint64>, std::tuple_size_v<Name>> name{};
        std::atomic<uint64> value{0};
    };

    [[nodiscard]] bool isNamed(std::size_t row, const Name& name) const
    {
        for (std::size_t word = 0; word < name.size(); ++word)
            if (_rows[row].name[word].load(std::memory_order_acquire) != name[word])
                return false;
        return true;
    }

    std::atomic<uint32> _sequence{0}; // odd while the table is written
    std::atomic<std::size_t> _used{KNOWN_ROWS};
    Row _rows[ROWS] = {Row(toName("MemTotal")),    Row(toName("MemFree")),     Row(toName("Buffers")),
                       Row(toName("Cached")),      Row(toName("SwapCached")),  Row(toName("VmallocTotal")),
                       Row(toName("VmallocUsed")), Row(toName("VmallocChunk"))};
};

K7TickGuage K7SystemUtil::Memory::_refreshTickGuage(1000, false);
constinit K7SystemUtil::Memory::CounterTable K7SystemUtil::Memory::_memoryInfoMap;
J3Immortal<ProcessLock> K7SystemUtil::Memory::_refreshLock;
const int K7SystemUtil::Memory::_forkHandler = ::pthread_atfork(nullptr, nullptr, &Memory::resumeAfterFork);

void K7SystemUtil::Memory::resumeAfterFork()
{
    if (!_refreshLock->freeAfterFork() || !_memoryInfoMap.isBeingWritten())
        return;
    _memoryInfoMap.generation.store(~0U,
                                    std::memory_order_relaxed); // what the parent's thread was writing is read anew
    _memoryInfoMap.end();
}

bool K7SystemUtil::Memory::isDue()
{
    return _memoryInfoMap.generation.load(std::memory_order_relaxed) != systemRootGeneration() ||
           _refreshTickGuage.isElapsed();
}

void K7SystemUtil::Memory::refreshTable()
{
    if (!isDue() || !_refreshLock->tryLock())
        return;
    const std::lock_guard<ProcessLock> held(*_refreshLock, std::adopt_lock);
    if (!isDue()) // read by the thread that held the lock before
        return;
    struct Writing {
        Writing() { _memoryInfoMap.begin(); }
        ~Writing() { _memoryInfoMap.end(); }
    } const writing;
    _refreshTickGuage.restart();
    if (const uint32 generation = systemRootGeneration(); _memoryInfoMap.generation.exchange(generation) != generation)
        _memoryInfoMap.clear();

    SystemFile file(MEMINFO_PATH);
    char buffer[MEMINFO_BUFFER_SIZE];
    const std::string_view text = file ? file.readInto(buffer, sizeof buffer) : std::string_view();
    const int error = text.empty() ? errno : 0;
    const bool whole = text.size() > MEMINFO_TOO_SHORT;
    _memoryInfoMap.error.store(whole ? 0 : error != 0 ? error : CounterTable::TOO_SHORT, std::memory_order_relaxed);
    if (!whole)
        return;
    std::size_t hint = 0;
    MeminfoParser rows(text);
    for (MeminfoRow row{}; rows.next(&row);)
        _memoryInfoMap.set(row.name, row.value, &hint);
}

void K7SystemUtil::Memory::noteState()
{
    if (_memoryInfoMap.isBeingWritten())
        noteFailure({BUSY, 0, MEMINFO_PATH});
    else if (const int error = _memoryInfoMap.error.load(std::memory_order_relaxed); error == CounterTable::TOO_SHORT)
        noteFailure({"the file is too short", 0, MEMINFO_PATH});
    else if (error != 0)
        noteFailure({"can't read the file", error, MEMINFO_PATH});
}

void K7SystemUtil::Memory::refresh()
{
    const Operation operation("Memory::refresh");
    refreshTable();
    noteState();
}

uint32 K7SystemUtil::Memory::valueOf(const char* operation, std::size_t row)
{
    const Operation underWay(operation);
    refreshTable();
    const auto value = static_cast<uint32>(_memoryInfoMap.value(row));
    const bool beingWritten = _memoryInfoMap.isBeingWritten();
    noteState();
    return beingWritten ? 0 : value;
}

#define K7_MEMORY_GETTER(Name, row)                                                                                    \
    uint32 K7SystemUtil::Memory::get##Name() { return valueOf("Memory::get" #Name, row); }
K7_MEMORY_GETTER(MemTotal, MEM_TOTAL)
K7_MEMORY_GETTER(MemFree, MEM_FREE)
K7_MEMORY_GETTER(Buffers, BUFFERS)
K7_MEMORY_GETTER(Cached, CACHED)
K7_MEMORY_GETTER(SwapCached, SWAP_CACHED)
K7_MEMORY_GETTER(VmallocTotal, VMALLOC_TOTAL)
K7_MEMORY_GETTER(VmallocUsed, VMALLOC_USED)
K7_MEMORY_GETTER(VmallocChunk, VMALLOC_CHUNK)
#undef K7_MEMORY_GETTER

uint64 K7SystemUtil::Memory::counterOf(const J3String& name)
{
    constexpr int ATTEMPTS = 3;
    const Operation operation("Memory::counterOf");
    const std::string text = name.to_string();
    refreshTable();
    noteState();
    uint64 value = 0;
    bool torn = text.size() <= LONGEST_NAME;
    bool found = false;
    for (int attempt = 0; attempt < ATTEMPTS && torn; ++attempt)
        found = _memoryInfoMap.read(toName(text), &value, &torn);
    if (!found)
        noteFailure({torn ? BUSY : "there is no such counter", 0, torn ? MEMINFO_PATH : text});
    return found ? value : 0;
}

bool K7SystemUtil::Memory::readCounters(std::vector<Counter>* counters)
{
    return attempt("Memory::readCounters", [counters] {
        require(counters, "counters is null");
        SystemFile file(MEMINFO_PATH);
        file.opened();
        std::string text;
        requireCall(file.readAll(&text), "can't read the file", MEMINFO_PATH);
        std::vector<Counter> found;
        MeminfoParser rows(text);
        for (MeminfoRow row{}; rows.next(&row);)
            found.push_back({std::string(row.name), row.value});
        *counters = std::move(found);
    });
}

void K7SystemUtil::Memory::dropSystemCachedBuffers()
{
    attempt("Memory::dropSystemCachedBuffers",
            [] { return Shell::runCommand("sync; sync; echo 3 > /proc/sys/vm/drop_caches") == 0; });
}

} // namespace Kivo
