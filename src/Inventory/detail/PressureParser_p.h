// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The text of the files in /proc/pressure.
#pragma once

#ifndef K7SAL_PROJECT
#error "private to this project"
#endif

#include "Inventory/detail/NumberParser_p.h"

namespace Kivo::Inventory {

struct PressureLine {
    Real average10;
    Real average60;
    Real average300;
    uint64 microseconds;
};

struct PressureText {
    std::optional<PressureLine> some;
    std::optional<PressureLine> full; ///< not of the processor before kernel 5.13
};

/// @return none when there is no line in its form
[[nodiscard]] std::optional<PressureText> parsePressure(std::string_view text);

} // namespace Kivo::Inventory
