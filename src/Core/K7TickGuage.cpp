// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Interval gauge over ticks.
#include "Core/K7TickGuage.h"

#include <algorithm>

namespace Kivo {
namespace {

// The tick is all that is told between threads; nothing else is ordered by it.
constexpr auto RELAXED = std::memory_order_relaxed;

} // namespace

K7TickGuage& K7TickGuage::operator=(const K7TickGuage& other)
{
    _interval = other._interval;
    _start.store(other._start.load(RELAXED), RELAXED);
    _dueAtOnce.store(other._dueAtOnce.load(RELAXED), RELAXED);
    return *this;
}

uint32 K7TickGuage::elapsedTick(uint32 now) const { return J3TickUtil::diffTick(_start.load(RELAXED), now); }

bool K7TickGuage::isElapsed(uint32 now) const { return _dueAtOnce.load(RELAXED) || elapsedTick(now) > _interval; }

void K7TickGuage::restart(uint32 now)
{
    _start.store(now, RELAXED);
    _dueAtOnce.store(false, RELAXED);
}

uint32 K7TickGuage::setNowConsiderElapsed(uint32 minimum, uint32 now)
{
    const uint64 elapsed = std::max({elapsedTick(now), minimum, uint32{1}});
    restart(now);
    const uint64 square = uint64{_interval} * _interval;
    return static_cast<uint32>(std::min<uint64>((square + elapsed / 2) / elapsed, UINT32_MAX));
}

} // namespace Kivo
