// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Where the video pipeline reports every frame.
#include "VideoClient/K7FrameTracer.h"

#include "Foundation/J3Immortal.h"

namespace Kivo {
namespace {

constexpr uint32 ALL_GROUPS = 255;
constexpr uint32 USUAL_TIMER_VALUE = 1;

K7FrameTracer& frameTracer(uint32 timerValue = USUAL_TIMER_VALUE)
{
    static J3Immortal<K7FrameTracer> tracer(timerValue);
    return *tracer;
}

} // namespace

K7FrameTracer::K7FrameTracer(uint32 timerValue) : MCP_OP_TIMER_VALUE(timerValue), _statistic(_cameraCount) {}

K7FrameTracer::~K7FrameTracer() = default;

void K7FrameTracer::cleanup()
{
    _traceIps.store(false, std::memory_order_relaxed);
    _useStatistics.store(false, std::memory_order_relaxed);
    _statistic.stop(ALL_GROUPS);
}

void K7FrameTracer::setTraceIpsInfo(bool on)
{
    _traceIps.store(on, std::memory_order_relaxed);
    on ? _statistic.start(K7FrameStatistic::IPS_GROUP) : _statistic.stop(K7FrameStatistic::IPS_GROUP);
}

bool K7FrameTracer::toggleTraceIpsInfo()
{
    const bool on = !isTraceIpsInfoOn();
    setTraceIpsInfo(on);
    return on;
}

bool K7FrameTracer::toggleUseStatistics()
{
    const bool on = !isStatisticsOn();
    _useStatistics.store(on, std::memory_order_relaxed);
    on ? _statistic.start(K7FrameStatistic::STATISTICS_GROUP) : _statistic.stop(K7FrameStatistic::STATISTICS_GROUP);
    return on;
}

bool K7FrameTracer::isCamera(const J3Frame& frame) const
{
    return static_cast<uint32>(K7FrameInfo::channelOf(frame)) < _cameraCount;
}

bool K7FrameTracer::traceFrame(const J3Frame& frame, int32 frameMode, uint32 enqueueIndex)
{
    if (!(isTraceIpsInfoOn() || isStatisticsOn()) || !isCamera(frame))
        return false;
    return _statistic.addToModeEnqueueCounter(K7FrameInfo(frame, frameMode), enqueueIndex);
}

void K7FrameTracer::traceRecordFrame(const J3Frame& frame, uint32 dispatchIndex, const uint32*)
{
    if (isStatisticsOn() && isCamera(frame))
        _statistic.addToDispatchCounter(frame, dispatchIndex);
}

void K7FrameTracer::setIpsBpsStringFormatter(K7IPSFormatter* ipsFormatter, K7BPSFormatter* bpsFormatter)
{
    _statistic.setIpsBpsStringFormatter(ipsFormatter, bpsFormatter);
}

void initFrameTracer(uint32 timerValue) { frameTracer(timerValue).init(); }

void cleanupFrameTracer() { frameTracer().cleanup(); }

bool isTraceIpsInfoOn() { return frameTracer().isTraceIpsInfoOn(); }

bool isStatisticsOn() { return frameTracer().isStatisticsOn(); }

void setTraceIpsInfo(bool on) { frameTracer().setTraceIpsInfo(on); }

bool toggleTraceIpsInfo() { return frameTracer().toggleTraceIpsInfo(); }

bool toggleUseStatistics() { return frameTracer().toggleUseStatistics(); }

void setIpsBpsStringFormatter(K7IPSFormatter* ipsFormatter, K7BPSFormatter* bpsFormatter)
{
    frameTracer().setIpsBpsStringFormatter(ipsFormatter, bpsFormatter);
}

bool traceFrame(const J3Frame& frame, int32 frameMode, uint32 enqueueIndex)
{
    return frameTracer().traceFrame(frame, frameMode, enqueueIndex);
}

void traceRecordFrame(const J3Frame& frame, uint32 dispatchIndex, const uint32* extra)
{
    frameTracer().traceRecordFrame(frame, dispatchIndex, extra);
}

void getIpsResolutionBpsString(uint32 channel, J3String* ips, J3String* bps)
{
    frameTracer().statistics().getIpsResolutionBpsString(channel, ips, bps);
}

bool handleStatisticsJson(const J3String& path, J3String* out)
{
    return path == L"/statistics/record.json" && frameTracer().statistics().recordStatistcsToJson(out);
}

} // namespace Kivo
