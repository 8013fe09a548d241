// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What reporting a frame costs, and whether it allocates.
#include "VideoClient/K7FrameTracer.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <new>

using namespace Kivo;

namespace {

thread_local uint64 allocations = 0; // plain: each thread counts its own

J3Frame keyFrame()
{
    J3Frame frame;
    frame.setDataSize(20'000);
    frame.setResolution({1920, 1080});
    frame.setLocalTime(J3Time::from_time_t(1'795'287'600));
    return frame;
}

// Mode 3 is the index 2, whose enqueue outcomes count too: the longest way.
void traceFrames(benchmark::State& state)
{
    const J3Frame frame = keyFrame();
    const uint64 before = allocations;
    for ([[maybe_unused]] auto step : state)
        benchmark::DoNotOptimize(traceFrame(frame, 3, 1));
    if (allocations != before)
        state.SkipWithError("a frame allocates");
}

void BM_TraceFrameBothGroupsOn(benchmark::State& state)
{
    initFrameTracer(1);
    setTraceIpsInfo(true);
    toggleUseStatistics();
    traceFrames(state);
    cleanupFrameTracer();
}

BENCHMARK(BM_TraceFrameBothGroupsOn);

void BM_TraceFrameBothGroupsOff(benchmark::State& state)
{
    cleanupFrameTracer();
    traceFrames(state);
}

BENCHMARK(BM_TraceFrameBothGroupsOff);

void BM_TraceRecordFrame(benchmark::State& state)
{
    const J3Frame frame = keyFrame();
    toggleUseStatistics();
    for ([[maybe_unused]] auto step : state)
        traceRecordFrame(frame, 1, nullptr);
    cleanupFrameTracer();
}

BENCHMARK(BM_TraceRecordFrame);

void BM_RecordStatistcsToJson(benchmark::State& state)
{
    toggleUseStatistics();
    traceFrame(keyFrame(), 3, 1);
    cleanupFrameTracer();
    J3String out;
    for ([[maybe_unused]] auto step : state)
        benchmark::DoNotOptimize(handleStatisticsJson(L"/statistics/record.json", &out));
}

BENCHMARK(BM_RecordStatistcsToJson);

void BM_GetIpsResolutionBpsString(benchmark::State& state)
{
    J3String ips;
    J3String bps;
    for ([[maybe_unused]] auto step : state)
        getIpsResolutionBpsString(0, &ips, &bps);
}

BENCHMARK(BM_GetIpsResolutionBpsString);

} // namespace

// Not inline: GCC would take malloc and free for a pair that does not match new and delete.
[[gnu::noinline]] void* operator new(std::size_t size)
{
    ++allocations;
    if (void* const block = std::malloc(size))
        return block;
    throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }

[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { std::free(block); }
