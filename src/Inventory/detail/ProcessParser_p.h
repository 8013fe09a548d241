// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What the files of a process tell.
#pragma once

#ifndef K7SAL_PROJECT
#error "private to this project"
#endif

#include "Foundation/J3Types.h"

#include <optional>
#include <string>
#include <string_view>

namespace Kivo::Inventory {

/// What /proc/N/stat tells.
struct ProcessStat {
    std::string_view name;
    std::string_view state; ///< in words
    int32 parent = 0;
    uint32 threads = 0;
    float64 processorTime = 0; ///< seconds
    float64 startTime = 0;     ///< seconds after the start of the machine
};

/// @return nothing when the text is cut or is something else
[[nodiscard]] std::optional<ProcessStat> parseProcessStat(std::string_view text);

/// What /proc/N/status tells.
struct ProcessStatus {
    std::optional<uint32> user;     ///< the effective one
    std::optional<uint64> resident; ///< KiB
};

[[nodiscard]] ProcessStatus parseProcessStatus(std::string_view text);

/// Take /proc/N/cmdline apart: arguments that end in zero bytes, nothing of a kernel thread.
struct ProcessArguments {
    std::string_view program;
    std::string line; ///< the arguments with blanks between them
};

[[nodiscard]] std::optional<ProcessArguments> parseProcessArguments(std::string_view text);

} // namespace Kivo::Inventory
