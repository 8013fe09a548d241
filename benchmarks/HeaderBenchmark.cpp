// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// The Internet checksum beside a plain loop over 16-bit words, and an echo compiled and parsed.
#include "Protocol/Network/K7IcmpHeader.h"

#include <benchmark/benchmark.h>

using namespace Kivo;

namespace {

constexpr uint32 MESSAGE_SIZE = 1024;

void calcChksum(benchmark::State& state)
{
    const K7IcmpHeader header;
    const std::vector<uint8> message(MESSAGE_SIZE, 0xAA);
    for (auto _ : state)
        benchmark::DoNotOptimize(header.calcChksum(message.data(), MESSAGE_SIZE));
    state.SetBytesProcessed(state.iterations() * MESSAGE_SIZE);
}

BENCHMARK(calcChksum);

uint16 plainChecksum(const uint8* bytes, uint32 length)
{
    uint32 sum = 0;
    for (uint32 i = 0; i + 1 < length; i += 2) {
        uint16 word = 0;
        std::memcpy(&word, bytes + i, sizeof word);
        sum += word;
    }
    sum = (sum & 0xFFFF) + (sum >> 16);
    return static_cast<uint16>(~(sum + (sum >> 16)));
}

void plainChecksumLoop(benchmark::State& state)
{
    const std::vector<uint8> message(MESSAGE_SIZE, 0xAA);
    uint32 length = MESSAGE_SIZE;
    for (auto _ : state) {
        benchmark::DoNotOptimize(length); // as unknown to the compiler as it is to the library
        benchmark::DoNotOptimize(plainChecksum(message.data(), length));
    }
    state.SetBytesProcessed(state.iterations() * MESSAGE_SIZE);
}

BENCHMARK(plainChecksumLoop);

void compileAndParseEcho(benchmark::State& state)
{
    K7IcmpHeader echo;
    echo.setType(K7_ICMP_ECHO_REQUEST);
    echo.setDataSize(MESSAGE_SIZE);
    K7IcmpHeader reply;
    std::vector<uint8> message;
    for (auto _ : state) {
        echo.setSeqNum(static_cast<uint16>(echo.seqNum() + 1));
        echo.compileTo(&message);
        benchmark::DoNotOptimize(reply.copyFrom(message.data(), MESSAGE_SIZE));
        benchmark::DoNotOptimize(reply.data().data());
        benchmark::ClobberMemory();
    }
}

BENCHMARK(compileAndParseEcho);

} // namespace
