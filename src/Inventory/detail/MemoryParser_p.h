// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What /proc/vmstat tells of memory.
#pragma once

#ifndef K7SAL_PROJECT
#error "private to this project"
#endif

#include "Base/TextScanner_p.h"
#include "Foundation/J3Types.h"

namespace Kivo::Inventory {

/// The processes that were killed for lack of memory. @return none when the kernel does not count them
[[nodiscard]] std::optional<uint64> parseOomKills(std::string_view vmstat);

} // namespace Kivo::Inventory
