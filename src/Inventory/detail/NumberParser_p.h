// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Numbers with decimals, as the kernel writes them.
#pragma once

#ifndef K7SAL_PROJECT
#error "private to this project"
#endif

#include "Base/TextScanner_p.h"
#include "Inventory/Value.h"

namespace Kivo::Inventory {

/// "0.08": a decimal number with as many decimals as are written. @return none for anything else, "nan" included
[[nodiscard]] std::optional<Real> parseReal(std::string_view text);

/// A number of thousandths ("45500" millidegrees, kHz for MHz) without the zeros at its end.
/// @param leastDecimals how many decimals remain at least
[[nodiscard]] Real thousandths(int64 number, int leastDecimals = 0);

} // namespace Kivo::Inventory
