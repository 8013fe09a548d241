// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Milliseconds of a clock that only goes forward.
#include "Foundation/J3TickUtil.h"

#include <ctime>

namespace Kivo {

uint32 J3TickUtil::currentTick()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return static_cast<uint32>(static_cast<uint64>(now.tv_sec) * 1000 + static_cast<uint64>(now.tv_nsec) / 1'000'000);
}

} // namespace Kivo
