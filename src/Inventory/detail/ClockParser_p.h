// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Times and time zones.
#pragma once

#ifndef K7SAL_PROJECT
#error "private to this project"
#endif

#include "Foundation/J3Types.h"

#include <optional>
#include <string>

namespace Kivo::Inventory {

/// "2026-11-21T09:30:08Z" of seconds since 1970. @return none before 1970 and after 9999
[[nodiscard]] std::optional<std::string> isoTime(int64 seconds);

/// The zone that a link to a file of the zone database names. @return none when it leads elsewhere
[[nodiscard]] std::optional<std::string> parseZoneLink(std::string_view target);

} // namespace Kivo::Inventory
