// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The memory table beside bare reading of its file.
#include "OS/System/Memory.h"

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>

using namespace Kivo;
using Memory = K7SystemUtil::Memory;

namespace {

void bareMeminfo(benchmark::State& state)
{
    for ([[maybe_unused]] auto turn : state) {
        char buffer[2048];
        const int fd = ::open("/proc/meminfo", O_RDONLY | O_CLOEXEC);
        benchmark::DoNotOptimize(::read(fd, buffer, sizeof buffer));
        ::close(fd);
    }
}
BENCHMARK(bareMeminfo);

void memoryRefresh(benchmark::State& state)
{
    for ([[maybe_unused]] auto turn : state) {
        K7SystemUtil::setSystemRoot(L""); // forgets the table
        Memory::refresh();
    }
}
BENCHMARK(memoryRefresh);

void memoryGetterCached(benchmark::State& state)
{
    for ([[maybe_unused]] auto turn : state)
        benchmark::DoNotOptimize(Memory::getMemFree());
}
BENCHMARK(memoryGetterCached);

} // namespace
