// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Interval gauge over ticks.
#pragma once

#include "Core/K7CoreApi.h"
#include "Foundation/J3TickUtil.h"

#include <atomic>

namespace Kivo {

/// Tells when an interval has passed. Ticks are the milliseconds of J3TickUtil::currentTick(); they may wrap once
/// within an interval. Every operation takes the current tick as its last argument where the caller already has it.
/// *Threads*: any; two that restart it at the same time leave the start of either.
class K7CORE_API K7TickGuage {
public:
    /// @param interval ticks, 0 to 2^32 - 1
    /// @param elapsed  true makes the gauge due at once, until it is restarted
    /// @param now      the current tick
    explicit K7TickGuage(uint32 interval, bool elapsed = false, uint32 now = J3TickUtil::currentTick())
        : _interval(interval), _start(now), _dueAtOnce(elapsed)
    {}

    K7TickGuage(const K7TickGuage& other) : K7TickGuage(other._interval, other._dueAtOnce, other._start) {}

    K7TickGuage& operator=(const K7TickGuage& other);
    ~K7TickGuage() = default;

    [[nodiscard]] uint32 interval() const { return _interval; }

    /// Ticks since the start.
    [[nodiscard]] uint32 elapsedTick(uint32 now = J3TickUtil::currentTick()) const;

    /// Whether more ticks than the interval have passed since the start.
    [[nodiscard]] bool isElapsed(uint32 now = J3TickUtil::currentTick()) const;

    /// Start again.
    void restart(uint32 now = J3TickUtil::currentTick());

    /// Start again and give what turns a count made since the last start into a rate.
    /// @param minimum the shortest time, in ticks, that is taken for the time since the last start
    /// @param now     the current tick
    /// @return interval * interval / elapsed, rounded, at most 2^32 - 1: a count times this, divided by the interval,
    ///         is the count per interval however long the count went on
    uint32 setNowConsiderElapsed(uint32 minimum, uint32 now = J3TickUtil::currentTick());

private:
    uint32 _interval;
    std::atomic<uint32> _start;
    std::atomic<bool> _dueAtOnce;
};

} // namespace Kivo
