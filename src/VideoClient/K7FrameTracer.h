// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Where the video pipeline reports every frame.
#pragma once

#include "VideoClient/K7FrameStatistic.h"

namespace Kivo {

/// Counts the frames that the video pipeline reports, as far as a group of counters is on; both begin off.
///
/// *Threads*: as K7FrameStatistic: frames are reported on one thread at a time; beside it any thread may read and set
/// formatters, and one other may switch groups. *Cost*: a frame allocates nothing, and costs next to nothing while both
/// groups are off.
class K7SAL_API K7FrameTracer : public J3Object {
public:
    /// @param timerValue kept as MCP_OP_TIMER_VALUE for the application
    explicit K7FrameTracer(uint32 timerValue);
    ~K7FrameTracer() override;
    K7FrameTracer(const K7FrameTracer&) = delete;
    K7FrameTracer& operator=(const K7FrameTracer&) = delete;

    void init() {} ///< does nothing

    /// Switch both groups off; what they counted stays readable.
    void cleanup();

    /// Switch the rates on, which begins their period anew, or off.
    void setTraceIpsInfo(bool on);

    /// Switch the rates over. @return whether they are on now
    bool toggleTraceIpsInfo();

    [[nodiscard]] bool isTraceIpsInfoOn() const { return _traceIps.load(std::memory_order_relaxed); }

    /// Switch the statistics over; their period begins anew when they become on. @return whether they are on now
    bool toggleUseStatistics();

    [[nodiscard]] bool isStatisticsOn() const { return _useStatistics.load(std::memory_order_relaxed); }

    /// Count a frame that was given to a queue.
    /// @param frame        ignored unless its channel is 0, the one camera's
    /// @param frameMode    the pipeline's number of the stream mode, see K7FrameInfo::convertToFrameInfoMode()
    /// @param enqueueIndex what became of it, 0 to 10, see K7FrameStatistic::addToModeEnqueueCounter()
    /// @return whether a slot of the rates was completed, so that there are new ones to read
    bool traceFrame(const J3Frame& frame, int32 frameMode, uint32 enqueueIndex);

    /// Count a frame that was dispatched to the recording, when the statistics are on.
    /// @param frame         ignored unless its channel is 0, the one camera's
    /// @param dispatchIndex what became of it, 0 to 7
    /// @param extra         not used; may be null
    void traceRecordFrame(const J3Frame& frame, uint32 dispatchIndex, const uint32* extra);

    /// Does nothing; takes what traceRecordFrame() takes.
    void checkRecordFrame(const J3Frame&, uint32, const uint32*) {}

    [[nodiscard]] K7FrameStatistic& statistics() { return _statistic; }
    [[nodiscard]] const K7FrameStatistic& statistics() const { return _statistic; }

    /// See K7FrameStatistic::setIpsBpsStringFormatter().
    void setIpsBpsStringFormatter(K7IPSFormatter* ipsFormatter, K7BPSFormatter* bpsFormatter);

    const uint32 MCP_OP_TIMER_VALUE; ///< the constructor's argument

private:
    [[nodiscard]] K7SAL_LOCAL bool isCamera(const J3Frame& frame) const;

    const uint32 _cameraCount = 1;
    K7FrameStatistic _statistic;
    std::atomic<bool> _traceIps{false};
    std::atomic<bool> _useStatistics{false};
};

/// @name The process's one tracer
///
/// Made by whichever of these is called first, with the timer value 1 unless that is initFrameTracer(), and never
/// destroyed: these may be called in static and thread_local destructors, and by threads that run on while the process
/// exits. Each does what the operation of its name does on the tracer.
///
/// *Threads*: safe for concurrent first callers; then as K7FrameTracer.
/// @{

/// Make the tracer, unless it is there already, with this timer value, and init() it.
K7SAL_API void initFrameTracer(uint32 timerValue);

/// See K7FrameTracer::cleanup().
K7SAL_API void cleanupFrameTracer();

/// See K7FrameTracer::isTraceIpsInfoOn().
[[nodiscard]] K7SAL_API bool isTraceIpsInfoOn();

/// See K7FrameTracer::isStatisticsOn().
[[nodiscard]] K7SAL_API bool isStatisticsOn();

/// See K7FrameTracer::setTraceIpsInfo().
K7SAL_API void setTraceIpsInfo(bool on);

/// See K7FrameTracer::toggleTraceIpsInfo().
K7SAL_API bool toggleTraceIpsInfo();

/// See K7FrameTracer::toggleUseStatistics().
K7SAL_API bool toggleUseStatistics();

/// See K7FrameStatistic::setIpsBpsStringFormatter().
K7SAL_API void setIpsBpsStringFormatter(K7IPSFormatter* ipsFormatter, K7BPSFormatter* bpsFormatter);

/// See K7FrameTracer::traceFrame().
K7SAL_API bool traceFrame(const J3Frame& frame, int32 frameMode, uint32 enqueueIndex);

/// See K7FrameTracer::traceRecordFrame().
K7SAL_API void traceRecordFrame(const J3Frame& frame, uint32 dispatchIndex, const uint32* extra);

/// See K7FrameStatistic::getIpsResolutionBpsString().
K7SAL_API void getIpsResolutionBpsString(uint32 channel, J3String* ips, J3String* bps);

/// Answer a web request for the statistics.
/// @param path the request's path; "/statistics/record.json", exactly, is answered
/// @param out  becomes the document of K7FrameStatistic::recordStatistcsToJson(); left alone for any other path
/// @return whether the path was answered
K7SAL_API bool handleStatisticsJson(const J3String& path, J3String* out);

/// @}

} // namespace Kivo
