// SPDX-License-Identifier: Apache-2.0
// SPDX-FileCopyrightText: 2026 the K7SAL authors
// Interface queries beside bare reading of their files and the bare calls, on a live network and in a captured tree.
// The live ones need root: without it, run the program by "unshare --map-root-user --net".
#include "OS/System/Network.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include <fcntl.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Kivo;
using Network = K7SystemUtil::Network;

namespace {

constexpr int ROUTES = 10000;

std::string interfaceName(int64_t number) { return "k7b" + std::to_string(number); }

/// Runs commands of ip. @return false when one fails
bool runIp(const std::string& commands)
{
    FILE* const ip = ::popen("ip -batch -", "w");
    return ip && std::fputs(commands.c_str(), ip) >= 0 && ::pclose(ip) == 0;
}

/// A network namespace that this thread is in for as long as it lives; what is made there is there the next time.
class LiveNetwork {
public:
    LiveNetwork()
    {
        static const int own = makeOwn();
        isReady = own >= 0 && ::setns(own, CLONE_NEWNET) == 0;
    }

    ~LiveNetwork() { static_cast<void>(::setns(s_original, CLONE_NEWNET)); }

    LiveNetwork(const LiveNetwork&) = delete;
    LiveNetwork& operator=(const LiveNetwork&) = delete;

    /// Brings the number of interfaces beside loopback up to @p count, an even number.
    void haveInterfaces(int64_t count)
    {
        static int64_t made = 0;
        std::string commands;
        for (; made < count; made += 2)
            commands += "link add " + interfaceName(made) + " type veth peer name " + interfaceName(made + 1) + "\n";
        isReady = isReady && runIp(commands);
    }

    /// Makes routes through one interface, none of them a default route.
    void haveRoutes()
    {
        haveInterfaces(2);
        static const bool made = isReady && [] {
            const std::string via = " dev " + interfaceName(0) + "\n";
            std::string commands =
                "addr add 10.9.0.1/24" + via + "link set up" + via + "link set up dev " + interfaceName(1);
            for (int i = 0; i < ROUTES; ++i)
                commands += "\nroute add 11." + std::to_string(i / 256) + "." + std::to_string(i % 256) + ".0/24" + via;
            return runIp(commands);
        }();
        isReady = isReady && made;
    }

    [[nodiscard]] static std::string path(const char* systemPath) { return systemPath; }

    static constexpr bool isLive = true;

    bool isReady;

private:
    static int openCurrent() { return ::open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC); }

    static int makeOwn()
    {
        s_original = openCurrent();
        return ::unshare(CLONE_NEWNET) == 0 && runIp("link set up dev lo\n") ? openCurrent() : -1;
    }

    static inline int s_original = -1;
};

/// A captured tree that the library reads for as long as this lives.
class CapturedNetwork {
public:
    CapturedNetwork()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "k7-tree-XXXXXX").string();
        isReady = ::mkdtemp(pattern.data()) != nullptr;
        _top = pattern;
        std::filesystem::create_directories(_top + "/proc/net");
        K7SystemUtil::setSystemRoot(_top.c_str());
    }

    ~CapturedNetwork()
    {
        K7SystemUtil::setSystemRoot(L"");
        std::filesystem::remove_all(_top);
    }

    CapturedNetwork(const CapturedNetwork&) = delete;
    CapturedNetwork& operator=(const CapturedNetwork&) = delete;

    void haveInterfaces(int64_t count) const
    {
        std::ofstream file(path("/proc/net/dev"));
        file << "Inter-|   Receive                                                |  Transmit\n"
                " face |bytes    packets errs drop fifo frame compressed multicast|"
                "bytes    packets errs drop fifo colls carrier compressed\n";
        for (int64_t i = 0; i < count; ++i)
            file << "  " << interfaceName(i)
                 << ":    1086      13    0    0    0     0          0         0     1086      13    0    0    0     0"
                    "       0          0\n";
        char line[80];
        std::ofstream addresses(path("/proc/net/if_inet6"));
        for (int64_t i = 0; i < count; ++i) {
            std::snprintf(line, sizeof line, "fe80000000000000000000000000%04x %02x 40 20 80 %8s\n",
                          static_cast<unsigned int>(i), static_cast<unsigned int>(i + 1), interfaceName(i).c_str());
            addresses << line;
        }
    }

    void haveRoutes() const
    {
        std::ofstream file(path("/proc/net/route"));
        char line[129];
        for (unsigned int i = 0; i < ROUTES; ++i) {
            std::snprintf(line, sizeof line, "%s\t%08X\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0",
                          interfaceName(0).c_str(), i % 256 << 16 | i / 256 << 8 | 11);
            std::string padded(line);
            padded.resize(127, ' ');
            file << padded << '\n';
        }
    }

    [[nodiscard]] std::string path(const char* systemPath) const { return _top + systemPath; }

    static constexpr bool isLive = false;

    bool isReady;

private:
    std::string _top;
};

constexpr const char* NOT_READY = "no network to measure";

void readOnce(const std::string& path)
{
    char buffer[8192];
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    while (::read(fd, buffer, sizeof buffer) > 0)
        benchmark::DoNotOptimize(buffer);
    ::close(fd);
}

void readBare(benchmark::State& state, const std::string& path)
{
    for ([[maybe_unused]] auto turn : state)
        readOnce(path);
}

template <class Place>
void bareNetDev(benchmark::State& state)
{
    Place place;
    place.haveInterfaces(state.range(0));
    if (!place.isReady)
        return state.SkipWithError(NOT_READY);
    readBare(state, place.path("/proc/net/dev"));
}

/// The last interface: all lines are looked at.
template <class Place>
void netDevIoStat(benchmark::State& state)
{
    Place place;
    place.haveInterfaces(state.range(0));
    if (!place.isReady)
        return state.SkipWithError(NOT_READY);
    const std::string last = interfaceName(state.range(0) - 1);
    Network::NetDevIoStat stat;
    for ([[maybe_unused]] auto turn : state)
        if (!Network::getNetDevIoStat(last.c_str(), &stat))
            return state.SkipWithError("no such interface");
}

/// Every list that listInterfaces() reads, bare.
template <class Place>
void bareInterfaces(benchmark::State& state)
{
    Place place;
    place.haveInterfaces(state.range(0));
    if (!place.isReady)
        return state.SkipWithError(NOT_READY);
    for ([[maybe_unused]] auto turn : state) {
        readOnce(place.path("/proc/net/dev"));
        readOnce(place.path("/proc/net/if_inet6"));
        ifaddrs* first = nullptr;
        if (place.isLive && ::getifaddrs(&first) == 0)
            ::freeifaddrs(first);
    }
}

template <class Place>
void interfaces(benchmark::State& state)
{
    Place place;
    place.haveInterfaces(state.range(0));
    if (!place.isReady)
        return state.SkipWithError(NOT_READY);
    std::vector<Network::Interface> found;
    for ([[maybe_unused]] auto turn : state)
        if (!Network::listInterfaces(&found))
            return state.SkipWithError("no interfaces");
}

// In this order: the live interfaces of one size are there for the next.
BENCHMARK_TEMPLATE(bareNetDev, LiveNetwork)->Arg(4);
BENCHMARK_TEMPLATE(netDevIoStat, LiveNetwork)->Arg(4);
BENCHMARK_TEMPLATE(bareInterfaces, LiveNetwork)->Arg(4);
BENCHMARK_TEMPLATE(interfaces, LiveNetwork)->Arg(4);
BENCHMARK_TEMPLATE(bareNetDev, LiveNetwork)->Arg(256);
BENCHMARK_TEMPLATE(netDevIoStat, LiveNetwork)->Arg(256);
BENCHMARK_TEMPLATE(bareInterfaces, LiveNetwork)->Arg(256);
BENCHMARK_TEMPLATE(interfaces, LiveNetwork)->Arg(256);
BENCHMARK_TEMPLATE(bareNetDev, CapturedNetwork)->Arg(4);
BENCHMARK_TEMPLATE(netDevIoStat, CapturedNetwork)->Arg(4);
BENCHMARK_TEMPLATE(bareNetDev, CapturedNetwork)->Arg(256);
BENCHMARK_TEMPLATE(netDevIoStat, CapturedNetwork)->Arg(256);
BENCHMARK_TEMPLATE(bareInterfaces, CapturedNetwork)->Arg(256);
BENCHMARK_TEMPLATE(interfaces, CapturedNetwork)->Arg(256);

template <class Place>
void bareRoute(benchmark::State& state)
{
    Place place;
    place.haveRoutes();
    if (!place.isReady)
        return state.SkipWithError(NOT_READY);
    readBare(state, place.path("/proc/net/route"));
}

/// Without a default route every line is looked at.
template <class Place>
void gateway(benchmark::State& state)
{
    Place place;
    place.haveRoutes();
    if (!place.isReady)
        return state.SkipWithError(NOT_READY);
    K7IPv4Address address;
    for ([[maybe_unused]] auto turn : state)
        if (Network::getGateway(interfaceName(0).c_str(), &address))
            return state.SkipWithError("a gateway");
}

BENCHMARK_TEMPLATE(bareRoute, LiveNetwork);
BENCHMARK_TEMPLATE(gateway, LiveNetwork);
BENCHMARK_TEMPLATE(bareRoute, CapturedNetwork);
BENCHMARK_TEMPLATE(gateway, CapturedNetwork);

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
