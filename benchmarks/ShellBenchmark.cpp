// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Commands and process lookup, each beside the bare calls.
#include "OS/System/Shell.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

using Kivo::K7SystemUtil;

namespace {

/// Memory that the process really has, as a recorder with full frame buffers does.
class TouchedHeap {
public:
    explicit TouchedHeap(std::size_t mebibytes) : _bytes(mebibytes << 20U, 1)
    {
        benchmark::DoNotOptimize(_bytes.data());
    }

private:
    std::vector<char> _bytes;
};

/// /bin/sh by posix_spawn(), the argument in MiB of heap.
void bareShell(benchmark::State& state)
{
    const TouchedHeap heap(static_cast<std::size_t>(state.range(0)));
    char shell[] = "sh";
    char option[] = "-c";
    char command[] = "true";
    char* const arguments[] = {shell, option, command, nullptr};
    for (auto _ : state) {
        pid_t child = -1;
        int status = -1;
        if (::posix_spawn(&child, "/bin/sh", nullptr, nullptr, arguments, environ) != 0 ||
            ::waitpid(child, &status, 0) != child || status != 0)
            return state.SkipWithError("the shell did not run");
    }
}

void directCommand(benchmark::State& state)
{
    const TouchedHeap heap(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state)
        if (K7SystemUtil::Shell::runCommandEx("true") != 0)
            return state.SkipWithError("the shell did not run");
}

constexpr const char* MISSING = "no program of this name";

/// Every numeric entry of /proc opened, read, searched and closed.
void bareProcessScan(benchmark::State& state)
{
    for (auto _ : state) {
        const std::unique_ptr<DIR, int (*)(DIR*)> directory(::opendir("/proc"), ::closedir);
        int64_t processes = 0;
        int64_t matches = 0;
        while (const dirent* entry = ::readdir(directory.get())) {
            const char* const name = entry->d_name;
            if (name[std::strspn(name, "0123456789")] != '\0')
                continue;
            const std::string path = std::string(name) + "/cmdline";
            const int fd = ::openat(::dirfd(directory.get()), path.c_str(), O_RDONLY | O_CLOEXEC);
            if (fd < 0)
                continue;
            char line[255];
            const ssize_t length = ::read(fd, line, sizeof line - 1);
            ::close(fd);
            line[std::max<ssize_t>(length, 0)] = '\0';
            matches += std::strstr(line, MISSING) != nullptr;
            ++processes;
        }
        if (matches != 0)
            return state.SkipWithError("the missing program runs");
        state.counters["processes"] = static_cast<double>(processes);
    }
}

void processLookup(benchmark::State& state)
{
    for (auto _ : state)
        if (K7SystemUtil::Shell::getProcessId(MISSING) != -1)
            return state.SkipWithError("the missing program runs");
}

BENCHMARK(bareShell)->Name("Shell/bare posix_spawn")->Arg(0)->Arg(256)->ArgName("MiB")->UseRealTime();
BENCHMARK(directCommand)->Name("Shell/runCommandEx")->Arg(0)->Arg(256)->ArgName("MiB")->UseRealTime();
BENCHMARK(bareProcessScan)->Name("Shell/bare scan of command lines");
BENCHMARK(processLookup)->Name("Shell/getProcessId of a missing name");

} // namespace
