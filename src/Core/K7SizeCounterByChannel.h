// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Counters of items and of their sizes for each channel.
#pragma once

#include "Core/K7CounterByChannel.h"

namespace Kivo {

/// How many items came and how large they were together, N of each for each channel.
/// *Threads*, *Cost* and what happens out of range: as K7CounterByChannel; an item that is being counted beside a
/// reader may show in the one and not yet in the other.
template <std::size_t N, class T = unsigned int>
class K7SizeCounterByChannel {
public:
    using Counter = K7CounterByChannel<N, T>;

    explicit K7SizeCounterByChannel(uint32 channelCount = 0) : _counter(channelCount), _sizer(channelCount) {}

    [[nodiscard]] uint32 id() const { return _counter.id(); }

    void setId(uint32 id)
    {
        _counter.setId(id);
        _sizer.setId(id);
    }

    void setChannelCount(uint32 count)
    {
        _counter.setChannelCount(count);
        _sizer.setChannelCount(count);
    }

    [[nodiscard]] uint32 channelCount() const { return _counter.channelCount(); }

    /// Count one item of @p size.
    void add(uint32 channel, uint32 index, T size)
    {
        _counter.add(channel, index, 1);
        _sizer.add(channel, index, size);
    }

    void clear()
    {
        _counter.clear();
        _sizer.clear();
    }

    /// The numbers of items.
    [[nodiscard]] const Counter& counter() const { return _counter; }

    /// The sums of their sizes.
    [[nodiscard]] const Counter& sizer() const { return _sizer; }

private:
    Counter _counter;
    Counter _sizer;
};

} // namespace Kivo
