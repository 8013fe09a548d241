// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Array of counters for each channel.
#pragma once

#include "Foundation/J3Assert.h"

#include <algorithm>
#include <array>
#include <type_traits>
#include <vector>

namespace Kivo {

/// N counters for each channel, and an identifier. The counts go on until clear(); a counter that overflows wraps.
///
/// A channel or an index that there is none of is reported to j3assertFunc and changes nothing.
/// *Threads*: one at a time, without a lock. *Cost*: only setChannelCount() allocates.
template <std::size_t N, class T = unsigned int>
class K7CounterByChannel {
    static_assert(N > 0 && std::is_unsigned_v<T>, "a channel has counters, and they wrap");

public:
    using Counters = std::array<T, N>;

    explicit K7CounterByChannel(uint32 channelCount = 0) : _channels(channelCount) {}

    [[nodiscard]] uint32 id() const { return _id; }

    void setId(uint32 id) { _id = id; }

    /// Keep the counters of the channels that stay, and start new ones at 0.
    void setChannelCount(uint32 count) { _channels.resize(count); }

    [[nodiscard]] uint32 channelCount() const { return static_cast<uint32>(_channels.size()); }

    void add(uint32 channel, uint32 index, T amount = 1)
    {
        if (T* const counter = find(channel, index, __func__))
            *counter += amount;
    }

    void set(uint32 channel, uint32 index, T value)
    {
        if (T* const counter = find(channel, index, __func__))
            *counter = value;
    }

    /// Set every counter to 0.
    void clear() { std::fill(_channels.begin(), _channels.end(), Counters{}); }

    /// The channel's counters, all 0 for a channel that there is none of; valid until setChannelCount().
    [[nodiscard]] const Counters& getByChannel(uint32 channel) const
    {
        static constexpr Counters NONE{};
        if (channel < _channels.size())
            return _channels[channel];
        report(channel, __func__);
        return NONE;
    }

    /// The channel's counters as rates per second.
    /// @param tick what K7CounterWithTick::prevElapsedTick() gives: each counter is multiplied by tick / 1000.0
    [[nodiscard]] std::array<float32, N> getPerSecond(uint32 channel, uint32 tick) const
    {
        const Counters& counters = getByChannel(channel);
        std::array<float32, N> rates;
        std::transform(counters.begin(), counters.end(), rates.begin(),
                       [factor = tick / 1000.0](T count) { return static_cast<float32>(count * factor); });
        return rates;
    }

private:
    T* find(uint32 channel, uint32 index, const char* function)
    {
        if (channel < _channels.size() && index < N)
            return &_channels[channel][index];
        report(channel, function);
        return nullptr;
    }

    void report(uint32 channel, const char* function) const
    {
        const bool isChannel = channel >= _channels.size();
        j3assertFunc(isChannel ? "channel < channelCount()" : "index < N",
                     isChannel ? "channel is out of range!" : "index is out of range!", function,
                     "Core/K7CounterByChannel", __LINE__);
    }

    std::vector<Counters> _channels;
    uint32 _id = 0;
};

} // namespace Kivo
