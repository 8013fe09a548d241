// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Ring of counters that rotates on a tick period.
#pragma once

#include "Core/K7SequenceLock.h"
#include "Core/K7TickGuage.h"
#include "Foundation/J3Time.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <ctime>

namespace Kivo {

/// A ring of counters of which one, the current slot, is counted into, so that the one before it always holds a whole
/// period. The owner calls rotateIfDue() before it counts.
/// @tparam T     what is kept in a slot; it has setChannelCount(uint32), clear() and setId(uint32), and copies that are
///               safe beside its writer, as those of K7CounterByChannel are
/// @tparam Slots the number of slots, at least 2
///
/// *Threads*: one writer at a time, without a lock: start(), rotateIfDue() and the references that current() and
/// previous() give are its own. Beside it any thread may take a snapshot. setChannelCount() has no other thread beside
/// it. *Cost*: only setChannelCount() and snapshots allocate.
template <class T, uint32 Slots>
class K7CounterWithTick {
    static_assert(Slots >= 2, "a ring needs a slot to count into and one to read");

public:
    /// One slot as a value.
    struct Snapshot {
        T counters;
        uint32 elapsedTick; ///< what K7CounterWithTick::prevElapsedTick() gave with it
        J3Time slotTime;    ///< when the slot that was the current one began; invalid before start()
    };

    /// @param period     ticks after which a slot is complete
    /// @param resolution by how many ticks the given ones go on at a time: a slot counts as that much shorter than it
    ///                   was measured, so that a rate that is cut to a whole number is not one less half of the time
    explicit K7CounterWithTick(uint32 period, uint32 resolution = 0)
        : _resolution(resolution), _tickGuage(period), _counterId(Slots), _prevElapsedTick(period)
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
        _sequence.write([&] {
            _tickGuage.restart(now);
            beginSlot(_tickGuage.interval());
        });
    }

    /// Go on to the next slot, cleared and under a new identifier, when more ticks than the period have passed.
    /// @return whether it did
    bool rotateIfDue(uint32 now = J3TickUtil::currentTick())
    {
        if (!_tickGuage.isElapsed(now))
            return false;
        _sequence.write([&] {
            _currentSlot.store((currentSlot() + 1) % Slots, WRITES);
            current().setId(_counterId);
            _counterId += Slots;
            const uint32 surplus = std::min(_resolution, _tickGuage.elapsedTick(now));
            beginSlot(_tickGuage.setNowConsiderElapsed(SHORTEST_PERIOD, now - surplus));
            _tickGuage.restart(now);
        });
        return true;
    }

    /// The slot that is counted into.
    /// @{
    [[nodiscard]] T& current() { return _counters[currentSlot()]; }
    [[nodiscard]] const T& current() const { return _counters[currentSlot()]; }
    /// @}

    /// The last complete slot.
    [[nodiscard]] const T& previous() const { return _counters[(currentSlot() + Slots - 1) % Slots]; }

    /// The last complete slot with the elapsed tick that belongs to it.
    [[nodiscard]] Snapshot previousSnapshot() const
    {
        return _sequence.read([this] { return Snapshot{previous(), prevElapsedTick(), currentSlotTime()}; });
    }

    /// The slot that is counted into, as far as it has come, with the time at which it began.
    [[nodiscard]] Snapshot currentSnapshot() const
    {
        return _sequence.read([this] { return Snapshot{current(), prevElapsedTick(), currentSlotTime()}; });
    }

    /// What K7TickGuage::setNowConsiderElapsed() gave for the previous slot, the period before the first rotation. With
    /// a period of 1000, a count times this, divided by 1000.0, is its rate per second.
    [[nodiscard]] uint32 prevElapsedTick() const { return _prevElapsedTick.load(READS); }

    /// When the current slot began; invalid before start().
    [[nodiscard]] J3Time currentSlotTime() const
    {
        return _hasStarted.load(READS) ? J3Time::from_time_t(_currentSlotTime.load(READS)) : J3Time();
    }

private:
    static constexpr uint32 SHORTEST_PERIOD = 100; ///< ticks

    static constexpr std::memory_order READS = std::memory_order_acquire;
    static constexpr std::memory_order WRITES = std::memory_order_release;

    [[nodiscard]] uint32 currentSlot() const { return _currentSlot.load(READS); }

    void beginSlot(uint32 elapsedTick)
    {
        _prevElapsedTick.store(elapsedTick, WRITES);
        _currentSlotTime.store(std::time(nullptr), WRITES);
        _hasStarted.store(true, WRITES);
        current().clear();
    }

    K7SequenceLock _sequence; ///< odd while a slot begins
    std::array<T, Slots> _counters;
    const uint32 _resolution;
    K7TickGuage _tickGuage;
    uint32 _counterId;
    std::atomic<uint32> _currentSlot{0};
    std::atomic<std::time_t> _currentSlotTime{0};
    std::atomic<bool> _hasStarted{false};
    std::atomic<uint32> _prevElapsedTick;
};

} // namespace Kivo
