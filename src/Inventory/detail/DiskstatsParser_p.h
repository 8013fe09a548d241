// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The rows of /proc/diskstats.
#pragma once

#include "Base/TextScanner_p.h"
#include "Inventory/BlockDevice.h"

namespace Kivo::Inventory {

constexpr uint64 SECTOR_SIZE = 512; ///< of every size that the kernel tells, whatever the device's own is

struct DiskstatsRow {
    std::string_view name; ///< of a device or a partition; '/' where sysfs has '!'
    BlockTraffic traffic;
};

/// Delivers the rows of /proc/diskstats.
class DiskstatsParser {
public:
    explicit DiskstatsParser(std::string_view text) : _text(text) {}

    /// @return false at the end
    bool next(DiskstatsRow* row);

private:
    TextScanner _text;
};

} // namespace Kivo::Inventory
