// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// What counting a frame costs beside counting in plain memory.
#include "Core/K7CounterWithTick.h"
#include "Core/K7SizeCounterByChannel.h"

#include <benchmark/benchmark.h>

using namespace Kivo;

namespace {

void BM_PlainCountAndSize(benchmark::State& state)
{
    std::vector<std::array<uint32, 4>> counts(1);
    std::vector<std::array<uint32, 4>> sizes(1);
    for ([[maybe_unused]] auto step : state) {
        ++counts[0][1];
        sizes[0][1] += 1000;
        benchmark::DoNotOptimize(counts.data());
        benchmark::DoNotOptimize(sizes.data());
        benchmark::ClobberMemory();
    }
}

BENCHMARK(BM_PlainCountAndSize);

void BM_AddToSizeCounter(benchmark::State& state)
{
    K7SizeCounterByChannel<4> counter(1);
    for ([[maybe_unused]] auto step : state) {
        counter.add(0, 1, 1000);
        benchmark::ClobberMemory();
    }
}

BENCHMARK(BM_AddToSizeCounter);

// As the frame path does: look whether the slot is complete, then count.
void BM_AddToRing(benchmark::State& state)
{
    K7CounterWithTick<K7SizeCounterByChannel<4>, 2> ring(1000);
    ring.setChannelCount(1);
    ring.start();
    for ([[maybe_unused]] auto step : state) {
        ring.rotateIfDue();
        ring.current().add(0, 1, 1000);
        benchmark::ClobberMemory();
    }
}

BENCHMARK(BM_AddToRing);

} // namespace
