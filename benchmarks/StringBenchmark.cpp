// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// J3String beside the bare C library, the fmt library where there is one, and memory.
#include "Foundation/J3String.h"

#include <benchmark/benchmark.h>

#include <cwchar>

#ifdef K7_WITH_FMT
#include <fmt/xchar.h>
#endif

using namespace Kivo;

namespace {

constexpr std::size_t TEXT_LENGTH = 64 * 1024;

void setBytes(benchmark::State& state)
{
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(TEXT_LENGTH));
}

void BM_SwprintfThreeIntegers(benchmark::State& state)
{
    wchar_t room[64];
    int value = 0;
    for ([[maybe_unused]] auto step : state) {
        std::swprintf(room, 64, L"%d:%d:%d", value, 59, 12345);
        benchmark::DoNotOptimize(room);
        ++value;
    }
}

BENCHMARK(BM_SwprintfThreeIntegers);

void BM_FormatThreeIntegers(benchmark::State& state)
{
    int value = 0;
    for ([[maybe_unused]] auto step : state) {
        J3String text;
        text.format(L"%d:%d:%d", value, 59, 12345);
        benchmark::DoNotOptimize(text);
        ++value;
    }
}

BENCHMARK(BM_FormatThreeIntegers);

#ifdef K7_WITH_FMT
void BM_FmtThreeIntegers(benchmark::State& state)
{
    int value = 0;
    for ([[maybe_unused]] auto step : state) {
        std::wstring text = fmt::format(L"{}:{}:{}", value, 59, 12345);
        benchmark::DoNotOptimize(text);
        ++value;
    }
}

BENCHMARK(BM_FmtThreeIntegers);
#endif

void BM_SwprintfText(benchmark::State& state)
{
    wchar_t room[64];
    for ([[maybe_unused]] auto step : state) {
        std::swprintf(room, 64, L"%s %02x:%02x %.1f", "eth0", 10, 200, 12.5);
        benchmark::DoNotOptimize(room);
    }
}

BENCHMARK(BM_SwprintfText);

void BM_FormatText(benchmark::State& state)
{
    for ([[maybe_unused]] auto step : state) {
        J3String text;
        text.format(L"%s %02x:%02x %.1f", "eth0", 10, 200, 12.5);
        benchmark::DoNotOptimize(text);
    }
}

BENCHMARK(BM_FormatText);

void BM_CopyWide(benchmark::State& state)
{
    const std::wstring source(TEXT_LENGTH, L'x');
    for ([[maybe_unused]] auto step : state)
        benchmark::DoNotOptimize(std::wstring(source));
    setBytes(state);
}

BENCHMARK(BM_CopyWide);

void BM_FromAscii(benchmark::State& state)
{
    const std::string source(TEXT_LENGTH, 'x');
    for ([[maybe_unused]] auto step : state)
        benchmark::DoNotOptimize(J3String(source.c_str()));
    setBytes(state);
}

BENCHMARK(BM_FromAscii);

void BM_CopyNarrow(benchmark::State& state)
{
    const std::string source(TEXT_LENGTH, 'x');
    for ([[maybe_unused]] auto step : state)
        benchmark::DoNotOptimize(std::string(source));
    setBytes(state);
}

BENCHMARK(BM_CopyNarrow);

void BM_ToAscii(benchmark::State& state)
{
    const J3String source(std::wstring(TEXT_LENGTH, L'x'));
    for ([[maybe_unused]] auto step : state)
        benchmark::DoNotOptimize(source.to_string(STD_LOCALE_UTF8));
    setBytes(state);
}

BENCHMARK(BM_ToAscii);

} // namespace
