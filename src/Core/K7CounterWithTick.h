// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Ring of counters that rotates on a tick period.
#pragma once

#include "Core/K7TickGuage.h"
#include "Foundation/J3Time.h"

#include <array>
#include <ctime>

namespace Kivo {

/// A ring of counters of which one, the current slot, is counted into, so that the one before it always holds a whole
/// period. The owner calls rotateIfDue() before it counts.
/// @tparam T     what is kept in a slot; it has setChannelCount(uint32), clear() and setId(uint32)
/// @tparam Slots the number of slots, at least 2
/// *Threads*: one at a time, without a lock. *Cost*: only setChannelCount() allocates.
template <class T, uint32 Slots>
class K7CounterWithTick {
    static_assert(Slots >= 2, "a ring needs a slot to count into and one to read");

public:
    /// @param period ticks after which a slot is complete
    explicit K7CounterWithTick(uint32 period) : _tickGuage(period), _counterId(Slots), _prevElapsedTick(period)
    {
        for (uint32 slot = 0; slot < Slots; ++slot)
            _counters[slot].setId(slot);
    }

    void setChannelCount(uint32 count)
    {
        for (T& counter : _counters)
            counter.setChannelCount(count);
    }

    /// Start a period now: clear the current slot, which keeps its identifier, and take the previous one for a period
    /// of the usual length.
    void start(uint32 now = J3TickUtil::currentTick())
    {
        _currentSlotTime.setUtcTime(std::time(nullptr));
        _tickGuage.restart(now);
        _prevElapsedTick = _tickGuage.interval();
        _counters[_currentSlot].clear();
    }

    /// Go on to the next slot, cleared and under a new identifier, when more ticks than the period have passed.
    /// @return whether it did
    bool rotateIfDue(uint32 now = J3TickUtil::currentTick())
    {
        if (!_tickGuage.isElapsed(now))
            return false;
        _prevElapsedTick = _tickGuage.setNowConsiderElapsed(SHORTEST_PERIOD, now);
        _currentSlot = (_currentSlot + 1) % Slots;
        _counters[_currentSlot].clear();
        _counters[_currentSlot].setId(_counterId);
        _counterId += Slots;
        _currentSlotTime.setUtcTime(std::time(nullptr));
        return true;
    }

    /// The slot that is counted into.
    [[nodiscard]] T& current() { return _counters[_currentSlot]; }

    [[nodiscard]] const T& current() const { return _counters[_currentSlot]; }

    /// The last complete slot.
    [[nodiscard]] const T& previous() const { return _counters[(_currentSlot + Slots - 1) % Slots]; }

    /// What K7TickGuage::setNowConsiderElapsed() gave for the previous slot, the period before the first rotation. With
    /// a period of 1000, a count times this, divided by 1000.0, is its rate per second.
    [[nodiscard]] uint32 prevElapsedTick() const { return _prevElapsedTick; }

    /// When the current slot began; invalid before start().
    [[nodiscard]] const J3Time& currentSlotTime() const { return _currentSlotTime; }

private:
    static constexpr uint32 SHORTEST_PERIOD = 100; ///< ticks

    std::array<T, Slots> _counters;
    K7TickGuage _tickGuage;
    uint32 _counterId;
    uint32 _currentSlot = 0;
    J3Time _currentSlotTime;
    uint32 _prevElapsedTick;
};

} // namespace Kivo
