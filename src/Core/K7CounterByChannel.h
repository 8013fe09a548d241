// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Array of counters for each channel.
#pragma once

#include "Foundation/J3Assert.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>
#include <type_traits>
#include <utility>

namespace Kivo {

/// N counters for each channel, and an identifier. The counts go on until clear(); a counter that overflows wraps.
///
/// A channel or an index that there is none of is reported to j3assertFunc and changes nothing.
///
/// *Threads*: one writer at a time, without a lock. Beside it any thread may read, or copy the whole: each counter is
/// then one that it had at some moment of the reading. setChannelCount() and assignment have no other thread beside
/// them. *Cost*: setChannelCount() and copies allocate; add() is a load and a store.
template <std::size_t N, class T = unsigned int>
class K7CounterByChannel {
    static_assert(N > 0 && std::is_unsigned_v<T>, "a channel has counters, and they wrap");

public:
    using Counters = std::array<T, N>;

    explicit K7CounterByChannel(uint32 channelCount = 0) { setChannelCount(channelCount); }

    /// A snapshot of @p other, safe beside its writer.
    K7CounterByChannel(const K7CounterByChannel& other) : K7CounterByChannel(other._channelCount)
    {
        for (uint32 channel = 0; channel < _channelCount; ++channel)
            assign(_channels[channel], other.countersOf(channel));
        setId(other.id());
    }

    K7CounterByChannel& operator=(const K7CounterByChannel& other)
    {
        K7CounterByChannel copy(other);
        std::swap(_channels, copy._channels);
        std::swap(_channelCount, copy._channelCount);
        setId(copy.id());
        return *this;
    }

    ~K7CounterByChannel() = default;

    [[nodiscard]] uint32 id() const { return _id.load(READS); }

    void setId(uint32 id) { _id.store(id, WRITES); }

    /// Keep the counters of the channels that stay, and start new ones at 0.
    void setChannelCount(uint32 count)
    {
        auto channels = std::make_unique<Channel[]>(count);
        for (uint32 channel = 0; channel < std::min(count, _channelCount); ++channel)
            assign(channels[channel], countersOf(channel));
        _channels = std::move(channels);
        _channelCount = count;
    }

    [[nodiscard]] uint32 channelCount() const { return _channelCount; }

    void add(uint32 channel, uint32 index, T amount = 1)
    {
        if (std::atomic<T>* const counter = find(channel, index, __func__))
            counter->store(static_cast<T>(counter->load(std::memory_order_relaxed) + amount), WRITES);
    }

    void set(uint32 channel, uint32 index, T value)
    {
        if (std::atomic<T>* const counter = find(channel, index, __func__))
            counter->store(value, WRITES);
    }

    /// Set every counter to 0.
    void clear()
    {
        for (uint32 channel = 0; channel < _channelCount; ++channel)
            for (std::atomic<T>& counter : _channels[channel])
                counter.store(0, WRITES);
    }

    /// The channel's counters, all 0 for a channel that there is none of.
    [[nodiscard]] Counters getByChannel(uint32 channel) const
    {
        if (channel < _channelCount)
            return countersOf(channel);
        report(channel, __func__);
        return {};
    }

    /// The channel's counters as rates per second.
    /// @param channel 0 to channelCount() - 1
    /// @param tick    what K7CounterWithTick::prevElapsedTick() gives: each counter is multiplied by tick / 1000.0
    [[nodiscard]] std::array<float32, N> getPerSecond(uint32 channel, uint32 tick) const
    {
        const Counters counters = getByChannel(channel);
        std::array<float32, N> rates;
        std::transform(counters.begin(), counters.end(), rates.begin(),
                       [factor = tick / 1000.0](T count) { return static_cast<float32>(count * factor); });
        return rates;
    }

private:
    using Channel = std::array<std::atomic<T>, N>;

    // What K7SequenceLock asks of values that are read beside their writer.
    static constexpr std::memory_order READS = std::memory_order_acquire;
    static constexpr std::memory_order WRITES = std::memory_order_release;

    [[nodiscard]] Counters countersOf(uint32 channel) const
    {
        Counters counters;
        std::transform(_channels[channel].begin(), _channels[channel].end(), counters.begin(),
                       [](const std::atomic<T>& counter) { return counter.load(READS); });
        return counters;
    }

    static void assign(Channel& channel, const Counters& counters)
    {
        for (std::size_t index = 0; index < N; ++index)
            channel[index].store(counters[index], WRITES);
    }

    std::atomic<T>* find(uint32 channel, uint32 index, const char* function)
    {
        if (channel < _channelCount && index < N)
            return &_channels[channel][index];
        report(channel, function);
        return nullptr;
    }

    [[gnu::cold]] void report(uint32 channel, const char* function) const
    {
        const bool isChannel = channel >= _channelCount;
        j3assertFunc(isChannel ? "channel < channelCount()" : "index < N",
                     isChannel ? "channel is out of range!" : "index is out of range!", function,
                     "Core/K7CounterByChannel", __LINE__);
    }

    std::unique_ptr<Channel[]> _channels;
    uint32 _channelCount = 0;
    std::atomic<uint32> _id{0};
};

} // namespace Kivo
