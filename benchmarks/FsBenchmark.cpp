// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Copies, digests and listings, beside the standard tools and a bare scandir().
#include "OS/System/FS.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <dirent.h>
#include <stdlib.h>
#include <sys/resource.h>

using namespace Kivo;
using FS = K7SystemUtil::FS;
namespace fs = std::filesystem;

namespace {

constexpr std::size_t MEBIBYTE = 1U << 20U;

/// A directory in memory for the files of one benchmark.
class Place {
public:
    Place()
    {
        std::string pattern = "/dev/shm/k7-benchmark-XXXXXX";
        _top = ::mkdtemp(pattern.data());
    }
    ~Place() { fs::remove_all(_top); }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    [[nodiscard]] std::string at(const char* name) const { return (_top / name).string(); }

    [[nodiscard]] std::string file(std::size_t mebibytes) const
    {
        std::string block(MEBIBYTE, '\0');
        std::ofstream file(at("source"), std::ios::binary);
        for (std::size_t i = 0; i < mebibytes; ++i) {
            for (char& c : block)
                c = static_cast<char>(std::rand());
            file.write(block.data(), static_cast<std::streamsize>(block.size()));
        }
        return at("source");
    }

private:
    fs::path _top;
};

double processorSeconds(int who)
{
    rusage usage{};
    ::getrusage(who, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Time what the processor spends on @p work, in this process or in its children.
template <class Work>
void timeProcessor(benchmark::State& state, int who, Work&& work)
{
    for (auto _ : state) {
        const double before = processorSeconds(who);
        work();
        state.SetIterationTime(processorSeconds(who) - before);
    }
}

void run(const std::string& command)
{
    if (std::system((command + " >/dev/null 2>&1").c_str()) != 0)
        std::abort();
}

void copyFile256MiB(benchmark::State& state)
{
    const Place place;
    const std::string source = place.file(256);
    for (auto _ : state)
        benchmark::DoNotOptimize(FS::copyFile(place.at("copy").c_str(), source.c_str()));
}

void copyByDd256MiB(benchmark::State& state)
{
    const Place place;
    const std::string command = "dd bs=8k conv=fsync if=" + place.file(256) + " of=" + place.at("copy");
    for (auto _ : state)
        run(command);
}

void sha256Of64MiB(benchmark::State& state)
{
    const Place place;
    const std::string source = place.file(64);
    J3String digest;
    timeProcessor(state, RUSAGE_SELF, [&] { FS::getSHA256Sum(&digest, source.c_str()); });
}

void sha256sumOf64MiB(benchmark::State& state)
{
    const Place place;
    const std::string command = "sha256sum " + place.file(64);
    timeProcessor(state, RUSAGE_CHILDREN, [&] { run(command); });
}

void md5Of64MiB(benchmark::State& state)
{
    const Place place;
    const std::string source = place.file(64);
    J3String digest;
    timeProcessor(state, RUSAGE_SELF, [&] { FS::getMD5Sum(&digest, source.c_str()); });
}

void md5sumOf64MiB(benchmark::State& state)
{
    const Place place;
    const std::string command = "md5sum " + place.file(64);
    timeProcessor(state, RUSAGE_CHILDREN, [&] { run(command); });
}

void fill(const Place& place)
{
    for (int i = 0; i < 10000; ++i)
        std::ofstream(place.at(("recording-" + std::to_string(i * 7919 % 10000) + ".ts").c_str()));
}

void listDirectoryOf10000(benchmark::State& state)
{
    const Place place;
    fill(place);
    for (auto _ : state)
        benchmark::DoNotOptimize(FS::listDirectory(place.at("").c_str()).size());
}

void scandirOf10000(benchmark::State& state)
{
    const Place place;
    fill(place);
    for (auto _ : state) {
        dirent** entries = nullptr;
        const int count = ::scandir(place.at("").c_str(), &entries, nullptr, ::alphasort);
        for (int i = 0; i < count; ++i)
            std::free(entries[i]);
        std::free(entries);
    }
}

BENCHMARK(copyFile256MiB)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(copyByDd256MiB)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(sha256Of64MiB)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(sha256sumOf64MiB)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(md5Of64MiB)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(md5sumOf64MiB)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(listDirectoryOf10000)->Unit(benchmark::kMicrosecond);
BENCHMARK(scandirOf10000)->Unit(benchmark::kMicrosecond);

} // namespace
