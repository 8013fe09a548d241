// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Memory counters of the kernel.
#pragma once

#include "Core/K7TickGuage.h"
#include "Foundation/J3Immortal.h"
#include "OS/System/K7SystemUtilClass.h"

#include <string>
#include <vector>

namespace Kivo {

class ProcessLock;

/// Memory counters from `/proc/meminfo`, read at most once a second and served from a table in between.
///
/// A counter of 0 means "unknown". While another thread reads the file, a getter gives 0 at once. A file that is
/// missing or too short leaves the values as they were, and lastFailure() says so after every getter until the file is
/// read again. After a change of the system root the next getter reads the new file, and nothing of the old one stays.
///
/// *Source*: the first 2048 bytes of `/proc/meminfo`. *Threads*: any; never blocks, and getters do not hinder each
/// other.
class K7SAL_API K7SystemUtil::Memory {
public:
    Memory() = delete;

    /// Read the file again when the table is older than 1000 ms; the first call always reads.
    static void refresh();

    /// @{
    /// Refresh the table when it is due and give one counter in KiB, cut to 32 bits.
    static uint32 getMemTotal();
    static uint32 getMemFree();
    static uint32 getBuffers();
    static uint32 getCached();
    static uint32 getSwapCached();
    static uint32 getVmallocTotal();
    static uint32 getVmallocUsed();
    static uint32 getVmallocChunk();
    /// @}

    /// Refresh the table when it is due and give the counter of any row, in all its bits.
    /// @param name as the kernel spells it: "MemAvailable", "SwapFree"
    /// @return KiB, a plain number for the few rows without a unit ("HugePages_Total"); 0 also when there is no such
    ///     row among the first 128 or its name is longer than 32 bytes
    static uint64 counterOf(const J3String& name);

    /// One row of the file.
    struct Counter {
        std::string name; ///< as the kernel spells it, "MemAvailable"
        uint64 value;     ///< in KiB; a plain number for the few rows without a unit ("HugePages_Total")
    };

    /// Read all rows now, whatever the table holds, in the file's order.
    /// @return false when the file cannot be read
    static bool readCounters(std::vector<Counter>* counters);

    /// Make the kernel drop its page cache, by the host's command runner: "sync; sync; echo 3 >
    /// /proc/sys/vm/drop_caches".
    /// *Privilege*: root. *Cost*: waits until dirty pages are written.
    static void dropSystemCachedBuffers();

private:
    class CounterTable;

    static bool isDue();
    static void refreshTable();
    static void noteState();
    static uint32 valueOf(const char* operation, std::size_t row);
    static void resumeAfterFork();

    static K7TickGuage _refreshTickGuage;
    static CounterTable _memoryInfoMap;
    static J3Immortal<ProcessLock> _refreshLock;
    static const int _forkHandler;
};

} // namespace Kivo
