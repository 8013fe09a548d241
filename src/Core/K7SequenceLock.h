// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Lets readers see several values of one writer as they stood at one moment.
#pragma once

#include "Core/K7CoreApi.h"
#include "Foundation/J3Thread.h"

#include <atomic>

namespace Kivo {

/// A number that one writer makes odd while it changes several values and even when it is done. A reader that met a
/// change reads again, so that the writer never waits.
///
/// The values themselves are atomics that the writer stores with memory_order_release and readers load with
/// memory_order_acquire.
/// *Threads*: one writer at a time, any number of readers beside it.
class K7SequenceLock {
public:
    K7SequenceLock() = default;
    K7SequenceLock(const K7SequenceLock&) = delete;
    K7SequenceLock& operator=(const K7SequenceLock&) = delete;

    /// Change values: what @p change stores is seen whole or not at all.
    template <class Change>
    void write(Change&& change)
    {
        // Counted up, so that two writers, which must not be, leave readers with a mixture but never waiting.
        _number.fetch_add(1, std::memory_order_acq_rel);
        change();
        _number.fetch_add(1, std::memory_order_release);
    }

    /// Read values: what @p read gives by value when no change fell into it.
    /// *Cost*: a reader that meets a change sleeps a millisecond, so that a writer of a lower priority gets on.
    template <class Read>
    [[nodiscard]] auto read(Read&& read) const
    {
        for (;; J3Thread::sleep(1)) {
            const uint32 before = _number.load(std::memory_order_acquire);
            if (before % 2 != 0)
                continue;
            auto result = read();
            if (_number.load(std::memory_order_relaxed) == before)
                return result;
        }
    }

private:
    std::atomic<uint32> _number{0};
};

} // namespace Kivo
