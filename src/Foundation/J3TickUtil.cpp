// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Milliseconds of a clock that only goes forward.
#include "Foundation/J3TickUtil.h"

#include <ctime>

namespace Kivo {
namespace {

constexpr clockid_t CLOCK = CLOCK_MONOTONIC_COARSE;
constexpr long NANOSECONDS_PER_TICK = 1'000'000;

} // namespace

uint32 J3TickUtil::currentTick()
{
    timespec now{};
    clock_gettime(CLOCK, &now);
    return static_cast<uint32>(static_cast<uint64>(now.tv_sec) * 1000 +
                               static_cast<uint64>(now.tv_nsec / NANOSECONDS_PER_TICK));
}

uint32 J3TickUtil::resolution()
{
    timespec step{};
    clock_getres(CLOCK, &step);
    return static_cast<uint32>((step.tv_nsec + NANOSECONDS_PER_TICK - 1) / NANOSECONDS_PER_TICK);
}

} // namespace Kivo
