// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Interface queries beside bare reading of their files and the bare calls.
#include "OS/System/Network.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include <fcntl.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Kivo;
using Network = K7SystemUtil::Network;

namespace {

/// Moves the process into a network of its own, with loopback up, for the rest of its life.
bool enterOwnNetwork()
{
    static const bool entered = [] {
        const auto user = std::to_string(::getuid());
        if (::unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0)
            return false;
        std::ofstream("/proc/self/setgroups") << "deny";
        std::ofstream("/proc/self/uid_map") << "0 " + user + " 1";
        return std::system("ip link set lo up") == 0;
    }();
    return entered;
}

/// Runs commands of ip. @return false when one fails
bool runIp(const std::string& commands)
{
    FILE* const ip = ::popen("ip -batch -", "w");
    return ip && std::fputs(commands.c_str(), ip) >= 0 && ::pclose(ip) == 0;
}

std::string interfaceName(int64_t number) { return "k7b" + std::to_string(number); }

/// Brings the number of interfaces beside loopback up to @p count, an even number.
bool haveInterfaces(int64_t count)
{
    static int64_t made = 0;
    std::string commands;
    for (; made < count; made += 2)
        commands += "link add " + interfaceName(made) + " type veth peer name " + interfaceName(made + 1) + "\n";
    return enterOwnNetwork() && runIp(commands);
}

/// Makes @p count routes through one interface, none of them a default route.
bool haveRoutes(int count)
{
    static const bool made = haveInterfaces(2) && [&] {
        const std::string via = " dev " + interfaceName(0) + "\n";
        std::string commands =
            "addr add 10.9.0.1/24" + via + "link set up" + via + "link set up dev " + interfaceName(1);
        for (int i = 0; i < count; ++i)
            commands += "\nroute add 11." + std::to_string(i / 256) + "." + std::to_string(i % 256) + ".0/24" + via;
        return runIp(commands);
    }();
    return made;
}

void readBare(benchmark::State& state, const std::string& path)
{
    for ([[maybe_unused]] auto turn : state) {
        char buffer[8192];
        const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        while (::read(fd, buffer, sizeof buffer) > 0)
            benchmark::DoNotOptimize(buffer);
        ::close(fd);
    }
}

void bareNetDev(benchmark::State& state)
{
    if (!haveInterfaces(state.range(0)))
        return state.SkipWithError("no network of its own");
    readBare(state, "/proc/net/dev");
}

/// The last interface: all lines are looked at.
void netDevIoStat(benchmark::State& state)
{
    const std::string last = interfaceName(state.range(0) - 1);
    Network::NetDevIoStat stat;
    if (!haveInterfaces(state.range(0)))
        return state.SkipWithError("no network of its own");
    for ([[maybe_unused]] auto turn : state)
        if (!Network::getNetDevIoStat(last.c_str(), &stat))
            return state.SkipWithError("no such interface");
}

// In this order: the interfaces of one size are there for the next.
BENCHMARK(bareNetDev)->Arg(4);
BENCHMARK(netDevIoStat)->Arg(4);
BENCHMARK(bareNetDev)->Arg(256);
BENCHMARK(netDevIoStat)->Arg(256);

constexpr int ROUTES = 10000;

void bareRoute(benchmark::State& state)
{
    if (!haveRoutes(ROUTES))
        return state.SkipWithError("no network of its own");
    readBare(state, "/proc/net/route");
}

BENCHMARK(bareRoute);

/// Without a default route every line is looked at.
void gateway(benchmark::State& state)
{
    K7IPv4Address address;
    if (!haveRoutes(ROUTES))
        return state.SkipWithError("no network of its own");
    for ([[maybe_unused]] auto turn : state)
        if (Network::getGateway(interfaceName(0).c_str(), &address))
            return state.SkipWithError("a gateway");
}

BENCHMARK(gateway);

void bareSubnetMask(benchmark::State& state)
{
    for ([[maybe_unused]] auto turn : state) {
        ifreq request{};
        std::strcpy(request.ifr_name, "lo");
        const int fd = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        benchmark::DoNotOptimize(::ioctl(fd, SIOCGIFNETMASK, &request));
        ::close(fd);
    }
}

BENCHMARK(bareSubnetMask);

void subnetMask(benchmark::State& state)
{
    K7IPv4Address mask;
    for ([[maybe_unused]] auto turn : state)
        if (!Network::getSubnetMask("lo", &mask))
            return state.SkipWithError("no mask");
}

BENCHMARK(subnetMask);

} // namespace
