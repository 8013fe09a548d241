// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Processor time of a whole test of 256 targets, and fping's for the same ones. Run it as root of a network namespace:
// unshare --user --map-root-user --net k7-measure-pinger
#include "support/TunResponder.h"

#include "OS/Network/Testing/K7Pinger.h"

#include <chrono>
#include <cstdio>
#include <functional>
#include <future>

#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Kivo;

namespace {

constexpr int TARGETS = 256;

/// The hosts, in a process of their own, so that their processor time is not the pinger's.
pid_t startResponder()
{
    int ready[2];
    if (::pipe(ready) != 0)
        return -1;
    const pid_t child = ::fork();
    if (child == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        const K7Test::TunResponder hosts;
        if (hosts.isUp() && ::write(ready[1], "", 1) == 1)
            ::pause();
        ::_exit(1);
    }
    ::close(ready[1]);
    char byte;
    const bool isReady = ::read(ready[0], &byte, 1) == 1;
    ::close(ready[0]);
    return isReady ? child : -1;
}

class Counter final : public K7PingerListener {
public:
    std::promise<void> ended;
    uint32 received = 0;
    float32 first = 0; ///< average round trip of the target that each round begins with
    float32 last = 0;

    bool isActive() override { return true; }

    void onPingBegin() override {}

    void onPingResult(const J3Time&, const K7PingResult& result) override
    {
        received += result.received();
        if (result.target().channel() == 0)
            first = result.rttAvg();
        if (result.target().channel() == TARGETS - 1)
            last = result.rttAvg();
    }

    void onPingStopped() override {}

    void onPingEnd() override { ended.set_value(); }
};

double milliseconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) * 1000 + static_cast<double>(time.tv_usec) / 1000;
}

double processorTime(const rusage& usage) { return milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime); }

/// @param work gives the processor time of what it did, in milliseconds
void report(const char* name, const std::function<double()>& work)
{
    const auto begin = std::chrono::steady_clock::now();
    const double processor = work();
    const std::chrono::duration<double, std::milli> wall = std::chrono::steady_clock::now() - begin;
    std::printf("%-10s wall %8.1f ms  processor %7.1f ms  %.3f %%\n", name, wall.count(), processor,
                100 * processor / wall.count());
}

double runPinger()
{
    K7Pinger pinger;
    Counter counter;
    pinger.addListener(&counter);
    for (int i = 0; i < TARGETS; ++i)
        pinger.addTarget(i, K7IPv4Address(0x0A4D0002U + static_cast<uint32>(i)));
    rusage before{};
    rusage after{};
    ::getrusage(RUSAGE_SELF, &before);
    pinger.init(K7Test::TunResponder::INTERFACE);
    pinger.start();
    counter.ended.get_future().wait();
    ::getrusage(RUSAGE_SELF, &after);
    std::printf("%u replies to %u echoes\n", counter.received, TARGETS * pinger.testCount());
    std::printf("average round trip: first target %.3f ms, last %.3f ms\n", static_cast<double>(counter.first),
                static_cast<double>(counter.last));
    return processorTime(after) - processorTime(before);
}

/// The same echoes at fping's own default distance of 10 ms between two targets.
double runFping()
{
    std::vector<std::string> words = {"fping", "-q", "-b", "1016", "-c", "5", "-p", "3000"};
    for (int i = 0; i < TARGETS; ++i)
        words.push_back(K7IPv4Address(0x0A4D0002U + static_cast<uint32>(i)).toString().to_string());
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        if (!std::freopen("/dev/null", "w", stderr))
            ::_exit(126);
        ::execvp("fping", arguments.data());
        ::_exit(127);
    }
    int status = 0;
    rusage usage{};
    ::wait4(child, &status, 0, &usage);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        std::printf("fping failed, or is not installed\n");
    return processorTime(usage);
}

} // namespace

int main()
{
    const pid_t responder = startResponder();
    if (responder < 0) {
        std::fputs("no tun device: run as root of a network namespace\n", stderr);
        return 2;
    }
    report("K7Pinger", runPinger);
    report("fping", runFping);
    ::kill(responder, SIGTERM);
    return 0;
}
