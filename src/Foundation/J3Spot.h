// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Where a frame lies in a recording.
#pragma once

#include "Foundation/J3Types.h"

#include <compare>

namespace Kivo {

/// Where a frame lies in a recording; later frames compare greater.
struct J3Spot {
    uint32 segment = 0; ///< the number of the recording's segment
    uint64 offset = 0;  ///< bytes from the segment's beginning

    friend auto operator<=>(const J3Spot&, const J3Spot&) = default;
};

} // namespace Kivo
