// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Counters of the frames of every channel.
#include "VideoClient/K7FrameStatistic.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace Kivo {
namespace {

constexpr char SOURCE[] = "VideoClient/K7FrameStatistic";

constexpr uint32 IPS_PERIOD = 1000;        // ticks
constexpr uint32 STATISTICS_PERIOD = 5120; // ticks
constexpr uint8 UNRATED_TYPE = 2;
constexpr uint32 UNRECORDED_MODE = 3;

constexpr float32 MEGABITS_PER_BYTE = 1.0F / (1 << 17);

// One frame's info in words that can be read while another takes its place.
struct PackedInfo {
    static constexpr int64 NO_TIME = std::numeric_limits<int64>::min();

    std::atomic<uint64> identity{0}; // channel, mode, type, flag, data size
    std::atomic<uint64> place{0};    // width, height, spot's segment
    std::atomic<uint64> offset{0};   // spot's offset
    std::atomic<int64> time{NO_TIME};

    void store(const K7FrameInfo& info)
    {
        constexpr auto WRITES = std::memory_order_release;
        identity.store(uint64{info.channel()} << 56 | uint64{info.mode()} << 48 | uint64{info.type()} << 40 |
                           uint64{info.flag()} << 32 | info.dataSize(),
                       WRITES);
        place.store(uint64{info.width()} << 48 | uint64{info.height()} << 32 | info.spot().segment, WRITES);
        offset.store(info.spot().offset, WRITES);
        time.store(info.localTime().isValid() ? int64{info.localTime().to_time_t()} : NO_TIME, WRITES);
    }

    [[nodiscard]] K7FrameInfo load() const
    {
        constexpr auto READS = std::memory_order_acquire;
        const uint64 who = identity.load(READS);
        const uint64 where = place.load(READS);
        const int64 when = time.load(READS);
        J3Frame frame;
        frame.setChannel(static_cast<uint8>(who >> 56));
        frame.setType(static_cast<uint8>(who >> 40));
        frame.setFlag(static_cast<uint8>(who >> 32));
        frame.setDataSize(static_cast<uint32>(who));
        frame.setResolution({static_cast<uint16>(where >> 48), static_cast<uint16>(where >> 32)});
        frame.setSpot({static_cast<uint32>(where), offset.load(READS)});
        frame.setLocalTime(when == NO_TIME ? J3Time() : J3Time::from_time_t(when));
        return K7FrameInfo(frame, static_cast<uint8>(who >> 48) + 1);
    }
};

// Rates as whole numbers; the counters' range times the shortest slot's factor exceeds theirs.
int32 toWhole(float32 rate) { return static_cast<int32>(static_cast<uint32>(std::min(rate, 4294967040.0F))); }

template <std::size_t N>
J3String toJson(const K7CounterByChannel<N>& counters)
{
    J3String channels = L"[";
    for (uint32 channel = 0; channel < counters.channelCount(); ++channel) {
        const wchar_t* format = channel == 0 ? L"[%d" : L",[%d";
        for (const uint32 count : counters.getByChannel(channel)) {
            channels.appendf(format, static_cast<int32>(count));
            format = L",%d";
        }
        channels += L"]";
    }
    return channels += L"]";
}

} // namespace

/// The frame that was counted last, for each channel and mode.
class K7FrameStatistic::LastFrames {
public:
    explicit LastFrames(uint32 channelCount) : _channels(channelCount) {}

    /// Keep @p info, whose channel and mode are in range.
    void set(const K7FrameInfo& info)
    {
        _sequence.write([&] { _channels[info.channel()][info.mode()].store(info); });
    }

    [[nodiscard]] std::array<K7FrameInfo, MODES> ofChannel(uint32 channel) const
    {
        return _sequence.read([&] {
            std::array<K7FrameInfo, MODES> frames;
            std::transform(_channels[channel].begin(), _channels[channel].end(), frames.begin(),
                           [](const PackedInfo& info) { return info.load(); });
            return frames;
        });
    }

private:
    K7SequenceLock _sequence;
    std::vector<std::array<PackedInfo, MODES>> _channels;
};

K7FrameStatistic::K7FrameStatistic(uint32 channelCount)
    : _channelCount(channelCount), _lastVideoFrame(std::make_unique<LastFrames>(channelCount)),
      _ipsBpsCounter(IPS_PERIOD, J3TickUtil::resolution()), _modeEnqueueCounter(STATISTICS_PERIOD),
      _dispatchCounter(STATISTICS_PERIOD)
{
    _ipsBpsCounter.setChannelCount(channelCount);
    _modeEnqueueCounter.setChannelCount(channelCount);
    _dispatchCounter.setChannelCount(channelCount);
}

K7FrameStatistic::~K7FrameStatistic() = default;

void K7FrameStatistic::start(uint32 which, uint32 now)
{
    if ((which & IPS_GROUP) != 0)
        _ipsBpsCounter.start(now);
    if ((which & STATISTICS_GROUP) != 0) {
        _modeEnqueueCounter.start(now);
        _dispatchCounter.start(now);
    }
    _use.fetch_or(which, std::memory_order_relaxed);
}

void K7FrameStatistic::stop(uint32 which) { _use.fetch_and(~which, std::memory_order_relaxed); }

bool K7FrameStatistic::addToModeEnqueueCounter(const K7FrameInfo& info, uint32 enqueueIndex, uint32 now)
{
    const uint32 channel = info.channel();
    const uint32 mode = info.mode();
    const bool usesIps = isCounting(IPS_GROUP);
    const bool isRated = usesIps && info.type() != UNRATED_TYPE;
    const bool isRecorded = isCounting(STATISTICS_GROUP) && mode != UNRECORDED_MODE;

    const bool rotated = usesIps && _ipsBpsCounter.rotateIfDue(now);
    if (isRecorded)
        _modeEnqueueCounter.rotateIfDue(now);

    if ((isRated || isRecorded) && (!J3_REQUIRE(channel < _channelCount, "channel is out of range!", SOURCE) ||
                                    !J3_REQUIRE(mode < MODES, "mode is out of range!", SOURCE)))
        return rotated;
    if (isRecorded && mode == ENQUEUED_MODE &&
        !J3_REQUIRE(enqueueIndex < ENQUEUE_OUTCOMES, "enqueueIndex is out of range!", SOURCE))
        return rotated;

    if (isRated) {
        _ipsBpsCounter.current().add(channel, mode, info.dataSize());
        _lastVideoFrame->set(info);
    }
    if (isRecorded)
        _modeEnqueueCounter.current().add(channel, mode, enqueueIndex);
    return rotated;
}

void K7FrameStatistic::addToDispatchCounter(const J3Frame& frame, uint32 dispatchIndex, uint32 now)
{
    if (!isCounting(STATISTICS_GROUP))
        return;
    _dispatchCounter.rotateIfDue(now);
    const auto channel = static_cast<uint32>(K7FrameInfo::channelOf(frame));
    if (J3_REQUIRE(channel < _channelCount, "channel is out of range!", SOURCE) &&
        J3_REQUIRE(dispatchIndex < DISPATCH_OUTCOMES, "dispatchIndex is out of range!", SOURCE))
        _dispatchCounter.current().add(channel, dispatchIndex);
}

void K7FrameStatistic::setIpsBpsStringFormatter(K7IPSFormatter* ipsFormatter, K7BPSFormatter* bpsFormatter)
{
    _ipsFormatter.store(ipsFormatter, std::memory_order_release);
    _bpsFormatter.store(bpsFormatter, std::memory_order_release);
}

void K7FrameStatistic::getIpsResolutionBpsString(uint32 channel, J3String* ips, J3String* bps) const
{
    if (!J3_REQUIRE_ARGUMENT(ips, SOURCE) || !J3_REQUIRE_ARGUMENT(bps, SOURCE) ||
        !J3_REQUIRE(channel < _channelCount, "channel is out of range!", SOURCE))
        return;
    const auto slot = _ipsBpsCounter.previousSnapshot();

    const auto rates = slot.counters.counter().getPerSecond(channel, slot.elapsedTick);
    if (K7IPSFormatter* const formatter = _ipsFormatter.load(std::memory_order_acquire)) {
        formatter->setLastVideoFrames(_lastVideoFrame->ofChannel(channel).data());
        formatter->formatString(rates, ips);
    } else {
        ips->format(L"[%d / %d / %d / %d] ips", toWhole(rates[0]), toWhole(rates[1]), toWhole(rates[2]),
                    toWhole(rates[3]));
    }

    auto megabits = slot.counters.sizer().getPerSecond(channel, slot.elapsedTick);
    for (float32& rate : megabits)
        rate *= MEGABITS_PER_BYTE;
    if (K7BPSFormatter* const formatter = _bpsFormatter.load(std::memory_order_acquire))
        formatter->formatString(megabits, bps);
    else
        bps->format(L"[%2.1f / %2.1f / %2.1f / %2.1f] Mbps", megabits[0], megabits[1], megabits[2], megabits[3]);
}

bool K7FrameStatistic::recordStatistcsToJson(J3String* out) const
{
    if (!J3_REQUIRE_ARGUMENT(out, SOURCE))
        return false;
    const auto modes = _modeEnqueueCounter.currentSnapshot();
    const J3String mode = toJson(modes.counters.modeCounter());
    const J3String enqueue = toJson(modes.counters.enqueueCounter());
    const J3String dispatch = toJson(_dispatchCounter.currentSnapshot().counters);
    const J3Time now = J3Time::from_time_t(std::time(nullptr));
    out->format(L"{\"StartTime\":\"%@\", \"NcTime\":%u, \"Mode\":%@, \"Enqueue\":%@, \"Dispatch\":%@}", &modes.slotTime,
                static_cast<uint32>(now.to_time_t()), &mode, &enqueue, &dispatch);
    return true;
}

} // namespace Kivo
