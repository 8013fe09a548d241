// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The sources that processor and cores share.
#pragma once

#ifndef K7Inventory_BUILD
#error "private to libK7Inventory"
#endif

#include "Inventory/detail/CoreParser_p.h"
#include "Inventory/detail/Source_p.h"

namespace Kivo::Inventory {

/// A group of cores that change their frequency together; the frequencies are in kHz.
struct FrequencyPolicy {
    CoreRanges cores;
    std::optional<int64> current;
    std::optional<int64> largest;
    std::optional<std::string> governor;
};

[[nodiscard]] std::vector<FrequencyPolicy> readFrequencyPolicies(Source& source);

/// @param name "present" or "online"
[[nodiscard]] std::optional<CoreRanges> readCoreList(Source& source, const char* name);

/// @return none when the file is not there or cannot be read
[[nodiscard]] std::optional<SystemStat> readStat(Source& source);

[[nodiscard]] std::vector<CoreInfo> readCpuinfo(Source& source);

} // namespace Kivo::Inventory
