// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The rows of /proc/diskstats.
#include "Inventory/detail/DiskstatsParser_p.h"

namespace Kivo::Inventory {

//    8       0 sda 1 0 8 7 0 0 0 0 0 8 7 0 0 0 0 0 0
// Major, minor, name; reads, those merged, sectors, ms; the same of writes; requests under way, ms busy. More columns
// follow in later kernels.
bool DiskstatsParser::next(DiskstatsRow* row)
{
    std::string_view line;
    while (_text.line(&line)) {
        TextScanner words(line);
        BlockTraffic& traffic = row->traffic;
        const auto numbers = [&words](auto*... values) { return (words.number(values) && ...); };
        uint64 readSectors = 0;
        uint64 writtenSectors = 0;
        if (!words.skipNumber() || !words.skipNumber() || !words.word(&row->name) || !numbers(&traffic.reads) ||
            !words.skipNumber() || !numbers(&readSectors) || !words.skipNumber() || !numbers(&traffic.writes) ||
            !words.skipNumber() || !numbers(&writtenSectors) || !words.skipNumber() || !words.skipNumber() ||
            !numbers(&traffic.busyTime))
            continue;
        traffic.readBytes = readSectors * SECTOR_SIZE;
        traffic.writtenBytes = writtenSectors * SECTOR_SIZE;
        return true;
    }
    return false;
}

} // namespace Kivo::Inventory
