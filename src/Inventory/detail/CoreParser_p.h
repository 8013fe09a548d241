// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Processor cores: lists of their numbers, their times, what they are.
#pragma once

#ifndef K7SAL_PROJECT
#error "private to this project"
#endif

#include "Inventory/detail/NumberParser_p.h"

#include <string>
#include <vector>

namespace Kivo::Inventory {

/// Numbers from first to last.
struct CoreRange {
    uint32 first;
    uint32 last;

    friend bool operator==(const CoreRange&, const CoreRange&) = default;
};

using CoreRanges = std::vector<CoreRange>;

/// "0-3,6", or with blanks for commas; an empty text is an empty list. @return none for anything else
[[nodiscard]] std::optional<CoreRanges> parseCoreList(std::string_view text);

/// Time since the start in ticks of a hundredth of a second, whatever the kernel's own tick is.
struct CoreTimes {
    uint64 busy;
    uint64 idle;

    [[nodiscard]] static Real seconds(uint64 ticks);

    /// The busy part of the whole in percent; none without any time.
    [[nodiscard]] std::optional<Real> usePercent() const;
};

struct SystemStat {
    std::optional<CoreTimes> all;
    std::optional<int64> bootTime; ///< seconds since 1970

    struct Core {
        uint32 number;
        CoreTimes times;
    };
    std::vector<Core> cores; ///< those that are online
};

/// The rows of /proc/stat that an inventory needs. @param mostCores what is beyond is left out
[[nodiscard]] SystemStat parseStat(std::string_view text, std::size_t mostCores);

struct CoreInfo {
    uint32 number;
    std::string model;               ///< empty when not known
    std::optional<Real> megahertz;   ///< not on ARM
    std::optional<uint32> packageId; ///< the socket; not on ARM
};

/// The blocks of /proc/cpuinfo, of x86 and of ARM. @param mostCores what is beyond is left out
[[nodiscard]] std::vector<CoreInfo> parseCpuinfo(std::string_view text, std::size_t mostCores);

} // namespace Kivo::Inventory
