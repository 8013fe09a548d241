// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The names of sensors' attributes.
#pragma once

#ifndef K7SAL_PROJECT
#error "private to this project"
#endif

#include "Base/TextScanner_p.h"
#include "Foundation/J3Types.h"

namespace Kivo::Inventory {

/// A name of parts around one number: "temp" 1 "_crit_alarm", "trip_point_" 0 "_type", "hwmon" 3 "".
struct NumberedName {
    std::string_view prefix;
    uint32 number;
    std::string_view suffix;
};

/// @return none when the name has no number after a prefix without digits
[[nodiscard]] std::optional<NumberedName> parseNumberedName(std::string_view name);

/// Whether one device stands before another one: by their prefixes, then by their numbers.
[[nodiscard]] bool standsBefore(std::string_view left, std::string_view right);

} // namespace Kivo::Inventory
