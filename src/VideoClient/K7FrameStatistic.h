// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Counters of the frames of every channel.
#pragma once

#include "Core/K7CounterWithTick.h"
#include "Core/K7SizeCounterByChannel.h"
#include "VideoClient/K7CounterFormatter.h"

#include <memory>

namespace Kivo {

/// Counts the frames of every channel in two groups that are switched apart: the rates (images and bytes per second in
/// each stream mode) and the statistics (frames per mode, per enqueue outcome and per dispatch outcome).
///
/// Each counter is a ring of two slots. A slot ends with the first frame after its period: 1000 ticks for the rates,
/// 5120 for the statistics. So the slot before the current one is complete, and without frames nothing moves on.
///
/// A frame that would be counted for a channel, a mode or an outcome that there is none of is reported to j3assertFunc
/// and counts nowhere.
///
/// *Threads*: frames are counted on one thread at a time, without a lock. Beside it any thread may switch groups, set
/// formatters and read. *Cost*: counting a frame neither allocates nor waits.
class K7SAL_API K7FrameStatistic {
public:
    static constexpr uint32 IPS_GROUP = 1;        ///< the bit of the rates
    static constexpr uint32 STATISTICS_GROUP = 2; ///< the bit of the statistics
    static constexpr uint32 MODES = 4;            ///< stream modes
    static constexpr uint32 ENQUEUE_OUTCOMES = 11;
    static constexpr uint32 DISPATCH_OUTCOMES = 8;

    /// Frames per mode, and of mode 2 per enqueue outcome.
    class K7ModeEnqueFrameCounter {
    public:
        using ModeCounter = K7CounterByChannel<MODES>;
        using EnqueueCounter = K7CounterByChannel<ENQUEUE_OUTCOMES>;

        void setId(uint32 id)
        {
            _modeCounter.setId(id);
            _enqueueCounter.setId(id);
        }

        void setChannelCount(uint32 count)
        {
            _modeCounter.setChannelCount(count);
            _enqueueCounter.setChannelCount(count);
        }

        /// Count one frame; its enqueue outcome counts in mode 2 alone.
        void add(uint32 channel, uint32 mode, uint32 enqueueIndex)
        {
            _modeCounter.add(channel, mode);
            if (mode == ENQUEUED_MODE)
                _enqueueCounter.add(channel, enqueueIndex);
        }

        void clear()
        {
            _modeCounter.clear();
            _enqueueCounter.clear();
        }

        [[nodiscard]] const ModeCounter& modeCounter() const { return _modeCounter; }
        [[nodiscard]] const EnqueueCounter& enqueueCounter() const { return _enqueueCounter; }

    private:
        ModeCounter _modeCounter;
        EnqueueCounter _enqueueCounter;
    };

    using K7ModeIpsSizeCounter = K7CounterWithTick<K7SizeCounterByChannel<MODES>, 2>;
    using K7DispatchFrameCounter = K7CounterWithTick<K7CounterByChannel<DISPATCH_OUTCOMES>, 2>;

    /// @param channelCount channels 0 to channelCount - 1 are counted, at most 256
    explicit K7FrameStatistic(uint32 channelCount);
    ~K7FrameStatistic();
    K7FrameStatistic(const K7FrameStatistic&) = delete;
    K7FrameStatistic& operator=(const K7FrameStatistic&) = delete;

    /// Switch groups on and begin their periods anew: the current slot is cleared, the complete one stays.
    /// @param which IPS_GROUP, STATISTICS_GROUP or both; other bits do nothing by themselves
    /// @param now   the current tick
    void start(uint32 which, uint32 now = J3TickUtil::currentTick());

    /// Switch groups off; what they counted stays readable.
    void stop(uint32 which);

    /// Count a frame that was given to a queue.
    ///
    /// The rates leave out frames of type 2, the statistics those of mode 3.
    /// @param info         the frame
    /// @param enqueueIndex what became of it, 0 to 10 by the caller's convention; counted for frames of mode 2 alone
    /// @param now          the current tick
    /// @return whether a slot of the rates was completed
    bool addToModeEnqueueCounter(const K7FrameInfo& info, uint32 enqueueIndex, uint32 now = J3TickUtil::currentTick());

    /// Count a frame that was dispatched, when the statistics are on.
    /// @param frame         its channel is K7FrameInfo::channelOf()
    /// @param dispatchIndex what became of it, 0 to 7 by the caller's convention
    /// @param now           the current tick
    void addToDispatchCounter(const J3Frame& frame, uint32 dispatchIndex, uint32 now = J3TickUtil::currentTick());

    /// Replace how rates are written; null brings back the usual form. Formatters are not owned and must live until
    /// they are replaced and no reader is under way.
    void setIpsBpsStringFormatter(K7IPSFormatter* ipsFormatter, K7BPSFormatter* bpsFormatter);

    /// Write a channel's rates in the last complete slot, true ones per second however long the slot was; its length is
    /// measured to J3TickUtil::resolution(), and of the rates that this allows the highest is taken.
    /// @param channel 0 to the number of channels - 1; any other is reported to j3assertFunc and writes nothing
    /// @param ips     becomes "[25 / 0 / 0 / 0] ips", cut to whole numbers, or what the formatter makes of it
    /// @param bps     becomes "[4.0 / 0.0 / 0.0 / 0.0] Mbps" (2^20 bits), or what the formatter makes of it
    void getIpsResolutionBpsString(uint32 channel, J3String* ips, J3String* bps) const;

    /// Write the statistics of the current slots as a JSON document: the time at which the slot of modes began (local,
    /// empty before the first start), the time now in seconds since 1970 (its low 32 bits), and for each channel the
    /// frames per mode, per enqueue outcome and per dispatch outcome.
    ///
    ///     {"StartTime":"2026-11-21 19:00:00", "NcTime":1795287601, "Mode":[[25,0,3,0]],
    ///      "Enqueue":[[3,0,0,0,0,0,0,0,0,0,0]], "Dispatch":[[0,0,0,0,0,0,0,0]]}
    /// @param out becomes the document, on one line
    /// @return true; false for a null @p out, which is reported to j3assertFunc
    bool recordStatistcsToJson(J3String* out) const;

    /// Masks of frame types and flags, kept for the application; the counters do not look at them.
    /// @{
    uint32 _inclueFilter = 0xFFFF13FF;
    uint32 _funnelFilter = 0xFFFFFF00;
    /// @}

private:
    class K7SAL_LOCAL LastFrames;

    static constexpr uint32 ENQUEUED_MODE = 2;

    [[nodiscard]] K7SAL_LOCAL bool isCounting(uint32 group) const
    {
        return (_use.load(std::memory_order_relaxed) & group) != 0;
    }

    const uint32 _channelCount;
    std::atomic<uint32> _use{0};
    std::unique_ptr<LastFrames> _lastVideoFrame;
    K7ModeIpsSizeCounter _ipsBpsCounter;
    std::atomic<K7IPSFormatter*> _ipsFormatter{nullptr};
    std::atomic<K7BPSFormatter*> _bpsFormatter{nullptr};
    K7CounterWithTick<K7ModeEnqueFrameCounter, 2> _modeEnqueueCounter;
    K7DispatchFrameCounter _dispatchCounter;
};

} // namespace Kivo
