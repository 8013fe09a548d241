// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The master boot record of a disk.
#pragma once

#include "Foundation/J3Types.h"

#include <array>
#include <optional>
#include <string_view>

namespace Kivo {

constexpr std::size_t MBR_SIZE = 512;
constexpr std::size_t MBR_ENTRY_COUNT = 4;

/// What a partition is for, as far as mounting it needs to know.
enum class PartitionKind : uint8 {
    EMPTY,
    FAT,
    NTFS,
    EXTENDED, ///< holds further partitions
    OTHER     ///< among them a GPT behind its protective entry
};

/// Tell the kind that a partition's type byte stands for.
PartitionKind partitionKind(uint8 type);

/// Take apart a disk's first bytes. @return the kinds of the four primary entries; nothing for a record that is short
///     or has no signature
std::optional<std::array<PartitionKind, MBR_ENTRY_COUNT>> parseMbr(std::string_view record);

} // namespace Kivo
