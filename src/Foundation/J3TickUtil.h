// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Milliseconds of a clock that only goes forward.
#pragma once

#include "Foundation/J3Types.h"

namespace Kivo {

/// Milliseconds of the monotonic clock, for measuring how long something took. They wrap after 49 days.
class J3_API J3TickUtil {
public:
    /// The tick now, as fine as the kernel's timer interrupt, a few milliseconds.
    /// *Source*: CLOCK_MONOTONIC_COARSE. *Cost*: no system call
    [[nodiscard]] static uint32 currentTick();

    /// By how many ticks currentTick() goes on at a time, rounded up: a time that is measured with it may be this much
    /// shorter than it seems.
    /// *Source*: clock_getres(2)
    [[nodiscard]] static uint32 resolution();

    /// The ticks from the first to the second, over a wrap too.
    [[nodiscard]] static uint32 diffTick(uint32 from, uint32 to) { return to - from; }
};

} // namespace Kivo
