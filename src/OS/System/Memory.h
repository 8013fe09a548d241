// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Memory counters of the kernel.
#pragma once

#include "Core/K7TickGuage.h"
#include "Foundation/J3Lock.h"
#include "OS/System/K7SystemUtilClass.h"

#include <atomic>
#include <map>
#include <string>
#include <vector>

namespace Kivo {

/// Memory counters from `/proc/meminfo`, read at most once a second and served from a table in between.
///
/// *Source*: `/proc/meminfo`. *Threads*: any; nobody waits. A caller that meets another one at the table gets 0.
/// Nothing is reported: 0 means "unknown", and a file that is missing or too short leaves the values as they were.
class K7SAL_API K7SystemUtil::Memory {
public:
    Memory() = delete;

    /// Read the file again when the table is older than 1000 ms; the first call always reads.
    static void refresh();

    // Each refreshes the table when it is due and gives one counter in KiB, cut to 32 bits.
    static uint32 getMemTotal();
    static uint32 getMemFree();
    static uint32 getBuffers();
    static uint32 getCached();
    static uint32 getSwapCached();
    static uint32 getVmallocTotal();
    static uint32 getVmallocUsed();
    static uint32 getVmallocChunk();

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
    friend class K7SystemUtil;

    static uint32 valueOf(const J3String& key);
    static void forget();

    static K7TickGuage _refreshTickGuage;
    static std::atomic<bool> _everRefreshed;
    static std::map<J3String, uint32> _memoryInfoMap;
    static J3Lock _refreshLock;
};

} // namespace Kivo
