// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The master boot record of a disk.
#include "OS/System/Platform/Linux/detail/MbrParser_p.h"

namespace Kivo {

namespace {

constexpr std::size_t ENTRIES_OFFSET = 446;
constexpr std::size_t ENTRY_SIZE = 16;
constexpr std::size_t TYPE_OFFSET = 4;
constexpr std::size_t SIGNATURE_OFFSET = 510;

} // namespace

PartitionKind partitionKind(uint8 type)
{
    switch (type) {
    case 0x00:
        return PartitionKind::EMPTY;
    case 0x01: // FAT12
    case 0x04: // FAT16 below 32 MiB
    case 0x06: // FAT16
    case 0x0B: // FAT32
    case 0x0C: // FAT32, addressed by blocks
    case 0x0E: // FAT16, addressed by blocks
        return PartitionKind::FAT;
    case 0x07:
        return PartitionKind::NTFS;
    case 0x05:
    case 0x0F: // addressed by blocks
    case 0x85: // Linux's own
        return PartitionKind::EXTENDED;
    default:
        return PartitionKind::OTHER;
    }
}

std::optional<std::array<PartitionKind, MBR_ENTRY_COUNT>> parseMbr(std::string_view record)
{
    if (record.size() < MBR_SIZE || record.substr(SIGNATURE_OFFSET, 2) != "\x55\xAA")
        return std::nullopt;
    std::array<PartitionKind, MBR_ENTRY_COUNT> kinds{};
    for (std::size_t i = 0; i < MBR_ENTRY_COUNT; ++i)
        kinds[i] = partitionKind(static_cast<uint8>(record[ENTRIES_OFFSET + i * ENTRY_SIZE + TYPE_OFFSET]));
    return kinds;
}

} // namespace Kivo
