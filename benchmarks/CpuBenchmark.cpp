// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Interrupt counts beside the bare reading of their file.
#include "OS/System/CPU.h"

#include <benchmark/benchmark.h>

#include <memory>

#include <fcntl.h>
#include <unistd.h>

namespace {

using Kivo::K7SystemUtil;

constexpr const char* INTERRUPTS = "/proc/interrupts";

Kivo::J3String lastLabel()
{
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(INTERRUPTS, "re"), std::fclose);
    Kivo::J3String label;
    for (std::vector<Kivo::J3String> row; K7SystemUtil::CPU::readLineFromProcInterrupts(&row, file.get());)
        if (!row.empty())
            label = row.front();
    return label;
}

void interruptsBareReading(benchmark::State& state)
{
    static char buffer[65536];
    for (auto _ : state) {
        const int fd = ::open(INTERRUPTS, O_RDONLY | O_CLOEXEC);
        while (::read(fd, buffer, sizeof buffer) > 0) {
        }
        ::close(fd);
    }
}

BENCHMARK(interruptsBareReading);

void interruptCountOfTheLastRow(benchmark::State& state)
{
    const Kivo::J3String label = lastLabel();
    for (auto _ : state)
        benchmark::DoNotOptimize(K7SystemUtil::CPU::interruptCountOf(label));
}

BENCHMARK(interruptCountOfTheLastRow);

} // namespace
