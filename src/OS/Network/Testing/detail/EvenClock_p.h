// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// A time of day that goes on evenly.
#pragma once

#ifndef K7SAL_PROJECT
#error "private to this project"
#endif

#include "Foundation/J3Types.h"

#include <cstdlib>
#include <ctime>

#include <sys/time.h>

namespace Kivo {

/// The time of day, read once and carried on by the monotonic clock, whatever the time of day is set to meanwhile.
class EvenClock {
public:
    EvenClock() : _start(realtimeAhead()), _lastAhead(_start) {}

    [[nodiscard]] timeval now() const { return toTimeval(read(CLOCK_MONOTONIC) + _start); }

    /// Note that no datagram waits: those to come are stamped by the time of day as it is set now.
    void markNothingWaits() { _lastAhead = realtimeAhead(); }

    /// When a datagram that was taken just now had arrived.
    /// @param stamp the kernel's time of receipt, in nanoseconds of the time of day. Without one (0), or when the clock
    ///              was set while the datagram may have waited, it counts as having arrived now.
    [[nodiscard]] timeval arrivalOf(int64 stamp) const
    {
        const int64 monotonic = read(CLOCK_MONOTONIC);
        const int64 realtime = read(CLOCK_REALTIME);
        const bool clockWasSet = std::abs(realtime - monotonic - _lastAhead) > LARGEST_JITTER;
        const bool isUsable = stamp != 0 && stamp <= realtime && !clockWasSet;
        return toTimeval(monotonic + _start - (isUsable ? realtime - stamp : 0));
    }

private:
    static constexpr int64 SECOND = 1'000'000'000;
    static constexpr int64 LARGEST_JITTER = SECOND / 100; ///< between two readings that belong together

    static int64 read(clockid_t clock)
    {
        timespec time{};
        ::clock_gettime(clock, &time);
        return time.tv_sec * SECOND + time.tv_nsec;
    }

    static int64 realtimeAhead()
    {
        const int64 monotonic = read(CLOCK_MONOTONIC);
        return read(CLOCK_REALTIME) - monotonic;
    }

    static timeval toTimeval(int64 nanoseconds)
    {
        return {static_cast<time_t>(nanoseconds / SECOND), static_cast<suseconds_t>(nanoseconds % SECOND / 1000)};
    }

    int64 _start;     ///< how far the time of day was ahead of the monotonic clock at the beginning
    int64 _lastAhead; ///< the same when nothing waited last
};

} // namespace Kivo
