// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Hexadecimal encoding over growing lengths.
#include "OS/System/Misc.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

using Kivo::K7SystemUtil;

void binaryToHexaString(benchmark::State& state)
{
    const std::vector<Kivo::uint8> bytes(static_cast<std::size_t>(state.range(0)), 0x5A);
    std::string text(2 * bytes.size() + 1, '\0');
    for (auto _ : state) {
        K7SystemUtil::Misc::binaryToHexaString(text.data(), bytes.data(), static_cast<Kivo::int32>(bytes.size()));
        benchmark::ClobberMemory();
    }
    state.SetComplexityN(state.range(0));
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

BENCHMARK(binaryToHexaString)->Arg(1 << 10)->Arg(1 << 14)->Arg(1 << 18)->Complexity(benchmark::oN);

} // namespace
